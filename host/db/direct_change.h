// SPDX-License-Identifier: MIT
// Changes made past the open and close of objects, told to the host before and after. Main thread only.
#pragma once

#include "host/db/object_id.h"

#include <string>

/// For data changed through a pointer that was kept after the object was closed: encloses the change and makes it one
/// step of undo. Works whatever the object is open for, and on a locked layer.
///
/// The step is one of its own, also while a command is under way: whoever cancels the command, or takes it back, keeps
/// this. Only where that command has changed the same object before, the change belongs to the command's step. An
/// erased object gets no step: taking the erasure back brings it back with what it holds then.
class MxDbDirectChange {
public:
    /// Takes the before-image. `name` is the step's, for the user. No effect for an id without a resident object.
    MxDbDirectChange(MxDbObjectId id, const wchar_t* name);
    /// If something changed: does what mxdbMarkModified does and records the step. Where nothing is recorded it is
    /// taken to have changed.
    ~MxDbDirectChange();
    MxDbDirectChange(const MxDbDirectChange&) = delete;
    MxDbDirectChange& operator=(const MxDbDirectChange&) = delete;

private:
    void end();

    MxDbObjectId m_id;
    std::wstring m_name;
    std::string m_before;
    bool m_isRecorded = false;
};
