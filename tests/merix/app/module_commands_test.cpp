// SPDX-License-Identifier: MIT
// Modules listed, loaded and unloaded in the real program, by script.
#include "merix/app/module_commands.h"

#include "tests/support/process.h"

#include <QDir>
#include <QFile>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using merix::test::Outcome;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

namespace {

class ModuleCommandsTest : public testing::Test {
protected:
    Outcome run(const QByteArray& script, const QStringList& options = {}) {
        return merix::test::run(
            QStringLiteral(MERIX_BINARY_DIR "/bin/merix"),
            QStringList{QStringLiteral("--headless"), QStringLiteral("--script"), QStringLiteral("-")} + options,
            m_folder.path(), script);
    }
    /// What the program printed; it ended well.
    std::string fine(const QByteArray& script, const QStringList& options = {}) {
        const Outcome outcome = run(script, options);
        EXPECT_EQ(outcome.status, 0) << outcome.err.constData() << outcome.out.constData();
        EXPECT_EQ(outcome.err, QByteArray());
        return outcome.out.toStdString();
    }
    /// Why the last line of a script is refused.
    std::string refused(const QByteArray& script, const QStringList& options = {}) {
        const Outcome outcome = run(script, options);
        EXPECT_EQ(outcome.status, 1) << outcome.out.constData();
        return outcome.err.toStdString();
    }
    static QByteArray testModule(const char* kind) { return QByteArray(TEST_MODULES "/module_") + kind + ".mrx"; }
    QTemporaryDir m_folder;
};

const QByteArray kUnload = "MODUNLOAD\nMrxPhonomark\n@expect Unloaded libMrxPhonomark.mrx\n";
const QByteArray kLoad = "MODLOAD\n" MERIX_BINARY_DIR "/bin/libMrxPhonomark.mrx\n@expect Loaded libMrxPhonomark.mrx\n";

} // namespace

TEST_F(ModuleCommandsTest, TheListNamesEachModuleWithItsStateVersionAndFile) {
    EXPECT_THAT(fine("MODULES\n"), ContainsRegex("\nlibMrxPhonomark.mrx: loaded, host API 20[0-9]+\\.[0-9]+, "
                                                 "/[^ ]*/bin/libMrxPhonomark.mrx\n"));
    EXPECT_THAT(fine(kUnload + "MODULES\n"), ContainsRegex("\nlibMrxPhonomark.mrx: not loaded, host API 20[0-9]+"));
    EXPECT_THAT(fine("MODULES\n", {QStringLiteral("--no-module")}), HasSubstr("No module was asked for."));
}

TEST_F(ModuleCommandsTest, AModuleIsFoundByAnyFormOfItsName) {
    for (const QByteArray& name :
         {QByteArray("libMrxPhonomark.mrx"), QByteArray("LIBMRXPHONOMARK"), QByteArray("mrxphonomark")})
        EXPECT_THAT(fine("MODUNLOAD\n" + name + "\n"), HasSubstr("Unloaded libMrxPhonomark.mrx")) << name.constData();
    EXPECT_THAT(fine("MODUNLOAD\nPhonomark\n"), HasSubstr("There is no module \"Phonomark\"; MODULES lists them."));
    EXPECT_THAT(fine("MODUNLOAD\n\nMODLOAD\n\n"), Not(HasSubstr("There is no")));
}

TEST_F(ModuleCommandsTest, ItsCommandsAndFunctionsAnswerThatItIsGone) {
    for (const QByteArray command : {"PHONOMARK", "VOICEMAN", "VOICESHOW"})
        EXPECT_THAT(refused("NEW\n" + kUnload + command + "\n"),
                    HasSubstr(command.toStdString() + ": module not loaded"));
    EXPECT_THAT(refused("NEW\n" + kUnload + "(PhonomarkShow)\n"), HasSubstr("Unknown function \"PhonomarkShow\"."));
    EXPECT_THAT(fine("NEW\n(PhonomarkShow)\n@expect 1\n" + kUnload + kLoad + "(PhonomarkShow)\n@expect 1\n"),
                Not(HasSubstr("Unknown")));
}

