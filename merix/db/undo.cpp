// SPDX-License-Identifier: MIT
#include "merix/db/undo.h"

#include "merix/db/database_imp.h"
#include "merix/db/kept_records.h"
#include "merix/db/reactors.h"

#include <algorithm>
#include <map>
#include <utility>

namespace merix::db {

namespace {

/// Exchanges the object's state with the one in the step.
void swapState(MxDbObject& object, UndoStep& step) {
    std::wstring className = object.isA()->name();
    std::string now = dwgImage(object, MxDbFilerType::kUndo);
    if (!restoreImage(object, step.image, step.className))
        return;
    step.image = std::move(now);
    step.className = std::move(className);
    ObjectData& data = object.data();
    ++data.graphicsVersion;
    DatabaseImp& database = *data.stub->database;
    database.markChanged(object);
    const ReadAccess readable(object);
    database.notifyModified(object);
    tellTransient(object, [&](MxDbObjectReactor& reactor) { reactor.modified(&object); });
    tellPersistent(object, [&](MxDbObject& reactor) {
        reactor.modifyUndone(&object);
        reactor.modified(&object); // what follows the object may have been taken back before it
    });
}

void setPresent(MxDbObject& object, bool present, bool ofAppend) {
    if (object.isErased() != present)
        return;
    object.data().stub->database->markChanged(object);
    setErased(object, !present);
    if (!ofAppend)
        return;
    const ReadAccess readable(object);
    tellPersistent(object, [&](MxDbObject& reactor) {
        if (present)
            reactor.reappended(&object);
        else
            reactor.unappended(&object);
    });
}

/// Leaves out the objects that were added and erased again: they are gone before as after.
void dropPassing(std::vector<UndoStep>& steps) {
    enum class Fate { kThere, kPassed };
    std::map<MxDbObjectId, Fate> added;
    for (const UndoStep& step : steps) {
        if (step.kind == UndoStep::Kind::kAppend)
            added[step.id] = Fate::kThere;
        else if (const auto known = added.find(step.id); known != added.end() && step.kind != UndoStep::Kind::kModify)
            known->second = step.kind == UndoStep::Kind::kErase ? Fate::kPassed : Fate::kThere;
    }
    std::erase_if(steps, [&](const UndoStep& step) {
        const auto known = added.find(step.id);
        return known != added.end() && known->second == Fate::kPassed;
    });
}

} // namespace

void UndoRecorder::begin(std::wstring name) {
    if (m_depth++ > 0)
        return;
    m_open = {std::move(name), {}};
    m_unrecorded = false;
}

void UndoRecorder::end() {
    if (m_depth == 0 || --m_depth > 0)
        return;
    dropPassing(m_open.steps);
    if (m_open.steps.empty())
        return;
    m_undo.push_back(std::exchange(m_open, {}));
    m_redo.clear();
}

bool UndoRecorder::abandon() {
    if (m_depth == 0)
        return false;
    m_depth = 0;
    UndoUnit unit = std::exchange(m_open, {});
    const bool whole = !m_unrecorded; // what reactors do on the way back is no loss
    apply(unit, false);
    return whole;
}

void UndoRecorder::record(UndoStep step) {
    if (!isRecording()) {
        m_unrecorded = true;
        return;
    }
    if (m_depth > 0) {
        m_open.steps.push_back(std::move(step));
        return;
    }
    UndoUnit unit;
    unit.steps.push_back(std::move(step));
    m_undo.push_back(std::move(unit));
    m_redo.clear();
}

void UndoRecorder::recordApart(std::wstring name, UndoStep step) {
    const auto isOfStep = [&step](const UndoStep& known) { return known.id == step.id; };
    if (!isRecording() || (m_depth > 0 && std::any_of(m_open.steps.begin(), m_open.steps.end(), isOfStep))) {
        record(std::move(step));
        return;
    }
    m_unrecorded = true; // by the open unit
    m_undo.push_back({std::move(name), {}});
    m_undo.back().steps.push_back(std::move(step));
    m_redo.clear();
}

bool UndoRecorder::undo() {
    if (m_depth > 0 || m_undo.empty())
        return false;
    UndoUnit unit = std::move(m_undo.back());
    m_undo.pop_back();
    apply(unit, false);
    m_redo.push_back(std::move(unit));
    return true;
}

bool UndoRecorder::redo() {
    if (m_depth > 0 || m_redo.empty())
        return false;
    UndoUnit unit = std::move(m_redo.back());
    m_redo.pop_back();
    apply(unit, true);
    m_undo.push_back(std::move(unit));
    return true;
}

void UndoRecorder::clear() {
    m_undo.clear();
    m_redo.clear();
    m_open.steps.clear();
}

void UndoRecorder::apply(UndoUnit& unit, bool redoing) {
    // Those who are told may throw.
    struct Applying {
        explicit Applying(bool& flag)
            : applying(flag) {
            applying = true;
        }
        ~Applying() { applying = false; }
        Applying(const Applying&) = delete;
        Applying& operator=(const Applying&) = delete;
        bool& applying;
    };
    const Applying scope(m_applying);
    const auto applyStep = [this, redoing](UndoStep& step) {
        if (step.kind == UndoStep::Kind::kHeader) {
            std::swap(m_database.header, *step.header);
            m_database.notifyHeaderChanged();
            return;
        }
        MxDbObject* object = DatabaseImp::peek(step.id, true);
        if (!object)
            return;
        switch (step.kind) {
        case UndoStep::Kind::kModify:
            swapState(*object, step);
            break;
        case UndoStep::Kind::kAppend:
            setPresent(*object, redoing, true);
            break;
        case UndoStep::Kind::kUnerase:
            setPresent(*object, redoing, false);
            break;
        case UndoStep::Kind::kErase:
            setPresent(*object, !redoing, false);
            break;
        case UndoStep::Kind::kHeader:
            break; // done above: it is of no object
        }
    };
    if (redoing) {
        for (auto& step : unit.steps)
            applyStep(step);
    } else {
        for (auto step = unit.steps.rbegin(); step != unit.steps.rend(); ++step)
            applyStep(*step);
    }
}

} // namespace merix::db
