// SPDX-License-Identifier: MIT
// The module as it is shipped, loaded and unloaded by the host's loader.
#include "tests/phonomark/app/loaded_module.h"

#include "merix/ed/editor.h"
#include "merix/rx/class_registry.h"
#include "merix/rx/system_registry.h"
#include "tests/support/dxf_tags.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <csignal>
#include <cstdio>
#include <functional>

#include <dlfcn.h>
#include <malloc.h>
#include <unistd.h>

using merix::ap::DocManager;
using merix::rx::Module;
using merix::rx::ModuleLoader;
using ::testing::HasSubstr;
using ModuleLoadTest = LoadedModuleTest;

namespace {

/// What a load and an unload may leave behind in the process's memory: lines of the console's history and the like.
constexpr std::size_t kBytesPerTurn = 2048;

/// Writes down the classes that go, in order. The registry of classes never lets a listener go.
class Departures : public merix::rx::ClassListener {
public:
    static std::vector<std::wstring>& names() {
        static auto* const listener = new Departures;
        return listener->m_names;
    }
    /// Called before a class goes.
    static inline std::function<void()> before;
    void classAboutToBeDeleted(const MxRxClass& aClass) override {
        if (before)
            before();
        m_names.emplace_back(aClass.name());
    }
    void hierarchyBuilt() override {}

private:
    Departures() { merix::rx::addClassListener(this); }
    std::vector<std::wstring> m_names;
};

/// Defines functions of the module that comes, "Other" and their code.
class Definitions : public merix::rx::ClassListener {
public:
    static std::vector<int>& codes() {
        static auto* const listener = new Definitions;
        return listener->m_codes;
    }
    void classAboutToBeDeleted(const MxRxClass&) override {}
    void hierarchyBuilt() override {
        for (const int code : m_codes)
            merix::ed::HostFunctions::instance().define(QStringLiteral("Other%1").arg(code), code);
    }

private:
    Definitions() { merix::rx::addClassListener(this); }
    std::vector<int> m_codes;
};

/// Stands before the host's editor, hands everything on, and says when a reactor leaves.
class EditorDoor final : public MxEditor {
public:
    explicit EditorDoor(std::function<void()> left)
        : m_left(std::move(left)) {
        merix::rx::setSystemRegistryEntry(L"MxEditor", this);
    }
    ~EditorDoor() override { merix::rx::setSystemRegistryEntry(L"MxEditor", &merix::ed::Editor::instance()); }
    void addReactor(MxEditorReactor* reactor) override { merix::ed::Editor::instance().addReactor(reactor); }
    void removeReactor(MxEditorReactor* reactor) override {
        m_left();
        merix::ed::Editor::instance().removeReactor(reactor);
    }

private:
    std::function<void()> m_left;
};

/// Says when it is changed.
class Watcher final : public MxDbObjectReactor {
public:
    explicit Watcher(std::function<void()> changed)
        : m_changed(std::move(changed)) {}
    void modified(const MxDbObject*) override { m_changed(); }

private:
    std::function<void()> m_changed;
};

/// Drawings with notes of all kinds, open while the module comes and goes.
class ModuleTurnsTest : public LoadedModuleTest {
protected:
    /// Two new drawings, and one from a file with recorded notes of every type, one of them attached.
    std::vector<merix::ap::Document*> openDrawings() {
        std::vector<merix::ap::Document*> open{&document(), DocManager::instance().create()};
        for (merix::ap::Document* drawing : open) {
            DocManager::instance().activate(drawing);
            for (const QString& at : {QStringLiteral("1,1"), QStringLiteral("5,5"), QStringLiteral("9,9")})
                run("PHONOMARK", {at});
        }
        QFile recorded(QStringLiteral(MERIX_SOURCE_DIR "/tests/golden/drawings/recorded.dxf"));
        EXPECT_TRUE(recorded.open(QIODevice::ReadOnly));
        open.push_back(openCopyOf(recorded.readAll(), "recorded.dxf"));
        return open;
    }
    /// Opens the text of a DXF file as a file of that name.
    merix::ap::Document* openCopyOf(const QByteArray& text, const char* name) {
        const QString path = m_folder.filePath(QString::fromLatin1(name));
        const QString asDxf = m_folder.filePath(QStringLiteral("copy.dxf"));
        QFile file(path.endsWith(QLatin1String(".dxf")) ? path : asDxf);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        file.close();
        merix::ap::Document* opened = nullptr;
        const auto result = DocManager::instance().open(file.fileName(), &opened);
        EXPECT_TRUE(result.ok) << result.message.toStdString();
        if (file.fileName() != path) {
            EXPECT_TRUE(DocManager::instance().saveAs(*opened, path).ok);
        }
        return opened;
    }
    QByteArray savedText(merix::ap::Document& drawing) {
        const QString path = m_folder.filePath(QStringLiteral("saved%1.dxf").arg(quintptr(&drawing)));
        EXPECT_TRUE(DocManager::instance().saveAs(drawing, path).ok);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }
    /// The handles of the entities that carry a transient reactor: the listed notes of a module at work, in the order
    /// of the drawing; one that carries two stands there twice.
    static std::vector<std::wstring> watchedNotes(const merix::ap::Document& drawing) {
        std::vector<std::wstring> handles;
        for (const merix::db::ObjectStub& stub : drawing.database()->imp().stubs())
            for (const auto& reactor : stub.object ? stub.object->reactors() : std::vector<MxDbReactorEntry>())
                if (reactor.transient) {
                    wchar_t text[17];
                    stub.handle.getIntoAsciiBuffer(text);
                    handles.emplace_back(text);
                }
        return handles;
    }
    /// The records of notes, their reactors and their list.
    std::vector<merix::test::Record> notesTags(const QByteArray& dxf) {
        QFile file(m_folder.filePath(QStringLiteral("tags.dxf")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(dxf) == dxf.size());
        file.close();
        std::vector<merix::test::Record> found;
        for (const char* section : {"ENTITIES", "OBJECTS"})
            for (auto& record : merix::test::records(merix::test::readTags(file.fileName()), section))
                if (const QByteArray type = record[0].value.trimmed();
                    type == "PHONOMARK" || type == "PhonomarkPsReactor" || type == "XRECORD")
                    found.push_back(std::move(record));
        EXPECT_FALSE(found.empty());
        return found;
    }
    static std::size_t bytesInUse() { return mallinfo2().uordblks; }

private:
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(ModuleLoadTest, LoadingRegistersTheClassesAndTheCommands) {
    EXPECT_EQ(classesRegistered(), 0);
    const Module& module = load();
    EXPECT_EQ(classesRegistered(), int(kModuleClasses.size()));
    EXPECT_THAT(
        merix::ed::CommandStack::instance().commands(),
        ::testing::IsSupersetOf({QStringLiteral("PhonomarkCM_.PHONOMARK"), QStringLiteral("PhonomarkCM_.VOICEMAN"),
                                 QStringLiteral("PhonomarkCM_.VOICESHOW")}));
    EXPECT_TRUE(module.unloadable);
    EXPECT_TRUE(module.servesSeveralDocuments);
}

TEST_F(ModuleLoadTest, TheClassesComeInTheirOrder) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    static constexpr int kTaken = 77;
    std::string before = "came:";
    for (const wchar_t* taken : kModuleClasses) {
        // The host is stopped at the name that is taken; by then the classes before it have come and no other.
        EXPECT_EXIT(
            {
                newMxRxClass(taken, L"MxRxObject", kTaken, nullptr);
                std::signal(SIGABRT, [](int) {
                    std::fputs("came:", stderr);
                    for (const wchar_t* name : kModuleClasses)
                        if (const MxRxClass* known = mxrxFindMxRxClass(name); known && known->dwgVersion() != kTaken)
                            std::fprintf(stderr, " %ls", name);
                    std::fputs(".\n", stderr);
                    _exit(0);
                });
                load();
            },
            ::testing::ExitedWithCode(0), ::testing::EndsWith(before + ".\n"));
        before += ' ' + QString::fromWCharArray(taken).toStdString();
    }
}

TEST_F(ModuleLoadTest, TheClassesGoInTheReverseOrderOfTheirComing) {
    Module& module = load();
    Departures::names().clear();
    unload(module);
    EXPECT_THAT(Departures::names(), ::testing::ElementsAreArray(kModuleClasses.rbegin(), kModuleClasses.rend()));
}

TEST_F(ModuleTurnsTest, AnUnloadTakesItsStepsInTheirOrder) {
    Module& module = load();
    run("PHONOMARK", {QStringLiteral("10,20")});
    savedText(document());
    run("PHONOMARK", {QStringLiteral("20,20")});
    run("VOICESHOW"); // the switch differs from what the settings say
    std::vector<std::string> steps;
    const auto write = [&](const std::string& step) {
        const QSettings settings(QStringLiteral("VORKAS/MERIX/2026"), QStringLiteral("MERIX"));
        steps.push_back(step + (QFileInfo::exists(QStringLiteral(":/MrxPhonomarkRes")) ? ", texts" : ", no texts") +
                        (settings.value(QStringLiteral("VoiceShow"), 1).toInt() ? "" : ", switch written") + ", " +
                        std::to_string(watchedNotes(document()).size()) + " watched, " +
                        std::to_string(classesRegistered()) + " classes");
    };
    const EditorDoor door([&] { write("editor left"); });
    Departures::names().clear();
    Departures::before = [&] { write("class goes"); };
    Watcher watcher([&] { write("list saved"); });
    MxDbXrecord* list = nullptr;
    ASSERT_EQ(mxdbOpenObject(list, listOf(*document().database()), Mx::kForRead), Mx::eOk);
    list->addReactor(&watcher);
    list->close();
    unload(module);
    Departures::before = nullptr;
    ASSERT_EQ(mxdbOpenObject(list, listOf(*document().database()), Mx::kForRead), Mx::eOk);
    list->removeReactor(&watcher);
    list->close();
    ASSERT_EQ(steps.size(), 2 + kModuleClasses.size());
    EXPECT_EQ(steps[0], "list saved, no texts, 3 watched, 7 classes") << "two notes, and the list by this test";
    EXPECT_EQ(steps[1], "editor left, no texts, switch written, 1 watched, 7 classes");
    EXPECT_EQ(steps[2], "class goes, no texts, switch written, 1 watched, 7 classes");
    EXPECT_EQ(steps.back(), "class goes, no texts, switch written, 1 watched, 1 classes");
}

TEST_F(ModuleLoadTest, TheFunctionsCodeIsOneAndAnyOtherCodeHasNoResult) {
    Definitions::codes() = {-1, 0, 2, 3};
    load();
    EXPECT_EQ(call("(PhonomarkShow)"), "1");
    for (const int code : std::exchange(Definitions::codes(), {}))
        EXPECT_EQ(call(QStringLiteral("(Other%1)").arg(code).toLatin1().constData()), "nil") << code;
    auto& functions = merix::ed::HostFunctions::instance();
    EXPECT_FALSE(functions.undefine(QStringLiteral("PhonomarkShow"), 2));
    EXPECT_TRUE(functions.undefine(QStringLiteral("PhonomarkShow"), 1));
    EXPECT_NE(call("(PhonomarkShow)"), "1");
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
        EXPECT_EQ(classesRegistered(), int(kModuleClasses.size()));
        EXPECT_EQ(commandsOfTheModule(), 3);
        EXPECT_EQ(call("(PhonomarkShow)"), "1");
        EXPECT_EQ(DocManager::instance().all(), documents);
        EXPECT_EQ(entities(), notes);
        EXPECT_EQ(document().database()->imp().undo.undoUnits().size(), changes);
    }
    run("VOICESHOW"); // the notes are still listed and the command still works
    EXPECT_EQ(call("(PhonomarkShow)"), "0");
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
    EXPECT_EQ(classesRegistered(), int(kModuleClasses.size()));
    run("VOICESHOW");
    EXPECT_EQ(call("(PhonomarkShow)"), "0");
}

TEST_F(ModuleLoadTest, ACommandWithoutItsModuleDoesNothing) {
    Module& module = load();
    unload(module);
    EXPECT_THAT(printedBy("VOICESHOW"), HasSubstr("VOICESHOW: module not loaded"));
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
    EXPECT_EQ(classesRegistered(), int(kModuleClasses.size()));
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

TEST_F(ModuleLoadTest, UnloadingAndLoadingAgainChangesNoDrawing) {
    Module& module = load();
    run("PHONOMARK", {QStringLiteral("10,20")});
    ASSERT_EQ(entities().size(), 1u);
    QTemporaryDir folder;
    ASSERT_TRUE(DocManager::instance().saveAs(document(), folder.filePath(QStringLiteral("a.dxf"))).ok);
    const quint64 before = document().changes();
    unload(module);
    EXPECT_FALSE(document().isChanged());
    EXPECT_EQ(document().changes(), before);
    load();
    EXPECT_FALSE(document().isChanged());
    EXPECT_EQ(document().changes(), before);
}

TEST_F(ModuleTurnsTest, FiftyLoadsAndUnloadsLeaveDrawingsListsAndSettingsAsTheyWere) {
    load();
    const std::vector<merix::ap::Document*> open = openDrawings();
    run("VOICESHOW");
    std::vector<std::vector<std::wstring>> lists;
    std::vector<QByteArray> texts;
    for (merix::ap::Document* drawing : open) {
        texts.push_back(savedText(*drawing));
        lists.push_back(stored(*drawing->database()));
        EXPECT_THAT(lists.back(), ::testing::SizeIs(::testing::Ge(3u)));
        EXPECT_EQ(watchedNotes(*drawing), lists.back());
    }
    std::size_t memory = 0;
    for (int turn = 0; turn < 50 && !HasFailure(); ++turn) {
        SCOPED_TRACE(turn);
        unload(*ModuleLoader::instance().modules().front());
        EXPECT_FALSE(isMapped());
        EXPECT_EQ(classesRegistered(), 0);
        for (std::size_t i = 0; i < open.size(); ++i) {
            EXPECT_EQ(stored(*open[i]->database()), lists[i]);
            EXPECT_TRUE(savedText(*open[i]) == texts[i]) << "drawing " << i << " without its module";
            EXPECT_THAT(watchedNotes(*open[i]), ::testing::IsEmpty());
        }
        load();
        for (std::size_t i = 0; i < open.size(); ++i) {
            EXPECT_EQ(watchedNotes(*open[i]), lists[i]) << "each listed and watched once";
            EXPECT_TRUE(savedText(*open[i]) == texts[i]) << "drawing " << i << " with its module again";
        }
        EXPECT_EQ(call("(PhonomarkShow)"), "0");
        EXPECT_EQ(commandsOfTheModule(), 3);
        if (turn == 9)
            memory = bytesInUse();
    }
    EXPECT_LT(bytesInUse(), memory + 40 * kBytesPerTurn);
    EXPECT_EQ(ModuleLoader::instance().modules().size(), 1u);
}

TEST_F(ModuleTurnsTest, ADrawingSavedWithoutTheModuleKeepsItsNotesTheirListAndTheirAttachments) {
    Module& module = load();
    merix::ap::Document* const drawing = openDrawings().back();
    savedText(*drawing);
    const std::vector<std::wstring> list = stored(*drawing->database());
    const QByteArray before = savedText(*drawing);
    unload(module);
    for (const char* name : {"kept.dxf", "kept.merix"}) {
        // A run without the module: opened, changed, saved and closed.
        merix::ap::Document* kept = openCopyOf(before, name);
        run("LINE", {QStringLiteral("0,0"), QStringLiteral("5,5"), QString()});
        ASSERT_TRUE(DocManager::instance().save(*kept).ok);
        EXPECT_EQ(stored(*kept->database()), list) << name;
        const QString path = kept->path();
        DocManager::instance().close(*kept);

        load();
        ASSERT_TRUE(DocManager::instance().open(path, &kept).ok);
        EXPECT_EQ(watchedNotes(*kept), list) << name;
        EXPECT_EQ(notesTags(savedText(*kept)), notesTags(before)) << name;
        unload(*ModuleLoader::instance().modules().front());
        DocManager::instance().close(*kept);
    }
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
