// SPDX-License-Identifier: MIT
// What the tests of a note's filing have in common.
#pragma once

#include "merix/db/dwg_filer.h"
#include "merix/io/dxf_in_filer.h"
#include "merix/io/dxf_out_filer.h"
#include "phonomark/entity/phonomark.h"
#include "tests/phonomark/module_fixture.h"

#include <cstring>

class FilingTest : public ModuleTest {
protected:
    /// A recorded Point note with everything set.
    static void fill(MxDbPhonomark& filled, std::size_t size = 200) {
        tWAVEFORMATEX format;
        format.wFormatTag = 1;
        format.nChannels = 2;
        format.nSamplesPerSec = 40000;
        format.nAvgBytesPerSec = 0xFEDCBA98;
        format.nBlockAlign = 0xFEDC;
        format.wBitsPerSample = 8;
        format.cbSize = 9;
        filled.setPosition({1, 2, 3});
        filled.setAudioData(soundBytes(size));
        filled.setAudioDataSize(static_cast<unsigned>(size));
        filled.setWaveFormat(&format);
        filled.setSpokesman(L"Anna \u5f20");
        filled.setDatatime(L"2026/3/7 9:5:0");
        filled.setDuration(L"2.4\"");
    }

    std::string dwg(const MxDbPhonomark& from, MxDbFilerType type = MxDbFilerType::kFile) {
        merix::db::DwgWriter writer(type, &database());
        EXPECT_EQ(from.dwgOutFields(&writer), Mx::eOk);
        return writer.take();
    }
    Mx::ErrorStatus readDwg(MxDbPhonomark& into, std::string_view stream, MxDbFilerType type = MxDbFilerType::kFile) {
        merix::db::DwgReader reader(stream, type, &database());
        return into.dwgInFields(&reader);
    }

    std::vector<merix::io::DxfOutTag> dxf(const MxDbPhonomark& from) {
        merix::io::DxfOutFiler filer(database(), m_encoding);
        EXPECT_EQ(from.dxfOutFields(&filer), Mx::eOk);
        return filer.takeTags();
    }
    /// The groups from the note's subclass marker on, as "code value".
    std::vector<std::string> groups(const MxDbPhonomark& from) {
        std::vector<std::string> result;
        for (const merix::io::DxfOutTag& tag : dxf(from)) {
            if (tag.code == 100 && tag.value == "MxDbPhonomark")
                result.clear();
            result.push_back(std::to_string(tag.code) + " " + tag.value);
        }
        return result;
    }
    static std::vector<int> codes(const std::vector<std::string>& groups) {
        std::vector<int> result;
        for (const std::string& group : groups)
            result.push_back(std::stoi(group));
        return result;
    }
    /// Lengths of the binary chunks.
    std::vector<std::size_t> chunks(std::size_t size) {
        MxDbPhonomark sized;
        fill(sized, size);
        std::vector<std::size_t> lengths;
        for (const merix::io::DxfOutTag& tag : dxf(sized))
            if (tag.code == 310)
                lengths.push_back(tag.value.size() / 2);
        return lengths;
    }

    struct DxfResult {
        Mx::ErrorStatus status, filerStatus;
        std::wstring message;
    };
    DxfResult readDxf(MxDbPhonomark& into, const std::vector<merix::io::DxfOutTag>& tags) {
        std::vector<merix::io::DxfTag> views;
        for (const merix::io::DxfOutTag& tag : tags)
            views.push_back({tag.code, tag.value, {}});
        merix::io::DxfInFiler filer(database(), m_encoding, views);
        const Mx::ErrorStatus status = into.dxfInFields(&filer);
        return {status, filer.filerStatus(), filer.message()};
    }
    /// The groups of an entity up to the note's own, then these.
    std::vector<merix::io::DxfOutTag> withBase(const std::vector<merix::io::DxfOutTag>& own) {
        std::vector<merix::io::DxfOutTag> tags;
        for (const merix::io::DxfOutTag& tag : dxf(MxDbPhonomark())) {
            if (tag.code == 100 && tag.value == "MxDbPhonomark")
                break;
            tags.push_back(tag);
        }
        tags.insert(tags.end(), own.begin(), own.end());
        return tags;
    }
    std::vector<merix::io::DxfOutTag> note1(const std::vector<merix::io::DxfOutTag>& own) {
        std::vector<merix::io::DxfOutTag> tags{{100, "MxDbPhonomark"}, {90, "1"}};
        tags.insert(tags.end(), own.begin(), own.end());
        return withBase(tags);
    }

    static void expectSame(const MxDbPhonomark& a, const MxDbPhonomark& b) {
        CStdStr<wchar_t> textA, textB;
        tWAVEFORMATEX formatA, formatB;
        EXPECT_EQ(a.getPhonomarkType(), b.getPhonomarkType());
        EXPECT_EQ(a.position(), b.position());
        EXPECT_EQ(a.isRecord(), b.isRecord());
        EXPECT_EQ(a.getAudioDataSize(), b.getAudioDataSize());
        a.getWaveFormat(formatA), b.getWaveFormat(formatB);
        EXPECT_EQ(std::memcmp(&formatA, &formatB, sizeof formatA), 0);
        ASSERT_EQ(a.getAudioData() != nullptr, b.getAudioData() != nullptr);
        if (a.getAudioData()) {
            EXPECT_EQ(std::memcmp(a.getAudioData(), b.getAudioData(), a.getAudioDataSize() + 1), 0);
        }
        a.getSpokesman(textA), b.getSpokesman(textB);
        EXPECT_EQ(textA, textB);
        a.getDatatime(textA), b.getDatatime(textB);
        EXPECT_EQ(textA, textB);
        a.getDuration(textA), b.getDuration(textB);
        EXPECT_EQ(textA, textB);
    }

    merix::io::DxfEncoding m_encoding{"AC1032", "ANSI_1252"};
};
