// SPDX-License-Identifier: MIT
#include "merix/ui/selection_hand.h"

#include "merix/ui/look.h"
#include "tests/merix/ui/window_test.h"

using namespace merix;

namespace {

using Ids = std::vector<MxDbObjectId>;

class SelectionHandTest : public WindowTest {
protected:
    SelectionHandTest() {
        low = addLine({100, 50, 0}, {200, 50, 0});
        high = addLine({100, 150, 0}, {300, 150, 0});
    }
    static const Ids& selected() { return ed::Selection::instance().ids(); }
    QPointF at(double x, double y) { return view().toWidget({x, y, 0}); }
    QColor pixel(const QPointF& p) { return view().grab().toImage().pixelColor(int(p.x()), int(p.y())); }
    void erase(MxDbObjectId id) {
        MxDbEntity* entity = nullptr;
        ASSERT_EQ(mxdbOpenObject(entity, id, Mx::kForWrite), Mx::eOk);
        entity->erase();
        entity->close();
    }

    MxDbObjectId low, high;
};

TEST_F(SelectionHandTest, AClickSelectsAndTheNextAddsToIt) {
    click(at(130, 50));
    EXPECT_EQ(selected(), Ids{low});
    click(at(130, 150));
    EXPECT_EQ(selected(), (Ids{low, high}));
    click(at(130, 150));
    EXPECT_EQ(selected(), (Ids{low, high}));
}

TEST_F(SelectionHandTest, AClickWithShiftTogglesWhatItHits) {
    click(at(130, 50), Qt::ShiftModifier);
    EXPECT_EQ(selected(), Ids{low});
    click(at(130, 50), Qt::ShiftModifier);
    EXPECT_TRUE(selected().empty());
}

TEST_F(SelectionHandTest, ABoxFromTheLeftTakesWhatLiesWholeInIt) {
    drag(at(90, 40), at(250, 160));
    EXPECT_EQ(selected(), Ids{low});
}

TEST_F(SelectionHandTest, ABoxFromTheRightTakesWhatItTouches) {
    drag(at(250, 160), at(190, 40));
    EXPECT_EQ(selected(), (Ids{low, high}));
}

TEST_F(SelectionHandTest, TwoClicksSpanABoxToo) {
    click(at(90, 40));
    EXPECT_TRUE(selected().empty());
    click(at(310, 160));
    EXPECT_EQ(selected(), (Ids{low, high}));
}

TEST_F(SelectionHandTest, ABoxWithShiftTakesOutOfTheSelection) {
    drag(at(90, 40), at(310, 160));
    drag(at(90, 140), at(310, 160), Qt::ShiftModifier);
    EXPECT_EQ(selected(), Ids{low});
}

TEST_F(SelectionHandTest, EscapeGivesUpTheBoxAndThenTheSelection) {
    click(at(130, 50));
    click(at(90, 180)); // a box begins
    key(&view(), Qt::Key_Escape);
    EXPECT_EQ(selected(), Ids{low});
    click(at(130, 150)); // no second corner, but a click of its own
    EXPECT_EQ(selected(), (Ids{low, high}));
    key(&view(), Qt::Key_Escape);
    EXPECT_TRUE(selected().empty());
}

TEST_F(SelectionHandTest, APromptEndsABoxAndTakesTheClick) {
    click(at(90, 40));
    MxGePoint3d picked;
    QTimer::singleShot(0, &window, [&] { click(at(310, 160)); });
    EXPECT_EQ(ed::Prompter::instance().getPoint(nullptr, QStringLiteral("Point: "), picked), kInputNormal);
    EXPECT_TRUE(selected().empty());
    click(at(130, 50));
    EXPECT_EQ(selected(), Ids{low});
}

TEST_F(SelectionHandTest, WhatIsErasedLeavesTheSelection) {
    drag(at(90, 40), at(310, 160));
    erase(low);
    EXPECT_EQ(selected(), Ids{high});
}

TEST_F(SelectionHandTest, AnotherDrawingOrLayoutClearsTheSelection) {
    click(at(130, 50));
    EXPECT_TRUE(document->setCurrentLayout(document->layouts().at(1)));
    EXPECT_TRUE(selected().empty());
    EXPECT_TRUE(document->setCurrentLayout(QStringLiteral("Model")));
    click(at(130, 50));
    ASSERT_EQ(selected(), Ids{low});
    ap::DocManager::instance().create();
    EXPECT_TRUE(selected().empty());
}

TEST_F(SelectionHandTest, AWindowIsBlueAndSolidACrossingGreenAndDashed) {
    const auto shown = [&](const QPointF& from, const QPointF& to) {
        click(from);
        mouse(QEvent::MouseMove, to);
        const QImage image = view().grab().toImage();
        key(&view(), Qt::Key_Escape);
        int painted = 0;
        const QColor color = from.x() < to.x() ? ui::kWindowBox : ui::kCrossingBox;
        for (int y = 0; y < image.height(); ++y)
            painted += image.pixelColor(int(from.x()), y) == color;
        return painted;
    };
    const QPointF a(100, 100), b(160, 160);
    const int solid = shown(a, b), dashed = shown(b, a);
    EXPECT_GE(solid, 60);
    EXPECT_GT(dashed, 20);
    EXPECT_LT(dashed, 55);
}

TEST_F(SelectionHandTest, ABoxOfASelectionPromptLooksAsItSelects) {
    auto& prompter = ed::Prompter::instance();
    MxGePoint3d from, to;
    int crossing = 0, plain = 0;
    const auto count = [&](const QColor& color) {
        mouse(QEvent::MouseMove, {300, 240});
        const QImage image = view().grab().toImage();
        int found = 0;
        for (int y = 240; y < 300; ++y)
            found += image.pixelColor(400, y) == color;
        return found;
    };
    QTimer::singleShot(0, &window, [&] {
        click({400, 300});
        QTimer::singleShot(0, &window, [&] {
            crossing = count(ui::kCrossingBox);
            click({300, 240});
        });
    });
    ASSERT_EQ(prompter.getPick(QStringLiteral("Select objects: "), from), kInputNormal);
    ASSERT_EQ(prompter.getCorner(from, QStringLiteral("Opposite corner: "), to), kInputNormal);
    EXPECT_GT(crossing, 20);
    QTimer::singleShot(0, &window, [&] {
        plain = count(ui::kCrossingBox);
        click({300, 240});
    });
    ASSERT_EQ(prompter.getCorner(from, QStringLiteral("Opposite corner: "), to), kInputNormal);
    EXPECT_EQ(plain, 0) << "the corner of a rectangle that is drawn";
}

TEST_F(SelectionHandTest, AHaloShowsWhatIsSelectedAndWhatAModuleHighlights) {
    const QPointF beside = at(130, 50) + QPointF(0, 2);
    EXPECT_EQ(pixel(beside), ui::kCanvas);
    click(at(130, 50));
    EXPECT_GT(pixel(beside).blue(), ui::kCanvas.blue() + 60);
    EXPECT_EQ(pixel(at(130, 50)), QColor(255, 0, 0)); // and it is seen in its colour
    key(&view(), Qt::Key_Escape);
    EXPECT_EQ(pixel(beside), ui::kCanvas);

    MxDbEntity* entity = nullptr;
    ASSERT_EQ(mxdbOpenObject(entity, low, Mx::kForRead), Mx::eOk);
    entity->highlight();
    EXPECT_GT(pixel(beside).blue(), ui::kCanvas.blue() + 60);
    entity->unhighlight();
    entity->close();
    EXPECT_EQ(pixel(beside), ui::kCanvas);
}

TEST_F(SelectionHandTest, AHaloStaysWithItsEntityWhenTheViewMoves) {
    click(at(130, 50));
    mouse(QEvent::MouseButtonPress, {300, 300}, Qt::MiddleButton, Qt::MiddleButton);
    mouse(QEvent::MouseMove, {350, 280}, Qt::NoButton, Qt::MiddleButton);
    mouse(QEvent::MouseButtonRelease, {350, 280}, Qt::MiddleButton);
    EXPECT_GT(pixel(at(130, 50) + QPointF(0, 2)).blue(), ui::kCanvas.blue() + 60);
}

TEST_F(SelectionHandTest, AllThatIsVisibleIsSelectedAtOnce) {
    view().selectAll();
    EXPECT_EQ(selected(), (Ids{low, high}));
}

TEST_F(SelectionHandTest, ACornerMayBeDraggedOpenWhileAskedFor) {
    auto& prompter = ed::Prompter::instance();
    MxGePoint3d from, to;
    QTimer::singleShot(0, &window, [&] {
        press({100, 100});
        QTimer::singleShot(0, &window, [&] { release({180, 160}); });
    });
    ASSERT_EQ(prompter.getPoint(nullptr, QStringLiteral("First corner: "), from), kInputNormal);
    ASSERT_EQ(prompter.getCorner(from, QStringLiteral("Other corner: "), to), kInputNormal);
    EXPECT_EQ(from, view().toWorld({100, 100}));
    EXPECT_EQ(to, view().toWorld({180, 160}));
}

TEST_F(SelectionHandTest, AClickForTheFirstCornerIsNotTheSecond) {
    auto& prompter = ed::Prompter::instance();
    MxGePoint3d from, to;
    QTimer::singleShot(0, &window, [&] {
        press({100, 100});
        QTimer::singleShot(0, &window, [&] {
            release({102, 101});
            click({400, 260});
        });
    });
    ASSERT_EQ(prompter.getPoint(nullptr, QStringLiteral("First corner: "), from), kInputNormal);
    ASSERT_EQ(prompter.getCorner(from, QStringLiteral("Other corner: "), to), kInputNormal);
    EXPECT_EQ(to, view().toWorld({400, 260}));
}

} // namespace
