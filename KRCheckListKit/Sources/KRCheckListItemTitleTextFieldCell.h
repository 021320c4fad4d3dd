#pragma once

#include "Foundation/KRWeakDelegate.h"
#include "Text/KRTextFieldCell.h"

#include <memory>

class KRCheckListItemTitleTextFieldCell;

// Lets the owner of a title cell choose the field editor that edits it.
class KRCheckListItemTitleTextFieldCellDelegate {
public:
    virtual ~KRCheckListItemTitleTextFieldCellDelegate() = default;

    // Null lets the cell fall back to the window's shared field editor.
    virtual std::shared_ptr<KRTextView>
    checkListItemTitleTextFieldCellFieldEditorForView(KRCheckListItemTitleTextFieldCell* cell,
                                                      KRView* view) = 0;
    // The size the cell measures may have changed (see KRTextFieldCell::sizeMayHaveChanged).
    virtual void checkListItemTitleTextFieldCellSizeMayHaveChanged(KRCheckListItemTitleTextFieldCell*) {}
};

// The cell of a row's title. It decides nothing itself: the choice of field editor goes to its delegate (the
// title field), which hands it on up to the row and the list.
class KRCheckListItemTitleTextFieldCell : public KRTextFieldCell {
public:
    // The text cell with string as its value.
    explicit KRCheckListItemTitleTextFieldCell(const QString& string = QString());
    ~KRCheckListItemTitleTextFieldCell() override;

    KRCheckListItemTitleTextFieldCellDelegate* delegate() const { return m_delegate.get(); }
    void setDelegate(KRCheckListItemTitleTextFieldCellDelegate* delegate, const KRObject* lifetimeOwner);
    template <class T> void setDelegate(T* delegate) {
        setDelegate(static_cast<KRCheckListItemTitleTextFieldCellDelegate*>(delegate),
                    static_cast<const KRObject*>(delegate));
    }
    void setDelegate(std::nullptr_t) { setDelegate(nullptr, nullptr); }

    // The delegate's editor; null lets the field take the window's shared one.
    std::shared_ptr<KRTextView> fieldEditorForView(KRView* view) override;
    void editWithFrameInViewEditorDelegateEvent(KRRect frame, KRView* controlView,
                                                const std::shared_ptr<KRTextView>& editor,
                                                KRTextField* delegate, const KREvent* event) override;

    // The delegate's answer, or null when there is no delegate.
    std::shared_ptr<KRTextView>
    checkListItemTitleTextFieldCellFieldEditorForView(KRCheckListItemTitleTextFieldCell* cell, KRView* view);

protected:
    void sizeMayHaveChanged() override;

private:
    void checkListItemTitleTextfieldCellLoad();
    void checkListItemTitleTextfieldCellUnload();
    void checkListItemTitleTextfieldCellSetUpSelf();
    void checkListItemTitleTextfieldCellTearDownSelf();
    void checkListItemTitleTextfieldCellHookUp();
    void checkListItemTitleTextfieldCellBreakUp();

    KRWeakDelegate<KRCheckListItemTitleTextFieldCellDelegate> m_delegate;
};
