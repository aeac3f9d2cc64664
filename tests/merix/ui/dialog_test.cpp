// SPDX-License-Identifier: MIT
#include "host/ui/dialog.h"

#include "host/ap/document.h"
#include "host/win/resources.h"
#include "tests/merix/ui/window_test.h"

#include <QLabel>
#include <QPushButton>
#include <QTableWidget>

namespace {

class ProbeDialog final : public CDialog {
public:
    using CDialog::CDialog;
    using CDialog::item;
    bool OnInitDialog() override {
        ++initialised;
        return CDialog::OnInitDialog();
    }
    int initialised = 0;
};

/// The voice-note module's resources are in force.
class DialogTest : public WindowTest {
protected:
    DialogTest()
        : resource(LoadResourceDll(L"MrxPhonomarkRes.dll")) {
        mxDocManagerPtr()->pushResourceHandle(resource);
    }
    ~DialogTest() override {
        mxDocManagerPtr()->popResourceHandle();
        FreeLibrary(resource);
    }
    static void SetUpTestSuite() {
        qputenv("MERIX_RESOURCE_PATH", MERIX_BINARY_DIR "/bin");
        WindowTest::SetUpTestSuite();
    }
    void* resource;
};

TEST_F(DialogTest, ATemplateGivesTheWindowItsSizeAndIsNotShown) {
    ASSERT_NE(resource, nullptr);
    ProbeDialog dialog(&window);
    EXPECT_TRUE(dialog.Create(205));
    EXPECT_EQ(dialog.size(), QSize(36, 36));
    EXPECT_EQ(dialog.initialised, 1);
    EXPECT_FALSE(dialog.isVisible());
    dialog.ShowWindow(1);
    EXPECT_TRUE(dialog.isVisible());
    dialog.ShowWindow(0);
    EXPECT_FALSE(dialog.isVisible());
}

TEST_F(DialogTest, AFramelessOneLiesOverTheMainWindowAndIsReachedByTheMouse) {
    ProbeDialog dialog(&window);
    dialog.Create(205);
    dialog.setWindowFlags(Qt::FramelessWindowHint);
    dialog.ShowWindow(1);
    dialog.move(300, 200);
    EXPECT_EQ(window.childAt(310, 210), &dialog);
    EXPECT_EQ(dialog.mapTo(&window, QPoint(0, 0)), QPoint(300, 200));
}

TEST_F(DialogTest, AnUnknownTemplateLeavesAnEmptyWindow) {
    ProbeDialog dialog(&window);
    EXPECT_FALSE(dialog.Create(9999));
    EXPECT_EQ(dialog.initialised, 1);
    EXPECT_TRUE(dialog.findChildren<QWidget*>().isEmpty());
}

TEST_F(DialogTest, WidgetsAreFoundByTheirNamesAndFillTheDialog) {
    ProbeDialog dialog("IDD_DIALOG_MANAGER", &window);
    QTimer::singleShot(0, &window, [&] {
        auto* table = dialog.item<QTableWidget>("IDC_LIST_PHOBJECT");
        ASSERT_NE(table, nullptr);
        EXPECT_TRUE(table->isVisible());
        EXPECT_NE(dialog.item<QPushButton>("IDCANCEL"), nullptr);
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Voice notes"));
        EXPECT_GT(table->width(), dialog.width() / 2);
        dialog.EndDialog(1);
    });
    EXPECT_EQ(dialog.DoModal(), 1);
    EXPECT_FALSE(dialog.isVisible());
}

TEST_F(DialogTest, EscapeAndTheCloseButtonCancelAndEnterAccepts) {
    for (const auto& [how, result] :
         {std::pair<std::function<void(CDialog&)>, int>{[](CDialog& d) { key(&d, Qt::Key_Escape); }, 2},
          {[](CDialog& d) { d.close(); }, 2},
          {[](CDialog& d) { key(&d, Qt::Key_Return); }, 1}}) {
        ProbeDialog dialog("IDD_DIALOG_MANAGER", &window);
        QTimer::singleShot(0, &window, [&dialog, act = how] { act(dialog); });
        EXPECT_EQ(dialog.DoModal(), result);
    }
}

TEST_F(DialogTest, ADialogDeletedInsideItsOwnLoopEndsIt) {
    auto* dialog = new ProbeDialog("IDD_DIALOG_MANAGER", &window);
    QTimer::singleShot(0, &window, [dialog] { delete dialog; });
    EXPECT_EQ(dialog->DoModal(), 2);
}

} // namespace
