// SPDX-License-Identifier: MIT
// The editor object: who is told of commands, saves, layouts and views. Main thread only.
#pragma once

#include "host/ed/editor.h"
#include "merix/ed/reactor_list.h"

#include <string>

namespace merix::ed {

class Editor : public MxEditor {
public:
    static Editor& instance();

    void addReactor(MxEditorReactor* reactor) override { m_reactors.add(reactor); }
    void removeReactor(MxEditorReactor* reactor) override { m_reactors.remove(reactor); }

    void notifyBeginSave(MxDbDatabase* database, const std::wstring& fileName);
    void notifyCommandWillStart(const std::wstring& globalName);
    void notifyCommandEnded(const std::wstring& globalName);
    void notifyCommandCancelled(const std::wstring& globalName);
    void notifyCommandFailed(const std::wstring& globalName);
    void notifyLayoutSwitched(const std::wstring& name);
    /// The active view was zoomed, panned or resized.
    void notifyViewChanged();

private:
    Editor() = default;
    ReactorList<MxEditorReactor> m_reactors;
};

/// Puts the command stack and the editor into the system registry and registers the commands of this floor. Once,
/// before any module is loaded.
void startEditor();

} // namespace merix::ed
