// SPDX-License-Identifier: MIT
#include <QApplication>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPushButton>
#include <QResource>
#include <QTableWidget>
#include <QUiLoader>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace {

constexpr const char* kModule = MERIX_BINARY_DIR "/bin/MrxPhonomarkRes.dll";

class ResourceModule : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(QResource::registerResource(QString::fromUtf8(kModule))); }
    void TearDown() override { EXPECT_TRUE(QResource::unregisterResource(QString::fromUtf8(kModule))); }

    static QJsonObject texts() {
        QFile file(QStringLiteral(":/MrxPhonomarkRes/strings/en.json"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        QJsonParseError error;
        QJsonObject object = QJsonDocument::fromJson(file.readAll(), &error).object();
        EXPECT_EQ(error.error, QJsonParseError::NoError) << qPrintable(error.errorString());
        return object;
    }
    static QString text(int id) { return texts().value(QString::number(id)).toString(); }

    static QImage image(const char* name) {
        return QImage(QStringLiteral(":/MrxPhonomarkRes/MrxPhonomarkRes/") + QString::fromLatin1(name));
    }

    static std::unique_ptr<QWidget> dialog(const char* name) {
        static int argc = 1;
        static char program[] = "test";
        static char* argv[] = {program, nullptr};
        static QApplication application(argc, argv);
        QFile file(QStringLiteral(":/MrxPhonomarkRes/dialogs/%1.ui").arg(QString::fromLatin1(name)));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return std::unique_ptr<QWidget>(QUiLoader().load(&file));
    }
};

/// Of two pictures of one size: the mean of how far their channels are apart.
double difference(const QImage& a, const QImage& b) {
    double sum = 0.0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q)) +
                   std::abs(qAlpha(p) - qAlpha(q));
        }
    }
    return sum / (4.0 * a.width() * a.height());
}

/// The format directives of a text, in order, a doubled percent left out.
QString directives(const QString& text) {
    QString found;
    for (int i = 0; i + 1 < text.size(); ++i) {
        if (text[i] == QLatin1Char('%')) {
            ++i;
            if (text[i] != QLatin1Char('%')) {
                found += text[i];
            }
        }
    }
    return found;
}

TEST_F(ResourceModule, HasATextForEveryIdThatTheModuleReads) {
    for (const int id :
         {250, 251, 252, 253, 254, 255, 256, 257, 258, 259, 261, 262, 263, 264, 265, 266, 267, 268, 269, 270, 277,
          278, 279, 281, 282, 283, 284, 285, 286, 287, 288, 289, 291, 292, 293, 294, 295, 296, 297, 298, 299}) {
        EXPECT_FALSE(text(id).isEmpty()) << id;
        EXPECT_LT(text(id).size(), 1024) << id;
    }
}

TEST_F(ResourceModule, TextsAskForExactlyTheArgumentsTheyAreGiven) {
    const QMap<QString, QString> taking{{QStringLiteral("251"), QStringLiteral("ss")},
                                        {QStringLiteral("263"), QStringLiteral("ss")},
                                        {QStringLiteral("269"), QStringLiteral("s")},
                                        {QStringLiteral("288"), QStringLiteral("d")}};
    const QJsonObject all = texts();
    for (auto it = all.begin(); it != all.end(); ++it) {
        EXPECT_EQ(directives(it.value().toString()), taking.value(it.key())) << qPrintable(it.key());
    }
}

TEST_F(ResourceModule, LinesForTheCommandLineBeginOnANewLine) {
    for (const int id : {255, 263, 264, 265, 266, 267, 268, 269, 270, 277, 278, 286, 287}) {
        EXPECT_TRUE(text(id).startsWith(QLatin1Char('\n'))) << id;
    }
}

TEST_F(ResourceModule, KeywordListsGiveLocalAndGlobalNames) {
    EXPECT_EQ(text(261), QStringLiteral("Settings _ Settings"));
    const QStringList halves = text(262).split(QStringLiteral(" _ "));
    ASSERT_EQ(halves.size(), 2);
    EXPECT_EQ(halves[1], QStringLiteral("Point Region Object Reply Spokesman"));
    EXPECT_EQ(halves[0].split(QLatin1Char(' ')).size(), 5);
}

