// SPDX-License-Identifier: MIT
#include "merix/ed/audit_command.h"

#include "command_fixture.h"

using namespace merix;
using testing::HasSubstr;

using AuditCommandTest = test::CommandFixture;

TEST_F(AuditCommandTest, ASoundDrawingHasNoFindings) {
    type({"LINE", "0,0",    "10,0", "",      "LAYER", "M",   "A", "",          "CIRCLE", "5,5",
          "2",    "LAYOUT", "N",    "Sheet", "ERASE", "l",   "",  "DRAWORDER", "all",    "",
          "F",    "COPY",   "all",  "",      "0,0",   "5,5", "",  "U",         "REDO",   ""});
    typeInVain({"AUDIT"});
    EXPECT_THAT(shown(), HasSubstr("0 broken, 0 loose"));
}

TEST_F(AuditCommandTest, WhatIsBrokenIsToldWithItsHandle) {
    type({"LINE", "0,0", "10,0", ""});
    auto& line = const_cast<db::Line&>(last<db::Line>());
    db::traits(line).layer = database.roots.layerTable; // no layer
    wchar_t handle[17];
    line.objectId().handle().getIntoAsciiBuffer(handle);
    typeInVain({"AUDIT"});
    const std::string said = shown();
    EXPECT_THAT(said, HasSubstr("\n" + QString::fromWCharArray(handle).toStdString() + " LINE"));
    EXPECT_THAT(said, HasSubstr("1 broken, 0 loose"));
}
