// SPDX-License-Identifier: MIT
#include "host/ui/dialog.h"

#include "host/win/resources.h"

#include <QCloseEvent>
#include <QEventLoop>
#include <QFile>
#include <QKeyEvent>
#include <QPointer>
#include <QUiLoader>
#include <QVBoxLayout>

#include <memory>

CWnd::CWnd(QWidget* parent)
    : QWidget(parent) {}

CWnd::~CWnd() = default;

void CWnd::ShowWindow(int show) {
    setVisible(show != 0);
}

CDialog::CDialog(const char* templateName, QWidget* parent)
    : CWnd(parent)
    , m_template(QString::fromUtf8(templateName)) {}

CDialog::CDialog(QWidget* parent)
    : CWnd(parent) {}

CDialog::~CDialog() = default;

bool CDialog::Create(unsigned id, QWidget* parent) {
    if (parent)
        setParent(parent);
    const bool built = build(QString::number(id));
    OnInitDialog();
    return built;
}

int CDialog::DoModal() {
    build(m_template);
    setWindowFlags(Qt::Dialog);
    setWindowModality(Qt::ApplicationModal);
    OnInitDialog();
    m_result = 2;
    m_ended = false;
    show();
    // The dialog may be deleted by what runs inside its own loop; the loop then ends through the watch.
    QPointer<CDialog> alive(this);
    QEventLoop loop;
    while (alive && !m_ended)
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    if (!alive)
        return 2;
    hide();
    return m_result;
}

void CDialog::EndDialog(int result) {
    m_result = result;
    m_ended = true;
    hide();
}

bool CDialog::OnInitDialog() {
    return true;
}

/// Makes the template's widget the only child, and takes over its size and title.
bool CDialog::build(const QString& name) {
    QFile file(QStringLiteral(":/MrxPhonomarkRes/dialogs/%1.ui").arg(name));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QUiLoader loader;
    std::unique_ptr<QWidget> form(loader.load(&file));
    if (!form)
        return false;
    resize(form->size());
    setWindowTitle(form->windowTitle());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(form.release());
    return true;
}

void CDialog::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        OnCancel();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        OnOK();
    else
        CWnd::keyPressEvent(event);
}

void CDialog::closeEvent(QCloseEvent* event) {
    OnCancel();
    event->accept();
}
