// SPDX-License-Identifier: MIT
#include "merix/io/dxf_in_filer.h"

#include "merix/db/database_imp.h"
#include "merix/io/dxf_value.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cwchar>
#include <limits>

namespace merix::io {
namespace {

template <class T> T bounded(std::int64_t value) {
    return static_cast<T>(
        std::clamp<std::int64_t>(value, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
}

} // namespace

Mx::ErrorStatus DxfInFiler::readItem() {
    if (m_status != Mx::eOk)
        return m_status;
    m_current = false;
    if (m_next >= m_tags.size())
        return Mx::eEndOfItems;
    m_first = m_next;
    const DxfTag& tag = m_tags[m_next++];
    if (isPointCode(tag.code)) {
        for (int further = 10; further <= 20 && m_next < m_tags.size() && m_tags[m_next].code == tag.code + further;
             further += 10)
            ++m_next;
    } else if (dxfKind(tag.code) == DxfKind::kBinary && !toBytes(tag.value, m_bytes)) {
        setError(Mx::eItemUnreadable, L"group %d holds no hexadecimal bytes", tag.code);
        return m_status;
    }
    m_current = true;
    return Mx::eOk;
}

Mx::ErrorStatus DxfInFiler::pushBackItem() {
    if (m_status != Mx::eOk)
        return m_status;
    if (!m_current)
        return m_next >= m_tags.size() ? Mx::eOk : Mx::eInvalidInput;
    m_next = m_first;
    m_current = false;
    return Mx::eOk;
}

bool DxfInFiler::atSubclassData(const wchar_t* name) {
    if (m_status != Mx::eOk || m_next >= m_tags.size() || m_tags[m_next].code != 100)
        return false;
    if (m_encoding.decode(trimmed(m_tags[m_next].value)) != name)
        return false;
    ++m_next;
    m_current = false;
    return true;
}

std::string_view DxfInFiler::value() const {
    return m_current ? m_tags[m_first].value : std::string_view();
}

std::string_view DxfInFiler::coordinate(std::size_t offset, int code) const {
    const std::size_t at = m_first + offset;
    return m_current && at < m_next && m_tags[at].code == code ? m_tags[at].value : std::string_view();
}

int DxfInFiler::itemCode() const {
    return m_current ? m_tags[m_first].code : 0;
}

bool DxfInFiler::itemBool() const {
    return toInteger(value()) != 0;
}

std::int16_t DxfInFiler::itemInt16() const {
    return bounded<std::int16_t>(toInteger(value()));
}

std::int32_t DxfInFiler::itemInt32() const {
    return bounded<std::int32_t>(toInteger(value()));
}

std::uint32_t DxfInFiler::itemUInt32() const {
    // Programs write a 32-bit value above the middle as a negative number.
    const std::int64_t number = toInteger(value());
    if (number < 0 && number >= std::numeric_limits<std::int32_t>::min())
        return static_cast<std::uint32_t>(number);
    return bounded<std::uint32_t>(number);
}

double DxfInFiler::itemDouble() const {
    return toDouble(value());
}

MxGePoint3d DxfInFiler::itemPoint3d() const {
    const int code = itemCode();
    MxGePoint3d point;
    point.x = toDouble(value());
    point.y = toDouble(coordinate(1, code + 10));
    point.z = toDouble(coordinate(2, code + 20));
    return point;
}

MxString DxfInFiler::itemString() const {
    return m_encoding.decode(value());
}

MxDbObjectId DxfInFiler::itemObjectId() const {
    const std::uint64_t handle = toHandle(value());
    return handle == 0 ? MxDbObjectId() : MxDbObjectId(m_database.imp().reserve(MxDbHandle(handle)));
}

const void* DxfInFiler::itemBytes(std::size_t& count) const {
    count = m_current && dxfKind(itemCode()) == DxfKind::kBinary ? m_bytes.size() : 0;
    return m_bytes.data();
}

void DxfInFiler::setError(Mx::ErrorStatus status, const wchar_t* format, ...) {
    m_status = status;
    std::array<wchar_t, 512> text{};
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vswprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    m_message = length >= 0 ? std::wstring(text.data()) : std::wstring(format);
}

} // namespace merix::io
