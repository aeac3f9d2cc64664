// SPDX-License-Identifier: MIT
// Notes and selections by hand.
#include "tests/e2e/real_windows.h"

#include <QDir>
#include <QPointF>

#include <cmath>

using namespace merix::test;

namespace {

struct RealWindows : RealScreen {
    void SetUp() override {
        RealScreen::SetUp();
        drawing = folder.filePath("plan.dxf");
        ASSERT_TRUE(QFile::copy(MERIX_SOURCE_DIR "/samples/plan.dxf", drawing));
        if (!HasFatalFailure())
            start({drawing}, "plan.dxf");
    }

    /// The records of notes in the saved drawing.
    std::vector<Record> savedNotes() const { return notesIn(drawing); }
    /// The first; empty while there is none.
    Record savedNote() const {
        const std::vector<Record> notes = savedNotes();
        return notes.empty() ? Record() : notes.front();
    }
    QString drawing;
};

QPointF point(const Record& record, int code) {
    return {number(record, code), number(record, code + 10)};
}

/// Two notes at known places of the window.
struct RealSelection : RealWindows {
    void SetUp() override {
        RealWindows::SetUp();
        if (HasFatalFailure())
            return;
        hand({"key", "F3"}); // the notes go where the hand is, not to an end of a line beside it
        for (const QPoint& at : {m_left, m_right})
            ASSERT_NO_FATAL_FAILURE(placeNote(at.x(), at.y()));
        ASSERT_TRUE(saved([&] { return savedNotes().size() == 2; }));
        measure(point(savedNotes()[0], 10), point(savedNotes()[1], 10));
    }
    /// What lies in the two places of the window tells where the drawing lies in it.
    void measure(const QPointF& atLeft, const QPointF& atRight) {
        m_leftPoint = atLeft;
        m_scale = (m_right.x() - m_left.x()) / (atRight.x() - atLeft.x());
        ASSERT_GT(m_scale, 0.0);
    }
    /// Saves until `condition` holds of the file.
    bool saved(const std::function<bool()>& condition) {
        return comesTrue([&] {
            hand({"key", "ctrl+s"});
            return condition();
        });
    }
    QPoint pixel(const QPointF& world) const {
        const QPointF from = (world - m_leftPoint) * m_scale;
        return m_left + QPoint(qRound(from.x()), qRound(-from.y()));
    }
    void drag(const QPoint& from, const QPoint& to) {
        moveTo(from.x(), from.y());
        hand({"mousedown", "1"});
        moveTo((from.x() + to.x()) / 2, (from.y() + to.y()) / 2);
        moveTo(to.x(), to.y());
        hand({"mouseup", "1"});
    }
    void click(const QPoint& at) {
        moveTo(at.x(), at.y());
        hand({"click", "1"});
    }
    Record savedEntity(const char* handle) const {
        for (const Record& record : records(readTags(drawing), "ENTITIES"))
            if (value(record, 5) == handle)
                return record;
        return {};
    }
    /// True when `now` lies where a hand would have put what it took at `before` and moved by `step` pixels.
    bool movedBy(const QPointF& before, const QPointF& now, const QPoint& step) const {
        const QPointF off = (now - before) * m_scale - QPointF(step.x(), -step.y());
        return std::abs(off.x()) < 2.5 && std::abs(off.y()) < 2.5;
    }

    const QPoint m_left{500, 330}, m_right{560, 585}; // the right one with nothing around it
    QPointF m_leftPoint;
    double m_scale = 0.0; ///< pixels in a drawing unit
};

/// A circle with a note, drawn by hand beside the sheet, where nothing else is.
struct RealAttachment : RealSelection {
    void SetUp() override {
        RealSelection::SetUp();
        if (HasFatalFailure())
            return;
        type("CIRCLE");
        answer(m_center);
        answer(m_center + QPoint(m_radius, 0));
        type("PHONOMARK");
        type("Settings");
        type("Object");
        answer(m_center - QPoint(m_radius, 0));
        ASSERT_TRUE(saved([&] { return !attachedNote().empty(); }));
        for (const Tag& tag : attachedNote())
            if (tag.code == 102) // the last is the note's own
                circle = tag.value;
        ASSERT_FALSE(savedCircle().empty());
        ASSERT_TRUE(follows(m_center, m_radius));
    }
    /// What the command line said: painted only while the program waits for the next answer.
    QImage said() const { return shown().copy(0, frame.height() - 145, frame.width(), 70); }
    /// Does something that the command line answers to.
    void heard(const std::function<void()>& doing) {
        const QImage before = said();
        doing();
        EXPECT_TRUE(comesTrue([&] { return said() != before; }));
    }
    void type(const char* line) {
        heard([&] {
            if (*line)
                hand({"type", line});
            hand({"key", "Return"});
        });
    }
    void answer(const QPoint& at) {
        heard([&] { click(at); });
    }
    /// The command asks for a selection: the circle, by its left end.
    void selectCircle() {
        answer(m_center - QPoint(m_radius, 0));
        type("");
    }

