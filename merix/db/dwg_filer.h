// SPDX-License-Identifier: MIT
// The binary filer over memory. An item is a type byte and its value, little-endian; texts are UTF-8 and, like byte
// runs, begin with their length in 32 bits; an id is the handle of its object, 0 for none.
#pragma once

#include "host/db/filer.h"

#include <array>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace merix::db {

enum class DwgItem : std::uint8_t {
    kBool = 1,
    kInt16,
    kUInt16,
    kInt32,
    kUInt32,
    kDouble,
    kPoint3d,
    kHandle,
    kString,
    kBytes,
    kSoftPointer,
    kHardPointer,
};

/// Common part: a filer that only writes or only reads answers the other half with eInvalidInput.
class MemoryFiler : public MxDbDwgFiler {
public:
    MxDbFilerType filerType() const override { return m_type; }
    Mx::ErrorStatus filerStatus() const override { return m_status; }
    MxDbDatabase* database() const override { return m_database; }

protected:
    MemoryFiler(MxDbFilerType type, MxDbDatabase* database)
        : m_type(type)
        , m_database(database) {}
    Mx::ErrorStatus fail(Mx::ErrorStatus status) {
        if (m_status == Mx::eOk)
            m_status = status;
        return m_status;
    }

    MxDbFilerType m_type;
    MxDbDatabase* m_database;
    Mx::ErrorStatus m_status = Mx::eOk;
};

class DwgWriter : public MemoryFiler {
public:
    explicit DwgWriter(MxDbFilerType type, MxDbDatabase* database = nullptr)
        : MemoryFiler(type, database) {}
    /// The stream so far; the writer is empty afterwards.
    std::string take() { return std::move(m_bytes); }

    Mx::ErrorStatus writeBool(bool value) override;
    Mx::ErrorStatus writeInt16(std::int16_t value) override;
    Mx::ErrorStatus writeUInt16(std::uint16_t value) override;
    Mx::ErrorStatus writeInt32(std::int32_t value) override;
    Mx::ErrorStatus writeUInt32(std::uint32_t value) override;
    Mx::ErrorStatus writeDouble(double value) override;
    Mx::ErrorStatus writePoint3d(const MxGePoint3d& value) override;
    Mx::ErrorStatus writeHandle(const MxDbHandle& value) override;
    Mx::ErrorStatus writeString(const wchar_t* value) override;
    Mx::ErrorStatus writeBytes(const void* bytes, std::size_t count) override;
    Mx::ErrorStatus writeSoftPointerId(const MxDbObjectId& id) override;
    Mx::ErrorStatus writeHardPointerId(const MxDbObjectId& id) override;

    Mx::ErrorStatus readBool(bool&) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus readInt16(std::int16_t&) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus readUInt16(std::uint16_t&) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus readInt32(std::int32_t&) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus readUInt32(std::uint32_t&) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus readDouble(double&) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus readPoint3d(MxGePoint3d&) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus readHandle(MxDbHandle&) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus readString(wchar_t** value) override;
    Mx::ErrorStatus readBytes(void*, std::size_t) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus readSoftPointerId(MxDbObjectId&) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus readHardPointerId(MxDbObjectId&) override { return fail(Mx::eInvalidInput); }
    std::uint64_t bytesLeft() const override { return 0; }

protected:
    template <class T> Mx::ErrorStatus put(DwgItem item, T value) {
        if (m_status != Mx::eOk)
            return m_status;
        m_bytes.push_back(static_cast<char>(item));
        std::array<char, sizeof(T)> bytes;
        std::memcpy(bytes.data(), &value, sizeof(T));
        m_bytes.append(bytes.data(), bytes.size());
        return Mx::eOk;
    }
    Mx::ErrorStatus putRun(DwgItem item, const void* bytes, std::size_t count);

    std::string m_bytes;
};

/// Reads a stream that it does not own. Ids of handles not known yet are reserved in the database.
class DwgReader : public MemoryFiler {
public:
    DwgReader(std::string_view bytes, MxDbFilerType type, MxDbDatabase* database)
        : MemoryFiler(type, database)
        , m_rest(bytes) {}

    Mx::ErrorStatus writeBool(bool) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus writeInt16(std::int16_t) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus writeUInt16(std::uint16_t) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus writeInt32(std::int32_t) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus writeUInt32(std::uint32_t) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus writeDouble(double) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus writePoint3d(const MxGePoint3d&) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus writeHandle(const MxDbHandle&) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus writeString(const wchar_t*) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus writeBytes(const void*, std::size_t) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus writeSoftPointerId(const MxDbObjectId&) override { return fail(Mx::eInvalidInput); }
    Mx::ErrorStatus writeHardPointerId(const MxDbObjectId&) override { return fail(Mx::eInvalidInput); }

    Mx::ErrorStatus readBool(bool& value) override;
    Mx::ErrorStatus readInt16(std::int16_t& value) override;
    Mx::ErrorStatus readUInt16(std::uint16_t& value) override;
    Mx::ErrorStatus readInt32(std::int32_t& value) override;
    Mx::ErrorStatus readUInt32(std::uint32_t& value) override;
    Mx::ErrorStatus readDouble(double& value) override;
    Mx::ErrorStatus readPoint3d(MxGePoint3d& value) override;
    Mx::ErrorStatus readHandle(MxDbHandle& value) override;
    Mx::ErrorStatus readString(wchar_t** value) override;
    Mx::ErrorStatus readBytes(void* bytes, std::size_t count) override;
    Mx::ErrorStatus readSoftPointerId(MxDbObjectId& id) override;
    Mx::ErrorStatus readHardPointerId(MxDbObjectId& id) override;
    std::uint64_t bytesLeft() const override { return m_rest.size(); }

protected:
    /// The value bytes of the next item if it is one of that type and size; the status is set otherwise.
    std::optional<std::string_view> next(DwgItem item, std::size_t size);
    /// The same for a text or a byte run.
    std::optional<std::string_view> nextRun(DwgItem item);
    template <class T> Mx::ErrorStatus get(DwgItem item, T& value) {
        if (const auto bytes = next(item, sizeof(T)))
            std::memcpy(&value, bytes->data(), sizeof(T));
        return m_status;
    }
    Mx::ErrorStatus getId(DwgItem item, MxDbObjectId& id);

    std::string_view m_rest;
};

/// Reads a text item into a string.
Mx::ErrorStatus readText(MxDbDwgFiler& filer, std::wstring& text);
/// Files raw bytes with their count before them.
Mx::ErrorStatus writeBlob(MxDbDwgFiler& filer, std::string_view bytes);
Mx::ErrorStatus readBlob(MxDbDwgFiler& filer, std::string& bytes);
/// Reads a count of things of which each takes at least `least` bytes; eEndOfStream when the stream is too short.
Mx::ErrorStatus readCount(MxDbDwgFiler& filer, std::uint32_t& count, std::size_t least);
Mx::ErrorStatus writeVector(MxDbDwgFiler& filer, const MxGeVector3d& vector);
Mx::ErrorStatus readVector(MxDbDwgFiler& filer, MxGeVector3d& vector);
Mx::ErrorStatus writeIds(MxDbDwgFiler& filer, const std::vector<MxDbObjectId>& ids);
Mx::ErrorStatus readIds(MxDbDwgFiler& filer, std::vector<MxDbObjectId>& ids);

} // namespace merix::db
