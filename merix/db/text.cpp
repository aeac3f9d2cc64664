// SPDX-License-Identifier: MIT
#include "merix/db/database_imp.h"
#include "merix/db/draw.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/db/entities.h"
#include "merix/db/entity_edit.h"
#include "merix/ge/ocs.h"
#include "merix/ge/planar_map.h"
#include "merix/rx/class_registry.h"

namespace merix::db {

MERIX_RX_CLASS(Text, "MxDbText", MxDbEntity, rx::makeObject<Text>, "TEXT")

namespace {

// Values of groups 71, 72 and 73.
constexpr std::int16_t kBackward = 2, kUpsideDown = 4;
constexpr std::int16_t kLeft = 0, kCenter = 1, kRight = 2, kAligned = 3, kMiddle = 4, kFit = 5;
constexpr std::int16_t kBaseline = 0, kBottom = 1, kVerticalMiddle = 2, kTop = 3;

/// How far letters reach below the base line, as a part of the height of capitals.
constexpr double kDescent = 1.0 / 3.0;

/// A text as it is set: where it begins in the object coordinate system, which way it runs and how large it is.
struct Setting {
    MxGePoint3d begin;
    double angle, height, widthFactor;
};

/// Between two points: with the letters stretched (fit) or scaled (aligned) to fill the length.
Setting setBetween(const Text& text, double advance) {
    const MxGeVector3d span = text.alignment - text.position;
    const double length = std::hypot(span.x, span.y), natural = advance * text.height * text.widthFactor;
    Setting set{text.position, text.rotation, text.height, text.widthFactor};
    if (!(length > 0.0) || !(natural > 0.0))
        return set;
    set.angle = std::atan2(span.y, span.x);
    (text.horizontal == kFit ? set.widthFactor : set.height) *= length / natural;
    return set;
}

Setting setText(const Text& text) {
    const double advance = textAdvance(text.text.c_str());
    if (text.horizontal == kAligned || text.horizontal == kFit)
        return setBetween(text, advance);
    Setting set{text.position, text.rotation, text.height, text.widthFactor};
    if (text.horizontal == kLeft && text.vertical == kBaseline)
        return set;
    // From the alignment point back to where the text begins, in its own directions.
    double back = 0.0, down = 0.0;
    if (text.horizontal == kCenter || text.horizontal == kMiddle)
        back = advance * text.height * text.widthFactor / 2;
    else if (text.horizontal == kRight)
        back = advance * text.height * text.widthFactor;
    if (text.vertical == kVerticalMiddle || text.horizontal == kMiddle)
        down = text.height / 2;
    else if (text.vertical == kTop)
        down = text.height;
    else if (text.vertical == kBottom)
        down = -text.height * kDescent;
    if (text.generation & kBackward)
        back = -back;
    if (text.generation & kUpsideDown)
        down = -down;
    const double c = std::cos(text.rotation), s = std::sin(text.rotation);
    set.begin = text.alignment + MxGeVector3d(-back * c + down * s, -back * s - down * c, 0.0);
    return set;
}

} // namespace

bool Text::subWorldDraw(MxGiWorldDraw* draw) {
    if (text.empty() || !(height > 0.0))
        return true;
    const Setting set = setText(*this);
    const ge::Affine ocs = ge::ocsToWorld(normal);
    MxGeVector3d direction = ocs * MxGeVector3d(std::cos(set.angle), std::sin(set.angle), 0.0);
    MxGeVector3d axis = ocs.z;
    // Either mirroring turns the plane of the text over; the direction says which way it then runs.
    if (generation & kBackward) {
        direction *= -1.0;
        axis *= -1.0;
    }
    if (generation & kUpsideDown)
        axis *= -1.0;
    draw->geometry().text(ocs * set.begin, axis, direction, set.height, set.widthFactor, oblique, text.c_str());
    return true;
}

namespace {

bool isAnchoredAtItsBegin(const Text& text) {
    return text.horizontal == kLeft && text.vertical == kBaseline;
}

bool isBetweenPoints(const Text& text) {
    return text.horizontal == kAligned || text.horizontal == kFit;
}

/// Mirrored along its base line: what was anchored at its left end is so at its right.
void swapEnds(Text& text) {
    if (isBetweenPoints(text)) {
        std::swap(text.position, text.alignment);
    } else if (text.horizontal == kLeft || text.horizontal == kRight) {
        if (isAnchoredAtItsBegin(text))
            text.alignment = text.position;
        text.horizontal = text.horizontal == kLeft ? kRight : kLeft;
    }
}

/// Mirrored across its base line: what stood on it hangs below it. `up` is the text's upright, in its plane.
void hang(Text& text, const MxGeVector3d& up) {
    const auto raise = [&up](MxGePoint3d& point, double by) {
        point = point + MxGeVector3d(up.x * by, up.y * by, 0.0);
    };
    if (isBetweenPoints(text)) {
        const double height = setText(text).height;
        raise(text.position, -height);
        raise(text.alignment, -height);
        return;
    }
    if (text.horizontal == kMiddle || text.vertical == kVerticalMiddle)
        return;
    if (isAnchoredAtItsBegin(text))
        text.alignment = text.position;
    // There is no anchor as far above the letters as the bottom is below them.
    if (text.vertical == kBottom)
        raise(text.alignment, -text.height * kDescent);
    text.vertical = text.vertical == kTop ? kBaseline : kTop;
}

} // namespace

/// A text stays readable: mirrored, it fills the mirrored place with letters that run the right way.
Mx::ErrorStatus Text::subTransformBy(const MxGeMatrix3d& map) {
    const auto planar = ge::PlanarMap::of(map, normal);
    double thick = thickness;
    if (!planar || !planar->isSimilar() || !planar->thicken(thick))
        return Mx::eCannotScaleNonUniformly;
    assertWriteEnabled();
    if (isBetweenPoints(*this) && alignment != position)
        rotation = std::atan2(alignment.y - position.y, alignment.x - position.x);
    const MxGeVector3d before(std::cos(rotation), std::sin(rotation), 0.0);
    const bool anchoredAtBegin = isAnchoredAtItsBegin(*this);
    position = *planar * position;
    alignment = *planar * alignment;
    MxGeVector3d along = *planar * before;
    height *= planar->scale();
    thickness = thick;
    normal = planar->normal();
    if (planar->isReversed()) {
        // Turned about as little as can be; taken back the same way by the same map.
        const bool turnsBack = along.dot(before) < -1e-9 * along.length();
        if (turnsBack)
            along *= -1.0;
        along = ge::unit(along);
        if (turnsBack)
            swapEnds(*this);
        else
            hang(*this, {(generation & kUpsideDown ? 1.0 : -1.0) * along.y,
                         generation & kUpsideDown ? -along.x : along.x, 0.0});
    }
    rotation = std::atan2(along.y, along.x);
    if (rotation < 0.0)
        rotation += 2 * kPi;
    if (isAnchoredAtItsBegin(*this) && !anchoredAtBegin)
        position = alignment;
    else if (!isAnchoredAtItsBegin(*this) && !isBetweenPoints(*this))
        position = setText(*this).begin;
    return Mx::eOk;
}

/// The points that place the text: both ends of one set between points, else the anchor.
Mx::ErrorStatus Text::subGetGripPoints(std::vector<MxGePoint3d>& grips) const {
    const ge::Affine ocs = ge::ocsToWorld(normal);
    if (isAnchoredAtItsBegin(*this) || isBetweenPoints(*this))
        grips.push_back(ocs * position);
    if (!isAnchoredAtItsBegin(*this))
        grips.push_back(ocs * alignment);
    return Mx::eOk;
}

Mx::ErrorStatus Text::subMoveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset) {
    const ge::Affine ocs = ge::ocsToWorld(normal);
    const MxGeVector3d own(ocs.x.dot(offset), ocs.y.dot(offset), ocs.z.dot(offset));
    assertWriteEnabled();
    const bool between = isBetweenPoints(*this);
    if (movesGrip(indices, 0))
        position = position + own;
    if (movesGrip(indices, between ? 1 : 0))
        alignment = alignment + own;
    return Mx::eOk;
}

