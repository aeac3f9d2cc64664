// SPDX-License-Identifier: MIT
// Notes under the cursor: which gets the window, when it goes, and what lies beneath them.
#include "tests/e2e/real_notes.h"

#include <cmath>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace merix::test;

namespace {

const Note kEmpty{"A1", 300, 200}, kRecorded{"B1", 600, 200, 2};
const Note kRegion{"D1", 300, 150, 0, "Anna", 300, 250};

struct UnderCursor : RealNotes {
    bool holds(const QByteArray& handle) const {
        for (const Record& record : records(readTags(drawing), "ENTITIES"))
            if (value(record, 5) == handle)
                return true;
        return false;
    }
    double viewSize() { return variable("VIEWSIZE").toDouble(); }
    void moveInOneGo(const std::vector<QPoint>& places) {
        QStringList doing;
        for (const QPoint& place : places)
            doing << "mousemove" << QString::number(place.x()) << QString::number(place.y());
        hand(doing);
    }
};

/// A region with its frame shown, a line in its middle.
struct InsideRegion : UnderCursor {
    void SetUp() override {
        RealNotes::SetUp();
        ASSERT_NO_FATAL_FAILURE(open({kRegion}, lineOf("E1", 350, 300, 450, 300)));
    }
};

TEST_F(InsideRegion, AClickDoesNotTakeTheNote) {
    clickAt(at(400, 200));
    hand({"key", "Escape"}); // a box that a click on nothing begins
    clickAt(at(400, 200));
    hand({"key", "Delete"});
    hand({"key", "Escape"});
    ASSERT_TRUE(answers());
    ASSERT_TRUE(save());
    EXPECT_TRUE(holds("D1")) << "the note was selected and deleted";
    EXPECT_TRUE(holds("E1"));
    clickAt(at(300, 200)); // its frame
    hand({"key", "Delete"});
    ASSERT_TRUE(answers());
    ASSERT_TRUE(save());
    EXPECT_FALSE(holds("D1")) << "its frame was clicked";
}

TEST_F(InsideRegion, WhatLiesThereIsErased) {
    type({"ERASE"});
    ASSERT_TRUE(comesTrue([&] { return witness.prompt().contains("Select objects"); }));
    const QString before = witness.said();
    clickAt(at(400, 300));
    ASSERT_TRUE(comesTrue([&] { return witness.said() != before; }));
    enter("");
    ASSERT_TRUE(comesTrue([&] { return witness.prompt() == "Command:"; }));
    ASSERT_TRUE(save());
    EXPECT_TRUE(holds("D1"));
    EXPECT_FALSE(holds("E1"));
}

TEST_F(InsideRegion, TheTagWindowCloses) {
    ASSERT_TRUE(hover(kRegion));
    pointAt(at(500, 200));
    EXPECT_TRUE(comesTrue([&] { return witness.tag().isNull(); }));
    EXPECT_TRUE(comesTrue([&] { return !witness.hasTag(); })) << "it is hidden, not closed";
}

struct Overlapping : UnderCursor {
    void SetUp() override {
        RealNotes::SetUp();
        ASSERT_NO_FATAL_FAILURE(open({kBelow, kAbove}));
    }
    const Note kBelow{"A1", 300, 200}, kAbove{"A2", 312, 206};
    const QPoint m_apart{0, 0};
};

TEST_F(Overlapping, TheNoteOnTopGetsTheWindow) {
    moveInOneGo({at(334, 230), at(335, 230)}); // on both markers
    EXPECT_TRUE(comesTrue([&] { return !witness.tag().isNull(); }));
    EXPECT_TRUE(hasTagOver(kAbove)) << (hasTagOver(kBelow) ? "the one below has it" : "neither has it");
}

TEST_F(Overlapping, TheNoteBroughtToTheFrontGetsTheWindow) {
    type({"DRAWORDER"});
    ASSERT_TRUE(comesTrue([&] { return witness.prompt().contains("Select objects"); }));
    const QString before = witness.said();
    clickAt(at(355, 248)); // on the upper marker alone
    ASSERT_TRUE(comesTrue([&] { return witness.said() != before; }));
    type({"", "Back"});
    ASSERT_TRUE(comesTrue([&] { return witness.prompt() == "Command:"; }));
    leaveNotes();
    moveInOneGo({at(334, 230), at(335, 230)});
    EXPECT_TRUE(comesTrue([&] { return !witness.tag().isNull(); }));
    EXPECT_TRUE(hasTagOver(kBelow)) << (hasTagOver(kAbove) ? "the other one has it" : "neither has it");
}

TEST_F(UnderCursor, TheObjectUnderAMarkerIsTakenForANoteOnAnObject) {
    ASSERT_NO_FATAL_FAILURE(open({kEmpty}, lineOf("E1", 250, 230, 450, 230)));
    type({"PHONOMARK", "Settings", "Object"});
    ASSERT_TRUE(comesTrue([&] { return witness.prompt().contains("Select the object"); }));
    clickAt(at(341, 230)); // on the marker and on the line
    comesTrue([&] { return witness.prompt() == "Command:"; }, 5'000);
    hand({"key", "Escape"});
    ASSERT_TRUE(comesTrue([&] { return witness.prompt() == "Command:"; }));
    ASSERT_TRUE(save());
    QByteArray object;
    for (const Record& record : notesIn(drawing))
        if (number(record, 70) == 2)
            for (const Tag& tag : record)
                if (tag.code == 102) // the last is the note's own
                    object = tag.value;
    EXPECT_EQ(object, "E1");
}

/// A square one unit wide around a note.
const QByteArray kSquare =
    lineOf("E1", 0, 0, 1, 0) + lineOf("E2", 1, 0, 1, 1) + lineOf("E3", 1, 1, 0, 1) + lineOf("E4", 0, 1, 0, 0);

struct SmallDrawing : UnderCursor {
    void SetUp() override {
        RealNotes::SetUp();
        QFile file(drawing);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(drawingOf({{"A1", 0.5, 0.5}}, kSquare));
    }
    void expectFilled() {
        const double seen = viewSize();
        EXPECT_GT(seen, 1.0);
        EXPECT_LT(seen, 1.2);
    }
};

TEST_F(SmallDrawing, FillsTheViewAtOnce) {
    ASSERT_NO_FATAL_FAILURE(start({drawing}, "notes.dxf"));
    ASSERT_TRUE(comesTrue([&] { return witness.prompt() == "Command:"; }));
    expectFilled();
    ASSERT_TRUE(command({"ZOOM", "Out"}));
    EXPECT_GT(viewSize(), 2.0);
    ASSERT_TRUE(command({"ZOOM", "Extents"}));
    expectFilled();
}

/// The box of everything that is not background well inside of the square.
QRect markedInside(const QImage& picture, const QRect& inside) {
    QRect marked;
    const QRgb background = picture.pixel(inside.left(), inside.top());
    for (int y = inside.top(); y <= inside.bottom(); ++y)
        for (int x = inside.left(); x <= inside.right(); ++x)
            if (picture.pixel(x, y) != background)
                marked |= QRect(x, y, 1, 1);
    return marked;
}

TEST_F(SmallDrawing, IsRenderedWithMarkersOfTheirSize) {
    const QString picture = folder.filePath("picture.png");
    ASSERT_EQ(
        run(MERIX_BINARY_DIR "/bin/merix", {"--size", "800x600", "--render", drawing, picture}, folder.path()).status,
        0);
    const QImage image(picture);
    ASSERT_EQ(image.size(), QSize(800, 600));
    const QRect marked = markedInside(image, QRect(250, 150, 300, 300));
    // From the target around the point, a fifth of a marker to its left, to the marker's right edge.
    const double kMarker = 32, kWidth = kMarker / 5 + 0.6 * kMarker * std::cos(0.785) + kMarker;
    EXPECT_NEAR(marked.width(), kWidth, 2.5) << marked.height();
    EXPECT_EQ(marked.left() + marked.right() > 800, true) << "it does not stand to the right of its point";
}

TEST_F(UnderCursor, ATooltipIsPlainTextWhateverTheSpeakerIsCalled) {
    const QByteArray fifo = folder.filePath("fifo").toLocal8Bit();
    ASSERT_EQ(::mkfifo(fifo.constData(), 0600), 0);
    Note note = kRecorded;
    note.speaker = "<img src=\"file://" + fifo + "\">";
    ASSERT_NO_FATAL_FAILURE(open({note}));
    ASSERT_TRUE(hover(note));
    bool isRead = false;
    const auto read = [&] {
        const int end = ::open(fifo.constData(), O_WRONLY | O_NONBLOCK); // fails as long as nobody reads
        isRead |= end >= 0;
        if (end >= 0)
            ::close(end);
        return isRead;
    };
    EXPECT_TRUE(comesTrue([&] { return read() || witness.sees("QTipLabel"); }));
    EXPECT_FALSE(read()) << "the file that the name tells was opened";
    EXPECT_TRUE(answers(10'000)) << "the program hangs";
    pointAt(markerOf(note) + QPoint(1, 1));
    EXPECT_TRUE(comesTrue([&] { return read() || witness.sees("QTipLabel"); }));
    const Widget tip = witness.visible("QTipLabel");
    EXPECT_GT(tip.place.width(), 150) << "the name is not shown as it is: " << qPrintable(tip.text);
    EXPECT_FALSE(read());
}

struct OverTag : UnderCursor {
    void SetUp() override {
        RealNotes::SetUp();
        ASSERT_NO_FATAL_FAILURE(open({kEmpty, kRecorded}));
    }
};

TEST_F(OverTag, TheWheelZoomsTheDrawing) {
    const double before = viewSize();
    ASSERT_TRUE(hover(kEmpty));
    hand({"click", "4"});
    ASSERT_TRUE(answers());
    EXPECT_NEAR(viewSize(), before / 1.2, 1e-3);
}

TEST_F(OverTag, TheMiddleButtonPansTheDrawing) {
    const double before = variable("VIEWCTR").section(',', 0, 0).toDouble();
    ASSERT_TRUE(hover(kEmpty));
    hand({"mousedown", "2"});
    const QPoint from = markerOf(kEmpty);
    pointAt(from + QPoint(30, 0));
    pointAt(from + QPoint(60, 0));
    hand({"mouseup", "2"});
    ASSERT_TRUE(answers());
    EXPECT_NEAR(variable("VIEWCTR").section(',', 0, 0).toDouble(), before - 60, 1.5);
    EXPECT_TRUE(save());
    EXPECT_TRUE(isSilent(note("A1"))) << told(note("A1"));
}

TEST_F(OverTag, TheWindowGoesWhenTheCursorLeavesTheDrawingHoweverFast) {
    const QPoint menu = at(300, view.height() + 75), outside{1395, 895};
    for (const QPoint& away : {menu, outside})
        for (int wait = 0; wait < 12; ++wait) {
            // From nearly at once to after the window has come.
            const QString seconds = QString::number(0.002 * wait * wait, 'f', 4);
            const QPoint on = markerOf(kEmpty);
            hand({"mousemove", QString::number(on.x() - 1), QString::number(on.y()), "mousemove",
                  QString::number(on.x()), QString::number(on.y()), "sleep", seconds, "mousemove",
                  QString::number(away.x()), QString::number(away.y())});
            ASSERT_TRUE(answers()); // what the moves began is over
            ASSERT_TRUE(comesTrue([&] { return witness.tag().isNull(); }, 5'000))
                << "after " << qPrintable(seconds) << " s" << (away == menu ? " to the menu" : " out of the window");
        }
}

struct Deleted : UnderCursor {
    void SetUp() override {
        RealNotes::SetUp();
        ASSERT_NO_FATAL_FAILURE(open({kEmpty, kRecorded}));
        ASSERT_TRUE(hover(kRecorded));
        clickAt(witness.tag().topLeft() + QPoint(30, 4));
        ASSERT_TRUE(comesTrue([&] { return witness.tag().isNull(); }));
        ASSERT_TRUE(comesTrue([&] { return witness.sees("undoBar"); })) << "no bar";
        m_shown.start();
    }
    bool isBarGone() {
        return comesTrue([&] { return !witness.sees("undoBar"); });
    }
    QElapsedTimer m_shown;
};

TEST_F(Deleted, ANoteIsBroughtBackByTheButtonOfTheBar) {
    EXPECT_TRUE(witness.sees("Label", "Voice note deleted"));
    EXPECT_TRUE(witness.sees("undoBarButton", "Undo"));
    clickAt(witness.visible("undoBarButton").place.center());
    EXPECT_TRUE(isBarGone());
    ASSERT_TRUE(save());
    EXPECT_TRUE(isSpoken(note("B1")));
    EXPECT_EQ(notesIn(drawing).size(), 2U);
}

TEST_F(Deleted, TheBarGoesAfterTenSeconds) {
    EXPECT_TRUE(isBarGone());
    EXPECT_GT(m_shown.elapsed(), 8'000);
    ASSERT_TRUE(save());
    EXPECT_EQ(notesIn(drawing).size(), 1U);
}

TEST_F(Deleted, TheBarGoesAtTheNextChange) {
    ASSERT_TRUE(command({"LINE", "0,0", "10,10", ""}));
    EXPECT_TRUE(isBarGone());
    EXPECT_LT(m_shown.elapsed(), 8'000);
    ASSERT_TRUE(save());
    EXPECT_EQ(notesIn(drawing).size(), 1U);
}

} // namespace
