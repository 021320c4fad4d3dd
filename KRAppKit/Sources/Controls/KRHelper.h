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

    // For tests: how many loads reached the file or resource system, and a way to start over.
    static int cachedImageLoadCount();
    static void clearImageCache();
};
