// SPDX-License-Identifier: MIT
#include "phonomark/tagwindow/pm_reactor.h"

#include "host/ui/windows.h"
#include "merix/ed/selection.h"
#include "merix/ui/main_window.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/tagwindow/sound_fixture.h"
#include "tests/support/at_scale.h"

#include <QMouseEvent>

namespace {

class HoverTest : public SoundTest {
protected:
    void SetUp() override {
        SoundTest::SetUp();
        m_window = std::make_unique<merix::ui::MainWindow>();
        m_window->setUnattended(true);
        m_window->resize(1000, 700);
        m_window->show();
        QCoreApplication::processEvents();
    }
    void TearDown() override {
        removeTagWindow();
        m_window.reset();
        SoundTest::TearDown();
    }

    /// A note in the middle of the view, drawn once.
    MxDbObjectId addDrawn() {
        const auto& shown = merix::ed::activeView()->transform();
        const MxDbObjectId id = addNote(kPointNote, {shown.center.x, shown.center.y, 0});
        draw(id);
        return id;
    }
    void draw(MxDbObjectId id) {
        note(id);
        mxuiRepairView();
        QCoreApplication::processEvents();
    }
    MxGePoint3d middle(MxDbObjectId id) {
        MxDbExtents image;
        note(id).getImageRegion(image);
        return {(image.minPoint().x + image.maxPoint().x) / 2, (image.minPoint().y + image.maxPoint().y) / 2, 0};
    }
    /// A note whose marker stands at a place of the view.
    MxDbObjectId addRegion(const QPointF& corner, double width) {
        const MxDbObjectId id = addNote(kRegionNote);
        const MxGePoint3d low = m_window->view()->toWorld({corner.x() - width, corner.y() + width});
        note(id).setExtents(MxDbExtents(low, m_window->view()->toWorld(corner)));
        note(id).recordGraphicsModified();
        draw(id);
        return id;
    }
    /// The hand moves the cursor to a place of the view.
    void point(const QPointF& at) {
        QMouseEvent move(QEvent::MouseMove, at, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_window->view(), &move);
        for (int i = 0; i < 4; ++i)
            QCoreApplication::processEvents();
    }
    void hover(const MxGePoint3d& at, std::vector<MxDbObjectId> picked, bool computed = true) {
        MxEdInputPoint input;
        input.pointComputed = computed;
        input.rawPoint = at;
        input.pickedEntities = std::move(picked);
        PhonomarkPmReactor monitor;
        EXPECT_EQ(monitor.monitorInputPoint(input), Mx::eOk);
        // A monitor that goes hides the window; this one shall only have been told.
        if (g_taguidlg)
            g_taguidlg->ShowWindow(1);
    }

    std::unique_ptr<merix::ui::MainWindow> m_window;
};

} // namespace

TEST_F(HoverTest, TheWindowComesUpThirtySixPixelsAboveTheNote) {
    const MxDbObjectId id = addDrawn();
    hover(middle(id), {id});
    ASSERT_TRUE(g_taguidlg);
    EXPECT_EQ(g_taguidlg->GetMxDbOwner(), &note(id));
    const auto pixel = merix::ed::activeView()->transform().toPixel(note(id).position());
    const QPoint screen = mxuiViewToScreen(QPoint(qRound(pixel.x), qRound(pixel.y)));
    EXPECT_EQ(g_taguidlg->mapToGlobal(QPoint(0, 0)), screen - QPoint(0, 36));
    EXPECT_EQ(g_taguidlg->parentWidget(), m_window.get());
}

TEST_F(HoverTest, NotesWithoutAPointGetTheWindowOverTheCornerWhereTheirMarkerStands) {
    const MxGePoint3d center = [] {
        const auto& shown = merix::ed::activeView()->transform();
        return MxGePoint3d(shown.center.x, shown.center.y, 0);
    }();
    for (const int type : {kRegionNote, kObjectNote}) {
        const MxDbObjectId id = addNote(type, {center.x + 1e6, 0, 0});
        note(id).setExtents(MxDbExtents({center.x - 1, center.y - 1, 0}, center));
        draw(id);
        hover(middle(id), {id});
        ASSERT_TRUE(g_taguidlg) << type;
        EXPECT_EQ(g_taguidlg->GetMxDbOwner(), &note(id));
        const auto pixel = merix::ed::activeView()->transform().toPixel(center);
        const QPoint screen = mxuiViewToScreen(QPoint(qRound(pixel.x), qRound(pixel.y)));
        EXPECT_EQ(g_taguidlg->mapToGlobal(QPoint(0, 0)), screen - QPoint(0, 36)) << type;
        removeTagWindow();
    }
}

