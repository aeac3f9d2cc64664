// SPDX-License-Identifier: MIT
#include "host/win/resources.h"
#include "merix/rx/text.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include <pwd.h>
#include <unistd.h>

namespace {

TEST(UserNames, TheLoginNameIsThatOfTheUserAndTheSizeStays) {
    std::array<wchar_t, 256> buffer{};
    unsigned size = buffer.size();
    ASSERT_TRUE(GetUserNameW(buffer.data(), &size));
    EXPECT_EQ(merix::rx::toUtf8(buffer.data()), getpwuid(geteuid())->pw_name);
    EXPECT_EQ(size, buffer.size());
}

TEST(UserNames, TheComputerNameIsThatOfTheHost) {
    std::array<wchar_t, 256> buffer{};
    unsigned size = buffer.size();
    ASSERT_TRUE(GetComputerNameW(buffer.data(), &size));
    std::array<char, 256> name{};
    gethostname(name.data(), name.size() - 1);
    EXPECT_EQ(merix::rx::toUtf8(buffer.data()), name.data());
    EXPECT_EQ(size, buffer.size());
}

TEST(UserNames, ANameThatDoesNotFitIsNotCopied) {
    wchar_t buffer[1] = {L'?'};
    unsigned size = 1;
    EXPECT_FALSE(GetUserNameW(buffer, &size));
    EXPECT_FALSE(GetComputerNameW(buffer, &size));
    EXPECT_EQ(buffer[0], L'?');
    EXPECT_FALSE(GetUserNameW(nullptr, &size));
}

} // namespace
