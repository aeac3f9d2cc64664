// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/run_time_class.h"

MxRxClass* registeredClass(MxRxClass* known, const wchar_t* name) {
    MxRxClass* found = known ? mxrxFindMxRxClass(name) : nullptr;
    if (found && found != known)
        mxrx_abort(L"Class mismatch");
    return found;
}

MxRxClass* requireClass(MxRxClass* made) {
    if (!made)
        mxrx_abort(L"Class mismatch");
    return made;
}
