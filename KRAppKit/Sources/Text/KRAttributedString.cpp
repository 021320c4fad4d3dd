#include "Text/KRAttributedString.h"

#include <algorithm>

KRAttributedString::KRAttributedString(const QString& string, const KRTextAttributes& attributes)
    : m_string(string) {
    m_runs.push_back(Run{KRRange{0, length()}, attributes});
}

KRTextAttributes KRAttributedString::attributesAtIndex(KRUInteger index, KRRange* effectiveRange) const {
    if (m_runs.empty()) {
        if (effectiveRange) {
            *effectiveRange = KRRange{0, 0};
        }
        return {};
    }
    index = std::min(index, length() == 0 ? 0 : length() - 1);
    const auto run =
        std::upper_bound(m_runs.begin(), m_runs.end(), index,
                         [](KRUInteger value, const Run& item) { return value < item.range.location; }) -
        1;
    if (effectiveRange) {
        *effectiveRange = run->range;
    }
    return run->attributes;
}

void KRAttributedString::setAttributes(const KRTextAttributes& attributes, KRRange range) {
    const KRUInteger from = std::min(range.location, length());
    const KRUInteger to = std::min(length(), from + std::min(range.length, length() - from));
    if (from == to) {
        return;
    }
    std::vector<Run> runs;
    runs.reserve(m_runs.size() + 2);
    bool inserted = false;
    for (const Run& run : m_runs) {
        const KRUInteger runEnd = KRMaxRange(run.range);
        if (run.range.location < from) {
            runs.push_back(Run{KRRange{run.range.location, std::min(runEnd, from) - run.range.location},
                               run.attributes});
        }
        if (!inserted && runEnd > from) {
            runs.push_back(Run{KRRange{from, to - from}, attributes});
            inserted = true;
        }
        if (runEnd > to) {
            const KRUInteger start = std::max(run.range.location, to);
            runs.push_back(Run{KRRange{start, runEnd - start}, run.attributes});
        }
    }
    m_runs = std::move(runs);
    mergeAdjacentRuns();
}

const KRTextAttributes& KRAttributedString::leadingAttributes() const {
    // Read on every measurement, so answered without a copy.
    static const KRTextAttributes none;
    return m_runs.empty() ? none : m_runs.front().attributes;
}

void KRAttributedString::mergeAdjacentRuns() {
    std::vector<Run> merged;
    merged.reserve(m_runs.size());
    for (Run& run : m_runs) {
        if (!merged.empty() && merged.back().attributes == run.attributes) {
            merged.back().range.length += run.range.length;
        } else {
            merged.push_back(std::move(run));
        }
    }
    m_runs = std::move(merged);
}
