// SPDX-License-Identifier: MIT
#include "merix/ui/plain_text.h"

#include "host/ui/dialog.h"
#include "merix/ap/autosave.h"
#include "merix/ed/console.h"
#include "tests/merix/ui/window_test.h"

#include <QAbstractItemView>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QStatusBar>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QToolTip>

#include <atomic>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace merix;

namespace {

/// A pipe that notices who opens it to read, and lets him go on.
class Bait {
public:
    explicit Bait(const QString& path)
        : m_path(path.toUtf8()) {
        EXPECT_EQ(mkfifo(m_path.constData(), 0600), 0);
        m_writer = std::thread([this] {
            const int file = open(m_path.constData(), O_WRONLY | O_CLOEXEC); // waits for a reader
            m_taken = true;
            close(file);
        });
    }
    ~Bait() {
        const int file = open(m_path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        m_writer.join();
        close(file);
    }
    bool isTaken() const { return m_taken; }
    QString path() const { return QString::fromUtf8(m_path); }

private:
    QByteArray m_path;
    std::atomic<bool> m_taken = false;
    std::thread m_writer;
};

class PlainTextTest : public WindowTest {
protected:
    ~PlainTextTest() override {
        QToolTip::hideText();
        EXPECT_FALSE(bait.isTaken());
    }
    /// Shown as it is written by what looks so.
    void expectLiteral(const QLabel& label) const {
        EXPECT_EQ(label.textFormat(), Qt::PlainText);
        EXPECT_TRUE(label.text().contains(hostile)) << qPrintable(label.text());
        EXPECT_TRUE(label.sizeHint().isValid()); // it has been measured
    }
    /// The tool tip that `widget` brings up at `at`.
    void expectTip(QWidget& widget, const QPoint& at) const {
        QHelpEvent event(QEvent::ToolTip, at, widget.mapToGlobal(at));
        QApplication::sendEvent(&widget, &event);
        const QLabel* tip = nullptr;
        for (const QWidget* top : QApplication::topLevelWidgets())
            if (top->windowType() == Qt::ToolTip && top->isVisible())
                tip = qobject_cast<const QLabel*>(top);
        ASSERT_NE(tip, nullptr);
        expectLiteral(*tip);
        settle(); // painted
        QToolTip::hideText();
    }

    QTemporaryDir folder;
    Bait bait{folder.filePath(QStringLiteral("pipe"))};
    const QString hostile = QStringLiteral("<img src=\"file://%1\">").arg(bait.path());
};

TEST_F(PlainTextTest, TheToolTipOfAModulesWindowIsTakenForWhatItIs) {
    CWnd tag(&window);
    tag.setGeometry(40, 200, 36, 36);
    tag.setToolTip(hostile + QStringLiteral(" 2026-11-22"));
    tag.show();
    expectTip(tag, {5, 5});
    EXPECT_EQ(tag.toolTip(), hostile + QStringLiteral(" 2026-11-22"));
}

TEST_F(PlainTextTest, TheToolTipsOfTabsItemsAndHeadersAreToo) {
    QTabBar* tabs = window.tabs();
    tabs->setTabToolTip(0, hostile);
    expectTip(*tabs, tabs->tabRect(0).center());
    QTableWidget table(1, 1, &window);
    table.setItem(0, 0, new QTableWidgetItem(hostile));
    table.item(0, 0)->setToolTip(hostile);
    table.setHorizontalHeaderItem(0, new QTableWidgetItem(hostile));
    table.horizontalHeaderItem(0)->setToolTip(hostile);
    table.resize(300, 200);
    table.show();
    settle();
    expectTip(*table.viewport(), table.visualItemRect(table.item(0, 0)).center());
    expectTip(*table.horizontalHeader()->viewport(), {5, 5});
    ui::LayerBox* box = window.findChild<ui::LayerBox*>();
    box->setItemData(0, hostile, Qt::ToolTipRole);
    box->showPopup();
    settle();
    expectTip(*box->view()->viewport(), box->view()->visualRect(box->model()->index(0, 0)).center());
    box->hidePopup();
}

TEST_F(PlainTextTest, MessageBoxesOfAnyMakerAreToo) {
    QMessageBox box(&window);
    box.setText(QStringLiteral("%1: it is no drawing").arg(hostile));
    box.setInformativeText(hostile);
    box.show();
    settle();
    for (const char* name : {"qt_msgbox_label", "qt_msgbox_informativelabel"}) {
        const auto* label = box.findChild<QLabel*>(QString::fromLatin1(name));
        ASSERT_NE(label, nullptr) << name;
        expectLiteral(*label);
    }
}

TEST_F(PlainTextTest, TheStatusBarIsToo) {
    Q_EMIT ap::Autosave::instance().failed(hostile);
    auto* notice = window.findChild<QLabel*>(QStringLiteral("notice"));
    expectLiteral(*notice);
    expectTip(*notice, {1, 1});
    // A file in a folder of this name would be one way; the label takes whatever it is given.
    for (QLabel* label : window.statusBar()->findChildren<QLabel*>())
        if (label->isVisible()) {
            label->setText(hostile);
            expectLiteral(*label);
        }
}

TEST_F(PlainTextTest, TheCommandLineIsToo) {
    ed::Console::instance().print(QLatin1Char('\n') + hostile);
    const auto* history = window.commandLine()->findChild<QPlainTextEdit*>();
    EXPECT_TRUE(history->toPlainText().contains(hostile));
    ed::Console::instance().setPrompt(hostile + QStringLiteral(" or [Yes No]: "), {});
    settle();
    QTextDocument prompt; // the one label of markup
    for (const QLabel* label : window.commandLine()->findChildren<QLabel*>())
        prompt.setHtml(label->text());
    EXPECT_TRUE(prompt.toPlainText().contains(hostile)) << qPrintable(prompt.toPlainText());
    ed::Console::instance().setPrompt({}, {});
}

TEST_F(PlainTextTest, AWidgetThatSaysThatItsTextIsMarkupKeepsIt) {
    QLabel label(QStringLiteral("<b>bold</b>"), &window);
    label.setTextFormat(Qt::RichText);
    label.show();
    EXPECT_EQ(label.textFormat(), Qt::RichText);
}

TEST_F(PlainTextTest, ATextOfAnyLengthMakesNoToolTipThatIsLargerThanAScreen) {
    CWnd tag(&window);
    tag.setToolTip(QString(100000, QLatin1Char('m')) + QString(1000, QLatin1Char('\n')));
    tag.show();
    QHelpEvent event(QEvent::ToolTip, {1, 1}, tag.mapToGlobal({1, 1}));
    QApplication::sendEvent(&tag, &event);
    for (const QWidget* top : QApplication::topLevelWidgets())
        if (top->windowType() == Qt::ToolTip) {
            EXPECT_LE(top->width(), 900);
            EXPECT_LE(top->height(), 600);
        }
}

} // namespace
