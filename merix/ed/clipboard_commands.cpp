// SPDX-License-Identifier: MIT
// The clipboard is a drawing of its own that the copied entities live in: they can be pasted into any drawing of this
// run, also when the one they came from is closed.
#include "merix/ed/clipboard_commands.h"

#include "merix/db/clone.h"
#include "merix/ed/copy_entities.h"
#include "merix/ed/drawing_access.h"
#include "merix/ed/prompter.h"
#include "merix/ed/select_entities.h"
#include "merix/ed/view_commands.h"

namespace merix::ed {

namespace {

using Ids = std::vector<MxDbObjectId>;

MxDbDatabase* g_clipboard = nullptr; // never destroyed at the end: modules may be gone by then

/// The lower left corner of what is copied: where the cursor holds it.
MxGePoint3d cornerOf(const Ids& ids) {
    MxDbExtents box;
    for (const MxDbObjectId id : ids) {
        const Opened<MxDbEntity> entity(id, Mx::kForRead);
        MxDbExtents own;
        if (entity && entity->getGeomExtents(own) == Mx::eOk)
            box.addExt(own);
    }
    return box.isEmpty() ? MxGePoint3d() : MxGePoint3d(box.minPoint().x, box.minPoint().y, 0.0);
}

/// The clipboard keeps what it held when nothing could be copied.
bool copyOut(const Ids& ids) {
    auto clipboard = emptyDrawing();
    if (!copyToDrawing(ids, *clipboard, cornerOf(ids)))
        return false;
    delete g_clipboard;
    g_clipboard = clipboard.release();
    return true;
}

void copyClip() {
    Ids ids;
    if (getSelection(QStringLiteral("Select objects: "), ids) == kInputNormal)
        copyOut(ids);
}

/// What cannot be copied stays in the drawing.
void cutClip() {
    Ids ids;
    if (!getEditableSelection(ids))
        return;
    const auto trial = emptyDrawing();
    const auto uncopied =
        std::erase_if(ids, [&](MxDbObjectId id) { return db::wblockEntities({id}, *trial, {}).empty(); });
    if (uncopied > 0)
        tell(QStringLiteral("%1 cannot be copied and stays.").arg(uncopied));
    if (!ids.empty() && copyOut(ids))
        eraseEntities(ids);
}

void pasteClip() {
    if (!g_clipboard) {
        tell(QStringLiteral("The clipboard is empty."));
        return;
    }
    Prompter& prompter = Prompter::instance();
    MxGePoint3d at;
    prompter.init(Prompter::kNotEmpty, {});
    if (prompter.getPoint(nullptr, QStringLiteral("Insertion point: "), at) == kInputNormal)
        copyEntities(g_clipboard->imp().block(g_clipboard->imp().roots.modelSpace)->entityIds(),
                     MxGeMatrix3d::translation(at.asVector()));
}

} // namespace

void registerClipboardCommands(CommandStack& stack) {
    const auto add = [&](const wchar_t* name, MxEdCommandFunction function) {
        stack.addCommand(kHostGroup, name, name, 0, function);
    };
    add(L"COPYCLIP", copyClip);
    add(L"CUTCLIP", cutClip);
    add(L"PASTECLIP", pasteClip);
}

} // namespace merix::ed
