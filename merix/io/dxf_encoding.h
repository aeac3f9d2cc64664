// SPDX-License-Identifier: MIT
// Texts of a DXF file: bytes of the file's code page against code points. Besides the code page there are two escapes:
// \U+XXXX for what the code page lacks (a UTF-16 unit) and ^X for control characters.
#pragma once

#include <string>
#include <string_view>

class QTextCodec;

namespace merix::io {

class DxfEncoding {
public:
    /// From AC1021 on files are UTF-8; earlier ones have the code page of $DWGCODEPAGE, ANSI_1252 when that is unknown.
    DxfEncoding(std::string_view version, std::string_view codePage);

    /// Bytes that mean nothing become U+FFFD.
    std::wstring decode(std::string_view bytes) const;
    /// One line whatever the text holds.
    std::string encode(std::wstring_view text) const;

private:
    const QTextCodec* m_codec = nullptr; ///< null: UTF-8
};

/// UTF-8 without the escapes of DXF.
std::wstring fromUtf8(std::string_view bytes);
std::string toUtf8(std::wstring_view text);

} // namespace merix::io
