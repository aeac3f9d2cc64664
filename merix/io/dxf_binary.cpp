// SPDX-License-Identifier: MIT
#include "merix/io/dxf_binary.h"

#include "merix/io/dxf_tag.h"
#include "merix/io/dxf_value.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace merix::io {
namespace {

constexpr std::string_view kSentinel("AutoCAD Binary DXF\r\n\x1a\0", 22);
constexpr std::size_t kNameLength = 18; ///< of the sentinel: what stands in front of its control characters
constexpr int kLastCode = 1071;
constexpr unsigned char kLongCode = 255;
constexpr std::size_t kLongestChunk = 255;
constexpr std::size_t kFlushSize = std::size_t{1} << 20;
constexpr std::uint64_t kPlainNan = 0x7FF8000000000000;
constexpr std::uint64_t kSign = std::uint64_t{1} << 63;

enum class Type { kString, kDouble, kByte, kInt16, kInt32, kInt64, kChunk };

struct Range {
    int low, high;
    Type type;
};
/// The types that the format gives to group codes; strings, handles among them, for all others.
constexpr std::array<Range, 18> kRanges = {{
    {10, 59, Type::kDouble},
    {60, 79, Type::kInt16},
    {90, 99, Type::kInt32},
    {110, 149, Type::kDouble},
    {160, 169, Type::kInt64},
    {170, 179, Type::kInt16},
    {210, 239, Type::kDouble},
    {270, 289, Type::kInt16},
    {290, 299, Type::kByte},
    {310, 319, Type::kChunk},
    {370, 389, Type::kInt16},
    {400, 409, Type::kInt16},
    {420, 429, Type::kInt32},
    {440, 459, Type::kInt32},
    {460, 469, Type::kDouble},
    {1004, 1004, Type::kChunk},
    {1010, 1059, Type::kDouble},
    {1060, 1071, Type::kInt16},
}};

Type typeOf(int code) {
    if (code == 1071)
        return Type::kInt32;
    for (const Range& range : kRanges) {
        if (code >= range.low && code <= range.high)
            return range.type;
    }
    return Type::kString;
}

/// Bytes of a number; 0 for what has no fixed size.
std::size_t sizeOf(Type type) {
    switch (type) {
    case Type::kByte:
        return 1;
    case Type::kInt16:
        return 2;
    case Type::kInt32:
        return 4;
    case Type::kDouble:
    case Type::kInt64:
        return 8;
    case Type::kString:
    case Type::kChunk:
        break;
    }
    return 0;
}

std::uint64_t littleEndian(std::string_view bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value;
}

void appendLittleEndian(std::string& out, std::uint64_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i)
        out += static_cast<char>(value >> (8 * i) & 0xFF);
}

std::string textOfBits(std::uint64_t bits) {
    const auto value = std::bit_cast<double>(bits);
    const std::string sign = (bits & kSign) != 0 ? "-" : "";
    if (std::isinf(value))
        return sign + "inf";
    if (std::isnan(value)) {
        const std::uint64_t plain = bits & ~kSign;
        return plain == kPlainNan ? sign + "nan" : "nan(" + fromHandle(bits) + ")";
    }
    return value == 0.0 ? sign + "0.0" : fromDouble(value);
}

std::optional<std::uint64_t> bitsOfText(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with("nan(") && text.ends_with(")")) {
        const std::uint64_t bits = toHandle(text.substr(4, text.size() - 5));
        return std::isnan(std::bit_cast<double>(bits)) ? std::optional(bits) : std::nullopt;
    }
    const bool negative = text.starts_with('-');
    if (text == "nan" || text == "-nan")
        return kPlainNan | (negative ? kSign : 0);
    if (text.empty())
        return 0;
    if (text.size() > 1 && text.front() == '+' && text[1] != '-')
        text.remove_prefix(1);
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return std::bit_cast<std::uint64_t>(value);
}

