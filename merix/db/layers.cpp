// SPDX-License-Identifier: MIT
#include "merix/db/layers.h"

#include "merix/db/clone.h"

#include <algorithm>
#include <array>

namespace merix::db {

namespace {

constexpr std::int16_t kFrozen = 1;

bool isCurrent(const LayerRecord& layer) {
    return layer.data().stub->database->layerNamed(layer.data().stub->database->header.currentLayer) ==
           layer.objectId();
}

/// Opens the layer for write and changes it; `change` answers with a status, and changes nothing unless eOk.
template <class Change> Mx::ErrorStatus changeLayer(MxDbObjectId id, Change change) {
    LayerRecord* layer = nullptr;
    if (const auto status = mxdbOpenObject(layer, id, Mx::kForWrite); status != Mx::eOk)
        return status;
    const auto status = change(*layer);
    layer->close();
    return status;
}

} // namespace

bool isLayerName(std::wstring_view name) {
    constexpr std::size_t kLongest = 255;
    constexpr std::wstring_view kReserved = L"<>/\\\":;?*|,=`";
    return !name.empty() && name.size() <= kLongest && name.front() != L' ' && name.back() != L' ' &&
           std::none_of(name.begin(), name.end(), [&](wchar_t letter) {
               return letter < L' ' || letter == 0x7F || kReserved.find(letter) != std::wstring_view::npos;
           });
}

bool isLineWeight(int weight) {
    static constexpr std::array<int, 24> kWeights = {0,  5,  9,  13, 15, 18,  20,  25,  30,  35,  40,  50,
                                                     53, 60, 70, 80, 90, 100, 106, 120, 140, 158, 200, 211};
    return std::binary_search(kWeights.begin(), kWeights.end(), weight);
}

Mx::ErrorStatus addLayer(DatabaseImp& database, std::wstring_view name, MxDbObjectId& id) {
    id = {};
    if (!isLayerName(name))
        return Mx::eInvalidInput;
    if (!database.layerNamed(name).isNull())
        return Mx::eDuplicateKey;
    auto layer = std::make_unique<LayerRecord>();
    layer->name = name;
    layer->linetype = database.linetypeNamed(L"Continuous");
    MxDbObject* added = appendRecord(database, database.roots.layerTable, std::move(layer));
    if (!added)
        return Mx::eNotOpen;
    id = added->objectId();
    return added->close();
}

Mx::ErrorStatus setLayerOff(MxDbObjectId id, bool off) {
    return changeLayer(id, [off](LayerRecord& layer) {
        if (layer.off != off) {
            layer.assertWriteEnabled();
            layer.off = off;
        }
        return Mx::eOk;
    });
}

Mx::ErrorStatus setLayerFrozen(MxDbObjectId id, bool frozen) {
    return changeLayer(id, [frozen](LayerRecord& layer) {
        if (frozen && isCurrent(layer))
            return Mx::eNotApplicable;
        if (layer.isFrozen() != frozen) {
            layer.assertWriteEnabled();
            layer.flags = static_cast<std::int16_t>(frozen ? layer.flags | kFrozen : layer.flags & ~kFrozen);
        }
        return Mx::eOk;
    });
}

Mx::ErrorStatus setLayerLocked(MxDbObjectId id, bool locked) {
    return changeLayer(id, [locked](LayerRecord& layer) {
        if (layer.isLocked() != locked)
            layer.setIsLocked(locked);
        return Mx::eOk;
    });
}

Mx::ErrorStatus setLayerColor(MxDbObjectId id, int color) {
    return changeLayer(id, [color](LayerRecord& layer) {
        if (color < 1 || color > 255)
            return Mx::eInvalidInput;
        layer.assertWriteEnabled();
        layer.color = static_cast<std::int16_t>(color);
        layer.hasTrueColor = false;
        return Mx::eOk;
    });
}

Mx::ErrorStatus setLayerTrueColor(MxDbObjectId id, std::uint32_t color) {
    return changeLayer(id, [color](LayerRecord& layer) {
        if (color > 0xFFFFFFU)
            return Mx::eInvalidInput;
        layer.assertWriteEnabled();
        layer.trueColor = color;
        layer.hasTrueColor = true;
        return Mx::eOk;
    });
}

Mx::ErrorStatus setLayerLinetype(MxDbObjectId id, MxDbObjectId linetype) {
    return changeLayer(id, [linetype](LayerRecord& layer) {
        const DatabaseImp& database = *layer.data().stub->database;
        const MxDbObject* record = DatabaseImp::peek(linetype);
        if (!record || record->isA() != LinetypeRecord::desc())
            return Mx::eWrongClass;
        if (linetype.stub()->database != &database)
            return Mx::eWrongDatabase;
        if (linetype == database.linetypeNamed(L"ByLayer") || linetype == database.linetypeNamed(L"ByBlock"))
            return Mx::eInvalidInput;
        layer.assertWriteEnabled();
        layer.linetype = linetype;
        return Mx::eOk;
    });
}

Mx::ErrorStatus setLayerLineWeight(MxDbObjectId id, int weight) {
    return changeLayer(id, [weight](LayerRecord& layer) {
        constexpr int kDefault = -3;
        if (weight != kDefault && !isLineWeight(weight))
            return Mx::eInvalidInput;
        layer.assertWriteEnabled();
        layer.lineWeight = static_cast<std::int16_t>(weight);
        return Mx::eOk;
    });
}

Mx::ErrorStatus setCurrentLayer(MxDbObjectId id) {
    MxDbObject* object = DatabaseImp::peek(id);
    if (!object)
        return id.isNull() ? Mx::eNullObjectId : Mx::eWasErased;
    if (object->isA() != LayerRecord::desc())
        return Mx::eWrongClass;
    auto& layer = static_cast<LayerRecord&>(*object);
    if (layer.isFrozen())
        return Mx::eNotApplicable;
    DatabaseImp& database = *layer.data().stub->database;
    DatabaseImp::Header header = database.header;
    header.currentLayer = layer.name;
    database.changeHeader(header);
    return Mx::eOk;
}

} // namespace merix::db
