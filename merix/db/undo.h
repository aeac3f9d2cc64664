// SPDX-License-Identifier: MIT
// Undo: units of before-images. A unit is opened by the first lock of a command and closed by its last; an empty one
// vanishes. Undoing a unit makes the redo unit from the states it replaces.
#pragma once

#include "merix/db/object_data.h"

#include <memory>
#include <string>
#include <vector>

namespace merix::db {

struct DrawingHeader;

struct UndoStep {
    enum class Kind { kAppend, kModify, kErase, kUnerase, kHeader };
    Kind kind;
    MxDbObjectId id;
    std::string image;                               ///< kModify: the binary filing of the state before
    std::wstring className;                          ///< kModify: the class whose filing it is
    std::shared_ptr<DrawingHeader> header = nullptr; ///< kHeader: the variables before
};

struct UndoUnit {
    std::wstring name; ///< for the user
    std::vector<UndoStep> steps;
};

class UndoRecorder {
public:
    explicit UndoRecorder(DatabaseImp& database)
        : m_database(database) {}

    /// Units nest; only the outermost is recorded. Its name is the one of the outermost.
    void begin(std::wstring name);
    void end();
    /// Drops what the open unit did and takes it back (a command that failed). False when more was done meanwhile than
    /// steps record: the drawing is then not as it was.
    bool abandon();
    /// Something was done to the drawing that undo does not take back.
    void noteUnrecorded() { m_unrecorded = true; }
    bool isOpen() const { return m_depth > 0; }
    /// False while a drawing is being read, in a pause and while steps are being taken back.
    bool isRecording() const { return m_enabled && !m_applying; }

    /// Changes made while it lives are no steps: they neither can be undone nor end what can be redone.
    class Pause {
    public:
        explicit Pause(UndoRecorder& recorder)
            : m_recorder(recorder)
            , m_before(recorder.m_enabled) {
            recorder.m_enabled = false;
        }
        ~Pause() { m_recorder.m_enabled = m_before; }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        UndoRecorder& m_recorder;
        const bool m_before;
    };

    /// Off while a drawing is being read.
    void setEnabled(bool enabled) { m_enabled = enabled; }
    /// Records a step of the open unit; without one it is a unit of its own.
    void record(UndoStep step);
    /// Records a step as a unit of its own below the open one, which may be abandoned without it. A step of an object
    /// that the open unit has changed already can only be taken back with that one, and becomes part of it.
    void recordApart(std::wstring name, UndoStep step);

    bool canUndo() const { return !m_undo.empty(); }
    bool canRedo() const { return !m_redo.empty(); }
    const std::vector<UndoUnit>& undoUnits() const { return m_undo; }
    const std::vector<UndoUnit>& redoUnits() const { return m_redo; }
    /// False when there is nothing to undo, or a unit is open.
    bool undo();
    bool redo();
    void clear();

private:
    /// Takes the steps back, last first (`redoing` false), or does them again; the states replaced stay in the unit.
    void apply(UndoUnit& unit, bool redoing);

    DatabaseImp& m_database;
    std::vector<UndoUnit> m_undo, m_redo;
    UndoUnit m_open;
    int m_depth = 0;
    bool m_enabled = true;
    bool m_applying = false;
    bool m_unrecorded = false; ///< something was done in the open unit that it does not hold
};

} // namespace merix::db
