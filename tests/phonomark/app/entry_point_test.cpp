// SPDX-License-Identifier: MIT
// Every message that a host may send, one by one: to a module at work and as the first after it was mapped.
#include "phonomark/app/entry_point.h"

#include "tests/phonomark/app/loaded_module.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <dlfcn.h>

using merix::ap::DocManager;
using merix::rx::Module;
using merix::rx::ModuleLoader;

namespace {

constexpr int kLastMessageTried = 20;

class EntryPointTest : public LoadedModuleTest, public ::testing::WithParamInterface<int> {
protected:
    static int send(Module& module, int message) { return ModuleLoader::instance().sendMessage(module, message); }
    static bool hasResources() { return QFileInfo::exists(QStringLiteral(":/MrxPhonomarkRes")); }
    std::vector<std::wstring> savedList() {
        EXPECT_TRUE(DocManager::instance().writeCopy(document(), m_folder.filePath(QStringLiteral("copy.merix"))).ok);
        return stored(*document().database());
    }
    /// The module does what it is there for, each thing once.
    void expectAtWork() {
        EXPECT_EQ(classesRegistered(), int(kModuleClasses.size()));
        EXPECT_EQ(commandsOfTheModule(), 3);
        EXPECT_EQ(call("(PhonomarkShow)"), "1");
        EXPECT_TRUE(hasResources());
        EXPECT_EQ(savedList().size(), 1u);
        EXPECT_THAT(printedBy("VOICESHOW"), ::testing::HasSubstr("Voice notes are hidden."));
        EXPECT_THAT(printedBy("VOICESHOW"), ::testing::HasSubstr("Voice notes are shown."));
    }

private:
    QTemporaryDir m_folder;
};

INSTANTIATE_TEST_SUITE_P(Messages, EntryPointTest, ::testing::Range(-1, kLastMessageTried + 1));

} // namespace

TEST_P(EntryPointTest, IsAnsweredWithSuccessByAModuleAtWork) {
    Module& module = load();
    run("PHONOMARK", {QStringLiteral("10,20")});
    const auto notes = entities();
    ASSERT_EQ(notes.size(), 1u);
    const auto open = DocManager::instance().all();
    const auto units = document().database()->imp().undo.undoUnits().size();
    EXPECT_EQ(send(module, GetParam()), 0);
    EXPECT_EQ(DocManager::instance().all(), open);
    EXPECT_EQ(entities(), notes);
    switch (GetParam()) {
    case kUnloadAppMsg:
        EXPECT_EQ(classesRegistered(), 0);
        EXPECT_FALSE(hasResources());
        EXPECT_EQ(commandsOfTheModule(), 3) << "the command group stays";
        EXPECT_EQ(send(module, kUnloadAppMsg), 0) << "there is nothing left to unload";
        EXPECT_EQ(send(module, kInitAppMsg), 0);
        break;
    case kUnloadDwgMsg:
        EXPECT_NE(call("(PhonomarkShow)"), "1");
        EXPECT_EQ(send(module, kLoadDwgMsg), 0);
        break;
    default:
        EXPECT_EQ(document().database()->imp().undo.undoUnits().size(), units);
    }
    expectAtWork();
    unload(module);
    EXPECT_FALSE(isMapped());
    run("ZOOM", {QStringLiteral("In")}); // told to whoever is still attached to the editor
    load();
    expectAtWork();
}

TEST_P(EntryPointTest, IsAnsweredWithSuccessAsTheFirst) {
    QSettings settings(QStringLiteral("VORKAS/MERIX/2026"), QStringLiteral("MERIX"));
    settings.setValue(QStringLiteral("VoiceShow"), 0);
    settings.sync();
    void* const library = dlopen(kModulePath, RTLD_NOW | RTLD_LOCAL);
    ASSERT_TRUE(library) << dlerror();
    const auto entryPoint = reinterpret_cast<MxRxEntryPoint>(dlsym(library, "mxrxEntryPoint"));
    ASSERT_TRUE(entryPoint);
    EXPECT_FALSE(hasResources());
    EXPECT_EQ(classesRegistered(), 0);
    int id = 0;
    EXPECT_EQ(entryPoint(GetParam(), &id), 0);
    EXPECT_EQ(hasResources(), GetParam() != kUnloadAppMsg) << "they come with the first message of any kind";
    EXPECT_EQ(classesRegistered(), GetParam() == kInitAppMsg ? int(kModuleClasses.size()) : 0);
    EXPECT_EQ(entryPoint(kUnloadAppMsg, &id), 0);
    EXPECT_FALSE(hasResources());
    settings.sync();
    EXPECT_EQ(settings.value(QStringLiteral("VoiceShow")).toInt(), GetParam() == kInitAppMsg ? 0 : 1)
        << "the switch is written whether it was read or not";
    EXPECT_EQ(dlclose(library), 0);
    EXPECT_FALSE(isMapped());
}

TEST_F(LoadedModuleTest, DocumentsThatComeAndGoBeforeTheFirstMessageAndAfterTheLastReachNoRegistry) {
    void* const library = dlopen(kModulePath, RTLD_NOW | RTLD_LOCAL);
    ASSERT_TRUE(library) << dlerror();
    const auto entryPoint = reinterpret_cast<MxRxEntryPoint>(dlsym(library, "mxrxEntryPoint"));
    ASSERT_TRUE(entryPoint);
    QTemporaryDir folder;
    // Its reactor is attached all the time.
    const auto comeAndGo = [&](const QString& name) {
        merix::ap::Document* other = DocManager::instance().create();
        DocManager::instance().activate(&document());
        EXPECT_TRUE(DocManager::instance().saveAs(document(), folder.filePath(name)).ok);
        DocManager::instance().close(*other);
        EXPECT_TRUE(DocManager::instance().undo(document()));
        EXPECT_TRUE(DocManager::instance().redo(document()));
        run("ZOOM", {QStringLiteral("In")});
        run("LINE", {QStringLiteral("0,0"), QStringLiteral("5,5"), QString()});
    };
    run("LINE", {QStringLiteral("0,0"), QStringLiteral("5,5"), QString()});
    comeAndGo(QStringLiteral("before.dxf"));
    int id = 0;
    ASSERT_EQ(entryPoint(kInitAppMsg, &id), 0);
    run("PHONOMARK", {QStringLiteral("10,20")});
    comeAndGo(QStringLiteral("at-work.dxf"));
    EXPECT_EQ(stored(*document().database()).size(), 1u);
    ASSERT_EQ(entryPoint(kUnloadAppMsg, &id), 0);
    comeAndGo(QStringLiteral("after.dxf"));
    ASSERT_EQ(entryPoint(kUnloadAppMsg, &id), 0);
    EXPECT_EQ(dlclose(library), 0);
    EXPECT_FALSE(isMapped());
    comeAndGo(QStringLiteral("gone.dxf"));
}
