// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>

/// The box in the tag window's corner that deletes the note, pixels of the window.
constexpr QRect kDeleteBox(26, 0, 9, 9);

/// Right and bottom edge are exclusive.
constexpr bool isInDeleteBox(int x, int y) {
    return kDeleteBox.x() <= x && x < kDeleteBox.x() + kDeleteBox.width() && kDeleteBox.y() <= y &&
           y < kDeleteBox.y() + kDeleteBox.height();
}
