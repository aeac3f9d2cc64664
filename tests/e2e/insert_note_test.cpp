// SPDX-License-Identifier: MIT
// PHONOMARK at the command line of the real program: every way through its prompts, from settings of every kind, with
// what the drawing and the settings hold afterwards.
#include "tests/support/dxf_tags.h"
#include "tests/support/process.h"

#include <QDir>
#include <QSettings>

#include <gmock/gmock.h>

#include <pwd.h>
#include <unistd.h>

using namespace merix::test;

namespace {

struct Settings {
    const char* speaker = nullptr; ///< null: none stored
    const char* type = nullptr;
    const char* shown = nullptr;
};

struct Insertion {
    const char* name;
    Settings before;
    const char* script;             ///< what is typed, and what must be seen
    std::vector<const char*> notes; ///< "TYPE PLACE SPEAKER" of the notes in the drawing, %u is the login name
    Settings after;
    std::vector<const char*> order = {}; ///< what the command line shows, in this order
};

void PrintTo(const Insertion& insertion, std::ostream* out) {
    *out << insertion.name;
}

#define POINT_PROMPT "@expect Specify the point of the note or [Settings]:\n"
#define CORNER_PROMPT "@expect Specify the first corner of the region or [Settings]:\n"
#define OTHER_PROMPT "@expect Specify the opposite corner:\n"
#define OBJECT_PROMPT "@expect Select the object that the note belongs to or [Settings]:\n"
#define SETTINGS_PROMPT                                                                                                \
    "@expect Enter the note type or set the speaker [Point/Region/Object/Reply/Spokesman] <Point>:\n"
#define ESC "@key Esc\n@expect *Cancel*\n"

const std::vector<Insertion> kInsertions = {
    // --- a point
    {"FirstRunAsksForAPoint", {}, "PHONOMARK\n" POINT_PROMPT "10,20\n", {"0 10.0,20.0 %u"}, {"%u", "0"}},
    {"StoredSpeaker", {"Anna", "0"}, "PHONOMARK\n" POINT_PROMPT "10,20\n", {"0 10.0,20.0 Anna"}, {"Anna", "0"}},
    {"AnswerOnTheSameLine", {}, "PHONOMARK 10,20\n", {"0 10.0,20.0 %u"}, {"%u", "0"}},
    {"EscAtThePoint", {}, "PHONOMARK\n" POINT_PROMPT ESC, {}, {}},
    {"EndOfTheScriptAtThePoint", {}, "@save out.dxf\nPHONOMARK\n" POINT_PROMPT, {}, {}},
    {"NoEmptyPoint",
     {},
     "PHONOMARK\n\n@expect An answer is needed.\n" POINT_PROMPT "1,2\n",
     {"0 1.0,2.0 %u"},
     {"%u", "0"}},
    {"NeitherPointNorKeyword",
     {},
     "PHONOMARK\nRegion\n@expect A point or one of the options is needed.\n" POINT_PROMPT "1,2\n",
     {"0 1.0,2.0 %u"},
     {"%u", "0"}},
    // --- the settings question
    {"SettingsByItsFirstLetter",
     {},
     "PHONOMARK\ns\n" SETTINGS_PROMPT "\n" POINT_PROMPT "1,2\n",
     {"0 1.0,2.0 %u"},
     {"%u", "0"}},
    {"SettingsByItsGlobalName",
     {},
     "PHONOMARK\n_SETT\n" SETTINGS_PROMPT "\n" POINT_PROMPT "1,2\n",
     {"0 1.0,2.0 %u"},
     {"%u", "0"}},
    {"EscAtTheSettings", {"Anna", "1"}, "PHONOMARK\nSettings\n" SETTINGS_PROMPT ESC, {}, {"Anna", "1"}},
    {"EnterMakesARegionAPoint",
     {"Anna", "1"},
     "PHONOMARK\n" CORNER_PROMPT "Settings\n" SETTINGS_PROMPT
     "\n@expect note type = Point, speaker = Anna\n" POINT_PROMPT "1,2\n",
     {"0 1.0,2.0 Anna"},
     {"Anna", "0"}},
    {"EnterMakesAnObjectAPoint",
     {"Anna", "2"},
     "PHONOMARK\n" OBJECT_PROMPT "Settings\n\n" POINT_PROMPT "1,2\n",
     {"0 1.0,2.0 Anna"},
     {"Anna", "0"}},
    {"NoSuchSetting",
     {},
     "PHONOMARK\nSettings\nCircle\n@expect That is none of the options.\n" SETTINGS_PROMPT "Point\n" POINT_PROMPT
     "1,2\n",
     {"0 1.0,2.0 %u"},
     {"%u", "0"}},
    {"AmbiguousSetting",
     {},
     "PHONOMARK\nSettings\nRe\n@expect That can mean Region or Reply.\n" SETTINGS_PROMPT "Rep\n",
     {"3 - %u"},
     {"%u", "3"}},
    {"EveryTypeInTurn",
     {},
     "PHONOMARK\nS\nRegion\n@expect note type = Region\n" CORNER_PROMPT
     "S\nObject\n@expect note type = Object\n" OBJECT_PROMPT "S\npoint\n@expect note type = Point\n" POINT_PROMPT
     "S\nReply\n@expect note type = Reply\n",
     {"3 - %u"},
     {"%u", "3"}},
    {"ACancelledRunForgetsWhatWasSet",
     {"Anna", "1"},
     "PHONOMARK\nS\nSpokesman\nBert\n@expect note type = Region, speaker = Bert\nS\nPoint\n" POINT_PROMPT ESC
     "PHONOMARK\n@expect note type = Region, speaker = Anna\n" ESC,
     {},
     {"Anna", "1"}},
    // --- the speaker
    {"AnotherSpeaker",
     {"Anna", "0"},
     "PHONOMARK\nS\nSpokesman\n@expect Enter the speaker's name <Anna>:\nBert\n@expect note type = Point, speaker = "
     "Bert\n" POINT_PROMPT "1,2\n",
     {"0 1.0,2.0 Bert"},
     {"Bert", "0"}},
    {"EnterKeepsTheSpeaker",
     {"Anna", "0"},
     "PHONOMARK\nS\nSpokesman\n@expect <Anna>:\n\n@expect speaker = Anna\n" POINT_PROMPT "1,2\n",
     {"0 1.0,2.0 Anna"},
     {"Anna", "0"}},
    {"EnterKeepsTheLoginName", {}, "PHONOMARK\nS\nSp\n\n" POINT_PROMPT "1,2\n", {"0 1.0,2.0 %u"}, {"%u", "0"}},
    {"EscAtTheSpeaker", {"Anna", "2"}, "PHONOMARK\nS\nSpokesman\n" ESC, {}, {"Anna", "2"}},
    {"ANameEndsAtItsBlank", {}, "PHONOMARK\nS\nSpokesman\nAnna 1,2\n", {"0 1.0,2.0 Anna"}, {"Anna", "0"}},
    // --- a region
    {"RegionByTwoCorners",
     {"Anna", "1"},
     "PHONOMARK\n@expect note type = Region\n" CORNER_PROMPT "30,10\n" OTHER_PROMPT "@-20,15\n",
     {"1 10.0,10.0-30.0,25.0 Anna"},
     {"Anna", "1"}},
    {"EscAtTheFirstCorner", {"Anna", "1"}, "PHONOMARK\n" CORNER_PROMPT ESC, {}, {"Anna", "1"}},
    {"EscAtTheOtherCorner", {"Anna", "1"}, "PHONOMARK\n30,10\n" OTHER_PROMPT ESC, {}, {"Anna", "1"}},
    {"EnterAtTheOtherCorner", {"Anna", "1"}, "PHONOMARK\n30,10\n" OTHER_PROMPT "\n", {}, {"Anna", "1"}},
    {"NoKeywordAtTheOtherCorner",
     {"Anna", "1"},
     "PHONOMARK\n30,10\nSettings\n@expect A point is needed.\n" OTHER_PROMPT "40,20\n",
     {"1 30.0,10.0-40.0,20.0 Anna"},
     {"Anna", "1"}},
    // --- an object
    {"ObjectByAPointOnIt", {"Anna", "2"}, "PHONOMARK\n" OBJECT_PROMPT "4,2\n", {"2 20 Anna"}, {"Anna", "2"}},
    {"NothingThereIsAskedAgain",
     {"Anna", "2"},
     "PHONOMARK\n5000,9000\n" OBJECT_PROMPT "-5000,9000\n" OBJECT_PROMPT "4,2\n",
     {"2 20 Anna"},
     {"Anna", "2"}},
    {"EscAtTheObject", {"Anna", "2"}, "PHONOMARK\n5000,9000\n" OBJECT_PROMPT ESC, {}, {"Anna", "2"}},
    {"NoEmptyObject",
     {"Anna", "2"},
     "PHONOMARK\n\n@expect An answer is needed.\n" OBJECT_PROMPT "4,2\n",
     {"2 20 Anna"},
     {"Anna", "2"}},
    {"AnObjectCarriesOneNote",
     {"Anna", "2"},
     "PHONOMARK\n4,2\nPHONOMARK\nS\nSpokesman\nBert\n" OBJECT_PROMPT "4,2\n@expect This object already carries a voice "
     "note.\nPHONOMARK\n@expect speaker = Anna\n" ESC,
     {"2 20 Anna"},
     {"Anna", "2"}},
    {"AnObjectWhoseNoteIsGoneIsFree",
     {"Anna", "2"},
     "PHONOMARK\n4,2\n@undo\nPHONOMARK\nS\nSpokesman\nBert\n4,2\n",
     {"2 20 Bert"},
     {"Bert", "2"}},
    // --- types that ask nothing
    {"StoredReply", {"Anna", "3"}, "PHONOMARK\n@expect note type = Reply\n", {"3 - Anna"}, {"Anna", "3"}},
    {"StoredUnknownType", {"Anna", "7"}, "PHONOMARK\n@expect note type = Point\n", {"7 - Anna"}, {"Anna", "7"}},
    {"StoredNegativeType", {"Anna", "-1"}, "PHONOMARK\n", {"-1 - Anna"}, {"Anna", "-1"}},
    {"StoredNonsense", {"Anna", "Region"}, "PHONOMARK\n" POINT_PROMPT "1,2\n", {"0 1.0,2.0 Anna"}, {"Anna", "0"}},
    // --- hidden notes
    {"HiddenNotesAreShownFirst",
     {"Anna", "0", "0"},
     "PHONOMARK\n" POINT_PROMPT ESC "VOICESHOW\n@expect Voice notes are hidden.\nVOICESHOW\n",
     {},
     {"Anna", "0", "1"},
     {"Voice notes are shown.", "Current settings", "Specify the point"}},
    {"ShownNotesAreNotAnnounced", {"Anna", "0", "1"}, "PHONOMARK\n1,2\n", {"0 1.0,2.0 Anna"}, {"Anna", "0", "1"}},
};

class InsertNote : public testing::TestWithParam<Insertion> {
protected:
    static QString login() { return QString::fromLocal8Bit(getpwuid(geteuid())->pw_name); }
    static QString known(const char* text) { return QString::fromUtf8(text).replace(QLatin1String("%u"), login()); }

