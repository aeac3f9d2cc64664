// SPDX-License-Identifier: MIT
// Between one record of a DXF file and one object.
#pragma once

#include "merix/io/drawing_parts.h"
#include "merix/io/dxf_out_filer.h"
#include "merix/io/dxf_tag.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace merix::io {

/// Where a record stands, which decides what may be made of it.
enum class RecordPlace { kTable, kTableRecord, kEntity, kObject };

/// True for a class that a module brought.
bool isModuleClass(const MxRxClass* aClass);
/// True when records of this name, where they stand, are read by such a class.
bool isModuleRecord(std::string_view name, RecordPlace place);

/// An object that was made from a record, not in a database yet and owned by the caller. `refusal` says why a record
/// that has a class was kept as it came, else it is empty.
struct DxfObject {
    std::unique_ptr<MxDbObject> object;
    std::string refusal;
};

/// Makes an object of the class that the record `text` names. A record of an unknown class, or one that its class
/// refuses, becomes a kept one.
DxfObject makeDxfObject(MxDbDatabase& database, const DxfEncoding& encoding, std::string_view text, RecordPlace place);
/// The same record as a kept object, whatever class it names.
std::unique_ptr<MxDbObject> makeKeptObject(MxDbDatabase& database, const DxfEncoding& encoding, std::string_view text,
                                           RecordPlace place);
/// A second object of the same class with the state that `text` gives; null when the class refuses it.
std::unique_ptr<MxDbObject> makeTwin(const MxDbObject& object, const DxfEncoding& encoding, std::string_view text);

/// Sets what stands in front of the first subclass of a record: reactors and extension dictionary.
void readObjectLinks(MxDbDatabase& database, std::string_view text, db::ObjectData& data);

/// What an object says in DXF. `body` begins at the first subclass marker.
struct DxfImage {
    std::string name;
    std::uint64_t handle = 0, owner = 0, extensionDictionary = 0;
    std::vector<std::uint64_t> reactors;
    std::vector<DxfOutTag> body;
    std::string subject; ///< of a symbol table: its name, which stands in front of all
    bool entity = false;
};
/// All but the body.
DxfImage dxfImage(const MxDbObject& object);

/// The record of a new object.
std::string newRecord(const DxfImage& image, const DrawingParts& parts);

/// The DXF name of an object's record.
std::string dxfNameOf(const MxDbObject& object);

/// The tags from the first subclass marker on that stand for the object in DXF while its module is absent; those of a
/// kept record are what was kept with it.
std::string tagsForKeeping(const MxDbObject& object);

/// The text that stands for a changed object in the file: its source merged with what it says now, a new record when
/// it has none. Empty for an object that has no DXF form.
std::string currentRecord(const MxDbObject& object, const DrawingParts& parts);

} // namespace merix::io
