#pragma once

#include "Foundation/KRTypes.h"

#include <QString>

// One to-do: what the list shows of it and the identifier that keeps it apart from the others.
struct KRTodoItem {
    static constexpr KRUInteger Open = 0;
    static constexpr KRUInteger Completed = 1;
    static constexpr KRUInteger Canceled = 2;

    QString identifier;
    KRUInteger status = Open;
    QString title;

    friend bool operator==(const KRTodoItem&, const KRTodoItem&) = default;
};
