#include "Controls/KRDefaults.h"

#include <QFontDatabase>
#include <QHash>

#include <algorithm>

QFont KRDefaults::regularFontOfSize(double points) {
    // Copies of one QFont share its data, so every view asking for the same size shares one font; a fresh
    // QFont per call would cost each caller its own copy of the font's data.
    static QHash<int, QFont> fonts;
    const int pixelSize = std::max(1, qRound(points));
    const auto found = fonts.constFind(pixelSize);
    if (found != fonts.constEnd()) {
        return found.value();
    }
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(pixelSize);
    font.setWeight(QFont::Normal);
    font.setItalic(false);
    fonts.insert(pixelSize, font);
    return font;
}

QColor KRDefaults::skyflowerBlueColor() {
    return QColor(0x3D, 0x8B, 0xF2);
}
QColor KRDefaults::taskSecondaryColor() {
    return QColor(0x5E, 0x67, 0x7A);
}
QColor KRDefaults::taskDetailsPlaceholderColor() {
    return QColor(0xB9, 0xBD, 0xC7);
}
QColor KRDefaults::manateeGrayColor() {
    return QColor(0x96, 0x9B, 0xAB);
}
QColor KRDefaults::sharkBlackColor() {
    return QColor(0x25, 0x27, 0x2C);
}
QColor KRDefaults::vantorBlue3Color() {
    return QColor(0xD4, 0xE5, 0xFD);
}
QColor KRDefaults::vantorBlue8Color() {
    return QColor(0x1A, 0x6D, 0xF0);
}

QColor KRDefaults::textFieldBorderColor() {
    return QColor(0xC8, 0xCB, 0xD2);
}
QColor KRDefaults::textFieldBackgroundColor() {
    return QColor(0xFF, 0xFF, 0xFF);
}
QColor KRDefaults::keyboardFocusIndicatorColor() {
    return QColor(0x3D, 0x8B, 0xF2, 0x80);
}
QColor KRDefaults::selectedTextBackgroundColor() {
    return QColor(0xB3, 0xD7, 0xFF);
}
double KRDefaults::textFieldFontSize() {
    return 13.0;
}
double KRDefaults::textFieldBorderedTextInset() {
    return 3.0;
}
double KRDefaults::focusRingWidth() {
    return 3.0;
}

QColor KRDefaults::clearColor() {
    return QColor(0, 0, 0, 0);
}
QColor KRDefaults::whiteColor() {
    return QColor(255, 255, 255);
}
QColor KRDefaults::blackColor() {
    return QColor(0, 0, 0);
}

QColor KRDefaults::colorWithWhite(double white, double alpha) {
    const double w = std::clamp(white, 0.0, 1.0);
    return QColor::fromRgbF(float(w), float(w), float(w), float(std::clamp(alpha, 0.0, 1.0)));
}

QColor KRDefaults::colorWithAlpha(const QColor& color, double alpha) {
    QColor result = color;
    result.setAlphaF(float(std::clamp(alpha, 0.0, 1.0)));
    return result;
}

QColor KRDefaults::blendedColor(const QColor& base, double fraction, const QColor& other) {
    if (!base.isValid() || !other.isValid()) {
        return QColor();
    }
    const double f = std::clamp(fraction, 0.0, 1.0);
    const QColor a = base.toRgb();
    const QColor b = other.toRgb();
    auto mix = [f](float x, float y) { return float(double(x) * (1.0 - f) + double(y) * f); };
    return QColor::fromRgbF(mix(a.redF(), b.redF()), mix(a.greenF(), b.greenF()), mix(a.blueF(), b.blueF()),
                            mix(a.alphaF(), b.alphaF()));
}
