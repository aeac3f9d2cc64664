// SPDX-License-Identifier: MIT
// The mouse filter that keeps note redraws out of a pan. The module does not install it: a host that hands its window
// messages on may call filterMouse itself.
#pragma once

#include "host/win/message.h"

/// Clears bEntUpd while the message is a mouse move with the middle button alone held, sets it for every other.
/// Always 0: the message is not consumed.
int filterMouse(tagMSG* message);

/// Installs nothing on this platform, and says so on the command line.
void RegisterFilterWinMsg();
void RemoveFilterWinMsg();
