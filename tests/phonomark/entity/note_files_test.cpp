// SPDX-License-Identifier: MIT
// Notes through files: what a note holds is the same after every kind of file, after every way between them, and after
// undo and redo.
#include "phonomark/entity/phonomark.h"

#include "host/db/dictionary.h"
#include "merix/db/access.h"
#include "merix/io/drawing_file.h"
#include "merix/io/dxf_binary.h"
#include "phonomark/app/entry_point.h"
#include "phonomark/app/phonomark_app.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/entity/ps_reactor.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/module_fixture.h"
#include "tests/support/dxf_tags.h"

#include <QFile>

#include <cstdlib>
#include <cstring>
#include <memory>

using merix::db::DatabaseImp;
using merix::io::DxfForm;
using merix::test::Tag;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

enum class Kind { kText, kBinary, kNative };
constexpr std::array kKinds{Kind::kText, Kind::kBinary, Kind::kNative};

const char* nameOf(Kind kind) {
    return kind == Kind::kText ? "text" : kind == Kind::kBinary ? "binary" : "native";
}

/// Everything that belongs to a note, with handles in place of ids so that drawings can be compared.
struct NoteState {
    std::uint64_t handle = 0;
    int type = 0;
    MxGePoint3d position, minimum, maximum;
    std::uint64_t attached = 0, replyTo = 0;
    bool recorded = false;
    std::string format, sound;
    std::wstring speaker, date, duration;
    std::uint64_t dictionary = 0, reactor = 0, noteOfReactor = 0;
    std::vector<std::uint64_t> reactorsOfObject;
    bool operator==(const NoteState&) const = default;
};

void PrintTo(const NoteState& state, std::ostream* out) {
    *out << "note " << std::hex << state.handle << std::dec << " type " << state.type << " sound " << state.sound.size()
         << " attached " << state.attached << " reply " << state.replyTo << " dictionary " << state.dictionary
         << " reactor " << state.reactor << " listed " << state.reactorsOfObject.size();
}

std::uint64_t handleOf(MxDbObjectId id) {
    return id.isNull() ? 0 : id.handle().value();
}

NoteState stateOf(const MxDbPhonomark& note) {
    NoteState state;
    state.handle = handleOf(note.objectId());
    state.type = note.getPhonomarkType();
    state.position = note.position();
    if (state.type == kRegionNote || state.type == kObjectNote) {
        state.minimum = note.extents().minPoint();
        state.maximum = note.extents().maxPoint();
    }
    state.attached = handleOf(note.attachObj());
    state.replyTo = handleOf(note.replyTo());
    state.recorded = note.isRecord();
    tWAVEFORMATEX format;
    note.getWaveFormat(format);
    state.format.assign(reinterpret_cast<const char*>(&format), sizeof format);
    if (note.getAudioData())
        state.sound.assign(reinterpret_cast<const char*>(note.getAudioData()), note.getAudioDataSize());
    CStdStr<wchar_t> text;
    note.getSpokesman(text), state.speaker = text;
    note.getDatatime(text), state.date = text;
    note.getDuration(text), state.duration = text;
    state.dictionary = handleOf(note.extensionDictionary());
    if (auto* dictionary = static_cast<MxDbDictionary*>(DatabaseImp::peek(note.extensionDictionary()))) {
        const merix::db::ReadAccess readable(*dictionary);
        MxDbObjectId id;
        dictionary->getAt(L"PHONOMARKASSOC", id);
        state.reactor = handleOf(id);
        if (const MxDbObject* reactor = DatabaseImp::peek(id); reactor && reactor->isKindOf(PhonomarkPsReactor::desc()))
            state.noteOfReactor = handleOf(static_cast<const PhonomarkPsReactor*>(reactor)->noteId());
    }
    if (const MxDbObject* object = DatabaseImp::peek(note.attachObj()))
        for (const MxDbReactorEntry& entry : object->reactors())
            if (mxdbIsPersistentReactor(entry))
                state.reactorsOfObject.push_back(handleOf(entry.persistent));
    return state;
}

