// SPDX-License-Identifier: MIT
#include "merix/ap/document_imp.h"

#include "host/db/dictionary.h"
#include "host/ed/input.h"
#include "merix/db/database_imp.h"
#include "merix/db/entities.h"
#include "merix/ed/command_stack.h"
#include "merix/ed/console.h"
#include "merix/ed/editor.h"
#include "merix/ed/host_functions.h"
#include "merix/ed/prompter.h"
#include "merix/rx/module_loader.h"
#include "merix/rx/system_registry.h"
#include "tests/merix/rx/modules/recording_module.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

using namespace merix;
using ap::DocManager;
using ap::Document;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

DocManager& manager() {
    return DocManager::instance();
}

/// Adds a line to the current space, in the undo unit that is open.
MxDbObjectId addLine(const Document& document) {
    MxDbBlockTableRecord* space = nullptr;
    if (mxdbOpenObject(space, document.database()->currentSpaceId(), Mx::kForWrite) != Mx::eOk)
        return {};
    auto* line = new db::Line;
    MxDbObjectId id;
    if (space->appendMxDbEntity(id, line) == Mx::eOk)
        line->close();
    space->close();
    return id;
}

class Log : public MxApDocManagerReactor, public MxEditorReactor {
public:
    Log() {
        manager().addReactor(this);
        ed::Editor::instance().addReactor(this);
    }
    ~Log() override {
        manager().removeReactor(this);
        ed::Editor::instance().removeReactor(this);
    }
    void documentCreated(MxApDocument* d) override { add("created", d); }
    void documentToBeActivated(MxApDocument* d) override { add("to be activated", d); }
    void documentActivated(MxApDocument* d) override { add("activated", d); }
    void documentToBeDeactivated(MxApDocument* d) override { add("to be deactivated", d); }
    void documentToBeDestroyed(MxApDocument* d) override { add("to be destroyed", d); }
    void beginSave(MxDbDatabase* database, const wchar_t* fileName) override {
        add("save " + QFileInfo(QString::fromWCharArray(fileName)).fileName().toStdString(),
            manager().document(database));
        if (onSave)
            onSave(database);
    }
    void layoutSwitched(const wchar_t* name) override {
        lines.push_back("layout " + QString::fromWCharArray(name).toStdString());
    }
    std::vector<std::string> take() { return std::exchange(lines, {}); }

    std::vector<std::string> lines;
    std::function<void(MxDbDatabase*)> onSave;

private:
    void add(const std::string& what, MxApDocument* document) {
        const auto* known = static_cast<const Document*>(document);
        const std::string current = manager().curDocument() == document ? " (current)" : "";
        lines.push_back(what + " " + (known ? known->title().toStdString() : "?") + current);
    }
};

std::vector<MxDbObjectId> entitiesOf(const Document& document) {
    const MxDbDatabase& database = *document.database();
    return database.imp().block(database.currentSpaceId())->entityIds();
}

QByteArray bytesOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

/// The module of the loader's tests, unloaded at the end.
class LoadedModule {
public:
    LoadedModule() {
        rx::setSystemRegistryEntry(L"TestLog", &log);
        m_module = rx::ModuleLoader::instance().load(MODULE_GOOD).module;
    }
    ~LoadedModule() {
        unload();
        rx::setSystemRegistryEntry(L"TestLog", nullptr);
    }
    void unload() {
        if (m_module && m_module->state == rx::ModuleState::kLoaded)
            rx::ModuleLoader::instance().unload(*m_module);
    }
    TestLog log;

private:
    rx::Module* m_module = nullptr;
};

class DocManagerTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_folder.isValid());
        manager();
        ed::Console::instance().markRead();
    }
    void TearDown() override {
        for (Document* document : manager().all())
            manager().close(*document);
    }
    QString path(const char* name) const { return m_folder.filePath(QString::fromUtf8(name)); }
    /// A drawing with a line in a file, closed again.
    QString drawing(const char* name) {
        Document* document = manager().create();
        addLine(*document);
        EXPECT_EQ(manager().saveAs(*document, path(name)).message, QString());
        manager().close(*document);
        return path(name);
    }
    static std::string shown() { return ed::Console::instance().unread().toStdString(); }
    static void run(const char* line) { ed::CommandStack::instance().runLine(QString::fromUtf8(line)); }

    QTemporaryDir m_folder;
};

Document* g_document = nullptr; // what the commands of these tests work on
std::function<void()> g_body;

void registerCommand(const wchar_t* name, std::function<void()> body) {
    g_body = std::move(body);
    ed::CommandStack::instance().addCommand(L"TEST", name, name, 1, [] { g_body(); });
}

} // namespace

TEST_F(DocManagerTest, ThePointerOfTheContractIsTheManager) {
    EXPECT_EQ(mxDocManagerPtr(), &manager());
}

TEST_F(DocManagerTest, AFileIsReadBeforeItsDocumentIsToldOfAndActivatedAfterwards) {
    const QString file = drawing("plan.dxf");
    Log log;
    ASSERT_TRUE(manager().open(file).ok);
    EXPECT_THAT(log.take(),
                ElementsAre("created plan.dxf", "to be activated plan.dxf", "activated plan.dxf (current)"));
    EXPECT_EQ(mxdbHostApplicationServices()->workingDatabase(), manager().current()->database());
}

