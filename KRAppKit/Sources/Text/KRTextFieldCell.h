#pragma once

#include "Foundation/KRObject.h"
#include "Foundation/KRTypes.h"
#include "Geometry/KRGeometry.h"
#include "Text/KRAttributedString.h"

#include <QColor>
#include <QFont>

#include <array>
#include <memory>

class KREvent;
class KRTextField;
class KRTextView;
class KRView;
class QPainter;

// How a text field breaks lines that do not fit.
enum KRLineBreakMode : int {
    KRLineBreakByWordWrapping = 0,
    KRLineBreakByCharWrapping = 1,
    KRLineBreakByClipping = 2,
    KRLineBreakByTruncatingHead = 3,
    KRLineBreakByTruncatingTail = 4,
    KRLineBreakByTruncatingMiddle = 5,
};

// The value and looks of a text field, and its side of editing: it chooses the field editor, loads it with
// its text and attributes and puts it over the field, and takes it away again. It draws and measures the
// text with the same layout as the editor, so starting to edit never moves a line.
class KRTextFieldCell : public KRObject {
public:
    // The text cell with string as its value.
    explicit KRTextFieldCell(const QString& string = QString());
    ~KRTextFieldCell() override;
    KRTextFieldCell(const KRTextFieldCell&) = delete;
    KRTextFieldCell& operator=(const KRTextFieldCell&) = delete;

    // Value ----------------------------------------------------------------------------------------------
    QString stringValue() const { return m_value.string(); }
    // The string without attributes of its own: it draws in the cell's font and text colour.
    void setStringValue(const QString& string);
    const KRAttributedString& attributedStringValue() const { return m_value; }
    void setAttributedStringValue(const KRAttributedString& value);
    QString placeholderString() const { return m_placeholder.string(); }
    void setPlaceholderString(const QString& string);
    const KRAttributedString& placeholderAttributedString() const { return m_placeholder; }
    void setPlaceholderAttributedString(const KRAttributedString& placeholder);

    // Looks ----------------------------------------------------------------------------------------------
    QFont font() const { return m_font; }
    void setFont(const QFont& font);
    QColor textColor() const { return m_textColor; }
    void setTextColor(const QColor& color);
    QColor backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QColor& color);
    bool drawsBackground() const { return m_drawsBackground; }
    void setDrawsBackground(bool draws);
    bool isBordered() const { return m_bordered; }
    void setBordered(bool bordered);
    bool isEditable() const { return m_editable; }
    void setEditable(bool editable);
    bool isSelectable() const { return m_selectable || m_editable; }
    void setSelectable(bool selectable) { m_selectable = selectable; }
    int lineBreakMode() const { return m_lineBreakMode; }
    void setLineBreakMode(int mode);
    bool allowsEditingTextAttributes() const { return m_allowsEditingTextAttributes; }
    void setAllowsEditingTextAttributes(bool allows) { m_allowsEditingTextAttributes = allows; }
    bool wraps() const;

    // Measuring and drawing ------------------------------------------------------------------------------
    // Where the text goes inside bounds (inset when bordered).
    KRRect titleRectForBounds(KRRect bounds) const;
    // The size the value needs inside bounds: wrapped at the bounds' width when the cell wraps. The last
    // two answers are kept until the value, its attributes or the font change.
    KRSize cellSizeForBounds(KRRect bounds) const;
    // Background, border and the value (or the placeholder when the value is empty). The value is left
    // out while a field editor shows it.
    void drawWithFrameInView(KRRect frame, KRView* controlView, QPainter& painter) const;
    // The line height every line of the value takes, or 0 for natural heights.
    double fixedLineHeight() const;

    // Editing --------------------------------------------------------------------------------------------
    // The editor the cell wants for view; null lets the field use its window's shared one.
    virtual std::shared_ptr<KRTextView> fieldEditorForView(KRView* view);
    // Loads editor with the value, puts it over frame in controlView, makes it first responder and gives it
    // the event (a mouse down that started the edit), if any.
    virtual void editWithFrameInViewEditorDelegateEvent(KRRect frame, KRView* controlView,
                                                        const std::shared_ptr<KRTextView>& editor,
                                                        KRTextField* delegate, const KREvent* event);
    // As edit, then selects {start, length} instead of handing over an event.
    virtual void selectWithFrameInViewEditorDelegateStartLength(KRRect frame, KRView* controlView,
                                                                const std::shared_ptr<KRTextView>& editor,
                                                                KRTextField* delegate, KRInteger start,
                                                                KRInteger length);
    // Takes editor away from the field. The value is not read back: the field does that as edits happen.
    virtual void endEditing(KRTextView* editor);
    // The editor attached by this cell, while it is attached.
    KRTextView* currentEditor() const;

    // Changes whenever the cell's measured size may change (its value, font or line breaking), exactly when
    // the cell forgets its own measurements; owners that keep a size of their own compare it.
    std::uint32_t sizeGeneration() const { return m_sizeGeneration; }

protected:
    // Called whenever the size the cell measures may change: its value, font or line breaking changed, or
    // an editor was attached or taken away (an editor measures its own text). Owners that keep a size of
    // their own hear of it here without asking the cell on every layout.
    virtual void sizeMayHaveChanged() {}

private:
    void attachEditor(KRRect frame, KRView* controlView, const std::shared_ptr<KRTextView>& editor,
                      KRTextField* delegate);
    void loadEditor(KRTextView& editor) const;
    void valueDidChange();
    // Editing starts and ends with the focus ring, which lies just outside the field.
    static void setNeedsDisplayWithFocusRing(KRView& controlView);
    KRTextAttributes drawingAttributes(const KRTextAttributes& attributes) const;

    struct CachedSize {
        double width = -1.0;
        KRSize size;
    };

    KRAttributedString m_value;
    KRAttributedString m_placeholder;
    QFont m_font;
    QColor m_textColor;
    QColor m_backgroundColor;
    // The editor and the view clipping it, held while attached like any subview. Most cells are never
    // edited, so this is allocated when an edit starts and dropped when it ends.
    struct Editing {
        std::shared_ptr<KRView> clipView;
        std::shared_ptr<KRTextView> editor;
    };
    std::unique_ptr<Editing> m_editing;
    mutable std::array<CachedSize, 2> m_sizeCache;
    mutable std::uint8_t m_nextCacheSlot = 0;
    int m_lineBreakMode = KRLineBreakByWordWrapping;
    std::uint32_t m_sizeGeneration = 0;
    bool m_drawsBackground = false;
    bool m_bordered = false;
    bool m_editable = true;
    bool m_selectable = true;
    bool m_allowsEditingTextAttributes = false;
};
