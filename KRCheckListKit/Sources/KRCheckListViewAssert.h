#pragma once

#include "Foundation/KRAssertionHandler.h"

// A programming error of the list, reported through the assertion handler with the list's own file name and
// the method's selector; used inside KRCheckListView's member functions.
#define KR_CHECKLIST_VIEW_ASSERT(condition, method, message)                                                 \
    KRAssert((condition), QStringLiteral(method), this, QStringLiteral("KRCheckListView"), __LINE__,         \
             QStringLiteral(message))
