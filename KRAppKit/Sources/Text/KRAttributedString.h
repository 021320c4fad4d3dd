#pragma once

#include "Foundation/KRCompactArray.h"
#include "Foundation/KRRange.h"
#include "Text/KRTextAttributes.h"

#include <QString>

#include <cstddef>
#include <iterator>
#include <memory>
#include <vector>

// A string with attributes over ranges of it. Runs cover the whole string, in order, without gaps. An empty
// string keeps the attributes it was made with in one empty run, so an empty field still knows its font and
// line height. Ranges count UTF-16 code units, as QString does.
//
// Attribute sets are shared, immutable blocks: strings made with equal attributes (every row's title and
// placeholder in a list) point at one block, and a string with uniform attributes allocates nothing beyond
// its text.
class KRAttributedString {
public:
    // A run as read: its range and its attributes, valid while the string is alive and unchanged.
    struct Run {
        KRRange range;
        const KRTextAttributes& attributes;
        bool operator==(const Run& other) const {
            return range == other.range && attributes == other.attributes;
        }
    };

    // The runs in order, read in place.
    class Runs {
    public:
        class iterator {
        public:
            using value_type = Run;
            using difference_type = std::ptrdiff_t;
            using iterator_category = std::input_iterator_tag;

            iterator() = default;
            Run operator*() const { return Runs(*m_string)[m_index]; }
            iterator& operator++() {
                ++m_index;
                return *this;
            }
            iterator operator++(int) {
                iterator before = *this;
                ++m_index;
                return before;
            }
            bool operator==(const iterator& other) const { return m_index == other.m_index; }

        private:
            friend class Runs;
            iterator(const KRAttributedString* string, std::size_t index)
                : m_string(string), m_index(index) {}
            const KRAttributedString* m_string = nullptr;
            std::size_t m_index = 0;
        };

        std::size_t size() const;
        bool empty() const { return size() == 0; }
        Run operator[](std::size_t index) const;
        Run front() const { return (*this)[0]; }
        Run back() const { return (*this)[size() - 1]; }
        iterator begin() const { return iterator(m_string, 0); }
        iterator end() const { return iterator(m_string, size()); }

    private:
        friend class KRAttributedString;
        explicit Runs(const KRAttributedString& string) : m_string(&string) {}
        const KRAttributedString* m_string;
    };

    KRAttributedString() = default;
    explicit KRAttributedString(const QString& string, const KRTextAttributes& attributes = {});
    // The string with attributes already shared (null means no attributes set).
    static KRAttributedString withSharedAttributes(const QString& string,
                                                   std::shared_ptr<const KRTextAttributes> attributes);

    const QString& string() const { return m_string; }
    KRUInteger length() const { return static_cast<KRUInteger>(m_string.size()); }
    Runs runs() const { return Runs(*this); }

    // The attributes at index (clamped into the string) and the run's range.
    KRTextAttributes attributesAtIndex(KRUInteger index, KRRange* effectiveRange = nullptr) const;
    // Replaces the attributes over range (clamped to the string), merging equal neighbours.
    void setAttributes(const KRTextAttributes& attributes, KRRange range);
    // The attributes of the first character, or those an empty string was made with.
    const KRTextAttributes& leadingAttributes() const;
    bool hasUniformAttributes() const { return m_runs.empty(); }

    bool operator==(const KRAttributedString& other) const;

    // The shared block for attributes: the same block for equal sets among those asked for recently.
    static std::shared_ptr<const KRTextAttributes> sharedAttributes(const KRTextAttributes& attributes);

private:
    struct StoredRun {
        KRRange range;
        std::shared_ptr<const KRTextAttributes> attributes;
    };
    void storeRuns(std::vector<StoredRun> runs);

    QString m_string;
    // The attributes of the one run of a uniform string (null: no runs at all), or null when m_runs holds two
    // or more.
    std::shared_ptr<const KRTextAttributes> m_uniform;
    KRCompactArray<StoredRun> m_runs;
};