    Record attachedNote() const {
        for (const Record& note : savedNotes())
            if (number(note, 70) == 2)
                return note;
        return {};
    }
    std::vector<Record> savedLines() const {
        std::vector<Record> lines;
        for (const Record& record : records(readTags(drawing), "ENTITIES"))
            if (record[0].value == "LINE")
                lines.push_back(record);
        return lines;
    }
    Record savedCircle() const { return savedEntity(circle.constData()); }
    bool circleIs(const QPoint& center, int radius) const {
        const Record record = savedCircle();
        if (record.empty())
            return false;
        const QPointF off =
            point(record, 10) - m_leftPoint - QPointF(center.x() - m_left.x(), m_left.y() - center.y()) / m_scale;
        constexpr double kPixels = 2.5;
        return std::hypot(off.x(), off.y()) * m_scale < kPixels &&
               std::abs(number(record, 40) * m_scale - radius) < kPixels;
    }
    /// Pixels in the colour of markers in the square of one whose lower left corner is there.
    int markerPixels(const QPoint& corner) const {
        constexpr int kMarker = 32;
        const QImage square = shown().copy(corner.x() + 1, corner.y() - kMarker, kMarker, kMarker);
        int found = 0;
        for (int y = 0; y < square.height(); ++y)
            for (int x = 0; x < square.width(); ++x) {
                const QColor color = square.pixelColor(x, y);
                found += color.red() > 150 && std::abs(color.red() - color.blue()) < 20;
            }
        return found;
    }
    bool showsMarker(const QPoint& corner) const { return markerPixels(corner) > 120; }
    static QPoint cornerOf(const QPoint& center, int radius) { return center + QPoint(radius, -radius); }

    /// The circle was saved there, its marker is seen at its corner and nowhere else that it ever was, and nothing in
    /// the file is broken.
    bool follows(const QPoint& center, int radius) {
        moveTo(m_apart.x(), m_apart.y());
        const QPoint corner = cornerOf(center, radius);
        const bool isSaved = saved([&] { return circleIs(center, radius); });
        const bool isShown = comesTrue([&] { return showsMarker(corner); });
        bool isElsewhere = false;
        for (const QPoint& other : m_corners)
            isElsewhere |= (other - corner).manhattanLength() > 6 && markerPixels(other) > 40;
        m_corners.push_back(corner);
        shown().save(pictures() + QStringLiteral("/%1.png").arg(++m_pictures, 2, 10, QLatin1Char('0')));
        const Outcome audit =
            runScript("@open " + drawing.toUtf8() + "\nAUDIT\n@expect 0 broken, 0 loose\n", folder.path());
        EXPECT_EQ(audit.status, 0) << audit.err.constData();
        EXPECT_TRUE(isSaved) << "the circle of picture " << m_pictures;
        EXPECT_TRUE(isShown) << "the marker of picture " << m_pictures;
        EXPECT_FALSE(isElsewhere) << "the marker of picture " << m_pictures;
        return isSaved && isShown && !isElsewhere && audit.status == 0;
    }
    /// The circle is there now; undone it is where it was, and redone there again.
    void takesBackAndForth(const QPoint& center, int radius) {
        ASSERT_TRUE(follows(center, radius));
        hand({"key", "ctrl+z"});
        ASSERT_TRUE(follows(m_center, m_radius));
        hand({"key", "ctrl+y"});
        ASSERT_TRUE(follows(center, radius));
        m_center = center;
        m_radius = radius;
    }
    /// For people to look at.
    static QString pictures() {
        const QString path = QStringLiteral(MERIX_BINARY_DIR "/hand/attached");
        QDir().mkpath(path);
        return path;
    }

