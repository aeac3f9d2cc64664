// SPDX-License-Identifier: MIT
#include "merix/ed/editor.h"

#include "merix/ed/audit_command.h"
#include "merix/ed/clipboard_commands.h"
#include "merix/ed/command_stack.h"
#include "merix/ed/draw_commands.h"
#include "merix/ed/draw_order_command.h"
#include "merix/ed/edit_commands.h"
#include "merix/ed/layer_command.h"
#include "merix/ed/polyline_command.h"
#include "merix/ed/setvar_command.h"
#include "merix/ed/transform_commands.h"
#include "merix/ed/view_commands.h"
#include "merix/rx/system_registry.h"

namespace merix::ed {

namespace {
constexpr const char* kReactor = "An editor reactor";
}

Editor& Editor::instance() {
    // Never destroyed: static objects of modules detach themselves at the very end of the process.
    static Editor* const editor = new Editor;
    return *editor;
}

void Editor::notifyBeginSave(MxDbDatabase* database, const std::wstring& fileName) {
    m_reactors.forEach(kReactor, [&](MxEditorReactor& reactor) { reactor.beginSave(database, fileName.c_str()); });
}

void Editor::notifyCommandWillStart(const std::wstring& globalName) {
    m_reactors.forEach(kReactor, [&](MxEditorReactor& reactor) { reactor.commandWillStart(globalName.c_str()); });
}

void Editor::notifyCommandEnded(const std::wstring& globalName) {
    m_reactors.forEach(kReactor, [&](MxEditorReactor& reactor) { reactor.commandEnded(globalName.c_str()); });
}

void Editor::notifyCommandCancelled(const std::wstring& globalName) {
    m_reactors.forEach(kReactor, [&](MxEditorReactor& reactor) { reactor.commandCancelled(globalName.c_str()); });
}

void Editor::notifyCommandFailed(const std::wstring& globalName) {
    m_reactors.forEach(kReactor, [&](MxEditorReactor& reactor) { reactor.commandFailed(globalName.c_str()); });
}

void Editor::notifyLayoutSwitched(const std::wstring& name) {
    m_reactors.forEach(kReactor, [&](MxEditorReactor& reactor) { reactor.layoutSwitched(name.c_str()); });
}

void Editor::notifyViewChanged() {
    m_reactors.forEach(kReactor, [](MxEditorReactor& reactor) { reactor.viewChanged(); });
}

void startEditor() {
    rx::setSystemRegistryEntry(L"MERIX_REGISTERED_COMMANDS", &CommandStack::instance());
    rx::setSystemRegistryEntry(L"MxEditor", &Editor::instance());
    CommandStack& stack = CommandStack::instance();
    registerAuditCommand(stack);
    registerClipboardCommands(stack);
    registerDrawCommands(stack);
    registerDrawOrderCommand(stack);
    registerEditCommands(stack);
    registerLayerCommand(stack);
    registerPolylineCommand(stack);
    registerSetvarCommand(stack);
    registerTransformCommands(stack);
    registerViewCommands(stack);
}

} // namespace merix::ed
