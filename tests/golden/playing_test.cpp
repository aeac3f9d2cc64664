// SPDX-License-Identifier: MIT
// The playing mark is set by a procedure that plays a note for another program, so no script can bring it about: here
// the note is marked and painted in this process.
#include "merix/gi/scene.h"
#include "tests/golden/likeness.h"
#include "tests/phonomark/module_fixture.h"

#include <QDir>
#include <QPainter>

using namespace merix;
using PlayingGolden = ModuleTest;

TEST_F(PlayingGolden, EveryNoteThatPlaysShowsAGreenTriangle) {
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
    const QString results = QStringLiteral(MERIX_BINARY_DIR "/golden/playing/");
    ASSERT_TRUE(QDir().mkpath(results) && picture.save(results + QStringLiteral("picture.png")));
    const auto found =
        test::difference(QImage(QStringLiteral(MERIX_SOURCE_DIR "/tests/golden/playing/picture.png")), picture);
    EXPECT_TRUE(found.alike()) << results.toStdString() << "picture.png: " << found.described().toStdString();
}
