// SPDX-License-Identifier: MIT
#include "merix/ed/keywords.h"

namespace merix::ed {

std::vector<Keyword> parseKeywords(const QString& list) {
    QStringList words = list.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QStringList globals;
    if (const int divide = words.indexOf(QStringLiteral("_")); divide >= 0) {
        globals = words.mid(divide + 1);
        words = words.mid(0, divide);
    }
    std::vector<Keyword> keywords;
    for (int i = 0; i < words.size(); ++i)
        keywords.push_back({i < globals.size() ? globals[i] : words[i], words[i]});
    return keywords;
}

KeywordMatch matchKeyword(const std::vector<Keyword>& keywords, const QString& answer) {
    const bool global = answer.startsWith(QLatin1Char('_'));
    const QString typed = global ? answer.mid(1) : answer;
    KeywordMatch match;
    if (typed.isEmpty())
        return match;
    const Keyword* found = nullptr;
    for (const Keyword& keyword : keywords) {
        const QString& form = global ? keyword.global : keyword.local;
        if (!form.startsWith(typed, Qt::CaseInsensitive))
            continue;
        if (form.size() == typed.size())
            return {&keyword, {}};
        found = &keyword;
        match.candidates << keyword.local;
    }
    if (match.candidates.size() == 1) {
        match.keyword = found;
        match.candidates.clear();
    }
    return match;
}

} // namespace merix::ed
