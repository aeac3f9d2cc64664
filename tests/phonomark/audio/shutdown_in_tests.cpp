// SPDX-License-Identifier: MIT
// The host's way out, in a program that has no host: it says that it was taken, and ends the process.
#include "host/rx/shutdown.h"

#include "tests/phonomark/audio/audio_fixture.h"

#include <cstring>
#include <unistd.h>

std::function<void()> g_atShutdown;

void mxrxShutdown(int status) {
    if (g_atShutdown)
        g_atShutdown();
    const char* text = "the host ends the process\n";
    if (write(STDERR_FILENO, text, std::strlen(text)) < 0)
        _exit(99);
    _exit(status);
}