TEST_F(DocManagerTest, TheOldDocumentIsDeactivatedBeforeTheNewOneIsActivated) {
    Document* first = manager().create();
    const std::string one = first->title().toStdString();
    Log log;
    Document* second = manager().create();
    const std::string two = second->title().toStdString();
    EXPECT_THAT(log.take(), ElementsAre("created " + two, "to be deactivated " + one + " (current)",
                                        "to be activated " + two, "activated " + two + " (current)"));
    manager().activate(first);
    EXPECT_THAT(log.take(), ElementsAre("to be deactivated " + two + " (current)", "to be activated " + one,
                                        "activated " + one + " (current)"));
    manager().activate(first);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(DocManagerTest, AClosingDocumentIsToldOfWhileItIsWholeAndTheNextOneTakesOver) {
    Document* first = manager().create();
    const std::string one = first->title().toStdString();
    Document* second = manager().create();
    const std::string two = second->title().toStdString();
    Log log;
    manager().close(*second);
    EXPECT_THAT(log.take(), ElementsAre("to be destroyed " + two + " (current)", "to be activated " + one,
                                        "activated " + one + " (current)"));
    EXPECT_THAT(manager().documents(), ElementsAre(first));
    manager().close(*first);
    EXPECT_THAT(log.take(), ElementsAre("to be destroyed " + one + " (current)"));
    EXPECT_EQ(manager().curDocument(), nullptr);
    EXPECT_EQ(mxdbHostApplicationServices()->workingDatabase(), nullptr);
}

TEST_F(DocManagerTest, ADocumentInTheBackgroundClosesWithoutDisturbingTheCurrentOne) {
    Document* first = manager().create();
    Document* second = manager().create();
    const std::string one = first->title().toStdString();
    Log log;
    manager().close(*first);
    EXPECT_THAT(log.take(), ElementsAre("to be destroyed " + one + " (current)"));
    EXPECT_EQ(manager().curDocument(), second);
    EXPECT_EQ(mxdbHostApplicationServices()->workingDatabase(), second->database());
}

TEST_F(DocManagerTest, AFileThatIsOpenIsActivatedInsteadOfReadAgain) {
    const QString file = drawing("plan.dxf");
    Document* first = nullptr;
    ASSERT_TRUE(manager().open(file, &first).ok);
    manager().create();
    Document* again = nullptr;
    ASSERT_TRUE(manager().open(m_folder.path() + QStringLiteral("/./plan.dxf"), &again).ok);
    EXPECT_EQ(again, first);
    EXPECT_EQ(manager().current(), first);
    EXPECT_EQ(manager().all().size(), 2U);
}

TEST_F(DocManagerTest, AFileThatCannotBeReadLeavesEverythingAsItWas) {
    Document* document = manager().create();
    Log log;
    const ap::Result result = manager().open(path("missing.dxf"));
    EXPECT_FALSE(result.ok);
    EXPECT_THAT(result.message.toStdString(), HasSubstr("missing.dxf"));
    EXPECT_EQ(manager().current(), document);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(DocManagerTest, EverySaveIsToldOfFirstAndWhatReactorsWriteIsSaved) {
    Document* document = manager().create();
    Log log;
    log.onSave = [&](MxDbDatabase*) { addLine(*document); };
    ASSERT_TRUE(manager().saveAs(*document, path("a.merix")).ok);
    ASSERT_TRUE(manager().save(*document).ok);
    EXPECT_EQ(log.take().size(), 2U);
    EXPECT_FALSE(document->isChanged());
    manager().close(*document);
    ASSERT_TRUE(manager().open(path("a.merix"), &document).ok);
    EXPECT_EQ(document->database()->imp().block(document->database()->currentSpaceId())->entityIds().size(), 2U);
}

TEST_F(DocManagerTest, ADrawingNeverSavedHasNoNameToSaveUnder) {
    Document* document = manager().create();
    EXPECT_FALSE(manager().save(*document).ok);
    EXPECT_THAT(document->title().toStdString(), testing::StartsWith("Drawing"));
}

TEST_F(DocManagerTest, ADrawingIsNotSavedOverAnotherThatIsOpen) {
    const QString file = drawing("a.dxf");
    ASSERT_TRUE(manager().open(file).ok);
    Document* document = manager().create();
    const ap::Result result = manager().saveAs(*document, file);
    EXPECT_FALSE(result.ok);
    EXPECT_THAT(result.message.toStdString(), HasSubstr("open as another drawing"));
}

TEST_F(DocManagerTest, AFailedSaveLeavesNameAndChangedMark) {
    Document* document = manager().create();
    addLine(*document);
    ASSERT_TRUE(document->isChanged());
    EXPECT_FALSE(manager().saveAs(*document, path("no/such/folder/a.dxf")).ok);
    EXPECT_TRUE(document->isChanged());
    EXPECT_EQ(document->path(), QString());
}

TEST_F(DocManagerTest, TheTitleIsToldOfWhenTheChangedMarkComesAndGoes) {
    Document* document = manager().create();
    int told = 0;
    QObject::connect(document, &Document::titleChanged, document, [&] { ++told; });
    addLine(*document);
    addLine(*document);
    EXPECT_EQ(told, 1);
    ASSERT_TRUE(manager().saveAs(*document, path("a.dxf")).ok);
    EXPECT_EQ(told, 2);
    EXPECT_FALSE(document->isChanged());
    EXPECT_EQ(document->title(), QStringLiteral("a.dxf"));
}

// --- locks

TEST_F(DocManagerTest, ALockIsOneUndoUnit) {
    Document* document = manager().create();
    auto& undo = document->database()->imp().undo;
    const auto before = undo.undoUnits().size();
    ASSERT_EQ(manager().lockDocument(document, MxApLockMode::kWrite, L"PhonomarkDel", L"Delete notes"), Mx::eOk);
    ASSERT_EQ(manager().lockDocument(document, MxApLockMode::kWrite, L"phonomarkdel", L"x"), Mx::eOk) << "nested";
    addLine(*document);
    EXPECT_EQ(manager().unlockDocument(document), Mx::eOk);
    addLine(*document);
    EXPECT_EQ(manager().unlockDocument(document), Mx::eOk);
    ASSERT_EQ(undo.undoUnits().size(), before + 1);
    EXPECT_EQ(undo.undoUnits().back().name, L"Delete notes");
    EXPECT_EQ(manager().unlockDocument(document), Mx::eNotOpen);
}

TEST_F(DocManagerTest, ALockWithoutChangesLeavesNothingToUndo) {
    Document* document = manager().create();
    const auto before = document->database()->imp().undo.undoUnits().size();
    manager().lockDocument(document, MxApLockMode::kWrite, L"A", L"A");
    manager().unlockDocument(document);
    EXPECT_EQ(document->database()->imp().undo.undoUnits().size(), before);
    EXPECT_FALSE(document->isChanged());
}

TEST_F(DocManagerTest, AnotherCommandsLockConflictsAndIsToldOnlyWithPrompt) {
    Document* document = manager().create();
    manager().lockDocument(document, MxApLockMode::kWrite, L"First", L"First");
    EXPECT_EQ(manager().lockDocument(document, MxApLockMode::kWrite, L"Second", L"Second", false), Mx::eLockConflict);
    EXPECT_EQ(shown(), "");
    EXPECT_EQ(manager().lockDocument(document, MxApLockMode::kWrite, L"Second", L"Second", true), Mx::eLockConflict);
    EXPECT_EQ(shown(), "\nSecond: the drawing is held by First.");
    manager().unlockDocument(document);
    EXPECT_EQ(manager().lockDocument(document, MxApLockMode::kWrite, L"Second", L"Second"), Mx::eOk);
    manager().unlockDocument(document);
}

TEST_F(DocManagerTest, AForgottenLockStopsNoCommand) {
    g_document = manager().create();
    manager().lockDocument(g_document, MxApLockMode::kWrite, L"Forgotten", L"Forgotten");
    const MxDbObjectId first = addLine(*g_document);
    MxDbObjectId second;
    registerCommand(L"LINE1", [&] { second = addLine(*g_document); });
    run("LINE1");
    ASSERT_NE(db::DatabaseImp::peek(second), nullptr);
    EXPECT_EQ(manager().unlockDocument(g_document), Mx::eNotOpen);
    ASSERT_TRUE(manager().undo(*g_document));
    EXPECT_EQ(db::DatabaseImp::peek(second), nullptr);
    EXPECT_NE(db::DatabaseImp::peek(first), nullptr) << "the lock had a unit of its own";
}

TEST_F(DocManagerTest, AForgottenLockStopsNeitherUndoNorRedo) {
    Document* document = manager().create();
    const MxDbObjectId line = addLine(*document);
    manager().lockDocument(document, MxApLockMode::kWrite, L"Forgotten", L"Forgotten");
    EXPECT_TRUE(manager().undo(*document));
    EXPECT_EQ(db::DatabaseImp::peek(line), nullptr);
    manager().lockDocument(document, MxApLockMode::kWrite, L"Forgotten", L"Forgotten");
    EXPECT_TRUE(manager().redo(*document));
    EXPECT_NE(db::DatabaseImp::peek(line), nullptr);
}

TEST_F(DocManagerTest, ACommandUnderWayKeepsItsLocksAndIsNotUndone) {
    g_document = manager().create();
    registerCommand(L"HOLD", [] {
        manager().lockDocument(g_document, MxApLockMode::kWrite, L"Inner", L"Inner");
        addLine(*g_document);
        EXPECT_FALSE(manager().undo(*g_document));
        EXPECT_EQ(manager().unlockDocument(g_document), Mx::eOk);
    });
    run("HOLD");
    EXPECT_TRUE(manager().undo(*g_document));
}

TEST_F(DocManagerTest, ACommandThatThrowsLeavesNoLock) {
    g_document = manager().create();
    registerCommand(L"BREAKLOCKED", [] {
        manager().lockDocument(g_document, MxApLockMode::kWrite, L"Inner", L"Inner");
        addLine(*g_document);
        throw 1;
    });
    run("BREAKLOCKED");
    EXPECT_EQ(db::DatabaseImp::peek(entitiesOf(*g_document).front()), nullptr);
    EXPECT_EQ(manager().unlockDocument(g_document), Mx::eNotOpen);
}

TEST_F(DocManagerTest, LocksOfWhatIsNoOpenDocumentAreRefused) {
    EXPECT_EQ(manager().lockDocument(nullptr, MxApLockMode::kWrite, L"A", L"A"), Mx::eNoDocument);
    EXPECT_EQ(manager().unlockDocument(nullptr), Mx::eNoDocument);
    EXPECT_EQ(manager().lockDocument(manager().create(), MxApLockMode::kNone, L"A", L"A"), Mx::eInvalidInput);
}

// --- commands and undo

TEST_F(DocManagerTest, ACommandWithItsLocksIsOneUndoUnit) {
    g_document = manager().create();
    registerCommand(L"TWOLINES", [] {
        addLine(*g_document);
        manager().lockDocument(g_document, MxApLockMode::kWrite, L"Inner", L"Inner");
        addLine(*g_document);
        manager().unlockDocument(g_document);
    });
    const auto& block = *g_document->database()->imp().block(g_document->database()->currentSpaceId());
    run("TWOLINES");
    ASSERT_EQ(block.entityIds().size(), 2U);
    EXPECT_TRUE(manager().undo(*g_document));
    for (const MxDbObjectId id : block.entityIds())
        EXPECT_EQ(db::DatabaseImp::peek(id), nullptr);
    EXPECT_TRUE(manager().redo(*g_document));
    for (const MxDbObjectId id : block.entityIds())
        EXPECT_NE(db::DatabaseImp::peek(id), nullptr);
    EXPECT_FALSE(manager().redo(*g_document));
}

TEST_F(DocManagerTest, ACommandThatThrowsLeavesTheDrawingAsItWas) {
    g_document = manager().create();
    registerCommand(L"BREAK", [] {
        addLine(*g_document);
        throw 1;
    });
    run("BREAK");
    const auto& block = *g_document->database()->imp().block(g_document->database()->currentSpaceId());
    for (const MxDbObjectId id : block.entityIds())
        EXPECT_EQ(db::DatabaseImp::peek(id), nullptr);
    EXPECT_FALSE(manager().undo(*g_document));
    EXPECT_FALSE(g_document->isChanged());
}

TEST_F(DocManagerTest, AThrowingCommandKeepsTheChangedMarkOfWhatCannotBeTakenBack) {
    g_document = manager().create();
    ASSERT_TRUE(manager().saveAs(*g_document, path("a.dxf")).ok);
    registerCommand(L"BREAKAFTERSAVE", [this] {
        addLine(*g_document);
        manager().saveAs(*g_document, path("a.dxf"));
        throw 1;
    });
    run("BREAKAFTERSAVE");
    EXPECT_TRUE(g_document->isChanged()) << "the file has the line";
    ASSERT_TRUE(manager().save(*g_document).ok);
    const MxDbObjectId line = addLine(*g_document);
    ASSERT_TRUE(manager().save(*g_document).ok);
    registerCommand(L"BREAKAFTERMARK", [line] {
        mxdbMarkModified(line);
        throw 1;
    });
    run("BREAKAFTERMARK");
    EXPECT_TRUE(g_document->isChanged());
}

TEST_F(DocManagerTest, WhatIsWrittenAlongWithASaveIsNoStepToUndo) {
    Document* document = manager().create();
    const MxDbObjectId line = addLine(*document);
    MxDbObjectId along;
    Log log;
    log.onSave = [&](MxDbDatabase*) { along = addLine(*document); };
    ASSERT_TRUE(manager().saveAs(*document, path("a.dxf")).ok);
    ASSERT_NE(db::DatabaseImp::peek(along), nullptr);
    EXPECT_TRUE(manager().undo(*document));
    EXPECT_EQ(db::DatabaseImp::peek(line), nullptr);
    EXPECT_TRUE(document->isChanged());
    ASSERT_TRUE(manager().save(*document).ok);
    EXPECT_TRUE(manager().redo(*document)) << "a save takes no redo away";
    EXPECT_NE(db::DatabaseImp::peek(line), nullptr);
}

TEST_F(DocManagerTest, AListWrittenAlongWithASaveStaysThroughUndoAndRedo) {
    Document* document = manager().create();
    MxDbObjectId list;
    const auto setList = [&](std::int64_t value) {
        MxDbDictionary* named = nullptr;
        ASSERT_EQ(document->database()->getNamedObjectsDictionary(named, Mx::kForWrite), Mx::eOk);
        MxDbXrecord* record = nullptr;
        if (named->getAt(L"LIST", list) == Mx::eOk) {
            ASSERT_EQ(mxdbOpenObject(record, list, Mx::kForWrite), Mx::eOk);
        } else {
            record = new MxDbXrecord;
            ASSERT_EQ(named->setAt(L"LIST", record, list), Mx::eOk);
        }
        EXPECT_EQ(record->setFromRbChain({nullptr, 90, value}), Mx::eOk);
        record->close();
        named->close();
    };
    const auto listValue = [&] {
        MxDbXrecord* record = nullptr;
        resbuf* chain = nullptr;
        if (mxdbOpenObject(record, list, Mx::kForRead) != Mx::eOk)
            return std::int64_t{-1};
        record->rbChain(&chain);
        const std::int64_t value = chain ? std::get<std::int64_t>(chain->resval) : -1;
        mxutRelRb(chain);
        record->close();
        return value;
    };
    addLine(*document);
    addLine(*document);
    Log log;
    std::int64_t count = 0;
    log.onSave = [&](MxDbDatabase*) { setList(++count); };
    ASSERT_TRUE(manager().saveAs(*document, path("a.merix")).ok);
    ASSERT_TRUE(manager().undo(*document));
    ASSERT_TRUE(manager().save(*document).ok);
    ASSERT_TRUE(manager().redo(*document));
    EXPECT_EQ(listValue(), 2);
    ASSERT_TRUE(manager().undo(*document));
    ASSERT_TRUE(manager().undo(*document));
    EXPECT_EQ(listValue(), 2);
    EXPECT_FALSE(manager().undo(*document));
    manager().close(*document);

    ASSERT_TRUE(manager().open(path("a.merix"), &document).ok);
    MxDbDictionary* named = nullptr;
    ASSERT_EQ(document->database()->getNamedObjectsDictionary(named, Mx::kForRead), Mx::eOk);
    EXPECT_EQ(named->getAt(L"LIST", list), Mx::eOk);
    named->close();
    EXPECT_EQ(listValue(), 2);
}

TEST_F(DocManagerTest, WhatAModuleWritesAsItIsUnloadedIsNoStepToUndo) {
    Document* document = manager().create();
    const MxDbObjectId line = addLine(*document);
    LoadedModule module;
    std::vector<MxDbObjectId> written;
    module.log.onMessage = [&](int message) {
        if (message == kUnloadDwgMsg || message == kUnloadAppMsg)
            written.push_back(addLine(*document));
    };
    module.unload();
    ASSERT_EQ(written.size(), 2U);
    ASSERT_TRUE(manager().undo(*document));
    EXPECT_EQ(db::DatabaseImp::peek(line), nullptr);
    for (const MxDbObjectId id : written)
        EXPECT_NE(db::DatabaseImp::peek(id), nullptr);
    addLine(*document);
    EXPECT_TRUE(manager().undo(*document)) << "steps are recorded again";
}

TEST_F(DocManagerTest, AModuleMayCloseDrawingsWhileItIsToldOfThem) {
    Document* first = manager().create();
    Document* second = manager().create();
    Document* third = manager().create();
    LoadedModule module;
    bool closing = false;
    module.log.onMessage = [&](int message) {
        if (message != kUnloadDwgMsg || std::exchange(closing, true))
            return;
        manager().close(*second);
        manager().close(*third);
    };
    module.unload();
    EXPECT_THAT(manager().all(), ElementsAre(first));
    EXPECT_EQ(manager().current(), first);
    EXPECT_EQ(mxdbHostApplicationServices()->workingDatabase(), first->database());
}

TEST_F(DocManagerTest, RedrawingChangesNothingThatIsSaved) {
    const QString file = drawing("plan.dxf");
    Document* document = nullptr;
    ASSERT_TRUE(manager().open(file, &document).ok);
    struct Redrawer : MxEditorReactor {
        Redrawer() { ed::Editor::instance().addReactor(this); }
        ~Redrawer() override { ed::Editor::instance().removeReactor(this); }
        void viewChanged() override { redraw(); }
        static void redraw() {
            for (const MxDbObjectId id : entitiesOf(*manager().current())) {
                MxDbEntity* entity = nullptr;
                ASSERT_EQ(mxdbOpenObject(entity, id, Mx::kForRead), Mx::eOk);
                ASSERT_EQ(entity->upgradeOpen(), Mx::eOk);
                entity->recordGraphicsModified(true);
                entity->close();
                EXPECT_EQ(mxdbEntUpd(id), Mx::eOk);
            }
        }
    } redrawer;
    int drawn = 0;
    QObject::connect(document, &Document::graphicsChanged, document, [&] { ++drawn; });
    ed::Editor::instance().notifyViewChanged();
    registerCommand(L"TOGGLE", [] { Redrawer::redraw(); });
    run("TOGGLE");
    EXPECT_EQ(drawn, 4);
    EXPECT_FALSE(document->isChanged());
    EXPECT_FALSE(document->database()->imp().isChanged());
    ASSERT_TRUE(manager().saveAs(*document, path("copy.dxf")).ok);
    EXPECT_EQ(bytesOf(path("copy.dxf")), bytesOf(file));
}

TEST_F(DocManagerTest, DrawingAnewIsNoChangeButAChangeOnTheWayIs) {
    const QString file = drawing("plan.dxf");
    struct Redrawer : MxApDocManagerReactor {
        bool change = false;
        Redrawer() { manager().addReactor(this); }
        ~Redrawer() override { manager().removeReactor(this); }
        void documentActivated(MxApDocument* document) override {
            MxDbEntity* entity = nullptr;
            const MxDbDatabase& database = *document->database();
            const MxDbObjectId id = database.imp().block(database.currentSpaceId())->entityIds().front();
            if (mxdbOpenObject(entity, id, Mx::kForWrite) != Mx::eOk)
                return;
            if (change)
                entity->assertWriteEnabled();
            entity->recordGraphicsModified(true);
            entity->close();
        }
    } redrawer;
    Document* document = nullptr;
    ASSERT_TRUE(manager().open(file, &document).ok);
    EXPECT_FALSE(document->isChanged());
    EXPECT_TRUE(document->database()->imp().isChanged()) << "the object was written to all the same";
    manager().close(*document);
    redrawer.change = true;
    ASSERT_TRUE(manager().open(file, &document).ok);
    EXPECT_TRUE(document->isChanged());
}

TEST_F(DocManagerTest, WithoutADrawingOnlySessionCommandsRun) {
    bool ran = false;
    registerCommand(L"NEEDSDRAWING", [&] { ran = true; });
    run("NEEDSDRAWING");
    EXPECT_FALSE(ran);
    EXPECT_THAT(shown(), HasSubstr("No drawing is open."));
    run("NEW");
    EXPECT_EQ(manager().all().size(), 1U);
}

TEST_F(DocManagerTest, ClosingDuringACommandCancelsItAndClosesWhenItIsOver) {
    g_document = manager().create();
    int result = 0;
    bool openInside = false;
    registerCommand(L"ASK", [&] {
        MxGePoint3d point;
        result = mxedGetPoint(nullptr, L"", point);
        openInside = manager().all().size() == 1;
    });
    struct Closer : ed::InputSource {
        bool feed() override {
            manager().close(*g_document);
            return true;
        }
    } closer;
    ed::Prompter::instance().setSource(&closer);
    run("ASK");
    ed::Prompter::instance().setSource(nullptr);
    EXPECT_EQ(result, kInputCancel);
    EXPECT_TRUE(openInside);
    EXPECT_THAT(manager().all(), IsEmpty());
}

// --- layouts

TEST_F(DocManagerTest, TheLayoutChoosesTheSpaceOfNewEntitiesAndIsToldOf) {
    Document* document = manager().create();
    const QStringList layouts = document->layouts();
    ASSERT_GE(layouts.size(), 2);
    EXPECT_EQ(layouts.first(), QStringLiteral("Model"));
    Log log;
    EXPECT_TRUE(document->setCurrentLayout(layouts[1].toUpper()));
    EXPECT_EQ(document->currentLayout(), layouts[1]);
    EXPECT_NE(document->database()->currentSpaceId(), document->database()->imp().roots.modelSpace);
    EXPECT_TRUE(document->setCurrentLayout(layouts[1]));
    EXPECT_THAT(log.take(), ElementsAre("layout " + layouts[1].toStdString()));
    EXPECT_FALSE(document->setCurrentLayout(QStringLiteral("no such layout")));
    EXPECT_TRUE(document->setCurrentLayout(QStringLiteral("Model")));
    EXPECT_EQ(document->database()->currentSpaceId(), document->database()->imp().roots.modelSpace);
}

// --- recovery

TEST_F(DocManagerTest, RecoveryFilesStandBesideTheDrawingAndTouchNothing) {
    const QString file = drawing("plan.dxf");
    Document* document = nullptr;
    ASSERT_TRUE(manager().open(file, &document).ok);
    EXPECT_THAT(manager().writeRecoveryFiles(), IsEmpty()) << "nothing is unsaved";
    addLine(*document);
    QFile drawingFile(file);
    ASSERT_TRUE(drawingFile.open(QIODevice::ReadOnly));
    const QByteArray before = drawingFile.readAll();
    EXPECT_EQ(manager().writeRecoveryFiles(), QStringList{file + QStringLiteral(".recovered.merix")});
    addLine(*document);
    EXPECT_EQ(manager().writeRecoveryFiles(), QStringList{file + QStringLiteral(".recovered-2.merix")});
    drawingFile.seek(0);
    EXPECT_EQ(drawingFile.readAll(), before);
    manager().close(*document);
    ASSERT_TRUE(manager().open(file + QStringLiteral(".recovered.merix"), &document).ok);
    EXPECT_EQ(document->database()->imp().block(document->database()->currentSpaceId())->entityIds().size(), 2U);
}

TEST_F(DocManagerTest, WhatIsWrittenAlongWithASaveIsInTheRecoveryFileToo) {
    const QString file = drawing("plan.dxf");
    Document* document = nullptr;
    ASSERT_TRUE(manager().open(file, &document).ok);
    addLine(*document);
    {
        Log log;
        log.onSave = [&](MxDbDatabase*) { addLine(*document); };
        ASSERT_EQ(manager().writeRecoveryFiles().size(), 1);
        EXPECT_THAT(log.take(), ElementsAre("save plan.dxf.recovered.merix plan.dxf (current)"));
    }
    manager().close(*document);
    ASSERT_TRUE(manager().open(file + QStringLiteral(".recovered.merix"), &document).ok);
    EXPECT_EQ(entitiesOf(*document).size(), 3U);
}
