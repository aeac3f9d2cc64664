// SPDX-License-Identifier: MIT
#include "merix/ui/recovery_bar.h"

#include "merix/ap/autosave.h"
#include "merix/ap/recover_command.h"
#include "merix/ui/look.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QVariant>

#include <algorithm>

namespace merix::ui {

namespace {

constexpr const char* kCopy = "copy"; ///< property of a row

} // namespace

RecoveryBar::RecoveryBar(QWidget* parent)
    : QFrame(parent)
    , m_rows(new QVBoxLayout(this)) {
    setObjectName(QStringLiteral("recoveryBar"));
    QPalette colors = palette();
    colors.setColor(QPalette::Window, kOffer);
    colors.setColor(QPalette::WindowText, kOfferText);
    setPalette(colors);
    setAutoFillBackground(true);
    setAccessibleName(tr("Unsaved changes of an earlier run"));
    m_rows->setContentsMargins(8, 4, 8, 4);
    m_rows->setSpacing(4);
    hide();
    connect(&ap::Autosave::instance(), &ap::Autosave::settled, this, [this](const QString& copy) {
        for (QFrame* row : rowsOf(copy))
            drop(row);
    });
}

QList<QFrame*> RecoveryBar::rowsOf(const QString& copy) const {
    auto rows = findChildren<QFrame*>(QStringLiteral("recoveryRow"), Qt::FindDirectChildrenOnly);
    rows.erase(std::remove_if(rows.begin(), rows.end(), [&](QFrame* row) { return row->property(kCopy) != copy; }),
               rows.end());
    return rows;
}

void RecoveryBar::look() {
    const auto rows = findChildren<QFrame*>(QStringLiteral("recoveryRow"), Qt::FindDirectChildrenOnly);
    for (QFrame* row : rows)
        drop(row);
    for (const ap::Recovery& recovery : ap::Autosave::instance().offer())
        addRow(recovery);
    setVisible(m_rows->count() > 0);
}

void RecoveryBar::addRow(const ap::Recovery& recovery) {
    auto* row = new QFrame;
    row->setObjectName(QStringLiteral("recoveryRow"));
    row->setProperty(kCopy, recovery.copy);
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    auto* text = new QLabel(tr("Unsaved changes were kept: %1").arg(recovery.title));
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    text->setToolTip(recovery.drawing.isEmpty() ? recovery.copy : recovery.drawing);
    auto* open = new QPushButton(tr("Recover"));
    auto* discard = new QPushButton(tr("Discard"));
    auto* later = new QPushButton(tr("Later"));
    line->addWidget(text, 1);
    for (QPushButton* button : {open, discard, later}) {
        button->setAutoDefault(false);
        button->setFocusPolicy(Qt::TabFocus); // a click must not take the keyboard from the command line
        line->addWidget(button);
    }
    m_rows->addWidget(row);

    connect(open, &QPushButton::clicked, this, [this, recovery] { Q_EMIT recoverWanted(recovery); });
    connect(discard, &QPushButton::clicked, this,
            [this, recovery] { answered(recovery, ap::Autosave::instance().discard(recovery)); });
    connect(later, &QPushButton::clicked, this, [this, row] { drop(row); });
    QTimer::singleShot(0, text, [recovery, text] {
        QString what = ap::describe(recovery);
        if (what.startsWith(recovery.drawing)) // the tool tip has its folder
            what.remove(0, recovery.drawing.lastIndexOf(QLatin1Char('/')) + 1);
        text->setText(tr("Unsaved changes were kept: %1").arg(what));
    });
}

void RecoveryBar::answered(const ap::Recovery& recovery, const ap::Result& result) {
    if (result.ok)
        return; // every bar has been told
    for (const QFrame* row : rowsOf(recovery.copy))
        row->findChild<QLabel*>()->setText(result.message);
}

void RecoveryBar::drop(QWidget* row) {
    m_rows->removeWidget(row);
    row->setParent(nullptr);
    row->deleteLater();
    if (m_rows->count() == 0)
        hide();
}

} // namespace merix::ui
