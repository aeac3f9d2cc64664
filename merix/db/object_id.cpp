// SPDX-License-Identifier: MIT
#include "host/db/object_id.h"

#include "merix/db/database_imp.h"

#include <array>

namespace {

constexpr int kMostDigits = 16;

int digitOf(wchar_t c) {
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    if (c >= L'A' && c <= L'F')
        return c - L'A' + 10;
    if (c >= L'a' && c <= L'f')
        return c - L'a' + 10;
    return -1;
}

} // namespace

MxDbHandle::MxDbHandle(const wchar_t* text) {
    std::uint64_t value = 0;
    int digits = 0;
    for (; text && *text; ++text, ++digits) {
        const int digit = digitOf(*text);
        if (digit < 0 || digits == kMostDigits)
            return;
        value = value << 4 | static_cast<std::uint64_t>(digit);
    }
    m_value = value;
}

void MxDbHandle::getIntoAsciiBuffer(wchar_t* buffer) const {
    std::array<wchar_t, kMostDigits> digits{};
    int count = 0;
    std::uint64_t rest = m_value;
    do {
        digits[static_cast<std::size_t>(count++)] = L"0123456789ABCDEF"[rest & 0xF];
        rest >>= 4;
    } while (rest);
    while (count > 0)
        *buffer++ = digits[static_cast<std::size_t>(--count)];
    *buffer = L'\0';
}

bool MxDbObjectId::isValid() const {
    return m_stub && m_stub->object;
}

MxDbHandle MxDbObjectId::handle() const {
    return m_stub ? m_stub->handle : MxDbHandle();
}

MxDbDatabase* MxDbObjectId::database() const {
    return m_stub ? &m_stub->database->self() : nullptr;
}
