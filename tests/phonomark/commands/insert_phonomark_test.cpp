// SPDX-License-Identifier: MIT
#include "phonomark/commands/command_group.h"

#include "host/win/resources.h"
#include "phonomark/app/module_state.h"
#include "phonomark/dbutil/attachments.h"
#include "phonomark/dbutil/system_info.h"
#include "phonomark/registry/phonomark_manager.h"
#include "phonomark/settings/profile.h"
#include "tests/phonomark/module_fixture.h"

#include <dlfcn.h>
#include <pwd.h>
#include <unistd.h>

using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

/// What the machine and the user are called while a test says so.
std::optional<std::string> g_machine, g_user;

} // namespace

// The host asks libc for these names; the program's own come first.
extern "C" int gethostname(char* name, std::size_t size) noexcept {
    if (!g_machine)
        return reinterpret_cast<int (*)(char*, std::size_t)>(dlsym(RTLD_NEXT, "gethostname"))(name, size);
    const std::size_t length = std::min(g_machine->size(), size - 1);
    g_machine->copy(name, length);
    name[length] = '\0';
    return 0;
}

extern "C" int getpwuid_r(uid_t user, passwd* entry, char* buffer, std::size_t size, passwd** found) {
    using Function = int (*)(uid_t, passwd*, char*, std::size_t, passwd**);
    const int result = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "getpwuid_r"))(user, entry, buffer, size, found);
    if (g_user && result == 0 && *found)
        (*found)->pw_name = g_user->data();
    return result;
}

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

