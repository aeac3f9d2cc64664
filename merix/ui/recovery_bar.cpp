// SPDX-License-Identifier: MIT
#include "merix/ui/recovery_bar.h"

#include "merix/ap/autosave.h"
#include "merix/ap/recover_command.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace merix::ui {

RecoveryBar::RecoveryBar(QWidget* parent)
    : QFrame(parent)
    , m_rows(new QVBoxLayout(this)) {
    setObjectName(QStringLiteral("recoveryBar"));
    setFrameShape(QFrame::StyledPanel);
    setAccessibleName(tr("Unsaved changes of an earlier run"));
    m_rows->setContentsMargins(8, 4, 8, 4);
    m_rows->setSpacing(2);
    hide();
}

void RecoveryBar::look() {
    qDeleteAll(findChildren<QFrame*>(QStringLiteral("recoveryRow"), Qt::FindDirectChildrenOnly));
    for (const ap::Recovery& recovery : ap::SessionList::leftBehind())
        addRow(recovery);
    setVisible(m_rows->count() > 0);
}

void RecoveryBar::addRow(const ap::Recovery& recovery) {
    auto* row = new QFrame;
    row->setObjectName(QStringLiteral("recoveryRow"));
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    auto* text = new QLabel(tr("Unsaved changes were kept: %1").arg(recovery.title));
    text->setTextFormat(Qt::PlainText);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto* open = new QPushButton(tr("Recover"));
    auto* drop = new QPushButton(tr("Discard"));
    auto* later = new QPushButton(tr("Later"));
    for (QPushButton* button : {open, drop, later}) {
        button->setAutoDefault(false);
        button->setFocusPolicy(Qt::TabFocus); // a click must not take the keyboard from the command line
    }
    line->addWidget(text, 1);
    line->addWidget(open);
    line->addWidget(drop);
    line->addWidget(later);
    m_rows->addWidget(row);

    const auto done = [this, row] {
        m_rows->removeWidget(row);
        row->hide();
        row->deleteLater();
        hideIfEmpty();
    };
    connect(later, &QPushButton::clicked, this, done);
    connect(drop, &QPushButton::clicked, this, [recovery, done] {
        ap::Autosave::instance().discard(recovery);
        done();
    });
    connect(open, &QPushButton::clicked, this, [recovery, done, text] {
        const ap::Result result = ap::Autosave::instance().recover(recovery);
        if (result.ok)
            done();
        else
            text->setText(result.message);
    });
    QTimer::singleShot(0, text, [recovery, text] {
        text->setText(tr("Unsaved changes were kept: %1").arg(ap::describe(recovery)));
        text->setToolTip(recovery.copy);
    });
}

void RecoveryBar::hideIfEmpty() {
    if (m_rows->count() == 0)
        hide();
}

} // namespace merix::ui
