// SPDX-License-Identifier: MIT
#include "phonomark/registry/phonomark_manager.h"

#include "host/db/layout.h"
#include "merix/ap/document_imp.h"
#include "merix/db/entities.h"
#include "merix/db/entity_traits.h"
#include "merix/db/tables.h"
#include "merix/ed/selection.h"
#include "phonomark/app/entry_point.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/registry/ob_reactor.h"
#include "phonomark/registry/object_watch.h"
#include "phonomark/tagwindow/show_tag_window.h"
#include "tests/phonomark/dictionary_entry.h"
#include "tests/phonomark/module_fixture.h"

#include <algorithm>
#include <new>

using merix::ap::DocManager;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

class RegistryTest : public ModuleTest {
protected:
    PhonomarkManager& registry() { return *livePhManager(); }
    bool isWatched(MxDbObjectId id) { return HasPhonomarkObReactor(&note(id)); }
    std::uint32_t graphicsVersion(MxDbObjectId id) { return note(id).data().graphicsVersion; }
    void lockLayerOf(MxDbObjectId id) {
        auto* layer = dynamic_cast<merix::db::LayerRecord*>(merix::db::DatabaseImp::peek(note(id).layerId()));
        ASSERT_TRUE(layer);
        layer->flags |= 4;
    }
    MxDbObjectId listId(MxDbDatabase& of) {
        return dictionaryEntry(dictionaryEntry(of.namedObjectsDictionaryId(), L"PHONO_MARK"), L"VOICE_LIST");
    }

    void eraseLayouts() {
        MxDbDictionary* layouts = nullptr;
        ASSERT_EQ(mxdbOpenLayoutDictionary(layouts, database(), Mx::kForWrite), Mx::eOk);
        layouts->erase();
        layouts->close();
    }

    /// Writes down which objects got new graphics, in order, and whether the drawing was locked then.
    class Redrawn : public merix::db::DatabaseListener {
    public:
        explicit Redrawn(merix::db::DatabaseImp& database)
            : m_database(database) {
            m_database.addListener(this);
        }
        ~Redrawn() override { m_database.removeListener(this); }
        void objectGraphicsModified(MxDbObject& object) override {
            redrawn.emplace_back(object.objectId(), m_database.undo.isOpen());
        }
        std::vector<std::pair<MxDbObjectId, bool>> redrawn;

    private:
        merix::db::DatabaseImp& m_database;
    };

    /// Fails whoever changes what it watches.
    class Failing : public MxDbObjectReactor {
    public:
        void modified(const MxDbObject*) override { throw std::bad_alloc(); }
        void erased(const MxDbObject*, bool) override { throw std::bad_alloc(); }
    };

    /// Fails with something that is no std::exception.
    class FailingOtherwise : public MxDbObjectReactor {
    public:
        void modified(const MxDbObject*) override { throw 0; }
    };

    /// A view of a host that lets the drawing's notes go while they are being drawn.
    class Forgetful : public TransformView {
    public:
        explicit Forgetful(MxApDocument& document)
            : TransformView(1.0)
            , m_document(document) {}
        void drawEntity(MxDbObjectId id, bool draw) override {
            TransformView::drawEntity(id, draw);
            livePhManager()->RemovePhonomark(&m_document);
        }

    private:
        MxApDocument& m_document;
    };

    /// At the first object that gets new graphics the drawing changes hands: once the present lock is given back,
    /// another one holds it.
    class TakenOver : public merix::db::DatabaseListener {
    public:
        explicit TakenOver(merix::ap::Document& document)
            : m_document(document) {
            m_document.database()->imp().addListener(this);
        }
        ~TakenOver() override { m_document.database()->imp().removeListener(this); }
        void objectGraphicsModified(MxDbObject&) override {
            if (std::exchange(m_taken, true))
                return;
            DocManager& manager = DocManager::instance();
            manager.unlockDocument(&m_document);
            for (int depth = 0; depth < 2; ++depth)
                EXPECT_EQ(manager.lockDocument(&m_document, MxApLockMode::kWrite, L"Other", L"", false), Mx::eOk);
        }

    private:
        merix::ap::Document& m_document;
        bool m_taken = false;
    };

