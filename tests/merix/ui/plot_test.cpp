// SPDX-License-Identifier: MIT
#include "merix/ui/plot.h"

#include "tests/merix/ui/window_test.h"

#include <QFile>
#include <QPainter>
#include <QTemporaryDir>

using namespace merix;

namespace {

class PlotTest : public WindowTest {
protected:
    PlotTest() {
        addLine({0, 0, 0}, {1000, 0, 0}, 1);
        addLine({0, 500, 0}, {1000, 500, 0}, 7);
    }
    ui::PlotView view() { return {document->database(), {}, {}}; }
    QImage sheet(const ui::PlotView& what) {
        QImage image(400, 300, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        ui::plot(painter, image.size(), 96.0, what);
        return image;
    }
    static int count(const QImage& image, QRgb color) {
        int found = 0;
        for (int y = 0; y < image.height(); ++y)
            found += image.pixel(image.width() / 2, y) == color;
        return found;
    }
    QByteArray bytes(const QString& name) {
        QFile file(folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QTemporaryDir folder;
};

TEST_F(PlotTest, TheSheetIsWhiteAndWhatIsWhiteOnTheScreenIsBlack) {
    const QImage image = sheet(view());
    EXPECT_GE(count(image, qRgb(255, 0, 0)), 1);
    EXPECT_GE(count(image, qRgb(0, 0, 0)), 1);
    EXPECT_EQ(image.pixel(200, 150), qRgb(255, 255, 255));
}

TEST_F(PlotTest, AWindowFillsTheSheetAndLeavesOutTheRest) {
    ui::PlotView part = view();
    part.window = {{400, -20, 0}, {500, 20, 0}};
    const QImage image = sheet(part);
    EXPECT_GE(count(image, qRgb(255, 0, 0)), 1);
    EXPECT_EQ(count(image, qRgb(0, 0, 0)), 0);
    EXPECT_EQ(image.pixel(5, 150), qRgb(255, 0, 0));
}

TEST_F(PlotTest, TheSuffixSaysWhatIsWritten) {
    for (const auto& [name, begin] :
         {std::pair<const char*, const char*>{"a.pdf", "%PDF"}, {"b.SVG", "<?xml"}, {"c.png", "\x89PNG"}}) {
        const QString path = folder.filePath(QLatin1String(name));
        EXPECT_EQ(ui::plotToFile(view(), path).toStdString(), "");
        EXPECT_TRUE(bytes(QLatin1String(name)).startsWith(begin)) << name;
    }
    EXPECT_GT(QImage(folder.filePath(QStringLiteral("c.png"))).width(), 3000); // A3 lying
    EXPECT_TRUE(bytes(QStringLiteral("b.SVG")).contains("#ff0000"));
}

TEST_F(PlotTest, AFileThatCannotBeWrittenIsNamed) {
    EXPECT_TRUE(ui::plotToFile(view(), QStringLiteral("plan.doc")).startsWith(QStringLiteral("plan.doc")));
    const QString nowhere = folder.filePath(QStringLiteral("no/such/plan.pdf"));
    EXPECT_TRUE(ui::plotToFile(view(), nowhere).contains(QStringLiteral("plan.pdf")));
}

TEST_F(PlotTest, ExportAsksForTheFileAndTheArea) {
    const QString path = folder.filePath(QStringLiteral("plan.svg"));
    QTimer::singleShot(0, &window, [&] {
        ed::Prompter::instance().submitLine(path);
        QTimer::singleShot(0, &window, [] { ed::Prompter::instance().submitLine(QString()); });
    });
    ed::Prompter::instance().submitLine(QStringLiteral("EXPORT"));
    EXPECT_FALSE(bytes(QStringLiteral("plan.svg")).isEmpty());
    EXPECT_TRUE(ed::Console::instance().history().last().contains(path));
}

TEST_F(PlotTest, WithNobodyThereNothingIsPrinted) {
    ed::Prompter::instance().submitLine(QStringLiteral("PRINT"));
    EXPECT_TRUE(ed::Console::instance().history().last().contains(QStringLiteral("EXPORT")));
}

} // namespace
