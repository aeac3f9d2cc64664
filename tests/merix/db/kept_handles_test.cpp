// SPDX-License-Identifier: MIT
#include "host/db/kept_handles.h"

#include "tests/merix/db/drawing.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(KeptHandles, StayWithTheirDrawingUnderTheirKeyInTheirOrder) {
    Drawing one, other;
    mxdbKeepHandles(one.database, L"first", {MxDbHandle(7), MxDbHandle(3)});
    mxdbKeepHandles(one.database, L"second", {MxDbHandle(9)});
    for (int asked = 0; asked < 2; ++asked) {
        EXPECT_THAT(mxdbKeptHandles(one.database, L"first"), ElementsAre(MxDbHandle(7), MxDbHandle(3)));
        EXPECT_THAT(mxdbKeptHandles(one.database, L"second"), ElementsAre(MxDbHandle(9)));
    }
    EXPECT_THAT(mxdbKeptHandles(one.database, L"third"), IsEmpty());
    EXPECT_THAT(mxdbKeptHandles(other.database, L"first"), IsEmpty());
}

TEST(KeptHandles, AreReplacedAndLeaveNothingBehindWhenThereAreNone) {
    Drawing drawing;
    mxdbKeepHandles(drawing.database, L"key", {MxDbHandle(7), MxDbHandle(3)});
    mxdbKeepHandles(drawing.database, L"key", {MxDbHandle(5)});
    EXPECT_THAT(mxdbKeptHandles(drawing.database, L"key"), ElementsAre(MxDbHandle(5)));
    mxdbKeepHandles(drawing.database, L"key", {});
    EXPECT_THAT(mxdbKeptHandles(drawing.database, L"key"), IsEmpty());
    EXPECT_THAT(drawing.imp.keptHandles, IsEmpty());
}

TEST(KeptHandles, AreNoChangeOfTheDrawing) {
    Drawing drawing;
    drawing.imp.clearChanged();
    const std::size_t units = drawing.imp.undo.undoUnits().size();
    mxdbKeepHandles(drawing.database, L"key", {MxDbHandle(0xABCDEF)});
    EXPECT_FALSE(drawing.imp.isChanged());
    EXPECT_EQ(drawing.imp.undo.undoUnits().size(), units);
    EXPECT_EQ(drawing.imp.find(MxDbHandle(0xABCDEF)), nullptr) << "no handle is reserved";
}
