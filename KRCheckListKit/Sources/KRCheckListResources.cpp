#include "KRCheckListResources.h"

#include "Controls/KRHelper.h"
#include "Controls/KRImage.h"

#include <QtGlobal>

// At global scope, not in an unnamed namespace: Q_INIT_RESOURCE declares the initialiser in the enclosing
// namespace. Consumers normally register the images at start-up already; calling the initialiser as well
// covers linkers that drop unreferenced objects, and a second registration of the same data is ignored.
static void initializeCheckListResources() {
    Q_INIT_RESOURCE(KRCheckListKitImages);
}

namespace {

// What the toolkit's cache answered for one image, kept while the cache keeps it: every row asks for its
// images whenever it updates.
struct RememberedImage {
    int generation = 0;
    std::shared_ptr<KRImage> image;
};

std::shared_ptr<KRImage> rememberedImageNamed(RememberedImage& remembered, const QString& name) {
    const int generation = KRHelper::cachedImageGeneration();
    if (!remembered.image || remembered.generation != generation) {
        remembered.image = KRCheckListResources::checkListResourcesImageNamed(name);
        remembered.generation = generation;
    }
    return remembered.image;
}

} // namespace

std::shared_ptr<KRImage> KRCheckListResources::checkListResourcesImageNamed(const QString& name) {
    return KRHelper::cachedImageNamed(name, bundle());
}

std::shared_ptr<KRImage> KRCheckListResources::checkboxNormalImage() {
    static RememberedImage remembered;
    return rememberedImageNamed(remembered, QStringLiteral("KRChecklist-Checkbox-Normal-Template"));
}

std::shared_ptr<KRImage> KRCheckListResources::checkboxCompletedImage() {
    static RememberedImage remembered;
    return rememberedImageNamed(remembered, QStringLiteral("KRChecklist-Checkbox-Completed-Template"));
}

std::shared_ptr<KRImage> KRCheckListResources::checkboxCanceledImage() {
    static RememberedImage remembered;
    return rememberedImageNamed(remembered, QStringLiteral("KRChecklist-Checkbox-Canceled-Template"));
}

std::shared_ptr<KRImage> KRCheckListResources::handleImage() {
    static RememberedImage remembered;
    return rememberedImageNamed(remembered, QStringLiteral("KRChecklist-Handle-Template"));
}

QString KRCheckListResources::bundle() {
    static const bool initialized = (initializeCheckListResources(), true);
    Q_UNUSED(initialized);
    return QStringLiteral(":/KRCheckListKit");
}
