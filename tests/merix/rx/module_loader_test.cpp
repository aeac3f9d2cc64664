// SPDX-License-Identifier: MIT
#include "merix/rx/module_loader.h"

#include "merix/rx/system_registry.h"
#include "tests/merix/rx/modules/recording_module.h"

#include <gmock/gmock.h>

#include <fstream>

namespace {

using merix::rx::Module;
using merix::rx::ModuleLoader;
using merix::rx::ModuleState;
using testing::EndsWith;
using testing::HasSubstr;

std::string fileOf(const std::string& kind) {
    return std::string(MODULE_DIR) + "/module_" + kind + ".mrx";
}

bool isMapped(const std::string& name) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.ends_with(name))
            return true;
    }
    return false;
}

class ModuleLoaderTest : public testing::Test {
protected:
    ModuleLoaderTest() {
        merix::rx::setSystemRegistryEntry(L"TestLog", &m_log);
        setDrawings(0);
    }
    ~ModuleLoaderTest() override {
        m_loader.setBeforeUnmap({});
        m_loader.setAroundTurn({});
        for (const auto& module : m_loader.modules()) {
            module->unloadable = true;
            m_loader.unload(*module);
        }
        setDrawings(0);
        merix::rx::setSystemRegistryEntry(L"TestLog", nullptr);
    }
    void setDrawings(int count) {
        m_loader.setForEachDrawing([count](const std::function<void()>& call) {
            for (int i = 0; i < count; ++i)
                call();
        });
    }

    TestLog m_log;
    ModuleLoader& m_loader = ModuleLoader::instance();
};

TEST_F(ModuleLoaderTest, LoadingSendsInitThenOneMessageForEachOpenDrawing) {
    setDrawings(2);
    const auto result = m_loader.load(fileOf("good"));
    ASSERT_TRUE(result) << result.error;
    EXPECT_EQ(m_log.text, "1 3 3 ");
    EXPECT_EQ(result.module->state, ModuleState::kLoaded);
    EXPECT_TRUE(result.module->unloadable);
    EXPECT_TRUE(result.module->servesSeveralDocuments);
}

TEST_F(ModuleLoaderTest, UnloadingTellsOfTheDrawingsFirstAndLeavesNothingMapped) {
    const auto loaded = m_loader.load(fileOf("good"));
    ASSERT_TRUE(isMapped("module_good.mrx"));
    setDrawings(2);
    m_log.text.clear();
    const auto result = m_loader.unload(*loaded.module);
    EXPECT_TRUE(result) << result.error;
    EXPECT_EQ(m_log.text, "4 4 2 ");
    EXPECT_FALSE(isMapped("module_good.mrx"));
    EXPECT_EQ(loaded.module->state, ModuleState::kUnloaded);
}

TEST_F(ModuleLoaderTest, AModuleCanBeLoadedAgainAfterItWasUnloaded) {
    m_loader.unload(*m_loader.load(fileOf("good")).module);
    m_log.text.clear();
    EXPECT_TRUE(m_loader.load(fileOf("good")));
    EXPECT_EQ(m_log.text, "1 ");
}

TEST_F(ModuleLoaderTest, LoadingAModuleTwiceIsRefusedAndSendsNothing) {
    m_loader.load(fileOf("good"));
    m_log.text.clear();
    EXPECT_THAT(m_loader.load(fileOf("good")).error, EndsWith("module_good.mrx is loaded already"));
    EXPECT_EQ(m_log.text, "");
}

TEST_F(ModuleLoaderTest, AModuleThatStaysMappedIsReported) {
    const auto loaded = m_loader.load(fileOf("pinned"));
    ASSERT_TRUE(loaded) << loaded.error;
    EXPECT_THAT(m_loader.unload(*loaded.module).error, EndsWith("was unloaded but stays mapped"));
    EXPECT_EQ(loaded.module->state, ModuleState::kUnloaded);
}

TEST_F(ModuleLoaderTest, AModuleForAnotherHostVersionIsRefusedWithBothVersions) {
    const auto result = m_loader.load(fileOf("old"));
    EXPECT_THAT(result.error, HasSubstr("it was built for host API 2024.3, this host has 2025.0"));
    EXPECT_EQ(m_log.text, "");
    EXPECT_FALSE(isMapped("module_old.mrx"));
}

TEST_F(ModuleLoaderTest, AModuleWhoseInitFailsIsClosedAndItsErrorKept) {
    const auto result = m_loader.load(fileOf("refusing"));
    EXPECT_THAT(result.error, EndsWith("its initialisation answered 7"));
    EXPECT_EQ(m_log.text, "1 2 ") << "it takes back what it did before it failed";
    EXPECT_FALSE(isMapped("module_refusing.mrx"));
    for (const auto& module : m_loader.modules()) {
        if (module->path.ends_with("module_refusing.mrx")) {
            EXPECT_EQ(module->state, ModuleState::kFailed);
            EXPECT_EQ(module->error, result.error);
        }
    }
}

