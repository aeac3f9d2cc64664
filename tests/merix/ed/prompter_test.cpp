// SPDX-License-Identifier: MIT
#include "merix/ed/prompter.h"

#include "answers.h"

#include <QCoreApplication>
#include <QTimer>

#include <gtest/gtest.h>

using namespace merix::ed;
using merix::test::Answers;

namespace {

constexpr int kNotEmpty = 1;

QString shown() {
    const QString text = Console::instance().unread();
    Console::instance().markRead();
    return text;
}

class PrompterTest : public testing::Test {
protected:
    PrompterTest() { Console::instance().markRead(); }
    MxGePoint3d point;
    wchar_t text[16] = L"untouched";
};

} // namespace

TEST_F(PrompterTest, ATypedPointIsANormalAnswer) {
    Answers answers({QStringLiteral("3,4")});
    EXPECT_EQ(mxedGetPoint(nullptr, L"\nPoint: ", point), 5100);
    EXPECT_EQ(point, MxGePoint3d(3, 4, 0));
    EXPECT_EQ(shown(), QStringLiteral("\nPoint: 3,4"));
}

TEST_F(PrompterTest, RelativePointsCountFromTheBaseElseFromTheLastPoint) {
    Answers answers({QStringLiteral("3,4"), QStringLiteral("@1,1"), QStringLiteral("@1,1")});
    const MxGePoint3d base(100, 100, 0);
    mxedGetPoint(nullptr, L"", point);
    EXPECT_EQ(mxedGetPoint(&base, L"", point), 5100);
    EXPECT_EQ(point, MxGePoint3d(101, 101, 0));
    EXPECT_EQ(mxedGetPoint(nullptr, L"", point), 5100);
    EXPECT_EQ(point, MxGePoint3d(102, 102, 0));
}

TEST_F(PrompterTest, APickedPointAnswers) {
    Answers answers({});
    answers.before = [] { Prompter::instance().submitPoint({7, 8, 0}); };
    EXPECT_EQ(mxedGetPoint(nullptr, L"\nPoint: ", point), 5100);
    EXPECT_EQ(point, MxGePoint3d(7, 8, 0));
}

TEST_F(PrompterTest, ACornerIsAskedForWithARubberRectangle) {
    Answers answers({QStringLiteral("@2,3")});
    bool rectangle = false;
    std::optional<MxGePoint3d> base;
    answers.before = [&] {
        rectangle = Prompter::instance().isCornerWanted();
        base = Prompter::instance().base();
    };
    EXPECT_EQ(mxedGetCorner({10, 20, 0}, L"\nCorner: ", point), 5100);
    EXPECT_EQ(point, MxGePoint3d(12, 23, 0));
    EXPECT_TRUE(rectangle);
    EXPECT_EQ(base, MxGePoint3d(10, 20, 0));
    EXPECT_FALSE(Prompter::instance().isCornerWanted());
    EXPECT_EQ(mxedGetCorner({10, 20, 0}, L"", point), -5002);
    EXPECT_EQ(mxedGetPoint(nullptr, L"", point), -5002);
    EXPECT_FALSE(rectangle) << "a point has none";
}

TEST_F(PrompterTest, AnEntityIsPickedByAPointOrAnsweredWithAKeyword) {
    Answers answers({QStringLiteral("3,4"), QStringLiteral("set")});
    MxDbObjectId entity;
    EXPECT_EQ(mxedEntSel(L"\nSelect: ", entity, point), -5001) << "there is no view to pick in";
    EXPECT_TRUE(entity.isNull());
    EXPECT_EQ(point, MxGePoint3d(3, 4, 0));
    mxedInitGet(kNotEmpty, L"Settings");
    EXPECT_EQ(mxedEntSel(L"\nSelect: ", entity, point), -5005);
    EXPECT_EQ(mxedEntSel(L"\nSelect: ", entity, point), -5002);
    answers.before = [] {
        EXPECT_EQ(Prompter::instance().wants(), Prompter::Wants::kPick);
        Prompter::instance().submitPoint({7, 8, 0});
    };
    EXPECT_EQ(mxedEntSel(L"\nSelect: ", entity, point), -5001);
    EXPECT_EQ(point, MxGePoint3d(7, 8, 0));
}

