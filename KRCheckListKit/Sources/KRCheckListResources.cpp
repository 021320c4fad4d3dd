#include "KRCheckListResources.h"
#include "Controls/KRHelper.h"
#include "Controls/KRImage.h"
#include <QImage>
#include <map>
// TEMPORARY local stand-in until the real images land.
namespace {
std::shared_ptr<KRImage> fake(const QString& name, int w, int h) {
    static std::map<QString, std::shared_ptr<KRImage>> images;
    auto& image = images[name];
    if (!image) {
        QImage one(w, h, QImage::Format_ARGB32_Premultiplied);
        one.fill(Qt::black);
        QImage two(2 * w, 2 * h, QImage::Format_ARGB32_Premultiplied);
        two.fill(Qt::black);
        image = KRImage::imageWithRepresentations({{one, 1.0}, {two, 2.0}}, true);
    }
    return image;
}
} // namespace
std::shared_ptr<KRImage> KRCheckListResources::checkListResourcesImageNamed(const QString& name) {
    return fake(name, 18, 18);
}
std::shared_ptr<KRImage> KRCheckListResources::checkboxNormalImage() {
    return fake("n", 18, 18);
}
std::shared_ptr<KRImage> KRCheckListResources::checkboxCompletedImage() {
    return fake("c", 18, 18);
}
std::shared_ptr<KRImage> KRCheckListResources::checkboxCanceledImage() {
    return fake("x", 18, 18);
}
std::shared_ptr<KRImage> KRCheckListResources::handleImage() {
    return fake("h", 12, 10);
}
QString KRCheckListResources::bundle() {
    return ":/KRCheckListKit";
}
