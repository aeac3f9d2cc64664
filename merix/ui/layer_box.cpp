// SPDX-License-Identifier: MIT
#include "merix/ui/layer_box.h"

#include "merix/db/database_imp.h"
#include "merix/db/layers.h"
#include "merix/ed/console.h"
#include "merix/gi/colors.h"
#include "merix/ui/icons.h"

#include <QAbstractItemView>
#include <QMouseEvent>
#include <QPainter>
#include <QStylePainter>
#include <QStyledItemDelegate>

#include <algorithm>

namespace merix::ui {

namespace {

constexpr int kIcon = 16, kMargin = 4, kSwatch = 12;
constexpr std::int16_t kFrozenFlag = 1, kLockedFlag = 4;

struct Names {
    const char *yes, *no; ///< icons
    const wchar_t *switchOn, *switchOff;
};
constexpr Names kNames[LayerBox::kSwitches] = {
    {"off", "on", L"Layer off", L"Layer on"},
    {"frozen", "thawed", L"Layer freeze", L"Layer thaw"},
    {"locked", "unlocked", L"Layer lock", L"Layer unlock"},
};

void tell(const QString& text) {
    ed::Console::instance().print(QLatin1Char('\n') + text);
}

bool stateOf(const LayerBox::Row& row, int which) {
    return which == LayerBox::kOnOff ? row.off : which == LayerBox::kFreeze ? row.frozen : row.locked;
}

const db::LayerRecord* layerOf(MxDbObjectId id) {
    const MxDbObject* object = db::DatabaseImp::peek(id);
    return object && object->isKindOf(db::LayerRecord::desc()) ? static_cast<const db::LayerRecord*>(object) : nullptr;
}

} // namespace

class LayerBox::Delegate final : public QStyledItemDelegate {
public:
    explicit Delegate(const LayerBox& box)
        : m_box(box) {}
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const bool selected = option.state & QStyle::State_Selected;
        painter->fillRect(option.rect, option.palette.color(selected ? QPalette::Highlight : QPalette::Base));
        if (index.row() < static_cast<int>(m_box.m_rows.size()))
            m_box.paintRow(*painter, option.rect, m_box.row(index.row()), selected);
    }
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const int text = option.fontMetrics.horizontalAdvance(index.data().toString());
        return {switchArea({}, kLock).right() + 4 * kMargin + kSwatch + text, kIcon + 2 * kMargin};
    }

private:
    const LayerBox& m_box;
};

LayerBox::LayerBox(QWidget* parent)
    : QComboBox(parent) {
    setObjectName(QStringLiteral("layerBox"));
    setAccessibleName(tr("Current layer"));
    setToolTip(tr("Layers: click a name to draw on it, a symbol to switch it"));
    setFocusPolicy(Qt::TabFocus);
    setMinimumWidth(190);
    setMaxVisibleItems(24);
    setItemDelegate(new Delegate(*this));
    itemDelegate()->setParent(this);
    view()->viewport()->installEventFilter(this);
    connect(this, qOverload<int>(&QComboBox::activated), this, &LayerBox::makeCurrent);
}

std::vector<LayerBox::Row> LayerBox::readRows() const {
    std::vector<Row> rows;
    if (!m_document)
        return rows;
    const MxDbObject* table = db::DatabaseImp::peek(m_document->database()->imp().roots.layerTable);
    if (!table || !table->isKindOf(db::SymbolTable::desc()))
        return rows;
    for (const MxDbObjectId id : static_cast<const db::SymbolTable*>(table)->records)
        if (const db::LayerRecord* layer = layerOf(id))
            rows.push_back(
                {id, QString::fromStdWString(layer->name),
                 QColor::fromRgb(layer->hasTrueColor ? layer->trueColor : gi::colorOfIndex(std::abs(layer->color))),
                 layer->off, layer->isFrozen(), layer->isLocked()});
    std::sort(rows.begin(), rows.end(),
              [](const Row& a, const Row& b) { return a.name.localeAwareCompare(b.name) < 0; });
    return rows;
}

void LayerBox::showLayers(ap::Document* document) {
    m_document = document;
    setEnabled(document);
    std::vector<Row> rows = readRows();
    const bool sameNames = std::equal(rows.begin(), rows.end(), m_rows.begin(), m_rows.end(),
                                      [](const Row& a, const Row& b) { return a.id == b.id && a.name == b.name; });
    m_rows = std::move(rows);
    const QSignalBlocker quiet(this);
    if (!sameNames) {
        clear();
        for (const Row& row : m_rows)
            addItem(row.name);
    }
    int current = -1;
    if (document) {
        const QString name = QString::fromStdWString(document->database()->imp().header.currentLayer);
        for (std::size_t i = 0; i < m_rows.size(); ++i)
            if (m_rows[i].name.compare(name, Qt::CaseInsensitive) == 0)
                current = static_cast<int>(i);
    }
    setCurrentIndex(current);
    update();
    view()->viewport()->update();
}

