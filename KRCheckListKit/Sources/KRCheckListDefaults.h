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

    static QColor tintColor();
    static QColor defaultTextColor();
    static QColor placeholderColor();
    static QColor dropPlaceholderColor();
    static QColor dividerColor();
    static QColor fillColor();
};
