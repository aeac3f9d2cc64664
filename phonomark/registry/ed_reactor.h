// SPDX-License-Identifier: MIT
#pragma once

#include "host/ed/editor.h"

/// The editor reactor: writes the note list when a drawing is saved, marks notes as being dragged while a command runs,
/// redraws them when the layout or the view changes. Main thread only.
class PhonomarkEdReactor : public MxEditorReactor {
public:
    static MxRxClass* gpDesc;
    static MxRxClass* rxInit();
    static MxRxObject* makeDefault();
    static MxRxClass* desc() { return gpDesc; }
    MxRxClass* isA() const override { return desc(); }

    /// With `autoAttach` it attaches itself, if the host has an editor.
    explicit PhonomarkEdReactor(bool autoAttach = true);
    ~PhonomarkEdReactor() override;

    bool IsAttached() const { return m_attached; }
    /// The editor; null when there is none.
    MxEditor* Subject() const;
    /// Attaches anew; true when attached then.
    bool Attach();
    void Detach();

    void beginSave(MxDbDatabase* database, const wchar_t* fileName) override;
    void commandWillStart(const wchar_t* command) override;
    void commandEnded(const wchar_t* command) override;
    void commandCancelled(const wchar_t* command) override;
    void commandFailed(const wchar_t* command) override;
    void layoutSwitched(const wchar_t* name) override;
    void viewChanged() override;

private:
    static void commandOver(const wchar_t* command);
    bool m_attached = false;
};
