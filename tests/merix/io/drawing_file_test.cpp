// SPDX-License-Identifier: MIT
// Copies of a drawing as it is now, written beside it.
#include "merix/io/drawing_file.h"

#include "drawing_fixture.h"
#include "merix/db/audit.h"

#include <gmock/gmock.h>

#include <map>

#include <sys/stat.h>

using namespace merix;
using namespace merix::io;
using namespace merix::io::testing;
using ::testing::HasSubstr;

namespace {

class SnapshotTest : public DrawingTest {
protected:
    /// What a copy must leave alone: each object with its handle and state, what counts as changed, and the layers.
    struct State {
        std::map<std::uint64_t, std::string> images;
        std::vector<MxDbObjectId> changed;
        bool isChanged = false;
        std::size_t undo = 0;
        bool operator==(const State&) const = default;
    };
    State state() {
        State now;
        for (const db::ObjectStub& stub : database.imp().stubs())
            if (stub.object && !stub.handle.isNull())
                now.images[stub.handle.value()] = db::dwgImage(*stub.object, MxDbFilerType::kFile);
        for (const MxDbObjectId id : database.imp().changedSinceSave())
            now.changed.push_back(id);
        now.isChanged = database.imp().isChanged();
        now.undo = database.imp().undo.undoUnits().size();
        return now;
    }
    void expectUntouchedBySnapshot() {
        const State before = state();
        const FileResult result = writeSnapshot(directory / "copy.ms$", database);
        ASSERT_EQ(result.status, Mx::eOk) << result.error;
        EXPECT_TRUE(state() == before);
    }
    /// The drawing as DXF after a copy, and without one.
    void expectSameSave(std::string_view bytes, const std::string& suffix) {
        const auto save = [&](bool withCopy, const std::string& name) {
            MxDbDatabase fresh;
            EXPECT_EQ(readDrawing(directory / ("in" + suffix), fresh).status, Mx::eOk);
            if (withCopy) {
                EXPECT_EQ(writeSnapshot(directory / "copy.ms$", fresh).status, Mx::eOk);
            }
            EXPECT_EQ(writeDrawing(directory / name, fresh).status, Mx::eOk);
            return readBytes(directory / name);
        };
        if (!bytes.empty())
            writeBytes(directory / ("in" + suffix), bytes);
        EXPECT_EQ(save(true, "with.dxf"), save(false, "without.dxf"));
    }
};

const char* const kLines = "0|LINE|5|50|100|AcDbEntity|8|0|100|AcDbLine|10|1.0|20|2.0|30|0.0|11|3.0|21|4.0|31|0.0|"
                           "0|LINE|5|51|100|AcDbEntity|8|Unlisted|100|AcDbLine|10|1.0|20|2.0|30|0.0|11|3.0|21|4.0|"
                           "31|0.0";

} // namespace

TEST_F(SnapshotTest, IsReadAsANativeDrawingUnderItsOwnSuffix) {
    ASSERT_EQ(load(drawing(kLines)).status, Mx::eOk);
    appendLine({0, 0, 0}, {7, 7, 0});
    ASSERT_EQ(writeSnapshot(directory / "plan.dxf.ms$", database).status, Mx::eOk);
    EXPECT_EQ(readBytes(directory / "plan.dxf.ms$").substr(0, 15), "SQLite format 3");
    MxDbDatabase copy;
    const FileResult result = readDrawing(directory / "plan.dxf.ms$", copy);
    ASSERT_EQ(result.status, Mx::eOk) << result.error;
    EXPECT_TRUE(db::audit(copy).empty());
    EXPECT_EQ(copy.imp().block(copy.imp().roots.modelSpace)->entityIds().size(), 3U);
    // What the two would save as DXF is the same text.
    ASSERT_EQ(writeDrawing(directory / "copy.dxf", copy).status, Mx::eOk);
    EXPECT_EQ(readBytes(directory / "copy.dxf"), saved());
}

