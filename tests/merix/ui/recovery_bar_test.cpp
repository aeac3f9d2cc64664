// SPDX-License-Identifier: MIT
#include "merix/ui/recovery_bar.h"

#include "merix/ap/autosave.h"
#include "merix/ed/command_stack.h"
#include "tests/merix/ui/window_test.h"

#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>

#include <sys/wait.h>
#include <unistd.h>

using namespace merix;

namespace {

/// A data folder of its own, in which a program that died left the copy of a drawing.
class RecoveryBarTest : public WindowTest {
protected:
    RecoveryBarTest() {
        qputenv("XDG_DATA_HOME", folder.path().toUtf8());
        drawing = folder.filePath(QStringLiteral("plan.dxf"));
        EXPECT_TRUE(ap::DocManager::instance().saveAs(*document, drawing).ok);
        addLine({0, 0, 0}, {5, 5, 0});
        leaveBehind(*document);
        ap::DocManager::instance().close(*document);
        document = nullptr;
        settle();
    }
    ~RecoveryBarTest() override { window.setUnattended(true); }
    /// What a process leaves that writes a copy and is killed.
    void leaveBehind(ap::Document& of) {
        copy = of.path() + QStringLiteral(".ms$");
        EXPECT_TRUE(ap::DocManager::instance().writeCopy(of, copy).ok);
        QFile file(of.path());
        EXPECT_TRUE(file.open(QFile::ReadWrite));
        EXPECT_TRUE(file.setFileTime(QDateTime::currentDateTime().addSecs(-60), QFile::FileModificationTime));
        const pid_t child = fork();
        if (child == 0) {
            ap::SessionList::instance().add(copy, of.path(), of.title());
            _exit(0);
        }
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    ui::RecoveryBar* bar() { return window.recoveryBar(); }
    void look() {
        bar()->look();
        settle();
    }
    QPushButton* button(const QString& text) {
        for (QPushButton* each : bar()->findChildren<QPushButton*>())
            if (each->text() == text)
                return each;
        ADD_FAILURE() << "no button " << qPrintable(text);
        return nullptr;
    }
    QString text() {
        const auto* label = bar()->findChild<QLabel*>();
        return label ? label->text() : QString();
    }
    QTemporaryDir folder;
    QString drawing, copy;
};

TEST_F(RecoveryBarTest, TheRowSaysWhatIsNewerAndWhatChanged) {
    EXPECT_TRUE(bar()->isHidden());
    look();
    EXPECT_FALSE(bar()->isHidden());
    EXPECT_TRUE(text().contains(QStringLiteral("plan.dxf, 20"))) << qPrintable(text());
    EXPECT_TRUE(text().contains(QStringLiteral("1 LINE added"))) << qPrintable(text());
    EXPECT_FALSE(text().contains(folder.path())) << qPrintable(text());
    EXPECT_EQ(bar()->findChild<QLabel*>()->toolTip(), drawing);
}

TEST_F(RecoveryBarTest, WorkGoesOnWithoutAnAnswer) {
    look();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_TRUE(window.commandLine()->entry()->hasFocus());
    EXPECT_TRUE(window.openFile(drawing));
    EXPECT_EQ(window.view()->document(), ap::DocManager::instance().current());
    EXPECT_FALSE(bar()->isHidden());
    // No button takes the keyboard when it is clicked.
    for (const QPushButton* each : bar()->findChildren<QPushButton*>()) {
        EXPECT_FALSE(each->focusPolicy() & Qt::ClickFocus);
        EXPECT_FALSE(each->isDefault());
    }
}

TEST_F(RecoveryBarTest, RecoverOpensTheCopyAsTheDrawingWithChangesToSave) {
    look();
    button(QStringLiteral("Recover"))->click();
    settle();
    const ap::Document* current = ap::DocManager::instance().current();
    ASSERT_TRUE(current);
    EXPECT_EQ(current->path(), drawing);
    EXPECT_TRUE(current->isChanged());
    EXPECT_EQ(view().document(), current);
    EXPECT_EQ(gi::Scene(*current->database()).extents(current->database()->currentSpaceId()).maxPoint().x, 5.0);
    EXPECT_TRUE(bar()->isHidden());
    look();
    EXPECT_TRUE(bar()->isHidden()) << "a copy that is open is offered again";
}

TEST_F(RecoveryBarTest, TheDrawingItselfMayBeOpenAlready) {
    ASSERT_TRUE(window.openFile(drawing));
    look();
    button(QStringLiteral("Recover"))->click();
    settle();
    ASSERT_EQ(ap::DocManager::instance().all().size(), 1u);
    EXPECT_TRUE(ap::DocManager::instance().current()->isChanged());
    EXPECT_TRUE(bar()->isHidden());
}

TEST_F(RecoveryBarTest, ADrawingThatWasChangedMeanwhileIsGivenUpOnlyAfterAQuestion) {
    ASSERT_TRUE(window.openFile(drawing));
    document = ap::DocManager::instance().current();
    addLine({1, 0, 0}, {2, 0, 0});
    look();
    window.setUnattended(false);
    bool asked = false;
    QTimer::singleShot(0, &window, [&] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            asked = true;
            box->button(QMessageBox::Cancel)->click();
        }
    });
    button(QStringLiteral("Recover"))->click();
    settle();
    EXPECT_TRUE(asked);
    EXPECT_EQ(ap::DocManager::instance().current(), document);
    EXPECT_FALSE(bar()->isHidden());
    EXPECT_TRUE(QFile::exists(copy));
}

