// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/texts.h"

#include "host/ed/input.h"
#include "host/win/resources.h"
#include "phonomark/app/module_state.h"

#include <array>

std::wstring resourceText(unsigned id) {
    std::array<wchar_t, 1024> buffer{};
    void* const resource = _hdllInstance ? _hdllInstance : AfxGetResourceHandle();
    const int length = LoadStringW(resource, id, buffer.data(), static_cast<int>(buffer.size()));
    return length > 0 ? std::wstring(buffer.data(), static_cast<std::size_t>(length)) : std::wstring();
}

std::wstring LocalStr(unsigned id, const wchar_t* fallback) {
    std::wstring text = resourceText(id);
    if (text.empty() && fallback)
        text = fallback;
    return text;
}

int mxutPrintfById(unsigned id) {
    const std::wstring text = resourceText(id);
    if (text.empty())
        return kInputError;
    mxutPrintf(text.c_str());
    return kInputNormal;
}

std::wstring formatText(std::wstring_view format, std::initializer_list<std::wstring_view> values) {
    std::wstring result;
    const auto* value = values.begin();
    for (std::size_t i = 0; i < format.size(); ++i) {
        const wchar_t next = format[i] == L'%' && i + 1 < format.size() ? format[i + 1] : L'\0';
        if (next == L's') {
            if (value != values.end())
                result += *value++;
            ++i;
        } else {
            result += format[i];
            if (next == L'%')
                ++i;
        }
    }
    return result;
}
