// Draws the check list's template images and writes each as <name>.png and <name>@2x.png.
//
//   KRCheckListImageGenerator [output-directory]      default: the library's Resources directory
//   KRCheckListImageGenerator --preview montage.png   every image at 1x and 2x, magnified, tinted
//
// Template images are masks: only alpha counts, so everything is drawn in opaque black on transparent.
// Geometry is in points; each scale is drawn natively so the 2x bitmaps are not upscaled 1x ones.
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QString>

#include <cmath>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

constexpr double kCheckboxImageSide = 18.0;
constexpr double kBoxSide = 14.0;
constexpr double kBoxCornerRadius = 3.5;

constexpr double kHandleWidth = 12.0;
constexpr double kHandleHeight = 10.0;

// The outline's outer edge sits on pixel boundaries at every scale, so it stays sharp. At 1x it is one
// whole pixel, the nearest to 1.25pt that stays crisp; at 2x it is the full 1.25pt, whose half pixel on
// the inner edge is too fine to read as blur.
double outlineWidthInPixels(int scale) {
    return scale == 1 ? 1.0 : 2.5;
}

struct ImageDrawing {
    QString name;
    QSizeF pointSize;
    std::function<void(QPainter&, int scale)> draw;
};

QRectF boxRect() {
    const double inset = (kCheckboxImageSide - kBoxSide) / 2.0;
    return QRectF(inset, inset, kBoxSide, kBoxSide);
}

void drawBoxOutline(QPainter& painter, int scale) {
    const QRectF outer = boxRect();
    const double width = outlineWidthInPixels(scale) / scale;
    const QRectF inner = outer.adjusted(width, width, -width, -width);
    // A ring filled between two rounded rectangles keeps the outer edge exactly where it is put; a
    // stroke would centre on the path and straddle pixels.
    QPainterPath ring;
    ring.addRoundedRect(outer, kBoxCornerRadius, kBoxCornerRadius);
    ring.addRoundedRect(inner, kBoxCornerRadius - width, kBoxCornerRadius - width);
    ring.setFillRule(Qt::OddEvenFill);
    painter.fillPath(ring, Qt::black);
}

void strokeMark(QPainter& painter, const QPainterPath& mark, int scale) {
    // A quarter point bolder than the outline, so the mark reads first; diagonals cannot be pixel-sharp
    // anyway, and at 1x a thinner stroke keeps the crossing from clotting.
    const double width = outlineWidthInPixels(scale) / scale + 0.25;
    QPen pen(Qt::black, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    painter.strokePath(mark, pen);
}

void drawCheckMark(QPainter& painter, int scale) {
    // The short stroke and the long one meet below and left of the centre, as a hand-drawn tick does.
    QPainterPath mark;
    mark.moveTo(6.0, 9.0);
    mark.lineTo(8.5, 11.5);
    mark.lineTo(12.5, 6.5);
    strokeMark(painter, mark, scale);
}

void drawCancelMark(QPainter& painter, int scale) {
    // Ends on pixel centres, so at 1x both diagonals run through whole pixels.
    QPainterPath mark;
    mark.moveTo(6.5, 6.5);
    mark.lineTo(11.5, 11.5);
    mark.moveTo(11.5, 6.5);
    mark.lineTo(6.5, 11.5);
    strokeMark(painter, mark, scale);
}

void drawHandle(QPainter& painter, int scale) {
    // Three short bars one pixel tall at 1x, on whole pixel rows; rounded ends only show at 2x. The row
    // places this image 2pt below the top of the first text line, so the bars sit low in it to centre
    // on that line rather than above it.
    const double barHeight = 1.0;
    const double radius = scale == 1 ? 0.0 : barHeight / 2.0;
    for (const double top : {3.0, 6.0, 9.0}) {
        QPainterPath bar;
        bar.addRoundedRect(QRectF(2.0, top, kHandleWidth - 4.0, barHeight), radius, radius);
        painter.fillPath(bar, Qt::black);
    }
}

std::vector<ImageDrawing> imageDrawings() {
    const QSizeF checkbox(kCheckboxImageSide, kCheckboxImageSide);
    return {
        {QStringLiteral("KRChecklist-Checkbox-Normal-Template"), checkbox,
         [](QPainter& painter, int scale) { drawBoxOutline(painter, scale); }},
        {QStringLiteral("KRChecklist-Checkbox-Completed-Template"), checkbox,
         [](QPainter& painter, int scale) {
             drawBoxOutline(painter, scale);
             drawCheckMark(painter, scale);
         }},
        {QStringLiteral("KRChecklist-Checkbox-Canceled-Template"), checkbox,
         [](QPainter& painter, int scale) {
             drawBoxOutline(painter, scale);
             drawCancelMark(painter, scale);
         }},
        {QStringLiteral("KRChecklist-Handle-Template"), QSizeF(kHandleWidth, kHandleHeight), drawHandle},
    };
}

QImage render(const ImageDrawing& drawing, int scale) {
    const QSize pixels(int(std::lround(drawing.pointSize.width() * scale)),
                       int(std::lround(drawing.pointSize.height() * scale)));
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.scale(scale, scale);
    drawing.draw(painter, scale);
    painter.end();
    return image;
}

QImage tinted(const QImage& mask, const QColor& tint) {
    QImage image(mask.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.drawImage(0, 0, mask);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), tint);
    return image;
}

