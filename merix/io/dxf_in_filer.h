// SPDX-License-Identifier: MIT
// The DXF filer over the tags of one record.
#pragma once

#include "host/db/filer.h"
#include "merix/io/dxf_encoding.h"
#include "merix/io/dxf_tag.h"

#include <span>
#include <string>
#include <vector>

namespace merix::io {

class DxfInFiler : public MxDbDxfFiler {
public:
    /// Reads `tags`, which together with what they point into outlive the filer.
    DxfInFiler(MxDbDatabase& database, const DxfEncoding& encoding, std::span<const DxfTag> tags)
        : m_database(database)
        , m_encoding(encoding)
        , m_tags(tags) {}

    /// What setError was told, else why the record cannot be read; empty when all is well.
    const std::wstring& message() const { return m_message; }

    MxDbFilerType filerType() const override { return MxDbFilerType::kFile; }
    Mx::ErrorStatus filerStatus() const override { return m_status; }
    MxDbDatabase* database() const override { return &m_database; }

    Mx::ErrorStatus readItem() override;
    Mx::ErrorStatus pushBackItem() override;
    bool atSubclassData(const wchar_t* name) override;
    int itemCode() const override;
    bool itemBool() const override;
    std::int16_t itemInt16() const override;
    std::int32_t itemInt32() const override;
    std::uint32_t itemUInt32() const override;
    double itemDouble() const override;
    MxGePoint3d itemPoint3d() const override;
    MxString itemString() const override;
    MxDbObjectId itemObjectId() const override;
    const void* itemBytes(std::size_t& count) const override;
    void setError(Mx::ErrorStatus status, const wchar_t* format, ...) override;

    Mx::ErrorStatus writeString(int, const wchar_t*) override { return Mx::eInvalidInput; }
    Mx::ErrorStatus writeBool(int, bool) override { return Mx::eInvalidInput; }
    Mx::ErrorStatus writeInt16(int, std::int16_t) override { return Mx::eInvalidInput; }
    Mx::ErrorStatus writeInt32(int, std::int32_t) override { return Mx::eInvalidInput; }
    Mx::ErrorStatus writeUInt32(int, std::uint32_t) override { return Mx::eInvalidInput; }
    Mx::ErrorStatus writeDouble(int, double) override { return Mx::eInvalidInput; }
    Mx::ErrorStatus writePoint3d(int, const MxGePoint3d&) override { return Mx::eInvalidInput; }
    Mx::ErrorStatus writePoint2d(int, const MxGePoint2d&) override { return Mx::eInvalidInput; }
    Mx::ErrorStatus writeObjectId(int, const MxDbObjectId&) override { return Mx::eInvalidInput; }
    Mx::ErrorStatus writeBinaryChunk(int, const void*, std::size_t) override { return Mx::eInvalidInput; }

private:
    std::string_view value() const;
    /// The value `offset` tags behind the current one if it is that of `code`, else nothing.
    std::string_view coordinate(std::size_t offset, int code) const;

    MxDbDatabase& m_database;
    const DxfEncoding& m_encoding;
    std::span<const DxfTag> m_tags;
    std::size_t m_next = 0;  ///< the tag that readItem reads
    std::size_t m_first = 0; ///< the current item is [m_first, m_next)
    bool m_current = false;
    Mx::ErrorStatus m_status = Mx::eOk;
    std::wstring m_message;
    std::vector<std::uint8_t> m_bytes;
};

} // namespace merix::io
