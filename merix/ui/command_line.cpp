// SPDX-License-Identifier: MIT
#include "merix/ui/command_line.h"

#include "merix/ed/command_stack.h"
#include "merix/ed/prompter.h"
#include "merix/ui/look.h"

#include <QAction>
#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTimer>

namespace merix::ui {

namespace {

constexpr int kRecallable = 200;

/// The prompt as rich text, each keyword a link that stands where the prompt names it, else at its end.
QString promptHtml(const QString& prompt, const std::vector<ed::Keyword>& keywords) {
    QString html = prompt.toHtmlEscaped();
    QString rest;
    for (const ed::Keyword& keyword : keywords) {
        const QString word = keyword.local.toHtmlEscaped();
        const QString link = QStringLiteral("<a href=\"%1\">%1</a>").arg(word);
        // Not inside a link that was set for another keyword.
        const QRegularExpression place(
            QStringLiteral("\\b%1\\b(?![^<]*</a>)(?![^<>]*\")").arg(QRegularExpression::escape(word)),
            QRegularExpression::CaseInsensitiveOption);
        if (const auto match = place.match(html); match.hasMatch())
            html.replace(match.capturedStart(), match.capturedLength(), link);
        else
            rest += QLatin1Char(' ') + link;
    }
    return html.trimmed() + rest;
}

} // namespace

CommandLine::CommandLine(QWidget* parent)
    : QWidget(parent)
    , m_history(new QPlainTextEdit)
    , m_prompt(new QLabel)
    , m_entry(new QLineEdit) {
    const QFont fixed = fixedFont();
    m_history->setReadOnly(true);
    m_history->setUndoRedoEnabled(false);
    m_history->setMaximumBlockCount(20000);
    m_history->setFont(fixed);
    m_history->setFrameShape(QFrame::NoFrame);
    m_history->setAccessibleName(tr("Command history"));
    m_history->setPlainText(ed::Console::instance().history().join(QLatin1Char('\n')));
    m_prompt->setFont(fixed);
    m_prompt->setTextFormat(Qt::RichText);
    m_prompt->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    m_prompt->setFocusPolicy(Qt::TabFocus); // a click leaves the keyboard with the entry
    m_prompt->setAccessibleName(tr("Prompt"));
    m_entry->setFont(fixed);
    m_entry->setFrame(false);
    m_entry->setObjectName(QStringLiteral("commandEntry"));
    m_entry->setAccessibleName(tr("Command line"));
    m_entry->installEventFilter(this);
    m_history->installEventFilter(this);

    auto* line = new QWidget;
    line->setAutoFillBackground(true);
    line->setBackgroundRole(QPalette::AlternateBase);
    m_entry->setAutoFillBackground(true);
    auto* row = new QHBoxLayout(line);
    row->setContentsMargins(8, 4, 8, 4);
    row->setSpacing(6);
    row->addWidget(m_prompt);
    row->addWidget(m_entry, 1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_history, 1);
    column->addWidget(line);

    auto& console = ed::Console::instance();
    connect(&console, &ed::Console::printed, m_history, &QPlainTextEdit::appendPlainText);
    connect(&console, &ed::Console::continued, this, [this](const QString& text) {
        m_history->moveCursor(QTextCursor::End);
        m_history->insertPlainText(text);
    });
    connect(&console, &ed::Console::promptChanged, this, &CommandLine::showPrompt);
    connect(m_prompt, &QLabel::linkActivated, this, [this](const QString& keyword) {
        emptyEntry();
        m_entry->setFocus();
        submitLine(keyword);
    });
    showPrompt();
}

QSize CommandLine::sizeHint() const {
    const int line = QFontMetrics(m_history->font()).lineSpacing();
    return {640, 4 * line + m_entry->sizeHint().height() + 24};
}

void CommandLine::showPrompt() {
    const auto& console = ed::Console::instance();
    m_prompt->setText(console.prompt().isEmpty() ? tr("Command:") : promptHtml(console.prompt(), console.keywords()));
    m_prompt->parentWidget()->layout()->activate(); // the entry makes room at once
    m_history->verticalScrollBar()->setValue(m_history->verticalScrollBar()->maximum());
}

void CommandLine::type(QKeyEvent* event) {
    m_entry->setFocus();
    // To the entry and no further: its parents would bring a key that it has no use for back here, without end.
    if (!handleKey(event))
        m_entry->event(event);
}

bool CommandLine::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_entry && event->type() == QEvent::KeyPress)
        return handleKey(static_cast<QKeyEvent*>(event));
    if (event->type() != QEvent::ShortcutOverride)
        return QWidget::eventFilter(watched, event);
    const auto& key = *static_cast<QKeyEvent*>(event);
    if (watched == m_history) {
        event->setAccepted(key.matches(QKeySequence::Copy) && m_history->textCursor().hasSelection());
        return true;
    }
    if (watched == m_entry && (isForDrawing(key) || (isShortcut(key) && !isEditing(key)))) {
        event->ignore(); // the menu's shortcut gets it
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

/// Keys of the menus that also edit what is typed.
bool CommandLine::isEditing(const QKeyEvent& event) {
    return event.matches(QKeySequence::Delete) || event.matches(QKeySequence::SelectAll) ||
           event.matches(QKeySequence::Copy) || event.matches(QKeySequence::Cut) ||
           event.matches(QKeySequence::Paste) || event.matches(QKeySequence::Undo) || event.matches(QKeySequence::Redo);
}

/// Editing keys are the entry's only while something stands in it; else they mean the drawing.
bool CommandLine::isForDrawing(const QKeyEvent& event) const {
    if (!m_entry->text().isEmpty())
        return false;
    if (event.matches(QKeySequence::Paste)) // into an answer
        return !ed::Prompter::instance().isWaiting();
    return isEditing(event);
}

/// A menu has the key: lines of text have a meaning for many more than typing needs (Ctrl+E goes to their end).
bool CommandLine::isShortcut(const QKeyEvent& event) const {
    const QKeySequence key(int(event.modifiers() & ~Qt::KeypadModifier) | event.key());
    const QList<QAction*> actions = window()->findChildren<QAction*>();
    return std::any_of(actions.begin(), actions.end(),
                       [&](const QAction* action) { return action->shortcuts().contains(key); });
}

/// The rest of a command's name that has begun to be typed as far as all that fit agree.
void CommandLine::completeName() {
    const QString typed = m_entry->text();
    QString common;
    for (const QString& command : ed::CommandStack::instance().commands()) {
        const QString name = command.section(QLatin1Char('.'), -1);
        if (!name.startsWith(typed, Qt::CaseInsensitive))
            continue;
        if (common.isEmpty())
            common = name;
        while (!name.startsWith(common, Qt::CaseInsensitive))
            common.chop(1);
    }
    if (common.size() > typed.size())
        m_entry->setText(common);
}

/// The keyboard goes to the first keyword of the prompt; false when it has none.
bool CommandLine::focusKeyword() {
    if (ed::Console::instance().keywords().empty())
        return false;
    m_prompt->setFocus(Qt::TabFocusReason);
    QKeyEvent next(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier); // onto the first link of the text
    QApplication::sendEvent(m_prompt, &next);
    return true;
}

bool CommandLine::handleKey(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        submit();
        return true;
    case Qt::Key_Space:
        // A blank ends an answer as Enter does, but for texts.
        if (ed::Prompter::instance().wants() == ed::Prompter::Wants::kString ||
            m_entry->text().startsWith(QLatin1Char('(')))
            return false;
        submit();
        return true;
    case Qt::Key_Escape:
        escape();
        return true;
    case Qt::Key_Tab:
        if (ed::Prompter::instance().isWaiting())
            return focusKeyword();
        if (m_entry->text().isEmpty())
            return false;
        completeName();
        return true;
    case Qt::Key_Up:
        recall(-1);
        return true;
    case Qt::Key_Down:
        recall(1);
        return true;
    default:
        return false;
    }
}

