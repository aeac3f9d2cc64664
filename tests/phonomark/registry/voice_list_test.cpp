// SPDX-License-Identifier: MIT
#include "phonomark/registry/phonomark_manager.h"

#include "host/db/dictionary.h"
#include "tests/phonomark/dictionary_entry.h"
#include "tests/phonomark/module_fixture.h"
#include "tests/support/dxf_tags.h"

using merix::ap::DocManager;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class VoiceListTest : public ModuleTest {
protected:
    PhonomarkManager& registry() { return *livePhManager(); }

    MxDbObjectId dictionary() { return dictionaryEntry(database().namedObjectsDictionaryId(), L"PHONO_MARK"); }

    /// The stored list as (code, text).
    std::vector<std::pair<int, std::wstring>> stored() {
        std::vector<std::pair<int, std::wstring>> result;
        MxDbXrecord* list = nullptr;
        if (mxdbOpenObject(list, dictionaryEntry(dictionary(), L"VOICE_LIST"), Mx::kForRead) != Mx::eOk)
            return result;
        resbuf* chain = nullptr;
        list->rbChain(&chain);
        for (const resbuf* element = chain; element; element = element->rbnext)
            result.emplace_back(element->restype, std::get<std::wstring>(element->resval));
        mxutRelRb(chain);
        list->close();
        return result;
    }
    /// The list that a DXF file holds as (code, text).
    static std::vector<std::pair<int, std::wstring>> storedIn(const QString& dxf) {
        std::vector<std::pair<int, std::wstring>> result;
        for (const auto& record : merix::test::records(merix::test::readTags(dxf), "OBJECTS")) {
            if (record[0].value != "XRECORD")
                continue;
            bool own = false;
            for (const merix::test::Tag& tag : record) {
                if (own && tag.code != 280)
                    result.emplace_back(tag.code, QString::fromUtf8(tag.value).toStdWString());
                own = own || (tag.code == 100 && tag.value == "AcDbXrecord");
            }
        }
        return result;
    }
    /// Stores a chain as the list, whoever made it.
    void store(std::initializer_list<std::pair<short, const wchar_t*>> elements) {
        addNote();
        ASSERT_TRUE(registry().SaveVoiceHandle(&database()));
        resbuf* chain = nullptr;
        resbuf** next = &chain;
        for (const auto& [code, text] : elements) {
            *next = mxutBuildList(code, text);
            next = &(*next)->rbnext;
        }
        MxDbXrecord* list = nullptr;
        ASSERT_EQ(mxdbOpenObject(list, dictionaryEntry(dictionary(), L"VOICE_LIST"), Mx::kForWrite), Mx::eOk);
        list->setFromRbChain(*chain);
        list->close();
        mxutRelRb(chain);
        registry().RemovePhonomark(&document());
    }
    /// Throws when what it watches is changed.
    class Failing : public MxDbObjectReactor {
    public:
        void modified(const MxDbObject*) override { throw std::bad_alloc(); }
    };
    /// What another program would meet that opens the object now.
    static Mx::ErrorStatus statusOfOpening(MxDbObjectId id) {
        MxDbObject* object = nullptr;
        const Mx::ErrorStatus status = mxdbOpenObject(object, id, Mx::kForWrite);
        if (object)
            object->close();
        return status;
    }
    /// Saves while somebody throws who is told of the object's changes; the named objects' dictionary, the notes' one
    /// and the list must be closed afterwards.
    void expectAllClosedAfterAThrowAt(MxDbObjectId id) {
        Failing failing;
        MxDbObject* watched = nullptr;
        ASSERT_EQ(mxdbOpenObject(watched, id, Mx::kForRead), Mx::eOk);
        watched->addReactor(&failing);
        watched->close();
        EXPECT_TRUE(registry().SaveVoiceHandle(&database()));
        ASSERT_EQ(mxdbOpenObject(watched, id, Mx::kForRead), Mx::eOk);
        watched->removeReactor(&failing);
        watched->close();
        EXPECT_EQ(statusOfOpening(database().namedObjectsDictionaryId()), Mx::eOk);
        EXPECT_EQ(statusOfOpening(dictionary()), Mx::eOk);
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

TEST_F(VoiceListTest, ADictionaryOrAListThatCannotBeOpenedIsLeftAsItIs) {
    const MxDbObjectId a = addNote();
    registry().SaveVoiceHandle(&database());
    addNote();
    MxDbDictionary* notes = nullptr;
    ASSERT_EQ(mxdbOpenObject(notes, dictionary(), Mx::kForRead), Mx::eOk);
    EXPECT_FALSE(registry().SaveVoiceHandle(&database()));
    notes->close();
    EXPECT_THAT(stored(), ElementsAre(element(a)));
    MxDbXrecord* list = nullptr;
    ASSERT_EQ(mxdbOpenObject(list, dictionaryEntry(dictionary(), L"VOICE_LIST"), Mx::kForRead), Mx::eOk);
    EXPECT_TRUE(registry().SaveVoiceHandle(&database())) << "the dictionary could be had";
    list->close();
    EXPECT_THAT(stored(), ElementsAre(element(a)));
    ASSERT_EQ(mxdbOpenObject(list, dictionaryEntry(dictionary(), L"VOICE_LIST"), Mx::kForWrite), Mx::eOk);
    registry().RemovePhonomark(&document());
    EXPECT_TRUE(registry().ReadVoiceHandle(&document()));
    list->close();
    EXPECT_THAT(listed(), IsEmpty());
    ASSERT_EQ(mxdbOpenObject(notes, dictionary(), Mx::kForWrite), Mx::eOk);
    EXPECT_FALSE(registry().ReadVoiceHandle(&document()));
    notes->close();
}

TEST_F(VoiceListTest, NothingStaysOpenWhenSomebodyWhoIsToldOfTheSaveThrows) {
    addNote();
    expectAllClosedAfterAThrowAt(database().namedObjectsDictionaryId());
    EXPECT_TRUE(registry().SaveVoiceHandle(&database()));
    const MxDbObjectId list = dictionaryEntry(dictionary(), L"VOICE_LIST");
    addNote();
    expectAllClosedAfterAThrowAt(list);
    EXPECT_EQ(statusOfOpening(list), Mx::eOk);
    EXPECT_TRUE(registry().SaveVoiceHandle(&database()));
    EXPECT_EQ(stored().size(), 2u);
}

TEST_F(VoiceListTest, NotesOfNoDocumentAreWrittenIntoNoDrawing) {
    registry().AppendPhonomark(addNote(), nullptr);
    MxDbDatabase ofNoDocument;
    for (MxDbDatabase* other : {&ofNoDocument, static_cast<MxDbDatabase*>(nullptr)}) {
        resbuf* chain = nullptr;
        long count = 0;
        registry().CrtRbChain(chain, other, count);
        EXPECT_EQ(chain, nullptr);
        EXPECT_EQ(count, 0);
        mxutRelRb(chain);
    }
    EXPECT_FALSE(registry().SaveVoiceHandle(&ofNoDocument));
    registry().RemovePhonomark(static_cast<MxApDocument*>(nullptr));
}

TEST_F(VoiceListTest, AListThatIsGoneReadsAsNoNotesAndIsMadeAnew) {
    const MxDbObjectId id = addNote();
    registry().SaveVoiceHandle(&database());
    MxDbXrecord* list = nullptr;
    ASSERT_EQ(mxdbOpenObject(list, dictionaryEntry(dictionary(), L"VOICE_LIST"), Mx::kForWrite), Mx::eOk);
    list->erase();
    list->close();
    registry().RemovePhonomark(&document());
    EXPECT_TRUE(registry().ReadVoiceHandle(&document())) << "the dictionary is there";
    EXPECT_THAT(listed(), IsEmpty());
    registry().AppendPhonomark(id, &document());
    EXPECT_TRUE(registry().SaveVoiceHandle(&database()));
    EXPECT_THAT(stored(), ElementsAre(element(id)));
}

TEST_F(VoiceListTest, WhatAnotherProgramPutUnderTheNamesIsNeitherReadNorReplaced) {
    addNote();
    MxDbDictionary* named = nullptr;
    MxDbObjectId id;
    ASSERT_EQ(database().getNamedObjectsDictionary(named, Mx::kForWrite), Mx::eOk);
    auto* foreign = new MxDbXrecord;
    ASSERT_EQ(named->setAt(L"PHONO_MARK", foreign, id), Mx::eOk);
    foreign->close();
    named->close();
    EXPECT_FALSE(registry().SaveVoiceHandle(&database()));
    EXPECT_FALSE(registry().ReadVoiceHandle(&document()));
    EXPECT_EQ(dictionary(), id);
}

TEST_F(VoiceListTest, EveryElementThatReadsAsAHandleIsListedWhateverItsCode) {
    store({{102, L"2A"}, {1, L"ffff"}, {300, L"002a"}, {102, L""}, {102, L"no handle"}, {102, L"10000000000000000"}});
    EXPECT_TRUE(registry().ReadVoiceHandle(&document()));
    std::vector<std::uint64_t> handles;
    for (const MxDbObjectId& id : listed())
        handles.push_back(id.handle().value());
    EXPECT_THAT(handles, ElementsAre(0x2A, 0xFFFF, 0x2A));
}

TEST_F(VoiceListTest, BothKindsOfFileHoldTheSameListInItsOrderWithDuplicatesAndStaleHandles) {
    const MxDbObjectId a = addNote(), b = addNote(), c = addNote();
    registry().ErasePhonomark(a, nullptr);
    ASSERT_TRUE(DocManager::instance().undo(document())); // comes back at the end
    registry().AppendPhonomark(b, &document());
    for (const std::uint64_t handle : {0xABCDEFULL, 0xFFFFFFFFFFFFFFFFULL}) {
        MxDbObjectId nothing;
        ASSERT_EQ(database().getMxDbObjectId(nothing, true, MxDbHandle(handle), 0), Mx::eOk);
        registry().AppendPhonomark(nothing, &document());
    }
    const std::vector<std::pair<int, std::wstring>> expected{element(b), element(c),       element(a),
                                                             element(b), {102, L"ABCDEF"}, {102, L"FFFFFFFFFFFFFFFF"}};
    const QString dxf = folder.filePath(QStringLiteral("a.dxf")), native = folder.filePath(QStringLiteral("a.merix")),
                  again = folder.filePath(QStringLiteral("again.dxf"));
    ASSERT_TRUE(DocManager::instance().saveAs(document(), dxf).ok);
    EXPECT_EQ(storedIn(dxf), expected);
    ASSERT_TRUE(DocManager::instance().saveAs(document(), native).ok);
    DocManager::instance().close(document());
    for (const QString& path : {dxf, native}) {
        merix::ap::Document* opened = nullptr;
        ASSERT_TRUE(DocManager::instance().open(path, &opened).ok);
        useDocument(*opened);
        EXPECT_EQ(stored(), expected) << path.toStdString();
        std::vector<std::pair<int, std::wstring>> known;
        for (const MxDbObjectId& id : listed())
            known.push_back(element(id));
        EXPECT_EQ(known, expected) << path.toStdString();
        const MxDbObjectId fresh = addNote();
        EXPECT_LT(fresh.handle().value(), 0xFFFFFFULL) << "a stale handle does not use the numbers up";
        ASSERT_TRUE(DocManager::instance().undo(document()));
        ASSERT_TRUE(DocManager::instance().saveAs(document(), again).ok);
        EXPECT_EQ(storedIn(again), expected) << path.toStdString();
        DocManager::instance().close(document());
    }
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
