// SPDX-License-Identifier: MIT
// What a hand does to a note: moving, grips, snapping, copying.
#include "phonomark/entity/phonomark.h"

#include "host/ge/matrix.h"
#include "phonomark/dbutil/border.h"

Mx::ErrorStatus MxDbPhonomark::subTransformBy(const MxGeMatrix3d& map) try {
    assertWriteEnabled();
    if (m_type == kPointNote)
        m_position = map * m_position;
    return Mx::eOk;
} catch (...) {
    return failed("moving a note", Mx::eInvalidInput);
}

Mx::ErrorStatus MxDbPhonomark::subGetGripPoints(std::vector<MxGePoint3d>& grips) const try {
    assertReadEnabled();
    if (m_type == kPointNote)
        grips.push_back(m_position);
    return Mx::eOk;
} catch (...) {
    return failed("the grips of a note", Mx::eInvalidInput);
}

Mx::ErrorStatus MxDbPhonomark::subGetGripPoints(std::vector<MxDbGripData>& grips, double viewUnit, int gripSize,
                                                const MxGeVector3d& viewDirection, int flags) const {
    return MxDbEntity::subGetGripPoints(grips, viewUnit, gripSize, viewDirection, flags);
}

Mx::ErrorStatus MxDbPhonomark::subMoveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset) try {
    if (m_type != kPointNote)
        return Mx::eOk;
    assertWriteEnabled();
    for (const int index : indices)
        if (index == 0)
            m_position = m_position + offset;
    return Mx::eOk;
} catch (...) {
    return failed("moving a note", Mx::eInvalidInput);
}

Mx::ErrorStatus MxDbPhonomark::subMoveGripPointsAt(const std::vector<void*>& gripData, const MxGeVector3d& offset,
                                                   int flags) {
    return MxDbEntity::subMoveGripPointsAt(gripData, offset, flags);
}

Mx::ErrorStatus MxDbPhonomark::subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d& pick, const MxGePoint3d& last,
                                                 std::vector<MxGePoint3d>& points) const {
    assertReadEnabled();
    return MxDbEntity::subGetOsnapPoints(mode, pick, last, points);
}

Mx::ErrorStatus MxDbPhonomark::subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d& pick, const MxGePoint3d& last,
                                                 std::vector<MxGePoint3d>& points,
                                                 const MxGeMatrix3d& insertion) const {
    assertReadEnabled();
    return MxDbEntity::subGetOsnapPoints(mode, pick, last, points, insertion);
}

Mx::ErrorStatus MxDbPhonomark::subDeepClone(MxDbObject*, MxDbObject*& clone, MxDbIdMapping&, bool) const {
    clone = nullptr;
    return Mx::eOk;
}

Mx::ErrorStatus MxDbPhonomark::subWblockClone(MxDbObject*, MxDbObject*& clone, MxDbIdMapping&, bool) const {
    clone = nullptr;
    return Mx::eOk;
}
