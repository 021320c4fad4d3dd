#pragma once

#include "KRCheckListItemTitleTextFieldCell.h"

#include "Text/KRTextField.h"

#include <memory>

class KRCheckListItemTitleTextField;

// The owner of a title field (its row): besides the text notifications, it picks the field editor and has
// the last word on whether the field takes the focus.
class KRCheckListItemTitleTextFieldDelegate : public KRTextFieldDelegate {
public:
    // Null lets the field take the window's shared field editor.
    virtual std::shared_ptr<KRTextView>
    checkListItemTitleTextFieldFieldEditorForView(KRCheckListItemTitleTextField*, KRView*) {
        return nullptr;
    }
    virtual bool checkListItemTitleTextFieldValidateBecomeFirstResponder(KRCheckListItemTitleTextField*,
                                                                         bool proposed) {
        return proposed;
    }
    virtual bool checkListItemTitleTextFieldValidateResignFirstResponder(KRCheckListItemTitleTextField*,
                                                                         bool proposed) {
        return proposed;
    }
    // The size the field's cell measures may have changed: a row keeping its fitting size forgets it.
    virtual void checkListItemTitleTextFieldSizeMayHaveChanged(KRCheckListItemTitleTextField*) {}
};

// A row's title: a text field whose cell asks it for the field editor and which asks its delegate before
// it takes or gives up the focus. It never shows a focus ring.
class KRCheckListItemTitleTextField : public KRTextField, public KRCheckListItemTitleTextFieldCellDelegate {
public:
    explicit KRCheckListItemTitleTextField(KRRect frame = KRRectZero);
    ~KRCheckListItemTitleTextField() override;

    const std::shared_ptr<KRCheckListItemTitleTextFieldCell>& titleTextFieldCell() const {
        return m_titleTextFieldCell;
    }
    // The field's control delegate, seen as a title field delegate (null when it is some other kind).
    KRCheckListItemTitleTextFieldDelegate* delegate() const;

    bool becomeFirstResponder() override;
    bool resignFirstResponder() override;
    void drawFocusRingMask(QPainter& painter) override;

    // Forwarders to the delegate, with the documented answer when there is none.
    std::shared_ptr<KRTextView>
    checkListItemTitleTextFieldFieldEditorForView(KRCheckListItemTitleTextField* field, KRView* view);
    bool checkListItemTitleTextFieldValidateBecomeFirstResponder(KRCheckListItemTitleTextField* field,
                                                                 bool proposed);
    // Deliberately asks the delegate's become method: resigning is judged by the same rule as becoming.
    bool checkListItemTitleTextFieldValidateResignFirstResponder(KRCheckListItemTitleTextField* field,
                                                                 bool proposed);

    // KRCheckListItemTitleTextFieldCellDelegate
    std::shared_ptr<KRTextView>
    checkListItemTitleTextFieldCellFieldEditorForView(KRCheckListItemTitleTextFieldCell* cell,
                                                      KRView* view) override;
    void checkListItemTitleTextFieldCellSizeMayHaveChanged(KRCheckListItemTitleTextFieldCell* cell) override;

private:
    void checkListItemTitleTextFieldLoad();
    void checkListItemTitleTextFieldUnload();
    void checkListItemTitleTextFieldSetUpSelf();
    void checkListItemTitleTextFieldTearDownSelf();
    void checkListItemTitleTextFieldSetUpCell();
    void checkListItemTitleTextFieldTearDownCell();
    void checkListItemTitleTextFieldHookUp();
    void checkListItemTitleTextFieldBreakUp();

    std::shared_ptr<KRCheckListItemTitleTextFieldCell> m_titleTextFieldCell;
};
