// SPDX-License-Identifier: MIT
#include "merix/ui/main_window.h"

#include "merix/ed/command_stack.h"
#include "merix/ed/prompter.h"
#include "merix/ui/icons.h"
#include "merix/ui/look.h"
#include "merix/ui/plot.h"

#include <QApplication>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPointer>
#include <QStatusBar>
#include <QTabBar>
#include <QToolBar>
#include <QVBoxLayout>

namespace merix::ui {

namespace {

MainWindow* g_window = nullptr;

QKeySequence keys(const char* sequence) {
    return QKeySequence(QString::fromLatin1(sequence));
}

/// "GRIP_STRETCH" and "Grip stretch" are "Grip stretch" to a reader.
QString readable(const std::wstring& unit) {
    QString name = QString::fromStdWString(unit).replace(QLatin1Char('_'), QLatin1Char(' '));
    if (name == name.toUpper())
        name = name.left(1) + name.mid(1).toLower();
    return name;
}

QString fileFilter() {
    return MainWindow::tr("Drawings (*.dxf *.DXF *.merix)");
}

} // namespace

MainWindow::MainWindow() {
    g_window = this;
    setObjectName(QStringLiteral("mainWindow"));
    setAcceptDrops(true);
    resize(1280, 800);
    registerPlotCommands(ed::CommandStack::instance());
    buildCentre();
    buildMenus();
    buildStatusBar();
    connectDocuments();
    m_titles.setSingleShot(true);
    connect(&m_titles, &QTimer::timeout, this, [this] {
        showTitles();
        showState();
    });
    // A command may have ended, and with it an undo step, a layer may be current.
    connect(&ed::Prompter::instance(), &ed::Prompter::changed, this, [this] { m_titles.start(0); });
    for (ap::Document* document : ap::DocManager::instance().all())
        addDocument(document);
    activated(current());
    m_commandLine->entry()->setFocus();
}

MainWindow::~MainWindow() {
    g_window = nullptr;
}

MainWindow* MainWindow::instance() {
    return g_window;
}

// ---------------------------------------------------------------- parts

void MainWindow::buildCentre() {
    m_tabs = new QTabBar;
    m_tabs->setDocumentMode(true);
    m_tabs->setTabsClosable(true);
    m_tabs->setExpanding(false);
    m_tabs->setDrawBase(false);
    m_tabs->setFocusPolicy(Qt::NoFocus);
    m_tabs->setAccessibleName(tr("Open drawings"));
    m_view = new DrawingView;
    m_layouts = new QTabBar;
    m_layouts->setShape(QTabBar::RoundedSouth);
    m_layouts->setDocumentMode(true);
    m_layouts->setExpanding(false);
    m_layouts->setDrawBase(false);
    m_layouts->setFocusPolicy(Qt::NoFocus);
    m_layouts->setAccessibleName(tr("Layouts"));
    auto* centre = new QWidget;
    auto* column = new QVBoxLayout(centre);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_tabs);
    column->addWidget(m_view, 1);
    column->addWidget(m_layouts);
    setCentralWidget(centre);

    m_commandLine = new CommandLine;
    auto* dock = new QDockWidget(tr("Command line"));
    dock->setObjectName(QStringLiteral("commandLineDock"));
    dock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    dock->setTitleBarWidget(new QWidget);
    dock->setWidget(m_commandLine);
    addDockWidget(Qt::BottomDockWidgetArea, dock);

    connect(m_commandLine, &CommandLine::escaped, m_view, &DrawingView::escape);
    connect(m_view, &DrawingView::cursorMoved, this, &MainWindow::showCursor);
    connect(m_tabs, &QTabBar::currentChanged, this, [this](int index) {
        if (ap::Document* document = documentAt(index); document && document != current())
            whenIdle([this, guard = QPointer<ap::Document>(document)] {
                if (guard)
                    ap::DocManager::instance().activate(guard);
            });
    });
    connect(m_tabs, &QTabBar::tabCloseRequested, this, [this](int index) {
        whenIdle([this, guard = QPointer<ap::Document>(documentAt(index))] {
            if (guard)
                closeDocument(*guard);
        });
    });
    connect(m_layouts, &QTabBar::currentChanged, this, [this](int index) {
        ap::Document* document = current();
        if (index >= 0 && document && m_layouts->tabText(index) != document->currentLayout())
            whenIdle([guard = QPointer<ap::Document>(document), name = m_layouts->tabText(index)] {
                if (guard)
                    guard->setCurrentLayout(name);
            });
    });
}

