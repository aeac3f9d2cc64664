// SPDX-License-Identifier: MIT
#include "phonomark/settings/profile.h"

#include "merix/rx/configuration.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace {

class ProfileTest : public ::testing::Test {
protected:
    void SetUp() override { clear(); }
    void TearDown() override { clear(); }

    QString storeFile() const { return m_home + QStringLiteral("/VORKAS/MERIX/2026/MERIX.conf"); }

    QString stored() const {
        QFile file(storeFile());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    void store(const QString& text) const {
        QDir().mkpath(QFileInfo(storeFile()).path());
        QFile file(storeFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text.toUtf8());
    }

    /// A host whose profile key is this.
    class Configuration : public MxRxConfiguration {
    public:
        explicit Configuration(const wchar_t* key)
            : m_key(key) {
            merix::rx::setConfiguration(this);
        }
        ~Configuration() override { merix::rx::setConfiguration(nullptr); }
        CStdStr<wchar_t> profileKey() const override { return m_key; }

    private:
        CStdStr<wchar_t> m_key;
    };

private:
    void clear() const { QDir(m_home + QStringLiteral("/VORKAS")).removeRecursively(); }

    // Of this test program alone; Qt looks the variable up once.
    const QString m_home = QString::fromLocal8Bit(qgetenv("XDG_CONFIG_HOME"));
};

} // namespace

TEST_F(ProfileTest, WithoutAStoreNotesAreShownOfPointTypeAndWithoutSpeaker) {
    EXPECT_EQ(GetProfileIntW(RegSection(), L"VoiceShow", 1), 1);
    EXPECT_EQ(GetProfileIntW(RegSection(), L"VoiceType", 0), 0);
    EXPECT_EQ(GetProfileStringW(RegSection(), L"Spokesman", L""), L"");
}

TEST_F(ProfileTest, TheSectionIsTheTopLevel) {
    EXPECT_EQ(RegSection(), L"");
}

TEST_F(ProfileTest, AMissingTextIsEmptyWhateverItsDefault) {
    EXPECT_EQ(GetProfileStringW(RegSection(), L"Spokesman", L"Anna"), L"");
}

TEST_F(ProfileTest, AMissingIntegerIsItsDefault) {
    EXPECT_EQ(GetProfileIntW(RegSection(), L"VoiceType", 7), 7);
}

TEST_F(ProfileTest, ATypeThatIsNoNumberReadsAsPoint) {
    store(QStringLiteral("[General]\nVoiceType=Region\n"));
    EXPECT_EQ(GetProfileIntW(RegSection(), L"VoiceType", 2), 0);
}

TEST_F(ProfileTest, WhatIsWrittenIsReadByTheNextCall) {
    WriteProfileInt(RegSection(), L"VoiceShow", 0);
    EXPECT_EQ(GetProfileIntW(RegSection(), L"VoiceShow", 1), 0);
    WriteProfileInt(RegSection(), L"VoiceShow", 1);
    EXPECT_EQ(GetProfileIntW(RegSection(), L"VoiceShow", 0), 1);
    const std::wstring name = L"J\u00fcrgen \u5f20 \U0001F3A4";
    WriteProfileStringW(RegSection(), L"Spokesman", name);
    EXPECT_EQ(GetProfileStringW(RegSection(), L"Spokesman", L""), name);
}

TEST_F(ProfileTest, ValuesLieAtTheTopOfTheMakersFileWhenACallReturns) {
    WriteProfileStringW(RegSection(), L"Spokesman", L"Anna");
    WriteProfileInt(RegSection(), L"VoiceType", 3);
    EXPECT_EQ(stored(), QStringLiteral("[General]\nSpokesman=Anna\nVoiceType=3\n"));
}

TEST_F(ProfileTest, ASectionIsAGroupOfTheStore) {
    WriteProfileInt(L"Marks", L"VoiceType", 2);
    EXPECT_EQ(GetProfileIntW(L"Marks", L"VoiceType", 0), 2);
    EXPECT_EQ(GetProfileIntW(RegSection(), L"VoiceType", 0), 0);
    EXPECT_TRUE(stored().contains(QStringLiteral("[Marks]")));
}

TEST_F(ProfileTest, AStoreThatCannotBeReadGivesTheDefaults) {
    QDir().mkpath(storeFile()); // a folder in the place of the file
    EXPECT_EQ(GetProfileIntW(RegSection(), L"VoiceShow", 1), 1);
    EXPECT_EQ(GetProfileStringW(RegSection(), L"Spokesman", L""), L"");
}

TEST_F(ProfileTest, AWriteThatFailsIsReportedByNobody) {
    QDir().mkpath(storeFile());
    testing::internal::CaptureStderr();
    WriteProfileInt(RegSection(), L"VoiceShow", 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(QFileInfo(storeFile()).isDir());
}

TEST_F(ProfileTest, WithoutAConfigurationOfTheHostThereIsNoProfileName) {
    store(QStringLiteral("[Profiles]\nDefault=Surveying\n"));
    EXPECT_EQ(GetProfileName(), L"");
}

TEST_F(ProfileTest, TheProfileNameIsTheDefaultValueUnderTheHostsKey) {
    store(QStringLiteral("[Host]\nProfiles\\Default=Surveying\nProfiles\\Other=No\n"));
    for (const wchar_t* key : {L"Host/Profiles", L"Host\\Profiles"}) {
        const Configuration configuration(key);
        EXPECT_EQ(GetProfileName(), L"Surveying");
    }
    const Configuration elsewhere(L"Nothing");
    EXPECT_EQ(GetProfileName(), L"");
}

TEST_F(ProfileTest, AProfileNameIsATextOfAtMostOneThousandAndTwentyFourCharacters) {
    const Configuration configuration(L"Profiles");
    store(QStringLiteral("[Profiles]\nDefault=%1\n").arg(QString(1024, QLatin1Char('x'))));
    EXPECT_EQ(GetProfileName(), std::wstring(1024, L'x'));
    store(QStringLiteral("[Profiles]\nDefault=%1\n").arg(QString(1025, QLatin1Char('x'))));
    EXPECT_EQ(GetProfileName(), L"");
    store(QStringLiteral("[Profiles]\nDefault=a, b\n")); // a list
    EXPECT_EQ(GetProfileName(), L"");
}
