// SPDX-License-Identifier: MIT
#include "merix/app/modules.h"

#include "merix/app/module_commands.h"

#include "merix/ap/document_imp.h"
#include "merix/ed/host_functions.h"
#include "merix/rx/module_loader.h"
#include "merix/rx/resource_modules.h"
#include "merix/ui/window_watch.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QWidget>

#include <dlfcn.h>

namespace merix::app {

namespace {

/// The file whose code an object's virtual functions are in.
QString codeFile(const QObject& object) {
    const void* table = *reinterpret_cast<const void* const*>(&object);
    Dl_info info{};
    return dladdr(table, &info) && info.dli_fname ? QFileInfo(QFile::decodeName(info.dli_fname)).canonicalFilePath()
                                                  : QString();
}

/// Windows of a module may be children of the main window and outlive its last message, but not its code.
void dropWindows(const rx::Module& module) {
    const QString file = QFileInfo(QString::fromStdString(module.path)).canonicalFilePath();
    QList<QPointer<QWidget>> all;
    for (QWidget* widget : QApplication::allWidgets())
        all.append(widget);
    for (const QPointer<QWidget>& known : qAsConst(all))
        if (QWidget* widget = known.data(); widget && codeFile(*widget) == file)
            delete widget;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QString installedModule() {
    for (const std::string& folder : rx::resourceFolders()) {
        const QString path = QString::fromStdString(folder) + QStringLiteral("/libMrxPhonomark.mrx");
        if (QFileInfo::exists(path))
            return path;
    }
    return {};
}

} // namespace

QString loadModule(const Options& options) {
    auto& loader = rx::ModuleLoader::instance();
    loader.setBeforeUnmap([](const rx::Module& module) {
        ed::HostFunctions::instance().dropModule(&module);
        dropWindows(module);
    });
    loader.setBeforeUnload([] { ui::WindowWatch::instance().endPress(); });
    registerModuleCommands(ed::CommandStack::instance());
    if (options.noModule)
        return {};
    const QString path = options.module.isEmpty() ? installedModule() : options.module;
    if (path.isEmpty())
        return QStringLiteral("libMrxPhonomark.mrx: the voice-note module is not beside the program "
                              "(--no-module does without it)");
    return QString::fromStdString(loader.load(path.toStdString()).error);
}

void closeAll() {
    ap::DocManager::instance().closeAll();
    rx::ModuleLoader::instance().unloadAll();
}

} // namespace merix::app
