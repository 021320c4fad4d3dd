#pragma once

#include <QColor>
#include <QFont>

// Every metric, the font and the colours of the check list. No instances and no state: callers ask
// afresh each time, so the list follows the toolkit's palette and fonts.
class KRCheckListDefaults {
public:
    KRCheckListDefaults() = delete;

    static double itemHeight();
    static QFont font();
    static double lineHeight();
    static double cornerRadius();
    static double borderWidth();
    static double hoverOffsetX();
    static double hoverOffsetY();
    static double maxDragOutX();
    static double maxDragOutY();
    // The width a drop placeholder asks for; the list gives it the gap's frame.
    static double dropPlaceholderWidth();
    // The spring of a handle drag: the lift, the rows making room and the drop (seconds before the
    // animation multiplier).
    static double draggingDampingRatio();
    static double draggingDuration();
    // A drop placeholder fades in and out linearly over this long (before the animation multiplier).
    static double dropPlaceholderFadeDuration();

    // A scrolling host: while a row is dragged near the top or bottom edge of the viewport, it scrolls by
    // itself, from the minimum speed where the pointer enters the edge zone up to the maximum at the edge
    // and beyond (points per second), in steps of one display frame (seconds); the caret it keeps in view
    // keeps this much room from the viewport's edges.
    static double autoScrollEdgeZoneHeight();
    static double autoScrollMinimumSpeed();
    static double autoScrollMaximumSpeed();
    static double autoScrollInterval();
    static double caretRevealMargin();
    static QColor tintColor();
    static QColor defaultTextColor();
    static QColor placeholderColor();
    static QColor dropPlaceholderColor();
    static QColor dividerColor();
    static QColor fillColor();
};
