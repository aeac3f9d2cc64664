// SPDX-License-Identifier: MIT
#include "merix/app/module_commands.h"

#include "merix/ap/ask_path.h"
#include "merix/ed/prompter.h"
#include "merix/ed/view_commands.h"
#include "merix/rx/module_loader.h"

#include <QFileInfo>

namespace merix::app {

namespace {

void tell(const QString& text) {
    ed::Console::instance().print(QLatin1Char('\n') + text);
}

QString fileName(const rx::Module& module) {
    return QFileInfo(QString::fromStdString(module.path)).fileName();
}

QString stateText(rx::ModuleState state) {
    switch (state) {
    case rx::ModuleState::kLoaded:
        return QStringLiteral("loaded");
    case rx::ModuleState::kUnloaded:
        return QStringLiteral("not loaded");
    case rx::ModuleState::kFailed:
        break;
    }
    return QStringLiteral("failed");
}

void list() {
    const auto& modules = rx::ModuleLoader::instance().modules();
    if (modules.empty())
        tell(QStringLiteral("No module was asked for."));
    for (const auto& module : modules) {
        QString line = QStringLiteral("%1: %2, host API %3, %4")
                           .arg(fileName(*module), stateText(module->state),
                                module->apiVersion ? QString::fromStdString(rx::versionText(module->apiVersion))
                                                   : QStringLiteral("unknown"),
                                QString::fromStdString(module->path));
        if (!module->error.empty())
            line += QStringLiteral(" (%1)").arg(QString::fromStdString(module->error));
        tell(line);
    }
}

QString ask(const QString& prompt) {
    QString answer;
    return ed::Prompter::instance().getString(true, prompt, answer) == kInputNormal ? answer : QString();
}

void load() {
    const QString path = ap::askPath(QStringLiteral("Module file to load: "));
    if (path.isEmpty())
        return;
    const rx::ModuleResult result = rx::ModuleLoader::instance().load(path.toStdString());
    tell(result ? QStringLiteral("Loaded %1").arg(fileName(*result.module)) : QString::fromStdString(result.error));
}

/// By file name, with or without "lib" and suffix, case ignored; the one last loaded.
rx::Module* find(const QString& name) {
    rx::Module* found = nullptr;
    for (const auto& module : rx::ModuleLoader::instance().modules()) {
        const QString file = fileName(*module), base = QFileInfo(file).completeBaseName();
        for (const QString& form : {file, base, base.startsWith(QLatin1String("lib")) ? base.mid(3) : base})
            if (form.compare(name, Qt::CaseInsensitive) == 0)
                found = module.get();
    }
    return found;
}

void unload() {
    const QString name = ask(QStringLiteral("Module to unload: "));
    if (name.isEmpty())
        return;
    rx::Module* module = find(name);
    if (!module) {
        tell(QStringLiteral("There is no module \"%1\"; MODULES lists them.").arg(name));
        return;
    }
    const rx::ModuleResult result = rx::ModuleLoader::instance().unload(*module);
    tell(result ? QStringLiteral("Unloaded %1").arg(fileName(*module)) : QString::fromStdString(result.error));
}

} // namespace

void registerModuleCommands(ed::CommandStack& stack) {
    const auto add = [&](const wchar_t* name, MxEdCommandFunction function) {
        stack.addCommand(ed::kHostGroup, name, name, ed::kSessionCommand, function);
    };
    add(L"MODULES", list);
    add(L"MODLOAD", load);
    add(L"MODUNLOAD", unload);
}

} // namespace merix::app
