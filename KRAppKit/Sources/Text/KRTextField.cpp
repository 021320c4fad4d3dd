#include "Text/KRTextField.h"

#include "Controls/KRDefaults.h"
#include "Views/KRWindow.h"

#include <QPainter>

KRTextFieldDelegate::~KRTextFieldDelegate() = default;

KRTextField::KRTextField(KRRect frame) : KRView(frame), m_cell(std::make_shared<KRTextFieldCell>()) {
    KRTextView::installTextSystem();
    m_cell->setEditable(true);
    m_cell->setSelectable(true);
    m_cell->setBordered(true);
    m_cell->setDrawsBackground(true);
}

KRTextField::KRTextField(KRRect frame, WithoutDefaultCell) : KRView(frame) {
    KRTextView::installTextSystem();
}

KRTextField::~KRTextField() {
    if (m_cell) {
        m_cell->endEditing(currentEditor());
    }
}

// Cell
// ------------------------------------------------------------------------------------------------------

void KRTextField::setCell(std::shared_ptr<KRTextFieldCell> cell) {
    if (cell == m_cell) {
        return;
    }
    if (m_cell) {
        m_cell->endEditing(currentEditor());
    }
    m_cell = std::move(cell);
    setNeedsDisplay();
}

// Value
// ------------------------------------------------------------------------------------------------------

QString KRTextField::stringValue() const {
    if (const KRTextView* editor = currentEditor()) {
        return editor->string();
    }
    return m_cell ? m_cell->stringValue() : QString();
}

void KRTextField::setStringValue(const QString& string) {
    setAttributedStringValue(KRAttributedString(string));
}

KRAttributedString KRTextField::attributedStringValue() const {
    if (const KRTextView* editor = currentEditor()) {
        return editor->attributedString();
    }
    return m_cell ? m_cell->attributedStringValue() : KRAttributedString();
}

void KRTextField::setAttributedStringValue(const KRAttributedString& value) {
    if (!m_cell) {
        return;
    }
    m_cell->setAttributedStringValue(value);
    if (KRTextView* editor = currentEditor()) {
        // Restyling the text being edited must not move the caret; new text replaces it.
        if (editor->string() == value.string()) {
            for (const KRAttributedString::Run& run : value.runs()) {
                editor->setAttributesForRange(run.attributes, run.range);
            }
        } else {
            editor->setAttributedString(value);
        }
    }
    setNeedsDisplay();
}

QString KRTextField::placeholderString() const {
    return m_cell ? m_cell->placeholderString() : QString();
}

void KRTextField::setPlaceholderString(const QString& string) {
    if (m_cell) {
        m_cell->setPlaceholderString(string);
        setNeedsDisplay();
    }
}

KRAttributedString KRTextField::placeholderAttributedString() const {
    return m_cell ? m_cell->placeholderAttributedString() : KRAttributedString();
}

void KRTextField::setPlaceholderAttributedString(const KRAttributedString& placeholder) {
    if (m_cell) {
        m_cell->setPlaceholderAttributedString(placeholder);
        setNeedsDisplay();
    }
}

// Looks
// ------------------------------------------------------------------------------------------------------

QFont KRTextField::font() const {
    return m_cell ? m_cell->font() : QFont();
}

void KRTextField::setFont(const QFont& font) {
    if (m_cell) {
        m_cell->setFont(font);
        setNeedsDisplay();
    }
}

QColor KRTextField::textColor() const {
    return m_cell ? m_cell->textColor() : QColor();
}

void KRTextField::setTextColor(const QColor& color) {
    if (m_cell) {
        m_cell->setTextColor(color);
        setNeedsDisplay();
    }
}

bool KRTextField::drawsBackground() const {
    return m_cell && m_cell->drawsBackground();
}

void KRTextField::setDrawsBackground(bool draws) {
    if (m_cell) {
        m_cell->setDrawsBackground(draws);
        setNeedsDisplay();
    }
}

bool KRTextField::isBordered() const {
    return m_cell && m_cell->isBordered();
}

