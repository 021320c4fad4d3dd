#include "Text/KRTextFieldCell.h"

#include "Controls/KRDefaults.h"
#include "Text/KRTextField.h"
#include "Text/KRTextLayout.h"
#include "Text/KRTextView.h"
#include "Views/KRView.h"
#include "Views/KRWindow.h"

#include <QPainter>

#include <algorithm>

KRTextFieldCell::KRTextFieldCell(const QString& string)
    : m_value(string), m_font(KRDefaults::regularFontOfSize(KRDefaults::textFieldFontSize())),
      m_textColor(KRDefaults::blackColor()), m_backgroundColor(KRDefaults::textFieldBackgroundColor()),
      m_editable(false), m_selectable(false) {}

KRTextFieldCell::~KRTextFieldCell() {
    if (m_editing) {
        endEditing(m_editing->editor.get());
    }
}

// Value
// ------------------------------------------------------------------------------------------------------

void KRTextFieldCell::setStringValue(const QString& string) {
    setAttributedStringValue(KRAttributedString(string));
}

void KRTextFieldCell::setAttributedStringValue(const KRAttributedString& value) {
    if (value == m_value) {
        return;
    }
    m_value = value;
    valueDidChange();
}

void KRTextFieldCell::setPlaceholderString(const QString& string) {
    setPlaceholderAttributedString(KRAttributedString(string));
}

void KRTextFieldCell::setPlaceholderAttributedString(const KRAttributedString& placeholder) {
    m_placeholder = placeholder;
}

void KRTextFieldCell::valueDidChange() {
    m_sizeCache = {};
    ++m_sizeGeneration;
    sizeMayHaveChanged();
}

// Looks
// ------------------------------------------------------------------------------------------------------

void KRTextFieldCell::setFont(const QFont& font) {
    m_font = font;
    valueDidChange();
}

void KRTextFieldCell::setTextColor(const QColor& color) {
    m_textColor = color;
}

void KRTextFieldCell::setBackgroundColor(const QColor& color) {
    m_backgroundColor = color;
}

void KRTextFieldCell::setDrawsBackground(bool draws) {
    m_drawsBackground = draws;
}

void KRTextFieldCell::setBordered(bool bordered) {
    m_bordered = bordered;
    valueDidChange();
}

void KRTextFieldCell::setEditable(bool editable) {
    m_editable = editable;
}

void KRTextFieldCell::setLineBreakMode(int mode) {
    m_lineBreakMode = mode;
    valueDidChange();
}

bool KRTextFieldCell::wraps() const {
    return m_lineBreakMode == KRLineBreakByWordWrapping || m_lineBreakMode == KRLineBreakByCharWrapping;
}

double KRTextFieldCell::fixedLineHeight() const {
    return m_value.leadingAttributes().fixedLineHeight();
}

// Measuring and drawing
// ------------------------------------------------------------------------------------------------------

KRRect KRTextFieldCell::titleRectForBounds(KRRect bounds) const {
    if (!m_bordered) {
        return bounds;
    }
    const double inset = KRDefaults::textFieldBorderedTextInset();
    return KRRectInset(bounds, inset, inset);
}

KRSize KRTextFieldCell::cellSizeForBounds(KRRect bounds) const {
    const KRRect title = titleRectForBounds(bounds);
    const double width = wraps() ? title.size.width : 0.0;
    const KRSize insets{bounds.size.width - title.size.width, bounds.size.height - title.size.height};
    for (const CachedSize& cached : m_sizeCache) {
        if (cached.width == width) {
            return KRSize{cached.size.width + insets.width, cached.size.height + insets.height};
        }
    }
    const KRSize size = KRTextLayout::measure(m_value, width, m_font, fixedLineHeight());
    m_sizeCache[m_nextCacheSlot] = CachedSize{width, size};
    m_nextCacheSlot = static_cast<std::uint8_t>((m_nextCacheSlot + 1) % m_sizeCache.size());
    return KRSize{size.width + insets.width, size.height + insets.height};
}

void KRTextFieldCell::drawWithFrameInView(KRRect frame, KRView*, QPainter& painter) const {
    const QRectF rect = KRToQRectF(frame);
    if (m_drawsBackground) {
        painter.fillRect(rect, m_backgroundColor);
    }
    if (m_bordered) {
        painter.save();
        painter.setPen(QPen(KRDefaults::textFieldBorderColor(), 1.0));
        painter.drawRect(rect.adjusted(0.5, 0.5, -0.5, -0.5));
        painter.restore();
    }
    const KRTextView* editor = currentEditor();
    const bool valueIsEmpty = editor ? editor->length() == 0 : m_value.string().isEmpty();
    const KRAttributedString* shown = nullptr;
    QColor color = m_textColor;
    if (!valueIsEmpty && !editor) {
        shown = &m_value;
    } else if (valueIsEmpty && !m_placeholder.string().isEmpty()) {
        shown = &m_placeholder;
        color = KRDefaults::taskDetailsPlaceholderColor();
    }
    if (!shown) {
        return;
    }
    const KRRect title = titleRectForBounds(frame);
    painter.save();
    if (!wraps()) {
        painter.setClipRect(KRToQRectF(title), Qt::IntersectClip);
    }
    const KRTextLayout layout(*shown, wraps() ? title.size.width : 0.0, m_font,
                              shown->leadingAttributes().fixedLineHeight());
    layout.draw(painter, title.origin, color);
    painter.restore();
}

