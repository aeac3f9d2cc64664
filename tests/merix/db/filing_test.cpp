// SPDX-License-Identifier: MIT
#include "merix/db/dxf_fields.h"
#include "merix/db/entities.h"
#include "merix/io/dxf_in_filer.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

namespace {

using merix::io::DxfTag;

/// An entity of a module: nothing of it is read unless its own marker follows the base's groups.
class Note final : public MxDbEntity {
public:
    MxRxClass* isA() const override {
        static MxRxClass* const noteClass = newMxRxClass(
            L"FilingTestNote", L"MxDbEntity", 1, 0, 0, [] { return static_cast<MxRxObject*>(new Note); },
            L"FILINGTESTNOTE", L"Test");
        return noteClass;
    }
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override {
        assertWriteEnabled();
        if (const auto status = MxDbEntity::dxfInFields(filer); status != Mx::eOk)
            return status;
        if (!filer->atSubclassData(L"TestNote"))
            return Mx::eOk;
        return merix::db::readItems(filer, this, [&](int code) {
            if (code == 90)
                value = filer->itemInt32();
            return code == 90;
        });
    }
    std::int32_t value = 0;
};

class FilingTest : public testing::Test {
protected:
    void read(MxDbEntity& entity, const std::vector<std::pair<int, std::string_view>>& record) {
        std::vector<DxfTag> tags;
        for (const auto& [code, value] : record)
            tags.push_back({code, value, {}});
        const merix::io::DxfEncoding encoding("AC1021", "");
        merix::io::DxfInFiler filer(m_drawing.database, encoding, tags);
        EXPECT_EQ(entity.dxfInFields(&filer), Mx::eOk);
    }
    Drawing m_drawing;
};

TEST_F(FilingTest, GroupsOfTheBaseThatAreNotKnownArePassedOver) {
    Note note;
    read(note, {{5, "2A"},
                {330, "1F"},
                {100, "AcDbEntity"},
                {8, "WALLS"},
                {410, "Model"},
                {62, "3"},
                {284, "1"},
                {347, "55"},
                {390, "56"},
                {440, "33554559"},
                {160, "4"},
                {310, "00FF00FF"},
                {102, "{OTHER"},
                {90, "5"},
                {100, "TestNote"},
                {102, "}"},
                {370, "25"},
                {100, "TestNote"},
                {90, "7"}});
    EXPECT_EQ(note.value, 7);
    const merix::db::EntityTraits& traits = merix::db::traits(note);
    EXPECT_EQ(traits.color, 3);
    EXPECT_EQ(traits.lineWeight, 25);
    EXPECT_EQ(traits.layer, m_drawing.imp.layerNamed(L"WALLS"));
}

TEST_F(FilingTest, WithoutMarkersTheFirstUnknownGroupIsTheEntitysOwn) {
    merix::db::Line line;
    read(line, {{5, "2A"}, {8, "0"}, {10, "1.0"}, {20, "2.0"}, {11, "3.0"}, {21, "4.0"}});
    EXPECT_EQ(line.start, MxGePoint3d(1, 2, 0));
    EXPECT_EQ(line.end, MxGePoint3d(3, 4, 0));
}

TEST_F(FilingTest, ABuiltInKindIsReadThoughItsOwnMarkerWasLeftOut) {
    merix::db::Line line;
    read(
        line,
        {{5, "2A"}, {100, "AcDbEntity"}, {8, "0"}, {410, "Model"}, {10, "1.0"}, {20, "2.0"}, {11, "3.0"}, {21, "4.0"}});
    EXPECT_EQ(line.start, MxGePoint3d(1, 2, 0));
    EXPECT_EQ(line.end, MxGePoint3d(3, 4, 0));
}

} // namespace
