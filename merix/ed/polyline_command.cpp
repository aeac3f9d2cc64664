// SPDX-License-Identifier: MIT
// PLINE: lines and arcs with widths in one polyline, which stands in the drawing from its first segment on.
#include "merix/ed/polyline_command.h"

#include "merix/ed/arc_geometry.h"
#include "merix/ed/drawing_access.h"
#include "merix/ed/prompter.h"
#include "merix/ed/view_commands.h"

namespace merix::ed {

namespace {

class PolylineRun {
public:
    void run();

private:
    bool askStart();
    /// False when the polyline is done.
    bool step();
    bool takeOption(const QString& option);
    int askNext(MxGePoint3d& next);
    void askWidth();
    void askSecondPoint();
    void addSegment(const MxGePoint3d& to, double bulge);
    void addTo(const MxGePoint3d& next);
    bool close();
    void takeBack();
    /// The entity becomes what the vertices say; there is none while they are fewer than two.
    void showVertices();
    MxGePoint3d at(std::size_t place) const {
        return {m_vertices[place].point.x, m_vertices[place].point.y, m_elevation};
    }
    MxGePoint3d end() const { return at(m_vertices.size() - 1); }
    /// Direction in which the last segment ends.
    double tangent() const;

    std::vector<MxGiPolylineVertex> m_vertices;
    double m_elevation = 0.0, m_startWidth = 0.0, m_endWidth = 0.0;
    bool m_arcs = false, m_closed = false;
    MxDbObjectId m_id;
};

bool PolylineRun::askStart() {
    Prompter& prompter = Prompter::instance();
    MxGePoint3d start;
    prompter.init(Prompter::kNotEmpty, {});
    if (prompter.getPoint(nullptr, QStringLiteral("Start of the polyline: "), start) != kInputNormal)
        return false;
    m_elevation = start.z;
    m_vertices.push_back({{start.x, start.y}, 0.0, 0.0, 0.0});
    return true;
}

int PolylineRun::askNext(MxGePoint3d& next) {
    Prompter& prompter = Prompter::instance();
    prompter.init(0, m_arcs ? QStringLiteral("Second Line Close Undo Width") : QStringLiteral("Arc Close Undo Width"));
    const MxGePoint3d base = end();
    return prompter.getPoint(&base,
                             m_arcs ? QStringLiteral("End of the arc or [Second/Line/Close/Undo/Width]: ")
                                    : QStringLiteral("Next point or [Arc/Close/Undo/Width]: "),
                             next);
}

bool PolylineRun::step() {
    MxGePoint3d next;
    const int result = askNext(next);
    if (result == kInputNormal) {
        addTo(next);
        return true;
    }
    return result == kInputKeyword && takeOption(Prompter::instance().lastKeyword());
}

bool PolylineRun::takeOption(const QString& option) {
    if (option == QLatin1String("Arc") || option == QLatin1String("Line"))
        m_arcs = option == QLatin1String("Arc");
    else if (option == QLatin1String("Width"))
        askWidth();
    else if (option == QLatin1String("Second"))
        askSecondPoint();
    else if (option == QLatin1String("Undo"))
        takeBack();
    else
        return !close();
    return !Prompter::instance().wasCancelled();
}

double PolylineRun::tangent() const {
    const std::size_t count = m_vertices.size();
    return count < 2 ? 0.0 : endDirection(at(count - 2), at(count - 1), m_vertices[count - 2].bulge);
}

void PolylineRun::addTo(const MxGePoint3d& next) {
    if (next.x == end().x && next.y == end().y) {
        tell(QStringLiteral("The segment has no length."));
        return;
    }
    const auto bulge = m_arcs ? tangentBulge(end(), tangent(), next) : 0.0;
    if (bulge)
        addSegment(next, *bulge);
    else
        tell(QStringLiteral("No arc leads straight back."));
}

void PolylineRun::askSecondPoint() {
    Prompter& prompter = Prompter::instance();
    MxGePoint3d second, last;
    const MxGePoint3d base = end();
    prompter.init(Prompter::kNotEmpty, {});
    if (prompter.getPoint(&base, QStringLiteral("Second point of the arc: "), second) != kInputNormal)
        return;
    prompter.init(Prompter::kNotEmpty, {});
    if (prompter.getPoint(&second, QStringLiteral("End of the arc: "), last) != kInputNormal)
        return;
    if (const double bulge = bulgeThrough(base, second, last); bulge != 0.0)
        addSegment(last, bulge);
    else
        tell(QStringLiteral("There is no arc through points on a line."));
}

void PolylineRun::askWidth() {
    Prompter& prompter = Prompter::instance();
    double start = m_startWidth;
    const MxGePoint3d base = end();
    prompter.init(Prompter::kNotNegative, {});
    int result = prompter.getDistance(&base, QStringLiteral("Width at the start <%1>: ").arg(start), start);
    if (result != kInputNormal && result != kInputNone)
        return;
    double finish = start;
    prompter.init(Prompter::kNotNegative, {});
    result = prompter.getDistance(&base, QStringLiteral("Width at the end <%1>: ").arg(finish), finish);
    if (result != kInputNormal && result != kInputNone)
        return;
    m_startWidth = start;
    m_endWidth = finish;
}

void PolylineRun::addSegment(const MxGePoint3d& to, double bulge) {
    MxGiPolylineVertex& from = m_vertices.back();
    from.bulge = bulge;
    from.startWidth = m_startWidth;
    from.endWidth = m_endWidth;
    m_startWidth = m_endWidth; // the next goes on as wide as this one ends
    m_vertices.push_back({{to.x, to.y}, 0.0, m_endWidth, m_endWidth});
    showVertices();
}

bool PolylineRun::close() {
    const auto bulge = m_arcs ? tangentBulge(end(), tangent(), at(0)) : 0.0;
    if (m_vertices.size() < 3 && !(m_arcs && m_vertices.size() == 2 && bulge)) {
        tell(QStringLiteral("There is nothing to close yet."));
        return false;
    }
    if (!bulge) {
        tell(QStringLiteral("No arc leads straight back."));
        return false;
    }
    m_vertices.back().bulge = *bulge;
    m_vertices.back().startWidth = m_startWidth;
    m_vertices.back().endWidth = m_endWidth;
    m_closed = true;
    showVertices();
    return true;
}

void PolylineRun::takeBack() {
    if (m_vertices.size() < 2) {
        tell(QStringLiteral("There is no segment to take back."));
        return;
    }
    m_vertices.pop_back();
    m_startWidth = m_vertices.back().startWidth;
    m_endWidth = m_vertices.back().endWidth;
    m_vertices.back().bulge = 0.0;
    showVertices();
}

void PolylineRun::showVertices() {
    if (m_vertices.size() < 2) {
        eraseEntities({m_id});
        m_id = MxDbObjectId();
        return;
    }
    if (m_id.isNull()) {
        auto polyline = std::make_unique<db::LwPolyline>();
        polyline->elevation = m_elevation;
        polyline->vertices = m_vertices;
        m_id = addEntity(std::move(polyline));
    } else if (const Opened<db::LwPolyline> polyline(m_id, Mx::kForWrite); polyline) {
        polyline->assertWriteEnabled();
        polyline->vertices = m_vertices;
        polyline->closed = m_closed;
    }
}

void PolylineRun::run() {
    if (!askStart())
        return;
    while (step()) {
    }
}

void polyline() {
    PolylineRun().run();
}

} // namespace

void registerPolylineCommand(CommandStack& stack) {
    stack.addCommand(kHostGroup, L"PLINE", L"PLINE", 0, drawIfAllowed<polyline>);
    stack.addAlias(QStringLiteral("PL"), QStringLiteral("PLINE"));
}

} // namespace merix::ed
