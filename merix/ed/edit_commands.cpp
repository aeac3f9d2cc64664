// SPDX-License-Identifier: MIT
// Commands that take entities away, stretch them and give them other properties.
#include "merix/ed/edit_commands.h"

#include "merix/db/entity_traits.h"
#include "merix/ed/drawing_access.h"
#include "merix/ed/prompter.h"
#include "merix/ed/properties.h"
#include "merix/ed/select_entities.h"
#include "merix/ed/stretch.h"
#include "merix/ed/view_commands.h"

#include <algorithm>
#include <functional>

namespace merix::ed {

namespace {

using Ids = std::vector<MxDbObjectId>;

void erase() {
    Ids ids;
    if (getEditableSelection(ids))
        tell(QStringLiteral("%1 erased").arg(eraseEntities(ids)));
}

// ---------------------------------------------------------------- stretching

void stretchAll() {
    Ids ids;
    std::optional<MxDbExtents> box;
    tell(QStringLiteral("What is to be stretched is selected by a crossing box."));
    if (!getEditableSelection(ids, box))
        return;
    if (!box) {
        tell(QStringLiteral("There was no crossing box."));
        return;
    }
    Prompter& prompter = Prompter::instance();
    MxGePoint3d base, to;
    prompter.init(Prompter::kNotEmpty, {});
    if (prompter.getPoint(nullptr, QStringLiteral("Base point: "), base) != kInputNormal)
        return;
    const int result = prompter.getPoint(&base, QStringLiteral("Second point <base point as displacement>: "), to);
    if (result != kInputNormal && result != kInputNone)
        return;
    const MxGeVector3d by = result == kInputNone ? base.asVector() : to - base;
    int refused = 0;
    for (const MxDbObjectId id : ids) {
        Opened<MxDbEntity> entity(id, Mx::kForWrite);
        if (entity && stretch(*entity, *box, by) == Mx::eOk)
            continue;
        entity.cancel();
        ++refused;
    }
    if (refused > 0)
        tell(QStringLiteral("%1 could not be changed.").arg(refused));
}

// ---------------------------------------------------------------- properties

/// Of an entity open for write. One that has the value already is not touched: there is nothing to undo then.
using Change = std::function<Mx::ErrorStatus(MxDbEntity&)>;

Mx::ErrorStatus giveColor(MxDbEntity& entity, const ColorValue& color) {
    const db::EntityTraits& own = db::traits(entity);
    if (own.color == color.index && own.hasTrueColor == color.isTrue && (!color.isTrue || own.trueColor == color.rgb))
        return Mx::eOk;
    const auto status = db::setColor(entity, color.index);
    return status == Mx::eOk && color.isTrue ? db::setTrueColor(entity, color.rgb) : status;
}

Change askColor() {
    QString text;
    if (Prompter::instance().getString(false, QStringLiteral("New color: "), text) != kInputNormal)
        return {};
    const auto color = parseColor(text);
    if (!color) {
        tell(QStringLiteral("A color is ByLayer, ByBlock, a number from 1 to 255, a name, or red,green,blue."));
        return {};
    }
    return [color](MxDbEntity& entity) { return giveColor(entity, *color); };
}

Change askLayer() {
    QString text;
    if (Prompter::instance().getString(true, QStringLiteral("New layer: "), text) != kInputNormal)
        return {};
    const MxDbObjectId layer = drawing().layerNamed(text.toStdWString());
    if (layer.isNull()) {
        tell(QStringLiteral("There is no layer %1.").arg(text));
        return {};
    }
    return [layer](MxDbEntity& entity) {
        return db::traits(entity).layer == layer ? Mx::eOk : db::setLayer(entity, layer);
    };
}

Change askLinetype() {
    QString text;
    if (Prompter::instance().getString(false, QStringLiteral("New line type: "), text) != kInputNormal)
        return {};
    MxDbObjectId linetype = linetypeOrLoad(drawing(), text.toStdWString());
    const bool byLayer = text.compare(QLatin1String("ByLayer"), Qt::CaseInsensitive) == 0;
    if (linetype.isNull() && !byLayer) {
        tell(QStringLiteral("There is no line type %1.").arg(text));
        return {};
    }
    if (byLayer)
        linetype = MxDbObjectId();
    return [linetype](MxDbEntity& entity) {
        return db::traits(entity).linetype == linetype ? Mx::eOk : db::setLinetype(entity, linetype);
    };
}

Change askLinetypeScale() {
    Prompter& prompter = Prompter::instance();
    double scale = 1.0;
    prompter.init(Prompter::kNotZero | Prompter::kNotNegative, {});
    if (prompter.getReal(QStringLiteral("New line type scale: "), scale) != kInputNormal)
        return {};
    return [scale](MxDbEntity& entity) {
        return db::traits(entity).linetypeScale == scale ? Mx::eOk : db::setLinetypeScale(entity, scale);
    };
}

Change askLineWeight() {
    QString text;
    if (Prompter::instance().getString(false, QStringLiteral("New line weight: "), text) != kInputNormal)
        return {};
    const auto weight = parseLineWeight(text);
    if (!weight) {
        tell(QStringLiteral("A line weight is ByLayer, ByBlock, Default, or from 0 to 2.11 mm."));
        return {};
    }
    return [weight](MxDbEntity& entity) {
        return db::traits(entity).lineWeight == *weight ? Mx::eOk : db::setLineWeight(entity, *weight);
    };
}

Change askChange(const QString& property) {
    if (property == QLatin1String("Color"))
        return askColor();
    if (property == QLatin1String("LAyer"))
        return askLayer();
    if (property == QLatin1String("LType"))
        return askLinetype();
    if (property == QLatin1String("Scale"))
        return askLinetypeScale();
    return askLineWeight();
}

/// Changes what was chosen when all is chosen: Esc changes nothing.
void changeProperties() {
    Ids ids;
    if (!getEditableSelection(ids))
        return;
    Prompter& prompter = Prompter::instance();
    std::vector<Change> changes;
    for (;;) {
        prompter.init(0, QStringLiteral("Color LAyer LType Scale LWeight"));
        QString property;
        const int result = prompter.getKeyword(
            QStringLiteral("Property to change [Color/LAyer/LType/Scale/LWeight] <end>: "), property);
        if (result == kInputNone)
            break;
        if (result != kInputNormal)
            return;
        if (Change change = askChange(property))
            changes.push_back(std::move(change));
        if (prompter.wasCancelled())
            return;
    }
    if (changes.empty())
        return;
    int refused = 0;
    for (const MxDbObjectId id : ids) {
        Opened<MxDbEntity> entity(id, Mx::kForWrite);
        if (entity && std::all_of(changes.begin(), changes.end(),
                                  [&](const Change& change) { return change(*entity) == Mx::eOk; }))
            continue;
        entity.cancel();
        ++refused;
    }
    if (refused > 0)
        tell(QStringLiteral("%1 could not be changed.").arg(refused));
}

} // namespace

void registerEditCommands(CommandStack& stack) {
    const auto add = [&](const wchar_t* name, const char* alias, MxEdCommandFunction function) {
        stack.addCommand(kHostGroup, name, name, 0, function);
        stack.addAlias(QLatin1String(alias), QString::fromWCharArray(name));
    };
    add(L"ERASE", "E", erase);
    add(L"STRETCH", "S", stretchAll);
    add(L"CHPROP", "CH", changeProperties);
}

} // namespace merix::ed