void KRTextField::setBordered(bool bordered) {
    if (m_cell) {
        m_cell->setBordered(bordered);
        setNeedsDisplay();
    }
}

bool KRTextField::isEditable() const {
    return m_cell && m_cell->isEditable();
}

void KRTextField::setEditable(bool editable) {
    if (m_cell) {
        m_cell->setEditable(editable);
    }
    if (KRTextView* editor = currentEditor()) {
        editor->setEditable(editable);
    }
}

bool KRTextField::isSelectable() const {
    return m_cell && m_cell->isSelectable();
}

void KRTextField::setSelectable(bool selectable) {
    if (m_cell) {
        m_cell->setSelectable(selectable);
    }
}

int KRTextField::lineBreakMode() const {
    return m_cell ? m_cell->lineBreakMode() : KRLineBreakByWordWrapping;
}

void KRTextField::setLineBreakMode(int mode) {
    if (m_cell) {
        m_cell->setLineBreakMode(mode);
        setNeedsDisplay();
    }
}

bool KRTextField::allowsEditingTextAttributes() const {
    return m_cell && m_cell->allowsEditingTextAttributes();
}

void KRTextField::setAllowsEditingTextAttributes(bool allows) {
    if (m_cell) {
        m_cell->setAllowsEditingTextAttributes(allows);
    }
}

// Delegate
// ------------------------------------------------------------------------------------------------------

void KRTextField::setDelegate(KRTextFieldDelegate* delegate, const KRObject* lifetimeOwner) {
    m_delegate.reset(delegate, lifetimeOwner);
}

// Editing
// ------------------------------------------------------------------------------------------------------

KRTextView* KRTextField::currentEditor() const {
    if (!m_cell) {
        return nullptr;
    }
    KRTextView* editor = m_cell->currentEditor();
    // The cell's editor counts only while it sits over this field.
    if (!editor || !editor->superview() || editor->superview()->superview() != this) {
        return nullptr;
    }
    return editor;
}

void KRTextField::selectText() {
    if (KRTextView* editor = currentEditor()) {
        editor->setSelectedRange(KRMakeRange(0, editor->length()));
    } else if (KRWindow* window = this->window()) {
        window->makeFirstResponder(this);
    }
}

void KRTextField::validateEditing() {
    if (const KRTextView* editor = currentEditor()) {
        m_cell->setAttributedStringValue(editor->attributedString());
    }
}

std::shared_ptr<KRTextView> KRTextField::chooseFieldEditor() {
    if (std::shared_ptr<KRTextView> editor = m_cell->fieldEditorForView(this)) {
        return editor;
    }
    KRWindow* window = this->window();
    return window ? std::dynamic_pointer_cast<KRTextView>(window->fieldEditor(true, this)) : nullptr;
}

void KRTextField::resizeEditor() {
    KRTextView* editor = currentEditor();
    if (!editor) {
        return;
    }
    const KRRect title = m_cell->titleRectForBounds(bounds());
    editor->superview()->setFrame(title);
    editor->setFrameSize(title.size);
}

// Measuring and drawing
// ------------------------------------------------------------------------------------------------------

KRSize KRTextField::sizeThatFits(KRSize size) const {
    if (!m_cell) {
        return KRSizeZero;
    }
    const KRRect bounds{KRPointZero, size};
    if (const KRTextView* editor = currentEditor(); editor && m_cell->wraps()) {
        // The editor has just laid the same text out at this width, and lays it out as the cell would.
        const KRRect title = m_cell->titleRectForBounds(bounds);
        if (title.size.width == editor->frame().size.width &&
            editor->fixedLineHeight() == m_cell->fixedLineHeight()) {
            return KRSize{size.width, editor->usedHeight() + size.height - title.size.height};
        }
    }
    // Measure what is being typed, not what the field held when editing began.
    const_cast<KRTextField*>(this)->validateEditing();
    return m_cell->cellSizeForBounds(bounds);
}

