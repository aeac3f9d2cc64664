// SPDX-License-Identifier: MIT
#include "merix/db/dwg_filer.h"

#include "merix/db/access.h"
#include "merix/db/database_imp.h"
#include "merix/rx/text.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

static_assert(std::endian::native == std::endian::little, "values are copied as they lie in memory");

namespace merix::db {

Mx::ErrorStatus DwgWriter::putRun(DwgItem item, const void* bytes, std::size_t count) {
    if (count > std::numeric_limits<std::uint32_t>::max() || (count > 0 && !bytes))
        return fail(Mx::eInvalidInput);
    if (put(item, static_cast<std::uint32_t>(count)) == Mx::eOk && count > 0)
        m_bytes.append(static_cast<const char*>(bytes), count);
    return m_status;
}

Mx::ErrorStatus DwgWriter::writeBool(bool value) {
    return put(DwgItem::kBool, static_cast<std::uint8_t>(value));
}
Mx::ErrorStatus DwgWriter::writeInt16(std::int16_t value) {
    return put(DwgItem::kInt16, value);
}
Mx::ErrorStatus DwgWriter::writeUInt16(std::uint16_t value) {
    return put(DwgItem::kUInt16, value);
}
Mx::ErrorStatus DwgWriter::writeInt32(std::int32_t value) {
    return put(DwgItem::kInt32, value);
}
Mx::ErrorStatus DwgWriter::writeUInt32(std::uint32_t value) {
    return put(DwgItem::kUInt32, value);
}
Mx::ErrorStatus DwgWriter::writeDouble(double value) {
    return put(DwgItem::kDouble, value);
}
Mx::ErrorStatus DwgWriter::writePoint3d(const MxGePoint3d& value) {
    return put(DwgItem::kPoint3d, std::array<double, 3>{value.x, value.y, value.z});
}
Mx::ErrorStatus DwgWriter::writeHandle(const MxDbHandle& value) {
    return put(DwgItem::kHandle, value.value());
}
Mx::ErrorStatus DwgWriter::writeString(const wchar_t* value) {
    const std::string text = rx::toUtf8(value ? value : L"");
    return putRun(DwgItem::kString, text.data(), text.size());
}
Mx::ErrorStatus DwgWriter::writeBytes(const void* bytes, std::size_t count) {
    return putRun(DwgItem::kBytes, bytes, count);
}
Mx::ErrorStatus DwgWriter::writeSoftPointerId(const MxDbObjectId& id) {
    return put(DwgItem::kSoftPointer, id.handle().value());
}
Mx::ErrorStatus DwgWriter::writeHardPointerId(const MxDbObjectId& id) {
    return put(DwgItem::kHardPointer, id.handle().value());
}
Mx::ErrorStatus DwgWriter::readString(wchar_t** value) {
    if (value)
        *value = nullptr;
    return fail(Mx::eInvalidInput);
}

std::optional<std::string_view> DwgReader::next(DwgItem item, std::size_t size) {
    if (m_status != Mx::eOk)
        return std::nullopt;
    if (m_rest.empty() || (m_rest[0] == static_cast<char>(item) && m_rest.size() - 1 < size)) {
        fail(Mx::eEndOfStream);
        return std::nullopt;
    }
    if (m_rest[0] != static_cast<char>(item)) {
        fail(Mx::eItemType);
        return std::nullopt;
    }
    const std::string_view value = m_rest.substr(1, size);
    m_rest.remove_prefix(1 + size);
    return value;
}

std::optional<std::string_view> DwgReader::nextRun(DwgItem item) {
    const auto head = next(item, sizeof(std::uint32_t));
    if (!head)
        return std::nullopt;
    std::uint32_t count = 0;
    std::memcpy(&count, head->data(), sizeof count);
    if (count > m_rest.size()) {
        fail(Mx::eEndOfStream);
        return std::nullopt;
    }
    const std::string_view run = m_rest.substr(0, count);
    m_rest.remove_prefix(count);
    return run;
}

Mx::ErrorStatus DwgReader::getId(DwgItem item, MxDbObjectId& id) {
    std::uint64_t handle = 0;
    if (get(item, handle) != Mx::eOk)
        return m_status;
    if (handle == 0)
        id = MxDbObjectId();
    else if (m_database)
        id = MxDbObjectId(m_database->imp().reserve(MxDbHandle(handle)));
    else
        return fail(Mx::eNoDatabase);
    return Mx::eOk;
}

Mx::ErrorStatus DwgReader::readBool(bool& value) {
    std::uint8_t byte = 0;
    if (get(DwgItem::kBool, byte) == Mx::eOk)
        value = byte != 0;
    return m_status;
}
Mx::ErrorStatus DwgReader::readInt16(std::int16_t& value) {
    return get(DwgItem::kInt16, value);
}
Mx::ErrorStatus DwgReader::readUInt16(std::uint16_t& value) {
    return get(DwgItem::kUInt16, value);
}
Mx::ErrorStatus DwgReader::readInt32(std::int32_t& value) {
    return get(DwgItem::kInt32, value);
}
Mx::ErrorStatus DwgReader::readUInt32(std::uint32_t& value) {
    return get(DwgItem::kUInt32, value);
}
Mx::ErrorStatus DwgReader::readDouble(double& value) {
    return get(DwgItem::kDouble, value);
}
Mx::ErrorStatus DwgReader::readPoint3d(MxGePoint3d& value) {
    std::array<double, 3> xyz{};
    if (get(DwgItem::kPoint3d, xyz) == Mx::eOk)
        value = {xyz[0], xyz[1], xyz[2]};
    return m_status;
}
Mx::ErrorStatus DwgReader::readHandle(MxDbHandle& value) {
    std::uint64_t handle = 0;
    if (get(DwgItem::kHandle, handle) == Mx::eOk)
        value = MxDbHandle(handle);
    return m_status;
}

Mx::ErrorStatus DwgReader::readString(wchar_t** value) {
    if (!value)
        return fail(Mx::eInvalidInput);
    *value = nullptr;
    const auto run = nextRun(DwgItem::kString);
    if (!run)
        return m_status;
    const std::wstring text = rx::fromUtf8(*run);
    const std::size_t size = (text.size() + 1) * sizeof(wchar_t);
    auto* buffer = static_cast<wchar_t*>(mxHeapAlloc(size));
    if (!buffer)
        return fail(Mx::eItemUnreadable);
    std::memcpy(buffer, text.c_str(), size);
    *value = buffer;
    return Mx::eOk;
}

Mx::ErrorStatus DwgReader::readBytes(void* bytes, std::size_t count) {
    const auto run = nextRun(DwgItem::kBytes);
    if (!run)
        return m_status;
    if (run->size() != count)
        return fail(Mx::eItemType);
    if (count > 0)
        std::memcpy(bytes, run->data(), count);
    return Mx::eOk;
}

Mx::ErrorStatus DwgReader::readSoftPointerId(MxDbObjectId& id) {
    return getId(DwgItem::kSoftPointer, id);
}
Mx::ErrorStatus DwgReader::readHardPointerId(MxDbObjectId& id) {
    return getId(DwgItem::kHardPointer, id);
}

Mx::ErrorStatus readText(MxDbDwgFiler& filer, std::wstring& text) {
    wchar_t* buffer = nullptr;
    if (const auto status = filer.readString(&buffer); status != Mx::eOk)
        return status;
    text = buffer;
    mxutDelBuffer(buffer);
    return Mx::eOk;
}

Mx::ErrorStatus writeBlob(MxDbDwgFiler& filer, std::string_view bytes) {
    if (bytes.size() > std::numeric_limits<std::uint32_t>::max())
        return Mx::eInvalidInput;
    filer.writeUInt32(static_cast<std::uint32_t>(bytes.size()));
    return filer.writeBytes(bytes.data(), bytes.size());
}

Mx::ErrorStatus readBlob(MxDbDwgFiler& filer, std::string& bytes) {
    std::uint32_t count = 0;
    if (const auto status = readCount(filer, count, 1); status != Mx::eOk)
        return status;
    bytes.resize(count);
    return filer.readBytes(bytes.data(), count);
}

Mx::ErrorStatus readCount(MxDbDwgFiler& filer, std::uint32_t& count, std::size_t least) {
    std::uint32_t claimed = 0;
    if (const auto status = filer.readUInt32(claimed); status != Mx::eOk)
        return status;
    if (claimed > filer.bytesLeft() / least)
        return Mx::eEndOfStream;
    count = claimed;
    return Mx::eOk;
}

Mx::ErrorStatus writeVector(MxDbDwgFiler& filer, const MxGeVector3d& vector) {
    return filer.writePoint3d({vector.x, vector.y, vector.z});
}

Mx::ErrorStatus readVector(MxDbDwgFiler& filer, MxGeVector3d& vector) {
    MxGePoint3d point;
    const auto status = filer.readPoint3d(point);
    if (status == Mx::eOk)
        vector = point.asVector();
    return status;
}

namespace {
/// A type byte and a handle.
constexpr std::size_t kIdSize = 9;
} // namespace

Mx::ErrorStatus writeIds(MxDbDwgFiler& filer, const std::vector<MxDbObjectId>& ids) {
    filer.writeUInt32(static_cast<std::uint32_t>(ids.size()));
    for (const MxDbObjectId& id : ids)
        filer.writeSoftPointerId(id);
    return filer.filerStatus();
}

Mx::ErrorStatus readIds(MxDbDwgFiler& filer, std::vector<MxDbObjectId>& ids) {
    std::uint32_t count = 0;
    if (const auto status = readCount(filer, count, kIdSize); status != Mx::eOk)
        return status;
    ids.assign(count, {});
    for (MxDbObjectId& id : ids)
        filer.readSoftPointerId(id);
    return filer.filerStatus();
}

std::string dwgImage(const MxDbObject& object, MxDbFilerType type) {
    const ReadAccess readable(object);
    DwgWriter writer(type, object.database());
    object.dwgOutFields(&writer);
    return writer.take();
}

Mx::ErrorStatus readDwgImage(MxDbObject& object, std::string_view image, MxDbFilerType type) {
    const FillAccess writable(object);
    ObjectStub* stub = object.data().stub;
    MxDbDatabase* database = stub ? &stub->database->self() : mxdbHostApplicationServices()->workingDatabase();
    DwgReader reader(image, type, database);
    const auto status = object.dwgInFields(&reader);
    return status == Mx::eOk ? reader.filerStatus() : status;
}

} // namespace merix::db

bool mxutNewBuffer(wchar_t*& buffer, std::size_t bytes) {
    buffer = static_cast<wchar_t*>(mxHeapAlloc(std::max(bytes, sizeof(wchar_t))));
    if (buffer)
        std::memset(buffer, 0, bytes);
    return buffer != nullptr;
}

void mxutDelBuffer(wchar_t*& buffer) {
    mxHeapFree(buffer);
    buffer = nullptr;
}
