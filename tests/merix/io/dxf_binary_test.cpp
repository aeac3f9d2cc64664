// SPDX-License-Identifier: MIT
#include "merix/io/dxf_binary.h"

#include "merix/io/drawing_parts.h"
#include "merix/io/dxf_encoding.h"
#include "merix/io/dxf_tag.h"
#include "tests/merix/io/drawing_fixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <bit>
#include <cstdlib>

namespace merix::io::testing {
namespace {

using ::testing::HasSubstr;

const std::string kSentinel("AutoCAD Binary DXF\r\n\x1a\0", 22);

std::string little(std::uint64_t value, std::size_t size) {
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

std::string code(int code) {
    return little(static_cast<std::uint64_t>(code), 2);
}

/// A text tag with two-byte code.
std::string words(int group, const std::string& value) {
    return code(group) + value + '\0';
}

std::string real(int group, std::uint64_t bits) {
    return code(group) + little(bits, 8);
}

const std::string kBegin = kSentinel + words(0, "SECTION") + words(2, "ENTITIES");
const std::string kEnd = words(0, "ENDSEC") + words(0, "EOF");

std::string textOf(const std::string& bytes) {
    const BinaryDxfText read = binaryDxfToText(bytes);
    EXPECT_EQ(read.error, "");
    return read.text;
}

/// Through text and back, as a save of an untouched drawing does it.
std::string again(const std::string& bytes) {
    const BinaryDxfText read = binaryDxfToText(bytes);
    EXPECT_EQ(read.error, "");
    std::string out;
    BinaryDxfWriter writer(read.form, false, [&out](std::string_view piece) {
        out += piece;
        return true;
    });
    const std::size_t end = read.text.find("EOF\n") - 4;
    EXPECT_TRUE(writer.write(std::string_view(read.text).substr(0, end))) << writer.error();
    EXPECT_TRUE(writer.finish(std::string_view(read.text).substr(end))) << writer.error();
    return out;
}

/// Codes and values; the blanks that a text has around its codes are left out.
std::vector<std::pair<int, std::string>> tagsOf(const std::string& text) {
    std::vector<std::pair<int, std::string>> result;
    DxfScanner scanner(text);
    for (DxfTag tag; scanner.next(tag) == DxfScanner::Result::kTag;)
        result.emplace_back(tag.code, tag.value);
    return result;
}

class BinaryDxf : public DrawingTest {
protected:
    std::string savedAs(DxfForm form, const std::string& name = "form.dxf") {
        const FileResult result = writeDrawing(directory / name, database, form);
        EXPECT_EQ(result.status, Mx::eOk) << result.error;
        return readBytes(directory / name);
    }
    std::string converted(const std::string& bytes, DxfForm form) {
        MxDbDatabase other;
        writeBytes(directory / "convert.dxf", bytes);
        const FileResult read = readDrawing(directory / "convert.dxf", other);
        EXPECT_EQ(read.status, Mx::eOk) << read.error;
        const FileResult result = writeDrawing(directory / "converted.dxf", other, form);
        EXPECT_EQ(result.status, Mx::eOk) << result.error;
        return readBytes(directory / "converted.dxf");
    }
    FileResult refused(const std::string& entity) {
        EXPECT_TRUE(load(drawing(entity)));
        writeBytes(directory / "old.dxf", "old");
        const FileResult result = writeDrawing(directory / "old.dxf", database, DxfForm::kBinary);
        EXPECT_EQ(result.status, Mx::eFileUnwritable);
        EXPECT_EQ(readBytes(directory / "old.dxf"), "old");
        EXPECT_EQ(directory.entries(), 2U) << "nothing half written is left";
        return result;
    }
};

TEST_F(BinaryDxf, EveryTypeIsReadByItsGroupCode) {
    const std::string tags = words(1, "text") + real(40, std::bit_cast<std::uint64_t>(0.1)) + code(70) + "\xFF\xFF" +
                             code(90) + little(0x80000000, 4) + code(160) + little(0x8000000000000000, 8) + code(290) +
                             "\xFF" + code(310) + std::string("\x03\x00\xAB\x7F", 4) + words(330, "1F") + code(420) +
                             little(70000, 4) + code(1004) + std::string(1, '\0') +
                             real(1040, std::bit_cast<std::uint64_t>(-1e300)) + code(1070) + little(7, 2) + code(1071) +
                             little(8, 4);
    const std::string bytes = kBegin + tags + kEnd;
    EXPECT_THAT(textOf(bytes), HasSubstr("  1\ntext\n 40\n0.1\n 70\n-1\n 90\n-2147483648\n160\n-9223372036854775808\n"
                                         "290\n255\n310\n00AB7F\n330\n1F\n420\n70000\n1004\n\n1040\n-1e+300\n1070\n7\n"
                                         "1071\n8\n"));
    EXPECT_EQ(again(bytes), bytes);
}

TEST_F(BinaryDxf, NumbersHaveTheSizeOfTheirGroupCode) {
    struct Range {
        int low, high;
        std::size_t size;
    };
    for (const Range& range : {Range{10, 59, 8},
                               {60, 79, 2},
                               {90, 99, 4},
                               {110, 149, 8},
                               {160, 169, 8},
                               Range{170, 179, 2},
                               {210, 239, 8},
                               {270, 289, 2},
                               {290, 299, 1},
                               {370, 389, 2},
                               Range{400, 409, 2},
                               {420, 429, 4},
                               {440, 459, 4},
                               {460, 469, 8},
                               {1010, 1059, 8},
                               Range{1060, 1070, 2},
                               {1071, 1071, 4}}) {
        for (int group = range.low; group <= range.high; ++group) {
            const std::string bytes = kBegin + code(group) + std::string(range.size, '\0') + kEnd;
            ASSERT_TRUE(textOf(bytes).ends_with("\n0\n  0\nENDSEC\n  0\nEOF\n") ||
                        textOf(bytes).ends_with("\n0.0\n  0\nENDSEC\n  0\nEOF\n"))
                << group;
        }
    }
}

TEST_F(BinaryDxf, AZeroByteInATextIsNamed) {
    EXPECT_THAT(refused("0|TEXT|5|30|330|1F|8|0|1|a" + std::string(1, '\0') + "b").error,
                HasSubstr("TEXT 30: group 1 \"a?b\" holds a zero byte"));
}

TEST_F(BinaryDxf, DoublesComeBackBitForBit) {
    for (const std::uint64_t bits :
         {std::uint64_t{0}, std::uint64_t{1} << 63, std::uint64_t{1}, std::uint64_t{0x000FFFFFFFFFFFFF},
          std::uint64_t{0x0010000000000000}, std::uint64_t{0x7FEFFFFFFFFFFFFF}, std::uint64_t{0xFFEFFFFFFFFFFFFF},
          std::uint64_t{0x7FF0000000000000}, std::uint64_t{0xFFF0000000000000}, std::uint64_t{0x7FF8000000000000},
          std::uint64_t{0xFFF8000000000000}, std::uint64_t{0x7FF0000000000001}, std::uint64_t{0xFFFFFFFFFFFFFFFF},
          std::bit_cast<std::uint64_t>(0.1), std::bit_cast<std::uint64_t>(1.0 / 3.0),
          std::bit_cast<std::uint64_t>(9007199254740993.0)}) {
        const std::string bytes = kBegin + words(0, "LINE") + real(10, bits) + kEnd;
        ASSERT_EQ(again(bytes), bytes) << std::hex << bits;
    }
    std::uint64_t bits = 1;
    for (int i = 0; i < 10000; ++i) {
        bits = bits * 6364136223846793005U + 1442695040888963407U;
        const std::string bytes = kBegin + words(0, "LINE") + real(10, bits) + kEnd;
        ASSERT_EQ(again(bytes), bytes) << std::hex << bits;
    }
}

TEST_F(BinaryDxf, NoTextBreaksOutOfItsTag) {
    for (const std::string value : {"a\nb", "\r", "a\r\n", "\\u+000a", "\\u+005cu+000a", "\\u+005c", "\\U+000A", "^J",
                                    "  0\nEOF\n", "\\", "\\\n", "\xE4\xFF\x01\x1A"}) {
        const std::string bytes = kBegin + words(0, "TEXT") + words(1, value) + words(8, "0") + kEnd;
        ASSERT_EQ(again(bytes), bytes) << value;
        const std::string text = textOf(bytes);
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 14) << value;
    }
    EXPECT_EQ(DxfEncoding("AC1021", "").decode("a\\u+000ab\\u+005cu+000a"), L"a\nb\\u+000a");
}

TEST_F(BinaryDxf, GroupCodesOfOneByteStayAsTheyAre) {
    const auto brief = [](int group, const std::string& value) {
        return std::string(1, static_cast<char>(group)) + value + '\0';
    };
    const std::string tags = brief(0, "SECTION") + brief(2, "ENTITIES") + brief(0, "LINE") + brief(8, "0") +
                             std::string("\x0A", 1) + little(0, 8) + "\xFF" + code(1001) + std::string("ACAD\0", 5) +
                             "\xFF" + code(1070) + little(5, 2) + "\xFF" + code(8) + std::string("x\0", 2) + "\xFF" +
                             code(255) + std::string("y\0", 2) + brief(0, "ENDSEC") + brief(0, "EOF");
    const BinaryDxfText read = binaryDxfToText(kSentinel + tags);
    EXPECT_EQ(read.form, DxfForm::kShortBinary);
    EXPECT_THAT(read.text, HasSubstr("1001\nACAD\n1070\n5\n08\nx\n255\ny\n"));
    EXPECT_EQ(again(kSentinel + tags), kSentinel + tags);
    const std::string comment = kSentinel + "\xFF" + code(999) + std::string("c\0", 2) + tags;
    EXPECT_EQ(again(comment), comment);
    EXPECT_EQ(binaryDxfToText(kSentinel + words(999, "c") + kEnd).form, DxfForm::kBinary);
}

TEST_F(BinaryDxf, BytesBehindTheEndStay) {
    for (const std::string& tail : {std::string("\x1A"), std::string("\0\0\n0\nEOF\n", 10), std::string(300, '\xFF')})
        EXPECT_EQ(again(kBegin + kEnd + tail), kBegin + kEnd + tail);
    ASSERT_TRUE(load(kBegin + kEnd + "\x1A"));
    EXPECT_EQ(saved(), kBegin + kEnd + "\x1A");
    EXPECT_TRUE(savedAs(DxfForm::kText).ends_with("  0\nEOF\n"));
    EXPECT_EQ(savedAs(DxfForm::kBinary), kBegin + kEnd + "\x1A");
}

struct Malformed {
    std::string bytes, error;
};

TEST_F(BinaryDxf, MalformedFilesAreRefusedWithTheByte) {
    const std::string at = std::to_string(kBegin.size());
    const std::string behindCode = std::to_string(kBegin.size() + 2);
    for (const Malformed& file : {
             Malformed{kSentinel.substr(0, 20), "byte 18: the sentinel of a binary DXF drawing is damaged"},
             Malformed{"AutoCAD Binary DXF\n\n" + kBegin, "byte 18: the sentinel of a binary DXF drawing is damaged"},
             Malformed{kSentinel, "a group code was expected"},
             Malformed{kBegin + "\x0A",
                       "byte " + at + ": the drawing is cut off: a group code takes 2 bytes, 1 is left"},
             Malformed{kBegin + code(10) + "1234567",
                       "byte " + behindCode + ": the drawing is cut off: the value of group 10 takes 8 bytes, 7 are"},
             Malformed{kBegin + code(70) + "1", "the value of group 70 takes 2 bytes, 1 is left"},
             Malformed{kBegin + code(90) + "123", "the value of group 90 takes 4 bytes, 3 are left"},
             Malformed{kBegin + code(160) + "123", "the value of group 160 takes 8 bytes, 3 are left"},
             Malformed{kBegin + code(290), "the value of group 290 takes 1 bytes, 0 are left"},
             Malformed{kBegin + code(310), "the value of group 310 takes 1 bytes, 0 are left"},
             Malformed{kBegin + code(310) + "\xFF" + "short", "the value of group 310 takes 255 bytes, 5 are left"},
             Malformed{kBegin + code(1) + "no end", "byte " + behindCode + ": the drawing is cut off: the value of"},
             Malformed{kBegin + words(1072, "x"), "byte " + at + ": 1072 is no group code"},
             Malformed{kBegin + words(0, "ENDSEC"),
                       "byte " + std::to_string(kBegin.size() + 9) + ": the drawing is cut off: it ends without EOF"},
         }) {
        MxDbDatabase other;
        writeBytes(directory / "bad.dxf", file.bytes);
        const FileResult result = readDrawing(directory / "bad.dxf", other);
        EXPECT_NE(result.status, Mx::eOk);
        EXPECT_THAT(result.error, HasSubstr("bad.dxf: byte ")) << file.error;
        EXPECT_THAT(result.error, HasSubstr(file.error));
        EXPECT_EQ(result.error.find('\n'), std::string::npos);
        EXPECT_EQ(readBytes(directory / "bad.dxf"), file.bytes);
    }
}

TEST_F(BinaryDxf, ADrawingCutOffAnywhereIsRefused) {
    const std::string bytes =
        converted(drawing("0|LINE|5|30|330|1F|100|AcDbEntity|8|0|100|AcDbLine|10|1.5|20|2|70|3"), DxfForm::kBinary);
    for (std::size_t size = 18; size < bytes.size(); ++size) {
        MxDbDatabase other;
        writeBytes(directory / "cut.dxf", bytes.substr(0, size));
        const FileResult result = readDrawing(directory / "cut.dxf", other);
        ASSERT_NE(result.status, Mx::eOk) << size;
        ASSERT_THAT(result.error, HasSubstr("cut.dxf: byte "));
    }
}

TEST_F(BinaryDxf, AMessageAboutARecordNamesItsByte) {
    const WithSampleClass sample;
    const std::string bytes = converted(
        drawing("0|SAMPLENOTE|5|32|330|1F|100|AcDbEntity|8|0|100|MxDbSampleNote|1|no version"), DxfForm::kBinary);
    const FileResult result = load(bytes);
    ASSERT_TRUE(result);
    ASSERT_EQ(result.notes.size(), 1U);
    EXPECT_THAT(result.notes[0], HasSubstr(": byte " + std::to_string(bytes.find("SAMPLENOTE") - 2) + ": SAMPLENOTE"));
    EXPECT_EQ(saved(), bytes);
}

const std::string kCircle = "0|CIRCLE|5|33|330|1F|100|AcDbEntity|8|0|100|AcDbCircle|10|0.1|20|0.0|40|1.5|777|mine";

TEST_F(BinaryDxf, AChangeCostsTheBytesThatItChanges) {
    std::string bytes = converted(drawing(kCircle), DxfForm::kBinary);
    ASSERT_TRUE(load(bytes));
    modify<db::Circle>(0x33, [](db::Circle& circle) { circle.radius = 2.7; });
    const std::string before = code(40) + little(std::bit_cast<std::uint64_t>(1.5), 8);
    const std::string after = code(40) + little(std::bit_cast<std::uint64_t>(2.7), 8);
    bytes.replace(bytes.find(before), before.size(), after);
    EXPECT_EQ(saved(), bytes);
}

TEST_F(BinaryDxf, StaysBinaryThroughANativeDrawing) {
    const std::string bytes = converted(drawing(kCircle), DxfForm::kBinary) + "\x1A";
    ASSERT_TRUE(load(bytes));
    ASSERT_TRUE(writeDrawing(directory / "a.merix", database));
    MxDbDatabase other;
    ASSERT_TRUE(readDrawing(directory / "a.merix", other));
    ASSERT_TRUE(writeDrawing(directory / "b.dxf", other));
    EXPECT_EQ(readBytes(directory / "b.dxf"), bytes);
}

TEST_F(BinaryDxf, KeepsTheFormThatWasLastAskedFor) {
    const std::string text = drawing(kCircle);
    ASSERT_TRUE(load(text));
    EXPECT_EQ(saved(), text);
    const std::string binary = savedAs(DxfForm::kBinary);
    EXPECT_TRUE(isBinaryDxf(binary));
    EXPECT_EQ(saved(), binary);
    EXPECT_EQ(savedAs(DxfForm::kText), text);
    EXPECT_EQ(saved(), text);
}

TEST_F(BinaryDxf, AFailedSaveLeavesTheFormAsItWas) {
    ASSERT_TRUE(load(drawing("0|LINE|5|30|330|1F|8|0|70|70000")));
    EXPECT_FALSE(writeDrawing(directory / "a.dxf", database, DxfForm::kBinary));
    EXPECT_FALSE(isBinaryDxf(saved()));
}

TEST_F(BinaryDxf, WhatHasNoBinaryFormIsNamed) {
    const std::string line = "0|LINE|5|30|330|1F|8|0|";
    EXPECT_THAT(refused(line + "70|70000").error, HasSubstr("LINE 30: group 70 \"70000\" does not fit into 16 bits"));
}

TEST_F(BinaryDxf, WhatIsNoNumberIsNamed) {
    EXPECT_THAT(refused("0|LINE|5|30|330|1F|8|0|10|1.5x").error, HasSubstr("LINE 30: group 10 \"1.5x\" is no number"));
}

TEST_F(BinaryDxf, WhatIsNoWholeNumberIsNamed) {
    EXPECT_THAT(refused("0|LINE|5|30|330|1F|8|0|90|1.5").error, HasSubstr("group 90 \"1.5\" is no whole number"));
}

TEST_F(BinaryDxf, WhatIsNoHexadecimalChunkIsNamed) {
    EXPECT_THAT(refused("0|HATCH|5|30|330|1F|8|0|310|ABC").error, HasSubstr("\"ABC\" holds no hexadecimal bytes"));
}

TEST_F(BinaryDxf, AChunkThatIsTooLongIsNamed) {
    EXPECT_THAT(refused("0|HATCH|5|30|330|1F|8|0|310|" + std::string(512, 'A')).error,
                HasSubstr("more than 255 bytes"));
}

TEST_F(BinaryDxf, AGroupCodeThatIsNoneIsNamed) {
    EXPECT_THAT(refused("0|HATCH|5|30|330|1F|8|0|5001|x").error, HasSubstr("group 5001 \"\" is no group code"));
}

TEST_F(BinaryDxf, ADamagedRecordIsNamed) {
    EXPECT_THAT(refused("0|HATCH|5|30|330|1F|8|0|oops|x|1").error, HasSubstr("HATCH 30: the record is damaged"));
}

TEST_F(BinaryDxf, WhatPeopleWriteForNumbersIsTaken) {
    const std::string text =
        drawing("0|HATCH|5|30|330|1F|8|0|70|65535|71|  3|72|2.0|90|4294967295|290|-1|10| 1.50|20|+2|"
                "30||73||310|ab");
    const std::string back = textOf(converted(text, DxfForm::kBinary));
    EXPECT_THAT(back,
                HasSubstr(" 70\n-1\n 71\n3\n 72\n2\n 90\n-1\n290\n255\n 10\n1.5\n 20\n2.0\n 30\n0.0\n 73\n0\n310\n"
                          "AB\n"));
}

TEST_F(BinaryDxf, CommentsOfATextAreLeftOutAndCounted) {
    const std::string text = drawing("999|inside|" + kCircle);
    ASSERT_TRUE(load("\xEF\xBB\xBF\r\n999\nin front\n" + text + "\nbehind"));
    const FileResult result = writeDrawing(directory / "b.dxf", database, DxfForm::kBinary);
    ASSERT_TRUE(result) << result.error;
    ASSERT_EQ(result.notes.size(), 1U);
    EXPECT_THAT(result.notes[0], HasSubstr("2 comments are left out"));
    EXPECT_EQ(readBytes(directory / "b.dxf"), converted(drawing(kCircle), DxfForm::kBinary));
}

class BinaryDxfSound : public BinaryDxf, public ::testing::WithParamInterface<std::size_t> {
protected:
    /// Reads `from`, looks at the note and writes `to`.
    void pass(const std::string& from, const std::string& to, std::optional<DxfForm> form) {
        MxDbDatabase other;
        const FileResult read = readDrawing(directory / from, other);
        ASSERT_TRUE(read) << read.error;
        const MxDbObjectId id(other.imp().find(MxDbHandle(handle)));
        const auto* note = static_cast<const SampleNote*>(db::DatabaseImp::peek(id));
        ASSERT_NE(note, nullptr);
        EXPECT_TRUE(note->bytes == sound);
        EXPECT_EQ(note->text, L"\u00e9\n^");
        EXPECT_EQ(note->position, (MxGePoint3d{0.1, 1e-320, -1.7e308}));
        ASSERT_TRUE(writeDrawing(directory / to, other, form));
    }