QAction* MainWindow::addAction(QMenu* menu, const QString& text, const QKeySequence& shortcut, bool needsDrawing,
                               Act act) {
    QAction* action = menu->addAction(text);
    action->setShortcut(shortcut);
    // The drawing may be closed before the action's turn comes.
    connect(action, &QAction::triggered, this, [this, needsDrawing, act] {
        whenIdle([this, needsDrawing, act] {
            if (!needsDrawing || current())
                act();
        });
    });
    if (needsDrawing)
        m_drawingActions.append(action);
    return action;
}

void MainWindow::buildFileMenu() {
    QMenu* file = menuBar()->addMenu(tr("&File"));
    const auto onBar = [this](QAction* action, const char* icon) {
        action->setIcon(iconNamed(QLatin1String(icon)));
        m_bar->addAction(action);
    };
    onBar(addAction(file, tr("&New"), QKeySequence::New, false, [] { ap::DocManager::instance().create(); }), "NEW");
    onBar(addAction(file, tr("&Open…"), QKeySequence::Open, false, [this] { openDialog(); }), "OPEN");
    file->addSeparator();
    onBar(addAction(file, tr("&Save"), QKeySequence::Save, true, [this] { save(*current(), false); }), "SAVE");
    addAction(file, tr("Save &As…"), keys("Ctrl+Shift+S"), true, [this] { save(*current(), true); });
    file->addSeparator();
    addAction(file, tr("&Export…"), keys("Ctrl+E"), true, [this] { exportDialog(); });
    addAction(file, tr("&Print…"), QKeySequence::Print, true, [this] {
        if (const QString why = printWithDialog({current()->database(), {}, {}}, this); !why.isEmpty())
            showFailure(why);
    });
    file->addSeparator();
    addAction(file, tr("&Close"), keys("Ctrl+W"), true, [this] { closeDocument(*current()); });
    addAction(file, tr("&Quit"), keys("Ctrl+Q"), false, [this] { close(); });
}

void MainWindow::buildEditMenu() {
    auto& manager = ap::DocManager::instance();
    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    m_undo = addAction(edit, tr("&Undo"), QKeySequence::Undo, true, [this, &manager] { manager.undo(*current()); });
    m_redo = addAction(edit, tr("&Redo"), keys("Ctrl+Y"), true, [this, &manager] { manager.redo(*current()); });
    m_bar->addSeparator();
    for (const auto& [action, icon] : {std::pair{m_undo, "UNDO"}, {m_redo, "REDO"}}) {
        action->setIcon(iconNamed(QLatin1String(icon)));
        m_bar->addAction(action);
    }
    edit->addSeparator();
    m_commands.fill("Edit", *edit, *m_bar);
    edit->addSeparator();
    addAction(edit, tr("Select &All"), QKeySequence::SelectAll, true, [this] { m_view->selectAll(); });
}

void MainWindow::buildMenus() {
    m_bar = new QToolBar(tr("Tools"));
    m_bar->setObjectName(QStringLiteral("toolBar"));
    m_bar->setMovable(false);
    m_bar->setIconSize({20, 20});
    m_bar->setFocusPolicy(Qt::NoFocus);
    m_bar->setContextMenuPolicy(Qt::PreventContextMenu);
    addToolBar(m_bar);
    buildFileMenu();
    buildEditMenu();
    for (const auto& [name, text] :
         {std::pair{"View", tr("&View")}, {"Draw", tr("&Draw")}, {"Modify", tr("&Modify")}, {"Insert", tr("&Insert")}})
        m_commands.fill(name, *menuBar()->addMenu(text), *m_bar);
    m_bar->addSeparator();
    QMenu* aids = menuBar()->addMenu(tr("&Aids"));
    const auto aid = [&](const QString& text, const char* key, bool on, void (DrawingView::*set)(bool)) {
        QAction* action = aids->addAction(text);
        action->setShortcut(keys(key));
        action->setCheckable(true);
        action->setChecked(on);
        connect(action, &QAction::toggled, m_view, set);
    };
    aid(tr("Object &Snap"), "F3", true, &DrawingView::setSnapping);
    aid(tr("&Ortho"), "F8", false, &DrawingView::setOrtho);
    m_layerBox = new LayerBox;
    m_bar->addWidget(m_layerBox);
    // What a key or a button of the window was for, the next typing is for the command line.
    connect(m_layerBox, qOverload<int>(&QComboBox::activated), this, [this] { m_commandLine->entry()->setFocus(); });
}

