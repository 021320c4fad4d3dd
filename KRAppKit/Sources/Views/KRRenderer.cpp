#include "Views/KRRenderer.h"

#include "Views/KRView.h"

#include <QImage>
#include <QPaintDevice>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <list>
#include <typeinfo>
#include <vector>

namespace {

int g_paintedViewCount = 0;

// Beyond this a translucent subtree is faded view by view instead of through a layer (memory guard).
constexpr qint64 kMaxLayerPixels = 8192LL * 8192LL;

double shadowExtent(const KRView& view, double shadowOpacity) {
    if (shadowOpacity <= 0.0 || !view.shadowColor().isValid() || view.shadowColor().alpha() == 0) {
        return 0.0;
    }
    const KRSize offset = view.shadowOffset();
    // Two points of slack cover the rounding of the blur kernel to whole pixels.
    return std::max(0.0, view.shadowRadius()) * 2.0 +
           std::max(std::abs(offset.width), std::abs(offset.height)) + 2.0;
}

KRRect outset(KRRect rect, double amount) {
    return KRRectMake(rect.origin.x - amount, rect.origin.y - amount, rect.size.width + 2.0 * amount,
                      rect.size.height + 2.0 * amount);
}

// Where the view's frame appears once scaled about its centre (superview coordinates).
KRRect scaledFrame(KRRect frame, double scale) {
    if (scale == 1.0) {
        return frame;
    }
    const double width = frame.size.width * scale;
    const double height = frame.size.height * scale;
    return KRRectMake(frame.origin.x + (frame.size.width - width) / 2.0,
                      frame.origin.y + (frame.size.height - height) / 2.0, width, height);
}

// The mapping between a view's bounds coordinates and its superview's, taking the scale into account.
struct ViewMapping {
    KRRect frame;
    KRPoint boundsOrigin;
    double scale;

    KRRect toSuperview(KRRect rect) const {
        const double cx = frame.size.width / 2.0;
        const double cy = frame.size.height / 2.0;
        const double x = frame.origin.x + cx + (rect.origin.x - boundsOrigin.x - cx) * scale;
        const double y = frame.origin.y + cy + (rect.origin.y - boundsOrigin.y - cy) * scale;
        return KRRectMake(x, y, rect.size.width * scale, rect.size.height * scale);
    }
    KRRect fromSuperview(KRRect rect) const {
        const double cx = frame.size.width / 2.0;
        const double cy = frame.size.height / 2.0;
        const double x = (rect.origin.x - frame.origin.x - cx) / scale + cx + boundsOrigin.x;
        const double y = (rect.origin.y - frame.origin.y - cy) / scale + cy + boundsOrigin.y;
        return KRRectMake(x, y, rect.size.width / scale, rect.size.height / scale);
    }
};

bool isVisible(const KRView& view) {
    return !view.isHidden() && view.presentationAlphaValue() > 0.0 && view.presentationScale() > 0.0;
}

// Everything the subtree may touch, in the superview's coordinates.
KRRect subtreeBounds(const KRView& view) {
    const KRRect frame = view.presentationFrame();
    const double scale = view.presentationScale();
    KRRect result = outset(scaledFrame(frame, scale), shadowExtent(view, view.presentationShadowOpacity()));
    if (view.masksToBounds()) {
        return result;
    }
    const ViewMapping mapping{frame, view.bounds().origin, scale};
    for (const auto& subview : view.subviews()) {
        if (subview && isVisible(*subview)) {
            result = KRRectUnion(result, mapping.toSuperview(subtreeBounds(*subview)));
        }
    }
    return result;
}

QPainterPath roundedRectPath(const QRectF& rect, double radius) {
    QPainterPath path;
    if (radius > 0.0) {
        const double clamped = std::min(radius, std::min(rect.width(), rect.height()) / 2.0);
        path.addRoundedRect(rect, clamped, clamped);
    } else {
        path.addRect(rect);
    }
    return path;
}

// --- Shadows ------------------------------------------------------------------------------------------

struct ShadowKey {
    int width;
    int height;
    int radiusQ;
    int cornerRadiusQ;
    int scaleQ;
    QRgb rgb;
    friend bool operator==(const ShadowKey&, const ShadowKey&) = default;
};

struct ShadowImage {
    QImage image;
    int padding = 0; // pixels around the silhouette
};

// Box blur of one row or column with a running sum; samples outside read as zero.
void boxBlurLine(const std::uint8_t* source, std::uint8_t* target, int length, int stride, int radius) {
    const int window = radius * 2 + 1;
    int sum = 0;
    for (int i = 0; i <= std::min(radius, length - 1); ++i) {
        sum += source[i * stride];
    }
    for (int i = 0; i < length; ++i) {
        target[i * stride] = static_cast<std::uint8_t>((sum + window / 2) / window);
        const int entering = i + radius + 1;
        const int leaving = i - radius;
        if (entering < length) {
            sum += source[entering * stride];
        }
        if (leaving >= 0) {
            sum -= source[leaving * stride];
        }
    }
}

// Three box passes per direction approximate a Gaussian.
void boxBlur3(std::vector<std::uint8_t>& alpha, int width, int height, int radius) {
    if (radius <= 0) {
        return;
    }
    std::vector<std::uint8_t> scratch(alpha.size());
    for (int pass = 0; pass < 3; ++pass) {
        for (int y = 0; y < height; ++y) {
            boxBlurLine(alpha.data() + y * width, scratch.data() + y * width, width, 1, radius);
        }
        for (int x = 0; x < width; ++x) {
            boxBlurLine(scratch.data() + x, alpha.data() + x, height, width, radius);
        }
    }
}

ShadowImage makeShadowImage(const ShadowKey& key, double radius, double cornerRadius, double scale) {
    const int blur = radius > 0.0 ? static_cast<int>(std::ceil(radius * scale * 2.0 / 3.0)) : 0;
    const int padding = blur * 3;
    const int width = key.width + padding * 2;
    const int height = key.height + padding * 2;

    QImage silhouette(width, height, QImage::Format_Alpha8);
    silhouette.fill(0);
    {
        QPainter painter(&silhouette);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::black);
        painter.drawPath(
            roundedRectPath(QRectF(padding, padding, key.width, key.height), cornerRadius * scale));
    }
    std::vector<std::uint8_t> alpha(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        std::copy_n(silhouette.constScanLine(y), width, alpha.data() + static_cast<std::size_t>(y) * width);
    }
    boxBlur3(alpha, width, height, blur);

    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    const QColor color = QColor::fromRgb(key.rgb);
    for (int y = 0; y < height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int a = alpha[static_cast<std::size_t>(y) * width + x];
            line[x] = qRgba(color.red() * a / 255, color.green() * a / 255, color.blue() * a / 255, a);
        }
    }
    image.setDevicePixelRatio(scale);
    return ShadowImage{image, padding};
}

