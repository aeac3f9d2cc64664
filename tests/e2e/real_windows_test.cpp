// SPDX-License-Identifier: MIT
// By hand: a real screen (Xvfb), a window manager, the keyboard and the mouse (xdotool), a real sound server.
#include "tests/support/dxf_tags.h"
#include "tests/support/process.h"

#include <QElapsedTimer>
#include <QPointF>
#include <QThread>

#include <functional>

using namespace merix::test;

namespace {

/// A program that runs beside the test and is ended with it.
class Running {
public:
    Running(const QString& program, const QStringList& arguments, const QProcessEnvironment& environment) {
        m_process.setProcessEnvironment(environment);
        m_process.start(program, arguments);
        m_process.waitForStarted();
    }
    ~Running() {
        m_process.terminate();
        if (!m_process.waitForFinished(5000))
            m_process.kill();
        m_process.waitForFinished();
    }
    QProcess& process() { return m_process; }

private:
    QProcess m_process;
};

/// Looks again and again; false when it has not come true after a long time.
bool comesTrue(const std::function<bool()>& condition) {
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > 30'000)
            return false;
        QThread::msleep(50);
    }
    return true;
}

struct RealWindows : testing::Test {
    QTemporaryDir folder{QStringLiteral("/tmp/hand.XXXXXX")};
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    std::unique_ptr<Running> screen, manager, merix;
    QString sound, log, drawing, window;

    void SetUp() override {
        // The server names the screen that it found free.
        screen = std::make_unique<Running>(
            QStringLiteral("Xvfb"), QStringList{"-displayfd", "1", "-screen", "0", "1400x900x24", "-nolisten", "tcp"},
            environment);
        ASSERT_TRUE(comesTrue([&] { return screen->process().waitForReadyRead(50); }));
        environment.insert("DISPLAY", ":" + QString::fromLatin1(screen->process().readLine().trimmed()));
        environment.remove("QT_QPA_PLATFORM");
        environment.remove("WAYLAND_DISPLAY");
        manager = std::make_unique<Running>(QStringLiteral("openbox"), QStringList(), environment);

        sound = folder.filePath("sound");
        environment.insert("SOUNDCHECK", MERIX_BINARY_DIR "/bin/soundcheck");
        ASSERT_EQ(run(MERIX_SOURCE_DIR "/scripts/sound-server.sh",
                      {"start", sound, MERIX_BINARY_DIR "/speech/spoken.wav"}, folder.path(), {}, environment)
                      .status,
                  0);
        QFile settings(sound + "/env");
        ASSERT_TRUE(settings.open(QIODevice::ReadOnly));
        for (QByteArray line : settings.readAll().split('\n')) {
            if (line.startsWith("export "))
                line.remove(0, 7);
            if (const int equals = line.indexOf('='); equals > 0)
                environment.insert(QString::fromUtf8(line.left(equals)),
                                   QString::fromUtf8(line.mid(equals + 1)).remove('\'').remove('"'));
        }
        log = folder.filePath("audio.log");
        environment.insert("PHONOMARK_AUDIO_LOG", log);
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
            environment.insert(name, folder.filePath("home"));

        // libxkbcommon-x11 copies a part of a text without an end by strndup, as it may; the strict check of the
        // address sanitizer asks for an end all the same.
        if (environment.contains("ASAN_OPTIONS"))
            environment.insert("ASAN_OPTIONS", environment.value("ASAN_OPTIONS") + ":strict_string_checks=0");
        // On a screen Qt starts a D-Bus thread of its own, whose event queue the thread sanitizer cannot see into. The
        // same path is run under it without a screen, with every report on.
        if (environment.contains("TSAN_OPTIONS"))
            environment.insert("TSAN_OPTIONS", environment.value("TSAN_OPTIONS") + ":report_bugs=0");
        drawing = folder.filePath("plan.dxf");
        ASSERT_TRUE(QFile::copy(MERIX_SOURCE_DIR "/samples/plan.dxf", drawing));
        merix =
            std::make_unique<Running>(QStringLiteral(MERIX_BINARY_DIR "/bin/merix"), QStringList{drawing}, environment);
        ASSERT_TRUE(comesTrue([&] {
            window = QString::fromLatin1(
                         hand({"search", "--onlyvisible", "--name", "plan.dxf"}).out.trimmed().split('\n').last())
                         .trimmed();
            return !window.isEmpty();
        }));
        hand({"windowactivate", "--sync", window});
    }
    void TearDown() override {
        merix.reset();
        if (!sound.isEmpty())
            run(MERIX_SOURCE_DIR "/scripts/sound-server.sh", {"stop", sound}, folder.path(), {}, environment);
    }