void MainWindow::buildStatusBar() {
    m_coordinates = new QLabel;
    m_coordinates->setFont(fixedFont());
    m_coordinates->setAccessibleName(tr("Cursor coordinates"));
    m_coordinates->setMinimumWidth(m_coordinates->fontMetrics().horizontalAdvance(QString(30, QLatin1Char('0'))));
    m_drawingName = new QLabel;
    statusBar()->setSizeGripEnabled(false);
    statusBar()->setContentsMargins(8, 0, 8, 0);
    statusBar()->addWidget(m_coordinates);
    statusBar()->addPermanentWidget(m_drawingName);
}

void MainWindow::connectDocuments() {
    auto& manager = ap::DocManager::instance();
    connect(&manager, &ap::DocManager::documentOpened, this, &MainWindow::addDocument);
    connect(&manager, &ap::DocManager::documentClosing, this, &MainWindow::removeDocument);
    connect(&manager, &ap::DocManager::documentActivated, this, &MainWindow::activated);
}

// ---------------------------------------------------------------- documents

int MainWindow::indexOf(const ap::Document* document) const {
    for (int i = 0; i < m_tabs->count(); ++i)
        if (documentAt(i) == document)
            return i;
    return -1;
}

ap::Document* MainWindow::documentAt(int index) const {
    return static_cast<ap::Document*>(m_tabs->tabData(index).value<void*>());
}

ap::Document* MainWindow::current() const {
    return ap::DocManager::instance().current();
}

void MainWindow::addDocument(ap::Document* document) {
    if (indexOf(document) >= 0)
        return;
    {
        const QSignalBlocker quiet(m_tabs); // the manager says which drawing becomes active
        const int index = m_tabs->addTab(document->title());
        m_tabs->setTabData(index, QVariant::fromValue(static_cast<void*>(document)));
        m_tabs->setTabToolTip(index, document->path());
    }
    connect(document, &ap::Document::titleChanged, this, &MainWindow::showTitles);
    connect(document, &ap::Document::graphicsChanged, this, [this] {
        if (!m_titles.isActive())
            m_titles.start(0);
    });
    connect(document, &ap::Document::layoutChanged, this, &MainWindow::showLayouts);
    connect(document, &ap::Document::layoutsChanged, this, &MainWindow::showLayouts);
    showTitles();
}

void MainWindow::removeDocument(ap::Document* document) {
    m_view->forget(document);
    document->disconnect(this);
    const QSignalBlocker quiet(m_tabs);
    m_tabs->removeTab(indexOf(document));
}

void MainWindow::activated(ap::Document* document) {
    if (document)
        addDocument(document);
    {
        const QSignalBlocker quiet(m_tabs);
        m_tabs->setCurrentIndex(indexOf(document));
    }
    m_view->setDocument(document);
    for (QAction* action : qAsConst(m_drawingActions))
        action->setEnabled(document);
    showTitles();
    showLayouts();
    showState();
}

void MainWindow::showState() {
    const ap::Document* document = current();
    const db::UndoRecorder* undo = document ? &document->database()->imp().undo : nullptr;
    const bool back = undo && undo->canUndo(), forth = undo && undo->canRedo();
    m_undo->setEnabled(back);
    m_redo->setEnabled(forth);
    m_undo->setText(back ? tr("&Undo %1").arg(readable(undo->undoUnits().back().name)) : tr("&Undo"));
    m_redo->setText(forth ? tr("&Redo %1").arg(readable(undo->redoUnits().back().name)) : tr("&Redo"));
    m_layerBox->showLayers(current());
    m_commands.refresh(document);
}

void MainWindow::showTitles() {
    for (int i = 0; i < m_tabs->count(); ++i) {
        const ap::Document* document = documentAt(i);
        m_tabs->setTabText(i, document->isChanged() ? document->title() + QLatin1Char('*') : document->title());
        m_tabs->setTabToolTip(i, document->path());
    }
    m_tabs->setVisible(m_tabs->count() > 0);
    const ap::Document* document = current();
    setWindowTitle(document ? tr("%1[*] – Merix").arg(document->title()) : QStringLiteral("Merix"));
    setWindowModified(document && document->isChanged());
    m_drawingName->setText(!document                    ? QString()
                           : document->path().isEmpty() ? document->title()
                                                        : QFileInfo(document->path()).fileName());
}

void MainWindow::showLayouts() {
    const QSignalBlocker quiet(m_layouts);
    while (m_layouts->count())
        m_layouts->removeTab(0);
    if (ap::Document* document = current()) {
        const QStringList names = document->layouts();
        for (const QString& name : names)
            m_layouts->addTab(name);
        m_layouts->setCurrentIndex(names.indexOf(document->currentLayout()));
    }
    m_layouts->setVisible(m_layouts->count() > 0);
}

void MainWindow::showCursor(const MxGePoint3d& world) {
    m_coordinates->setText(QStringLiteral("%1, %2").arg(world.x, 0, 'f', 4).arg(world.y, 0, 'f', 4));
}

