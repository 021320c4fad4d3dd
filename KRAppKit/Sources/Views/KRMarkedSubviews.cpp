#include "Views/KRMarkedSubviews.h"

// The rounds under way have taken the views in front of next; a listed view is behind it.
void KRMarkedSubviews::remove(const KRView* superview, const KRView* subview) {
    List* const list = find(superview);
    if (!list) {
        return;
    }
    auto& subviews = list->subviews;
    const auto found =
        std::find(subviews.begin() + static_cast<std::ptrdiff_t>(list->next), subviews.end(), subview);
    if (found == subviews.end()) {
        return;
    }
    if (list->rounds > 0) {
        *found = nullptr;
    } else {
        subviews.erase(found);
    }
}

void KRMarkedSubviews::forget(const KRView* superview) {
    if (superview == m_lastSuperview) {
        m_lastSuperview = nullptr;
        m_lastList = nullptr;
    }
    m_lists.erase(superview);
}

// Lists live in the map's nodes, which stay in place while other lists come and go.
KRMarkedSubviews::List& KRMarkedSubviews::lookUp(const KRView* superview) {
    m_lastList = &m_lists[superview];
    m_lastSuperview = superview;
    return *m_lastList;
}

KRMarkedSubviews::List* KRMarkedSubviews::find(const KRView* superview) {
    if (superview == m_lastSuperview) {
        return m_lastList;
    }
    const auto found = m_lists.find(superview);
    return found == m_lists.end() ? nullptr : &found->second;
}

void KRMarkedSubviews::compact(List& list) {
    list.subviews.erase(list.subviews.begin(),
                        list.subviews.begin() + static_cast<std::ptrdiff_t>(list.next));
    list.next = 0;
    std::erase(list.subviews, nullptr);
}

// The list is made if there is none, so that what is listed during the round waits for the next one.
KRMarkedSubviews::Round::Round(KRMarkedSubviews& lists, const KRView* superview)
    : m_list(lists.listOf(superview)), m_end(m_list.subviews.size()) {
    ++m_list.rounds;
}

KRMarkedSubviews::Round::~Round() {
    if (--m_list.rounds == 0) {
        compact(m_list);
    }
}
