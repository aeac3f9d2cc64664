// SPDX-License-Identifier: MIT
// The skeleton is written part by part. Texts of unchanged objects are taken from where they were read; changed ones
// are merged; what was written is what the objects are compared with from then on.
#include "merix/io/dxf_writer.h"

#include "host/db/sortents_table.h"
#include "merix/db/tables.h"
#include "merix/io/dxf_binary.h"
#include "merix/io/dxf_record.h"
#include "merix/io/dxf_value.h"
#include "merix/io/file_access.h"
#include "merix/io/object_placement.h"

#include <algorithm>
#include <map>
#include <optional>
#include <unordered_map>

namespace merix::io {
namespace {

using db::ObjectStub;
using Role = Part::Role;

class Writer {
public:
    Writer(const std::string& path, MxDbDatabase& database, std::optional<DxfForm> form)
        : m_path(path)
        , m_asked(form)
        , m_database(database)
        , m_imp(database.imp()) {}

    FileResult run();

private:
    using Text = std::shared_ptr<const std::string>;

    /// Makes the texts of changed objects, so that everything is known before the first byte is written.
    void makeTexts();
    void addClasses();
    void raiseHandSeed();
    std::string_view textOf(const ObjectStub& stub) const;
    /// The form that was asked for, with codes as the drawing's version has them.
    DxfForm chosenForm() const;
    bool writeParts();
    bool put(std::string_view text);
    bool putEnd(std::string_view text);
    void commit();

