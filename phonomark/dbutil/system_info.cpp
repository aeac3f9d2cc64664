// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/system_info.h"

#include "host/win/resources.h"
#include "phonomark/dbutil/text_conversion.h"

#include <QDateTime>

#include <vector>

MxString GetSysDataTime() {
    const QDateTime now = QDateTime::currentDateTime();
    const QDate day = now.date();
    const QTime time = now.time();
    // Digits are those of every language: QDateTime's own formatting takes the user's.
    return toWide(QString::fromLatin1("%1/%2/%3 %4:%5:%6")
                      .arg(day.year())
                      .arg(day.month())
                      .arg(day.day())
                      .arg(time.hour())
                      .arg(time.minute())
                      .arg(time.second()));
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
