// SPDX-License-Identifier: MIT
// The prompt in force: a command waits in it, the window, the command line or a script answer it. Main thread only.
#pragma once

#include "host/ed/input.h"
#include "merix/ed/console.h"

#include <optional>

class QEventLoop;

namespace merix::ed {

/// Something that can give the next input when a prompt waits: a script.
class InputSource {
public:
    virtual ~InputSource() = default;
    /// Does the next thing (which need not answer the prompt). False when there is no more.
    virtual bool feed() = 0;
};

class Prompter : public QObject {
    Q_OBJECT
public:
    enum class Wants { kNothing, kPoint, kPick, kKeyword, kString };
    static Prompter& instance();

    Wants wants() const { return m_wants; }
    bool isWaiting() const { return m_wants != Wants::kNothing; }
    /// The start of the rubber band of the point prompt in force.
    const std::optional<MxGePoint3d>& base() const { return m_base; }
    /// The rubber band is a rectangle.
    bool isCornerWanted() const { return m_corner; }

    /// Answers, from the window or a script. A line typed while nothing waits is a command (CommandStack::runLine). As
    /// a blank ends an answer, what follows it answers the next prompt.
    void submitLine(const QString& line);
    /// World coordinates; ignored unless a point, or something to be picked by one, is wanted.
    void submitPoint(const MxGePoint3d& world);
    void cancel(); ///< Esc

    /// What prompts draw from before they wait for the user; null for none. Not owned.
    void setSource(InputSource* source) { m_source = source; }

    // Used by the mxed… operations.
    void init(int control, const QString& keywords);
    int getPoint(const MxGePoint3d* base, const QString& prompt, MxGePoint3d& point);
    int getCorner(const MxGePoint3d& base, const QString& prompt, MxGePoint3d& corner);
    /// The point that something is picked by.
    int getPick(const QString& prompt, MxGePoint3d& point);
    /// The global form of the keyword.
    int getKeyword(const QString& prompt, QString& keyword);
    int getString(bool spaces, const QString& prompt, QString& text);
    const QString& lastKeyword() const { return m_lastKeyword; }

    // Used by the command stack.
    /// A command begins with the rest of the line that called it as its first answers.
    void beginCommand(const QString& typeAhead);
    void endCommand();
    /// True when the last prompt of the command was ended by Esc.
    bool wasCancelled() const { return m_result == kInputCancel; }

Q_SIGNALS:
    /// Another prompt, or none, is in force.
    void changed();

private:
    Prompter() = default;
    int waitForPoint(Wants wants, const QString& prompt, MxGePoint3d& point);
    int wait(Wants wants, const QString& prompt);
    void finish(int result);
    void take(const QString& line);
    void takePoint(const QString& answer);
    void takeKeyword(const QString& answer);
    bool takeAsKeyword(const QString& answer, int result);
    void askAgain(const QString& why);

    Wants m_wants = Wants::kNothing;
    int m_control = 0;
    bool m_spaces = false, m_corner = false;
    std::vector<Keyword> m_keywords;
    std::optional<MxGePoint3d> m_base;
    QString m_lastKeyword, m_text, m_typeAhead;
    MxGePoint3d m_point, m_lastPoint;
    int m_result = kInputNormal;
    bool m_answered = false;
    InputSource* m_source = nullptr;
    QEventLoop* m_loop = nullptr;
};

} // namespace merix::ed
