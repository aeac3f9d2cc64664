// SPDX-License-Identifier: MIT
#include "phonomark/registry/phonomark_manager.h"

#include "host/db/dictionary.h"
#include "tests/phonomark/module_fixture.h"

using merix::ap::DocManager;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class VoiceListTest : public ModuleTest {
protected:
    PhonomarkManager& registry() { return *livePhManager(); }

    MxDbObjectId entry(MxDbObjectId dictionaryId, const wchar_t* key) {
        MxDbObjectId id;
        MxDbDictionary* dictionary = nullptr;
        if (mxdbOpenObject(dictionary, dictionaryId, Mx::kForRead) == Mx::eOk) {
            dictionary->getAt(key, id);
            dictionary->close();
        }
        return id;
    }
    MxDbObjectId dictionary() { return entry(database().namedObjectsDictionaryId(), L"PHONO_MARK"); }

    /// The stored list as (code, text).
    std::vector<std::pair<int, std::wstring>> stored() {
        std::vector<std::pair<int, std::wstring>> result;
        MxDbXrecord* list = nullptr;
        if (mxdbOpenObject(list, entry(dictionary(), L"VOICE_LIST"), Mx::kForRead) != Mx::eOk)
            return result;
        resbuf* chain = nullptr;
        list->rbChain(&chain);
        for (const resbuf* element = chain; element; element = element->rbnext)
            result.emplace_back(element->restype, std::get<std::wstring>(element->resval));
        mxutRelRb(chain);
        list->close();
        return result;
    }
    static std::pair<int, std::wstring> element(MxDbObjectId id) {
        wchar_t text[17];
        id.handle().getIntoAsciiBuffer(text);
        return {102, text};
    }
};

} // namespace

TEST_F(VoiceListTest, ThreeNotesAreStoredInOrderAndReadBackInOrder) {
    const MxDbObjectId a = addNote(), b = addNote(), c = addNote();
    EXPECT_TRUE(registry().SaveVoiceHandle(&database()));
    EXPECT_THAT(stored(), ElementsAre(element(a), element(b), element(c)));
    registry().RemovePhonomark(&document());
    EXPECT_TRUE(registry().ReadVoiceHandle(&document()));
    EXPECT_THAT(listed(), ElementsAre(a, b, c));
}

TEST_F(VoiceListTest, TheDictionaryHoldsNothingButTheList) {
    addNote();
    registry().SaveVoiceHandle(&database());
    MxDbDictionary* notes = nullptr;
    ASSERT_EQ(mxdbOpenObject(notes, dictionary(), Mx::kForRead), Mx::eOk);
    const auto entries = notes->entries();
    notes->close();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].first, L"VOICE_LIST");
}

TEST_F(VoiceListTest, ASecondSaveReplacesTheList) {
    const MxDbObjectId a = addNote(), b = addNote();
    registry().SaveVoiceHandle(&database());
    registry().RemovePhonomark(a, &document());
    registry().SaveVoiceHandle(&database());
    EXPECT_THAT(stored(), ElementsAre(element(b)));
}

TEST_F(VoiceListTest, ADrawingWithoutAListHasNoNotesUntilOneIsSaved) {
    EXPECT_FALSE(registry().ReadVoiceHandle(&document()));
    EXPECT_THAT(listed(), IsEmpty());
    EXPECT_FALSE(registry().SaveVoiceHandle(&database()));
    EXPECT_TRUE(dictionary().isNull());
    addNote();
    EXPECT_TRUE(registry().SaveVoiceHandle(&database()));
    EXPECT_FALSE(dictionary().isNull());
}

TEST_F(VoiceListTest, AnEmptyListLeavesTheOldOneInTheDrawing) {
    const MxDbObjectId id = addNote();
    registry().SaveVoiceHandle(&database());
    registry().ErasePhonomark(id, nullptr);
    EXPECT_FALSE(registry().SaveVoiceHandle(&database()));
    EXPECT_THAT(stored(), ElementsAre(element(id)));
}

TEST_F(VoiceListTest, AHandleThatNamesNothingIsListed) {
    MxDbObjectId nothing;
    ASSERT_EQ(database().getMxDbObjectId(nothing, true, MxDbHandle(0xABCDEF), 0), Mx::eOk);
    registry().AppendPhonomark(nothing, &document());
    registry().SaveVoiceHandle(&database());
    EXPECT_THAT(stored(), ElementsAre(std::pair<int, std::wstring>(102, L"ABCDEF")));
    registry().RemovePhonomark(&document());
    registry().ReadVoiceHandle(&document());
    EXPECT_THAT(listed(), ElementsAre(nothing));
}

TEST_F(VoiceListTest, ADrawingReadTwiceListsItsNotesTwice) {
    const MxDbObjectId id = addNote();
    registry().SaveVoiceHandle(&database());
    registry().ReadVoiceHandle(&document());
    EXPECT_THAT(listed(), ElementsAre(id, id));
    registry().SaveVoiceHandle(&database());
    EXPECT_THAT(stored(), ElementsAre(element(id), element(id)));
}

TEST_F(VoiceListTest, ADictionaryThatIsOpenElsewhereIsLeftAsItIs) {
    addNote();
    MxDbDictionary* named = nullptr;
    ASSERT_EQ(database().getNamedObjectsDictionary(named, Mx::kForRead), Mx::eOk);
    EXPECT_FALSE(registry().SaveVoiceHandle(&database()));
    named->close();
    EXPECT_TRUE(dictionary().isNull());
    EXPECT_FALSE(registry().SaveVoiceHandle(nullptr));
    EXPECT_FALSE(registry().ReadVoiceHandle(nullptr));
}

TEST_F(VoiceListTest, NotesAreKnownAfterReopeningInBothKindsOfFile) {
    for (const char* name : {"/plan.dxf", "/plan.merix"}) {
        const MxDbObjectId a = addNote(kPointNote, {1, 2, 0}), b = addNote(kPointNote, {3, 4, 0});
        note(b).setAudioData(soundBytes(300));
        note(b).setAudioDataSize(300);
        const MxDbHandle first = a.handle(), second = b.handle();
        const QString path = folder.path() + QLatin1String(name);
        ASSERT_TRUE(DocManager::instance().saveAs(document(), path).ok);
        DocManager::instance().close(document());
        merix::ap::Document* again = nullptr;
        const auto result = DocManager::instance().open(path, &again);
        ASSERT_TRUE(result.ok) << result.message.toStdString();
        std::vector<MxDbObjectId> ids;
        registry().GetAllObjects(ids, again);
        ASSERT_EQ(ids.size(), 2u) << name;
        EXPECT_EQ(ids[0].handle(), first);
        EXPECT_EQ(ids[1].handle(), second);
        EXPECT_EQ(note(ids[0]).position(), MxGePoint3d(1, 2, 0));
        ASSERT_EQ(note(ids[1]).getAudioDataSize(), 300u);
        EXPECT_EQ(note(ids[1]).getAudioData()[299], static_cast<unsigned char>(300));
        useDocument(*again);
        registry().RemovePhonomark(again);
    }
}
