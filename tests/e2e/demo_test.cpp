// SPDX-License-Identifier: MIT
// The main job, as `./run --demo` does it: a note is spoken into a drawing, saved, and heard again from both kinds of
// file, through a real sound server.
#include "tests/support/dxf_tags.h"
#include "tests/support/process.h"

#include <QFileInfo>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

using namespace merix::test;

namespace {

QJsonObject report(const QString& folder) {
    QFile file(folder + QStringLiteral("/report.json"));
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

TEST(Demo, WhatIsSpokenIntoADrawingIsHeardFromBothFilesAfterReopening) {
    const QTemporaryDir folder;
    const QString out = folder.filePath(QStringLiteral("out"));
    const Outcome outcome = run(QStringLiteral(MERIX_SOURCE_DIR "/scripts/demo.sh"),
                                {QStringLiteral(MERIX_BINARY_DIR), out}, folder.path());
    ASSERT_EQ(outcome.status, 0) << outcome.err.toStdString() << outcome.out.toStdString();
    for (const char* name : {"plan.dxf", "plan.merix", "before.png", "note.png", "spoken.wav", "heard.wav"})
        EXPECT_GT(QFileInfo(out + QLatin1Char('/') + QLatin1String(name)).size(), 1000) << name;

    const QJsonObject told = report(out);
    const double seconds = told[QStringLiteral("seconds_recorded")].toDouble();
    EXPECT_GT(seconds, 4.0); // the sentence has four and a half
    EXPECT_LT(seconds, 30.0);
    // The note's duration is read from a clock, the seconds from the bytes: they part by the rounding to one decimal
    // and by at most the period that was still on its way when the clock was read.
    const QString duration = told[QStringLiteral("duration_text")].toString();
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^[0-9]+\\.[0-9]\"$")).match(duration).hasMatch());
    const QJsonObject capture = told[QStringLiteral("capture")].toObject();
    EXPECT_NEAR(duration.chopped(1).toDouble(), seconds,
                0.05 + capture[QStringLiteral("period")].toDouble() / capture[QStringLiteral("rate")].toDouble());
    for (const char* side : {"capture", "playback"}) {
        const QJsonObject granted = told[QLatin1String(side)].toObject();
        EXPECT_GT(granted[QStringLiteral("rate")].toInt(), 0) << side;
        EXPECT_GT(granted[QStringLiteral("period")].toInt(), 0) << side;
    }
    const QJsonObject correlation = told[QStringLiteral("correlation")].toObject();
    for (const char* name : {"plan.dxf", "plan.merix"}) {
        const QJsonObject likeness = correlation[QLatin1String(name)].toObject();
        EXPECT_GE(likeness[QStringLiteral("peak")].toDouble(), 0.9) << name;
        EXPECT_TRUE(likeness[QStringLiteral("first_100ms_present")].toBool()) << name;
        EXPECT_TRUE(likeness[QStringLiteral("last_100ms_present")].toBool()) << name;
    }

    // What the report says of the note is what stands in the file.
    double bytes = 0;
    for (const Record& record : records(readTags(out + QStringLiteral("/plan.dxf")), "ENTITIES"))
        if (record[0].value == "PHONOMARK")
            bytes = number(record, 93);
    EXPECT_EQ(bytes, told[QStringLiteral("bytes_stored")].toDouble());

    // The tag window is a light card over the dark drawing, where there was none before.
    const QImage before(out + QStringLiteral("/before.png")), after(out + QStringLiteral("/note.png"));
    ASSERT_EQ(before.size(), after.size());
    int fresh = 0;
    for (int y = 0; y < after.height(); ++y)
        for (int x = 0; x < after.width(); ++x)
            fresh += after.pixelColor(x, y).lightness() > 200 && before.pixelColor(x, y).lightness() < 60;
    EXPECT_GT(fresh, 36 * 36 / 4);
}

} // namespace
