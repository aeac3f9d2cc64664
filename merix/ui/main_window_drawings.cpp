// SPDX-License-Identifier: MIT
// The drawings of a window: how they come to it, go from one window to another, and are closed.
#include "merix/ap/autosave.h"
#include "merix/ed/command_stack.h"
#include "merix/ui/main_window.h"
#include "merix/ui/plot.h"
#include "merix/ui/window_memory.h"

#include "host/ui/dialog.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>

namespace merix::ui {

namespace {

std::vector<MainWindow*> g_windows;
MainWindow* g_active = nullptr;

} // namespace

MainWindow* MainWindow::instance() {
    return g_active;
}

const std::vector<MainWindow*>& MainWindow::all() {
    return g_windows;
}

MainWindow* MainWindow::of(const ap::Document& document) {
    const auto place = std::find_if(g_windows.begin(), g_windows.end(),
                                    [&](const MainWindow* window) { return window->m_tabs->indexOf(&document) >= 0; });
    return place == g_windows.end() ? nullptr : *place;
}

MainWindow* MainWindow::other() const {
    for (MainWindow* window : g_windows)
        if (window != this && window->isVisible())
            return window;
    return nullptr;
}

void MainWindow::join() {
    g_windows.push_back(this);
    if (g_windows.size() == 1) {
        g_active = this;
        registerPlotCommands(ed::CommandStack::instance());
        for (ap::Document* document : ap::DocManager::instance().all())
            addDocument(document);
    }
    for (int i = 0; i < m_aids.size(); ++i)
        m_aids[i]->setChecked(g_windows.front()->m_aids[i]->isChecked());
    activated(g_active == this ? ap::DocManager::instance().current() : nullptr);
    refresh();
}

MainWindow::~MainWindow() {
    std::erase(g_windows, this);
    if (g_active == this)
        g_active = g_windows.empty() ? nullptr : g_windows.front();
}

void MainWindow::connectDocuments() {
    auto& manager = ap::DocManager::instance();
    connect(&manager, &ap::DocManager::documentOpened, this, [this](ap::Document* document) {
        if (g_active == this)
            addDocument(document);
    });
    connect(&manager, &ap::DocManager::documentClosing, this, &MainWindow::removeDocument);
    connect(&manager, &ap::DocManager::documentActivated, this, &MainWindow::activated);
    connect(m_view, &DrawingView::activationWanted, this, &MainWindow::activateShown);
    connect(m_tabs, &DrawingTabs::chosen, this, [this](ap::Document* document) {
        whenIdle([guard = QPointer<ap::Document>(document)] {
            if (guard)
                ap::DocManager::instance().activate(guard);
        });
    });
    connect(m_tabs, &DrawingTabs::closeWanted, this, [this](ap::Document* document) {
        whenIdle([this, guard = QPointer<ap::Document>(document)] {
            if (guard)
                closeDocument(*guard);
        });
    });
    connect(m_tabs, &DrawingTabs::draggedOff, this, &MainWindow::tabDropped);
    connect(m_tabs, &DrawingTabs::menuWanted, this, &MainWindow::tabMenu);
    connect(m_recovery, &RecoveryBar::recoverWanted, this,
            [this](const ap::Recovery& recovery) { whenIdle([this, recovery] { recover(recovery); }); });
    connect(&ap::Autosave::instance(), &ap::Autosave::failed, this, [this](const QString& message) {
        if (g_active != this)
            return;
        m_notice->setText(message);
        m_notice->setToolTip(message);
    });
}

// ---------------------------------------------------------------- coming and going

void MainWindow::addDocument(ap::Document* document) {
    m_tabs->add(*document);
    connect(document, &ap::Document::titleChanged, this, &MainWindow::showTitles);
    connect(document, &ap::Document::graphicsChanged, this, [this] {
        if (!m_titles.isActive())
            m_titles.start(0);
    });
    connect(document, &ap::Document::saved, m_notice, &QLabel::clear);
    const auto remember = [this, document] {
        if (!m_unattended)
            keepRecent(document->path());
    };
    connect(document, &ap::Document::saved, this, remember);
    remember();
    connect(document, &ap::Document::layoutChanged, this, &MainWindow::showLayouts);
    connect(document, &ap::Document::layoutsChanged, this, &MainWindow::showLayouts);
}

void MainWindow::release(ap::Document& document) {
    document.disconnect(this);
    document.disconnect(m_notice);
    if (m_undoBar->offered() == &document)
        m_undoBar->withdraw();
    m_tabs->remove(document);
    if (shown() == &document)
        m_view->setDocument(m_tabs->documentAt(m_tabs->currentIndex()));
    refresh();
}

void MainWindow::removeDocument(ap::Document* document) {
    if (m_tabs->indexOf(document) < 0)
        return;
    release(*document);
    m_view->forget(document);
    // What is before the user's eyes follows, not what was opened next.
    const MainWindow* next = m_tabs->count() ? this : other();
    if (next && next->shown() && !ap::DocManager::instance().current())
        ap::DocManager::instance().activate(next->shown());
    closeIfEmpty();
}

void MainWindow::takeIn(ap::Document& document) {
    MainWindow* const from = of(document);
    if (!from || from == this)
        return;
    from->release(document);
    m_view->takeOver(*from->m_view, &document);
    addDocument(&document);
    if (&document == ap::DocManager::instance().current())
        activated(&document);
    else
        ap::DocManager::instance().activate(&document);
    from->closeIfEmpty();
}

MainWindow* MainWindow::takeOut(ap::Document& document) {
    MainWindow* const from = of(document);
    if (!from || from->m_tabs->count() < 2)
        return nullptr;
    auto* window = new MainWindow;
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setUnattended(from->isUnattended());
    window->resize(from->size());
    window->show();
    window->takeIn(document);
    return window;
}

void MainWindow::closeIfEmpty() {
    // Offers of lost work that nobody answered would go with it.
    if (m_tabs->count() == 0 && other() && m_recovery->isHidden())
        close();
}

// ---------------------------------------------------------------- the active one

void MainWindow::activated(ap::Document* document) {
    if (document ? m_tabs->indexOf(document) < 0 : g_active != this)
        return; // another window's
    becomeActive();
    m_tabs->choose(document);
    m_view->setDocument(document);
    m_view->becomeActive();
    refresh();
    // Its drawing was chosen in another window.
    auto* before = qobject_cast<MainWindow*>(QApplication::activeWindow());
    if (isVisible() && before && before != this) {
        raise();
        activateWindow();
    }
}

void MainWindow::becomeActive() {
    MainWindow* const before = std::exchange(g_active, this);
    if (!before || before == this)
        return;
    // The windows that modules keep inside the program's are for the active drawing.
    const QObjectList children = before->children();
    for (QObject* child : children)
        if (auto* window = dynamic_cast<CWnd*>(child)) {
            const bool isShown = window->isVisible();
            window->setParent(this, window->windowFlags());
            window->setVisible(isShown);
        }
}

bool MainWindow::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate)
        activateShown();
    // The view's cursor goes on over the windows that modules keep over it.
    if (auto* child = event->type() == QEvent::ChildPolished ? static_cast<QChildEvent*>(event)->child() : nullptr;
        auto* window = dynamic_cast<CWnd*>(child))
        window->setMouseTracking(true);
    return QMainWindow::event(event);
}