    Outcome hand(const QStringList& doing) { return run("xdotool", doing, folder.path(), {}, environment); }
    void moveTo(int x, int y) { hand({"mousemove", "--window", window, QString::number(x), QString::number(y)}); }

    /// The records of notes in the saved drawing.
    std::vector<Record> savedNotes() const {
        std::vector<Record> notes;
        for (const Record& record : records(readTags(drawing), "ENTITIES"))
            if (record[0].value == "PHONOMARK")
                notes.push_back(record);
        return notes;
    }
    /// The first; empty while there is none.
    Record savedNote() const {
        const std::vector<Record> notes = savedNotes();
        return notes.empty() ? Record() : notes.front();
    }
};

QPointF point(const Record& record, int code) {
    return {number(record, code), number(record, code + 10)};
}

/// Two notes put at known places of the window tell where the drawing lies in it.
struct RealSelection : RealWindows {
    void SetUp() override {
        RealWindows::SetUp();
        if (HasFatalFailure())
            return;
        hand({"key", "F3"}); // the notes go where the hand is, not to an end of a line beside it
        for (const QPoint& place : {m_left, m_right}) {
            moveTo(place.x(), place.y());
            hand({"type", "PHONOMARK"});
            hand({"key", "Return"});
            hand({"click", "1"});
        }
        ASSERT_TRUE(saved([&] { return savedNotes().size() == 2; }));
        m_leftPoint = point(savedNotes()[0], 10);
        m_scale = (m_right.x() - m_left.x()) / (point(savedNotes()[1], 10).x() - m_leftPoint.x());
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
    Record savedLine(const char* handle) const {
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

TEST_F(RealWindows, ANoteIsPlacedRecordedAndSavedWithMouseAndKeyboard) {
    moveTo(600, 300);
    hand({"type", "PHONOMARK"});
    hand({"key", "Return"});
    moveTo(700, 420);
    hand({"click", "1"});
    ASSERT_TRUE(comesTrue([&] {
        hand({"key", "ctrl+s"});
        return !savedNote().empty();
    }));
    EXPECT_EQ(value(savedNote(), 3), "0.0\"");

    // The marker stands up and to the right of the point; a cursor that rests on it brings up the tag window.
    moveTo(725, 395);
    moveTo(726, 394);
    QThread::msleep(500); // rest
    hand({"mousedown", "1"});
    ASSERT_TRUE(comesTrue([&] { return QFile::exists(log); })) << "the button was held but nothing was recorded";
    QThread::msleep(1600); // speak
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
    const QPointF start = point(savedLine(kLine), 10), end = point(savedLine(kLine), 11);
    const QPoint step(-40, 60);

    click(pixel({2600, start.y()}));
    drag(pixel(start), pixel(start) + step);
    EXPECT_TRUE(saved([&] { return movedBy(start, point(savedLine(kLine), 10), step); }));
    EXPECT_EQ(point(savedLine(kLine), 11), end);
    hand({"key", "ctrl+z"});
    EXPECT_TRUE(saved([&] { return point(savedLine(kLine), 10) == start; }));
    hand({"key", "Escape"});

    // A crossing box, from right to left, over a part of the line.
    drag(pixel({2400, start.y()}) - QPoint(0, 12), pixel({1400, start.y()}) + QPoint(0, 2));
    drag(pixel(end), pixel(end) + step);
    EXPECT_TRUE(saved([&] { return movedBy(end, point(savedLine(kLine), 11), step); }));
    hand({"key", "ctrl+z"});
    EXPECT_TRUE(saved([&] { return point(savedLine(kLine), 11) == end; }));
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

} // namespace
