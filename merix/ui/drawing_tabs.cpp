// SPDX-License-Identifier: MIT
#include "merix/ui/drawing_tabs.h"

#include "merix/ui/plain_text.h"

#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QSignalBlocker>

namespace merix::ui {

namespace {

constexpr int kAway = 24; ///< so far from the bar a tab is taken off it, pixels

} // namespace

DrawingTabs::DrawingTabs(QWidget* parent)
    : QTabBar(parent) {
    setDocumentMode(true);
    setTabsClosable(true);
    setExpanding(false);
    setDrawBase(false);
    setFocusPolicy(Qt::NoFocus);
    setAccessibleName(tr("Open drawings"));
    connect(this, &QTabBar::currentChanged, this, [this](int index) {
        if (ap::Document* document = documentAt(index))
            Q_EMIT chosen(document);
    });
    connect(this, &QTabBar::tabCloseRequested, this, [this](int index) { Q_EMIT closeWanted(documentAt(index)); });
}

int DrawingTabs::indexOf(const ap::Document* document) const {
    for (int i = 0; i < count(); ++i)
        if (documentAt(i) == document)
            return i;
    return -1;
}

ap::Document* DrawingTabs::documentAt(int index) const {
    return static_cast<ap::Document*>(tabData(index).value<void*>());
}

std::vector<ap::Document*> DrawingTabs::documents() const {
    std::vector<ap::Document*> all;
    for (int i = 0; i < count(); ++i)
        all.push_back(documentAt(i));
    return all;
}

void DrawingTabs::add(ap::Document& document) {
    const QSignalBlocker quiet(this);
    setTabData(addTab(withoutKeys(document.title())), QVariant::fromValue(static_cast<void*>(&document)));
    showTitles();
}

void DrawingTabs::remove(const ap::Document& document) {
    const QSignalBlocker quiet(this);
    removeTab(indexOf(&document));
    showTitles();
}

void DrawingTabs::choose(const ap::Document* document) {
    const QSignalBlocker quiet(this);
    setCurrentIndex(indexOf(document));
}

void DrawingTabs::showTitles() {
    for (int i = 0; i < count(); ++i) {
        const ap::Document* document = documentAt(i);
        const QString title = withoutKeys(document->title());
        setTabText(i, document->isChanged() ? title + QLatin1Char('*') : title);
        setTabToolTip(i, document->path());
    }
    setVisible(count() > 0);
}

// ---------------------------------------------------------------- the hand

bool DrawingTabs::isAway(const QPoint& position) const {
    return !rect().adjusted(-kAway, -kAway, kAway, kAway).contains(position);
}

void DrawingTabs::mousePressEvent(QMouseEvent* event) {
    m_pressed = event->button() == Qt::LeftButton ? documentAt(tabAt(event->pos())) : nullptr;
    QTabBar::mousePressEvent(event);
}

void DrawingTabs::mouseMoveEvent(QMouseEvent* event) {
    if (m_pressed && isAway(event->pos()))
        setCursor(Qt::DragMoveCursor);
    else
        unsetCursor();
    QTabBar::mouseMoveEvent(event);
}

void DrawingTabs::mouseReleaseEvent(QMouseEvent* event) {
    unsetCursor();
    QTabBar::mouseReleaseEvent(event);
    if (const QPointer<ap::Document> document = m_pressed; document && event->button() == Qt::LeftButton) {
        m_pressed.clear();
        if (isAway(event->pos()))
            Q_EMIT draggedOff(document, event->globalPos());
    }
}

void DrawingTabs::contextMenuEvent(QContextMenuEvent* event) {
    if (ap::Document* document = documentAt(tabAt(event->pos())))
        Q_EMIT menuWanted(document, event->globalPos());
}

} // namespace merix::ui
