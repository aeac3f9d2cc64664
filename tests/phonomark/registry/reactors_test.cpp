// SPDX-License-Identifier: MIT
// The reactors on host events, moved by the events of the real host.
#include "merix/ed/command_stack.h"
#include "merix/ed/editor.h"
#include "merix/rx/system_registry.h"
#include "phonomark/app/entry_point.h"
#include "phonomark/app/module_state.h"
#include "phonomark/app/phonomark_app.h"
#include "phonomark/registry/dc_reactor.h"
#include "phonomark/registry/ed_reactor.h"
#include "phonomark/registry/en_reactor.h"
#include "phonomark/registry/ob_reactor.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/dictionary_entry.h"
#include "tests/phonomark/tagwindow/sound_fixture.h"

#include <semaphore>

using merix::ap::DocManager;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

bool g_hasDocumentManager = true;

class ReactorsTest : public SoundTest {
protected:
    void TearDown() override {
        g_hasDocumentManager = true;
        merix::rx::setSystemRegistryEntry(L"MxEditor", &merix::ed::Editor::instance());
        merix::rx::setSystemRegistryEntry(L"MERIX_REGISTERED_COMMANDS", &merix::ed::CommandStack::instance());
        SoundTest::TearDown();
    }
    /// Registers T while its name stands for another class than the one that T knows as its own.
    template <class T> static void registerUnderATakenName() {
        T::gpDesc = MxDbObject::desc();
        T::rxInit();
    }
    std::counting_semaphore<> m_written{0}, m_goOn{0};
    std::vector<MxDbObjectId> ids(MxApDocument* of) {
        std::vector<MxDbObjectId> out;
        livePhManager()->GetAllObjects(out, of);
        return out;
    }
};

} // namespace

/// The host's; null stands for a host that has not made its document manager yet.
MxApDocManager* mxDocManagerPtr() {
    return g_hasDocumentManager ? &DocManager::instance() : nullptr;
}

TEST_F(ReactorsTest, WithoutADocumentManagerTheDocumentReactorStaysUnattachedInSilence) {
    g_hasDocumentManager = false;
    PhonomarkDcReactor reactor(true);
    EXPECT_FALSE(reactor.IsAttached());
    EXPECT_EQ(reactor.Subject(), nullptr);
    EXPECT_FALSE(reactor.Attach());
    g_hasDocumentManager = true;
    EXPECT_TRUE(reactor.Attach());
    g_hasDocumentManager = false;
    reactor.Detach();
    EXPECT_TRUE(reactor.IsAttached()) << "there is nothing to detach from";
    g_hasDocumentManager = true;
    EXPECT_EQ(printed(), "");
}

TEST_F(ReactorsTest, WithoutAnEditorTheEditorReactorStaysUnattachedInSilence) {
    for (MxRxObject* other :
         {static_cast<MxRxObject*>(nullptr), static_cast<MxRxObject*>(&merix::ed::CommandStack::instance())}) {
        merix::rx::setSystemRegistryEntry(L"MxEditor", other);
        PhonomarkEdReactor reactor(true);
        EXPECT_FALSE(reactor.IsAttached());
        EXPECT_EQ(reactor.Subject(), nullptr);
        EXPECT_FALSE(reactor.Attach());
    }
    EXPECT_EQ(printed(), "");
}

TEST_F(ReactorsTest, AClassIsRegisteredOnce) {
    MxRxClass* const known = PhonomarkObReactor::desc();
    EXPECT_EQ(PhonomarkObReactor::rxInit(), known);
    EXPECT_EQ(PhonomarkDcReactor::rxInit(), PhonomarkDcReactor::desc());
    EXPECT_EQ(known->dwgVersion(), 1);
    EXPECT_STREQ(known->name(), L"PhonomarkObReactor");
    EXPECT_EQ(known->myParent(), MxDbObjectReactor::desc());
    EXPECT_EQ(PhonomarkEdReactor::desc()->myParent(), MxEditorReactor::desc());
}

TEST_F(ReactorsTest, AnotherClassUnderTheNameStopsTheHost) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(registerUnderATakenName<PhonomarkDcReactor>(), "Class mismatch");
    EXPECT_DEATH(registerUnderATakenName<PhonomarkEdReactor>(), "Class mismatch");
    EXPECT_DEATH(registerUnderATakenName<PhonomarkEnReactor>(), "Class mismatch");
    EXPECT_DEATH(registerUnderATakenName<PhonomarkObReactor>(), "Class mismatch");
}

