// SPDX-License-Identifier: MIT
#include "phonomark/tagwindow/tag_window.h"

#include "merix/db/tables.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/tagwindow/sound_fixture.h"
#include "tests/support/at_scale.h"

#include <QWheelEvent>

using merix::ap::DocManager;
using ::testing::HasSubstr;

namespace {

using TagWindowTest = SoundTest;

} // namespace

TEST_F(TagWindowTest, ANoteWhoseDrawingHasGoneCountsAsErased) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    DocManager::instance().create();
    DocManager::instance().close(document());
    EXPECT_EQ(window.GetMxDbOwner(), nullptr);
    press(window);
    EXPECT_FALSE(window.IsRecording());
    press(window, {30, 4});
    window.SetRecordStatus(true);
    press(window);
    EXPECT_TRUE(window.IsPlaying()) << "of nothing";
}

TEST_F(TagWindowTest, APressIntoTheCornerBoxDeletesTheNote) {
    for (const QPointF at : {QPointF(30, 4), QPointF(26, 0), QPointF(34.4, 8.4), QPointF(25.6, 0)}) {
        const MxDbObjectId id = addNote();
        CPhonomarkTagUIDlg& window = openWindow(id);
        press(window, at);
        EXPECT_TRUE(note(id).isErased()) << at.x();
        EXPECT_FALSE(window.isVisible());
        EXPECT_FALSE(window.IsRecording());
        removeTagWindow();
    }
}

TEST_F(TagWindowTest, APressBesideTheCornerBoxRecords) {
    for (const QPointF at : {QPointF(35, 4), QPointF(30, 9), QPointF(25, 4), QPointF(34.6, 4)}) {
        const MxDbObjectId id = addNote();
        CPhonomarkTagUIDlg& window = openWindow(id);
        press(window, at);
        EXPECT_TRUE(window.IsRecording()) << at.x();
        EXPECT_FALSE(note(id).isErased());
        letGo(window);
        phonomark::workerCensus().wait();
        removeTagWindow();
    }
}

TEST_F(TagWindowTest, ItShowsWhatAPressWillDo) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    EXPECT_EQ(shown(window), resource("IDB_PNG_TAG_RECD"));
    openWindow(addRecorded(L"0.9\""));
    EXPECT_EQ(shown(window), resource("IDB_PNG_TAG_PLAY"));
    removeTagWindow();
    EXPECT_EQ(shown(openWindow(addRecorded(L"0.9\""))), resource("IDB_PNG_TAG_PLAY"));
}

TEST_F(TagWindowTest, OtherButtonsNeitherRecordNorEndARecording) {
    const MxDbObjectId id = addNote();
    CPhonomarkTagUIDlg& window = openWindow(id);
    for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton}) {
        mouse(window, QEvent::MouseButtonPress, {5, 20}, button, button);
        mouse(window, QEvent::MouseButtonRelease, {5, 20}, button, Qt::NoButton);
        EXPECT_FALSE(window.IsRecording()) << button;
        mouse(window, QEvent::MouseButtonPress, {30, 4}, button, button);
        EXPECT_FALSE(note(id).isErased()) << button;
    }
    hold(window, 2000);
    for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton}) {
        mouse(window, QEvent::MouseButtonPress, {5, 20}, button, Qt::LeftButton | button);
        mouse(window, QEvent::MouseButtonRelease, {5, 20}, button, Qt::LeftButton);
        EXPECT_NE(window.recordTimer(), -1) << button;
    }
    EXPECT_FALSE(note(id).isRecord());
    letGo(window);
    EXPECT_TRUE(note(id).isRecord());
}

