// SPDX-License-Identifier: MIT
#include "doc_manager_fixture.h"

#include <QCoreApplication>

using namespace merix;
using namespace merix::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

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
    EXPECT_THAT(log.take(),
                ElementsAre("to be deactivated " + two + " (current)", "to be destroyed " + two + " (current)",
                            "to be activated " + one, "activated " + one + " (current)"));
    EXPECT_THAT(manager().documents(), ElementsAre(first));
    manager().close(*first);
    EXPECT_THAT(log.take(),
                ElementsAre("to be deactivated " + one + " (current)", "to be destroyed " + one + " (current)"));
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

TEST_F(DocManagerTest, ADocumentThatIsClosedAgainWhileItClosesIsToldOfOnce) {
    Document* first = manager().create();
    Document* second = manager().create();
    const std::string one = first->title().toStdString(), two = second->title().toStdString();
    Log log;
    log.onLine = [&](const std::string& line, Document* document) {
        if (line.starts_with("to be de"))
            manager().close(*document);
    };
    manager().close(*second);
    EXPECT_THAT(log.take(),
                ElementsAre("to be deactivated " + two + " (current)", "to be destroyed " + two + " (current)",
                            "to be activated " + one, "activated " + one + " (current)"));
    EXPECT_THAT(manager().all(), ElementsAre(first));
}

TEST_F(DocManagerTest, ThoseToldOfAClosingDocumentMayCloseTheNextOneToo) {
    for (const char* when : {"to be deactivated", "to be destroyed"}) {
        Document* first = manager().create();
        Document* second = manager().create();
        Document* third = manager().create();
        Log log;
        log.onLine = [&, once = false](const std::string& line, Document*) mutable {
            if (line.starts_with(when) && !std::exchange(once, true))
                manager().close(*second);
        };
        manager().close(*third);
        EXPECT_THAT(manager().all(), ElementsAre(first)) << when;
        EXPECT_EQ(manager().current(), first) << when;
        manager().close(*first);
    }
}

TEST_F(DocManagerTest, WhatIsActivatedWhileTheCurrentDocumentClosesStaysActive) {
    Document* first = manager().create();
    manager().create();
    Document* third = manager().create();
    Log log;
    log.onLine = [&](const std::string& line, Document*) {
        if (line.starts_with("to be destroyed"))
            manager().activate(first);
    };
    manager().close(*third);
    EXPECT_EQ(manager().current(), first);
    EXPECT_THAT(log.take(), testing::Contains("activated " + first->title().toStdString() + " (current)").Times(1));
}

TEST_F(DocManagerTest, ADocumentThatIsClosedAsItIsToldOfIsNotHandedOut) {
    const QString file = drawing("plan.dxf");
    for (const char* when : {"created", "to be activated", "activated"}) {
        Document* first = manager().create();
        Log log;
        log.onLine = [&](const std::string& line, Document* document) {
            if (line.starts_with(when) && document != first)
                manager().close(*document);
        };
        Document* opened = nullptr;
        const ap::Result result = manager().open(file, &opened);
        EXPECT_FALSE(result.ok);
        EXPECT_THAT(result.message.toStdString(), HasSubstr("plan.dxf: it was closed as it was opened"));
        EXPECT_FALSE(manager().openCopy(file, {}, QStringLiteral("copy"), &opened).ok);
        EXPECT_EQ(opened, nullptr);
        EXPECT_EQ(manager().create(), nullptr);
        EXPECT_THAT(manager().all(), ElementsAre(first)) << when;
        EXPECT_EQ(manager().current(), first) << when;
        log.onLine = {};
        manager().close(*first);
    }
}

TEST_F(DocManagerTest, TheOldDocumentMayBeClosedAsItIsDeactivated) {
    Document* first = manager().create();
    Document* second = manager().create();
    Document* third = manager().create();
    manager().activate(second);
    Log log;
    log.onLine = [&, once = false](const std::string& line, Document* document) mutable {
        if (line.starts_with("to be deactivated") && !std::exchange(once, true))
            manager().close(*document);
    };
    manager().activate(first);
    EXPECT_THAT(manager().all(), ElementsAre(first, third));
    EXPECT_EQ(manager().current(), first);
    EXPECT_EQ(mxdbHostApplicationServices()->workingDatabase(), first->database());
}

TEST_F(DocManagerTest, ACloseAskedForInASaveHappensWhenTheSaveIsOver) {
    int argumentCount = 1;
    char name[] = "test";
    char* arguments[] = {name, nullptr};
    const QCoreApplication application(argumentCount, arguments);
    Document* document = manager().create();
    Log log;
    log.onSave = [&](MxDbDatabase*) { manager().close(*document); };
    EXPECT_TRUE(manager().saveAs(*document, path("a.dxf")).ok);
    EXPECT_THAT(manager().all(), ElementsAre(document)) << "who saved is not done with it";
    QCoreApplication::sendPostedEvents(&manager());
    EXPECT_THAT(manager().all(), IsEmpty());
    EXPECT_TRUE(QFile::exists(path("a.dxf")));
}

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
