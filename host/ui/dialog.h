// SPDX-License-Identifier: MIT
// The dialog layer: windows built from templates of a resource module, over Qt widgets. Main thread only.
#pragma once

#include "host/rx/text.h"

#include <QPoint>
#include <QRect>
#include <QWidget>

class QTableWidget;

struct CPoint {
    int x = 0, y = 0;
};

/// Base of the wrapper's windows: a Qt widget with the wrapper's handlers.
class CWnd : public QWidget {
public:
    explicit CWnd(QWidget* parent = nullptr);
    ~CWnd() override;
    /// Shows (non-zero) or hides the window.
    void ShowWindow(int show);
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

    /// Called once after the widgets exist; the base does nothing and returns true.
    virtual bool OnInitDialog();
    virtual void OnOK() { EndDialog(1); }
    virtual void OnCancel() { EndDialog(2); }

protected:
    /// The widget of that object name; null when the template has none.
    template <class T> T* item(const char* name) const { return findChild<T*>(QString::fromLatin1(name)); }
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    bool build(const QString& name);
    QString m_template;
    int m_result = 2;
    bool m_ended = false;
};
