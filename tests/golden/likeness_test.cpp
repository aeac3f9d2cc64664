// SPDX-License-Identifier: MIT
// The comparison lets nothing through that a person would miss.
#include "tests/golden/likeness.h"

#include <gtest/gtest.h>

using namespace merix::test;

namespace {

const QString kCases = QStringLiteral(MERIX_SOURCE_DIR "/tests/golden/");
const QRgb kGround = qRgb(33, 40, 48);

QImage expected(const char* name) {
    return QImage(kCases + QString::fromLatin1(name) + QStringLiteral("/picture.png"))
        .convertToFormat(QImage::Format_RGB32);
}

/// Every pixel for which `is` holds becomes the ground.
template <class Is> QImage without(QImage picture, Is is) {
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (is(picture.pixel(x, y)))
                picture.setPixel(x, y, kGround);
    return picture;
}

} // namespace

TEST(Likeness, APictureIsLikeItselfAndLikeASlightlyShadedOne) {
    const QImage picture = expected("point-new");
    ASSERT_FALSE(picture.isNull());
    QImage shaded = picture;
    for (int y = 0; y < shaded.height(); ++y)
        for (int x = 0; x < shaded.width(); ++x) {
            const QColor c = shaded.pixelColor(x, y);
            shaded.setPixelColor(
                x, y, QColor(std::min(255, c.red() + kFreeLevels / 2), c.green(), std::max(0, c.blue() - 9)));
        }
    EXPECT_TRUE(difference(picture, picture).alike());
    EXPECT_TRUE(difference(picture, shaded).alike()) << difference(picture, shaded).described().toStdString();
}

TEST(Likeness, AMissingMarkerIsFound) {
    const QImage picture = expected("point-new");
    // The marker is grey, index 9; nothing else in the drawing is.
    const QImage bare = without(picture, [](QRgb p) { return qRed(p) == qBlue(p) && qRed(p) > 60; });
    const PictureDifference found = difference(picture, bare);
    EXPECT_FALSE(found.alike());
    EXPECT_GT(found.pixels, 10 * kFreePixels);
}

TEST(Likeness, AMissingGreenTriangleIsFound) {
    const QImage picture = expected("playing");
    const QImage bare = without(picture, [](QRgb p) { return qGreen(p) > 200 && qRed(p) < 100; });
    EXPECT_FALSE(difference(picture, bare).alike()) << difference(picture, bare).described().toStdString();
}

TEST(Likeness, AShiftByOnePixelIsFound) {
    const QImage picture = expected("point-new");
    EXPECT_FALSE(difference(picture, picture.copy(1, 0, picture.width(), picture.height())).alike());
    EXPECT_FALSE(difference(picture, picture.copy(0, 0, picture.width() - 1, picture.height())).alike());
    EXPECT_FALSE(difference(picture, QImage()).alike());
    EXPECT_FALSE(difference(QImage(), QImage()).alike());
}

TEST(Likeness, OnlyTheTimeAtWhichANoteIsMadeMayDiffer) {
    const std::vector<Tag> note{{0, "PHONOMARK"}, {1, "Anna"}, {2, "2026/3/7 9:5:0"}};
    std::vector<Tag> later = note;
    later[2].value = "2031/12/24 23:59:59";
    EXPECT_EQ(masked(note), masked(later));
    later[1].value = "Bert";
    EXPECT_NE(masked(note), masked(later));
    std::vector<Tag> kept = note;
    kept[2].value = "2026/03/07 09:05:00";
    EXPECT_TRUE(masked(kept).contains("2026/03/07 09:05:00"));
    std::vector<Tag> block = note;
    block[0].value = "BLOCK";
    EXPECT_TRUE(masked(block).contains("2026/3/7 9:5:0"));
}

TEST(Likeness, TheFirstLineThatDiffersIsNamed) {
    EXPECT_TRUE(difference(QByteArray("a\nb\n"), QByteArray("a\nb\n")).isEmpty());
    EXPECT_EQ(difference(QByteArray("a\nb\n"), QByteArray("a\nc\n")).toStdString(), "line 2: expected \"b\", is \"c\"");
    EXPECT_FALSE(difference(QByteArray("a\n"), QByteArray("a\nb\n")).isEmpty());
}
