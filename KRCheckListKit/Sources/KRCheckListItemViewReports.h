#pragma once

#include "Foundation/KRIndexSet.h"

#include <cstddef>
#include <memory>
#include <vector>

class KRCheckListItemView;

// Rows that told the list something changed since the list last looked, for one kind of change. The list
// turns them into indexes by one walk over its row pointers, never reading the rows. Past a bound, every
// row counts as reported: a pass over all rows is then cheaper than the search.
class KRCheckListItemViewReports {
public:
    // A row may report more than once; a row the list no longer holds is never found.
    void report(const KRCheckListItemView* itemView);
    void reportAll();
    bool allReported() const { return m_allReported; }
    bool isEmpty() const { return !m_allReported && m_itemViews.empty(); }
    // After a pass over every row nothing is outstanding.
    void clear();

    // Adds the indexes in itemViews of the reported rows to indexes and forgets the reports. With every row
    // reported it adds nothing: the caller asks allReported() first.
    void takeIndexes(const std::vector<std::shared_ptr<KRCheckListItemView>>& itemViews,
                     KRMutableIndexSet& indexes);

private:
    // How far around the last row found the first look reaches, each way.
    static constexpr std::size_t kNearbyRows = 32;

    bool takeIndexesNearLastFound(const std::vector<std::shared_ptr<KRCheckListItemView>>& itemViews,
                                  KRMutableIndexSet& indexes);
    void takeIndexesOfAll(const std::vector<std::shared_ptr<KRCheckListItemView>>& itemViews,
                          KRMutableIndexSet& indexes);

    std::vector<const KRCheckListItemView*> m_itemViews;
    std::size_t m_lastFoundIndex = 0;
    bool m_allReported = true;
};
