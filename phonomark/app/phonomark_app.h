// SPDX-License-Identifier: MIT
#pragma once

#include "host/rx/app.h"

/// The module's application object: what is installed in the host at load and taken out at unload. Main thread only.
class CPhonomarkApp final : public MxRxMrxApp {
public:
    /// Asks the host to treat the module as unloadable and able to serve several documents, and loads the resources.
    CPhonomarkApp();

    int On_kInitAppMsg(void* appId) override;
    int On_kUnloadAppMsg(void* appId) override;
    int On_kLoadDwgMsg(void* appId) override;
    int On_kUnloadDwgMsg(void* appId) override;
    int On_kInvkSubrMsg(void* appId) override;
    void RegisterServerComponents() override;

    static void PhonomarkCM_PHONOMARK();
    static void PhonomarkCM_VOICEMAN();
    static void PhonomarkCM_VOICESHOW();

private:
    static void registerClasses();
    static void registerCommands();
    static void doFun(int code);
};

/// Loads "MrxPhonomarkRes.dll" into _hdllInstance, which stays null when there is none.
void LoadPhonomarkRes();
