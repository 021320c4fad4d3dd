#include "Controls/KRHelper.h"

#include "Controls/KRImage.h"

#include <QHash>
#include <QPair>

namespace {

struct ImageCache {
    QHash<QPair<QString, QString>, std::shared_ptr<KRImage>> images; // keyed by (bundle, name)
    int loadCount = 0;
    int generation = 0;
};

ImageCache& imageCache() {
    static ImageCache cache;
    return cache;
}

} // namespace

std::shared_ptr<KRImage> KRHelper::cachedImageNamed(const QString& name, const QString& bundle) {
    ImageCache& cache = imageCache();
    const QPair<QString, QString> key(bundle, name);
    const auto found = cache.images.constFind(key);
    if (found != cache.images.constEnd()) {
        return found.value();
    }
    ++cache.loadCount;
    std::shared_ptr<KRImage> image = KRImage::imageNamed(name, bundle);
    if (image) {
        cache.images.insert(key, image);
    }
    return image;
}

int KRHelper::cachedImageGeneration() {
    return imageCache().generation;
}

int KRHelper::cachedImageLoadCount() {
    return imageCache().loadCount;
}

void KRHelper::clearImageCache() {
    imageCache().images.clear();
    imageCache().loadCount = 0;
    ++imageCache().generation;
}