TEST_F(ReactorsTest, AHostWithoutACommandStackStopsTheModule) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (MxRxObject* other :
         {static_cast<MxRxObject*>(nullptr), static_cast<MxRxObject*>(&merix::ed::Editor::instance())})
        EXPECT_EXIT(
            {
                merix::rx::setSystemRegistryEntry(L"MERIX_REGISTERED_COMMANDS", other);
                CPhonomarkApp().On_kInitAppMsg(nullptr);
            },
            [](int status) {
                return WIFSIGNALED(status) && (WTERMSIG(status) == SIGILL || WTERMSIG(status) == SIGTRAP);
            },
            ::testing::Not(HasSubstr("merix: ")))
            << "a trap without a message";
}

TEST_F(ReactorsTest, TheDocumentReactorIsAttachedAgainAfterItsDetachment) {
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
    for (const wchar_t* file : {L"/tmp/a.PH$", L"/tmp/a.ph$", L"/tmp/a.ms$", L"/tmp/a.MS$", L"/tmp/a..MS$",
                                L"/tmp/a.dxf", L"/tmp/a", L"", static_cast<const wchar_t*>(nullptr)}) {
        addNote();
        g_editorrect->beginSave(&database(), file);
        const auto before = listed();
        livePhManager()->RemovePhonomark(&document());
        livePhManager()->ReadVoiceHandle(&document());
        EXPECT_EQ(listed(), before);
    }
}

TEST_F(ReactorsTest, TheHostsAutomaticCopyHoldsTheList) {
    const MxDbObjectId id = addNote();
    const QString copy = folder.filePath(QStringLiteral("plan.dxf.ms$"));
    ASSERT_TRUE(DocManager::instance().writeCopy(document(), copy).ok);
    merix::ap::Document* opened = nullptr;
    ASSERT_TRUE(DocManager::instance().openCopy(copy, {}, QStringLiteral("plan"), &opened).ok);
    const std::vector<MxDbObjectId> known = ids(opened);
    ASSERT_EQ(known.size(), 1u);
    EXPECT_EQ(known[0].handle(), id.handle());
}

TEST_F(ReactorsTest, TheNotesOfALayoutAreDrawnAnewWhenItBecomesTheCurrentOne) {
    const MxDbObjectId id = addNote();
    const QStringList layouts = document().layouts();
    ASSERT_GE(layouts.size(), 2);
    auto before = note(id).data().graphicsVersion;
    ASSERT_TRUE(document().setCurrentLayout(layouts[1]));
    EXPECT_EQ(note(id).data().graphicsVersion, before);
    ASSERT_TRUE(document().setCurrentLayout(layouts[0]));
    EXPECT_GT(note(id).data().graphicsVersion, before);
}