Mx::ErrorStatus Text::subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d&, const MxGePoint3d&,
                                        std::vector<MxGePoint3d>& points) const {
    SnapPoints(mode, points)
        .add(MxDbOsnapMode::kInsertion,
             ge::ocsToWorld(normal) * (isAnchoredAtItsBegin(*this) || isBetweenPoints(*this) ? position : alignment));
    return Mx::eOk;
}

Mx::ErrorStatus Text::dwgInFields(MxDbDwgFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbEntity::dwgInFields(filer); status != Mx::eOk)
        return status;
    filer->readPoint3d(position);
    filer->readPoint3d(alignment);
    if (const auto status = readText(*filer, text); status != Mx::eOk)
        return status;
    for (double* value : {&height, &rotation, &widthFactor, &oblique, &thickness})
        filer->readDouble(*value);
    filer->readInt16(generation);
    filer->readInt16(horizontal);
    filer->readInt16(vertical);
    filer->readHardPointerId(style);
    return readVector(*filer, normal);
}

Mx::ErrorStatus Text::dwgOutFields(MxDbDwgFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dwgOutFields(filer); status != Mx::eOk)
        return status;
    filer->writePoint3d(position);
    filer->writePoint3d(alignment);
    filer->writeString(text.c_str());
    for (const double value : {height, rotation, widthFactor, oblique, thickness})
        filer->writeDouble(value);
    filer->writeInt16(generation);
    filer->writeInt16(horizontal);
    filer->writeInt16(vertical);
    filer->writeHardPointerId(style);
    return writeVector(*filer, normal);
}

