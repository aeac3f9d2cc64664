// SPDX-License-Identifier: MIT
#include "host/db/dictionary.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

namespace {

using merix::db::Line;

/// Counts what it is told of.
class Watcher final : public MxDbXrecord {
public:
    void modified(const MxDbObject* object) override {
        object->assertReadEnabled();
        ++told;
    }
    int told = 0;
};

class PersistentReactor : public testing::Test {
protected:
    /// Stores `object` in the named objects dictionary.
    MxDbObjectId store(MxDbObject* object, const wchar_t* key) {
        MxDbDictionary* root = nullptr;
        drawing.database.getNamedObjectsDictionary(root, Mx::kForWrite);
        MxDbObjectId id;
        root->setAt(key, object, id);
        object->close();
        root->close();
        return id;
    }
    Mx::ErrorStatus add(MxDbObjectId to, MxDbObjectId id) {
        Line* open = nullptr;
        mxdbOpenObject(open, to, Mx::kForWrite);
        const auto status = open->addPersistentReactor(id);
        open->close();
        return status;
    }
    Mx::ErrorStatus remove(MxDbObjectId from, MxDbObjectId id) {
        Line* open = nullptr;
        mxdbOpenObject(open, from, Mx::kForWrite);
        const auto status = open->removePersistentReactor(id);
        open->close();
        return status;
    }
    Mx::ErrorStatus release(MxDbObjectId of) {
        Line* open = nullptr;
        mxdbOpenObject(open, of, Mx::kForWrite);
        const auto status = open->releaseExtensionDictionary();
        open->close();
        return status;
    }
    std::size_t listed(MxDbObjectId on) { return drawing.at<Line>(on).reactors().size(); }

    Drawing drawing;
    Watcher* watcher = new Watcher;
    MxDbObjectId reactor = store(watcher, L"WATCHER");
    MxDbObjectId line = drawing.addLine();
};

} // namespace

TEST_F(PersistentReactor, IsToldOfChangesAsLongAsItIsListed) {
    ASSERT_EQ(add(line, reactor), Mx::eOk);
    watcher->told = 0;
    drawing.moveLine(line, {2, 0, 0});
    EXPECT_EQ(watcher->told, 1);
    ASSERT_EQ(remove(line, reactor), Mx::eOk);
    watcher->told = 0;
    drawing.moveLine(line, {3, 0, 0});
    EXPECT_EQ(watcher->told, 0);
}

TEST_F(PersistentReactor, AChainWithoutEndIsToldAsFarAsTheStackGoes) {
    /// Changes itself when it is told, so that its own reactors are told too.
    class Passer final : public MxDbXrecord {
    public:
        void modified(const MxDbObject*) override {
            ++told;
            MxDbObject* self = this;
            if (self->upgradeOpen() == Mx::eOk)
                self->assertWriteEnabled();
        }
        int told = 0;
    };
    std::vector<Passer*> chain;
    MxDbObjectId before;
    for (int i = 0; i < 20000; ++i) {
        chain.push_back(new Passer);
        const MxDbObjectId id(drawing.imp.adopt(chain.back(), {}, {}));
        if (!before.isNull())
            chain.back()->data().reactors.push_back({nullptr, before});
        before = id;
    }
    add(line, before);
    for (Passer* passer : chain)
        passer->told = 0;
    drawing.moveLine(line, {2, 0, 0});
    EXPECT_EQ(chain.back()->told, 1);
    EXPECT_EQ(chain[chain.size() - 100]->told, 1);
    EXPECT_EQ(chain.front()->told, 0);
    drawing.moveLine(line, {3, 0, 0});
    EXPECT_EQ(chain.back()->told, 2) << "the end of one chain is not the end of the next";
}

TEST_F(PersistentReactor, ThoseWhoAreStillListedAreToldWhenOthersLeave) {
    /// Leaves the list with the one behind it when it is told.
    class Leaver final : public MxDbXrecord {
    public:
        void modified(const MxDbObject* object) override {
            auto& list = object->data().reactors;
            std::erase(list, MxDbReactorEntry{nullptr, objectId()});
            std::erase(list, MxDbReactorEntry{nullptr, other});
        }
        MxDbObjectId other;
    };
    auto* leaver = new Leaver;
    auto* last = new Watcher;
    const MxDbObjectId leaving(drawing.imp.adopt(leaver, {}, {}));
    leaver->other = reactor;
    add(line, leaving);
    add(line, reactor);
    add(line, MxDbObjectId(drawing.imp.adopt(last, {}, {})));
    watcher->told = last->told = 0;
    // The list changed already when the first was added: it is put in order again.
    auto& list = drawing.at<Line>(line).data().reactors;
    list = {{nullptr, leaving}, {nullptr, reactor}, {nullptr, last->objectId()}};
    drawing.moveLine(line, {2, 0, 0});
    EXPECT_EQ(watcher->told, 0);
    EXPECT_EQ(last->told, 1);
    EXPECT_EQ(listed(line), 1U);
}