TEST_F(PrompterTest, APickedPointAnswersNoQuestionForAKeyword) {
    Answers answers({QStringLiteral("No")});
    answers.before = [] { Prompter::instance().submitPoint({7, 8, 0}); };
    mxedInitGet(0, L"Yes No");
    EXPECT_EQ(mxedGetKword(L"", text, 16), 5100);
    EXPECT_STREQ(text, L"No");
}

TEST_F(PrompterTest, AKeywordAtAPointPromptIsToldByItsGlobalForm) {
    Answers answers({QStringLiteral("einst")});
    mxedInitGet(kNotEmpty, L"Einstellungen _ Settings");
    EXPECT_EQ(mxedGetPoint(nullptr, L"", point), -5005);
    EXPECT_EQ(mxedGetInput(text, 16), 5100);
    EXPECT_STREQ(text, L"Settings");
}

TEST_F(PrompterTest, AKeywordIsCutToTheBuffer) {
    Answers answers({QStringLiteral("Settings")});
    mxedInitGet(0, L"Settings");
    EXPECT_EQ(mxedGetKword(L"", text, 4), 5100);
    EXPECT_STREQ(text, L"Set");
    EXPECT_STREQ(text + 4, L"uched");
}

TEST_F(PrompterTest, EnterIsNoneWhereAnEmptyAnswerIsAllowed) {
    Answers answers({QString(), QString(), QStringLiteral("  ")});
    mxedInitGet(0, L"Yes No");
    EXPECT_EQ(mxedGetKword(L"", text, 16), 5000);
    EXPECT_EQ(mxedGetPoint(nullptr, L"", point), 5000);
    EXPECT_EQ(mxedGetString(false, L"", text, 16), 5000);
    EXPECT_STREQ(text, L"");
}

TEST_F(PrompterTest, EnterIsAskedAgainWhereAnEmptyAnswerIsNotAllowed) {
    Answers answers({QString(), QStringLiteral("1,1")});
    mxedInitGet(kNotEmpty, nullptr);
    EXPECT_EQ(mxedGetPoint(nullptr, L"", point), 5100);
    EXPECT_EQ(answers.used(), 2U);
    EXPECT_TRUE(shown().contains(QStringLiteral("An answer is needed.")));
}

TEST_F(PrompterTest, ControlAndKeywordsHoldForOnePromptOnly) {
    Answers answers({QStringLiteral("1,1"), QString(), QStringLiteral("Yes"), QStringLiteral("2,2")});
    mxedInitGet(kNotEmpty, L"Yes");
    EXPECT_EQ(mxedGetPoint(nullptr, L"", point), 5100);
    EXPECT_EQ(mxedGetPoint(nullptr, L"", point), 5000);
    EXPECT_EQ(mxedGetPoint(nullptr, L"", point), 5100);
    EXPECT_EQ(point, MxGePoint3d(2, 2, 0)) << "Yes was no answer any more";
}

TEST_F(PrompterTest, BadInputIsToldInALineAndAskedAgain) {
    Answers answers({QStringLiteral("here"), QStringLiteral("re"), QStringLiteral("reg")});
    mxedInitGet(0, L"Region Reply");
    EXPECT_EQ(mxedGetPoint(nullptr, L"\nP: ", point), -5005);
    EXPECT_EQ(shown(), QStringLiteral("\nP: here\nA point or one of the options is needed."
                                      "\nP: re\nThat can mean Region or Reply.\nP: reg"));
}

TEST_F(PrompterTest, EscCancels) {
    Answers answers({});
    EXPECT_EQ(mxedGetPoint(nullptr, L"\nP: ", point), -5002);
    EXPECT_EQ(mxedGetString(true, L"", text, 16), -5002);
    mxedInitGet(kNotEmpty, L"A");
    EXPECT_EQ(mxedGetKword(L"", text, 16), -5002);
    EXPECT_TRUE(shown().contains(QStringLiteral("P: *Cancel*")));
    EXPECT_EQ(mxedGetInput(text, 16), -5001) << "no keyword answered";
}

TEST_F(PrompterTest, ABlankEndsATextAndTheRestAnswersTheNextPrompt) {
    Answers answers({QStringLiteral("Ann 5,6")});
    EXPECT_EQ(mxedGetString(false, L"", text, 16), 5100);
    EXPECT_STREQ(text, L"Ann");
    EXPECT_EQ(mxedGetPoint(nullptr, L"", point), 5100);
    EXPECT_EQ(point, MxGePoint3d(5, 6, 0));
    EXPECT_EQ(answers.used(), 1U);
}

