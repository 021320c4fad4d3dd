#include "Text/KRTextAttributes.h"

KRUInteger KRTextAttributes::count() const {
    return KRUInteger{font.has_value()} + KRUInteger{foregroundColor.has_value()} +
           KRUInteger{strikethroughStyle.has_value()} + KRUInteger{paragraphStyle.has_value()};
}

QTextCharFormat KRTextAttributes::charFormat() const {
    QTextCharFormat format;
    if (font) {
        format.setFont(*font);
    }
    if (foregroundColor) {
        format.setForeground(*foregroundColor);
    }
    if (strikethroughStyle) {
        format.setFontStrikeOut(*strikethroughStyle != 0);
    }
    return format;
}

double KRTextAttributes::fixedLineHeight() const {
    return paragraphStyle ? paragraphStyle->fixedLineHeight() : 0.0;
}
