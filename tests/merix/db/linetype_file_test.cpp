// SPDX-License-Identifier: MIT
#include "merix/db/linetype_file.h"

#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <unistd.h>

namespace {

using namespace merix::db;

TEST(LinetypeFile, ADefinitionIsANameADescriptionAndAPattern) {
    const auto file = parseLinetypeFile("\xEF\xBB\xBF;; a comment\r\n\r\n*DASHED, Gestrichelt __ , __ für alle\r\n"
                                        " A, 12 ,-6,0.5,+1\r\n*SOLID,\nA\n");
    EXPECT_EQ(file.problem, L"");
    ASSERT_EQ(file.definitions.size(), 2U);
    EXPECT_EQ(file.definitions[0].name, L"DASHED");
    EXPECT_EQ(file.definitions[0].description, L"Gestrichelt __ , __ für alle");
    EXPECT_EQ(file.definitions[0].dashes, (std::vector<double>{12, -6, 0.5, 1}));
    EXPECT_TRUE(file.definitions[1].dashes.empty());
}

TEST(LinetypeFile, TheFirstLineWithoutSenseIsToldAndTheRestIsRead) {
    const std::pair<const char*, const wchar_t*> cases[] = {
        {"*A,x\nA,1,-1\nB,2\n*GOOD,y\nA,1,-1\n", L"line 3: a pattern begins with \"A\""},
        {"*A,x\nA,1,two\n*GOOD,y\nA,1,-1\n", L"line 2: a length is no number"},
        {"*A,x\nA,nan\n*GOOD,y\nA,1,-1\n", L"line 2: a length is no number"},
        {"*A,x\nA,1e9\n*GOOD,y\nA,1,-1\n", L"line 2: a length is no number"},
        {"*A,x\nA,1,[TRACK1,ltypeshp.shx]\n*GOOD,y\nA,1,-1\n", L"line 2: a length is no number"},
        {"\n*A,x\n*GOOD,y\nA,1,-1\n", L"line 2: the line type has no pattern"},
        {"A,1\n*GOOD,y\nA,1,-1\n", L"line 1: a pattern without a name before it"},
        {"*,x\nA,1\n*GOOD,y\nA,1,-1\n", L"line 1: a line type needs a name of 1 to 255 characters"},
        {"*A,x\nA,0,0\n*GOOD,y\nA,1,-1\n", L"line 2: a pattern of dots needs gaps"},
    };
    for (const auto& [text, problem] : cases) {
        const auto file = parseLinetypeFile(text);
        EXPECT_EQ(file.problem, problem) << text;
        ASSERT_FALSE(file.definitions.empty()) << text;
        EXPECT_EQ(file.definitions.back().name, L"GOOD") << text;
    }
    std::string many = "*LONG,x\nA";
    for (int i = 0; i < 257; ++i)
        many += ",1";
    EXPECT_EQ(parseLinetypeFile(many).problem, L"line 2: a pattern has at most 256 lengths");
}

class LinetypeLoadTest : public testing::Test {
protected:
    LinetypeLoadTest() {
        std::filesystem::create_directories(folder);
        write("*DASHED,Dashed\nA,12,-6\n");
    }
    ~LinetypeLoadTest() override { std::filesystem::remove_all(folder); }
    void write(const char* text) { std::ofstream(folder / "test.lin", std::ios::binary) << text; }
    Mx::ErrorStatus load(const wchar_t* name) {
        return loadLinetype(drawing.imp, name, (folder / "test.lin").wstring(), message);
    }
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("linetypes" + std::to_string(::getpid()));
    Drawing drawing;
    std::wstring message;
};

TEST_F(LinetypeLoadTest, ALoadedLinetypeIsUndoneAndFoundErased) {
    EXPECT_EQ(load(L"dashed"), Mx::eOk);
    EXPECT_EQ(message, L"");
    const MxDbObjectId id = drawing.imp.linetypeNamed(L"Dashed");
    ASSERT_FALSE(id.isNull());
    EXPECT_EQ(drawing.at<LinetypeRecord>(id).dashes, (std::vector<double>{12, -6}));
    EXPECT_EQ(drawing.at<LinetypeRecord>(id).description, L"Dashed");
    EXPECT_EQ(load(L"DASHED"), Mx::eDuplicateKey);
    drawing.imp.undo.undo();
    drawing.imp.undo.undo();
    EXPECT_TRUE(drawing.imp.linetypeNamed(L"Dashed").isNull());
    drawing.imp.undo.redo();
    drawing.imp.undo.redo();
    EXPECT_EQ(drawing.imp.linetypeNamed(L"Dashed"), id);
    drawing.erase(id);
    EXPECT_TRUE(drawing.imp.linetypeNamed(L"Dashed").isNull());
    MxDbObjectId found;
    MxDbSymbolTable* table = nullptr;
    mxdbOpenObject(table, drawing.database.linetypeTableId(), Mx::kForRead);
    EXPECT_EQ(table->getAt(L"Dashed", found, true), Mx::eOk);
    EXPECT_EQ(found, id);
    table->close();
}

TEST_F(LinetypeLoadTest, WhatCannotBeHadIsToldWithFileAndLine) {
    const std::wstring file = (folder / "test.lin").wstring();
    EXPECT_EQ(load(L"CENTER"), Mx::eKeyNotFound);
    EXPECT_EQ(message, file + L" has no line type CENTER");
    write("*CENTER,x\nA,oops\n*DASHED,Dashed\nA,12,-6\n");
    EXPECT_EQ(load(L"CENTER"), Mx::eFileDamaged);
    EXPECT_EQ(message, file + L", line 2: a length is no number");
    EXPECT_EQ(load(L"DASHED"), Mx::eOk);
    EXPECT_EQ(loadLinetype(drawing.imp, L"X", L"no_such_file.lin", message), Mx::eFileNotFound);
    EXPECT_EQ(message, L"no_such_file.lin: not found");
    EXPECT_EQ(loadLinetype(drawing.imp, L"X", folder.wstring() + L"/.", message), Mx::eFileNotFound);
    EXPECT_EQ(drawing.database.loadLineTypeFile(nullptr, L"x"), Mx::eInvalidInput);
}

TEST_F(LinetypeLoadTest, AFileWithoutAFolderIsFoundBesideTheProgramsData) {
    ::setenv("MERIX_RESOURCE_PATH", folder.c_str(), 1);
    EXPECT_EQ(drawing.database.loadLineTypeFile(L"DASHED", L"test.lin"), Mx::eOk);
    ::unsetenv("MERIX_RESOURCE_PATH");
    EXPECT_EQ(drawing.database.loadLineTypeFile(L"DASHED2", L"test.lin"), Mx::eFileNotFound);
}

} // namespace
