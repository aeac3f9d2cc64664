// SPDX-License-Identifier: MIT
#include "merix/ui/plot.h"

#include "merix/ap/document_imp.h"
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
    return view.window.isEmpty() ? scene.extents(space, true) : view.window;
}

MxDbObjectId spaceOf(const PlotView& view) {
    return view.space.isNull() ? view.database->currentSpaceId() : view.space;
}

/// `view` with its space and its window found. Empty, or one line that says why there is nothing to plot.
QString prepare(PlotView& view) {
    view.space = spaceOf(view);
    const bool isAll = view.window.isEmpty();
    gi::Scene scene(*view.database);
    view.window = windowOf(view, scene, view.space);
    if (view.window.isEmpty())
        return QStringLiteral("The drawing shows nothing to plot.");
    const MxGeVector3d size = view.window.maxPoint() - view.window.minPoint();
    return isAll || (size.x > 0.0 && size.y > 0.0) ? QString() : QStringLiteral("The window has no size.");
}

QPageLayout sheetFor(const PlotView& prepared) {
    const MxDbExtents& box = prepared.window;
    const bool upright = box.maxPoint().y - box.minPoint().y > box.maxPoint().x - box.minPoint().x;
    const double margin = kMarginMillimetres;
    return {QPageSize(QPageSize::A3), upright ? QPageLayout::Portrait : QPageLayout::Landscape,
            QMarginsF(margin, margin, margin, margin), QPageLayout::Millimeter};
}

/// Paints on a whole sheet, margins included. False when the device cannot be painted on.
bool plotSheet(QPaintDevice& device, const QPageLayout& sheet, int dotsPerInch, const PlotView& view) {
    QPainter painter;
    if (!painter.begin(&device))
        return false;
    const QRect area = sheet.paintRectPixels(dotsPerInch);
    painter.translate(area.topLeft());
    plot(painter, area.size(), dotsPerInch, view);
    return painter.end();
}

bool writePdf(QIODevice& file, const QPageLayout& sheet, const PlotView& view) {
    QPdfWriter writer(&file);
    writer.setCreator(QStringLiteral("Merix"));
    writer.setResolution(kFileDots);
    QPageLayout whole = sheet;
    whole.setMode(QPageLayout::FullPageMode);
    return writer.setPageLayout(whole) && plotSheet(writer, sheet, kFileDots, view);
}

bool writeSvg(QIODevice& file, const QPageLayout& sheet, const PlotView& view) {
    QSvgGenerator writer;
    writer.setOutputDevice(&file);
    writer.setResolution(kFileDots);
    writer.setTitle(QStringLiteral("Merix"));
    const QRect all = sheet.fullRectPixels(kFileDots);
    writer.setSize(all.size());
    writer.setViewBox(all);
    return plotSheet(writer, sheet, kFileDots, view);
}

bool writePng(QIODevice& file, const QPageLayout& sheet, const PlotView& view) {
    QImage picture(sheet.fullRectPixels(kPictureDots).size(), QImage::Format_RGB32);
    picture.fill(Qt::white);
    picture.setDotsPerMeterX(qRound(kPictureDots * 1000 / kMillimetresPerInch));
    picture.setDotsPerMeterY(picture.dotsPerMeterX());
    return plotSheet(picture, sheet, kPictureDots, view) && picture.save(&file, "PNG");
}

using Writer = bool (*)(QIODevice& file, const QPageLayout& sheet, const PlotView& view);
Writer writerFor(const QString& path) {
    const QString suffix = QFileInfo(path).suffix().toLower();
    return suffix == QLatin1String("pdf")   ? writePdf
           : suffix == QLatin1String("svg") ? writeSvg
           : suffix == QLatin1String("png") ? writePng
                                            : nullptr;
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

QString whyNoPlotFile(const QString& path) {
    return writerFor(path) ? QString() : QStringLiteral("%1: a drawing is exported as .pdf, .svg or .png").arg(path);
}

QString plotToFile(const PlotView& view, const QString& path) {
    const Writer write = writerFor(path);
    PlotView prepared = view;
    if (const QString why = write ? prepare(prepared) : whyNoPlotFile(path); !why.isEmpty())
        return why;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly) || !write(buffer, sheetFor(prepared), prepared))
        return QStringLiteral("%1: the drawing cannot be put into the file").arg(path);
    io::ReplacementFile file;
    if (file.create(path.toStdString()) && file.write({bytes.constData(), std::size_t(bytes.size())}) && file.commit())
        return {};
    return QString::fromStdString(file.error());
}

QString plotToPrinter(const PlotView& view, QPrinter& printer) {
    PlotView prepared = view;
    if (const QString why = prepare(prepared); !why.isEmpty())
        return why;
    QPainter painter;
    if (!painter.begin(&printer))
        return QStringLiteral("The printer %1 cannot be written to.").arg(printer.printerName()).simplified();
    plot(painter, printer.pageLayout().paintRectPixels(printer.resolution()).size(), printer.resolution(), prepared);
    return painter.end() && printer.printerState() != QPrinter::Error
               ? QString()
               : QStringLiteral("The drawing was not printed: the printer failed.");
}

QString printWithDialog(const PlotView& view, QWidget* parent) {
    PlotView prepared = view;
    if (const QString why = prepare(prepared); !why.isEmpty())
        return why;
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageOrientation(sheetFor(prepared).orientation());
    QPrintDialog dialog(&printer, parent);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    if (!ap::DocManager::instance().document(view.database))
        return QStringLiteral("The drawing was closed meanwhile."); // by a module
    return plotToPrinter(view, printer);
}

} // namespace merix::ui
