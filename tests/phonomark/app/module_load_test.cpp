// SPDX-License-Identifier: MIT
// The module as it is shipped, loaded and unloaded by the host's loader.
#include "host/db/database.h"
#include "host/db/dictionary.h"
#include "merix/ap/document_imp.h"
#include "merix/db/database_imp.h"
#include "merix/ed/command_stack.h"
#include "merix/ed/console.h"
#include "merix/ed/host_functions.h"
#include "merix/ed/prompter.h"
#include "merix/rx/module_loader.h"

#include <QFile>
#include <QSettings>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <deque>
#include <dlfcn.h>

using merix::ap::DocManager;
using merix::rx::Module;
using merix::rx::ModuleLoader;
using ::testing::HasSubstr;

namespace {

constexpr std::array kClasses{L"MxDbPhonomark",      L"PhonomarkDcReactor", L"PhonomarkEdReactor",
                              L"PhonomarkEnReactor", L"PhonomarkPmReactor", L"PhonomarkPsReactor",
                              L"PhonomarkObReactor"};

/// Answers a point prompt and, when there is nothing left, Esc.
class Answers : public merix::ed::InputSource {
public:
    explicit Answers(std::deque<QString> lines)
        : m_lines(std::move(lines)) {
        merix::ed::Prompter::instance().setSource(this);
    }
    ~Answers() override { merix::ed::Prompter::instance().setSource(nullptr); }
    bool feed() override {
        if (m_lines.empty()) {
            merix::ed::Prompter::instance().cancel();
            return false;
        }
        const QString line = m_lines.front();
        m_lines.pop_front();
        merix::ed::Prompter::instance().submitLine(line);
        return true;
    }

private:
    std::deque<QString> m_lines;
};

class ModuleLoadTest : public ::testing::Test {
protected:
    void SetUp() override {
        QSettings(QStringLiteral("VORKAS/MERIX/2026"), QStringLiteral("MERIX")).clear();
        m_document = DocManager::instance().create();
    }
    void TearDown() override {
        ModuleLoader::instance().unloadAll();
        while (auto* open = dynamic_cast<merix::ap::Document*>(DocManager::instance().curDocument()))
            DocManager::instance().close(*open);
    }

    static Module& load() {
        const auto result = ModuleLoader::instance().load(MERIX_BINARY_DIR "/bin/libMrxPhonomark.mrx");
        if (!result)
            throw std::runtime_error(result.error);
        return *result.module;
    }
    static void unload(Module& module) {
        const auto result = ModuleLoader::instance().unload(module);
        EXPECT_TRUE(result) << result.error;
    }

    /// What calling a host-language function prints.
    static std::string call(const char* line) {
        auto& console = merix::ed::Console::instance();
        console.markRead();
        merix::ed::HostFunctions::instance().callLine(QString::fromLatin1(line));
        return console.unread().trimmed().section(QLatin1Char('\n'), -1).toStdString();
    }
    static void run(const char* line, std::deque<QString> answers = {}) {
        const Answers source(std::move(answers));
        merix::ed::CommandStack::instance().runLine(QString::fromLatin1(line));
    }
    static std::string printedBy(const char* line) {
        auto& console = merix::ed::Console::instance();
        console.markRead();
        run(line);
        return console.unread().toStdString();
    }
    std::vector<MxDbObjectId> entities() {
        MxDbBlockTableRecord* space = nullptr;
        if (mxdbOpenObject(space, document().database()->currentSpaceId(), Mx::kForRead) != Mx::eOk)
            return {};
        const std::vector<MxDbObjectId> ids = space->entityIds();
        space->close();
        return ids;
    }
    static int commandsOfTheModule() {
        int count = 0;
        for (const QString& command : merix::ed::CommandStack::instance().commands())
            count += command.startsWith(QStringLiteral("PHONOMARKCM_"), Qt::CaseInsensitive) ? 1 : 0;
        return count;
    }
    static int classesRegistered() {
        int count = 0;
        for (const wchar_t* name : kClasses)
            count += mxrxFindMxRxClass(name) ? 1 : 0;
        return count;
    }
    /// The handles that the drawing's stored list of notes names, in order.
    static std::vector<std::wstring> stored(const MxDbDatabase& database) {
        const auto entry = [](MxDbObjectId dictionaryId, const wchar_t* key) {
            MxDbObjectId id;
            MxDbDictionary* dictionary = nullptr;
            if (mxdbOpenObject(dictionary, dictionaryId, Mx::kForRead) == Mx::eOk) {
                dictionary->getAt(key, id);
                dictionary->close();
            }
            return id;
        };
        std::vector<std::wstring> handles;
        MxDbXrecord* list = nullptr;
        if (mxdbOpenObject(list, entry(entry(database.namedObjectsDictionaryId(), L"PHONO_MARK"), L"VOICE_LIST"),
                           Mx::kForRead) != Mx::eOk)
            return handles;
        resbuf* chain = nullptr;
        list->rbChain(&chain);
        for (const resbuf* element = chain; element; element = element->rbnext)
            handles.push_back(std::get<std::wstring>(element->resval));
        mxutRelRb(chain);
        list->close();
        return handles;
    }
    static bool isMapped() {
        QFile maps(QStringLiteral("/proc/self/maps"));
        return maps.open(QIODevice::ReadOnly) && maps.readAll().contains("libMrxPhonomark");
    }

