// SPDX-License-Identifier: MIT
#include "merix/db/entity_traits.h"

#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace merix::db;

class EntityTraitsTest : public testing::Test {
protected:
    template <class Set> Mx::ErrorStatus set(Set how) {
        MxDbEntity* entity = nullptr;
        mxdbOpenObject(entity, line, Mx::kForWrite);
        const auto status = how(*entity);
        entity->close();
        return status;
    }
    const EntityTraits& own() { return traits(drawing.at<Line>(line)); }

    Drawing drawing;
    MxDbObjectId line = drawing.addLine(), walls = drawing.addLayer(L"Walls");
};

TEST_F(EntityTraitsTest, EveryAttributeIsSetAndUndone) {
    const MxDbObjectId linetype = drawing.imp.linetypeNamed(L"Continuous"), before = own().layer;
    drawing.imp.undo.clear();
    EXPECT_EQ(set([&](MxDbEntity& e) { return setLayer(e, walls); }), Mx::eOk);
    EXPECT_EQ(set([](MxDbEntity& e) { return setTrueColor(e, 0x102030); }), Mx::eOk);
    EXPECT_TRUE(own().hasTrueColor);
    EXPECT_EQ(set([](MxDbEntity& e) { return setColor(e, 0); }), Mx::eOk);
    EXPECT_EQ(set([&](MxDbEntity& e) { return setLinetype(e, linetype); }), Mx::eOk);
    EXPECT_EQ(set([](MxDbEntity& e) { return setLineWeight(e, 35); }), Mx::eOk);
    EXPECT_EQ(set([](MxDbEntity& e) { return setLinetypeScale(e, 0.5); }), Mx::eOk);
    EXPECT_EQ(set([](MxDbEntity& e) { return setInvisible(e, true); }), Mx::eOk);
    EXPECT_EQ(own().layer, walls);
    EXPECT_EQ(own().color, 0);
    EXPECT_FALSE(own().hasTrueColor);
    EXPECT_EQ(own().linetype, linetype);
    EXPECT_EQ(own().lineWeight, 35);
    EXPECT_EQ(own().linetypeScale, 0.5);
    EXPECT_TRUE(own().invisible);
    EXPECT_EQ(drawing.imp.undo.undoUnits().size(), 7U);
    while (drawing.imp.undo.undo()) {
    }
    EXPECT_EQ(own().layer, before);
    EXPECT_EQ(own().color, 256);
    EXPECT_FALSE(own().hasTrueColor);
    EXPECT_TRUE(own().linetype.isNull());
    EXPECT_EQ(own().lineWeight, -1);
    EXPECT_EQ(own().linetypeScale, 1.0);
    EXPECT_FALSE(own().invisible);
}

TEST_F(EntityTraitsTest, ValuesThatMakeNoSenseAreRefusedAndAreNoStep) {
    Drawing other;
    drawing.imp.undo.clear();
    for (const int color : {-1, 257})
        EXPECT_EQ(set([=](MxDbEntity& e) { return setColor(e, color); }), Mx::eInvalidInput);
    EXPECT_EQ(set([](MxDbEntity& e) { return setTrueColor(e, 0x1000000); }), Mx::eInvalidInput);
    for (const int weight : {-4, 1, 212})
        EXPECT_EQ(set([=](MxDbEntity& e) { return setLineWeight(e, weight); }), Mx::eInvalidInput);
    for (const double scale : {0.0, -1.0, std::numeric_limits<double>::infinity()})
        EXPECT_EQ(set([=](MxDbEntity& e) { return setLinetypeScale(e, scale); }), Mx::eInvalidInput);
    EXPECT_EQ(set([&](MxDbEntity& e) { return setLayer(e, line); }), Mx::eWrongClass);
    EXPECT_EQ(set([](MxDbEntity& e) { return setLayer(e, {}); }), Mx::eWrongClass);
    EXPECT_EQ(set([&](MxDbEntity& e) { return setLayer(e, other.imp.layerNamed(L"0")); }), Mx::eWrongDatabase);
    EXPECT_EQ(set([&](MxDbEntity& e) { return setLinetype(e, walls); }), Mx::eWrongClass);
    EXPECT_FALSE(drawing.imp.undo.canUndo());
}

} // namespace
