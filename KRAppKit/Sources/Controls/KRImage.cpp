#include "Controls/KRImage.h"

#include <QFile>
#include <QPaintDevice>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

// Few colours are drawn per image (normal, hovered, selected); more than this means churn, not reuse.
constexpr std::size_t kTintCacheLimit = 8;

KRSize pointSizeOf(const std::vector<KRImageRepresentation>& representations) {
    for (const KRImageRepresentation& representation : representations) {
        if (representation.scale == 1.0) {
            return representation.pixelSize();
        }
    }
    const KRImageRepresentation& first = representations.front();
    return KRSize{first.image.width() / first.scale, first.image.height() / first.scale};
}

QString joinedPath(const QString& bundle, const QString& file) {
    return bundle.endsWith(QLatin1Char('/')) ? bundle + file : bundle + QLatin1Char('/') + file;
}

} // namespace

KRImage::KRImage(std::vector<KRImageRepresentation> representations, KRSize size, bool isTemplate,
                 QString name)
    : m_representations(std::move(representations)), m_size(size), m_name(std::move(name)),
      m_template(isTemplate) {
    std::stable_sort(
        m_representations.begin(), m_representations.end(),
        [](const KRImageRepresentation& a, const KRImageRepresentation& b) { return a.scale < b.scale; });
}

std::shared_ptr<KRImage> KRImage::imageWithRepresentations(std::vector<std::pair<QImage, double>> images,
                                                           bool isTemplate) {
    std::vector<KRImageRepresentation> representations;
    for (auto& [image, scale] : images) {
        if (image.isNull() || !(scale > 0.0)) {
            continue;
        }
        image.setDevicePixelRatio(scale);
        representations.push_back(KRImageRepresentation{std::move(image), scale});
    }
    if (representations.empty()) {
        return nullptr;
    }
    const KRSize size = pointSizeOf(representations);
    return std::make_shared<KRImage>(std::move(representations), size, isTemplate);
}

std::shared_ptr<KRImage> KRImage::imageNamed(const QString& name, const QString& bundle) {
    if (name.isEmpty() || bundle.isEmpty()) {
        return nullptr;
    }
    QString baseName = name;
    if (baseName.endsWith(QLatin1String(".png"), Qt::CaseInsensitive)) {
        baseName.chop(4);
    }
    std::vector<std::pair<QImage, double>> images;
    const double scales[] = {1.0, 2.0};
    for (double scale : scales) {
        const QString file =
            scale == 1.0 ? baseName + QLatin1String(".png") : baseName + QLatin1String("@2x.png");
        const QString path = joinedPath(bundle, file);
        if (!QFile::exists(path)) {
            continue;
        }
        QImage image(path);
        if (!image.isNull()) {
            images.emplace_back(std::move(image), scale);
        }
    }
    std::shared_ptr<KRImage> image = imageWithRepresentations(std::move(images), false);
    if (image) {
        image->m_name = baseName;
    }
    return image;
}

bool KRImage::isTemplate() const {
    return m_template || m_name.endsWith(QLatin1String("Template"));
}

const KRImageRepresentation* KRImage::bestRepresentationForScale(double scale) const {
    if (m_representations.empty()) {
        return nullptr;
    }
    // Sorted ascending, so the first one reaching the scale is the nearest from above.
    for (const KRImageRepresentation& representation : m_representations) {
        if (representation.scale >= scale) {
            return &representation;
        }
    }
    return &m_representations.back();
}

std::shared_ptr<KRImage> KRImage::imageByLimitingToRepresentationWithScale(double scale) const {
    for (const auto& [limitedScale, limited] : m_limitedImages) {
        if (limitedScale == scale) {
            return limited;
        }
    }
    const KRImageRepresentation* chosen = nullptr;
    for (const KRImageRepresentation& representation : m_representations) {
        if (std::abs(representation.scale - scale) < 1e-9) {
            chosen = &representation;
            break;
        }
    }
    if (!chosen) {
        chosen = bestRepresentationForScale(scale);
    }
    std::vector<KRImageRepresentation> representations;
    if (chosen) {
        representations.push_back(*chosen);
    }
    auto limited = std::make_shared<KRImage>(std::move(representations), m_size, m_template, m_name);
    m_limitedImages.emplace_back(scale, limited);
    return limited;
}

const QImage& KRImage::tintedImage(std::size_t representationIndex, const QColor& tint) const {
    const QRgb rgba = tint.rgba();
    for (const TintedEntry& entry : m_tintCache) {
        if (entry.representationIndex == representationIndex && entry.rgba == rgba) {
            return entry.image;
        }
    }
    const QImage& source = m_representations[representationIndex].image;
    QImage tinted(source.size(), QImage::Format_ARGB32_Premultiplied);
    // Same ratio as the bitmap, so it is copied pixel for pixel rather than at its size in points.
    tinted.setDevicePixelRatio(source.devicePixelRatio());
    tinted.fill(Qt::transparent);
    {
        QPainter painter(&tinted);
        painter.drawImage(QPointF(0, 0), source);
        // Keeps the tint only where the bitmap has coverage, scaled by that coverage.
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(tinted.rect(), tint);
    }
    if (m_tintCache.size() >= kTintCacheLimit) {
        m_tintCache.erase(m_tintCache.begin());
    }
    m_tintCache.push_back(TintedEntry{representationIndex, rgba, std::move(tinted)});
    return m_tintCache.back().image;
}

void KRImage::draw(QPainter& painter, KRRect rectInPoints, double alpha, const QColor& tint) const {
    if (m_representations.empty() || alpha <= 0.0 || KRRectIsEmpty(rectInPoints)) {
        return;
    }
    const QPaintDevice* device = painter.device();
    const double deviceScale = device ? device->devicePixelRatioF() : 1.0;
    const KRImageRepresentation* representation = bestRepresentationForScale(deviceScale);
    const std::size_t index = std::size_t(representation - m_representations.data());

    const QImage& image =
        isTemplate() && tint.isValid() ? tintedImage(index, tint) : m_representations[index].image;

    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
    painter.setOpacity(painter.opacity() * std::clamp(alpha, 0.0, 1.0));
    painter.drawImage(KRToQRectF(rectInPoints), image, QRectF(image.rect()));
    painter.restore();
}
