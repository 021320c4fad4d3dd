#pragma once

#include "Foundation/KRSelector.h"
#include "Foundation/KRWeakDelegate.h"
#include "Text/KRTextFieldCell.h"
#include "Text/KRTextView.h"
#include "Views/KRView.h"

#include <memory>

class KRTextField;

// What the owner of a text field hears while it is edited, and its say over the editor's commands.
class KRTextFieldDelegate {
public:
    virtual ~KRTextFieldDelegate();

    // Before the first change of an edit.
    virtual void controlTextDidBeginEditing(KRTextField*) {}
    // After every change of the text in the field editor.
    virtual void controlTextDidChange(KRTextField*) {}
    // Once, when the field stops being edited.
    virtual void controlTextDidEndEditing(KRTextField*) {}
    // Answering true means the delegate performed the command; the editor then does nothing.
    virtual bool controlTextViewDoCommandBySelector(KRTextField*, KRTextView*, const KRSelector&) {
        return false;
    }
    // Where the editor registers its undo steps while it edits this field.
    virtual QUndoStack* controlUndoManagerForTextView(KRTextField*, KRTextView*) { return nullptr; }
};

// A view showing an attributed string, edited in place through a field editor. The value and looks live in
// the cell; the field forwards to it. Becoming first responder asks the cell for an editor (the window's
// shared one when the cell has none), lays it over the field with all text selected and makes it first
// responder. While it edits, the value reads through to the editor.
class KRTextField : public KRView, public KRTextViewDelegate {
public:
    explicit KRTextField(KRRect frame = KRRectZero);
    ~KRTextField() override;

    // Cell -----------------------------------------------------------------------------------------------
    KRTextFieldCell* cell() const { return m_cell.get(); }
    // Replaces the cell (ending an edit of the old one); null leaves the field empty and inert.
    void setCell(std::shared_ptr<KRTextFieldCell> cell);

    // Value (through the cell) ---------------------------------------------------------------------------
    QString stringValue() const;
    void setStringValue(const QString& string);
    KRAttributedString attributedStringValue() const;
    void setAttributedStringValue(const KRAttributedString& value);
    QString placeholderString() const;
    void setPlaceholderString(const QString& string);
    KRAttributedString placeholderAttributedString() const;
    void setPlaceholderAttributedString(const KRAttributedString& placeholder);

    // Looks (through the cell) ---------------------------------------------------------------------------
    QFont font() const;
    void setFont(const QFont& font);
    QColor textColor() const;
    void setTextColor(const QColor& color);
    bool drawsBackground() const;
    void setDrawsBackground(bool draws);
    bool isBordered() const;
    void setBordered(bool bordered);
    bool isEditable() const;
    void setEditable(bool editable);
    bool isSelectable() const;
    void setSelectable(bool selectable);
    int lineBreakMode() const;
    void setLineBreakMode(int mode);
    bool allowsEditingTextAttributes() const;
    void setAllowsEditingTextAttributes(bool allows);
    // Every view here draws into the window on request; the two are kept for callers that set them.
    bool wantsLayer() const { return m_wantsLayer; }
    void setWantsLayer(bool wants) { m_wantsLayer = wants; }
    int layerContentsRedrawPolicy() const { return m_layerContentsRedrawPolicy; }
    void setLayerContentsRedrawPolicy(int policy) { m_layerContentsRedrawPolicy = policy; }

    // Delegate -------------------------------------------------------------------------------------------
    void setDelegate(KRTextFieldDelegate* delegate, const KRObject* lifetimeOwner);
    template <class T> void setDelegate(T* delegate) {
        setDelegate(static_cast<KRTextFieldDelegate*>(delegate), static_cast<const KRObject*>(delegate));
    }
    void setDelegate(std::nullptr_t) { setDelegate(nullptr, nullptr); }
    KRTextFieldDelegate* delegate() const { return m_delegate.get(); }

    // Editing --------------------------------------------------------------------------------------------
    // The field editor while it edits this field, else null.
    KRTextView* currentEditor() const;
    // Begins editing with all text selected (or selects all of it when already editing).
    void selectText();
    // Copies the editor's text into the cell now.
    void validateEditing();

    // Measuring and drawing ------------------------------------------------------------------------------
    // The value's size wrapped at size.width (when the field wraps); what it draws, to the point.
    KRSize sizeThatFits(KRSize size) const override;
    void draw(QPainter& painter, KRRect dirtyRect) override;
    // The shape of the focus ring, drawn with the ring's pen while the field is edited. Drawing nothing
    // removes the ring.
    virtual void drawFocusRingMask(QPainter& painter);
    void setFrameSize(KRSize size) override;

    // Responder ------------------------------------------------------------------------------------------
    bool acceptsFirstResponder() const override;
    bool becomeFirstResponder() override;
    bool resignFirstResponder() override;
    void mouseDown(const KREvent& event) override;
    void mouseDragged(const KREvent& event) override;
    void mouseUp(const KREvent& event) override;

    // The field editor's delegate ------------------------------------------------------------------------
    bool textViewDoCommandBySelector(KRTextView* textView, const KRSelector& selector) override;
    void textDidBeginEditing(KRTextView* textView) override;
    void textDidChange(KRTextView* textView) override;
    void textDidEndEditing(KRTextView* textView, const KRSelector& movement) override;
    QUndoStack* undoManagerForTextView(KRTextView* textView) override;

protected:
    // For a subclass that installs a cell of its own as it is built: no default cell is made to be replaced.
    struct WithoutDefaultCell {};
    KRTextField(KRRect frame, WithoutDefaultCell);

private:
    std::shared_ptr<KRTextView> chooseFieldEditor();
    void resizeEditor();

    std::shared_ptr<KRTextFieldCell> m_cell;
    KRWeakDelegate<KRTextFieldDelegate> m_delegate;
    int m_layerContentsRedrawPolicy = 0;
    bool m_wantsLayer = false;
};
