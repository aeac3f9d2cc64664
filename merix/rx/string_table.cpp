// SPDX-License-Identifier: MIT
#include "merix/rx/string_table.h"

#include "host/rx/string_table.h"

#include <algorithm>

namespace merix::rx {

namespace {

constexpr std::size_t kMost = 256;

std::vector<std::wstring>& table() {
    static std::vector<std::wstring> texts;
    return texts;
}

} // namespace

const std::vector<std::wstring>& stringTable() {
    return table();
}

} // namespace merix::rx

void mxutUpdateStringTable(const wchar_t* text) {
    using merix::rx::table;
    if (!text || !*text)
        return;
    std::vector<std::wstring>& texts = table();
    const std::wstring name(text);
    std::erase(texts, name);
    texts.insert(texts.begin(), name);
    texts.resize(std::min(texts.size(), merix::rx::kMost));
}