void KRTextField::draw(QPainter& painter, KRRect) {
    if (!m_cell) {
        return;
    }
    m_cell->drawWithFrameInView(bounds(), this, painter);
    const KRWindow* window = this->window();
    if (currentEditor() && window && window->isKeyWindow()) {
        painter.save();
        painter.setPen(QPen(KRDefaults::keyboardFocusIndicatorColor(), KRDefaults::focusRingWidth()));
        painter.setBrush(Qt::NoBrush);
        drawFocusRingMask(painter);
        painter.restore();
    }
}

void KRTextField::drawFocusRingMask(QPainter& painter) {
    // The ring surrounds the field, clear of the text.
    const double outset = KRDefaults::focusRingWidth() * 0.5;
    painter.drawRect(KRToQRectF(KRRectInset(bounds(), -outset, -outset)));
}

void KRTextField::setFrameSize(KRSize size) {
    KRView::setFrameSize(size);
    resizeEditor();
}

// Responder
// ------------------------------------------------------------------------------------------------------

bool KRTextField::acceptsFirstResponder() const {
    return m_cell && m_cell->isSelectable();
}

bool KRTextField::becomeFirstResponder() {
    if (!acceptsFirstResponder()) {
        return false;
    }
    if (currentEditor()) {
        return true;
    }
    const std::shared_ptr<KRTextView> editor = chooseFieldEditor();
    if (!editor) {
        return false;
    }
    // Hands first responder on to the editor, with all the text selected.
    m_cell->selectWithFrameInViewEditorDelegateStartLength(m_cell->titleRectForBounds(bounds()), this, editor,
                                                           this, 0,
                                                           static_cast<KRInteger>(stringValue().size()));
    return true;
}

bool KRTextField::resignFirstResponder() {
    return KRView::resignFirstResponder();
}

void KRTextField::mouseDown(const KREvent& event) {
    if (KRTextView* editor = currentEditor()) {
        editor->mouseDown(event);
        return;
    }
    KRView::mouseDown(event);
}

void KRTextField::mouseDragged(const KREvent& event) {
    if (KRTextView* editor = currentEditor()) {
        editor->mouseDragged(event);
        return;
    }
    KRView::mouseDragged(event);
}

void KRTextField::mouseUp(const KREvent& event) {
    if (KRTextView* editor = currentEditor()) {
        editor->mouseUp(event);
        return;
    }
    KRView::mouseUp(event);
}

// The field editor's delegate
// ------------------------------------------------------------------------------------------------------

bool KRTextField::textViewDoCommandBySelector(KRTextView* textView, const KRSelector& selector) {
    KRTextFieldDelegate* delegate = this->delegate();
    return delegate && delegate->controlTextViewDoCommandBySelector(this, textView, selector);
}

void KRTextField::textDidBeginEditing(KRTextView*) {
    if (KRTextFieldDelegate* delegate = this->delegate()) {
        delegate->controlTextDidBeginEditing(this);
    }
}

void KRTextField::textDidChange(KRTextView*) {
    validateEditing();
    if (KRTextFieldDelegate* delegate = this->delegate()) {
        delegate->controlTextDidChange(this);
    }
}

void KRTextField::textDidEndEditing(KRTextView* textView, const KRSelector& movement) {
    if (textView != currentEditor()) {
        return;
    }
    validateEditing();
    m_cell->endEditing(textView);
    if (KRTextFieldDelegate* delegate = this->delegate()) {
        delegate->controlTextDidEndEditing(this);
    }
    KRWindow* window = this->window();
    if (!window) {
        return;
    }
    if (movement == "insertTab:") {
        window->selectKeyViewFollowingView(this);
    } else if (movement == "insertBacktab:") {
        window->selectKeyViewPrecedingView(this);
    } else if (movement == "insertNewline:") {
        // Return commits and keeps the field, its text selected again.
        window->makeFirstResponder(this);
    }
}

QUndoStack* KRTextField::undoManagerForTextView(KRTextView* textView) {
    KRTextFieldDelegate* delegate = this->delegate();
    return delegate ? delegate->controlUndoManagerForTextView(this, textView) : nullptr;
}
