// SPDX-License-Identifier: MIT
#include "phonomark/tagwindow/pm_reactor.h"

#include "host/ui/windows.h"
#include "merix/ui/main_window.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/tagwindow/sound_fixture.h"

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