TEST_F(TagWindowTest, OtherButtonsAreLeftToTheDrawingButNotWhileARecordingGoesOn) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    const auto accepted = [&](QEvent::Type type, Qt::MouseButtons held) {
        QMouseEvent event(type, QPointF(5, 20), Qt::MiddleButton, held, Qt::NoModifier);
        QCoreApplication::sendEvent(&window, &event);
        return event.isAccepted();
    };
    EXPECT_FALSE(accepted(QEvent::MouseButtonPress, Qt::MiddleButton));
    EXPECT_FALSE(accepted(QEvent::MouseButtonRelease, Qt::NoButton));
    hold(window, 2000);
    EXPECT_TRUE(accepted(QEvent::MouseButtonPress, Qt::LeftButton | Qt::MiddleButton));
    EXPECT_TRUE(accepted(QEvent::MouseButtonRelease, Qt::LeftButton));
    letGo(window);
}

TEST_F(TagWindowTest, WheelAndMovesAreIgnored) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    QWheelEvent wheel({5, 20}, {105, 120}, {}, {0, 120}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    wheel.accept();
    QCoreApplication::sendEvent(&window, &wheel);
    EXPECT_FALSE(wheel.isAccepted());
    QMouseEvent move(QEvent::MouseMove, QPointF(5, 20), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    move.accept();
    QCoreApplication::sendEvent(&window, &move);
    EXPECT_FALSE(move.isAccepted());
}

TEST_F(TagWindowTest, APressIntoTheCornerBoxHidesTheWindowAlsoOverANoteThatStays) {
    const MxDbObjectId id = addNote();
    auto* layer = dynamic_cast<merix::db::LayerRecord*>(merix::db::DatabaseImp::peek(note(id).layerId()));
    ASSERT_TRUE(layer);
    layer->flags |= 4;
    CPhonomarkTagUIDlg& window = openWindow(id);
    press(window, {30, 4});
    EXPECT_FALSE(note(id).isErased());
    EXPECT_FALSE(window.isVisible());
    EXPECT_THAT(printed(), HasSubstr("locked layer"));
}

TEST_F(TagWindowTest, LeavingTheWindowHidesItUnlessItPlays) {
    CPhonomarkTagUIDlg& window = openWindow(addNote());
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&window, &leave);
    EXPECT_FALSE(window.isVisible());
    openWindow(addRecorded(L"0.9\""));
    press(window);
    QCoreApplication::sendEvent(&window, &leave);
    EXPECT_TRUE(window.isVisible());
}

TEST_F(TagWindowTest, TheWindowIsAFramelessSquareOfThirtySixPixels) {
    const CPhonomarkTagUIDlg& window = openWindow(addNote());
    EXPECT_EQ(window.size(), QSize(36, 36));
    EXPECT_TRUE(window.windowFlags() & Qt::FramelessWindowHint);
    EXPECT_TRUE(window.testAttribute(Qt::WA_TranslucentBackground)) << "its corners are round";
    EXPECT_EQ(window.toolTip(), QStringLiteral("Press and hold to record, up to 30 s"));
    EXPECT_EQ(window.cursor().shape(), Qt::ArrowCursor);
}

TEST_F(TagWindowTest, ItsImageHasAPixelForEachOfTheScreens) {
    const double scale = merix::test::scaleOfScreen();
    const int side = qRound(36 * scale);
    QImage shown(side, side, QImage::Format_ARGB32_Premultiplied);
    shown.setDevicePixelRatio(scale);
    shown.fill(Qt::transparent);
    openWindow(addNote()).render(&shown, QPoint(), QRegion(), QWidget::RenderFlags());
    const QImage drawn =
        scale == 1.0
            ? resource("IDB_PNG_TAG_RECD")
            : resource("IDB_PNG_TAG_RECD@2x").scaled(side, side, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    EXPECT_EQ(shown, drawn.convertToFormat(shown.format()));
}

TEST(TagWindowAtScale, ItsImageHasAPixelForEachOfTheScreens) {
    for (const double scale : {1.25, 1.5, 2.0})
        merix::test::expectPassesAtScale("TagWindowTest.ItsImageHasAPixelForEachOfTheScreens", scale);
}
