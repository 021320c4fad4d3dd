#pragma once

// One of each kind of user-perceived character that is more than one UTF-16 unit, for the tests that type,
// move over, select, delete, split and join them.

#include <QString>
#include <QTextBoundaryFinder>

#include <ostream>
#include <vector>

struct KRGraphemeClusterSample {
    const char* name;
    QString text;
};

inline void PrintTo(const KRGraphemeClusterSample& sample, std::ostream* out) {
    *out << sample.name;
}

inline const std::vector<KRGraphemeClusterSample>& KRGraphemeClusterSamples() {
    static const std::vector<KRGraphemeClusterSample> samples = {
        {"EmojiWithSkinTone", QString::fromUtf8("\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD")},
        {"ZeroWidthJoinedFamily",
         QString::fromUtf8("\xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7")},
        {"Flag", QString::fromUtf8("\xF0\x9F\x87\xA9\xF0\x9F\x87\xAA")},
        {"CombiningAccent", QStringLiteral("e\u0301")},
        {"HangulJamo", QStringLiteral("\u1100\u1161\u11A8")},
        {"SurrogatePair", QString::fromUtf8("\xF0\x9D\x84\x9E")},
    };
    return samples;
}

// Whether position lies between two grapheme clusters of text (or at either end).
inline bool KRIsGraphemeClusterBoundary(const QString& text, qsizetype position) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(position);
    return finder.isAtBoundary();
}
