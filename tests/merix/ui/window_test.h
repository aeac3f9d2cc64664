// SPDX-License-Identifier: MIT
// A main window with one drawing in it, and a hand that points, presses and types.
#pragma once

#include "merix/db/entities.h"
#include "merix/ed/prompter.h"
#include "merix/ed/selection.h"
#include "merix/ui/main_window.h"

#include <QApplication>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QWheelEvent>

#include <gtest/gtest.h>

class WindowTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        static const QTemporaryDir settings; // the user's own are left alone
        qputenv("XDG_CONFIG_HOME", settings.path().toUtf8());
        if (!QCoreApplication::instance())
            new QApplication(s_argc, s_argv); // lives as long as the process
    }

    WindowTest() {
        window.setUnattended(true);
        window.resize(900, 700);
        document = merix::ap::DocManager::instance().create();
        window.show();
        settle();
    }
    ~WindowTest() override {
        auto& manager = merix::ap::DocManager::instance();
        while (manager.current())
            manager.close(*manager.current());
    }

    merix::ui::DrawingView& view() { return *window.view(); }

    static void settle() {
        for (int i = 0; i < 4; ++i) {
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // as a running event loop does
        }
    }

    MxDbObjectId addLine(const MxGePoint3d& from, const MxGePoint3d& to, int color = 1) {
        auto* line = new merix::db::Line;
        line->start = from;
        line->end = to;
        merix::db::DatabaseImp& database = document->database()->imp();
        merix::db::traits(*line).color = static_cast<std::int16_t>(color);
        merix::db::traits(*line).layer = database.layerNamed(L"0");
        MxDbBlockTableRecord* space = nullptr;
        EXPECT_EQ(mxdbOpenObject(space, document->database()->currentSpaceId(), Mx::kForWrite), Mx::eOk);
        MxDbObjectId id;
        EXPECT_EQ(space->appendMxDbEntity(id, line), Mx::eOk);
        line->close();
        space->close();
        return id;
    }

    void mouse(QEvent::Type type, const QPointF& at, Qt::MouseButton button = Qt::NoButton,
               Qt::MouseButtons held = Qt::NoButton, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QMouseEvent event(type, at, view().mapToGlobal(at.toPoint()), button, held, modifiers);
        QApplication::sendEvent(&view(), &event);
    }
    void press(const QPointF& at, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        mouse(QEvent::MouseMove, at, Qt::NoButton, Qt::NoButton, modifiers);
        mouse(QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton, modifiers);
    }
    void release(const QPointF& at, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        mouse(QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton, modifiers);
        mouse(QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton, modifiers);
    }
    void click(const QPointF& at, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        press(at, modifiers);
        release(at, modifiers);
    }
    void drag(const QPointF& from, const QPointF& to, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        press(from, modifiers);
        release(to, modifiers);
    }
    void wheel(const QPointF& at, int angle) {
        QWheelEvent event(at, view().mapToGlobal(at.toPoint()), {}, {0, angle}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(&view(), &event);
    }
    static void type(QWidget* to, const QString& text) {
        for (const QChar c : text)
            key(to,
                c == QLatin1Char('\n')  ? int(Qt::Key_Return)
                : c == QLatin1Char(' ') ? int(Qt::Key_Space)
                                        : c.toUpper().unicode(),
                QString(c));
    }
    static void key(QWidget* to, int code, const QString& text = {}) {
        QKeyEvent event(QEvent::KeyPress, code, Qt::NoModifier, text);
        QApplication::sendEvent(to, &event);
    }

    merix::ui::MainWindow window;
    merix::ap::Document* document = nullptr;

private:
    static inline char s_name[] = "test";
    static inline char* s_argv[] = {s_name, nullptr};
    static inline int s_argc = 1;
};
