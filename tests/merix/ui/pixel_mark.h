// SPDX-License-Identifier: MIT
// A module's entity that is as large on every screen: a square of 32 pixels, up and to the right of its place.
#pragma once

#include "host/db/entity.h"
#include "host/ed/input.h"
#include "host/gi/world_draw.h"

class PixelMark : public MxDbEntity {
public:
    static constexpr int kPixels = 32;
    static MxRxClass* desc() {
        static MxRxClass* const descriptor =
            newMxRxClass(L"PixelMark", L"MxDbEntity", 1, 0, 0, nullptr, L"PIXELMARK", L"Pixel mark test");
        return descriptor;
    }
    MxRxClass* isA() const override { return desc(); }
    bool subWorldDraw(MxGiWorldDraw* draw) override {
        assertReadEnabled();
        ++drawings;
        const double side = pixels();
        const MxGePoint3d ring[] = {place, place + MxGeVector3d{side, 0, 0}, place + MxGeVector3d{side, side, 0},
                                    place + MxGeVector3d{0, side, 0}, place};
        draw->subEntityTraits().setColor(3);
        draw->geometry().worldLine(ring, 5);
        return true;
    }
    Mx::ErrorStatus subGetGeomExtents(MxDbExtents& extents) const override {
        extents.addPoint(place);
        extents.addPoint(place + MxGeVector3d{pixels(), pixels(), 0});
        return Mx::eOk;
    }
    MxGePoint3d place;
    int drawings = 0;

private:
    static double pixels() {
        MxGePoint3d first, second;
        return mxedCoordFromPixelToWorld(0, 0, 0, first) && mxedCoordFromPixelToWorld(0, kPixels, 0, second)
                   ? second.x - first.x
                   : 10.0;
    }
};
