// SPDX-License-Identifier: MIT
#include "tests/golden/likeness.h"

#include <QRegularExpression>

#include <algorithm>

namespace merix::test {

QString PictureDifference::described() const {
    if (pixels < 0)
        return QStringLiteral("another size");
    return QStringLiteral("%1 pixels differ (by up to %2 of 255) in %3x%4 at %5,%6; %7 may")
        .arg(pixels)
        .arg(worst)
        .arg(where.width())
        .arg(where.height())
        .arg(where.x())
        .arg(where.y())
        .arg(kFreePixels);
}

PictureDifference difference(const QImage& expected, const QImage& actual) {
    PictureDifference found;
    if (expected.size() != actual.size() || expected.isNull()) {
        found.pixels = -1;
        return found;
    }
    const QImage a = expected.convertToFormat(QImage::Format_RGB32), b = actual.convertToFormat(QImage::Format_RGB32);
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            const int levels =
                std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q))});
            found.worst = std::max(found.worst, levels);
            if (levels <= kFreeLevels)
                continue;
            ++found.pixels;
            found.where |= QRect(x, y, 1, 1);
        }
    }
    return found;
}

QByteArray masked(std::vector<Tag> tags) {
    static const QRegularExpression fresh(
        QStringLiteral("^[1-9]\\d{3}/[1-9]\\d?/[1-9]\\d? (\\d|[12]\\d):(\\d|[1-5]\\d):(\\d|[1-5]\\d)$"));
    QByteArray text;
    bool isNote = false;
    for (const Tag& tag : tags) {
        if (tag.code == 0)
            isNote = tag.value == "PHONOMARK";
        const bool isDate = isNote && tag.code == 2 && fresh.match(QString::fromUtf8(tag.value)).hasMatch();
        text += QByteArray::number(tag.code) + '\n' + (isDate ? QByteArray("DATE-TIME") : tag.value) + '\n';
    }
    return text;
}

QString difference(const QByteArray& expected, const QByteArray& actual) {
    const QList<QByteArray> a = expected.split('\n'), b = actual.split('\n');
    for (int i = 0; i < std::max(a.size(), b.size()); ++i)
        if (i >= a.size() || i >= b.size() || a[i] != b[i])
            return QStringLiteral("line %1: expected \"%2\", is \"%3\"")
                .arg(i + 1)
                .arg(QString::fromUtf8(a.value(i, "(end)")), QString::fromUtf8(b.value(i, "(end)")));
    return {};
}

} // namespace merix::test
