// SPDX-License-Identifier: MIT
#include "tests/merix/io/drawing_fixture.h"

#include "merix/db/dwg_filer.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace merix::io::testing {

Directory::Directory() {
    // Thousands of files are put on disk with all guarantees: in memory that costs nothing.
    const std::filesystem::path memory = "/dev/shm";
    const bool usable = ::access(memory.c_str(), W_OK | X_OK) == 0;
    std::string name = ((usable ? memory : std::filesystem::temp_directory_path()) / "merix-io-XXXXXX").string();
    if (!::mkdtemp(name.data()))
        std::abort();
    m_path = name;
}

Directory::~Directory() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::size_t Directory::entries() const {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(m_path), {}));
}

std::string readBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

void writeBytes(const std::string& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string tags(std::string_view text, std::string_view lineEnd) {
    std::string lines;
    if (text.empty())
        return lines;
    for (const char c : text) {
        if (c == '|')
            lines += lineEnd;
        else
            lines += c;
    }
    lines += lineEnd;
    return lines;
}

std::string drawing(std::string_view entities, std::string_view objects) {
    return tags("0|SECTION|2|HEADER|9|$ACADVER|1|AC1015|9|$HANDSEED|5|500|0|ENDSEC") +
           tags("0|SECTION|2|TABLES|0|TABLE|2|LAYER|5|2|330|0|100|AcDbSymbolTable|70|1|0|LAYER|5|10|330|2|"
                "100|AcDbSymbolTableRecord|100|AcDbLayerTableRecord|2|0|70|0|62|7|6|Continuous|0|ENDTAB|"
                "0|TABLE|2|BLOCK_RECORD|5|1|330|0|100|AcDbSymbolTable|70|2|0|BLOCK_RECORD|5|1F|330|1|"
                "100|AcDbSymbolTableRecord|100|AcDbBlockTableRecord|2|*Model_Space|340|0|0|BLOCK_RECORD|5|1B|330|1|"
                "100|AcDbSymbolTableRecord|100|AcDbBlockTableRecord|2|*Paper_Space|340|0|0|ENDTAB|0|ENDSEC") +
           tags("0|SECTION|2|BLOCKS|0|BLOCK|5|20|330|1F|100|AcDbEntity|8|0|100|AcDbBlockBegin|2|*Model_Space|70|0|"
                "10|0.0|20|0.0|30|0.0|3|*Model_Space|1||0|ENDBLK|5|21|330|1F|100|AcDbEntity|8|0|100|AcDbBlockEnd|"
                "0|BLOCK|5|1C|330|1B|100|AcDbEntity|67|1|8|0|100|AcDbBlockBegin|2|*Paper_Space|70|0|"
                "10|0.0|20|0.0|30|0.0|3|*Paper_Space|1||0|ENDBLK|5|1D|330|1B|100|AcDbEntity|67|1|8|0|"
                "100|AcDbBlockEnd|0|ENDSEC|0|SECTION|2|ENTITIES") +
           tags(entities) + tags("0|ENDSEC|0|SECTION|2|OBJECTS|0|DICTIONARY|5|C|330|0|100|AcDbDictionary|281|1") +
           tags(objects) + tags("0|ENDSEC|0|EOF");
}

namespace {

MxRxClass* g_class = nullptr;
constexpr std::uint32_t kVersion = 1;
constexpr std::size_t kChunk = 127;

MxRxObject* makeSample() {
    return new SampleNote;
}

} // namespace

void SampleNote::registerClass() {
    g_class = newMxRxClass(L"MxDbSampleNote", L"MxDbEntity", 33, 55, 0, makeSample, L"SAMPLENOTE", L"Sample|Product");
    mxrxBuildClassHierarchy();
}

void SampleNote::unregisterClass() {
    deleteMxRxClass(g_class);
    g_class = nullptr;
}

MxRxClass* SampleNote::desc() {
    return g_class;
}
MxRxClass* SampleNote::isA() const {
    return g_class;
}

Mx::ErrorStatus SampleNote::dwgOutFields(MxDbDwgFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dwgOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeUInt32(kVersion);
    filer->writePoint3d(position);
    filer->writeString(text.c_str());
    return db::writeBlob(*filer, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

Mx::ErrorStatus SampleNote::dwgInFields(MxDbDwgFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbEntity::dwgInFields(filer); status != Mx::eOk)
        return status;
    std::uint32_t version = 0;
    filer->readUInt32(version);
    if (version > kVersion)
        return Mx::eNewerVersion;
    filer->readPoint3d(position);
    db::readText(*filer, text);
    std::string blob;
    const auto status = db::readBlob(*filer, blob);
    bytes.assign(blob.begin(), blob.end());
    return status;
}

Mx::ErrorStatus SampleNote::dxfOutFields(MxDbDxfFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dxfOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(100, L"MxDbSampleNote");
    filer->writeInt32(90, static_cast<std::int32_t>(kVersion));
    filer->writePoint3d(10, position);
    filer->writeInt32(93, static_cast<std::int32_t>(bytes.size()));
    for (std::size_t at = 0; at < bytes.size(); at += kChunk)
        filer->writeBinaryChunk(310, bytes.data() + at, std::min(kChunk, bytes.size() - at));
    filer->writeString(1, text.c_str());
    return filer->filerStatus();
}

Mx::ErrorStatus SampleNote::dxfInFields(MxDbDxfFiler* filer) {
    assertWriteEnabled();
    if (MxDbEntity::dxfInFields(filer) != Mx::eOk || !filer->atSubclassData(L"MxDbSampleNote"))
        return filer->filerStatus();
    filer->readItem();
    if (filer->itemCode() != 90) {
        filer->pushBackItem();
        filer->setError(Mx::eItemExpected, L"\nError: expected group code %d (version #)", 90);
        return filer->filerStatus();
    }
    if (filer->itemInt32() > static_cast<std::int32_t>(kVersion))
        return Mx::eNewerVersion;
    bytes.clear();
    Mx::ErrorStatus status = Mx::eOk;
    while ((status = filer->readItem()) == Mx::eOk) {
        if (filer->itemCode() == 10)
            position = filer->itemPoint3d();
        else if (filer->itemCode() == 1)
            text = filer->itemString().str();
        else if (filer->itemCode() == 310) {
            std::size_t count = 0;
            const auto* chunk = static_cast<const std::uint8_t*>(filer->itemBytes(count));
            bytes.insert(bytes.end(), chunk, chunk + count);
        } else if (filer->itemCode() != 93) {
            filer->pushBackItem();
            break;
        }
    }
    return status == Mx::eOk || status == Mx::eEndOfItems ? filer->filerStatus() : Mx::eItemUnreadable;
}

void DrawingTest::erase(std::uint64_t handle, bool erasing) {
    MxDbObject* opened = nullptr;
    ASSERT_EQ(mxdbOpenObject(opened, idOf(handle), Mx::kForWrite, true), Mx::eOk);
    EXPECT_EQ(opened->erase(erasing), Mx::eOk);
    opened->close();
}

std::uint64_t DrawingTest::append(MxDbEntity* entity) {
    MxDbBlockTableRecord* space = nullptr;
    EXPECT_EQ(mxdbOpenObject(space, database.imp().roots.modelSpace, Mx::kForWrite), Mx::eOk);
    MxDbObjectId id;
    EXPECT_EQ(space->appendMxDbEntity(id, entity), Mx::eOk);
    space->close();
    entity->close();
    return id.handle().value();
}

std::uint64_t DrawingTest::appendLine(MxGePoint3d from, MxGePoint3d to) {
    auto* line = new db::Line;
    line->start = from;
    line->end = to;
    return append(line);
}

} // namespace merix::io::testing
