// SPDX-License-Identifier: MIT
#pragma once

#include "phonomark/audio/worker_census.h"
#include "phonomark/tagwindow/show_tag_window.h"
#include "phonomark/tagwindow/tag_window.h"
#include "tests/phonomark/module_fixture.h"
#include "tests/support/alsa_script/alsa_script.h"

#include <QCoreApplication>
#include <QFile>
#include <QMouseEvent>
#include <QTimerEvent>

#include <atomic>
#include <latch>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// The tag window over a note, on a machine whose sound device is the scripted libasound.
class SoundTest : public ModuleTest {
protected:
    void SetUp() override {
        ModuleTest::SetUp();
        alsa.reset();
        listDevices("00-00: virtual : virtual : playback 1 : capture 1\n");
    }
    void TearDown() override {
        removeTagWindow(); // what it records ends with the period under way
        release();
        ModuleTest::TearDown();
        phonomark::workerCensus().wait();
    }

    void listDevices(const char* text) {
        QFile file(folder.filePath(QStringLiteral("pcm")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        qputenv("PHONOMARK_PCM_LIST", file.fileName().toLocal8Bit());
    }

    CPhonomarkTagUIDlg& openWindow(MxDbObjectId id) {
        ShowTagWindow(CPoint{100, 100}, &note(id));
        g_taguidlg->useClock(&testClock);
        g_taguidlg->useSleep([](unsigned long ms) { slept().push_back(ms); });
        return *g_taguidlg;
    }
    /// The waits of windows since the last call of this, milliseconds.
    static std::vector<unsigned long> takeSlept() { return std::exchange(slept(), {}); }
    static void press(QWidget& window, QPointF at = {5, 20}) { mouse(window, QEvent::MouseButtonPress, at); }
    static void letGo(QWidget& window, QPointF at = {5, 20}) { mouse(window, QEvent::MouseButtonRelease, at); }
    static void tick(QObject& window, int timer) {
        QTimerEvent event(timer);
        QCoreApplication::sendEvent(&window, &event);
    }

    /// Presses the window for `ms` milliseconds of the test's clock, during which one period of sound is kept.
    void pressFor(CPhonomarkTagUIDlg& window, std::int64_t ms) {
        hold(window, ms);
        letGo(window);
        release();
        phonomark::workerCensus().wait();
    }
    void hold(CPhonomarkTagUIDlg& window, std::int64_t ms) {
        m_gate = std::make_shared<Gate>();
        alsa.read = [gate = m_gate, ms, reads = 0](std::int16_t* samples, unsigned long frames) mutable {
            if (++reads == 1) {
                for (unsigned long i = 0; i < frames; ++i)
                    samples[i] = static_cast<std::int16_t>(i + 1);
                now() += ms;
            } else if (reads == 2) {
                gate->kept.count_down(); // the first period has been counted
                gate->open.wait();
            }
            return static_cast<long>(frames);
        };
        press(window);
        m_gate->kept.wait();
    }
    /// Lets the test's clock go on.
    static void advance(std::int64_t ms) { now() += ms; }
    void release() {
        if (m_gate)
            m_gate->open.count_down();
        m_gate.reset();
    }

    std::wstring duration(MxDbObjectId id) {
        CStdStr<wchar_t> text;
        note(id).getDuration(text);
        return text;
    }

    /// A Point note with `size` bytes of sound.
    MxDbObjectId addRecorded(const wchar_t* text, std::size_t size = 640) {
        const MxDbObjectId id = addNote();
        note(id).setAudioData(soundBytes(size));
        note(id).setAudioDataSize(static_cast<unsigned>(size));
        note(id).setDuration(text);
        note(id).setSpokesman(L"Anna");
        note(id).setDatatime(L"2026/3/7 9:5:0");
        return id;
    }

    AlsaScript& alsa = AlsaScript::instance();

    static void mouse(QWidget& window, QEvent::Type type, QPointF at, Qt::MouseButton button = Qt::LeftButton,
                      Qt::MouseButtons held = Qt::LeftButton) {
        QMouseEvent event(type, at, window.mapToGlobal(at.toPoint()), button, held, Qt::NoModifier);
        QCoreApplication::sendEvent(&window, &event);
    }
    /// What the window shows.
    static QImage shown(QWidget& window) {
        QImage image(36, 36, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        window.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
        return image;
    }
    static QImage resource(const char* name) {
        return QImage(QString::fromLatin1(":/MrxPhonomarkRes/MrxPhonomarkRes/") + QString::fromLatin1(name))
            .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    }
    /// The bytes of the note's sound; empty without any.
    std::string sound(MxDbObjectId id) {
        const auto* bytes = reinterpret_cast<const char*>(note(id).getAudioData());
        return bytes ? std::string(bytes, note(id).getAudioDataSize()) : std::string();
    }
    std::vector<std::string> undoSteps() {
        std::vector<std::string> names;
        for (const QString& name : document().undoNames())
            names.push_back(name.toStdString());
        return names;
    }

private:
    static std::vector<unsigned long>& slept() {
        static std::vector<unsigned long> all;
        return all;
    }
    struct Gate {
        std::latch kept{1}, open{1};
    };
    static std::atomic<std::int64_t>& now() {
        static std::atomic<std::int64_t> ms = 1'000'000;
        return ms;
    }
    static std::int64_t testClock() { return now(); }
    std::shared_ptr<Gate> m_gate;
};
