// SPDX-License-Identifier: MIT
#include "merix/ap/recover_command.h"

#include "doc_manager_fixture.h"
#include "merix/ap/autosave.h"
#include "tests/merix/ed/answers.h"

#include <sys/wait.h>
#include <unistd.h>

using namespace merix;
using namespace merix::test;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

/// Every test has a user's data folder of its own.
class RecoverCommandTest : public DocManagerTest {
protected:
    RecoverCommandTest() {
        qputenv("XDG_DATA_HOME", path("data").toUtf8());
        qputenv("XDG_CONFIG_HOME", path("config").toUtf8());
    }
    /// Another program opens the drawing (empty: makes one), draws so many lines, puts a copy aside and dies.
    static void dieAtWorkOn(const QString& drawing, int lines = 1) {
        const pid_t child = fork();
        if (child == 0) {
            Document* document = nullptr;
            if (drawing.isEmpty())
                document = manager().create();
            else
                manager().open(drawing, &document);
            ap::Autosave::instance().setInterval(0);
            for (int line = 0; line < lines; ++line)
                addLine(*document);
            _exit(ap::Autosave::instance().saveNow().size() == 1 ? 0 : 1); // no destructor runs
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    static void recover(std::vector<QString> answers) {
        const Answers given(std::move(answers));
        run("RECOVER");
    }
};

} // namespace

TEST_F(RecoverCommandTest, WithoutACopyItTellsSo) {
    run("RECOVER");
    EXPECT_THAT(shown(), HasSubstr("Nothing was left behind."));
}

TEST_F(RecoverCommandTest, WhatIsLeftIsListedWithWhatChangedAndLeftThereWithoutAnAnswer) {
    const QString plan = drawing("plan.dxf");
    dieAtWorkOn(plan, 2);
    dieAtWorkOn({});
    for (const std::vector<QString>& answers : {std::vector<QString>{}, {QString()}, {QStringLiteral("Recover")}}) {
        recover(answers);
        const std::string out = shown();
        EXPECT_THAT(out, HasSubstr("\n1  " + plan.toStdString() + ", "));
        EXPECT_THAT(out, HasSubstr(": 2 LINE added\n2  Drawing"));
        EXPECT_THAT(out, HasSubstr(": 1 LINE added"));
        EXPECT_THAT(manager().all(), IsEmpty());
    }
    EXPECT_EQ(ap::SessionList::leftBehind().size(), 2U);
}

TEST_F(RecoverCommandTest, TheOneChosenIsOpenedAsTheDrawingWithChangesToSave) {
    const QString plan = drawing("plan.dxf"), site = drawing("site.merix");
    dieAtWorkOn(plan);
    dieAtWorkOn(site, 2);
    const QByteArray before = bytesOf(site);
    recover({QStringLiteral("Recover"), QStringLiteral("2")});
    EXPECT_THAT(shown(), HasSubstr("Recovered site.merix"));
    ASSERT_EQ(manager().all().size(), 1U);
    Document* document = manager().current();
    EXPECT_EQ(document->path(), site);
    EXPECT_TRUE(document->isChanged());
    EXPECT_EQ(entitiesOf(*document).size(), 3U);
    EXPECT_EQ(bytesOf(site), before) << "the file is another only after a save";
    ASSERT_TRUE(manager().save(*document).ok);
    EXPECT_FALSE(QFile::exists(site + QStringLiteral(".ms$")));
    recover({});
    EXPECT_THAT(shown(), HasSubstr("1  " + plan.toStdString()));
}

TEST_F(RecoverCommandTest, AllAreOpenedTheOldestFirst) {
    dieAtWorkOn(drawing("plan.dxf"));
    dieAtWorkOn({});
    recover({QStringLiteral("Recover"), QStringLiteral("all")});
    ASSERT_EQ(manager().all().size(), 2U);
    EXPECT_EQ(manager().all()[0]->path(), path("plan.dxf"));
    EXPECT_EQ(manager().all()[1]->path(), QString());
    run("RECOVER");
    EXPECT_THAT(shown(), HasSubstr("Nothing was left behind.")) << "this program holds them now";
}

TEST_F(RecoverCommandTest, ADiscardedCopyIsGoneAndTheDrawingAsItWas) {
    const QString plan = drawing("plan.dxf");
    dieAtWorkOn(plan);
    const QByteArray before = bytesOf(plan);
    recover({QStringLiteral("Discard"), QStringLiteral("1")});
    EXPECT_FALSE(QFile::exists(plan + QStringLiteral(".ms$")));
    EXPECT_EQ(bytesOf(plan), before);
    run("RECOVER");
    EXPECT_THAT(shown(), HasSubstr("Nothing was left behind."));
}

TEST_F(RecoverCommandTest, ANumberThatIsNotInTheListDoesNothing) {
    dieAtWorkOn(drawing("plan.dxf"));
    for (const char* number : {"0", "2", "-1", "plan"}) {
        recover({QStringLiteral("Discard"), QString::fromLatin1(number)});
        EXPECT_THAT(shown(), HasSubstr("There is no copy " + std::string(number) + "."));
    }
    EXPECT_EQ(ap::SessionList::leftBehind().size(), 1U);
}

TEST_F(RecoverCommandTest, ACopyOfAnOpenDrawingWaitsUntilThatIsClosed) {
    const QString plan = drawing("plan.dxf");
    dieAtWorkOn(plan);
    ASSERT_TRUE(manager().open(plan).ok) << "the offer is never in the way";
    recover({QStringLiteral("Recover"), QStringLiteral("1")});
    EXPECT_THAT(shown(), HasSubstr("close the drawing before its copy is opened"));
    ASSERT_EQ(manager().all().size(), 1U);
    EXPECT_EQ(entitiesOf(*manager().current()).size(), 1U);
    manager().close(*manager().current());
    recover({QStringLiteral("Recover"), QStringLiteral("1")});
    ASSERT_EQ(manager().all().size(), 1U);
    EXPECT_EQ(entitiesOf(*manager().current()).size(), 2U);
}

TEST_F(RecoverCommandTest, WhatWasOfferedIsKeptThoughTheDrawingIsSavedMeanwhile) {
    const QString plan = drawing("plan.dxf"), copy = plan + QStringLiteral(".ms$");
    dieAtWorkOn(plan);
    const QByteArray left = bytesOf(copy);
    const std::vector<ap::Recovery> offered = ap::Autosave::instance().offer();
    ASSERT_EQ(offered.size(), 1U);
    Document* document = nullptr;
    ASSERT_TRUE(manager().open(plan, &document).ok);
    addLine(*document);
    ASSERT_TRUE(manager().save(*document).ok);
    QFile old(copy);
    ASSERT_TRUE(old.open(QFile::ReadWrite));
    ASSERT_TRUE(old.setFileTime(QDateTime::currentDateTime().addSecs(-60), QFile::FileModificationTime));
    old.close();
    addLine(*document);
    ap::Autosave::instance().setInterval(0);
    EXPECT_EQ(ap::Autosave::instance().saveNow(), QStringList{plan + QStringLiteral(".2.ms$")});
    EXPECT_EQ(bytesOf(copy), left);
    // The saved drawing is not given the older content under its own name.
    QStringList settled;
    QObject context;
    QObject::connect(&ap::Autosave::instance(), &ap::Autosave::settled, &context,
                     [&](const QString& which) { settled << which; });
    ASSERT_TRUE(ap::Autosave::instance().recover(offered[0]).ok);
    EXPECT_EQ(settled, QStringList{copy});
    EXPECT_EQ(manager().current()->path(), QString());
    EXPECT_EQ(manager().current()->title(), QStringLiteral("plan.dxf"));
    EXPECT_TRUE(manager().current()->isChanged());
    EXPECT_EQ(manager().all().size(), 2U);
    manager().close(*manager().current());
    EXPECT_FALSE(QFile::exists(copy)) << "the user gave it up";
}

TEST_F(RecoverCommandTest, WhereNobodySitsARecoveredDrawingThatWasNotSavedIsLeftForTheNextRun) {
    const QString plan = drawing("plan.dxf"), site = drawing("site.dxf");
    dieAtWorkOn(plan);
    dieAtWorkOn(site);
    const pid_t child = fork();
    if (child == 0) {
        recover({QStringLiteral("Recover"), QStringLiteral("All")});
        ap::Autosave::instance().keepRecovered();
        manager().save(*manager().current());
        manager().closeAll();
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    const std::vector<ap::Recovery> left = ap::SessionList::leftBehind();
    ASSERT_EQ(left.size(), 1U);
    EXPECT_EQ(left[0].drawing, plan);
    EXPECT_FALSE(QFile::exists(site + QStringLiteral(".ms$"))) << "it was saved";
}

TEST_F(RecoverCommandTest, WhatCannotBeReadIsSaidSoAndKept) {
    const QString plan = drawing("plan.dxf"), site = drawing("site.dxf");
    dieAtWorkOn(plan);
    dieAtWorkOn(site);
    QFile copy(plan + QStringLiteral(".ms$")), original(site);
    ASSERT_TRUE(copy.open(QFile::WriteOnly));
    copy.write("no drawing");
    copy.close();
    ASSERT_TRUE(original.remove());
    ASSERT_TRUE(original.open(QFile::WriteOnly));
    original.write("neither");
    original.flush();
    original.setFileTime(QDateTime::currentDateTime().addSecs(-60), QFile::FileModificationTime);
    original.close();
    recover({QStringLiteral("Recover"), QStringLiteral("All")});
    const std::string out = shown();
    EXPECT_THAT(out, HasSubstr("the copy cannot be read"));
    EXPECT_THAT(out, HasSubstr("the drawing itself cannot be read"));
    EXPECT_THAT(out, HasSubstr("\n" + plan.toStdString() + ".ms$: "));
    EXPECT_THAT(out, HasSubstr("Recovered site.dxf"));
    EXPECT_THAT(out, Not(HasSubstr("Recovered plan.dxf")));
    EXPECT_TRUE(copy.exists());
    ASSERT_EQ(manager().all().size(), 1U);
    EXPECT_EQ(entitiesOf(*manager().current()).size(), 2U) << "the copy needs no drawing";
}

TEST_F(RecoverCommandTest, ACopyWithoutAChangeIsDescribedSo) {
    const QString plan = drawing("plan.dxf");
    EXPECT_THAT(ap::describe({plan, plan, QStringLiteral("plan.dxf"), {}}).toStdString(), HasSubstr("nothing changed"));
}

TEST_F(RecoverCommandTest, AutosaveTellsOfEachCopyItMakes) {
    ap::Autosave::instance().setInterval(0);
    run("AUTOSAVE");
    EXPECT_THAT(shown(), HasSubstr("No drawing has changes that a file does not hold."));
    Document* plan = nullptr;
    ASSERT_TRUE(manager().open(drawing("plan.dxf"), &plan).ok);
    addLine(*plan);
    addLine(*manager().create());
    run("AUTOSAVE");
    const std::string out = shown();
    EXPECT_THAT(out, HasSubstr("\nCopied to " + path("plan.dxf.ms$").toStdString()));
    EXPECT_THAT(out, HasSubstr("\nCopied to " + path("data").toStdString()));
    EXPECT_TRUE(plan->isChanged());
}
