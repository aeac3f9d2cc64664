// SPDX-License-Identifier: MIT
// The DXF filer that makes the tags of one record.
#pragma once

#include "host/db/filer.h"
#include "merix/io/dxf_encoding.h"

#include <string>
#include <vector>

namespace merix::io {

/// A tag that was made, not read.
struct DxfOutTag {
    int code = 0;
    std::string value; ///< encoded, one line
};

/// Both lines of a tag: the code in three columns, the value, the line ends.
void appendTag(std::string& text, int code, std::string_view value, std::string_view lineEnd);

class DxfOutFiler : public MxDbDxfFiler {
public:
    DxfOutFiler(MxDbDatabase& database, const DxfEncoding& encoding)
        : m_database(database)
        , m_encoding(encoding) {}

    std::vector<DxfOutTag> takeTags() { return std::move(m_tags); }

    MxDbFilerType filerType() const override { return MxDbFilerType::kFile; }
    Mx::ErrorStatus filerStatus() const override { return m_status; }
    MxDbDatabase* database() const override { return &m_database; }

    Mx::ErrorStatus writeString(int code, const wchar_t* value) override;
    Mx::ErrorStatus writeBool(int code, bool value) override;
    Mx::ErrorStatus writeInt16(int code, std::int16_t value) override;
    Mx::ErrorStatus writeInt32(int code, std::int32_t value) override;
    Mx::ErrorStatus writeUInt32(int code, std::uint32_t value) override;
    Mx::ErrorStatus writeDouble(int code, double value) override;
    Mx::ErrorStatus writePoint3d(int code, const MxGePoint3d& value) override;
    Mx::ErrorStatus writePoint2d(int code, const MxGePoint2d& value) override;
    Mx::ErrorStatus writeObjectId(int code, const MxDbObjectId& id) override;
    Mx::ErrorStatus writeBinaryChunk(int code, const void* bytes, std::size_t count) override;
    void setError(Mx::ErrorStatus status, const wchar_t* format, ...) override;

    Mx::ErrorStatus readItem() override { return Mx::eInvalidInput; }
    Mx::ErrorStatus pushBackItem() override { return Mx::eInvalidInput; }
    bool atSubclassData(const wchar_t*) override { return false; }
    int itemCode() const override { return 0; }
    bool itemBool() const override { return false; }
    std::int16_t itemInt16() const override { return 0; }
    std::int32_t itemInt32() const override { return 0; }
    std::uint32_t itemUInt32() const override { return 0; }
    double itemDouble() const override { return 0.0; }
    MxGePoint3d itemPoint3d() const override { return {}; }
    MxString itemString() const override { return {}; }
    MxDbObjectId itemObjectId() const override { return {}; }
    const void* itemBytes(std::size_t& count) const override {
        count = 0;
        return nullptr;
    }

private:
    Mx::ErrorStatus add(int code, std::string value);

    MxDbDatabase& m_database;
    const DxfEncoding& m_encoding;
    std::vector<DxfOutTag> m_tags;
    Mx::ErrorStatus m_status = Mx::eOk;
};

} // namespace merix::io
