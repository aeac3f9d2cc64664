// SPDX-License-Identifier: MIT
// Runs a script: lines as they are typed at the command line, and `@` lines for the hand. A prompt that waits takes its
// answers from the lines that follow.
#pragma once

#include "merix/app/desktop.h"
#include "merix/app/hand.h"
#include "merix/app/line_reader.h"
#include "merix/ed/prompter.h"

namespace merix::ui {
class MainWindow;
}

namespace merix::app {

class Script : public QObject, public ed::InputSource {
    Q_OBJECT
public:
    explicit Script(ui::MainWindow& first);
    ~Script() override;

    /// `name` is what messages call the script. Returns when its last line is done; empty, or `NAME:LINE: why` of the
    /// line that failed.
    QString run(LineReader& lines, const QString& name);
    /// No further line is run (the program ends).
    void stop() { m_stopped = true; }

    bool feed() override;

private:
    using Action = QString (Script::*)(const QString& argument);
    static Action actionNamed(const QString& name);

    /// The window of the active drawing.
    static ui::MainWindow& window();
    bool runNext();
    QString runLine(const QString& line);
    QString runTyped(const QString& line);
    void drain();
    void pump();
    void fail(int line, const QString& why);

    // The hand's lines; each returns why it failed, or nothing.
    QString hover(const QString& argument);
    QString press(const QString& argument);
    QString release(const QString& argument);
    QString click(const QString& argument);
    QString key(const QString& argument);
    QString wait(const QString& argument);
    QString shot(const QString& argument);
    QString viewSize(const QString& argument);
    QString viewShot(const QString& argument);
    QString open(const QString& argument);
    QString save(const QString& argument);
    QString close(const QString& argument);
    QString activate(const QString& argument);
    QString layout(const QString& argument);
    QString undo(const QString& argument);
    QString redo(const QString& argument);
    QString expect(const QString& argument);
    QString listWindows(const QString& argument);

    Desktop m_desktop;
    Hand m_hand;
    LineReader* m_lines = nullptr;
    QString m_name, m_error;
    bool m_stopped = false;
    bool m_busy = false;             ///< inside `@wait` or reading: a dialog that opens meanwhile gets no line
    QPointer<QWidget> m_modalAtLine; ///< the modal window when the line under way began
};

} // namespace merix::app