    const WithSampleClass sample;
    std::vector<std::uint8_t> sound;
    std::uint64_t handle = 0;
};

TEST_P(BinaryDxfSound, ComesThroughEveryFormBitForBit) {
    ASSERT_TRUE(load(drawing("0|SAMPLENOTE|5|32|330|1F|100|AcDbEntity|8|0|100|MxDbSampleNote|90|1|10|0.1|20|1e-320|"
                             "30|-1e+300|93|0|1|words")));
    for (std::size_t i = 0; i < GetParam(); ++i)
        sound.push_back(static_cast<std::uint8_t>(i * 7 + i / 256));
    auto* note = new SampleNote;
    note->bytes = sound;
    note->text = L"\u00e9\n^";
    note->position = {0.1, 1e-320, -1.7e308};
    handle = append(note);
    const std::string text = savedAs(DxfForm::kText, "1.dxf");
    pass("1.dxf", "2.dxf", DxfForm::kBinary);
    EXPECT_TRUE(isBinaryDxf(readBytes(directory / "2.dxf")));
    pass("2.dxf", "3.merix", std::nullopt);
    pass("3.merix", "4.dxf", DxfForm::kText);
    EXPECT_TRUE(tagsOf(readBytes(directory / "4.dxf")) == tagsOf(text));
    pass("3.merix", "5.dxf", std::nullopt);
    EXPECT_TRUE(readBytes(directory / "5.dxf") == readBytes(directory / "2.dxf"));
    pass("5.dxf", "6.dxf", DxfForm::kText);
    EXPECT_TRUE(readBytes(directory / "6.dxf") == readBytes(directory / "4.dxf"));
}

INSTANTIATE_TEST_SUITE_P(Sizes, BinaryDxfSound, ::testing::Values(0, 1, 99, 100, 127, 128, 254, 255, 480000));

TEST_F(BinaryDxf, DictionariesAndReactorsOfObjectsSurviveEveryForm) {
    const std::string text = drawing("0|LINE|5|30|102|{ACAD_XDICTIONARY|360|40|102|}|102|{ACAD_REACTORS|330|33|330|41|"
                                     "102|}|330|1F|100|AcDbEntity|8|0|100|AcDbLine|10|0.0|20|0.0|11|1.0|21|1.0|" +
                                         kCircle,
                                     "3|KEY|350|41|0|DICTIONARY|5|40|330|30|100|AcDbDictionary|281|1|3|Y|360|41|"
                                     "0|XRECORD|5|41|330|40|100|AcDbXrecord|280|1|90|-7|310|00FF|1040|0.1");
    ASSERT_TRUE(load(text));
    savedAs(DxfForm::kBinary, "1.dxf");
    MxDbDatabase binary, native;
    ASSERT_TRUE(readDrawing(directory / "1.dxf", binary));
    ASSERT_TRUE(writeDrawing(directory / "2.merix", binary));
    ASSERT_TRUE(readDrawing(directory / "2.merix", native));
    for (MxDbDatabase* read : {&binary, &native}) {
        const db::ObjectData& data = read->imp().find(MxDbHandle(0x30))->object->data();
        EXPECT_EQ(data.extensionDictionary.handle().value(), 0x40U);
        ASSERT_EQ(data.reactors.size(), 2U);
        EXPECT_EQ(data.reactors[0].persistent.handle().value(), 0x33U);
        EXPECT_EQ(data.reactors[1].persistent.handle().value(), 0x41U);
    }
    ASSERT_TRUE(writeDrawing(directory / "3.dxf", native, DxfForm::kText));
    EXPECT_EQ(tagsOf(readBytes(directory / "3.dxf")), tagsOf(text));
}

/// With python3-ezdxf, another program that knows the format.
class BinaryDxfPeer : public BinaryDxf {
protected:
    void SetUp() override {
        if (std::system("/usr/bin/python3 -c 'import ezdxf' 2>/dev/null") != 0)
            FAIL() << "the package python3-ezdxf is not installed";
    }
    void python(const std::string& script, const std::string& from, const std::string& to) const {
        writeBytes(directory / "script.py", script);
        const std::string command =
            "/usr/bin/python3 '" + directory / "script.py" + "' '" + from + "' '" + to + "' 2>&1";
        ASSERT_EQ(std::system(command.c_str()), 0) << from;
    }
};

const char* const kToBinary = R"(
import sys, ezdxf
from ezdxf import recover
doc, auditor = recover.readfile(sys.argv[1])
doc.saveas(sys.argv[2], fmt="bin")
)";

/// Every tag of the text but its comments is in the binary file, in order and with its value.
const char* const kSameTags = R"(
import sys
from ezdxf.lldxf.tagger import ascii_tags_loader, binary_tags_loader
from ezdxf.lldxf.types import TYPE_TABLE, BINARY_DATA
def value(tag):
    if tag.code in BINARY_DATA:
        return bytes.fromhex(tag.value) if isinstance(tag.value, str) else bytes(tag.value)
    kind = TYPE_TABLE.get(tag.code, str)
    return int(float(tag.value)) if kind is int else kind(tag.value)
codec = lambda t: t if not isinstance(t, str) else t.strip()
data = open(sys.argv[2], "rb").read()
text = [(t.code, codec(value(t))) for t in ascii_tags_loader(open(sys.argv[1], encoding="latin1"))]
binary = [(t.code, codec(value(t))) for t in binary_tags_loader(data)]
text = [t for t in text if t[0] != 999]
ascii = lambda tags: [t if not isinstance(t[1], str) else (t[0], "".join(c for c in t[1] if c < "\x80")) for t in tags]
assert len(text) == len(binary), (len(text), len(binary))
for a, b in zip(ascii(text), ascii(binary)):
    assert a == b, (a, b)
)";

