// SPDX-License-Identifier: MIT
#pragma once

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

private:
    void addRow(const ap::Recovery& recovery);
    void hideIfEmpty();

    QVBoxLayout* m_rows = nullptr;
};

} // namespace merix::ui
