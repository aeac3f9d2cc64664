// SPDX-License-Identifier: MIT
#include "merix/io/file_access.h"

#include "tests/merix/io/drawing_fixture.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace merix::io::testing {
namespace {

TEST(ReadFile, SaysWhatIsWrongInOneLine) {
    Directory directory;
    std::string error;
    EXPECT_EQ(readFile(directory / "none.dxf", error), nullptr);
    EXPECT_EQ(error, directory / "none.dxf" + std::string(": there is no such file"));
    std::filesystem::create_directory(directory / "folder");
    EXPECT_EQ(readFile(directory / "folder", error), nullptr);
    EXPECT_NE(error.find("directory"), std::string::npos);
    writeBytes(directory / "empty", "");
    EXPECT_EQ(readFile(directory / "empty", error), nullptr);
    EXPECT_NE(error.find("empty"), std::string::npos);
    ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(readFile(directory / "pipe", error), nullptr);
    EXPECT_NE(error.find("regular"), std::string::npos);
}

TEST(ReplacementFile, LeavesTheOldFileUntilItIsCommitted) {
    Directory directory;
    const std::string path = directory / "a";
    writeBytes(path, "old");
    {
        ReplacementFile file;
        ASSERT_TRUE(file.create(path)) << file.error();
        ASSERT_TRUE(file.write("new"));
        EXPECT_EQ(readBytes(path), "old");
    }
    EXPECT_EQ(readBytes(path), "old");
    EXPECT_EQ(directory.entries(), 1U);
    ReplacementFile file;
    ASSERT_TRUE(file.create(path));
    ASSERT_TRUE(file.write("new") && file.write(std::string(1000000, 'x')));
    ASSERT_TRUE(file.commit()) << file.error();
    EXPECT_EQ(readBytes(path), "new" + std::string(1000000, 'x'));
    EXPECT_EQ(directory.entries(), 1U);
}

TEST(ReplacementFile, KeepsThePermissionsAndFollowsALink) {
    Directory directory;
    writeBytes(directory / "a", "old");
    ::chmod((directory / "a").c_str(), 0640);
    std::filesystem::create_symlink(directory / "a", directory / "link");
    ReplacementFile file;
    ASSERT_TRUE(file.create(directory / "link") && file.write("new") && file.commit()) << file.error();
    EXPECT_EQ(readBytes(directory / "a"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(directory / "link"));
    struct stat status {};
    ::stat((directory / "a").c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST(ReplacementFile, IsTheUsersAloneWhenThatIsWanted) {
    Directory directory;
    writeBytes(directory / "a", "old");
    ::chmod((directory / "a").c_str(), 0644);
    for (const char* name : {"a", "b"}) {
        ReplacementFile file;
        ASSERT_TRUE(file.create(directory / name, ReplacementFile::Readers::kOwner) && file.commit()) << file.error();
        struct stat status {};
        ASSERT_EQ(::stat((directory / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0600U) << name;
    }
}

TEST(FinalPath, IsTheSameBeforeAndAfterTheFileIsMade) {
    Directory directory;
    std::filesystem::create_directory(directory / "folder");
    std::filesystem::create_directory_symlink(directory / "folder", directory / "way");
    const std::string before = finalPath(directory / "way/a.merix");
    writeBytes(before, "x");
    EXPECT_EQ(finalPath(directory / "way/a.merix"), before);
    EXPECT_EQ(finalPath(directory / "folder/a.merix"), before);
    EXPECT_EQ(finalPath(directory / "none/a.merix"), directory / "none/a.merix");
}

TEST(ReplacementFile, SaysWhyItCannotBeMade) {
    Directory directory;
    ReplacementFile file;
    EXPECT_FALSE(file.create(directory / "no/such/folder.dxf"));
    EXPECT_NE(file.error().find("cannot be written"), std::string::npos);
    std::filesystem::create_directory(directory / "folder");
    ReplacementFile other;
    EXPECT_FALSE(other.create(directory / "folder"));
    EXPECT_EQ(directory.entries(), 1U);
}

/// Runs in a child: a limit on the size of files holds for the whole process.
int saveOnAFullDisk(const std::string& path, const std::string& drawingPath) {
    ::signal(SIGXFSZ, SIG_IGN);
    MxDbDatabase database;
    if (!readDrawing(drawingPath, database))
        return 10;
    const rlimit limit{200, 200};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
        return 11;
    const FileResult result = writeDrawing(path, database);
    if (result.status != Mx::eFileUnwritable)
        return 12;
    if (result.error.find(path) != 0 || result.error.find('\n') != std::string::npos)
        return 13;
    return 0;
}

TEST(FullDisk, SavingSaysSoAndLeavesEverythingAsItWas) {
    for (const char* suffix : {".dxf", ".merix"}) {
        Directory directory;
        writeBytes(directory / "in.dxf",
                   drawing("0|LINE|5|30|330|1F|100|AcDbEntity|8|0|100|AcDbLine|10|0|20|0|11|1|21|1"));
        const std::string target = directory / (std::string("out") + suffix);
        writeBytes(target, "what was there");
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(saveOnAFullDisk(target, directory / "in.dxf"));
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 0) << suffix;
        EXPECT_EQ(readBytes(target), "what was there");
        EXPECT_EQ(directory.entries(), 2U);
    }
}

} // namespace
} // namespace merix::io::testing
