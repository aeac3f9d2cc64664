// SPDX-License-Identifier: MIT
#pragma once

/// The bodies of the module's commands. Main thread only, inside the command.
class PhonomarkCmdGroup {
public:
    /// "PHONOMARK": places a new, still silent note.
    static void cmdInsertPhonomark();
    /// "VOICEMAN": lists the notes.
    static void cmdPhonomarkManager();
    /// "VOICESHOW": shows or hides the notes.
    static void cmdDisplayPhonomark();
};
