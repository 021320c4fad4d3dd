#pragma once

#include "Views/KRView.h"

// Marks where dragged rows will land: a rounded rectangle in the drop placeholder colour, without border or
// content. The list fades placeholders in and out inside its drop placeholder content view and recycles
// those that have faded out.
class KRCheckListDropPlaceholderView : public KRView {
public:
    explicit KRCheckListDropPlaceholderView(KRRect frame = KRRectZero);
    ~KRCheckListDropPlaceholderView() override;

    // Kept for clients; the list neither sets nor reads it.
    bool isActive() const { return m_active; }
    void setActive(bool active) { m_active = active; }

    // One row's height, whatever is proposed; the width is a token, the list gives the frame.
    KRSize sizeThatFits(KRSize size) const override;

    // Set-up and tear-down, in load order; unload runs the reverse.
    void checkListDropPlaceholderViewLoad();
    void checkListDropPlaceholderViewUnload();

private:
    void checkListDropPlaceholderViewSetUpSelf();
    void checkListDropPlaceholderViewTearDownSelf();
    void checkListDropPlaceholderViewHookUp();
    void checkListDropPlaceholderViewBreakUp();

    bool m_active = false;
};
