// SPDX-License-Identifier: MIT
#include "merix/ed/properties.h"

#include "merix/db/entities.h"
#include "merix/db/layers.h"
#include "merix/db/linetype_file.h"
#include "merix/ed/console.h"

#include <QStringList>

#include <array>
#include <cmath>

namespace merix::ed {

namespace {

constexpr std::array<const char*, 7> kColorNames{"red", "yellow", "green", "cyan", "blue", "magenta", "white"};
/// Where line types come from that the drawing does not have yet.
constexpr const wchar_t* kLinetypeFile = L"merix.lin";
constexpr int kThickest = 211; ///< hundredths of a millimetre

bool is(const QString& text, const char* word) {
    return text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
}

std::optional<ColorValue> parseTrueColor(const QStringList& parts) {
    ColorValue color{7, true, 0};
    for (const QString& part : parts) {
        bool ok = false;
        const int level = part.toInt(&ok);
        if (!ok || level < 0 || level > 255)
            return std::nullopt;
        color.rgb = color.rgb << 8 | static_cast<std::uint32_t>(level);
    }
    return color;
}

} // namespace

std::optional<ColorValue> parseColor(const QString& text) {
    if (is(text, "bylayer"))
        return ColorValue{256};
    if (is(text, "byblock"))
        return ColorValue{0};
    for (std::size_t i = 0; i < kColorNames.size(); ++i)
        if (is(text, kColorNames[i]))
            return ColorValue{static_cast<std::int16_t>(i + 1)};
    if (const QStringList parts = text.split(QLatin1Char(',')); parts.size() == 3)
        return parseTrueColor(parts);
    bool ok = false;
    const int index = text.toInt(&ok);
    if (!ok || index < 1 || index > 255)
        return std::nullopt;
    return ColorValue{static_cast<std::int16_t>(index)};
}

QString formatColor(const ColorValue& color) {
    if (color.isTrue)
        return QStringLiteral("%1,%2,%3").arg(color.rgb >> 16 & 255).arg(color.rgb >> 8 & 255).arg(color.rgb & 255);
    if (color.index == 256)
        return QStringLiteral("ByLayer");
    if (color.index == 0)
        return QStringLiteral("ByBlock");
    if (color.index > 0 && std::size_t(color.index) <= kColorNames.size())
        return QLatin1String(kColorNames[std::size_t(color.index) - 1]);
    return QString::number(color.index);
}

bool isLineWeight(int weight) {
    return (weight >= -3 && weight < 0) || db::isLineWeight(weight);
}

std::optional<std::int16_t> parseLineWeight(const QString& text) {
    if (is(text, "bylayer"))
        return -1;
    if (is(text, "byblock"))
        return -2;
    if (is(text, "default"))
        return -3;
    bool ok = false;
    const double hundredths = text.toDouble(&ok) * 100.0;
    if (!ok || !(hundredths >= 0.0 && hundredths <= kThickest))
        return std::nullopt;
    const auto distance = [&](int weight) { return std::fabs(weight - hundredths); };
    int nearest = 0;
    for (int weight = 1; weight <= kThickest; ++weight)
        if (db::isLineWeight(weight) && distance(weight) < distance(nearest))
            nearest = weight;
    return static_cast<std::int16_t>(nearest);
}

QString formatLineWeight(int weight) {
    switch (weight) {
    case -1:
        return QStringLiteral("ByLayer");
    case -2:
        return QStringLiteral("ByBlock");
    case -3:
        return QStringLiteral("Default");
    default:
        return QString::number(weight / 100.0, 'f', 2);
    }
}

MxDbLayerTableRecord* layerRecord(MxDbObjectId id) {
    MxDbObject* object = db::DatabaseImp::peek(id);
    return object && object->isKindOf(MxDbLayerTableRecord::desc()) ? static_cast<MxDbLayerTableRecord*>(object)
                                                                    : nullptr;
}

const MxDbLayerTableRecord* layerOf(MxDbObjectId entity) {
    const MxDbObject* object = db::DatabaseImp::peek(entity);
    if (!object || !object->isKindOf(MxDbEntity::desc()))
        return nullptr;
    return layerRecord(static_cast<const MxDbEntity*>(object)->layerId());
}

QString recordName(MxDbObjectId id) {
    const MxDbObject* object = db::DatabaseImp::peek(id);
    if (!object || !object->isKindOf(MxDbSymbolTableRecord::desc()))
        return {};
    return QString::fromStdWString(static_cast<const MxDbSymbolTableRecord*>(object)->name);
}

MxDbObjectId linetypeOrLoad(db::DatabaseImp& database, const std::wstring& name) {
    if (const MxDbObjectId known = database.linetypeNamed(name); !known.isNull())
        return known;
    std::wstring message;
    db::loadLinetype(database, name, kLinetypeFile, message);
    if (!message.empty())
        Console::instance().print(QLatin1Char('\n') + QString::fromStdWString(message));
    return database.linetypeNamed(name);
}

} // namespace merix::ed
