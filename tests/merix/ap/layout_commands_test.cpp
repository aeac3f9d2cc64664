// SPDX-License-Identifier: MIT
#include "merix/ap/layout_commands.h"

#include "tests/merix/ed/command_fixture.h"

#include "host/db/dictionary.h"
#include "merix/db/layout.h"
#include "merix/ed/drawing_access.h"
#include "merix/io/drawing_file.h"

#include <QTemporaryDir>

using namespace merix;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class LayoutCommandsTest : public test::CommandFixture, public MxEditorReactor {
protected:
    LayoutCommandsTest() { ed::Editor::instance().addReactor(this); }
    ~LayoutCommandsTest() override { ed::Editor::instance().removeReactor(this); }
    void layoutSwitched(const wchar_t* name) override { switched << QString::fromWCharArray(name); }
    QStringList switched;
};

} // namespace

TEST_F(LayoutCommandsTest, SetChangesTheSpaceThatIsDrawnInto) {
    typeInVain({"LAYOUT", "S", "layout1"});
    EXPECT_EQ(document.currentLayout(), QStringLiteral("Layout1"));
    EXPECT_EQ(switched, QStringList{QStringLiteral("Layout1")});
    typeUndoable({"LINE", "0,0", "1,1", ""});
    EXPECT_EQ(last<db::Line>().ownerId(), database.roots.paperSpace);
    typeInVain({"LAYOUTSWITCH", "Model", "LAYOUTSWITCH", "nosuch"});
    EXPECT_EQ(document.currentLayout(), QStringLiteral("Model"));
    EXPECT_THAT(shown(), HasSubstr("There is no layout nosuch."));
}

TEST_F(LayoutCommandsTest, NewMakesALayoutWithASpaceOfItsOwn) {
    typeUndoable({"LAYOUT", "N", "Sheet A"});
    EXPECT_EQ(document.layouts(),
              (QStringList{QStringLiteral("Model"), QStringLiteral("Layout1"), QStringLiteral("Sheet A")}));
    type({"LAYOUT", "", "Sheet A", "CIRCLE", "5,5", "1"});
    EXPECT_NE(last<db::Circle>().ownerId(), database.roots.paperSpace);
    EXPECT_TRUE(db::traits(last<MxDbEntity>()).paperSpace);
    type({"LAYOUT", "N", "layout1", "LAYOUT", "N", "a|b"});
    const std::string said = shown();
    EXPECT_THAT(said, HasSubstr("The layout Layout1 is there already."));
    EXPECT_THAT(said, HasSubstr("a|b cannot be the name of a layout."));
}

TEST_F(LayoutCommandsTest, ANewLayoutAndWhatIsDrawnInItAreSaved) {
    type({"LAYOUT", "N", "Sheet A", "LAYOUT", "S", "Sheet A", "CIRCLE", "5,5", "1", "LAYOUT", "R", "Layout1", "First"});
    const QTemporaryDir folder;
    for (const char* name : {"/a.dxf", "/a.merix"}) {
        const std::string path = folder.path().toStdString() + name;
        ASSERT_EQ(io::writeDrawing(path, *document.database()).error, "");
        MxDbDatabase again;
        ASSERT_EQ(io::readDrawing(path, again).error, "");
        const auto layouts = again.imp().layouts();
        ASSERT_EQ(layouts.size(), 3U) << name;
        EXPECT_EQ(layouts[1].name, L"First");
        EXPECT_EQ(layouts[2].name, L"Sheet A");
        EXPECT_EQ(again.imp().block(layouts[2].space)->entityIds().size(), 1U);
    }
}

TEST_F(LayoutCommandsTest, UndoOfTheCurrentLayoutGoesBackToModel) {
    type({"LAYOUT", "N", "A", "LAYOUT", "S", "A", "U"});
    EXPECT_EQ(document.currentLayout(), QStringLiteral("Model"));
    EXPECT_EQ(database.currentSpace, database.roots.modelSpace);
    type({"REDO", ""});
    EXPECT_TRUE(document.layouts().contains(QStringLiteral("A")));
}

TEST_F(LayoutCommandsTest, ARenamedLayoutKeepsItsSpaceAndStaysCurrent) {
    type({"LAYOUT", "S", "Layout1"});
    typeUndoable({"LAYOUT", "R", "layout1", "Ground floor"});
    EXPECT_EQ(document.currentLayout(), QStringLiteral("Ground floor"));
    EXPECT_EQ(database.currentSpace, database.roots.paperSpace);
    type({"U"});
    EXPECT_EQ(document.currentLayout(), QStringLiteral("Layout1"));
    typeInVain({"LAYOUT", "R", "Model", "LAYOUT", "R", "nosuch", "LAYOUT", "R", "Layout1", "model"});
    const std::string said = shown();
    EXPECT_THAT(said, HasSubstr("Model cannot be renamed."));
    EXPECT_THAT(said, HasSubstr("There is no layout nosuch."));
    EXPECT_THAT(said, HasSubstr("The layout Model is there already."));
}