TEST_F(PersistentReactor, IsListedOnce) {
    EXPECT_EQ(add(line, reactor), Mx::eOk);
    EXPECT_EQ(add(line, reactor), Mx::eOk);
    EXPECT_EQ(listed(line), 1U);
}

TEST_F(PersistentReactor, AddingAndRemovingFollowUndo) {
    drawing.imp.undo.clear();
    add(line, reactor);
    ASSERT_TRUE(drawing.imp.undo.undo());
    EXPECT_EQ(listed(line), 0U);
    ASSERT_TRUE(drawing.imp.undo.redo());
    EXPECT_EQ(listed(line), 1U);
    remove(line, reactor);
    EXPECT_EQ(listed(line), 0U);
    ASSERT_TRUE(drawing.imp.undo.undo());
    ASSERT_EQ(listed(line), 1U);
    EXPECT_EQ(drawing.at<Line>(line).reactors()[0].persistent, reactor);
}

TEST_F(PersistentReactor, IsToldOfChangesThatAreTakenBackAndDoneAgain) {
    add(line, reactor);
    drawing.moveLine(line, {2, 0, 0});
    watcher->told = 0;
    ASSERT_TRUE(drawing.imp.undo.undo());
    EXPECT_EQ(watcher->told, 1);
    ASSERT_TRUE(drawing.imp.undo.redo());
    EXPECT_EQ(watcher->told, 2);
}

TEST_F(PersistentReactor, WhatChangesNothingLeavesNothingToUndo) {
    add(line, reactor);
    drawing.imp.undo.clear();
    add(line, reactor);
    remove(line, drawing.addLine());
    drawing.imp.undo.undo(); // the line just added
    EXPECT_FALSE(drawing.imp.undo.canUndo());
}

TEST_F(PersistentReactor, TheListCanBeChangedInAnOpenForWriteOnly) {
    Line* open = nullptr;
    ASSERT_EQ(mxdbOpenObject(open, line, Mx::kForRead), Mx::eOk);
    EXPECT_EQ(open->addPersistentReactor(reactor), Mx::eNotOpen);
    EXPECT_EQ(open->removePersistentReactor(reactor), Mx::eNotOpen);
    EXPECT_EQ(open->releaseExtensionDictionary(), Mx::eNotOpen);
    open->close();
}

TEST_F(PersistentReactor, OnlyObjectsOfTheSameDrawingAreListed) {
    Drawing other;
    EXPECT_EQ(add(line, other.addLine()), Mx::eWrongDatabase);
    EXPECT_EQ(add(line, {}), Mx::eNullObjectId);
    EXPECT_EQ(remove(line, {}), Mx::eNullObjectId);
    EXPECT_EQ(remove(line, reactor), Mx::eKeyNotFound);
    EXPECT_EQ(listed(line), 0U);
}

TEST_F(PersistentReactor, AnErasedOneIsNotTold) {
    add(line, reactor);
    drawing.erase(reactor);
    watcher->told = 0;
    drawing.moveLine(line, {2, 0, 0});
    EXPECT_EQ(watcher->told, 0);
}

TEST_F(PersistentReactor, AnExtensionDictionaryIsReleasedOnceItIsEmptyAndComesBackWithUndo) {
    EXPECT_EQ(release(line), Mx::eKeyNotFound);
    Line* open = nullptr;
    ASSERT_EQ(mxdbOpenObject(open, line, Mx::kForWrite), Mx::eOk);
    ASSERT_EQ(open->createExtensionDictionary(), Mx::eOk);
    open->close();
    const MxDbObjectId id = drawing.at<Line>(line).extensionDictionary();
    MxDbDictionary* dictionary = nullptr;
    ASSERT_EQ(mxdbOpenObject(dictionary, id, Mx::kForWrite), Mx::eOk);
    MxDbObjectId inside;
    auto* record = new MxDbXrecord;
    dictionary->setAt(L"KEY", record, inside);
    record->close();
    EXPECT_EQ(release(line), Mx::eOpenForWrite);
    dictionary->close();
    EXPECT_EQ(release(line), Mx::eNotEmpty);
    EXPECT_EQ(drawing.at<Line>(line).extensionDictionary(), id);
    drawing.erase(inside);
    drawing.imp.undo.clear();
    drawing.imp.undo.begin(L"Release");
    EXPECT_EQ(release(line), Mx::eOk);
    drawing.imp.undo.end();
    EXPECT_TRUE(drawing.at<Line>(line).extensionDictionary().isNull());
    EXPECT_TRUE(drawing.at<MxDbDictionary>(id).isErased());
    ASSERT_TRUE(drawing.imp.undo.undo());
    EXPECT_EQ(drawing.at<Line>(line).extensionDictionary(), id);
    ASSERT_TRUE(drawing.imp.undo.redo());
    EXPECT_TRUE(drawing.at<Line>(line).extensionDictionary().isNull());
}