TEST_F(ResourceModule, TagImagesAreSixImagesOfTheWindowsSize) {
    std::vector<QImage> seen;
    for (const char* name : {"IDB_PNG_TAG_PLAY", "IDB_PNG_TAG_RECD", "IDB_PNG_TAG_PLAYING_I", "IDB_PNG_TAG_PLAYING_II",
                             "IDB_PNG_TAG_PLAYING_III", "IDB_PNG_TAG_PLAYING_IV"}) {
        const QImage picture = image(name);
        EXPECT_EQ(picture.size(), QSize(36, 36)) << name;
        const QImage twice = image((std::string(name) + "@2x").c_str());
        EXPECT_EQ(twice.size(), QSize(72, 72)) << name;
        EXPECT_LT(difference(twice.scaled(36, 36, Qt::IgnoreAspectRatio, Qt::SmoothTransformation), picture), 6)
            << name << " drawn in more pixels";
        EXPECT_THAT(seen, testing::Not(testing::Contains(picture))) << name;
        seen.push_back(picture);
    }
}

TEST_F(ResourceModule, TagImagesShowTheDeleteBoxWhereItIsPressed) {
    const QImage play = image("IDB_PNG_TAG_PLAY");
    const QImage record = image("IDB_PNG_TAG_RECD");
    for (int y = 0; y < 9; ++y) {
        for (int x = 26; x < 35; ++x) {
            EXPECT_EQ(play.pixel(x, y), record.pixel(x, y)) << x << ' ' << y;
        }
    }
    const QRgb box = play.pixel(30, 1);
    EXPECT_EQ(play.pixel(27, 4), box);
    EXPECT_GT(qGray(play.pixel(30, 4)), qGray(box) + 100) << "the cross is light on the box";
    EXPECT_EQ(play.pixel(30, 9), qRgb(255, 255, 255)) << "the card begins below the box";
}

TEST_F(ResourceModule, DialogTemplatesLoadWithTheirControls) {
    const auto tag = dialog("205");
    ASSERT_NE(tag, nullptr);
    EXPECT_EQ(tag->size(), QSize(36, 36));
    const auto manager = dialog("IDD_DIALOG_MANAGER");
    ASSERT_NE(manager, nullptr);
    EXPECT_NE(manager->findChild<QTableWidget*>(QStringLiteral("IDC_LIST_PHOBJECT")), nullptr);
    EXPECT_NE(manager->findChild<QPushButton*>(QStringLiteral("IDC_BUTTON_PLAY")), nullptr);
    EXPECT_NE(manager->findChild<QPushButton*>(QStringLiteral("IDCANCEL")), nullptr);
}

TEST(LinetypeFile, EveryDefinitionIsANameAndAPatternThatAddsUp) {
    QFile file(QStringLiteral(MERIX_BINARY_DIR "/bin/merix.lin"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QMap<QString, QVector<double>> patterns;
    QString name;
    for (const QByteArray& bytes : file.readAll().split('\n')) {
        const QString line = QString::fromUtf8(bytes);
        if (line.isEmpty() || line.startsWith(QStringLiteral(";;"))) {
            continue;
        }
        if (line.startsWith(QLatin1Char('*'))) {
            ASSERT_TRUE(name.isEmpty()) << qPrintable(line);
            name = line.mid(1).section(QLatin1Char(','), 0, 0);
            continue;
        }
        ASSERT_TRUE(line == QStringLiteral("A") || line.startsWith(QStringLiteral("A,"))) << qPrintable(line);
        ASSERT_FALSE(name.isEmpty() || patterns.contains(name)) << qPrintable(line);
        QVector<double> lengths;
        for (const QString& item : line.split(QLatin1Char(',')).mid(1)) {
            bool ok = false;
            lengths.append(item.toDouble(&ok));
            EXPECT_TRUE(ok) << qPrintable(line);
        }
        patterns.insert(name, lengths);
        name.clear();
    }
    EXPECT_TRUE(patterns.value(QStringLiteral("CONTINUOUS"), {1}).isEmpty());
    for (const char* family : {"BORDER", "CENTER", "DASHDOT", "DASHED", "DIVIDE", "DOT", "HIDDEN", "PHANTOM"}) {
        const QVector<double> whole = patterns.value(QString::fromLatin1(family));
        const QVector<double> half = patterns.value(QString::fromLatin1(family) + QStringLiteral("2"));
        const QVector<double> twice = patterns.value(QString::fromLatin1(family) + QStringLiteral("X2"));
        ASSERT_FALSE(whole.isEmpty()) << family;
        ASSERT_EQ(half.size(), whole.size()) << family;
        ASSERT_EQ(twice.size(), whole.size()) << family;
        for (int i = 0; i < whole.size(); ++i) {
            EXPECT_EQ(half[i] * 2, whole[i]) << family;
            EXPECT_EQ(twice[i], whole[i] * 2) << family;
        }
    }
}

} // namespace
