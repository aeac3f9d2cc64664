// SPDX-License-Identifier: MIT
#include "merix/ap/recover_command.h"

#include "merix/ap/autosave.h"
#include "merix/ap/drawing_difference.h"
#include "merix/db/database_imp.h"
#include "merix/ed/prompter.h"
#include "merix/ed/view_commands.h"
#include "merix/io/drawing_file.h"

#include <QFileInfo>

namespace merix::ap {

namespace {

void tell(const QString& text) {
    ed::Console::instance().print(QLatin1Char('\n') + text);
}

bool read(const QString& path, MxDbDatabase& database) {
    const db::WorkingDatabaseScope scope(&database);
    return bool(io::readDrawing(path.toStdString(), database));
}

void recoverOne(const Recovery& recovery) {
    const Result result = Autosave::instance().recover(recovery);
    tell(result.ok ? QStringLiteral("Recovered %1").arg(recovery.title) : result.message);
}

void discardOne(const Recovery& recovery) {
    if (const Result result = Autosave::instance().discard(recovery); !result.ok)
        tell(result.message);
}

/// All the copies, or the one whose number was given; none for anything else.
std::vector<Recovery> chosen(const std::vector<Recovery>& all, const QString& answer) {
    if (answer.compare(QLatin1String("All"), Qt::CaseInsensitive) == 0)
        return all;
    bool isNumber = false;
    const int number = answer.toInt(&isNumber);
    if (isNumber && number >= 1 && number <= int(all.size()))
        return {all[std::size_t(number - 1)]};
    tell(QStringLiteral("There is no copy %1.").arg(answer));
    return {};
}

void recover() {
    const std::vector<Recovery> all = Autosave::instance().offer();
    if (all.empty()) {
        tell(QStringLiteral("Nothing was left behind."));
        return;
    }
    for (std::size_t i = 0; i < all.size(); ++i)
        tell(QStringLiteral("%1  %2").arg(i + 1).arg(describe(all[i])));
    ed::Prompter& prompter = ed::Prompter::instance();
    prompter.init(0, QStringLiteral("Recover Discard"));
    QString what, which;
    if (prompter.getKeyword(QStringLiteral("[Recover/Discard] <leave them>: "), what) != kInputNormal ||
        prompter.getString(false, QStringLiteral("Which (a number or All): "), which) != kInputNormal)
        return;
    for (const Recovery& recovery : chosen(all, which)) {
        if (what == QLatin1String("Recover"))
            recoverOne(recovery);
        else
            discardOne(recovery);
    }
}

void autosave() {
    const QStringList written = Autosave::instance().saveNow();
    if (written.isEmpty())
        tell(QStringLiteral("No drawing has changes that a file does not hold."));
    for (const QString& path : written)
        tell(QStringLiteral("Copied to %1").arg(path));
}

} // namespace

QString describe(const Recovery& recovery) {
    const QString name = recovery.drawing.isEmpty() ? recovery.title : recovery.drawing;
    const QString head = name + recovery.made.toString(QStringLiteral(", yyyy-MM-dd HH:mm: "));
    MxDbDatabase before, after;
    if (!read(recovery.copy, after))
        return head + QStringLiteral("the copy cannot be read");
    if (!recovery.drawing.isEmpty() && QFileInfo::exists(recovery.drawing)) {
        if (!read(recovery.drawing, before))
            return head + QStringLiteral("the drawing itself cannot be read");
    } else {
        before.imp().createDefaults();
    }
    return head + compareDrawings(before, after).text();
}

void registerRecoverCommands(ed::CommandStack& stack) {
    stack.addCommand(ed::kHostGroup, L"RECOVER", L"RECOVER", ed::kSessionCommand, recover);
    stack.addCommand(ed::kHostGroup, L"AUTOSAVE", L"AUTOSAVE", ed::kSessionCommand, autosave);
}

} // namespace merix::ap
