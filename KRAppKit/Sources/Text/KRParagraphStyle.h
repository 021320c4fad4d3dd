#pragma once

// How lines of a paragraph are spaced. Equal positive minimum and maximum line heights fix every line at
// that height, whatever the fonts on it, which keeps a title's measured height independent of fallback
// fonts (emoji, CJK).
struct KRParagraphStyle {
    double minimumLineHeight = 0.0;
    double maximumLineHeight = 0.0;
    // Kept for the attribute set; text here wraps and is never truncated, so it does not change layout.
    double tighteningFactorForTruncation = 0.05;

    // The fixed line height, or 0 when lines take their natural heights.
    double fixedLineHeight() const {
        return minimumLineHeight > 0.0 && minimumLineHeight == maximumLineHeight ? minimumLineHeight : 0.0;
    }
    bool operator==(const KRParagraphStyle&) const = default;
};
