// SPDX-License-Identifier: MIT
#include "tests/support/process.h"

#include <QFile>
#include <QMap>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <vector>

namespace {

using merix::test::Outcome;

struct Record {
    QString kind;
    QString section;
    QVector<QPair<int, QString>> tags;

    QString first(int code) const {
        for (const auto& tag : tags) {
            if (tag.first == code) {
                return tag.second;
            }
        }
        return {};
    }
    QString handle() const {
        if (kind == QLatin1String("TABLE")) {
            return tags[1].second;
        }
        return first(kind == QLatin1String("DIMSTYLE") ? 105 : 5);
    }
};

QByteArray contents(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

std::vector<Record> records(const QByteArray& dxf) {
    const QStringList lines = QString::fromLatin1(dxf).split(QLatin1Char('\n'));
    EXPECT_EQ(lines.size() % 2, 1) << "pairs of lines and the end of the last";
    std::vector<Record> all;
    QString section;
    for (int i = 0; i + 1 < lines.size(); i += 2) {
        bool ok = false;
        const int code = lines[i].trimmed().toInt(&ok);
        EXPECT_TRUE(ok) << "line " << i + 1;
        if (code == 0) {
            all.push_back({lines[i + 1], section, {}});
        } else {
            all.back().tags.append({code, lines[i + 1]});
            if (all.back().kind == QLatin1String("SECTION")) {
                section = lines[i + 1];
            }
        }
    }
    return all;
}

class MakePlan : public testing::Test {
protected:
    Outcome make(const QStringList& arguments) {
        return merix::test::run(QStringLiteral(MERIX_BINARY_DIR "/bin/make_plan"), arguments, m_folder.path());
    }
    QByteArray made(const QStringList& options = {}) {
        const QString path = m_folder.filePath(QStringLiteral("out.dxf"));
        EXPECT_EQ(make(QStringList{path} + options).status, 0);
        return contents(path);
    }
    QTemporaryDir m_folder;
};

void expectHandlesAndOwnersAgree(const std::vector<Record>& all) {
    QSet<QString> handles{QStringLiteral("0")};
    quint64 highest = 0;
    for (const Record& record : all) {
        const QString handle = record.handle();
        if (!handle.isEmpty() && record.kind != QLatin1String("SECTION")) {
            EXPECT_FALSE(handles.contains(handle)) << "twice: " << qPrintable(handle);
            handles.insert(handle);
            highest = std::max(highest, handle.toULongLong(nullptr, 16));
        }
    }
    for (const Record& record : all) {
        for (const auto& tag : record.tags) {
            if (tag.first == 330 || tag.first == 340 || tag.first == 350) {
                EXPECT_TRUE(handles.contains(tag.second)) << qPrintable(record.kind) << " points at nothing";
            }
        }
    }
    EXPECT_GT(all.front().tags.last().second.toULongLong(nullptr, 16), highest) << "the handle seed is free";
}

void expectNamesAreDefined(const std::vector<Record>& all) {
    QMap<QString, QSet<QString>> defined;
    for (const Record& record : all) {
        if (record.section == QLatin1String("TABLES")) {
            defined[record.kind].insert(record.first(2));
        }
    }
    for (const Record& record : all) {
        if (record.section == QLatin1String("ENTITIES") || record.section == QLatin1String("BLOCKS")) {
            if (!record.first(8).isEmpty()) {
                EXPECT_TRUE(defined[QStringLiteral("LAYER")].contains(record.first(8))) << qPrintable(record.first(8));
            }
            if (record.kind == QLatin1String("INSERT")) {
                EXPECT_TRUE(defined[QStringLiteral("BLOCK_RECORD")].contains(record.first(2)));
            }
        }
        if (record.kind == QLatin1String("LAYER")) {
            EXPECT_TRUE(defined[QStringLiteral("LTYPE")].contains(record.first(6))) << qPrintable(record.first(6));
        }
    }
}

int entityCount(const std::vector<Record>& all) {
    int count = 0;
    for (const Record& record : all) {
        count += record.section == QLatin1String("ENTITIES") && record.kind != QLatin1String("ENDSEC") &&
                 record.kind != QLatin1String("SECTION");
    }
    return count;
}

TEST_F(MakePlan, TheSampleOfTheTreeIsWhatTheProgramWrites) {
    EXPECT_EQ(made(), contents(QStringLiteral(MERIX_SOURCE_DIR "/samples/plan.dxf")));
}

TEST_F(MakePlan, ThePlanHoldsTogether) {
    const auto all = records(made());
    expectHandlesAndOwnersAgree(all);
    expectNamesAreDefined(all);
    QSet<QString> kinds;
    for (const Record& record : all) {
        if (record.section == QLatin1String("ENTITIES") || record.section == QLatin1String("BLOCKS")) {
            kinds.insert(record.kind);
        }
    }
    for (const char* kind : {"LINE", "CIRCLE", "ARC", "LWPOLYLINE", "TEXT", "INSERT"}) {
        EXPECT_TRUE(kinds.contains(QString::fromLatin1(kind))) << kind;
    }
}

TEST_F(MakePlan, TheGridHasExactlyTheEntitiesAskedFor) {
    for (const int count : {1, 17, 2000}) {
        const auto all = records(made({QStringLiteral("--entities"), QString::number(count)}));
        EXPECT_EQ(entityCount(all), count);
        expectHandlesAndOwnersAgree(all);
        expectNamesAreDefined(all);
    }
}

TEST_F(MakePlan, WrongArgumentsAndAnUnwritablePlaceAreToldOnStandardError) {
    for (const QStringList& arguments : {QStringList{},
                                         QStringList{QStringLiteral("a"), QStringLiteral("b")},
                                         {QStringLiteral("a"), QStringLiteral("--entities"), QStringLiteral("0")},
                                         {QStringLiteral("a"), QStringLiteral("--entities"), QStringLiteral("9x")}}) {
        const Outcome outcome = make(arguments);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_TRUE(outcome.err.startsWith("usage: make_plan")) << outcome.err.constData();
    }
    const QString nowhere = m_folder.filePath(QStringLiteral("no/such/folder.dxf"));
    EXPECT_EQ(make({nowhere}).status, 1);
    EXPECT_TRUE(make({nowhere}).err.contains(nowhere.toUtf8()));
}

} // namespace
