// SPDX-License-Identifier: MIT
// Sessions by hand: several drawings and windows, a program that is killed and comes back, a module that goes and comes
// back. With MERIX_PICTURES=FOLDER the pictures of the user's guide are taken on the way.
#include "tests/e2e/real_windows.h"

#include <csignal>

using namespace merix::test;

namespace {

struct RealSessions : RealScreen {
    void SetUp() override {
        RealScreen::SetUp();
        for (const QString& drawing : {plan, roof})
            ASSERT_TRUE(QFile::copy(MERIX_SOURCE_DIR "/samples/plan.dxf", drawing));
    }
    void click(int x, int y, int button = 1) {
        moveTo(x, y);
        hand({"click", QString::number(button)});
    }
    /// Types a line that the command line answers.
    void type(const QString& line) {
        const QString before = witness.said();
        enter(line);
        EXPECT_TRUE(comesTrue([&] { return witness.said() != before; })) << qPrintable(line);
    }
    void place(const QString& which, const QRect& area) {
        hand({"windowsize", "--sync", which, QString::number(area.width()), QString::number(area.height())});
        hand({"windowmove", which, QString::number(area.x()), QString::number(area.y())});
    }
    /// The hand turns to another window.
    void turnTo(const QString& which) {
        window = which;
        hand({"windowactivate", "--sync", which});
    }
    QString titleOf(const QString& which) { return QString::fromUtf8(hand({"getwindowname", which}).out).trimmed(); }
    /// Saves until the file holds so many notes.
    bool savedNotes(const QString& drawing, std::size_t count) {
        return comesTrue([&] {
            hand({"key", "ctrl+s"});
            return notesIn(drawing).size() == count;
        });
    }
    /// A part of the screen as it is now.
    void picture(const QString& name, const QRect& part) {
        const QString pictures = qEnvironmentVariable("MERIX_PICTURES");
        if (pictures.isEmpty())
            return;
        QThread::msleep(700); // menus and what the window manager draws have come to rest
        EXPECT_TRUE(seen().copy(part).save(pictures + '/' + name + ".png", nullptr, 0)); // 0: as small as it gets
    }
    static std::size_t linesIn(const QString& drawing) {
        std::size_t count = 0;
        for (const Record& record : records(readTags(drawing), "ENTITIES"))
            count += record[0].value == "LINE";
        return count;
    }
    const QString plan = folder.filePath("plan.dxf"), roof = folder.filePath("roof.dxf");
};

// Places in a window of the size that it opens with.
const QPoint kFirstTab{39, 75}, kUndoArrow{131, 40};
constexpr int kRecoveryRow = 78;

TEST_F(RealSessions, DrawingsInTabsAndWindowsAreWorkedOnSavedAndRecoveredAfterAKill) {
    start({plan, roof}, "roof.dxf");
    placeNote(500, 330);
    ASSERT_TRUE(savedNotes(roof, 1));
    const QString first = window;
    click(kFirstTab.x(), kFirstTab.y());
    ASSERT_TRUE(comesTrue([&] { return titleOf(first).startsWith("plan.dxf"); })) << qPrintable(titleOf(first));
    placeNote(560, 585);
    picture("tabs", frame);
    ASSERT_TRUE(savedNotes(plan, 1));
    EXPECT_EQ(notesIn(roof).size(), 1U);

    // The tab is dragged off: the drawing has a window of its own.
    moveTo(kFirstTab.x(), kFirstTab.y());
    hand({"mousedown", "1"});
    moveTo(200, 200);
    moveTo(500, 400);
    hand({"mouseup", "1"});
    ASSERT_TRUE(comesTrue([&] { return titleOf(first).startsWith("roof.dxf") && !windowNamed("plan.dxf").isEmpty(); }));
    const QString own = windowNamed("plan.dxf");
    place(first, {5, 30, 690, 560});
    place(own, {705, 30, 690, 560});
    for (const QString& which : {first, own}) {
        turnTo(which);
        hand({"key", "ctrl+0"}); // the whole drawing
    }
    hand({"key", "F3"}); // notes go where the hand is, not to an end of a line beside it

    // Each window's keyboard and mouse are for its drawing.
    turnTo(first);
    placeNote(350, 330);
    ASSERT_TRUE(savedNotes(roof, 2));
    turnTo(own);
    placeNote(300, 300);
    placeNote(400, 300);
    picture("two-windows", {0, 0, 1400, 600});
    ASSERT_TRUE(savedNotes(plan, 3));
    EXPECT_EQ(notesIn(roof).size(), 2U);
    moveTo(300, 300);
    for (int notch = 0; notch < 3; ++notch)
        hand({"click", "4"});
    placeNote(400, 250);
    ASSERT_TRUE(savedNotes(plan, 4));
    const auto x = [&](std::size_t note) { return number(notesIn(plan)[note], 10); };
    EXPECT_NEAR((x(2) - x(1)) / (x(3) - x(1)), 1.2 * 1.2 * 1.2, 0.05) << "the wheel zooms about the cursor";

    // What was drawn last is in no file but the copy when the program is killed.
    placeNote(250, 250);
    type("AUTOSAVE");
    turnTo(first);
    placeNote(300, 250);
    ASSERT_TRUE(savedNotes(roof, 3)); // the copy is complete: the program does one thing after the other
    ASSERT_EQ(notesIn(plan).size(), 4U);
    ::kill(pid_t(merix->process().processId()), SIGKILL);
    ASSERT_TRUE(merix->process().waitForFinished());

    start({}, "Merix");
    moveTo(640, 400);
    picture("recovery", {frame.topLeft(), QSize(1280, 180)});
    type("OPEN"); // the offer is in nobody's way
    type(roof);
    ASSERT_TRUE(comesTrue([&] { return titleOf(window).startsWith("roof.dxf"); })) << qPrintable(titleOf(window));
    // Recover is the first button from the left.
    for (int at = 700; at < 1270 && !titleOf(window).startsWith("plan.dxf"); at += 25)
        click(at, kRecoveryRow);
    ASSERT_TRUE(titleOf(window).startsWith("plan.dxf")) << qPrintable(titleOf(window));
    EXPECT_TRUE(savedNotes(plan, 5));
    EXPECT_FALSE(QFile::exists(plan + ".ms$"));

    hand({"key", "ctrl+q"});
    ASSERT_TRUE(merix->process().waitForFinished(30'000));
    EXPECT_EQ(merix->process().exitCode(), 0);
}

TEST_F(RealSessions, ADrawingIsPutBackByTheMenuOfItsTab) {
    start({plan, roof}, "roof.dxf");
    const QString first = window;
    hand({"key", "ctrl+shift+n"});
    ASSERT_TRUE(comesTrue([&] { return titleOf(first).startsWith("plan.dxf") && !windowNamed("roof.dxf").isEmpty(); }));
    window = windowNamed("roof.dxf");
    turnTo(window);
    place(window, {60, 90, 1000, 700});
    click(kFirstTab.x(), kFirstTab.y(), 3);
    ASSERT_TRUE(comesTrue([&] { return witness.seesMenu(); }));
    picture("tab-menu", {60, 90, 640, 200});
    hand({"key", "Down", "Return"}); // what cannot be chosen is passed over
    ASSERT_TRUE(comesTrue([&] { return windowNamed("roof.dxf") == first; }));
    EXPECT_TRUE(windowNamed("plan.dxf").isEmpty());
    window = first;
    placeNote(500, 330);
    EXPECT_TRUE(savedNotes(roof, 1));
}

TEST_F(RealSessions, ANoteIsRecordedInAWindowOfItsOwn) {
    start({plan, roof}, "roof.dxf");
    const QString first = window;
    hand({"key", "ctrl+shift+n"});
    ASSERT_TRUE(comesTrue([&] { return titleOf(first).startsWith("plan.dxf") && !windowNamed("roof.dxf").isEmpty(); }));
    turnTo(windowNamed("roof.dxf"));
    placeNote(700, 420);
    ASSERT_TRUE(savedNotes(roof, 1));
    ASSERT_TRUE(hoverNote(700, 420));
    hand({"mousedown", "1"});
    ASSERT_TRUE(comesTrue([&] { return isListening(); })) << "the button was held but nothing was recorded";
    QThread::msleep(kSpokenMs);
    hand({"mouseup", "1"});
    EXPECT_TRUE(comesTrue([&] {
        hand({"key", "ctrl+s"});
        return number(notesIn(roof).front(), 290) == 1;
    }));
    EXPECT_TRUE(notesIn(plan).empty());
}

TEST_F(RealSessions, TheThirdStepOfTheUndoListTakesThreeBack) {
    start({plan}, "plan.dxf");
    place(window, {60, 90, 1280, 800});
    placeNote(400, 585);
    type("LINE");
    type("0,-3000");
    type("4000,-3000");
    hand({"key", "Return"});
    placeNote(470, 585);
    placeNote(540, 585);
    ASSERT_TRUE(savedNotes(plan, 3));
    const std::size_t before = linesIn(plan);
    click(kUndoArrow.x(), kUndoArrow.y());
    ASSERT_TRUE(comesTrue([&] { return witness.seesMenu(); }));
    picture("undo-list", {60, 90, 640, 200});
    hand({"key", "Down", "Down", "Down", "Return"});
    EXPECT_TRUE(savedNotes(plan, 1));
    EXPECT_EQ(linesIn(plan), before - 1);
}

TEST_F(RealSessions, TheModuleGoesAndComesBackWithADrawingOnTheScreen) {
    start({plan}, "plan.dxf");
    placeNote(500, 330);
    ASSERT_TRUE(savedNotes(plan, 1));
    const Record before = notesIn(plan).front();
    type("MODUNLOAD");
    type("MrxPhonomark");
    type("PHONOMARK");
    EXPECT_TRUE(comesTrue([&] { return witness.timesSaid("not loaded") == 1; })) << qPrintable(witness.said());
    picture("module", {frame.bottomLeft() - QPoint(0, 159), QSize(1280, 160)});
    type("LINE");
    type("0,0");
    type("1,1");
    hand({"key", "Return"});
    const std::size_t drawn = linesIn(plan);
    ASSERT_TRUE(comesTrue([&] {
        hand({"key", "ctrl+s"});
        return linesIn(plan) == drawn + 1;
    }));
    ASSERT_EQ(notesIn(plan).size(), 1U);
    EXPECT_EQ(notesIn(plan).front(), before);

    type("MODLOAD");
    type(MERIX_BINARY_DIR "/bin/libMrxPhonomark.mrx");
    placeNote(560, 585);
    ASSERT_TRUE(savedNotes(plan, 2));
    EXPECT_EQ(number(notesIn(plan).front(), 10), number(before, 10));
}

} // namespace
