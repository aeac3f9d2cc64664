// SPDX-License-Identifier: MIT
#include "doc_manager_fixture.h"

using namespace merix;
using namespace merix::test;
using testing::HasSubstr;
using testing::IsEmpty;

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

TEST_F(DocManagerTest, WhatAThrowingCommandDidIsCountedOnItsWayBackToo) {
    g_document = manager().create();
    quint64 inside = 0;
    registerCommand(L"BREAKCOUNTED", [&] {
        addLine(*g_document);
        inside = g_document->changes();
        throw 1;
    });
    run("BREAKCOUNTED");
    EXPECT_NE(g_document->changes(), inside) << "a copy made inside holds what is no longer there";
}

TEST_F(DocManagerTest, WhatAModuleWritesAsItIsLoadedIsNoChange) {
    Document* document = manager().create();
    addLine(*document);
    ASSERT_TRUE(manager().saveAs(*document, path("a.dxf")).ok);
    const quint64 before = document->changes();
    const std::size_t steps = document->database()->imp().undo.undoUnits().size();
    LoadedModule module([document](int message) {
        if (message == kInitAppMsg || message == kUnloadAppMsg)
            addLine(*document);
    });
    EXPECT_EQ(entitiesOf(*document).size(), 2U);
    EXPECT_FALSE(document->isChanged());
    EXPECT_EQ(document->changes(), before);
    EXPECT_EQ(document->database()->imp().undo.undoUnits().size(), steps);
    addLine(*document);
    EXPECT_TRUE(document->isChanged()) << "changes are recorded again";
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

TEST_F(DocManagerTest, TheStepsOfADocumentAreNamedNewestFirst) {
    Document* document = manager().create();
    EXPECT_EQ(document->undoNames(), QStringList());
    addLine(*document);
    manager().lockDocument(document, MxApLockMode::kWrite, L"PhonomarkErase", L"Delete note");
    addLine(*document);
    manager().unlockDocument(document);
    manager().lockDocument(document, MxApLockMode::kWrite, L"PhonomarkDel", nullptr);
    addLine(*document);
    manager().unlockDocument(document);
    manager().lockDocument(document, MxApLockMode::kWrite, L"Empty", L"Empty");
    manager().unlockDocument(document);
    g_document = document;
    g_body = [] { addLine(*g_document); };
    ed::CommandStack::instance().addCommand(L"TEST", L"GLOBAL", L"LOKAL", 0, [] { g_body(); });
    run("_GLOBAL");
    const QStringList names{QStringLiteral("LOKAL"), QStringLiteral("PhonomarkDel"), QStringLiteral("Delete note"),
                            QStringLiteral("a change")};
    EXPECT_EQ(document->undoNames(), names);
    EXPECT_EQ(document->redoNames(), QStringList());
    ed::Console::instance().markRead();
    run("UNDO 3");
    EXPECT_THAT(shown(), HasSubstr("Undone: LOKAL, PhonomarkDel, Delete note"));
    EXPECT_EQ(document->undoNames(), QStringList{QStringLiteral("a change")});
    EXPECT_EQ(document->redoNames(),
              (QStringList{QStringLiteral("Delete note"), QStringLiteral("PhonomarkDel"), QStringLiteral("LOKAL")}));
    run("REDO 2");
    EXPECT_EQ(document->redoNames(), QStringList{QStringLiteral("LOKAL")});
    addLine(*document);
    EXPECT_EQ(document->redoNames(), QStringList());
}

TEST_F(DocManagerTest, ALockInUseByACommandOfAnotherNameIsRefusedUntilThatIsOver) {
    g_document = manager().create();
    Document* other = manager().create();
    ASSERT_EQ(manager().lockDocument(g_document, MxApLockMode::kWrite, L"First", L"First"), Mx::eOk);
    EXPECT_EQ(manager().lockDocument(g_document, MxApLockMode::kWrite, L"Second", L"Second", false), Mx::eLockConflict);
    EXPECT_EQ(manager().lockDocument(other, MxApLockMode::kWrite, L"Second", L"Second", false), Mx::eOk)
        << "each document has its own";
    addLine(*g_document);
    EXPECT_EQ(manager().unlockDocument(g_document), Mx::eOk);
    EXPECT_EQ(manager().unlockDocument(g_document), Mx::eNotOpen) << "the refused lock counts for nothing";
    EXPECT_EQ(g_document->undoNames(), QStringList{QStringLiteral("First")});
    EXPECT_EQ(other->undoNames(), QStringList());
    EXPECT_EQ(manager().unlockDocument(other), Mx::eOk);
}
