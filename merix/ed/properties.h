// SPDX-License-Identifier: MIT
// Colours, line weights, layers and line types as they are typed and told. Main thread only.
#pragma once

#include "host/db/layer.h"
#include "merix/db/database_imp.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace merix::ed {

struct ColorValue {
    std::int16_t index = 256; ///< 1 to 255, 256 by layer, 0 by block; of a true colour a stand-in
    bool isTrue = false;
    std::uint32_t rgb = 0;
};

/// `ByLayer`, `ByBlock`, 1 to 255, the names of the first seven (red yellow green cyan blue magenta white), or a true
/// colour as `red,green,blue` from 0 to 255.
std::optional<ColorValue> parseColor(const QString& text);
QString formatColor(const ColorValue& color);

/// One of the weights that drawing files know, hundredths of a millimetre, or -1 by layer, -2 by block, -3 the default.
bool isLineWeight(int weight);
/// `ByLayer`, `ByBlock`, `Default` or millimetres, which are taken to the next weight that there is (0 to 2.11).
std::optional<std::int16_t> parseLineWeight(const QString& text);
QString formatLineWeight(int weight);

/// Null for an id behind which there is no layer.
MxDbLayerTableRecord* layerRecord(MxDbObjectId id);
/// The layer of an entity; null when it has none.
const MxDbLayerTableRecord* layerOf(MxDbObjectId entity);
/// The name of a layer, line type or text style; empty when there is none behind the id.
QString recordName(MxDbObjectId id);
/// The line type of that name (case ignored); null when neither the drawing nor the line type file has it.
MxDbObjectId linetypeOrLoad(db::DatabaseImp& database, const std::wstring& name);

} // namespace merix::ed
