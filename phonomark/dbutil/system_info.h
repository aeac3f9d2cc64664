// SPDX-License-Identifier: MIT
// Who and when. Main thread only.
#pragma once

#include "host/rx/text.h"

/// Local time as year/month/day hour:minute:second without leading zeros: "2026/3/7 9:5:0".
MxString GetSysDataTime();

/// The login name, or the name of the machine when the login name is longer than 1023 characters.
MxString GetSysLocalUser();

/// The same through a buffer of `capacity` wide characters.
MxString localUser(unsigned capacity);
