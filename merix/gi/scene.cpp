// SPDX-License-Identifier: MIT
// Every space that was ever looked at keeps one slot an entity, in drawing order, and a spatial index over their
// boxes. A slot holds the box from the beginning and the display list from the first time it was in view; changes
// only mark it, the next look makes it anew.
#include "merix/gi/scene.h"

#include "merix/db/access.h"
#include "merix/db/draw_order.h"
#include "merix/db/entities.h"
#include "merix/db/tables.h"
#include "merix/gi/graphics_builder.h"
#include "merix/gi/list_painter.h"

#define BOOST_ALLOW_DEPRECATED_HEADERS // Boost.Geometry includes one of Boost's own
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/box.hpp>
#include <boost/geometry/geometries/point.hpp>
#include <boost/geometry/index/rtree.hpp>

#include <algorithm>
#include <unordered_map>

namespace merix::gi {

namespace {

namespace bg = boost::geometry;
using Point = bg::model::point<double, 2, bg::cs::cartesian>;
using Box = bg::model::box<Point>;
using Index = bg::index::rtree<std::pair<Box, std::uint32_t>, bg::index::quadratic<16>>;

Box boxOf(const MxDbExtents& e) {
    return {{e.minPoint().x, e.minPoint().y}, {e.maxPoint().x, e.maxPoint().y}};
}

/// Coordinates beyond are those of empty boxes.
constexpr double kFarthest = 1e19;

bool isPlace(const MxDbExtents& e) {
    const auto near = [](const MxGePoint3d& p) { return std::abs(p.x) < kFarthest && std::abs(p.y) < kFarthest; };
    return near(e.minPoint()) && near(e.maxPoint());
}

bool isFinite(const MxDbExtents& e) {
    return std::isfinite(e.minPoint().x + e.minPoint().y) && std::isfinite(e.maxPoint().x + e.maxPoint().y);
}

bool overlap(const MxDbExtents& a, const MxDbExtents& b) {
    return a.minPoint().x <= b.maxPoint().x && b.minPoint().x <= a.maxPoint().x && a.minPoint().y <= b.maxPoint().y &&
           b.minPoint().y <= a.maxPoint().y;
}

struct Slot {
    MxDbObjectId id;
    MxDbExtents box; ///< as the index has it; empty: not in the index
    std::unique_ptr<DisplayList> list;
    std::uint32_t version = 0; ///< of the graphics in `list`
    bool dirty = false;
    bool resized = false; ///< the entity has been drawn for other pixels than those of `list`
    bool drawn = true;
};

struct Space {
    std::vector<Slot> slots; ///< place for place the block's entities
    std::unordered_map<db::ObjectStub*, std::uint32_t> slotOf;
    std::vector<std::uint32_t> dirty;
    Index index;

    /// The slots' places in the draw order; empty: that of the slots.
    std::vector<std::uint32_t> rank;
    const MxDbSortentsTable* ranking = nullptr; ///< the table, and its state, that `rank` follows
    std::uint32_t rankVersion = 0;

    void markDirty(std::uint32_t i) {
        if (!slots[i].dirty) {
            slots[i].dirty = true;
            dirty.push_back(i);
        }
    }
    void setBox(std::uint32_t i, const MxDbExtents& box) {
        Slot& slot = slots[i];
        if (!slot.box.isEmpty())
            index.remove({boxOf(slot.box), i});
        slot.box = box;
        if (!box.isEmpty())
            index.insert({boxOf(box), i});
    }
};

/// What of a layer shows in the entities on it.
struct LayerLook {
    std::int16_t color, weight;
    std::uint32_t trueColor;
    bool hasTrueColor, off, frozen;
    MxDbObjectId linetype;
    bool operator==(const LayerLook&) const = default;
};

LayerLook lookOf(const db::LayerRecord& layer) {
    return {layer.color, layer.lineWeight, layer.trueColor, layer.hasTrueColor,
            layer.off,   layer.isFrozen(), layer.linetype};
}

bool isSpace(const MxDbBlockTableRecord& block) {
    const QString name = QString::fromStdWString(block.name());
    return name.startsWith(QLatin1String("*Model_Space"), Qt::CaseInsensitive) ||
           name.startsWith(QLatin1String("*Paper_Space"), Qt::CaseInsensitive);
}

/// Classes of modules name the application they belong to. Their graphics may depend on the zoom.
bool isOfModule(const MxDbEntity& entity) {
    const wchar_t* application = entity.isA()->appName();
    return application && *application;
}

} // namespace

struct Scene::Private {
    explicit Private(MxDbDatabase& aDatabase)
        : database(aDatabase.imp())
        , builder(database)
        , plotter(database, true) {}

