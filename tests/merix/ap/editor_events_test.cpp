// SPDX-License-Identifier: MIT
// Everything that reactors are told while a person works, in order: nothing missing, nothing twice.
#include "merix/ap/autosave.h"
#include "merix/ed/editor.h"

#include "tests/merix/ed/command_fixture.h"

#include <QFileInfo>
#include <QTemporaryDir>

using namespace merix;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string narrow(const wchar_t* text) {
    return QString::fromWCharArray(text).toStdString();
}

class EditorEventsTest : public test::CommandFixture, public MxEditorReactor, public MxDbObjectReactor {
protected:
    EditorEventsTest() {
        qputenv("XDG_DATA_HOME", m_folder.filePath(QStringLiteral("data")).toUtf8());
        qputenv("XDG_CONFIG_HOME", m_folder.filePath(QStringLiteral("config")).toUtf8());
        ap::Autosave::instance().setInterval(0);
        ed::Editor::instance().addReactor(this);
    }
    ~EditorEventsTest() override { ed::Editor::instance().removeReactor(this); }

    void beginSave(MxDbDatabase* of, const wchar_t* name) override {
        const bool isAbsolute = QFileInfo(QString::fromWCharArray(name)).isAbsolute();
        add("save " + QFileInfo(QString::fromWCharArray(name)).fileName().toStdString() +
            (of == document.database() && isAbsolute ? "" : " ?"));
    }
    void commandWillStart(const wchar_t* name) override { add("start " + narrow(name)); }
    void commandEnded(const wchar_t* name) override { add("ended " + narrow(name)); }
    void commandCancelled(const wchar_t* name) override { add("cancelled " + narrow(name)); }
    void commandFailed(const wchar_t* name) override { add("failed " + narrow(name)); }
    void layoutSwitched(const wchar_t* name) override { add("layout " + narrow(name)); }
    void viewChanged() override { add("view"); }
    void erased(const MxDbObject* object, bool erasing) override {
        add((erasing ? "erased " : "back ") + std::to_string(object->objectId().handle().value()));
    }

    void add(const std::string& event) { m_told.push_back(event); }
    std::vector<std::string> told() { return std::exchange(m_told, {}); }
    QString path(const char* name) const { return m_folder.filePath(QString::fromUtf8(name)); }
    /// The handle of the entity at that place, watched from now on.
    std::string watch(std::size_t place) {
        MxDbObject* object = nullptr;
        EXPECT_EQ(mxdbOpenObject(object, entities().at(place), Mx::kForRead), Mx::eOk);
        object->addReactor(this);
        object->close();
        return std::to_string(entities().at(place).handle().value());
    }
    void unwatch(MxDbObjectId id) {
        MxDbObject* object = nullptr;
        ASSERT_EQ(mxdbOpenObject(object, id, Mx::kForRead, true), Mx::eOk);
        object->removeReactor(this);
        object->close();
    }

private:
    QTemporaryDir m_folder;
    std::vector<std::string> m_told;
};

} // namespace

TEST_F(EditorEventsTest, EverySaveIsToldOfOnceWithTheNameThatIsWritten) {
    ap::DocManager& manager = ap::DocManager::instance();
    ASSERT_TRUE(manager.saveAs(document, path("plan.dxf")).ok);
    EXPECT_THAT(told(), ElementsAre("save plan.dxf"));
    ASSERT_TRUE(manager.save(document).ok);
    EXPECT_THAT(told(), ElementsAre("save plan.dxf"));
    ASSERT_TRUE(manager.saveAs(document, path("plan.merix")).ok);
    EXPECT_THAT(told(), ElementsAre("save plan.merix"));
    type({"LINE", "0,0", "1,1", ""});
    told();
    EXPECT_EQ(ap::Autosave::instance().saveNow().size(), 1);
    EXPECT_THAT(told(), ElementsAre("save plan.merix.ms$"));
    EXPECT_EQ(manager.writeRecoveryFiles().size(), 1);
    EXPECT_THAT(told(), ElementsAre("save plan.merix.recovered.merix"));
    type({"SAVE"});
    EXPECT_THAT(told(), ElementsAre("start SAVE", "save plan.merix", "ended SAVE"));
}