/// Programs write whole numbers with a decimal point now and then.
std::optional<std::int64_t> integerOfText(std::string_view text) {
    text = trimmed(text);
    if (text.size() > 1 && text.front() == '+' && text[1] != '-')
        text.remove_prefix(1);
    if (text.empty())
        return 0;
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc() && end == text.data() + text.size())
        return value;
    const auto bits = bitsOfText(text);
    const double number = bits ? std::bit_cast<double>(*bits) : 0.5;
    constexpr double kBound = 9.0e15; // whole numbers up to here are exact
    if (std::abs(number) <= kBound && number == std::floor(number))
        return static_cast<std::int64_t>(number);
    return std::nullopt;
}

struct Escape {
    char byte;
    std::string_view text;
};
constexpr std::array<Escape, 3> kEscapes = {{{'\n', "\\u+000a"}, {'\r', "\\u+000d"}, {'\\', "\\u+005c"}}};

const Escape* escapeAt(std::string_view text) {
    for (const Escape& escape : kEscapes) {
        if (text.starts_with(escape.text))
            return &escape;
    }
    return nullptr;
}

void appendEscaped(std::string& out, std::string_view value) {
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\n')
            out += kEscapes[0].text;
        else if (value[i] == '\r')
            out += kEscapes[1].text;
        else if (value[i] == '\\' && escapeAt(value.substr(i)))
            out += kEscapes[2].text;
        else
            out += value[i];
    }
}

void appendUnescaped(std::string& out, std::string_view value) {
    for (std::size_t i = 0; i < value.size(); ++i) {
        const Escape* escape = value[i] == '\\' ? escapeAt(value.substr(i)) : nullptr;
        out += escape ? escape->byte : value[i];
        i += escape ? escape->text.size() - 1 : 0;
    }
}

class BinaryReader {
public:
    explicit BinaryReader(std::string_view bytes)
        : m_bytes(bytes) {}

    BinaryDxfText run() {
        if (!m_bytes.starts_with(kSentinel)) {
            fail(kNameLength, "the sentinel of a binary DXF drawing is damaged");
            return std::move(m_result);
        }
        m_at = kSentinel.size();
        m_result.form = findForm();
        m_result.text.reserve(m_bytes.size() * 2);
        bool ended = false;
        while (!ended && m_at < m_bytes.size() && m_result.error.empty())
            readTag(ended);
        if (ended && m_at < m_bytes.size())
            m_result.text += fromBytes(m_bytes.data() + m_at, m_bytes.size() - m_at) + "\n";
        m_result.offsets.push_back(m_bytes.size());
        return std::move(m_result);
    }

private:
    /// A file begins with a record's name or with a comment, so its second byte is the upper one of a code, which is at
    /// most 4, or a letter.
    DxfForm findForm() const {
        const auto at = [this](std::size_t i) {
            return m_at + i < m_bytes.size() ? static_cast<unsigned char>(m_bytes[m_at + i]) : 0U;
        };
        return at(0) == kLongCode || at(1) > (kLastCode >> 8) ? DxfForm::kShortBinary : DxfForm::kBinary;
    }

    void fail(std::size_t at, const std::string& what) { m_result.error = "byte " + std::to_string(at) + ": " + what; }

    /// The next bytes; nothing, with a message, when there are fewer.
    std::optional<std::string_view> take(std::size_t count, const std::string& what) {
        const std::size_t left = m_bytes.size() - m_at;
        if (count > left) {
            fail(m_at, "the drawing is cut off: " + what + " takes " + std::to_string(count) + " bytes, " +
                           std::to_string(left) + (left == 1 ? " is left" : " are left"));
            return std::nullopt;
        }
        const std::string_view taken = m_bytes.substr(m_at, count);
        m_at += count;
        return taken;
    }

