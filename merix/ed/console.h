// SPDX-License-Identifier: MIT
// The command line as data: history, the prompt in force and its keywords. The window shows it; scripts read it.
#pragma once

#include "merix/ed/keywords.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <vector>

namespace merix::ed {

class Console : public QObject {
    Q_OBJECT
public:
    static Console& instance();

    /// Adds text to the history. As in printf-style host output "\n" begins a new line, and text before the first
    /// "\n" goes on the last line.
    void print(const QString& text);
    const QStringList& history() const { return m_history; }
    /// History text since the last call of markRead (what `@expect` looks at).
    QString unread() const;
    void markRead();

    /// A leading "\n" of the prompt is dropped.
    void setPrompt(const QString& prompt, const std::vector<Keyword>& keywords);
    const QString& prompt() const { return m_prompt; }
    const std::vector<Keyword>& keywords() const { return m_keywords; }

Q_SIGNALS:
    /// A new line of the history.
    void printed(const QString& line);
    /// Text was added to the end of the last line.
    void continued(const QString& text);
    void promptChanged();

private:
    Console() = default;

    QStringList m_history;
    int m_readLines = 0;  ///< lines before the mark
    int m_readLength = 0; ///< characters of the last of them before the mark
    QString m_prompt;
    std::vector<Keyword> m_keywords;
};

} // namespace merix::ed
