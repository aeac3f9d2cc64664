// SPDX-License-Identifier: MIT
#include "merix/db/id_tape.h"

#include "merix/db/access.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

namespace {

using namespace merix::db;

TEST(IdTape, HoldsWhatAnObjectRefersTo) {
    Drawing drawing;
    auto insert = std::make_unique<Insert>();
    insert->block = drawing.imp.roots.paperSpace;
    const MxDbObjectId id = drawing.add(std::move(insert));
    bool layer = false, block = false;
    for (const auto& entry : referencesOf(drawing.at<Insert>(id)).entries) {
        layer = layer || (entry.hard && entry.id == drawing.imp.layerNamed(L"0"));
        block = block || (entry.hard && entry.id == drawing.imp.roots.paperSpace);
    }
    EXPECT_TRUE(layer);
    EXPECT_TRUE(block);
}

TEST(IdTape, ReferencesTurnOnTheWayToAnotherObject) {
    Drawing drawing;
    const MxDbObjectId a = drawing.imp.roots.modelSpace, b = drawing.imp.roots.paperSpace;
    Insert from, to;
    from.block = a;
    from.position = {1, 2, 3};
    EXPECT_EQ(copyFields(from, to, &drawing.database, [&](MxDbObjectId id) { return id == a ? b : id; }), Mx::eOk);
    EXPECT_EQ(to.block, b);
    EXPECT_EQ(to.position, from.position);
    EXPECT_EQ(from.block, a);
}

TEST(IdTape, AStreamThatNamesNoPlaceOfTheTapeIsRefused) {
    IdTape tape, empty;
    TapeWriter writer(tape, MxDbFilerType::kCopy, nullptr);
    writer.writeHardPointerId({});
    const std::string bytes = writer.take();
    TapeReader reader(
        bytes, empty, [](MxDbObjectId id) { return id; }, MxDbFilerType::kCopy, nullptr);
    MxDbObjectId id;
    EXPECT_EQ(reader.readHardPointerId(id), Mx::eItemUnreadable);
}

} // namespace
