// SPDX-License-Identifier: MIT
#include "host/ed/input.h"

#include "answers.h"
#include "merix/db/database_imp.h"
#include "merix/db/entities.h"
#include "merix/ed/active_view.h"
#include "merix/ed/console.h"

#include <gtest/gtest.h>

#include <string>

using namespace merix::ed;

namespace {

QString printed() {
    const QString text = Console::instance().unread();
    Console::instance().markRead();
    return text;
}

struct View : ActiveView {
    merix::ge::ViewTransform shown{{100, 50}, 0.5, 200, 100};
    std::vector<MxDbObjectId> there; ///< what can be picked at (3, 4)
    View() { setActiveView(this); }
    ~View() override { setActiveView(nullptr); }
    const merix::ge::ViewTransform& transform() const override { return shown; }
    void setTransform(const merix::ge::ViewTransform& transform) override { shown = transform; }
    std::optional<merix::ge::ViewTransform> showingAll() override { return {}; }
    std::vector<MxDbObjectId> under(const MxGePoint3d& world) override {
        return world == MxGePoint3d(3, 4, 0) ? there : std::vector<MxDbObjectId>();
    }
    std::vector<MxDbObjectId> inBox(const MxDbExtents&, bool) override { return {}; }
    void regenerate() override {}
    void update() override {}
    void drawEntity(MxDbObjectId, bool) override {}
};

class InputTest : public testing::Test {
protected:
    InputTest() { Console::instance().markRead(); }
};

} // namespace

TEST_F(InputTest, PrintingTakesWideTextForS) {
    mxutPrintf(L"\nCurrent: type = %s, speaker = %s", L"Point", L"Zoë \u4E2D");
    EXPECT_EQ(printed(), QString::fromUtf8("\nCurrent: type = Point, speaker = Zoë 中"));
}

TEST_F(InputTest, PrintingKnowsTheOtherConversions) {
    mxutPrintf(L"\n%d|%5.1f|%-4s|%.2s|%c|%hs|%ls|%%|%x", 7, 2.5, L"ab", L"xyz", L'q', "narrow", L"wide", 255U);
    EXPECT_EQ(printed(), QStringLiteral("\n7|  2.5|ab  |xy|q|narrow|wide|%|ff"));
}

TEST_F(InputTest, PrintingHasNoLimitOfLength) {
    const std::wstring text(100000, L'x');
    mxutPrintf(L"\n%s.", text.c_str());
    EXPECT_EQ(printed().size(), 100002);
}

TEST_F(InputTest, TextPrintedAsItStandsKeepsItsPercentSigns) {
    mxutPrintText(L"\n100 % %s");
    EXPECT_EQ(printed(), QStringLiteral("\n100 % %s"));
    mxutPrintText(nullptr);
    EXPECT_EQ(printed(), QString());
}

TEST_F(InputTest, WithoutAViewThereAreNoPixels) {
    MxGePoint3d world(1, 2, 3);
    int x = 5, y = 6;
    EXPECT_FALSE(mxedCoordFromPixelToWorld(0, 1, 1, world));
    EXPECT_EQ(world, MxGePoint3d(1, 2, 3));
    EXPECT_FALSE(mxedCoordFromWorldToPixel(0, world, x, y));
    EXPECT_EQ(x, 5);
    EXPECT_EQ(mxedRedraw({}, 1), -5001);
}

TEST_F(InputTest, PixelsOfTheActiveViewAreViewportZero) {
    const View view;
    MxGePoint3d world;
    ASSERT_TRUE(mxedCoordFromPixelToWorld(0, 0, 0, world));
    EXPECT_EQ(world, MxGePoint3d(50, 75, 0));
    int x = 0, y = 0;
    ASSERT_TRUE(mxedCoordFromWorldToPixel(0, {100, 50, 9}, x, y));
    EXPECT_EQ(x, 100);
    EXPECT_EQ(y, 50);
    EXPECT_FALSE(mxedCoordFromPixelToWorld(1, 0, 0, world));
}

TEST_F(InputTest, PixelsAreThoseOfTheWindows) {
    View view;
    view.shown.pixelRatio = 2.0;
    MxGePoint3d world;
    ASSERT_TRUE(mxedCoordFromPixelToWorld(0, 10, 5, world));
    EXPECT_EQ(world, MxGePoint3d(60, 70, 0)) << "the twentieth and the tenth of the screen's";
    int x = 0, y = 0;
    ASSERT_TRUE(mxedCoordFromWorldToPixel(0, {60, 70, 0}, x, y));
    EXPECT_EQ(x, 10);
    EXPECT_EQ(y, 5);
}

