// SPDX-License-Identifier: MIT
// The module's decoders get every stored case, whole and damaged in many ways.
#include "fuzz/note_decoders.h"

#include "merix/db/dwg_filer.h"
#include "merix/io/dxf_out_filer.h"
#include "phonomark/entity/ps_reactor.h"
#include "tests/phonomark/module_fixture.h"

#include <QDir>
#include <QFile>

#include <map>
#include <random>

namespace {

class NoteDecodersTest : public ModuleTest {
protected:
    std::map<QString, QByteArray> storedCases() {
        std::map<QString, QByteArray> cases;
        const QDir stored(QString::fromLatin1(MERIX_SOURCE_DIR "/fuzz/note_cases"));
        for (const QString& name : stored.entryList(QDir::Files)) {
            QFile file(stored.filePath(name));
            EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
            cases[name] = file.readAll();
        }
        return cases;
    }
    static void run(const merix::fuzz::NamedDecoder& decoder, const QByteArray& bytes) {
        decoder.run(reinterpret_cast<const std::uint8_t*>(bytes.constData()), std::size_t(bytes.size()));
    }

    /// What the classes write now, in both forms.
    std::map<QString, QByteArray> written() {
        std::map<QString, QByteArray> made;
        const auto add = [&](const char* name, const MxDbObject& object) {
            const std::string stream = merix::db::dwgImage(object, MxDbFilerType::kFile);
            made[QString::fromLatin1(name) + QLatin1String(".stream")] = QByteArray::fromStdString(stream);
            const merix::io::DxfEncoding encoding("AC1032", "");
            merix::io::DxfOutFiler filer(database(), encoding);
            object.dxfOutFields(&filer);
            std::string text;
            for (const auto& tag : filer.takeTags())
                merix::io::appendTag(text, tag.code, tag.value, "\n");
            made[QString::fromLatin1(name) + QLatin1String(".tags")] = QByteArray::fromStdString(text);
        };
        for (const int type : {0, 1, 2, 3, 9}) {
            MxDbPhonomark note;
            note.setPhonomarkType(type);
            note.setPosition({1, 2, 3});
            note.setExtents(MxDbExtents({1, 2, 3}, {4, 5, 6}));
            note.setAttachObj(database().currentSpaceId());
            note.setReplyTo(database().currentSpaceId());
            note.setSpokesman(L"Zo\u00eb ^ \\U+0041 \xD83D");
            if (type != 3) {
                note.setAudioData(soundBytes(130));
                note.setAudioDataSize(130);
            }
            add(("note-" + std::to_string(type)).c_str(), note);
        }
        PhonomarkPsReactor reactor;
        reactor.setNoteId(database().currentSpaceId());
        add("reactor", reactor);
        return made;
    }
};

} // namespace

TEST_F(NoteDecodersTest, WhatWasFiledOnceIsStillRead) {
    for (const auto& [name, bytes] : storedCases()) {
        if (!name.endsWith(QLatin1String(".stream")) || name.startsWith(QLatin1String("bad")))
            continue;
        MxDbPhonomark note;
        PhonomarkPsReactor reactor;
        const bool ofNote = name.startsWith(QLatin1String("note"));
        merix::db::DwgReader reader({bytes.constData(), std::size_t(bytes.size())}, MxDbFilerType::kFile, &database());
        EXPECT_EQ(ofNote ? note.dwgInFields(&reader) : reactor.dwgInFields(&reader), Mx::eOk) << name.toStdString();
        EXPECT_EQ(reader.bytesLeft(), 0U) << name.toStdString();
    }
}

TEST_F(NoteDecodersTest, ReturnForEveryStoredCase) {
    const auto cases = storedCases();
    ASSERT_GT(cases.size(), 12U);
    for (const auto& decoder : merix::fuzz::kNoteDecoders)
        for (const auto& stored : cases)
            run(decoder, stored.second);
}

TEST_F(NoteDecodersTest, ReturnForDamagedCases) {
    const auto seed = static_cast<unsigned>(::testing::UnitTest::GetInstance()->random_seed());
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto below = [&random](int bound) { return bound > 0 ? static_cast<int>(random() % unsigned(bound)) : 0; };
    auto cases = storedCases();
    cases.merge(written());
    for (const auto& stored : cases) {
        for (int i = 0; i < 40; ++i) {
            QByteArray bytes = stored.second;
            for (int k = below(5); k >= 0 && !bytes.isEmpty(); --k) {
                const int at = below(bytes.size());
                switch (below(5)) {
                case 0:
                    bytes[at] = static_cast<char>(below(256));
                    break;
                case 1:
                    bytes.remove(at, below(20));
                    break;
                case 2:
                    bytes.insert(at, bytes.mid(below(bytes.size()), below(60)));
                    break;
                case 3:
                    bytes.replace(at, 4, "\xFF\xFF\xFF\xFF", 4);
                    break;
                default:
                    bytes[at] = '\n';
                }
            }
            for (const auto& decoder : merix::fuzz::kNoteDecoders)
                run(decoder, bytes);
        }
    }
}
