// SPDX-License-Identifier: MIT
// Two hundred long notes through another program: what Merix wrote comes out of it tag for tag, and Merix reads its
// own recordings from what that program saved.
#include "phonomark/entity/phonomark.h"

#include "merix/io/drawing_file.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/module_fixture.h"
#include "tests/support/process.h"

#include <QCryptographicHash>
#include <QFile>

#include <cstdlib>
#include <map>

using namespace merix::test;
using merix::db::DatabaseImp;

namespace {

constexpr int kNotes = 200;
constexpr std::size_t kBytes = 480'000;

QByteArray hashOf(const MxDbPhonomark& note) {
    QCryptographicHash hash(QCryptographicHash::Md5);
    tWAVEFORMATEX format;
    note.getWaveFormat(format);
    hash.addData(reinterpret_cast<const char*>(&format), sizeof format);
    hash.addData(reinterpret_cast<const char*>(note.getAudioData()), static_cast<int>(note.getAudioDataSize()));
    CStdStr<wchar_t> text;
    for (const auto get : {&MxDbPhonomark::getSpokesman, &MxDbPhonomark::getDatatime, &MxDbPhonomark::getDuration}) {
        (note.*get)(text);
        hash.addData(QString::fromStdWString(text).toUtf8());
    }
    return hash.result();
}

/// The notes of the drawing: hashes of what they hold by handle.
std::map<std::uint64_t, QByteArray> notesOf(MxDbDatabase& database) {
    std::map<std::uint64_t, QByteArray> notes;
    for (const merix::db::ObjectStub& stub : database.imp().stubs())
        if (stub.object && !stub.erased && stub.object->isKindOf(MxDbPhonomark::desc()))
            notes[stub.handle.value()] = hashOf(static_cast<const MxDbPhonomark&>(*stub.object));
    return notes;
}

/// What stands in a file of notes' records, and of the reactors and the list that go with them, read line by line.
struct Written {
    std::map<QByteArray, QByteArray> tags; ///< a hash of all tags by type and handle
    std::map<int, int> chunks;             ///< how many chunks have how many bytes
    int notes = 0;
};

Written writtenIn(const QString& path) {
    Written written;
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    QCryptographicHash hash(QCryptographicHash::Md5);
    QByteArray type, handle;
    const auto finish = [&] {
        if (type == "PHONOMARK" || type == "PhonomarkPsReactor" || type == "XRECORD")
            written.tags[type + ' ' + handle] = hash.result();
        written.notes += type == "PHONOMARK" ? 1 : 0;
    };
    while (!file.atEnd()) {
        const int code = file.readLine().trimmed().toInt();
        QByteArray value = file.readLine();
        while (value.endsWith('\n') || value.endsWith('\r'))
            value.chop(1);
        if (code == 0) {
            finish();
            hash.reset();
            handle.clear();
            type = value;
        }
        if (code == 5 && handle.isEmpty())
            handle = value;
        hash.addData(QByteArray::number(code) + '\n' + value + '\n');
        if (type == "PHONOMARK" && code == 310)
            ++written.chunks[value.size() / 2];
    }
    return written;
}

class NoteRoundTripTest : public ModuleTest {
protected:
    void record(MxDbObjectId id, unsigned seed) {
        MxDbPhonomark* open = nullptr;
        ASSERT_EQ(mxdbOpenObject(open, id, Mx::kForWrite), Mx::eOk);
        open->assertWriteEnabled();
        auto* bytes = static_cast<unsigned char*>(std::calloc(kBytes + 1, 1));
        for (std::size_t i = 0; i < kBytes; ++i)
            bytes[i] = static_cast<unsigned char>((seed = seed * 1664525U + 1013904223U) >> 24);
        open->setAudioData(bytes);
        open->setAudioDataSize(kBytes);
        tWAVEFORMATEX format;
        format.wFormatTag = 1;
        format.nAvgBytesPerSec = 0xFFFF0000U + seed;
        format.nBlockAlign = 0xFFFE;
        open->setWaveFormat(&format);
        open->setSpokesman(L"Zo\u00eb \u5f20 ^ \\U+0041 " + std::to_wstring(seed));
        open->setDatatime(L"2026/3/7 9:5:0");
        open->setDuration(L"6.0\"");
        open->close();
    }
    QString path(const char* name) const { return folder.filePath(QString::fromLatin1(name)); }
};

} // namespace

TEST_F(NoteRoundTripTest, TwoHundredLongNotesPassThroughAnotherProgramUnchanged) {
    const MxDbObjectId line = addLine();
    for (int i = 0; i < kNotes; ++i) {
        const MxDbObjectId id = addNote(i == 7 ? kObjectNote : kPointNote, {i * 1.5, -i / 3.0, 0});
        record(id, static_cast<unsigned>(i) + 1);
        if (i == 7) {
            note(id).setAttachObj(line);
            ASSERT_TRUE(livePhManager()->addNotifier(&note(id), line));
        }
    }
    const auto before = notesOf(database());
    ASSERT_EQ(before.size(), std::size_t(kNotes));
    ASSERT_TRUE(merix::ap::DocManager::instance().saveAs(document(), path("notes.dxf")).ok);
    merix::ap::DocManager::instance().close(document()); // a hundred megabytes

    const Written ours = writtenIn(path("notes.dxf"));
    EXPECT_EQ(ours.notes, kNotes);
    EXPECT_EQ(ours.tags.size(), std::size_t(kNotes) + 2);
    constexpr int kWhole = kBytes / 127, kRest = kBytes % 127;
    EXPECT_EQ(ours.chunks, (std::map<int, int>{{kRest, kNotes}, {127, kWhole * kNotes}}));

    const Outcome peer = merix::test::run(QStringLiteral("/usr/bin/python3"),
                                          {QStringLiteral("-c"),
                                           QStringLiteral("import sys, ezdxf\n"
                                                          "ezdxf.readfile(sys.argv[1]).saveas(sys.argv[2])\n"),
                                           path("notes.dxf"), path("theirs.dxf")},
                                          folder.path());
    ASSERT_EQ(peer.status, 0) << peer.err.toStdString();
    const Written theirs = writtenIn(path("theirs.dxf"));
    EXPECT_EQ(theirs.notes, kNotes);
    for (const auto& [record, tags] : ours.tags) {
        const auto found = theirs.tags.find(record);
        ASSERT_NE(found, theirs.tags.end()) << record.toStdString();
        EXPECT_EQ(found->second, tags) << record.toStdString();
    }

    MxDbDatabase again;
    const auto read = merix::io::readDrawing(path("theirs.dxf").toStdString(), again);
    ASSERT_EQ(read.status, Mx::eOk) << read.error;
    EXPECT_THAT(read.notes, ::testing::IsEmpty());
    EXPECT_TRUE(notesOf(again) == before);
}
