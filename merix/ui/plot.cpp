// SPDX-License-Identifier: MIT
#include "merix/ui/plot.h"

#include "merix/gi/scene.h"
#include "merix/io/file_access.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QPrintDialog>
#include <QPrinter>
#include <QSvgGenerator>

namespace merix::ui {

namespace {

constexpr double kMarginMillimetres = 10.0, kMillimetresPerInch = 25.4;
constexpr double kScreenDots = 96.0; ///< an inch, by which line weights are counted
constexpr int kFileDots = 600, kPictureDots = 200;

MxDbExtents windowOf(const PlotView& view, gi::Scene& scene, MxDbObjectId space) {
    return view.window.isEmpty() ? scene.extents(space) : view.window;
}

MxDbObjectId spaceOf(const PlotView& view) {
    return view.space.isNull() ? view.database->currentSpaceId() : view.space;
}

QPageLayout sheetFor(const PlotView& view) {
    gi::Scene scene(*view.database);
    const MxDbExtents box = windowOf(view, scene, spaceOf(view));
    const bool upright = !box.isEmpty() && box.maxPoint().y - box.minPoint().y > box.maxPoint().x - box.minPoint().x;
    const double margin = kMarginMillimetres;
    return {QPageSize(QPageSize::A3), upright ? QPageLayout::Portrait : QPageLayout::Landscape,
            QMarginsF(margin, margin, margin, margin), QPageLayout::Millimeter};
}

/// Paints on a whole sheet, margins included.
void plotSheet(QPaintDevice& device, const QPageLayout& sheet, int dotsPerInch, const PlotView& view) {
    QPainter painter(&device);
    const QRect area = sheet.paintRectPixels(dotsPerInch);
    painter.translate(area.topLeft());
    plot(painter, area.size(), dotsPerInch, view);
}

bool writePdf(QIODevice& file, const QPageLayout& sheet, const PlotView& view) {
    QPdfWriter writer(&file);
    writer.setCreator(QStringLiteral("Merix"));
    writer.setResolution(kFileDots);
    QPageLayout whole = sheet;
    whole.setMode(QPageLayout::FullPageMode);
    if (!writer.setPageLayout(whole))
        return false;
    plotSheet(writer, sheet, kFileDots, view);
    return true;
}

bool writeSvg(QIODevice& file, const QPageLayout& sheet, const PlotView& view) {
    QSvgGenerator writer;
    writer.setOutputDevice(&file);
    writer.setResolution(kFileDots);
    writer.setTitle(QStringLiteral("Merix"));
    const QRect all = sheet.fullRectPixels(kFileDots);
    writer.setSize(all.size());
    writer.setViewBox(all);
    plotSheet(writer, sheet, kFileDots, view);
    return true;
}

bool writePng(QIODevice& file, const QPageLayout& sheet, const PlotView& view) {
    QImage picture(sheet.fullRectPixels(kPictureDots).size(), QImage::Format_RGB32);
    picture.fill(Qt::white);
    picture.setDotsPerMeterX(qRound(kPictureDots * 1000 / kMillimetresPerInch));
    picture.setDotsPerMeterY(picture.dotsPerMeterX());
    plotSheet(picture, sheet, kPictureDots, view);
    return picture.save(&file, "PNG");
}

} // namespace

void plot(QPainter& painter, const QSizeF& size, double dotsPerInch, const PlotView& view) {
    gi::Scene scene(*view.database);
    const MxDbObjectId space = spaceOf(view);
    const MxDbExtents window = windowOf(view, scene, space);
    if (window.isEmpty())
        return;
    ge::ViewTransform transform;
    transform.width = size.width();
    transform.height = size.height();
    transform.fit(window, 0.0);
    gi::PaintOptions options;
    options.background = Qt::white;
    options.plot = options.lineWeights = true;
    options.pixelRatio = dotsPerInch / kScreenDots;
    // What lies beside the window stays away from the paper.
    const MxGePoint2d corner = transform.toPixel({window.minPoint().x, window.maxPoint().y, 0});
    const MxGePoint2d opposite = transform.toPixel({window.maxPoint().x, window.minPoint().y, 0});
    const double pen = options.pixelRatio * 2; // half of the widest line on the border
    painter.setClipRect(
        QRectF(QPointF(corner.x, corner.y), QPointF(opposite.x, opposite.y)).adjusted(-pen, -pen, pen, pen));
    scene.paint(painter, transform, space, options);
}

QString plotToFile(const PlotView& view, const QString& path) {
    const QString suffix = QFileInfo(path).suffix().toLower();
    const auto write = suffix == QLatin1String("pdf")   ? writePdf
                       : suffix == QLatin1String("svg") ? writeSvg
                       : suffix == QLatin1String("png") ? writePng
                                                        : nullptr;
    if (!write)
        return QStringLiteral("%1: a drawing is exported as .pdf, .svg or .png").arg(path);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly) || !write(buffer, sheetFor(view), view))
        return QStringLiteral("%1: the drawing cannot be put into the file").arg(path);
    io::ReplacementFile file;
    if (file.create(path.toStdString()) && file.write({bytes.constData(), std::size_t(bytes.size())}) && file.commit())
        return {};
    return QString::fromStdString(file.error());
}

bool printWithDialog(const PlotView& view, QWidget* parent) {
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageOrientation(sheetFor(view).orientation());
    QPrintDialog dialog(&printer, parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    QPainter painter(&printer);
    plot(painter, printer.pageLayout().paintRectPixels(printer.resolution()).size(), printer.resolution(), view);
    return true;
}

} // namespace merix::ui
