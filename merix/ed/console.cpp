// SPDX-License-Identifier: MIT
#include "merix/ed/console.h"

namespace merix::ed {

namespace {
/// The history is for reading back, not an archive: the oldest lines go when it grows past this.
constexpr int kMaxLines = 20000;
} // namespace

Console& Console::instance() {
    static Console* const console = new Console; // never destroyed: modules may still call at the very end
    return *console;
}

void Console::print(const QString& text) {
    QStringList lines = text.split(QLatin1Char('\n'));
    if (const QString first = lines.takeFirst(); !first.isEmpty()) {
        if (m_history.isEmpty()) {
            lines.prepend(first);
        } else {
            m_history.last() += first;
            Q_EMIT continued(first);
        }
    }
    for (const QString& line : qAsConst(lines)) {
        m_history.append(line);
        Q_EMIT printed(line);
    }
    if (const int extra = m_history.size() - kMaxLines; extra > 0) {
        m_history.erase(m_history.begin(), m_history.begin() + extra);
        if (m_readLines <= extra)
            m_readLength = 0;
        m_readLines = std::max(0, m_readLines - extra);
    }
}

QString Console::unread() const {
    QStringList lines = m_history.mid(std::max(0, m_readLines - 1));
    if (lines.isEmpty())
        return {};
    if (m_readLines > 0)
        lines.first().remove(0, m_readLength);
    else
        lines.prepend(QString()); // the very first line begins with a line feed as every other does
    return lines.join(QLatin1Char('\n'));
}

void Console::markRead() {
    m_readLines = m_history.size();
    m_readLength = m_history.isEmpty() ? 0 : m_history.last().size();
}

void Console::setPrompt(const QString& prompt, const std::vector<Keyword>& keywords) {
    m_prompt = prompt.startsWith(QLatin1Char('\n')) ? prompt.mid(1) : prompt;
    m_keywords = keywords;
    Q_EMIT promptChanged();
}

} // namespace merix::ed
