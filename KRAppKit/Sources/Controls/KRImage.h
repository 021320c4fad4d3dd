#pragma once

#include "Geometry/KRGeometry.h"

#include <QColor>
#include <QImage>
#include <QString>

#include <memory>
#include <utility>
#include <vector>

class QPainter;

// One bitmap of an image, drawn at `scale` device pixels per point.
struct KRImageRepresentation {
    QImage image;
    double scale = 1.0;

    KRSize pixelSize() const { return KRSize{double(image.width()), double(image.height())}; }
};

// An image measured in points, with bitmaps for one or more scales (1x, 2x). Drawing picks the bitmap
// that suits the target's device pixel ratio. A template image is a mask: only its alpha channel counts,
// and it draws in the tint colour it is given.
class KRImage {
public:
    // Null images are skipped; answers null when no usable bitmap remains.
    static std::shared_ptr<KRImage> imageWithRepresentations(std::vector<std::pair<QImage, double>> images,
                                                             bool isTemplate);
    // Loads <bundle>/<name>.png (1x) and <bundle>/<name>@2x.png (2x). A bundle is a Qt resource prefix
    // (":/KRCheckListKit") or a directory. Answers null when neither file exists.
    static std::shared_ptr<KRImage> imageNamed(const QString& name, const QString& bundle);

    KRImage(std::vector<KRImageRepresentation> representations, KRSize size, bool isTemplate,
            QString name = {});
    KRImage(const KRImage&) = delete;
    KRImage& operator=(const KRImage&) = delete;

    const QString& name() const { return m_name; }
    // True when set, or when the name ends in "Template" (the usual naming of mask images).
    bool isTemplate() const;
    void setTemplate(bool isTemplate) { m_template = isTemplate; }

    // In points: the 1x bitmap's pixel size, or another bitmap's pixel size divided by its scale.
    KRSize size() const { return m_size; }
    // Sorted by ascending scale.
    const std::vector<KRImageRepresentation>& representations() const { return m_representations; }
    // The bitmap with the smallest scale at least `scale`, else the largest one (null when there is none).
    const KRImageRepresentation* bestRepresentationForScale(double scale) const;
    // A copy holding only the bitmap of `scale` (the best one for it when missing), at the same point size.
    // The copy is made once per scale and shared, with the tinted bitmaps it caches.
    std::shared_ptr<KRImage> imageByLimitingToRepresentationWithScale(double scale) const;

    // Draws into rectInPoints with the bitmap suiting the painter's device pixel ratio. A template image
    // with a valid tint draws the tint through its alpha channel; anything else draws as is. alpha
    // multiplies the result.
    void draw(QPainter& painter, KRRect rectInPoints, double alpha = 1.0,
              const QColor& tint = QColor()) const;

private:
    const QImage& tintedImage(std::size_t representationIndex, const QColor& tint) const;

    struct TintedEntry {
        std::size_t representationIndex;
        QRgb rgba;
        QImage image;
    };

    std::vector<KRImageRepresentation> m_representations;
    KRSize m_size;
    QString m_name;
    bool m_template = false;
    // Tinting costs a full pass over the bitmap, so the few colours an image is drawn in are kept.
    mutable std::vector<TintedEntry> m_tintCache;
    mutable std::vector<std::pair<double, std::shared_ptr<KRImage>>> m_limitedImages;
};