void LayerBox::makeCurrent(int index) {
    if (index < 0 || index >= static_cast<int>(m_rows.size()) || !m_document)
        return;
    const Row chosen = row(index);
    auto& manager = ap::DocManager::instance();
    const auto& header = m_document->database()->imp().header;
    if (chosen.frozen)
        tell(QStringLiteral("The layer %1 is frozen and cannot be current.").arg(chosen.name));
    else if (chosen.name != QString::fromStdWString(header.currentLayer) &&
             manager.lockDocument(m_document, MxApLockMode::kWrite, L"LAYER", L"Current layer") == Mx::eOk) {
        if (db::setCurrentLayer(chosen.id) != Mx::eOk)
            tell(QStringLiteral("The layer %1 cannot be current.").arg(chosen.name));
        manager.unlockDocument(m_document);
    }
    showLayers(m_document);
}

void LayerBox::toggle(int index, Switch which) {
    if (!m_document)
        return;
    const Row row = m_rows[static_cast<std::size_t>(index)];
    const bool set = !stateOf(row, which);
    if (which == kFreeze && set && index == currentIndex()) {
        tell(QStringLiteral("The current layer %1 cannot be frozen.").arg(row.name));
        return;
    }
    auto& manager = ap::DocManager::instance();
    const wchar_t* name = set ? kNames[which].switchOn : kNames[which].switchOff;
    if (manager.lockDocument(m_document, MxApLockMode::kWrite, L"LAYER", name) != Mx::eOk)
        return;
    db::LayerRecord* layer = nullptr;
    if (mxdbOpenObject(layer, row.id, Mx::kForWrite) == Mx::eOk) {
        layer->assertWriteEnabled();
        const auto setFlag = [&](std::int16_t flag) {
            layer->flags = static_cast<std::int16_t>(set ? layer->flags | flag : layer->flags & ~flag);
        };
        if (which == kOnOff)
            layer->off = set;
        else
            setFlag(which == kFreeze ? kFrozenFlag : kLockedFlag);
        layer->close();
    }
    manager.unlockDocument(m_document);
    showLayers(m_document);
}

QRect LayerBox::switchArea(const QRect& row, Switch which) {
    return {row.left() + kMargin + which * (kIcon + kMargin), row.top() + (row.height() - kIcon) / 2, kIcon, kIcon};
}

// ---------------------------------------------------------------- painting and the mouse

void LayerBox::paintRow(QPainter& painter, const QRect& area, const Row& row, bool selected) const {
    QPalette colors = palette();
    if (selected) {
        colors.setColor(QPalette::ButtonText, colors.color(QPalette::HighlightedText));
        colors.setColor(QPalette::Link, colors.color(QPalette::HighlightedText));
    }
    for (int i = 0; i < kSwitches; ++i)
        paintIcon(painter, QLatin1String(stateOf(row, i) ? kNames[i].yes : kNames[i].no),
                  switchArea(area, static_cast<Switch>(i)), colors, isEnabled());
    const QRect last = switchArea(area, kLock);
    const QRect swatch(last.right() + 2 * kMargin, area.center().y() - kSwatch / 2 + 1, kSwatch, kSwatch);
    painter.setPen(colors.color(QPalette::Mid));
    painter.setBrush(row.color);
    painter.drawRect(swatch.adjusted(0, 0, -1, -1));
    painter.setPen(colors.color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText));
    const QRect rest(swatch.right() + 2 * kMargin, area.top(), area.right() - swatch.right() - 3 * kMargin,
                     area.height());
    painter.drawText(rest, Qt::AlignVCenter | Qt::AlignLeft,
                     painter.fontMetrics().elidedText(row.name, Qt::ElideRight, rest.width()));
}

void LayerBox::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    const QRect area = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    if (currentIndex() >= 0)
        paintRow(painter, area, row(currentIndex()), false);
}

bool LayerBox::eventFilter(QObject* watched, QEvent* event) {
    if (watched == view()->viewport() &&
        (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonRelease)) {
        const QPoint at = static_cast<QMouseEvent*>(event)->pos();
        const QModelIndex index = view()->indexAt(at);
        for (int i = 0; index.isValid() && i < kSwitches; ++i)
            if (switchArea(view()->visualRect(index), static_cast<Switch>(i)).contains(at)) {
                if (event->type() == QEvent::MouseButtonPress)
                    toggle(index.row(), static_cast<Switch>(i));
                return true; // the list stays open
            }
    }
    return QComboBox::eventFilter(watched, event);
}

} // namespace merix::ui
