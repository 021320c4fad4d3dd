#pragma once

#include "Foundation/KRRange.h"
#include "Text/KRTextAttributes.h"

#include <QString>

#include <vector>

// A string with attributes over ranges of it. Runs cover the whole string, in order, without gaps. An empty
// string keeps the attributes it was made with in one empty run, so an empty field still knows its font and
// line height. Ranges count UTF-16 code units, as QString does.
class KRAttributedString {
public:
    struct Run {
        KRRange range;
        KRTextAttributes attributes;
        bool operator==(const Run&) const = default;
    };

    KRAttributedString() = default;
    explicit KRAttributedString(const QString& string, const KRTextAttributes& attributes = {});

    const QString& string() const { return m_string; }
    KRUInteger length() const { return static_cast<KRUInteger>(m_string.size()); }
    const std::vector<Run>& runs() const { return m_runs; }

    // The attributes at index (clamped into the string) and the run's range.
    KRTextAttributes attributesAtIndex(KRUInteger index, KRRange* effectiveRange = nullptr) const;
    // Replaces the attributes over range (clamped to the string), merging equal neighbours.
    void setAttributes(const KRTextAttributes& attributes, KRRange range);
    // The attributes of the first character, or those an empty string was made with.
    const KRTextAttributes& leadingAttributes() const;
    bool hasUniformAttributes() const { return m_runs.size() <= 1; }

    bool operator==(const KRAttributedString&) const = default;

private:
    void mergeAdjacentRuns();

    QString m_string;
    std::vector<Run> m_runs;
};
