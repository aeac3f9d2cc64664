// SPDX-License-Identifier: MIT
// The widget that shows a drawing and takes the cursor's input. Everything is painted into a picture that is kept until
// it is stale; what is selected or highlighted is painted into a second one that lies over it, and the cursor over
// both, so that neither costs painting the drawing. A view's transform counts physical pixels. Every window has a view;
// the one of the active drawing is the active view.
#pragma once

#include "merix/ap/document_imp.h"
#include "merix/ed/active_view.h"
#include "merix/ed/prompter.h"
#include "merix/gi/scene.h"
#include "merix/ui/highlights.h"
#include "merix/ui/hover.h"
#include "merix/ui/selection_hand.h"
#include "merix/ui/snap.h"

#include <QPixmap>
#include <QWidget>

#include <map>
#include <optional>

namespace merix::ui {

class DrawingView : public QWidget, public ed::ActiveView {
    Q_OBJECT
public:
    explicit DrawingView(QWidget* parent = nullptr);
    ~DrawingView() override;

    /// Shows another drawing, as it was shown before, or whole when it is new; null for none. It is not the active view
    /// then.
    void setDocument(ap::Document* document);
    ap::Document* document() const { return m_document; }
    /// The drawing shown has become the active one: its view is what the editor and modules work on.
    void becomeActive();
    /// Only the active view answers prompts, selects and tells what lies under the cursor.
    bool isActive() const { return ed::activeView() == this; }
    /// Forgets what was kept for a drawing that closes.
    void forget(ap::Document* document);
    /// Takes what `other` keeps of a drawing that it shows no longer: graphics, highlights, what its layouts show.
    void takeOver(DrawingView& other, ap::Document* document);
    void zoomExtents();
    /// Selects all that is visible in the current layout.
    void selectAll();
    /// Esc while nothing is asked: gives up a box or a drag under way, else clears the selection.
    void escape();
    /// Gives up a box or a drag under way.
    void abandon();
    /// Points asked for are taken on the ends, middles and centres near the cursor.
    void setSnapping(bool on);
    /// Points asked for are taken straight beside or above the point before.
    void setOrtho(bool on);
    gi::PaintOptions paintOptions() const;
    /// What is selected, highlighted or gripped looks different now.
    void repaintMarks();
    /// The middle of the pixel that shows `world`, in the widget's coordinates.
    QPointF toWidget(const MxGePoint3d& world) const;
    MxGePoint3d toWorld(const QPointF& position) const;
    /// What the hand means by a place while a point is asked for or grips are dragged.
    MxGePoint3d aimedAt(const QPointF& position);
    /// The snap point that it means, if it means one. What is dragged has none.
    std::optional<SnapPoint> snapAt(const QPointF& position);

    // ed::ActiveView
    const ge::ViewTransform& transform() const override;
    void setTransform(const ge::ViewTransform& transform) override;
    std::optional<ge::ViewTransform> showingAll() override;
    std::vector<MxDbObjectId> under(const MxGePoint3d& world) override;
    std::vector<MxDbObjectId> inBox(const MxDbExtents& box, bool crossing) override;
    void regenerate() override;
    void update() override;
    void drawEntity(MxDbObjectId id, bool draw) override;

    /// Paints at once what is stale.
    void repairNow();
    /// The cursor is on a module's window over the view, whose mouse events come from now on.
    void cover(QWidget& window) { m_hover.cover(window); }
    QSize sizeHint() const override { return {960, 600}; }

Q_SIGNALS:
    void cursorMoved(const MxGePoint3d& world);
    void cursorLeft();
    /// A button was pressed in a view that is not active. The press does nothing else.
    void activationWanted();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    friend class Hover;
    gi::Scene& scene();
    MxDbObjectId space() const;
    void keep(ap::Document* document, std::unique_ptr<Highlights> highlights);
    void setUpTransform(ge::ViewTransform& view);
    /// As large as the widget now is.
    void sizeTransform(ge::ViewTransform& view) const;
    void layoutChanged();
    void paintPicture();
    void paintMarks();
    void paintRubberBand(QPainter& painter, const QPointF& cursor) const;
    void paintCursor(QPainter& painter) const;
    void paintHint(QPainter& painter) const;
    QRegion cursorRegion() const;
    std::optional<MxGePoint3d> aimBase() const;
    void promptChanged();
    void moveCursor(std::optional<QPointF> position);
    /// Half the side of the pick box in drawing units.
    double aperture() const;
    void endPan();
    void leftPress(QMouseEvent* event);
    void leftRelease(QMouseEvent* event);

    ap::Document* m_document = nullptr;
    std::map<ap::Document*, std::unique_ptr<gi::Scene>> m_scenes;
    std::map<ap::Document*, std::unique_ptr<Highlights>> m_highlights;
    std::map<std::pair<ap::Document*, MxDbObjectId>, ge::ViewTransform> m_layoutViews; ///< by the layout's space
    MxDbObjectId m_space;                                                              ///< that is shown
    ge::ViewTransform m_none;                                                          ///< while there is no drawing
    QPixmap m_picture, m_marks;
    bool m_stale = true, m_marksStale = true;
    std::optional<QPointF> m_cursor; ///< widget coordinates, while the cursor is over the view
    QPointF m_panFrom;
    bool m_panning = false;
    SelectionHand m_hand{*this};
    std::optional<SnapPoint> m_snap; ///< where a click would go
    bool m_snapping = true, m_ortho = false;
    ed::Prompter::Wants m_lastWanted = ed::Prompter::Wants::kNothing; ///< by the prompt in force or, after it, the last
    bool m_boxSelects = false;           ///< the corner asked for is of a box that began where nothing was picked
    std::optional<QPointF> m_answeredAt; ///< where the button went down to answer a prompt and is still held
    Hover m_hover{*this};
};

} // namespace merix::ui