// ---------------------------------------------------------------- files

void MainWindow::whenIdle(std::function<void()> action) {
    if (QApplication::activeModalWidget())
        return; // a question is open already, perhaps the one that this action would ask
    m_view->abandon();
    if (!ed::CommandStack::instance().isRunning()) {
        action();
        return;
    }
    // The command returns from its prompt when this event is over; then the action's turn comes.
    ed::Prompter::instance().cancel();
    QTimer::singleShot(0, this, [this, action = std::move(action)]() mutable { whenIdle(std::move(action)); });
}

void MainWindow::showFailure(const QString& message) {
    ed::Console::instance().print(QLatin1Char('\n') + message);
    if (!m_unattended)
        QMessageBox::warning(this, QStringLiteral("Merix"), message);
}

bool MainWindow::openFile(const QString& path) {
    const ap::Result result = ap::DocManager::instance().open(path);
    if (!result.ok)
        showFailure(result.message);
    return result.ok;
}

void MainWindow::openDialog() {
    const QString folder = current() ? QFileInfo(current()->path()).path() : QString();
    const QStringList paths = QFileDialog::getOpenFileNames(this, tr("Open"), folder, fileFilter());
    for (const QString& path : paths)
        openFile(path);
}

void MainWindow::exportDialog() {
    const QPointer<ap::Document> document = current();
    const QFileInfo drawing(current()->path().isEmpty() ? current()->title() : current()->path());
    QString kind = tr("PDF (*.pdf)");
    QString path =
        QFileDialog::getSaveFileName(this, tr("Export"), drawing.path() + QLatin1Char('/') + drawing.completeBaseName(),
                                     kind + tr(";;SVG (*.svg);;PNG (*.png)"), &kind);
    if (path.isEmpty() || !document)
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += QLatin1Char('.') + kind.left(3).toLower();
    if (const QString why = plotToFile({document->database(), {}, {}}, path); !why.isEmpty())
        showFailure(why);
    else
        ed::Console::instance().print(tr("\nExported %1").arg(path));
}

bool MainWindow::save(ap::Document& document, bool askForName) {
    auto& manager = ap::DocManager::instance();
    ap::Result result;
    if (document.path().isEmpty() || askForName) {
        if (m_unattended)
            return false;
        const QString proposal =
            document.path().isEmpty() ? document.title() + QStringLiteral(".dxf") : document.path();
        const QPointer<ap::Document> guard(&document);
        const QString path = QFileDialog::getSaveFileName(this, tr("Save As"), proposal, fileFilter());
        if (path.isEmpty() || !guard)
            return false;
        result = manager.saveAs(document, QFileInfo(path).suffix().isEmpty() ? path + QStringLiteral(".dxf") : path);
    } else {
        result = manager.save(document);
    }
    if (!result.ok)
        showFailure(result.message);
    showTitles();
    return result.ok;
}

bool MainWindow::closeDocument(ap::Document& document) {
    const QPointer<ap::Document> guard(&document); // a module may close it while a question is open
    if (!m_unattended && document.isChanged()) {
        const auto answer =
            QMessageBox::question(this, QStringLiteral("Merix"), tr("Save the changes to %1?").arg(document.title()),
                                  QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
        if (!guard)
            return true;
        if (answer == QMessageBox::Cancel || (answer == QMessageBox::Save && !save(document, false)))
            return !guard;
    }
    if (guard)
        ap::DocManager::instance().close(document);
    return true;
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (QApplication::activeModalWidget()) {
        event->ignore();
        return;
    }
    if (ed::CommandStack::instance().isRunning()) {
        event->ignore();
        whenIdle([this] { close(); });
        return;
    }
    while (m_tabs->count()) {
        const int before = m_tabs->count();
        if (!closeDocument(*documentAt(before - 1))) {
            event->ignore();
            return;
        }
        if (m_tabs->count() == before)
            break;
    }
    event->accept();
}

// ---------------------------------------------------------------- input

void MainWindow::keyPressEvent(QKeyEvent* event) {
    // Keys that nothing else wanted belong to the command line, wherever the focus is.
    if (event->key() == Qt::Key_Escape || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
        !event->text().isEmpty())
        m_commandLine->type(event);
    else
        QMainWindow::keyPressEvent(event);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    if (std::any_of(urls.begin(), urls.end(), [](const QUrl& url) { return url.isLocalFile(); }))
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    event->acceptProposedAction();
    whenIdle([this, urls] {
        for (const QUrl& url : urls)
            if (url.isLocalFile())
                openFile(url.toLocalFile());
    });
}

} // namespace merix::ui
