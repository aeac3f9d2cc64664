// SPDX-License-Identifier: MIT
// The command line: what was said, the prompt with its keywords as links, and the entry.
#pragma once

#include <QStringList>
#include <QWidget>

class QKeyEvent;
class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace merix::ui {

class CommandLine : public QWidget {
    Q_OBJECT
public:
    explicit CommandLine(QWidget* parent = nullptr);

    QLineEdit* entry() const { return m_entry; }
    /// Takes a key that was pressed elsewhere in the window as if it had been typed into the entry.
    void type(QKeyEvent* event);

    bool eventFilter(QObject* watched, QEvent* event) override;
    QSize sizeHint() const override;

Q_SIGNALS:
    /// Esc, and no prompt waited for it.
    void escaped();

private:
    bool handleKey(QKeyEvent* event);
    static bool isEditing(const QKeyEvent& event);
    bool isForDrawing(const QKeyEvent& event) const;
    bool isShortcut(const QKeyEvent& event) const;
    void completeName();
    bool focusKeyword();
    void emptyEntry();
    void submit();
    void submitLine(const QString& line);
    void recall(int step);
    void escape();
    void showPrompt();

    QPlainTextEdit* m_history;
    QLabel* m_prompt;
    QLineEdit* m_entry;
    QStringList m_typed;
    int m_recalled = 0;
};

} // namespace merix::ui
