// SPDX-License-Identifier: MIT
// Grips on their way with the hand, and what becomes of their entities when it lets go.
#pragma once

#include "merix/ap/document_imp.h"
#include "merix/gi/graphics_builder.h"
#include "merix/gi/scene.h"
#include "merix/ui/grip_mode.h"
#include "merix/ui/grips.h"

namespace merix::ui {

/// To reactors of the editor a drag is the command of its mode, from here to its end or the change of the mode. The
/// command line shows what it asks for.
class GripDrag {
public:
    /// False, after telling why, when one of the grips must not be moved: its layer is locked.
    static bool mayBegin(const std::vector<Grip>& grips);

    /// `document` and its entities must outlive the drag.
    GripDrag(ap::Document& document, std::vector<Grip> grips, const MxGePoint3d& base);
    /// A drag that was not finished is given up: nothing has changed.
    ~GripDrag();

    /// A drag begins as a stretch. In the other modes the whole selection moves.
    /// kTaken: the drag goes on; kGiven: it is where it shall end.
    enum class Answer { kNone, kTaken, kGiven };
    /// Enter or an option; a point, an angle or a factor as typed, which then stands for where the hand is. What cannot
    /// be meant is told of. kNone: it is none of these.
    Answer answer(const QString& typed);
    /// The hand let go or clicked there: false when that gave the base alone.
    bool put(const MxGePoint3d& point);

    const MxGePoint3d& base() const { return m_base; }
    const MxGePoint3d& at() const { return m_at; }
    bool moves(MxDbObjectId id) const;
    bool isBaseAsked() const { return m_asksBase; }
    /// All entities that move are still selected.
    bool isSelected() const;
    void moveTo(const MxGePoint3d& point);
    /// The entities as they will be.
    void paint(QPainter& painter, const ge::ViewTransform& view, const gi::PaintOptions& options) const;
    /// Moves the grips, or the selection, to where they are: one undo step. Tells once of all that would not move. When
    /// the drawing is held by another the drag is as good as given up.
    void finish();

private:
    struct Moved {
        MxDbObjectId id;
        std::vector<int> indices; ///< of its grips that are hot
        /// A copy outside the drawing that is moved for the picture; null for an entity of a module, whose picture
        /// goes along with its first grip as it is, and stays without one.
        std::unique_ptr<MxDbEntity> copy;
        std::string image; ///< of the copy before the move
        gi::DisplayList picture;
        std::optional<MxGePoint3d> place; ///< of its first grip
    };
    /// What is known of the entity, null when it is none.
    Moved* add(MxDbObjectId id);
    bool isMoved(const Moved& moved) const { return m_mode != GripMode::kStretch || !moved.indices.empty(); }
    void begin();
    void ask();
    void setMode(GripMode mode);
    bool takeOption(const QString& typed);
    Answer answer(double number);
    void preview();
    void preview(Moved& moved);
    /// Where an entity goes as it is whose picture cannot be made anew.
    MxGeVector3d shiftOf(const Moved& moved) const;
    static Mx::ErrorStatus stretch(const Moved& moved, const MxGeVector3d& offset);
    void stretchAll(const MxGeVector3d& offset) const;
    void moveAll() const;

    ap::Document& m_document;
    gi::GraphicsBuilder m_builder;
    std::vector<Moved> m_moved;
    GripMode m_mode = GripMode::kStretch;
    MxGePoint3d m_base, m_at;
    std::optional<MxGeMatrix3d> m_map; ///< of all that move, but for a stretch
    QString m_prompt;
    bool m_copies = false; ///< not in a stretch
    bool m_asksBase = false;
    bool m_finished = false;
};

} // namespace merix::ui
