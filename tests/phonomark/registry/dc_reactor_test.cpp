// SPDX-License-Identifier: MIT
#include "phonomark/registry/dc_reactor.h"

#include <gtest/gtest.h>

/// A process that has sent the module no message yet.
TEST(DcReactor, IsAttachedBeforeTheFirstMessage) {
    EXPECT_TRUE(g_dcReactor.IsAttached());
    EXPECT_TRUE(g_dcReactor.Subject());
}
