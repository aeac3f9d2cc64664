// SPDX-License-Identifier: MIT
// Tags of a text DXF: pairs of lines, a group code and a value. The scanner hands out views into the file's buffer and
// copies nothing.
#pragma once

#include <cstdint>
#include <string_view>

namespace merix::io {

struct DxfTag {
    int code = 0;
    std::string_view value; ///< the second line without its line end; blanks in front are part of it
    std::string_view text;  ///< both lines with their ends, as they stand in the file
};

/// The value without blanks at either end: how names, numbers and handles are read.
std::string_view trimmed(std::string_view text);

class DxfScanner {
public:
    enum class Result {
        kTag,
        kEnd,          ///< nothing is left
        kBadCode,      ///< the first line is no group code; the scanner stays in front of it
        kMissingValue, ///< the text ends after a group code
    };

    explicit DxfScanner(std::string_view text, std::size_t at = 0, std::uint32_t line = 1)
        : m_text(text)
        , m_at(at)
        , m_line(line) {}

    Result next(DxfTag& tag);

    std::size_t position() const { return m_at; }
    /// Number of the line at position(), from 1.
    std::uint32_t line() const { return m_line; }
    /// Goes on one line further, whatever it holds; false at the end. `content` gets it without its line end.
    bool skipLine(std::string_view& content);

private:
    std::string_view m_text;
    std::size_t m_at;
    std::uint32_t m_line;
};

} // namespace merix::io
