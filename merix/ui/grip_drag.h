// SPDX-License-Identifier: MIT
// Grips on their way with the hand, and what becomes of their entities when it lets go.
#pragma once

#include "merix/ap/document_imp.h"
#include "merix/gi/graphics_builder.h"
#include "merix/gi/scene.h"
#include "merix/ui/grips.h"

namespace merix::ui {

/// To reactors of the editor a drag is the command GRIP_STRETCH, from here to its end.
class GripDrag {
public:
    /// False, after telling why, when one of the grips must not be moved: its layer is locked.
    static bool mayBegin(const std::vector<Grip>& grips);

    /// `document` and its entities must outlive the drag.
    GripDrag(ap::Document& document, std::vector<Grip> grips, const MxGePoint3d& base);
    /// A drag that was not finished is given up: nothing has changed.
    ~GripDrag();

    const MxGePoint3d& base() const { return m_base; }
    const MxGePoint3d& at() const { return m_at; }
    bool moves(MxDbObjectId id) const;
    /// All entities that move are still selected.
    bool isSelected() const;
    void moveTo(const MxGePoint3d& point);
    /// The entities as they will be.
    void paint(QPainter& painter, const ge::ViewTransform& view, const gi::PaintOptions& options) const;
    /// Moves the grips to where they are: one undo step. Tells once of all that would not move. When the drawing is
    /// held by another the drag is as good as given up.
    void finish();

private:
    struct Moved {
        MxDbObjectId id;
        std::vector<int> indices;
        /// A copy outside the drawing that is moved for the picture; null for an entity of a module, whose picture
        /// moves as it is.
        std::unique_ptr<MxDbEntity> copy;
        std::string image; ///< of the copy before the move
        gi::DisplayList picture;
    };
    void add(const Grip& grip);
    void preview(Moved& moved, const MxGeVector3d& offset);
    static Mx::ErrorStatus stretch(const Moved& moved, const MxGeVector3d& offset);
    void stretchAll(const MxGeVector3d& offset) const;

    ap::Document& m_document;
    gi::GraphicsBuilder m_builder;
    std::vector<Moved> m_moved;
    MxGePoint3d m_base, m_at;
    bool m_finished = false;
};

} // namespace merix::ui