/// Not by clear(): what was typed could be undone into the next line.
void CommandLine::emptyEntry() {
    m_entry->setText({});
}

void CommandLine::submit() {
    const QString line = m_entry->text();
    emptyEntry();
    if (!line.trimmed().isEmpty() && (m_typed.isEmpty() || m_typed.last() != line)) {
        m_typed.append(line);
        if (m_typed.size() > kRecallable)
            m_typed.removeFirst();
    }
    m_recalled = m_typed.size();
    submitLine(line);
}

void CommandLine::submitLine(const QString& line) {
    if (ed::Prompter::instance().isWaiting()) {
        ed::Prompter::instance().submitLine(line);
        return;
    }
    // A command runs until it is over: not inside the delivery of the key that called it.
    QTimer::singleShot(0, this, [line] { ed::Prompter::instance().submitLine(line); });
}

void CommandLine::recall(int step) {
    m_recalled = std::clamp<int>(m_recalled + step, 0, m_typed.size());
    m_entry->setText(m_recalled < m_typed.size() ? m_typed[m_recalled] : QString());
}

void CommandLine::escape() {
    const bool typed = !m_entry->text().isEmpty();
    emptyEntry();
    m_recalled = m_typed.size();
    if (ed::Prompter::instance().isWaiting())
        ed::Prompter::instance().cancel();
    else
        Q_EMIT escaped();
    if (typed && !ed::Prompter::instance().isWaiting())
        ed::Console::instance().print(QStringLiteral("\n") + tr("*Cancel*"));
}

} // namespace merix::ui
