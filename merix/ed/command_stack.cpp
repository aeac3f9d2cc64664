// SPDX-License-Identifier: MIT
#include "merix/ed/command_stack.h"

#include "merix/ed/editor.h"
#include "merix/ed/prompter.h"
#include "merix/ed/reactor_list.h"
#include "merix/ed/variables.h"
#include "merix/rx/module_loader.h"

#include <QTimer>

#include <dlfcn.h>

namespace merix::ed {

namespace {

/// The loaded file that holds a function. Commands stay registered when their module goes; this tells whether the
/// code is still there.
struct CodeOrigin {
    const void* base = nullptr;
    std::string file;
    bool operator==(const CodeOrigin&) const = default;
};

CodeOrigin originOf(MxEdCommandFunction function) {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<const void*>(function), &info))
        return {};
    return {info.dli_fbase, info.dli_fname ? info.dli_fname : ""};
}

bool same(const std::wstring& a, const QString& b) {
    return QString::fromStdWString(a).compare(b, Qt::CaseInsensitive) == 0;
}

/// The module that is open and holds the code; null for the host's own.
const rx::Module* moduleOf(const CodeOrigin& origin) {
    for (const auto& module : rx::ModuleLoader::instance().modules())
        if (module->library && module->path == origin.file)
            return module.get();
    return nullptr;
}

} // namespace

struct CommandStack::Command final : MxEdCommand {
    std::wstring group, global, local;
    int bits = 0;
    MxEdCommandFunction function = nullptr;
    CodeOrigin origin;
    const rx::Module* module = nullptr; ///< that holds the function
    unsigned load = 0;                  ///< of the module: another one has commands of its own

    /// Whether the function may be called.
    bool isLoaded() const {
        if (module && (!module->entryPoint || module->loads != load))
            return false; // unloaded, though its code may still be mapped
        return originOf(function) == origin;
    }
    const wchar_t* groupName() const override { return group.c_str(); }
    const wchar_t* globalName() const override { return global.c_str(); }
    const wchar_t* localName() const override { return local.c_str(); }
    int flags() const override { return bits; }
};

CommandStack::CommandStack() = default;
CommandStack::~CommandStack() = default;

CommandStack& CommandStack::instance() {
    static CommandStack* const stack = new CommandStack; // never destroyed: modules may still call at the very end
    return *stack;
}

Mx::ErrorStatus CommandStack::addCommand(const wchar_t* group, const wchar_t* globalName, const wchar_t* localName,
                                         int flags, MxEdCommandFunction function, MxEdUIContext*, int, void*,
                                         MxEdCommand** created) {
    if (!group || !globalName || !*globalName || !localName || !*localName || !function)
        return Mx::eInvalidInput;
    const auto command = std::make_shared<Command>();
    command->group = group;
    command->global = globalName;
    command->local = localName;
    command->bits = flags;
    command->function = function;
    command->origin = originOf(function);
    command->module = moduleOf(command->origin);
    command->load = command->module ? command->module->loads : 0;
    if (created)
        *created = command.get();
    for (auto& known : m_commands)
        if (same(known->group, QString::fromWCharArray(group)) &&
            same(known->global, QString::fromWCharArray(globalName))) {
            known = command;
            return Mx::eOk;
        }
    m_commands.push_back(command);
    return Mx::eOk;
}

std::shared_ptr<CommandStack::Command> CommandStack::find(const QString& name, bool global) const {
    for (const auto& command : m_commands)
        if (same(global ? command->global : command->local, name))
            return command;
    return nullptr;
}

QString CommandStack::running() const {
    return m_running ? QString::fromStdWString(m_running->global) : QString();
}

QStringList CommandStack::commands() const {
    QStringList names;
    for (const auto& command : m_commands)
        names << QString::fromStdWString(command->group + L'.' + command->global);
    return names;
}

CommandStack::Outcome CommandStack::runLine(const QString& line) {
    return m_taker && !isRunning() && m_taker->take(line) ? Outcome::kEnded : runCommand(line);
}

