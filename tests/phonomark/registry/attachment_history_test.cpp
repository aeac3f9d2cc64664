// SPDX-License-Identifier: MIT
// Attached notes through all that can befall them: the object, the note or both erased, changed, attached anew, undone,
// redone and saved, in every order. After each step nothing refers to what is not there, undo and redo lead to the very
// states they left, and a file holds what the drawing holds.
#include "merix/db/access.h"
#include "merix/db/entities.h"
#include "merix/io/drawing_file.h"
#include "phonomark/dbutil/attachments.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/entity/ps_reactor.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/module_fixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <sstream>

using merix::ap::DocManager;
using merix::db::DatabaseImp;
using merix::db::Line;

namespace {

MxDbDictionary* dictionaryOf(const MxDbObject& note) {
    return static_cast<MxDbDictionary*>(DatabaseImp::peek(note.data().extensionDictionary));
}

MxDbObjectId reactorOf(const MxDbObject& note) {
    MxDbObjectId id;
    if (const MxDbDictionary* dictionary = dictionaryOf(note)) {
        const merix::db::ReadAccess readable(*dictionary);
        dictionary->getAt(L"PHONOMARKASSOC", id);
    }
    return id;
}

std::vector<MxDbObject*> living(MxDbDatabase& database) {
    std::vector<MxDbObject*> objects;
    for (const merix::db::ObjectStub& stub : database.imp().stubs())
        if (stub.object && !stub.erased)
            objects.push_back(stub.object);
    return objects;
}

std::string hex(MxDbObjectId id) {
    std::ostringstream text;
    text << std::hex << (id.isNull() ? 0 : id.handle().value());
    return text.str();
}

std::string text(const MxDbExtents& box) {
    std::ostringstream out;
    out << box.minPoint().x << ' ' << box.minPoint().y << ' ' << box.maxPoint().x << ' ' << box.maxPoint().y;
    return out.str();
}

/// The living lines and notes with all that binds them, the same for a drawing and for its file.
std::string describe(MxDbDatabase& database) {
    std::vector<std::string> lines;
    for (const MxDbObject* object : living(database)) {
        const merix::db::ReadAccess readable(*object);
        if (object->isKindOf(Line::desc())) {
            MxDbExtents box;
            static_cast<const Line*>(object)->getGeomExtents(box);
            std::string line = "line " + hex(object->objectId()) + " at " + text(box) + " lists";
            for (const MxDbReactorEntry& entry : object->reactors())
                if (mxdbIsPersistentReactor(entry) && DatabaseImp::peek(entry.persistent))
                    line += ' ' + hex(entry.persistent);
            lines.push_back(line);
        } else if (object->isKindOf(MxDbPhonomark::desc())) {
            const auto& note = static_cast<const MxDbPhonomark&>(*object);
            const auto* attached = DatabaseImp::peek(note.attachObj());
            lines.push_back("note " + hex(note.objectId()) + " on " + hex(note.attachObj()) + " by " +
                            hex(reactorOf(note)) + (attached ? " at " + text(note.extents()) : std::string()));
        } else if (object->isKindOf(PhonomarkPsReactor::desc())) {
            lines.push_back("reactor " + hex(object->objectId()) + " of " +
                            hex(static_cast<const PhonomarkPsReactor*>(object)->noteId()));
        }
    }
    std::sort(lines.begin(), lines.end());
    std::string all;
    for (const std::string& line : lines)
        all += line + '\n';
    return all;
}

/// What is wrong with the bonds in the drawing; empty when all is well. A file holds no erased reactors, a drawing may:
/// their erasure can be undone.
std::string broken(MxDbDatabase& database, bool ofFile) {
    std::string wrong;
    const auto expect = [&wrong](bool holds, const MxDbObject& object, const char* what) {
        if (!holds)
            wrong += hex(object.objectId()) + ": " + what + '\n';
    };
    for (const MxDbObject* object : living(database)) {
        const merix::db::ReadAccess readable(*object);
        for (const MxDbReactorEntry& entry : object->reactors()) {
            if (!mxdbIsPersistentReactor(entry))
                continue;
            expect(DatabaseImp::peek(entry.persistent, true), *object, "lists a reactor that is not there");
            const MxDbObject* reactor = DatabaseImp::peek(entry.persistent);
            expect(reactor || !ofFile, *object, "lists an erased reactor");
            if (!reactor || !reactor->isKindOf(PhonomarkPsReactor::desc()))
                continue;
            const MxDbObject* note = DatabaseImp::peek(static_cast<const PhonomarkPsReactor*>(reactor)->noteId());
            expect(note, *object, "lists the reactor of a note that is gone");
            expect(note && static_cast<const MxDbPhonomark*>(note)->attachObj() == object->objectId(), *object,
                   "lists the reactor of another object's note");
        }
        if (object->isKindOf(PhonomarkPsReactor::desc())) {
            const MxDbObject* owner = DatabaseImp::peek(object->ownerId());
            const MxDbObject* note = owner ? DatabaseImp::peek(owner->ownerId()) : nullptr;
            expect(note && note->objectId() == static_cast<const PhonomarkPsReactor*>(object)->noteId(), *object,
                   "is a reactor that its note does not own");
        }
        if (!object->isKindOf(MxDbPhonomark::desc()))
            continue;
        const auto& note = static_cast<const MxDbPhonomark&>(*object);
        expect(note.data().extensionDictionary.isNull() || dictionaryOf(note), note, "has an erased dictionary");
        const MxDbObject* attached = DatabaseImp::peek(note.attachObj());
        if (!attached)
            continue;
        expect(hasPersistentReactor(attached, reactorOf(note)), note, "is not followed by its object");
        const merix::db::ReadAccess readableToo(*attached);
        MxDbExtents box;
        static_cast<const MxDbEntity*>(attached)->getGeomExtents(box);
        expect(text(box) == text(note.extents()), note, "is not where its object is");
    }
    return wrong;
}

class AttachmentHistoryTest : public ModuleTest {
protected:
    void SetUp() override {
        ModuleTest::SetUp();
        begin();
    }
    /// A new drawing with a line and a note attached to it.
    void begin() {
        if (m_begun)
            DocManager::instance().close(document());
        if (m_begun)
            useDocument(*DocManager::instance().create());
        m_begun = true;
        for (const char* name : {"history.dxf", "history.merix"})
            QFile::remove(m_files.filePath(QString::fromLatin1(name)));
        m_line = addLine();
        attachNote();
        database().imp().undo.clear();
        m_states = {describe(database())};
        m_now = 0;
        m_did.clear();
    }

