// SPDX-License-Identifier: MIT
// How like the expected picture or text what came out is.
#pragma once

#include "tests/support/dxf_tags.h"

#include <QImage>
#include <QString>

namespace merix::test {

/// Pictures are alike when at most kFreePixels of them differ by more than kFreeLevels in a colour channel. Letters and
/// slanted edges may be shaded a little differently by another release of Qt; the smallest sign of a note, the triangle
/// of one that plays, has some forty pixels.
constexpr int kFreeLevels = 40;
constexpr int kFreePixels = 6;

struct PictureDifference {
    int pixels = 0; ///< that differ by more than kFreeLevels; -1: the sizes differ
    int worst = 0;  ///< largest difference of a channel
    QRect where;    ///< the box of those pixels
    bool alike() const { return pixels >= 0 && pixels <= kFreePixels; }
    QString described() const;
};
PictureDifference difference(const QImage& expected, const QImage& actual);

/// The one place that says what may differ between a saved drawing and the expected one: when a note was made. A date
/// and time of today or any other day (2026/3/7 9:5:0) as the value of group 2 of a note becomes `DATE-TIME`. Input
/// drawings hold dates with a leading zero ("2026/03/07"), which no new note has: they have to come through as they
/// are.
QByteArray masked(std::vector<Tag> tags);

/// The first line that differs, with its number and both forms; empty when there is none.
QString difference(const QByteArray& expected, const QByteArray& actual);

} // namespace merix::test
