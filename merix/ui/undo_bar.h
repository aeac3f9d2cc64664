// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ap/document_imp.h"

#include <QFrame>
#include <QLabel>
#include <QPointer>
#include <QTimer>

class QPushButton;

namespace merix::ui {

/// A line that is cut off with an ellipsis where there is no room for it, and asks for no room.
class ElidedLabel : public QLabel {
public:
    using QLabel::QLabel;
    QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }

protected:
    void paintEvent(QPaintEvent* event) override;
};

/// Says in the status bar what was done and offers to take it back: for a while, and as long as it is the drawing's
/// newest step. It neither takes the keyboard nor moves anything; Ctrl+Z does what its button does.
class UndoBar : public QFrame {
    Q_OBJECT
public:
    static constexpr int kOfferedFor = 10'000; ///< milliseconds

    explicit UndoBar(QWidget* parent = nullptr);

    /// Offers to take back what the event under way does in the active drawing, whose unit may still be open and which
    /// may still be changing. The offer before goes. Nothing is offered when there is nothing to take back.
    void offer(ap::Document& document, const QString& text);
    void withdraw();
    /// The drawing whose newest step is the one offered; null when that step is not the newest any more.
    ap::Document* offered() const;

Q_SIGNALS:
    void undoWanted();
    /// It went while it had the keyboard.
    void keyboardLeft();

private:
    void settle();
    void check();

    ElidedLabel* m_text;
    QPushButton* m_button;
    QPointer<ap::Document> m_document;
    std::size_t m_steps = 0; ///< of the drawing, the one offered the newest
    quint64 m_changes = 0;   ///< of the drawing when the event that made the step was over
    QTimer m_settling, m_end;
};

} // namespace merix::ui
