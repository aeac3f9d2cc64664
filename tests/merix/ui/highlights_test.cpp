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
    EXPECT_EQ(highlights.ids(), std::set{id});
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

TEST_F(HighlightsTest, ManyEntitiesAreSelectedAndMarkedWithoutSearchingThemOneByOne) {
    std::vector<MxDbObjectId> many;
    {
        MxDbBlockTableRecord* space = nullptr;
        ASSERT_EQ(mxdbOpenObject(space, document->database()->currentSpaceId(), Mx::kForWrite), Mx::eOk);
        for (int i = 0; i < 100'000; ++i) {
            auto* line = new db::Line;
            db::traits(*line).layer = document->database()->imp().layerNamed(L"0");
            MxDbObjectId added;
            ASSERT_EQ(space->appendMxDbEntity(added, line), Mx::eOk);
            line->highlight();
            line->close();
            many.push_back(added);
        }
        space->close();
    }
    auto& selection = ed::Selection::instance();
    selection.set(many);
    selection.add(many);
    EXPECT_EQ(selection.ids(), many);
    EXPECT_EQ(highlights.ids().size(), many.size());
    EXPECT_TRUE(std::all_of(many.begin(), many.end(), [&](MxDbObjectId each) { return selection.contains(each); }));
    selection.remove(many);
    EXPECT_TRUE(selection.ids().empty());
}

} // namespace