Mx::ErrorStatus Text::dxfInFields(MxDbDxfFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbEntity::dxfInFields(filer); status != Mx::eOk)
        return status;
    return readItems(filer, this, [&](int code) {
        switch (code) {
        case 1:
            text = filer->itemString().str();
            return true;
        case 7:
            if (filer->database())
                style = filer->database()->imp().textStyleNamed(filer->itemString().str());
            return true;
        case 10:
            position = filer->itemPoint3d();
            return true;
        case 11:
            alignment = filer->itemPoint3d();
            return true;
        case 39:
            thickness = filer->itemDouble();
            return true;
        case 40:
            height = filer->itemDouble();
            return true;
        case 41:
            widthFactor = filer->itemDouble();
            return true;
        case 50:
            rotation = radians(filer->itemDouble());
            return true;
        case 51:
            oblique = radians(filer->itemDouble());
            return true;
        case 71:
            generation = filer->itemInt16();
            return true;
        case 72:
            horizontal = filer->itemInt16();
            return true;
        case 73:
            vertical = filer->itemInt16();
            return true;
        case 210:
            normal = itemVector(filer);
            return true;
        default:
            return false;
        }
    });
}

Mx::ErrorStatus Text::dxfOutFields(MxDbDxfFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dxfOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(100, L"AcDbText");
    writeUnlessZero(filer, 39, thickness);
    filer->writePoint3d(10, position);
    filer->writeDouble(40, height);
    filer->writeString(1, text.c_str());
    writeUnlessZero(filer, 50, degrees(rotation));
    if (widthFactor != 1.0)
        filer->writeDouble(41, widthFactor);
    writeUnlessZero(filer, 51, degrees(oblique));
    if (const std::wstring name = recordName(style); !name.empty())
        filer->writeString(7, name.c_str());
    if (generation != 0)
        filer->writeInt16(71, generation);
    if (horizontal != kLeft)
        filer->writeInt16(72, horizontal);
    if (horizontal != kLeft || vertical != kBaseline)
        filer->writePoint3d(11, alignment);
    writeNormal(filer, normal);
    filer->writeString(100, L"AcDbText");
    if (vertical != kBaseline)
        filer->writeInt16(73, vertical);
    return filer->filerStatus();
}

} // namespace merix::db
