#pragma once

#include "Foundation/KRRange.h"

#include <QString>

#include <functional>
#include <initializer_list>
#include <vector>

class KRMutableIndexSet;

// An ascending, duplicate-free set of indexes, stored as sorted disjoint non-adjacent ranges.
// KRIndexSet is an immutable value: every operation that changes it returns a new set.
class KRIndexSet {
public:
    KRIndexSet() = default;
    explicit KRIndexSet(KRUInteger index);
    explicit KRIndexSet(KRRange range);
    KRIndexSet(std::initializer_list<KRUInteger> indexes);

    static KRIndexSet indexSet() { return KRIndexSet(); }
    static KRIndexSet indexSetWithIndex(KRUInteger index) { return KRIndexSet(index); }
    static KRIndexSet indexSetWithIndexesInRange(KRRange range) { return KRIndexSet(range); }

    bool isEmpty() const { return m_ranges.empty(); }
    KRUInteger count() const;
    KRUInteger firstIndex() const;                            // KRNotFound when empty
    KRUInteger lastIndex() const;                             // KRNotFound when empty
    KRUInteger indexGreaterThanIndex(KRUInteger index) const; // KRNotFound when none
    KRUInteger indexLessThanIndex(KRUInteger index) const;    // KRNotFound when none
    KRUInteger indexGreaterThanOrEqualToIndex(KRUInteger index) const;
    KRUInteger indexLessThanOrEqualToIndex(KRUInteger index) const;

    bool containsIndex(KRUInteger index) const;
    bool containsIndexesInRange(KRRange range) const;
    bool containsIndexes(const KRIndexSet& other) const;
    bool intersectsIndexesInRange(KRRange range) const;

    KRIndexSet indexSetByAddingIndex(KRUInteger index) const;
    KRIndexSet indexSetByAddingIndexes(const KRIndexSet& other) const; // union
    KRIndexSet indexSetByAddingIndexesInRange(KRRange range) const;
    KRIndexSet indexSetByRemovingIndex(KRUInteger index) const;
    KRIndexSet indexSetByRemovingIndexes(const KRIndexSet& other) const; // minus
    KRIndexSet indexSetByRemovingIndexesInRange(KRRange range) const;
    KRIndexSet indexSetByIntersectingIndexes(const KRIndexSet& other) const;

    // Ascending enumeration; set *stop to true to end early.
    void enumerateIndexesUsingBlock(const std::function<void(KRUInteger index, bool* stop)>& block) const;
    void enumerateRangesUsingBlock(const std::function<void(KRRange range, bool* stop)>& block) const;
    std::vector<KRUInteger> indexes() const;
    const std::vector<KRRange>& ranges() const { return m_ranges; }

    // Ascending iteration over single indexes: for (KRUInteger i : set).
    class const_iterator {
    public:
        using value_type = KRUInteger;
        using difference_type = std::ptrdiff_t;
        const_iterator() = default;
        const_iterator(const std::vector<KRRange>* ranges, std::size_t rangeIndex, KRUInteger offset)
            : m_ranges(ranges), m_rangeIndex(rangeIndex), m_offset(offset) {}
        KRUInteger operator*() const { return (*m_ranges)[m_rangeIndex].location + m_offset; }
        const_iterator& operator++();
        const_iterator operator++(int) {
            const_iterator copy = *this;
            ++*this;
            return copy;
        }
        friend bool operator==(const const_iterator& a, const const_iterator& b) {
            return a.m_rangeIndex == b.m_rangeIndex && a.m_offset == b.m_offset;
        }

    private:
        const std::vector<KRRange>* m_ranges = nullptr;
        std::size_t m_rangeIndex = 0;
        KRUInteger m_offset = 0;
    };
    const_iterator begin() const { return const_iterator(&m_ranges, 0, 0); }
    const_iterator end() const { return const_iterator(&m_ranges, m_ranges.size(), 0); }

    // "(empty)" or "[0-2, 5]" — for logs and test failure messages.
    QString description() const;

    friend bool operator==(const KRIndexSet&, const KRIndexSet&) = default;

protected:
    friend class KRMutableIndexSet;
    void insertRange(KRRange range);
    void eraseRange(KRRange range);

    std::vector<KRRange> m_ranges;
};

// The mutable companion used while building a set; converts to KRIndexSet by copy.
class KRMutableIndexSet : public KRIndexSet {
public:
    KRMutableIndexSet() = default;
    explicit KRMutableIndexSet(const KRIndexSet& set) : KRIndexSet(set) {}

    void addIndex(KRUInteger index) { insertRange(KRRange{index, 1}); }
    void addIndexesInRange(KRRange range) { insertRange(range); }
    void addIndexes(const KRIndexSet& other);
    void removeIndex(KRUInteger index) { eraseRange(KRRange{index, 1}); }
    void removeIndexesInRange(KRRange range) { eraseRange(range); }
    void removeIndexes(const KRIndexSet& other);
    void removeAllIndexes() { m_ranges.clear(); }
};
