// SPDX-License-Identifier: MIT
// The plan is drawn as a draughtsperson would: walls run along centre lines and are cut where an opening stands, the
// opening itself is a block scaled to its width, furniture is blocks, and dimensions run in chains outside.
#include "samples/office_plan.h"

#include <cmath>
#include <cstdio>
#include <numbers>
#include <string>

namespace samples {
namespace {

constexpr double kOuterWall = 300;
constexpr double kInnerWall = 120;
constexpr double kUnitOpening = 1000; ///< width of the door and window blocks

Point operator+(Point a, Point b) {
    return {a.x + b.x, a.y + b.y};
}
Point operator-(Point a, Point b) {
    return {a.x - b.x, a.y - b.y};
}
Point operator*(double k, Point a) {
    return {k * a.x, k * a.y};
}
double length(Point a) {
    return std::hypot(a.x, a.y);
}

enum class Kind { Gap, Window, Door };

/// An opening in a wall: its middle lies `at` from the start of segment `segment`. A door hangs at the end nearer to
/// the start of the segment or the farther one, and swings to the left or the right of the wall's direction.
struct Opening {
    std::size_t segment;
    double at;
    double width;
    Kind kind;
    bool hangsAtFarEnd = false;
    bool swingsRight = false;
};

struct Wall {
    std::vector<Vertex> path;
    bool closed;
    double thickness;
    std::vector<Opening> openings; ///< by segment, then by distance
};

void drawOpening(EntityList& list, const Opening& opening, Point from, Point direction, double thickness) {
    const double rotation = std::atan2(direction.y, direction.x) * 180 / std::numbers::pi;
    const double scale = opening.width / kUnitOpening;
    if (opening.kind == Kind::Window) {
        list.setLayer("WINDOWS");
        list.insert("WINDOW", from + opening.at * direction, rotation, scale, thickness / kOuterWall);
    } else if (opening.kind == Kind::Door) {
        const double hinge = opening.at + (opening.hangsAtFarEnd ? 0.5 : -0.5) * opening.width;
        list.setLayer("DOORS");
        list.insert("DOOR", from + hinge * direction, rotation, opening.hangsAtFarEnd ? -scale : scale,
                    opening.swingsRight ? -scale : scale);
    }
}

/// Draws the wall as wide polylines from opening to opening, and what stands in the openings.
void drawWall(EntityList& list, const Wall& wall) {
    std::vector<std::vector<Vertex>> runs(1);
    runs.back().push_back(wall.path.front());
    const std::size_t segments = wall.closed ? wall.path.size() : wall.path.size() - 1;
    for (std::size_t i = 0; i < segments; ++i) {
        const Vertex& from = wall.path[i];
        const Vertex& to = wall.path[(i + 1) % wall.path.size()];
        const Point direction = (1 / length(to.at - from.at)) * (to.at - from.at);
        for (const Opening& opening : wall.openings) {
            if (opening.segment == i) {
                runs.back().push_back({from.at + (opening.at - opening.width / 2) * direction});
                runs.push_back({{from.at + (opening.at + opening.width / 2) * direction}});
                drawOpening(list, opening, from.at, direction, wall.thickness);
            }
        }
        runs.back().push_back(to);
    }
    list.setLayer(wall.thickness == kOuterWall ? "WALLS" : "WALLS-INNER");
    if (wall.closed && runs.size() == 1) {
        runs.front().pop_back();
        list.polyline(runs.front(), true, wall.thickness);
        return;
    }
    if (wall.closed) { // the last run ends where the first begins
        runs.back().insert(runs.back().end(), runs.front().begin() + 1, runs.front().end());
        runs.erase(runs.begin());
    }
    for (const auto& run : runs) {
        list.polyline(run, false, wall.thickness);
    }
}

EntityList doorBlock() {
    EntityList list;
    list.rectangle({0, 0}, {40, kUnitOpening});
    list.arc({0, 0}, kUnitOpening, 0, 90);
    return list;
}

EntityList windowBlock() {
    EntityList list;
    const double half = kUnitOpening / 2;
    list.rectangle({-half, -kOuterWall / 2}, {half, kOuterWall / 2});
    list.line({-half, -20}, {half, -20});
    list.line({-half, 20}, {half, 20});
    return list;
}

EntityList chairBlock() {
    EntityList list;
    list.polyline({{{-220, -200}}, {{220, -200}}, {{220, 150}, 0.35}, {{-220, 150}}}, true);
    list.polyline({{{-260, 180}, -0.45}, {{260, 180}}}, false, 50);
    return list;
}

EntityList deskBlock() {
    EntityList list;
    list.rectangle({-800, 0}, {800, 800});
    list.rectangle({-300, 90}, {300, 150});
    list.rectangle({-230, 330}, {230, 480});
    list.insert("CHAIR", {0, 950});
    return list;
}

EntityList tableBlock() {
    EntityList list;
    list.polyline({{{-1500, -600}}, {{1500, -600}, 0.25}, {{1500, 600}}, {{-1500, 600}, 0.25}}, true);
    for (const double x : {-1050.0, -350.0, 350.0, 1050.0}) {
        list.insert("CHAIR", {x, 850});
        list.insert("CHAIR", {x, -850}, 180);
    }
    list.insert("CHAIR", {1920, 0}, 270);
    return list;
}

EntityList toiletBlock() {
    EntityList list;
    list.rectangle({-190, 0}, {190, 170});
    list.polyline({{{-170, 200}}, {{170, 200}}, {{180, 430}, 0.95}, {{-180, 430}}}, true);
    list.polyline({{{-120, 270}}, {{120, 270}}, {{125, 430}, 0.95}, {{-125, 430}}}, true);
    return list;
}

EntityList basinBlock() {
    EntityList list;
    list.polyline({{{-280, 0}}, {{280, 0}}, {{280, 300}, 0.6}, {{-280, 300}}}, true);
    list.circle({0, 260}, 170);
    list.circle({0, 260}, 22);
    list.line({0, 60}, {0, 140});
    return list;
}

EntityList sofaBlock() {
    EntityList list;
    list.polyline({{{-1000, 0}},
                   {{1000, 0}},
                   {{1000, 850}},
                   {{800, 850}},
                   {{800, 250}},
                   {{-800, 250}},
                   {{-800, 850}},
                   {{-1000, 850}}},
                  true);
    list.line({-800, 850}, {800, 850});
    list.line({0, 250}, {0, 850});
    return list;
}

EntityList plantBlock() {
    EntityList list;
    list.circle({0, 0}, 220);
    for (int leaf = 0; leaf < 8; ++leaf) {
        const double angle = leaf * std::numbers::pi / 4;
        const Point tip{330 * std::cos(angle), 330 * std::sin(angle)};
        list.polyline({{{0, 0}, 0.35}, {tip, 0.35}}, true);
    }
    return list;
}

EntityList treeBlock() {
    EntityList list;
    std::vector<Vertex> crown;
    for (int lobe = 0; lobe < 12; ++lobe) {
        const double angle = lobe * std::numbers::pi / 6;
        crown.push_back({{1100 * std::cos(angle), 1100 * std::sin(angle)}, 0.75});
    }
    list.polyline(crown, true);
    list.circle({0, 0}, 90);
    return list;
}

EntityList axisBlock() {
    EntityList list;
    list.circle({0, 0}, 400);
    return list;
}

EntityList northBlock() {
    EntityList list;
    list.circle({0, 0}, 800);
    list.polyline({{{0, -800}}, {{0, -100}, 0, 500, 0}, {{0, 1100}}}, false);
    list.text("N", {0, 1250}, 500, Across::Centre);
    return list;
}

EntityList tickBlock() {
    EntityList list;
    list.polyline({{{-110, -110}}, {{110, 110}}}, false, 35);
    return list;
}

void setUp(DxfDrawing& drawing) {
    drawing.linetypes = {{"CENTER", "Centre line ____ _ ____ _ ____ _", {30, -6, 6, -6}},
                         {"DASHED", "Dashed __ __ __ __ __ __ __ __", {12, -6}},
                         {"HIDDEN", "Hidden edge _ _ _ _ _ _ _ _ _", {6, -3}}};
    drawing.linetypeScale = 50;
    drawing.layers = {
        {"WALLS", 7, "Continuous", 50},       {"WALLS-INNER", 8, "Continuous", 35}, {"DOORS", 30, "Continuous", 18},
        {"WINDOWS", 150, "Continuous", 18},   {"FURNITURE", 9, "Continuous", 13},   {"SANITARY", 140, "Continuous", 13},
        {"STAIRS", 30, "Continuous", 18},     {"PLANTS", 92, "Continuous", 13},     {"AXES", 1, "CENTER", 13},
        {"AXIS-NAMES", 1, "Continuous", 18},  {"ABOVE", 8, "DASHED", 18},           {"ROOM-NAMES", 7, "Continuous"},
        {"DIMENSIONS", 92, "Continuous", 13}, {"SHEET", 7, "Continuous", 35}};
    drawing.blocks = {{"DOOR", doorBlock()},   {"WINDOW", windowBlock()}, {"CHAIR", chairBlock()},
                      {"DESK", deskBlock()},   {"TABLE", tableBlock()},   {"TOILET", toiletBlock()},
                      {"BASIN", basinBlock()}, {"SOFA", sofaBlock()},     {"PLANT", plantBlock()},
                      {"TREE", treeBlock()},   {"AXIS", axisBlock()},     {"NORTH", northBlock()},
                      {"TICK", tickBlock()}};
}

constexpr double kEast = 30000;
constexpr double kNorth = 15000;
constexpr double kCorridorSouth = 6300;
constexpr double kCorridorNorth = 8400;

void drawWalls(EntityList& list) {
    std::vector<Opening> openings;
    const auto windows = [&openings](std::size_t segment, std::initializer_list<double> middles, double width) {
        for (const double at : middles) {
            openings.push_back({segment, at, width, Kind::Window});
        }
    };
    windows(0, {1700, 4400, 7100, 9800, 13000, 15800}, 1800);
    openings.push_back({0, 19950, 900, Kind::Door, false, true});
    openings.push_back({0, 20850, 900, Kind::Door, true, true});
    windows(0, {25200, 28200}, 1800);
    windows(1, {3150}, 2400);
    openings.push_back({1, 7350, 1000, Kind::Door, false, true});
    // The north wall runs from east to west.
    windows(4, {2100, 5700}, 1800);
    windows(4, {8400, 10800}, 900);
    windows(4, {14250, 18750, 23250, 27750}, 2400);
    windows(5, {7650}, 1200);
    windows(5, {11850}, 1800);
    const double bayBulge = 0.4;
    drawWall(list,
             {{{{0, 0}}, {{kEast, 0}}, {{kEast, 10200}, bayBulge}, {{kEast, 13200}}, {{kEast, kNorth}}, {{0, kNorth}}},
              true,
              kOuterWall,
              openings});

    drawWall(list, {{{{0, kCorridorSouth}}, {{17400, kCorridorSouth}}, {{17400, 0}}},
                    false,
                    kInnerWall,
                    {{0, 10300, 1000, Kind::Door, false, true}, {0, 16400, 1000, Kind::Door, true, true}}});
    drawWall(list, {{{{23400, 0}}, {{23400, kCorridorSouth}}, {{kEast, kCorridorSouth}}},
                    false,
                    kInnerWall,
                    {{1, 1000, 1000, Kind::Door, false, true}}});
    drawWall(list, {{{{11400, 0}}, {{11400, kCorridorSouth}}}, false, kInnerWall, {}});
    drawWall(list, {{{{0, kCorridorNorth}}, {{kEast, kCorridorNorth}}},
                    false,
                    kInnerWall,
                    {{0, 3700, 900, Kind::Door, true},
                     {0, 5300, 900, Kind::Door},
                     {0, 12700, 900, Kind::Door, true},
                     {0, 15000, 1600, Kind::Gap},
                     {0, 19300, 900, Kind::Door},
                     {0, 21500, 900, Kind::Door, true},
                     {0, 24300, 1000, Kind::Door, false, true},
                     {0, 26700, 1000, Kind::Door}}});
    for (const double x : {4500.0, 9000.0, 13500.0, 18000.0, 20400.0, 22800.0, 25800.0}) {
        drawWall(list, {{{{x, kCorridorNorth}}, {{x, kNorth}}}, false, kInnerWall, {}});
    }
    list.setLayer("WALLS");
    for (const double x : {7500.0, 15000.0, 22500.0}) {
        for (const double y : {kCorridorSouth, kCorridorNorth}) {
            list.rectangle({x - 100, y - 100}, {x + 100, y + 100}, 200);
        }
    }
    list.setLayer("ABOVE");
    list.rectangle({-900, -900}, {kEast + 900, kNorth + 900});
    list.rectangle({18600, -2400}, {22200, -900});
}

void drawToilets(EntityList& list, double left, bool mirrored) {
    const double middle = left + 1200;
    const double hand = mirrored ? -1 : 1;
    drawWall(list, {{{{left, 13300}}, {{left + 2400, 13300}}},
                    false,
                    kInnerWall,
                    {{0, 600, 700, Kind::Door, false, true}, {0, 1800, 700, Kind::Door, false, true}}});
    drawWall(list, {{{{middle, 13300}}, {{middle, kNorth}}}, false, kInnerWall, {}});
    list.setLayer("SANITARY");
    list.insert("TOILET", {left + 600, 14850}, 180);
    list.insert("TOILET", {left + 1800, 14850}, 180);
    const double wall = middle - hand * 1140;
    list.insert("BASIN", {wall, 10600}, mirrored ? 90 : 270);
    list.insert("BASIN", {wall, 11500}, mirrored ? 90 : 270);
}

void drawStairs(EntityList& list) {
    list.setLayer("STAIRS");
    constexpr double kWest = 22860;
    constexpr double kEastSide = 25740;
    constexpr double kFirst = 10300;
    constexpr int kTreads = 11;
    constexpr double kGoing = 280;
    constexpr double kLast = kFirst + kGoing * kTreads;
    for (int tread = 0; tread <= kTreads; ++tread) {
        const double y = kFirst + kGoing * tread;
        list.line({kWest, y}, {24250, y});
        list.line({24350, y}, {kEastSide, y});
    }
    list.rectangle({24250, kFirst}, {24350, kLast});
    list.circle({23550, kFirst}, 70);
    list.polyline({{{23550, kFirst}},
                   {{23550, 14100}},
                   {{25050, 14100}},
                   {{25050, kFirst + 700}},
                   {{25050, kFirst + 700}, 0, 260, 0},
                   {{25050, kFirst + 150}}},
                  false);
    list.text("UP", {23000, kFirst - 350}, 220);
}

void drawFurniture(EntityList& list) {
    list.setLayer("FURNITURE");
    for (const double x : {1500.0, 4000.0, 6500.0}) {
        list.insert("DESK", {x, 2300}, 180);
        list.insert("DESK", {x, 2300});
    }
    list.insert("DESK", {1500, 5200}, 180);
    list.insert("DESK", {4000, 5200}, 180);
    list.insert("DESK", {6500, 5200}, 180);
    list.rectangle({10840, 500}, {11300, 4300});
    for (int shelf = 1; shelf < 4; ++shelf) {
        list.line({10840, 500 + 950.0 * shelf}, {11300, 500 + 950.0 * shelf});
    }
    list.insert("TABLE", {14300, 3100});
    for (const double x : {2250.0, 6750.0, 11250.0}) {
        list.insert("DESK", {x, 12900}, 180);
        list.rectangle({x - 2150, 9200}, {x - 1700, 11400});
        list.line({x - 2150, 10300}, {x - 1700, 10300});
    }
    // Reception: a curved counter, two sofas.
    list.polyline({{{18300, 5700}, 0.4142135623730951}, {{20300, 3700}}}, false, 500);
    list.insert("CHAIR", {19750, 5150}, 315);
    list.insert("SOFA", {23250, 2300}, 90);
    list.insert("SOFA", {23250, 4700}, 90);
    list.circle({22000, 3500}, 400);
    // Archive: rows of shelves.
    for (const double y : {800.0, 1900.0, 3000.0, 4100.0}) {
        list.rectangle({25600, y}, {29200, y + 500});
        for (int bay = 1; bay < 4; ++bay) {
            list.line({25600 + 900.0 * bay, y}, {25600 + 900.0 * bay, y + 500});
        }
    }
    // Kitchen: worktop along the window, a sink, a hob, a table.
    list.polyline(
        {{{13560, 12400}}, {{14160, 12400}}, {{14160, 14250}}, {{17940, 14250}}, {{17940, 14850}}, {{13560, 14850}}},
        true);
    for (const Point ring : {Point{13710, 12750}, Point{14000, 12750}, Point{13710, 13100}, Point{14000, 13100}}) {
        list.circle(ring, 105);
    }
    list.circle({16000, 11200}, 600);
    for (int seat = 0; seat < 4; ++seat) {
        const double angle = (45 + 90.0 * seat) * std::numbers::pi / 180;
        list.insert("CHAIR", {16000 + 850 * std::cos(angle), 11200 + 850 * std::sin(angle)}, 90.0 * seat - 45);
    }
    list.insert("TABLE", {27900, 11600}, 90, 0.8, 0.8);
    list.setLayer("SANITARY");
    list.rectangle({15500, 14330}, {16250, 14770});
    list.circle({15875, 14550}, 30);
    drawToilets(list, 18000, true);
    drawToilets(list, 20400, false);
    list.setLayer("PLANTS");
    for (const Point at : {Point{600, 600}, Point{17850, 600}, Point{22900, 600}, Point{29400, 14400},
                           Point{12000, 600}, Point{600, 5700}}) {
        list.insert("PLANT", at);
    }
    for (const Point at : {Point{3000, -3000}, Point{14600, -2900}, Point{25800, -3100}}) {
        list.insert("TREE", at, at.x / 500);
    }
}

void drawRoomNames(EntityList& list) {
    struct Room {
        const char* number;
        const char* name;
        const char* area;
        Point at;
    };
    list.setLayer("ROOM-NAMES");
    for (const Room& room :
         {Room{"0.01", "OPEN OFFICE", "69.1 m\xB2", {9000, 3300}}, Room{"0.02", "MEETING", "35.6 m\xB2", {14400, 5300}},
          Room{"0.03", "RECEPTION", "36.9 m\xB2", {20600, 2300}}, Room{"0.04", "ARCHIVE", "38.9 m\xB2", {27400, 5450}},
          Room{"0.05", "CORRIDOR", "58.9 m\xB2", {11200, 7350}}, Room{"0.06", "OFFICE 1", "27.8 m\xB2", {2500, 10300}},
          Room{"0.07", "OFFICE 2", "27.8 m\xB2", {7000, 10300}}, Room{"0.08", "OFFICE 3", "27.8 m\xB2", {11500, 10300}},
          Room{"0.09", "KITCHEN", "28.0 m\xB2", {16000, 13300}}, Room{"0.10", "WC W", "14.6 m\xB2", {19350, 12350}},
          Room{"0.11", "WC M", "14.6 m\xB2", {21450, 12350}}, Room{"0.12", "STAIRS", "18.4 m\xB2", {24300, 9800}},
          Room{"0.13", "CONFERENCE", "29.2 m\xB2", {28300, 9250}}}) {
        list.text(room.name, room.at, 260, Across::Centre, Upright::Middle);
        list.text(std::string(room.number) + "   " + room.area, room.at - Point{0, 400}, 180, Across::Centre,
                  Upright::Middle);
    }
}

/// A chain of dimensions along a line; `stops` are distances along it.
void drawDimensions(EntityList& list, Point origin, Point along, const std::vector<double>& stops, double extension) {
    const Point left{-along.y, along.x};
    const double rotation = along.x == 0 ? 90 : 0;
    list.setLayer("DIMENSIONS");
    list.line(origin + (stops.front() - 250) * along, origin + (stops.back() + 250) * along);
    for (std::size_t i = 0; i < stops.size(); ++i) {
        const Point at = origin + stops[i] * along;
        list.insert("TICK", at, rotation);
        list.line(at - 200.0 * left, at + extension * left);
        if (i > 0) {
            char measure[16];
            std::snprintf(measure, sizeof measure, "%.0f", stops[i] - stops[i - 1]);
            const Point middle = origin + 0.5 * (stops[i] + stops[i - 1]) * along;
            list.text(measure, middle + 90.0 * left, 230, Across::Centre, Upright::Bottom, rotation);
        }
    }
}

void drawAxesAndDimensions(EntityList& list) {
    const double ends = 4500;
    const auto axis = [&list](const std::string& name, Point from, Point to) {
        list.setLayer("AXES");
        list.line(from, to);
        list.setLayer("AXIS-NAMES");
        list.insert("AXIS", to + (400 / length(to - from)) * (to - from));
        list.text(name, to + (400 / length(to - from)) * (to - from), 350, Across::Centre, Upright::Middle);
    };
    const std::vector<double> columns{0, 7500, 15000, 22500, kEast};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        axis(std::string(1, static_cast<char>('A' + i)), {columns[i], -1500}, {columns[i], kNorth + ends});
    }
    const std::vector<double> rows{0, kCorridorSouth, kCorridorNorth, kNorth};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        axis(std::to_string(i + 1), {kEast + 1500, rows[i]}, {-ends, rows[i]});
    }
    drawDimensions(list, {0, kNorth + 2300}, {1, 0}, {0, 4500, 9000, 13500, 18000, 20400, 22800, 25800, kEast}, 200);
    drawDimensions(list, {0, kNorth + 3300}, {1, 0}, columns, 200);
    drawDimensions(list, {-2100, 0}, {0, 1}, rows, 200);
    drawDimensions(list, {-3100, 0}, {0, 1}, {0, kNorth}, 200);
}

