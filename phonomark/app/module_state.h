// SPDX-License-Identifier: MIT
// What there is one of in the module. Main thread only.
#pragma once

class PhonomarkEdReactor;

/// The resource module "MrxPhonomarkRes.dll"; null before the first message, without one, and after unload.
extern void* _hdllInstance;
/// The editor reactor, from load to unload.
extern PhonomarkEdReactor* g_editorrect;
/// Whether notes are shown; kept in the settings between runs.
extern bool g_bPhonomarkShow;
/// Whether a change of the view may redraw the notes; cleared by the mouse filter while the view is being panned.
extern bool bEntUpd;

bool IsShowPhonomark();
/// Sets the show switch and nothing else.
void SetPhonomarkVar(bool show);
