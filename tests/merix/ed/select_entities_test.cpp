// SPDX-License-Identifier: MIT
#include "merix/ed/select_entities.h"

#include "command_fixture.h"

#include "merix/db/layers.h"
#include "merix/ed/drawing_access.h"

using namespace merix;
using ed::Selection;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// Which entities are shown as meant.
class Highlights : public db::DatabaseListener {
public:
    explicit Highlights(db::DatabaseImp& database)
        : m_database(database) {
        database.addListener(this);
    }
    ~Highlights() override { m_database.removeListener(this); }
    void entityHighlighted(MxDbObject& object, bool highlighted) override {
        if (highlighted)
            ids.push_back(object.objectId());
        else
            std::erase(ids, object.objectId());
        most = std::max(most, ids.size());
    }
    std::vector<MxDbObjectId> ids;
    std::size_t most = 0;

private:
    db::DatabaseImp& m_database;
};

/// Three horizontal lines of length 20 from 10,10, 10,50 and 10,90.
class SelectEntitiesTest : public test::CommandFixture {
protected:
    SelectEntitiesTest() {
        type({"LINE", "10,10", "30,10", "", "LINE", "10,50", "30,50", "", "LINE", "10,90", "30,90", ""});
        all = entities();
        shown();
    }
    /// The places of what the prompt gave.
    std::vector<int> select(std::initializer_list<const char*> lines, int expected = 5100) {
        std::vector<QString> texts;
        for (const char* line : lines)
            texts.push_back(QString::fromUtf8(line));
        const test::Answers answers(texts);
        std::vector<MxDbObjectId> ids{{}};
        EXPECT_EQ(ed::getSelection(QStringLiteral("Select: "), ids), expected);
        EXPECT_EQ(answers.used(), texts.size());
        std::vector<int> places;
        for (const MxDbObjectId id : ids)
            places.push_back(int(std::find(all.begin(), all.end(), id) - all.begin()));
        return places;
    }
    void lock(bool locked) {
        const ed::Opened<MxDbLayerTableRecord> layer(database.layerNamed(L"0"), Mx::kForWrite);
        layer->setIsLocked(locked);
    }
    std::vector<MxDbObjectId> all;
};

} // namespace

TEST_F(SelectEntitiesTest, APointOnAnEntityAddsIt) {
    EXPECT_THAT(select({"20,10", "20,90", "20,10", ""}), ElementsAre(0, 2));
    EXPECT_THAT(shown(), HasSubstr("1 found, 2 in all\nSelect: 20,10\n0 found, 2 in all"));
}

TEST_F(SelectEntitiesTest, LeftToRightIsAWindowAndRightToLeftCrosses) {
    EXPECT_THAT(select({"0,0", "25,100", ""}, 5000), IsEmpty());
    EXPECT_THAT(select({"0,0", "40,60", ""}), ElementsAre(0, 1));
    EXPECT_THAT(select({"25,100", "15,40", ""}), ElementsAre(1, 2));
}

TEST_F(SelectEntitiesTest, TheKindOfBoxCanBeChosen) {
    EXPECT_THAT(select({"c", "15,0", "25,60", ""}), ElementsAre(0, 1));
    EXPECT_THAT(select({"w", "40,60", "0,0", ""}), ElementsAre(0, 1));
}

TEST_F(SelectEntitiesTest, AllLastAndPrevious) {
    EXPECT_THAT(select({"all", ""}), ElementsAre(0, 1, 2));
    EXPECT_THAT(select({"l", ""}), ElementsAre(2));
    EXPECT_THAT(select({"p", "20,10", ""}), ElementsAre(2, 0));
    ed::forgetSelection(document.database());
    EXPECT_THAT(select({"p", ""}, 5000), IsEmpty());
}

TEST_F(SelectEntitiesTest, RemoveAddAndUndo) {
    EXPECT_THAT(select({"all", "r", "20,50", "20,90", "add", "20,90", ""}), ElementsAre(0, 2));
    EXPECT_THAT(select({"20,10", "20,50", "u", ""}), ElementsAre(0));
    EXPECT_THAT(select({"u", "20,10", ""}), ElementsAre(0));
    EXPECT_THAT(shown(), HasSubstr("Nothing was selected yet."));
}

TEST_F(SelectEntitiesTest, AClickWithShiftTakesAway) {
    test::Answers answers({QStringLiteral("all"), QStringLiteral("r"), QStringLiteral("add"), QStringLiteral("")});
    int prompts = 0;
    answers.before = [&] {
        if (++prompts == 2)
            ed::Prompter::instance().submitPoint({20, 50, 0}, true);
    };
    std::vector<MxDbObjectId> ids;
    ASSERT_EQ(ed::getSelection(QStringLiteral("Select: "), ids), 5100);
    EXPECT_THAT(ids, ElementsAre(all[0], all[2]));
}

TEST_F(SelectEntitiesTest, AnAmbiguousOptionIsAskedForAgain) {
    EXPECT_THAT(select({"a", "al", ""}), ElementsAre(0, 1, 2));
    EXPECT_THAT(shown(), HasSubstr("That can mean All or Add."));
}

