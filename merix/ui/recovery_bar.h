// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ap/document_imp.h"
#include "merix/ap/session_list.h"

#include <QFrame>

class QVBoxLayout;

namespace merix::ui {

/// Offers the copies that a dead program left behind, above the view and never in the way: work goes on without an
/// answer, and the offer comes again at the next start. Hidden when there is nothing to offer.
class RecoveryBar : public QFrame {
    Q_OBJECT
public:
    explicit RecoveryBar(QWidget* parent = nullptr);
    /// Looks for copies. What each holds is found out as soon as the program is idle.
    void look();
    /// What became of a recovery that was wanted: its row says why not. When it went well the row is gone, as it goes
    /// from every bar whoever settled it.
    void answered(const ap::Recovery& recovery, const ap::Result& result);

Q_SIGNALS:
    void recoverWanted(const merix::ap::Recovery& recovery);

private:
    QList<QFrame*> rowsOf(const QString& copy) const;
    void addRow(const ap::Recovery& recovery);
    void drop(QWidget* row);

    QVBoxLayout* m_rows = nullptr;
};

} // namespace merix::ui