// Editing
// ------------------------------------------------------------------------------------------------------

std::shared_ptr<KRTextView> KRTextFieldCell::fieldEditorForView(KRView*) {
    return nullptr;
}

KRTextView* KRTextFieldCell::currentEditor() const {
    if (!m_editing || !m_editing->editor || !m_editing->clipView ||
        m_editing->editor->superview() != m_editing->clipView.get()) {
        return nullptr;
    }
    return m_editing->editor.get();
}

// One shared editor serves every field of a window, so loading it is on the path of every click and every
// move from row to row: the text is laid out once, and a font the editor already has is not set again (the
// text it would restyle is replaced anyway).
void KRTextFieldCell::loadEditor(KRTextView& editor) const {
    editor.performDocumentChanges([this, &editor] {
        if (editor.defaultFont() != m_font) {
            editor.setDefaultFont(m_font);
        }
        editor.setTextColor(m_textColor);
        editor.setFixedLineHeight(fixedLineHeight());
        editor.setEditable(m_editable);
        editor.setRichText(m_allowsEditingTextAttributes);
        KRTextAttributes typing = m_value.leadingAttributes();
        if (!typing.font) {
            typing.font = m_font;
        }
        editor.setTypingAttributes(typing.charFormat());
        editor.setAttributedString(m_value);
    });
}

void KRTextFieldCell::attachEditor(KRRect frame, KRView* controlView,
                                   const std::shared_ptr<KRTextView>& editor, KRTextField* delegate) {
    if (!editor || !controlView) {
        return;
    }
    if (m_editing) {
        endEditing(m_editing->editor.get());
    }
    loadEditor(*editor);
    auto clipView = std::make_shared<KRView>(frame);
    clipView->setIdentifier(QStringLiteral("fieldEditorClipView"));
    controlView->addSubview(clipView);
    clipView->addSubview(editor);
    editor->setFrame(KRRect{KRPointZero, frame.size});
    editor->setDelegate(delegate);
    m_editing = std::make_unique<Editing>(Editing{std::move(clipView), editor});
    sizeMayHaveChanged();
    setNeedsDisplayWithFocusRing(*controlView);
    if (KRWindow* window = controlView->window()) {
        window->makeFirstResponder(editor.get());
    }
}

void KRTextFieldCell::editWithFrameInViewEditorDelegateEvent(KRRect frame, KRView* controlView,
                                                             const std::shared_ptr<KRTextView>& editor,
                                                             KRTextField* delegate, const KREvent* event) {
    attachEditor(frame, controlView, editor, delegate);
    if (event && currentEditor() == editor.get()) {
        editor->mouseDown(*event);
    }
}

void KRTextFieldCell::selectWithFrameInViewEditorDelegateStartLength(
    KRRect frame, KRView* controlView, const std::shared_ptr<KRTextView>& editor, KRTextField* delegate,
    KRInteger start, KRInteger length) {
    attachEditor(frame, controlView, editor, delegate);
    if (currentEditor() == editor.get()) {
        editor->setSelectedRange(KRMakeRange(static_cast<KRUInteger>(std::max<KRInteger>(0, start)),
                                             static_cast<KRUInteger>(std::max<KRInteger>(0, length))));
    }
}

void KRTextFieldCell::endEditing(KRTextView* editor) {
    if (!editor || !m_editing || editor != m_editing->editor.get()) {
        return;
    }
    // A composition in progress is committed while the field still hears about changes.
    editor->unmarkText();
    if (!m_editing) {
        return;
    }
    const std::unique_ptr<Editing> ending = std::move(m_editing);
    const std::shared_ptr<KRTextView> keepAlive = std::move(ending->editor);
    const std::shared_ptr<KRView> clipView = std::move(ending->clipView);
    keepAlive->setDelegate(nullptr);
    KRView* controlView = clipView ? clipView->superview() : nullptr;
    if (keepAlive->superview() == clipView.get()) {
        keepAlive->removeFromSuperview();
    }
    if (clipView) {
        clipView->removeFromSuperview();
    }
    sizeMayHaveChanged();
    if (controlView) {
        setNeedsDisplayWithFocusRing(*controlView);
    }
}

void KRTextFieldCell::setNeedsDisplayWithFocusRing(KRView& controlView) {
    const double ring = KRDefaults::focusRingWidth();
    controlView.setNeedsDisplayInRect(KRRectInset(controlView.bounds(), -ring, -ring));
}
