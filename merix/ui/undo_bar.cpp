// SPDX-License-Identifier: MIT
#include "merix/ui/undo_bar.h"

#include "merix/db/database_imp.h"
#include "merix/ui/look.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>

namespace merix::ui {

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(contentsRect(), Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width()));
}

UndoBar::UndoBar(QWidget* parent)
    : QFrame(parent)
    , m_text(new ElidedLabel)
    , m_button(new QPushButton(tr("Undo"))) {
    setObjectName(QStringLiteral("undoBar"));
    QPalette colors = palette();
    colors.setColor(QPalette::Window, kOffer);
    colors.setColor(QPalette::WindowText, kOfferText);
    setPalette(colors);
    setAutoFillBackground(true);
    m_text->setTextFormat(Qt::PlainText);
    m_button->setObjectName(QStringLiteral("undoBarButton"));
    m_button->setAutoDefault(false);
    m_button->setFocusPolicy(Qt::TabFocus); // a click must not take the keyboard from the command line
    m_button->setToolTip(tr("Ctrl+Z does the same"));
    auto* line = new QHBoxLayout(this);
    line->setContentsMargins(8, 0, 0, 0);
    line->setSpacing(8);
    line->addWidget(m_text);
    line->addWidget(m_button);
    hide();
    m_settling.setSingleShot(true);
    m_end.setSingleShot(true);
    m_end.setObjectName(QStringLiteral("undoBarEnd"));
    m_end.setParent(this);
    connect(&m_settling, &QTimer::timeout, this, &UndoBar::settle);
    connect(&m_end, &QTimer::timeout, this, &UndoBar::withdraw);
    connect(m_button, &QPushButton::clicked, this, &UndoBar::undoWanted);
    const auto& manager = ap::DocManager::instance();
    connect(&manager, &ap::DocManager::documentActivated, this, [this](const ap::Document* document) {
        if (document != m_document)
            withdraw();
    });
    connect(&manager, &ap::DocManager::documentClosing, this, [this](const ap::Document* document) {
        if (document == m_document)
            withdraw();
    });
}

void UndoBar::offer(ap::Document& document, const QString& text) {
    const db::UndoRecorder& undo = document.database()->imp().undo;
    if (!undo.isOpen() && !undo.canUndo())
        return;
    if (m_document)
        m_document->disconnect(this);
    m_document = &document;
    m_steps = undo.undoUnits().size() + (undo.isOpen() ? 1 : 0);
    connect(&document, &ap::Document::graphicsChanged, this, &UndoBar::check);
    m_settling.start(0);
    m_end.start(kOfferedFor);
    m_text->setText(text.simplified());
    m_text->setToolTip(text);
    setAccessibleName(text);
    m_button->setAccessibleName(tr("Undo: %1").arg(text));
    show();
    QAccessibleEvent told(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&told);
}

void UndoBar::withdraw() {
    if (m_document)
        m_document->disconnect(this);
    m_document.clear();
    m_settling.stop();
    m_end.stop();
    const bool hadKeyboard = m_button->hasFocus();
    hide();
    if (hadKeyboard)
        Q_EMIT keyboardLeft();
}

void UndoBar::settle() {
    if (m_document)
        m_changes = m_document->changes();
    check();
}

void UndoBar::check() {
    if (!m_settling.isActive() && !offered())
        withdraw();
}

ap::Document* UndoBar::offered() const {
    if (!m_document)
        return nullptr;
    const db::UndoRecorder& undo = m_document->database()->imp().undo;
    // What is open is this step itself, or another that has changed nothing yet.
    const bool isThere = undo.isOpen() || undo.undoUnits().size() == m_steps;
    return isThere && (m_settling.isActive() || m_document->changes() == m_changes) ? m_document : nullptr;
}

} // namespace merix::ui