TEST_F(EditorEventsTest, ACommandStartsOnceAndEndsOnceInOneOfThreeWays) {
    type({"LINE", "0,0", "1,1", ""});
    EXPECT_THAT(told(), ElementsAre("start LINE", "ended LINE"));
    type({"CIRCLE", "0,0"}); // then Esc
    EXPECT_THAT(told(), ElementsAre("start CIRCLE", "cancelled CIRCLE"));
    ed::CommandStack::instance().addCommand(L"TEST", L"THROWS", L"WIRFT", 0, [] { throw 1; });
    type({"WIRFT"});
    EXPECT_THAT(told(), ElementsAre("start THROWS", "failed THROWS")) << "events carry the global name";
    type({"U"});
    EXPECT_THAT(told(), ElementsAre("start U", "ended U"));
    type({"NOSUCH", ""});
    EXPECT_THAT(told(), ElementsAre("start U", "ended U")) << "what is unknown is nothing, Enter repeats";
    ed::CommandStack::instance().addCommand(L"TEST", L"OUTER", L"OUTER", 0,
                                            [] { ed::CommandStack::instance().runGiven(QStringLiteral("LINE"), {}); });
    type({"OUTER"});
    EXPECT_THAT(told(), ElementsAre("start OUTER", "start LINE", "cancelled LINE", "ended OUTER"));
}

TEST_F(EditorEventsTest, ALayoutIsSwitchedToOnceAndOnlyWhenItIsAnother) {
    document.setCurrentLayout(QStringLiteral("Layout1"));
    document.setCurrentLayout(QStringLiteral("Layout1"));
    document.setCurrentLayout(QStringLiteral("none"));
    EXPECT_THAT(told(), ElementsAre("layout Layout1"));
    type({"LAYOUT", "New", "Sheet"});
    type({"LAYOUTSWITCH", "Sheet"});
    EXPECT_THAT(told(), ElementsAre("start LAYOUT", "ended LAYOUT", "start LAYOUTSWITCH", "layout Sheet",
                                    "ended LAYOUTSWITCH"));
    type({"U"}); // the sheet goes, and with it the space that was worked on
    EXPECT_EQ(document.currentLayout(), QStringLiteral("Model"));
    EXPECT_THAT(told(), ElementsAre("start U", "layout Model", "ended U"));
}

TEST_F(EditorEventsTest, EachZoomAndPanIsOneChangeOfTheView) {
    type({"LINE", "0,0", "50,50", ""});
    told();
    type({"ZOOM", "0,0", "100,75"});
    EXPECT_THAT(told(), ElementsAre("start ZOOM", "view", "ended ZOOM"));
    type({"ZOOM", "Extents"});
    EXPECT_THAT(told(), ElementsAre("start ZOOM", "view", "ended ZOOM"));
    type({"ZOOM", "2x"});
    EXPECT_THAT(told(), ElementsAre("start ZOOM", "view", "ended ZOOM"));
    type({"ZOOM", "Previous"});
    EXPECT_THAT(told(), ElementsAre("start ZOOM", "view", "ended ZOOM"));
    type({"PAN", "0,0", "10,0"});
    EXPECT_THAT(told(), ElementsAre("start PAN", "view", "ended PAN"));
    type({"ZOOM"}); // Esc
    EXPECT_THAT(told(), ElementsAre("start ZOOM", "cancelled ZOOM"));
}

TEST_F(EditorEventsTest, ErasingAndUnerasingIsToldOfByHandByUndoAndByRedo) {
    type({"LINE", "0,0", "50,50", "", "CIRCLE", "80,80", "5"});
    const std::string line = watch(0), circle = watch(1);
    const std::vector<MxDbObjectId> ids = entities();
    told();
    type({"ERASE", "25,25", ""});
    EXPECT_THAT(told(), ElementsAre("start ERASE", "erased " + line, "ended ERASE"));
    type({"U"});
    EXPECT_THAT(told(), ElementsAre("start U", "back " + line, "ended U"));
    type({"REDO", "1"});
    EXPECT_THAT(told(), ElementsAre("start REDO", "erased " + line, "ended REDO"));
    type({"UNDO", "2"}); // the erasing of the line, and the insertion of the circle
    EXPECT_THAT(told(), ElementsAre("start UNDO", "back " + line, "erased " + circle, "ended UNDO"));
    type({"REDO", "1"});
    EXPECT_THAT(told(), ElementsAre("start REDO", "back " + circle, "ended REDO"));
    for (const MxDbObjectId id : ids)
        unwatch(id);
    type({"U"});
    EXPECT_THAT(told(), ElementsAre("start U", "ended U"));
}

TEST_F(EditorEventsTest, ACommandThatFailsGivesBackWhatItErasedAndTellsSo) {
    type({"LINE", "0,0", "50,50", ""});
    static MxDbObjectId id;
    id = entities().front();
    const std::string line = watch(0);
    told();
    ed::CommandStack::instance().addCommand(L"TEST", L"HALF", L"HALF", 0, [] {
        MxDbObject* object = nullptr;
        mxdbOpenObject(object, id, Mx::kForWrite);
        object->erase(true);
        object->close();
        throw 1;
    });
    type({"HALF"});
    EXPECT_THAT(told(), ElementsAre("start HALF", "erased " + line, "back " + line, "failed HALF"));
    unwatch(id);
}
