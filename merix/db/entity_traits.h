// SPDX-License-Identifier: MIT
// The attributes of entities as commands change them. The entity must be open for write; a value that is no such value
// answers eInvalidInput and changes nothing. Undo takes them back. Main thread only.
#pragma once

#include "host/db/entity.h"

#include <cstdint>

namespace merix::db {

/// A layer of the entity's drawing: eWrongClass for another object, eWrongDatabase.
Mx::ErrorStatus setLayer(MxDbEntity& entity, MxDbObjectId layer);
/// 0 by block, 1 to 255 an index of the colour table, 256 by layer. The entity has no true colour then.
Mx::ErrorStatus setColor(MxDbEntity& entity, int color);
/// 0xRRGGBB.
Mx::ErrorStatus setTrueColor(MxDbEntity& entity, std::uint32_t color);
/// A line type of the entity's drawing; null for that of the layer. eWrongClass, eWrongDatabase.
Mx::ErrorStatus setLinetype(MxDbEntity& entity, MxDbObjectId linetype);
/// Hundredths of a millimetre, one of the widths that DXF knows; -1 by layer, -2 by block, -3 default.
Mx::ErrorStatus setLineWeight(MxDbEntity& entity, int weight);
/// How much longer the line type's pattern is on this entity: greater than 0.
Mx::ErrorStatus setLinetypeScale(MxDbEntity& entity, double scale);
/// An invisible entity is neither drawn nor picked.
Mx::ErrorStatus setInvisible(MxDbEntity& entity, bool invisible);

} // namespace merix::db
