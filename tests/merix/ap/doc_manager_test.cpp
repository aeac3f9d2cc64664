// SPDX-License-Identifier: MIT
#include "doc_manager_fixture.h"

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
