// SPDX-License-Identifier: MIT
// By hand: a real screen (Xvfb), a window manager, the keyboard and the mouse (xdotool), a real sound server.
#pragma once

#include "tests/e2e/witnessed.h"
#include "tests/support/dxf_tags.h"
#include "tests/support/process.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QMap>
#include <QRect>
#include <QThread>
#include <QtEndian>

#include <functional>
#include <iostream>
#include <memory>
#include <vector>

namespace merix::test {

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
inline bool comesTrue(const std::function<bool()>& condition, int boundMs = 30'000) {
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > boundMs)
            return false;
        QThread::msleep(50);
    }
    return true;
}

/// A screen of its own with a window manager and sound.
struct RealScreen : testing::Test {
    static constexpr int kSpokenMs = 1800; ///< a take that is long enough to be kept, also on a busy machine

    QTemporaryDir folder{QStringLiteral("/tmp/hand.XXXXXX")};
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const Witnessed witness{folder.path()};
    std::unique_ptr<Running> screen, manager, merix;
    QString sound, log, window;
    QRect frame; ///< of the window on the screen when it was opened

    void SetUp() override {
        // The server names the screen that it found free.
        screen = std::make_unique<Running>(QStringLiteral("Xvfb"),
                                           QStringList{"-displayfd", "1", "-screen", "0", "1400x900x24", "-nolisten",
                                                       "tcp", "-noreset", "-fbdir", folder.path()},
                                           environment);
        ASSERT_TRUE(comesTrue([&] { return screen->process().waitForReadyRead(50); }));
        environment.insert("DISPLAY", ":" + QString::fromLatin1(screen->process().readLine().trimmed()));
        environment.remove("QT_QPA_PLATFORM");
        environment.remove("WAYLAND_DISPLAY");
        manager = std::make_unique<Running>(QStringLiteral("openbox"), QStringList(), environment);
        // A window that comes up while the manager does may be lost to both.
        ASSERT_TRUE(comesTrue([&] { return hand({"get_num_desktops"}).status == 0; }))
            << "the window manager is in the state " << manager->process().state()
            << manager->process().readAllStandardError().constData();

        ASSERT_NO_FATAL_FAILURE(startSound());
        log = folder.filePath("audio.log");
        environment.insert("PHONOMARK_AUDIO_LOG", log);
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
            environment.insert(name, folder.filePath("home"));
        environment.insert("QT_PLUGIN_PATH", MERIX_BINARY_DIR "/tests/plugins");
        environment.insert("QT_QPA_GENERIC_PLUGINS", "witness");
        environment.insert("MERIX_WITNESS", folder.path());

        // libxkbcommon-x11 copies a part of a text without an end by strndup, as it may; the strict check of the
        // address sanitizer asks for an end all the same.
        if (environment.contains("ASAN_OPTIONS"))
            environment.insert("ASAN_OPTIONS", environment.value("ASAN_OPTIONS") + ":strict_string_checks=0");
        // On a screen Qt starts a D-Bus thread of its own, whose event queue the thread sanitizer cannot see into. The
        // same path is run under it without a screen, with every report on.
        if (environment.contains("TSAN_OPTIONS"))
            environment.insert("TSAN_OPTIONS", environment.value("TSAN_OPTIONS") + ":report_bugs=0");
    }
    /// Brings up a sound server for this test alone and points `environment` at it.
    virtual void startSound() {
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
    }
    /// Starts the program; `window` is the one whose title has `title` in it.
    void start(const QStringList& drawings, const QString& title) {
        merix = std::make_unique<Running>(QStringLiteral(MERIX_BINARY_DIR "/bin/merix"), drawings, environment);
        ASSERT_TRUE(comesTrue([&] {
            window = windowNamed(title);
            return !window.isEmpty();
        })) << "no window "
            << qPrintable(title) << ": the program is in the state " << merix->process().state()
            << merix->process().readAllStandardError().constData()
            << "; windows: " << hand({"search", "--name", "."}).out.constData();
        hand({"windowactivate", "--sync", window});
        // The program has heard where the window manager has put the window.
        ASSERT_TRUE(comesTrue([&] {
            moveTo(0, 0);
            const auto corner = told({"getmouselocation", "--shell"}),
                       size = told({"getwindowgeometry", "--shell", window});
            frame = {corner["X"], corner["Y"], size["WIDTH"], size["HEIGHT"]};
            return frame == witness.visible("MainWindow", title).place;
        }));
        ASSERT_TRUE(frame.isValid());
    }
    void TearDown() override {
        if (HasFailure())
            keepPicture();
        merix.reset();
        if (!sound.isEmpty())
            run(MERIX_SOURCE_DIR "/scripts/sound-server.sh", {"stop", sound}, folder.path(), {}, environment);
    }

