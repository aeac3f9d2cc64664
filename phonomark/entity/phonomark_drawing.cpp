// SPDX-License-Identifier: MIT
// How a note shows itself: a marker of a fixed size on the screen, whatever the zoom, with the duration above it.
// Every length is a part of r, the drawing units in 32 pixels.
#include "phonomark/entity/phonomark.h"

#include "host/db/database.h"
#include "host/ed/input.h"
#include "host/gi/world_draw.h"
#include "phonomark/app/module_state.h"
#include "phonomark/dbutil/border.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/dbutil/linetypes.h"
#include "phonomark/dbutil/opened.h"
#include "phonomark/entity/icons.h"

#include <array>
#include <optional>

namespace {

constexpr std::uint16_t kOutlineColor = 8;
constexpr wchar_t kOutlineLinetype[] = L"DASHEDX2";
constexpr MxCmEntityColor kPlateColor{MxCmEntityColor::Method::kByColor, 157, 184, 244};
constexpr std::uint16_t kPlateEdgeColor = 7;
constexpr std::uint16_t kMarkerColor = 9;
constexpr std::uint16_t kLightColor = 3;
/// The pointer leaves the insertion point under 45 degrees; its edges lie half of that to either side.
constexpr double kPointerAngle = 0.785;
constexpr double kPointerHalfAngle = 0.3925;
constexpr double kPointerLength = 0.6;
/// A recording of fewer bytes is none.
constexpr unsigned kShortestRecording = 100;
constexpr unsigned kShowRegionText = 292;

/// Interfaces that ignore attributes cost nothing.
template <class Change> void changeTraits(MxGiWorldDraw* draw, Change change) {
    MxGiSubEntityTraits& traits = draw->subEntityTraits();
    if (traits.implementsTraits())
        change(traits);
}

void setColor(MxGiWorldDraw* draw, std::uint16_t color) {
    changeTraits(draw, [color](MxGiSubEntityTraits& traits) { traits.setColor(color); });
}

/// Draws with line weight 0 as long as it lives.
class ThinLines {
public:
    explicit ThinLines(MxGiWorldDraw* draw)
        : m_draw(draw) {
        changeTraits(draw, [this](const MxGiSubEntityTraits& traits) { m_before = traits.lineWeight(); });
        set(0);
    }
    ~ThinLines() {
        guarded("drawing a note", [this] { set(m_before); });
    }
    ThinLines(const ThinLines&) = delete;
    ThinLines& operator=(const ThinLines&) = delete;

private:
    void set(int weight) {
        changeTraits(m_draw, [weight](MxGiSubEntityTraits& traits) { traits.setLineWeight(weight); });
    }
    MxGiWorldDraw* m_draw;
    int m_before = 0;
};

} // namespace

bool MxDbPhonomark::subWorldDraw(MxGiWorldDraw* draw) try {
    assertReadEnabled();
    const MxGiContext* context = draw->context();
    if ((context && context->isPlotGeneration()) || !IsShowPhonomark())
        return true;
    m_refUnits = calcRefUnits();
    dropShortRecording();

    const ThinLines thin(draw);
    switch (m_type) {
    case kPointNote:
        DrawPoint(draw);
        break;
    case kRegionNote:
        if (m_bShowRegion)
            DrawRegion(draw);
        else
            m_markPoint = m_extents.maxPoint(); // the marker stands there although its region was never drawn
        break;
    case kObjectNote:
        DrawObject(draw);
        break;
    default:
        break;
    }
    DrawTextW(draw);
    DrawImage(draw);
    DrawLight(draw);
    return true;
} catch (...) {
    return failed("drawing a note", true);
}

void MxDbPhonomark::dropShortRecording() {
    if (!m_pAudioData || m_audioDataSize >= kShortestRecording)
        return;
    delAudioData();
    m_duration = kEmptyDuration;
    m_bRecord = false;
}

