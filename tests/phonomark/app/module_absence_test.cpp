// SPDX-License-Identifier: MIT
// Notes that are erased, brought back and saved while the module comes and goes. Whatever the order, the module lists a
// note that is there, and lists it once.
#include "tests/phonomark/app/loaded_module.h"

#include "host/db/kept_handles.h"

#include <QTemporaryDir>

#include <algorithm>

using merix::ap::DocManager;
using merix::rx::ModuleLoader;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// Steps: Insert, Erase, Z undo, Y redo, Unload, Load, Save.
struct Order {
    const char* steps;
    bool alone = true; ///< else another note stands in the drawing from the beginning
};

std::ostream& operator<<(std::ostream& out, const Order& order) {
    return out << order.steps << (order.alone ? "" : " beside another note");
}

class ModuleAbsenceTest : public LoadedModuleTest {
protected:
    void SetUp() override {
        LoadedModuleTest::SetUp();
        load();
    }
    static void unloadModule() { unload(*ModuleLoader::instance().modules().front()); }

    static MxDbObjectId insert(const char* at = "10,20") {
        auto* current = dynamic_cast<merix::ap::Document*>(DocManager::instance().curDocument());
        run("PHONOMARK", {QString::fromLatin1(at)});
        const auto ids = entitiesOf(*current);
        return ids.empty() ? MxDbObjectId() : ids.back();
    }
    static std::vector<MxDbObjectId> entitiesOf(const merix::ap::Document& drawing) {
        MxDbBlockTableRecord* space = nullptr;
        if (mxdbOpenObject(space, drawing.database()->currentSpaceId(), Mx::kForRead) != Mx::eOk)
            return {};
        std::vector<MxDbObjectId> ids = space->entityIds();
        space->close();
        return ids;
    }
    static void erase(MxDbObjectId id) {
        merix::db::UndoRecorder& undo = id.database()->imp().undo;
        undo.begin(L"Erase");
        MxDbObject* object = nullptr;
        ASSERT_EQ(mxdbOpenObject(object, id, Mx::kForWrite), Mx::eOk);
        EXPECT_EQ(object->erase(), Mx::eOk);
        object->close();
        undo.end();
    }
    void take(char step, MxDbObjectId& note) {
        switch (step) {
        case 'I':
            note = insert();
            break;
        case 'E':
            erase(note);
            break;
        case 'Z':
            ASSERT_TRUE(DocManager::instance().undo(document()));
            break;
        case 'Y':
            ASSERT_TRUE(DocManager::instance().redo(document()));
            break;
        case 'U':
            unloadModule();
            break;
        case 'L':
            load();
            break;
        default:
            savedList(document());
        }
    }
    /// The list as a save writes it now.
    std::vector<std::wstring> savedList(merix::ap::Document& drawing) {
        EXPECT_TRUE(DocManager::instance().writeCopy(drawing, m_folder.filePath(QStringLiteral("copy.merix"))).ok);
        return stored(*drawing.database());
    }
    static std::wstring nameOf(MxDbObjectId id) {
        wchar_t text[17];
        id.handle().getIntoAsciiBuffer(text);
        return text;
    }
    static std::ptrdiff_t watchersOf(MxDbObjectId id) {
        const MxDbObject* object = merix::db::DatabaseImp::peek(id, true);
        const auto reactors = object->reactors();
        return std::count_if(reactors.begin(), reactors.end(), [](const auto& r) { return r.transient != nullptr; });
    }
    std::vector<std::wstring> expectedList(MxDbObjectId other, MxDbObjectId note) {
        return other.isNull() ? std::vector{nameOf(note)} : std::vector{nameOf(other), nameOf(note)};
    }
    QString file(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

private:
    QTemporaryDir m_folder;
};

class NoteOrderTest : public ModuleAbsenceTest, public ::testing::WithParamInterface<Order> {};

constexpr Order kOrders[] = {
    {"IZULY"},    {"IEULZ"},     {"IEUZL"},       {"IZUYL"},   {"IEULULZ"}, {"IUZLY"},  {"ISZULY"},
    {"ISEULZ"},   {"ISEUZL"},    {"IEULULULZ"},   {"IUEZL"},   {"IUELZ"},   {"ISUELZ"}, {"IEUZLULEZ"},
    {"IZULYZY"},  {"IEULZULEZ"}, {"IZULULYULZY"}, {"IEUZYZL"}, {"IEULZYZ"}, {"IEUSLZ"}, {"IEULSZ"},
    {"IEULSULZ"}, {"IUL"},       {"IEZUL"},       {"IUELULZ"},
};

std::vector<Order> withAndWithoutAnother() {
    std::vector<Order> all(std::begin(kOrders), std::end(kOrders));
    for (const Order& order : kOrders)
        all.push_back({order.steps, false});
    return all;
}

INSTANTIATE_TEST_SUITE_P(Orders, NoteOrderTest, ::testing::ValuesIn(withAndWithoutAnother()));

} // namespace

