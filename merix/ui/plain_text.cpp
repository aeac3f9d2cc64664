// SPDX-License-Identifier: MIT
#include "merix/ui/plain_text.h"

#include <QApplication>
#include <QEvent>
#include <QLabel>

namespace merix::ui {

namespace {

/// Of a tool tip, pixels; what is longer is cut off. A text may be of any length.
constexpr int kWidestTip = 900, kHighestTip = 600;

/// Every label is polished before it first measures its text, those of message boxes and tool tips among them.
class PlainLabels final : public QObject {
public:
    using QObject::QObject;
    bool eventFilter(QObject* watched, QEvent* event) override {
        auto* label = event->type() == QEvent::Polish ? qobject_cast<QLabel*>(watched) : nullptr;
        if (label && label->textFormat() == Qt::AutoText)
            label->setTextFormat(Qt::PlainText);
        if (label && label->windowType() == Qt::ToolTip)
            label->setMaximumSize(kWidestTip, kHighestTip);
        return false;
    }
};

} // namespace

void keepTextsPlain() {
    static const QObject* const labels = [] {
        auto* made = new PlainLabels(qApp);
        qApp->installEventFilter(made);
        return made;
    }();
    Q_UNUSED(labels);
}

QString withoutKeys(QString text) {
    return text.replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace merix::ui
