#include "KRCheckListItemViewReports.h"

#include <algorithm>
#include <cstdint>

namespace {

// Past this many reports between two passes, a pass over every row is cheaper than finding them.
constexpr std::size_t kMaximumReportedItemViews = 64;

// A one-word filter of row addresses: a row whose bit is clear was certainly not reported. Rows are a few
// hundred bytes apart, so the bits above the cache line pick among 64 buckets.
std::uint64_t addressFilterBit(const void* address) {
    constexpr unsigned kCacheLineBits = 6;
    constexpr std::uintptr_t kBucketMask = 63;
    return std::uint64_t{1} << ((reinterpret_cast<std::uintptr_t>(address) >> kCacheLineBits) & kBucketMask);
}

} // namespace

void KRCheckListItemViewReports::report(const KRCheckListItemView* itemView) {
    if (m_allReported) {
        return;
    }
    m_itemViews.push_back(itemView);
    if (m_itemViews.size() > kMaximumReportedItemViews) {
        reportAll();
    }
}

void KRCheckListItemViewReports::reportAll() {
    m_allReported = true;
    m_itemViews.clear();
}

void KRCheckListItemViewReports::clear() {
    m_allReported = false;
    m_itemViews.clear();
}

void KRCheckListItemViewReports::takeIndexes(
    const std::vector<std::shared_ptr<KRCheckListItemView>>& itemViews, KRMutableIndexSet& indexes) {
    if (m_itemViews.empty()) {
        return;
    }
    std::sort(m_itemViews.begin(), m_itemViews.end());
    m_itemViews.erase(std::unique(m_itemViews.begin(), m_itemViews.end()), m_itemViews.end());
    if (!takeIndexesNearLastFound(itemViews, indexes)) {
        takeIndexesOfAll(itemViews, indexes);
    }
    m_itemViews.clear();
}

// Changes come where the user works: the rows around the last one found are looked at first.
bool KRCheckListItemViewReports::takeIndexesNearLastFound(
    const std::vector<std::shared_ptr<KRCheckListItemView>>& itemViews, KRMutableIndexSet& indexes) {
    const std::size_t count = itemViews.size();
    const std::size_t first = m_lastFoundIndex > kNearbyRows ? m_lastFoundIndex - kNearbyRows : 0;
    const std::size_t end = std::min(count, m_lastFoundIndex + kNearbyRows + 1);
    std::size_t found = 0;
    for (std::size_t index = first; index < end && found < m_itemViews.size(); ++index) {
        if (std::binary_search(m_itemViews.begin(), m_itemViews.end(), itemViews[index].get())) {
            indexes.addIndex(index);
            m_lastFoundIndex = index;
            ++found;
        }
    }
    return found == m_itemViews.size();
}

void KRCheckListItemViewReports::takeIndexesOfAll(
    const std::vector<std::shared_ptr<KRCheckListItemView>>& itemViews, KRMutableIndexSet& indexes) {
    std::uint64_t filter = 0;
    for (const KRCheckListItemView* itemView : m_itemViews) {
        filter |= addressFilterBit(itemView);
    }
    // Only the row pointers are read, never the rows.
    for (std::size_t index = 0; index < itemViews.size(); ++index) {
        const KRCheckListItemView* itemView = itemViews[index].get();
        if ((filter & addressFilterBit(itemView)) != 0 &&
            std::binary_search(m_itemViews.begin(), m_itemViews.end(), itemView)) {
            indexes.addIndex(index);
            m_lastFoundIndex = index;
        }
    }
}