std::vector<NoteState> notesOf(MxDbDatabase& database) {
    std::vector<NoteState> states;
    for (const merix::db::ObjectStub& stub : database.imp().stubs())
        if (stub.object && !stub.erased && stub.object->isKindOf(MxDbPhonomark::desc()))
            states.push_back(stateOf(static_cast<const MxDbPhonomark&>(*stub.object)));
    std::sort(states.begin(), states.end(), [](const auto& a, const auto& b) { return a.handle < b.handle; });
    return states;
}

/// The handles of the drawing's note list, in order.
std::vector<std::wstring> listOf(MxDbDatabase& database) {
    std::vector<std::wstring> handles;
    MxDbObjectId id = database.namedObjectsDictionaryId();
    for (const wchar_t* key : {L"PHONO_MARK", L"VOICE_LIST"}) {
        MxDbDictionary* dictionary = nullptr;
        if (mxdbOpenObject(dictionary, id, Mx::kForRead) != Mx::eOk)
            return handles;
        dictionary->getAt(key, id);
        dictionary->close();
    }
    MxDbXrecord* list = nullptr;
    if (mxdbOpenObject(list, id, Mx::kForRead) != Mx::eOk)
        return handles;
    resbuf* chain = nullptr;
    list->rbChain(&chain);
    for (const resbuf* element = chain; element; element = element->rbnext)
        handles.push_back(std::get<std::wstring>(element->resval));
    mxutRelRb(chain);
    list->close();
    return handles;
}

class NoteFilesTest : public ModuleTest {
protected:
    std::string pathOf(const std::string& name) { return folder.filePath(QString::fromStdString(name)).toStdString(); }

    std::string write(MxDbDatabase& from, Kind kind, const std::string& name) {
        const std::string path = pathOf(name + (kind == Kind::kNative ? ".merix" : ".dxf"));
        const auto result =
            kind == Kind::kNative
                ? merix::io::writeDrawing(path, from)
                : merix::io::writeDrawing(path, from, kind == Kind::kText ? DxfForm::kText : DxfForm::kBinary);
        EXPECT_EQ(result.status, Mx::eOk) << result.error;
        EXPECT_THAT(result.notes, IsEmpty());
        return path;
    }
    std::unique_ptr<MxDbDatabase> read(const std::string& path) {
        auto database = std::make_unique<MxDbDatabase>();
        const auto result = merix::io::readDrawing(path, *database);
        EXPECT_EQ(result.status, Mx::eOk) << result.error;
        EXPECT_THAT(result.notes, IsEmpty());
        return database;
    }

