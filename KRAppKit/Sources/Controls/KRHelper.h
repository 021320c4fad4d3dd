#pragma once

#include <QString>

#include <memory>

class KRImage;

// Shared look-ups of the kit's resources.
class KRHelper {
public:
    // The image <name> of bundle, loaded once per process. Only the given bundle is searched, never the
    // application's own resources, so a client image of the same name cannot shadow the kit's. A missing
    // image is not remembered: a resource registered later still loads.
    static std::shared_ptr<KRImage> cachedImageNamed(const QString& name, const QString& bundle);

    // Changes whenever the cache lets go of its images: an image answered under the same generation is still
    // the one the cache would answer, so a caller that asks often may keep it meanwhile.
    static int cachedImageGeneration();

    // For tests: how many loads reached the file or resource system, and a way to start over.
    static int cachedImageLoadCount();
    static void clearImageCache();
};
