// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/attachments.h"

#include "host/db/layer.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/module_fixture.h"

#include <memory>

using merix::db::DatabaseImp;

namespace {

class AttachmentsTest : public ModuleTest {
protected:
    MxDbObjectId addAttachedNote() {
        const MxDbObjectId id = addNote(kObjectNote);
        note(id).setAttachObj(m_line);
        if (!livePhManager()->addNotifier(&note(id), m_line))
            throw std::runtime_error("not attached");
        return id;
    }
    /// An attachment reactor on the line.
    MxDbObjectId reactor(std::size_t i = 0) { return onLine().at(i).persistent; }
    bool isAlive(MxDbObjectId id) { return !DatabaseImp::peek(id, true)->isErased(); }
    /// Opens the object as somebody else has it, until the result goes.
    static auto hold(MxDbObjectId id, Mx::OpenMode mode) {
        MxDbObject* held = nullptr;
        EXPECT_EQ(mxdbOpenObject(held, id, mode), Mx::eOk);
        return std::unique_ptr<MxDbObject, void (*)(MxDbObject*)>(held, [](MxDbObject* object) { object->close(); });
    }
    /// Nothing of the attachment is open: everything can be had for write.
    void expectAllClosed(std::initializer_list<MxDbObjectId> ids) {
        for (const MxDbObjectId& id : ids)
            hold(id, Mx::kForWrite);
    }
    std::vector<MxDbReactorEntry> onLine() { return DatabaseImp::peek(m_line)->reactors(); }
    MxDbObjectId m_line;

    void SetUp() override {
        ModuleTest::SetUp();
        m_line = addLine();
    }
};

} // namespace

TEST_F(AttachmentsTest, AnObjectHasTheReactorsItLists) {
    const MxDbObject* line = DatabaseImp::peek(m_line);
    EXPECT_FALSE(hasPersistentReactor(line, m_line));
    addAttachedNote();
    EXPECT_TRUE(hasPersistentReactor(line, onLine()[0].persistent));
    EXPECT_FALSE(hasPersistentReactor(line, m_line));
    EXPECT_FALSE(hasPersistentReactor(line, {}));
}

TEST_F(AttachmentsTest, AnObjectCarriesANoteThatNamesIt) {
    EXPECT_FALSE(IsAttachedVoice(m_line));
    const MxDbObjectId id = addAttachedNote();
    EXPECT_TRUE(IsAttachedVoice(m_line));
    note(id).setAttachObj(addLine());
    EXPECT_FALSE(IsAttachedVoice(m_line)) << "the note belongs to another object now";
    EXPECT_FALSE(IsAttachedVoice({}));
    MxDbObject* object = nullptr;
    ASSERT_EQ(mxdbOpenObject(object, m_line, Mx::kForWrite), Mx::eOk) << "all was closed again";
    object->close();
}

TEST_F(AttachmentsTest, OtherReactorsAreNoNotes) {
    MxDbObject* object = nullptr;
    ASSERT_EQ(mxdbOpenObject(object, m_line, Mx::kForWrite), Mx::eOk);
    ASSERT_EQ(object->addPersistentReactor(addLine()), Mx::eOk);
    object->close();
    EXPECT_FALSE(IsAttachedVoice(m_line));
    CleanPhonomarkPsReactor(m_line);
    EXPECT_EQ(onLine().size(), 1u);
}

TEST_F(AttachmentsTest, OfTwoAttachmentsOnlyTheFirstIsCleaned) {
    addAttachedNote();
    addAttachedNote();
    const auto before = onLine();
    ASSERT_EQ(before.size(), 2u);
    CleanPhonomarkPsReactor(m_line);
    ASSERT_EQ(onLine().size(), 1u);
    EXPECT_EQ(onLine()[0], before[1]);
    EXPECT_TRUE(DatabaseImp::peek(before[0].persistent, true)->isErased());
    EXPECT_FALSE(DatabaseImp::peek(before[1].persistent, true)->isErased());
    MxDbObject* cleaned = nullptr;
    ASSERT_EQ(mxdbOpenObject(cleaned, before[0].persistent, Mx::kForWrite, true), Mx::eOk) << "left open";
    cleaned->close();
    CleanPhonomarkPsReactor(m_line);
    EXPECT_TRUE(onLine().empty());
    CleanPhonomarkPsReactor(m_line);
    CleanPhonomarkPsReactor({});
}

