// SPDX-License-Identifier: MIT
#include "host/db/id_mapping.h"
#include "host/ge/matrix.h"
#include "phonomark/entity/phonomark.h"
#include "tests/phonomark/module_fixture.h"

#include <numbers>

namespace {

const MxDbExtents kBox({1, 2, 0}, {30, 40, 0});
constexpr int kTypes[] = {kPointNote, kRegionNote, kObjectNote, kReplyNote};

class NoteGeometryTest : public ModuleTest {
protected:
    /// The note open for write, and changed: closed by the caller.
    MxDbPhonomark& write(MxDbObjectId id) {
        MxDbPhonomark* open = nullptr;
        EXPECT_EQ(mxdbOpenObject(open, id, Mx::kForWrite), Mx::eOk);
        return *open;
    }
    MxDbObjectId addNoteAt(int type) {
        const MxDbObjectId id = addNote(type, {10, 20, 5});
        note(id).setExtents(kBox);
        return id;
    }
};

} // namespace

TEST_F(NoteGeometryTest, OnlyAPointNoteIsMoved) {
    const MxGeMatrix3d maps[] = {MxGeMatrix3d::translation({1, 2, 3}), MxGeMatrix3d::rotation(std::numbers::pi / 2),
                                 MxGeMatrix3d::scaling(2, 2, 2)};
    const MxGePoint3d moved[] = {{11, 22, 8}, {-20, 10, 5}, {20, 40, 10}};
    for (std::size_t i = 0; i < 3; ++i) {
        for (const int type : kTypes) {
            const MxDbObjectId id = addNoteAt(type);
            MxDbPhonomark& open = write(id);
            EXPECT_EQ(open.transformBy(maps[i]), Mx::eOk);
            open.close();
            const MxGePoint3d expected = type == kPointNote ? moved[i] : MxGePoint3d(10, 20, 5);
            EXPECT_NEAR(note(id).position().x, expected.x, 1e-9) << type;
            EXPECT_NEAR(note(id).position().y, expected.y, 1e-9) << type;
            EXPECT_NEAR(note(id).position().z, expected.z, 1e-9) << type;
            EXPECT_EQ(note(id).extents().minPoint(), kBox.minPoint());
            EXPECT_EQ(note(id).extents().maxPoint(), kBox.maxPoint());
        }
    }
}

TEST_F(NoteGeometryTest, AMoveCanBeTakenBack) {
    const MxDbObjectId id = addNoteAt(kPointNote);
    MxDbPhonomark& open = write(id);
    open.transformBy(MxGeMatrix3d::translation({1, 2, 3}));
    open.cancel();
    EXPECT_EQ(note(id).position(), MxGePoint3d(10, 20, 5));
    MxDbPhonomark& again = write(id);
    again.moveGripPointsAt({0}, {1, 2, 3});
    again.cancel();
    EXPECT_EQ(note(id).position(), MxGePoint3d(10, 20, 5));
}

TEST_F(NoteGeometryTest, ANoteOpenForReadIsNotMoved) {
    for (const int type : kTypes) {
        MxDbPhonomark* open = nullptr;
        ASSERT_EQ(mxdbOpenObject(open, addNoteAt(type), Mx::kForRead), Mx::eOk);
        EXPECT_DEATH(open->transformBy(MxGeMatrix3d::translation({1, 2, 3})), "");
        open->close();
    }
}

TEST_F(NoteGeometryTest, APointNoteHasOneGripAndTheOthersNone) {
    for (const int type : kTypes) {
        MxDbPhonomark* open = nullptr;
        ASSERT_EQ(mxdbOpenObject(open, addNoteAt(type), Mx::kForRead), Mx::eOk);
        std::vector<MxGePoint3d> grips{{9, 9, 9}};
        EXPECT_EQ(open->getGripPoints(grips), Mx::eOk);
        ASSERT_EQ(grips.size(), type == kPointNote ? 2u : 1u) << "added to what is there";
        EXPECT_EQ(grips.back(), type == kPointNote ? MxGePoint3d(10, 20, 5) : MxGePoint3d(9, 9, 9));
        open->close();
    }
}

TEST_F(NoteGeometryTest, TheGripMovesThePointByEveryIndexZero) {
    for (const int type : kTypes) {
        const MxDbObjectId id = addNoteAt(type);
        MxDbPhonomark& open = write(id);
        EXPECT_EQ(open.moveGripPointsAt({}, {1, 2, 3}), Mx::eOk);
        EXPECT_EQ(open.moveGripPointsAt({1, -1, 7}, {1, 2, 3}), Mx::eOk);
        EXPECT_EQ(open.position(), MxGePoint3d(10, 20, 5));
        EXPECT_EQ(open.moveGripPointsAt({0, 1, 0}, {1, 2, 3}), Mx::eOk);
        EXPECT_EQ(open.position(), type == kPointNote ? MxGePoint3d(12, 24, 11) : MxGePoint3d(10, 20, 5));
        open.close();
    }
}

TEST_F(NoteGeometryTest, GripsWithDataAndSnapPointsAreTheBasesAffair) {
    struct : MxDbEntity {
    } plain;
    MxDbPhonomark fresh;
    std::vector<MxDbGripData> grips;
    EXPECT_EQ(fresh.subGetGripPoints(grips, 1.0, 5, MxGeVector3d::kZAxis, 0),
              plain.subGetGripPoints(grips, 1.0, 5, MxGeVector3d::kZAxis, 0));
    EXPECT_TRUE(grips.empty());
    const std::vector<void*> moved;
    EXPECT_EQ(fresh.subMoveGripPointsAt(moved, {1, 2, 3}, 0), plain.subMoveGripPointsAt(moved, {1, 2, 3}, 0));
    std::vector<MxGePoint3d> points;
    EXPECT_EQ(fresh.subGetOsnapPoints(MxDbOsnapMode::kNode, {}, {}, points),
              plain.subGetOsnapPoints(MxDbOsnapMode::kNode, {}, {}, points));
    EXPECT_EQ(fresh.subGetOsnapPoints(MxDbOsnapMode::kNode, {}, {}, points, MxGeMatrix3d()),
              plain.subGetOsnapPoints(MxDbOsnapMode::kNode, {}, {}, points, MxGeMatrix3d()));
    EXPECT_TRUE(points.empty());
    const MxDbPhonomark& closed = note(addNote());
    EXPECT_DEATH(closed.subGetOsnapPoints(MxDbOsnapMode::kNode, {}, {}, points), "");
    EXPECT_DEATH(closed.subGetOsnapPoints(MxDbOsnapMode::kNode, {}, {}, points, MxGeMatrix3d()), "");
}

TEST_F(NoteGeometryTest, ANoteIsNeverCopied) {
    MxDbPhonomark* open = nullptr;
    ASSERT_EQ(mxdbOpenObject(open, addNote(), Mx::kForRead), Mx::eOk);
    MxDbIdMapping map;
    MxDbObject* clone = open;
    EXPECT_EQ(open->deepClone(nullptr, clone, map), Mx::eOk);
    EXPECT_EQ(clone, nullptr);
    clone = open;
    EXPECT_EQ(open->wblockClone(nullptr, clone, map), Mx::eOk);
    EXPECT_EQ(clone, nullptr);
    for (const auto function : {&MxDbPhonomark::subDeepClone, &MxDbPhonomark::subWblockClone}) {
        clone = open;
        EXPECT_EQ((open->*function)(nullptr, clone, map, true), Mx::eOk);
        EXPECT_EQ(clone, nullptr) << "the note says so itself";
    }
    EXPECT_TRUE(map.clones().empty());
    open->close();
}
