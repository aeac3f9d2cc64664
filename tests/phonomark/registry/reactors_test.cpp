// SPDX-License-Identifier: MIT
// The reactors on host events, moved by the events of the real host.
#include "merix/ed/editor.h"
#include "phonomark/app/module_state.h"
#include "phonomark/registry/dc_reactor.h"
#include "phonomark/registry/ed_reactor.h"
#include "phonomark/registry/en_reactor.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/tagwindow/sound_fixture.h"

using merix::ap::DocManager;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class ReactorsTest : public SoundTest {
protected:
    std::vector<MxDbObjectId> ids(MxApDocument* of) {
        std::vector<MxDbObjectId> out;
        livePhManager()->GetAllObjects(out, of);
        return out;
    }
};

} // namespace

TEST_F(ReactorsTest, TheDocumentReactorIsAttachedBeforeTheFirstMessage) {
    EXPECT_TRUE(g_dcReactor.IsAttached());
    EXPECT_TRUE(g_dcReactor.Attach());
    g_dcReactor.Detach();
    EXPECT_FALSE(g_dcReactor.IsAttached());
    EXPECT_TRUE(g_dcReactor.Attach());
    EXPECT_FALSE(PhonomarkDcReactor(false).IsAttached());
}

TEST_F(ReactorsTest, TheEditorReactorIsAttachedAtLoad) {
    ASSERT_TRUE(g_editorrect);
    EXPECT_TRUE(g_editorrect->IsAttached());
    EXPECT_EQ(g_editorrect->Subject(), &merix::ed::Editor::instance());
    EXPECT_TRUE(g_editorrect->Attach());
    EXPECT_FALSE(PhonomarkEdReactor(false).IsAttached());
}

TEST_F(ReactorsTest, EveryReactorClassMakesItsObjects) {
    for (const wchar_t* name : {L"PhonomarkDcReactor", L"PhonomarkEdReactor", L"PhonomarkEnReactor",
                                L"PhonomarkObReactor", L"PhonomarkPmReactor"}) {
        const MxRxClass* aClass = mxrxFindMxRxClass(name);
        ASSERT_TRUE(aClass);
        const std::unique_ptr<MxRxObject> made(aClass->create());
        ASSERT_TRUE(made);
        EXPECT_EQ(made->isA(), aClass);
    }
}

TEST_F(ReactorsTest, EverySaveWritesTheListAutomaticOnesToo) {
    for (const wchar_t* file : {L"/tmp/a.PH$", L"/tmp/a.ms$", L"/tmp/a.dxf", L""}) {
        addNote();
        merix::ed::Editor::instance().notifyBeginSave(&database(), file);
        const auto before = listed();
        livePhManager()->RemovePhonomark(&document());
        livePhManager()->ReadVoiceHandle(&document());
        EXPECT_EQ(listed(), before);
    }
}

TEST_F(ReactorsTest, EveryCommandMarksTheNotesAsDraggedWhileItRuns) {
    auto& editor = merix::ed::Editor::instance();
    editor.notifyCommandWillStart(L"MOVE");
    EXPECT_TRUE(MxDbPhonomark::IsDraging());
    editor.notifyCommandEnded(L"MOVE");
    EXPECT_FALSE(MxDbPhonomark::IsDraging());
    editor.notifyCommandWillStart(L"REGEN");
    editor.notifyCommandCancelled(L"REGEN");
    EXPECT_FALSE(MxDbPhonomark::IsDraging());
    editor.notifyCommandWillStart(L"REGEN");
    editor.notifyCommandFailed(L"REGEN");
    EXPECT_FALSE(MxDbPhonomark::IsDraging());
}

TEST_F(ReactorsTest, AnActivatedDocumentsNotesAreDrawnAnew) {
    const MxDbObjectId id = addNote();
    DocManager::instance().create();
    const auto before = note(id).data().graphicsVersion;
    DocManager::instance().activate(&document());
    EXPECT_GT(note(id).data().graphicsVersion, before);
}

TEST_F(ReactorsTest, DeactivationStopsARecordingAndKeepsTheWindowAndTheTake) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    hold(window, 2000);
    DocManager::instance().create();
    EXPECT_EQ(g_taguidlg, &window);
    EXPECT_EQ(window.recordTimer(), -1);
    EXPECT_TRUE(note(id).isRecord());
    EXPECT_EQ(note(id).getAudioDataSize(), 64u);
}

TEST_F(ReactorsTest, DeactivationLeavesAPlayingWindowAndHidesAnIdleOne) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    DocManager::instance().create();
    EXPECT_FALSE(window.isVisible());
    DocManager::instance().activate(&document());
    openWindow(addRecorded(L"5.0\""));
    press(window);
    DocManager::instance().create();
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(window.IsPlaying());
}

TEST_F(ReactorsTest, ADocumentThatGoesWhileItsNoteIsRecordedTakesTheWindowAlong) {
    merix::ap::Document& gone = document();
    hold(openWindow(addNote()), 2000);
    DocManager::instance().close(gone);
    EXPECT_FALSE(g_taguidlg);
    EXPECT_THAT(ids(&gone), IsEmpty());
}

TEST_F(ReactorsTest, ADocumentThatGoesWhileItsNoteIsPlayedLeavesTheWindow) {
    merix::ap::Document& gone = document();
    CPhonomarkTagUIDlg& window = openWindow(addRecorded(L"5.0\""));
    press(window);
    DocManager::instance().close(gone);
    EXPECT_EQ(g_taguidlg, &window);
    EXPECT_TRUE(window.IsPlaying());
    EXPECT_THAT(ids(&gone), IsEmpty());
}
