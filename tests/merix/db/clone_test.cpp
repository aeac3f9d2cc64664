// SPDX-License-Identifier: MIT
#include "merix/db/clone.h"

#include "host/db/id_mapping.h"
#include "merix/db/access.h"
#include "merix/db/id_tape.h"
#include "merix/rx/class_registry.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

namespace {

using namespace merix::db;

const MxGeMatrix3d kOver = MxGeMatrix3d::translation({10, 0, 0});

/// What the object files, with places for its references.
std::string fields(const MxDbObject& object) {
    IdTape tape;
    TapeWriter writer(tape, MxDbFilerType::kFile, object.database());
    const ReadAccess readable(object);
    object.dwgOutFields(&writer);
    return writer.take();
}

/// Of its kind there is never a second one.
class Single final : public MxDbEntity {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    Mx::ErrorStatus subDeepClone(MxDbObject*, MxDbObject*& clone, MxDbIdMapping&, bool) const override {
        clone = nullptr;
        return Mx::eOk;
    }
};
MERIX_RX_CLASS(Single, "CloneTestSingle", MxDbEntity, merix::rx::makeObject<Single>, "")

class CloneTest : public testing::Test {
protected:
    MxDbObjectId addText(std::wstring text) {
        auto made = std::make_unique<Text>();
        made->text = std::move(text);
        made->style = drawing.imp.textStyleNamed(L"Standard");
        return drawing.add(std::move(made));
    }
    MxDbObjectId addInsert(MxDbObjectId block, MxDbObjectId owner = {}) {
        auto insert = std::make_unique<Insert>();
        insert->block = block;
        return drawing.add(std::move(insert), owner);
    }
    /// Gives an object an extension dictionary with a record under KEY.
    MxDbObjectId extend(MxDbObjectId id, const wchar_t* key = L"KEY") {
        MxDbObject* object = nullptr;
        mxdbOpenObject(object, id, Mx::kForWrite);
        object->createExtensionDictionary();
        const MxDbObjectId extension = object->extensionDictionary();
        object->close();
        MxDbDictionary* dictionary = nullptr;
        mxdbOpenObject(dictionary, extension, Mx::kForWrite);
        MxDbObjectId record;
        auto* made = new MxDbXrecord;
        dictionary->setAt(key, made, record);
        resbuf text{nullptr, 1, std::wstring(L"kept")};
        made->setFromRbChain(text);
        made->close();
        dictionary->close();
        return record;
    }
    MxDbObjectId entry(MxDbObjectId of, const wchar_t* key = L"KEY") {
        const auto& dictionary = drawing.at<MxDbDictionary>(drawing.at<MxDbObject>(of).extensionDictionary());
        const ReadAccess readable(dictionary);
        MxDbObjectId id;
        dictionary.getAt(key, id);
        return id;
    }
    void react(MxDbObjectId to, MxDbObjectId reactor) {
        MxDbObject* object = nullptr;
        mxdbOpenObject(object, to, Mx::kForWrite);
        object->addPersistentReactor(reactor);
        object->close();
    }
    std::vector<MxDbObjectId> copy(const std::vector<MxDbObjectId>& ids) {
        return cloneEntities(ids, drawing.imp.roots.modelSpace, kOver);
    }

