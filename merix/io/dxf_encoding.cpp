// SPDX-License-Identifier: MIT
#include "merix/io/dxf_encoding.h"

#include "merix/io/dxf_tag.h"

#include <QString>
#include <QTextCodec>

#include <algorithm>
#include <array>
#include <limits>

namespace merix::io {
namespace {

struct CodePage {
    std::string_view name;
    const char* codec;
};
constexpr std::array<CodePage, 16> kCodePages = {{{"ANSI_874", "TIS-620"},
                                                  {"ANSI_932", "Shift_JIS"},
                                                  {"ANSI_936", "GB18030"},
                                                  {"ANSI_949", "windows-949"},
                                                  {"ANSI_950", "Big5"},
                                                  {"ANSI_1250", "windows-1250"},
                                                  {"ANSI_1251", "windows-1251"},
                                                  {"ANSI_1252", "windows-1252"},
                                                  {"ANSI_1253", "windows-1253"},
                                                  {"ANSI_1254", "windows-1254"},
                                                  {"ANSI_1255", "windows-1255"},
                                                  {"ANSI_1256", "windows-1256"},
                                                  {"ANSI_1257", "windows-1257"},
                                                  {"ANSI_1258", "windows-1258"},
                                                  {"DOS850", "IBM850"},
                                                  {"DOS866", "IBM866"}}};

std::string upper(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    }
    return result;
}

bool isAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isScalar(char32_t c) {
    return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
}

int hexDigit(wchar_t c) {
    if (c >= L'0' && c <= L'9')
        return static_cast<int>(c - L'0');
    if (c >= L'A' && c <= L'F')
        return static_cast<int>(c - L'A') + 10;
    if (c >= L'a' && c <= L'f')
        return static_cast<int>(c - L'a') + 10;
    return -1;
}

/// The unit of an escape "\U+XXXX" at `at`, or -1.
int unicodeEscape(std::wstring_view text, std::size_t at) {
    if (at + 7 > text.size() || text[at] != L'\\' || (text[at + 1] != L'U' && text[at + 1] != L'u') ||
        text[at + 2] != L'+')
        return -1;
    int unit = 0;
    for (std::size_t i = at + 3; i < at + 7; ++i) {
        const int digit = hexDigit(text[i]);
        if (digit < 0)
            return -1;
        unit = unit << 4 | digit;
    }
    return unit;
}

std::wstring withoutEscapes(const std::wstring& text) {
    std::wstring result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const wchar_t c = text[i];
        if (c == L'\\') {
            const int unit = unicodeEscape(text, i);
            if (unit > 0) {
                i += 6;
                const int low = unit >= 0xD800 && unit < 0xDC00 ? unicodeEscape(text, i + 1) : -1;
                if (low >= 0xDC00 && low < 0xE000) {
                    i += 7;
                    result += static_cast<wchar_t>(0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
                } else {
                    result += static_cast<wchar_t>(unit);
                }
                continue;
            }
        } else if (c == L'^' && i + 1 < text.size()) {
            const wchar_t next = text[i + 1];
            if (next == L' ') {
                result += L'^';
                ++i;
                continue;
            }
            if (next > L'@' && next <= L'_') {
                result += static_cast<wchar_t>(next - L'@');
                ++i;
                continue;
            }
        }
        result += c;
    }
    return result;
}

void appendUnit(std::string& out, unsigned unit) {
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    out += "\\U+";
    for (int shift = 12; shift >= 0; shift -= 4)
        out += kDigits[unit >> shift & 15];
}

void appendEscape(std::string& out, char32_t c) {
    if (c > 0x10FFFF)
        c = 0xFFFD;
    if (c < 0x10000) {
        appendUnit(out, static_cast<unsigned>(c));
        return;
    }
    appendUnit(out, 0xD800U + (static_cast<unsigned>(c - 0x10000) >> 10));
    appendUnit(out, 0xDC00U + (static_cast<unsigned>(c - 0x10000) & 0x3FF));
}

void appendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | c >> 6);
        out += static_cast<char>(0x80 | (c & 63));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | c >> 12);
        out += static_cast<char>(0x80 | (c >> 6 & 63));
        out += static_cast<char>(0x80 | (c & 63));
    } else {
        out += static_cast<char>(0xF0 | c >> 18);
        out += static_cast<char>(0x80 | (c >> 12 & 63));
        out += static_cast<char>(0x80 | (c >> 6 & 63));
        out += static_cast<char>(0x80 | (c & 63));
    }
}

int boundedSize(std::string_view bytes) {
    return static_cast<int>(std::min<std::size_t>(bytes.size(), std::numeric_limits<int>::max() / 4));
}

} // namespace

DxfEncoding::DxfEncoding(std::string_view version, std::string_view codePage) {
    if (version.size() == 6 && version.starts_with("AC") && version >= "AC1021")
        return;
    const std::string wanted = upper(trimmed(codePage));
    const auto* found =
        std::find_if(kCodePages.begin(), kCodePages.end(), [&](const CodePage& page) { return page.name == wanted; });
    if (found != kCodePages.end())
        m_codec = QTextCodec::codecForName(found->codec);
    if (!m_codec)
        m_codec = QTextCodec::codecForName("windows-1252");
}

std::wstring DxfEncoding::decode(std::string_view bytes) const {
    const bool plain = bytes.find_first_of("\\^") == std::string_view::npos;
    std::wstring text;
    if (isAscii(bytes))
        text.assign(bytes.begin(), bytes.end());
    else if (m_codec)
        text = m_codec->toUnicode(bytes.data(), boundedSize(bytes)).toStdWString();
    else
        text = fromUtf8(bytes);
    return plain && isAscii(bytes) ? text : withoutEscapes(text);
}

std::string DxfEncoding::encode(std::wstring_view text) const {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<char32_t>(text[i]);
        if (c < 0x20) {
            if (c != 0) {
                out += '^';
                out += static_cast<char>(c + '@');
            }
        } else if (c == '^') {
            out += "^ ";
        } else if (c == '\\' && unicodeEscape(text, i) > 0) {
            appendEscape(out, c); // letters that happen to spell an escape
        } else if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (!isScalar(c)) {
            appendEscape(out, c);
        } else if (!m_codec) {
            appendUtf8(out, c);
        } else {
            const QString one = QString::fromUcs4(&c, 1);
            QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
            const QByteArray bytes = m_codec->fromUnicode(one.constData(), one.size(), &state);
            // A converter may turn a character into one that only looks like it: it must read back as itself.
            if (state.invalidChars == 0 && m_codec->toUnicode(bytes) == one)
                out.append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
            else
                appendEscape(out, c);
        }
    }
    return out;
}

std::wstring fromUtf8(std::string_view bytes) {
    return QString::fromUtf8(bytes.data(), boundedSize(bytes)).toStdWString();
}

std::string toUtf8(std::wstring_view text) {
    std::string out;
    out.reserve(text.size());
    for (const wchar_t c : text)
        appendUtf8(out, isScalar(static_cast<char32_t>(c)) ? static_cast<char32_t>(c) : U'\uFFFD');
    return out;
}

} // namespace merix::io