TEST_F(ModuleCommandsTest, NothingCallsIntoAModuleThatIsGone) {
    // Notes stay in the drawing as records; every event that the module watched goes on without it.
    fine("NEW\nLINE\n0,0\n50,0\n\nPHONOMARK\n20,20\nPHONOMARK\n40,20\nSAVEAS\nnotes.dxf\n@hover 20 20\n@wait 50\n" +
         kUnload +
         "@hover 40 20\n@wait 50\nZOOM\nExtents\nLAYOUTSWITCH\nLayout1\nLAYOUTSWITCH\nModel\nLINE\n0,0\n9,9\n\nU\nREDO "
         "1\n"
         "NEW\n@activate 1\nMOVE\nall\n\n0,0\n5,5\nU\nSAVE\n@expect Saved\nAUDIT\n@expect No faults found\nCLOSE\n"
         "OPEN\nnotes.dxf\n@expect Opened\n" +
         kLoad + "AUDIT\n@expect No faults found\nPHONOMARK\n60,20\nSAVE\n@expect Saved\n");
    QFile file(m_folder.filePath(QStringLiteral("notes.dxf")));
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    EXPECT_EQ(file.readAll().replace("\r\n", "\n").count("\n  0\nPHONOMARK\n"), 3);
}

TEST_F(ModuleCommandsTest, WhatIsNoModuleIsRefusedWithTheReason) {
    QFile text(m_folder.filePath(QStringLiteral("text.mrx")));
    ASSERT_TRUE(text.open(QFile::WriteOnly));
    text.write("no code");
    text.close();
    const std::string folder = m_folder.path().toStdString();
    EXPECT_THAT(fine("MODLOAD\nnone.mrx\n"),
                HasSubstr("cannot load module " + folder + "/none.mrx: there is no such file"));
    EXPECT_THAT(fine("MODLOAD\n.\n"), HasSubstr("there is no such file"));
    EXPECT_THAT(fine("MODLOAD\ntext.mrx\n"), HasSubstr("cannot load module " + folder + "/text.mrx: "));
    EXPECT_THAT(fine("MODLOAD\n" MERIX_BINARY_DIR "/bin/libmerix.so\n"),
                HasSubstr("it is no module: mxrxGetApiVersion or mxrxEntryPoint is missing"));
    EXPECT_THAT(fine("MODLOAD\n" + testModule("old") + "\n"), HasSubstr("it was built for host API "));
    EXPECT_THAT(fine("MODLOAD\n" + testModule("refusing") + "\nMODULES\n"),
                ContainsRegex("\nmodule_refusing.mrx: failed, host API [^\n]*its initialisation answered"));
}

TEST_F(ModuleCommandsTest, AModuleIsLoadedAndUnloadedOnce) {
    EXPECT_THAT(fine("MODLOAD\n" MERIX_BINARY_DIR "/bin/libMrxPhonomark.mrx\n"),
                HasSubstr("libMrxPhonomark.mrx is loaded already"));
    const std::string out = fine(kUnload + "MODUNLOAD\nMrxPhonomark\n@expect is not loaded\n" + kLoad + "MODULES\n");
    const std::size_t first = out.find("host API");
    ASSERT_NE(first, std::string::npos);
    EXPECT_EQ(out.find("host API", first + 1), std::string::npos) << "it is listed once";
}

TEST_F(ModuleCommandsTest, OneThatIsAtWorkIsNotUnloaded) {
    EXPECT_THAT(refused("NEW\nVOICEMAN\nMODUNLOAD MrxPhonomark\n"), HasSubstr("The command VOICEMAN is under way."));
    // At its prompt the line is an answer; the command ends, then the module goes.
    fine("NEW\nPHONOMARK\n@key Escape\n" + kUnload);
}
