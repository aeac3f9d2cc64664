// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace samples {

/// A point of the drawing plane, in drawing units (millimetres).
struct Point {
    double x = 0;
    double y = 0;
};

/// A polyline vertex. A bulge is the tangent of a quarter of the arc's angle, positive to the left; widths are those
/// at the start and the end of the segment that begins here.
struct Vertex {
    Point at;
    double bulge = 0;
    double startWidth = 0;
    double endWidth = 0;
};

enum class Across { Left = 0, Centre = 1, Right = 2 };
enum class Upright { Baseline = 0, Bottom = 1, Middle = 2, Top = 3 };

/// The entities of one block or of model space, in drawing order. Every function adds one entity on the current layer.
class EntityList {
public:
    void setLayer(std::string_view layer) { m_layer = layer; }

    void line(Point from, Point to);
    void circle(Point centre, double radius);
    /// Counter-clockwise from startAngle to endAngle, degrees.
    void arc(Point centre, double radius, double startAngle, double endAngle);
    void polyline(const std::vector<Vertex>& vertices, bool closed, double constantWidth = 0);
    void rectangle(Point low, Point high, double constantWidth = 0);
    /// rotation in degrees.
    void text(std::string_view value, Point at, double height, Across across = Across::Left,
              Upright upright = Upright::Baseline, double rotation = 0);
    /// A reference to a block; rotation in degrees, negative scales mirror.
    void insert(std::string_view block, Point at, double rotation = 0, double scaleX = 1, double scaleY = 1);

    struct Entity {
        std::string kind;
        std::string layer;
        std::string tags; ///< everything that follows the common part, from its subclass marker on
    };
    const std::vector<Entity>& entities() const { return m_entities; }
    void keepFirst(std::size_t count) { m_entities.resize(count); }

private:
    void add(std::string_view kind, std::string tags);

    std::string m_layer = "0";
    std::vector<Entity> m_entities;
};

/// A drawing that can be written as DXF text of version AC1015 (2000).
struct DxfDrawing {
    struct Linetype {
        std::string name;
        std::string description;
        std::vector<double> lengths; ///< dash above zero, gap below, dot zero
    };
    struct Layer {
        std::string name;
        int colour = 7; ///< colour index
        std::string linetype = "Continuous";
        int lineweight = -3; ///< hundredths of a millimetre, -3 the default
    };
    struct Block {
        std::string name;
        EntityList entities;
    };

    std::vector<Linetype> linetypes;
    std::vector<Layer> layers;
    std::vector<Block> blocks;
    EntityList model;
    Point extentsMin;
    Point extentsMax;
    double linetypeScale = 1;

    std::string toDxf() const;
};

} // namespace samples
