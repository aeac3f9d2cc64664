// SPDX-License-Identifier: MIT
#include "merix/io/dxf_out_filer.h"

#include "merix/io/dxf_value.h"

namespace merix::io {
namespace {

constexpr std::size_t kLongestChunk = 127;

} // namespace

void appendTag(std::string& text, int code, std::string_view value, std::string_view lineEnd) {
    const std::string number = std::to_string(code);
    if (number.size() < 3)
        text.append(3 - number.size(), ' ');
    text.append(number).append(lineEnd).append(value).append(lineEnd);
}

Mx::ErrorStatus DxfOutFiler::add(int code, std::string value) {
    if (m_status == Mx::eOk)
        m_tags.push_back({code, std::move(value)});
    return m_status;
}

Mx::ErrorStatus DxfOutFiler::writeString(int code, const wchar_t* value) {
    return add(code, m_encoding.encode(value ? value : L""));
}

Mx::ErrorStatus DxfOutFiler::writeBool(int code, bool value) {
    return add(code, value ? "1" : "0");
}

Mx::ErrorStatus DxfOutFiler::writeInt16(int code, std::int16_t value) {
    return add(code, std::to_string(value));
}

Mx::ErrorStatus DxfOutFiler::writeInt32(int code, std::int32_t value) {
    return add(code, std::to_string(value));
}

Mx::ErrorStatus DxfOutFiler::writeUInt32(int code, std::uint32_t value) {
    return add(code, std::to_string(value));
}

Mx::ErrorStatus DxfOutFiler::writeDouble(int code, double value) {
    return add(code, fromDouble(value));
}

Mx::ErrorStatus DxfOutFiler::writePoint3d(int code, const MxGePoint3d& value) {
    add(code, fromDouble(value.x));
    add(code + 10, fromDouble(value.y));
    return add(code + 20, fromDouble(value.z));
}

Mx::ErrorStatus DxfOutFiler::writePoint2d(int code, const MxGePoint2d& value) {
    add(code, fromDouble(value.x));
    return add(code + 10, fromDouble(value.y));
}

Mx::ErrorStatus DxfOutFiler::writeObjectId(int code, const MxDbObjectId& id) {
    return add(code, fromHandle(id.isNull() ? 0 : id.handle().value()));
}

Mx::ErrorStatus DxfOutFiler::writeBinaryChunk(int code, const void* bytes, std::size_t count) {
    if (count > kLongestChunk || (!bytes && count != 0))
        return m_status = Mx::eInvalidInput;
    return add(code, fromBytes(bytes, count));
}

void DxfOutFiler::setError(Mx::ErrorStatus status, const wchar_t*, ...) {
    m_status = status;
}

} // namespace merix::io
