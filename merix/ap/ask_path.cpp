// SPDX-License-Identifier: MIT
#include "merix/ap/ask_path.h"

#include "merix/ed/prompter.h"

#include <QDir>

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

} // namespace merix::ap
