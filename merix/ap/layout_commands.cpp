// SPDX-License-Identifier: MIT
// Layouts: which of them is worked on, making, renaming and deleting them.
#include "merix/ap/layout_commands.h"

#include "merix/ap/document_imp.h"
#include "merix/db/layout.h"
#include "merix/db/tables.h"
#include "merix/ed/drawing_access.h"
#include "merix/ed/prompter.h"
#include "merix/ed/properties.h"
#include "merix/ed/view_commands.h"

#include <algorithm>
#include <stdexcept>

namespace merix::ap {

namespace {

using ed::Opened;
using ed::tell;
using LayoutInfo = db::DatabaseImp::LayoutInfo;

Document& current() {
    Document* document = DocManager::instance().current();
    if (!document) // commands that are no session commands run in a drawing only
        throw std::runtime_error("no drawing is open");
    return *document;
}

QString askName(const QString& prompt) {
    QString name;
    ed::Prompter& prompter = ed::Prompter::instance();
    return prompter.getString(true, prompt, name) == kInputNormal ? name : QString();
}

/// Null, after telling so, when there is none of that name.
const LayoutInfo* find(const std::vector<LayoutInfo>& layouts, const QString& name) {
    for (const LayoutInfo& layout : layouts)
        if (QString::fromStdWString(layout.name).compare(name, Qt::CaseInsensitive) == 0)
            return &layout;
    tell(QStringLiteral("There is no layout %1.").arg(name));
    return nullptr;
}

bool isFree(const QString& name) {
    if (!ed::isRecordName(name)) {
        tell(QStringLiteral("%1 cannot be the name of a layout.").arg(name));
        return false;
    }
    for (const QString& known : current().layouts())
        if (known.compare(name, Qt::CaseInsensitive) == 0) {
            tell(QStringLiteral("The layout %1 is there already.").arg(known));
            return false;
        }
    return true;
}

MxDbObjectId layoutDictionary() {
    const Opened<MxDbDictionary> root(ed::drawing().roots.namedObjects, Mx::kForRead);
    MxDbObjectId id;
    if (root)
        root->getAt(db::kLayoutDictionary, id);
    return id;
}

/// The block of a new layout: *Paper_Space0, *Paper_Space1 and so on.
MxDbObjectId makeSpace() {
    db::DatabaseImp& database = ed::drawing();
    std::wstring name;
    for (int number = 0; name.empty() || !database.blockNamed(name).isNull(); ++number)
        name = L"*Paper_Space" + std::to_wstring(number);
    auto block = std::make_unique<MxDbBlockTableRecord>();
    database.setBlock(*block, name, {});
    return ed::addRecord(database.roots.blockTable, std::move(block));
}

void eraseObject(MxDbObjectId id) {
    if (const Opened<MxDbObject> object(id, Mx::kForWrite); object)
        object->erase();
}

void makeLayout() {
    const QString name = askName(QStringLiteral("Name of the new layout: "));
    if (name.isEmpty() || !isFree(name))
        return;
    db::DatabaseImp& database = ed::drawing();
    const Opened<MxDbDictionary> dictionary(layoutDictionary(), Mx::kForWrite);
    MxDbObjectId id;
    if (dictionary && dictionary->getAt(name.toStdWString().c_str(), id) == Mx::eOk) {
        tell(QStringLiteral("The layout %1 is there already.").arg(name)); // one that shows no space
        return;
    }
    const MxDbObjectId space = dictionary ? makeSpace() : MxDbObjectId();
    if (space.isNull()) {
        tell(QStringLiteral("This drawing cannot have further layouts."));
        return;
    }
    auto layout = std::make_unique<db::Layout>();
    layout->name = name.toStdWString();
    layout->block = space;
    for (const LayoutInfo& other : database.layouts())
        if (const auto* known = dynamic_cast<const db::Layout*>(db::DatabaseImp::peek(other.layout)))
            layout->tabOrder = std::max(layout->tabOrder, static_cast<std::int16_t>(known->tabOrder + 1));
    if (dictionary->setAt(layout->name.c_str(), layout.get(), id) != Mx::eOk) {
        eraseObject(space);
        tell(QStringLiteral("The layout cannot be made."));
        return;
    }
    layout.release()->close();
    const Opened<MxDbBlockTableRecord> block(space, Mx::kForWrite);
    if (!block)
        return;
    block->assertWriteEnabled();
    database.setBlockLayout(*block, id);
}

/// The new name under which the layout stands in its dictionary too.
void renameLayout() {
    const QString name = askName(QStringLiteral("Layout to rename: "));
    if (name.isEmpty())
        return;
    const auto layouts = ed::drawing().layouts();
    const LayoutInfo* old = find(layouts, name);
    if (!old)
        return;
    if (old->space == ed::drawing().roots.modelSpace) {
        tell(QStringLiteral("Model cannot be renamed."));
        return;
    }
    const QString fresh = askName(QStringLiteral("New name: "));
    if (fresh.isEmpty() || !isFree(fresh))
        return;
    const Opened<MxDbDictionary> dictionary(layoutDictionary(), Mx::kForWrite);
    const Opened<db::Layout> layout(old->layout, Mx::kForWrite);
    if (!dictionary || !layout || dictionary->rename(old->name.c_str(), fresh.toStdWString().c_str()) != Mx::eOk) {
        tell(QStringLiteral("The layout cannot be renamed."));
        return;
    }
    layout->assertWriteEnabled();
    layout->name = fresh.toStdWString();
}

bool isOnLockedLayer(MxDbObjectId entity) {
    const MxDbLayerTableRecord* layer = ed::layerOf(entity);
    return layer && layer->isLocked();
}

/// With all that was drawn in it.
void deleteLayout() {
    const QString name = askName(QStringLiteral("Layout to delete: "));
    if (name.isEmpty())
        return;
    db::DatabaseImp& database = ed::drawing();
    const auto layouts = database.layouts();
    const LayoutInfo* gone = find(layouts, name);
    if (!gone)
        return;
    if (gone->space == database.roots.modelSpace) {
        tell(QStringLiteral("Model cannot be deleted."));
        return;
    }
    if (gone->space == database.roots.paperSpace) {
        tell(QStringLiteral("The layout %1 holds the drawing's first paper space and stays.")
                 .arg(QString::fromStdWString(gone->name)));
        return;
    }
    const auto entities = database.block(gone->space)->entityIds();
    if (std::any_of(entities.begin(), entities.end(), isOnLockedLayer)) {
        tell(QStringLiteral("The layout %1 holds objects on locked layers and stays.")
                 .arg(QString::fromStdWString(gone->name)));
        return;
    }
    if (current().currentLayout().compare(name, Qt::CaseInsensitive) == 0)
        current().setCurrentLayout(QStringLiteral("Model"));
    ed::eraseEntities(entities);
    eraseObject(gone->layout);
    eraseObject(gone->space);
}

void list() {
    for (const QString& name : current().layouts())
        tell(name == current().currentLayout() ? name + QStringLiteral(" (current)") : name);
}

void switchTo(const QString& name) {
    if (!name.isEmpty() && !current().setCurrentLayout(name))
        tell(QStringLiteral("There is no layout %1.").arg(name));
}

void layout() {
    ed::Prompter& prompter = ed::Prompter::instance();
    prompter.init(0, QStringLiteral("? Set New Rename Delete"));
    QString option = QStringLiteral("Set");
    const int result = prompter.getKeyword(QStringLiteral("[?/Set/New/Rename/Delete] <Set>: "), option);
    if (result != kInputNormal && result != kInputNone)
        return;
    if (option == QLatin1String("?"))
        list();
    else if (option == QLatin1String("New"))
        makeLayout();
    else if (option == QLatin1String("Rename"))
        renameLayout();
    else if (option == QLatin1String("Delete"))
        deleteLayout();
    else
        switchTo(askName(QStringLiteral("Layout to make current <%1>: ").arg(current().currentLayout())));
}

void layoutSwitch() {
    switchTo(askName(QStringLiteral("Layout to make current <%1>: ").arg(current().currentLayout())));
}

} // namespace

void registerLayoutCommands(ed::CommandStack& stack) {
    const auto add = [&](const wchar_t* name, MxEdCommandFunction function) {
        stack.addCommand(ed::kHostGroup, name, name, 0, function);
    };
    add(L"LAYOUT", layout);
    add(L"-LAYOUT", layout);
    add(L"LAYOUTSWITCH", layoutSwitch);
    stack.addAlias(QStringLiteral("LO"), QStringLiteral("LAYOUT"));
}

} // namespace merix::ap