TEST_F(InputTest, WhileGraphicsAreMadeForAViewItIsViewportZero) {
    const View view;
    const merix::ge::ViewTransform other{{0, 0}, 1.0, 20, 20};
    MxGePoint3d world;
    {
        const GraphicsFor graphics(other);
        ASSERT_TRUE(mxedCoordFromPixelToWorld(0, 0, 0, world));
        EXPECT_EQ(world, MxGePoint3d(-10, 10, 0));
        {
            const GraphicsFor inner(view.shown);
            ASSERT_TRUE(mxedCoordFromPixelToWorld(0, 0, 0, world));
            EXPECT_EQ(world, MxGePoint3d(50, 75, 0));
        }
        ASSERT_TRUE(mxedCoordFromPixelToWorld(0, 0, 0, world));
        EXPECT_EQ(world, MxGePoint3d(-10, 10, 0));
    }
    ASSERT_TRUE(mxedCoordFromPixelToWorld(0, 0, 0, world));
    EXPECT_EQ(world, MxGePoint3d(50, 75, 0));
}

TEST_F(InputTest, EntitiesOfTheClassPassedOverArePickedWhereNothingElseIs) {
    MxDbDatabase database;
    database.imp().createDefaults();
    const auto add = [&](MxDbEntity* entity) {
        MxDbBlockTableRecord* space = nullptr;
        EXPECT_EQ(mxdbOpenObject(space, database.currentSpaceId(), Mx::kForWrite), Mx::eOk);
        MxDbObjectId id;
        EXPECT_EQ(space->appendMxDbEntity(id, entity), Mx::eOk);
        entity->close();
        space->close();
        return id;
    };
    const MxDbObjectId line = add(new merix::db::Line), circle = add(new merix::db::Circle),
                       above = add(new merix::db::Line);
    View view;
    const auto picked = [&](std::vector<MxDbObjectId> there, const MxRxClass* passedOver) {
        view.there = std::move(there);
        const merix::test::Answers answers({QStringLiteral("3,4")});
        MxDbObjectId entity;
        MxGePoint3d point;
        EXPECT_EQ(mxedEntSel(L"", entity, point, passedOver), 5100);
        return entity;
    };
    EXPECT_EQ(picked({above, line, circle}, nullptr), above);
    EXPECT_EQ(picked({above, line, circle}, merix::db::Line::desc()), circle);
    EXPECT_EQ(picked({above, line, circle}, merix::db::Circle::desc()), above);
    EXPECT_EQ(picked({above, line}, merix::db::Line::desc()), above) << "nothing else is there";
    EXPECT_EQ(picked({above, line, circle}, MxDbEntity::desc()), above) << "what is derived is of the class";
}

TEST_F(InputTest, AnEntityIsWhatTheViewHasAtThePoint) {
    MxDbDatabase database;
    View view;
    MxDbObjectId top, below;
    ASSERT_EQ(database.getMxDbObjectId(top, true, MxDbHandle(0xAB)), Mx::eOk);
    ASSERT_EQ(database.getMxDbObjectId(below, true, MxDbHandle(0xAC)), Mx::eOk);
    view.there = {top, below};
    const merix::test::Answers answers({QStringLiteral("3,4"), QStringLiteral("9,9")});
    MxDbObjectId entity;
    MxGePoint3d point;
    EXPECT_EQ(mxedEntSel(L"", entity, point), 5100);
    EXPECT_EQ(entity, top);
    EXPECT_EQ(point, MxGePoint3d(3, 4, 0));
    EXPECT_EQ(mxedEntSel(L"", entity, point), -5001) << "nothing is there";
    EXPECT_TRUE(entity.isNull());
}

TEST_F(InputTest, PointsFarAwayHavePixelNumbersThatAnIntHolds) {
    const View view;
    int x = 0, y = 0;
    ASSERT_TRUE(mxedCoordFromWorldToPixel(0, {1e300, -1e300, 0}, x, y));
    EXPECT_GT(x, 1000000);
    EXPECT_GT(y, 1000000);
}

TEST_F(InputTest, UserCoordinatesAreWorldCoordinates) {
    MxGePoint3d world;
    EXPECT_TRUE(mxdbUcs2Wcs({1, 2, 3}, world, false));
    EXPECT_EQ(world, MxGePoint3d(1, 2, 3));
}

TEST_F(InputTest, NothingIsUpdatedBehindANullId) {
    EXPECT_EQ(mxdbEntUpd({}), Mx::eNullObjectId);
}
