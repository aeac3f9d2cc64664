// SPDX-License-Identifier: MIT
#include "merix/app/program.h"

#include "merix/ap/autosave.h"
#include "merix/ap/document_imp.h"
#include "merix/app/end_signals.h"
#include "merix/app/modules.h"
#include "merix/app/options.h"
#include "merix/app/picture_file.h"
#include "merix/app/script.h"
#include "merix/ui/look.h"
#include "merix/ui/main_window.h"
#include "merix/ui/render.h"
#include "merix/ui/window_memory.h"

#include <QApplication>
#include <QFileInfo>
#include <QTimer>

#include <clocale>
#include <cstdio>
#include <memory>

namespace merix::app {

namespace {

int complain(const QString& why) {
    std::fprintf(stderr, "merix: %s\n", qPrintable(why));
    return 1;
}

/// Puts the command line's text on standard output, line by line.
void showConsole(QObject& context) {
    ed::Console& console = ed::Console::instance();
    const auto write = [](const QString& text) {
        std::fputs(text.toUtf8().constData(), stdout);
        std::fflush(stdout);
    };
    QObject::connect(&console, &ed::Console::printed, &context, [write, first = true](const QString& line) mutable {
        write(std::exchange(first, false) ? line : QLatin1Char('\n') + line);
    });
    QObject::connect(&console, &ed::Console::continued, &context, write);
    QObject::connect(&context, &QObject::destroyed, [write] {
        if (!ed::Console::instance().history().isEmpty())
            write(QStringLiteral("\n"));
    });
}

QString convert(const Options& options) {
    auto& manager = ap::DocManager::instance();
    ap::Document* document = nullptr;
    if (const ap::Result result = manager.open(options.input, &document); !result.ok)
        return result.message;
    return manager.saveAs(*document, options.output, options.form).message;
}

QString render(const Options& options) {
    ap::Document* document = nullptr;
    if (const ap::Result result = ap::DocManager::instance().open(options.input, &document); !result.ok)
        return result.message;
    const QImage picture = ui::renderToImage(*document->database(), {}, options.size);
    if (picture.isNull())
        return QStringLiteral("%1: the picture is too large").arg(options.output);
    return writePicture(picture, options.output);
}

/// The work that needs no person: drawings, then the script. Empty, or why it failed.
QString runUnattended(const Options& options, ui::MainWindow& window) {
    for (const QString& drawing : options.drawings)
        if (const ap::Result result = ap::DocManager::instance().open(drawing); !result.ok)
            return result.message;
    if (options.script.isEmpty())
        return {};
    LineReader lines;
    if (const QString why = lines.open(options.script); !why.isEmpty())
        return why;
    Script script(window);
    QObject::connect(&ap::DocManager::instance(), &ap::DocManager::quitRequested, &script, &Script::stop);
    return script.run(lines, options.script == QLatin1String("-") ? QStringLiteral("stdin") : options.script);
}

/// Copies of changed drawings while somebody, or a script, works on them.
void startAutosave(QObject& context) {
    QObject::connect(&ap::Autosave::instance(), &ap::Autosave::failed, &context,
                     [](const QString& message) { ed::Console::instance().print(QLatin1Char('\n') + message); });
}

int runWindow(const Options& options) {
    const bool unattended = options.headless || !options.script.isEmpty();
    QObject context;
    if (unattended)
        showConsole(context);
    startAutosave(context);
    const EndSignals signals;
    ui::MainWindow window;
    window.setUnattended(unattended);
    if (!unattended)
        ui::placeAsBefore(window);
    QObject::connect(&ap::DocManager::instance(), &ap::DocManager::quitRequested, qApp, &QApplication::quit,
                     Qt::QueuedConnection);
    if (const QString why = loadModule(options); !why.isEmpty()) {
        if (unattended || !options.module.isEmpty())
            return complain(why);
        ed::Console::instance().print(QLatin1Char('\n') + why);
    }
    window.show();
    window.activateWindow();
    QString failure;
    QTimer::singleShot(0, &window, [&] {
        if (!unattended) {
            for (const QString& drawing : options.drawings)
                window.openFile(drawing);
            window.recoveryBar()->look();
            return;
        }
        failure = runUnattended(options, window);
        QCoreApplication::quit();
    });
    QApplication::exec();
    if (EndSignals::received())
        ap::Autosave::instance().keepUnsaved(); // what the commands that were cancelled left
    else if (unattended)
        ap::Autosave::instance().keepRecovered();
    closeAll();
    while (ui::MainWindow::all().size() > 1)
        delete ui::MainWindow::all().back(); // those that drawings were moved to
    return failure.isEmpty() || EndSignals::received() ? 0 : complain(failure);
}

int runFiles(const Options& options) {
    QString failure = loadModule(options);
    if (failure.isEmpty())
        failure = options.mode == Options::Mode::kConvert ? convert(options) : render(options);
    closeAll();
    return failure.isEmpty() ? 0 : complain(failure);
}

bool hasScreen() {
    return qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || !qEnvironmentVariableIsEmpty("DISPLAY") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

/// Where nobody sits before a window, standard error is for what went wrong: no remarks of the toolkit on platforms.
void onlyErrors(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtCriticalMsg || type == QtFatalMsg)
        std::fprintf(stderr, "merix: %s\n", qPrintable(message));
}

int runQt(const Options& options, char* programName) {
    if (options.headless || !options.script.isEmpty() || options.mode != Options::Mode::kWindow)
        qInstallMessageHandler(onlyErrors);
    if (options.headless || options.mode != Options::Mode::kWindow)
        qputenv("QT_QPA_PLATFORM", "offscreen");
    else if (!hasScreen())
        return complain(QStringLiteral("there is no screen (DISPLAY is not set); --headless does without one"));
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QCoreApplication::setApplicationName(QStringLiteral("merix"));
    QCoreApplication::setApplicationVersion(QStringLiteral(MERIX_VERSION));
    int count = 1; // Qt's own options are no part of the program's
    char* values[] = {programName, nullptr};
    if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"))
        qputenv("QT_XCB_GL_INTEGRATION", "none"); // nothing is drawn with OpenGL: its driver need not be loaded
    QApplication application(count, values);
    std::setlocale(LC_NUMERIC, "C"); // numbers in files and on the command line have a decimal point
    ui::applyDarkLook(application);
    ap::DocManager::instance();
    return options.mode == Options::Mode::kWindow ? runWindow(options) : runFiles(options);
}

} // namespace

int runProgram(int argc, char** argv) {
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    const Options options = parseOptions(arguments);
    if (!options.error.isEmpty())
        return complain(options.error);
    if (options.mode == Options::Mode::kVersion || options.mode == Options::Mode::kHelp) {
        const QString text =
            options.mode == Options::Mode::kHelp ? helpText() : QStringLiteral("merix " MERIX_VERSION "\n");
        return std::fputs(qPrintable(text), stdout) >= 0 && std::fflush(stdout) == 0 ? 0 : 1;
    }
    char name[] = "merix";
    const int status = runQt(options, argc > 0 ? argv[0] : name);
    EndSignals::leave();
    return status;
}

} // namespace merix::app