TEST_F(ModuleLoaderTest, ALibraryWithoutTheEntryPointsIsNoModule) {
    EXPECT_THAT(m_loader.load(fileOf("headless")).error, HasSubstr("it is no module"));
}

TEST_F(ModuleLoaderTest, AMissingFileIsNamed) {
    const auto result = m_loader.load("/nowhere/none.mrx");
    EXPECT_EQ(result.error, "cannot load module /nowhere/none.mrx: there is no such file");
}

TEST_F(ModuleLoaderTest, AFileThatIsNoLibraryIsRefused) {
    const auto result = m_loader.load(MERIX_SOURCE_DIR "/README.md");
    EXPECT_THAT(result.error, HasSubstr("invalid ELF header"));
}

TEST_F(ModuleLoaderTest, AnExceptionFromAModuleStopsAtTheHost) {
    testing::internal::CaptureStderr();
    const auto result = m_loader.load(fileOf("throwing"));
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_THAT(told, HasSubstr("failed at message 1: on purpose"));
    EXPECT_THAT(told, HasSubstr("failed at message 2: on purpose"));
    EXPECT_THAT(result.error, EndsWith("its initialisation failed; it failed at its end too and stays mapped"));
    EXPECT_TRUE(isMapped("module_throwing.mrx"));
}

TEST_F(ModuleLoaderTest, AModuleThatFailsWhileLoadingIsEndedBeforeItIsUnmapped) {
    bool mappedInHook = false;
    m_loader.setBeforeUnmap([&](const Module&) {
        m_log.text += "hook ";
        mappedInHook = isMapped("module_good.mrx");
    });
    m_log.onMessage = [](int message) {
        if (message == kInitAppMsg)
            throw 1;
    };
    setDrawings(1);
    EXPECT_THAT(m_loader.load(fileOf("good")).error, EndsWith("its initialisation failed"));
    EXPECT_EQ(m_log.text, "1 2 hook ");
    EXPECT_TRUE(mappedInHook);
    EXPECT_FALSE(isMapped("module_good.mrx"));
}

TEST_F(ModuleLoaderTest, AModuleThatFailsAtItsEndStaysMapped) {
    bool hook = false;
    m_loader.setBeforeUnmap([&](const Module&) { hook = true; });
    Module& module = *m_loader.load(fileOf("good")).module;
    m_log.onMessage = [](int message) {
        if (message == kUnloadAppMsg)
            throw 1;
    };
    EXPECT_THAT(m_loader.unload(module).error, EndsWith("failed at its end: it was unloaded but stays mapped"));
    EXPECT_TRUE(hook);
    EXPECT_EQ(module.state, ModuleState::kUnloaded);
    EXPECT_TRUE(isMapped("module_good.mrx"));
}

TEST_F(ModuleLoaderTest, AModuleThatAnswersThatItsEndFailedStaysMapped) {
    Module& module = *m_loader.load(fileOf("unended")).module;
    EXPECT_THAT(m_loader.unload(module).error, EndsWith("failed at its end: it was unloaded but stays mapped"));
    EXPECT_EQ(module.state, ModuleState::kUnloaded);
    EXPECT_TRUE(isMapped("module_unended.mrx"));
    EXPECT_TRUE(m_loader.load(fileOf("unended"))) << "it can come back";
}

TEST_F(ModuleLoaderTest, AModuleStartsAndEndsInsideWhatIsSetAroundIt) {
    m_loader.setAroundTurn([&](const std::function<void()>& turn) {
        m_log.text += "( ";
        turn();
        m_log.text += ") ";
    });
    setDrawings(1);
    m_loader.unload(*m_loader.load(fileOf("good")).module);
    EXPECT_EQ(m_log.text, "( 1 ) 3 ( 4 2 ) ");
    m_log.text.clear();
    EXPECT_FALSE(m_loader.load(fileOf("refusing")));
    EXPECT_EQ(m_log.text, "( 1 2 ) ");
}

TEST_F(ModuleLoaderTest, AModuleThatDidNotDeclareItselfUnloadableStays) {
    Module& module = *m_loader.load(fileOf("good")).module;
    module.unloadable = false;
    EXPECT_THAT(m_loader.unload(module).error, HasSubstr("cannot be unloaded while the host runs"));
    EXPECT_EQ(module.state, ModuleState::kLoaded);
}

TEST_F(ModuleLoaderTest, DrawingsOpenedAndClosedLaterAreToldToLoadedModules) {
    m_loader.load(fileOf("good"));
    m_log.text.clear();
    m_loader.drawingLoaded();
    m_loader.drawingToBeUnloaded();
    EXPECT_EQ(m_log.text, "3 4 ");
}

TEST_F(ModuleLoaderTest, NoModuleIsCurrentOutsideAMessage) {
    Module& module = *m_loader.load(fileOf("good")).module;
    EXPECT_EQ(m_loader.currentModule(), nullptr);
    EXPECT_EQ(m_loader.sendMessage(module, kInvkSubrMsg), 0);
    EXPECT_THAT(m_log.text, EndsWith("5 "));
}

} // namespace
