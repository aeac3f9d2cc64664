// SPDX-License-Identifier: MIT
// Filers that fail at an item of the test's choice, and count what they are asked for behind it.
#pragma once

#include "merix/db/dwg_filer.h"
#include "merix/io/dxf_in_filer.h"
#include "merix/io/dxf_out_filer.h"

#include <limits>
#include <utility>
#include <vector>

/// Lets so many items pass and fails all behind them.
class ItemLimit {
public:
    explicit ItemLimit(std::size_t accepted)
        : m_left(accepted) {}
    bool isExceeded() const { return m_exceeded; }
    int askedAfterwards() const { return m_after; }

    /// The next item: `file` files it, or it fails with `status`.
    template <class File> Mx::ErrorStatus pass(Mx::ErrorStatus status, File file) {
        m_after += m_exceeded ? 1 : 0;
        m_exceeded = m_exceeded || m_left == 0;
        m_left -= m_exceeded ? 0 : 1;
        return m_exceeded ? status : file();
    }

private:
    std::size_t m_left;
    bool m_exceeded = false;
    int m_after = 0;
};

class FailingDwgWriter : public merix::db::DwgWriter {
public:
    static constexpr Mx::ErrorStatus kStatus = Mx::eFileUnwritable;
    FailingDwgWriter(MxDbDatabase& database, std::size_t accepted)
        : DwgWriter(MxDbFilerType::kFile, &database)
        , m_limit(accepted) {}
    int askedAfterwards() const { return m_limit.askedAfterwards(); }

    Mx::ErrorStatus filerStatus() const override { return m_limit.isExceeded() ? kStatus : DwgWriter::filerStatus(); }
    Mx::ErrorStatus writeBool(bool value) override {
        return m_limit.pass(kStatus, [&] { return DwgWriter::writeBool(value); });
    }
    Mx::ErrorStatus writeInt16(std::int16_t value) override {
        return m_limit.pass(kStatus, [&] { return DwgWriter::writeInt16(value); });
    }
    Mx::ErrorStatus writeUInt16(std::uint16_t value) override {
        return m_limit.pass(kStatus, [&] { return DwgWriter::writeUInt16(value); });
    }
    Mx::ErrorStatus writeUInt32(std::uint32_t value) override {
        return m_limit.pass(kStatus, [&] { return DwgWriter::writeUInt32(value); });
    }
    Mx::ErrorStatus writeDouble(double value) override {
        return m_limit.pass(kStatus, [&] { return DwgWriter::writeDouble(value); });
    }
    Mx::ErrorStatus writePoint3d(const MxGePoint3d& value) override {
        return m_limit.pass(kStatus, [&] { return DwgWriter::writePoint3d(value); });
    }
    Mx::ErrorStatus writeHandle(const MxDbHandle& value) override {
        return m_limit.pass(kStatus, [&] { return DwgWriter::writeHandle(value); });
    }
    Mx::ErrorStatus writeString(const wchar_t* value) override {
        return m_limit.pass(kStatus, [&] { return DwgWriter::writeString(value); });
    }
    Mx::ErrorStatus writeBytes(const void* bytes, std::size_t count) override {
        return m_limit.pass(kStatus, [&] { return DwgWriter::writeBytes(bytes, count); });
    }
    Mx::ErrorStatus writeSoftPointerId(const MxDbObjectId& id) override {
        return m_limit.pass(kStatus, [&] { return DwgWriter::writeSoftPointerId(id); });
    }
    Mx::ErrorStatus writeHardPointerId(const MxDbObjectId& id) override {
        return m_limit.pass(kStatus, [&] { return DwgWriter::writeHardPointerId(id); });
    }

private:
    ItemLimit m_limit;
};

class FailingDwgReader : public merix::db::DwgReader {
public:
    static constexpr Mx::ErrorStatus kStatus = Mx::eFileUnreadable;
    FailingDwgReader(std::string_view stream, MxDbDatabase& database, std::size_t accepted)
        : DwgReader(stream, MxDbFilerType::kFile, &database)
        , m_limit(accepted) {}
    int askedAfterwards() const { return m_limit.askedAfterwards(); }

