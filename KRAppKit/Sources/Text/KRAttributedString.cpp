#include "Text/KRAttributedString.h"

#include "Foundation/KRSharedValues.h"

#include <algorithm>
#include <vector>

namespace {

bool sameAttributes(const std::shared_ptr<const KRTextAttributes>& a,
                    const std::shared_ptr<const KRTextAttributes>& b) {
    return a == b || (a && b && *a == *b);
}

} // namespace

std::shared_ptr<const KRTextAttributes>
KRAttributedString::sharedAttributes(const KRTextAttributes& attributes) {
    // A list has only a few distinct sets (title per status, placeholder, the editor's).
    static KRSharedValues<KRTextAttributes, 16> recent;
    return recent.shared(attributes);
}

KRAttributedString::KRAttributedString(const QString& string, const KRTextAttributes& attributes)
    : m_string(string), m_uniform(sharedAttributes(attributes)) {}

KRAttributedString
KRAttributedString::withSharedAttributes(const QString& string,
                                         std::shared_ptr<const KRTextAttributes> attributes) {
    KRAttributedString result;
    result.m_string = string;
    result.m_uniform = attributes ? std::move(attributes) : sharedAttributes(KRTextAttributes());
    return result;
}

std::size_t KRAttributedString::Runs::size() const {
    if (!m_string->m_runs.empty()) {
        return m_string->m_runs.size();
    }
    return m_string->m_uniform ? 1 : 0;
}

KRAttributedString::Run KRAttributedString::Runs::operator[](std::size_t index) const {
    if (!m_string->m_runs.empty()) {
        const StoredRun& run = m_string->m_runs[index];
        return Run{run.range, *run.attributes};
    }
    return Run{KRRange{0, m_string->length()}, *m_string->m_uniform};
}

KRTextAttributes KRAttributedString::attributesAtIndex(KRUInteger index, KRRange* effectiveRange) const {
    if (m_runs.empty()) {
        if (effectiveRange) {
            *effectiveRange = KRRange{0, m_uniform ? length() : 0};
        }
        return m_uniform ? *m_uniform : KRTextAttributes();
    }
    index = std::min(index, length() == 0 ? 0 : length() - 1);
    const auto run = std::upper_bound(m_runs.begin(), m_runs.end(), index,
                                      [](KRUInteger value, const StoredRun& item) {
                                          return value < item.range.location;
                                      }) -
                     1;
    if (effectiveRange) {
        *effectiveRange = run->range;
    }
    return *run->attributes;
}

void KRAttributedString::setAttributes(const KRTextAttributes& attributes, KRRange range) {
    const KRUInteger from = std::min(range.location, length());
    const KRUInteger to = std::min(length(), from + std::min(range.length, length() - from));
    if (from == to) {
        return;
    }
    std::vector<StoredRun> current;
    if (!m_runs.empty()) {
        current.assign(m_runs.begin(), m_runs.end());
    } else if (m_uniform) {
        current.push_back(StoredRun{KRRange{0, length()}, m_uniform});
    }
    const std::shared_ptr<const KRTextAttributes> shared = sharedAttributes(attributes);
    std::vector<StoredRun> runs;
    runs.reserve(current.size() + 2);
    bool inserted = false;
    for (const StoredRun& run : current) {
        const KRUInteger runEnd = KRMaxRange(run.range);
        if (run.range.location < from) {
            runs.push_back(StoredRun{KRRange{run.range.location, std::min(runEnd, from) - run.range.location},
                                     run.attributes});
        }
        if (!inserted && runEnd > from) {
            runs.push_back(StoredRun{KRRange{from, to - from}, shared});
            inserted = true;
        }
        if (runEnd > to) {
            const KRUInteger start = std::max(run.range.location, to);
            runs.push_back(StoredRun{KRRange{start, runEnd - start}, run.attributes});
        }
    }
    storeRuns(std::move(runs));
}

// Merges equal neighbours; a single run is kept as the uniform attributes.
void KRAttributedString::storeRuns(std::vector<StoredRun> runs) {
    std::vector<StoredRun> merged;
    merged.reserve(runs.size());
    for (StoredRun& run : runs) {
        if (!merged.empty() && sameAttributes(merged.back().attributes, run.attributes)) {
            merged.back().range.length += run.range.length;
        } else {
            merged.push_back(std::move(run));
        }
    }
    m_runs.clear();
    if (merged.size() == 1) {
        m_uniform = std::move(merged.front().attributes);
        return;
    }
    m_uniform.reset();
    m_runs.reserve(merged.size());
    for (StoredRun& run : merged) {
        m_runs.push_back(run);
    }
}

const KRTextAttributes& KRAttributedString::leadingAttributes() const {
    // Read on every measurement, so answered without a copy.
    static const KRTextAttributes none;
    if (!m_runs.empty()) {
        return *m_runs.front().attributes;
    }
    return m_uniform ? *m_uniform : none;
}

bool KRAttributedString::operator==(const KRAttributedString& other) const {
    if (m_string != other.m_string) {
        return false;
    }
    const Runs mine = runs();
    const Runs theirs = other.runs();
    if (mine.size() != theirs.size()) {
        return false;
    }
    for (std::size_t i = 0; i < mine.size(); ++i) {
        const Run a = mine[i];
        const Run b = theirs[i];
        if (a.range != b.range || (&a.attributes != &b.attributes && !(a.attributes == b.attributes))) {
            return false;
        }
    }
    return true;
}
