#pragma once
#include <QString>
#include <memory>
class KRImage;
class KRCheckListResources {
public:
    KRCheckListResources() = delete;
    static std::shared_ptr<KRImage> checkListResourcesImageNamed(const QString& name);
    static std::shared_ptr<KRImage> checkboxNormalImage();
    static std::shared_ptr<KRImage> checkboxCompletedImage();
    static std::shared_ptr<KRImage> checkboxCanceledImage();
    static std::shared_ptr<KRImage> handleImage();
    static QString bundle();
};
