// SPDX-License-Identifier: MIT
// This program is linked from the lower floors alone: it would not link if they needed more.
#include "host/db/database.h"
#include "merix/db/database_imp.h"
#include "merix/io/drawing_file.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

TEST(CoreLinks, TheLowerFloorsMakeAndFileADrawingWithoutQtGuiOrWidgets) {
    MxDbDatabase database;
    database.imp().createDefaults();
    std::string folder = testing::TempDir() + "core_links_XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    const std::string path = folder + "/new.dxf";
    const auto result = merix::io::writeDrawing(path, database);
    EXPECT_TRUE(result) << result.error;
    std::filesystem::remove_all(folder);
    std::ifstream maps("/proc/self/maps");
    bool core = false;
    for (std::string line; std::getline(maps, line);) {
        core = core || line.find("libQt5Core") != std::string::npos;
        EXPECT_EQ(line.find("libQt5Gui"), std::string::npos);
        EXPECT_EQ(line.find("libQt5Widgets"), std::string::npos);
    }
    EXPECT_TRUE(core);
}

} // namespace
