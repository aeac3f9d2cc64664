// SPDX-License-Identifier: MIT
#include "samples/dxf_drawing.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <utility>

namespace samples {
namespace {

using Handle = std::uint64_t;

std::string hex(Handle handle) {
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), handle, 16).ptr;
    std::string text(digits.data(), end);
    for (char& c : text) {
        if (c >= 'a' && c <= 'f') {
            c = static_cast<char>(c - 'a' + 'A');
        }
    }
    return text;
}

/// Tags as text: the code right-aligned in three columns on a line of its own, then the value.
class TagText {
public:
    TagText& str(int code, std::string_view value) {
        std::array<char, 8> line{};
        std::snprintf(line.data(), line.size(), "%3d", code);
        m_text.append(line.data()).append("\n").append(value).append("\n");
        return *this;
    }
    TagText& num(int code, long value) { return str(code, std::to_string(value)); }
    TagText& ref(int code, Handle value) { return str(code, hex(value)); }
    TagText& real(int code, double value) {
        std::array<char, 32> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value + 0.0).ptr;
        std::string text(digits.data(), end);
        if (text.find_first_of(".e") == std::string::npos) {
            text += ".0";
        }
        return str(code, text);
    }
    TagText& point(int code, Point value) { return real(code, value.x).real(code + 10, value.y); }
    TagText& point3(int code, Point value) { return point(code, value).real(code + 20, 0); }
    TagText& raw(std::string_view tags) {
        m_text.append(tags);
        return *this;
    }
    std::string take() { return std::exchange(m_text, {}); }

private:
    std::string m_text;
};

} // namespace

void EntityList::add(std::string_view kind, std::string tags) {
    m_entities.push_back({std::string(kind), m_layer, std::move(tags)});
}

void EntityList::line(Point from, Point to) {
    add("LINE", TagText().str(100, "AcDbLine").point3(10, from).point3(11, to).take());
}

void EntityList::circle(Point centre, double radius) {
    add("CIRCLE", TagText().str(100, "AcDbCircle").point3(10, centre).real(40, radius).take());
}

void EntityList::arc(Point centre, double radius, double startAngle, double endAngle) {
    TagText tags;
    tags.str(100, "AcDbCircle").point3(10, centre).real(40, radius);
    tags.str(100, "AcDbArc").real(50, startAngle).real(51, endAngle);
    add("ARC", tags.take());
}

void EntityList::polyline(const std::vector<Vertex>& vertices, bool closed, double constantWidth) {
    TagText tags;
    tags.str(100, "AcDbPolyline").num(90, static_cast<long>(vertices.size())).num(70, closed ? 1 : 0);
    tags.real(43, constantWidth);
    for (const Vertex& vertex : vertices) {
        tags.point(10, vertex.at);
        if (vertex.startWidth != 0 || vertex.endWidth != 0) {
            tags.real(40, vertex.startWidth).real(41, vertex.endWidth);
        }
        if (vertex.bulge != 0) {
            tags.real(42, vertex.bulge);
        }
    }
    add("LWPOLYLINE", tags.take());
}

void EntityList::rectangle(Point low, Point high, double constantWidth) {
    polyline({{low}, {{high.x, low.y}}, {high}, {{low.x, high.y}}}, true, constantWidth);
}

void EntityList::text(std::string_view value, Point at, double height, Across across, Upright upright,
                      double rotation) {
    TagText tags;
    tags.str(100, "AcDbText").point3(10, at).real(40, height).str(1, value);
    if (rotation != 0) {
        tags.real(50, rotation);
    }
    const bool aligned = across != Across::Left || upright != Upright::Baseline;
    if (aligned) {
        tags.num(72, static_cast<int>(across)).point3(11, at);
    }
    tags.str(100, "AcDbText");
    if (upright != Upright::Baseline) {
        tags.num(73, static_cast<int>(upright));
    }
    add("TEXT", tags.take());
}

