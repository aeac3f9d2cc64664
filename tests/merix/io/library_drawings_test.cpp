// SPDX-License-Identifier: MIT
// Real drawings: the part library that Debian ships with LibreCAD.
#include "tests/merix/io/drawing_fixture.h"

#include <algorithm>
#include <iterator>

namespace merix::io::testing {
namespace {

std::vector<std::filesystem::path> libraryDrawings() {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::recursive_directory_iterator("/usr/share/librecad/library", error)) {
        if (entry.path().extension() == ".dxf")
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

class LibraryDrawings : public DrawingTest {
protected:
    void SetUp() override {
        if (m_files.empty())
            FAIL() << "the package librecad-data is not installed";
    }
    const std::vector<std::filesystem::path> m_files = libraryDrawings();

    std::vector<std::filesystem::path> largest(std::size_t count) const {
        auto files = m_files;
        std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) {
            return std::filesystem::file_size(a) > std::filesystem::file_size(b);
        });
        files.resize(std::min(count, files.size()));
        return files;
    }
};

std::vector<std::string> linesOf(const std::string& bytes) {
    std::vector<std::string> lines;
    std::size_t at = 0;
    while (at < bytes.size()) {
        const std::size_t end = std::min(bytes.find('\n', at), bytes.size() - 1);
        lines.push_back(bytes.substr(at, end + 1 - at));
        at = end + 1;
    }
    return lines;
}

/// True when `lines` holds `part` in order with other lines in between, counted in `added`.
bool holdsInOrder(const std::vector<std::string>& lines, const std::vector<std::string>& part, std::size_t& added) {
    std::size_t next = 0;
    added = 0;
    for (const std::string& line : lines) {
        if (next < part.size() && line == part[next])
            ++next;
        else
            ++added;
    }
    return next == part.size();
}

TEST_F(LibraryDrawings, EveryOneIsSavedByteForByte) {
    for (const auto& path : m_files) {
        MxDbDatabase drawing;
        const FileResult read = readDrawing(path.string(), drawing);
        ASSERT_EQ(read.status, Mx::eOk) << read.error;
        EXPECT_TRUE(read.notes.empty()) << read.notes.front();
        EXPECT_FALSE(drawing.imp().isChanged());
        ASSERT_TRUE(writeDrawing(directory / "out.dxf", drawing)) << path;
        ASSERT_EQ(readBytes(directory / "out.dxf"), readBytes(path.string())) << path;
    }
}

TEST_F(LibraryDrawings, ANewLineIsAllThatChangesInTheLargest) {
    for (const auto& path : largest(10)) {
        MxDbDatabase drawing;
        ASSERT_TRUE(readDrawing(path.string(), drawing));
        MxDbBlockTableRecord* space = nullptr;
        ASSERT_EQ(mxdbOpenObject(space, drawing.imp().roots.modelSpace, Mx::kForWrite), Mx::eOk);
        MxDbObjectId id;
        auto* line = new db::Line;
        line->end = {10, 20, 0};
        ASSERT_EQ(space->appendMxDbEntity(id, line), Mx::eOk);
        line->close();
        space->close();
        ASSERT_TRUE(writeDrawing(directory / "out.dxf", drawing));

        std::vector<std::string> before = linesOf(readBytes(path.string()));
        const std::vector<std::string> after = linesOf(readBytes(directory / "out.dxf"));
        // The number of the next free handle is the one value that a new object changes.
        const auto seed = std::find_if(before.begin(), before.end(),
                                       [](const std::string& text) { return text.find("$HANDSEED") == 0; });
        ASSERT_NE(seed, before.end());
        before.erase(seed + 1, seed + 3);
        std::size_t added = 0;
        EXPECT_TRUE(holdsInOrder(after, before, added)) << path;
        EXPECT_EQ(added, 2U + 24U) << path; // the seed, and twelve tags of a line

        MxDbDatabase again;
        const FileResult result = readDrawing(directory / "out.dxf", again);
        ASSERT_TRUE(result) << result.error;
        const auto* found = db::DatabaseImp::peek(MxDbObjectId(again.imp().find(id.handle())));
        ASSERT_TRUE(found && found->isKindOf(db::Line::desc()));
        EXPECT_EQ(static_cast<const db::Line*>(found)->end, (MxGePoint3d{10, 20, 0}));
    }
}

TEST_F(LibraryDrawings, TheLargestComeBackFromNativeDrawingsByteForByte) {
    for (const auto& path : largest(10)) {
        {
            MxDbDatabase drawing;
            ASSERT_TRUE(readDrawing(path.string(), drawing));
            const FileResult result = writeDrawing(directory / "a.merix", drawing);
            ASSERT_TRUE(result) << result.error;
        }
        MxDbDatabase drawing;
        const FileResult result = readDrawing(directory / "a.merix", drawing);
        ASSERT_TRUE(result) << result.error;
        ASSERT_TRUE(writeDrawing(directory / "out.dxf", drawing));
        EXPECT_EQ(readBytes(directory / "out.dxf"), readBytes(path.string())) << path;
    }
}

TEST_F(LibraryDrawings, ManyKindsComeBackFromNativeDrawingsByteForByte) {
    for (std::size_t i = 0; i < m_files.size(); i += 25) {
        const std::string path = m_files[i].string();
        MxDbDatabase first, second;
        ASSERT_TRUE(readDrawing(path, first));
        ASSERT_TRUE(writeDrawing(directory / "a.merix", first));
        const FileResult result = readDrawing(directory / "a.merix", second);
        ASSERT_TRUE(result) << result.error;
        ASSERT_TRUE(writeDrawing(directory / "out.dxf", second));
        ASSERT_EQ(readBytes(directory / "out.dxf"), readBytes(path)) << path;
    }
}

} // namespace
} // namespace merix::io::testing