TEST_F(HoverTest, TheWindowStandsOverTheMarkerOfThirtyTwoPixels) {
    auto& view = *m_window->view();
    ASSERT_EQ(view.devicePixelRatioF(), merix::test::scaleOfScreen());
    for (const QPointF place : {QPointF(100, 100), QPointF(333, 221), QPointF(view.width() - 60, view.height() - 10)}) {
        const MxGePoint3d world = view.toWorld(place);
        const MxDbObjectId id = addNote(kPointNote, world);
        draw(id);
        MxDbExtents image;
        note(id).getImageRegion(image);
        const QPointF low = view.toWidget(image.minPoint()), high = view.toWidget(image.maxPoint());
        EXPECT_NEAR(high.x() - low.x(), 32, 1e-6);
        EXPECT_NEAR(low.x() - place.x(), 32 * 0.6 * std::cos(0.785), 1e-6);
        point((low + high) / 2);
        ASSERT_TRUE(g_taguidlg);
        EXPECT_TRUE(g_taguidlg->isVisible());
        EXPECT_EQ(g_taguidlg->size(), QSize(36, 36));
        const QPointF corner = view.mapFromGlobal(g_taguidlg->mapToGlobal(QPoint(0, 0)));
        EXPECT_NEAR(corner.x(), place.x(), 0.51);
        EXPECT_NEAR(corner.y(), place.y() - 36, 0.51);
        removeTagWindow();
    }
}

class HoverAtScale : public testing::TestWithParam<double> {};

TEST_P(HoverAtScale, TheWindowStandsOverTheMarkerOfThirtyTwoPixels) {
    merix::test::expectPassesAtScale("HoverTest.TheWindowStandsOverTheMarkerOfThirtyTwoPixels", GetParam());
}

INSTANTIATE_TEST_SUITE_P(Scales, HoverAtScale, testing::Values(1.25, 1.5, 2.0),
                         [](const auto& scale) { return std::to_string(int(scale.param * 100)); });

TEST_F(HoverTest, InsideAShownRegionNothingOfItsNoteLiesUnderTheCursor) {
    auto& view = *m_window->view();
    const QPointF corner(500, 200);
    const MxDbObjectId id = addRegion(corner, 200);
    const auto under = [&](const QPointF& at) { return view.under(view.toWorld(at)); };
    EXPECT_TRUE(under({420, 290}).empty());
    EXPECT_EQ(under({300, 290}), std::vector{id}) << "the outline";
    EXPECT_EQ(under({420, 203}), std::vector{id}) << "the outline";
    for (const QPointF& at : {QPointF(502, 198), QPointF(516, 184), QPointF(530, 170), QPointF(525, 196)})
        EXPECT_EQ(under(at), std::vector{id}) << "the marker, also between its strokes";
    point({516, 184});
    ASSERT_TRUE(g_taguidlg);
    EXPECT_EQ(g_taguidlg->GetMxDbOwner(), &note(id));
    point({420, 290});
    EXPECT_FALSE(g_taguidlg) << "the window goes over empty space";
}

TEST_F(HoverTest, TheUpperOfTwoNotesUnderTheCursorGetsTheWindow) {
    auto& view = *m_window->view();
    const MxDbObjectId below = addRegion({500, 200}, 40), above = addRegion({505, 205}, 40);
    point({516, 184});
    ASSERT_TRUE(g_taguidlg);
    EXPECT_EQ(g_taguidlg->GetMxDbOwner(), &note(above));
    EXPECT_EQ(view.pick(view.toWorld({516, 184})), above);
    merix::ed::Selection::instance().set({above});
    run("DRAWORDER", {"Back"});
    point({517, 184});
    ASSERT_TRUE(g_taguidlg);
    EXPECT_EQ(g_taguidlg->GetMxDbOwner(), &note(below));
}

