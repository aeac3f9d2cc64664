// SPDX-License-Identifier: MIT
#pragma once

/// Runs the host command that makes all graphics anew; without `echo` nothing of it is shown on the command line.
/// Without a drawing nothing happens. Main thread only.
void InvokeRegenCommand(bool echo);