    db::DatabaseImp& database;
    GraphicsBuilder builder, plotter;
    std::map<MxDbObjectId, Space> spaces;
    std::map<db::ObjectStub*, LayerLook> layers;
    double linetypeScale = database.header.linetypeScale; ///< of the lists
    bool allStale = false; ///< forget all spaces at the next look: a module's drawing code may have caused it

    MxDbEntity* entityOf(const Slot& slot) const {
        MxDbObject* object = db::DatabaseImp::peek(slot.id);
        return object && object->isKindOf(MxDbEntity::desc()) ? static_cast<MxDbEntity*>(object) : nullptr;
    }

    /// Extents as the entity tells them.
    MxDbExtents told(const MxDbEntity& entity) const {
        MxDbExtents box;
        const db::ReadAccess readable(entity);
        const bool isTold = entity.getGeomExtents(box) == Mx::eOk && !box.isEmpty() && isPlace(box);
        return isTold ? box : MxDbExtents();
    }

    /// The same, widened where it may draw beyond what it tells.
    MxDbExtents toldBox(const MxDbEntity& entity) const {
        MxDbExtents box = told(entity);
        if (box.isEmpty())
            return box;
        if (isOfModule(entity)) {
            const double margin = std::max(box.maxPoint().x - box.minPoint().x, box.maxPoint().y - box.minPoint().y);
            box.set(box.minPoint() - MxGeVector3d{margin, margin, 0}, box.maxPoint() + MxGeVector3d{margin, margin, 0});
        }
        box.set({box.minPoint().x, box.minPoint().y, 0}, {box.maxPoint().x, box.maxPoint().y, 0});
        return box;
    }

    /// A module's icon is one thing to the hand, also between its strokes. It is where the entity says that it is; what
    /// is drawn beyond that (an outline around much else) is picked by its strokes.
    bool isIconIn(const MxDbExtents& square, const MxDbEntity& entity) const {
        if (!isOfModule(entity))
            return false;
        const MxDbExtents icon = told(entity);
        return !icon.isEmpty() && overlap(icon, square);
    }

    /// The space brought up to date with the drawing.
    Space* spaceOf(MxDbObjectId id) {
        if (std::exchange(allStale, false))
            spaces.clear();
        const MxDbBlockTableRecord* block = database.block(id);
        if (!block)
            return nullptr;
        Space& space = spaces[id];
        const auto& ids = block->entityIds();
        const auto known = std::min(space.slots.size(), ids.size());
        if (known < space.slots.size() || (known && !(space.slots[known - 1].id == ids[known - 1])))
            space = Space();
        if (space.slots.size() < ids.size())
            addNew(space, ids);
        rank(space, *block);
        for (const std::uint32_t i : std::exchange(space.dirty, {})) {
            Slot& slot = space.slots[i];
            slot.dirty = false;
            MxDbEntity* entity = entityOf(slot);
            MxDbExtents box = entity ? toldBox(*entity) : MxDbExtents{};
            if (entity && slot.list && isOfModule(*entity))
                box.addExt(slot.list->box); // it may draw beyond what it tells
            space.setBox(i, box);
            const bool isBoxDrawn = entity && slot.box.isEmpty() && isOfModule(*entity);
            if (!entity || isBoxDrawn)
                slot.list.reset();
            if (isBoxDrawn)
                listOf(space, i, *entity);
        }
        return &space;
    }

