// SPDX-License-Identifier: MIT
// A window of the program: tabs of open drawings, the view, layout tabs, the command line, menus and the status bar.
// There may be several, each with drawings of its own. The drawing shown in the window that becomes active becomes the
// active drawing; everything else in a window is for the drawing it shows.
#pragma once

#include "merix/ap/document_imp.h"
#include "merix/ui/command_actions.h"
#include "merix/ui/command_line.h"
#include "merix/ui/drawing_tabs.h"
#include "merix/ui/drawing_view.h"
#include "merix/ui/layer_box.h"
#include "merix/ui/recovery_bar.h"
#include "merix/ui/undo_bar.h"

#include <QMainWindow>

#include <functional>
#include <vector>

class QLabel;
class QTabBar;
class QToolBar;

namespace merix::ui {

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    /// The first one shows the drawings that are open; a later one waits for drawings to be moved to it.
    MainWindow();
    ~MainWindow() override;
    /// The window of the active drawing; null without a window.
    static MainWindow* instance();
    /// In the order of their making.
    static const std::vector<MainWindow*>& all();
    /// The window whose tab the drawing is; null for none.
    static MainWindow* of(const ap::Document& document);

    DrawingView* view() const { return m_view; }
    CommandLine* commandLine() const { return m_commandLine; }
    DrawingTabs* tabs() const { return m_tabs; }
    RecoveryBar* recoveryBar() const { return m_recovery; }

    /// Nobody sits before the window (headless, scripts): nothing is asked, changed drawings close as they are.
    void setUnattended(bool unattended) { m_unattended = unattended; }
    bool isUnattended() const { return m_unattended; }

    /// Opens a drawing, or activates its tab when it is open; a message tells why when it cannot be read.
    bool openFile(const QString& path);
    /// False when the user did not want to; true too when it was closed by another while the user was asked.
    bool closeDocument(ap::Document& document);
    /// Under its own name, or one that is asked for when it has none or `askForName`. False when it was not saved.
    bool save(ap::Document& document, bool askForName);

    /// Says what was just done in the active drawing and offers to take it back.
    void offerUndo(const QString& text);

    /// Takes the drawing into a window of its own, which is deleted when it is closed or left by its last drawing;
    /// null, and nothing is done, when it is the only one of its window. The drawing becomes the active one.
    static MainWindow* takeOut(ap::Document& document);
    /// Takes the drawing out of its window into this one. The drawing becomes the active one.
    void takeIn(ap::Document& document);
    /// Opens the copy in place of its drawing. False when the user keeps the drawing that is open, or the copy cannot
    /// be read; the recovery bar says why.
    bool recover(const ap::Recovery& recovery);

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override { handOn(*event); }
    void mouseMoveEvent(QMouseEvent* event) override { handOn(*event); }
    void mouseReleaseEvent(QMouseEvent* event) override { handOn(*event); }
    void mouseDoubleClickEvent(QMouseEvent* event) override { handOn(*event); }
    void wheelEvent(QWheelEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void buildMenus();
    using Act = std::function<void()>;
    QAction* addAction(QMenu* menu, const QString& text, const QKeySequence& shortcut, bool needsDrawing, Act act);
    void buildFileMenu();
    void buildEditMenu();
    void buildCentre();
    void buildStatusBar();
    void buildViewMenu();
    /// Takes its place among the windows.
    void join();
    void connectDocuments();
    void addDocument(ap::Document* document);
    /// Nothing is left of the drawing in this window; the window shows the next of its drawings.
    void release(ap::Document& document);
    void removeDocument(ap::Document* document);
    void activated(ap::Document* document);
    void becomeActive();
    /// Another window that is shown, the oldest; null for none.
    MainWindow* other() const;
    void closeIfEmpty();
    void tabDropped(ap::Document* document, const QPoint& where);
    void tabMenu(ap::Document* document, const QPoint& where);
    void allowMoves();
    void takeBack();
    /// The drawing shown becomes the active one.
    void activateShown();
    void quit();
    void refresh();
    void showTitles();
    void showLayouts();
    /// Undo, redo and the layers as they are in the drawing now.
    void showState();
    void showCursor(const MxGePoint3d& world);
    void undoShown();
    /// A module's window that stands over the view at `place`; null for none.
    QWidget* overView(const QPoint& place) const;
    void handOn(QMouseEvent& event);
    void openDialog();
    void fillRecent();
    /// The tab that stands so many to the right, from the last on to the first.
    void chooseTab(int step);
    void exportDialog();
    void showFailure(const QString& message);
    /// The drawing that this window shows.
    ap::Document* shown() const { return m_view->document(); }
    /// Runs `action` when no command is under way; one that waits for an answer is cancelled, and what the hand has
    /// under way in the drawing is given up. Nothing happens while a dialog wants its answer first.
    void whenIdle(std::function<void()> action);

    RecoveryBar* m_recovery = nullptr;
    DrawingTabs* m_tabs = nullptr;
    QTabBar* m_layouts = nullptr;
    DrawingView* m_view = nullptr;
    CommandLine* m_commandLine = nullptr;
    QLabel* m_coordinates = nullptr;
    QLabel* m_notice = nullptr; ///< what the user should know although no one asked
    UndoBar* m_undoBar = nullptr;
    QLabel* m_drawingName = nullptr;
    QToolBar* m_bar = nullptr;
    LayerBox* m_layerBox = nullptr;
    CommandActions m_commands{this};
    QAction* m_undo = nullptr;
    QAction* m_redo = nullptr;
    QMenu* m_recent = nullptr;
    QAction* m_takeOut = nullptr;
    QAction* m_takeBack = nullptr;
    QList<QAction*> m_aids;           ///< object snap, ortho
    QList<QAction*> m_tabActions;     ///< of the menu of a tab
    QList<QAction*> m_drawingActions; ///< of use only while a drawing is open
    QTimer m_titles;
    Qt::MouseButtons m_handedOn; ///< pressed on a module's window and left to the view
    bool m_handingOn = false;
    bool m_unattended = false;
};

} // namespace merix::ui
