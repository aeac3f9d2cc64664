// SPDX-License-Identifier: MIT
// The dialog layer: windows built from templates of a resource module, over Qt widgets. Main thread only.
#pragma once

#include "host/rx/text.h"
#include "host/win/message.h"

#include <QPoint>
#include <QRect>
#include <QWidget>

class QTableWidget;

struct CPoint {
    int x = 0, y = 0;
};

/// Base of the wrapper's windows: a Qt widget with the wrapper's handlers. Moves, presses and releases of the mouse
/// over the window, and what is posted to it, come to PreTranslateMessage before Qt's own handlers.
class CWnd : public QWidget {
public:
    explicit CWnd(QWidget* parent = nullptr);
    ~CWnd() override;
    /// Shows (non-zero) or hides the window.
    void ShowWindow(int show);
    /// Runs OnDestroy, once, and hides the window. `delete` does not run it: what overrides it is gone by then.
    void DestroyWindow();
    bool IsDestroyed() const { return m_destroyed; }
    /// Hands a message to the window at the next turn of the event loop. False, without effect, when there is no such
    /// window any more. Any thread.
    static bool PostMessage(CWnd* window, unsigned message, std::uintptr_t wParam = 0, std::intptr_t lParam = 0);

    /// True: the message has been dealt with, Qt's handlers and the window's own (OnTimer) do not see it. A second
    /// press of a double click is a press. Of keys, Esc comes to the visible windows inside the main window before
    /// anybody else gets it.
    virtual bool PreTranslateMessage(tagMSG* message);
    /// A timer message was posted.
    virtual void OnTimer(unsigned id);
    /// The mouse has left the window.
    virtual void OnMouseLeave();
    /// The left button went down in the window and its release will not come: another window took the keyboard or the
    /// mouse, a question opened, the window was hidden.
    virtual void OnCaptureChanged();
    virtual void OnDestroy();
    /// The user closes the window.
    virtual void OnClose();
    /// Before Qt's paint event.
    virtual void OnPaint();

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    bool translate(QEvent* event);
    bool m_destroyed = false;
};

/// Which way DoDataExchange moves data: true from the controls into the dialog's members.
struct CDataExchange {
    bool m_bSaveAndValidate = false;
};

/// A dialog made from a template. The template's widgets become children of the dialog.
class CDialog : public CWnd {
public:
    /// A dialog by template name ("IDD_DIALOG_MANAGER") of the resource module in force.
    CDialog(const char* templateName, QWidget* parent);
    explicit CDialog(QWidget* parent);
    ~CDialog() override;

    /// Builds the window from template `id` without showing it and calls OnInitDialog. False when the resource module
    /// has no such template; the dialog is then an empty window of its own making.
    bool Create(unsigned id, QWidget* parent = nullptr);
    /// Builds, shows and runs the dialog until it is closed; 1 for OK, 2 for cancel.
    int DoModal();
    void EndDialog(int result);

    /// Called once after the widgets exist; the base fills the controls (UpdateData) and returns true.
    virtual bool OnInitDialog();
    /// Moves data between controls and members: into the members with `save`.
    void UpdateData(bool save);
    virtual void DoDataExchange(CDataExchange* exchange);
    /// As OnCancel.
    void OnClose() override;
    virtual void OnOK() { EndDialog(1); }
    virtual void OnCancel() { EndDialog(2); }

protected:
    /// The widget of that object name; null when the template has none.
    template <class T> T* item(const char* name) const { return findChild<T*>(QString::fromLatin1(name)); }
    void keyPressEvent(QKeyEvent* event) override;

private:
    bool build(const QString& name);
    QString m_template;
    int m_result = 2;
    bool m_ended = false;
};
