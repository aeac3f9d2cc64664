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
        return *g_taguidlg;
    }
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

private:
    struct Gate {
        std::latch kept{1}, open{1};
    };
    static std::atomic<std::int64_t>& now() {
        static std::atomic<std::int64_t> ms = 1'000'000;
        return ms;
    }
    static std::int64_t testClock() { return now(); }
    static void mouse(QWidget& window, QEvent::Type type, QPointF at) {
        QMouseEvent event(type, at, window.mapToGlobal(at.toPoint()), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&window, &event);
    }

    std::shared_ptr<Gate> m_gate;
};
