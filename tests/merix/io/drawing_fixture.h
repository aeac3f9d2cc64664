// SPDX-License-Identifier: MIT
// Common to the tests of this floor: a temporary directory, small drawings, and a class as a module would bring it.
#pragma once

#include "merix/db/database_imp.h"
#include "merix/db/entities.h"
#include "merix/io/drawing_file.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace merix::io::testing {

/// A directory of its own for every test, gone afterwards.
class Directory {
public:
    Directory();
    ~Directory();
    std::string operator/(std::string_view name) const { return (m_path / name).string(); }
    std::size_t entries() const;

private:
    std::filesystem::path m_path;
};

std::string readBytes(const std::string& path);
void writeBytes(const std::string& path, std::string_view bytes);

/// Tags written as "0|LINE|8|0" make lines of text.
std::string tags(std::string_view text, std::string_view lineEnd = "\n");
/// A drawing of version AC1015 with layer 0, model and paper space, and these entities and objects.
std::string drawing(std::string_view entities, std::string_view objects = "");

/// A module's entity: a number, a text and bytes, with the version rule of such classes.
class SampleNote : public MxDbEntity {
public:
    static void registerClass();
    static void unregisterClass();
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;

    MxGePoint3d position;
    std::wstring text;
    std::vector<std::uint8_t> bytes;
};

/// Registers the sample class for the time of a test.
class WithSampleClass {
public:
    WithSampleClass() { SampleNote::registerClass(); }
    ~WithSampleClass() { SampleNote::unregisterClass(); }
};

class DrawingTest : public ::testing::Test {
protected:
    /// Reads a drawing from bytes put in a file.
    FileResult load(std::string_view bytes, const std::string& name = "in.dxf") {
        writeBytes(directory / name, bytes);
        return readDrawing(directory / name, database);
    }
    /// What the drawing is as a file now.
    std::string saved(const std::string& name = "out.dxf") {
        const FileResult result = writeDrawing(directory / name, database);
        EXPECT_EQ(result.status, Mx::eOk) << result.error;
        return readBytes(directory / name);
    }
    template <class T> T* object(std::uint64_t handle) {
        auto* found = db::DatabaseImp::peek(idOf(handle), true);
        return found && found->isKindOf(T::desc()) ? static_cast<T*>(found) : nullptr;
    }
    MxDbObjectId idOf(std::uint64_t handle) { return MxDbObjectId(database.imp().find(MxDbHandle(handle))); }
    /// Calls `change` with the object open for write.
    template <class T, class Change> void modify(std::uint64_t handle, Change change) {
        T* opened = nullptr;
        ASSERT_EQ(mxdbOpenObject(opened, idOf(handle), Mx::kForWrite), Mx::eOk);
        opened->assertWriteEnabled();
        change(*opened);
        opened->close();
    }
    void erase(std::uint64_t handle, bool erasing = true);
    /// Appends to model space; returns the handle.
    std::uint64_t append(MxDbEntity* entity);
    std::uint64_t appendLine(MxGePoint3d from, MxGePoint3d to);

    Directory directory;
    MxDbDatabase database;
};

} // namespace merix::io::testing
