// SPDX-License-Identifier: MIT
#pragma once

#include "tools/soundcheck/wav.h"

#include <string>

namespace soundcheck {

/// Who sets the pace at which samples flow through a pipe.
enum class Pace {
    Writer, ///< the reader takes what comes: samples are written as fast as they would be spoken
    Reader, ///< the reader takes what it needs when it needs it: the pipe is kept filled
};

/// A voice before a virtual microphone: writes samples to the pipe `fifo`, silence until the process receives SIGUSR1,
/// then `speech` from its first sample, then silence again. A further SIGUSR1 begins the speech anew. While nobody
/// reads, time stands still for a speaker of some patience: speech waits for half a second, then it is over.
/// Prints "ready" once a reader of the pipe is there. Returns when nobody reads the pipe any more or on SIGTERM.
/// Call it before other threads exist: it handles signals. Throws std::runtime_error.
void speakInto(const std::string& fifo, const Sound& speech, Pace pace);

} // namespace soundcheck