    const std::string& m_path;
    std::optional<DxfForm> m_asked;
    MxDbDatabase& m_database;
    db::DatabaseImp& m_imp;
    std::unique_ptr<DrawingParts> m_parts;
    std::unordered_map<const ObjectStub*, Text> m_texts;
    ReplacementFile m_file;
    std::optional<BinaryDxfWriter> m_binary;
    std::string_view m_pending;
    FileResult m_result;
};

bool isUnchanged(const ObjectStub& stub) {
    const db::ObjectData& data = stub.object->data();
    return !data.source.empty() && !data.sourceStale && !data.changedSinceSave;
}

void Writer::makeTexts() {
    std::size_t lost = 0;
    for (const Part& part : m_parts->parts) {
        for (const ObjectStub* stub : part.run) {
            if (stub->erased || !stub->object || isUnchanged(*stub))
                continue;
            auto text = std::make_shared<const std::string>(currentRecord(*stub->object, *m_parts));
            lost += text->empty() ? 1 : 0;
            m_texts.emplace(stub, std::move(text));
        }
    }
    if (lost > 0)
        m_result.notes.push_back(m_path + ": " + std::to_string(lost) +
                                 " records whose module is absent have no DXF form and are left out");
}

struct ClassRecord {
    std::string className, appName;
    int proxyFlags = 0;
    bool entity = false;
    int count = 0;
};

std::optional<ClassRecord> classRecord(const MxDbObject& object) {
    const MxRxClass* aClass = object.isA();
    // A kind of ours that DXF counts among those of applications.
    if (aClass == MxDbSortentsTable::desc())
        return ClassRecord{"AcDbSortentsTable", "ObjectDBX Classes", 0, false, 0};
    if (!isModuleClass(aClass))
        return std::nullopt;
    return ClassRecord{toUtf8(aClass->name()), toUtf8(aClass->appName()), aClass->proxyFlags(), object.data().isEntity,
                       0};
}

/// Every class that DXF does not define itself and that writes a record is named in the CLASSES section.
void Writer::addClasses() {
    std::map<std::string, ClassRecord> missing;
    for (const Part& part : m_parts->parts) {
        for (const ObjectStub* stub : part.run) {
            // Only for records that are written anew: a file that lacks the name has reason to, until it is changed.
            const auto record = m_texts.contains(stub) ? classRecord(*stub->object) : std::nullopt;
            if (!record)
                continue;
            const std::string name = dxfNameOf(*stub->object);
            if (!m_parts->classNames.contains(name))
                ++missing.try_emplace(name, *record).first->second.count;
        }
    }
    if (missing.empty())
        return;
    ensureSection(*m_parts, "CLASSES");
    const DxfEncoding encoding = m_parts->encoding();
    std::string text;
    for (const auto& [name, record] : missing) {
        const auto tag = [&](int code, std::string_view value) { appendTag(text, code, value, m_parts->lineEnd); };
        tag(0, "CLASS");
        tag(1, name);
        tag(2, record.className);
        tag(3, encoding.encode(fromUtf8(record.appName)));
        tag(90, std::to_string(record.proxyFlags));
        if (m_parts->version >= "AC1018")
            tag(91, std::to_string(record.count));
        tag(280, "0");
        tag(281, record.entity ? "1" : "0");
        m_parts->classNames.insert(name);
    }
    const std::string_view kept = m_parts->keep(std::move(text));
    for (auto part = m_parts->parts.begin(); part != m_parts->parts.end(); ++part) {
        if (part->role == Role::kClassesEnd) {
            m_parts->parts.insert(part, {Role::kText, kept, nullptr, {}});
            break;
        }
    }
    m_parts->changedSinceOrigin = true;
}

/// $HANDSEED is above every handle in the file.
void Writer::raiseHandSeed() {
    const bool needed = std::any_of(m_texts.begin(), m_texts.end(), [this](const auto& entry) {
        return entry.first->handle.value() >= m_parts->handSeed;
    });
    for (Part& part : m_parts->parts) {
        DxfTag tag;
        if (!needed || part.role != Role::kHandSeed || DxfScanner(part.text).next(tag) != DxfScanner::Result::kTag)
            continue;
        const auto front = static_cast<std::size_t>(tag.value.data() - tag.text.data());
        part.text = m_parts->keep(std::string(tag.text.substr(0, front)) + fromHandle(m_imp.nextHandle()) +
                                  std::string(tag.text.substr(front + tag.value.size())));
        m_parts->handSeed = m_imp.nextHandle();
        m_parts->changedSinceOrigin = true;
    }
}

std::string_view Writer::textOf(const ObjectStub& stub) const {
    const auto found = m_texts.find(&stub);
    return found != m_texts.end() ? std::string_view(*found->second) : stub.object->data().source.text;
}

DxfForm Writer::chosenForm() const {
    const DxfForm form = m_asked.value_or(m_parts->form);
    if (form == DxfForm::kText)
        return form;
    if (m_parts->sourceForm != DxfForm::kText)
        return m_parts->sourceForm;
    return m_parts->isOldVersion() ? DxfForm::kShortBinary : DxfForm::kBinary;
}

/// Neighbours in memory go out together: an untouched file is one piece.
bool Writer::put(std::string_view text) {
    if (m_binary)
        return m_binary->write(text);
    if (m_pending.data() + m_pending.size() == text.data()) {
        m_pending = std::string_view(m_pending.data(), m_pending.size() + text.size());
        return true;
    }
    return m_file.write(std::exchange(m_pending, text));
}

bool Writer::putEnd(std::string_view text) {
    if (m_binary)
        return m_binary->finish(text);
    // What follows EOF in a binary file is no text.
    DxfTag tag;
    const bool cut = m_parts->sourceForm != DxfForm::kText && DxfScanner(text).next(tag) == DxfScanner::Result::kTag;
    return put(cut ? tag.text : text);
}

bool Writer::writeParts() {
    for (const Part& part : m_parts->parts) {
        const bool ofBlock =
            part.role == Role::kBlockBegin || part.role == Role::kBlockRun || part.role == Role::kBlockEnd;
        if (ofBlock && part.owner && part.owner->erased)
            continue;
        if (!part.text.empty() && !(part.role == Role::kEnd ? putEnd(part.text) : put(part.text)))
            return false;
        for (const ObjectStub* stub : part.run) {
            if (!stub->erased && stub->object && !put(textOf(*stub)))
                return false;
        }
    }
    if (m_binary && m_binary->commentsLeftOut() > 0)
        m_result.notes.push_back(m_path + ": " + std::to_string(m_binary->commentsLeftOut()) +
                                 " comments are left out, binary DXF has none");
    return m_file.write(m_pending) && m_file.commit();
}

void Writer::commit() {
    for (auto& [stub, text] : m_texts) {
        db::ObjectData& data = stub->object->data();
        data.sourceStale = false;
        if (data.source.text == *text)
            continue; // keeps one buffer for all
        data.source.text = *text;
        data.source.buffer = std::move(text);
        m_parts->changedSinceOrigin = true;
    }
    m_parts->origin.reset();
    m_imp.fileParts = std::move(m_parts);
    m_imp.clearChanged();
}

FileResult Writer::run() {
    if (m_file.create(m_path)) {
        m_parts = placedParts(m_imp);
        makeTexts();
        addClasses();
        raiseHandSeed();
        const DxfForm form = chosenForm();
        if (form != DxfForm::kText)
            m_binary.emplace(form, m_parts->sourceForm == DxfForm::kText,
                             [this](std::string_view bytes) { return m_file.write(bytes); });
        m_parts->form = form;
        if (writeParts()) {
            commit();
            return std::move(m_result);
        }
    }
    m_result.status = Mx::eFileUnwritable;
    if (m_binary && !m_binary->error().empty())
        m_result.error = m_path + ": the drawing cannot be written as binary DXF: " + m_binary->error();
    else
        m_result.error = m_file.error();
    m_result.notes.clear();
    return std::move(m_result);
}

} // namespace

FileResult writeDxf(const std::string& path, MxDbDatabase& database, std::optional<DxfForm> form) {
    return Writer(path, database, form).run();
}

} // namespace merix::io
