// SPDX-License-Identifier: MIT
// Long random work on the registry: whatever is done, it knows the notes that the drawings hold.
#include "tests/phonomark/module_fixture.h"

#include "merix/db/audit.h"
#include "phonomark/registry/phonomark_manager.h"

#include <QFile>

#include <algorithm>
#include <iostream>
#include <random>

using merix::ap::DocManager;
using merix::ap::Document;

namespace {

/// The notes that the drawing holds now, in every space.
std::vector<MxDbObjectId> notesOf(const Document& document) {
    std::vector<MxDbObjectId> found;
    for (const merix::db::ObjectStub& stub : document.database()->imp().stubs())
        if (stub.object && !stub.erased && stub.object->isKindOf(MxDbPhonomark::desc()))
            found.push_back(stub.object->objectId());
    std::sort(found.begin(), found.end());
    return found;
}

std::vector<MxDbObjectId> listedOf(Document& document) {
    std::vector<MxDbObjectId> found;
    livePhManager()->GetAllObjects(found, &document);
    return found;
}

class ManyDrawingsTest : public ModuleTest {
protected:
    void SetUp() override {
        ModuleTest::SetUp();
        const auto* info = testing::UnitTest::GetInstance();
        seed = info->random_seed() > 0 ? unsigned(info->random_seed()) : std::random_device()();
        std::cout << "seed " << seed << std::endl;
        random.seed(seed);
        RecordProperty("seed", std::to_string(seed));
    }
    int below(std::size_t bound) { return int(std::uniform_int_distribution<std::size_t>(0, bound - 1)(random)); }

    static void expectConsistent(const std::string& after) {
        for (Document* open : DocManager::instance().all()) {
            std::vector<MxDbObjectId> listed = listedOf(*open);
            std::sort(listed.begin(), listed.end());
            ASSERT_EQ(listed, notesOf(*open)) << open->title().toStdString() << " after " << after;
            for (const auto& finding : merix::db::audit(*open->database()))
                ADD_FAILURE() << QString::fromStdWString(finding.where + L": " + finding.what).toStdString() << " in "
                              << open->title().toStdString() << " after " << after;
        }
    }
    void erase(MxDbObjectId id) { livePhManager()->ErasePhonomark(id, &document()); }

    unsigned seed = 0;
    std::mt19937 random;
};

} // namespace

TEST_F(ManyDrawingsTest, TheListIsWhatTheDrawingHoldsThroughErasingUndoAndRedo) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const TransformView view(1.0);
    for (int step = 0; step < 1000 && !HasFailure(); ++step) {
        const std::vector<MxDbObjectId> notes = notesOf(document());
        std::string what;
        switch (below(8)) {
        case 0:
        case 1:
        case 2:
            what = "PHONOMARK";
            run(what, {std::to_string(below(100)) + "," + std::to_string(below(100))});
            break;
        case 3:
        case 4:
            what = "erase";
            if (!notes.empty())
                erase(notes[std::size_t(below(notes.size()))]);
            break;
        case 5:
        case 6:
            what = "U";
            run(what);
            break;
        default:
            what = "REDO";
            run(what, {"1"});
            break;
        }
        expectConsistent("step " + std::to_string(step) + ", " + what);
    }
}

TEST_F(ManyDrawingsTest, AnUndoneInsertionLeavesTheListAndComesBackAtItsEnd) {
    addNote();
    run("PHONOMARK", {"5,5"});
    const std::vector<MxDbObjectId> both = listed();
    ASSERT_EQ(both.size(), 2u);
    run("U");
    EXPECT_EQ(listed(), std::vector{both[0]});
    run("REDO", {"1"});
    EXPECT_EQ(listed(), both);
}

TEST_F(ManyDrawingsTest, TenDrawingsOfAHundredNotesAreWorkedOnInRandomOrder) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const TransformView view(1.0);
    constexpr int kDrawings = 10, kNotes = 100, kSteps = 200;
    std::vector<QString> paths;
    for (int i = 0; i < kDrawings; ++i) {
        Document* made = i == 0 ? &document() : DocManager::instance().create();
        useDocument(*made);
        for (int n = 0; n < kNotes; ++n)
            addNote(n % 2 ? kRegionNote : kPointNote, {double(n), double(i), 0});
        paths.push_back(folder.filePath(
            QStringLiteral("%1.%2").arg(i).arg(i % 2 ? QStringLiteral("merix") : QStringLiteral("dxf"))));
        run("SAVEAS", {paths.back().toStdString()});
        ASSERT_TRUE(QFile::exists(paths.back()));
    }
    expectConsistent("making them");
    for (int step = 0; step < kSteps && !HasFailure(); ++step) {
        const std::vector<Document*> open = DocManager::instance().all();
        const QString& path = paths[std::size_t(below(paths.size()))];
        std::string what;
        switch (below(8)) {
        case 0:
            what = "ZOOM";
            run(what, {"In"});
            break;
        case 1:
            what = "SAVE";
            run(what);
            break;
        case 2:
            what = "CLOSE";
            run(what, {"Yes"});
            break;
        case 3:
        case 4:
            what = "OPEN " + path.toStdString();
            run("OPEN", {path.toStdString()});
            break;
        case 5:
            what = "PHONOMARK";
            run(what, {std::to_string(below(100)) + ",3"});
            break;
        case 6:
            what = "U";
            run(what);
            break;
        default:
            what = "switch";
            if (!open.empty())
                DocManager::instance().activate(open[std::size_t(below(open.size()))]);
            break;
        }
        expectConsistent("step " + std::to_string(step) + ", " + what);
    }
    while (!DocManager::instance().all().empty() && !HasFailure()) {
        const std::vector<Document*> open = DocManager::instance().all();
        DocManager::instance().close(*open[std::size_t(below(open.size()))]);
        expectConsistent("closing");
    }
}
