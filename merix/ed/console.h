// SPDX-License-Identifier: MIT
// The command line as data: history, the prompt in force and its keywords. The window shows it; scripts read it.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <vector>

namespace merix::ed {

struct Keyword {
    QString global, local;
};

class Console : public QObject {
    Q_OBJECT
public:
    static Console& instance();

    /// Adds text to the history; a leading "\n" begins a new line, as in printf-style host output.
    void print(const QString& text);
    const QStringList& history() const { return m_history; }
    /// History text since the last call of markRead (what `@expect` looks at).
    QString unread() const;
    void markRead();

    void setPrompt(const QString& prompt, const std::vector<Keyword>& keywords);
    const QString& prompt() const { return m_prompt; }
    const std::vector<Keyword>& keywords() const { return m_keywords; }

Q_SIGNALS:
    void printed(const QString& line);
    void promptChanged();

private:
    QStringList m_history;
    qsizetype m_read = 0;
    QString m_prompt;
    std::vector<Keyword> m_keywords;
};

} // namespace merix::ed
