#pragma once

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <vector>

class KRView;

// For views with many subviews (a list of thousands of rows): which direct subviews asked for one of the
// window's passes since the last one, in the order they asked, so that the pass visits those instead of
// reading every subview. Only such views have a list, and views keep their own record of being listed, so
// a subview is listed at most once under its superview. A subview is taken off before it leaves its
// superview: a list never holds a view that is gone. Once a good share of the subviews has asked (a list
// filling up with new rows), a pass might as well read them all: the list refuses more and empties.
class KRMarkedSubviews {
    struct List;

public:
    // Lists subview under superview, which has subviewCount subviews, and answers true. Or, between rounds,
    // answers false if that would make a good share of them, after handing every view listed so far to
    // unlist: the superview's next pass then reads every subview, and lists again after that.
    template <class Unlist>
    bool add(const KRView* superview, KRView* subview, std::size_t subviewCount, Unlist unlist);
    // subview must be listed under superview.
    void remove(const KRView* superview, const KRView* subview);
    // Takes off every subview listed under superview for which leaving answers true.
    template <class Leaving> void removeIf(const KRView* superview, Leaving leaving);
    // Drops the list of a superview that goes away.
    void forget(const KRView* superview);

    // One pass over the subviews listed under a view when the round starts; those listed meanwhile wait for
    // the next round. Rounds over one view may nest (a subview laying out its superview again): the inner
    // round goes on from where the outer one is, and the outer one ends where the inner one stopped.
    class Round {
    public:
        Round(KRMarkedSubviews& lists, const KRView* superview);
        ~Round();
        Round(const Round&) = delete;
        Round& operator=(const Round&) = delete;

        // The next listed subview, taken off the list; null once the round is through.
        KRView* next() {
            while (m_list.next < m_end) {
                if (KRView* const view = m_list.subviews[m_list.next++]) {
                    return view;
                }
            }
            return nullptr;
        }
        // The subview distance places further on in this round, or null: a pass asks for it from memory
        // ahead of use.
        KRView* ahead(std::size_t distance) const {
            const std::size_t index = m_list.next + distance;
            return index < m_end ? m_list.subviews[index] : nullptr;
        }

    private:
        List& m_list;
        std::size_t m_end = 0;
    };

private:
    struct List {
        // Null where a subview left during a round: the rounds under way keep their places.
        std::vector<KRView*> subviews;
        std::size_t next = 0; // the first one no round has taken yet
        int rounds = 0;       // rounds under way
    };
    // A list refuses to hold more than one subview in this many.
    static constexpr std::size_t kListedShare = 8;

    // A long list asks for one superview's list thousands of times in a row (each new row asking for its
    // first layout): the last one found is answered without a lookup.
    List& listOf(const KRView* superview) {
        return superview == m_lastSuperview ? *m_lastList : lookUp(superview);
    }
    List& lookUp(const KRView* superview);
    List* find(const KRView* superview);
    static void compact(List& list);

    std::unordered_map<const KRView*, List> m_lists;
    const KRView* m_lastSuperview = nullptr;
    List* m_lastList = nullptr;
};

// Only between rounds: the rounds under way keep their places in the list.
template <class Unlist>
bool KRMarkedSubviews::add(const KRView* superview, KRView* subview, std::size_t subviewCount,
                           Unlist unlist) {
    List& list = listOf(superview);
    if (list.rounds == 0 && (list.subviews.size() + 1) * kListedShare > subviewCount) {
        for (KRView* listed : list.subviews) {
            if (listed) {
                unlist(listed);
            }
        }
        list.subviews.clear();
        list.next = 0;
        return false;
    }
    list.subviews.push_back(subview);
    return true;
}

template <class Leaving> void KRMarkedSubviews::removeIf(const KRView* superview, Leaving leaving) {
    List* const list = find(superview);
    if (!list) {
        return;
    }
    const auto first = list->subviews.begin() + static_cast<std::ptrdiff_t>(list->next);
    if (list->rounds > 0) {
        std::replace_if(
            first, list->subviews.end(), [&](KRView* view) { return view && leaving(view); }, nullptr);
    } else {
        list->subviews.erase(
            std::remove_if(first, list->subviews.end(), [&](KRView* view) { return !view || leaving(view); }),
            list->subviews.end());
    }
}
