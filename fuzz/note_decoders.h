// SPDX-License-Identifier: MIT
// The decoders of the voice-note module, as those of decoders.h: one entry each, which must return for any bytes. The
// module's classes are registered by the caller.
#pragma once

#include "fuzz/decoders.h"

namespace merix::fuzz {

/// The binary stream of a note or of an attachment reactor, as a file and as a before-image holds it: what is read is
/// written as it was and read again.
void noteStream(const std::uint8_t* bytes, std::size_t size);
void reactorStream(const std::uint8_t* bytes, std::size_t size);
/// The tags of a record, read as a note and as an attachment reactor: what is read is written and read again as the
/// same.
void noteTags(const std::uint8_t* bytes, std::size_t size);
void reactorTags(const std::uint8_t* bytes, std::size_t size);

inline constexpr NamedDecoder kNoteDecoders[] = {{"note_stream", noteStream},
                                                 {"reactor_stream", reactorStream},
                                                 {"note_tags", noteTags},
                                                 {"reactor_tags", reactorTags}};

} // namespace merix::fuzz