TEST_F(PrompterTest, WithSpacesAllowedTheWholeLineIsTheText) {
    Answers answers({QStringLiteral("Ann Lee")});
    EXPECT_EQ(mxedGetString(true, L"", text, 16), 5100);
    EXPECT_STREQ(text, L"Ann Lee");
}

TEST_F(PrompterTest, APromptInsideAPromptIsAnError) {
    Answers answers({QStringLiteral("1,1")});
    int inner = 0;
    MxGePoint3d other;
    answers.before = [&] { inner = mxedGetPoint(nullptr, L"", other); };
    EXPECT_EQ(mxedGetPoint(nullptr, L"", point), 5100);
    EXPECT_EQ(inner, -5001);
}

TEST_F(PrompterTest, WithoutAScriptThePromptWaitsInAnEventLoop) {
    int count = 1;
    char name[] = "test";
    char* arguments[] = {name, nullptr};
    const QCoreApplication application(count, arguments);
    QTimer::singleShot(0, [] { Prompter::instance().submitPoint({1, 2, 0}); });
    EXPECT_EQ(mxedGetPoint(nullptr, L"", point), 5100);
    QTimer::singleShot(0, [] { QCoreApplication::quit(); });
    EXPECT_EQ(mxedGetPoint(nullptr, L"", point), -5002) << "the end of the program cancels";
}

TEST_F(PrompterTest, TheConsoleShowsPromptAndKeywordsWhileItWaits) {
    Answers answers({QStringLiteral("N")});
    QString prompt;
    std::size_t options = 0;
    answers.before = [&] {
        prompt = Console::instance().prompt();
        options = Console::instance().keywords().size();
    };
    mxedInitGet(0, L"Yes No");
    mxedGetKword(L"\nSure? ", text, 16);
    EXPECT_EQ(prompt, QStringLiteral("Sure? "));
    EXPECT_EQ(options, 2U);
    EXPECT_EQ(Console::instance().prompt(), QString());
    EXPECT_TRUE(Console::instance().keywords().empty());
}

TEST_F(PrompterTest, ADistanceIsTypedOrMeasured) {
    auto& prompter = Prompter::instance();
    const MxGePoint3d base(10, 10, 0);
    double distance = -1;
    const Answers answers({QStringLiteral("2.5"), QStringLiteral("13,14"), QStringLiteral("1,1"),
                           QStringLiteral("@0,7"), QStringLiteral("1,1"), QStringLiteral("4.5")});
    EXPECT_EQ(prompter.getDistance(&base, QStringLiteral("D: "), distance), 5100);
    EXPECT_EQ(distance, 2.5);
    EXPECT_EQ(prompter.getDistance(&base, QStringLiteral("D: "), distance), 5100);
    EXPECT_EQ(distance, 5.0);
    EXPECT_EQ(prompter.getDistance(nullptr, QStringLiteral("D: "), distance), 5100) << "between two points";
    EXPECT_EQ(distance, 7.0);
    EXPECT_EQ(prompter.getDistance(nullptr, QStringLiteral("D: "), distance), 5100) << "typed at the second prompt";
    EXPECT_EQ(distance, 4.5);
    EXPECT_FALSE(prompter.base());
}

TEST_F(PrompterTest, AnAngleIsTypedInDegreesOrShownAsADirection) {
    auto& prompter = Prompter::instance();
    const MxGePoint3d base(10, 10, 0);
    double angle = 0;
    const Answers answers(
        {QStringLiteral("180"), QStringLiteral("10,20"), QStringLiteral("0,0"), QStringLiteral("1,1")});
    EXPECT_EQ(prompter.getAngle(&base, QStringLiteral("A: "), angle), 5100);
    EXPECT_DOUBLE_EQ(angle, 3.14159265358979323846);
    EXPECT_EQ(prompter.getAngle(&base, QStringLiteral("A: "), angle), 5100);
    EXPECT_DOUBLE_EQ(angle, 3.14159265358979323846 / 2);
    EXPECT_EQ(prompter.getAngle(nullptr, QStringLiteral("A: "), angle), 5100);
    EXPECT_DOUBLE_EQ(angle, 3.14159265358979323846 / 4);
}

