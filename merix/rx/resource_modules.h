// SPDX-License-Identifier: MIT
// Resource modules as the host sees them. "X.dll" is a binary Qt resource collection; while it is loaded its files
// are reached under ":/X/…", its texts are in ":/X/strings/<language>.json" (id to text). Main thread only.
#pragma once

#include "host/win/resources.h"

#include <string>
#include <vector>

namespace merix::rx {

/// Where resource modules and data files are looked for, in order: the folder of the program, ../lib/merix beside it,
/// and the folders in the environment variable MERIX_RESOURCE_PATH (separated by colons).
std::vector<std::string> resourceFolders();

/// The resource prefix (":/X") of a loaded module, empty for anything else.
std::string resourcePrefix(const void* resource);

/// Modules in force for dialogs and texts; the one pushed last is AfxGetResourceHandle's answer.
void pushResourceHandle(void* resource);
void popResourceHandle();

} // namespace merix::rx
