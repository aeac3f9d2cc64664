// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/system_info.h"

#include "phonomark/dbutil/text_conversion.h"

#include <QDateTime>

#include <gtest/gtest.h>

#include <array>
#include <ctime>
#include <pwd.h>
#include <unistd.h>

TEST(SystemInfoTest, TheTimeIsLocalAndWithoutLeadingZeros) {
    const QDateTime before = QDateTime::currentDateTime();
    const std::wstring text = GetSysDataTime().str();
    std::array<int, 6> part{};
    ASSERT_EQ(
        std::swscanf(text.c_str(), L"%d/%d/%d %d:%d:%d", &part[0], &part[1], &part[2], &part[3], &part[4], &part[5]),
        6);
    const QDateTime told(QDate(part[0], part[1], part[2]), QTime(part[3], part[4], part[5]));
    EXPECT_LE(before.addSecs(-1), told);
    EXPECT_LE(told, QDateTime::currentDateTime());
    std::wstring again = std::to_wstring(part[0]);
    const std::array separators{L'/', L'/', L' ', L':', L':'};
    for (std::size_t i = 0; i < separators.size(); ++i)
        again += separators[i] + std::to_wstring(part[i + 1]);
    EXPECT_EQ(text, again) << "numbers are written plainly";
}

TEST(SystemInfoTest, TheTimeIsThatOfTheUsersZone) {
    static constexpr int kAhead = (5 * 60 + 45) * 60;
    qputenv("TZ", "XYZ-5:45");
    tzset();
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(kAhead - 1);
    const QString text = toQString(GetSysDataTime().str());
    const QDateTime after = QDateTime::currentDateTimeUtc().addSecs(kAhead);
    qunsetenv("TZ");
    tzset();
    QDateTime told = QDateTime::fromString(text, QStringLiteral("yyyy/M/d h:m:s"));
    told.setTimeSpec(Qt::UTC);
    EXPECT_TRUE(told.isValid()) << text.toStdString();
    EXPECT_LE(before, told);
    EXPECT_LE(told, after);
}

TEST(SystemInfoTest, TheUserIsTheLoginName) {
    const passwd* user = getpwuid(geteuid());
    ASSERT_TRUE(user);
    EXPECT_EQ(toQString(GetSysLocalUser().str()), QString::fromLocal8Bit(user->pw_name));
}
