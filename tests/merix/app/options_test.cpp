// SPDX-License-Identifier: MIT
#include "merix/app/options.h"

#include <gtest/gtest.h>

using merix::app::Options;
using merix::app::parseOptions;

namespace {

Options parse(const char* line) {
    return parseOptions(QString::fromUtf8(line).split(QLatin1Char(' '), Qt::SkipEmptyParts));
}

} // namespace

TEST(Options, DrawingsAreWhatIsLeft) {
    const Options options = parse("a.dxf --headless b.merix --script - -- -c.dxf");
    EXPECT_EQ(options.error, QString());
    EXPECT_EQ(options.drawings,
              (QStringList{QStringLiteral("a.dxf"), QStringLiteral("b.merix"), QStringLiteral("-c.dxf")}));
    EXPECT_TRUE(options.headless);
    EXPECT_EQ(options.script, QStringLiteral("-"));
}

TEST(Options, RenderTakesASize) {
    const Options options = parse("--size 640x480 --render in.dxf out.png");
    EXPECT_EQ(options.mode, Options::Mode::kRender);
    EXPECT_EQ(options.input, QStringLiteral("in.dxf"));
    EXPECT_EQ(options.output, QStringLiteral("out.png"));
    EXPECT_EQ(options.size, QSize(640, 480));
    EXPECT_EQ(parse("--render a b").size, QSize(1600, 1200));
}

TEST(Options, MistakesAreToldInOneLine) {
    for (const char* line : {"--nosuch", "--script", "--convert", "--convert a", "--render a", "--size", "--size 0x5",
                             "--size 5", "--size 5x", "--size -1x5", "--size 99999x1", "--convert a b c",
                             "--convert a b --render a b", "-x", "--module"}) {
        const QString error = parse(line).error;
        EXPECT_FALSE(error.isEmpty()) << line;
        EXPECT_FALSE(error.contains(QLatin1Char('\n'))) << line;
    }
}

TEST(Options, AnEmptyArgumentIsNoDrawing) {
    EXPECT_FALSE(parseOptions({QString()}).error.isEmpty());
}

TEST(Options, HelpNamesEveryOption) {
    const QString help = merix::app::helpText();
    for (const char* option : {"--headless", "--script", "--convert", "--render", "--size", "--module", "--no-module",
                               "--version", "--help"})
        EXPECT_TRUE(help.contains(QLatin1String(option))) << option;
}

TEST(Options, TheFormOfADxfFileIsForConvertingToOne) {
    EXPECT_FALSE(parse("--convert a.merix b.DXF").form);
    EXPECT_EQ(parse("--convert a.merix b.DXF --form binary").form, merix::io::DxfForm::kBinary);
    EXPECT_EQ(parse("--convert a.merix b.DXF --form text").form, merix::io::DxfForm::kText);
    for (const char* wrong : {"--convert a.merix b.dxf --form hex", "--convert a.merix b.dxf --form",
                              "--convert a.dxf b.merix --form text", "--form text a.dxf"})
        EXPECT_NE(parse(wrong).error, QString()) << wrong;
}
