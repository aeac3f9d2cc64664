// SPDX-License-Identifier: MIT
#include "phonomark/commands/command_group.h"

#include "phonomark/app/module_state.h"
#include "phonomark/dialogs/manager_dialog.h"
#include "tests/phonomark/module_fixture.h"

#include <QApplication>
#include <QTimer>

using ::testing::HasSubstr;

namespace {

class DisplayTest : public ModuleTest {
protected:
    /// A view, and a listener of its drawing, that write down what became of a note: redrawn by the host ("draw",
    /// "undraw") or given new graphics ("new"), with the show switch and whether the user had been told by then.
    class Witness : public TransformView, public merix::db::DatabaseListener {
    public:
        explicit Witness(MxDbDatabase& database)
            : TransformView(1.0)
            , m_database(database) {
            m_database.imp().addListener(this);
        }
        ~Witness() override { m_database.imp().removeListener(this); }
        void drawEntity(MxDbObjectId, bool draw) override { write(draw ? "draw" : "undraw"); }
        void objectGraphicsModified(MxDbObject&) override { write("new"); }
        std::vector<std::string> seen;

    private:
        void write(std::string what) {
            what += IsShowPhonomark() ? " shown" : " hidden";
            what += merix::ed::Console::instance().unread().contains(QStringLiteral("Voice notes are ")) ? " told" : "";
            seen.push_back(what);
        }
        MxDbDatabase& m_database;
    };
};

} // namespace

TEST_F(DisplayTest, TwiceReturnsToTheFirstState) {
    run("VOICESHOW");
    EXPECT_FALSE(IsShowPhonomark());
    EXPECT_THAT(printed(), HasSubstr("Voice notes are hidden."));
    run("VOICESHOW");
    EXPECT_TRUE(IsShowPhonomark());
    EXPECT_THAT(printed(), HasSubstr("Voice notes are shown."));
}

TEST_F(DisplayTest, TheNotesOfTheCurrentDrawingAreDrawnInTheirNewState) {
    TransformView view(1.0);
    const MxDbObjectId id = addNote();
    view.drawn.clear();
    const auto before = note(id).data().graphicsVersion;
    run("VOICESHOW");
    ASSERT_FALSE(view.drawn.empty());
    EXPECT_EQ(view.drawn.front(), std::make_pair(id, false));
    EXPECT_GT(note(id).data().graphicsVersion, before);
}

TEST_F(DisplayTest, NotesAreRedrawnThenTheSwitchIsSetThenTheUserIsToldThenTheNotesAreDrawnAnew) {
    addNote();
    printed();
    Witness witness(database());
    run("VOICESHOW");
    EXPECT_THAT(witness.seen, ::testing::ElementsAre("undraw shown", "new hidden told"));
    printed();
    witness.seen.clear();
    run("VOICESHOW");
    EXPECT_THAT(witness.seen, ::testing::ElementsAre("draw hidden", "new shown told"));
}

TEST_F(DisplayTest, TheManagerCommandOpensTheDialogAndEndsWithIt) {
    int opened = 0;
    QTimer::singleShot(0, qApp, [&] {
        auto* dialog = dynamic_cast<CPhonomarkManDlg*>(QApplication::activeModalWidget());
        ASSERT_TRUE(dialog);
        ++opened;
        EXPECT_FALSE(dialog->findChildren<QWidget*>().isEmpty()) << "made from the module's template";
        dialog->OnCancel();
    });
    run("VOICEMAN");
    EXPECT_EQ(opened, 1);
    EXPECT_FALSE(QApplication::activeModalWidget());
}
