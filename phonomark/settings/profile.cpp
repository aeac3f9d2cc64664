// SPDX-License-Identifier: MIT
#include "phonomark/settings/profile.h"

#include "host/rx/configuration.h"
#include "phonomark/dbutil/text_conversion.h"

#include <QSettings>
#include <QVariant>

#include <algorithm>

namespace {

/// The value that stands for a key itself.
constexpr wchar_t kDefaultValue[] = L"Default";
constexpr std::size_t kLongestProfileName = 1024;

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

std::wstring GetProfileName() {
    const MxRxConfiguration* configuration = mxrxConfiguration();
    if (!configuration)
        return {};
    std::wstring key = configuration->profileKey();
    std::replace(key.begin(), key.end(), L'\\', L'/');
    const QVariant name = Store(key).value(kDefaultValue, QVariant());
    if (name.type() != QVariant::String)
        return {};
    const std::wstring text = toWide(name.toString());
    return text.size() <= kLongestProfileName ? text : std::wstring();
}

void WriteProfileInt(const std::wstring& section, const std::wstring& key, int value) {
    Store(section).setValue(key, QVariant(value));
}

void WriteProfileStringW(const std::wstring& section, const std::wstring& key, const std::wstring& value) {
    Store(section).setValue(key, QVariant(toQString(value)));
}
