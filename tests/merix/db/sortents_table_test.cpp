// SPDX-License-Identifier: MIT
#include "host/db/sortents_table.h"

#include "merix/db/access.h"
#include "merix/db/clone.h"
#include "merix/db/draw_order.h"
#include "merix/io/drawing_file.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include <unistd.h>

namespace {

using namespace merix::db;
using Ids = std::vector<MxDbObjectId>;

class SortentsTableTest : public testing::Test {
protected:
    MxDbBlockTableRecord& space() { return *drawing.imp.block(drawing.imp.roots.modelSpace); }
    Mx::ErrorStatus move(const Ids& ids, bool toTop) {
        MxDbBlockTableRecord* block = nullptr;
        mxdbOpenObject(block, drawing.imp.roots.modelSpace, Mx::kForRead);
        MxDbSortentsTable* table = nullptr;
        auto status = block->getSortentsTable(table, Mx::kForWrite, true);
        block->close();
        if (status != Mx::eOk)
            return status;
        status = toTop ? table->moveToTop(ids) : table->moveToBottom(ids);
        table->close();
        return status;
    }
    Ids order() {
        Ids sorted;
        return drawOrder(space(), sorted);
    }

    Drawing drawing;
    MxDbObjectId a = drawing.addLine(), b = drawing.addLine(), c = drawing.addLine(), d = drawing.addLine();
};

TEST_F(SortentsTableTest, ABlockWithoutATableIsDrawnInTheOrderOfItsList) {
    EXPECT_EQ(order(), (Ids{a, b, c, d}));
    MxDbBlockTableRecord* block = nullptr;
    mxdbOpenObject(block, drawing.imp.roots.modelSpace, Mx::kForRead);
    MxDbSortentsTable* table = nullptr;
    EXPECT_EQ(block->getSortentsTable(table, Mx::kForWrite, false), Mx::eKeyNotFound);
    EXPECT_EQ(table, nullptr);
    block->close();
    EXPECT_EQ(sortentsTable(space()), nullptr);
}

TEST_F(SortentsTableTest, EntitiesMovedKeepTheirOrderAmongThemselves) {
    EXPECT_EQ(move({d, b}, false), Mx::eOk);
    EXPECT_EQ(order(), (Ids{b, d, a, c}));
    EXPECT_EQ(move({b}, true), Mx::eOk);
    EXPECT_EQ(order(), (Ids{d, a, c, b}));
    EXPECT_EQ(space().entityIds(), (Ids{a, b, c, d})) << "the list itself stays";
    const MxDbObjectId e = drawing.addLine();
    EXPECT_EQ(order(), (Ids{d, a, c, b, e})) << "what is new lies on top";
    EXPECT_EQ(sortentsTable(space())->sortHandle(d), a.handle());
    EXPECT_EQ(sortentsTable(space())->sortHandle(e), e.handle());
    EXPECT_EQ(sortentsTable(space())->fullDrawOrder(), order());
    EXPECT_EQ(sortentsTable(space())->blockId(), drawing.imp.roots.modelSpace);
}

TEST_F(SortentsTableTest, AStrangerIsRefused) {
    const MxDbObjectId other = drawing.addLine({}, {1, 0, 0}, drawing.imp.roots.paperSpace);
    EXPECT_EQ(move({a, other}, true), Mx::eInvalidInput);
    EXPECT_EQ(move({MxDbObjectId()}, true), Mx::eInvalidInput);
    EXPECT_EQ(order(), (Ids{a, b, c, d}));
}

TEST_F(SortentsTableTest, UndoBringsTheOrderBackAndTakesTheTableAway) {
    drawing.imp.undo.clear();
    drawing.imp.undo.begin(L"Order");
    move({d}, false);
    drawing.imp.undo.end();
    move({c}, false);
    EXPECT_EQ(order(), (Ids{c, d, a, b}));
    drawing.imp.undo.undo();
    EXPECT_EQ(order(), (Ids{d, a, b, c}));
    drawing.imp.undo.undo();
    EXPECT_EQ(order(), (Ids{a, b, c, d}));
    EXPECT_EQ(sortentsTable(space()), nullptr);
    drawing.imp.undo.redo();
    drawing.imp.undo.redo();
    EXPECT_EQ(order(), (Ids{c, d, a, b}));
}

TEST_F(SortentsTableTest, AListOutOfTheOrderOfItsHandlesKeepsItsOrder) {
    // As a file may have it: the entity with the largest handle comes first.
    const MxDbObjectId block = drawing.addBlock(L"Mixed");
    const MxDbObjectId first(drawing.imp.adopt(new Line, MxDbHandle(0x5000), block)),
        second(drawing.imp.adopt(new Line, MxDbHandle(0x4000), block)),
        third(drawing.imp.adopt(new Line, MxDbHandle(0x4500), block));
    for (const MxDbObjectId& id : {first, second, third})
        drawing.imp.adoptEntity(*drawing.imp.block(block), id);
    MxDbBlockTableRecord* record = nullptr;
    mxdbOpenObject(record, block, Mx::kForWrite);
    MxDbSortentsTable* table = nullptr;
    ASSERT_EQ(record->getSortentsTable(table, Mx::kForWrite, true), Mx::eOk);
    EXPECT_EQ(table->moveToTop({second}), Mx::eOk);
    EXPECT_EQ(table->fullDrawOrder(), (Ids{first, third, second}));
    table->close();
    record->close();
}

TEST_F(SortentsTableTest, BlocksAreDrawnInTheirOrder) {
    struct Lines final : MxGiWorldGeometry {
        std::vector<double> seen;
        void circle(const MxGePoint3d&, double, const MxGeVector3d&) override {}
        void circularArc(const MxGePoint3d&, double, const MxGeVector3d&, const MxGeVector3d&, double) override {}
        void worldLine(const MxGePoint3d* points, std::size_t) override { seen.push_back(points[0].x); }
        void polyline(const MxGePoint3d*, std::size_t) override {}
        void polygon(const MxGePoint3d*, std::size_t) override {}
        void pline(const MxGiPolylineVertex*, std::size_t, bool) override {}
        void text(const MxGePoint3d&, const MxGeVector3d&, const MxGeVector3d&, double, double, double,
                  const wchar_t*) override {}
    };
    struct Draw final : MxGiWorldDraw {
        mutable Lines lines;
        mutable MxGiSubEntityTraits traits;
        MxGiContext* context() const override { return nullptr; }
        MxGiSubEntityTraits& subEntityTraits() const override { return traits; }
        Lines& geometry() const override { return lines; }
    };
    for (const MxDbObjectId& id : {a, b, c, d})
        drawing.at<Line>(id).start.x = id == a ? 1 : id == b ? 2 : id == c ? 3 : 4;
    move({d}, false);
    Insert insert;
    insert.block = drawing.imp.roots.modelSpace;
    Draw draw;
    insert.subWorldDraw(&draw);
    EXPECT_EQ(draw.lines.seen, (std::vector<double>{4, 1, 2, 3}));
}

TEST_F(SortentsTableTest, ABlockWrittenOutKeepsItsOrder) {
    const MxDbObjectId block = drawing.addBlock(L"Sorted");
    const MxDbObjectId under = drawing.addLine({1, 0, 0}, {2, 0, 0}, block),
                       over = drawing.addLine({3, 0, 0}, {4, 0, 0}, block);
    MxDbBlockTableRecord* record = nullptr;
    mxdbOpenObject(record, block, Mx::kForWrite);
    MxDbSortentsTable* table = nullptr;
    record->getSortentsTable(table, Mx::kForWrite, true);
    table->moveToTop({under});
    table->close();
    record->close();
    auto insert = std::make_unique<Insert>();
    insert->block = block;
    const MxDbObjectId id = drawing.add(std::move(insert));
    Drawing target;
    for (int i = 0; i < 20; ++i)
        target.addLine();
    ASSERT_EQ(wblockEntities({id}, target.database, {}).size(), 1U);
    Ids sorted;
    const Ids& copied = drawOrder(*target.imp.block(target.imp.blockNamed(L"Sorted")), sorted);
    ASSERT_EQ(copied.size(), 2U);
    EXPECT_EQ(target.at<Line>(copied[0]).start.x, 3);
    EXPECT_EQ(target.at<Line>(copied[1]).start.x, 1);
    EXPECT_FALSE(sorted.empty());
    EXPECT_EQ(drawing.at<Line>(over).start.x, 3);
}

class SortentsFileTest : public SortentsTableTest {
protected:
    SortentsFileTest()
        : folder(std::filesystem::temp_directory_path() / ("sortents" + std::to_string(::getpid()))) {
        std::filesystem::create_directories(folder);
    }
    ~SortentsFileTest() override { std::filesystem::remove_all(folder); }
    std::string path(const char* name) const { return (folder / name).string(); }
    static std::string bytes(const std::string& file) {
        std::ostringstream all;
        all << std::ifstream(file, std::ios::binary).rdbuf();
        return all.str();
    }
    static std::vector<std::uint64_t> handles(const MxDbDatabase& database) {
        std::vector<std::uint64_t> values;
        Ids sorted;
        for (const MxDbObjectId& id : drawOrder(*database.imp().block(database.imp().roots.modelSpace), sorted))
            values.push_back(id.handle().value());
        return values;
    }
    const std::filesystem::path folder;
};

TEST_F(SortentsFileTest, TheOrderIsTheSameFromBothKindsOfFile) {
    move({c, d}, false);
    drawing.erase(d);
    for (const char* name : {"a.dxf", "a.merix"}) {
        ASSERT_EQ(merix::io::writeDrawing(path(name), drawing.database).status, Mx::eOk);
        MxDbDatabase read;
        ASSERT_EQ(merix::io::readDrawing(path(name), read).status, Mx::eOk);
        EXPECT_EQ(handles(read),
                  (std::vector<std::uint64_t>{c.handle().value(), a.handle().value(), b.handle().value()}))
            << name;
    }
    const std::string text = bytes(path("a.dxf"));
    EXPECT_NE(text.find("SORTENTSTABLE\n  2\nAcDbSortentsTable\n  3\nObjectDBX Classes\n"), std::string::npos);
}

TEST_F(SortentsFileTest, ATableThatIsNotTouchedStaysByteForByte) {
    move({d}, false);
    ASSERT_EQ(merix::io::writeDrawing(path("a.dxf"), drawing.database).status, Mx::eOk);
    std::string text = bytes(path("a.dxf"));
    const std::size_t tag = text.find("331\n");
    ASSERT_NE(tag, std::string::npos);
    text.insert(tag, "  ");
    std::ofstream(path("b.dxf"), std::ios::binary) << text;
    MxDbDatabase read;
    ASSERT_EQ(merix::io::readDrawing(path("b.dxf"), read).status, Mx::eOk);
    const MxDbBlockTableRecord& block = *read.imp().block(read.imp().roots.modelSpace);
    ASSERT_NE(sortentsTable(block), nullptr);
    EXPECT_EQ(handles(read).front(), d.handle().value());
    // Another object changes; the table does not.
    MxDbObject* line = nullptr;
    mxdbOpenObject(line, block.entityIds().front(), Mx::kForWrite);
    static_cast<MxDbEntity*>(line)->transformBy(MxGeMatrix3d::translation({1, 0, 0}));
    line->close();
    ASSERT_EQ(merix::io::writeDrawing(path("c.dxf"), read).status, Mx::eOk);
    const std::string after = bytes(path("c.dxf"));
    const auto record = [](const std::string& all) {
        const std::size_t begin = all.rfind("SORTENTSTABLE\n");
        return all.substr(begin, all.find("\n  0\n", begin) - begin);
    };
    EXPECT_EQ(record(after), record(text));
    EXPECT_NE(after, text);
}

} // namespace
