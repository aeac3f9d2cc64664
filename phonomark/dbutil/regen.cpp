// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/regen.h"

#include "host/db/database.h"
#include "host/ed/commands.h"
#include "host/ed/variables.h"

namespace {

constexpr wchar_t kRegen[] = L"_.Regen";
constexpr wchar_t kEcho[] = L"CMDECHO";

} // namespace

void InvokeRegenCommand(bool echo) {
    if (!mxdbHostApplicationServices()->workingDatabase())
        return; // the command would say that no drawing is open
    MxEdVariableValue before;
    const bool isSilenced = !echo && mxedGetVar(kEcho, before) == Mx::eOk && mxedSetVar(kEcho, 0) == Mx::eOk;
    mxedCommand(kRegen);
    if (isSilenced)
        mxedSetVar(kEcho, before);
}
