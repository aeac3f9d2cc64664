// SPDX-License-Identifier: MIT
#include "merix/io/stream_tags.h"

#include "merix/io/dxf_out_filer.h"
#include "merix/io/dxf_tag.h"
#include "merix/io/dxf_value.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace merix::io {
namespace {

constexpr char kPlaceMark = '@';
/// Shorter runs stand as they are.
constexpr std::size_t kShortestRun = 64;
constexpr std::size_t kLongestChunk = 255;

/// Tags of one binary group in a row, gathered until another one comes.
class Run {
public:
    Run(std::string_view stream, std::string& out)
        : m_stream(stream)
        , m_out(out) {}

    /// False when the tag does not continue the run.
    bool take(const DxfTag& tag) {
        std::vector<std::uint8_t> bytes;
        if (dxfKind(tag.code) != DxfKind::kBinary || !toBytes(tag.value, bytes) || bytes.empty())
            return false;
        const bool first = m_bytes.empty();
        // Every chunk but the last is as long as the first.
        if (!first && (tag.code != m_code || m_bytes.size() % m_chunk != 0 || bytes.size() > m_chunk))
            return false;
        if (first) {
            m_code = tag.code;
            m_chunk = bytes.size();
        }
        m_bytes.append(bytes.begin(), bytes.end());
        return true;
    }

    void end() {
        if (m_bytes.empty())
            return;
        const std::size_t place = m_bytes.size() < kShortestRun ? std::string_view::npos : m_stream.find(m_bytes);
        if (place != std::string_view::npos) {
            appendTag(m_out, m_code,
                      kPlaceMark + std::to_string(place) + ' ' + std::to_string(m_bytes.size()) + ' ' +
                          std::to_string(m_chunk),
                      "\n");
        } else {
            for (std::size_t at = 0; at < m_bytes.size(); at += m_chunk)
                appendTag(m_out, m_code, fromBytes(m_bytes.data() + at, std::min(m_chunk, m_bytes.size() - at)), "\n");
        }
        m_bytes.clear();
    }

private:
    std::string_view m_stream;
    std::string& m_out;
    std::string m_bytes;
    int m_code = 0;
    std::size_t m_chunk = 0;
};

/// The next of blank-separated numbers.
std::optional<std::size_t> number(std::string_view& text) {
    std::size_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc())
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    return value;
}

bool appendRun(int code, std::string_view value, std::string_view stream, std::string& tags) {
    value.remove_prefix(1);
    const auto place = number(value), size = number(value), chunk = number(value);
    if (!place || !size || !chunk || !value.empty() || *chunk == 0 || *chunk > kLongestChunk || *size < *chunk ||
        *place > stream.size() || *size > stream.size() - *place)
        return false;
    const std::string_view bytes = stream.substr(*place, *size);
    for (std::size_t at = 0; at < bytes.size(); at += *chunk)
        appendTag(tags, code, fromBytes(bytes.data() + at, std::min(*chunk, bytes.size() - at)), "\n");
    return true;
}

} // namespace

std::string packTags(std::string_view tags, std::string_view stream) {
    std::string packed;
    Run run(stream, packed);
    DxfScanner scanner(tags);
    for (DxfTag tag; scanner.next(tag) == DxfScanner::Result::kTag;) {
        if (run.take(tag))
            continue;
        run.end();
        if (!run.take(tag))
            appendTag(packed, tag.code, tag.value, "\n");
    }
    run.end();
    return packed;
}

bool unpackTags(std::string_view packed, std::string_view stream, std::string& tags) {
    const std::size_t before = tags.size();
    std::size_t fromStream = 0;
    DxfScanner scanner(packed);
    for (DxfTag tag;;) {
        const auto result = scanner.next(tag);
        if (result == DxfScanner::Result::kEnd)
            return true;
        bool whole = result == DxfScanner::Result::kTag;
        if (whole && dxfKind(tag.code) == DxfKind::kBinary && tag.value.starts_with(kPlaceMark)) {
            const std::size_t start = tags.size();
            whole = appendRun(tag.code, tag.value, stream, tags);
            // A stream's bytes are written in DXF once; what names them again and again is made to exhaust the memory.
            fromStream += tags.size() - start;
            whole = whole && fromStream <= stream.size() * 8 + packed.size();
        } else if (whole) {
            appendTag(tags, tag.code, tag.value, "\n");
        }
        if (!whole) {
            tags.resize(before);
            return false;
        }
    }
}

} // namespace merix::io