    /// -1 when there is none.
    int readCode() {
        const std::size_t begin = m_at;
        const bool isShort = m_result.form == DxfForm::kShortBinary;
        auto bytes = take(isShort ? 1 : 2, "a group code");
        const bool isLong = isShort && bytes && littleEndian(*bytes) == kLongCode;
        if (isLong)
            bytes = take(2, "a group code");
        if (!bytes)
            return -1;
        const int code = static_cast<int>(littleEndian(*bytes));
        if (code > kLastCode) {
            fail(begin, std::to_string(code) + " is no group code");
            return -1;
        }
        const std::string number = std::to_string(code);
        if (isLong && code < kLongCode)
            m_result.text += '0';
        else if (number.size() < 3)
            m_result.text.append(3 - number.size(), ' ');
        m_result.text += number + "\n";
        return code;
    }

    void readTag(bool& ended) {
        m_result.offsets.push_back(m_at);
        const int code = readCode();
        if (code < 0)
            return;
        const std::string what = "the value of group " + std::to_string(code);
        const Type type = typeOf(code);
        if (type == Type::kString) {
            const std::size_t end = m_bytes.find('\0', m_at);
            if (end == std::string_view::npos) {
                fail(m_at, "the drawing is cut off: " + what + " has no end");
                return;
            }
            const std::string_view value = m_bytes.substr(m_at, end - m_at);
            const std::size_t begin = m_result.text.size();
            appendEscaped(m_result.text, value);
            ended = code == 0 && trimmed(std::string_view(m_result.text).substr(begin)) == "EOF";
            m_at = end + 1;
        } else if (type == Type::kChunk) {
            const auto size = take(1, what);
            const auto bytes = size ? take(littleEndian(*size), what) : std::nullopt;
            if (bytes)
                m_result.text += fromBytes(bytes->data(), bytes->size());
        } else if (const auto bytes = take(sizeOf(type), what)) {
            m_result.text += textOfNumber(type, littleEndian(*bytes));
        }
        m_result.text += '\n';
    }

    static std::string textOfNumber(Type type, std::uint64_t bits) {
        switch (type) {
        case Type::kDouble:
            return textOfBits(bits);
        case Type::kInt16:
            return std::to_string(static_cast<std::int16_t>(bits));
        case Type::kInt32:
            return std::to_string(static_cast<std::int32_t>(bits));
        default:
            return std::to_string(static_cast<std::int64_t>(bits));
        }
    }

    std::string_view m_bytes;
    std::size_t m_at = 0;
    BinaryDxfText m_result;
};

} // namespace

bool isBinaryDxf(std::string_view bytes) {
    return bytes.starts_with(kSentinel.substr(0, kNameLength));
}

BinaryDxfText binaryDxfToText(std::string_view bytes) {
    return BinaryReader(bytes).run();
}

BinaryDxfWriter::BinaryDxfWriter(DxfForm form, bool fromText, Sink sink)
    : m_form(form)
    , m_fromText(fromText)
    , m_sink(std::move(sink))
    , m_bytes(kSentinel) {}

bool BinaryDxfWriter::flush(std::size_t atLeast) {
    if (m_bytes.size() < atLeast)
        return true;
    const bool written = m_sink(m_bytes);
    m_bytes.clear();
    return written;
}

bool BinaryDxfWriter::refuse(int code, std::string_view value, std::string_view why) {
    constexpr std::size_t kShown = 40;
    std::string shown(value.substr(0, kShown));
    for (char& c : shown)
        c = c >= ' ' && c <= '~' ? c : '?';
    m_error = m_record.empty() ? std::string() : m_record + (m_handle.empty() ? "" : " " + m_handle) + ": ";
    m_error += "group " + std::to_string(code) + " \"" + shown + "\" " + std::string(why);
    return false;
}

bool BinaryDxfWriter::write(std::string_view tags) {
    if (m_fromText && !m_begun && tags.starts_with("\xEF\xBB\xBF"))
        tags.remove_prefix(3);
    DxfScanner scanner(tags);
    DxfTag tag;
    while (true) {
        switch (scanner.next(tag)) {
        case DxfScanner::Result::kTag:
            if (!writeTag(tag.code, tag.text.substr(0, tag.text.find('\n')), tag.value))
                return false;
            continue;
        case DxfScanner::Result::kEnd:
            return true;
        case DxfScanner::Result::kBadCode: {
            std::string_view line;
            scanner.skipLine(line);
            if (m_fromText && !m_begun && trimmed(line).empty())
                continue;
            break;
        }
        case DxfScanner::Result::kMissingValue:
            break;
        }
        m_error = m_record + (m_handle.empty() ? "" : " " + m_handle) + ": the record is damaged";
        return false;
    }
}