const char* const kAudit = R"(
import sys, ezdxf
doc = ezdxf.readfile(sys.argv[2])
auditor = doc.audit()
assert not auditor.errors, [(e.code, e.message) for e in auditor.errors]
assert len(doc.modelspace()) == len(ezdxf.readfile(sys.argv[1]).modelspace())
)";

std::vector<std::string> realDrawings() {
    std::vector<std::string> files = {MERIX_SOURCE_DIR "/samples/plan.dxf"};
    std::vector<std::string> library;
    std::error_code error;
    for (const auto& entry : std::filesystem::recursive_directory_iterator("/usr/share/librecad/library", error)) {
        if (entry.path().extension() == ".dxf")
            library.push_back(entry.path().string());
    }
    std::sort(library.begin(), library.end());
    for (std::size_t i = 0; i < library.size(); i += library.size() / 8 + 1)
        files.push_back(library[i]);
    return files;
}

TEST_F(BinaryDxfPeer, ItsFilesAreSavedByteForByte) {
    for (const std::string& path : realDrawings()) {
        ASSERT_NO_FATAL_FAILURE(python(kToBinary, path, directory / "peer.dxf"));
        const std::string bytes = readBytes(directory / "peer.dxf");
        ASSERT_TRUE(isBinaryDxf(bytes));
        MxDbDatabase drawing, native;
        const FileResult read = readDrawing(directory / "peer.dxf", drawing);
        ASSERT_TRUE(read) << read.error;
        ASSERT_TRUE(writeDrawing(directory / "out.dxf", drawing));
        ASSERT_EQ(readBytes(directory / "out.dxf"), bytes) << path;
        ASSERT_TRUE(writeDrawing(directory / "out.merix", drawing));
        ASSERT_TRUE(readDrawing(directory / "out.merix", native));
        ASSERT_TRUE(writeDrawing(directory / "native.dxf", native));
        ASSERT_EQ(readBytes(directory / "native.dxf"), bytes) << path;
    }
}

