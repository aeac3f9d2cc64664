// SPDX-License-Identifier: MIT
#include "merix/ed/variables.h"

#include "command_fixture.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <cmath>
#include <limits>

using namespace merix;
using ed::formatValue;

namespace {

class VariablesTest : public test::CommandFixture {
protected:
    static QString get(const wchar_t* name) {
        MxEdVariableValue value;
        return mxedGetVar(name, value) == Mx::eOk ? formatValue(value) : QStringLiteral("none");
    }
};

} // namespace

TEST_F(VariablesTest, NamesAreFoundInAnyCase) {
    MxEdVariableValue value = 77;
    EXPECT_EQ(mxedGetVar(L"CmdEcho", value), Mx::eOk);
    EXPECT_EQ(std::get<int>(value), 1);
    EXPECT_EQ(mxedGetVar(L"NOSUCH", value), Mx::eKeyNotFound);
    EXPECT_EQ(mxedGetVar(nullptr, value), Mx::eKeyNotFound);
    EXPECT_EQ(mxedSetVar(L"NOSUCH", 1), Mx::eKeyNotFound);
    EXPECT_EQ(std::get<int>(value), 1) << "left alone";
}

TEST_F(VariablesTest, TheViewIsReadOnly) {
    MxEdVariableValue value;
    ASSERT_EQ(mxedGetVar(L"VIEWCTR", value), Mx::eOk);
    EXPECT_EQ(std::get<MxGePoint3d>(value), MxGePoint3d(200, 150, 0));
    ASSERT_EQ(mxedGetVar(L"VIEWSIZE", value), Mx::eOk);
    EXPECT_EQ(std::get<double>(value), 300.0);
    EXPECT_EQ(mxedSetVar(L"VIEWCTR", MxGePoint3d()), Mx::eReadOnly);
    view.reset();
    EXPECT_EQ(mxedGetVar(L"VIEWCTR", value), Mx::eNoDatabase);
}

TEST_F(VariablesTest, ValuesOfAnotherTypeOrOutOfRangeAreRefused) {
    EXPECT_EQ(mxedSetVar(L"CMDECHO", L"on"), Mx::eInvalidInput);
    EXPECT_EQ(mxedSetVar(L"CMDECHO", 2), Mx::eOutOfRange);
    EXPECT_EQ(mxedSetVar(L"LTSCALE", 0.0), Mx::eOutOfRange);
    EXPECT_EQ(mxedSetVar(L"LTSCALE", std::numeric_limits<double>::infinity()), Mx::eOutOfRange);
    EXPECT_EQ(mxedSetVar(L"LTSCALE", std::nan("")), Mx::eOutOfRange);
    EXPECT_EQ(mxedSetVar(L"TEXTSIZE", -1.0), Mx::eOutOfRange);
    EXPECT_EQ(mxedSetVar(L"CECOLOR", L"256"), Mx::eOutOfRange);
    EXPECT_EQ(mxedSetVar(L"CECOLOR", L"mauve"), Mx::eOutOfRange);
    EXPECT_EQ(mxedSetVar(L"CELTYPE", L"nosuch"), Mx::eOutOfRange);
    EXPECT_EQ(mxedSetVar(L"CELWEIGHT", 26), Mx::eOutOfRange);
    EXPECT_EQ(mxedSetVar(L"CELWEIGHT", 65536 + 25), Mx::eOutOfRange);
    EXPECT_EQ(mxedSetVar(L"CLAYER", L"nosuch"), Mx::eOutOfRange);
    EXPECT_EQ(mxedSetVar(L"INSUNITS", 25), Mx::eOutOfRange);
    EXPECT_EQ(database.undo.undoUnits().size(), 0U);
}

