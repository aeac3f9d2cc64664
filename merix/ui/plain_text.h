// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace merix::ui {

/// From now on labels, tool tips and message boxes of the whole program take their texts for what they are. Qt takes a
/// text that looks like markup for markup, which may name files to read; texts come from drawings and file names. A
/// widget that is to show markup says so by its text format. Calling it again has no effect.
void keepTextsPlain();

/// `text` for where an ampersand would mark a key: tabs and menus.
QString withoutKeys(QString text);

} // namespace merix::ui
