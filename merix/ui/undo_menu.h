// SPDX-License-Identifier: MIT
#pragma once

#include "merix/ap/document_imp.h"

#include <QMenu>

#include <functional>

namespace merix::ui {

enum class Steps { kUndo, kRedo };

/// The names of the steps that can be taken back or done again, newest first, no more than `most`, as texts of
/// actions: an ampersand is doubled.
QStringList stepNames(const ap::Document& document, Steps steps, int most);

/// The list at the button. Choosing a step takes back, or does again, all down to it.
class UndoMenu : public QMenu {
    Q_OBJECT
public:
    /// `document` is asked whenever the menu opens.
    UndoMenu(Steps steps, std::function<ap::Document*()> document, QWidget* parent);

private:
    void fill();

    Steps m_steps;
    std::function<ap::Document*()> m_document;
};

} // namespace merix::ui
