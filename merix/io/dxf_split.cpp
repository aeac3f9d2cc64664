// SPDX-License-Identifier: MIT
#include "merix/io/dxf_split.h"

#include "merix/io/dxf_value.h"

#include <algorithm>
#include <utility>

namespace merix::io {
namespace {

using Role = Part::Role;

/// What the tags of a record say about its place. Fed tag by tag, stops looking at the first subclass for the handle.
class HeadReader {
public:
    explicit HeadReader(DxfRecord& record)
        : m_record(record) {}

    void take(const DxfTag& tag) {
        if (tag.code == 100)
            m_inHead = false;
        if (m_inHead && tag.code == 102) {
            const std::string_view value = trimmed(tag.value);
            m_inGroup = !value.empty() && value.front() == '{';
            return;
        }
        const int handleCode = m_record.name == "DIMSTYLE" ? 105 : 5;
        if (m_inHead && !m_inGroup && tag.code == handleCode && m_record.handle == 0)
            m_record.handle = toHandle(tag.value);
        else if (m_inHead && !m_inGroup && tag.code == 330 && m_record.owner == 0)
            m_record.owner = toHandle(tag.value);
        else if (tag.code == 8 && m_record.layer.data() == nullptr)
            m_record.layer = tag.value;
        else if (tag.code == 2 && m_record.subject.data() == nullptr)
            m_record.subject = tag.value;
        else if (tag.code == 67)
            m_record.paper = toInteger(tag.value) == 1;
    }

private:
    DxfRecord& m_record;
    bool m_inHead = true;
    bool m_inGroup = false;
};

/// The text keeps them.
void dropDamagedHandles(DxfRecord& record) {
    for (std::uint64_t* handle : {&record.handle, &record.owner}) {
        if (*handle >= kHandleBound)
            *handle = 0;
    }
}

bool isRecordName(std::string_view text) {
    text = trimmed(text);
    return !text.empty() && text.front() >= 'A' && text.front() <= 'Z' && text.size() > 2 &&
           std::all_of(text.begin(), text.end(),
                       [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '$'; });
}

bool belongsToRecordBefore(std::string_view name) {
    return name == "VERTEX" || name == "ATTRIB" || name == "SEQEND";
}

class Splitter {
public:
    Splitter(std::shared_ptr<const std::string> buffer, const PlaceNamer& placeName)
        : m_placeName(placeName)
        , m_text(*buffer)
        , m_scanner(m_text, firstTag(m_text), 1) {
        m_split.parts = std::make_unique<DrawingParts>();
        m_split.parts->buffers.push_back(std::move(buffer));
        const std::size_t line = m_text.find('\n');
        if (line != std::string_view::npos && line > 0 && m_text[line - 1] == '\r')
            m_split.parts->lineEnd = "\r\n";
    }

    DxfSplit run() {
        skipFrontMatter();
        while (m_split.error.empty() && !m_done)
            nextRecord();
        if (m_split.error.empty() && !m_sawSection)
            fail(1, "this is no DXF drawing: it has no sections");
        return std::move(m_split);
    }

private:
    enum class Section { kNone, kOther, kClasses, kTables, kBlocks, kEntities, kObjects };

    static std::size_t firstTag(std::string_view text) {
        return text.starts_with("\xEF\xBB\xBF") ? 3 : 0; // a byte order mark is kept as text
    }

    void fail(std::uint32_t line, const std::string& what) { m_split.error = m_placeName(line) + ": " + what; }

    void addPart(Role role, std::size_t begin, std::size_t end, db::ObjectStub* owner = nullptr) {
        m_split.parts->parts.push_back({role, m_text.substr(begin, end - begin), owner, {}});
    }
    /// Everything up to `end` that no part holds yet becomes text.
    void flushText(std::size_t end) {
        if (end > m_flushed)
            addPart(std::exchange(m_textRole, Role::kText), m_flushed, end);
        m_flushed = end;
    }
    std::uint32_t openRun(Role role) {
        addPart(role, m_flushed, m_flushed);
        return static_cast<std::uint32_t>(m_split.parts->parts.size() - 1);
    }

