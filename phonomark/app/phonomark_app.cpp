// SPDX-License-Identifier: MIT
#include "phonomark/app/phonomark_app.h"

#include "host/ed/commands.h"
#include "host/win/resources.h"
#include "phonomark/app/module_state.h"
#include "phonomark/audio/worker_census.h"
#include "phonomark/commands/command_group.h"
#include "phonomark/dbutil/border.h"
#include "phonomark/entity/phonomark.h"
#include "phonomark/entity/ps_reactor.h"
#include "phonomark/registry/dc_reactor.h"
#include "phonomark/registry/ed_reactor.h"
#include "phonomark/registry/en_reactor.h"
#include "phonomark/registry/ob_reactor.h"
#include "phonomark/registry/phonomark_manager.h"
#include "phonomark/settings/profile.h"
#include "phonomark/tagwindow/pm_reactor.h"
#include "phonomark/tagwindow/show_tag_window.h"

#include <utility>

namespace {

constexpr wchar_t kShowFunction[] = L"PhonomarkShow";
constexpr int kShowFunctionCode = 1;
constexpr wchar_t kCommandGroup[] = L"PhonomarkCM_";
constexpr int kCommandFlags = 1;
/// What an unload answers that could not take everything back.
constexpr int kUnloadFailed = 1;
/// How long an unload waits for the sound device. Stopping takes a period of sound, some milliseconds.
constexpr std::chrono::milliseconds kDevicePatience{1900};

MxEdCommandStack& commandStack() {
    MxRxObject* object = mxrxSysRegistry()->at(L"MERIX_REGISTERED_COMMANDS");
    if (!object || !object->isA() || !object->isA()->isDerivedFrom(MxEdCommandStack::desc()))
        __builtin_trap(); // a host without commands is none
    return *static_cast<MxEdCommandStack*>(object);
}

template <class T> void unregisterClass() {
    deleteMxRxClass(T::desc());
    T::gpDesc = nullptr;
}

/// In the reverse of the order in which the classes are registered.
using ClassRemoval = void (*)();
constexpr ClassRemoval kClassRemovals[] = {&unregisterClass<PhonomarkObReactor>, &unregisterClass<PhonomarkPsReactor>,
                                           &unregisterClass<PhonomarkPmReactor>, &unregisterClass<PhonomarkEnReactor>,
                                           &unregisterClass<PhonomarkEdReactor>, &unregisterClass<PhonomarkDcReactor>,
                                           &unregisterClass<MxDbPhonomark>};

} // namespace

CPhonomarkApp::CPhonomarkApp() {
    m_unloadable = true;
    m_servesSeveralDocuments = true;
    LoadPhonomarkRes();
}

int CPhonomarkApp::On_kInitAppMsg(void* appId) {
    const int result = MxRxMrxApp::On_kInitAppMsg(appId);
    if (!_hdllInstance)
        LoadPhonomarkRes(); // loaded again without having been unmapped
    registerClasses();
    if (!g_editorrect)
        g_editorrect = new PhonomarkEdReactor(true);
    registerCommands();
    createMxPhManager();
    g_bPhonomarkShow = GetProfileIntW(RegSection(), L"VoiceShow", 1) != 0;
    return result;
}

int CPhonomarkApp::On_kUnloadAppMsg(void* appId) {
    // The command group stays registered: the host's command stack keeps the three entries.
    int result = MxRxMrxApp::On_kUnloadAppMsg(appId);
    // What fails leaves the others to be done. The host is told: it must not unmap what is still registered.
    const auto step = [&result](const char* what, const auto& function) {
        if (!guarded(what, function))
            result = kUnloadFailed;
    };
    // Its texts are still there, and its note is still one.
    step("keeping the take", [] { stopRecordingInTagWindow(); });
    step("releasing the texts", [] {
        if (void* const resources = std::exchange(_hdllInstance, nullptr))
            FreeLibrary(resources);
    });
    step("deleting the registry", [] { deleteMxPhManager(); });
    step("removing the tag window", [] { removeTagWindow(); }); // its code goes with the module
    step("keeping the show switch", [] { WriteProfileInt(RegSection(), L"VoiceShow", g_bPhonomarkShow ? 1 : 0); });
    step("deleting the editor reactor", [] { delete std::exchange(g_editorrect, nullptr); });
    for (const ClassRemoval remove : kClassRemovals)
        step("unregistering a class", remove);
    step("ending the sound", [] { phonomark::workerCensus().stopAll(kDevicePatience); });
    return result;
}

int CPhonomarkApp::On_kLoadDwgMsg(void*) {
    mxedDefun(kShowFunction, kShowFunctionCode);
    return 0;
}

int CPhonomarkApp::On_kUnloadDwgMsg(void*) {
    mxedUndef(kShowFunction, kShowFunctionCode);
    return 0;
}

int CPhonomarkApp::On_kInvkSubrMsg(void*) {
    doFun(mxedGetFunCode());
    return 0;
}

void CPhonomarkApp::RegisterServerComponents() {}

void CPhonomarkApp::PhonomarkCM_PHONOMARK() try { PhonomarkCmdGroup::cmdInsertPhonomark(); } catch (...) {
    reportFailure("PHONOMARK");
}

void CPhonomarkApp::PhonomarkCM_VOICEMAN() try { PhonomarkCmdGroup::cmdPhonomarkManager(); } catch (...) {
    reportFailure("VOICEMAN");
}

void CPhonomarkApp::PhonomarkCM_VOICESHOW() try { PhonomarkCmdGroup::cmdDisplayPhonomark(); } catch (...) {
    reportFailure("VOICESHOW");
}

void CPhonomarkApp::registerClasses() {
    MxDbPhonomark::rxInit();
    PhonomarkDcReactor::rxInit();
    PhonomarkEdReactor::rxInit();
    PhonomarkEnReactor::rxInit();
    PhonomarkPmReactor::rxInit();
    PhonomarkPsReactor::rxInit();
    PhonomarkObReactor::rxInit();
    mxrxBuildClassHierarchy();
}

void CPhonomarkApp::registerCommands() {
    struct Entry {
        const wchar_t* name;
        MxEdCommandFunction function;
    };
    for (const Entry& entry : {Entry{L"PHONOMARK", &PhonomarkCM_PHONOMARK}, Entry{L"VOICEMAN", &PhonomarkCM_VOICEMAN},
                               Entry{L"VOICESHOW", &PhonomarkCM_VOICESHOW}})
        commandStack().addCommand(kCommandGroup, entry.name, entry.name, kCommandFlags, entry.function);
}

void CPhonomarkApp::doFun(int code) {
    if (code == kShowFunctionCode)
        mxedRetInt(IsShowPhonomark() ? 1 : 0);
}

void LoadPhonomarkRes() {
    _hdllInstance = LoadResourceDll(L"MrxPhonomarkRes.dll");
}
