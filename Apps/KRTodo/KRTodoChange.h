#pragma once

#include "KRTodoItem.h"

#include "Foundation/KRIndexSet.h"

#include <QString>

#include <vector>

// One change of a checklist's items, with what it needs to be made again or taken back. Indexes mean
// what the list's updates take: the final positions of inserted items, the positions before a removal,
// and for a move the moved indexes and toIndex counted before the move.
struct KRTodoChange {
    enum class Kind { Insert, Remove, Move, Status, Title };

    Kind kind = Kind::Insert;
    KRIndexSet indexes;
    // Insert and Remove: the items themselves; Move: the moved items, for their identifiers.
    std::vector<KRTodoItem> items;
    KRUInteger toIndex = 0;
    // Status and Title: the item and its value before and after.
    KRUInteger index = 0;
    KRUInteger oldStatus = 0;
    KRUInteger newStatus = 0;
    QString oldTitle;
    QString newTitle;
};
