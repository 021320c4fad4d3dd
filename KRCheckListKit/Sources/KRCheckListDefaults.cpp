#include "KRCheckListDefaults.h"

#include "Controls/KRDefaults.h"

double KRCheckListDefaults::itemHeight() {
    return 28.0;
}

QFont KRCheckListDefaults::font() {
    return KRDefaults::regularFontOfSize(14.0);
}

double KRCheckListDefaults::lineHeight() {
    return 18.0;
}

double KRCheckListDefaults::cornerRadius() {
    return 3.0;
}

double KRCheckListDefaults::borderWidth() {
    return 1.0;
}

double KRCheckListDefaults::hoverOffsetX() {
    return 7.0;
}

double KRCheckListDefaults::hoverOffsetY() {
    return -hoverOffsetX();
}

double KRCheckListDefaults::maxDragOutX() {
    return 20.0;
}

// The same reach both ways.
double KRCheckListDefaults::maxDragOutY() {
    return maxDragOutX();
}

double KRCheckListDefaults::dropPlaceholderWidth() {
    return 10.0;
}

double KRCheckListDefaults::draggingDampingRatio() {
    return 0.9;
}

double KRCheckListDefaults::draggingDuration() {
    return 0.25;
}

double KRCheckListDefaults::dropPlaceholderFadeDuration() {
    return 0.2;
}

QColor KRCheckListDefaults::tintColor() {
    return KRDefaults::skyflowerBlueColor();
}

QColor KRCheckListDefaults::defaultTextColor() {
    return KRDefaults::taskSecondaryColor();
}

QColor KRCheckListDefaults::placeholderColor() {
    return KRDefaults::taskDetailsPlaceholderColor();
}

QColor KRCheckListDefaults::dropPlaceholderColor() {
    return KRDefaults::colorWithWhite(0.0, 0.05);
}

QColor KRCheckListDefaults::dividerColor() {
    return KRDefaults::colorWithWhite(0.0, 0.07);
}

QColor KRCheckListDefaults::fillColor() {
    return KRDefaults::clearColor();
}

double KRCheckListDefaults::autoScrollEdgeZoneHeight() {
    return 48.0;
}

double KRCheckListDefaults::autoScrollMinimumSpeed() {
    return 60.0;
}

double KRCheckListDefaults::autoScrollMaximumSpeed() {
    return 1200.0;
}

double KRCheckListDefaults::autoScrollInterval() {
    return 1.0 / 60.0;
}

double KRCheckListDefaults::caretRevealMargin() {
    return 8.0;
}
