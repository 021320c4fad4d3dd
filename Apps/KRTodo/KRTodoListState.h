#pragma once

#include "Foundation/KRRange.h"

#include <QStringList>

// What the list shows of the user's place in it: the item edited with its text selection, or the items
// selected, named by identifier so that the state survives changes of the indexes.
struct KRTodoListState {
    QString editedIdentifier;
    KRRange selectedRange{0, 0};
    QStringList selectedIdentifiers;
};