    /// Changes a note as a command does.
    template <class Change> void change(MxDbObjectId id, Change apply) {
        const DocumentLock lock(&document(), L"Change", 0);
        MxDbPhonomark* open = nullptr;
        ASSERT_EQ(mxdbOpenObject(open, id, Mx::kForWrite), Mx::eOk);
        open->assertWriteEnabled();
        apply(*open);
        open->close();
    }
    static void record(MxDbPhonomark& note, std::size_t size, unsigned seed = 1) {
        tWAVEFORMATEX format;
        format.wFormatTag = 1;
        format.nChannels = 1;
        format.nSamplesPerSec = 40000;
        format.nAvgBytesPerSec = 0xFFFF0000 + seed;
        format.nBlockAlign = 0xFFFE;
        format.wBitsPerSample = 16;
        auto* bytes = static_cast<unsigned char*>(std::calloc(size + 1, 1));
        unsigned state = seed;
        for (std::size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<unsigned char>((state = state * 1664525U + 1013904223U) >> 24);
        note.delAudioData();
        note.setAudioData(bytes);
        note.setAudioDataSize(static_cast<unsigned>(size));
        note.setWaveFormat(&format);
    }

    /// Every type of note, with and without recording, one attached, all listed.
    void fill() {
        m_line = addLine();
        const MxDbObjectId point = addNote(kPointNote, {0.1, -2.5e-7, 3e9});
        change(point, [](MxDbPhonomark& note) {
            record(note, 300);
            note.setSpokesman(L"Zo\u00eb \u5f20 \U0001F399");
            note.setDatatime(L"2026/3/7 9:5:0");
            note.setDuration(L"2.4\"");
        });
        change(addNote(kRegionNote), [](MxDbPhonomark& note) {
            note.setExtents(MxDbExtents({-1, -2, -3}, {4.25, 5.5, 1e-9}));
        });
        const MxDbObjectId attached = addNote(kObjectNote);
        change(attached, [this](MxDbPhonomark& note) {
            note.setAttachObj(m_line);
            record(note, 128, 7);
        });
        ASSERT_TRUE(livePhManager()->addNotifier(&note(attached), m_line));
        change(addNote(kReplyNote), [point](MxDbPhonomark& note) { note.setReplyTo(point); });
        change(addNote(), [](MxDbPhonomark& note) { record(note, 0); });
        change(addNote(77), [](MxDbPhonomark& note) { note.setSpokesman(L"of a kind to come"); });
        ASSERT_TRUE(livePhManager()->SaveVoiceHandle(&database()));
    }

    MxDbObjectId m_line;
};

std::vector<NoteState> withoutReplies(std::vector<NoteState> states) {
    for (NoteState& state : states)
        state.replyTo = 0;
    return states;
}

/// The lengths of the chunks of all notes in the file, and the numbers announced.
struct Chunks {
    std::vector<std::size_t> lengths;
    std::vector<std::size_t> announced;
};

Chunks chunksIn(const std::vector<Tag>& tags) {
    Chunks chunks;
    bool inNote = false;
    for (const Tag& tag : tags) {
        if (tag.code == 0)
            inNote = tag.value == "PHONOMARK";
        if (inNote && tag.code == 310)
            chunks.lengths.push_back(static_cast<std::size_t>(tag.value.size()) / 2);
        if (inNote && tag.code == 93)
            chunks.announced.push_back(tag.value.toULongLong());
    }
    return chunks;
}

std::vector<Tag> tagsOf(const std::string& path) {
    return merix::test::readTags(QString::fromStdString(path));
}

std::vector<std::size_t> expectedLengths(std::size_t size) {
    std::vector<std::size_t> lengths(size / 127, 127);
    if (size % 127 != 0 || size == 0)
        lengths.push_back(size % 127);
    return lengths;
}

QByteArray bytesOf(const std::string& path) {
    QFile file(QString::fromStdString(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

} // namespace

TEST_F(NoteFilesTest, EveryWayBetweenTheKindsOfFileKeepsTheNotes) {
    fill();
    const auto before = notesOf(database());
    const auto list = listOf(database());
    ASSERT_EQ(before.size(), 6U);
    ASSERT_EQ(list.size(), 6U);
    ASSERT_NE(before[2].noteOfReactor, 0U);
    ASSERT_EQ(before[2].reactorsOfObject, std::vector<std::uint64_t>{before[2].reactor});
    const std::function<void(MxDbDatabase&, const std::string&, bool)> walk = [&](MxDbDatabase& from,
                                                                                  const std::string& way, bool native) {
        if (std::count(way.begin(), way.end(), '-') == 4)
            return;
        for (const Kind kind : kKinds) {
            const std::string name = way + "-" + nameOf(kind);
            const auto drawing = read(write(from, kind, name));
            // Which note a reply answers is known to the native form alone.
            const bool stillNative = native && kind == Kind::kNative;
            ASSERT_EQ(notesOf(*drawing), stillNative ? before : withoutReplies(before)) << name;
            ASSERT_EQ(listOf(*drawing), list) << name;
            walk(*drawing, name, stillNative);
            if (HasFatalFailure())
                return;
        }
    };
    walk(database(), "way", true);
}

TEST_F(NoteFilesTest, ADxfComesBackByteForByteWhateverWayItTook) {
    fill();
    const std::string first = write(database(), Kind::kText, "first");
    const QByteArray bytes = bytesOf(first);
    for (const auto& way : {std::vector{Kind::kText},
                            {Kind::kNative},
                            {Kind::kBinary},
                            {Kind::kNative, Kind::kBinary},
                            {Kind::kBinary, Kind::kNative},
                            {Kind::kNative, Kind::kNative, Kind::kBinary}}) {
        auto drawing = read(first);
        int step = 0;
        for (const Kind kind : way)
            drawing = read(write(*drawing, kind, "step" + std::to_string(step++)));
        EXPECT_EQ(bytesOf(write(*drawing, Kind::kText, "last")), bytes) << way.size();
    }
}

TEST_F(NoteFilesTest, RecordingsOfEverySizeComeBackBitForBit) {
    for (const std::size_t size : {0U, 1U, 99U, 100U, 127U, 128U, 254U, 255U, 5'000'000U}) {
        const MxDbObjectId id = addNote();
        change(id, [size](MxDbPhonomark& note) { record(note, size, static_cast<unsigned>(size) + 5); });
        const auto before = notesOf(database());
        ASSERT_EQ(before[0].sound.size(), size);
        for (const Kind kind : kKinds) {
            const std::string path = write(database(), kind, "size");
            EXPECT_TRUE(notesOf(*read(path)) == before) << size << " bytes, " << nameOf(kind);
            if (kind == Kind::kNative)
                continue;
            const QByteArray bytes = bytesOf(path);
            if (kind == Kind::kBinary) {
                const auto text = merix::io::binaryDxfToText({bytes.constData(), std::size_t(bytes.size())});
                ASSERT_EQ(text.error, "");
                QFile file(QString::fromStdString(path));
                ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text.text.data(), qint64(text.text.size())));
            }
            const Chunks chunks = chunksIn(tagsOf(path));
            EXPECT_EQ(chunks.announced, std::vector<std::size_t>{size});
            EXPECT_TRUE(chunks.lengths == expectedLengths(size)) << size << " bytes, " << nameOf(kind);
        }
        livePhManager()->ErasePhonomark(id, &document());
    }
}

TEST_F(NoteFilesTest, UndoAndRedoBringRecordingsOfEverySizeBackBitForBit) {
    const MxDbObjectId id = addNote();
    std::vector<NoteState> states{stateOf(note(id))};
    for (const std::size_t size : {1U, 0U, 127U, 128U, 254U, 255U, 99U, 100U, 5'000'000U}) {
        change(id, [size](MxDbPhonomark& note) { record(note, size, static_cast<unsigned>(size)); });
        states.push_back(stateOf(note(id)));
    }
    auto& manager = merix::ap::DocManager::instance();
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = states.size() - 1; i-- > 0;) {
            ASSERT_TRUE(manager.undo(document()));
            // A silent state leaves the bytes where they are; the mark says that they do not count.
            NoteState now = stateOf(note(id));
            if (i == 0)
                now.sound.clear(), now.format = states[0].format;
            EXPECT_TRUE(now == states[i]) << "back to " << i;
        }
        for (std::size_t i = 1; i < states.size(); ++i) {
            ASSERT_TRUE(manager.redo(document()));
            EXPECT_TRUE(stateOf(note(id)) == states[i]) << "forward to " << i;
        }
    }
}