// Blurring is the expensive part; views keep their size between frames, so a few recent ones are kept.
const ShadowImage& cachedShadowImage(const ShadowKey& key, double radius, double cornerRadius, double scale) {
    static std::list<std::pair<ShadowKey, ShadowImage>> cache;
    constexpr std::size_t kCapacity = 24;
    for (auto it = cache.begin(); it != cache.end(); ++it) {
        if (it->first == key) {
            cache.splice(cache.begin(), cache, it);
            return cache.front().second;
        }
    }
    cache.emplace_front(key, makeShadowImage(key, radius, cornerRadius, scale));
    if (cache.size() > kCapacity) {
        cache.pop_back();
    }
    return cache.front().second;
}

double transformScale(const QTransform& transform) {
    return std::sqrt(std::abs(transform.determinant()));
}

double deviceScale(const QPainter& painter) {
    const QPaintDevice* device = painter.device();
    return device ? device->devicePixelRatio() : 1.0;
}

// Drawn in the view's frame coordinates (origin at the frame's top left), before the background.
void drawShadow(QPainter& painter, const KRView& view, KRSize size, double opacity) {
    const QColor shadowColor = view.shadowColor();
    const double radius = std::max(0.0, view.shadowRadius());
    double scale = deviceScale(painter) * transformScale(painter.worldTransform());
    // A wide blur hides detail, so it is computed at (at most) one pixel per point and scaled up.
    if (radius >= 2.0) {
        scale = std::min(scale, 1.0);
    }
    scale = std::max(scale, 0.05);
    const int width = static_cast<int>(std::ceil(size.width * scale));
    const int height = static_cast<int>(std::ceil(size.height * scale));
    if (width <= 0 || height <= 0) {
        return;
    }
    const ShadowKey key{width,
                        height,
                        static_cast<int>(std::lround(radius * 64.0)),
                        static_cast<int>(std::lround(view.cornerRadius() * 64.0)),
                        static_cast<int>(std::lround(scale * 64.0)),
                        shadowColor.rgb()};
    const ShadowImage& shadow = cachedShadowImage(key, radius, view.cornerRadius(), scale);
    const KRSize offset = view.shadowOffset();
    painter.save();
    painter.setOpacity(painter.opacity() * opacity * shadowColor.alphaF());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QPointF(offset.width - shadow.padding / scale, offset.height - shadow.padding / scale),
                      shadow.image);
    painter.restore();
}

