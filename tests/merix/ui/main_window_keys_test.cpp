// SPDX-License-Identifier: MIT
// Every key with every modifier, wherever the keyboard is, and every shortcut of the menus.
#include "tests/merix/ui/window_test.h"

#include "merix/ed/command_stack.h"
#include "merix/ed/console.h"

#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QDeadlineTimer>
#include <QLabel>
#include <QLineEdit>
#include <QMetaEnum>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QWindow>

#include <map>

// The door that Qt's own test library feeds keys through.
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow* window, QEvent::Type type, int key, Qt::KeyboardModifiers modifiers,
                                    const QString& text, bool autoRepeat, ushort count);

using namespace merix;

namespace {

/// The text of a key with Ctrl by the X keyboard extension: letters and signs are control characters, some digits too.
QString controlText(char character) {
    if ((character >= '@' && character < '\x7f') || character == ' ')
        return QString(QChar(character & 0x1F));
    if (character >= '3' && character <= '7')
        return QString(QChar(character - '3' + 0x1B));
    const std::map<char, char> others{{'2', '\0'}, {'8', '\x7f'}, {'/', '\x1f'}};
    const auto other = others.find(character);
    return QString(QChar::fromLatin1(other == others.end() ? character : other->second));
}

/// The text that a key brings from an X server.
QString textOf(int key, Qt::KeyboardModifiers modifiers) {
    static const std::map<int, char> named{{Qt::Key_Return, '\r'}, {Qt::Key_Enter, '\r'},     {Qt::Key_Escape, '\x1b'},
                                           {Qt::Key_Tab, '\t'},    {Qt::Key_Backspace, '\b'}, {Qt::Key_Delete, '\x7f'}};
    if (const auto known = named.find(key); known != named.end())
        return QString(QChar::fromLatin1(known->second));
    if (key < Qt::Key_Space || key > 0xFFFF)
        return {};
    const QChar character(static_cast<ushort>(key));
    if ((modifiers & Qt::ControlModifier) && key < 0x7F)
        return controlText(character.toLatin1());
    return modifiers & Qt::ShiftModifier ? QString(character) : QString(character.toLower());
}

std::vector<int> everyKey() {
    const auto keys = QMetaEnum::fromType<Qt::Key>();
    std::vector<int> all;
    for (int i = 0; i < keys.keyCount(); ++i)
        all.push_back(keys.value(i));
    for (const int other : {0x20AC, 0x0416, 0x05D0, 0x200F}) // of other keyboards: €, Ж, א, a mark of direction
        all.push_back(other);
    return all;
}

/// All of the keyboard's, and what marks a key of its number block or its third level.
std::vector<Qt::KeyboardModifiers> everyModifier() {
    std::vector<Qt::KeyboardModifiers> all{Qt::KeypadModifier, Qt::KeypadModifier | Qt::ControlModifier,
                                           Qt::GroupSwitchModifier};
    for (int bits = 0; bits < 16; ++bits) {
        Qt::KeyboardModifiers modifiers;
        int n = 0;
        for (const auto one : {Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier, Qt::MetaModifier})
            modifiers.setFlag(one, bits >> n++ & 1);
        all.push_back(modifiers);
    }
    return all;
}

class KeysTest : public WindowTest {
protected:
    KeysTest() {
        for (QAction* action : window.findChildren<QAction*>())
            action->blockSignals(true); // keys that one has do nothing here
    }
    QLineEdit* entry() { return window.commandLine()->entry(); }
    void press(QWidget* focus, int key, Qt::KeyboardModifiers modifiers) {
        focus->setFocus();
        QApplication::clipboard()->setText(QStringLiteral("x")); // instead of all that was said
        const QString text = textOf(key, modifiers);
        QKeyEvent down(QEvent::KeyPress, key, modifiers, text), up(QEvent::KeyRelease, key, modifiers, text);
        QApplication::sendEvent(focus, &down);
        QApplication::sendEvent(focus, &up);
        while (QWidget* popup = QApplication::activePopupWidget())
            popup->close(); // the list of layers
    }
    void pressEveryKey(QWidget* focus) {
        for (const int key : everyKey())
            for (const Qt::KeyboardModifiers modifiers : everyModifier()) {
                press(focus, key, modifiers);
                EXPECT_LE(entry()->text().size(), 1) << key << " with " << modifiers << " was typed several times";
                entry()->clear();
            }
        settle();
    }
};

TEST_F(KeysTest, EveryKeyIsTakenOnceOrNotAtAllWhereverTheKeyboardIs) {
    auto* prompt = window.commandLine()->findChild<QLabel*>();
    for (QWidget* focus : {static_cast<QWidget*>(entry()), static_cast<QWidget*>(&view()),
                           static_cast<QWidget*>(window.findChild<QComboBox*>()), static_cast<QWidget*>(window.tabs()),
                           static_cast<QWidget*>(window.commandLine()->findChild<QPlainTextEdit*>()),
                           static_cast<QWidget*>(prompt), static_cast<QWidget*>(&window)})
        pressEveryKey(focus);
    type(entry(), QStringLiteral("ok"));
    EXPECT_EQ(entry()->text(), QStringLiteral("ok"));
}

TEST_F(KeysTest, EveryKeyIsTakenWithoutADrawing) {
    ap::DocManager::instance().close(*document);
    for (QWidget* focus : {static_cast<QWidget*>(entry()), static_cast<QWidget*>(&view())})
        pressEveryKey(focus);
    EXPECT_EQ(ap::DocManager::instance().current(), nullptr);
}

TEST_F(KeysTest, EveryKeyIsTakenInAPrompt) {
    auto& prompter = ed::Prompter::instance();
    std::vector<std::pair<int, Qt::KeyboardModifiers>> keys;
    for (const int key : everyKey())
        for (const Qt::KeyboardModifiers modifiers : everyModifier())
            keys.emplace_back(key, modifiers);
    std::size_t next = 0, prompts = 0;
    while (next < keys.size()) {
        QTimer::singleShot(0, &window, [&] {
            while (next < keys.size() && prompter.isWaiting()) {
                const auto [key, modifiers] = keys[next++];
                press(next % 2 ? static_cast<QWidget*>(entry()) : &view(), key, modifiers);
                entry()->clear();
                if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape || key == Qt::Key_Space)
                    break; // it answers, and the prompt is left
            }
            prompter.cancel();
        });
        MxGePoint3d point;
        prompter.init(0, QStringLiteral("Undo Close"));
        prompter.getPoint(nullptr, QStringLiteral("Point [Undo/Close]: "), point);
        ++prompts;
    }
    EXPECT_GE(prompts, 4 * everyModifier().size()) << "each of the keys that answer ended one";
}

