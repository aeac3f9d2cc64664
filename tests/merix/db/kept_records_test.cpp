// SPDX-License-Identifier: MIT
#include "merix/db/kept_records.h"

#include "host/db/dictionary.h"
#include "merix/db/access.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

namespace {

using namespace merix::db;

MxRxClass* g_noteClass = nullptr;

/// A class as a module would bring it.
class Note final : public MxDbEntity {
public:
    MxRxClass* isA() const override { return g_noteClass; }
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override {
        assertWriteEnabled();
        if (const auto status = MxDbEntity::dwgInFields(filer); status != Mx::eOk)
            return status;
        return filer->readInt32(value);
    }
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override {
        assertReadEnabled();
        if (const auto status = MxDbEntity::dwgOutFields(filer); status != Mx::eOk)
            return status;
        return filer->writeInt32(value);
    }
    std::int32_t value = 0;
};

class KeptRecordsTest : public testing::Test {
protected:
    KeptRecordsTest() { bring(); }
    ~KeptRecordsTest() override { take(); }

    static void bring() {
        g_noteClass = newMxRxClass(
            L"TestNote", L"MxDbEntity", 33, 0, 0, []() -> MxRxObject* { return new Note; }, L"TESTNOTE", L"Test");
        mxrxBuildClassHierarchy();
    }
    static void take() {
        deleteMxRxClass(g_noteClass);
        g_noteClass = nullptr;
    }

    MxDbObjectId addNote(std::int32_t value) {
        auto note = std::make_unique<Note>();
        note->value = value;
        return drawing.add(std::move(note));
    }
    void setValue(MxDbObjectId id, std::int32_t value) {
        MxDbObject* note = nullptr;
        ASSERT_EQ(mxdbOpenObject(note, id, Mx::kForWrite), Mx::eOk);
        note->assertWriteEnabled();
        static_cast<Note*>(note)->value = value;
        note->close();
    }

    Drawing drawing;
};

TEST_F(KeptRecordsTest, ObjectsBecomeRecordsWhenTheirClassGoesAndObjectsWhenItReturns) {
    const MxDbObjectId id = addNote(42), layer = drawing.addLayer(L"NOTES");
    auto& note = drawing.at<Note>(id);
    traits(note).layer = layer;
    {
        MxDbObject* open = nullptr;
        mxdbOpenObject(open, id, Mx::kForWrite);
        open->createExtensionDictionary();
        open->close();
    }
    const MxDbObjectId dictionary = note.extensionDictionary();
    note.data().reactors.push_back({nullptr, dictionary});
    take();
    auto& kept = drawing.at<KeptEntity>(id);
    ASSERT_EQ(kept.isA(), KeptEntity::desc());
    EXPECT_EQ(kept.className, L"TestNote");
    EXPECT_EQ(kept.dxfName, "TESTNOTE");
    EXPECT_EQ(kept.layerId(), layer);
    EXPECT_EQ(kept.ownerId(), drawing.imp.roots.modelSpace);
    EXPECT_EQ(kept.extensionDictionary(), dictionary);
    bring();
    auto& back = drawing.at<Note>(id);
    ASSERT_EQ(back.isA(), g_noteClass);
    EXPECT_EQ(back.value, 42);
    EXPECT_EQ(back.layerId(), layer);
    EXPECT_EQ(back.extensionDictionary(), dictionary);
    ASSERT_EQ(back.reactors().size(), 1U);
    EXPECT_EQ(back.reactors()[0].persistent, dictionary);
}

TEST_F(KeptRecordsTest, ErasedObjectsAreKeptToo) {
    const MxDbObjectId id = addNote(1);
    drawing.erase(id);
    take();
    EXPECT_EQ(drawing.at<MxDbObject>(id).isA(), KeptEntity::desc());
    EXPECT_TRUE(drawing.at<MxDbObject>(id).isErased());
    bring();
    drawing.imp.undo.undo();
    EXPECT_FALSE(drawing.at<Note>(id).isErased());
    EXPECT_EQ(drawing.at<Note>(id).value, 1);
}

TEST_F(KeptRecordsTest, UndoReachesThroughTheAbsenceOfAClass) {
    const MxDbObjectId id = addNote(1);
    setValue(id, 2);
    take();
    EXPECT_TRUE(drawing.imp.undo.undo()) << "the record takes the state back in the class's stead";
    bring();
    EXPECT_EQ(drawing.at<Note>(id).value, 1);
}

TEST_F(KeptRecordsTest, ReactorsOfAClassThatGoesAreForgotten) {
    static MxRxClass* reactorClass = nullptr;
    class Reactor final : public MxDbObjectReactor {
    public:
        MxRxClass* isA() const override { return reactorClass; }
    };
    reactorClass = newMxRxClass(L"TestReactor", L"MxDbObjectReactor", 0, nullptr);
    Reactor reactor;
    MxDbObject* line = nullptr;
    mxdbOpenObject(line, drawing.addLine(), Mx::kForRead);
    line->addReactor(&reactor);
    deleteMxRxClass(reactorClass);
    EXPECT_TRUE(line->reactors().empty());
    line->close();
}

TEST_F(KeptRecordsTest, ARecordThatItsClassRefusesStaysARecord) {
    auto* kept = new KeptEntity;
    kept->className = L"TestNote";
    kept->image = "not a note";
    const MxDbObjectId id(drawing.imp.adopt(kept, {}, drawing.imp.roots.modelSpace));
    mxrxBuildClassHierarchy();
    EXPECT_EQ(drawing.at<MxDbObject>(id).isA(), KeptEntity::desc());
    EXPECT_EQ(drawing.at<KeptEntity>(id).image, "not a note");
}

TEST_F(KeptRecordsTest, ARecordReadFromAFileIsReadByTheHookWhenItsClassComes) {
    setKeptRecordHooks({nullptr, [](const MxDbObject& kept, MxDbObject& fresh) {
                            const FillAccess writable(fresh);
                            static_cast<Note&>(fresh).value = static_cast<const KeptEntity&>(kept).dxfTags == "90\n7\n";
                            return Mx::eOk;
                        }});
    auto* kept = new KeptEntity;
    kept->dxfName = "TESTNOTE";
    kept->dxfTags = "90\n7\n";
    const MxDbObjectId id(drawing.imp.adopt(kept, {}, drawing.imp.roots.modelSpace));
    mxrxBuildClassHierarchy();
    setKeptRecordHooks({});
    ASSERT_EQ(drawing.at<MxDbObject>(id).isA(), g_noteClass);
    EXPECT_EQ(drawing.at<Note>(id).value, 1);
}

} // namespace
