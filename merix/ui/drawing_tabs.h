// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ap/document_imp.h"

#include <QPointer>
#include <QTabBar>

namespace merix::ui {

/// The tabs of the drawings in one window. A tab can be dragged off the bar. Adding, removing and choosing by these
/// functions is quiet: only the user's hand makes signals.
class DrawingTabs : public QTabBar {
    Q_OBJECT
public:
    explicit DrawingTabs(QWidget* parent = nullptr);

    /// -1 when the drawing has no tab here.
    int indexOf(const ap::Document* document) const;
    /// Null for no tab.
    ap::Document* documentAt(int index) const;
    std::vector<ap::Document*> documents() const;
    void add(ap::Document& document);
    void remove(const ap::Document& document);
    void choose(const ap::Document* document);
    /// Titles, paths and marks of change as they are now.
    void showTitles();

Q_SIGNALS:
    void chosen(merix::ap::Document* document);
    void closeWanted(merix::ap::Document* document);
    /// The tab was let go at `where`, screen coordinates, away from the bar.
    void draggedOff(merix::ap::Document* document, const QPoint& where);
    void menuWanted(merix::ap::Document* document, const QPoint& where);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    bool isAway(const QPoint& position) const;
    QPointer<ap::Document> m_pressed; ///< whose tab the hand holds
};

} // namespace merix::ui
