// SPDX-License-Identifier: MIT
#include "phonomark/commands/command_group.h"

#include "phonomark/app/module_state.h"
#include "phonomark/dbutil/system_info.h"
#include "phonomark/settings/profile.h"
#include "tests/phonomark/module_fixture.h"

using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

class InsertTest : public ModuleTest {
protected:
    MxDbPhonomark& only() {
        const auto ids = listed();
        if (ids.size() != 1)
            throw std::runtime_error(std::to_string(ids.size()) + " notes");
        return note(ids[0]);
    }
    std::wstring speaker() {
        CStdStr<wchar_t> text;
        only().getSpokesman(text);
        return text;
    }
    static std::wstring storedSpeaker() { return GetProfileStringW(L"", L"Spokesman", L""); }
};

} // namespace

TEST_F(InsertTest, TheFirstRunAsksForAPointAndTakesTheLoginName) {
    run("PHONOMARK", {"10,20"});
    EXPECT_EQ(only().position(), MxGePoint3d(10, 20, 0));
    EXPECT_EQ(only().getPhonomarkType(), 0);
    EXPECT_EQ(speaker(), GetSysLocalUser().str());
    EXPECT_FALSE(only().isRecord());
    CStdStr<wchar_t> date;
    only().getDatatime(date);
    EXPECT_FALSE(date.empty());
    EXPECT_EQ(storedSpeaker(), speaker());
    EXPECT_EQ(GetProfileIntW(L"", L"VoiceType", 7), 0);
    EXPECT_THAT(printed(), HasSubstr("note type = Point"));
}

TEST_F(InsertTest, InsertionIsOneUndoableUnit) {
    run("PHONOMARK", {"10,20"});
    ASSERT_TRUE(merix::ap::DocManager::instance().undo(document()));
    EXPECT_THAT(listed(), IsEmpty());
    EXPECT_FALSE(database().imp().undo.canUndo());
    ASSERT_TRUE(merix::ap::DocManager::instance().redo(document()));
    EXPECT_EQ(listed().size(), 1u);
}

TEST_F(InsertTest, CancelCreatesNothingAndKeepsTheSettings) {
    run("PHONOMARK", {"Settings", "Spokesman", "Anna"});
    EXPECT_THAT(listed(), IsEmpty());
    EXPECT_EQ(storedSpeaker(), L"");
}

TEST_F(InsertTest, ATypedSpeakerIsWrittenIntoTheNoteAndRemembered) {
    run("PHONOMARK", {"Settings", "Spokesman", "Anna", "1,2"});
    EXPECT_EQ(speaker(), L"Anna");
    EXPECT_EQ(storedSpeaker(), L"Anna");
    EXPECT_THAT(printed(), HasSubstr("speaker = Anna"));
}

TEST_F(InsertTest, AnEmptyAnswerKeepsTheSpeaker) {
    WriteProfileStringW(L"", L"Spokesman", L"Bert");
    run("PHONOMARK", {"Settings", "Spokesman", "", "1,2"});
    EXPECT_EQ(speaker(), L"Bert");
}

TEST_F(InsertTest, ATypedSpeakerIsCutAtItsBuffer) {
    run("PHONOMARK", {"Settings", "Spokesman", std::string(200, 'x'), "1,2"});
    EXPECT_EQ(speaker(), std::wstring(132, L'x'));
}

TEST_F(InsertTest, EnterAtTheSettingsQuestionMakesItAPoint) {
    WriteProfileStringW(L"", L"VoiceType", L"Region"); // no number: asks for a point
    run("PHONOMARK", {"Settings", "", "3,4"});
    EXPECT_EQ(only().getPhonomarkType(), 0);
    EXPECT_EQ(GetProfileStringW(L"", L"VoiceType", L""), L"0");
    EXPECT_EQ(only().position(), MxGePoint3d(3, 4, 0));
}

TEST_F(InsertTest, AStoredReplyIsCreatedWithoutAskingForItsPlace) {
    WriteProfileInt(L"", L"VoiceType", 3);
    run("PHONOMARK");
    EXPECT_EQ(only().getPhonomarkType(), 3);
    EXPECT_EQ(only().position(), MxGePoint3d());
    EXPECT_EQ(GetProfileIntW(L"", L"VoiceType", 0), 3);
}

TEST_F(InsertTest, HiddenNotesAreShownBeforeAnythingIsAsked) {
    SetPhonomarkVar(false);
    run("PHONOMARK");
    EXPECT_TRUE(IsShowPhonomark()) << "although the command was cancelled";
    EXPECT_THAT(printed(), HasSubstr("Voice notes are shown."));
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(InsertTest, TheSettingsQuestionOffersWhatCanBePlaced) {
    run("PHONOMARK", {"Settings", "Reply", "Point", "3,4"});
    EXPECT_THAT(printed(), HasSubstr("[Point/Spokesman]"));
    EXPECT_EQ(only().getPhonomarkType(), 0) << "Reply is no answer and is asked again";
    EXPECT_EQ(only().position(), MxGePoint3d(3, 4, 0));
}

TEST_F(InsertTest, ANoteThatCannotBeAddedIsListedAsNothingAndTheSettingsAreWritten) {
    MxDbBlockTableRecord* space = nullptr;
    ASSERT_EQ(mxdbOpenObject(space, database().currentSpaceId(), Mx::kForRead), Mx::eOk);
    run("PHONOMARK", {"Settings", "Spokesman", "Anna", "10,20"});
    space->close();
    EXPECT_THAT(listed(), ::testing::ElementsAre(MxDbObjectId()));
    EXPECT_EQ(storedSpeaker(), L"Anna");
    EXPECT_EQ(GetProfileIntW(L"", L"VoiceType", 7), 0);
    EXPECT_THAT(printed(), ::testing::Not(HasSubstr("rror")));
}
