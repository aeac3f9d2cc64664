// SPDX-License-Identifier: MIT
#include "merix/ed/variables.h"

#include "merix/db/database_imp.h"
#include "merix/ed/active_view.h"
#include "merix/ed/drawing_access.h"
#include "merix/ed/properties.h"
#include "merix/ed/user_settings.h"

#include <algorithm>
#include <cmath>

namespace merix::ed {

namespace {

using Value = MxEdVariableValue;
using Header = db::DrawingHeader;

bool g_commandEcho = true;

MxDbDatabase* drawing() {
    return mxdbHostApplicationServices()->workingDatabase();
}

const ge::ViewTransform* view() {
    return activeView() && activeView()->transform().width > 0 ? &activeView()->transform() : nullptr;
}

template <class Take> Mx::ErrorStatus changeHeader(Take take) {
    MxDbDatabase* database = drawing();
    if (!database)
        return Mx::eNoDatabase;
    Header header = database->imp().header;
    if (!take(header, database->imp()))
        return Mx::eOutOfRange;
    database->imp().changeHeader(header);
    return Mx::eOk;
}

template <auto member> std::optional<Value> getHeader() {
    if (const MxDbDatabase* database = drawing()) {
        const auto& value = database->imp().header.*member;
        if constexpr (std::is_integral_v<std::remove_cvref_t<decltype(value)>>)
            return Value(int(value));
        else
            return Value(value);
    }
    return std::nullopt;
}

template <auto member> Mx::ErrorStatus setPositive(const Value& value) {
    return changeHeader([&](Header& header, db::DatabaseImp&) {
        header.*member = std::get<double>(value);
        return header.*member > 0.0;
    });
}

std::optional<Value> getColor() {
    if (const MxDbDatabase* database = drawing())
        return Value(formatColor({database->imp().header.currentColor}).toStdWString());
    return std::nullopt;
}

Mx::ErrorStatus setColor(const Value& value) {
    return changeHeader([&](Header& header, db::DatabaseImp&) {
        const auto color = parseColor(QString::fromStdWString(std::get<std::wstring>(value)));
        if (!color || color->isTrue)
            return false;
        header.currentColor = color->index;
        return true;
    });
}

Mx::ErrorStatus setLayer(const Value& value) {
    return changeHeader([&](Header& header, db::DatabaseImp& database) {
        const auto* layer = layerRecord(database.layerNamed(std::get<std::wstring>(value)));
        if (!layer || layer->isFrozen())
            return false;
        header.currentLayer = layer->name;
        return true;
    });
}

Mx::ErrorStatus setLinetype(const Value& value) {
    return changeHeader([&](Header& header, db::DatabaseImp& database) {
        const MxDbObjectId id = linetypeOrLoad(database, std::get<std::wstring>(value));
        if (id.isNull())
            return false;
        header.currentLinetype = recordName(id).toStdWString();
        return true;
    });
}

Mx::ErrorStatus setLineWeight(const Value& value) {
    return changeHeader([&](Header& header, db::DatabaseImp&) {
        header.currentLineWeight = static_cast<std::int16_t>(std::clamp(std::get<int>(value), -100, 1000));
        return isLineWeight(header.currentLineWeight);
    });
}

Mx::ErrorStatus setUnits(const Value& value) {
    return changeHeader([&](Header& header, db::DatabaseImp&) {
        constexpr int kLastUnit = 24; // of the DXF variable: US survey mile
        if (std::get<int>(value) < 0 || std::get<int>(value) > kLastUnit)
            return false;
        header.insUnits = static_cast<std::int16_t>(std::get<int>(value));
        return true;
    });
}

std::optional<Value> getEcho() {
    return Value(g_commandEcho ? 1 : 0);
}

Mx::ErrorStatus setEcho(const Value& value) {
    const int on = std::get<int>(value);
    if (on != 0 && on != 1)
        return Mx::eOutOfRange;
    g_commandEcho = on == 1;
    return Mx::eOk;
}

constexpr int kSaveTimeUnlessSet = 5, kLongestSaveTime = 600;
constexpr const char* kSaveTimeKey = "SAVETIME";
std::optional<int> g_saveTime;
std::function<void(int)> g_saveTimeListener;

std::optional<Value> getSaveTime() {
    return Value(saveTime());
}

Mx::ErrorStatus setSaveTime(const Value& value) {
    const int minutes = std::get<int>(value);
    if (minutes < 0 || minutes > kLongestSaveTime)
        return Mx::eOutOfRange;
    g_saveTime = minutes;
    QSettings settings = userSettings();
    settings.setValue(QLatin1String(kSaveTimeKey), minutes);
    settings.sync();
    if (settings.status() != QSettings::NoError)
        tell(QStringLiteral("%1 cannot be kept for the next time: %2")
                 .arg(QLatin1String(kSaveTimeKey), settings.fileName()));
    if (g_saveTimeListener)
        g_saveTimeListener(minutes);
    return Mx::eOk;
}

std::optional<Value> getViewCenter() {
    return view() ? std::optional<Value>(MxGePoint3d(view()->center.x, view()->center.y, 0.0)) : std::nullopt;
}

std::optional<Value> getViewSize() {
    return view() ? std::optional<Value>(view()->height * view()->unitsPerPixel) : std::nullopt;
}

} // namespace

bool isCommandEchoOn() {
    return g_commandEcho;
}

int saveTime() {
    if (!g_saveTime) {
        bool isNumber = false;
        const int kept = userSettings().value(QLatin1String(kSaveTimeKey)).toInt(&isNumber);
        g_saveTime = isNumber && kept >= 0 && kept <= kLongestSaveTime ? kept : kSaveTimeUnlessSet;
    }
    return *g_saveTime;
}

void setSaveTimeListener(std::function<void(int)> listener) {
    g_saveTimeListener = std::move(listener);
}

const std::vector<Variable>& systemVariables() {
    using Type = Variable::Type;
    static const std::vector<Variable> variables{
        {"CECOLOR", Type::kText, getColor, setColor},
        {"CELTSCALE", Type::kReal, getHeader<&Header::currentLinetypeScale>,
         setPositive<&Header::currentLinetypeScale>},
        {"CELTYPE", Type::kText, getHeader<&Header::currentLinetype>, setLinetype},
        {"CELWEIGHT", Type::kInteger, getHeader<&Header::currentLineWeight>, setLineWeight},
        {"CLAYER", Type::kText, getHeader<&Header::currentLayer>, setLayer},
        {"CMDECHO", Type::kInteger, getEcho, setEcho},
        {"EXTMAX", Type::kPoint, getHeader<&Header::extMax>, nullptr},
        {"EXTMIN", Type::kPoint, getHeader<&Header::extMin>, nullptr},
        {"INSUNITS", Type::kInteger, getHeader<&Header::insUnits>, setUnits},
        {"LTSCALE", Type::kReal, getHeader<&Header::linetypeScale>, setPositive<&Header::linetypeScale>},
        {kSaveTimeKey, Type::kInteger, getSaveTime, setSaveTime},
        {"TEXTSIZE", Type::kReal, getHeader<&Header::textSize>, setPositive<&Header::textSize>},
        {"VIEWCTR", Type::kPoint, getViewCenter, nullptr},
        {"VIEWSIZE", Type::kReal, getViewSize, nullptr},
    };
    return variables;
}

const Variable* systemVariable(const QString& name) {
    for (const Variable& variable : systemVariables())
        if (name.compare(QLatin1String(variable.name), Qt::CaseInsensitive) == 0)
            return &variable;
    return nullptr;
}

QString formatValue(const MxEdVariableValue& value) {
    constexpr int kDigits = 10;
    if (const int* number = std::get_if<int>(&value))
        return QString::number(*number);
    if (const double* number = std::get_if<double>(&value))
        return QString::number(*number, 'g', kDigits);
    if (const auto* text = std::get_if<std::wstring>(&value))
        return QString::fromStdWString(*text);
    const auto& point = std::get<MxGePoint3d>(value);
    return QStringLiteral("%1,%2,%3")
        .arg(QString::number(point.x, 'g', kDigits), QString::number(point.y, 'g', kDigits),
             QString::number(point.z, 'g', kDigits));
}

} // namespace merix::ed

using merix::ed::systemVariable;
using merix::ed::Variable;

Mx::ErrorStatus mxedGetVar(const wchar_t* name, MxEdVariableValue& value) {
    const Variable* variable = name ? systemVariable(QString::fromWCharArray(name)) : nullptr;
    if (!variable)
        return Mx::eKeyNotFound;
    const auto found = variable->get();
    if (!found)
        return Mx::eNoDatabase;
    value = *found;
    return Mx::eOk;
}

Mx::ErrorStatus mxedSetVar(const wchar_t* name, const MxEdVariableValue& value) {
    const Variable* variable = name ? systemVariable(QString::fromWCharArray(name)) : nullptr;
    if (!variable)
        return Mx::eKeyNotFound;
    if (!variable->set)
        return Mx::eReadOnly;
    MxEdVariableValue taken = value;
    if (const int* whole = std::get_if<int>(&value); whole && variable->type == Variable::Type::kReal)
        taken = double(*whole);
    if (taken.index() != static_cast<std::size_t>(variable->type))
        return Mx::eInvalidInput;
    if (const double* number = std::get_if<double>(&taken); number && !std::isfinite(*number))
        return Mx::eOutOfRange;
    return variable->set(taken);
}