void drawSheet(EntityList& list, Point low, Point high) {
    list.setLayer("SHEET");
    list.rectangle(low, high, 70);
    const Point corner{high.x - 17000, low.y};
    list.polyline({{{corner.x, low.y}}, {{corner.x, low.y + 3000}}, {{high.x, low.y + 3000}}}, false, 50);
    list.line({corner.x + 8500, low.y}, {corner.x + 8500, low.y + 3000});
    list.line({corner.x + 13000, low.y}, {corner.x + 13000, low.y + 3000});
    list.line({corner.x + 8500, low.y + 1500}, {high.x, low.y + 1500});
    list.text("HARBOUR STREET OFFICES", {corner.x + 400, low.y + 1850}, 420);
    list.text("Ground floor plan", {corner.x + 400, low.y + 1050}, 320);
    list.text("All dimensions in millimetres. Check on site.", {corner.x + 400, low.y + 400}, 200);
    const auto field = [&](double x, double y, const char* name, const char* value) {
        list.text(name, {corner.x + x + 250, low.y + y + 1050}, 180);
        list.text(value, {corner.x + x + 250, low.y + y + 380}, 360);
    };
    field(8500, 1500, "SCALE", "1:100 / A3");
    field(13000, 1500, "SHEET", "A-101");
    field(8500, 0, "DATE", "2026-03-07");
    field(13000, 0, "REVISION", "C");
    list.insert("NORTH", {low.x + 1800, low.y + 1700});
    const Point bar{low.x + 4200, low.y + 1200};
    for (int metre = 0; metre <= 5; ++metre) {
        const double x = bar.x + 1000.0 * metre;
        if (metre < 5) {
            list.polyline({{{x, bar.y}}, {{x + 1000, bar.y}}}, false, metre % 2 == 0 ? 180 : 40);
        }
        list.text(std::to_string(metre) + (metre == 5 ? " m" : ""), {x, bar.y + 200}, 220, Across::Centre);
    }
}

} // namespace