TEST_F(KeysTest, AControlKeyThatNoActionHasIsNotTyped) {
    for (const int key : {Qt::Key_F, Qt::Key_T, Qt::Key_1, Qt::Key_Plus, Qt::Key_Minus}) {
        press(&view(), key, Qt::ControlModifier);
        press(entry(), key, Qt::ControlModifier | Qt::ShiftModifier);
        EXPECT_TRUE(entry()->text().isEmpty()) << key;
    }
    press(&view(), Qt::Key_F, Qt::NoModifier);
    EXPECT_EQ(entry()->text(), QStringLiteral("f"));
}

// ---------------------------------------------------------------- shortcuts

/// A saved drawing that was changed, with a step to take back and one to do again, and the keyboard on the command
/// line.
class ShortcutTest : public WindowTest {
protected:
    ShortcutTest() {
        window.setUnattended(false);
        EXPECT_TRUE(manager.saveAs(*document, m_folder.filePath(QStringLiteral("plan.dxf"))).ok);
        for (const double x : {1.0, 2.0}) {
            manager.lockDocument(document, MxApLockMode::kWrite, L"LINE", L"Line");
            addLine({0, 0, 0}, {x, 0, 0});
            manager.unlockDocument(document);
        }
        manager.undo(*document);
        QObject::connect(&m_watch, &QTimer::timeout, [this] {
            if (QWidget* dialog = QApplication::activeModalWidget()) {
                m_asked << dialog->windowTitle();
                dialog->close();
            }
            ed::Prompter::instance().cancel(); // a command that was called asks for objects
        });
        m_watch.start(1);
        window.activateWindow();
        settle();
        entry()->setFocus();
        ed::Console::instance().markRead();
    }
    ~ShortcutTest() override {
        EXPECT_TRUE(comesTrue([] { return !ed::CommandStack::instance().isRunning(); }));
        window.setUnattended(true);
        while (ui::MainWindow::all().size() > 1)
            delete ui::MainWindow::all().back();
    }
    QLineEdit* entry() { return window.commandLine()->entry(); }
    void press(const QString& keys) {
        const int code = QKeySequence(keys)[0], key = code & ~int(Qt::KeyboardModifierMask);
        const Qt::KeyboardModifiers modifiers(code & int(Qt::KeyboardModifierMask));
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease})
            qt_handleKeyEvent(window.windowHandle(), type, key, modifiers, textOf(key, modifiers), false, 1);
    }
    static bool comesTrue(const std::function<bool()>& condition) {
        for (const QDeadlineTimer bound(20'000); !condition() && !bound.hasExpired();)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return condition();
    }
    bool isAsked(const QString& title) { return m_asked.contains(title); }
    static bool isRun(const QString& command) {
        return ed::Console::instance().unread().contains(QStringLiteral("Command: ") + command);
    }

    ap::DocManager& manager = ap::DocManager::instance();
    /// Whether the work of each shortcut was done.
    std::map<QString, std::function<bool()>> works{
        {QStringLiteral("Ctrl+N"), [this] { return manager.all().size() == 2; }},
        {QStringLiteral("Ctrl+O"), [this] { return isAsked(QStringLiteral("Open")); }},
        {QStringLiteral("Ctrl+S"), [this] { return !document->isChanged(); }},
        {QStringLiteral("Ctrl+Shift+S"), [this] { return isAsked(QStringLiteral("Save As")); }},
        {QStringLiteral("Ctrl+E"), [this] { return isAsked(QStringLiteral("Export")); }},
        {QStringLiteral("Ctrl+P"), [this] { return isAsked(QStringLiteral("Print")); }},
        {QStringLiteral("Ctrl+W"), [this] { return isAsked(QStringLiteral("Merix")); }},
        {QStringLiteral("Ctrl+Q"), [this] { return isAsked(QStringLiteral("Merix")); }},
        {QStringLiteral("Ctrl+Z"), [this] { return document->undoNames().isEmpty(); }},
        {QStringLiteral("Ctrl+Y"), [this] { return document->redoNames().isEmpty(); }},
        {QStringLiteral("Ctrl+X"), [] { return isRun(QStringLiteral("_CUTCLIP")); }},
        {QStringLiteral("Ctrl+C"), [] { return isRun(QStringLiteral("_COPYCLIP")); }},
        {QStringLiteral("Ctrl+V"), [] { return isRun(QStringLiteral("_PASTECLIP")); }},
        {QStringLiteral("Del"), [] { return isRun(QStringLiteral("_ERASE")); }},
        {QStringLiteral("Ctrl+A"), [] { return !ed::Selection::instance().ids().empty(); }},
        {QStringLiteral("Ctrl+0"), [] { return isRun(QStringLiteral("_ZOOM _Extents")); }},
        {QStringLiteral("Ctrl+Shift+N"), [] { return ui::MainWindow::all().size() == 2; }},
        {QStringLiteral("Ctrl+Tab"), [this] { return manager.current() != document; }},
        {QStringLiteral("Ctrl+PgDown"), [this] { return manager.current() != document; }},
        {QStringLiteral("Ctrl+Shift+Tab"), [this] { return manager.current() != document; }},
        {QStringLiteral("Ctrl+PgUp"), [this] { return manager.current() != document; }},
        {QStringLiteral("F3"), [this] { return !isOn(QStringLiteral("F3")); }},
        {QStringLiteral("F8"), [this] { return isOn(QStringLiteral("F8")); }},
    };
    bool isOn(const QString& keys) { return actionOf(keys)->isChecked(); }
    QAction* actionOf(const QString& keys) {
        for (QAction* action : window.findChildren<QAction*>())
            if (action->shortcut() == QKeySequence(keys))
                return action;
        return nullptr;
    }
    /// A move to a window needs a drawing that stays.
    void secondDrawing() {
        manager.create();
        manager.activate(document);
        settle();
        entry()->setFocus();
    }

private:
    QTemporaryDir m_folder;
    QTimer m_watch;
    QStringList m_asked; ///< the titles of dialogs that came
};

class EveryShortcutTest : public ShortcutTest, public testing::WithParamInterface<const char*> {};

constexpr const char* kShortcuts[] = {"Ctrl+N",       "Ctrl+O",   "Ctrl+S",      "Ctrl+Shift+S",   "Ctrl+E",   "Ctrl+P",
                                      "Ctrl+W",       "Ctrl+Q",   "Ctrl+Z",      "Ctrl+Y",         "Ctrl+X",   "Ctrl+C",
                                      "Ctrl+V",       "Del",      "Ctrl+A",      "Ctrl+0",         "F3",       "F8",
                                      "Ctrl+Shift+N", "Ctrl+Tab", "Ctrl+PgDown", "Ctrl+Shift+Tab", "Ctrl+PgUp"};
/// Those that need a second drawing.
const QStringList kOfTwo{QStringLiteral("Ctrl+Shift+N"), QStringLiteral("Ctrl+Tab"), QStringLiteral("Ctrl+PgDown"),
                         QStringLiteral("Ctrl+Shift+Tab"), QStringLiteral("Ctrl+PgUp")};
/// Those that edit what is typed.
const QStringList kEditing{QStringLiteral("Ctrl+Z"), QStringLiteral("Ctrl+Y"), QStringLiteral("Ctrl+X"),
                           QStringLiteral("Ctrl+C"), QStringLiteral("Ctrl+V"), QStringLiteral("Del"),
                           QStringLiteral("Ctrl+A")};

TEST_P(EveryShortcutTest, WorksFromTheEmptyCommandLine) {
    const QString keys = QString::fromLatin1(GetParam());
    if (kOfTwo.contains(keys))
        secondDrawing();
    ASSERT_FALSE(works.at(keys)());
    press(keys);
    EXPECT_TRUE(comesTrue(works.at(keys)));
    EXPECT_TRUE(entry()->text().isEmpty());
}

TEST_P(EveryShortcutTest, WorksBesideWhatIsTypedUnlessItEditsThat) {
    const QString keys = QString::fromLatin1(GetParam());
    if (kOfTwo.contains(keys))
        secondDrawing();
    type(entry(), QStringLiteral("zoo"));
    press(keys);
    if (!kEditing.contains(keys)) {
        EXPECT_TRUE(comesTrue(works.at(keys)));
        return;
    }
    settle();
    EXPECT_FALSE(works.at(keys)());
    EXPECT_EQ(entry()->text().isEmpty(), keys == QStringLiteral("Ctrl+Z"));
    EXPECT_EQ(entry()->hasSelectedText(), keys == QStringLiteral("Ctrl+A"));
}

TEST_P(EveryShortcutTest, WorksFromTheHistory) {
    const QString keys = QString::fromLatin1(GetParam());
    if (kOfTwo.contains(keys))
        secondDrawing();
    window.commandLine()->findChild<QPlainTextEdit*>()->setFocus();
    press(keys);
    EXPECT_TRUE(comesTrue(works.at(keys)));
}

INSTANTIATE_TEST_SUITE_P(Menus, EveryShortcutTest, testing::ValuesIn(kShortcuts));

TEST_F(ShortcutTest, ComesBeforeWhatTheEntryWouldDoWithTheKey) {
    QAction action(&window);
    action.setShortcut(QKeySequence(QStringLiteral("Ctrl+Left"))); // else the word before
    window.QWidget::addAction(&action);
    bool isDone = false;
    QObject::connect(&action, &QAction::triggered, [&] { isDone = true; });
    type(entry(), QStringLiteral("zoo"));
    press(QStringLiteral("Ctrl+Left"));
    EXPECT_TRUE(isDone);
    EXPECT_EQ(entry()->cursorPosition(), 3);
    press(QStringLiteral("Home"));
    EXPECT_EQ(entry()->cursorPosition(), 0) << "no menu has that key";
}

TEST_F(ShortcutTest, TabsAreGoneThroughEitherWayAndFromTheLastOnToTheFirst) {
    ap::Document* const second = manager.create();
    ap::Document* const third = manager.create();
    const auto goesTo = [&](const char* keys, const ap::Document* to) {
        press(QString::fromLatin1(keys));
        return comesTrue([&] { return manager.current() == to; });
    };
    settle();
    EXPECT_TRUE(goesTo("Ctrl+Tab", document));
    EXPECT_TRUE(goesTo("Ctrl+PgDown", second));
    EXPECT_TRUE(goesTo("Ctrl+Shift+Tab", document));
    EXPECT_TRUE(goesTo("Ctrl+PgUp", third));
}

TEST_F(ShortcutTest, WhatIsMarkedInTheHistoryIsCopied) {
    ed::Console::instance().print(QStringLiteral("\nsaid"));
    auto* history = window.commandLine()->findChild<QPlainTextEdit*>();
    history->setFocus();
    history->moveCursor(QTextCursor::End);
    history->moveCursor(QTextCursor::StartOfLine, QTextCursor::KeepAnchor);
    ASSERT_TRUE(history->textCursor().hasSelection());
    press(QStringLiteral("Ctrl+C"));
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("said"));
    settle();
    EXPECT_FALSE(works.at(QStringLiteral("Ctrl+C"))());
}

TEST_F(ShortcutTest, EveryOneOfTheWindowIsTested) {
    QStringList found, tested;
    for (const QAction* action : window.findChildren<QAction*>())
        for (const QKeySequence& keys : action->shortcuts())
            if (!keys.isEmpty() && !found.contains(keys.toString()))
                found << keys.toString();
    for (const char* keys : kShortcuts)
        tested << QString::fromLatin1(keys);
    found.sort();
    tested.sort();
    EXPECT_EQ(found, tested) << found.join(QLatin1Char(' ')).toStdString();
}

} // namespace
