// SPDX-License-Identifier: MIT
#include "host/win/resources.h"
#include "merix/rx/text.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include <pwd.h>
#include <unistd.h>

namespace {

bool copyName(const std::string& name, wchar_t* buffer, const unsigned* size) {
    const std::wstring wide = merix::rx::fromUtf8(name);
    if (!buffer || !size || wide.empty() || wide.size() + 1 > *size)
        return false;
    *std::copy(wide.begin(), wide.end(), buffer) = L'\0';
    return true;
}

} // namespace

bool GetUserNameW(wchar_t* buffer, unsigned* size) {
    std::array<char, 16384> space{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, space.data(), space.size(), &found) == 0 && found && found->pw_name)
        return copyName(found->pw_name, buffer, size);
    // A user without an entry (in a container) is known by the environment only.
    const char* login = std::getenv("LOGNAME");
    return copyName(login ? login : "", buffer, size);
}

bool GetComputerNameW(wchar_t* buffer, unsigned* size) {
    std::array<char, 256> name{};
    if (gethostname(name.data(), name.size() - 1) != 0)
        return false;
    return copyName(name.data(), buffer, size);
}
