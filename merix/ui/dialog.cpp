// SPDX-License-Identifier: MIT
#include "host/ui/dialog.h"

#include "host/win/resources.h"
#include "merix/rx/resource_modules.h"

#include <QEventLoop>
#include <QFile>
#include <QKeyEvent>
#include <QLayout>
#include <QPointer>
#include <QUiLoader>

#include <memory>

CDialog::CDialog(const char* templateName, QWidget* parent)
    : CDialog(parent) {
    m_template = QString::fromLatin1(templateName);
}

CDialog::CDialog(QWidget* parent)
    : CWnd(parent) {
    setWindowFlags(Qt::Dialog);
}

CDialog::~CDialog() = default;

bool CDialog::Create(unsigned id, QWidget* parent) {
    if (parent)
        setParent(parent, windowFlags());
    const bool built = build(QString::number(id));
    OnInitDialog();
    return built;
}

bool CDialog::build(const QString& name) {
    const std::string prefix = merix::rx::resourcePrefix(AfxGetResourceHandle());
    QFile file(QStringLiteral("%1/dialogs/%2.ui").arg(QString::fromStdString(prefix), name));
    if (prefix.empty() || !file.open(QIODevice::ReadOnly))
        return false;
    const std::unique_ptr<QWidget> form(QUiLoader().load(&file));
    if (!form)
        return false;
    setObjectName(form->objectName());
    setWindowTitle(form->windowTitle());
    resize(form->size());
    // The form is only the holder of its widgets: they, or the layout that holds them, become the dialog's own.
    if (form->layout())
        setLayout(form->layout());
    const auto children = form->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget* child : children)
        child->setParent(this);
    return true;
}

int CDialog::DoModal() {
    build(m_template);
    setWindowModality(Qt::ApplicationModal);
    m_result = 2;
    m_ended = false;
    OnInitDialog();
    if (!m_ended)
        show();
    // The dialog may be deleted by what runs inside its own loop; the loop then ends through the watch.
    const QPointer<CDialog> alive(this);
    QEventLoop loop;
    while (alive && !m_ended)
        loop.processEvents(QEventLoop::DialogExec | QEventLoop::WaitForMoreEvents);
    return alive ? m_result : 2;
}

void CDialog::EndDialog(int result) {
    m_result = result;
    m_ended = true;
    hide();
}

bool CDialog::OnInitDialog() {
    UpdateData(false);
    return true;
}

void CDialog::UpdateData(bool save) {
    CDataExchange exchange{save};
    DoDataExchange(&exchange);
}

void CDialog::DoDataExchange(CDataExchange*) {}

void CDialog::OnClose() {
    OnCancel();
}

void CDialog::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        OnCancel();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        OnOK();
    else
        CWnd::keyPressEvent(event);
}
