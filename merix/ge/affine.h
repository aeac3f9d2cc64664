// SPDX-License-Identifier: MIT
#pragma once

#include "host/ge/matrix.h"

namespace merix::ge {

using Affine = ::MxGeMatrix3d;

} // namespace merix::ge
