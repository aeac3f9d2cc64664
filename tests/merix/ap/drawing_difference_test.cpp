// SPDX-License-Identifier: MIT
#include "merix/ap/drawing_difference.h"

#include "merix/db/database_imp.h"
#include "merix/db/entities.h"
#include "merix/io/drawing_file.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace merix;

namespace {

/// A drawing with two lines and a circle, and what is read from its file again.
class DrawingDifferenceTest : public testing::Test {
protected:
    DrawingDifferenceTest() {
        const db::WorkingDatabaseScope scope(&before);
        before.imp().createDefaults();
        add<db::Line>(before);
        add<db::Line>(before);
        circle = add<db::Circle>(before);
        const std::string path = folder.filePath(QStringLiteral("a.dxf")).toStdString();
        EXPECT_TRUE(io::writeDrawing(path, before));
        EXPECT_TRUE(io::readDrawing(path, after));
    }
    template <class Kind> static MxDbHandle add(MxDbDatabase& database) {
        MxDbBlockTableRecord* space = nullptr;
        EXPECT_EQ(mxdbOpenObject(space, database.imp().roots.modelSpace, Mx::kForWrite), Mx::eOk);
        MxDbObjectId id;
        auto* entity = new Kind;
        space->appendMxDbEntity(id, entity);
        entity->close();
        space->close();
        return id.handle();
    }
    MxDbObjectId there(MxDbHandle handle) { return MxDbObjectId(after.imp().find(handle)); }
    QTemporaryDir folder;
    MxDbDatabase before, after;
    MxDbHandle circle;
};

} // namespace

TEST_F(DrawingDifferenceTest, ADrawingReadAgainIsTheSame) {
    EXPECT_EQ(ap::compareDrawings(before, after).text(), QStringLiteral("nothing changed"));
}

TEST_F(DrawingDifferenceTest, WhatWasAddedChangedAndErasedIsCountedByKind) {
    add<db::Line>(after);
    add<db::Line>(after);
    db::Circle* changed = nullptr;
    ASSERT_EQ(mxdbOpenObject(changed, there(circle), Mx::kForWrite), Mx::eOk);
    changed->assertWriteEnabled();
    changed->radius = 9;
    changed->close();
    EXPECT_EQ(ap::compareDrawings(before, after).text(), QStringLiteral("2 LINE added; 1 CIRCLE changed"));
    db::Circle* gone = nullptr;
    ASSERT_EQ(mxdbOpenObject(gone, there(circle), Mx::kForWrite), Mx::eOk);
    gone->erase();
    gone->close();
    EXPECT_EQ(ap::compareDrawings(before, after).text(), QStringLiteral("2 LINE added; 1 CIRCLE erased"));
}
