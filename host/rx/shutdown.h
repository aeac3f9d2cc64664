// SPDX-License-Identifier: MIT
#pragma once

/// Ends the process with `status` after the host has written the recovery files of every open drawing. May be called
/// from any thread; does not return. Static destructors are not run: other threads may still be at work.
[[noreturn]] void mxrxShutdown(int status);
