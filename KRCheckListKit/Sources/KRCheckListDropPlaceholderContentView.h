#pragma once

#include "Views/KRView.h"

// The transparent container of a list's drop placeholder views. It has no state and no behaviour of its
// own: the list creates it at load, keeps it as its backmost subview and sizes it to its whole bounds on
// every layout pass, so a rect in the list's coordinates is the same rect inside it.
class KRCheckListDropPlaceholderContentView : public KRView {
public:
    explicit KRCheckListDropPlaceholderContentView(KRRect frame = KRRectZero);
    ~KRCheckListDropPlaceholderContentView() override;
};
