// SPDX-License-Identifier: MIT
// The DXF tags of an object beside its stream: what the object says in DXF, for the day when its module is absent.
// Byte runs stand in both; in the packed tags a run is a place in the stream, so that a recording is stored once.
//
// Packed tags are tags as text. Tags of one binary group whose bytes follow each other in the stream are one tag with
// the value `@PLACE SIZE CHUNK`: SIZE bytes of the stream from PLACE on, cut into chunks of CHUNK bytes.
#pragma once

#include <string>
#include <string_view>

namespace merix::io {

/// `tags` is the text of whole tags.
std::string packTags(std::string_view tags, std::string_view stream);

/// Appends the tags to `tags`; false, with nothing appended, when `packed` is not what packTags makes with this stream.
/// Never more bytes are appended than a few times those of `packed` and `stream` together.
bool unpackTags(std::string_view packed, std::string_view stream, std::string& tags);

} // namespace merix::io
