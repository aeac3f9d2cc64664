// SPDX-License-Identifier: MIT
#include "merix/ap/ask_path.h"

#include "merix/ed/prompter.h"

#include <QDir>
#include <QFileInfo>

namespace merix::ap {

QString askPath(const QString& prompt) {
    QString path;
    if (ed::Prompter::instance().getString(true, prompt, path) != kInputNormal)
        return {};
    if (path.size() >= 2 && path.startsWith(QLatin1Char('"')) && path.endsWith(QLatin1Char('"')))
        path = path.mid(1, path.size() - 2);
    if (path.startsWith(QLatin1String("~/")))
        path = QDir::homePath() + path.mid(1);
    return path;
}

bool mayReplace(const QString& path) {
    if (!QFileInfo::exists(path))
        return true;
    ed::Prompter& prompter = ed::Prompter::instance();
    prompter.init(0, QStringLiteral("Yes No"));
    QString answer = QStringLiteral("No");
    prompter.getKeyword(QStringLiteral("%1 exists. Replace it? [Yes/No] <No>: ").arg(path), answer);
    return answer == QLatin1String("Yes");
}

} // namespace merix::ap
