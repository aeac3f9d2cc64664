// SPDX-License-Identifier: MIT
// The registered commands and the one that runs. Main thread only.
#pragma once

#include "host/ed/commands.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace merix::ed {

/// A command with this flag works on the set of open drawings or on undo itself: it runs without a drawing and outside
/// any undo unit. Host commands only.
constexpr int kSessionCommand = 1 << 24;

/// What surrounds a command that changes the drawing: the floor of documents makes one undo unit of it.
class CommandScope {
public:
    virtual ~CommandScope() = default;
    /// False, after telling why, when the command cannot run (there is no drawing).
    virtual bool begin(const QString& localName) = 0;
    /// `failed`: the command threw, what it did is taken back.
    virtual void end(bool failed) = 0;
    /// Every command, session ones too, is over and told of.
    virtual void idle() = 0;
};

/// What is under way in the window while no command runs and may be answered by typing: grips on their way.
class LineTaker {
public:
    virtual ~LineTaker() = default;
    /// False when the line is none of its answers: it is a command then.
    virtual bool take(const QString& line) = 0;
};

class CommandStack : public MxEdCommandStack {
public:
    enum class Outcome {
        kNothing, ///< an empty line with nothing to repeat
        kEnded,
        kCancelled,
        kFailed,  ///< the command threw
        kUnknown, ///< there is no such command, or its module is gone
        kRefused, ///< another command is under way, or there is no drawing
    };
    static CommandStack& instance();
    ~CommandStack() override;

    Mx::ErrorStatus addCommand(const wchar_t* group, const wchar_t* globalName, const wchar_t* localName, int flags,
                               MxEdCommandFunction function, MxEdUIContext* contextMenu = nullptr,
                               int functionCode = -1, void* resourceHandle = nullptr,
                               MxEdCommand** created = nullptr) override;

    /// Runs what was typed while nothing waits: a command, local or with a leading `_` global name, further words being
    /// its first answers; an empty line repeats the last command. `'` and `.` before a name are passed over. Returns
    /// when the command is over. A line that the taker takes is no command.
    Outcome runLine(const QString& line);
    /// Runs a command by name with these answers, inside the command under way as part of it. Nothing is shown of it
    /// while the variable CMDECHO is 0. kRefused for session commands, inside one, and while a prompt
    /// waits.
    Outcome runGiven(const QString& name, std::vector<MxEdAnswer> answers);
    /// For menus and keys: cancels the prompt under way and runs the line as soon as nothing runs.
    void submit(const QString& line);

    bool isRunning() const { return m_running != nullptr; }
    /// Global name of the command under way, empty when none is.
    QString running() const;
    /// "GROUP.GLOBAL" of every command in the order of registration.
    QStringList commands() const;

    /// A short name that the user may type for a host command; the name of a command comes before it. A second one of
    /// the same name replaces the first.
    void addAlias(const QString& alias, const QString& globalName);
    /// Upper-case alias to global name.
    const QMap<QString, QString>& aliases() const { return m_aliases; }

    /// Null: typed lines are commands. Not owned.
    void setLineTaker(LineTaker* taker) { m_taker = taker; }
    LineTaker* lineTaker() const { return m_taker; }

    /// Null: commands run without undo. Not owned.
    void setScope(CommandScope* scope) { m_scope = scope; }
    CommandScope* scope() const { return m_scope; }

private:
    struct Command;
    CommandStack();
    Outcome runCommand(const QString& line);
    std::shared_ptr<Command> find(const QString& name, bool global) const;
    /// What was typed stands for; null after the console was told why.
    std::shared_ptr<Command> resolve(QString name) const;
    Outcome run(const std::shared_ptr<Command>& command, const QString& answers);
    /// The command itself between its events.
    Outcome runBody(const Command& command);
    static void tellEnd(const Command& command, Outcome outcome);

    std::vector<std::shared_ptr<Command>> m_commands;
    std::shared_ptr<Command> m_running;
    QMap<QString, QString> m_aliases;
    QString m_last;
    CommandScope* m_scope = nullptr;
    LineTaker* m_taker = nullptr;
};

} // namespace merix::ed