int writeImages(const QString& directory) {
    if (!QDir().mkpath(directory)) {
        std::fprintf(stderr, "cannot create %s\n", qPrintable(directory));
        return 1;
    }
    for (const ImageDrawing& drawing : imageDrawings()) {
        for (const int scale : {1, 2}) {
            const QString file =
                drawing.name + (scale == 1 ? QStringLiteral(".png") : QStringLiteral("@2x.png"));
            const QString path = QDir(directory).filePath(file);
            if (!render(drawing, scale).save(path, "PNG")) {
                std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
                return 1;
            }
            std::printf("%s\n", qPrintable(path));
        }
    }
    return 0;
}

// One row per image: 1x and 2x in two tints, magnified without smoothing so single pixels show, then
// the same at actual size.
int writePreview(const QString& path) {
    constexpr int kMagnification = 4;
    constexpr int kCell = 2 * 18 * kMagnification + 16;
    const QColor tints[] = {QColor(0x2f, 0x7c, 0xf6), QColor(0x8e, 0x8e, 0x93)};
    const std::vector<ImageDrawing> drawings = imageDrawings();

    QImage preview(kCell * 5, kCell * int(drawings.size()), QImage::Format_ARGB32_Premultiplied);
    preview.fill(Qt::white);
    QPainter painter(&preview);
    for (std::size_t row = 0; row < drawings.size(); ++row) {
        const int top = int(row) * kCell + 8;
        int left = 8;
        for (const QColor& tint : tints) {
            for (const int scale : {1, 2}) {
                const QImage image = tinted(render(drawings[row], scale), tint);
                const int factor = kMagnification * 2 / scale;
                painter.drawImage(QRect(left, top, image.width() * factor, image.height() * factor), image);
                left += kCell;
            }
        }
        for (const int scale : {1, 2}) {
            painter.drawImage(QPoint(left + (scale - 1) * 48, top),
                              tinted(render(drawings[row], scale), tints[0]));
        }
    }
    painter.end();
    if (!preview.save(path, "PNG")) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        return 1;
    }
    std::printf("%s\n", qPrintable(path));
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && QString::fromLocal8Bit(argv[1]) == QStringLiteral("--preview")) {
        return writePreview(QString::fromLocal8Bit(argv[2]));
    }
    if (argc > 2) {
        std::fprintf(stderr, "usage: %s [output-directory] | --preview montage.png\n", argv[0]);
        return 2;
    }
    return writeImages(argc == 2 ? QString::fromLocal8Bit(argv[1])
                                 : QStringLiteral(KR_CHECKLIST_RESOURCES_DIRECTORY));
}
