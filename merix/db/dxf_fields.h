// SPDX-License-Identifier: MIT
// Common pieces of reading and writing DXF records.
#pragma once

#include "host/db/entity.h"

#include <string>

namespace merix::db {

/// Takes the filer's current item when it is one that every entity may have; false otherwise.
bool readEntityItem(MxDbEntity& entity, MxDbDxfFiler* filer);

/// Calls `take(code)` for every item up to the record's end. What it declines (false) is offered to the entity's
/// common fields and passed over otherwise: the reader of the file keeps it.
template <class Take> Mx::ErrorStatus readItems(MxDbDxfFiler* filer, MxDbEntity* entity, Take take) {
    for (;;) {
        if (const auto status = filer->readItem(); status != Mx::eOk)
            return status == Mx::eEndOfItems ? Mx::eOk : status;
        if (!take(filer->itemCode()) && entity)
            readEntityItem(*entity, filer);
    }
}

/// The name of a table record, erased or not; empty when the id names none.
std::wstring recordName(MxDbObjectId id);

/// Group 210, left out for the world's z axis.
Mx::ErrorStatus writeNormal(MxDbDxfFiler* filer, const MxGeVector3d& normal);
Mx::ErrorStatus writeUnlessZero(MxDbDxfFiler* filer, int code, double value);

inline MxGeVector3d itemVector(const MxDbDxfFiler* filer) {
    return filer->itemPoint3d().asVector();
}

inline constexpr double kPi = 3.14159265358979323846;
constexpr double radians(double degrees) {
    return degrees * kPi / 180.0;
}
constexpr double degrees(double angle) {
    return angle * 180.0 / kPi;
}

} // namespace merix::db