    Mx::ErrorStatus filerStatus() const override { return m_limit.isExceeded() ? kStatus : DwgReader::filerStatus(); }
    Mx::ErrorStatus readBool(bool& value) override {
        return m_limit.pass(kStatus, [&] { return DwgReader::readBool(value); });
    }
    Mx::ErrorStatus readInt16(std::int16_t& value) override {
        return m_limit.pass(kStatus, [&] { return DwgReader::readInt16(value); });
    }
    Mx::ErrorStatus readUInt16(std::uint16_t& value) override {
        return m_limit.pass(kStatus, [&] { return DwgReader::readUInt16(value); });
    }
    Mx::ErrorStatus readUInt32(std::uint32_t& value) override {
        return m_limit.pass(kStatus, [&] { return DwgReader::readUInt32(value); });
    }
    Mx::ErrorStatus readDouble(double& value) override {
        return m_limit.pass(kStatus, [&] { return DwgReader::readDouble(value); });
    }
    Mx::ErrorStatus readPoint3d(MxGePoint3d& value) override {
        return m_limit.pass(kStatus, [&] { return DwgReader::readPoint3d(value); });
    }
    Mx::ErrorStatus readHandle(MxDbHandle& value) override {
        return m_limit.pass(kStatus, [&] { return DwgReader::readHandle(value); });
    }
    Mx::ErrorStatus readString(wchar_t** value) override {
        *value = nullptr;
        return m_limit.pass(kStatus, [&] { return DwgReader::readString(value); });
    }
    Mx::ErrorStatus readBytes(void* bytes, std::size_t count) override {
        return m_limit.pass(kStatus, [&] { return DwgReader::readBytes(bytes, count); });
    }
    Mx::ErrorStatus readSoftPointerId(MxDbObjectId& id) override {
        return m_limit.pass(kStatus, [&] { return DwgReader::readSoftPointerId(id); });
    }
    Mx::ErrorStatus readHardPointerId(MxDbObjectId& id) override {
        return m_limit.pass(kStatus, [&] { return DwgReader::readHardPointerId(id); });
    }

private:
    ItemLimit m_limit;
};

class FailingDxfWriter : public merix::io::DxfOutFiler {
public:
    static constexpr Mx::ErrorStatus kStatus = Mx::eFileUnwritable;
    FailingDxfWriter(MxDbDatabase& database, const merix::io::DxfEncoding& encoding, std::size_t accepted)
        : DxfOutFiler(database, encoding)
        , m_limit(accepted) {}
    int askedAfterwards() const { return m_limit.askedAfterwards(); }

    Mx::ErrorStatus filerStatus() const override { return m_limit.isExceeded() ? kStatus : DxfOutFiler::filerStatus(); }
    Mx::ErrorStatus writeString(int code, const wchar_t* value) override {
        return m_limit.pass(kStatus, [&] { return DxfOutFiler::writeString(code, value); });
    }
    Mx::ErrorStatus writeBool(int code, bool value) override {
        return m_limit.pass(kStatus, [&] { return DxfOutFiler::writeBool(code, value); });
    }
    Mx::ErrorStatus writeInt16(int code, std::int16_t value) override {
        return m_limit.pass(kStatus, [&] { return DxfOutFiler::writeInt16(code, value); });
    }
    Mx::ErrorStatus writeInt32(int code, std::int32_t value) override {
        return m_limit.pass(kStatus, [&] { return DxfOutFiler::writeInt32(code, value); });
    }
    Mx::ErrorStatus writePoint3d(int code, const MxGePoint3d& value) override {
        return m_limit.pass(kStatus, [&] { return DxfOutFiler::writePoint3d(code, value); });
    }
    Mx::ErrorStatus writeObjectId(int code, const MxDbObjectId& id) override {
        return m_limit.pass(kStatus, [&] { return DxfOutFiler::writeObjectId(code, id); });
    }
    Mx::ErrorStatus writeBinaryChunk(int code, const void* bytes, std::size_t count) override {
        return m_limit.pass(kStatus, [&] { return DxfOutFiler::writeBinaryChunk(code, bytes, count); });
    }

private:
    ItemLimit m_limit;
};

/// The groups of a record as its reader takes them.
inline std::vector<merix::io::DxfTag> dxfTags(const std::vector<merix::io::DxfOutTag>& written) {
    std::vector<merix::io::DxfTag> tags;
    for (const merix::io::DxfOutTag& tag : written)
        tags.push_back({tag.code, tag.value, {}});
    return tags;
}

/// Fails to read one item without losing its place, and goes on when asked again. An error told to it becomes its
/// status, and does not keep it from reading either.
class FailingDxfReader : public merix::io::DxfInFiler {
public:
    static constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();
    FailingDxfReader(MxDbDatabase& database, const merix::io::DxfEncoding& encoding,
                     const std::vector<merix::io::DxfTag>& tags, std::size_t accepted = kNever,
                     Mx::ErrorStatus status = Mx::eFileUnreadable)
        : DxfInFiler(database, encoding, tags)
        , m_left(accepted)
        , m_failure(status) {}
    /// What filerStatus answers from now on, and pushBackItem too.
    void setStatus(Mx::ErrorStatus status) { m_told = status; }

    Mx::ErrorStatus filerStatus() const override { return m_told != Mx::eOk ? m_told : DxfInFiler::filerStatus(); }
    Mx::ErrorStatus readItem() override {
        if (m_left == 0) {
            m_left = kNever;
            return m_told = m_failure;
        }
        m_left -= m_left == kNever ? 0 : 1;
        return DxfInFiler::readItem();
    }
    Mx::ErrorStatus pushBackItem() override {
        const Mx::ErrorStatus status = DxfInFiler::pushBackItem();
        return m_told != Mx::eOk ? m_told : status;
    }
    void setError(Mx::ErrorStatus status, const wchar_t*, ...) override { m_told = status; }

private:
    std::size_t m_left;
    Mx::ErrorStatus m_failure, m_told = Mx::eOk;
};