CommandStack::Outcome CommandStack::runCommand(const QString& line) {
    QString typed = line.trimmed();
    if (typed.isEmpty())
        typed = m_last;
    if (typed.isEmpty())
        return Outcome::kNothing;
    Console& console = Console::instance();
    console.print(QStringLiteral("\nCommand: ") + typed);
    if (isRunning()) {
        console.print(QStringLiteral("\nThe command %1 is under way.").arg(running()));
        return Outcome::kRefused;
    }
    const int blank = typed.indexOf(QLatin1Char(' '));
    const auto command = resolve(typed.left(blank));
    if (!command)
        return Outcome::kUnknown;
    m_last = typed.left(blank);
    return run(command, blank < 0 ? QString() : typed.mid(blank + 1));
}

std::shared_ptr<CommandStack::Command> CommandStack::resolve(QString name) const {
    Console& console = Console::instance();
    bool global = false;
    while (!name.isEmpty() && QStringLiteral("'._").contains(name[0])) {
        global = global || name[0] == QLatin1Char('_');
        name.remove(0, 1);
    }
    auto command = find(name, global);
    if (!command)
        command = find(m_aliases.value(name.toUpper()), true);
    if (!command) {
        console.print(QStringLiteral("\nUnknown command \"%1\".").arg(name));
        return nullptr;
    }
    if (!command->isLoaded()) {
        console.print(QStringLiteral("\n%1: module not loaded").arg(name));
        return nullptr;
    }
    return command;
}

void CommandStack::addAlias(const QString& alias, const QString& globalName) {
    m_aliases[alias.toUpper()] = globalName;
}

CommandStack::Outcome CommandStack::run(const std::shared_ptr<Command>& command, const QString& answers) {
    const bool scoped = m_scope && !(command->bits & kSessionCommand);
    if (scoped && !m_scope->begin(QString::fromStdWString(command->local)))
        return Outcome::kRefused;
    m_running = command;
    Prompter& prompter = Prompter::instance();
    prompter.beginCommand(answers);
    const Outcome outcome = runBody(*command);
    prompter.endCommand();
    if (scoped)
        m_scope->end(outcome == Outcome::kFailed);
    m_running.reset();
    tellEnd(*command, outcome);
    if (m_scope)
        m_scope->idle();
    return outcome;
}

CommandStack::Outcome CommandStack::runBody(const Command& command) {
    Editor::instance().notifyCommandWillStart(command.global);
    if (!guarded(qPrintable(QString::fromStdWString(command.global)), command.function))
        return Outcome::kFailed;
    return Prompter::instance().wasCancelled() ? Outcome::kCancelled : Outcome::kEnded;
}

void CommandStack::tellEnd(const Command& command, Outcome outcome) {
    Editor& editor = Editor::instance();
    if (outcome == Outcome::kFailed)
        editor.notifyCommandFailed(command.global);
    else if (outcome == Outcome::kCancelled)
        editor.notifyCommandCancelled(command.global);
    else
        editor.notifyCommandEnded(command.global);
}

CommandStack::Outcome CommandStack::runGiven(const QString& name, std::vector<MxEdAnswer> answers) {
    Prompter& prompter = Prompter::instance();
    if (prompter.isWaiting())
        return Outcome::kRefused;
    const bool echo = isCommandEchoOn();
    const Prompter::Given given(std::move(answers), echo);
    if (echo)
        Console::instance().print(QStringLiteral("\nCommand: ") + name);
    const auto command = resolve(name.trimmed());
    if (!command)
        return Outcome::kUnknown;
    if (command->bits & kSessionCommand)
        return Outcome::kRefused;
    if (m_running && (m_running->bits & kSessionCommand))
        return Outcome::kRefused; // there may be no drawing around it, and no undo unit
    if (!isRunning())
        return run(command, {});
    const auto outer = std::exchange(m_running, command);
    prompter.beginCommand({});
    const Outcome outcome = runBody(*command);
    prompter.endCommand();
    m_running = outer;
    tellEnd(*command, outcome);
    return outcome;
}

void CommandStack::submit(const QString& line) {
    Prompter::instance().cancel();
    // The cancelled command unwinds first.
    QTimer::singleShot(0, &Prompter::instance(), [line] { CommandStack::instance().runCommand(line); });
}

} // namespace merix::ed
