#include "Foundation/KRIndexSet.h"

#include <QStringList>

#include <algorithm>

namespace {

// Ranges whose end would wrap around are cut at the largest representable index.
KRRange clampedRange(KRRange range) {
    if (range.length > KRUIntegerMax - range.location) {
        range.length = KRUIntegerMax - range.location;
    }
    return range;
}

// The first stored range that ends after index (so it contains index or lies wholly above it).
std::vector<KRRange>::const_iterator firstRangeEndingAfter(const std::vector<KRRange>& ranges,
                                                           KRUInteger index) {
    return std::upper_bound(ranges.begin(), ranges.end(), index,
                            [](KRUInteger value, const KRRange& range) { return value < KRMaxRange(range); });
}

// The last stored range that starts at or below index, or end() when there is none.
std::vector<KRRange>::const_iterator lastRangeStartingAtOrBefore(const std::vector<KRRange>& ranges,
                                                                 KRUInteger index) {
    auto it = std::upper_bound(ranges.begin(), ranges.end(), index,
                               [](KRUInteger value, const KRRange& range) { return value < range.location; });
    if (it == ranges.begin()) {
        return ranges.end();
    }
    return std::prev(it);
}

// Appends range to a sorted run, merging it with the last range when they overlap or touch.
void appendMerging(std::vector<KRRange>& ranges, KRRange range) {
    if (range.length == 0) {
        return;
    }
    if (!ranges.empty() && range.location <= KRMaxRange(ranges.back())) {
        KRRange& last = ranges.back();
        const KRUInteger end = std::max(KRMaxRange(last), KRMaxRange(range));
        last.length = end - last.location;
        return;
    }
    ranges.push_back(range);
}

} // namespace

KRIndexSet::KRIndexSet(KRUInteger index) {
    insertRange(KRRange{index, 1});
}

KRIndexSet::KRIndexSet(KRRange range) {
    insertRange(range);
}

KRIndexSet::KRIndexSet(std::initializer_list<KRUInteger> indexes) {
    for (KRUInteger index : indexes) {
        insertRange(KRRange{index, 1});
    }
}

KRUInteger KRIndexSet::count() const {
    KRUInteger total = 0;
    for (const KRRange& range : m_ranges) {
        total += range.length;
    }
    return total;
}

KRUInteger KRIndexSet::firstIndex() const {
    return m_ranges.empty() ? KRNotFound : m_ranges.front().location;
}

KRUInteger KRIndexSet::lastIndex() const {
    return m_ranges.empty() ? KRNotFound : KRMaxRange(m_ranges.back()) - 1;
}

KRUInteger KRIndexSet::indexGreaterThanIndex(KRUInteger index) const {
    if (index == KRUIntegerMax) {
        return KRNotFound;
    }
    return indexGreaterThanOrEqualToIndex(index + 1);
}

KRUInteger KRIndexSet::indexLessThanIndex(KRUInteger index) const {
    if (index == 0) {
        return KRNotFound;
    }
    return indexLessThanOrEqualToIndex(index - 1);
}

KRUInteger KRIndexSet::indexGreaterThanOrEqualToIndex(KRUInteger index) const {
    const auto it = firstRangeEndingAfter(m_ranges, index);
    if (it == m_ranges.end()) {
        return KRNotFound;
    }
    return std::max(it->location, index);
}

KRUInteger KRIndexSet::indexLessThanOrEqualToIndex(KRUInteger index) const {
    const auto it = lastRangeStartingAtOrBefore(m_ranges, index);
    if (it == m_ranges.end()) {
        return KRNotFound;
    }
    return std::min(index, KRMaxRange(*it) - 1);
}

bool KRIndexSet::containsIndex(KRUInteger index) const {
    const auto it = firstRangeEndingAfter(m_ranges, index);
    return it != m_ranges.end() && it->location <= index;
}

bool KRIndexSet::containsIndexesInRange(KRRange range) const {
    // An empty range names no indexes to look for; like NSIndexSet we answer no.
    if (range.length == 0) {
        return false;
    }
    range = clampedRange(range);
    const auto it = firstRangeEndingAfter(m_ranges, range.location);
    return it != m_ranges.end() && it->location <= range.location && KRMaxRange(range) <= KRMaxRange(*it);
}

