// SPDX-License-Identifier: MIT
// Indices 1 to 9 are named colours and 250 to 255 greys. Between them index = 10 * (hue + 1) + shade: 24 hues of 15
// degrees each, and ten shades, alternately full and half saturated, of five values.
#include "merix/gi/colors.h"

#include <array>
#include <cstdlib>

namespace merix::gi {

namespace {

constexpr std::array<QRgb, 10> kNamed{0xffffffff, 0xffff0000, 0xffffff00, 0xff00ff00, 0xff00ffff,
                                      0xff0000ff, 0xffff00ff, 0xffffffff, 0xff808080, 0xffc0c0c0};
constexpr std::array<QRgb, 6> kGreys{0xff333333, 0xff5b5b5b, 0xff848484, 0xffadadad, 0xffd6d6d6, 0xffffffff};
constexpr std::array<int, 5> kValues{255, 204, 153, 127, 76};

/// The share, in quarters, that one primary has in a hue; `hue` counts 15 degrees from the primary itself.
int quartersOf(int hue) {
    const int distance = std::abs((hue + 12) % 24 - 12);
    return std::clamp(8 - distance, 0, 4);
}

} // namespace

QRgb colorOfIndex(int index) {
    if (index < 0 || index > 255)
        return kNamed[7];
    if (index < 10)
        return kNamed[static_cast<std::size_t>(index)];
    if (index >= 250)
        return kGreys[static_cast<std::size_t>(index - 250)];
    const int hue = index / 10 - 1, shade = index % 10, value = kValues[static_cast<std::size_t>(shade / 2)];
    const auto channel = [&](int primary) {
        const int full = value * quartersOf((hue + 24 - primary) % 24) / 4;
        return shade % 2 ? (full + value) / 2 : full;
    };
    return qRgb(channel(0), channel(8), channel(16));
}

QRgb contrasting(const QColor& background) {
    return qGray(background.rgb()) < 128 ? qRgb(255, 255, 255) : qRgb(0, 0, 0);
}

} // namespace merix::gi
