#pragma once

#include <QString>

#include <memory>

class KRImage;

// The check list's own images, looked up in the library's resources only, so an application image of
// the same name never replaces one of them. No instances; the toolkit caches each image once loaded.
class KRCheckListResources {
public:
    KRCheckListResources() = delete;

    // Null when the library has no image of that name.
    static std::shared_ptr<KRImage> checkListResourcesImageNamed(const QString& name);

    static std::shared_ptr<KRImage> checkboxNormalImage();
    static std::shared_ptr<KRImage> checkboxCompletedImage();
    static std::shared_ptr<KRImage> checkboxCanceledImage();
    static std::shared_ptr<KRImage> handleImage();

    // The resource prefix holding the images; registered before this first answers.
    static QString bundle();
};
