// SPDX-License-Identifier: MIT
#include "merix/ui/highlights.h"

#include "tests/merix/ui/window_test.h"

using namespace merix;

namespace {

class HighlightsTest : public WindowTest {
protected:
    HighlightsTest() {
        QObject::connect(&highlights, &ui::Highlights::changed, [this] { ++changes; });
        id = addLine({0, 0, 0}, {10, 0, 0});
    }
    template <class Act> void with(Mx::OpenMode mode, Act act) {
        MxDbEntity* entity = nullptr;
        ASSERT_EQ(mxdbOpenObject(entity, id, mode), Mx::eOk);
        act(*entity);
        entity->close();
    }
    ui::Highlights highlights{*document->database()};
    MxDbObjectId id;
    int changes = 0;
};

TEST_F(HighlightsTest, AnEntityIsMeantUntilItIsNoLonger) {
    with(Mx::kForRead, [](MxDbEntity& entity) {
        entity.highlight();
        entity.highlight();
    });
    EXPECT_EQ(highlights.ids(), std::vector{id});
    EXPECT_EQ(changes, 1);
    with(Mx::kForRead, [](MxDbEntity& entity) { entity.unhighlight(); });
    EXPECT_TRUE(highlights.ids().empty());
    EXPECT_EQ(changes, 2);
}

TEST_F(HighlightsTest, WhatIsErasedIsMeantNoMoreAndNotSelected) {
    ed::Selection::instance().set({id});
    with(Mx::kForWrite, [](MxDbEntity& entity) {
        entity.highlight();
        entity.erase();
    });
    EXPECT_TRUE(highlights.ids().empty());
    EXPECT_TRUE(ed::Selection::instance().ids().empty());
}

} // namespace