TEST_F(NoteFilesTest, ANoteRecordedAnewIsWrittenAsIfItHadNeverBeenAnother) {
    const MxDbObjectId id = addNote();
    const std::vector<std::size_t> sizes{0, 1, 127, 128, 254, 255, 1000};
    for (const std::size_t first : sizes) {
        change(id, [first](MxDbPhonomark& note) { record(note, first); });
        const std::string path = write(database(), Kind::kText, "first");
        for (const std::size_t second : sizes) {
            const auto drawing = read(path);
            const merix::db::WorkingDatabaseScope working(drawing.get());
            MxDbPhonomark* open = nullptr;
            ASSERT_EQ(mxdbOpenObject(open, MxDbObjectId(drawing->imp().find(id.handle())), Mx::kForWrite), Mx::eOk);
            open->assertWriteEnabled();
            record(*open, second, 9);
            open->close();
            const auto expected = notesOf(*drawing);
            const auto tags = tagsOf(write(*drawing, Kind::kText, "second"));
            EXPECT_EQ(chunksIn(tags).lengths, expectedLengths(second)) << first << " then " << second;
            const auto records = merix::test::records(tags, "ENTITIES");
            ASSERT_EQ(records.size(), 1U);
            std::vector<int> codes;
            for (const Tag& tag : records[0])
                codes.push_back(tag.code);
            std::vector<int> wanted{0, 5, 330, 100, 8, 100, 90, 70, 10, 20, 30, 290, 71, 72, 91, 92, 73, 74, 75, 93};
            wanted.insert(wanted.end(), expectedLengths(second).size(), 310);
            wanted.insert(wanted.end(), {1, 2, 3});
            EXPECT_THAT(codes, ElementsAreArray(wanted)) << first << " then " << second;
            EXPECT_TRUE(notesOf(*read(pathOf("second.dxf"))) == expected) << first << " then " << second;
        }
    }
}

