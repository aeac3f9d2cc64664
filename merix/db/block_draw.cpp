// SPDX-License-Identifier: MIT
// Drawing of blocks: the entities of a block draw themselves through an interface that places what they draw and
// hands it on. Whatever stands at the end of the chain sees plain geometry in the outermost coordinates.
#include "merix/db/access.h"
#include "merix/db/database_imp.h"
#include "merix/db/draw.h"
#include "merix/db/draw_order.h"
#include "merix/db/placed_geometry.h"
#include "merix/db/tables.h"

namespace merix::db {

namespace {

constexpr int kDeepest = 32;

bool isLayerZero(MxDbObjectId id) {
    const MxDbObject* layer = DatabaseImp::peek(id);
    return layer && layer->isKindOf(SymbolRecord::desc()) && static_cast<const SymbolRecord*>(layer)->name == L"0";
}

bool isLinetypeByBlock(MxDbObjectId id) {
    const MxDbObject* linetype = DatabaseImp::peek(id);
    if (!linetype || !linetype->isKindOf(LinetypeRecord::desc()))
        return false;
    return id == linetype->data().stub->database->linetypeNamed(L"ByBlock");
}

bool isHidden(const EntityTraits& traits) {
    if (traits.invisible)
        return true;
    const MxDbObject* object = DatabaseImp::peek(traits.layer);
    if (!object || !object->isKindOf(LayerRecord::desc()))
        return false;
    const auto* layer = static_cast<const LayerRecord*>(object);
    return layer->off || layer->isFrozen();
}

/// The attributes of an entity inside a block as they show in an insert with the attributes `owner`.
EntityTraits resolved(EntityTraits traits, const EntityTraits& owner) {
    constexpr std::int16_t kColorByBlock = 0, kWeightByBlock = -2;
    if (isLayerZero(traits.layer))
        traits.layer = owner.layer;
    if (traits.color == kColorByBlock && !traits.hasTrueColor) {
        traits.color = owner.color;
        traits.trueColor = owner.trueColor;
        traits.hasTrueColor = owner.hasTrueColor;
    }
    if (traits.lineWeight == kWeightByBlock)
        traits.lineWeight = owner.lineWeight;
    if (isLinetypeByBlock(traits.linetype)) {
        traits.linetype = owner.linetype;
        traits.linetypeScale *= owner.linetypeScale;
    }
    return traits;
}

/// Attributes of the entity being drawn; what it sets itself is resolved like its own attributes.
class BlockTraits final : public EntityTraitsSink {
public:
    explicit BlockTraits(MxGiSubEntityTraits& target)
        : m_target(target)
        , m_sink(dynamic_cast<EntityTraitsSink*>(&target)) {}

    void begin(const EntityTraits& own, const EntityTraits& owner) {
        m_own = resolved(own, owner);
        m_owner = owner;
        m_target.setFill(false);
        apply();
    }
    const EntityTraits& own() const { return m_own; }

    bool implementsTraits() const override { return m_target.implementsTraits(); }
    void setColor(std::uint16_t color) override {
        EntityTraits set = m_own;
        set.color = static_cast<std::int16_t>(color);
        set.hasTrueColor = false;
        m_own = resolved(set, m_owner);
        apply();
    }
    void setTrueColor(const MxCmEntityColor& color) override {
        using Method = MxCmEntityColor::Method;
        if (color.method != Method::kByColor)
            return setColor(color.method == Method::kByLayer ? 256 : 0);
        m_own.trueColor = static_cast<std::uint32_t>(color.red << 16 | color.green << 8 | color.blue);
        m_own.hasTrueColor = true;
        apply();
    }
    void setLineType(MxDbObjectId linetype) override {
        EntityTraits set = m_own;
        set.linetype = linetype;
        m_own = resolved(set, m_owner);
        apply();
    }
    MxDbObjectId lineType() const override { return m_own.linetype; }
    void setEntityTraits(const EntityTraits& inner) override {
        m_own = resolved(inner, m_owner);
        apply();
    }
    void setFill(bool fill) override { m_target.setFill(fill); }
    void setLineWeight(int weight) override {
        EntityTraits set = m_own;
        set.lineWeight = static_cast<std::int16_t>(weight);
        m_own = resolved(set, m_owner);
        apply();
    }
    int lineWeight() const override { return m_own.lineWeight; }

private:
    void apply() {
        if (m_sink) {
            m_sink->setEntityTraits(m_own);
            return;
        }
        m_target.setColor(static_cast<std::uint16_t>(m_own.color));
        m_target.setLineWeight(m_own.lineWeight);
    }

    MxGiSubEntityTraits& m_target;
    EntityTraitsSink* const m_sink;
    EntityTraits m_own, m_owner;
};

/// One level of nesting.
class BlockDraw final : public MxGiWorldDraw {
public:
    BlockDraw(MxGiWorldDraw& target, MxDbObjectId block, const ge::Affine& map, DrawBudget& budget)
        : m_target(target)
        , m_parent(dynamic_cast<BlockDraw*>(&target))
        , m_budget(m_parent ? m_parent->m_budget : budget)
        , m_block(block)
        , m_depth(m_parent ? m_parent->m_depth + 1 : 1)
        , m_traits(target.subEntityTraits())
        , m_geometry(target.geometry(), map) {}

    MxGiContext* context() const override { return m_target.context(); }
    MxGiSubEntityTraits& subEntityTraits() const override { return m_traits; }
    MxGiWorldGeometry& geometry() const override { return m_geometry; }

    bool isAllowed() const {
        if (m_depth > kDeepest)
            return false;
        for (const BlockDraw* outer = m_parent; outer; outer = outer->m_parent) {
            if (outer->m_block == m_block)
                return false;
        }
        return true;
    }
    bool spend() { return m_budget.spend(); }
    BlockTraits& traits() { return m_traits; }

private:
    MxGiWorldDraw& m_target;
    BlockDraw* m_parent;
    DrawBudget& m_budget;
    MxDbObjectId m_block;
    int m_depth;
    mutable BlockTraits m_traits;
    mutable PlacedGeometry m_geometry;
};

} // namespace

bool drawBlock(MxGiWorldDraw& draw, MxDbObjectId blockId, const ge::Affine& toOwner, const EntityTraits& owner,
               DrawBudget& budget) {
    MxDbObject* object = DatabaseImp::peek(blockId);
    if (!object || !object->isKindOf(MxDbBlockTableRecord::desc()))
        return true;
    BlockDraw level(draw, blockId, toOwner, budget);
    if (!level.isAllowed() || !level.spend())
        return false;
    bool all = true;
    std::vector<MxDbObjectId> sorted;
    for (const MxDbObjectId& id : drawOrder(static_cast<const MxDbBlockTableRecord&>(*object), sorted)) {
        MxDbObject* part = DatabaseImp::peek(id);
        if (!part || !part->data().isEntity)
            continue;
        if (!level.spend())
            return false;
        auto& entity = static_cast<MxDbEntity&>(*part);
        level.traits().begin(traits(entity), owner);
        if (isHidden(level.traits().own()))
            continue;
        const ReadAccess readable(entity);
        all = entity.subWorldDraw(&level) && all;
    }
    return all;
}

} // namespace merix::db
