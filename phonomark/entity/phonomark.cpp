// SPDX-License-Identifier: MIT
#include "phonomark/entity/phonomark.h"

#include "host/ed/input.h"
#include "phonomark/dbutil/geom_extents.h"
#include "phonomark/dbutil/opened.h"
#include "phonomark/dbutil/run_time_class.h"

const wchar_t kEmptyDuration[] = L"0.0\"";

MxRxClass* MxDbPhonomark::gpDesc = nullptr;
bool MxDbPhonomark::m_IsDraging = false;

namespace {

constexpr wchar_t kClassName[] = L"MxDbPhonomark";
constexpr int kDwgVersion = 33;
constexpr int kMaintenanceVersion = 55;
constexpr wchar_t kApplication[] =
    L"MrxPhonomark|Product Desc:Phonomark Object|Company:VORKAS|WEB Address:https://merix.example";

/// The marker is this many pixels wide.
constexpr int kMarkerPixels = 32;
constexpr double kUnitsWithoutView = 10.0;

} // namespace

MxRxClass* MxDbPhonomark::rxInit() {
    return rxInit(nullptr);
}

MxRxClass* MxDbPhonomark::rxInit(MxRxAppNameChange appNameChange) {
    if (MxRxClass* found = registeredClass(gpDesc, kClassName))
        return found;
    gpDesc = requireClass(newMxRxClass(kClassName, MxDbEntity::desc()->name(), kDwgVersion, kMaintenanceVersion, 0,
                                       &makeOnHostHeap<MxDbPhonomark>, L"PHONOMARK", kApplication, appNameChange));
    return gpDesc;
}

MxDbPhonomark::MxDbPhonomark()
    : m_refUnits(calcRefUnits())
    , m_duration(kEmptyDuration) {}

MxDbPhonomark::~MxDbPhonomark() = default;

void MxDbPhonomark::setAttachObj(MxDbObjectId id) {
    m_attachId = id;
    refreshExtents();
}

void MxDbPhonomark::refreshExtents() {
    if (const Opened<MxDbEntity> entity(m_attachId, Mx::kForRead); entity)
        getGeomExtentsEx(m_extents, entity.get());
}

double MxDbPhonomark::calcRefUnits() const {
    MxGePoint3d first, second;
    if (!mxedCoordFromPixelToWorld(0, 0, 0, first) || !mxedCoordFromPixelToWorld(0, kMarkerPixels, 0, second))
        return kUnitsWithoutView;
    return second.x - first.x;
}

bool MxDbPhonomark::setAudioData(unsigned char* bytes) {
    if (!bytes)
        return false;
    if (bytes != m_pAudioData) {
        auto block = std::make_shared<AudioBlock>(bytes);
        if (m_audioBlock)
            m_audioBlock->release();
        m_audioBlock = std::move(block);
        m_pAudioData = bytes;
    }
    m_bRecord = true;
    return true;
}

void MxDbPhonomark::delAudioData() {
    m_audioBlock.reset();
    m_pAudioData = nullptr;
}

void MxDbPhonomark::setWaveFormat(const tWAVEFORMATEX* format) {
    m_waveFormat = *format;
}

void MxDbPhonomark::getWaveFormat(tWAVEFORMATEX& format) const {
    format = m_waveFormat;
}

void MxDbPhonomark::setRecord(bool record) {
    m_bRecord = record;
    ShowRegion(false);
}

void MxDbPhonomark::openedForModify(const MxDbObject* object) {
    assertReadEnabled();
    MxDbObject::openedForModify(object);
}

void MxDbPhonomark::cancelled(const MxDbObject* object) {
    assertReadEnabled();
    MxDbObject::cancelled(object);
}

void MxDbPhonomark::objectClosed(MxDbObjectId id) {
    assertReadEnabled();
    MxDbObject::objectClosed(id);
}

void MxDbPhonomark::goodbye(const MxDbObject* object) {
    assertReadEnabled();
    MxDbObject::goodbye(object);
}

void MxDbPhonomark::copied(const MxDbObject* object, const MxDbObject* copy) {
    assertReadEnabled();
    MxDbObject::copied(object, copy);
}

void MxDbPhonomark::erased(const MxDbObject* object, bool erasing) {
    assertReadEnabled();
    MxDbObject::erased(object, erasing);
}

void MxDbPhonomark::modified(const MxDbObject* object) {
    assertReadEnabled();
    MxDbObject::modified(object);
}

void MxDbPhonomark::modifiedGraphics(const MxDbEntity* entity) {
    assertReadEnabled();
    MxDbObject::modifiedGraphics(entity);
}

void MxDbPhonomark::modifiedXData(const MxDbObject* object) {
    assertReadEnabled();
    MxDbObject::modifiedXData(object);
}

void MxDbPhonomark::subObjModified(const MxDbObject* object, const MxDbObject* part) {
    assertReadEnabled();
    MxDbObject::subObjModified(object, part);
}

void MxDbPhonomark::modifyUndone(const MxDbObject* object) {
    assertReadEnabled();
    MxDbObject::modifyUndone(object);
}

void MxDbPhonomark::reappended(const MxDbObject* object) {
    assertReadEnabled();
    MxDbObject::reappended(object);
}

void MxDbPhonomark::unappended(const MxDbObject* object) {
    assertReadEnabled();
    MxDbObject::unappended(object);
}

Mx::ErrorStatus MxDbPhonomark::subOpen(Mx::OpenMode mode) {
    return MxDbObject::subOpen(mode);
}

Mx::ErrorStatus MxDbPhonomark::subCancel() {
    return MxDbObject::subCancel();
}

Mx::ErrorStatus MxDbPhonomark::subClose() {
    return MxDbObject::subClose();
}

Mx::ErrorStatus MxDbPhonomark::cancel() {
    return MxDbObject::cancel();
}

Mx::ErrorStatus MxDbPhonomark::close() {
    return MxDbObject::close();
}