TEST_F(InsertTest, CancelSaysNothing) {
    WriteProfileStringW(L"", L"Spokesman", L"Anna");
    const TransformView view(0.1);
    const auto saidAfter = [&](const std::string& prompt) {
        const std::string text = printed();
        const std::size_t at = text.rfind(prompt);
        return at == std::string::npos ? "no prompt in " + text : text.substr(at + prompt.size());
    };
    for (const int type : {0, 1, 2}) {
        WriteProfileInt(L"", L"VoiceType", type);
        run("PHONOMARK");
        EXPECT_EQ(saidAfter("[Settings]: "), "*Cancel*") << "the command line's own word: " << type;
        run("PHONOMARK", {"Settings"});
        EXPECT_EQ(saidAfter("<Point>: "), "*Cancel*") << type;
        run("PHONOMARK", {"Settings", "Spokesman"});
        EXPECT_EQ(saidAfter("Enter the speaker's name <Anna>: "), "*Cancel*") << type;
    }
    WriteProfileInt(L"", L"VoiceType", 1);
    run("PHONOMARK", {"1,2"});
    EXPECT_EQ(saidAfter("Specify the opposite corner: "), "*Cancel*");
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

TEST_F(InsertTest, ATypedSpeakerHasNoSpaces) {
    run("PHONOMARK", {"Settings", "Spokesman", "Anna Maria", "1,2"});
    EXPECT_EQ(speaker(), L"Anna") << "a space ends the answer";
    EXPECT_EQ(only().position(), MxGePoint3d(1, 2, 0));
}

TEST_F(InsertTest, ASpeakerThatIsKeptIsCutAtTheSameLength) {
    WriteProfileStringW(L"", L"Spokesman", std::wstring(200, L'y'));
    run("PHONOMARK", {"1,2"});
    EXPECT_EQ(speaker(), std::wstring(200, L'y')) << "not when it is not asked for";
    livePhManager()->ErasePhonomark(listed()[0], &document());
    run("PHONOMARK", {"Settings", "Spokesman", "", "1,2"});
    EXPECT_EQ(speaker(), std::wstring(132, L'y'));
    EXPECT_EQ(storedSpeaker(), std::wstring(132, L'y'));
}

TEST_F(InsertTest, ATypedSpeakerIsCutAtItsBuffer) {
    run("PHONOMARK", {"Settings", "Spokesman", std::string(200, 'x'), "1,2"});
    EXPECT_EQ(speaker(), std::wstring(132, L'x'));
}

TEST_F(InsertTest, EnterAtTheSettingsQuestionMakesItAPoint) {
    for (const wchar_t* stored : {L"0", L"1", L"2", L"Region"}) { // the last is no number: asks for a point
        WriteProfileStringW(L"", L"VoiceType", stored);
        run("PHONOMARK", {"Settings", "", "3,4"});
        EXPECT_EQ(only().getPhonomarkType(), 0);
        EXPECT_EQ(GetProfileStringW(L"", L"VoiceType", L""), L"0");
        EXPECT_EQ(only().position(), MxGePoint3d(3, 4, 0));
        livePhManager()->ErasePhonomark(listed()[0], &document());
    }
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
    const std::string text = printed();
    ASSERT_THAT(text, HasSubstr("Voice notes are shown."));
    EXPECT_LT(text.find("Voice notes are shown."), text.find("note type = Point"));
    EXPECT_LT(text.find("note type = Point"), text.find("[Settings]"));
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(InsertTest, TheSettingsQuestionOffersEveryType) {
    run("PHONOMARK", {"Settings", "Re", "Circle", "Point", "3,4"});
    const std::string text = printed();
    EXPECT_THAT(text, HasSubstr("[Point/Region/Object/Reply/Spokesman]"));
    EXPECT_THAT(text, HasSubstr("That can mean Region or Reply."));
    EXPECT_THAT(text, HasSubstr("That is none of the options."));
    EXPECT_EQ(only().getPhonomarkType(), 0);
    EXPECT_EQ(only().position(), MxGePoint3d(3, 4, 0));
}

TEST_F(InsertTest, ARegionIsAskedForByTwoCornersInAnyOrder) {
    run("PHONOMARK", {"Settings", "Region", "30,10", "@-20,15"});
    EXPECT_EQ(only().getPhonomarkType(), 1);
    EXPECT_EQ(only().extents().minPoint(), MxGePoint3d(10, 10, 0));
    EXPECT_EQ(only().extents().maxPoint(), MxGePoint3d(30, 25, 0));
    EXPECT_EQ(only().position(), MxGePoint3d());
    EXPECT_EQ(GetProfileIntW(L"", L"VoiceType", 7), 1);
    const std::string text = printed();
    EXPECT_THAT(text, HasSubstr("note type = Region"));
    EXPECT_THAT(text, HasSubstr("Specify the first corner of the region or [Settings]: 30,10"));
    EXPECT_THAT(text, HasSubstr("Specify the opposite corner: @-20,15"));
}

TEST_F(InsertTest, EnterIsNoAnswerToAPlacingPrompt) {
    const TransformView view(0.1);
    const MxDbObjectId line = addLine();
    const auto placed = [&](int type, std::deque<std::string> answers) -> MxDbPhonomark& {
        WriteProfileInt(L"", L"VoiceType", type);
        printed();
        run("PHONOMARK", std::move(answers));
        const std::string text = printed();
        EXPECT_THAT(text, HasSubstr(" is needed.")) << "asked again by the command line itself";
        EXPECT_EQ(text.find("note type = "), text.rfind("note type = "));
        return only();
    };
    EXPECT_EQ(placed(0, {"", "1,2"}).position(), MxGePoint3d(1, 2, 0));
    livePhManager()->ErasePhonomark(listed()[0], &document());
    EXPECT_EQ(placed(1, {"", "1,2", "3,4"}).extents().minPoint(), MxGePoint3d(1, 2, 0));
    livePhManager()->ErasePhonomark(listed()[0], &document());
    EXPECT_EQ(placed(2, {"", "4,2"}).attachObj(), line);
}

TEST_F(InsertTest, ARegionWithoutItsOtherCornerIsNone) {
    WriteProfileInt(L"", L"VoiceType", 1);
    run("PHONOMARK", {"30,10"}); // Esc
    run("PHONOMARK", {"30,10", ""});
    run("PHONOMARK");
    EXPECT_THAT(listed(), IsEmpty());
    EXPECT_EQ(storedSpeaker(), L"");
}

TEST_F(InsertTest, TheSettingsCanBeChangedAtEveryPlacingPrompt) {
    const TransformView view(0.1);
    run("PHONOMARK", {"Settings", "Region", "Settings", "Object", "Settings", "Reply"});
    EXPECT_EQ(only().getPhonomarkType(), 3);
    EXPECT_TRUE(only().extents().isEmpty());
    EXPECT_TRUE(only().attachObj().isNull());
    EXPECT_EQ(GetProfileIntW(L"", L"VoiceType", 7), 3);
}

TEST_F(InsertTest, APickedObjectGetsTheNote) {
    const TransformView view(0.1);
    const MxDbObjectId line = addLine();
    run("PHONOMARK", {"Settings", "Object", "50,50", "4,2"});
    EXPECT_EQ(only().getPhonomarkType(), 2);
    EXPECT_EQ(only().attachObj(), line);
    EXPECT_EQ(only().extents().maxPoint(), MxGePoint3d(10, 5, 0));
    EXPECT_TRUE(IsAttachedVoice(line));
    const std::string text = printed();
    EXPECT_THAT(text, HasSubstr("[Settings]: 50,50\nSelect the object")) << "nothing is there: asked again";
}

TEST_F(InsertTest, TheObjectUnderAMarkerGetsTheNoteRatherThanTheMarkersNote) {
    const TransformView view(0.1);
    const MxDbObjectId line = addLine();
    const MxDbObjectId covering = addNote(kPointNote, {2, 1, 0}); // its marker lies from (3.4, 2.4) to (6.6, 5.6)
    WriteProfileInt(L"", L"VoiceType", 2);
    run("PHONOMARK", {"5,2.6"});
    ASSERT_EQ(listed().size(), 2u);
    EXPECT_EQ(note(listed()[1]).attachObj(), line);
    run("PHONOMARK", {"4,5"});
    ASSERT_EQ(listed().size(), 3u);
    EXPECT_EQ(note(listed()[2]).attachObj(), covering) << "nothing else is there";
}

TEST_F(InsertTest, AnObjectNoteIsOneUndoableUnit) {
    const TransformView view(0.1);
    const MxDbObjectId line = addLine();
    database().imp().undo.clear();
    WriteProfileInt(L"", L"VoiceType", 2);
    run("PHONOMARK", {"4,2"});
    ASSERT_TRUE(merix::ap::DocManager::instance().undo(document()));
    EXPECT_THAT(listed(), IsEmpty());
    EXPECT_FALSE(IsAttachedVoice(line));
    EXPECT_TRUE(merix::db::DatabaseImp::peek(line)->reactors().empty());
    EXPECT_FALSE(database().imp().undo.canUndo());
    ASSERT_TRUE(merix::ap::DocManager::instance().redo(document()));
    EXPECT_TRUE(IsAttachedVoice(line));
}

TEST_F(InsertTest, AnObjectCarriesOneNoteAndTheSettingsStay) {
    const TransformView view(0.1);
    addLine();
    WriteProfileInt(L"", L"VoiceType", 2);
    run("PHONOMARK", {"4,2"});
    WriteProfileStringW(L"", L"Spokesman", L"Bert");
    printed();
    run("PHONOMARK", {"Settings", "Spokesman", "Anna", "4,2"});
    EXPECT_EQ(listed().size(), 1u);
    EXPECT_THAT(printed(), HasSubstr("This object already carries a voice note."));
    EXPECT_EQ(storedSpeaker(), L"Bert");
}

TEST_F(InsertTest, AnObjectThatCarriesANoteLeavesTheStoredTypeAsItWas) {
    const TransformView view(0.1);
    addLine();
    WriteProfileInt(L"", L"VoiceType", 2);
    run("PHONOMARK", {"4,2"});
    WriteProfileInt(L"", L"VoiceType", 0);
    run("PHONOMARK", {"Settings", "Object", "4,2"});
    EXPECT_EQ(listed().size(), 1u);
    EXPECT_EQ(GetProfileIntW(L"", L"VoiceType", 9), 0u);
}

TEST_F(InsertTest, HiddenNotesOfTheDrawingAreDrawnAndMadeAnew) {
    TransformView view(0.1);
    const MxDbObjectId id = addNote();
    run("VOICESHOW");
    const auto before = note(id).data().graphicsVersion;
    view.drawn.clear();
    run("PHONOMARK");
    EXPECT_EQ(view.drawn, (std::vector<std::pair<MxDbObjectId, bool>>{{id, true}}));
    EXPECT_GT(note(id).data().graphicsVersion, before);
}

TEST_F(InsertTest, CancelAtTheObjectPromptCreatesNothing) {
    WriteProfileInt(L"", L"VoiceType", 2);
    run("PHONOMARK", {"4,2"}); // there is no view to pick in: asked again, Esc
    EXPECT_THAT(listed(), IsEmpty());
    EXPECT_EQ(storedSpeaker(), L"");
}

TEST_F(InsertTest, CancelAtTheSettingsQuestionOrAtTheSpeakerCreatesNothing) {
    WriteProfileInt(L"", L"VoiceType", 1);
    run("PHONOMARK", {"Settings", kEscape, "1,2", "3,4"});
    run("PHONOMARK", {"Settings", "Spokesman", kEscape, "1,2", "3,4"});
    EXPECT_THAT(listed(), IsEmpty());
    EXPECT_EQ(GetProfileIntW(L"", L"VoiceType", 7), 1);
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

TEST_F(InsertTest, AnObjectNoteThatCannotBeAddedLeavesItsObjectAlone) {
    const TransformView view(0.1);
    const MxDbObjectId line = addLine();
    WriteProfileInt(L"", L"VoiceType", 2);
    printed();
    MxDbBlockTableRecord* space = nullptr;
    ASSERT_EQ(mxdbOpenObject(space, database().currentSpaceId(), Mx::kForRead), Mx::eOk);
    run("PHONOMARK", {"Settings", "Spokesman", "Anna", "4,2"});
    space->close();
    EXPECT_THAT(listed(), ::testing::ElementsAre(MxDbObjectId()));
    EXPECT_TRUE(merix::db::DatabaseImp::peek(line)->reactors().empty());
    EXPECT_FALSE(IsAttachedVoice(line));
    EXPECT_EQ(storedSpeaker(), L"Anna");
    EXPECT_THAT(printed(), ::testing::Not(HasSubstr("rror")));
    MxDbEntity* free = nullptr;
    ASSERT_EQ(mxdbOpenObject(free, line, Mx::kForWrite), Mx::eOk) << "left open";
    free->close();
}

TEST_F(InsertTest, TheLoginNameIsTheSpeakerHoweverLongTheMachinesNameIs) {
    for (const std::size_t machine : {1U, 15U, 64U, 254U}) {
        for (const std::size_t user : {1U, 8U, 32U, 255U, 511U}) {
            g_machine = std::string(machine, 'm');
            g_user = std::string(user, 'u');
            WriteProfileStringW(L"", L"Spokesman", L"");
            run("PHONOMARK", {"10,20"});
            EXPECT_EQ(speaker(), std::wstring(user, L'u')) << machine << ' ' << user;
            livePhManager()->ErasePhonomark(listed()[0], &document());
        }
    }
    g_machine = "machine";
    g_user = std::string(512, 'u');
    WriteProfileStringW(L"", L"Spokesman", L"");
    run("PHONOMARK", {"10,20"});
    EXPECT_EQ(speaker(), L"machine") << "a login name that does not fit leaves what was there";
    g_machine.reset(), g_user.reset();
}

TEST_F(InsertTest, WithoutItsTextsTheCommandStillWorks) {
    FreeLibrary(_hdllInstance);
    _hdllInstance = nullptr;
    WriteProfileStringW(L"", L"Spokesman", L"Anna");
    printed();
    run("PHONOMARK", {"Settings", "10,20"});
    EXPECT_EQ(printed(), "\nCommand: PHONOMARK\nSettings\nA point is needed.\n10,20") << "there are no keywords";
    EXPECT_EQ(only().position(), MxGePoint3d(10, 20, 0));
    EXPECT_EQ(storedSpeaker(), L"Anna");
}

TEST_F(InsertTest, AnyOtherKeywordMakesANoteWithoutAPlace) {
    const TransformView view(0.1);
    addLine();
    void* const own = _hdllInstance;
    _hdllInstance = LoadResourceDll(L"MoreKeywords.dll");
    ASSERT_TRUE(_hdllInstance);
    for (const int type : {0, 1, 2}) {
        WriteProfileInt(L"", L"VoiceType", type);
        run("PHONOMARK", {"Later", "4,2", "6,7"});
        EXPECT_EQ(only().getPhonomarkType(), type);
        EXPECT_EQ(only().position(), MxGePoint3d());
        EXPECT_TRUE(only().extents().isEmpty());
        EXPECT_TRUE(only().attachObj().isNull());
        livePhManager()->ErasePhonomark(listed()[0], &document());
    }
    FreeLibrary(_hdllInstance);
    _hdllInstance = own;
}

TEST_F(InsertTest, WithoutAWorkingDrawingNothingIsListedButNothing) {
    const merix::db::WorkingDatabaseScope none(nullptr);
    run("PHONOMARK", {"Settings", "Spokesman", "Anna", "10,20"});
    EXPECT_THAT(listed(), ::testing::ElementsAre(MxDbObjectId()));
    EXPECT_EQ(storedSpeaker(), L"Anna");
    EXPECT_THAT(printed(), ::testing::Not(HasSubstr("rror")));
}

namespace {

/// Runs the command while another prompt waits, so that none of its own can be shown.
class InsertsMeanwhile : public merix::ed::InputSource {
public:
    InsertsMeanwhile() { merix::ed::Prompter::instance().setSource(this); }
    ~InsertsMeanwhile() override { merix::ed::Prompter::instance().setSource(nullptr); }
    bool feed() override {
        PhonomarkCmdGroup::cmdInsertPhonomark();
        merix::ed::Prompter::instance().cancel();
        return true;
    }
};

} // namespace

TEST_F(InsertTest, APromptThatFailsMakesANoteWithoutAPlace) {
    for (const int type : {0, 1}) {
        WriteProfileInt(L"", L"VoiceType", type);
        {
            const InsertsMeanwhile source;
            MxGePoint3d point;
            EXPECT_EQ(mxedGetPoint(nullptr, L"outer", point), kInputCancel);
        }
        EXPECT_EQ(only().getPhonomarkType(), type);
        EXPECT_EQ(only().position(), MxGePoint3d());
        EXPECT_TRUE(only().extents().isEmpty());
        EXPECT_EQ(GetProfileIntW(L"", L"VoiceType", 7), type);
        livePhManager()->ErasePhonomark(listed()[0], &document());
    }
}
