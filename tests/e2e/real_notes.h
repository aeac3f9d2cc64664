// SPDX-License-Identifier: MIT
// Voice notes by hand: a drawing whose units are the pixels of the view, notes at known places, takes and what the
// sound server knows of them.
#pragma once

#include "tests/e2e/real_windows.h"

#include <QPoint>

namespace merix::test {

/// A note as a drawing holds it.
struct Note {
    QByteArray handle;
    double x = 0, y = 0;
    int seconds = 0; ///< of sound; 0: an empty one
    QByteArray speaker = "Anna";
    double regionWidth = 0, regionHeight = 0; ///< over a region with its lower left corner at the point
};

constexpr int kBytesPerSecond = 160'000; ///< 40000 frames of two bytes, each with as many of padding

inline QByteArray tag(int code, const QByteArray& value) {
    return QByteArray::number(code).rightJustified(3) + '\n' + value + '\n';
}
inline QByteArray tag(int code, double value) {
    return tag(code, QByteArray::number(value, 'f', 4));
}

inline QByteArray soundOf(const Note& note) {
    QByteArray tags =
        tag(71, "1") + tag(72, "1") + tag(91, "40000") + tag(92, "40000") + tag(73, "1") + tag(74, "8") + tag(75, "0");
    const int size = note.seconds * kBytesPerSecond;
    tags += tag(93, QByteArray::number(size));
    constexpr int kChunk = 127;
    for (int from = 0; from < size; from += kChunk) {
        QByteArray chunk(std::min(kChunk, size - from), '\0');
        for (int i = 0; i < chunk.size(); ++i)
            chunk[i] = char((from + i) % 4 < 2 ? (from + i) / 4 % 64 : 0);
        tags += tag(310, chunk.toHex().toUpper());
    }
    return tags;
}

inline QByteArray recordOf(const Note& note) {
    const bool isRegion = note.regionWidth > 0;
    QByteArray tags = tag(0, "PHONOMARK") + tag(5, note.handle) + tag(100, "AcDbEntity") + tag(8, "0") +
                      tag(100, "MxDbPhonomark") + tag(90, "1") + tag(70, isRegion ? "1" : "0");
    if (isRegion)
        tags += tag(11, note.x) + tag(21, note.y) + tag(31, 0.0) + tag(12, note.x + note.regionWidth) +
                tag(22, note.y + note.regionHeight) + tag(32, 0.0);
    else
        tags += tag(10, note.x) + tag(20, note.y) + tag(30, 0.0);
    tags += tag(290, note.seconds ? "1" : "0");
    if (note.seconds)
        tags += soundOf(note);
    return tags + tag(1, note.speaker) + tag(2, "2026/03/07 09:05:00") +
           tag(3, QByteArray::number(note.seconds) + ".0\"");
}

inline QByteArray lineOf(const QByteArray& handle, double x1, double y1, double x2, double y2) {
    return tag(0, "LINE") + tag(5, handle) + tag(100, "AcDbEntity") + tag(8, "0") + tag(100, "AcDbLine") + tag(10, x1) +
           tag(20, y1) + tag(30, 0.0) + tag(11, x2) + tag(21, y2) + tag(31, 0.0);
}

/// A drawing of notes and other entities, with its list of notes.
inline QByteArray drawingOf(const std::vector<Note>& notes, const QByteArray& others) {
    QByteArray entities = others, list;
    for (const Note& note : notes) {
        entities += recordOf(note);
        list += tag(102, note.handle);
    }
    return tag(0, "SECTION") + tag(2, "HEADER") + tag(9, "$ACADVER") + tag(1, "AC1021") + tag(9, "$HANDSEED") +
           tag(5, "1000") + tag(0, "ENDSEC") + tag(0, "SECTION") + tag(2, "ENTITIES") + entities + tag(0, "ENDSEC") +
           tag(0, "SECTION") + tag(2, "OBJECTS") + tag(0, "DICTIONARY") + tag(5, "C") + tag(330, "0") +
           tag(100, "AcDbDictionary") + tag(281, "1") + tag(3, "PHONO_MARK") + tag(350, "14") + tag(0, "DICTIONARY") +
           tag(5, "14") + tag(330, "C") + tag(100, "AcDbDictionary") + tag(281, "1") + tag(3, "VOICE_LIST") +
           tag(350, "15") + tag(0, "XRECORD") + tag(5, "15") + tag(330, "14") + tag(100, "AcDbXrecord") +
           tag(280, "1") + list + tag(0, "ENDSEC") + tag(0, "EOF");
}

struct RealNotes : RealScreen {
    /// Opens a drawing of these; from then on a unit of it is a pixel, counted from the lower left corner of the view.
    void open(const std::vector<Note>& notes, const QByteArray& others = {}, const QStringList& first = {}) {
        QFile file(drawing);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(drawingOf(notes, others));
        file.close();
        ASSERT_NO_FATAL_FAILURE(start(first + QStringList{drawing}, "notes.dxf"));
        ASSERT_TRUE(comesTrue([&] { return witness.sees("drawingView") && witness.prompt() == "Command:"; }));
        // Tabs and bars that come with a drawing change the view.
        ASSERT_TRUE(comesTrue([&] {
            view = witness.visible("drawingView").place;
            const QString size = QString("%1,%2").arg(view.width()).arg(view.height());
            return command({"ZOOM", "0,0", size}) && answers() && view == witness.visible("drawingView").place;
        }));
    }
    QPoint at(double x, double y) const { return {qRound(view.left() + x), qRound(view.top() + view.height() - y)}; }
    void pointAt(const QPoint& place) { hand({"mousemove", QString::number(place.x()), QString::number(place.y())}); }
    void clickAt(const QPoint& place, int button = 1) {
        pointAt(place);
        hand({"click", QString::number(button)});
    }

