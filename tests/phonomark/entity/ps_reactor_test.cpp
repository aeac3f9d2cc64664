// SPDX-License-Identifier: MIT
#include "phonomark/entity/ps_reactor.h"

#include "merix/db/dwg_filer.h"
#include "merix/io/dxf_in_filer.h"
#include "merix/io/dxf_out_filer.h"
#include "tests/phonomark/module_fixture.h"

#include <memory>

using merix::io::DxfOutTag;

namespace {

class PsReactorTest : public ModuleTest {
protected:
    Mx::ErrorStatus readDxf(PhonomarkPsReactor& into, const std::vector<DxfOutTag>& tags) {
        std::vector<merix::io::DxfTag> views;
        for (const DxfOutTag& tag : tags)
            views.push_back({tag.code, tag.value, {}});
        merix::io::DxfInFiler filer(database(), m_encoding, views);
        return into.dxfInFields(&filer);
    }
    merix::io::DxfEncoding m_encoding{"AC1032", "ANSI_1252"};
};

} // namespace

TEST_F(PsReactorTest, TheClassIsRegisteredAsFiled) {
    const MxRxClass* aClass = PhonomarkPsReactor::desc();
    ASSERT_TRUE(aClass);
    EXPECT_STREQ(aClass->dxfName(), L"PhonomarkPsReactor");
    EXPECT_STREQ(aClass->appName(), L"PERSISTREACTOR");
    EXPECT_EQ(aClass->dwgVersion(), 33);
    EXPECT_EQ(aClass->maintenanceVersion(), 55);
    EXPECT_EQ(aClass->myParent(), MxDbObject::desc());
    const std::unique_ptr<MxRxObject> made(aClass->create());
    ASSERT_TRUE(made);
    EXPECT_TRUE(static_cast<PhonomarkPsReactor&>(*made).noteId().isNull());
}

TEST_F(PsReactorTest, TheNoteIsKeptByTheBinaryForm) {
    PhonomarkPsReactor before, after;
    before.setNoteId(addNote());
    merix::db::DwgWriter writer(MxDbFilerType::kFile, &database());
    ASSERT_EQ(before.dwgOutFields(&writer), Mx::eOk);
    const std::string stream = writer.take();
    merix::db::DwgReader reader(stream, MxDbFilerType::kFile, &database());
    EXPECT_EQ(after.dwgInFields(&reader), Mx::eOk);
    EXPECT_EQ(after.noteId(), before.noteId());
}

TEST_F(PsReactorTest, TheNoteIsKeptByDxf) {
    PhonomarkPsReactor before, after;
    before.setNoteId(addNote());
    merix::io::DxfOutFiler filer(database(), m_encoding);
    ASSERT_EQ(before.dxfOutFields(&filer), Mx::eOk);
    const auto tags = filer.takeTags();
    ASSERT_GE(tags.size(), 2u);
    EXPECT_EQ(tags[tags.size() - 2].value, "PhonomarkPsReactor");
    EXPECT_EQ(tags.back().code, 330);
    readDxf(after, tags);
    EXPECT_EQ(after.noteId(), before.noteId());
}

TEST_F(PsReactorTest, WithoutItsSubclassMarkerARecordIsRefused) {
    PhonomarkPsReactor after;
    EXPECT_EQ(readDxf(after, {{330, "1F"}}), 52);
    EXPECT_TRUE(after.noteId().isNull());
}

TEST_F(PsReactorTest, TheLastOfSeveralNotesWins) {
    PhonomarkPsReactor after;
    readDxf(after, {{100, "PhonomarkPsReactor"}, {330, "F001"}, {330, "F002"}, {90, "1"}, {330, "F003"}});
    EXPECT_EQ(after.noteId().handle(), MxDbHandle(0xF002));
}