MxGeVector3d MxDbPhonomark::markerOffset() const {
    MxGeVector3d offset(m_refUnits, 0.0, 0.0);
    offset.rotateBy(kPointerAngle, MxGeVector3d::kZAxis);
    offset *= kPointerLength;
    return offset;
}

/// A narrow kite from the point to the marker's corner, and a small target on the point.
void MxDbPhonomark::DrawPoint(MxGiWorldDraw* draw) {
    setColor(draw, kMarkerColor);
    MxGiWorldGeometry& geometry = draw->geometry();
    MxGeVector3d edge = markerOffset();
    m_markPoint = m_position + edge;
    const MxGePoint3d left = m_position + edge.rotateBy(kPointerHalfAngle, MxGeVector3d::kZAxis);
    const MxGePoint3d right = m_position + edge.rotateBy(-kPointerAngle, MxGeVector3d::kZAxis);
    const std::array kite{m_position, left, m_markPoint, right, m_position};
    geometry.worldLine(kite.data(), kite.size());

    geometry.circle(m_position, m_refUnits / 10.0, MxGeVector3d::kZAxis);
    const double half = m_refUnits / 5.0;
    for (const MxGeVector3d& arm : {MxGeVector3d(half, 0.0, 0.0), MxGeVector3d(0.0, half, 0.0)}) {
        const std::array line{m_position - arm, m_position + arm};
        geometry.worldLine(line.data(), line.size());
    }
}

/// The two corners off the diagonal lie at height 0.
void MxDbPhonomark::DrawRegion(MxGiWorldDraw* draw) {
    setColor(draw, kOutlineColor);
    std::optional<MxDbObjectId> before;
    changeTraits(draw, [&before](MxGiSubEntityTraits& traits) {
        MxDbObjectId dashed;
        if (getLinetypeIdFromString(kOutlineLinetype, dashed) != Mx::eOk)
            return;
        before = traits.lineType();
        traits.setLineType(dashed);
    });
    const MxGePoint3d &low = m_extents.minPoint(), &high = m_extents.maxPoint();
    const std::array outline{low, MxGePoint3d(high.x, low.y, 0.0), high, MxGePoint3d(low.x, high.y, 0.0), low};
    draw->geometry().polyline(outline.data(), outline.size());
    if (before) // the sign is drawn in whole lines at every zoom
        draw->subEntityTraits().setLineType(*before);
    m_markPoint = high;
}

Mx::ErrorStatus MxDbPhonomark::DrawObject(MxGiWorldDraw*) {
    m_markPoint = m_extents.maxPoint();
    return Mx::eOk;
}

void MxDbPhonomark::DrawTextW(MxGiWorldDraw* draw) {
    setColor(draw, kMarkerColor);
    const MxGePoint3d position(m_markPoint.x + 0.125 * m_refUnits, m_markPoint.y + 1.3 * m_refUnits, 0.0);
    draw->geometry().text(position, MxGeVector3d::kZAxis, MxGeVector3d::kXAxis, m_refUnits / 3.0, 1.0, 0.0,
                          m_duration.text());
}

/// A plate behind the marker: light blue with an edge that stands out from any ground.
void MxDbPhonomark::DrawBack(MxGiWorldDraw* draw) {
    changeTraits(draw, [](MxGiSubEntityTraits& traits) {
        traits.setFill(true);
        traits.setTrueColor(kPlateColor);
    });
    const double r = m_refUnits;
    const MxGePoint3d& corner = m_markPoint;
    const std::array plate{corner, MxGePoint3d(corner.x + r, corner.y, corner.z),
                           MxGePoint3d(corner.x + r, corner.y + r, corner.z),
                           MxGePoint3d(corner.x, corner.y + r, corner.z)};
    draw->geometry().polygon(plate.data(), plate.size());

    setColor(draw, kPlateEdgeColor);
    // Closed by coming back to its first corner: a polyline marked as closed would be an area.
    std::array<MxGiPolylineVertex, 5> edge;
    for (std::size_t i = 0; i < edge.size(); ++i)
        edge[i].point = {plate[i % plate.size()].x, plate[i % plate.size()].y};
    draw->geometry().pline(edge.data(), edge.size(), false);
}

