#pragma once

#include "KRTodoItem.h"

// An item with the key that orders it within its checklist.
struct KRTodoItemRecord {
    KRTodoItem item;
    double position = 0.0;
};
