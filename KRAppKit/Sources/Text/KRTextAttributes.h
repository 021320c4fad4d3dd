#pragma once

#include "Foundation/KRTypes.h"
#include "Text/KRParagraphStyle.h"

#include <QColor>
#include <QFont>
#include <QTextCharFormat>

#include <optional>

// A set of text attributes; an absent entry means "not set" (the drawing default applies).
struct KRTextAttributes {
    std::optional<QFont> font;
    std::optional<QColor> foregroundColor;
    // 0 none, 1 single line through the text.
    std::optional<int> strikethroughStyle;
    std::optional<KRParagraphStyle> paragraphStyle;

    // How many entries are set.
    KRUInteger count() const;
    // The character-level entries as a format for Qt's text engine (the paragraph style is not one).
    QTextCharFormat charFormat() const;
    // The fixed line height of the paragraph style, or 0.
    double fixedLineHeight() const;
    bool operator==(const KRTextAttributes&) const = default;
};
