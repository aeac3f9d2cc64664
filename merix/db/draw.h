// SPDX-License-Identifier: MIT
// What the host's own drawing interfaces know beyond the contract, and the drawing of blocks through any of them.
#pragma once

#include "host/gi/world_draw.h"
#include "merix/db/entities.h"
#include "merix/ge/affine.h"

namespace merix::db {

/// An attribute interface that takes all attributes of an entity at once: line type, true colour, line weight.
/// An interface that is not one of these is given the colour and line weight alone.
class EntityTraitsSink : public MxGiSubEntityTraits {
public:
    /// The geometry that follows belongs to an entity with these attributes. "By block" values and layer "0" of
    /// entities inside blocks are resolved; "by layer" refers to `traits.layer`.
    virtual void setEntityTraits(const EntityTraits& traits) = 0;
};

/// What the drawing of one outermost insert may cost: a million entities and placings of blocks.
class DrawBudget {
public:
    /// False when all is spent.
    bool spend() { return m_left > 0 && m_left-- > 0; }

private:
    int m_left = 1'000'000;
};

/// Draws the entities of `block`, placed by `toOwner`, as parts of an insert with the attributes `owner`. A block that
/// shows itself, nesting deeper than 32 and what exceeds the budget are cut off: false. Inside another block the budget
/// is the one of the outermost insert.
bool drawBlock(MxGiWorldDraw& draw, MxDbObjectId block, const ge::Affine& toOwner, const EntityTraits& owner,
               DrawBudget& budget);

/// The box of what `entity` draws; empty when it draws nothing.
MxDbExtents drawnExtents(const MxDbEntity& entity);

/// The length of a text's advance for letters 1 high and width factor 1. The host's graphics set the measure of their
/// font; without one it is estimated.
using TextMeasure = double (*)(const wchar_t* text);
void setTextMeasure(TextMeasure measure);
double textAdvance(const wchar_t* text);

} // namespace merix::db
