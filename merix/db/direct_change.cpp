// SPDX-License-Identifier: MIT
#include "host/db/direct_change.h"

#include "merix/db/access.h"
#include "merix/db/database_imp.h"

#include <cstdio>
#include <exception>
#include <utility>

using namespace merix::db;

namespace {

/// Who has the object open for write records the state before all that happens meanwhile.
bool isBeingRecorded(const ObjectData& data) {
    return data.writer && data.beforeImage;
}

} // namespace

MxDbDirectChange::MxDbDirectChange(MxDbObjectId id, const wchar_t* name)
    : m_id(id)
    , m_name(name ? name : L"") {
    const MxDbObject* object = DatabaseImp::peek(id);
    if (!object || isBeingRecorded(object->data()) || !id.stub()->database->undo.isRecording())
        return;
    m_before = undoImage(*object);
    m_isRecorded = true;
}

MxDbDirectChange::~MxDbDirectChange() {
    try {
        end();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "merix: a step of undo was not recorded: %s\n", error.what());
    }
}

void MxDbDirectChange::end() {
    const MxDbObject* object = DatabaseImp::peek(m_id);
    if (m_isRecorded && object) {
        if (undoImage(*object) == m_before)
            return;
        m_id.stub()->database->undo.recordApart(
            std::move(m_name), {UndoStep::Kind::kModify, m_id, std::move(m_before), object->isA()->name()});
    }
    mxdbMarkModified(m_id);
}