void EntityList::insert(std::string_view block, Point at, double rotation, double scaleX, double scaleY) {
    TagText tags;
    tags.str(100, "AcDbBlockReference").str(2, block).point3(10, at);
    if (scaleX != 1 || scaleY != 1) {
        tags.real(41, scaleX).real(42, scaleY).real(43, 1);
    }
    if (rotation != 0) {
        tags.real(50, rotation);
    }
    add("INSERT", tags.take());
}

namespace {

/// Handles of what the file always holds; everything else is numbered on from kFirstFree in file order.
enum : Handle {
    kVportTable = 0x1,
    kLtypeTable,
    kLayerTable,
    kStyleTable,
    kViewTable,
    kUcsTable,
    kAppIdTable,
    kDimStyleTable,
    kBlockRecordTable,
    kRootDictionary,
    kGroupDictionary,
    kLayoutDictionary,
    kModelRecord,
    kPaperRecord,
    kModelLayout,
    kPaperLayout,
    kStandardStyle,
    kFirstFree
};

class Writer {
public:
    explicit Writer(const DxfDrawing& drawing)
        : m_drawing(drawing) {}

    std::string write();

private:
    const DxfDrawing& m_drawing;
    TagText m_out;
    Handle m_next = kFirstFree;

    void section(std::string_view name) { m_out.str(0, "SECTION").str(2, name); }
    void endSection() { m_out.str(0, "ENDSEC"); }

    void table(std::string_view name, Handle handle, std::size_t size) {
        m_out.str(0, "TABLE").str(2, name).ref(5, handle).ref(330, 0).str(100, "AcDbSymbolTable");
        m_out.num(70, static_cast<long>(size));
    }
    void endTable() { m_out.str(0, "ENDTAB"); }

    void record(std::string_view kind, std::string_view subclass, Handle table, std::string_view name, Handle handle,
                int handleCode = 5) {
        m_out.str(0, kind).ref(handleCode, handle).ref(330, table).str(100, "AcDbSymbolTableRecord");
        m_out.str(100, subclass).str(2, name);
    }

