// SPDX-License-Identifier: MIT
#include "merix/io/dxf_tag.h"

#include <cstring>

namespace merix::io {
namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

struct Line {
    std::string_view content; ///< without CR and LF
    std::size_t end;          ///< behind the line end
};

Line lineAt(std::string_view text, std::size_t at) {
    const void* found = std::memchr(text.data() + at, '\n', text.size() - at);
    const std::size_t stop =
        found ? static_cast<std::size_t>(static_cast<const char*>(found) - text.data()) : text.size();
    std::string_view content = text.substr(at, stop - at);
    if (!content.empty() && content.back() == '\r')
        content.remove_suffix(1);
    return {content, found ? stop + 1 : stop};
}

/// At most five digits, so that the value always fits.
bool parseCode(std::string_view text, int& code) {
    text = trimmed(text);
    const bool negative = !text.empty() && text.front() == '-';
    if (negative)
        text.remove_prefix(1);
    if (text.empty() || text.size() > 5)
        return false;
    int value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            return false;
        value = value * 10 + (c - '0');
    }
    code = negative ? -value : value;
    return true;
}

} // namespace

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

DxfScanner::Result DxfScanner::next(DxfTag& tag) {
    if (m_at >= m_text.size())
        return Result::kEnd;
    const Line first = lineAt(m_text, m_at);
    if (!parseCode(first.content, tag.code)) {
        // Blank lines behind the last tag are no tag.
        return trimmed(first.content).empty() && m_text.find_first_not_of(" \t\r\n", m_at) == std::string_view::npos
                   ? Result::kEnd
                   : Result::kBadCode;
    }
    if (first.end >= m_text.size())
        return Result::kMissingValue;
    const Line second = lineAt(m_text, first.end);
    tag.value = second.content;
    tag.text = m_text.substr(m_at, second.end - m_at);
    m_at = second.end;
    m_line += 2;
    return Result::kTag;
}

bool DxfScanner::skipLine(std::string_view& content) {
    if (m_at >= m_text.size())
        return false;
    const Line line = lineAt(m_text, m_at);
    content = line.content;
    m_at = line.end;
    ++m_line;
    return true;
}

} // namespace merix::io
