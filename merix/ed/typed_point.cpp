// SPDX-License-Identifier: MIT
#include "merix/ed/typed_point.h"

#include <QStringList>

#include <cmath>
#include <numbers>

namespace merix::ed {

namespace {

bool readNumbers(const QStringList& texts, double* values) {
    for (const QString& text : texts) {
        bool ok = false;
        *values = text.toDouble(&ok);
        if (!ok || !std::isfinite(*values))
            return false;
        ++values;
    }
    return true;
}

} // namespace

std::optional<MxGePoint3d> parseTypedPoint(const QString& text, const MxGePoint3d& last) {
    const bool relative = text.startsWith(QLatin1Char('@'));
    const QString rest = relative ? text.mid(1) : text;
    if (relative && rest.isEmpty())
        return last;
    const MxGePoint3d from = relative ? last : MxGePoint3d();
    double value[3] = {0, 0, 0};
    if (const QStringList polar = rest.split(QLatin1Char('<')); polar.size() == 2) {
        if (!readNumbers(polar, value))
            return std::nullopt;
        const double angle = degreesToRadians(value[1]);
        return from + MxGeVector3d(value[0] * std::cos(angle), value[0] * std::sin(angle), 0.0);
    }
    const QStringList parts = rest.split(QLatin1Char(','));
    if (parts.size() < 2 || parts.size() > 3 || !readNumbers(parts, value))
        return std::nullopt;
    return from + MxGeVector3d(value[0], value[1], value[2]);
}

bool isInReach(const MxGePoint3d& point) {
    constexpr double kFarthest = 1e100; // sums, and squares in lengths, stay finite
    const auto near = [](double coordinate) { return std::fabs(coordinate) <= kFarthest; }; // false for NaN
    return near(point.x) && near(point.y) && near(point.z);
}

double degreesToRadians(double degrees) {
    return degrees * std::numbers::pi / 180.0;
}

QString formatPoint(const MxGePoint3d& point) {
    return QString::number(point.x, 'g', 10) + QLatin1Char(',') + QString::number(point.y, 'g', 10);
}

} // namespace merix::ed