    QString settingsFile() const { return m_folder.filePath(QStringLiteral("home/VORKAS/MERIX/2026/MERIX.conf")); }
    void store(const Settings& settings) {
        QDir().mkpath(m_folder.filePath(QStringLiteral("home/VORKAS/MERIX/2026")));
        QSettings file(settingsFile(), QSettings::IniFormat);
        for (const auto& [key, value] : entries(settings))
            if (value)
                file.setValue(key, QString::fromUtf8(value));
    }
    static std::vector<std::pair<QString, const char*>> entries(const Settings& settings) {
        return {{QStringLiteral("Spokesman"), settings.speaker},
                {QStringLiteral("VoiceType"), settings.type},
                {QStringLiteral("VoiceShow"), settings.shown}};
    }
    /// A drawing with a line, handle 20, from (0, 0) to (10, 5).
    void writeDrawing() const {
        QFile file(m_folder.filePath(QStringLiteral("in.dxf")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("  0\nSECTION\n  2\nENTITIES\n  0\nLINE\n  5\n20\n  8\n0\n 10\n0.0\n 20\n0.0\n 11\n10.0\n 21\n5.0\n"
                   "  0\nENDSEC\n  0\nEOF\n");
    }
    std::vector<std::string> notes() const {
        std::vector<std::string> found;
        for (const Record& note : records(readTags(m_folder.filePath(QStringLiteral("out.dxf"))), "ENTITIES")) {
            if (note[0].value != "PHONOMARK")
                continue;
            const auto at = [&note](int x) { return value(note, x) + ',' + value(note, x + 10); };
            QByteArray place = "-";
            if (!value(note, 10).isEmpty())
                place = at(10);
            else if (!value(note, 11).isEmpty())
                place = at(11) + '-' + at(12);
            for (std::size_t i = note.size() - 1; i > 0 && note[i].code != 100; --i)
                if (note[i].code == 102)
                    place = note[i].value;
            found.push_back((value(note, 70) + ' ' + place + ' ' + value(note, 1)).toStdString());
        }
        return found;
    }

    const QTemporaryDir m_folder;
};

} // namespace

TEST_P(InsertNote, LeavesTheDrawingAndTheSettingsAsItShould) {
    const Insertion& insertion = GetParam();
    store(insertion.before);
    writeDrawing();
    const QByteArray script(insertion.script);
    const bool saves = script.contains("@save");
    const Outcome outcome = runScript(saves ? script : script + "@save out.dxf\n", m_folder.path(),
                                      {m_folder.filePath(QStringLiteral("in.dxf"))});
    ASSERT_EQ(outcome.status, 0) << outcome.err.toStdString() << outcome.out.toStdString();
    std::vector<std::string> expected;
    for (const char* note : insertion.notes)
        expected.push_back(known(note).toStdString());
    EXPECT_THAT(notes(), testing::ElementsAreArray(expected)) << outcome.out.toStdString();
    const QSettings stored(settingsFile(), QSettings::IniFormat);
    for (const auto& [key, value] : entries(insertion.after)) {
        const QVariant found = stored.value(key);
        if (value) {
            EXPECT_EQ(found.toString(), known(value)) << key.toStdString();
        } else if (key != QLatin1String("VoiceShow")) { // written whenever the module goes
            EXPECT_FALSE(found.isValid()) << key.toStdString() << found.toString().toStdString();
        }
    }
    int at = -1;
    for (const char* text : insertion.order) {
        const int next = outcome.out.indexOf(text, at + 1);
        EXPECT_GT(next, at) << text << " in\n" << outcome.out.toStdString();
        at = next;
    }
    if (insertion.order.empty()) {
        EXPECT_FALSE(outcome.out.contains("Voice notes are shown.")) << outcome.out.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Prompts, InsertNote, testing::ValuesIn(kInsertions),
                         [](const auto& tested) { return std::string(tested.param.name); });

namespace {

TEST(InsertNoteSpeaker, ALongNameIsCutAtOneHundredAndThirtyTwoCharacters) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("in.dxf")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("  0\nSECTION\n  2\nENTITIES\n  0\nENDSEC\n  0\nEOF\n"));
    file.close();
    const Outcome outcome = runScript("PHONOMARK\nS\nSpokesman\n" + QByteArray(200, 'x') +
                                          "\n1,2\nPHONOMARK\nS\nSpokesman\n\n3,4\n@save out.dxf\n",
                                      folder.path(), {folder.filePath(QStringLiteral("in.dxf"))});
    ASSERT_EQ(outcome.status, 0) << outcome.err.toStdString();
    const auto notes = records(readTags(folder.filePath(QStringLiteral("out.dxf"))), "ENTITIES");
    ASSERT_EQ(notes.size(), 2U);
    for (const Record& note : notes)
        EXPECT_EQ(value(note, 1), QByteArray(132, 'x'));
}

/// The program with other texts: a copy of it beside a resource module of its own.
class InsertNoteWords : public testing::Test {
protected:
    void SetUp() override {
        const QString built = QStringLiteral(MERIX_BINARY_DIR "/bin/");
        ASSERT_TRUE(QDir().mkpath(program(QString())));
        ASSERT_TRUE(QFile::copy(built + QStringLiteral("merix"), program(QStringLiteral("merix"))));
        for (const char* name : {"libmerix.so", "libMrxPhonomark.mrx", "merix.lin"})
            ASSERT_TRUE(QFile::link(built + QLatin1String(name), program(QLatin1String(name))));
    }
    QString program(const QString& name) const { return m_folder.filePath(QStringLiteral("bin/")) + name; }
    /// Makes the resource module from the sources with this keyword list in the place of the first.
    void giveKeywords(const QByteArray& list) const {
        const QString sources = m_folder.filePath(QStringLiteral("resources"));
        const Outcome copied =
            run(QStringLiteral("cp"), {QStringLiteral("-r"), QStringLiteral(MERIX_SOURCE_DIR "/resources"), sources},
                m_folder.path());
        ASSERT_EQ(copied.status, 0) << copied.err.toStdString();
        QFile texts(sources + QStringLiteral("/strings/en.json"));
        ASSERT_TRUE(texts.open(QIODevice::ReadWrite));
        QByteArray json = texts.readAll();
        const QByteArray usual = "\"Settings _ Settings\"";
        ASSERT_EQ(json.count(usual), 1);
        texts.resize(0);
        texts.seek(0);
        texts.write(json.replace(usual, '"' + list + '"'));
        texts.close();
        const Outcome made =
            run(QStringLiteral(MERIX_RCC),
                {QStringLiteral("--binary"), QStringLiteral("--output"), program(QStringLiteral("MrxPhonomarkRes.dll")),
                 sources + QStringLiteral("/MrxPhonomarkRes.qrc")},
                m_folder.path());
        ASSERT_EQ(made.status, 0) << made.err.toStdString();
    }
    Outcome type(const QByteArray& lines) const {
        return run(program(QStringLiteral("merix")),
                   {QStringLiteral("--headless"), QStringLiteral("--script"), QStringLiteral("-"),
                    QStringLiteral(MERIX_SOURCE_DIR "/samples/plan.dxf")},
                   m_folder.path(), lines);
    }
    const QTemporaryDir m_folder;
};

TEST_F(InsertNoteWords, AKeywordThatIsNotSettingsPlacesTheNoteAtOnce) {
    giveKeywords("Settings Here _ Settings Here");
    const Outcome outcome = type("PHONOMARK\n@expect Specify the point of the note or [Settings]:\nh\n"
                                 "@save out.dxf\n");
    ASSERT_EQ(outcome.status, 0) << outcome.err.toStdString() << outcome.out.toStdString();
    std::vector<Record> notes;
    for (const Record& record : records(readTags(m_folder.filePath(QStringLiteral("out.dxf"))), "ENTITIES"))
        if (record[0].value == "PHONOMARK")
            notes.push_back(record);
    ASSERT_EQ(notes.size(), 1U) << outcome.out.toStdString();
    EXPECT_EQ(value(notes[0], 70), "0");
    EXPECT_EQ(number(notes[0], 10), 0.0);
    EXPECT_EQ(number(notes[0], 20), 0.0);
}

TEST_F(InsertNoteWords, AKeywordInAnotherLanguageIsReadByItsGlobalForm) {
    giveKeywords("Einstellungen _ Settings");
    const Outcome outcome = type("PHONOMARK\n@expect Specify the point of the note\neinst\n"
                                 "@expect Enter the note type or set the speaker\nRegion\n"
                                 "@expect Specify the first corner of the region\n_settings\n"
                                 "@expect Enter the note type or set the speaker\n");
    EXPECT_EQ(outcome.status, 0) << outcome.err.toStdString() << outcome.out.toStdString();
}

} // namespace