// --- Painting -------------------------------------------------------------------------------------------

void paintSubtree(QPainter& painter, const KRView& view, KRRect dirtyRect);

// Paints the view itself and its subviews at full opacity (the caller has faded the painter or set up a
// layer). selfVisible is false when only subviews reach into the dirty rect.
void paintContents(QPainter& painter, const KRView& view, KRRect dirtyRect, bool selfVisible) {
    const KRRect frame = view.presentationFrame();
    const double scale = view.presentationScale();
    const KRRect localBounds = KRRectMake(0.0, 0.0, frame.size.width, frame.size.height);
    const QRectF localRect = KRToQRectF(localBounds);

    painter.save();
    painter.translate(frame.origin.x, frame.origin.y);
    if (scale != 1.0) {
        painter.translate(frame.size.width / 2.0, frame.size.height / 2.0);
        painter.scale(scale, scale);
        painter.translate(-frame.size.width / 2.0, -frame.size.height / 2.0);
    }

    if (selfVisible) {
        ++g_paintedViewCount;
        const double shadowOpacity = view.presentationShadowOpacity();
        if (shadowExtent(view, shadowOpacity) > 0.0) {
            drawShadow(painter, view, frame.size, shadowOpacity);
        }
        const QColor background = view.presentationBackgroundColor();
        if (background.isValid() && background.alpha() > 0) {
            if (view.cornerRadius() > 0.0) {
                painter.fillPath(roundedRectPath(localRect, view.cornerRadius()), background);
            } else {
                painter.fillRect(localRect, background);
            }
        }
    }

    const KRRect bounds = view.bounds();
    const ViewMapping mapping{frame, bounds.origin, scale};
    KRRect localDirty = mapping.fromSuperview(dirtyRect);
    bool paintInside = true;
    if (view.masksToBounds()) {
        localDirty = KRRectIntersection(
            localDirty, KRRectMake(bounds.origin.x, bounds.origin.y, frame.size.width, frame.size.height));
        paintInside = !KRRectIsEmpty(localDirty);
    }
    if (paintInside) {
        painter.save();
        painter.translate(-bounds.origin.x, -bounds.origin.y);
        if (view.masksToBounds()) {
            const QRectF clip(bounds.origin.x, bounds.origin.y, frame.size.width, frame.size.height);
            if (view.cornerRadius() > 0.0) {
                painter.setClipPath(roundedRectPath(clip, view.cornerRadius()), Qt::IntersectClip);
            } else {
                painter.setClipRect(clip, Qt::IntersectClip);
            }
        }
        if (selfVisible) {
            const KRRect drawRect =
                KRRectIntersection(localDirty, KRRectMake(bounds.origin.x, bounds.origin.y, frame.size.width,
                                                          frame.size.height));
            if (!KRRectIsEmpty(drawRect)) {
                painter.save();
                // draw() is the view's own business; the renderer itself never changes the view.
                const_cast<KRView&>(view).draw(painter, drawRect);
                painter.restore();
            }
        }
        for (const auto& subview : view.subviews()) {
            if (subview) {
                paintSubtree(painter, *subview, localDirty);
            }
        }
        painter.restore();
    }

    if (selfVisible) {
        const QColor border = view.presentationBorderColor();
        const double borderWidth = view.borderWidth();
        if (borderWidth > 0.0 && border.isValid() && border.alpha() > 0) {
            const double half = borderWidth / 2.0;
            const QRectF strokeRect = localRect.adjusted(half, half, -half, -half);
            if (strokeRect.width() >= 0.0 && strokeRect.height() >= 0.0) {
                QPen pen(border, borderWidth);
                pen.setJoinStyle(Qt::MiterJoin);
                painter.setPen(pen);
                painter.setBrush(Qt::NoBrush);
                painter.drawPath(roundedRectPath(strokeRect, std::max(0.0, view.cornerRadius() - half)));
            }
        }
    }
    painter.restore();
}

