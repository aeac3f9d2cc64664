// SPDX-License-Identifier: MIT
#include "merix/rx/configuration.h"

#include <gtest/gtest.h>

namespace {

class Configuration : public MxRxConfiguration {
public:
    CStdStr<wchar_t> profileKey() const override { return L"Profiles"; }
};

} // namespace

TEST(ConfigurationTest, TheHostHasNoneUntilItsProgramGivesOne) {
    EXPECT_EQ(mxrxConfiguration(), nullptr);
    const Configuration configuration;
    merix::rx::setConfiguration(&configuration);
    EXPECT_EQ(mxrxConfiguration(), &configuration);
    merix::rx::setConfiguration(nullptr);
    EXPECT_EQ(mxrxConfiguration(), nullptr);
}