void MainWindow::activateShown() {
    if (!shown() || shown() == ap::DocManager::instance().current())
        return;
    whenIdle([this] {
        if (shown())
            ap::DocManager::instance().activate(shown());
    });
}

// ---------------------------------------------------------------- the user's ways to move them

void MainWindow::tabDropped(ap::Document* document, const QPoint& where) {
    QWidget* under = QApplication::topLevelAt(where);
    whenIdle([guard = QPointer<ap::Document>(document), where, under = QPointer<QWidget>(under)] {
        if (!guard)
            return;
        if (auto* window = qobject_cast<MainWindow*>(under.data()); window && window != of(*guard))
            window->takeIn(*guard);
        else if (MainWindow* own = takeOut(*guard))
            own->move(where - QPoint(own->width() / 4, 0));
    });
}

void MainWindow::chooseTab(int step) {
    const int count = m_tabs->count(), to = (m_tabs->currentIndex() + step + count) % count;
    ap::DocManager::instance().activate(m_tabs->documentAt(to));
}

void MainWindow::tabMenu(ap::Document* document, const QPoint& where) {
    whenIdle([this, where, guard = QPointer<ap::Document>(document)] {
        if (!guard)
            return;
        ap::DocManager::instance().activate(guard); // what is chosen is for the drawing shown
        auto* menu = new QMenu(this);
        menu->setAttribute(Qt::WA_DeleteOnClose);
        allowMoves();
        menu->addActions(m_tabActions);
        menu->popup(where);
    });
}

void MainWindow::allowMoves() {
    m_takeOut->setEnabled(m_tabs->count() > 1);
    m_takeBack->setEnabled(shown() && other());
}

void MainWindow::takeBack() {
    if (MainWindow* window = other())
        window->takeIn(*shown());
}

// ---------------------------------------------------------------- the end of a drawing and its return

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
    event->ignore();
    if (m_tabs->count() && QApplication::activeModalWidget())
        return;
    if (m_tabs->count() && ed::CommandStack::instance().isRunning()) {
        whenIdle([this] { close(); });
        return;
    }
    while (const int before = m_tabs->count()) {
        if (!closeDocument(*m_tabs->documentAt(before - 1)))
            return;
        if (m_tabs->count() == before)
            break;
    }
    if (!m_unattended && !other())
        keepPlace(*this);
    event->accept();
}

void MainWindow::quit() {
    std::vector<QPointer<MainWindow>> windows(g_windows.begin(), g_windows.end());
    for (const QPointer<MainWindow>& window : windows)
        if (window && window->isVisible() && !window->close())
            return;
}

bool MainWindow::recover(const ap::Recovery& recovery) {
    for (ap::Document* document : ap::DocManager::instance().all()) {
        const bool isSame = !document->path().isEmpty() && QFileInfo(document->path()) == QFileInfo(recovery.drawing);
        if (!isSame)
            continue;
        // Nothing is given up for a copy that cannot be had.
        if (const ap::Result result = ap::Autosave::instance().check(recovery); !result.ok) {
            m_recovery->answered(recovery, result);
            return false;
        }
        if (!closeDocument(*document))
            return false;
    }
    const ap::Result result = ap::Autosave::instance().recover(recovery);
    m_recovery->answered(recovery, result);
    return result.ok;
}

} // namespace merix::ui