    /// Does one step; steps that make no sense now do nothing.
    ///   L erase the line      N erase the note as its tag window does    H erase it as any entity is
    ///   M move the line  G stretch it by a grip  O rotate it  C scale it
    ///   A attach a new note to a line without one
    ///   U undo  R redo        T, B, S: save as text, binary, native, and read back
    void step(char what) {
        m_did += what;
        const std::size_t units = undoUnits();
        switch (what) {
        case 'L':
            write<Line>(m_line, [](Line& line) { line.erase(); });
            break;
        case 'N':
            if (const MxDbObjectId id = livingNote(); !id.isNull())
                livePhManager()->ErasePhonomark(id, &document());
            break;
        case 'H':
            write<MxDbPhonomark>(livingNote(), [](MxDbPhonomark& note) { note.erase(); });
            break;
        case 'M':
            transform(MxGeMatrix3d::translation({1, 2, 0}));
            break;
        case 'O':
            transform(MxGeMatrix3d::about({3, 4, 0}, MxGeMatrix3d::rotation(0.5)));
            break;
        case 'C':
            transform(MxGeMatrix3d::about({3, 4, 0}, MxGeMatrix3d::scaling(1.5, 1.5, 1.5)));
            break;
        case 'G':
            write<Line>(m_line, [](Line& line) {
                std::vector<MxGePoint3d> grips;
                EXPECT_EQ(line.getGripPoints(grips), Mx::eOk);
                EXPECT_EQ(line.moveGripPointsAt({static_cast<int>(grips.size()) - 1}, {-2, 7, 0}), Mx::eOk);
            });
            break;
        case 'A':
            if (DatabaseImp::peek(m_line) && !IsAttachedVoice(m_line)) {
                const DocumentLock lock(&document(), L"Attach", 0);
                attachNote();
            }
            break;
        case 'U':
            EXPECT_EQ(DocManager::instance().undo(document()), m_now > 0) << m_did;
            m_now -= m_now > 0 ? 1 : 0;
            break;
        case 'R':
            EXPECT_EQ(DocManager::instance().redo(document()), m_now + 1 < m_states.size()) << m_did;
            m_now += m_now + 1 < m_states.size() ? 1 : 0;
            break;
        default:
            save(what);
        }
        if (what != 'U' && what != 'R' && undoUnits() != units) {
            m_states.resize(++m_now);
            m_states.push_back(describe(database()));
        }
        EXPECT_EQ(describe(database()), m_states[m_now]) << m_did;
        EXPECT_EQ(broken(database(), false), "") << m_did;
    }

    void all(const std::string& steps) {
        for (const char what : steps)
            step(what);
    }