    /// Follows the draw order of the block.
    static void rank(Space& space, const MxDbBlockTableRecord& block) {
        const MxDbSortentsTable* table = db::sortentsTable(block);
        const std::uint32_t version = table ? table->data().graphicsVersion : 0;
        if (table == space.ranking && version == space.rankVersion &&
            (!table || space.rank.size() == space.slots.size()))
            return;
        space.ranking = table;
        space.rankVersion = version;
        space.rank.clear();
        if (!table)
            return;
        std::vector<MxDbObjectId> sorted;
        space.rank.resize(space.slots.size());
        std::uint32_t place = 0;
        for (const MxDbObjectId& id : db::drawOrder(block, sorted)) {
            if (const auto slot = space.slotOf.find(id.stub()); slot != space.slotOf.end())
                space.rank[slot->second] = place++;
        }
    }

    void addNew(Space& space, const std::vector<MxDbObjectId>& ids) {
        const bool first = space.slots.empty();
        std::vector<Index::value_type> entries;
        for (auto i = static_cast<std::uint32_t>(space.slots.size()); i < ids.size(); ++i) {
            space.slots.push_back({});
            space.slots[i].id = ids[i];
            space.slotOf[ids[i].stub()] = i;
            if (MxDbEntity* entity = entityOf(space.slots[i]))
                measure(space.slots[i], *entity);
            if (!space.slots[i].box.isEmpty())
                entries.push_back({boxOf(space.slots[i].box), i});
        }
        if (first)
            space.index = Index(entries.begin(), entries.end());
        else
            space.index.insert(entries.begin(), entries.end());
    }

    /// What a module's entity draws may lie beyond what it tells, and what it tells may be no place in the drawing.
    void measure(Slot& slot, MxDbEntity& entity) {
        slot.box = toldBox(entity);
        if (!isOfModule(entity))
            return;
        slot.version = entity.data().graphicsVersion;
        slot.list = std::make_unique<DisplayList>(builder.build(entity));
        slot.box.addExt(slot.list->box);
    }

    /// The slot's list, made anew when it is stale.
    const DisplayList& listOf(Space& space, std::uint32_t i, MxDbEntity& entity) {
        const std::uint32_t version = entity.data().graphicsVersion;
        const bool isChanged = !space.slots[i].list || space.slots[i].version != version;
        if (isChanged || space.slots[i].resized) {
            auto list = std::make_unique<DisplayList>(builder.build(entity));
            Slot& slot = space.slots[i];
            slot.list = std::move(list);
            slot.version = version;
            slot.resized = false;
            slot.drawn = slot.drawn || isChanged;
            if (!slot.list->box.isEmpty() && isFinite(slot.list->box))
                space.setBox(i, slot.list->box);
        }
        return *space.slots[i].list;
    }

