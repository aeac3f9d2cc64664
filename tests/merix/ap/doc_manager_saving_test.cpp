// SPDX-License-Identifier: MIT
#include "doc_manager_fixture.h"

using namespace merix;
using namespace merix::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

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