TEST_F(NoteFilesTest, TextsOfEveryKindSurvive) {
    const std::wstring million(1'000'000, L'\u00e4');
    const std::vector<std::pair<std::wstring, std::wstring>> texts{
        {std::wstring(L"before\0behind", 13), L"before"}, // a text ends at its zero
        {L"\xD83D alone", L"\xD83D alone"},
        {L"alone \xDE00", L"alone \xDE00"},
        {L"two \xDE00\xD83D turned", L"two \xDE00\xD83D turned"},
        {L"\U0001F399 beyond the plane", L"\U0001F399 beyond the plane"},
        {L"line\nline\r\ttab\x7F", L"line\nline\r\ttab\x7F"},
        {L"^J \\U+0041 \\P %%c %s %n \\\\U+00e4 ^ ", L"^J \\U+0041 \\P %%c %s %n \\\\U+00e4 ^ "},
        {L"  blanks around  ", L"  blanks around  "},
        {L"}", L"}"},
        {L"{ACAD_REACTORS", L"{ACAD_REACTORS"},
        {L"", L""},
        {million, million}};
    for (const auto& [written, expected] : texts) {
        const MxDbObjectId id = addNote();
        change(id, [&written](MxDbPhonomark& note) {
            note.setSpokesman(written);
            note.setDatatime(written);
            note.setDuration(written);
        });
        for (const Kind kind : kKinds) {
            const auto states = notesOf(*read(write(database(), kind, "texts")));
            ASSERT_EQ(states.size(), 1U);
            EXPECT_TRUE(states[0].speaker == expected)
                << nameOf(kind) << ' ' << ::testing::PrintToString(written.substr(0, 40));
            EXPECT_TRUE(states[0].date == expected) << nameOf(kind);
            EXPECT_TRUE(states[0].duration == expected) << nameOf(kind);
        }
        change(id, [](MxDbPhonomark& note) { note.setSpokesman(L"another"); });
        ASSERT_TRUE(merix::ap::DocManager::instance().undo(document()));
        EXPECT_TRUE(stateOf(note(id)).speaker == expected) << "undo";
        livePhManager()->ErasePhonomark(id, &document());
    }
}

TEST_F(NoteFilesTest, ANativeDrawingBecomesDxfWithoutTheModule) {
    fill();
    const auto before = notesOf(database());
    const auto list = listOf(database());
    const std::string native = write(database(), Kind::kNative, "a");
    const auto tags = tagsOf(write(database(), Kind::kText, "direct"));
    merix::ap::DocManager::instance().close(document());
    mxrxEntryPoint(kUnloadAppMsg, this);
    ASSERT_FALSE(mxrxFindMxRxClass(L"MxDbPhonomark"));
    std::string text, binary;
    {
        const auto without = read(native);
        text = write(*without, Kind::kText, "text");
        // Once more through a native file that knows the module only by name.
        binary = write(*read(write(*without, Kind::kNative, "b")), Kind::kBinary, "binary");
    }
    const auto entities = merix::test::records(tags, "ENTITIES");
    const auto kept = merix::test::records(tagsOf(text), "ENTITIES");
    ASSERT_EQ(kept.size(), entities.size());
    for (std::size_t i = 0; i < kept.size(); ++i)
        EXPECT_EQ(kept[i], entities[i]) << i;
    ASSERT_EQ(mxrxEntryPoint(kInitAppMsg, this), 0);
    for (const std::string& path : {text, binary}) {
        const auto with = read(path);
        EXPECT_EQ(notesOf(*with), withoutReplies(before)) << path;
        EXPECT_EQ(listOf(*with), list) << path;
    }
}

TEST_F(NoteFilesTest, TheDxfOfARecordingCostsANativeDrawingNothing) {
    const MxDbObjectId id = addNote();
    const auto silent = bytesOf(write(database(), Kind::kNative, "silent")).size();
    change(id, [](MxDbPhonomark& note) { record(note, 480'000); });
    const auto recorded = bytesOf(write(database(), Kind::kNative, "recorded")).size();
    EXPECT_LT(recorded - silent, 480'000 + 3 * 65'536) << "the recording once, in whole pages";
}