bool BinaryDxfWriter::writeTag(int code, std::string_view codeText, std::string_view value) {
    if (m_fromText && (code == 999 || (!m_begun && code != 0))) {
        ++m_comments;
        return true;
    }
    m_begun = true;
    if (code == 0) {
        m_record = trimmed(value);
        m_handle.clear();
    } else if (code == 5 && m_handle.empty()) {
        m_handle = trimmed(value);
    }
    return writeCode(code, codeText) && writeValue(code, value) && flush(kFlushSize);
}

bool BinaryDxfWriter::writeCode(int code, std::string_view codeText) {
    if (code < 0 || code > kLastCode)
        return refuse(code, "", "is no group code");
    if (m_form != DxfForm::kShortBinary) {
        appendLittleEndian(m_bytes, static_cast<std::uint64_t>(code), 2);
        return true;
    }
    codeText = trimmed(codeText);
    if (code < kLongCode && (m_fromText || codeText.size() == 1 || codeText.front() != '0')) {
        m_bytes += static_cast<char>(code);
        return true;
    }
    m_bytes += static_cast<char>(kLongCode);
    appendLittleEndian(m_bytes, static_cast<std::uint64_t>(code), 2);
    return true;
}

bool BinaryDxfWriter::writeInteger(int code, std::string_view value, std::size_t size) {
    const auto number = integerOfText(value);
    if (!number)
        return refuse(code, value, "is no whole number");
    // Values above the middle are written as the same bits.
    const unsigned bits = static_cast<unsigned>(size) * 8;
    if (bits < 64 && (*number < -(std::int64_t{1} << (bits - 1)) || *number >= std::int64_t{1} << bits))
        return refuse(code, value, "does not fit into " + std::to_string(bits) + " bits");
    appendLittleEndian(m_bytes, static_cast<std::uint64_t>(*number), size);
    return true;
}

bool BinaryDxfWriter::writeValue(int code, std::string_view value) {
    const Type type = typeOf(code);
    if (type == Type::kString) {
        if (value.find('\0') != std::string_view::npos)
            return refuse(code, value, "holds a zero byte");
        appendUnescaped(m_bytes, value);
        m_bytes += '\0';
        return true;
    }
    if (type == Type::kChunk) {
        std::vector<std::uint8_t> bytes;
        if (!toBytes(value, bytes))
            return refuse(code, value, "holds no hexadecimal bytes");
        if (bytes.size() > kLongestChunk)
            return refuse(code, value, "holds more than 255 bytes");
        m_bytes += static_cast<char>(bytes.size());
        m_bytes.append(bytes.begin(), bytes.end());
        return true;
    }
    if (type != Type::kDouble)
        return writeInteger(code, value, sizeOf(type));
    const auto bits = bitsOfText(value);
    if (!bits)
        return refuse(code, value, "is no number");
    appendLittleEndian(m_bytes, *bits, sizeof *bits);
    return true;
}

bool BinaryDxfWriter::finish(std::string_view end) {
    DxfScanner scanner(end);
    DxfTag tag;
    if (scanner.next(tag) == DxfScanner::Result::kTag && !write(tag.text))
        return false;
    if (!m_fromText) {
        std::vector<std::uint8_t> bytes;
        const std::string_view tail = end.substr(scanner.position());
        if (!toBytes(tail.substr(0, tail.find('\n')), bytes))
            return refuse(0, "EOF", "is followed by what is no hexadecimal line");
        m_bytes.append(bytes.begin(), bytes.end());
    }
    return flush(1);
}

} // namespace merix::io
