// SPDX-License-Identifier: MIT
// Pictures that no script can bring about: the note is made and painted in this process. The playing mark is set by a
// procedure that plays a note for another program; paper is light.
#include "merix/gi/graphics_builder.h"
#include "merix/gi/list_painter.h"
#include "merix/gi/scene.h"
#include "tests/golden/likeness.h"
#include "tests/phonomark/module_fixture.h"

#include <QDir>
#include <QPainter>

using namespace merix;

namespace {

class ModulePictures : public ModuleTest {
protected:
    /// Keeps the picture and compares it with the one of the case.
    void expectLike(const QString& name, const QImage& picture) {
        const QString results = QStringLiteral(MERIX_BINARY_DIR "/golden/") + name;
        ASSERT_TRUE(QDir().mkpath(results) && picture.save(results + QStringLiteral("/picture.png")));
        const auto found = test::difference(
            QImage(QStringLiteral(MERIX_SOURCE_DIR "/tests/golden/") + name + QStringLiteral("/picture.png")), picture);
        EXPECT_TRUE(found.alike()) << results.toStdString() << "/picture.png: " << found.described().toStdString();
    }
};

} // namespace

TEST_F(ModulePictures, EveryNoteThatPlaysShowsAGreenTriangle) {
    auto& manager = ap::DocManager::instance();
    const QString copy = folder.filePath(QStringLiteral("recorded.dxf"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(MERIX_SOURCE_DIR "/tests/golden/drawings/recorded.dxf"), copy));
    ASSERT_TRUE(manager.open(copy).message.isEmpty());
    ap::Document& drawing = *manager.current();
    const MxDbObjectId space = drawing.database()->currentSpaceId();

    TransformView view(400.0 / 960);
    ge::ViewTransform transform = view.transform();
    transform.center = {200, 125};
    transform.width = 960;
    transform.height = 600;
    view.setTransform(transform);
    for (const MxDbObjectId& id : drawing.database()->imp().block(space)->entityIds())
        if (auto* note = dynamic_cast<MxDbPhonomark*>(db::DatabaseImp::peek(id)))
            note->setPlaying(true);

    const gi::PaintOptions options;
    QImage picture(960, 600, QImage::Format_RGB32);
    picture.fill(options.background);
    {
        QPainter painter(&picture);
        gi::Scene(*drawing.database()).paint(painter, transform, space, options);
    }
    expectLike(QStringLiteral("playing"), picture);
}

TEST_F(ModulePictures, TheIconsCanBeToldOnDarkAndOnLight) {
    constexpr int kColumn = 60, kRow = 60;
    QImage picture(4 * kColumn, 2 * kRow, QImage::Format_RGB32);
    QPainter all(&picture);
    for (const int row : {0, 1}) {
        gi::PaintOptions options;
        if (row == 1)
            options.background = Qt::white;
        for (int column = 0; column < 4; ++column) {
            TransformView view(1.0); // one unit a pixel
            MxDbPhonomark* const note = static_cast<MxDbPhonomark*>(merix::db::DatabaseImp::peek(addNote(kRegionNote)));
            note->setExtents({{-100, -100, 0}, {14, 8, 0}});
            if (column >= 2) {
                note->setAudioData(soundBytes(200));
                note->setAudioDataSize(200);
            }
            if (column % 2 == 1)
                note->ShowRegion(false);
            QImage cell(kColumn, kRow, QImage::Format_RGB32);
            cell.fill(options.background);
            {
                QPainter painter(&cell);
                const ge::ViewTransform transform{
                    .center = {kColumn / 2, kRow / 2}, .unitsPerPixel = 1.0, .width = kColumn, .height = kRow};
                gi::ListPainter(painter, transform, options).draw(gi::GraphicsBuilder(database().imp()).build(*note));
            }
            all.drawImage(column * kColumn, row * kRow, cell);
        }
    }
    all.end();
    expectLike(QStringLiteral("icons"), picture);
}