TEST_F(SnapshotTest, LeavesAChangedDrawingAsItWas) {
    ASSERT_EQ(load(drawing(kLines)).status, Mx::eOk);
    database.imp().clearChanged();
    expectUntouchedBySnapshot();
    appendLine({0, 0, 0}, {7, 7, 0});
    modify<db::Line>(0x50, [](db::Line& line) { line.end = {9, 9, 0}; });
    EXPECT_TRUE(database.imp().isChanged());
    expectUntouchedBySnapshot();
    erase(0x50);
    expectUntouchedBySnapshot();
}

TEST_F(SnapshotTest, ChangesNothingOfWhatTheNextSaveWrites) {
    expectSameSave(drawing(kLines), ".dxf");
    ASSERT_EQ(load(drawing(kLines)).status, Mx::eOk);
    ASSERT_EQ(writeDrawing(directory / "in.merix", database).status, Mx::eOk);
    expectSameSave({}, ".merix");
}

TEST_F(SnapshotTest, ANativeDrawingStillSavesOnlyWhatChangedToItsOwnFile) {
    ASSERT_EQ(load(drawing(kLines)).status, Mx::eOk);
    ASSERT_EQ(writeDrawing(directory / "plan.merix", database).status, Mx::eOk);
    const auto inode = [&] {
        struct stat status {};
        EXPECT_EQ(::stat((directory / "plan.merix").c_str(), &status), 0);
        return status.st_ino;
    };
    const auto before = inode();
    const std::string bytes = readBytes(directory / "plan.merix");
    appendLine({0, 0, 0}, {7, 7, 0});
    ASSERT_EQ(writeSnapshot(directory / "plan.merix.ms$", database).status, Mx::eOk);
    EXPECT_EQ(readBytes(directory / "plan.merix"), bytes);
    ASSERT_EQ(writeDrawing(directory / "plan.merix", database).status, Mx::eOk);
    EXPECT_EQ(inode(), before) << "the file was changed, not replaced";
    MxDbDatabase again;
    ASSERT_EQ(readDrawing(directory / "plan.merix", again).status, Mx::eOk);
    EXPECT_EQ(again.imp().block(again.imp().roots.modelSpace)->entityIds().size(), 3U);
}

TEST_F(SnapshotTest, OfADwgFileIsSaidWhatToDo) {
    const std::string_view content("AC1032\0\0\0\0\0\1", 12);
    for (const char* name : {"plan.dwg", "PLAN.DWG", "renamed.dxf"}) {
        writeBytes(directory / name, content);
        MxDbDatabase fresh;
        const FileResult result = readDrawing(directory / name, fresh);
        EXPECT_EQ(result.status, Mx::eInvalidInput);
        EXPECT_EQ(result.error, (directory / name) + ": a .dwg file cannot be read; save it as DXF in the program that "
                                                     "it comes from");
    }
}

TEST_F(SnapshotTest, NobodySavesADrawingUnderTheNameOfACopy) {
    ASSERT_EQ(load(drawing(kLines)).status, Mx::eOk);
    for (const char* name : {"plan.ms$", "plan.dxf.MS$"}) {
        const FileResult result = writeDrawing(directory / name, database);
        EXPECT_EQ(result.status, Mx::eInvalidInput);
        EXPECT_THAT(result.error, HasSubstr(std::string(name) + ": the name of a drawing ends in .dxf or .merix"));
    }
    EXPECT_EQ(directory.entries(), 1U) << "the drawing that was read";
}

TEST_F(SnapshotTest, AFailureNamesTheFileAndLeavesTheDrawingAsItWas) {
    ASSERT_EQ(load(drawing(kLines)).status, Mx::eOk);
    database.imp().clearChanged();
    appendLine({0, 0, 0}, {7, 7, 0});
    std::filesystem::create_directory(directory / "copy.ms$");
    const State before = state();
    const FileResult result = writeSnapshot(directory / "copy.ms$", database);
    EXPECT_EQ(result.status, Mx::eFileUnwritable);
    EXPECT_THAT(result.error, HasSubstr("copy.ms$: cannot be written: "));
    EXPECT_TRUE(state() == before);
}