    Drawing drawing;
};

TEST_F(CloneTest, ACopyFilesWhatItsOriginalFilesAndIsPlacedByTheMap) {
    const MxDbObjectId layer = drawing.addLayer(L"Walls", 3);
    const MxDbObjectId line = drawing.addLine({1, 2, 3}, {4, 5, 6}), text = addText(L"Küche");
    traits(drawing.at<Line>(line)).layer = layer;
    traits(drawing.at<Line>(line)).lineWeight = 50;
    const auto same = cloneEntities({line, text}, drawing.imp.roots.modelSpace, {});
    ASSERT_EQ(same.size(), 2U);
    EXPECT_NE(same[0].handle(), line.handle());
    EXPECT_EQ(fields(drawing.at<Line>(same[0])), fields(drawing.at<Line>(line)));
    EXPECT_EQ(fields(drawing.at<Text>(same[1])), fields(drawing.at<Text>(text)));
    EXPECT_EQ(drawing.at<Line>(same[0]).layerId(), layer);
    EXPECT_EQ(drawing.at<Line>(same[0]).ownerId(), drawing.imp.roots.modelSpace);
    EXPECT_FALSE(drawing.at<Line>(same[0]).data().writer);

    const auto moved = copy({line});
    ASSERT_EQ(moved.size(), 1U);
    EXPECT_EQ(drawing.at<Line>(moved[0]).start, MxGePoint3d(11, 2, 3));
    EXPECT_EQ(drawing.at<Line>(line).start, MxGePoint3d(1, 2, 3));
    EXPECT_EQ(drawing.at<MxDbBlockTableRecord>(drawing.imp.roots.modelSpace).entityIds().back(), moved[0]);
}

TEST_F(CloneTest, OneUndoTakesACopyBackAndRedoBringsItAgain) {
    const MxDbObjectId a = drawing.addLine(), b = drawing.addLine();
    extend(a);
    drawing.imp.undo.clear();
    const auto made = copy({a, b});
    ASSERT_EQ(drawing.imp.undo.undoUnits().size(), 1U);
    drawing.imp.undo.undo();
    EXPECT_TRUE(drawing.at<Line>(made[0]).isErased());
    EXPECT_TRUE(drawing.at<Line>(made[1]).isErased());
    drawing.imp.undo.redo();
    EXPECT_FALSE(drawing.at<Line>(made[0]).isErased());
    EXPECT_EQ(drawing.at<Line>(made[0]).start.x, 10);
    EXPECT_FALSE(entry(made[0]).isNull());
}

TEST_F(CloneTest, WhatAnEntityOwnsIsCopiedWithIt) {
    const MxDbObjectId line = drawing.addLine(), record = extend(line);
    const auto made = copy({line});
    ASSERT_EQ(made.size(), 1U);
    const MxDbObjectId copied = entry(made[0]);
    ASSERT_FALSE(copied.isNull());
    EXPECT_NE(copied, record);
    EXPECT_EQ(fields(drawing.at<MxDbXrecord>(copied)), fields(drawing.at<MxDbXrecord>(record)));
    EXPECT_NE(drawing.at<Line>(made[0]).extensionDictionary(), drawing.at<Line>(line).extensionDictionary());
    EXPECT_EQ(drawing.at<MxDbObject>(drawing.at<Line>(made[0]).extensionDictionary()).ownerId(), made[0]);
    EXPECT_EQ(drawing.at<MxDbObject>(copied).ownerId(), drawing.at<Line>(made[0]).extensionDictionary());
    EXPECT_EQ(entry(line), record);
}

TEST_F(CloneTest, ACopyListsOnlyReactorsThatWereCopiedWithIt) {
    const MxDbObjectId a = drawing.addLine(), b = drawing.addLine(), own = extend(a), others = extend(b);
    react(a, own);
    react(a, others);
    const auto made = copy({a});
    ASSERT_EQ(made.size(), 1U);
    const auto reactors = drawing.at<Line>(made[0]).reactors();
    ASSERT_EQ(reactors.size(), 1U);
    EXPECT_EQ(reactors[0].persistent, entry(made[0]));
    EXPECT_EQ(drawing.at<Line>(a).reactors().size(), 2U);
    // Copied together, each refers to the other's copy.
    const auto both = copy({a, b});
    const auto turned = drawing.at<Line>(both[0]).reactors();
    ASSERT_EQ(turned.size(), 2U);
    EXPECT_EQ(turned[1].persistent, entry(both[1]));
}

TEST_F(CloneTest, WhatIsNeverCopiedIsLeftOut) {
    const MxDbObjectId single = drawing.add(std::make_unique<Single>());
    const MxDbObjectId kept = drawing.add(std::make_unique<KeptEntity>()), line = drawing.addLine();
    const MxDbObjectId erased = drawing.addLine();
    drawing.erase(erased);
    const std::size_t before = drawing.imp.block(drawing.imp.roots.modelSpace)->entityIds().size();
    EXPECT_EQ(copy({single, kept, erased, {}, line}).size(), 1U);
    EXPECT_EQ(drawing.imp.block(drawing.imp.roots.modelSpace)->entityIds().size(), before + 1);
    EXPECT_TRUE(cloneEntities({line}, {}, kOver).empty());
}

TEST_F(CloneTest, WhatCannotTakeTheMapIsLeftOut) {
    auto circle = std::make_unique<Circle>();
    circle->radius = 1;
    const MxDbObjectId id = drawing.add(std::move(circle));
    EXPECT_TRUE(cloneEntities({id}, drawing.imp.roots.modelSpace, MxGeMatrix3d::scaling(1, 2, 1)).empty());
    EXPECT_TRUE(drawing.at<Circle>(drawing.imp.block(drawing.imp.roots.modelSpace)->entityIds().back()).isErased());
}

TEST_F(CloneTest, EntitiesOnALockedLayerAreCopied) {
    const MxDbObjectId locked = drawing.addLayer(L"Locked", 1, 4), line = drawing.addLine();
    traits(drawing.at<Line>(line)).layer = locked;
    EXPECT_EQ(copy({line}).size(), 1U);
}

TEST_F(CloneTest, DictionariesNestedWithoutEndAreCopiedAsFarAsTheStackGoes) {
    const MxDbObjectId line = drawing.addLine();
    MxDbObjectId owner = line;
    for (int i = 0; i < 100000; ++i) {
        auto* made = new MxDbDictionary;
        const MxDbObjectId id(drawing.imp.adopt(made, {}, owner));
        drawing.at<MxDbObject>(owner).data().extensionDictionary = id;
        owner = id;
    }
    const auto made = copy({line});
    ASSERT_EQ(made.size(), 1U);
    std::size_t copied = 0;
    for (MxDbObjectId id = made[0]; !drawing.at<MxDbObject>(id).extensionDictionary().isNull(); ++copied)
        id = drawing.at<MxDbObject>(id).extensionDictionary();
    EXPECT_GT(copied, 100U);
    EXPECT_LT(copied, 1000U);
    ASSERT_TRUE(drawing.imp.undo.undo());
    EXPECT_TRUE(drawing.at<Line>(made[0]).isErased());
}

class WblockTest : public CloneTest {
protected:
    const MxDbObjectId& onlyEntity(MxDbObjectId block) {
        const auto& ids = target.imp.block(block)->entityIds();
        EXPECT_EQ(ids.size(), 1U);
        return ids.front();
    }
    Drawing target;
};

TEST_F(WblockTest, ABlockWrittenOutBringsWhatItRefersToByName) {
    const MxDbObjectId layer = drawing.addLayer(L"Walls", 3);
    auto dashed = std::make_unique<LinetypeRecord>();
    dashed->name = L"Dashed";
    dashed->dashes = {5, -2};
    auto* linetype = appendRecord(drawing.imp, drawing.imp.roots.linetypeTable, std::move(dashed));
    linetype->close();
    drawing.at<LayerRecord>(layer).linetype = linetype->objectId();
    const MxDbObjectId inner = drawing.addBlock(L"Inner", {1, 1, 0}), outer = drawing.addBlock(L"Outer");
    const MxDbObjectId line = drawing.addLine({}, {3, 0, 0}, inner);
    traits(drawing.at<Line>(line)).layer = layer;
    addInsert(inner, outer);
    const MxDbObjectId insert = addInsert(outer);
    extend(line);

    const auto made = wblockEntities({insert}, target.database, {5, 5, 0});
    ASSERT_EQ(made.size(), 1U);
    const auto& copy = target.at<Insert>(made[0]);
    EXPECT_EQ(copy.database(), &target.database);
    EXPECT_EQ(copy.position, MxGePoint3d(-5, -5, 0));
    EXPECT_EQ(copy.block, target.imp.blockNamed(L"Outer"));
    EXPECT_EQ(copy.layerId(), target.imp.layerNamed(L"0"));
    const auto& nested = target.at<Insert>(onlyEntity(copy.block));
    EXPECT_EQ(nested.block, target.imp.blockNamed(L"Inner"));
    EXPECT_EQ(target.imp.block(nested.block)->origin(), MxGePoint3d(1, 1, 0));
    const auto& drawn = target.at<Line>(onlyEntity(nested.block));
    EXPECT_EQ(drawn.end.x, 3);
    EXPECT_EQ(drawn.layerId(), target.imp.layerNamed(L"Walls"));
    const auto& walls = target.at<LayerRecord>(drawn.layerId());
    EXPECT_EQ(walls.color, 3);
    EXPECT_EQ(walls.linetype, target.imp.linetypeNamed(L"Dashed"));
    EXPECT_EQ(target.at<LinetypeRecord>(walls.linetype).dashes.size(), 2U);
    EXPECT_FALSE(drawn.extensionDictionary().isNull());
    // Not a single reference leads back.
    for (const ObjectStub& stub : target.imp.stubs()) {
        if (!stub.object)
            continue;
        for (const auto& reference : referencesOf(*stub.object).entries)
            EXPECT_TRUE(reference.id.isNull() || reference.id.database() == &target.database);
        EXPECT_FALSE(stub.object->data().writer);
    }
}

TEST_F(WblockTest, RecordsOfTheTargetWin) {
    const MxDbObjectId mine = drawing.addBlock(L"Door"), walls = drawing.addLayer(L"Walls", 3);
    drawing.addLine({}, {3, 0, 0}, mine);
    const MxDbObjectId insert = addInsert(mine);
    traits(drawing.at<Insert>(insert)).layer = walls;
    const MxDbObjectId theirs = target.addBlock(L"DOOR"), theirWalls = target.addLayer(L"walls", 5);
    const auto made = wblockEntities({insert}, target.database, {});
    ASSERT_EQ(made.size(), 1U);
    EXPECT_EQ(target.at<Insert>(made[0]).block, theirs);
    EXPECT_TRUE(target.imp.block(theirs)->entityIds().empty());
    EXPECT_EQ(target.at<Insert>(made[0]).layerId(), theirWalls);
    EXPECT_EQ(target.at<LayerRecord>(theirWalls).color, 5);
}

TEST_F(WblockTest, AnAnonymousBlockGetsANewName) {
    const MxDbObjectId mine = drawing.addBlock(L"*U0"), theirs = target.addBlock(L"*U0");
    drawing.addLine({}, {1, 0, 0}, mine);
    const auto made = wblockEntities({addInsert(mine)}, target.database, {});
    ASSERT_EQ(made.size(), 1U);
    const MxDbObjectId block = target.at<Insert>(made[0]).block;
    EXPECT_NE(block, theirs);
    EXPECT_EQ(target.imp.block(block)->name(), L"*U1");
    EXPECT_EQ(target.imp.block(block)->entityIds().size(), 1U);
}

TEST_F(WblockTest, ABlockThatShowsItselfIsCopiedOnce) {
    const MxDbObjectId loop = drawing.addBlock(L"Loop");
    addInsert(loop, loop);
    const auto made = wblockEntities({addInsert(loop)}, target.database, {});
    ASSERT_EQ(made.size(), 1U);
    const MxDbObjectId block = target.at<Insert>(made[0]).block;
    EXPECT_EQ(target.at<Insert>(onlyEntity(block)).block, block);
}

TEST_F(WblockTest, ALayerThatListsItselfAsReactorComesAloneAndOnce) {
    const MxDbObjectId layer = drawing.addLayer(L"Walls", 3), other = drawing.addLayer(L"Other");
    const MxDbObjectId line = drawing.addLine();
    traits(drawing.at<Line>(line)).layer = layer;
    auto& reactors = drawing.at<LayerRecord>(layer).data().reactors;
    reactors.push_back({nullptr, layer});
    reactors.push_back({nullptr, other});
    drawing.at<LayerRecord>(layer).data().extensionDictionary = other;
    drawing.at<Line>(line).data().reactors.push_back({nullptr, other});
    const auto made = wblockEntities({line}, target.database, {});
    ASSERT_EQ(made.size(), 1U);
    const auto& copy = target.at<LayerRecord>(target.at<Line>(made[0]).layerId());
    EXPECT_EQ(copy.name, L"Walls");
    EXPECT_EQ(copy.color, 3);
    EXPECT_TRUE(copy.reactors().empty());
    EXPECT_TRUE(target.at<Line>(made[0]).reactors().empty());
    EXPECT_TRUE(target.imp.layerNamed(L"Other").isNull()) << "a reactor is no reason to come along";
}

TEST_F(WblockTest, ARecordThatRefersToItselfComesOnce) {
    const MxDbObjectId layer = drawing.addLayer(L"Walls", 3), line = drawing.addLine();
    traits(drawing.at<Line>(line)).layer = layer;
    drawing.at<LayerRecord>(layer).linetype = layer;
    const auto made = wblockEntities({line}, target.database, {});
    ASSERT_EQ(made.size(), 1U);
    EXPECT_EQ(target.at<LayerRecord>(target.at<Line>(made[0]).layerId()).color, 3);
    EXPECT_EQ(target.at<Line>(made[0]).layerId(), target.imp.layerNamed(L"Walls"));
}

TEST_F(WblockTest, UndoInTheTargetTakesRecordsBackToo) {
    const MxDbObjectId line = drawing.addLine();
    traits(drawing.at<Line>(line)).layer = drawing.addLayer(L"Walls");
    target.imp.undo.clear();
    wblockEntities({line}, target.database, {});
    ASSERT_EQ(target.imp.undo.undoUnits().size(), 1U);
    EXPECT_FALSE(target.imp.layerNamed(L"Walls").isNull());
    target.imp.undo.undo();
    EXPECT_TRUE(target.imp.layerNamed(L"Walls").isNull());
    target.imp.undo.redo();
    EXPECT_FALSE(target.imp.layerNamed(L"Walls").isNull());
}

} // namespace