    /// The value of a system variable.
    QString variable(const QString& name) {
        const int before = witness.timesSaid(name + " = ");
        if (!command({"SETVAR", name}) || witness.timesSaid(name + " = ") == before)
            return {};
        return witness.said().section(name + " = ", -1).section(' ', 0, 0).section('\n', 0, 0);
    }
    bool isRunning() {
        merix->process().waitForFinished(1);
        return merix->process().state() == QProcess::Running;
    }
    bool save() {
        const int before = witness.timesSaid("Saved ");
        type({"SAVE"});
        return comesTrue([&] { return witness.timesSaid("Saved ") > before; });
    }
    Record noteIn(const QString& path, const QByteArray& handle) const {
        for (const Record& note : notesIn(path))
            if (value(note, 5) == handle)
                return note;
        return {};
    }
    Record note(const QByteArray& handle) const { return noteIn(drawing, handle); }
    static std::string told(const Record& note) {
        return value(note, 5).toStdString() + ": " + value(note, 3).toStdString() + ", recorded " +
               value(note, 290).toStdString() + ", bytes " + value(note, 93).toStdString();
    }
    static bool isSpoken(const Record& note) {
        return number(note, 290) == 1 && number(note, 93) > kBytesPerSecond && value(note, 3) != "0.0\"";
    }
    static bool isSilent(const Record& note) {
        return !note.empty() && number(note, 290) == 0 && number(note, 93) == 0 && value(note, 3) == "0.0\"";
    }

    /// A place on the marker: it stands above the point and to the right of it, or on the corner of the region.
    QPoint markerOf(const Note& note) const {
        const int off = note.regionWidth > 0 ? 16 : 25;
        return at(note.x + note.regionWidth + off, note.y + note.regionHeight + off);
    }
    bool hasTagOver(const Note& note) const {
        const QPoint corner = at(note.x + note.regionWidth, note.y + note.regionHeight);
        return witness.tag().topLeft() == corner - QPoint(0, 36);
    }
    /// The cursor jumps onto the note's marker.
    bool hover(const Note& note) {
        pointAt(markerOf(note) - QPoint(1, 0));
        pointAt(markerOf(note));
        return comesTrue([&] { return hasTagOver(note); });
    }
    /// Where there is no note.
    void leaveNotes() {
        int moves = 0;
        EXPECT_TRUE(comesTrue([&] {
            pointAt(at(view.width() - 40 - ++moves % 2, 40));
            return !witness.hasTag();
        }));
    }

    void press() { hand({"mousedown", "1"}); }
    void release() { hand({"mouseup", "1"}); }
    /// Holds the button until the microphone listens, and speaks.
    bool holdAndSpeak(int ms = kSpokenMs) {
        press();
        if (!comesTrue([&] { return isListening(); }))
            return false;
        QThread::msleep(static_cast<unsigned long>(ms));
        return true;
    }
    bool fallsSilent() {
        return comesTrue([&] { return !isListening(); }, 10'000);
    }
    /// A whole take of a note.
    bool record(const Note& note, int ms = kSpokenMs) {
        if (!hover(note) || !holdAndSpeak(ms))
            return false;
        release();
        return fallsSilent();
    }
    /// A press that is too short to speak in, said to be so. The opening of the microphone is a part of it.
    bool slip(const Note& note) {
        const int before = witness.timesSaid(kTooShort);
        for (int trial = 0; trial < 5 && witness.timesSaid(kTooShort) == before; ++trial) {
            leaveNotes();
            if (!hover(note))
                return false;
            hand({"mousedown", "1", "sleep", "0.65", "mouseup", "1"});
            comesTrue([&] { return witness.timesSaid(kTooShort) > before; }, 2'000);
        }
        return witness.timesSaid(kTooShort) == before + 1;
    }
    pid_t serverProcess() const {
        QFile file(sound + "/pids");
        if (file.open(QIODevice::ReadOnly))
            for (const QByteArray& line : file.readAll().split('\n'))
                if (line.startsWith("server "))
                    return line.split(' ')[1].toInt();
        return 0;
    }

    static constexpr const char* kTooShort = "shorter than one second";
    const QString drawing = folder.filePath("notes.dxf");
    QRect view; ///< of the drawing, on the screen
};

} // namespace merix::test
