// SPDX-License-Identifier: MIT
#include "merix/ui/icons.h"

#include "merix/ui/look.h"
#include "tests/merix/ui/window_test.h"

#include <QPainter>

using namespace merix;

namespace {

class IconsTest : public WindowTest {
protected:
    /// Pixels that stand out from the background, 20 by 20, as the tool bar shows them.
    static int legible(const QString& name, const QColor& background, const QColor& text) {
        QPalette palette;
        palette.setColor(QPalette::ButtonText, text);
        palette.setColor(QPalette::Link, QColor(66, 134, 206));
        QImage image(20, 20, QImage::Format_RGB32);
        image.fill(background);
        QPainter painter(&image);
        ui::paintIcon(painter, name, image.rect(), palette);
        int count = 0;
        for (int y = 0; y < 20; ++y)
            for (int x = 0; x < 20; ++x)
                count += std::abs(qGray(image.pixel(x, y)) - qGray(background.rgb())) > 50;
        return count;
    }
};

TEST_F(IconsTest, EveryIconStandsOutOnDarkAndOnLight) {
    ASSERT_FALSE(ui::iconNames().isEmpty());
    for (const QString& name : ui::iconNames()) {
        EXPECT_GE(legible(name, QColor(45, 52, 60), QColor(222, 227, 232)), 20) << qPrintable(name);
        EXPECT_GE(legible(name, QColor(240, 240, 240), Qt::black), 20) << qPrintable(name);
    }
}

TEST_F(IconsTest, AnUnknownNameIsNoIcon) {
    EXPECT_TRUE(ui::iconNamed(QStringLiteral("NOTHING")).isNull());
    EXPECT_FALSE(ui::iconNamed(QStringLiteral("LINE")).pixmap(20, 20).isNull());
}

} // namespace