    Outcome hand(const QStringList& doing) { return run("xdotool", doing, folder.path(), {}, environment); }
    /// What it answers in lines of NAME=NUMBER.
    QMap<QByteArray, int> told(const QStringList& asking) {
        QMap<QByteArray, int> numbers;
        for (const QByteArray& line : hand(asking).out.split('\n'))
            numbers[line.left(line.indexOf('='))] = line.mid(line.indexOf('=') + 1).toInt();
        return numbers;
    }
    /// Types lines and waits until they were taken and the next command is waited for.
    bool command(const QStringList& lines) {
        const QString called = "Command: " + lines.front();
        const int before = witness.timesSaid(called);
        type(lines);
        return comesTrue([&] { return witness.timesSaid(called) > before && witness.prompt() == "Command:"; });
    }
    /// The lines of one command: each when the one before has been taken and the next is asked for.
    void type(const QStringList& lines) {
        for (int i = 0; i < lines.size(); ++i) {
            const QString said = witness.said();
            enter(lines[i]);
            EXPECT_TRUE(i + 1 == lines.size() ||
                        comesTrue([&] { return witness.said() != said && witness.prompt() != "Command:"; }))
                << qPrintable(lines[i]);
        }
    }
    void enter(const QString& line) {
        if (line.isEmpty())
            hand({"key", "Return"});
        else
            hand({"type", "--delay", "3", "--args", "1", line, "key", "Return"});
    }
    /// The program is there and answers.
    bool answers(int boundMs = 30'000) {
        const int before = witness.timesSaid("Command: MODULES");
        type({"MODULES"});
        return comesTrue([&] { return witness.timesSaid("Command: MODULES") > before; }, boundMs);
    }
    QByteArray atServer(const char* what) {
        return run("pactl", {"list", "short", what}, folder.path(), {}, environment).out.trimmed();
    }
    bool isListening() { return !atServer("source-outputs").isEmpty(); }
    bool isPlaying() { return !atServer("sink-inputs").isEmpty(); }
    void moveTo(int x, int y) { hand({"mousemove", "--window", window, QString::number(x), QString::number(y)}); }
    /// The whole screen: the server keeps its screen in a file of big-endian words that tell its measures, a table
    /// of colours and the pixels.
    QImage seen() const {
        QFile file(folder.filePath("Xvfb_screen0"));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        const QByteArray all = file.readAll();
        const auto word = [&](int n) { return static_cast<int>(qFromBigEndian<quint32>(all.constData() + 4 * n)); };
        constexpr int kHeaderWords = 25, kColor = 12;
        if (all.size() < 4 * kHeaderWords)
            return {};
        const int size = word(0), width = word(4), height = word(5), line = word(12), colors = word(19);
        if (size + kColor * colors + line * height > all.size())
            return {};
        const auto* pixels = reinterpret_cast<const uchar*>(all.constData()) + size + kColor * colors;
        return QImage(pixels, width, height, line, QImage::Format_RGB32).copy();
    }
    /// What the window shows.
    QImage shown() const { return seen().copy(frame); }
    /// Places a note there in the window.
    void placeNote(int x, int y) {
        moveTo(x, y);
        enter("PHONOMARK");
        ASSERT_TRUE(comesTrue([&] { return witness.prompt().contains("Specify the point"); }));
        hand({"click", "1"});
        ASSERT_TRUE(comesTrue([&] { return witness.prompt() == "Command:"; }));
    }
    /// The cursor rests on the marker of the note that was placed there, and its window is seen.
    bool hoverNote(int x, int y) {
        moveTo(x + 25, y - 25);
        moveTo(x + 26, y - 26);
        return comesTrue([&] { return !witness.tag().isNull(); });
    }
    /// The screen and the command history as they were when the test had failed, for people to look at.
    void keepPicture() const {
        const QString folderOfAll = MERIX_BINARY_DIR "/hand/failed";
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        const QString path = folderOfAll + '/' + test->test_suite_name() + '.' + test->name();
        if (!QDir().mkpath(folderOfAll) || !seen().save(path + ".png"))
            return;
        std::cout << "The screen: " << qPrintable(path) << ".png\n" << qPrintable(witness.said()) << std::endl;
    }
    /// The last one on the screen with `title` in its title; empty for none.
    QString windowNamed(const QString& title) {
        const QByteArray found = hand({"search", "--onlyvisible", "--name", title}).out.trimmed();
        return QString::fromLatin1(found.split('\n').last()).trimmed();
    }
    static std::vector<Record> notesIn(const QString& drawing) {
        std::vector<Record> notes;
        for (const Record& record : records(readTags(drawing), "ENTITIES"))
            if (record[0].value == "PHONOMARK")
                notes.push_back(record);
        return notes;
    }
};

} // namespace merix::test
