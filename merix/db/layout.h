// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/layout.h"

namespace merix::db {

using Layout = ::MxDbLayout;

/// The key of the layouts' dictionary in the named object dictionary.
inline constexpr wchar_t kLayoutDictionary[] = L"ACAD_LAYOUT";

} // namespace merix::db
