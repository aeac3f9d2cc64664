// SPDX-License-Identifier: MIT
#include "merix/gi/text_outline.h"

#include <QFont>
#include <QFontMetricsF>

#include <algorithm>
#include <optional>
#include <vector>

namespace merix::gi {

namespace {

struct Stroke {
    bool over;
    int from, to;
};

struct Decoded {
    QString text;
    std::vector<Stroke> strokes; ///< lines below or above, by character
};

/// The character of a code like `\U+00B0` at `at`, and how long the code is.
std::optional<QChar> unicodeCode(const QString& text, int at) {
    if (text.midRef(at, 3).compare(QLatin1String("\\U+"), Qt::CaseInsensitive) != 0)
        return {};
    bool ok = false;
    const ushort code = text.midRef(at + 3, 4).toUShort(&ok, 16);
    return ok && at + 7 <= text.size() ? std::optional(QChar(code)) : std::nullopt;
}

Decoded decode(const QString& text) {
    Decoded out;
    int lineFrom[2] = {-1, -1};
    const auto toggle = [&](int which) {
        const int here = out.text.size();
        if (lineFrom[which] >= 0)
            out.strokes.push_back({which == 1, lineFrom[which], here});
        lineFrom[which] = lineFrom[which] >= 0 ? -1 : here;
    };
    for (int i = 0; i < text.size(); ++i) {
        if (const auto character = unicodeCode(text, i)) {
            out.text += *character, i += 6;
            continue;
        }
        if (text[i] != QLatin1Char('%') || i + 2 >= text.size() || text[i + 1] != QLatin1Char('%')) {
            out.text += text[i];
            continue;
        }
        switch (const char code = text[i + 2].toLower().toLatin1()) {
        case 'd':
            out.text += QChar(0x00B0);
            break;
        case 'p':
            out.text += QChar(0x00B1);
            break;
        case 'c':
            out.text += QChar(0x2300);
            break;
        case '%':
            out.text += QLatin1Char('%');
            break;
        case 'u':
        case 'o':
            toggle(code == 'o');
            break;
        default: {
            bool ok = false;
            const ushort number = text.midRef(i + 2, 3).toUShort(&ok);
            if (!ok || i + 5 > text.size()) {
                out.text += text[i];
                continue;
            }
            out.text += QChar(number), i += 2;
        }
        }
        i += 2;
    }
    for (const int which : {0, 1})
        if (lineFrom[which] >= 0)
            toggle(which);
    return out;
}

/// Large enough that the font's own rounding does not show.
constexpr int kFontPixels = 256;

const QFont& drawingFont() {
    static const QFont font = [] {
        QFont f(QStringLiteral("DejaVu Sans"));
        f.setStyleHint(QFont::SansSerif);
        f.setPixelSize(kFontPixels);
        f.setHintingPreference(QFont::PreferNoHinting);
        f.setKerning(true);
        return f;
    }();
    return font;
}

} // namespace

TextOutline outlineOf(const QString& text) {
    const Decoded decoded = decode(text);
    const QFontMetricsF metrics(drawingFont());
    const double unit = 1.0 / std::max(1.0, metrics.capHeight());
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    path.addText(0, 0, drawingFont(), decoded.text);
    for (const Stroke& stroke : decoded.strokes) {
        const double from = metrics.horizontalAdvance(decoded.text.left(stroke.from));
        const double to = metrics.horizontalAdvance(decoded.text.left(stroke.to));
        const double y = stroke.over ? -1.3 * metrics.capHeight() : 0.2 * metrics.capHeight();
        path.addRect(from, y, to - from, 0.08 * metrics.capHeight());
    }
    TextOutline outline;
    outline.path = QTransform::fromScale(unit, -unit).map(path);
    outline.advance = metrics.horizontalAdvance(decoded.text) * unit;
    return outline;
}

double advanceOf(const QString& text) {
    const QFontMetricsF metrics(drawingFont());
    return metrics.horizontalAdvance(decode(text).text) / std::max(1.0, metrics.capHeight());
}

} // namespace merix::gi