    std::vector<std::uint32_t> within(const Space& space, const MxDbExtents& window) const {
        std::vector<std::uint32_t> found;
        const Box all = space.index.bounds();
        const bool whole =
            window.minPoint().x <= all.min_corner().get<0>() && window.minPoint().y <= all.min_corner().get<1>() &&
            all.max_corner().get<0>() <= window.maxPoint().x && all.max_corner().get<1>() <= window.maxPoint().y;
        if (whole) { // everything is in view: no need to ask one by one
            for (std::uint32_t i = 0; i < space.slots.size(); ++i)
                if (!space.slots[i].box.isEmpty())
                    found.push_back(i);
        } else {
            for (auto it = space.index.qbegin(bg::index::intersects(boxOf(window))); it != space.index.qend(); ++it)
                found.push_back(it->second);
            std::sort(found.begin(), found.end());
        }
        if (!space.rank.empty())
            std::sort(found.begin(), found.end(),
                      [&space](std::uint32_t a, std::uint32_t b) { return space.rank[a] < space.rank[b]; });
        return found;
    }
};

Scene::Scene(MxDbDatabase& database)
    : m(std::make_unique<Private>(database)) {
    database.imp().addListener(this);
}

Scene::~Scene() {
    m->database.removeListener(this);
}

void Scene::paint(QPainter& painter, const ge::ViewTransform& view, MxDbObjectId spaceId, const PaintOptions& options) {
    Space* space = m->spaceOf(spaceId);
    if (!space || view.width <= 0 || view.height <= 0)
        return;
    const MxDbExtents window = view.worldRect();
    ListPainter lists(painter, view, options);
    for (const std::uint32_t i : m->within(*space, window)) {
        MxDbEntity* entity = m->entityOf(space->slots[i]);
        if (!entity)
            continue;
        if (options.plot) { // what is plotted may differ, and is looked at once
            lists.draw(m->plotter.build(*entity));
            continue;
        }
        const DisplayList& list = m->listOf(*space, i, *entity);
        if (space->slots[i].drawn && overlap(list.box, window))
            lists.draw(list);
    }
}

void Scene::paintOnly(QPainter& painter, const ge::ViewTransform& view, MxDbObjectId spaceId,
                      const std::vector<MxDbObjectId>& ids, const PaintOptions& options) {
    Space* space = m->spaceOf(spaceId);
    if (!space || view.width <= 0 || view.height <= 0)
        return;
    const MxDbExtents window = view.worldRect();
    ListPainter lists(painter, view, options);
    for (const MxDbObjectId id : ids) {
        const auto slot = space->slotOf.find(id.stub());
        MxDbEntity* entity = slot == space->slotOf.end() ? nullptr : m->entityOf(space->slots[slot->second]);
        if (!entity)
            continue;
        const DisplayList& list = m->listOf(*space, slot->second, *entity);
        if (space->slots[slot->second].drawn && overlap(list.box, window))
            lists.draw(list);
    }
}

std::vector<MxDbObjectId> Scene::pick(MxDbObjectId spaceId, const MxGePoint3d& at, double aperture) {
    std::vector<MxDbObjectId> picked;
    Space* space = m->spaceOf(spaceId);
    if (!space || !(aperture >= 0.0))
        return picked;
    const MxDbExtents square({at.x - aperture, at.y - aperture, 0}, {at.x + aperture, at.y + aperture, 0});
    const std::vector<std::uint32_t> found = m->within(*space, square);
    for (auto i = found.rbegin(); i != found.rend(); ++i) {
        MxDbEntity* entity = m->entityOf(space->slots[*i]);
        if (!entity)
            continue;
        const DisplayList& list = m->listOf(*space, *i, *entity);
        if (overlap(list.box, square) && (touches(list, at, aperture) || m->isIconIn(square, *entity)))
            picked.push_back(space->slots[*i].id);
    }
    return picked;
}

std::vector<MxDbObjectId> Scene::inBox(MxDbObjectId spaceId, const MxDbExtents& box, bool crossing) {
    std::vector<MxDbObjectId> found;
    Space* space = m->spaceOf(spaceId);
    if (!space || box.isEmpty())
        return found;
    // Curves are followed to a thousandth of the box.
    const double tolerance =
        std::min(box.maxPoint().x - box.minPoint().x, box.maxPoint().y - box.minPoint().y) / 1000.0;
    for (const std::uint32_t i : m->within(*space, box)) {
        MxDbEntity* entity = m->entityOf(space->slots[i]);
        if (!entity)
            continue;
        const DisplayList& list = m->listOf(*space, i, *entity);
        const bool whole = !list.box.isEmpty() && list.box.minPoint().x >= box.minPoint().x &&
                           list.box.minPoint().y >= box.minPoint().y && list.box.maxPoint().x <= box.maxPoint().x &&
                           list.box.maxPoint().y <= box.maxPoint().y;
        if (whole || (crossing && touches(list, box, tolerance)))
            found.push_back(space->slots[i].id);
    }
    return found;
}

MxDbExtents Scene::extents(MxDbObjectId spaceId, bool plot) {
    MxDbExtents all;
    Space* space = m->spaceOf(spaceId);
    if (!space)
        return all;
    for (std::uint32_t i = 0; i < space->slots.size(); ++i)
        if (MxDbEntity* entity = space->slots[i].box.isEmpty() ? nullptr : m->entityOf(space->slots[i]))
            all.addExt(plot ? m->plotter.build(*entity).box : m->listOf(*space, i, *entity).box);
    return all;
}

MxDbExtents Scene::extentsAnew(MxDbObjectId spaceId) {
    MxDbExtents all;
    Space* space = m->spaceOf(spaceId);
    if (!space)
        return all;
    for (std::uint32_t i = 0; i < space->slots.size(); ++i) {
        MxDbEntity* entity = space->slots[i].box.isEmpty() ? nullptr : m->entityOf(space->slots[i]);
        if (!entity)
            continue;
        if (!isOfModule(*entity)) {
            all.addExt(m->listOf(*space, i, *entity).box);
            continue;
        }
        all.addExt(m->builder.build(*entity).box);
        space->slots[i].resized = true;
        space->markDirty(i);
    }
    return all;
}

void Scene::setDrawn(MxDbObjectId id, bool drawn) {
    const MxDbObject* object = db::DatabaseImp::peek(id);
    if (!object)
        return;
    Space* space = m->spaceOf(object->ownerId());
    const auto slot = space ? space->slotOf.find(id.stub()) : decltype(space->slotOf.end()){};
    if (!space || slot == space->slotOf.end())
        return;
    if (MxDbEntity* entity = m->entityOf(space->slots[slot->second]))
        m->listOf(*space, slot->second, *entity); // what is made later would be drawn again
    space->slots[slot->second].drawn = drawn;
}

void Scene::objectAppended(MxDbObject& object) {
    objectModified(object);
}

void Scene::objectErased(MxDbObject& object, bool) {
    objectModified(object);
}

void Scene::headerChanged() {
    const double scale = m->database.header.linetypeScale;
    if (std::exchange(m->linetypeScale, scale) != scale)
        m->allStale = true; // dashes are as long as they were when a list was made
}

void Scene::objectModified(MxDbObject& object) {
    if (object.isKindOf(db::LayerRecord::desc())) {
        // Layers are unlocked and locked again around changes of what lies on them; that shows nowhere.
        const LayerLook look = lookOf(static_cast<db::LayerRecord&>(object));
        const auto [known, isNew] = m->layers.try_emplace(object.data().stub, look);
        if (isNew || !(known->second == look)) {
            known->second = look;
            m->allStale = true;
        }
        return;
    }
    if (object.isKindOf(db::LinetypeRecord::desc())) {
        m->allStale = true;
        return;
    }
    if (object.isKindOf(MxDbSortentsTable::desc())) {
        // Spaces look at their table themselves; the order inside a block shows wherever the block is inserted.
        const auto* sorted = m->database.block(static_cast<MxDbSortentsTable&>(object).blockId());
        m->allStale = m->allStale || (sorted && !isSpace(*sorted));
        return;
    }
    if (!object.isKindOf(MxDbEntity::desc()))
        return;
    const auto space = m->spaces.find(object.ownerId());
    if (space != m->spaces.end()) {
        const auto slot = space->second.slotOf.find(object.data().stub);
        if (slot != space->second.slotOf.end())
            space->second.markDirty(slot->second);
        return;
    }
    // A part of a block shows wherever the block is inserted; a space not looked at yet shows nowhere.
    const MxDbBlockTableRecord* block = m->database.block(object.ownerId());
    if (block && !isSpace(*block))
        m->allStale = true;
}

} // namespace merix::gi