    /// Puts a note on a layer of its own.
    void moveToAnotherLayer(MxDbObjectId id) {
        auto layer = std::make_unique<merix::db::LayerRecord>();
        layer->name = L"Free";
        const MxDbObjectId other(database().imp().adopt(layer.release(), {}, database().imp().roots.layerTable));
        MxDbEntity* open = nullptr;
        ASSERT_EQ(mxdbOpenObject(open, id, Mx::kForWrite), Mx::eOk);
        ASSERT_EQ(merix::db::setLayer(*open, other), Mx::eOk);
        open->close();
    }
};

} // namespace

TEST_F(RegistryTest, AnInsertedNoteIsListedAndWatched) {
    const MxDbObjectId first = addNote(), second = addNote();
    EXPECT_THAT(listed(), ElementsAre(first, second));
    EXPECT_TRUE(isWatched(first));
}

TEST_F(RegistryTest, AnIdAppendedTwiceIsListedTwiceAndRemovedOnce) {
    const MxDbObjectId id = addNote();
    registry().AppendPhonomark(id, &document());
    EXPECT_THAT(listed(), ElementsAre(id, id));
    const auto reactors = note(id).reactors();
    EXPECT_EQ(std::count_if(reactors.begin(), reactors.end(), [](const auto& r) { return r.transient != nullptr; }), 1);
    registry().RemovePhonomark(id, &document());
    EXPECT_THAT(listed(), ElementsAre(id));
    EXPECT_FALSE(isWatched(id)) << "the reactor goes with the first removal";
}

TEST_F(RegistryTest, AnObjectThatIsWatchedAlreadyGetsNoSecondReactor) {
    const MxDbObjectId id = addNote();
    registry().RemovePhonomark(id, &document());
    PhonomarkObReactor other;
    MxDbObject* open = nullptr;
    ASSERT_EQ(mxdbOpenObject(open, id, Mx::kForRead), Mx::eOk);
    ASSERT_EQ(open->addReactor(&other), Mx::eOk);
    registry().AppendPhonomark(id, &document());
    const auto reactors = note(id).reactors();
    ASSERT_EQ(reactors.size(), 1u);
    EXPECT_EQ(reactors[0].transient, &other);
    open->removeReactor(&other);
    open->close();
}

TEST_F(RegistryTest, AnIdThatIsNotListedIsNoLongerWatchedEither) {
    const MxDbObjectId listedOne = addNote(), id = addNote();
    registry().RemovePhonomark(id, &document());
    watchObject(id);
    EXPECT_TRUE(isWatched(id));
    registry().RemovePhonomark(id, &document());
    EXPECT_FALSE(isWatched(id));
    EXPECT_THAT(listed(), ElementsAre(listedOne));
}

TEST_F(RegistryTest, RemovalKeepsTheOrderOfTheOthers) {
    const MxDbObjectId a = addNote(), b = addNote(), c = addNote();
    registry().RemovePhonomark(a, &document());
    EXPECT_THAT(listed(), ElementsAre(b, c));
    EXPECT_FALSE(isWatched(a));
}

TEST_F(RegistryTest, OfEqualIdsTheFirstIsTakenOffAndTheOthersKeepTheirOrder) {
    const MxDbObjectId a = addNote(), b = addNote(), c = addNote();
    registry().AppendPhonomark(a, &document());
    registry().AppendPhonomark(c, &document());
    ASSERT_THAT(listed(), ElementsAre(a, b, c, a, c));
    registry().RemovePhonomark(c, &document());
    EXPECT_THAT(listed(), ElementsAre(a, b, a, c));
    registry().RemovePhonomark(a, &document());
    EXPECT_THAT(listed(), ElementsAre(b, a, c));
}

TEST_F(RegistryTest, ANoteThatIsListedTwiceLosesAPlaceByItsErasureAndGetsOneBackAtTheEnd) {
    const MxDbObjectId a = addNote(), b = addNote();
    registry().AppendPhonomark(a, &document());
    registry().AppendPhonomark(b, &document());
    registry().ErasePhonomark(a, nullptr);
    EXPECT_THAT(listed(), ElementsAre(b, a, b));
    ASSERT_TRUE(DocManager::instance().undo(document()));
    EXPECT_THAT(listed(), ElementsAre(b, a, b, a));
    ASSERT_TRUE(DocManager::instance().redo(document()));
    EXPECT_THAT(listed(), ElementsAre(b, b, a));
}

