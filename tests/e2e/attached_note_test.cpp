// SPDX-License-Identifier: MIT
// A note that belongs to an object, in the real program by a script: the marker is where the object is, whatever is
// done to the object. A marker is found by its window: the box that deletes the note is clicked where it should be.
#include "tests/support/dxf_tags.h"
#include "tests/support/process.h"

#include <gtest/gtest.h>

using merix::test::Outcome;

namespace {

/// The view shows 400 by 300 units in 800 by 600 pixels.
constexpr double kUnitsPerPixel = 0.5;
/// The tag window stands 36 pixels above the corner; its box for deleting is in its upper right.
constexpr double kDeleteX = 30 * kUnitsPerPixel, kDeleteY = (36 - 4) * kUnitsPerPixel;
constexpr double kInMarker = 16 * kUnitsPerPixel;

QByteArray point(double x, double y, char between) {
    return QByteArray::number(x) + between + QByteArray::number(y);
}

class AttachedNoteTest : public testing::Test {
protected:
    /// A rectangle from (100, 100) to (140, 120) with a note.
    static QByteArray sheet() {
        return "NEW\n" + view() + "RECTANG\n100,100\n140,120\n" + "PHONOMARK\nSettings\nObject\n100,110\n" + clean();
    }
    static QByteArray view() { return "@viewsize 800 600\nZOOM\nWindow\n0,0\n400,300\n"; }
    static QByteArray clean() { return "AUDIT\n@expect 0 broken, 0 loose\n"; }

    /// The marker stands at the corner: its window opens there, and its box for deleting works.
    QByteArray markerAt(double x, double y) {
        const QByteArray n = QByteArray::number(m_probes++);
        return "@hover " + point(x + kInMarker, y + kInMarker, ' ') + "\n@wait 60\n@click " +
               point(x + kDeleteX, y + kDeleteY, ' ') + "\n@save gone" + n + ".dxf\nAUDIT\n@expect 0 broken\n" +
               "@undo\n@save back" + n + ".dxf\n" + clean();
    }
    void run(const QByteArray& script) {
        const Outcome outcome = merix::test::runScript(script, m_folder.path());
        ASSERT_EQ(outcome.status, 0) << outcome.err.constData() << outcome.out.constData();
        for (int n = 0; n < m_probes; ++n) {
            EXPECT_EQ(notesIn(QStringLiteral("gone%1.dxf").arg(n)), 0) << "the marker of probe " << n;
            EXPECT_EQ(notesIn(QStringLiteral("back%1.dxf").arg(n)), 1) << "the marker of probe " << n;
        }
    }
    int notesIn(const QString& file) {
        int count = 0;
        for (const auto& record : merix::test::records(merix::test::readTags(m_folder.filePath(file)), "ENTITIES"))
            count += record[0].value.trimmed() == "PHONOMARK";
        return count;
    }
    QTemporaryDir m_folder;
    int m_probes = 0;
};

struct Edit {
    const char* name;
    QByteArray script;
    double x, y; ///< the corner of the rectangle's box afterwards
};

const Edit kEdits[] = {
    {"MOVE", "MOVE\n100,110\n\n0,0\n50,40\n", 190, 160},
    {"ROTATE", "ROTATE\n100,110\n\n100,100\n90\n", 100, 140},
    {"SCALE", "SCALE\n100,110\n\n100,100\n2\n", 180, 140},
    {"STRETCH", "STRETCH\n250,200\n130,90\n\n0,0\n20,10\n", 160, 130},
};

} // namespace

TEST_F(AttachedNoteTest, TheMarkerFollowsEveryEditItsUndoAndItsRedo) {
    QByteArray script = sheet() + markerAt(140, 120);
    for (const Edit& edit : kEdits)
        script += edit.script + markerAt(edit.x, edit.y) + "@undo\n" + clean() + markerAt(140, 120) + edit.script +
                  "@undo\n@redo\n" + markerAt(edit.x, edit.y) + "@undo\n";
    run(script);
}

TEST_F(AttachedNoteTest, TheBondIsSavedAndWorksAfterOpening) {
    QByteArray script = sheet();
    int n = 0;
    for (const char* suffix : {"dxf", "merix"}) {
        for (const Edit& edit : kEdits) {
            const QByteArray file = "kept" + QByteArray::number(n++) + '.' + suffix;
            script += edit.script + "@save " + file + "\n@close\n@open " + file + '\n' + view() + clean() +
                      markerAt(edit.x, edit.y);
            // Once more, now through the bond that was read, and back to where it was.
            script += "MOVE\nAll\n\n0,0\n7,5\n" + markerAt(edit.x + 7, edit.y + 5) + clean();
            script += "@close\n" + sheet();
        }
    }
    run(script);
}

TEST_F(AttachedNoteTest, ARunWithoutTheModuleKeepsTheNoteAndItsBond) {
    const QByteArray files[] = {"kept.dxf", "kept.merix"};
    QByteArray made = sheet(), changed, used;
    for (const QByteArray& file : files) {
        made += "@save " + file + '\n';
        // Both kinds are written by a program that does not know what it keeps; the object is moved meanwhile.
        changed +=
            "@open " + file + "\nMOVE\n100,110\n\n0,0\n50,40\nLINE\n10,10\n20,20\n\n" + clean() + "@save\n@close\n";
        used += "@open " + file + '\n' + view() + clean() + markerAt(190, 160) + "MOVE\nAll\n\n0,0\n7,5\n" +
                markerAt(197, 165) + clean() + "@close\n";
    }
    ASSERT_EQ(merix::test::runScript(made, m_folder.path()).status, 0);
    const Outcome kept =
        merix::test::runScript("@viewsize 800 600\n" + changed, m_folder.path(), {QStringLiteral("--no-module")});
    ASSERT_EQ(kept.status, 0) << kept.err.constData() << kept.out.constData();
    run(used);
}

TEST_F(AttachedNoteTest, ErasingTheObjectOrTheNoteInAnyOrderAndTakingItBackLeavesNothingBroken) {
    const QByteArray eraseObject = "ERASE\n100,110\n\n";
    QByteArray script = sheet();
    script += eraseObject + "AUDIT\n@expect 0 broken\n@undo\n" + clean() + markerAt(140, 120);
    script += "ERASE\nAll\n\nAUDIT\n@expect 0 broken\n@undo\n" + clean() + markerAt(140, 120);
    script += "ERASE\nAll\n\n@save none.dxf\n@undo\n@save all.merix\n@redo\nAUDIT\n@expect 0 broken\n@undo\n" +
              clean() + kEdits[0].script + markerAt(kEdits[0].x, kEdits[0].y);
    run(script);
    EXPECT_EQ(notesIn(QStringLiteral("none.dxf")), 0);
}
