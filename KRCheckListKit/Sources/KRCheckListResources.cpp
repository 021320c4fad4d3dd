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

std::shared_ptr<KRImage> KRCheckListResources::checkListResourcesImageNamed(const QString& name) {
    return KRHelper::cachedImageNamed(name, bundle());
}

std::shared_ptr<KRImage> KRCheckListResources::checkboxNormalImage() {
    return checkListResourcesImageNamed(QStringLiteral("KRChecklist-Checkbox-Normal-Template"));
}

std::shared_ptr<KRImage> KRCheckListResources::checkboxCompletedImage() {
    return checkListResourcesImageNamed(QStringLiteral("KRChecklist-Checkbox-Completed-Template"));
}

std::shared_ptr<KRImage> KRCheckListResources::checkboxCanceledImage() {
    return checkListResourcesImageNamed(QStringLiteral("KRChecklist-Checkbox-Canceled-Template"));
}

std::shared_ptr<KRImage> KRCheckListResources::handleImage() {
    return checkListResourcesImageNamed(QStringLiteral("KRChecklist-Handle-Template"));
}

QString KRCheckListResources::bundle() {
    static const bool initialized = (initializeCheckListResources(), true);
    Q_UNUSED(initialized);
    return QStringLiteral(":/KRCheckListKit");
}
