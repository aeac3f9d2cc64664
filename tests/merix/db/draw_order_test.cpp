// SPDX-License-Identifier: MIT
#include "merix/db/draw_order.h"

#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

namespace {

using namespace merix::db;

TEST(DrawOrder, ATableThatSortsAnotherBlockIsNotHonoured) {
    Drawing drawing;
    const MxDbObjectId a = drawing.addLine(), b = drawing.addLine();
    MxDbBlockTableRecord* space = nullptr;
    mxdbOpenObject(space, drawing.imp.roots.modelSpace, Mx::kForWrite);
    MxDbSortentsTable* table = nullptr;
    ASSERT_EQ(space->getSortentsTable(table, Mx::kForWrite, true), Mx::eOk);
    table->moveToBottom({b});
    table->close();
    space->close();
    std::vector<MxDbObjectId> sorted;
    EXPECT_EQ(drawOrder(*space, sorted), (std::vector<MxDbObjectId>{b, a}));
    // A damaged file may hang the table of one block on another.
    MxDbBlockTableRecord* paper = drawing.imp.block(drawing.imp.roots.paperSpace);
    paper->data().extensionDictionary = space->data().extensionDictionary;
    sorted.clear();
    EXPECT_TRUE(drawOrder(*paper, sorted).empty());
}

} // namespace