TEST_F(HoverTest, NothingHappensBesideTheMarkerOrWithoutAPoint) {
    const MxDbObjectId id = addDrawn();
    hover({middle(id).x + 1e6, 0, 0}, {id});
    EXPECT_FALSE(g_taguidlg);
    hover(middle(id), {id}, false);
    EXPECT_FALSE(g_taguidlg);
    hover(middle(id), {addLine()});
    EXPECT_FALSE(g_taguidlg);
}

TEST_F(HoverTest, EmptySpaceTakesTheWindowAway) {
    const MxDbObjectId id = addDrawn();
    hover(middle(id), {id});
    ASSERT_TRUE(g_taguidlg);
    hover({}, {});
    EXPECT_FALSE(g_taguidlg);
}

TEST_F(HoverTest, TheLastOfSeveralNotesUnderTheCursorKeepsTheWindow) {
    const MxDbObjectId a = addDrawn(), b = addDrawn();
    hover(middle(a), {a, b});
    ASSERT_TRUE(g_taguidlg);
    EXPECT_EQ(g_taguidlg->GetMxDbOwner(), &note(b));
}

TEST_F(HoverTest, ANoteThatIsBeingPlayedElsewhereGetsNoWindow) {
    const MxDbObjectId id = addDrawn();
    note(id).setPlaying(true);
    hover(middle(id), {id});
    EXPECT_FALSE(g_taguidlg);
}

TEST_F(HoverTest, DraggingNeverOpensTheWindow) {
    const MxDbObjectId id = addDrawn();
    MxDbPhonomark::SetIsDraging(true);
    hover(middle(id), {id});
    MxDbPhonomark::SetIsDraging(false);
    EXPECT_FALSE(g_taguidlg);
}

TEST_F(HoverTest, AMarkerOutsideTheVisibleViewGetsNoWindow) {
    const MxDbObjectId id = addDrawn();
    const MxGePoint3d cursor = middle(id);
    auto moved = merix::ed::activeView()->transform();
    moved.center.x += moved.width * moved.unitsPerPixel;
    merix::ed::activeView()->setTransform(moved);
    hover(cursor, {id});
    EXPECT_FALSE(g_taguidlg);
}

TEST_F(HoverTest, AWindowThatPlaysStaysOverEmptySpaceUntilItIsAborted) {
    const MxDbObjectId id = addRecorded(L"5.0\"");
    CPhonomarkTagUIDlg& window = openWindow(id);
    AbortPlayingAndDestroyWnd();
    ASSERT_TRUE(g_taguidlg) << "it does not play";
    press(window);
    hover({}, {});
    ASSERT_EQ(g_taguidlg, &window);
    DestroyTagWindow();
    ASSERT_EQ(g_taguidlg, &window);
    AbortPlayingAndDestroyWnd();
    EXPECT_FALSE(g_taguidlg);
}

TEST_F(HoverTest, AWindowThatPlaysStaysWithItsNoteWhenTheCursorComesOverAnother) {
    const MxDbObjectId played = addRecorded(L"5.0\""), other = addDrawn();
    CPhonomarkTagUIDlg& window = openWindow(played);
    press(window);
    const QPoint place = window.pos();
    hover(middle(other), {other});
    ASSERT_EQ(g_taguidlg, &window);
    EXPECT_EQ(window.GetMxDbOwner(), &note(played));
    EXPECT_EQ(window.pos(), place);
    EXPECT_TRUE(window.IsPlaying());
}

TEST_F(HoverTest, TheMonitorOfADocumentGoesWithItsLastNote) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    EXPECT_TRUE(window.isVisible());
    livePhManager()->RemovePhonomark(&document());
    EXPECT_FALSE(window.isVisible());
}

TEST_F(HoverTest, AMonitorAttachesAndDetaches) {
    PhonomarkPmReactor monitor(&document());
    EXPECT_TRUE(monitor.IsAttached());
    EXPECT_EQ(monitor.Subject(), &document());
    monitor.Attach(&document());
    EXPECT_TRUE(monitor.IsAttached());
    monitor.Detach();
    EXPECT_FALSE(monitor.IsAttached());
    EXPECT_FALSE(monitor.excludeFromOsnapCalculation());
}