const char* const kOldDrawing = R"(
import sys, ezdxf
doc = ezdxf.new(sys.argv[1])
doc.appids.new("MERIX")
line = doc.modelspace().add_line((0.1, 0.2), (3, 4))
line.set_xdata("MERIX", [(1000, "text"), (1040, 0.3), (1070, -5), (1071, 70000), (1010, (1, 2, 3))])
doc.modelspace().add_text("old")
doc.saveas(sys.argv[2], fmt="bin")
doc.saveas(sys.argv[2] + ".txt.dxf")
)";

TEST_F(BinaryDxfPeer, ItsFilesOfEveryVersionAreSavedByteForByte) {
    for (const char* version : {"R12", "R2000", "R2007", "R2018"}) {
        ASSERT_NO_FATAL_FAILURE(python(kOldDrawing, version, directory / "peer.dxf"));
        MxDbDatabase drawing;
        const FileResult read = readDrawing(directory / "peer.dxf", drawing);
        ASSERT_TRUE(read) << read.error;
        EXPECT_EQ(drawingParts(drawing.imp())->form,
                  std::string_view(version) == "R12" ? DxfForm::kShortBinary : DxfForm::kBinary);
        ASSERT_TRUE(writeDrawing(directory / "out.dxf", drawing));
        EXPECT_TRUE(readBytes(directory / "out.dxf") == readBytes(directory / "peer.dxf")) << version;
        MxDbDatabase text;
        ASSERT_TRUE(readDrawing(directory / "peer.dxf.txt.dxf", text));
        ASSERT_TRUE(writeDrawing(directory / "binary.dxf", text, DxfForm::kBinary));
        ASSERT_NO_FATAL_FAILURE(python(kSameTags, directory / "peer.dxf.txt.dxf", directory / "binary.dxf"));
    }
}

