// SPDX-License-Identifier: MIT
// What a layer command does: new layers and changes of their properties, with undo. A change of several layers is one
// undo unit when the caller has one open. Main thread only.
#pragma once

#include "merix/db/database_imp.h"
#include "merix/db/tables.h"

#include <string_view>

namespace merix::db {

/// True for a name that a layer may have: 1 to 255 characters, none of them a control character or one of <>/\":;?*|,=`
/// and no blank at either end.
bool isLayerName(std::wstring_view name);

/// Adds a layer with the look of a new drawing's layer 0. eInvalidInput for a name that no layer may have,
/// eDuplicateKey for one that is taken.
Mx::ErrorStatus addLayer(DatabaseImp& database, std::wstring_view name, MxDbObjectId& id);

Mx::ErrorStatus setLayerOff(MxDbObjectId layer, bool off);
/// eNotApplicable for the current layer, which cannot be frozen.
Mx::ErrorStatus setLayerFrozen(MxDbObjectId layer, bool frozen);
Mx::ErrorStatus setLayerLocked(MxDbObjectId layer, bool locked);
/// An index of the colour table, 1 to 255; the layer has no true colour then.
Mx::ErrorStatus setLayerColor(MxDbObjectId layer, int color);
/// 0xRRGGBB.
Mx::ErrorStatus setLayerTrueColor(MxDbObjectId layer, std::uint32_t color);
/// A record of the drawing's line type table, but neither ByLayer nor ByBlock.
Mx::ErrorStatus setLayerLinetype(MxDbObjectId layer, MxDbObjectId linetype);
/// Hundredths of a millimetre, one of the widths that DXF knows, or -3 for the default.
Mx::ErrorStatus setLayerLineWeight(MxDbObjectId layer, int weight);

/// True for a line weight that DXF knows: 0 to 211, of a fixed list. Without -1, -2 and -3, which stand for others.
bool isLineWeight(int weight);

/// Makes the layer the one of new entities. eNotApplicable for a frozen layer. With undo.
Mx::ErrorStatus setCurrentLayer(MxDbObjectId layer);

} // namespace merix::db
