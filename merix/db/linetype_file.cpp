// SPDX-License-Identifier: MIT
#include "merix/db/linetype_file.h"

#include "merix/db/clone.h"
#include "merix/db/database_imp.h"
#include "merix/db/tables.h"
#include "merix/rx/resource_modules.h"
#include "merix/rx/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <optional>

namespace merix::db {

namespace {

/// Beyond what any file of line types or any pattern needs.
constexpr std::size_t kLongestFile = 16U << 20U, kMostDashes = 256, kLongestName = 255;
constexpr double kLongestDash = 1e6;

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlank = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlank);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

/// What stands before the next comma, which goes with it.
std::string_view takeField(std::string_view& rest) {
    const std::size_t comma = std::min(rest.find(','), rest.size());
    const std::string_view field = rest.substr(0, comma);
    rest.remove_prefix(std::min(comma + 1, rest.size()));
    return trimmed(field);
}

std::optional<double> number(std::string_view text) {
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double value = 0.0;
    const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (failed != std::errc() || end != text.data() + text.size() || !(std::fabs(value) <= kLongestDash))
        return std::nullopt;
    return value;
}

class Parser {
public:
    LinetypeFile take() {
        endDefinition();
        return std::move(m_file);
    }

    void line(std::string_view text) {
        ++m_line;
        text = trimmed(text);
        if (text.empty() || text.starts_with(';'))
            return;
        if (text.starts_with('*'))
            begin(text.substr(1));
        else
            pattern(text);
    }

private:
    void complain(const std::wstring& what, std::size_t line) {
        if (m_file.problem.empty())
            m_file.problem = L"line " + std::to_wstring(line) + L": " + what;
    }

    void begin(std::string_view text) {
        endDefinition();
        const std::wstring name = rx::fromUtf8(takeField(text));
        if (name.empty() || name.size() > kLongestName)
            complain(L"a line type needs a name of 1 to 255 characters", m_line);
        else
            m_open = LinetypeDefinition{name, rx::fromUtf8(trimmed(text)), {}};
        m_begun = m_line;
    }

    void endDefinition() {
        if (std::exchange(m_open, std::nullopt))
            complain(L"the line type has no pattern", m_begun);
    }

    void pattern(std::string_view text) {
        auto definition = std::exchange(m_open, std::nullopt);
        if (takeField(text) != "A")
            return complain(L"a pattern begins with \"A\"", m_line);
        while (!text.empty()) {
            const auto dash = number(takeField(text));
            if (!dash)
                return complain(L"a length is no number", m_line);
            if (definition)
                definition->dashes.push_back(*dash);
        }
        if (!definition)
            return complain(L"a pattern without a name before it", m_line);
        const auto& dashes = definition->dashes;
        if (dashes.size() > kMostDashes)
            return complain(L"a pattern has at most 256 lengths", m_line);
        if (!dashes.empty() && std::all_of(dashes.begin(), dashes.end(), [](double dash) { return dash == 0.0; }))
            return complain(L"a pattern of dots needs gaps", m_line);
        m_file.definitions.push_back(std::move(*definition));
    }

    LinetypeFile m_file;
    std::optional<LinetypeDefinition> m_open;
    std::size_t m_line = 0, m_begun = 0;
};

/// The file itself, or the one of that name beside the program's data files.
std::filesystem::path findFile(std::wstring_view file) {
    const std::filesystem::path path = rx::toUtf8(file);
    if (path.has_parent_path())
        return path;
    for (const std::string& folder : rx::resourceFolders()) {
        const std::filesystem::path candidate = folder / path;
        std::error_code failed;
        if (std::filesystem::is_regular_file(candidate, failed))
            return candidate;
    }
    return {};
}

Mx::ErrorStatus readFile(const std::filesystem::path& path, std::string& text) {
    std::error_code failed;
    if (path.empty() || !std::filesystem::is_regular_file(path, failed))
        return Mx::eFileNotFound;
    std::ifstream stream(path, std::ios::binary);
    text.resize(kLongestFile + 1);
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text.size() > kLongestFile || stream.bad() || (!stream.eof() && stream.fail()) ? Mx::eFileUnreadable
                                                                                          : Mx::eOk;
}

} // namespace

LinetypeFile parseLinetypeFile(std::string_view text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(kByteOrderMark))
        text.remove_prefix(kByteOrderMark.size());
    Parser parser;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        parser.line(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parser.take();
}

Mx::ErrorStatus loadLinetype(DatabaseImp& database, std::wstring_view name, std::wstring_view file,
                             std::wstring& message) {
    message.clear();
    if (!database.linetypeNamed(name).isNull())
        return Mx::eDuplicateKey;
    std::string text;
    if (const auto status = readFile(findFile(file), text); status != Mx::eOk) {
        message = std::wstring(file) + (status == Mx::eFileNotFound ? L": not found" : L": cannot be read");
        return status;
    }
    const LinetypeFile parsed = parseLinetypeFile(text);
    if (!parsed.problem.empty())
        message = std::wstring(file) + L", " + parsed.problem;
    const std::wstring sought = rx::foldCase(name);
    const auto found = std::find_if(parsed.definitions.begin(), parsed.definitions.end(),
                                    [&](const auto& definition) { return rx::foldCase(definition.name) == sought; });
    if (found == parsed.definitions.end()) {
        if (!message.empty())
            return Mx::eFileDamaged;
        message = std::wstring(file) + L" has no line type " + std::wstring(name);
        return Mx::eKeyNotFound;
    }
    auto record = std::make_unique<LinetypeRecord>();
    record->name = found->name;
    record->description = found->description;
    record->dashes = found->dashes;
    MxDbObject* added = appendRecord(database, database.roots.linetypeTable, std::move(record));
    if (!added)
        return Mx::eNotOpen;
    return added->close();
}

} // namespace merix::db

Mx::ErrorStatus MxDbDatabase::loadLineTypeFile(const wchar_t* name, const wchar_t* file) {
    if (!name || !*name || !file || !*file)
        return Mx::eInvalidInput;
    std::wstring message;
    return merix::db::loadLinetype(*m_imp, name, file, message);
}
