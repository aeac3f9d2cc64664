// SPDX-License-Identifier: MIT
// The program's window: tabs of open drawings, the view, layout tabs, the command line, menus and the status bar.
#pragma once

#include "merix/ap/document_imp.h"
#include "merix/ui/command_actions.h"
#include "merix/ui/command_line.h"
#include "merix/ui/drawing_view.h"
#include "merix/ui/layer_box.h"

#include <QMainWindow>

#include <functional>

class QLabel;
class QTabBar;
class QToolBar;

namespace merix::ui {

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    MainWindow();
    ~MainWindow() override;
    /// The window of this process; null without one.
    static MainWindow* instance();

    DrawingView* view() const { return m_view; }
    CommandLine* commandLine() const { return m_commandLine; }

    /// Nobody sits before the window (headless, scripts): nothing is asked, changed drawings close as they are.
    void setUnattended(bool unattended) { m_unattended = unattended; }
    bool isUnattended() const { return m_unattended; }

    /// Opens a drawing, or activates its tab when it is open; a message tells why when it cannot be read.
    bool openFile(const QString& path);
    /// False when the user did not want to; true too when it was closed by another while the user was asked.
    bool closeDocument(ap::Document& document);
    /// Under its own name, or one that is asked for when it has none or `askForName`. False when it was not saved.
    bool save(ap::Document& document, bool askForName);

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
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
    void connectDocuments();
    void addDocument(ap::Document* document);
    void removeDocument(ap::Document* document);
    void activated(ap::Document* document);
    void showTitles();
    void showLayouts();
    /// Undo, redo and the layers as they are in the drawing now.
    void showState();
    void showCursor(const MxGePoint3d& world);
    void openDialog();
    void exportDialog();
    void showFailure(const QString& message);
    int indexOf(const ap::Document* document) const;
    ap::Document* documentAt(int index) const;
    ap::Document* current() const;
    /// Runs `action` when no command is under way; one that waits for an answer is cancelled, and what the hand has
    /// under way in the drawing is given up. Nothing happens while a dialog wants its answer first.
    void whenIdle(std::function<void()> action);

    QTabBar* m_tabs = nullptr;
    QTabBar* m_layouts = nullptr;
    DrawingView* m_view = nullptr;
    CommandLine* m_commandLine = nullptr;
    QLabel* m_coordinates = nullptr;
    QLabel* m_drawingName = nullptr;
    QToolBar* m_bar = nullptr;
    LayerBox* m_layerBox = nullptr;
    CommandActions m_commands{this};
    QAction* m_undo = nullptr;
    QAction* m_redo = nullptr;
    QList<QAction*> m_drawingActions; ///< of use only while a drawing is open
    QTimer m_titles;
    bool m_unattended = false;
};

} // namespace merix::ui
