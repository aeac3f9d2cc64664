// SPDX-License-Identifier: MIT
#include "phonomark/settings/profile.h"

#include "phonomark/dbutil/text_conversion.h"

#include <QSettings>
#include <QVariant>

namespace {

/// One opening of the store: on Linux VORKAS/MERIX/2026/MERIX.conf under the user's configuration directory.
class Store {
public:
    explicit Store(const std::wstring& section)
        : m_settings(organisation(), QString::fromLatin1("MERIX")) {
        m_settings.beginGroup(toQString(section));
    }
    ~Store() { m_settings.endGroup(); }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    QVariant value(const std::wstring& key, const QVariant& fallback) const {
        return m_settings.value(toQString(key), fallback);
    }
    void setValue(const std::wstring& key, const QVariant& value) { m_settings.setValue(toQString(key), value); }

private:
    static QString organisation() {
        QString name = QString::fromLatin1("VORKAS");
        for (const char* part : {"/", "MERIX", "/", "2026"})
            name += QString::fromLatin1(part);
        return name;
    }

    QSettings m_settings;
};

} // namespace

std::wstring RegSection() {
    return {};
}

int GetProfileIntW(const std::wstring& section, const std::wstring& key, int defaultValue) {
    return Store(section).value(key, QVariant(defaultValue)).toInt();
}

std::wstring GetProfileStringW(const std::wstring& section, const std::wstring& key, const std::wstring&) {
    return toWide(Store(section).value(key, QVariant()).toString());
}

void WriteProfileInt(const std::wstring& section, const std::wstring& key, int value) {
    Store(section).setValue(key, QVariant(value));
}

void WriteProfileStringW(const std::wstring& section, const std::wstring& key, const std::wstring& value) {
    Store(section).setValue(key, QVariant(toQString(value)));
}