void MxDbPhonomark::DrawImage(MxGiWorldDraw* draw) {
    setColor(draw, kMarkerColor);
    changeTraits(draw, [](MxGiSubEntityTraits& traits) { traits.setFill(true); });
    const MarkerIcon icon(draw->geometry(), m_markPoint, m_refUnits);
    if (m_bRecord)
        icon.drawLoudspeaker();
    else
        icon.drawMicrophone();
    icon.drawFrame(m_bShowRegion);
}

/// A filled triangle that points right, centred on the marker's upper right corner.
void MxDbPhonomark::DrawLight(MxGiWorldDraw* draw) {
    if (!m_bRecord || !m_bPlaying)
        return;
    changeTraits(draw, [](MxGiSubEntityTraits& traits) {
        traits.setColor(kLightColor);
        traits.setFill(true);
    });
    const double r = m_refUnits, y = m_markPoint.y + r, x = m_markPoint.x + r;
    const std::array triangle{MxGiPolylineVertex{{x - r / 10.0, y}, 0.0, 3.0 * r / 10.0, 0.0},
                              MxGiPolylineVertex{{x + r / 10.0, y}}};
    draw->geometry().pline(triangle.data(), triangle.size(), false);
}

void MxDbPhonomark::getImageRegion(MxDbExtents& extents) const {
    extents.addPoint(m_markPoint);
    extents.addPoint({m_markPoint.x + m_refUnits, m_markPoint.y + m_refUnits, 0.0});
}

void MxDbPhonomark::subViewportDraw(MxGiViewportDraw* draw) {
    assertReadEnabled();
    MxDbEntity::subViewportDraw(draw);
}

std::uint32_t MxDbPhonomark::subViewportDrawLogicalFlags(MxGiViewportDraw*) {
    return 0;
}

std::uint32_t MxDbPhonomark::subSetAttributes(MxGiDrawableTraits* traits) {
    assertReadEnabled();
    return MxDbEntity::subSetAttributes(traits);
}

/// The marker with the duration above it; not the region of a Region note.
Mx::ErrorStatus MxDbPhonomark::subGetGeomExtents(MxDbExtents& extents) const try {
    const MxGePoint3d base = m_type == kPointNote ? m_position + markerOffset() : m_extents.maxPoint();
    const double r = calcRefUnits();
    extents.addPoint(base);
    extents.addPoint({base.x + r, base.y + 1.8 * r, 0.0});
    return Mx::eOk;
} catch (...) {
    return failed("measuring a note", Mx::eInvalidExtents);
}

void MxDbPhonomark::ShowRegion(bool show) {
    const DocumentLock lock(currentDocument(), L"PhonomarkShowRegion", kShowRegionText, false);
    const Opened<MxDbPhonomark> note(objectId(), Mx::kForWrite);
    if (!note)
        return;
    note->m_bShowRegion = show;
    note->recordGraphicsModified(true);
}

void MxDbPhonomark::doHighlight() {
    showSubject(true);
}

void MxDbPhonomark::doUnhighlight() {
    showSubject(false);
}

void MxDbPhonomark::showSubject(bool show) {
    if (m_type == kRegionNote) {
        m_bShowRegion = show;
        ShowRegion(show);
        mxdbEntUpd(objectId()); // on a locked layer it could not be opened, but is drawn anew all the same
        return;
    }
    if (m_type != kObjectNote)
        return;
    const Opened<MxDbEntity> object(m_attachId, Mx::kForRead);
    if (object && show)
        object->highlight();
    else if (object)
        object->unhighlight();
}