TEST_P(NoteOrderTest, EndsWithTheNoteListedOnceAndWatched) {
    const MxDbObjectId other = GetParam().alone ? MxDbObjectId() : insert("1,1");
    MxDbObjectId note;
    for (const char* step = GetParam().steps; *step; ++step) {
        SCOPED_TRACE(step);
        ASSERT_NO_FATAL_FAILURE(take(*step, note));
    }
    MxDbObject* open = nullptr;
    ASSERT_EQ(mxdbOpenObject(open, note, Mx::kForRead), Mx::eOk);
    EXPECT_STREQ(open->isA()->name(), L"MxDbPhonomark");
    open->close();
    EXPECT_EQ(savedList(document()), expectedList(other, note));
    EXPECT_EQ(watchersOf(note), 1);
    // It is watched as any other: taken off the list and back to its end.
    erase(note);
    if (!other.isNull()) {
        EXPECT_THAT(savedList(document()), ElementsAre(nameOf(other)));
    }
    ASSERT_TRUE(DocManager::instance().undo(document()));
    EXPECT_EQ(savedList(document()), expectedList(other, note));
}

TEST_F(ModuleAbsenceTest, EveryDrawingGetsItsOwnNotesBack) {
    const MxDbObjectId first = insert();
    erase(first);
    merix::ap::Document* const second = DocManager::instance().create();
    const MxDbObjectId kept = insert("1,1"), gone = insert("2,2");
    erase(gone);
    unloadModule();
    load();
    ASSERT_TRUE(DocManager::instance().undo(document()));
    ASSERT_TRUE(DocManager::instance().undo(*second));
    EXPECT_THAT(savedList(document()), ElementsAre(nameOf(first)));
    EXPECT_THAT(savedList(*second), ElementsAre(nameOf(kept), nameOf(gone)));
}

TEST_F(ModuleAbsenceTest, ADrawingThatIsClosedMeanwhileTakesWhatWasKeptAlong) {
    const MxDbObjectId note = insert();
    erase(note);
    merix::ap::Document* const second = DocManager::instance().create();
    erase(insert());
    unloadModule();
    DocManager::instance().close(*second);
    load();
    ASSERT_TRUE(DocManager::instance().undo(document()));
    EXPECT_THAT(savedList(document()), ElementsAre(nameOf(note)));
    unloadModule();
    EXPECT_EQ(watchersOf(note), 0);
}

TEST_F(ModuleAbsenceTest, NoFileHoldsWhatIsKept) {
    for (const char* name : {"kept.dxf", "kept.merix"}) {
        merix::ap::Document* drawing = DocManager::instance().create();
        const std::wstring stays = nameOf(insert("1,1"));
        const MxDbObjectId erased = insert();
        const MxDbHandle gone = erased.handle();
        erase(erased);
        unloadModule();
        EXPECT_THAT(mxdbKeptHandles(*drawing->database(), L"MrxPhonomark"), Contains(gone));
        ASSERT_TRUE(DocManager::instance().saveAs(*drawing, file(name)).ok);
        DocManager::instance().close(*drawing);
        ASSERT_TRUE(DocManager::instance().open(file(name), &drawing).ok);
        EXPECT_THAT(drawing->database()->imp().keptHandles, IsEmpty()) << name;
        EXPECT_EQ(drawing->database()->imp().find(gone), nullptr) << name;
        load();
        EXPECT_THAT(savedList(*drawing), ElementsAre(stays)) << name;
    }
}

TEST_F(ModuleAbsenceTest, ADrawingWithoutNotesIsNotSearchedAndGetsNothing) {
    run("LINE", {QStringLiteral("0,0"), QStringLiteral("5,5"), QString()});
    unloadModule();
    EXPECT_THAT(document().database()->imp().keptHandles, IsEmpty());
    load();
    EXPECT_THAT(savedList(document()), IsEmpty());
    EXPECT_EQ(watchersOf(entitiesOf(document()).front()), 0);
}
