// SPDX-License-Identifier: MIT
// The prompt in force: a command waits in it, the window, the command line or a script answer it. Main thread only.
#pragma once

#include "host/ed/commands.h"
#include "host/ed/input.h"
#include "merix/ed/console.h"

#include <deque>
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
    enum class Wants { kNothing, kPoint, kPick, kKeyword, kString, kDistance, kAngle, kReal, kInteger };
    /// Bits of what the next prompt does not take, and kAnyText: what is neither asked for nor an option answers as a
    /// keyword, as it stands.
    static constexpr int kNotEmpty = 1, kNotZero = 2, kNotNegative = 4, kAnyText = 8;
    static Prompter& instance();

    Wants wants() const { return m_wants; }
    bool isWaiting() const { return m_wants != Wants::kNothing; }
    /// A point of the view answers: one is asked for, something is picked by one, or a distance or an angle is
    /// measured.
    bool isPointTaken() const;
    /// The start of the rubber band of the prompt in force.
    const std::optional<MxGePoint3d>& base() const { return m_base; }
    /// The rubber band is a rectangle.
    bool isCornerWanted() const { return m_corner; }

    /// Answers, from the window or a script. A line typed while nothing waits is a command (CommandStack::runLine). As
    /// a blank ends an answer, what follows it answers the next prompt.
    void submitLine(const QString& line);
    /// World coordinates; ignored unless isPointTaken. `takesAway`: what is picked is to leave the selection (Shift).
    void submitPoint(const MxGePoint3d& world, bool takesAway = false);
    void cancel(); ///< Esc

    /// What prompts draw from before they wait for the user; null for none. Not owned.
    void setSource(InputSource* source) { m_source = source; }

    // Used by the mxed… operations and the commands. Each answers kInputNormal, kInputKeyword, kInputNone (Enter) or
    // kInputCancel; what it asks for is left alone unless it is kInputNormal.
    void init(int control, const QString& keywords);
    int getPoint(const MxGePoint3d* base, const QString& prompt, MxGePoint3d& point);
    int getCorner(const MxGePoint3d& base, const QString& prompt, MxGePoint3d& corner);
    /// The point that something is picked by.
    int getPick(const QString& prompt, MxGePoint3d& point);
    /// A number, a point that far from `base`, or without a base two points.
    int getDistance(const MxGePoint3d* base, const QString& prompt, double& distance);
    /// Degrees typed or the direction of a point seen from `base`, without a base of two points; answered in radians.
    int getAngle(const MxGePoint3d* base, const QString& prompt, double& radians);
    int getReal(const QString& prompt, double& value);
    int getInteger(const QString& prompt, int& value);
    /// The global form of the keyword.
    int getKeyword(const QString& prompt, QString& keyword);
    int getString(bool spaces, const QString& prompt, QString& text);
    const QString& lastKeyword() const { return m_lastKeyword; }
    /// The point that answered last was given to take something out of the selection.
    bool lastPointTakesAway() const { return m_takesAway; }

    // Used by the command stack.
    /// A command begins with the rest of the line that called it as its first answers.
    void beginCommand(const QString& typeAhead);
    void endCommand();
    /// True when the last prompt of the command was ended by Esc.
    bool wasCancelled() const { return m_result == kInputCancel; }

    /// While it lives, the prompts take these answers and, after the last, are cancelled; without `echo` they are not
    /// shown. What the command around it had been given, and what it
    /// prepared for its next prompt, is kept for it.
    class Given {
    public:
        Given(std::vector<MxEdAnswer> answers, bool echo);
        ~Given();
        Given(const Given&) = delete;
        Given& operator=(const Given&) = delete;

    private:
        friend class Prompter;
        std::deque<MxEdAnswer> m_answers;
        const bool m_echo;
        Given* const m_outer;
        const QString m_typeAhead, m_lastKeyword;
        const std::vector<Keyword> m_keywords;
        const int m_control, m_result;
        const bool m_takesAway;
    };
    /// Prints what is shown of the dialogue with the user, unless it is not to be shown.
    void echo(const QString& text) const;

Q_SIGNALS:
    /// Another prompt, or none, is in force; a command begins.
    void changed();

private:
    Prompter() = default;
    int waitForPoint(Wants wants, const QString& prompt, MxGePoint3d& point);
    int waitForNumber(Wants wants, const QString& prompt);
    /// A number typed, or what `measure` makes of the vector between two points.
    int getMeasure(Wants wants, const MxGePoint3d* base, const QString& prompt, double& value);
    int wait(Wants wants, const QString& prompt);
    void waitForEvents();
    void takeGiven();
    void finish(int result);
    void take(const QString& line);
    void takePoint(const QString& answer);
    void takeNumber(const QString& answer);
    void takeKeyword(const QString& answer);
    void finishPoint(const MxGePoint3d& point);
    void finishNumber(double number);
    bool takeAsKeyword(const QString& answer, int result);
    void askAgain(const QString& why);

    Wants m_wants = Wants::kNothing;
    int m_control = 0;
    bool m_spaces = false, m_corner = false, m_takesAway = false;
    std::vector<Keyword> m_keywords;
    std::optional<MxGePoint3d> m_base;
    QString m_lastKeyword, m_text, m_typeAhead;
    MxGePoint3d m_point, m_lastPoint;
    double m_number = 0.0;
    bool m_isMeasured = false; ///< a point answered the prompt for a distance or an angle that has no base yet
    int m_result = kInputNormal;
    bool m_answered = false;
    InputSource* m_source = nullptr;
    QEventLoop* m_loop = nullptr;
    Given* m_given = nullptr;
};

} // namespace merix::ed