// Whether fading the painter would differ from compositing the subtree as one layer: it does as soon as
// two draw steps may overlap.
bool needsLayer(const KRView& view, double shadowOpacity) {
    for (const auto& subview : view.subviews()) {
        if (subview && isVisible(*subview)) {
            return true;
        }
    }
    int steps = 0;
    if (shadowExtent(view, shadowOpacity) > 0.0) {
        ++steps;
    }
    const QColor background = view.presentationBackgroundColor();
    if (background.isValid() && background.alpha() > 0) {
        ++steps;
    }
    if (view.borderWidth() > 0.0 && view.presentationBorderColor().isValid() &&
        view.presentationBorderColor().alpha() > 0) {
        ++steps;
    }
    // A plain KRView draws no content of its own; any subclass may.
    if (typeid(view) != typeid(KRView)) {
        ++steps;
    }
    return steps > 1;
}

// Renders the subtree into an offscreen image aligned to device pixels and draws it faded by alpha.
// Answers false when no layer could be made (too large), so the caller falls back to a plain fade.
bool paintThroughLayer(QPainter& painter, const KRView& view, KRRect dirtyRect, bool selfVisible,
                       double alpha) {
    QRectF area = KRToQRectF(KRRectIntersection(subtreeBounds(view), dirtyRect));
    if (painter.hasClipping()) {
        area = area.intersected(painter.clipBoundingRect());
    }
    if (area.isEmpty()) {
        return true;
    }
    const QTransform world = painter.worldTransform();
    const double dpr = deviceScale(painter);
    const QRectF deviceArea = world.mapRect(area);
    const QRect pixels = QRectF(deviceArea.x() * dpr, deviceArea.y() * dpr, deviceArea.width() * dpr,
                                deviceArea.height() * dpr)
                             .toAlignedRect();
    if (pixels.isEmpty()) {
        return true;
    }
    if (static_cast<qint64>(pixels.width()) * pixels.height() > kMaxLayerPixels) {
        return false;
    }
    QImage layer(pixels.size(), QImage::Format_ARGB32_Premultiplied);
    layer.fill(Qt::transparent);
    layer.setDevicePixelRatio(dpr);
    const QPointF layerOrigin(pixels.x() / dpr, pixels.y() / dpr);
    {
        QPainter layerPainter(&layer);
        layerPainter.setRenderHints(painter.renderHints());
        layerPainter.setWorldTransform(world * QTransform::fromTranslate(-layerOrigin.x(), -layerOrigin.y()));
        layerPainter.setFont(painter.font());
        paintContents(layerPainter, view, KRFromQRectF(area), selfVisible);
    }
    painter.save();
    painter.resetTransform();
    painter.setOpacity(painter.opacity() * alpha);
    painter.drawImage(layerOrigin, layer);
    painter.restore();
    return true;
}

void paintSubtree(QPainter& painter, const KRView& view, KRRect dirtyRect) {
    if (view.isHidden()) {
        return;
    }
    const double alpha = std::min(1.0, view.presentationAlphaValue());
    const double scale = view.presentationScale();
    if (alpha <= 0.0 || scale <= 0.0) {
        return;
    }
    const KRRect frame = view.presentationFrame();
    const double shadowOpacity = view.presentationShadowOpacity();
    const KRRect ownArea = outset(scaledFrame(frame, scale), shadowExtent(view, shadowOpacity));
    const bool selfVisible = KRRectIntersectsRect(ownArea, dirtyRect);
    // Subviews of a view that does not clip may lie outside it: such a view is culled as a whole only when
    // nothing of its subtree reaches into the dirty rect, which costs a walk of its geometry but spares the
    // painter's work for each of its subviews (a long list paints only the rows in view).
    if (!selfVisible && (view.masksToBounds() || view.subviews().empty() ||
                         !KRRectIntersectsRect(subtreeBounds(view), dirtyRect))) {
        return;
    }
    if (alpha < 1.0 && needsLayer(view, shadowOpacity) &&
        paintThroughLayer(painter, view, dirtyRect, selfVisible, alpha)) {
        return;
    }
    painter.save();
    painter.setOpacity(painter.opacity() * alpha);
    paintContents(painter, view, dirtyRect, selfVisible);
    painter.restore();
}

} // namespace

void KRRenderer::paintView(QPainter& painter, const KRView& view, KRRect dirtyRect) {
    g_paintedViewCount = 0;
    if (KRRectIsNull(dirtyRect) || KRRectIsEmpty(dirtyRect)) {
        return;
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    paintSubtree(painter, view, dirtyRect);
    painter.restore();
}

int KRRenderer::lastPaintedViewCount() {
    return g_paintedViewCount;
}
