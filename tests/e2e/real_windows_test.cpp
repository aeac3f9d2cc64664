// SPDX-License-Identifier: MIT
// By hand: a real screen (Xvfb), a window manager, the keyboard and the mouse (xdotool), a real sound server.
#include "tests/support/dxf_tags.h"
#include "tests/support/process.h"

#include <QElapsedTimer>
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

    /// The note's record in the saved drawing; empty while there is none.
    Record savedNote() const {
        for (const Record& record : records(readTags(drawing), "ENTITIES"))
            if (record[0].value == "PHONOMARK")
                return record;
        return {};
    }
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

} // namespace
