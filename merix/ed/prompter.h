// SPDX-License-Identifier: MIT
// The prompt in force: a command waits in it, the window, the command line or a script answer it.
#pragma once

#include "host/ed/input.h"
#include "merix/ed/console.h"

#include <functional>
#include <optional>

namespace merix::ed {

/// Something that can give the next input when a prompt (or the idle command line) waits: a script. The return value
/// is false when it has no more.
class InputSource {
public:
    virtual ~InputSource() = default;
    virtual bool feed() = 0;
};

class Prompter : public QObject {
    Q_OBJECT
public:
    enum class Wants { kNothing, kPoint, kKeyword, kString };
    static Prompter& instance();

    Wants wants() const { return m_wants; }
    bool isWaiting() const { return m_wants != Wants::kNothing; }
    /// The start of the rubber band of the point prompt in force.
    const std::optional<MxGePoint3d>& base() const { return m_base; }

    /// Answers, from the window or a script. A line typed while nothing waits is a command (CommandStack::run).
    void submitLine(const QString& line);
    void submitPoint(const MxGePoint3d& world);
    void cancel(); ///< Esc

    void setSource(InputSource* source) { m_source = source; }

    // Used by the mxed… operations.
    void init(int control, const QString& keywords);
    int getPoint(const MxGePoint3d* base, const QString& prompt, MxGePoint3d& point);
    int getKeyword(const QString& prompt, QString& keyword);
    int getString(bool spaces, const QString& prompt, QString& text);
    const QString& lastKeyword() const { return m_lastKeyword; }

Q_SIGNALS:
    void changed();

private:
    int wait(Wants wants, const QString& prompt);

    Wants m_wants = Wants::kNothing;
    int m_control = 0;
    std::vector<Keyword> m_keywords;
    std::optional<MxGePoint3d> m_base;
    QString m_lastKeyword, m_text;
    MxGePoint3d m_point;
    int m_result = 0;
    bool m_answered = false;
    InputSource* m_source = nullptr;
};

} // namespace merix::ed
