// SPDX-License-Identifier: MIT
// Runs every case: the real program, headless, with the case's script in an empty folder beside copies of the drawings
// of tests/golden/drawings. The script leaves picture.png, saved.dxf or both, and they have to be like the files of
// those names in the case's folder. What came out is kept in golden/ of the build folder, from where
// scripts/promote-goldens.sh takes it over when a change was meant.
#include "tests/golden/likeness.h"
#include "tests/support/process.h"

#include <QDir>
#include <QFile>

#include <algorithm>

using namespace merix::test;

namespace {

const QString kCases = QStringLiteral(MERIX_SOURCE_DIR "/tests/golden/");
const QString kResults = QStringLiteral(MERIX_BINARY_DIR "/golden/");

std::vector<std::string> cases() {
    std::vector<std::string> names;
    for (const QString& name : QDir(kCases).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name))
        if (QFile::exists(kCases + name + QStringLiteral("/script.scr")))
            names.push_back(name.toStdString());
    return names;
}

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::string nameOf(const testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

class Golden : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        expected = kCases + QString::fromStdString(GetParam()) + QLatin1Char('/');
        results = kResults + QString::fromStdString(GetParam()) + QLatin1Char('/');
        QDir(results).removeRecursively();
        ASSERT_TRUE(QDir().mkpath(results));
        // The speaker is a setting, so that he is not whoever runs the test.
        const QString settings = folder.filePath(QStringLiteral("home/VORKAS/MERIX/2026"));
        ASSERT_TRUE(QDir().mkpath(settings));
        QFile file(settings + QStringLiteral("/MERIX.conf"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("[General]\nSpokesman=Golden\n") > 0);
        const QDir drawings(kCases + QStringLiteral("drawings"));
        for (const QString& name : drawings.entryList(QDir::Files))
            ASSERT_TRUE(QFile::copy(drawings.filePath(name), folder.filePath(name)));
    }
    /// Moves a file that the script left to the results; false when it left none.
    bool keep(const QString& name) {
        return QFile::exists(folder.filePath(name)) && QFile::copy(folder.filePath(name), results + name);
    }

    QTemporaryDir folder;
    QString expected, results;
};

} // namespace

TEST_P(Golden, LooksAndIsSavedAsExpected) {
    const Outcome outcome = runScript(contents(expected + QStringLiteral("script.scr")), folder.path());
    ASSERT_EQ(outcome.status, 0) << outcome.err.constData() << outcome.out.constData();

    const QString picture = QStringLiteral("picture.png"), saved = QStringLiteral("saved.dxf");
    const bool hasPicture = keep(picture), hasText = keep(saved);
    ASSERT_TRUE(hasPicture || hasText) << "the script leaves neither a picture nor a drawing";
    EXPECT_EQ(hasPicture, QFile::exists(expected + picture));
    EXPECT_EQ(hasText, QFile::exists(expected + saved));
    if (hasPicture) {
        const PictureDifference found = difference(QImage(expected + picture), QImage(results + picture));
        EXPECT_TRUE(found.alike()) << results.toStdString() << "picture.png: " << found.described().toStdString();
    }
    if (hasText) {
        const QString found = difference(contents(expected + saved), masked(readTags(results + saved)));
        EXPECT_TRUE(found.isEmpty()) << results.toStdString() << "saved.dxf: " << found.toStdString();
        // What would be promoted is what was compared.
        QFile file(results + saved);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(masked(readTags(folder.filePath(saved)))) > 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, Golden, testing::ValuesIn(cases()), nameOf);
