// SPDX-License-Identifier: MIT
// What the tests of the document manager share: a log of what is told, drawings in a folder, a module.
#pragma once

#include "merix/ap/document_imp.h"

#include "host/db/dictionary.h"
#include "host/ed/input.h"
#include "merix/db/database_imp.h"
#include "merix/db/entities.h"
#include "merix/ed/command_stack.h"
#include "merix/ed/console.h"
#include "merix/ed/editor.h"
#include "merix/ed/host_functions.h"
#include "merix/ed/prompter.h"
#include "merix/rx/module_loader.h"
#include "merix/rx/system_registry.h"
#include "tests/merix/rx/modules/recording_module.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace merix::test {

using ap::DocManager;
using ap::Document;

inline DocManager& manager() {
    return DocManager::instance();
}

/// Adds a line to the current space, in the undo unit that is open.
inline MxDbObjectId addLine(const Document& document) {
    MxDbBlockTableRecord* space = nullptr;
    if (mxdbOpenObject(space, document.database()->currentSpaceId(), Mx::kForWrite) != Mx::eOk)
        return {};
    auto* line = new db::Line;
    MxDbObjectId id;
    if (space->appendMxDbEntity(id, line) == Mx::eOk)
        line->close();
    space->close();
    return id;
}

class Log : public MxApDocManagerReactor, public MxEditorReactor {
public:
    Log() {
        manager().addReactor(this);
        ed::Editor::instance().addReactor(this);
    }
    ~Log() override {
        manager().removeReactor(this);
        ed::Editor::instance().removeReactor(this);
    }
    void documentCreated(MxApDocument* d) override { add("created", d); }
    void documentToBeActivated(MxApDocument* d) override { add("to be activated", d); }
    void documentActivated(MxApDocument* d) override { add("activated", d); }
    void documentToBeDeactivated(MxApDocument* d) override { add("to be deactivated", d); }
    void documentToBeDestroyed(MxApDocument* d) override { add("to be destroyed", d); }
    void beginSave(MxDbDatabase* database, const wchar_t* fileName) override {
        add("save " + QFileInfo(QString::fromWCharArray(fileName)).fileName().toStdString(),
            manager().document(database));
        if (onSave)
            onSave(database);
    }
    /// Called with every line about a document.
    std::function<void(const std::string& line, Document* document)> onLine;
    void layoutSwitched(const wchar_t* name) override {
        lines.push_back("layout " + QString::fromWCharArray(name).toStdString());
    }
    std::vector<std::string> take() { return std::exchange(lines, {}); }

    std::vector<std::string> lines;
    std::function<void(MxDbDatabase*)> onSave;

private:
    void add(const std::string& what, MxApDocument* document) {
        const auto* known = static_cast<const Document*>(document);
        const std::string current = manager().curDocument() == document ? " (current)" : "";
        lines.push_back(what + " " + (known ? known->title().toStdString() : "?") + current);
        if (onLine)
            onLine(std::string(lines.back()), const_cast<Document*>(known));
    }
};

inline std::vector<MxDbObjectId> entitiesOf(const Document& document) {
    const MxDbDatabase& database = *document.database();
    return database.imp().block(database.currentSpaceId())->entityIds();
}

inline QByteArray bytesOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

/// The module of the loader's tests, unloaded at the end.
class LoadedModule {
public:
    explicit LoadedModule(std::function<void(int message)> onMessage = {}) {
        log.onMessage = std::move(onMessage);
        rx::setSystemRegistryEntry(L"TestLog", &log);
        m_module = rx::ModuleLoader::instance().load(MODULE_GOOD).module;
    }
    ~LoadedModule() {
        unload();
        rx::setSystemRegistryEntry(L"TestLog", nullptr);
    }
    void unload() {
        if (m_module && m_module->state == rx::ModuleState::kLoaded)
            rx::ModuleLoader::instance().unload(*m_module);
    }
    TestLog log;

private:
    rx::Module* m_module = nullptr;
};

class DocManagerTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_folder.isValid());
        manager();
        ed::Console::instance().markRead();
    }
    void TearDown() override {
        for (Document* document : manager().all())
            manager().close(*document);
    }
    QString path(const char* name) const { return m_folder.filePath(QString::fromUtf8(name)); }
    /// A drawing with a line in a file, closed again.
    QString drawing(const char* name) {
        Document* document = manager().create();
        addLine(*document);
        EXPECT_EQ(manager().saveAs(*document, path(name)).message, QString());
        manager().close(*document);
        return path(name);
    }
    static std::string shown() { return ed::Console::instance().unread().toStdString(); }
    static void run(const char* line) { ed::CommandStack::instance().runLine(QString::fromUtf8(line)); }

    QTemporaryDir m_folder;
};

inline Document* g_document = nullptr; // what the commands of these tests work on
inline std::function<void()> g_body;

inline void registerCommand(const wchar_t* name, std::function<void()> body) {
    g_body = std::move(body);
    ed::CommandStack::instance().addCommand(L"TEST", name, name, 1, [] { g_body(); });
}

} // namespace merix::test
