// SPDX-License-Identifier: MIT
#include "merix/ui/layer_box.h"

#include "tests/merix/ui/window_test.h"

#include <QAbstractItemView>

using namespace merix;
using ui::LayerBox;

namespace {

class LayerBoxTest : public WindowTest {
protected:
    LayerBoxTest() {
        auto layer = new db::LayerRecord;
        layer->name = L"Walls of brick";
        auto& database = document->database()->imp();
        MxDbObjectId id;
        EXPECT_EQ(database.append(layer, database.roots.layerTable, id), Mx::eOk);
        layer->close();
        db::SymbolTable* table = nullptr;
        EXPECT_EQ(mxdbOpenObject(table, database.roots.layerTable, Mx::kForWrite), Mx::eOk);
        table->assertWriteEnabled();
        table->records.push_back(id);
        table->close();
        settle();
        walls = id;
        undo().clear();
    }
    LayerBox& box() { return *window.findChild<LayerBox*>(); }
    db::UndoRecorder& undo() { return document->database()->imp().undo; }
    const db::LayerRecord& record() { return *static_cast<db::LayerRecord*>(db::DatabaseImp::peek(walls)); }
    MxDbObjectId walls;
};

TEST_F(LayerBoxTest, TheLayersOfTheDrawingAreListedAndTheCurrentOneIsShown) {
    ASSERT_EQ(box().count(), 2);
    EXPECT_EQ(box().itemText(1), QStringLiteral("Walls of brick"));
    EXPECT_EQ(box().currentText(), QStringLiteral("0"));
    ap::DocManager::instance().create();
    EXPECT_EQ(box().count(), 1);
}

TEST_F(LayerBoxTest, ChoosingALayerMakesItCurrent) {
    box().setCurrentIndex(1);
    Q_EMIT box().activated(1);
    EXPECT_EQ(document->database()->imp().header.currentLayer, L"Walls of brick");
}

TEST_F(LayerBoxTest, ChoosingALayerIsANamedUndoStepAndChoosingItAgainNone) {
    Q_EMIT box().activated(1);
    Q_EMIT box().activated(1);
    ASSERT_EQ(undo().undoUnits().size(), 1U);
    EXPECT_EQ(undo().undoUnits()[0].name, L"Current layer");
    EXPECT_TRUE(ap::DocManager::instance().undo(*document));
    settle();
    EXPECT_EQ(box().currentText(), QStringLiteral("0"));
}

TEST_F(LayerBoxTest, WhileAnotherHoldsTheDrawingTheLayerStaysAndTheReasonIsTold) {
    auto& manager = ap::DocManager::instance();
    ASSERT_EQ(manager.lockDocument(document, MxApLockMode::kWrite, L"OTHER", L"Other"), Mx::eOk);
    ed::Console::instance().markRead();
    box().setCurrentIndex(1);
    Q_EMIT box().activated(1);
    manager.unlockDocument(document);
    EXPECT_EQ(document->database()->imp().header.currentLayer, L"0");
    EXPECT_EQ(box().currentText(), QStringLiteral("0"));
    EXPECT_TRUE(ed::Console::instance().unread().contains(QStringLiteral("held by OTHER")));
}

TEST_F(LayerBoxTest, AClickOnASymbolSwitchesTheLayerAndLeavesTheListOpen) {
    box().showPopup();
    settle();
    const QRect row = box().view()->visualRect(box().model()->index(1, 0));
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        const QPoint at = LayerBox::switchArea(row, LayerBox::kLock).center();
        QMouseEvent event(type, at, box().view()->viewport()->mapToGlobal(at), Qt::LeftButton, Qt::LeftButton, {});
        QApplication::sendEvent(box().view()->viewport(), &event);
    }
    EXPECT_TRUE(record().isLocked());
    EXPECT_TRUE(box().view()->isVisible());
    box().hidePopup();
    EXPECT_EQ(box().currentText(), QStringLiteral("0"));
}

TEST_F(LayerBoxTest, EverySwitchIsAnUndoStep) {
    box().toggle(1, LayerBox::kOnOff);
    box().toggle(1, LayerBox::kFreeze);
    EXPECT_TRUE(record().off);
    EXPECT_TRUE(record().isFrozen());
    EXPECT_FALSE(record().isLocked());
    ASSERT_EQ(undo().undoUnits().size(), 2U);
    EXPECT_EQ(undo().undoUnits()[1].name, L"Layer freeze");
    EXPECT_TRUE(ap::DocManager::instance().undo(*document));
    settle();
    EXPECT_FALSE(record().isFrozen());
    EXPECT_FALSE(box().row(1).frozen);
    EXPECT_TRUE(box().row(1).off);
}

TEST_F(LayerBoxTest, TheCurrentLayerIsNotFrozenAndAFrozenOneNotMadeCurrent) {
    ed::Console::instance().markRead();
    box().toggle(0, LayerBox::kFreeze);
    EXPECT_FALSE(box().row(0).frozen);
    EXPECT_TRUE(ed::Console::instance().unread().contains(QStringLiteral("The current layer 0 cannot be frozen")));
    box().toggle(1, LayerBox::kFreeze);
    Q_EMIT box().activated(1);
    EXPECT_EQ(document->database()->imp().header.currentLayer, L"0");
    EXPECT_EQ(box().currentText(), QStringLiteral("0"));
}

} // namespace
