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
