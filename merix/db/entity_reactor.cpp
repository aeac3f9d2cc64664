// SPDX-License-Identifier: MIT
#include "host/db/entity.h"
#include "merix/rx/class_registry.h"

MERIX_RX_CLASS(MxDbEntityReactor, "MxDbEntityReactor", MxDbObjectReactor, nullptr, "")
