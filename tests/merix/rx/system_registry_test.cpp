// SPDX-License-Identifier: MIT
#include "merix/rx/system_registry.h"

#include <gtest/gtest.h>

namespace {

class Service : public MxRxObject {};

TEST(SystemRegistry, NamesAreFoundUntilTheyAreTakenAway) {
    Service service;
    merix::rx::setSystemRegistryEntry(L"TestService", &service);
    EXPECT_EQ(mxrxSysRegistry()->at(L"TestService"), &service);
    merix::rx::setSystemRegistryEntry(L"TestService", nullptr);
    EXPECT_EQ(mxrxSysRegistry()->at(L"TestService"), nullptr);
    EXPECT_EQ(mxrxSysRegistry()->at(nullptr), nullptr);
}

TEST(SystemRegistry, TheDynamicLinkerIsThereFromTheStart) {
    MxRxObject* linker = mxrxSysRegistry()->at(L"DynamicLinker");
    ASSERT_NE(linker, nullptr);
    EXPECT_TRUE(linker->isKindOf(MxRxDynamicLinker::desc()));
}

} // namespace