DxfDrawing officePlan() {
    DxfDrawing drawing;
    setUp(drawing);
    const Point low{-6200, -8200};
    const Point high{32600, 20800};
    const double halfFrame = 35;
    drawing.extentsMin = low - Point{halfFrame, halfFrame};
    drawing.extentsMax = high + Point{halfFrame, halfFrame};
    EntityList& list = drawing.model;
    drawSheet(list, low, high);
    drawAxesAndDimensions(list);
    drawFurniture(list);
    drawWalls(list);
    drawStairs(list);
    drawRoomNames(list);
    return drawing;
}

DxfDrawing roomGrid(std::size_t entities) {
    constexpr double kWidth = 6000;
    constexpr double kDepth = 5000;
    constexpr std::size_t kEntitiesOfRoom = 16;
    DxfDrawing drawing;
    setUp(drawing);
    EntityList& list = drawing.model;
    const std::size_t rooms = entities / kEntitiesOfRoom + 1;
    const auto across = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(rooms))));
    const std::size_t rows = (rooms + across - 1) / across;
    const Point low{-1000, -1000};
    const Point high{static_cast<double>(across) * kWidth + 1000, static_cast<double>(rows) * kDepth + 1000};
    drawing.extentsMin = low - Point{100, 100};
    drawing.extentsMax = high + Point{100, 100};
    list.setLayer("SHEET");
    list.rectangle(low, high, 200);
    for (std::size_t room = 0; list.entities().size() < entities; ++room) {
        const std::size_t row = room / across;
        const std::size_t column = room % across;
        const Point at{static_cast<double>(column) * kWidth, static_cast<double>(row) * kDepth};
        drawWall(list, {{{at + Point{0, kDepth}}, {at}, {at + Point{kWidth, 0}}},
                        false,
                        kInnerWall,
                        {{0, 2500, 900, Kind::Door}, {1, 3000, 1800, Kind::Window}}});
        list.setLayer("FURNITURE");
        list.insert("DESK", at + Point{1500, 2000}, 180);
        list.insert("DESK", at + Point{1500, 2000});
        list.circle(at + Point{4300, 3300}, 600);
        list.insert("CHAIR", at + Point{4300, 4150});
        list.arc(at + Point{kWidth, 0}, 1200, 90, 180);
        list.line(at + Point{3000, 0}, at + Point{3000, kDepth});
        list.setLayer("PLANTS");
        list.insert("PLANT", at + Point{5500, 4500}, static_cast<double>(room % 8) * 45);
        list.setLayer("ABOVE");
        list.line(at + Point{0, kDepth}, at + Point{kWidth, 0});
        list.setLayer("ROOM-NAMES");
        list.text("ROOM " + std::to_string(room + 1), at + Point{3000, 700}, 260, Across::Centre, Upright::Middle);
        list.text("30.0 m\xB2", at + Point{3000, 350}, 180, Across::Centre, Upright::Middle);
        list.setLayer("AXES");
        list.line(at + Point{kWidth / 2, -500}, at + Point{kWidth / 2, kDepth + 500});
    }
    list.keepFirst(entities);
    return drawing;
}

} // namespace samples
