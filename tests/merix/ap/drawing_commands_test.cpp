// SPDX-License-Identifier: MIT
#include "merix/ap/drawing_commands.h"

#include "doc_manager_fixture.h"
#include "tests/merix/ed/answers.h"

using namespace merix;
using namespace merix::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class DrawingCommandsTest : public DocManagerTest {
protected:
    DrawingCommandsTest() {
        m_connection = QObject::connect(&manager(), &DocManager::quitRequested, [this] { ++quits; });
    }
    ~DrawingCommandsTest() override { QObject::disconnect(m_connection); }
    Document* changed() {
        Document* document = manager().create();
        addLine(*document);
        return document;
    }
    int quits = 0;

private:
    QMetaObject::Connection m_connection;
};

} // namespace

TEST_F(DrawingCommandsTest, QuitAsksForEveryChangedDrawing) {
    manager().create();
    changed();
    changed();
    const Answers answers({QStringLiteral("No"), QStringLiteral("No")});
    run("QUIT");
    EXPECT_EQ(answers.used(), 2U);
    EXPECT_EQ(quits, 1);
}

TEST_F(DrawingCommandsTest, QuitIsGivenUpByCancelAndEsc) {
    changed();
    {
        const Answers answers({QStringLiteral("Cancel")});
        run("QUIT");
    }
    const Answers answers({});
    run("QUIT");
    EXPECT_EQ(quits, 0);
}

TEST_F(DrawingCommandsTest, ADrawingMayCloseWhileQuitAsksAboutIt) {
    Document* first = changed();
    Document* second = changed();
    Answers answers({QStringLiteral("No")});
    int prompts = 0;
    answers.before = [&] {
        if (++prompts == 1)
            manager().close(*first);
    };
    run("QUIT");
    EXPECT_EQ(prompts, 2) << "the other one is asked about too";
    EXPECT_THAT(manager().all(), ElementsAre(second));
    EXPECT_EQ(quits, 0) << "the answer was meant for the drawing that was closed";
}

TEST_F(DrawingCommandsTest, DrawingsMayCloseAndOpenWhileQuitAsksAboutAnother) {
    changed();
    Document* second = changed();
    Answers answers({QStringLiteral("No"), QStringLiteral("No")});
    int prompts = 0;
    answers.before = [&] {
        if (++prompts == 1) {
            manager().close(*second);
            Document* const before = manager().current();
            changed();
            manager().activate(before);
        }
    };
    run("QUIT");
    EXPECT_EQ(quits, 0) << "the prompt was cancelled when another drawing became active";
    answers.before = nullptr;
    const Answers more({QStringLiteral("No"), QStringLiteral("No")});
    run("QUIT");
    EXPECT_EQ(more.used(), 2U) << "the new one is asked about";
    EXPECT_EQ(quits, 1);
}

TEST_F(DrawingCommandsTest, ADrawingMayCloseWhileItsNameIsAskedFor) {
    Document* document = changed();
    Answers answers({QStringLiteral("Yes"), path("a.dxf")});
    int prompts = 0;
    answers.before = [&] {
        if (++prompts == 2)
            manager().close(*document);
    };
    run("CLOSE");
    EXPECT_THAT(manager().all(), IsEmpty());
    EXPECT_FALSE(QFile::exists(path("a.dxf")));
}

TEST_F(DrawingCommandsTest, SaveAsksForANameOnce) {
    changed();
    {
        const Answers answers({path("a.dxf")});
        run("SAVE");
        EXPECT_EQ(answers.used(), 1U);
    }
    EXPECT_THAT(shown(), HasSubstr("Saved "));
    const Answers answers({});
    run("SAVE");
    run("CLOSE");
    EXPECT_THAT(manager().all(), IsEmpty()) << "nothing to lose, nothing asked";
}

TEST_F(DrawingCommandsTest, CloseAllClosesEveryDrawingTellingOfEachOnceTheCurrentOneLast) {
    std::vector<Document*> open{manager().create(), manager().create(), manager().create()};
    std::vector<std::string> titles;
    for (const Document* document : open)
        titles.push_back(document->title().toStdString());
    manager().activate(open[1]);
    Log log;
    run("CLOSEALL");
    EXPECT_THAT(log.take(), ElementsAre("to be destroyed " + titles[0] + " (current)",
                                        "to be destroyed " + titles[2] + " (current)",
                                        "to be deactivated " + titles[1] + " (current)",
                                        "to be destroyed " + titles[1] + " (current)"));
    EXPECT_THAT(manager().all(), IsEmpty());
    EXPECT_EQ(manager().current(), nullptr);
    EXPECT_EQ(quits, 0);
    run("CLOSEALL");
    EXPECT_THAT(log.take(), IsEmpty()) << "there is nothing to close";
}

TEST_F(DrawingCommandsTest, CloseAllAsksForEachChangedDrawingAndSavesWhatItIsToldTo) {
    const QString file = drawing("a.dxf");
    Document* known = nullptr;
    ASSERT_TRUE(manager().open(file, &known).ok);
    const QByteArray before = bytesOf(file);
    addLine(*known);
    changed();
    manager().create();
    changed();
    const Answers answers({QStringLiteral("Yes"), QStringLiteral("No"), QStringLiteral("Yes"), path("c.merix")});
    run("CLOSEALL");
    EXPECT_EQ(answers.used(), 4U);
    EXPECT_THAT(manager().all(), IsEmpty());
    EXPECT_NE(bytesOf(file), before);
    EXPECT_TRUE(QFile::exists(path("c.merix")));
}

TEST_F(DrawingCommandsTest, CloseAllIsGivenUpByCancelAndByASaveThatFails) {
    manager().create();
    changed();
    changed();
    {
        const Answers answers({QStringLiteral("No"), QStringLiteral("Cancel")});
        run("CLOSEALL");
    }
    {
        const Answers answers({QStringLiteral("Yes"), path("no-folder/a.dxf")});
        run("CLOSEALL");
    }
    EXPECT_EQ(manager().all().size(), 3U);
}

TEST_F(DrawingCommandsTest, QuitSavesChangedDrawingsUnderTheirNames) {
    const QString file = drawing("a.dxf");
    Document* known = nullptr;
    ASSERT_TRUE(manager().open(file, &known).ok);
    addLine(*known);
    changed();
    const Answers answers({QString(), QStringLiteral("Yes"), path("no-folder/b.dxf")});
    run("QUIT");
    EXPECT_FALSE(known->isChanged()) << "Enter is Yes";
    EXPECT_EQ(quits, 0) << "the other could not be saved";
    EXPECT_EQ(manager().all().size(), 2U);
}
