// SPDX-License-Identifier: MIT
// Ways into the module for callers that play notes on threads of their own. The module itself does not use them.
#pragma once

#include <cstdint>

class CWnd;

/// What PlaySndFuncEx is called with.
struct tPlaySndContext {
    const char* text = nullptr; ///< bytes up to the first zero; may be null
    std::uint32_t delayMs = 0;
    CWnd* window = nullptr; ///< told when it is over; may be null, or gone by then
};

/// Posted to the window of PlaySndFuncEx at its end.
constexpr unsigned kSoundPlayedMessage = 1125;

extern "C" {

/// Hands the sound of a note (MxDbPhonomark*) to playSnd() and returns when the note has sounded: after one second more
/// than its whole seconds. Meanwhile the note has its playing mark. Null, always. Any thread: what is done to the
/// drawing is done on the main thread. The caller sees to it that note and module stay until this returns; the note may
/// be erased and its drawing closed.
__attribute__((visibility("default"))) void* PlaySndFunc(void* note);

/// Hands the text of a tPlaySndContext to playSnd() and waits for its delay, then posts kSoundPlayedMessage to its
/// window; without a text there is nothing to wait for. Null, always. Any thread.
__attribute__((visibility("default"))) void* PlaySndFuncEx(void* context);
}