    void skipFrontMatter();
    void nextRecord();
    /// Reads the tags of the record at the scanner; false when the file ends or is no DXF.
    bool readRecord(DxfRecord& record);
    /// Goes on at the next line pair that looks like the begin of a record.
    bool resynchronise(DxfRecord& record, const DxfScanner& behindName);
    void takeHeaderTag(const DxfTag& tag);
    void beginSection(const DxfRecord& record, std::size_t begin);
    void endSection(std::size_t begin);
    void takeRecord(DxfRecord& record, std::size_t begin);
    void addToRun(DxfRecord& record, std::uint32_t part);

    const PlaceNamer& m_placeName;
    std::string_view m_text;
    DxfScanner m_scanner;
    DxfSplit m_split;
    Section m_section = Section::kNone;
    std::size_t m_flushed = 0;
    Role m_textRole = Role::kText;
    std::uint32_t m_run = 0;
    bool m_runOpen = false;
    bool m_sawSection = false;
    bool m_done = false;
    bool m_inHeader = false;
    std::string_view m_variable;
    DxfTag m_seedTag;
};

/// Tags in front of the first record: comments, as some programs write.
void Splitter::skipFrontMatter() {
    while (true) {
        const DxfScanner before = m_scanner;
        DxfTag tag;
        const auto result = m_scanner.next(tag);
        if (result == DxfScanner::Result::kTag && tag.code != 0)
            continue;
        m_scanner = before;
        if (result == DxfScanner::Result::kTag)
            return;
        std::string_view line;
        if (result == DxfScanner::Result::kBadCode && m_scanner.skipLine(line) && trimmed(line).empty())
            continue;
        fail(before.line(), "this is no DXF drawing: a group code was expected");
        return;
    }
}

bool Splitter::readRecord(DxfRecord& record) {
    const std::size_t begin = m_scanner.position();
    record.line = m_scanner.line();
    DxfTag tag;
    auto result = m_scanner.next(tag);
    if (result == DxfScanner::Result::kEnd || result == DxfScanner::Result::kMissingValue) {
        fail(record.line, "the drawing is cut off: it ends without EOF");
        return false;
    }
    record.name = trimmed(tag.value);
    m_inHeader = false;
    HeadReader head(record);
    const DxfScanner behindName = m_scanner;
    while (record.name != "EOF") {
        const DxfScanner before = m_scanner;
        result = m_scanner.next(tag);
        if (result == DxfScanner::Result::kTag && tag.code == 0) {
            m_scanner = before;
            break;
        }
        if (result == DxfScanner::Result::kTag) {
            head.take(tag);
            takeHeaderTag(tag);
            // References count as well: a new object must not take a handle that something points at.
            if (dxfKind(tag.code) == DxfKind::kHandle) {
                const std::uint64_t handle = toHandle(tag.value);
                if (handle < kHandleBound)
                    m_split.lastHandle = std::max(m_split.lastHandle, handle);
            }
            m_inHeader = m_inHeader || (record.name == "SECTION" && tag.code == 2 && trimmed(tag.value) == "HEADER");
        } else if (result == DxfScanner::Result::kBadCode) {
            m_split.notes.push_back(m_placeName(before.line()) + ": a group code was expected; the record " +
                                    std::string(record.name) + " of " + m_placeName(record.line) +
                                    " is kept as it came");
            if (!resynchronise(record, behindName)) {
                fail(before.line(), "a group code was expected, and no record follows");
                return false;
            }
            break;
        } else {
            fail(before.line(), "the drawing is cut off: it ends without EOF");
            return false;
        }
    }
    record.text = m_text.substr(begin, m_scanner.position() - begin);
    dropDamagedHandles(record);
    return true;
}

bool Splitter::resynchronise(DxfRecord& record, const DxfScanner& behindName) {
    record.damaged = true;
    m_scanner = behindName;
    std::string_view line;
    DxfScanner candidate = m_scanner;
    bool zero = false;
    while (true) {
        const DxfScanner here = m_scanner;
        if (!m_scanner.skipLine(line))
            return false;
        if (zero && isRecordName(line)) {
            m_scanner = candidate;
            return true;
        }
        zero = trimmed(line) == "0";
        candidate = here;
    }
}

void Splitter::takeHeaderTag(const DxfTag& tag) {
    if (!m_inHeader)
        return;
    if (tag.code == 9) {
        m_variable = trimmed(tag.value);
        return;
    }
    auto& header = m_split.header;
    DrawingParts& parts = *m_split.parts;
    const auto setPoint = [&tag](MxGePoint3d& point) {
        double& target = tag.code == 10 ? point.x : tag.code == 20 ? point.y : point.z;
        target = toDouble(tag.value);
    };
    if (m_variable == "$ACADVER")
        parts.version = trimmed(tag.value);
    else if (m_variable == "$DWGCODEPAGE")
        parts.codePage = trimmed(tag.value);
    else if (m_variable == "$HANDSEED" && tag.code == 5) {
        parts.handSeed = toHandle(tag.value);
        m_seedTag = tag;
    } else if (m_variable == "$EXTMIN")
        setPoint(header.extMin);
    else if (m_variable == "$EXTMAX")
        setPoint(header.extMax);
    else if (m_variable == "$CLAYER")
        m_split.currentLayer = tag.value;
    else if (m_variable == "$CELTYPE")
        m_split.currentLinetype = tag.value;
    else if (m_variable == "$CECOLOR")
        header.currentColor = static_cast<std::int16_t>(std::clamp<std::int64_t>(toInteger(tag.value), 0, 256));
    else if (m_variable == "$CELWEIGHT")
        header.currentLineWeight = static_cast<std::int16_t>(std::clamp<std::int64_t>(toInteger(tag.value), -3, 211));
    else if (m_variable == "$CELTSCALE")
        header.currentLinetypeScale = toDouble(tag.value);
    else if (m_variable == "$LTSCALE")
        header.linetypeScale = toDouble(tag.value);
    else if (m_variable == "$TEXTSIZE")
        header.textSize = toDouble(tag.value);
    else if (m_variable == "$INSUNITS")
        header.insUnits = static_cast<std::int16_t>(std::clamp<std::int64_t>(toInteger(tag.value), 0, 100));
}

void Splitter::nextRecord() {
    const std::size_t begin = m_scanner.position();
    DxfRecord record;
    if (!readRecord(record))
        return;
    if (record.name == "EOF") {
        flushText(begin);
        addPart(Role::kEnd, begin, m_text.size());
        m_done = true;
    } else if (record.name == "SECTION") {
        beginSection(record, begin);
    } else if (record.name == "ENDSEC") {
        endSection(begin);
    } else {
        takeRecord(record, begin);
    }
}

void Splitter::beginSection(const DxfRecord& record, std::size_t begin) {
    m_sawSection = true;
    m_runOpen = false;
    flushText(begin);
    m_textRole = Role::kSection;
    const std::string_view name = trimmed(record.subject);
    m_section = Section::kOther;
    if (name == "HEADER" && m_seedTag.text.data() != nullptr) {
        const auto seed = static_cast<std::size_t>(m_seedTag.text.data() - m_text.data());
        if (seed >= begin && !m_seedTag.text.empty()) {
            flushText(seed);
            m_flushed = seed + m_seedTag.text.size();
            addPart(Role::kHandSeed, seed, m_flushed);
        }
    } else if (name == "CLASSES") {
        m_section = Section::kClasses;
    } else if (name == "TABLES") {
        m_section = Section::kTables;
    } else if (name == "BLOCKS") {
        m_section = Section::kBlocks;
    } else if (name == "ENTITIES" || name == "OBJECTS") {
        m_section = name == "ENTITIES" ? Section::kEntities : Section::kObjects;
        flushText(m_scanner.position());
        m_run = openRun(m_section == Section::kEntities ? Role::kEntityRun : Role::kObjectRun);
        m_runOpen = true;
    }
}

void Splitter::endSection(std::size_t begin) {
    if (m_runOpen)
        m_flushed = begin;
    m_runOpen = false;
    const auto place = [&](Role role) {
        flushText(begin);
        openRun(role);
    };
    if (m_section == Section::kClasses)
        place(Role::kClassesEnd);
    else if (m_section == Section::kTables)
        place(Role::kTablesEnd);
    else if (m_section == Section::kBlocks)
        place(Role::kBlocksEnd);
    m_section = Section::kNone;
}

void Splitter::addToRun(DxfRecord& record, std::uint32_t part) {
    record.part = part;
    m_split.records.push_back(record);
    m_flushed = m_scanner.position();
}

void Splitter::takeRecord(DxfRecord& record, std::size_t begin) {
    switch (m_section) {
    case Section::kNone:
    case Section::kOther:
        break;
    case Section::kClasses: {
        DxfScanner tags(record.text);
        DxfTag tag;
        while (record.name == "CLASS" && tags.next(tag) == DxfScanner::Result::kTag) {
            if (tag.code == 1)
                m_split.parts->classNames.emplace(trimmed(tag.value));
        }
        break;
    }
    case Section::kTables:
        if (record.name == "TABLE") {
            flushText(begin);
            addToRun(record, openRun(Role::kTable));
            m_run = openRun(Role::kTableRun);
            m_runOpen = true;
        } else if (record.name == "ENDTAB") {
            m_runOpen = false;
        } else if (m_runOpen) {
            addToRun(record, m_run);
        }
        break;
    case Section::kBlocks:
        if (record.name == "BLOCK") {
            flushText(begin);
            addPart(Role::kBlockBegin, begin, m_scanner.position());
            m_flushed = m_scanner.position();
            record.part = static_cast<std::uint32_t>(m_split.parts->parts.size() - 1);
            m_split.blocks.push_back(record);
            m_run = openRun(Role::kBlockRun);
            m_runOpen = true;
        } else if (record.name == "ENDBLK" && m_runOpen) {
            m_runOpen = false;
            addPart(Role::kBlockEnd, begin, m_scanner.position());
            m_flushed = m_scanner.position();
        } else if (m_runOpen) {
            addToRun(record, m_run);
        }
        break;
    case Section::kEntities:
    case Section::kObjects:
        addToRun(record, m_run);
        break;
    }
    // A follower is part of the text of the record before it.
    auto& records = m_split.records;
    if (records.size() > 1 && records.back().text.data() == record.text.data() && belongsToRecordBefore(record.name) &&
        (m_section == Section::kEntities || m_section == Section::kBlocks)) {
        DxfRecord& before = records[records.size() - 2];
        if (before.part == record.part && before.text.data() + before.text.size() == record.text.data()) {
            before.text = m_text.substr(static_cast<std::size_t>(before.text.data() - m_text.data()),
                                        before.text.size() + record.text.size());
            records.pop_back();
        }
    }
}

} // namespace

std::string nameLine(std::uint32_t line) {
    return "line " + std::to_string(line);
}

DxfSplit splitDxf(std::shared_ptr<const std::string> buffer, const PlaceNamer& placeName) {
    return Splitter(std::move(buffer), placeName).run();
}

DxfRecord readHead(std::string_view text) {
    DxfScanner scanner(text);
    DxfTag tag;
    DxfRecord record;
    record.text = text;
    HeadReader reader(record);
    for (bool first = true; scanner.next(tag) == DxfScanner::Result::kTag; first = false) {
        if (tag.code != 0)
            reader.take(tag);
        else if (first)
            record.name = trimmed(tag.value);
        else
            break;
    }
    dropDamagedHandles(record);
    return record;
}

} // namespace merix::io
