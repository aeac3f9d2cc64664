// SPDX-License-Identifier: MIT
#include "merix/ui/main_window.h"

#include "host/ui/dialog.h"
#include "merix/ed/command_stack.h"
#include "merix/ed/prompter.h"
#include "merix/ui/icons.h"
#include "merix/ui/look.h"
#include "merix/ui/plain_text.h"
#include "merix/ui/plot.h"
#include "merix/ui/undo_menu.h"
#include "merix/ui/window_memory.h"

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
#include <QScopedValueRollback>
#include <QStatusBar>
#include <QTabBar>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace merix::ui {

namespace {

QKeySequence keys(const char* sequence) {
    return QKeySequence(QString::fromLatin1(sequence));
}

QString fileFilter() {
    return MainWindow::tr("Drawings (*.dxf *.DXF *.merix)");
}

} // namespace

MainWindow::MainWindow() {
    keepTextsPlain();
    setObjectName(QStringLiteral("mainWindow"));
    setAcceptDrops(true);
    setMouseTracking(true);   // for what windows over the view leave to it
    setMinimumSize(600, 400); // the status bar has room for what it says
    resize(1280, 800);
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
    join();
    m_commandLine->entry()->setFocus();
}

// ---------------------------------------------------------------- parts

void MainWindow::buildCentre() {
    m_recovery = new RecoveryBar;
    m_tabs = new DrawingTabs;
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
    column->addWidget(m_recovery);
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
    connect(m_layouts, &QTabBar::currentChanged, this, [this](int index) {
        ap::Document* document = shown();
        const QString layout = m_layouts->tabData(index).toString();
        if (index >= 0 && document && layout != document->currentLayout())
            whenIdle([guard = QPointer<ap::Document>(document), name = layout] {
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
            if (needsDrawing && shown())
                ap::DocManager::instance().activate(shown()); // it is, unless the desktop kept its window behind
            if (!needsDrawing || shown())
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
    m_recent = file->addMenu(tr("Open &Recent"));
    connect(m_recent, &QMenu::aboutToShow, this, &MainWindow::fillRecent);
    file->addSeparator();
    onBar(addAction(file, tr("&Save"), QKeySequence::Save, true, [this] { save(*shown(), false); }), "SAVE");
    addAction(file, tr("Save &As…"), keys("Ctrl+Shift+S"), true, [this] { save(*shown(), true); });
    file->addSeparator();
    addAction(file, tr("&Export…"), keys("Ctrl+E"), true, [this] { exportDialog(); });
    addAction(file, tr("&Print…"), QKeySequence::Print, true, [this] {
        if (const QString why = printWithDialog({shown()->database(), {}, {}}, this); !why.isEmpty())
            showFailure(why);
    });
    file->addSeparator();
    m_tabActions = {addAction(file, tr("&Close"), keys("Ctrl+W"), true, [this] { closeDocument(*shown()); })};
    addAction(file, tr("&Quit"), keys("Ctrl+Q"), false, [this] { quit(); });
}

void MainWindow::buildEditMenu() {
    auto& manager = ap::DocManager::instance();
    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    m_undo = addAction(edit, tr("&Undo"), QKeySequence::Undo, true, [this] { undoShown(); });
    m_redo = addAction(edit, tr("&Redo"), keys("Ctrl+Y"), true, [this, &manager] { manager.redo(*shown()); });
    m_bar->addSeparator();
    const auto onBar = [this](QAction* action, const char* icon, Steps steps) {
        action->setIcon(iconNamed(QLatin1String(icon)));
        m_bar->addAction(action);
        auto* button = qobject_cast<QToolButton*>(m_bar->widgetForAction(action));
        button->setPopupMode(QToolButton::MenuButtonPopup);
        button->setMenu(new UndoMenu(
            steps, [this] { return shown(); }, button));
    };
    onBar(m_undo, "UNDO", Steps::kUndo);
    onBar(m_redo, "REDO", Steps::kRedo);
    edit->addSeparator();
    m_commands.fill("Edit", *edit, *m_bar);
    edit->addSeparator();
    addAction(edit, tr("Select &All"), QKeySequence::SelectAll, true, [this] { m_view->selectAll(); });
}

void MainWindow::buildViewMenu() {
    QMenu* view = menuBar()->addMenu(tr("&View"));
    m_commands.fill("View", *view, *m_bar);
    view->addSeparator();
    addAction(view, tr("Next &Drawing"), {}, true, [this] {
        chooseTab(1);
    })->setShortcuts({keys("Ctrl+Tab"), keys("Ctrl+PgDown")});
    addAction(view, tr("Previous Dra&wing"), {}, true, [this] {
        chooseTab(-1);
    })->setShortcuts({keys("Ctrl+Shift+Tab"), keys("Ctrl+PgUp")});
    view->addSeparator();
    m_takeOut = addAction(view, tr("Move to &New Window"), keys("Ctrl+Shift+N"), true, [this] { takeOut(*shown()); });
    m_takeBack = addAction(view, tr("Move to &Other Window"), {}, true, [this] { takeBack(); });
    auto* line = new QAction(this);
    line->setSeparator(true);
    m_tabActions = QList<QAction*>{m_takeOut, m_takeBack, line} + m_tabActions;
    connect(view, &QMenu::aboutToShow, this, &MainWindow::allowMoves);
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
    buildViewMenu();
    for (const auto& [name, text] :
         {std::pair{"Draw", tr("&Draw")}, {"Modify", tr("&Modify")}, {"Notes", tr("&Notes")}})
        m_commands.fill(name, *menuBar()->addMenu(text), *m_bar);
    m_bar->addSeparator();
    QMenu* aids = menuBar()->addMenu(tr("&Aids"));
    const auto aid = [&](const QString& text, const char* key, bool on, void (DrawingView::*set)(bool)) {
        QAction* action = aids->addAction(text);
        action->setShortcut(keys(key));
        action->setCheckable(true);
        action->setChecked(on);
        connect(action, &QAction::toggled, m_view, set);
        // The same in all windows.
        connect(action, &QAction::toggled, this, [index = m_aids.size()](bool now) {
            for (MainWindow* window : all())
                window->m_aids[index]->setChecked(now);
        });
        m_aids.append(action);
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
    m_notice = new QLabel;
    m_notice->setObjectName(QStringLiteral("notice"));
    m_notice->setTextFormat(Qt::PlainText);
    m_notice->setIndent(6);
    m_notice->setForegroundRole(QPalette::Link);
    m_notice->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // a long text must not widen the window
    m_drawingName = new QLabel;
    statusBar()->setSizeGripEnabled(false);
    statusBar()->setContentsMargins(8, 0, 8, 0);
    m_undoBar = new UndoBar;
    connect(m_undoBar, &UndoBar::undoWanted, this, [this] {
        whenIdle([this] {
            if (shown() && m_undoBar->offered() == shown())
                undoShown();
        });
    });
    connect(m_undoBar, &UndoBar::keyboardLeft, this, [this] { m_commandLine->entry()->setFocus(); });
    auto* told = new QWidget;
    auto* line = new QHBoxLayout(told);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(0);
    line->addWidget(m_undoBar);
    line->addWidget(m_notice, 1);
    told->setMinimumSize(m_undoBar->minimumSizeHint()); // an offer finds its room, the view keeps its own
    statusBar()->addWidget(m_coordinates);
    statusBar()->addWidget(told, 1);
    statusBar()->addPermanentWidget(m_drawingName);
}

void MainWindow::refresh() {
    for (QAction* action : qAsConst(m_drawingActions))
        action->setEnabled(shown());
    showTitles();
    showLayouts();
    showState();
}

void MainWindow::showState() {
    ap::Document* document = shown();
    const QStringList back = document ? stepNames(*document, Steps::kUndo, 1) : QStringList();
    const QStringList forth = document ? stepNames(*document, Steps::kRedo, 1) : QStringList();
    m_undo->setEnabled(!back.isEmpty());
    m_redo->setEnabled(!forth.isEmpty());
    m_undo->setText(back.isEmpty() ? tr("&Undo") : tr("&Undo %1").arg(back.first()));
    m_redo->setText(forth.isEmpty() ? tr("&Redo") : tr("&Redo %1").arg(forth.first()));
    m_layerBox->showLayers(document);
    m_commands.refresh(document);
}

void MainWindow::undoShown() {
    auto& manager = ap::DocManager::instance();
    manager.activate(shown());
    manager.undo(*shown());
}

void MainWindow::offerUndo(const QString& text) {
    if (shown())
        m_undoBar->offer(*shown(), text);
}

void MainWindow::showTitles() {
    m_tabs->showTitles();
    const ap::Document* document = shown();
    QString title = document ? document->title() : QString();
    title.replace(QLatin1String("[*]"), QLatin1String("[*][*]")); // one alone is the place of the mark of change
    setWindowTitle(document ? tr("%1[*] – Merix").arg(title) : QStringLiteral("Merix"));
    setWindowModified(document && document->isChanged());
    if (!document)
        m_coordinates->clear();
    m_drawingName->setText(!document                    ? QString()
                           : document->path().isEmpty() ? document->title()
                                                        : QFileInfo(document->path()).fileName());
}

void MainWindow::showLayouts() {
    const QSignalBlocker quiet(m_layouts);
    while (m_layouts->count())
        m_layouts->removeTab(0);
    if (ap::Document* document = shown()) {
        const QStringList names = document->layouts();
        for (const QString& name : names)
            m_layouts->setTabData(m_layouts->addTab(withoutKeys(name)), name);
        m_layouts->setCurrentIndex(names.indexOf(document->currentLayout()));
    }
    m_layouts->setVisible(m_layouts->count() > 0);
}

void MainWindow::showCursor(const MxGePoint3d& world) {
    if (shown())
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
    const bool hasFolder = shown() && !shown()->path().isEmpty();
    const QString folder = hasFolder ? QFileInfo(shown()->path()).path() : lastFolder();
    const QStringList paths = QFileDialog::getOpenFileNames(this, tr("Open"), folder, fileFilter());
    for (const QString& path : paths)
        openFile(path);
}

void MainWindow::fillRecent() {
    m_recent->clear();
    int number = 0;
    for (const QString& path : recentDrawings()) {
        QAction* action =
            addAction(m_recent, QStringLiteral("&%1 %2").arg(++number).arg(withoutKeys(QFileInfo(path).fileName())), {},
                      false, [this, path] {
                          if (!openFile(path) && !QFileInfo::exists(path))
                              forgetRecent(path);
                      });
        action->setToolTip(path);
    }
    m_recent->setToolTipsVisible(true);
    if (!number)
        m_recent->addAction(tr("No drawing was opened yet"))->setEnabled(false);
}

void MainWindow::exportDialog() {
    const QPointer<ap::Document> document = shown();
    const QFileInfo drawing(document->path().isEmpty() ? document->title() : document->path());
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

// ---------------------------------------------------------------- input

void MainWindow::keyPressEvent(QKeyEvent* event) {
    // Keys that nothing else wanted belong to the command line, wherever the focus is.
    if (event->key() == Qt::Key_Escape || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
        !event->text().isEmpty())
        m_commandLine->type(event);
    else
        QMainWindow::keyPressEvent(event);
}

QWidget* MainWindow::overView(const QPoint& place) const {
    QWidget* window = childAt(place);
    while (window && window->parentWidget() != this)
        window = window->parentWidget();
    const bool isOverView = m_view->rect().contains(m_view->mapFrom(this, place));
    return isOverView && dynamic_cast<CWnd*>(window) ? window : nullptr;
}

/// What a module's window over the view does not want comes here, and is the view's.
void MainWindow::handOn(QMouseEvent& event) {
    event.ignore();
    if (m_handingOn)
        return;                                     // the view did not want it either
    m_handedOn &= event.buttons() | event.button(); // a window that goes takes the release with it
    QWidget* const window = overView(event.pos());
    if (event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick) {
        if (!window)
            return;
        m_handedOn |= event.button();
    } else if (!window && !m_handedOn) {
        return;
    }
    if (window)
        m_view->cover(*window);
    if (event.type() == QEvent::MouseButtonRelease) {
        if (!(m_handedOn & event.button()))
            return; // its press was wanted
        m_handedOn &= ~Qt::MouseButtons(event.button());
    }
    const QScopedValueRollback<bool> once(m_handingOn, true);
    QMouseEvent below(event.type(), event.localPos() - m_view->mapTo(this, QPoint()), event.windowPos(),
                      event.screenPos(), event.button(), event.buttons(), event.modifiers(), event.source());
    QApplication::sendEvent(m_view, &below);
    event.accept();
}

void MainWindow::wheelEvent(QWheelEvent* event) {
    QWidget* const window = overView(event->position().toPoint());
    event->ignore();
    if (m_handingOn || !window || event->buttons() & Qt::LeftButton) // the hand holds the window
        return;
    m_view->cover(*window);
    const QScopedValueRollback<bool> once(m_handingOn, true);
    QWheelEvent below(event->position() - m_view->mapTo(this, QPoint()), event->globalPosition(), event->pixelDelta(),
                      event->angleDelta(), event->buttons(), event->modifiers(), event->phase(), event->inverted(),
                      event->source());
    QApplication::sendEvent(m_view, &below);
    event->accept();
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
