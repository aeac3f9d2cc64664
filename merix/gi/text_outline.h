// SPDX-License-Identifier: MIT
// Texts of drawings as outlines of a font.
#pragma once

#include <QPainterPath>
#include <QString>

namespace merix::gi {

/// A line of text whose capital letters are 1 high, on the base line from the origin to the right, y up.
struct TextOutline {
    QPainterPath path;
    double advance = 0.0;  ///< to where a next text would begin
    double descent = 0.25; ///< how far letters reach below the base line
    double ascent = 1.1;   ///< and above it
};

/// The outline of `text`. The codes %%d %%p %%c %%% %%nnn and \U+XXXX stand for characters; %%u and %%o switch a line
/// below or above the letters on and off. Needs a QGuiApplication.
TextOutline outlineOf(const QString& text);

/// The advance alone, without making the outline.
double advanceOf(const QString& text);

} // namespace merix::gi