TEST_F(AttachmentsTest, WhatIsOpenForWriteElsewhereCarriesNoNote) {
    const MxDbObjectId id = addAttachedNote();
    for (const MxDbObjectId& held : {m_line, reactor(), id}) {
        {
            const auto writer = hold(held, Mx::kForWrite);
            EXPECT_FALSE(IsAttachedVoice(m_line));
        }
        expectAllClosed({m_line, reactor(), id});
        const auto reader = hold(held, Mx::kForRead);
        EXPECT_TRUE(IsAttachedVoice(m_line)) << "reading does not disturb";
    }
    expectAllClosed({m_line, reactor(), id});
}

TEST_F(AttachmentsTest, ANoteBehindAReactorThatIsOpenElsewhereIsFoundByTheNext) {
    addAttachedNote();
    const MxDbObjectId second = addAttachedNote();
    const auto writer = hold(reactor(0), Mx::kForWrite);
    EXPECT_TRUE(IsAttachedVoice(m_line));
    expectAllClosed({m_line, reactor(1), second});
}

TEST_F(AttachmentsTest, AnErasedNoteIsNotCarried) {
    const MxDbObjectId id = addAttachedNote();
    hold(id, Mx::kForWrite)->erase();
    EXPECT_FALSE(IsAttachedVoice(m_line));
    expectAllClosed({m_line});
}

TEST_F(AttachmentsTest, AnObjectThatIsOpenElsewhereIsNotCleaned) {
    const MxDbObjectId id = addAttachedNote();
    for (const auto mode : {Mx::kForRead, Mx::kForWrite}) {
        const auto held = hold(m_line, mode);
        CleanPhonomarkPsReactor(m_line);
        EXPECT_EQ(onLine().size(), 1U);
        EXPECT_TRUE(isAlive(reactor()));
    }
    expectAllClosed({m_line, reactor(), id});
    CleanPhonomarkPsReactor(m_line);
    EXPECT_TRUE(onLine().empty());
}

TEST_F(AttachmentsTest, AnObjectOnALockedLayerIsNotCleaned) {
    const MxDbObjectId id = addAttachedNote();
    const auto lock = [&](bool locked) {
        const auto layer = hold(note(id).layerId(), Mx::kForWrite);
        static_cast<MxDbLayerTableRecord&>(*layer).setIsLocked(locked);
    };
    lock(true);
    CleanPhonomarkPsReactor(m_line);
    EXPECT_EQ(onLine().size(), 1U);
    EXPECT_TRUE(isAlive(reactor()));
    lock(false);
    expectAllClosed({m_line, reactor(), id});
}

TEST_F(AttachmentsTest, AReactorThatIsReadElsewhereLeavesTheObjectAndStays) {
    addAttachedNote();
    addAttachedNote();
    const MxDbObjectId first = reactor(0), second = reactor(1);
    {
        const auto reader = hold(first, Mx::kForRead);
        CleanPhonomarkPsReactor(m_line);
    }
    ASSERT_EQ(onLine().size(), 1U) << "the first alone was looked at";
    EXPECT_EQ(reactor(), second);
    EXPECT_TRUE(isAlive(first));
    expectAllClosed({m_line, first, second});
}

TEST_F(AttachmentsTest, AReactorThatIsWrittenElsewhereIsPassedOver) {
    addAttachedNote();
    addAttachedNote();
    const MxDbObjectId first = reactor(0), second = reactor(1);
    {
        const auto writer = hold(first, Mx::kForWrite);
        CleanPhonomarkPsReactor(m_line);
    }
    ASSERT_EQ(onLine().size(), 1U);
    EXPECT_EQ(reactor(), first);
    EXPECT_FALSE(isAlive(second));
    expectAllClosed({m_line, first});
}
