// SPDX-License-Identifier: MIT
// Binary DXF. The floor works on tags as text, so a binary file becomes text when it is read and binary again when it
// is written; on the way nothing is lost: binary, text and binary again are the same bytes.
//
// In that text doubles are the shortest decimals that read back as the same bits (other than numbers: "inf", "nan",
// "nan(7FF0000000000001)"), chunks are hexadecimal, a line feed and a carriage return within a string are "\u+000a" and
// "\u+000d" (a string that has these very letters gets "\u+005c" for its backslash), a group code that could have been
// shorter has a zero in front, and bytes behind EOF are one hexadecimal line.
#pragma once

#include "merix/io/dxf_form.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace merix::io {

/// True when the bytes begin as those of binary DXF do, be the rest damaged.
bool isBinaryDxf(std::string_view bytes);

struct BinaryDxfText {
    std::string text;
    DxfForm form = DxfForm::kBinary;
    /// Where every tag begins in the file, and last where the file ends. Two lines of the text make a tag.
    std::vector<std::size_t> offsets;
    std::string error; ///< one line with the byte that cannot be read; empty when all is well
};
BinaryDxfText binaryDxfToText(std::string_view bytes);

/// The way back, piece by piece.
class BinaryDxfWriter {
public:
    using Sink = std::function<bool(std::string_view)>;

    /// `form` is one of the binary ones. `fromText` says that the texts were no binary file before: comments and what
    /// stands in front of the first tag are left out then, for binary DXF has no such thing.
    BinaryDxfWriter(DxfForm form, bool fromText, Sink sink);

    /// Whole tags. False when the sink refused, or when a tag has no binary form, which error() tells then.
    bool write(std::string_view tags);
    /// The EOF tag and what follows it; nothing may be written afterwards.
    bool finish(std::string_view end);

    const std::string& error() const { return m_error; }
    std::size_t commentsLeftOut() const { return m_comments; }

private:
    bool writeTag(int code, std::string_view codeText, std::string_view value);
    bool writeCode(int code, std::string_view codeText);
    bool writeValue(int code, std::string_view value);
    bool writeInteger(int code, std::string_view value, std::size_t size);
    bool refuse(int code, std::string_view value, std::string_view why);
    bool flush(std::size_t atLeast);

    DxfForm m_form;
    bool m_fromText;
    Sink m_sink;
    std::string m_bytes;
    std::string m_error;
    std::string m_record, m_handle; ///< where the writer is, for messages
    std::size_t m_comments = 0;
    bool m_begun = false;
};

} // namespace merix::io