TEST_F(RegistryTest, AskingForNothingGivesNothingAndKeepsWhatTheCallerHas) {
    std::vector<MxDbObjectId> out{addLine()};
    registry().GetAllObjects(out, nullptr);
    registry().GetAllObjects(out, &document());
    EXPECT_EQ(out.size(), 1u);
    registry().RemovePhonomark(out[0], &document());
    registry().UpdateAll(&document());
    registry().ShowAllObjects(true, &document());
    const MxDbObjectId id = addNote();
    EXPECT_THAT(listed(), ElementsAre(id)) << "the empty entry is no hindrance";
}

TEST_F(RegistryTest, AnIdThatCannotBeOpenedStaysListed) {
    MxDbObjectId id;
    ASSERT_EQ(database().getMxDbObjectId(id, true, MxDbHandle(0xABCDEF), 0), Mx::eOk);
    registry().AppendPhonomark(id, &document());
    EXPECT_THAT(listed(), ElementsAre(id));
    registry().UpdateAll(&document());
    registry().ShowAllObjects(true, &document());
    registry().RemovePhonomark(&document());
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(RegistryTest, ASearchListsTheNotesOfEveryLayoutInTheirOrder) {
    const QStringList layouts = document().layouts();
    ASSERT_GE(layouts.size(), 2);
    ASSERT_TRUE(document().setCurrentLayout(layouts[1]));
    const MxDbObjectId onPaper = addNote();
    ASSERT_TRUE(document().setCurrentLayout(layouts[0]));
    addLine();
    const MxDbObjectId first = addNote(), erased = addNote(), second = addNote();
    registry().ErasePhonomark(erased, nullptr);
    registry().RemovePhonomark(&document());
    registry().AppendPhonomark(&document());
    EXPECT_THAT(listed(), ElementsAre(first, second, onPaper));
    EXPECT_TRUE(isWatched(onPaper));
    registry().AppendPhonomark(&document());
    EXPECT_THAT(listed(), ElementsAre(first, second, onPaper, first, second, onPaper)) << "nothing is cleared first";
}

TEST_F(RegistryTest, ASearchSkipsWhatCannotBeRead) {
    const MxDbObjectId open = addNote(), note = addNote();
    registry().RemovePhonomark(&document());
    MxDbPhonomark* writer = nullptr;
    ASSERT_EQ(mxdbOpenObject(writer, open, Mx::kForWrite), Mx::eOk);
    registry().AppendPhonomark(&document());
    EXPECT_THAT(listed(), ElementsAre(note));
    writer->close();
    registry().RemovePhonomark(&document());
    MxDbBlockTableRecord* space = nullptr;
    ASSERT_EQ(mxdbOpenObject(space, database().currentSpaceId(), Mx::kForWrite), Mx::eOk);
    registry().AppendPhonomark(&document());
    EXPECT_THAT(listed(), IsEmpty());
    space->close();
    eraseLayouts();
    registry().AppendPhonomark(&document());
    registry().AppendPhonomark(nullptr);
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(RegistryTest, WithoutADocumentThereIsNothingToDrawAnew) {
    const MxDbObjectId id = addNote();
    registry().AppendPhonomark(id, nullptr);
    const auto before = graphicsVersion(id);
    registry().UpdateAll(nullptr);
    EXPECT_EQ(graphicsVersion(id), before);
    registry().RemovePhonomark(static_cast<MxApDocument*>(nullptr));
}

TEST_F(RegistryTest, DocumentsHaveTheirOwnLists) {
    const MxDbObjectId id = addNote();
    merix::ap::Document* second = DocManager::instance().create();
    std::vector<MxDbObjectId> out;
    registry().GetAllObjects(out, second);
    EXPECT_THAT(out, IsEmpty());
    EXPECT_THAT(listed(), ElementsAre(id));
}

TEST_F(RegistryTest, AnErasedNoteLeavesTheListAndComesBackAtItsEnd) {
    const MxDbObjectId a = addNote(), b = addNote();
    EXPECT_TRUE(registry().ErasePhonomark(a, nullptr));
    EXPECT_THAT(listed(), ElementsAre(b));
    EXPECT_TRUE(note(a).isErased());
    EXPECT_TRUE(note(a).isErasing());
    ASSERT_TRUE(DocManager::instance().undo(document()));
    EXPECT_FALSE(note(a).isErased());
    EXPECT_THAT(listed(), ElementsAre(b, a));
    ASSERT_TRUE(DocManager::instance().redo(document()));
    EXPECT_THAT(listed(), ElementsAre(b));
}

TEST_F(RegistryTest, ErasingTheLastNoteCanBeUndone) {
    const MxDbObjectId id = addNote();
    registry().ErasePhonomark(id, &document());
    EXPECT_THAT(listed(), IsEmpty());
    ASSERT_TRUE(DocManager::instance().undo(document()));
    EXPECT_THAT(listed(), ElementsAre(id));
}

TEST_F(RegistryTest, ErasingIsOneUndoableUnitNamedForTheUser) {
    const MxDbObjectId id = addNote();
    const auto& units = database().imp().undo.undoUnits();
    const std::size_t before = units.size();
    registry().ErasePhonomark(id, &document());
    ASSERT_EQ(units.size(), before + 1);
    EXPECT_EQ(units.back().name, L"Delete note");
}

TEST_F(RegistryTest, ErasingLetsTheSelectionGo) {
    const MxDbObjectId id = addNote(), other = addNote();
    merix::ed::Selection::instance().set({other});
    registry().ErasePhonomark(id, nullptr);
    EXPECT_THAT(merix::ed::Selection::instance().ids(), IsEmpty());
}

TEST_F(RegistryTest, ANoteIsErasedInADrawingThatAnotherHoldsToo) {
    const MxDbObjectId id = addNote();
    {
        const DocumentLock held(&document(), L"Other", 298);
        EXPECT_TRUE(registry().ErasePhonomark(id, nullptr));
        EXPECT_THAT(printed(), HasSubstr("PhonomarkErase: the drawing is held by Other"));
        EXPECT_TRUE(note(id).isErased());
        EXPECT_THAT(listed(), IsEmpty());
        EXPECT_FALSE(DocumentLock(&document(), L"Third", 298).isHeld()) << "the other's lock is left alone";
    }
    ASSERT_TRUE(DocManager::instance().undo(document()));
    EXPECT_THAT(listed(), ElementsAre(id));
}

TEST_F(RegistryTest, TheObjectOfAnErasedNoteIsNoLongerHighlighted) {
    class Shown : public merix::db::DatabaseListener {
    public:
        void entityHighlighted(MxDbObject& entity, bool highlighted) override {
            heard.emplace_back(entity.objectId(), highlighted);
        }
        std::vector<std::pair<MxDbObjectId, bool>> heard;
    } shown;
    const MxDbObjectId line = addLine(), id = addNote(kObjectNote);
    note(id).setAttachObj(line);
    database().imp().addListener(&shown);
    registry().ErasePhonomark(id, nullptr);
    database().imp().removeListener(&shown);
    EXPECT_TRUE(note(id).isErased());
    EXPECT_THAT(shown.heard, ElementsAre(std::pair(line, false)));
}

TEST_F(RegistryTest, ANoteIsErasedAndClosedAlthoughSomebodyWhoIsToldThrows) {
    const MxDbObjectId id = addNote();
    Failing failing;
    MxDbPhonomark* again = nullptr;
    ASSERT_EQ(mxdbOpenObject(again, id, Mx::kForRead), Mx::eOk);
    again->addReactor(&failing);
    again->close();
    EXPECT_TRUE(registry().ErasePhonomark(id, nullptr));
    EXPECT_TRUE(note(id).isErased());
    ASSERT_EQ(mxdbOpenObject(again, id, Mx::kForWrite, true), Mx::eOk);
    again->removeReactor(&failing);
    again->close();
    EXPECT_TRUE(DocumentLock(&document(), L"Other", 298).isHeld());
}

TEST_F(RegistryTest, ANoteOnALockedLayerIsNotErasedAndTheUserIsTold) {
    const MxDbObjectId id = addNote();
    lockLayerOf(id);
    EXPECT_TRUE(registry().ErasePhonomark(id, nullptr));
    EXPECT_FALSE(note(id).isErased());
    EXPECT_THAT(printed(), HasSubstr("The note is on a locked layer and was not deleted."));
    EXPECT_THAT(listed(), ElementsAre(id));
}

TEST_F(RegistryTest, NotesOnLockedLayersAreDrawnAnewToo) {
    const MxDbObjectId id = addNote();
    lockLayerOf(id);
    const auto before = graphicsVersion(id);
    registry().UpdateAll(&document());
    EXPECT_GT(graphicsVersion(id), before);
}

TEST_F(RegistryTest, NotesOnLockedLayersAreDrawnAnewAfterAllOthers) {
    const MxDbObjectId locked = addNote();
    const MxDbObjectId free = addNote();
    moveToAnotherLayer(free);
    lockLayerOf(locked);
    const Redrawn watch(database().imp());
    registry().UpdateAll(&document());
    EXPECT_THAT(watch.redrawn, ElementsAre(std::pair(free, true), std::pair(locked, false)));
}

TEST_F(RegistryTest, ANoteThatCannotBeChangedNowIsPassedOver) {
    MxDbObjectId nothing;
    ASSERT_EQ(database().getMxDbObjectId(nothing, true, MxDbHandle(0xABCDEF), 0), Mx::eOk);
    registry().AppendPhonomark(nothing, &document());
    const MxDbObjectId read = addNote(), last = addNote();
    MxDbPhonomark* reader = nullptr;
    ASSERT_EQ(mxdbOpenObject(reader, read, Mx::kForRead), Mx::eOk);
    const auto beforeRead = graphicsVersion(read), beforeLast = graphicsVersion(last);
    registry().UpdateAll(&document());
    EXPECT_EQ(graphicsVersion(read), beforeRead) << "it is not put off either";
    EXPECT_GT(graphicsVersion(last), beforeLast);
    reader->close();
    TransformView view(1.0);
    registry().ShowAllObjects(true, &document());
    using Drawn = std::pair<MxDbObjectId, bool>;
    EXPECT_THAT(view.drawn, ::testing::IsSupersetOf({Drawn(read, true), Drawn(last, true)}));
    MxDbObjectId out;
    registry().ErasePhonomark(nothing, &document());
    EXPECT_EQ(printed(), "");
    EXPECT_THAT(listed(), ElementsAre(nothing, read, last));
}

TEST_F(RegistryTest, OnlyNotesOfTheCurrentSpaceAreDrawnAnew) {
    const MxDbObjectId inModel = addNote();
    const QStringList layouts = document().layouts();
    ASSERT_GE(layouts.size(), 2);
    ASSERT_TRUE(document().setCurrentLayout(layouts[1]));
    const MxDbObjectId onPaper = addNote();
    const auto modelBefore = graphicsVersion(inModel), paperBefore = graphicsVersion(onPaper);
    registry().UpdateAll(&document());
    EXPECT_EQ(graphicsVersion(inModel), modelBefore);
    EXPECT_GT(graphicsVersion(onPaper), paperBefore);
}

TEST_F(RegistryTest, DrawingAnewLeavesNothingToUndo) {
    addNote();
    const std::size_t before = database().imp().undo.undoUnits().size();
    registry().UpdateAll(&document());
    EXPECT_EQ(database().imp().undo.undoUnits().size(), before);
}

TEST_F(RegistryTest, AllNotesAreDrawnOrUndrawnOnTheScreen) {
    TransformView view(1.0);
    const MxDbObjectId a = addNote(), b = addNote();
    view.drawn.clear();
    registry().ShowAllObjects(false, &document());
    registry().ShowAllObjects(true, &document());
    using Drawn = std::pair<MxDbObjectId, bool>;
    EXPECT_THAT(view.drawn, ElementsAre(Drawn(a, false), Drawn(b, false), Drawn(a, true), Drawn(b, true)));
}

TEST_F(RegistryTest, NotesThatAreLetGoWhileAllAreDrawnAreDrawnAllTheSame) {
    const MxDbObjectId a = addNote(), b = addNote(), c = addNote();
    Forgetful view(document());
    registry().ShowAllObjects(true, &document());
    using Drawn = std::pair<MxDbObjectId, bool>;
    EXPECT_THAT(view.drawn, ElementsAre(Drawn(a, true), Drawn(b, true), Drawn(c, true)));
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(RegistryTest, TheRegistryCanBeMadeAgainAfterItsEnd) {
    const MxDbObjectId id = addNote();
    PhonomarkManager* before = mxPhManagerPtr();
    createMxPhManager();
    EXPECT_EQ(mxPhManagerPtr(), before) << "there is one already";
    deleteMxPhManager();
    EXPECT_EQ(mxPhManagerPtr(), before);
    EXPECT_EQ(livePhManager(), nullptr);
    deleteMxPhManager();
    EXPECT_FALSE(isWatched(id));
    createMxPhManager();
    EXPECT_TRUE(livePhManager());
    EXPECT_THAT(listed(), ElementsAre(id)) << "the list was written into the drawing";
}

TEST_F(RegistryTest, TheListsOfAllOpenDrawingsAreWrittenAtItsEndAndReadAtItsStart) {
    const MxDbObjectId id = addNote();
    merix::ap::Document &first = document(), *second = DocManager::instance().create();
    useDocument(*second);
    const MxDbObjectId a = addNote(), b = addNote();
    deleteMxPhManager();
    createMxPhManager();
    EXPECT_THAT(listed(), ElementsAre(a, b));
    useDocument(first);
    EXPECT_THAT(listed(), ElementsAre(id));
}

TEST_F(RegistryTest, EventsDoNotReachARegistryThatIsGone) {
    const MxDbObjectId id = addNote();
    deleteMxPhManager();
    merix::ap::Document* second = DocManager::instance().create();
    DocManager::instance().activate(&document());
    DocManager::instance().close(*second);
    PhonomarkObReactor().erased(&note(id), true);
    createMxPhManager();
    EXPECT_THAT(listed(), ElementsAre(id));
}

TEST_F(RegistryTest, NoReactorStaysBehindOnAnErasedNote) {
    const MxDbObjectId id = addNote();
    registry().ErasePhonomark(id, nullptr);
    EXPECT_TRUE(isWatched(id)) << "undo would list it again";
    deleteMxPhManager();
    EXPECT_FALSE(isWatched(id));
    createMxPhManager();
}

TEST_F(RegistryTest, AnErasedNoteThatTheSavedListNamesKeepsItsPlaceThereUntilItIsTakenOff) {
    const MxDbObjectId id = addNote();
    ASSERT_TRUE(registry().SaveVoiceHandle(&database()));
    registry().ErasePhonomark(id, nullptr);
    for (const bool takenOff : {false, true}) {
        deleteMxPhManager();
        createMxPhManager();
        ASSERT_THAT(listed(), ElementsAre(id)) << "an empty list does not replace the saved one";
        if (takenOff) {
            registry().RemovePhonomark(id, &document());
            ASSERT_THAT(listed(), IsEmpty());
        }
        ASSERT_TRUE(DocManager::instance().undo(document()));
        EXPECT_THAT(listed(), ElementsAre(id)) << takenOff;
        ASSERT_TRUE(DocManager::instance().redo(document()));
        EXPECT_THAT(listed(), IsEmpty());
    }
}

TEST_F(RegistryTest, DrawingAnewStopsAtARefusedLock) {
    const MxDbObjectId a = addNote(), b = addNote();
    lockLayerOf(a);
    const auto beforeA = graphicsVersion(a), beforeB = graphicsVersion(b);
    const DocumentLock held(&document(), L"Other", 298);
    registry().UpdateAll(&document());
    EXPECT_EQ(graphicsVersion(a), beforeA) << "locked layers are not looked after either";
    EXPECT_EQ(graphicsVersion(b), beforeB);
    EXPECT_THAT(printed(), HasSubstr("is held by Other"));
}

TEST_F(RegistryTest, LockedLayersAreNotLookedAfterWhenTheLockIsRefusedAtALaterNote) {
    const MxDbObjectId locked = addNote(), free = addNote();
    moveToAnotherLayer(free);
    lockLayerOf(locked);
    addNote();
    const auto beforeLocked = graphicsVersion(locked), beforeFree = graphicsVersion(free);
    const TakenOver other(document());
    registry().UpdateAll(&document());
    EXPECT_GT(graphicsVersion(free), beforeFree);
    EXPECT_EQ(graphicsVersion(locked), beforeLocked);
    EXPECT_THAT(printed(), HasSubstr("PhonomarkUpdateAll: the drawing is held by Other"));
    EXPECT_EQ(DocManager::instance().unlockDocument(&document()), Mx::eOk);
}

TEST_F(RegistryTest, TheRemovalOfTheLastNoteEndsTheHoverMonitor) {
    MxEdInputPoint emptySpace;
    emptySpace.pointComputed = true;
    const MxDbObjectId a = addNote(), b = addNote();
    const auto isMonitored = [&] {
        ShowTagWindow(CPoint{100, 100}, &note(a));
        document().inputPointManager()->notify(emptySpace); // takes the window away
        return g_taguidlg == nullptr;
    };
    EXPECT_TRUE(isMonitored());
    registry().RemovePhonomark(a, &document());
    EXPECT_TRUE(isMonitored());
    registry().RemovePhonomark(b, &document());
    EXPECT_FALSE(isMonitored());
    registry().AppendPhonomark(b, &document());
    EXPECT_TRUE(isMonitored());
}

TEST_F(RegistryTest, SomebodyWhoThrowsAtItsEndCostsNoDrawingItsList) {
    const MxDbObjectId id = addNote();
    ASSERT_TRUE(registry().SaveVoiceHandle(&database()));
    const MxDbObjectId late = addNote();
    Failing failing;
    MxDbXrecord* list = nullptr;
    ASSERT_EQ(mxdbOpenObject(list, listId(database()), Mx::kForRead), Mx::eOk);
    ASSERT_EQ(list->addReactor(&failing), Mx::eOk);
    list->close();
    merix::ap::Document &first = document(), *second = DocManager::instance().create();
    useDocument(*second);
    const MxDbObjectId other = addNote();
    testing::internal::CaptureStderr();
    deleteMxPhManager();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "merix: an object reactor failed: std::bad_alloc\n");
    for (const MxDbObjectId& each : {id, late, other})
        EXPECT_FALSE(isWatched(each));
    ASSERT_EQ(mxdbOpenObject(list, listId(*second->database()), Mx::kForRead), Mx::eOk) << "the others were written";
    list->close();
    createMxPhManager();
    EXPECT_THAT(listed(), ElementsAre(other));
    DocManager::instance().activate(&first);
    useDocument(first);
    EXPECT_THAT(listed(), ElementsAre(id, late));
    DocManager::instance().close(first);
}

TEST_F(RegistryTest, SomebodyWhoThrowsAnythingAtItsEndIsNotInTheWay) {
    const MxDbObjectId id = addNote();
    ASSERT_TRUE(registry().SaveVoiceHandle(&database()));
    FailingOtherwise failing;
    MxDbXrecord* list = nullptr;
    ASSERT_EQ(mxdbOpenObject(list, listId(database()), Mx::kForRead), Mx::eOk);
    ASSERT_EQ(list->addReactor(&failing), Mx::eOk);
    list->close();
    testing::internal::CaptureStderr();
    deleteMxPhManager();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "merix: an object reactor failed\n");
    EXPECT_FALSE(isWatched(id));
    createMxPhManager();
    DocManager::instance().close(document());
}

TEST_F(RegistryTest, ANoteThatCouldNotBeOpenedIsStillWatchedAndLetGoLater) {
    const MxDbObjectId id = addNote();
    MxDbPhonomark* writer = nullptr;
    ASSERT_EQ(mxdbOpenObject(writer, id, Mx::kForWrite), Mx::eOk);
    registry().RemovePhonomark(&document());
    EXPECT_TRUE(HasPhonomarkObReactor(writer));
    writer->close();
    deleteMxPhManager();
    EXPECT_FALSE(isWatched(id));
    createMxPhManager();
}

TEST_F(RegistryTest, AWatchedNoteThatGoesFromMemoryIsForgotten) {
    const MxDbObjectId id = addNote();
    MxDbPhonomark* writer = nullptr;
    ASSERT_EQ(mxdbOpenObject(writer, id, Mx::kForWrite), Mx::eOk);
    merix::ap::Document* second = DocManager::instance().create();
    DocManager::instance().close(document()); // the note cannot be opened when its document goes
    useDocument(*second);
    addNote();
    deleteMxPhManager(); // would ask the note that has gone
    createMxPhManager();
    EXPECT_EQ(listed().size(), 1u);
}