TEST_F(ReactorsTest, NotesHiddenInOneDrawingAreHiddenInTheOthersWhenTheyAreActivated) {
    const MxDbObjectId id = addNote();
    merix::ap::Document& first = document();
    useDocument(*DocManager::instance().create());
    addNote();
    const auto before = note(id).data().graphicsVersion;
    run("VOICESHOW");
    EXPECT_EQ(note(id).data().graphicsVersion, before) << "only the current drawing is switched at once";
    DocManager::instance().activate(&first);
    EXPECT_GT(note(id).data().graphicsVersion, before);
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

TEST_F(ReactorsTest, TheCurrentDocumentThatGoesKeepsTheTakeAtItsDeactivationAndTakesTheWindowAlong) {
    struct Watcher final : MxApDocManagerReactor {
        Watcher() { DocManager::instance().addReactor(this); }
        ~Watcher() override { DocManager::instance().removeReactor(this); }
        void documentToBeDeactivated(MxApDocument*) override { look(); }
        std::function<void()> look;
    } watcher;
    merix::ap::Document& gone = document();
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    hold(window, 2000);
    std::uint32_t kept = 0;
    watcher.look = [&] {
        EXPECT_EQ(g_taguidlg, &window);
        EXPECT_EQ(window.recordTimer(), -1);
        kept = note(id).getAudioDataSize();
    };
    DocManager::instance().close(gone);
    EXPECT_EQ(kept, 64u);
    EXPECT_FALSE(g_taguidlg);
    EXPECT_THAT(ids(&gone), IsEmpty());
}

TEST_F(ReactorsTest, AnotherDocumentThatGoesWhileANoteIsRecordedTakesTheWindowAlong) {
    merix::ap::Document& current = document();
    merix::ap::Document* other = DocManager::instance().create();
    DocManager::instance().activate(&current);
    hold(openWindow(addNote()), 2000);
    DocManager::instance().close(*other);
    EXPECT_FALSE(g_taguidlg);
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

TEST_F(ReactorsTest, TheRegistrysEndWhileANoteIsPlayedSavesTheListThenEndsTheSoundAndTheWindow) {
    struct Watcher final : MxDbObjectReactor {
        void modified(const MxDbObject*) override {
            ++saves;
            wasPlaying = g_taguidlg && g_taguidlg->IsPlaying();
        }
        int saves = 0;
        bool wasPlaying = false;
    } watcher;
    const MxDbObjectId id = addRecorded(L"5.0\"");
    ASSERT_TRUE(livePhManager()->SaveVoiceHandle(&database()));
    const MxDbObjectId list =
        dictionaryEntry(dictionaryEntry(database().namedObjectsDictionaryId(), L"PHONO_MARK"), L"VOICE_LIST");
    MxDbObject* watched = nullptr;
    ASSERT_EQ(mxdbOpenObject(watched, list, Mx::kForRead), Mx::eOk);
    watched->addReactor(&watcher);
    watched->close();
    openWindow(id);
    // The sound goes on until it is stopped.
    alsa.write = [this](const std::int16_t*, unsigned long frames) {
        m_written.release();
        m_goOn.acquire();
        return static_cast<long>(frames);
    };
    press(*g_taguidlg);
    m_written.acquire();
    EXPECT_TRUE(g_taguidlg->IsPlaying());
    deleteMxPhManager();
    EXPECT_EQ(watcher.saves, 1);
    EXPECT_TRUE(watcher.wasPlaying) << "the list is saved first";
    EXPECT_FALSE(g_taguidlg);
    EXPECT_FALSE(note(id).isPlaying());
    m_goOn.release(1000);
    phonomark::workerCensus().wait();
    EXPECT_EQ(alsa.openDevices(), 0);
    EXPECT_EQ(alsa.count("snd_pcm_writei"), 1) << "the player was stopped";
    ASSERT_EQ(mxdbOpenObject(watched, list, Mx::kForRead), Mx::eOk);
    watched->removeReactor(&watcher);
    watched->close();
    createMxPhManager();
    EXPECT_THAT(listed(), ::testing::ElementsAre(id));
}

TEST_F(ReactorsTest, TheCommandsAreRegisteredInTheirOrderWithTheirNamesAndFlags) {
    /// Hands everything on to the host's stack and writes down what it made of it.
    struct Witness final : MxEdCommandStack {
        Mx::ErrorStatus addCommand(const wchar_t* group, const wchar_t* globalName, const wchar_t* localName, int flags,
                                   MxEdCommandFunction function, MxEdUIContext* contextMenu, int functionCode,
                                   void* resourceHandle, MxEdCommand** created) override {
            EXPECT_EQ(contextMenu, nullptr);
            EXPECT_EQ(functionCode, -1);
            EXPECT_EQ(resourceHandle, nullptr);
            EXPECT_EQ(created, nullptr);
            MxEdCommand* made = nullptr;
            const auto status = merix::ed::CommandStack::instance().addCommand(
                group, globalName, localName, flags, function, contextMenu, functionCode, resourceHandle, &made);
            seen += std::wstring(made->groupName()) + L'.' + made->globalName() + L'.' + made->localName() + L' ' +
                    std::to_wstring(made->flags()) + L'\n';
            return status;
        }
        std::wstring seen;
    } witness;
    merix::rx::setSystemRegistryEntry(L"MERIX_REGISTERED_COMMANDS", &witness);
    ASSERT_EQ(mxrxEntryPoint(kInitAppMsg, this), 0);
    EXPECT_EQ(witness.seen, L"PhonomarkCM_.PHONOMARK.PHONOMARK 1\n"
                            L"PhonomarkCM_.VOICEMAN.VOICEMAN 1\n"
                            L"PhonomarkCM_.VOICESHOW.VOICESHOW 1\n");
}
