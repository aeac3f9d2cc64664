// SPDX-License-Identifier: MIT
// Run-time classes of the contract's editor headers, and the empty defaults of their notifications.
#include "host/ed/commands.h"
#include "host/ed/editor.h"
#include "host/ed/input_point.h"
#include "merix/rx/class_registry.h"

MERIX_RX_CLASS(MxEdCommand, "MxEdCommand", MxRxObject, nullptr, "")

MERIX_RX_CLASS(MxEdCommandStack, "MxEdCommandStack", MxRxObject, nullptr, "")

MERIX_RX_CLASS(MxEditor, "MxEditor", MxRxObject, nullptr, "")

MERIX_RX_CLASS(MxEditorReactor, "MxEditorReactor", MxRxObject, nullptr, "")
void MxEditorReactor::beginSave(MxDbDatabase*, const wchar_t*) {}
void MxEditorReactor::commandWillStart(const wchar_t*) {}
void MxEditorReactor::commandEnded(const wchar_t*) {}
void MxEditorReactor::commandCancelled(const wchar_t*) {}
void MxEditorReactor::commandFailed(const wchar_t*) {}
void MxEditorReactor::layoutSwitched(const wchar_t*) {}
void MxEditorReactor::viewChanged() {}

MERIX_RX_CLASS(MxEdInputPointMonitor, "MxEdInputPointMonitor", MxRxObject, nullptr, "")
