// SPDX-License-Identifier: MIT
#include "merix/ui/plot.h"

#include "host/gi/world_draw.h"
#include "merix/ed/command_stack.h"
#include "tests/merix/ui/window_test.h"

#include <QFile>
#include <QPainter>
#include <QPrinter>
#include <QTemporaryDir>

using namespace merix;

namespace {

/// A module's entity that is for the screen only.
class ScreenMark : public MxDbEntity {
public:
    static MxRxClass* desc() {
        static MxRxClass* const descriptor =
            newMxRxClass(L"PlotTestMark", L"MxDbEntity", 1, 0, 0, nullptr, L"PLOTTESTMARK", L"Plot test");
        return descriptor;
    }
    MxRxClass* isA() const override { return desc(); }
    bool subWorldDraw(MxGiWorldDraw* draw) override {
        if (draw->context() && draw->context()->isPlotGeneration())
            return true;
        const MxGePoint3d ends[] = {corner, corner + MxGeVector3d{40, 40, 0}};
        draw->geometry().worldLine(ends, 2);
        return true;
    }
    Mx::ErrorStatus subGetGeomExtents(MxDbExtents& extents) const override {
        extents.addPoint(corner);
        extents.addPoint(corner + MxGeVector3d{40, 40, 0});
        return Mx::eOk;
    }
    MxGePoint3d corner;
};

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
    void addMark(const MxGePoint3d& corner) {
        ScreenMark::desc();
        mxrxBuildClassHierarchy();
        auto* mark = new ScreenMark;
        mark->corner = corner;
        db::traits(*mark).layer = document->database()->imp().layerNamed(L"0");
        MxDbBlockTableRecord* space = nullptr;
        ASSERT_EQ(mxdbOpenObject(space, document->database()->currentSpaceId(), Mx::kForWrite), Mx::eOk);
        MxDbObjectId id;
        ASSERT_EQ(space->appendMxDbEntity(id, mark), Mx::eOk);
        mark->close();
        space->close();
    }
    /// What EXPORT tells in the end when its prompts are answered by these lines.
    QString exported(QStringList answers) {
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            if (ed::Prompter::instance().isWaiting())
                ed::Prompter::instance().submitLine(answers.isEmpty() ? QString() : answers.takeFirst());
        });
        timer.start(0);
        ed::Console::instance().markRead();
        ed::CommandStack::instance().runLine(QStringLiteral("EXPORT"));
        left = answers;
        return ed::Console::instance().unread();
    }
    QStringList left; ///< of the answers
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

TEST_F(PlotTest, WhatIsForTheScreenOnlyLeavesNoTraceInAPlot) {
    const auto plotted = [&](const QString& name) {
        EXPECT_EQ(ui::plotToFile(view(), folder.filePath(name)).toStdString(), "");
        return bytes(name);
    };
    const QByteArray png = plotted(QStringLiteral("a.png")), svg = plotted(QStringLiteral("a.svg"));
    addMark({500, 250, 0});
    addMark({50000, -80000, 0}); // far outside: the rest does not shrink for it
    EXPECT_TRUE(plotted(QStringLiteral("b.png")) == png);
    EXPECT_TRUE(plotted(QStringLiteral("b.svg")) == svg);
}

TEST_F(PlotTest, NothingToPlotIsTold) {
    document = ap::DocManager::instance().create();
    addMark({0, 0, 0});
    const QString path = folder.filePath(QStringLiteral("plan.pdf"));
    EXPECT_EQ(ui::plotToFile(view(), path), QStringLiteral("The drawing shows nothing to plot."));
    QPrinter printer;
    EXPECT_EQ(ui::plotToPrinter(view(), printer), QStringLiteral("The drawing shows nothing to plot."));
    EXPECT_FALSE(QFile::exists(path));
}

TEST_F(PlotTest, AWindowWithoutSizeIsTold) {
    ui::PlotView what = view();
    what.window.addPoint({10, 10, 0});
    what.window.addPoint({10, 90, 0});
    const QString path = folder.filePath(QStringLiteral("plan.pdf"));
    EXPECT_EQ(ui::plotToFile(what, path), QStringLiteral("The window has no size."));
    EXPECT_FALSE(QFile::exists(path));
}

TEST_F(PlotTest, APrinterThatFailsIsTold) {
    QPrinter printer;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(folder.filePath(QStringLiteral("no/such/plan.pdf")));
    EXPECT_FALSE(ui::plotToPrinter(view(), printer).isEmpty());
    printer.setOutputFileName(folder.filePath(QStringLiteral("plan.pdf")));
    EXPECT_EQ(ui::plotToPrinter(view(), printer).toStdString(), "");
    EXPECT_TRUE(bytes(QStringLiteral("plan.pdf")).startsWith("%PDF"));
}

TEST_F(PlotTest, ExportTakesAPathInQuotationMarks) {
    const QString path = folder.filePath(QStringLiteral("ground floor.svg"));
    EXPECT_TRUE(exported({QLatin1Char('"') + path + QLatin1Char('"')}).contains(QStringLiteral("Exported ") + path));
    EXPECT_FALSE(bytes(QStringLiteral("ground floor.svg")).isEmpty());
}

TEST_F(PlotTest, ExportTellsOfAWrongSuffixBeforeItAsksOn) {
    EXPECT_TRUE(
        exported({QStringLiteral("/tmp/plan.doc"), QStringLiteral("Extents")}).contains(QStringLiteral(".pdf")));
    EXPECT_EQ(left.size(), 1);
}

TEST_F(PlotTest, ExportAsksAPersonBeforeItReplacesAFile) {
    const QString path = folder.filePath(QStringLiteral("plan.svg"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("old") == 3);
    file.close();
    window.setUnattended(false);
    exported({path, QStringLiteral("No")});
    EXPECT_EQ(bytes(QStringLiteral("plan.svg")), QByteArray("old"));
    exported({path, QStringLiteral("Yes"), QStringLiteral("Extents")});
    EXPECT_TRUE(bytes(QStringLiteral("plan.svg")).startsWith("<?xml"));
    window.setUnattended(true);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write("old") == 3);
    file.close();
    exported({path, QStringLiteral("Extents")});
    EXPECT_TRUE(bytes(QStringLiteral("plan.svg")).startsWith("<?xml"));
}

} // namespace
