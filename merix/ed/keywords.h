// SPDX-License-Identifier: MIT
// Keywords of a prompt: the local form is what the user reads and types, the global form what the command gets.
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace merix::ed {

struct Keyword {
    QString global, local;
};

/// Reads a keyword list: the local forms separated by blanks, then "_" and the global forms in the same order. Without
/// "_", or where a global form is missing, both forms are the same.
std::vector<Keyword> parseKeywords(const QString& list);

struct KeywordMatch {
    const Keyword* keyword = nullptr; ///< null when nothing, or more than one thing, was meant
    QStringList candidates;           ///< the local forms when the answer fits several
};

/// What `answer` stands for: a whole local form or a beginning that only one local form has; after "_" the same with
/// the global forms. Case is ignored.
KeywordMatch matchKeyword(const std::vector<Keyword>& keywords, const QString& answer);

} // namespace merix::ed