    QByteArray circle; ///< its handle
    QPoint m_center{120, 440};
    int m_radius = 30;
    const QPoint m_apart{1150, 500}; ///< nothing is there
    int m_pictures = 0;
    std::vector<QPoint> m_corners; ///< where the marker was seen; no two markers there would meet
};

TEST_F(RealWindows, ANoteIsPlacedRecordedAndSavedWithMouseAndKeyboard) {
    ASSERT_NO_FATAL_FAILURE(placeNote(700, 420));
    ASSERT_TRUE(comesTrue([&] {
        hand({"key", "ctrl+s"});
        return !savedNote().empty();
    }));
    EXPECT_EQ(value(savedNote(), 3), "0.0\"");

    // The marker stands up and to the right of the point; a cursor that rests on it brings up the tag window.
    ASSERT_TRUE(hoverNote(700, 420));
    hand({"mousedown", "1"});
    ASSERT_TRUE(comesTrue([&] { return isListening(); })) << "the button was held but nothing was recorded";
    QThread::msleep(kSpokenMs);
    hand({"mouseup", "1"});
    ASSERT_TRUE(comesTrue([&] {
        hand({"key", "ctrl+s"});
        return number(savedNote(), 290) == 1;
    }));
    EXPECT_GT(number(savedNote(), 93), 40'000 * 4); // more than a second
    EXPECT_NE(value(savedNote(), 3), "0.0\"");

    hand({"key", "ctrl+q"});
    ASSERT_TRUE(merix->process().waitForFinished(30'000));
    EXPECT_EQ(merix->process().exitCode(), 0);
    EXPECT_EQ(merix->process().exitStatus(), QProcess::NormalExit);
}

TEST_F(RealSelection, GripsOfWhatWasClickedOrBoxedAreDraggedAndTakenBack) {
    const char* const kLine = "D6"; // a dimension's line, from left to right
    const QPointF start = point(savedEntity(kLine), 10), end = point(savedEntity(kLine), 11);
    const QPoint step(-40, 60);

    click(pixel({2600, start.y()}));
    drag(pixel(start), pixel(start) + step);
    EXPECT_TRUE(saved([&] { return movedBy(start, point(savedEntity(kLine), 10), step); }));
    EXPECT_EQ(point(savedEntity(kLine), 11), end);
    hand({"key", "ctrl+z"});
    EXPECT_TRUE(saved([&] { return point(savedEntity(kLine), 10) == start; }));
    hand({"key", "Escape"});

    // A crossing box, from right to left, over a part of the line.
    drag(pixel({2400, start.y()}) - QPoint(0, 12), pixel({1400, start.y()}) + QPoint(0, 2));
    drag(pixel(end), pixel(end) + step);
    EXPECT_TRUE(saved([&] { return movedBy(end, point(savedEntity(kLine), 11), step); }));
    hand({"key", "ctrl+z"});
    EXPECT_TRUE(saved([&] { return point(savedEntity(kLine), 11) == end; }));
    hand({"key", "Escape"});

    // A window, from left to right, around the whole of a note.
    const QPointF note = point(savedNotes()[1], 10);
    drag(m_right + QPoint(-12, 12), m_right + QPoint(60, -75));
    const QPoint up(-40, -30);
    drag(m_right, m_right + up);
    EXPECT_TRUE(saved([&] { return movedBy(note, point(savedNotes()[1], 10), up); }));
    EXPECT_EQ(point(savedNotes()[0], 10), m_leftPoint);
    hand({"key", "ctrl+z"});
    EXPECT_TRUE(saved([&] { return point(savedNotes()[1], 10) == note; }));
}

TEST_F(RealAttachment, TheMarkerFollowsItsCircleThroughEditsByHandAndThroughTheFile) {
    type("MOVE");
    selectCircle();
    answer(m_center);
    answer({160, 300});
    ASSERT_NO_FATAL_FAILURE(takesBackAndForth({160, 300}, 30));

    click({130, 300});
    drag({190, 300}, {230, 300}); // by the grip at its right end
    hand({"key", "Escape"});
    ASSERT_NO_FATAL_FAILURE(takesBackAndForth({160, 300}, 70));

    type("ROTATE");
    selectCircle();
    answer({180, 400});
    type("90");
    ASSERT_NO_FATAL_FAILURE(takesBackAndForth({80, 420}, 70));

    type("SCALE");
    selectCircle();
    answer({80, 560});
    type("0.5");
    ASSERT_NO_FATAL_FAILURE(takesBackAndForth({80, 490}, 35));

    const QPointF center = point(savedCircle(), 10);
    const double radius = number(savedCircle(), 40);
    hand({"key", "ctrl+w"});
    ASSERT_TRUE(comesTrue([&] { return hand({"getwindowname", window}).out.indexOf("plan.dxf") < 0; }));
    hand({"key", "ctrl+o"});
    ASSERT_TRUE(comesTrue([&] { return !hand({"search", "--onlyvisible", "--name", "^Open"}).out.isEmpty(); }));
    hand({"type", drawing});
    hand({"key", "Return"});
    ASSERT_TRUE(comesTrue([&] { return hand({"getwindowname", window}).out.indexOf("plan.dxf") >= 0; }));

    m_corners.clear();
    // The whole of the drawing is shown now.
    const std::size_t lines = savedLines().size();
    type("LINE");
    answer(m_left);
    answer(m_right);
    type("");
    ASSERT_TRUE(saved([&] { return savedLines().size() == lines + 1; }));
    measure(point(savedLines().back(), 10), point(savedLines().back(), 11));
    m_center = pixel(center);
    m_radius = qRound(radius * m_scale);
    ASSERT_TRUE(follows(m_center, m_radius));
    type("MOVE");
    selectCircle();
    answer(m_center);
    answer(m_center + QPoint(0, -150));
    takesBackAndForth(m_center + QPoint(0, -150), m_radius);
}

} // namespace
