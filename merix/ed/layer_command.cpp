// SPDX-License-Identifier: MIT
// LAYER: makes layers, shows and hides them and gives them their properties. Names are lists with commas; * stands for
// any text in them.
#include "merix/ed/layer_command.h"

#include "merix/db/layers.h"
#include "merix/db/tables.h"
#include "merix/ed/drawing_access.h"
#include "merix/ed/prompter.h"
#include "merix/ed/properties.h"
#include "merix/ed/view_commands.h"

#include <QRegularExpression>

#include <algorithm>
#include <functional>

namespace merix::ed {

namespace {

using Change = std::function<Mx::ErrorStatus(MxDbObjectId)>;

bool isSame(const std::wstring& a, const std::wstring& b) {
    return QString::fromStdWString(a).compare(QString::fromStdWString(b), Qt::CaseInsensitive) == 0;
}

std::vector<MxDbObjectId> layers() {
    std::vector<MxDbObjectId> ids;
    if (const auto* table = dynamic_cast<const db::SymbolTable*>(db::DatabaseImp::peek(drawing().roots.layerTable)))
        for (const MxDbObjectId id : table->records)
            if (layerRecord(id))
                ids.push_back(id);
    return ids;
}

bool isCurrent(const MxDbLayerTableRecord& layer) {
    return isSame(layer.name, drawing().header.currentLayer);
}

/// A list of names; empty after Enter, Esc or a blank answer.
QStringList askNames(const QString& prompt) {
    QString answer;
    if (Prompter::instance().getString(true, prompt, answer) != kInputNormal)
        return {};
    QStringList names;
    for (const QString& name : answer.split(QLatin1Char(',')))
        if (!name.trimmed().isEmpty())
            names << name.trimmed();
    return names;
}

/// The layers that the names mean, each once; a name that means none is told.
std::vector<MxDbObjectId> named(const QStringList& names) {
    std::vector<MxDbObjectId> found;
    for (const QString& name : names) {
        QStringList parts;
        for (const QString& part : name.split(QLatin1Char('*')))
            parts << QRegularExpression::escape(part);
        const QRegularExpression pattern(QStringLiteral("\\A%1\\z").arg(parts.join(QStringLiteral(".*"))),
                                         QRegularExpression::CaseInsensitiveOption);
        bool any = false;
        for (const MxDbObjectId id : layers()) {
            if (!pattern.match(QString::fromStdWString(layerRecord(id)->name)).hasMatch())
                continue;
            any = true;
            if (std::find(found.begin(), found.end(), id) == found.end())
                found.push_back(id);
        }
        if (!any)
            tell(QStringLiteral("There is no layer %1.").arg(name));
    }
    return found;
}

void change(const std::vector<MxDbObjectId>& ids, const Change& how) {
    const auto refused = std::count_if(ids.begin(), ids.end(), [&](MxDbObjectId id) { return how(id) != Mx::eOk; });
    if (refused > 0)
        tell(QStringLiteral("%1 could not be changed.").arg(refused));
}

void askAndChange(const char* prompt, const Change& how) {
    change(named(askNames(QLatin1String(prompt))), how);
}

MxDbObjectId makeLayer(const QString& name) {
    if (!isRecordName(name)) {
        tell(QStringLiteral("%1 cannot be the name of a layer.").arg(name));
        return {};
    }
    if (const MxDbObjectId known = drawing().layerNamed(name.toStdWString()); !known.isNull()) {
        tell(QStringLiteral("The layer %1 is there already.").arg(recordName(known)));
        return known;
    }
    MxDbObjectId id;
    if (db::addLayer(drawing(), name.toStdWString(), id) != Mx::eOk)
        tell(QStringLiteral("The layer %1 cannot be made.").arg(name));
    return id;
}

void makeCurrent(const MxDbLayerTableRecord& layer) {
    if (layer.isFrozen()) {
        tell(QStringLiteral("The layer %1 is frozen and cannot be current.").arg(QString::fromStdWString(layer.name)));
        return;
    }
    db::setCurrentLayer(layer.objectId());
}

void newLayers() {
    for (const QString& name : askNames(QStringLiteral("Names of the new layers: ")))
        makeLayer(name);
}

/// The one layer of a name.
void setCurrent() {
    QString name;
    if (Prompter::instance().getString(
            true,
            QStringLiteral("Layer to make current <%1>: ").arg(QString::fromStdWString(drawing().header.currentLayer)),
            name) != kInputNormal)
        return;
    if (const auto* layer = layerRecord(drawing().layerNamed(name.toStdWString())))
        makeCurrent(*layer);
    else
        tell(QStringLiteral("There is no layer %1.").arg(name));
}

void makeAndSet() {
    QString name;
    if (Prompter::instance().getString(true, QStringLiteral("Layer to make and make current: "), name) != kInputNormal)
        return;
    if (const auto* layer = layerRecord(makeLayer(name.trimmed())))
        makeCurrent(*layer);
}

void switchOff() {
    askAndChange("Layers to turn off: ", [](MxDbObjectId id) {
        const auto status = db::setLayerOff(id, true);
        if (status == Mx::eOk && isCurrent(*layerRecord(id)))
            tell(QStringLiteral("The current layer %1 is off now: what is drawn does not show.").arg(recordName(id)));
        return status;
    });
}

void freeze() {
    auto ids = named(askNames(QStringLiteral("Layers to freeze: ")));
    std::erase_if(ids, [](MxDbObjectId id) {
        if (!isCurrent(*layerRecord(id)))
            return false;
        tell(QStringLiteral("The current layer %1 cannot be frozen.").arg(recordName(id)));
        return true;
    });
    change(ids, [](MxDbObjectId id) { return db::setLayerFrozen(id, true); });
}

void thaw() {
    askAndChange("Layers to thaw: ", [](MxDbObjectId id) { return db::setLayerFrozen(id, false); });
}

/// What a property is given to: Enter means the current layer.
void changeProperty(const Change& how) {
    const QString current = QString::fromStdWString(drawing().header.currentLayer);
    const QStringList names = askNames(QStringLiteral("Layers <%1>: ").arg(current));
    if (!Prompter::instance().wasCancelled())
        change(named(names.isEmpty() ? QStringList(current) : names), how);
}

/// A layer that has the value already is not touched, here and below: there is nothing to undo then.
Mx::ErrorStatus giveColor(MxDbObjectId id, const ColorValue& color) {
    const MxDbLayerTableRecord& layer = *layerRecord(id);
    if (layer.color == color.index && layer.hasTrueColor == color.isTrue &&
        (!color.isTrue || layer.trueColor == color.rgb))
        return Mx::eOk;
    const auto status = db::setLayerColor(id, color.index);
    return status == Mx::eOk && color.isTrue ? db::setLayerTrueColor(id, color.rgb) : status;
}

void setColor() {
    QString text;
    if (Prompter::instance().getString(false, QStringLiteral("Color: "), text) != kInputNormal)
        return;
    const auto color = parseColor(text);
    if (!color || color->index == 0 || color->index == 256) {
        tell(QStringLiteral("A layer's color is a number from 1 to 255, a name, or red,green,blue."));
        return;
    }
    changeProperty([color](MxDbObjectId id) { return giveColor(id, *color); });
}

void setLinetype() {
    QString text;
    if (Prompter::instance().getString(false, QStringLiteral("Line type: "), text) != kInputNormal)
        return;
    const MxDbObjectId linetype = linetypeOrLoad(drawing(), text.toStdWString());
    if (linetype.isNull())
        tell(QStringLiteral("There is no line type %1.").arg(text));
    else if (linetype == drawing().linetypeNamed(L"ByLayer") || linetype == drawing().linetypeNamed(L"ByBlock"))
        tell(QStringLiteral("A layer's line type is one of its own."));
    else
        changeProperty([linetype](MxDbObjectId id) {
            return layerRecord(id)->linetype == linetype ? Mx::eOk : db::setLayerLinetype(id, linetype);
        });
}

void setLineWeight() {
    QString text;
    if (Prompter::instance().getString(false, QStringLiteral("Line weight in mm, or Default: "), text) != kInputNormal)
        return;
    const auto weight = parseLineWeight(text);
    if (!weight || *weight == -1 || *weight == -2)
        tell(QStringLiteral("A layer's line weight is Default, or from 0 to 2.11 mm."));
    else
        changeProperty([weight](MxDbObjectId id) {
            return layerRecord(id)->lineWeight == *weight ? Mx::eOk : db::setLayerLineWeight(id, *weight);
        });
}

void list() {
    for (const MxDbObjectId id : layers()) {
        const MxDbLayerTableRecord& layer = *layerRecord(id);
        QStringList state;
        if (isCurrent(layer))
            state << QStringLiteral("current");
        if (layer.off)
            state << QStringLiteral("off");
        if (layer.isFrozen())
            state << QStringLiteral("frozen");
        if (layer.isLocked())
            state << QStringLiteral("locked");
        tell(QStringLiteral("%1: %2, %3, %4%5%6")
                 .arg(QString::fromStdWString(layer.name),
                      formatColor({layer.color, layer.hasTrueColor, layer.trueColor}),
                      layer.linetype.isNull() ? QStringLiteral("Continuous") : recordName(layer.linetype),
                      formatLineWeight(layer.lineWeight), state.isEmpty() ? QString() : QStringLiteral(", "),
                      state.join(QStringLiteral(", "))));
    }
}

void takeOption(const QString& option) {
    const auto is = [&](const char* name) { return option == QLatin1String(name); };
    if (is("?"))
        list();
    else if (is("New"))
        newLayers();
    else if (is("Make"))
        makeAndSet();
    else if (is("Set"))
        setCurrent();
    else if (is("ON"))
        askAndChange("Layers to turn on: ", [](MxDbObjectId id) { return db::setLayerOff(id, false); });
    else if (is("OFF"))
        switchOff();
    else if (is("Freeze"))
        freeze();
    else if (is("Thaw"))
        thaw();
    else if (is("LOck"))
        askAndChange("Layers to lock: ", [](MxDbObjectId id) { return db::setLayerLocked(id, true); });
    else if (is("Unlock"))
        askAndChange("Layers to unlock: ", [](MxDbObjectId id) { return db::setLayerLocked(id, false); });
    else if (is("Color"))
        setColor();
    else if (is("LType"))
        setLinetype();
    else
        setLineWeight();
}

void layer() {
    Prompter& prompter = Prompter::instance();
    for (;;) {
        prompter.init(0, QStringLiteral("? New Make Set ON OFF Freeze Thaw LOck Unlock Color LType LWeight"));
        QString option;
        if (prompter.getKeyword(
                QStringLiteral("[?/New/Make/Set/ON/OFF/Freeze/Thaw/LOck/Unlock/Color/LType/LWeight] <end>: "),
                option) != kInputNormal)
            return;
        takeOption(option);
        if (prompter.wasCancelled())
            return;
    }
}

} // namespace

void registerLayerCommand(CommandStack& stack) {
    stack.addCommand(kHostGroup, L"LAYER", L"LAYER", 0, layer);
    stack.addCommand(kHostGroup, L"-LAYER", L"-LAYER", 0, layer);
    stack.addAlias(QStringLiteral("LA"), QStringLiteral("LAYER"));
    stack.addAlias(QStringLiteral("-LA"), QStringLiteral("-LAYER"));
}

} // namespace merix::ed
