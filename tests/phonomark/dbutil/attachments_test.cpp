// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/attachments.h"

#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/module_fixture.h"

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
    CleanPhonomarkPsReactor(m_line);
    EXPECT_TRUE(onLine().empty());
    CleanPhonomarkPsReactor(m_line);
    CleanPhonomarkPsReactor({});
}
