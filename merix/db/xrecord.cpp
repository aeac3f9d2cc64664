// SPDX-License-Identifier: MIT
#include "host/db/dictionary.h"
#include "merix/db/dwg_filer.h"
#include "merix/db/dxf_fields.h"
#include "merix/db/group_code.h"
#include "merix/rx/class_registry.h"

#include <cstdlib>
#include <new>
#include <utility>

using namespace merix::db;

MERIX_RX_CLASS(MxDbXrecord, "MxDbXrecord", MxDbObject, merix::rx::makeObject<MxDbXrecord>, "XRECORD")

resbuf* mxutBuildList(short code, const wchar_t* text) {
    try {
        return new resbuf{nullptr, code, std::wstring(text ? text : L"")};
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void mxutRelRb(resbuf* chain) {
    while (chain) {
        resbuf* next = chain->rbnext;
        delete chain;
        chain = next;
    }
}

Mx::ErrorStatus MxDbXrecord::rbChain(resbuf** chain) const {
    if (!chain)
        return Mx::eInvalidInput;
    assertReadEnabled();
    *chain = nullptr;
    resbuf** end = chain;
    for (const auto& [code, value] : m_items) {
        *end = new resbuf{nullptr, code, value};
        end = &(*end)->rbnext;
    }
    return Mx::eOk;
}

Mx::ErrorStatus MxDbXrecord::setFromRbChain(const resbuf& chain) {
    assertWriteEnabled();
    m_items.clear();
    for (const resbuf* element = &chain; element; element = element->rbnext)
        m_items.emplace_back(element->restype, element->resval);
    return Mx::eOk;
}

namespace {

/// A group code and the kind of a value that holds nothing.
constexpr std::size_t kLeastItemSize = 3 + 3;

struct DwgValueWriter {
    MxDbDwgFiler& filer;
    void operator()(std::monostate) const {}
    void operator()(std::int64_t value) const {
        filer.writeUInt32(static_cast<std::uint32_t>(static_cast<std::uint64_t>(value) >> 32));
        filer.writeUInt32(static_cast<std::uint32_t>(value));
    }
    void operator()(double value) const { filer.writeDouble(value); }
    void operator()(const MxGePoint3d& value) const { filer.writePoint3d(value); }
    void operator()(const std::wstring& value) const { filer.writeString(value.c_str()); }
    void operator()(const std::vector<std::uint8_t>& value) const {
        filer.writeUInt32(static_cast<std::uint32_t>(value.size()));
        filer.writeBytes(value.data(), value.size());
    }
    void operator()(const MxDbHandle& value) const { filer.writeHandle(value); }
};

Mx::ErrorStatus readBytesValue(MxDbDwgFiler& filer, MxDbValue& value) {
    std::uint32_t count = 0;
    if (const auto status = readCount(filer, count, 1); status != Mx::eOk)
        return status;
    std::vector<std::uint8_t> bytes(count);
    const auto status = filer.readBytes(bytes.data(), count);
    value = std::move(bytes);
    return status;
}

/// `kind` is the value's place among the alternatives of MxDbValue.
Mx::ErrorStatus readValue(MxDbDwgFiler& filer, std::uint16_t kind, MxDbValue& value) {
    switch (kind) {
    case 0:
        return Mx::eOk;
    case 1: {
        std::uint32_t high = 0, low = 0;
        filer.readUInt32(high);
        filer.readUInt32(low);
        value = static_cast<std::int64_t>(static_cast<std::uint64_t>(high) << 32 | low);
        return filer.filerStatus();
    }
    case 2:
        return filer.readDouble(value.emplace<double>());
    case 3:
        return filer.readPoint3d(value.emplace<MxGePoint3d>());
    case 4:
        return readText(filer, value.emplace<std::wstring>());
    case 5:
        return readBytesValue(filer, value);
    case 6:
        return filer.readHandle(value.emplace<MxDbHandle>());
    default:
        return Mx::eItemType;
    }
}

MxDbValue itemValue(const MxDbDxfFiler& filer) {
    switch (groupKind(filer.itemCode())) {
    case GroupKind::kInt16:
    case GroupKind::kInt32:
    case GroupKind::kInt64:
    case GroupKind::kBool:
        return static_cast<std::int64_t>(std::wcstoll(filer.itemString().text(), nullptr, 10));
    case GroupKind::kReal:
        return filer.itemDouble();
    case GroupKind::kPoint:
        return filer.itemPoint3d();
    case GroupKind::kHandle:
        return MxDbHandle(filer.itemString().text());
    case GroupKind::kBinary: {
        std::size_t count = 0;
        const auto* bytes = static_cast<const std::uint8_t*>(filer.itemBytes(count));
        return std::vector<std::uint8_t>(bytes, bytes + count);
    }
    case GroupKind::kText:
        break;
    }
    return filer.itemString().str();
}

struct DxfValueWriter {
    MxDbDxfFiler& filer;
    int code;
    void operator()(std::monostate) const { filer.writeString(code, L""); }
    void operator()(std::int64_t value) const {
        // Numbers are text in DXF, so this is right for every width.
        filer.writeString(code, std::to_wstring(value).c_str());
    }
    void operator()(double value) const { filer.writeDouble(code, value); }
    void operator()(const MxGePoint3d& value) const { filer.writePoint3d(code, value); }
    void operator()(const std::wstring& value) const { filer.writeString(code, value.c_str()); }
    void operator()(const std::vector<std::uint8_t>& value) const {
        filer.writeBinaryChunk(code, value.data(), value.size());
    }
    void operator()(const MxDbHandle& value) const {
        wchar_t text[17];
        value.getIntoAsciiBuffer(text);
        filer.writeString(code, text);
    }
};

} // namespace

Mx::ErrorStatus MxDbXrecord::dwgInFields(MxDbDwgFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbObject::dwgInFields(filer); status != Mx::eOk)
        return status;
    std::uint32_t count = 0;
    filer->readInt16(m_cloning);
    if (const auto status = readCount(*filer, count, kLeastItemSize); status != Mx::eOk)
        return status;
    m_items.clear();
    for (std::uint32_t i = 0; i < count; ++i) {
        std::int16_t code = 0;
        std::uint16_t kind = 0;
        MxDbValue value;
        filer->readInt16(code);
        if (const auto status = filer->readUInt16(kind); status != Mx::eOk)
            return status;
        if (const auto status = readValue(*filer, kind, value); status != Mx::eOk)
            return status;
        m_items.emplace_back(code, std::move(value));
    }
    return filer->filerStatus();
}

Mx::ErrorStatus MxDbXrecord::dwgOutFields(MxDbDwgFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbObject::dwgOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeInt16(m_cloning);
    filer->writeUInt32(static_cast<std::uint32_t>(m_items.size()));
    for (const auto& [code, value] : m_items) {
        filer->writeInt16(code);
        filer->writeUInt16(static_cast<std::uint16_t>(value.index()));
        std::visit(DwgValueWriter{*filer}, value);
    }
    return filer->filerStatus();
}

Mx::ErrorStatus MxDbXrecord::dxfInFields(MxDbDxfFiler* filer) {
    assertWriteEnabled();
    if (const auto status = MxDbObject::dxfInFields(filer); status != Mx::eOk)
        return status;
    m_items.clear();
    if (!filer->atSubclassData(L"AcDbXrecord"))
        return Mx::eSubclassMissing;
    bool first = true;
    return readItems(filer, nullptr, [&](int code) {
        if (std::exchange(first, false) && code == 280)
            m_cloning = filer->itemInt16();
        else
            m_items.emplace_back(static_cast<short>(code), itemValue(*filer));
        return true;
    });
}

Mx::ErrorStatus MxDbXrecord::dxfOutFields(MxDbDxfFiler* filer) const {
    assertReadEnabled();
    if (const auto status = MxDbObject::dxfOutFields(filer); status != Mx::eOk)
        return status;
    filer->writeString(100, L"AcDbXrecord");
    filer->writeInt16(280, m_cloning);
    for (const auto& [code, value] : m_items)
        std::visit(DxfValueWriter{*filer, code}, value);
    return filer->filerStatus();
}