TEST_F(LayoutCommandsTest, ADeletedLayoutTakesWhatWasDrawnInItAlong) {
    type({"LAYOUT", "N", "A", "LAYOUT", "S", "A", "CIRCLE", "5,5", "1"});
    typeUndoable({"LAYOUT", "D", "a"});
    EXPECT_FALSE(document.layouts().contains(QStringLiteral("A")));
    EXPECT_EQ(document.currentLayout(), QStringLiteral("Model"));
    typeInVain({"LAYOUT", "D", "Model", "LAYOUT", "D", "Layout1", "LAYOUT", "D", "nosuch"});
    const std::string said = shown();
    EXPECT_THAT(said, HasSubstr("Model cannot be deleted."));
    EXPECT_THAT(said, HasSubstr("The layout Layout1 holds the drawing's first paper space and stays."));
}

TEST_F(LayoutCommandsTest, ALayoutWithObjectsOnLockedLayersStays) {
    type({"LAYOUT", "N", "A", "LAYOUT", "S", "A", "CIRCLE", "5,5", "1", "LAYER", "LO", "0", ""});
    typeInVain({"LAYOUT", "D", "A"});
    EXPECT_THAT(shown(), HasSubstr("The layout A holds objects on locked layers and stays."));
    EXPECT_EQ(document.currentLayout(), QStringLiteral("A"));
}

TEST_F(LayoutCommandsTest, TheListOfLayoutsIsToldOfWhenItIsAnother) {
    std::vector<QStringList> told;
    QObject::connect(&document, &ap::Document::layoutsChanged, &document, [&] { told.push_back(document.layouts()); });
    const QString model = QStringLiteral("Model"), first = QStringLiteral("Layout1");
    const QString a = QStringLiteral("A"), b = QStringLiteral("B");
    type({"LAYOUT", "N", "A", "LAYOUT", "R", "A", "B", "LAYOUT", "D", "B", "U", "U", "U", "REDO", ""});
    EXPECT_THAT(told, ElementsAre(QStringList{model, first, a}, QStringList{model, first, b}, QStringList{model, first},
                                  QStringList{model, first, b}, QStringList{model, first, a}, QStringList{model, first},
                                  QStringList{model, first, a}));
    told.clear();
    type({"LAYOUT", "S", "Layout1", "LINE", "0,0", "1,1", "", "LAYOUT", "S", "Model", "U"});
    EXPECT_TRUE(told.empty());
}

TEST_F(LayoutCommandsTest, TheListMarksTheCurrentOne) {
    typeInVain({"LAYOUT", "?"});
    EXPECT_THAT(shown(), HasSubstr("\nModel (current)\nLayout1"));
}

TEST_F(LayoutCommandsTest, EscChangesNothing) {
    for (const auto& lines : std::vector<std::vector<const char*>>{{"LAYOUT"},
                                                                   {"LAYOUT", "S"},
                                                                   {"LAYOUT", "N"},
                                                                   {"LAYOUT", "N", ""},
                                                                   {"LAYOUT", "R"},
                                                                   {"LAYOUT", "R", "Layout1"},
                                                                   {"LAYOUT", "D"},
                                                                   {"LAYOUTSWITCH"}})
        typeInVain(lines);
    EXPECT_TRUE(switched.isEmpty());
}

TEST_F(LayoutCommandsTest, AnEntryOfTheDictionaryThatShowsNoSpaceIsNotReplaced) {
    MxDbObjectId id;
    {
        const ed::Opened<MxDbDictionary> root(database.roots.namedObjects, Mx::kForRead);
        ASSERT_EQ(root->getAt(L"ACAD_LAYOUT", id), Mx::eOk);
        const ed::Opened<MxDbDictionary> dictionary(id, Mx::kForWrite);
        auto* layout = new db::Layout;
        layout->name = L"Ghost";
        ASSERT_EQ(dictionary->setAt(L"Ghost", layout, id), Mx::eOk);
        layout->close();
    }
    typeInVain({"LAYOUT", "N", "ghost"});
    EXPECT_THAT(shown(), HasSubstr("The layout ghost is there already."));
    EXPECT_TRUE(db::DatabaseImp::peek(id));
}