    merix::ap::Document& document() { return *m_document; }

private:
    merix::ap::Document* m_document = nullptr;
};

} // namespace

TEST_F(ModuleLoadTest, LoadingRegistersTheClassesAndTheCommands) {
    EXPECT_EQ(classesRegistered(), 0);
    const Module& module = load();
    EXPECT_EQ(classesRegistered(), int(kClasses.size()));
    EXPECT_THAT(
        merix::ed::CommandStack::instance().commands(),
        ::testing::IsSupersetOf({QStringLiteral("PhonomarkCM_.PHONOMARK"), QStringLiteral("PhonomarkCM_.VOICEMAN"),
                                 QStringLiteral("PhonomarkCM_.VOICESHOW")}));
    EXPECT_TRUE(module.unloadable);
    EXPECT_TRUE(module.servesSeveralDocuments);
}

TEST_F(ModuleLoadTest, TheClassesHaveTheirParents) {
    load();
    EXPECT_TRUE(mxrxFindMxRxClass(L"MxDbPhonomark")->isDerivedFrom(MxDbEntity::desc()));
    EXPECT_TRUE(mxrxFindMxRxClass(L"PhonomarkPsReactor")->isDerivedFrom(MxDbObject::desc()));
    EXPECT_TRUE(mxrxFindMxRxClass(L"PhonomarkDcReactor")->isDerivedFrom(MxApDocManagerReactor::desc()));
    EXPECT_TRUE(mxrxFindMxRxClass(L"PhonomarkEnReactor")->isDerivedFrom(MxDbEntityReactor::desc()));
}

TEST_F(ModuleLoadTest, TheApiVersionIsTheOneOfTheContract) {
    const Module& module = load();
    const auto version = reinterpret_cast<MxRxGetApiVersion>(dlsym(module.library, "mxrxGetApiVersion"));
    ASSERT_TRUE(version);
    EXPECT_EQ(version(), 132710400u);
}

TEST_F(ModuleLoadTest, AMessageAboveFifteenChangesNothing) {
    Module& module = load();
    run("PHONOMARK", {QStringLiteral("10,20")});
    const auto documents = DocManager::instance().all();
    const auto notes = entities();
    ASSERT_EQ(notes.size(), 1u);
    const auto changes = document().database()->imp().undo.undoUnits().size();
    for (const int message : {16, 17, 18, 19, 20, 1000, 0x7fffffff, -1}) {
        EXPECT_EQ(ModuleLoader::instance().sendMessage(module, message), 0);
        EXPECT_EQ(classesRegistered(), int(kClasses.size()));
        EXPECT_EQ(commandsOfTheModule(), 3);
        EXPECT_EQ(call("(PhonomarkShow)"), "1");
        EXPECT_EQ(DocManager::instance().all(), documents);
        EXPECT_EQ(entities(), notes);
        EXPECT_EQ(document().database()->imp().undo.undoUnits().size(), changes);
    }
    run("VOICESHOW"); // the notes are still listed and the command still works
    EXPECT_EQ(call("(PhonomarkShow)"), "0");
}

TEST_F(ModuleLoadTest, MessagesWithoutAHandlerAreAnsweredWithSuccess) {
    Module& module = load();
    for (const int message : {0, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}) {
        EXPECT_EQ(ModuleLoader::instance().sendMessage(module, message), 0) << message;
        EXPECT_EQ(classesRegistered(), int(kClasses.size()));
        EXPECT_EQ(commandsOfTheModule(), 3);
        EXPECT_EQ(call("(PhonomarkShow)"), "1");
    }
}

TEST_F(ModuleLoadTest, NotesAreShownOnAFreshInstallationAndHiddenByTheCommand) {
    load();
    EXPECT_EQ(call("(PhonomarkShow)"), "1");
    run("VOICESHOW");
    EXPECT_EQ(call("(PhonomarkShow)"), "0");
}

TEST_F(ModuleLoadTest, WhetherNotesAreShownIsKeptFromLoadToLoad) {
    Module& module = load();
    run("VOICESHOW");
    unload(module);
    load();
    EXPECT_EQ(call("(PhonomarkShow)"), "0");
    run("VOICESHOW");
    unload(module);
    load();
    EXPECT_EQ(call("(PhonomarkShow)"), "1");
}

TEST_F(ModuleLoadTest, TheFunctionIsDefinedInEveryDrawing) {
    load();
    DocManager::instance().create();
    EXPECT_EQ(call("(PhonomarkShow)"), "1");
    DocManager::instance().activate(&document());
    EXPECT_EQ(call("(PhonomarkShow)"), "1");
}

TEST_F(ModuleLoadTest, NothingOfAnUnloadedModuleStaysMapped) {
    Module& module = load();
    EXPECT_TRUE(isMapped());
    unload(module);
    EXPECT_FALSE(isMapped());
    EXPECT_EQ(classesRegistered(), 0);
    EXPECT_NE(call("(PhonomarkShow)"), "1");
}

