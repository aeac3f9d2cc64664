// SPDX-License-Identifier: MIT
// The module as it is shipped, loaded by the host's loader, with a drawing open.
#pragma once

#include "host/db/database.h"
#include "host/db/dictionary.h"
#include "merix/ap/document_imp.h"
#include "merix/db/database_imp.h"
#include "merix/ed/command_stack.h"
#include "merix/ed/console.h"
#include "merix/ed/host_functions.h"
#include "merix/ed/prompter.h"
#include "merix/rx/module_loader.h"
#include "tests/phonomark/dictionary_entry.h"

#include <QFile>
#include <QSettings>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <deque>

inline constexpr std::array kModuleClasses{L"MxDbPhonomark",      L"PhonomarkDcReactor", L"PhonomarkEdReactor",
                                           L"PhonomarkEnReactor", L"PhonomarkPmReactor", L"PhonomarkPsReactor",
                                           L"PhonomarkObReactor"};

inline constexpr char kModulePath[] = MERIX_BINARY_DIR "/bin/libMrxPhonomark.mrx";

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

class LoadedModuleTest : public ::testing::Test {
protected:
    void SetUp() override {
        QSettings(QStringLiteral("VORKAS/MERIX/2026"), QStringLiteral("MERIX")).clear();
        m_document = merix::ap::DocManager::instance().create();
    }
    void TearDown() override {
        merix::rx::ModuleLoader::instance().unloadAll();
        while (auto* open = dynamic_cast<merix::ap::Document*>(merix::ap::DocManager::instance().curDocument()))
            merix::ap::DocManager::instance().close(*open);
    }

    static merix::rx::Module& load() {
        const auto result = merix::rx::ModuleLoader::instance().load(kModulePath);
        if (!result)
            throw std::runtime_error(result.error);
        return *result.module;
    }
    static void unload(merix::rx::Module& module) {
        const auto result = merix::rx::ModuleLoader::instance().unload(module);
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
        for (const wchar_t* name : kModuleClasses)
            count += mxrxFindMxRxClass(name) ? 1 : 0;
        return count;
    }
    static MxDbObjectId listOf(const MxDbDatabase& database) {
        return dictionaryEntry(dictionaryEntry(database.namedObjectsDictionaryId(), L"PHONO_MARK"), L"VOICE_LIST");
    }
    /// The handles that the drawing's stored list of notes names, in order.
    static std::vector<std::wstring> stored(const MxDbDatabase& database) {
        std::vector<std::wstring> handles;
        MxDbXrecord* list = nullptr;
        if (mxdbOpenObject(list, listOf(database), Mx::kForRead) != Mx::eOk)
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
