// SPDX-License-Identifier: MIT
// DRAWORDER: what is drawn over what.
#include "merix/ed/draw_order_command.h"

#include "host/db/sortents_table.h"
#include "merix/ed/drawing_access.h"
#include "merix/ed/prompter.h"
#include "merix/ed/select_entities.h"
#include "merix/ed/view_commands.h"

namespace merix::ed {

namespace {

void drawOrder() {
    std::vector<MxDbObjectId> ids;
    if (!getEditableSelection(ids))
        return;
    Prompter& prompter = Prompter::instance();
    QString where = QStringLiteral("Back");
    prompter.init(0, QStringLiteral("Front Back"));
    const int result = prompter.getKeyword(QStringLiteral("Bring to the [Front/Back] <Back>: "), where);
    if (result != kInputNormal && result != kInputNone)
        return;
    const Opened<MxDbBlockTableRecord> space(drawing().currentSpace, Mx::kForWrite);
    MxDbSortentsTable* table = nullptr;
    if (!space || space->getSortentsTable(table, Mx::kForWrite, true) != Mx::eOk) {
        tell(QStringLiteral("The draw order of this space cannot be changed."));
        return;
    }
    if (where == QLatin1String("Front"))
        table->moveToTop(ids);
    else
        table->moveToBottom(ids);
    table->close();
}

} // namespace

void registerDrawOrderCommand(CommandStack& stack) {
    stack.addCommand(kHostGroup, L"DRAWORDER", L"DRAWORDER", 0, drawOrder);
    stack.addAlias(QStringLiteral("DR"), QStringLiteral("DRAWORDER"));
}

} // namespace merix::ed
