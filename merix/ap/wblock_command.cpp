// SPDX-License-Identifier: MIT
// WBLOCK: writes selected entities into a drawing file of their own.
#include "merix/ap/wblock_command.h"

#include "merix/ap/ask_path.h"
#include "merix/ap/document_imp.h"
#include "merix/ed/copy_entities.h"
#include "merix/ed/drawing_access.h"
#include "merix/ed/prompter.h"
#include "merix/ed/select_entities.h"
#include "merix/ed/view_commands.h"
#include "merix/io/drawing_file.h"

#include <QFileInfo>

namespace merix::ap {

namespace {

bool isOpen(const QString& path) {
    for (const Document* document : DocManager::instance().all())
        if (!document->path().isEmpty() && QFileInfo(document->path()) == QFileInfo(path))
            return true;
    return false;
}

/// A file that is there is replaced only when the user says so.
bool mayWrite(const QString& path) {
    if (isOpen(path)) {
        ed::tell(QStringLiteral("%1: it is open as a drawing").arg(path));
        return false;
    }
    return mayReplace(path);
}

void wblock() {
    const QString path = askPath(QStringLiteral("Name of the drawing file: "));
    if (path.isEmpty() || !mayWrite(path))
        return;
    ed::Prompter& prompter = ed::Prompter::instance();
    MxGePoint3d base;
    prompter.init(ed::Prompter::kNotEmpty, {});
    if (prompter.getPoint(nullptr, QStringLiteral("Base point: "), base) != kInputNormal)
        return;
    std::vector<MxDbObjectId> ids;
    if (ed::getSelection(QStringLiteral("Select objects: "), ids) != kInputNormal)
        return;
    const auto target = ed::emptyDrawing();
    if (!ed::copyToDrawing(ids, *target, base))
        return;
    const io::FileResult result = io::writeDrawing(QFileInfo(path).absoluteFilePath().toStdString(), *target);
    ed::tell(result ? QStringLiteral("Written %1").arg(path) : QString::fromStdString(result.error));
}

} // namespace

void registerWblockCommand(ed::CommandStack& stack) {
    stack.addCommand(ed::kHostGroup, L"WBLOCK", L"WBLOCK", 0, wblock);
    stack.addAlias(QStringLiteral("W"), QStringLiteral("WBLOCK"));
}

} // namespace merix::ap
