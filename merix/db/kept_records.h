// SPDX-License-Identifier: MIT
// Objects of classes that come and go with their module: while the class is away its objects are kept records.
#pragma once

#include "merix/db/entities.h"

#include <string>
#include <string_view>

namespace merix::db {

/// The DXF side of the change, set by the file readers and writers.
struct KeptRecordHooks {
    /// The tags of a live object as its class writes them: the record without its `0` line, in text form.
    std::string (*dxfTags)(const MxDbObject& object) = nullptr;
    /// Reads a kept record (its source text, else its tags) into a fresh object of its class.
    Mx::ErrorStatus (*readDxf)(const MxDbObject& kept, MxDbObject& fresh) = nullptr;
};
void setKeptRecordHooks(const KeptRecordHooks& hooks);

/// The DXF name and class name of a kept record, empty for any other object.
std::string_view keptDxfName(const MxDbObject& object);
std::wstring_view keptClassName(const MxDbObject& object);

/// Puts a state filed by class `className` into the object, which may have changed between live and kept since.
/// False when the two have nothing to do with each other.
bool restoreImage(MxDbObject& object, const std::string& image, const std::wstring& className);

} // namespace merix::db