bool KRIndexSet::containsIndexes(const KRIndexSet& other) const {
    return std::all_of(other.m_ranges.begin(), other.m_ranges.end(),
                       [this](const KRRange& range) { return containsIndexesInRange(range); });
}

bool KRIndexSet::intersectsIndexesInRange(KRRange range) const {
    if (range.length == 0) {
        return false;
    }
    range = clampedRange(range);
    const auto it = firstRangeEndingAfter(m_ranges, range.location);
    return it != m_ranges.end() && it->location < KRMaxRange(range);
}

KRIndexSet KRIndexSet::indexSetByAddingIndex(KRUInteger index) const {
    KRIndexSet result(*this);
    result.insertRange(KRRange{index, 1});
    return result;
}

KRIndexSet KRIndexSet::indexSetByAddingIndexes(const KRIndexSet& other) const {
    // One ordered merge of both range lists: linear in the number of ranges.
    KRIndexSet result;
    result.m_ranges.reserve(m_ranges.size() + other.m_ranges.size());
    auto a = m_ranges.begin();
    auto b = other.m_ranges.begin();
    while (a != m_ranges.end() || b != other.m_ranges.end()) {
        if (b == other.m_ranges.end() || (a != m_ranges.end() && a->location <= b->location)) {
            appendMerging(result.m_ranges, *a++);
        } else {
            appendMerging(result.m_ranges, *b++);
        }
    }
    return result;
}

KRIndexSet KRIndexSet::indexSetByAddingIndexesInRange(KRRange range) const {
    KRIndexSet result(*this);
    result.insertRange(range);
    return result;
}

KRIndexSet KRIndexSet::indexSetByRemovingIndex(KRUInteger index) const {
    KRIndexSet result(*this);
    result.eraseRange(KRRange{index, 1});
    return result;
}

KRIndexSet KRIndexSet::indexSetByRemovingIndexes(const KRIndexSet& other) const {
    // Walks both lists once, cutting every range of other out of ours.
    KRIndexSet result;
    auto b = other.m_ranges.begin();
    for (KRRange range : m_ranges) {
        KRUInteger start = range.location;
        const KRUInteger end = KRMaxRange(range);
        while (b != other.m_ranges.end() && KRMaxRange(*b) <= start) {
            ++b;
        }
        auto cut = b;
        while (start < end && cut != other.m_ranges.end() && cut->location < end) {
            if (cut->location > start) {
                result.m_ranges.push_back(KRRange{start, cut->location - start});
            }
            start = std::max(start, KRMaxRange(*cut));
            if (KRMaxRange(*cut) <= end) {
                ++cut;
            } else {
                break;
            }
        }
        if (start < end) {
            result.m_ranges.push_back(KRRange{start, end - start});
        }
        b = cut;
    }
    return result;
}

KRIndexSet KRIndexSet::indexSetByRemovingIndexesInRange(KRRange range) const {
    KRIndexSet result(*this);
    result.eraseRange(range);
    return result;
}

KRIndexSet KRIndexSet::indexSetByIntersectingIndexes(const KRIndexSet& other) const {
    KRIndexSet result;
    auto a = m_ranges.begin();
    auto b = other.m_ranges.begin();
    while (a != m_ranges.end() && b != other.m_ranges.end()) {
        const KRUInteger start = std::max(a->location, b->location);
        const KRUInteger end = std::min(KRMaxRange(*a), KRMaxRange(*b));
        if (start < end) {
            result.m_ranges.push_back(KRRange{start, end - start});
        }
        if (KRMaxRange(*a) < KRMaxRange(*b)) {
            ++a;
        } else {
            ++b;
        }
    }
    return result;
}

void KRIndexSet::enumerateIndexesUsingBlock(const std::function<void(KRUInteger, bool*)>& block) const {
    bool stop = false;
    for (const KRRange& range : m_ranges) {
        for (KRUInteger index = range.location; index < KRMaxRange(range); ++index) {
            block(index, &stop);
            if (stop) {
                return;
            }
        }
    }
}

void KRIndexSet::enumerateRangesUsingBlock(const std::function<void(KRRange, bool*)>& block) const {
    bool stop = false;
    for (const KRRange& range : m_ranges) {
        block(range, &stop);
        if (stop) {
            return;
        }
    }
}