    void header();
    void viewports();
    void linetypes();
    void layers();
    void otherTables();
    void layout(std::string_view name, Handle handle, Handle record, int order);
    void objects();
    void entities(const EntityList& list, Handle owner);
    void blockRecord(std::string_view name, Handle handle, Handle layout);
    void block(std::string_view name, Handle record, bool paper, const EntityList& list);
    void blockRecordsAndBlocks();
};

void Writer::header() {
    const Point low = m_drawing.extentsMin;
    const Point high = m_drawing.extentsMax;
    const auto variable = [this](std::string_view name) -> TagText& { return m_out.str(9, name); };
    section("HEADER");
    variable("$ACADVER").str(1, "AC1015");
    variable("$DWGCODEPAGE").str(3, "ANSI_1252");
    variable("$INSBASE").point3(10, {});
    variable("$EXTMIN").point3(10, low);
    variable("$EXTMAX").point3(10, high);
    variable("$LIMMIN").point(10, low);
    variable("$LIMMAX").point(10, high);
    variable("$LTSCALE").real(40, m_drawing.linetypeScale);
    variable("$TEXTSIZE").real(40, 250);
    variable("$TEXTSTYLE").str(7, "Standard");
    variable("$CLAYER").str(8, "0");
    variable("$CELTYPE").str(6, "ByLayer");
    variable("$CECOLOR").num(62, 256);
    variable("$LUNITS").num(70, 2);
    variable("$LUPREC").num(70, 0);
    variable("$INSUNITS").num(70, 4);
    variable("$MEASUREMENT").num(70, 1);
    variable("$TILEMODE").num(70, 1);
    variable("$HANDSEED").ref(5, m_next);
    endSection();
    section("CLASSES");
    endSection();
}

void Writer::viewports() {
    const Point low = m_drawing.extentsMin;
    const Point high = m_drawing.extentsMax;
    table("VPORT", kVportTable, 1);
    record("VPORT", "AcDbViewportTableRecord", kVportTable, "*Active", m_next++);
    m_out.num(70, 0).point(10, {0, 0}).point(11, {1, 1});
    m_out.point(12, {(low.x + high.x) / 2, (low.y + high.y) / 2});
    m_out.point(13, {0, 0}).point(14, {10, 10}).point(15, {10, 10});
    m_out.point(16, {0, 0}).real(36, 1).point3(17, {0, 0});
    m_out.real(40, (high.y - low.y) * 1.05).real(41, 1.6).real(42, 50).real(43, 0).real(44, 0);
    m_out.real(50, 0).real(51, 0).num(71, 0).num(72, 1000).num(73, 1).num(74, 3);
    m_out.num(75, 0).num(76, 0).num(77, 0).num(78, 0);
    endTable();
}

void Writer::linetypes() {
    table("LTYPE", kLtypeTable, m_drawing.linetypes.size() + 3);
    const auto linetype = [this](const DxfDrawing::Linetype& type) {
        double length = 0;
        for (const double element : type.lengths) {
            length += element < 0 ? -element : element;
        }
        record("LTYPE", "AcDbLinetypeTableRecord", kLtypeTable, type.name, m_next++);
        m_out.num(70, 0).str(3, type.description).num(72, 65);
        m_out.num(73, static_cast<long>(type.lengths.size())).real(40, length);
        for (const double element : type.lengths) {
            m_out.real(49, element).num(74, 0);
        }
    };
    linetype({"ByBlock", "", {}});
    linetype({"ByLayer", "", {}});
    linetype({"Continuous", "Solid line", {}});
    for (const auto& type : m_drawing.linetypes) {
        linetype(type);
    }
    endTable();
}

void Writer::layers() {
    table("LAYER", kLayerTable, m_drawing.layers.size() + 1);
    const auto layer = [this](const DxfDrawing::Layer& value) {
        record("LAYER", "AcDbLayerTableRecord", kLayerTable, value.name, m_next++);
        m_out.num(70, 0).num(62, value.colour).str(6, value.linetype).num(370, value.lineweight);
    };
    layer({"0"});
    for (const auto& value : m_drawing.layers) {
        layer(value);
    }
    endTable();
}

void Writer::otherTables() {
    table("STYLE", kStyleTable, 1);
    record("STYLE", "AcDbTextStyleTableRecord", kStyleTable, "Standard", kStandardStyle);
    m_out.num(70, 0).real(40, 0).real(41, 1).real(50, 0).num(71, 0).real(42, 250).str(3, "DejaVuSans.ttf").str(4, "");
    endTable();
    table("VIEW", kViewTable, 0);
    endTable();
    table("UCS", kUcsTable, 0);
    endTable();
    table("APPID", kAppIdTable, 1);
    record("APPID", "AcDbRegAppTableRecord", kAppIdTable, "ACAD", m_next++);
    m_out.num(70, 0);
    endTable();
    table("DIMSTYLE", kDimStyleTable, 1);
    m_out.str(100, "AcDbDimStyleTable").num(71, 1);
    record("DIMSTYLE", "AcDbDimStyleTableRecord", kDimStyleTable, "Standard", m_next++, 105);
    m_out.num(70, 0).ref(340, kStandardStyle);
    endTable();
}

void Writer::layout(std::string_view name, Handle handle, Handle record, int order) {
    m_out.str(0, "LAYOUT").ref(5, handle).ref(330, kLayoutDictionary);
    m_out.str(100, "AcDbPlotSettings")
        .str(1, "")
        .str(2, "none_device")
        .str(4, "ISO_A3_(420.00_x_297.00_MM)")
        .str(6, "");
    m_out.real(40, 7.5).real(41, 7.5).real(42, 7.5).real(43, 7.5).real(44, 420).real(45, 297);
    m_out.real(46, 0).real(47, 0).real(48, 0).real(49, 0).real(140, 0).real(141, 0).real(142, 1).real(143, 100);
    m_out.num(70, order == 0 ? 1712 : 688).num(72, 1).num(73, 0).num(74, order == 0 ? 1 : 5).str(7, "").num(75, 16);
    m_out.real(147, 0.01).real(148, 0).real(149, 0);
    const Point low = order == 0 ? m_drawing.extentsMin : Point{};
    const Point high = order == 0 ? m_drawing.extentsMax : Point{420, 297};
    m_out.str(100, "AcDbLayout").str(1, name).num(70, 1).num(71, order);
    m_out.point(10, low).point(11, high).point3(12, {}).point3(14, low).point3(15, high).real(146, 0);
    m_out.point3(13, {}).point3(16, {1, 0}).point3(17, {0, 1}).num(76, 0).ref(330, record);
}

void Writer::objects() {
    section("OBJECTS");
    const auto dictionary = [this](Handle handle, Handle owner) -> TagText& {
        return m_out.str(0, "DICTIONARY").ref(5, handle).ref(330, owner).str(100, "AcDbDictionary").num(281, 1);
    };
    dictionary(kRootDictionary, 0)
        .str(3, "ACAD_GROUP")
        .ref(350, kGroupDictionary)
        .str(3, "ACAD_LAYOUT")
        .ref(350, kLayoutDictionary);
    dictionary(kGroupDictionary, kRootDictionary);
    dictionary(kLayoutDictionary, kRootDictionary)
        .str(3, "Model")
        .ref(350, kModelLayout)
        .str(3, "Layout1")
        .ref(350, kPaperLayout);
    layout("Model", kModelLayout, kModelRecord, 0);
    layout("Layout1", kPaperLayout, kPaperRecord, 1);
    endSection();
}

void Writer::entities(const EntityList& list, Handle owner) {
    for (const EntityList::Entity& entity : list.entities()) {
        m_out.str(0, entity.kind).ref(5, m_next++).ref(330, owner);
        m_out.str(100, "AcDbEntity").str(8, entity.layer).raw(entity.tags);
    }
}

void Writer::blockRecord(std::string_view name, Handle handle, Handle layout) {
    record("BLOCK_RECORD", "AcDbBlockTableRecord", kBlockRecordTable, name, handle);
    m_out.ref(340, layout);
}

void Writer::block(std::string_view name, Handle record, bool paper, const EntityList& list) {
    const auto common = [&](std::string_view kind) {
        m_out.str(0, kind).ref(5, m_next++).ref(330, record).str(100, "AcDbEntity");
        if (paper) {
            m_out.num(67, 1);
        }
        m_out.str(8, "0");
    };
    common("BLOCK");
    m_out.str(100, "AcDbBlockBegin").str(2, name).num(70, 0).point3(10, {}).str(3, name).str(1, "");
    entities(list, record);
    common("ENDBLK");
    m_out.str(100, "AcDbBlockEnd");
}

void Writer::blockRecordsAndBlocks() {
    table("BLOCK_RECORD", kBlockRecordTable, m_drawing.blocks.size() + 2);
    blockRecord("*Model_Space", kModelRecord, kModelLayout);
    blockRecord("*Paper_Space", kPaperRecord, kPaperLayout);
    Handle record = m_next;
    for (const auto& value : m_drawing.blocks) {
        blockRecord(value.name, m_next++, 0);
    }
    endTable();
    endSection();
    section("BLOCKS");
    block("*Model_Space", kModelRecord, false, {});
    block("*Paper_Space", kPaperRecord, true, {});
    for (const auto& value : m_drawing.blocks) {
        block(value.name, record++, false, value.entities);
    }
    endSection();
}

std::string Writer::write() {
    section("TABLES");
    viewports();
    linetypes();
    layers();
    otherTables();
    blockRecordsAndBlocks();
    section("ENTITIES");
    entities(m_drawing.model, kModelRecord);
    endSection();
    objects();
    m_out.str(0, "EOF");
    // The header stands first and names the first free handle, which is known only now.
    const std::string body = m_out.take();
    header();
    return m_out.take() + body;
}

} // namespace

std::string DxfDrawing::toDxf() const {
    return Writer(*this).write();
}

} // namespace samples
