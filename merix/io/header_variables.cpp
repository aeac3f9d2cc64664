// SPDX-License-Identifier: MIT
#include "merix/io/header_variables.h"

#include "merix/io/dxf_out_filer.h"
#include "merix/io/dxf_tag.h"
#include "merix/io/dxf_value.h"

#include <optional>

namespace merix::io {

namespace {

struct Variable {
    std::string_view name;
    int code;
    std::string value;
    std::string_view without; ///< what readers take when the variable is not there
    bool isNumber;
    bool isOld; ///< known to every version; the others came with AC1015
    bool seen = false;
};

std::vector<Variable> variablesOf(const db::DrawingHeader& header, const DxfEncoding& encoding) {
    const auto text = [&](const std::wstring& value) { return encoding.encode(value); };
    return {
        {"$CLAYER", 8, text(header.currentLayer), "0", false, true},
        {"$CELTYPE", 6, text(header.currentLinetype), "ByLayer", false, true},
        {"$CECOLOR", 62, std::to_string(header.currentColor), "256", true, true},
        {"$LTSCALE", 40, fromDouble(header.linetypeScale), "1", true, true},
        {"$TEXTSIZE", 40, fromDouble(header.textSize), "2.5", true, true},
        {"$CELWEIGHT", 370, std::to_string(header.currentLineWeight), "-1", true, false},
        {"$CELTSCALE", 40, fromDouble(header.currentLinetypeScale), "1", true, false},
        {"$INSUNITS", 70, std::to_string(header.insUnits), "4", true, false},
    };
}

/// Names are compared as tables do it, so that a file's own spelling stays.
bool isSame(const Variable& variable, std::string_view value) {
    if (variable.isNumber)
        return toDouble(value) == toDouble(variable.value);
    return trimmed(value) == variable.value;
}

class HeaderWriter {
public:
    HeaderWriter(DrawingParts& parts, const db::DrawingHeader& header)
        : m_parts(parts)
        , m_variables(variablesOf(header, parts.encoding())) {}

    void run() {
        for (Part& part : m_parts.parts) {
            const bool isText = part.role == Part::Role::kText || part.role == Part::Role::kSection;
            if (isText && !part.text.empty())
                rewrite(part);
            else if (part.role == Part::Role::kHandSeed)
                m_variable = {}; // its name stands at the end of the text before it
            if (m_done)
                return;
        }
    }

private:
    void rewrite(Part& part);
    /// The tag as it is to be, nothing when it stays.
    std::optional<std::string> changed(const DxfTag& tag);
    std::string missing();

    DrawingParts& m_parts;
    std::vector<Variable> m_variables;
    std::string_view m_variable;
    bool m_inSection = false, m_inHeader = false, m_done = false;
};

std::string HeaderWriter::missing() {
    std::string text;
    for (const Variable& variable : m_variables) {
        if (variable.seen || isSame(variable, variable.without) || (!variable.isOld && m_parts.version < "AC1015"))
            continue;
        appendTag(text, 9, variable.name, m_parts.lineEnd);
        appendTag(text, variable.code, variable.value, m_parts.lineEnd);
    }
    return text;
}

std::optional<std::string> HeaderWriter::changed(const DxfTag& tag) {
    if (tag.code == 9) {
        m_variable = trimmed(tag.value);
        return std::nullopt;
    }
    for (Variable& variable : m_variables) {
        if (variable.name != m_variable || variable.code != tag.code)
            continue;
        variable.seen = true;
        if (isSame(variable, tag.value))
            return std::nullopt;
        const auto front = static_cast<std::size_t>(tag.value.data() - tag.text.data());
        return std::string(tag.text.substr(0, front)) + variable.value +
               std::string(tag.text.substr(front + tag.value.size()));
    }
    return std::nullopt;
}

void HeaderWriter::rewrite(Part& part) {
    std::string text;
    std::size_t copied = 0;
    DxfScanner scanner(part.text);
    for (DxfTag tag; !m_done;) {
        const std::size_t at = scanner.position();
        if (scanner.next(tag) != DxfScanner::Result::kTag)
            break;
        const std::string_view value = trimmed(tag.value);
        std::optional<std::string> replacement;
        if (tag.code == 0) {
            m_done = m_inHeader || value == "EOF";
            if (m_inHeader)
                replacement = missing() + std::string(tag.text);
            m_inSection = value == "SECTION";
        } else if (m_inSection && tag.code == 2) {
            m_inHeader = value == "HEADER";
            m_inSection = false;
        } else if (m_inHeader) {
            replacement = changed(tag);
        }
        if (!replacement || *replacement == tag.text)
            continue;
        text += part.text.substr(copied, at - copied);
        text += *replacement;
        copied = scanner.position();
    }
    if (copied == 0)
        return;
    text += part.text.substr(copied);
    part.text = m_parts.keep(std::move(text));
    m_parts.changedSinceOrigin = true;
}

} // namespace

void storeHeader(DrawingParts& parts, const db::DrawingHeader& header) {
    HeaderWriter(parts, header).run();
}

} // namespace merix::io
