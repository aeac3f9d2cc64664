// SPDX-License-Identifier: MIT
// Pictures that no script can bring about: the note is made and painted in this process. The playing mark is set by a
// procedure that plays a note for another program, notes are highlighted by programs too; paper is light.
#include "merix/gi/graphics_builder.h"
#include "merix/gi/list_painter.h"
#include "merix/gi/scene.h"
#include "merix/ui/drawing_view.h"
#include "tests/golden/likeness.h"
#include "tests/phonomark/module_fixture.h"

#include <QDir>
#include <QPainter>

using namespace merix;

namespace {

class ModulePictures : public ModuleTest {
protected:
    /// Opens a copy of one of the cases' drawings.
    void open(const QString& name) {
        const QString copy = folder.filePath(name);
        ASSERT_TRUE(QFile::copy(QStringLiteral(MERIX_SOURCE_DIR "/tests/golden/drawings/") + name, copy));
        ASSERT_TRUE(ap::DocManager::instance().open(copy).message.isEmpty());
        useDocument(*ap::DocManager::instance().current());
    }
    /// Of the current space, in the order of drawing.
    std::vector<MxDbPhonomark*> notes() {
        std::vector<MxDbPhonomark*> found;
        for (const MxDbObjectId& id : database().imp().block(database().currentSpaceId())->entityIds())
            if (auto* note = dynamic_cast<MxDbPhonomark*>(db::DatabaseImp::peek(id)))
                found.push_back(note);
        return found;
    }
    /// Keeps the picture and compares it with the one of the case.
    void expectLike(const QString& name, const QImage& picture) {
        const QString results = QStringLiteral(MERIX_BINARY_DIR "/golden/") + name;
        ASSERT_TRUE(QDir().mkpath(results) && picture.save(results + QStringLiteral("/picture.png")));
        const auto found = test::difference(
            QImage(QStringLiteral(MERIX_SOURCE_DIR "/tests/golden/") + name + QStringLiteral("/picture.png")), picture);
        EXPECT_TRUE(found.alike()) << results.toStdString() << "/picture.png: " << found.described().toStdString();
    }
};

/// The drawing as a window shows it: 400 by 250 units in 960 by 600 pixels.
class Shown {
public:
    explicit Shown(ap::Document& document) {
        m_view.resize(960, 600);
        m_view.setDocument(&document);
        ge::ViewTransform transform = m_view.transform();
        transform.center = {200, 125};
        transform.unitsPerPixel = 400.0 / 960;
        m_view.setTransform(transform);
    }
    QImage picture() { return m_view.grab().toImage().convertToFormat(QImage::Format_RGB32); }

private:
    ui::DrawingView m_view;
};

} // namespace

TEST_F(ModulePictures, EveryNoteThatPlaysShowsAGreenTriangle) {
    open(QStringLiteral("recorded.dxf"));

    TransformView view(400.0 / 960);
    ge::ViewTransform transform = view.transform();
    transform.center = {200, 125};
    transform.width = 960;
    transform.height = 600;
    view.setTransform(transform);
    for (MxDbPhonomark* note : notes())
        note->setPlaying(true);

    const gi::PaintOptions options;
    QImage picture(960, 600, QImage::Format_RGB32);
    picture.fill(options.background);
    {
        QPainter painter(&picture);
        gi::Scene(database()).paint(painter, transform, database().currentSpaceId(), options);
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

TEST_F(ModulePictures, WithTheirRegionsHiddenNotesOfEveryTypeKeepTheirMarkers) {
    open(QStringLiteral("recorded.dxf"));
    addNote(kPointNote, {60, 120, 0});
    for (const int type : {kRegionNote, kObjectNote}) {
        MxDbPhonomark& silent = note(addNote(type));
        silent.setExtents(MxDbExtents({160, 180, 0}, {type == kRegionNote ? 200.0 : 240.0, 205, 0}));
    }
    Shown shown(document());
    expectLike(QStringLiteral("region-shown"), shown.picture());
    for (MxDbPhonomark* note : notes())
        note->ShowRegion(false);
    expectLike(QStringLiteral("region-hidden"), shown.picture());
}

TEST_F(ModulePictures, AHighlightedNoteShowsWhatItBelongsTo) {
    open(QStringLiteral("recorded.dxf"));
    Shown shown(document());
    for (MxDbPhonomark* note : notes())
        note->doUnhighlight();
    expectLike(QStringLiteral("unhighlighted"), shown.picture());
    for (MxDbPhonomark* note : notes())
        note->doHighlight();
    expectLike(QStringLiteral("highlighted-by-note"), shown.picture());
}