TEST_F(SelectEntitiesTest, EscGivesNothing) {
    EXPECT_THAT(select({}, -5002), IsEmpty());
    EXPECT_THAT(select({"all"}, -5002), IsEmpty());
    EXPECT_THAT(select({"all", "100,100"}, -5002), IsEmpty()) << "in the middle of a box";
    EXPECT_THAT(select({"w"}, -5002), IsEmpty());
    EXPECT_THAT(select({""}, 5000), IsEmpty());
}

TEST_F(SelectEntitiesTest, WhatIsSelectedIsHighlightedMeanwhile) {
    const Highlights highlights(database);
    select({"all", "r", "20,10", ""});
    EXPECT_EQ(highlights.most, 3U);
    EXPECT_THAT(highlights.ids, IsEmpty());
    select({"all"}, -5002);
    EXPECT_THAT(highlights.ids, IsEmpty());
}

TEST_F(SelectEntitiesTest, WhatWasSelectedBeforeIsTakenWithoutAsking) {
    Selection::instance().set({all[1]});
    EXPECT_THAT(select({}), ElementsAre(1));
    EXPECT_THAT(Selection::instance().ids(), IsEmpty());
    EXPECT_THAT(select({"20,90", ""}), ElementsAre(2)) << "once";
}

TEST_F(SelectEntitiesTest, WhatIsErasedOrOfAnotherSpaceIsLeftOut) {
    Selection::instance().set(all);
    ed::eraseEntities({all[0]});
    EXPECT_THAT(select({}), ElementsAre(1, 2));
    Selection::instance().set(all);
    database.currentSpace = database.roots.paperSpace;
    EXPECT_THAT(select({"p", ""}, 5000), IsEmpty());
    database.currentSpace = database.roots.modelSpace;
}

TEST_F(SelectEntitiesTest, WhatDoesNotShowIsNotSelectedByAll) {
    const ed::Opened<MxDbLayerTableRecord> layer(database.layerNamed(L"0"), Mx::kForWrite);
    layer->assertWriteEnabled();
    layer->off = true;
    EXPECT_THAT(select({"all", "last", ""}, 5000), IsEmpty());
}

TEST_F(SelectEntitiesTest, LockedOnesAreLeftOutOfEditing) {
    lock(true);
    std::vector<MxDbObjectId> ids;
    {
        const test::Answers answers({QStringLiteral("all"), QStringLiteral("")});
        EXPECT_FALSE(ed::getEditableSelection(ids));
    }
    EXPECT_THAT(shown(), HasSubstr("3 were on a locked layer."));
    const test::Answers answers({QStringLiteral("20,10"), QStringLiteral("")});
    EXPECT_FALSE(ed::getEditableSelection(ids));
    EXPECT_THAT(shown(), HasSubstr("1 was on a locked layer."));
    EXPECT_THAT(select({"all", ""}), ElementsAre(0, 1, 2)) << "they can be looked at and copied";
    lock(false);
}

TEST_F(SelectEntitiesTest, TheLastCrossingBoxIsKept) {
    std::vector<MxDbObjectId> ids;
    std::optional<MxDbExtents> box;
    const test::Answers answers({QStringLiteral("40,60"), QStringLiteral("20,0"), QStringLiteral("")});
    ASSERT_TRUE(ed::getEditableSelection(ids, box));
    ASSERT_TRUE(box);
    EXPECT_EQ(box->minPoint(), MxGePoint3d(20, 0, 0));
    EXPECT_EQ(box->maxPoint(), MxGePoint3d(40, 60, 0));
}

TEST_F(SelectEntitiesTest, WhatWasHiddenSinceItWasSelectedIsLeftOut) {
    select({"all", ""});
    const auto hide = [&](bool hidden) { ASSERT_EQ(db::setLayerOff(database.layerNamed(L"0"), hidden), Mx::eOk); };
    hide(true);
    EXPECT_THAT(select({"p", ""}, 5000), IsEmpty());
    Selection::instance().set(all);
    EXPECT_THAT(select({""}, 5000), IsEmpty());
    hide(false);
}

TEST_F(SelectEntitiesTest, ALargeSelectionIsTakenAndReducedInNoTime) {
    constexpr std::size_t kMany = 60000; // squared, it would run for minutes
    database.undo.begin(L"Many");
    for (std::size_t i = 0; i < kMany; ++i)
        ed::addEntity(std::make_unique<db::Line>());
    database.undo.end();
    all = entities();
    std::vector<MxDbObjectId> ids;
    {
        const test::Answers answers({QStringLiteral("all"), QStringLiteral("r"), QStringLiteral("all"),
                                     QStringLiteral("add"), QStringLiteral("all"), QStringLiteral("")});
        ASSERT_EQ(ed::getSelection(QStringLiteral("Select: "), ids), 5100);
    }
    EXPECT_EQ(ids, all);
    Selection::instance().set(all);
    Selection::instance().add(all);
    EXPECT_EQ(Selection::instance().ids(), all);
    Selection::instance().remove({all.begin() + 1, all.end()});
    EXPECT_TRUE(Selection::instance().contains(all.front()));
    EXPECT_FALSE(Selection::instance().contains(all.back()));
}
