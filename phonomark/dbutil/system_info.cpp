// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/system_info.h"

#include "host/win/resources.h"
#include "phonomark/dbutil/text_conversion.h"

#include <QDateTime>

#include <vector>

MxString GetSysDataTime() {
    const QDateTime now = QDateTime::currentDateTime();
    return toWide(now.toString(QString::fromLatin1("yyyy/M/d h:m:s")));
}

MxString GetSysLocalUser() {
    return localUser(1024);
}

MxString localUser(unsigned capacity) {
    // The login name replaces the machine's; when it does not fit, the machine's name is what remains. Both calls get
    // the same size variable, as the first left it.
    std::vector<wchar_t> buffer(capacity + 1, L'\0');
    unsigned size = capacity;
    GetComputerNameW(buffer.data(), &size);
    GetUserNameW(buffer.data(), &size);
    return MxString(buffer.data());
}