const char* const kLoadAndSave = R"(
import sys, ezdxf
ezdxf.readfile(sys.argv[1]).saveas(sys.argv[2], fmt="bin")
)";

TEST_F(BinaryDxfPeer, ItLoadsAndSavesLongSoundsUnchanged) {
    constexpr std::size_t kNotes = 20, kSize = 480000;
    const WithSampleClass sample;
    ASSERT_TRUE(readDrawing(MERIX_SOURCE_DIR "/samples/plan.dxf", database));
    std::vector<std::uint64_t> handles;
    for (std::size_t i = 0; i < kNotes; ++i) {
        auto* note = new SampleNote;
        note->text = L"words";
        for (std::size_t k = 0; k < kSize; ++k)
            note->bytes.push_back(static_cast<std::uint8_t>(k * 7 + k / 256 + i));
        handles.push_back(append(note));
    }
    savedAs(DxfForm::kBinary);
    ASSERT_NO_FATAL_FAILURE(python(kLoadAndSave, directory / "form.dxf", directory / "peer.dxf"));
    MxDbDatabase back;
    const FileResult read = readDrawing(directory / "peer.dxf", back);
    ASSERT_TRUE(read) << read.error;
    for (const std::uint64_t handle : handles) {
        const db::ObjectStub* before = database.imp().find(MxDbHandle(handle));
        const db::ObjectStub* after = back.imp().find(MxDbHandle(handle));
        ASSERT_TRUE(after && after->object && after->object->isKindOf(SampleNote::desc()));
        EXPECT_TRUE(static_cast<const SampleNote*>(after->object)->bytes ==
                    static_cast<const SampleNote*>(before->object)->bytes);
        EXPECT_TRUE(after->object->data().source.text == before->object->data().source.text);
    }
}

TEST_F(BinaryDxfPeer, ItReadsEveryTagOfWhatIsWritten) {
    for (const std::string& path : realDrawings()) {
        MxDbDatabase drawing;
        ASSERT_TRUE(readDrawing(path, drawing));
        const FileResult result = writeDrawing(directory / "out.dxf", drawing, DxfForm::kBinary);
        ASSERT_TRUE(result) << result.error;
        ASSERT_NO_FATAL_FAILURE(python(kSameTags, path, directory / "out.dxf"));
    }
}

TEST_F(BinaryDxfPeer, ItsAuditFindsNoErrorInThePlan) {
    const std::string plan = MERIX_SOURCE_DIR "/samples/plan.dxf";
    ASSERT_TRUE(readDrawing(plan, database));
    appendLine({0, 0, 0}, {1, 1, 0});
    savedAs(DxfForm::kText, "text.dxf");
    savedAs(DxfForm::kBinary, "binary.dxf");
    ASSERT_NO_FATAL_FAILURE(python(kAudit, directory / "text.dxf", directory / "binary.dxf"));
}

} // namespace
} // namespace merix::io::testing
