// SPDX-License-Identifier: MIT
// Events of the editor. Main thread only; reactor lists may change while they are walked.
#pragma once

#include "host/rx/rx_class.h"

class MxDbDatabase;

class MxEditorReactor : public MxRxObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    /// A drawing is about to be written to `fileName`; on every save, automatic ones too.
    virtual void beginSave(MxDbDatabase* database, const wchar_t* fileName);
    virtual void commandWillStart(const wchar_t* globalName);
    virtual void commandEnded(const wchar_t* globalName);
    virtual void commandCancelled(const wchar_t* globalName);
    virtual void commandFailed(const wchar_t* globalName);
    virtual void layoutSwitched(const wchar_t* name);
    /// The active view was zoomed, panned or resized.
    virtual void viewChanged();
};

/// In the system registry under "MxEditor".
class MxEditor : public MxRxObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    /// The editor does not own its reactors. Adding one twice has no effect.
    virtual void addReactor(MxEditorReactor* reactor) = 0;
    virtual void removeReactor(MxEditorReactor* reactor) = 0;
};