TEST_F(RecoveryBarTest, ADrawingThatIsOpenIsNotClosedForACopyThatCannotBeRead) {
    ASSERT_TRUE(window.openFile(drawing));
    const std::vector<ap::Document*> open = ap::DocManager::instance().all();
    QFile broken(copy);
    ASSERT_TRUE(broken.open(QFile::WriteOnly | QFile::Truncate));
    broken.write("no drawing");
    broken.close();
    look();
    button(QStringLiteral("Recover"))->click();
    settle();
    EXPECT_EQ(ap::DocManager::instance().all(), open);
    EXPECT_TRUE(text().contains(QStringLiteral("the copy cannot be read"))) << qPrintable(text());
}

TEST_F(RecoveryBarTest, TheSavedDrawingIsNotOverwrittenByTheOlderCopy) {
    ASSERT_TRUE(window.openFile(drawing));
    document = ap::DocManager::instance().current();
    addLine({1, 0, 0}, {2, 0, 0});
    look();
    window.setUnattended(false);
    QTimer::singleShot(0, &window, [&] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            box->button(QMessageBox::Save)->click();
    });
    button(QStringLiteral("Recover"))->click();
    settle();
    ASSERT_EQ(ap::DocManager::instance().all().size(), 1u);
    EXPECT_EQ(ap::DocManager::instance().current()->path(), QString());
    EXPECT_TRUE(bar()->isHidden());
}

TEST_F(RecoveryBarTest, EveryBarDropsWhatOneHasSettled) {
    ui::RecoveryBar second;
    look();
    second.look();
    EXPECT_EQ(second.findChildren<QLabel*>().size(), 1);
    button(QStringLiteral("Discard"))->click();
    EXPECT_TRUE(second.findChildren<QLabel*>().isEmpty());
    EXPECT_TRUE(bar()->isHidden());
}

TEST_F(RecoveryBarTest, AWindowWhoseOffersNobodyAnsweredStaysWithoutADrawing) {
    look();
    ap::Document& here = *ap::DocManager::instance().create();
    ap::Document& there = *ap::DocManager::instance().create();
    settle();
    ASSERT_NE(ui::MainWindow::takeOut(there), nullptr);
    settle();
    ap::DocManager::instance().close(here);
    settle();
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(button(QStringLiteral("Recover"))->isVisible());
    ap::DocManager::instance().close(there);
    settle();
    EXPECT_EQ(ui::MainWindow::all().size(), 1u);
}

TEST_F(RecoveryBarTest, RecoverWaitsForTheCommandUnderWay) {
    look();
    document = ap::DocManager::instance().create();
    QTimer::singleShot(0, &window, [&] { button(QStringLiteral("Recover"))->click(); });
    ed::CommandStack::instance().runLine(QStringLiteral("LINE 0,0"));
    settle();
    EXPECT_EQ(ap::DocManager::instance().current()->path(), drawing);
}

TEST_F(RecoveryBarTest, DiscardDeletesTheCopyAndNothingElse) {
    look();
    button(QStringLiteral("Discard"))->click();
    EXPECT_FALSE(QFile::exists(copy));
    EXPECT_TRUE(QFile::exists(drawing));
    EXPECT_TRUE(bar()->isHidden());
    EXPECT_EQ(ap::DocManager::instance().current(), nullptr);
}

TEST_F(RecoveryBarTest, LaterOffersItAgainNextTime) {
    look();
    button(QStringLiteral("Later"))->click();
    EXPECT_TRUE(bar()->isHidden());
    EXPECT_TRUE(QFile::exists(copy));
    look();
    EXPECT_FALSE(bar()->isHidden());
}

TEST_F(RecoveryBarTest, ACopyThatCannotBeReadIsSaidAndStays) {
    QFile broken(copy);
    ASSERT_TRUE(broken.open(QFile::WriteOnly | QFile::Truncate));
    broken.write("no drawing");
    broken.close();
    look();
    EXPECT_TRUE(text().contains(QStringLiteral("cannot be read"))) << qPrintable(text());
    button(QStringLiteral("Recover"))->click();
    settle();
    EXPECT_TRUE(text().contains(QStringLiteral(".ms$"))) << qPrintable(text());
    EXPECT_FALSE(bar()->isHidden());
    EXPECT_EQ(ap::DocManager::instance().current(), nullptr);
}

TEST_F(RecoveryBarTest, TwoDrawingsHaveTwoRows) {
    document = ap::DocManager::instance().create();
    ASSERT_TRUE(ap::DocManager::instance().saveAs(*document, folder.filePath(QStringLiteral("roof.dxf"))).ok);
    leaveBehind(*document);
    look();
    EXPECT_EQ(bar()->findChildren<QLabel*>().size(), 2);
    button(QStringLiteral("Later"))->click();
    EXPECT_EQ(bar()->findChildren<QLabel*>().size(), 1);
    EXPECT_FALSE(bar()->isHidden());
}

} // namespace
