// SPDX-License-Identifier: MIT
// Undo: units of before-images. A unit is opened by the first lock of a command and closed by its last; an empty one
// vanishes. Undoing a unit makes the redo unit from the states it replaces.
#pragma once

#include "merix/db/object_data.h"

#include <string>
#include <vector>

namespace merix::db {

struct UndoStep {
    enum class Kind { kAppend, kModify, kErase, kUnerase };
    Kind kind;
    MxDbObjectId id;
    std::string image;      ///< kModify: the binary filing of the state before
    std::wstring className; ///< kModify: the class whose filing it is
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
    /// Ends a unit that the user did not ask for (what is written along with a save): its steps become part of the unit
    /// before, and are undone with it; without one they are not undone at all. What can be redone stays.
    void endIntoLast();
    /// Drops what the open unit did and takes it back (a command that failed).
    void abandon();
    bool isOpen() const { return m_depth > 0; }
    /// False while a drawing is being read and while steps are being taken back.
    bool isRecording() const { return m_enabled && !m_applying; }

    /// Off while a drawing is being read.
    void setEnabled(bool enabled) { m_enabled = enabled; }
    /// Records a step of the open unit; without one it is a unit of its own.
    void record(UndoStep step);

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
};

} // namespace merix::db