    std::size_t undoUnits() { return database().imp().undo.undoUnits().size(); }

private:
    void attachNote() {
        const MxDbObjectId id = addNote(kObjectNote);
        write<MxDbPhonomark>(id, [this](MxDbPhonomark& note) {
            note.assertWriteEnabled();
            note.setAttachObj(m_line);
        });
        ASSERT_TRUE(livePhManager()->addNotifier(&note(id), m_line));
    }
    MxDbObjectId livingNote() {
        for (const MxDbObject* object : living(database()))
            if (object->isKindOf(MxDbPhonomark::desc()))
                return object->objectId();
        return {};
    }
    template <class T> void write(MxDbObjectId id, const std::function<void(T&)>& change) {
        const DocumentLock lock(&document(), L"Change", 0);
        T* open = nullptr;
        if (mxdbOpenObject(open, id, Mx::kForWrite) != Mx::eOk)
            return;
        change(*open);
        open->close();
    }
    void transform(const MxGeMatrix3d& matrix) {
        write<Line>(m_line, [&matrix](Line& line) { EXPECT_EQ(line.transformBy(matrix), Mx::eOk); });
    }
    void save(char kind) {
        const std::string path =
            m_files.filePath(QString::fromLatin1(kind == 'S' ? "history.merix" : "history.dxf")).toStdString();
        const auto form = kind == 'B' ? merix::io::DxfForm::kBinary : merix::io::DxfForm::kText;
        const auto saved =
            kind == 'S' ? merix::io::writeDrawing(path, database()) : merix::io::writeDrawing(path, database(), form);
        EXPECT_EQ(saved.status, Mx::eOk) << saved.error;
        MxDbDatabase again;
        const auto opened = merix::io::readDrawing(path, again);
        EXPECT_EQ(opened.status, Mx::eOk) << opened.error;
        EXPECT_TRUE(opened.notes.empty()) << opened.notes.front();
        EXPECT_EQ(describe(again), describe(database())) << m_did;
        EXPECT_EQ(broken(again, true), "") << m_did;
    }

    /// Thousands of files are put on disk with all guarantees: in memory that costs nothing.
    static QString place() {
        const QString memory = QString::fromLatin1("/dev/shm");
        return QFileInfo(memory).isWritable() ? memory + QString::fromLatin1("/merix-XXXXXX")
                                              : QDir::tempPath() + QString::fromLatin1("/merix-XXXXXX");
    }

    QTemporaryDir m_files{place()};
    MxDbObjectId m_line;
    std::vector<std::string> m_states; ///< by number of units done
    std::size_t m_now = 0;
    std::string m_did;
    bool m_begun = false;
};

/// Calls `run` with every word of `length` letters.
void everyWord(const std::string& letters, std::size_t length, const std::function<void(const std::string&)>& run) {
    std::string word(length, letters[0]);
    std::vector<std::size_t> digits(length, 0);
    for (;;) {
        run(word);
        std::size_t i = 0;
        while (i < length && ++digits[i] == letters.size())
            digits[i++] = 0;
        if (i == length)
            return;
        for (std::size_t k = 0; k < length; ++k)
            word[k] = letters[digits[k]];
    }
}

} // namespace

TEST_F(AttachmentHistoryTest, EveryOrderOfErasingMovingUndoingAndRedoingKeepsTheBondsWhole) {
    everyWord("LNHMAUR", 4, [this](const std::string& word) {
        if (HasFailure())
            return;
        begin();
        all(word);
        while (undoUnits() > 0)
            step('U');
        step('R');
    });
}

TEST_F(AttachmentHistoryTest, FilesHoldTheBondsThatTheDrawingHasAtEverySave) {
    for (const char kind : {'T', 'B', 'S'})
        everyWord("LNHAU", 3, [this, kind](const std::string& word) {
            if (HasFailure())
                return;
            begin();
            for (const char what : word) {
                step(what);
                step(kind);
            }
            while (undoUnits() > 0)
                step('U');
            step(kind);
        });
}

TEST_F(AttachmentHistoryTest, LongRandomHistoriesKeepTheBondsWhole) {
    const auto seed = static_cast<unsigned>(::testing::UnitTest::GetInstance()->random_seed());
    RecordProperty("seed", static_cast<int>(seed));
    std::mt19937 random(seed);
    const std::string letters = "LNHMGOCAAMGUUUUURRRRTBS";
    for (int history = 0; history < 12 && !HasFailure(); ++history) {
        begin();
        for (int i = 0; i < 60 && !HasFailure(); ++i)
            step(letters[random() % letters.size()]);
    }
    EXPECT_FALSE(HasFailure()) << "seed " << seed;
}

TEST_F(AttachmentHistoryTest, ANoteFollowsItsObjectThroughEveryChangeOfPlace) {
    for (const char kind : {'T', 'B', 'S'}) {
        begin();
        for (const char change : std::string("MGOCCGOM")) {
            const std::string before = describe(database());
            step(change);
            EXPECT_NE(describe(database()), before) << change;
            step(kind);
        }
        all("UUUUUUUURRRR");
        step(kind);
    }
}

TEST_F(AttachmentHistoryTest, ANoteOfAnErasedObjectStaysAndIsBoundAgainByUndo) {
    step('L');
    const MxDbObjectId id = listed()[0];
    EXPECT_FALSE(reactorOf(note(id)).isNull());
    all("TSU");
    step('M');
    EXPECT_EQ(note(id).extents().maxPoint(), MxGePoint3d(11, 7, 0));
}

TEST_F(AttachmentHistoryTest, AnErasedNoteIsToldNothingAndFreesItsObject) {
    all("HM");
    step('A');
    ASSERT_EQ(listed().size(), 1U);
    step('M');
    EXPECT_EQ(note(listed()[0]).extents().maxPoint(), MxGePoint3d(12, 9, 0));
    all("SUUUUT");
}