TEST_F(PrompterTest, NumbersOutsideWhatIsAskedForAreAskedForAgain) {
    auto& prompter = Prompter::instance();
    double value = 0;
    int count = 0;
    const Answers answers({QStringLiteral("x"), QStringLiteral("1,2"), QStringLiteral("0"), QStringLiteral("-1"),
                           QStringLiteral("inf"), QStringLiteral("1e3"), QStringLiteral("2.5"), QStringLiteral("-3")});
    prompter.init(Prompter::kNotZero | Prompter::kNotNegative, {});
    EXPECT_EQ(prompter.getReal(QStringLiteral("R: "), value), 5100);
    EXPECT_EQ(value, 1000.0);
    EXPECT_EQ(answers.used(), 6U);
    EXPECT_EQ(shown(), QStringLiteral("\nR: x\nA number is needed.\nR: 1,2\nA number is needed.\n"
                                      "R: 0\nA number above 0 is needed.\nR: -1\nA number above 0 is needed.\n"
                                      "R: inf\nA number is needed.\nR: 1e3"));
    EXPECT_EQ(prompter.getInteger(QStringLiteral("I: "), count), 5100);
    EXPECT_EQ(count, -3);
    EXPECT_EQ(shown(), QStringLiteral("\nI: 2.5\nA whole number is needed.\nI: -3"));
}

TEST_F(PrompterTest, ANumberPromptTakesItsKeywordsAndEnter) {
    auto& prompter = Prompter::instance();
    double value = 7;
    {
        const Answers answers({QStringLiteral("dia")});
        prompter.init(0, QStringLiteral("Durchmesser Radius _ Diameter Radius"));
        EXPECT_EQ(prompter.getDistance(nullptr, QStringLiteral("R: "), value), -5002) << "no such local form";
    }
    const Answers more({QStringLiteral("_dia"), QStringLiteral("")});
    prompter.init(0, QStringLiteral("Durchmesser Radius _ Diameter Radius"));
    EXPECT_EQ(prompter.getDistance(nullptr, QStringLiteral("R: "), value), -5005);
    EXPECT_EQ(prompter.lastKeyword(), QStringLiteral("Diameter"));
    EXPECT_EQ(prompter.getReal(QStringLiteral("R: "), value), 5000);
    EXPECT_EQ(value, 7) << "left alone";
}

TEST_F(PrompterTest, AnyTextAnswersAsAKeywordWhereItIsWanted) {
    auto& prompter = Prompter::instance();
    const Answers answers({QStringLiteral("2x")});
    prompter.init(Prompter::kAnyText, QStringLiteral("Extents"));
    EXPECT_EQ(prompter.getPoint(nullptr, QStringLiteral("Z: "), point), -5005);
    EXPECT_EQ(prompter.lastKeyword(), QStringLiteral("2x"));
}

TEST_F(PrompterTest, AClickMayTakeAwayFromTheSelection) {
    auto& prompter = Prompter::instance();
    {
        Answers answers({});
        answers.before = [&] { prompter.submitPoint({1, 1, 0}, true); };
        prompter.getPick(QStringLiteral("S: "), point);
        EXPECT_TRUE(prompter.lastPointTakesAway());
    }
    const Answers typed({QStringLiteral("1,1")});
    prompter.getPick(QStringLiteral("S: "), point);
    EXPECT_FALSE(prompter.lastPointTakesAway());
}

TEST_F(PrompterTest, WhatCannotBeReckonedWithIsAskedForAgain) {
    Answers answers({QStringLiteral("1e308,0"), QStringLiteral("@1e308<90"), QStringLiteral("1,2")});
    EXPECT_EQ(Prompter::instance().getPoint(nullptr, QStringLiteral("A: "), point), 5100);
    EXPECT_EQ(point, MxGePoint3d(1, 2, 0));
    EXPECT_NE(Console::instance().unread().indexOf(QStringLiteral("That point is too far away.")), -1);
    Answers numbers({QStringLiteral("1e400"), QStringLiteral("4")});
    numbers.before = [asked = false]() mutable {
        if (!std::exchange(asked, true))
            Prompter::instance().submitPoint({std::nan(""), 0, 0});
    };
    double distance = 0.0;
    EXPECT_EQ(Prompter::instance().getDistance(&point, QStringLiteral("B: "), distance), 5100);
    EXPECT_EQ(distance, 4.0);
}
