// SPDX-License-Identifier: MIT
// The tool bar's list of layers: the current one, and of each whether it is on, thawed and unlocked.
#pragma once

#include "merix/ap/document_imp.h"
#include "merix/db/tables.h"

#include <QColor>
#include <QComboBox>

#include <vector>

class QStyleOptionViewItem;

namespace merix::ui {

class LayerBox : public QComboBox {
    Q_OBJECT
public:
    enum Switch { kOnOff, kFreeze, kLock, kSwitches };
    struct Row {
        MxDbObjectId id;
        QString name;
        QColor color;
        bool off = false, frozen = false, locked = false;
        bool operator==(const Row&) const = default;
    };

    explicit LayerBox(QWidget* parent = nullptr);

    /// Shows the layers of `document` as they are now; null for none.
    void showLayers(ap::Document* document);
    /// The layer in a row of the open list, and a click on one of its switches: one undo step. Freezing the current
    /// layer is refused, after telling why.
    const Row& row(int index) const { return m_rows[static_cast<std::size_t>(index)]; }
    void toggle(int index, Switch which);
    /// Where a row's switch is in the row's rectangle.
    static QRect switchArea(const QRect& row, Switch which);

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    class Delegate;
    void paintRow(QPainter& painter, const QRect& area, const Row& row, bool selected) const;
    void makeCurrent(int index);
    std::vector<Row> readRows() const;

    ap::Document* m_document = nullptr;
    std::vector<Row> m_rows;
};

} // namespace merix::ui
