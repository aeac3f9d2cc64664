// SPDX-License-Identifier: MIT
#include "phonomark/dialogs/manager_dialog.h"

#include "host/win/resources.h"
#include "phonomark/app/module_resources.h"
#include "phonomark/app/module_state.h"
#include "phonomark/registry/phonomark_manager.h"
#include "tests/phonomark/tagwindow/sound_fixture.h"

#include <QPushButton>
#include <QTableWidget>
#include <QTimer>

namespace {

class ManagerDialogTest : public SoundTest {
protected:
    /// Runs the dialog and does this as soon as it is shown.
    static void inDialog(const std::function<void(CPhonomarkManDlg&)>& action) {
        const ModuleResources resources;
        CPhonomarkManDlg dialog(nullptr);
        QTimer::singleShot(0, &dialog, [&] {
            action(dialog);
            dialog.OnCancel();
        });
        dialog.DoModal();
    }
    static void expectEmpty(CPhonomarkManDlg& dialog) {
        QTimer::singleShot(0, &dialog, [&] {
            EXPECT_TRUE(dialog.findChildren<QWidget*>().isEmpty());
            dialog.UpdateVoiceData();
            dialog.UpdateButtonShow();
            dialog.OnCancel();
        });
        EXPECT_EQ(dialog.DoModal(), 2);
    }
    static QStringList row(const QTableWidget& list, int at) {
        QStringList texts;
        for (int column = 0; column < list.columnCount(); ++column)
            texts << list.item(at, column)->text();
        return texts;
    }
};

} // namespace

TEST_F(ManagerDialogTest, EveryNoteIsARowInTheOrderOfTheList) {
    addRecorded(L"2.4\"");
    addNote();
    inDialog([&](const CPhonomarkManDlg& dialog) {
        const auto* list = dialog.findChild<QTableWidget*>(QStringLiteral("IDC_LIST_PHOBJECT"));
        ASSERT_TRUE(list);
        ASSERT_EQ(list->rowCount(), 2);
        EXPECT_EQ(row(*list, 0), QStringList({QStringLiteral("0"), QStringLiteral("2.4\""), QStringLiteral("Anna"),
                                              QStringLiteral("Point"), QStringLiteral("2026/3/7 9:5:0")}));
        QStringList headers;
        for (int column = 0; column < list->columnCount(); ++column)
            headers << list->horizontalHeaderItem(column)->text();
        EXPECT_EQ(headers, QStringList({QStringLiteral("Code"), QStringLiteral("Length"), QStringLiteral("By"),
                                        QStringLiteral("Type"), QStringLiteral("Date")}));
        EXPECT_EQ(list->columnWidth(0), 45);
    });
}

TEST_F(ManagerDialogTest, ANoteThatCannotBeOpenedLeavesAGapInTheNumbers) {
    addNote();
    MxDbObjectId nothing;
    ASSERT_EQ(database().getMxDbObjectId(nothing, true, MxDbHandle(0xABCDEF), 0), Mx::eOk);
    livePhManager()->AppendPhonomark(nothing, &document());
    addNote();
    inDialog([&](const CPhonomarkManDlg& dialog) {
        const auto* list = dialog.findChild<QTableWidget*>(QStringLiteral("IDC_LIST_PHOBJECT"));
        ASSERT_TRUE(list);
        ASSERT_EQ(list->rowCount(), 2);
        EXPECT_EQ(list->item(1, 0)->text(), QStringLiteral("2"));
    });
}

TEST_F(ManagerDialogTest, PlayNeedsASelectedRowAndPlaysItsNote) {
    addRecorded(L"2.4\"");
    inDialog([&](const CPhonomarkManDlg& dialog) {
        auto* list = dialog.findChild<QTableWidget*>(QStringLiteral("IDC_LIST_PHOBJECT"));
        auto* play = dialog.findChild<QPushButton*>(QStringLiteral("IDC_BUTTON_PLAY"));
        ASSERT_TRUE(list);
        ASSERT_TRUE(play);
        EXPECT_FALSE(play->isEnabled());
        list->selectRow(0);
        EXPECT_TRUE(play->isEnabled());
        play->click();
        list->clearSelection();
        EXPECT_FALSE(play->isEnabled());
    });
    phonomark::workerCensus().wait();
    EXPECT_GT(alsa.count("snd_pcm_writei"), 0);
}

TEST_F(ManagerDialogTest, ANoteWithoutSoundIsNotPlayed) {
    addNote();
    inDialog([&](const CPhonomarkManDlg& dialog) {
        auto* list = dialog.findChild<QTableWidget*>(QStringLiteral("IDC_LIST_PHOBJECT"));
        auto* play = dialog.findChild<QPushButton*>(QStringLiteral("IDC_BUTTON_PLAY"));
        ASSERT_TRUE(list);
        ASSERT_TRUE(play);
        list->selectRow(0);
        play->click();
    });
    EXPECT_EQ(alsa.count("snd_pcm_open"), 0);
}

TEST_F(ManagerDialogTest, WithoutItsTemplateTheDialogIsAnEmptyWindow) {
    addNote();
    CPhonomarkManDlg dialog(nullptr);
    expectEmpty(dialog);
}

TEST_F(ManagerDialogTest, WithoutTheResourceModuleTheDialogIsAnEmptyWindow) {
    addNote();
    FreeLibrary(_hdllInstance);
    _hdllInstance = nullptr;
    const ModuleResources resources;
    CPhonomarkManDlg dialog(nullptr);
    expectEmpty(dialog);
}

TEST_F(ManagerDialogTest, AWidgetThatTheTemplateLacksIsDoneWithout) {
    addRecorded(L"2.4\"");
    for (const bool withList : {true, false}) {
        CPhonomarkManDlg dialog(nullptr);
        QTableWidget list;
        QPushButton play;
        list.setObjectName(QStringLiteral("IDC_LIST_PHOBJECT"));
        play.setObjectName(QStringLiteral("IDC_BUTTON_PLAY"));
        (withList ? static_cast<QWidget&>(list) : play).setParent(&dialog);
        QTimer::singleShot(0, &dialog, [&] {
            if (withList) {
                EXPECT_EQ(list.rowCount(), 1);
                list.selectRow(0);
            } else {
                EXPECT_FALSE(play.isEnabled());
            }
            dialog.OnCancel();
        });
        EXPECT_EQ(dialog.DoModal(), 2);
    }
}