TEST_F(VariablesTest, ThoseOfTheHeaderAreTheDrawings) {
    EXPECT_EQ(mxedSetVar(L"LTSCALE", 2), Mx::eOk) << "a whole number is a number";
    EXPECT_EQ(mxedSetVar(L"TEXTSIZE", 3.5), Mx::eOk);
    EXPECT_EQ(mxedSetVar(L"CECOLOR", L"RED"), Mx::eOk);
    EXPECT_EQ(mxedSetVar(L"CELTYPE", L"continuous"), Mx::eOk);
    EXPECT_EQ(mxedSetVar(L"CELWEIGHT", 25), Mx::eOk);
    EXPECT_EQ(mxedSetVar(L"CLAYER", L"0"), Mx::eOk);
    EXPECT_EQ(mxedSetVar(L"INSUNITS", 6), Mx::eOk);
    EXPECT_EQ(database.header.linetypeScale, 2.0);
    EXPECT_EQ(database.header.currentColor, 1);
    EXPECT_EQ(database.header.currentLinetype, L"Continuous") << "as the table spells it";
    EXPECT_EQ(get(L"CECOLOR"), QStringLiteral("red"));
    EXPECT_EQ(get(L"CELWEIGHT"), QStringLiteral("25"));
    EXPECT_EQ(get(L"TEXTSIZE"), QStringLiteral("3.5"));
    EXPECT_TRUE(document.isChanged());
    ap::Document& other = *ap::DocManager::instance().create();
    EXPECT_EQ(get(L"TEXTSIZE"), QStringLiteral("2.5"));
    ap::DocManager::instance().close(other);
    ap::DocManager::instance().activate(nullptr);
    EXPECT_EQ(get(L"TEXTSIZE"), QStringLiteral("none"));
    EXPECT_EQ(mxedSetVar(L"TEXTSIZE", 1.0), Mx::eNoDatabase);
    ap::DocManager::instance().activate(&document);
}

TEST_F(VariablesTest, AChangeOfTheHeaderIsAStepToUndo) {
    mxedSetVar(L"TEXTSIZE", 3.5);
    mxedSetVar(L"TEXTSIZE", 3.5);
    ASSERT_EQ(database.undo.undoUnits().size(), 1U) << "the same value is no change";
    ASSERT_TRUE(database.undo.undo());
    EXPECT_EQ(database.header.textSize, 2.5);
    ASSERT_TRUE(database.undo.redo());
    EXPECT_EQ(database.header.textSize, 3.5);
    EXPECT_TRUE(database.isChanged());
}

TEST_F(VariablesTest, EachIsNamedOnceAndCanBeRead) {
    QString before;
    for (const ed::Variable& variable : ed::systemVariables()) {
        const QString name = QLatin1String(variable.name);
        EXPECT_LT(before, name) << "in order";
        EXPECT_EQ(name, name.toUpper());
        const auto value = variable.get();
        ASSERT_TRUE(value) << variable.name;
        EXPECT_EQ(value->index(), std::size_t(variable.type)) << variable.name;
        if (variable.set) {
            EXPECT_EQ(variable.set(*value), Mx::eOk) << variable.name << " takes its own value";
        }
        before = name;
    }
    EXPECT_EQ(database.undo.undoUnits().size(), 0U);
}

TEST_F(VariablesTest, TheTimeBetweenCopiesIsOfTheUserAndChecked) {
    const QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
    const QString file = home.filePath(QStringLiteral("merix/merix.conf"));
    const auto kept = [&] {
        return QSettings(file, QSettings::IniFormat).value(QStringLiteral("SAVETIME")).toString();
    };
    std::vector<int> told;
    ed::setSaveTimeListener([&](int minutes) { told.push_back(minutes); });
    EXPECT_EQ(mxedSetVar(L"SAVETIME", 600), Mx::eOk);
    EXPECT_EQ(kept(), QStringLiteral("600"));
    EXPECT_EQ(mxedSetVar(L"SAVETIME", 601), Mx::eOutOfRange);
    EXPECT_EQ(mxedSetVar(L"SAVETIME", -1), Mx::eOutOfRange);
    EXPECT_EQ(mxedSetVar(L"SAVETIME", 2.5), Mx::eInvalidInput);
    EXPECT_EQ(get(L"SAVETIME"), QStringLiteral("600"));
    EXPECT_EQ(mxedSetVar(L"SAVETIME", 0), Mx::eOk) << "never";
    EXPECT_EQ(kept(), QStringLiteral("0"));
    EXPECT_THAT(told, testing::ElementsAre(600, 0));
    ed::setSaveTimeListener({});
    EXPECT_FALSE(document.isChanged());
    EXPECT_EQ(database.undo.undoUnits().size(), 0U);
}

TEST_F(VariablesTest, ASettingThatCannotBeKeptHoldsForThisRunAndIsToldOf) {
    const QTemporaryDir home;
    QFile(home.filePath(QStringLiteral("file"))).open(QFile::WriteOnly);
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("file")).toUtf8());
    EXPECT_EQ(mxedSetVar(L"SAVETIME", 12), Mx::eOk);
    EXPECT_EQ(get(L"SAVETIME"), QStringLiteral("12"));
    EXPECT_THAT(shown(), testing::HasSubstr("SAVETIME cannot be kept for the next time"));
}
