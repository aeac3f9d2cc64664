// SPDX-License-Identifier: MIT
#include "merix/io/header_variables.h"

#include "drawing_fixture.h"

#include <gmock/gmock.h>

#include <functional>

using namespace merix;
using io::testing::Directory;
using io::testing::readBytes;
using io::testing::writeBytes;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

class HeaderVariablesTest : public ::testing::Test {
protected:
    /// A drawing with this header, read.
    void read(const std::string& header) {
        writeBytes(m_folder / "a.dxf", "0\nSECTION\n2\nHEADER\n" + header + "0\nENDSEC\n0\nEOF\n");
        ASSERT_EQ(io::readDrawing(m_folder / "a.dxf", database).error, "");
    }
    std::string written() {
        EXPECT_EQ(io::writeDrawing(m_folder / "b.dxf", database).error, "");
        return readBytes(m_folder / "b.dxf");
    }
    void change(const std::function<void(db::DrawingHeader&)>& how) {
        db::DrawingHeader header = database.imp().header;
        how(header);
        database.imp().changeHeader(header);
    }
    Directory m_folder;
    MxDbDatabase database;
};

} // namespace

TEST_F(HeaderVariablesTest, OnlyWhatWasChangedIsWrittenAnew) {
    read("9\n$ACADVER\n1\nAC1021\n9\n$LTSCALE\n 40\n1.000\n9\n$HANDSEED\n5\nFF\n9\n$CLAYER\n8\n0\n9\n$OTHER\n70\n 7\n"
         "9\n$TEXTSIZE\n40\n  2.50\n");
    change([](auto& header) { header.currentLayer = L"Wände"; });
    const std::string text = written();
    EXPECT_THAT(text, HasSubstr("$LTSCALE\n 40\n1.000\n"));
    EXPECT_THAT(text, HasSubstr("$CLAYER\n8\nWände\n"));
    EXPECT_THAT(text, HasSubstr("$OTHER\n70\n 7\n"));
    EXPECT_THAT(text, HasSubstr("$TEXTSIZE\n40\n  2.50\n"));
    EXPECT_THAT(text, Not(HasSubstr("$CELWEIGHT")));
}

TEST_F(HeaderVariablesTest, MissingVariablesAreAdded) {
    read("9\n$ACADVER\n1\nAC1021\n");
    change([](auto& header) {
        header.currentLineWeight = 50;
        header.linetypeScale = 2.5;
    });
    const std::string text = written();
    EXPECT_THAT(text, HasSubstr("  9\n$LTSCALE\n 40\n2.5\n  9\n$CELWEIGHT\n370\n50\n0\nENDSEC\n"));
    EXPECT_THAT(text, Not(HasSubstr("$CLAYER")));
}

TEST_F(HeaderVariablesTest, AnOldDrawingGetsNoVariablesOfLaterVersions) {
    read("9\n$ACADVER\n1\nAC1009\n");
    change([](auto& header) {
        header.currentLineWeight = 50;
        header.textSize = 7.0;
    });
    const std::string text = written();
    EXPECT_THAT(text, HasSubstr("$TEXTSIZE\n 40\n7.0\n"));
    EXPECT_THAT(text, Not(HasSubstr("$CELWEIGHT")));
}

TEST_F(HeaderVariablesTest, AllComeBackFromEveryKindOfFile) {
    read("9\n$ACADVER\n1\nAC1021\n");
    change([](auto& header) {
        header.currentLayer = L"A";
        header.currentLinetype = L"Dashed";
        header.currentColor = 3;
        header.currentLineWeight = 50;
        header.linetypeScale = 2.5;
        header.currentLinetypeScale = 0.5;
        header.textSize = 7.0;
        header.insUnits = 6;
    });
    for (const char* name : {"c.dxf", "c.merix"}) {
        ASSERT_EQ(io::writeDrawing(m_folder / name, database).error, "");
        MxDbDatabase again;
        ASSERT_EQ(io::readDrawing(m_folder / name, again).error, "");
        EXPECT_TRUE(again.imp().header == database.imp().header) << name;
    }
}

TEST_F(HeaderVariablesTest, AnOddValueStaysInADrawingThatWasNotChanged) {
    const std::string header = "9\n$ACADVER\n1\nAC1021\n9\n$CECOLOR\n62\n999\n9\n$INSUNITS\n70\n 150\n";
    read(header);
    EXPECT_THAT(written(), HasSubstr(header));
}