TEST_F(ModuleLoadTest, TheCommandGroupOutlivesTheModuleAndItsClassesComeBack) {
    Module& module = load();
    unload(module);
    EXPECT_EQ(commandsOfTheModule(), 3);
    load();
    EXPECT_EQ(commandsOfTheModule(), 3);
    EXPECT_EQ(classesRegistered(), int(kClasses.size()));
    run("VOICESHOW");
    EXPECT_EQ(call("(PhonomarkShow)"), "0");
}

TEST_F(ModuleLoadTest, ACommandWithoutItsModuleDoesNothing) {
    Module& module = load();
    unload(module);
    EXPECT_THAT(printedBy("VOICESHOW"), HasSubstr("The module of the command VOICESHOW is not loaded."));
    EXPECT_FALSE(isMapped());
}

TEST_F(ModuleLoadTest, WithoutTheResourceModuleLoadingCompletes) {
    Module& module = load();
    EXPECT_THAT(printedBy("VOICESHOW"), HasSubstr("Voice notes are hidden."));
    EXPECT_THAT(printedBy("VOICESHOW"), HasSubstr("Voice notes are shown."));
    unload(module);
    const QByteArray path = qgetenv("MERIX_RESOURCE_PATH");
    qunsetenv("MERIX_RESOURCE_PATH");
    load();
    qputenv("MERIX_RESOURCE_PATH", path);
    EXPECT_EQ(classesRegistered(), int(kClasses.size()));
    EXPECT_EQ(call("(PhonomarkShow)"), "1");
    EXPECT_EQ(printedBy("VOICESHOW"), "\nCommand: VOICESHOW") << "the host's line alone";
    EXPECT_EQ(call("(PhonomarkShow)"), "0");
}

TEST_F(ModuleLoadTest, NotesOutliveAnUnloadWithTheirDrawingOpen) {
    Module& module = load();
    run("PHONOMARK", {QStringLiteral("10,20")});
    ASSERT_EQ(entities().size(), 1u);
    const MxDbObjectId id = entities().front();
    for (int turn = 0; turn < 2; ++turn) {
        MxDbObject* note = nullptr;
        ASSERT_EQ(mxdbOpenObject(note, id, Mx::kForRead), Mx::eOk);
        EXPECT_STREQ(note->isA()->name(), L"MxDbPhonomark");
        note->close();
        unload(module);
        ASSERT_EQ(mxdbOpenObject(note, id, Mx::kForRead), Mx::eOk);
        EXPECT_STRNE(note->isA()->name(), L"MxDbPhonomark");
        EXPECT_TRUE(note->reactors().empty());
        note->close();
        load();
    }
}

TEST_F(ModuleLoadTest, FiftyLoadsAndUnloadsLeaveDrawingsListsAndSettingsAsTheyWere) {
    load();
    std::vector<merix::ap::Document*> open{&document(), DocManager::instance().create()};
    for (merix::ap::Document* drawing : open) {
        DocManager::instance().activate(drawing);
        for (const QString& at : {QStringLiteral("1,1"), QStringLiteral("5,5"), QStringLiteral("9,9")})
            run("PHONOMARK", {at});
    }
    run("VOICESHOW");
    const std::vector<MxDbObjectId> notes = entities();
    ASSERT_EQ(notes.size(), 3u);
    std::vector<std::wstring> handles;
    for (const MxDbObjectId id : notes) {
        wchar_t text[17];
        id.handle().getIntoAsciiBuffer(text);
        handles.emplace_back(text);
    }
    for (int turn = 0; turn < 50 && !HasFailure(); ++turn) {
        SCOPED_TRACE(turn);
        Module& module = *ModuleLoader::instance().modules().front();
        unload(module);
        EXPECT_FALSE(isMapped());
        EXPECT_EQ(classesRegistered(), 0);
        EXPECT_EQ(stored(*open[1]->database()), handles);
        EXPECT_EQ(stored(*open[0]->database()).size(), 3u);
        load();
        EXPECT_EQ(entities(), notes);
        EXPECT_EQ(call("(PhonomarkShow)"), "0");
        EXPECT_EQ(commandsOfTheModule(), 3);
    }
    EXPECT_EQ(ModuleLoader::instance().modules().size(), 1u);
}

TEST_F(ModuleLoadTest, AnErasedNoteCanComeBackAfterTheModuleHasGone) {
    Module& module = load();
    run("PHONOMARK", {QStringLiteral("10,20")});
    ASSERT_TRUE(DocManager::instance().undo(document()));
    unload(module);
    EXPECT_TRUE(DocManager::instance().redo(document()));
}

TEST_F(ModuleLoadTest, DocumentsThatComeAndGoWithoutTheModuleDoNotReachIt) {
    Module& module = load();
    run("PHONOMARK", {QStringLiteral("10,20")});
    unload(module);
    merix::ap::Document* second = DocManager::instance().create();
    DocManager::instance().activate(&document());
    DocManager::instance().close(*second);
    EXPECT_FALSE(isMapped());
}