std::vector<KRUInteger> KRIndexSet::indexes() const {
    std::vector<KRUInteger> result;
    result.reserve(static_cast<std::size_t>(count()));
    for (const KRRange& range : m_ranges) {
        for (KRUInteger index = range.location; index < KRMaxRange(range); ++index) {
            result.push_back(index);
        }
    }
    return result;
}

KRIndexSet::const_iterator& KRIndexSet::const_iterator::operator++() {
    ++m_offset;
    if (m_offset >= (*m_ranges)[m_rangeIndex].length) {
        ++m_rangeIndex;
        m_offset = 0;
    }
    return *this;
}

QString KRIndexSet::description() const {
    if (m_ranges.empty()) {
        return QStringLiteral("(empty)");
    }
    QStringList parts;
    for (const KRRange& range : m_ranges) {
        if (range.length == 1) {
            parts << QString::number(range.location);
        } else {
            parts << QStringLiteral("%1-%2").arg(range.location).arg(KRMaxRange(range) - 1);
        }
    }
    return QLatin1Char('[') + parts.join(QStringLiteral(", ")) + QLatin1Char(']');
}

void KRIndexSet::insertRange(KRRange range) {
    range = clampedRange(range);
    if (range.length == 0) {
        return;
    }
    // Every stored range from `first` up to `last` overlaps or touches the new one; they collapse into one.
    auto first =
        std::lower_bound(m_ranges.begin(), m_ranges.end(), range.location,
                         [](const KRRange& stored, KRUInteger value) { return KRMaxRange(stored) < value; });
    auto last =
        std::upper_bound(first, m_ranges.end(), KRMaxRange(range),
                         [](KRUInteger value, const KRRange& stored) { return value < stored.location; });
    if (first == last) {
        m_ranges.insert(first, range);
        return;
    }
    const KRUInteger start = std::min(first->location, range.location);
    const KRUInteger end = std::max(KRMaxRange(*std::prev(last)), KRMaxRange(range));
    *first = KRRange{start, end - start};
    m_ranges.erase(std::next(first), last);
}

void KRIndexSet::eraseRange(KRRange range) {
    range = clampedRange(range);
    if (range.length == 0) {
        return;
    }
    const KRUInteger cutStart = range.location;
    const KRUInteger cutEnd = KRMaxRange(range);
    // Stored ranges from `first` up to `last` overlap the cut.
    auto first =
        std::upper_bound(m_ranges.begin(), m_ranges.end(), cutStart,
                         [](KRUInteger value, const KRRange& stored) { return value < KRMaxRange(stored); });
    auto last = std::lower_bound(first, m_ranges.end(), cutEnd, [](const KRRange& stored, KRUInteger value) {
        return stored.location < value;
    });
    if (first == last) {
        return;
    }
    // What survives is at most a piece on the left of the cut and a piece on the right.
    const KRRange head{first->location, cutStart > first->location ? cutStart - first->location : 0};
    const KRUInteger tailEnd = KRMaxRange(*std::prev(last));
    const KRRange tail{cutEnd, tailEnd > cutEnd ? tailEnd - cutEnd : 0};
    KRRange pieces[2];
    std::size_t pieceCount = 0;
    if (head.length > 0) {
        pieces[pieceCount++] = head;
    }
    if (tail.length > 0) {
        pieces[pieceCount++] = tail;
    }
    const auto firstOffset = first - m_ranges.begin();
    const auto replaced = static_cast<std::size_t>(last - first);
    if (replaced >= pieceCount) {
        std::copy(pieces, pieces + pieceCount, m_ranges.begin() + firstOffset);
        m_ranges.erase(m_ranges.begin() + firstOffset + static_cast<std::ptrdiff_t>(pieceCount),
                       m_ranges.begin() + firstOffset + static_cast<std::ptrdiff_t>(replaced));
    } else {
        // One range split in two.
        m_ranges[static_cast<std::size_t>(firstOffset)] = pieces[0];
        m_ranges.insert(m_ranges.begin() + firstOffset + 1, pieces[1]);
    }
}

void KRMutableIndexSet::addIndexes(const KRIndexSet& other) {
    m_ranges = indexSetByAddingIndexes(other).m_ranges;
}

void KRMutableIndexSet::removeIndexes(const KRIndexSet& other) {
    m_ranges = indexSetByRemovingIndexes(other).m_ranges;
}
