#pragma once

#include "Foundation/KRObject.h"
#include "Foundation/KRRange.h"
#include "Foundation/KRSelector.h"
#include "Foundation/KRWeakDelegate.h"
#include "Text/KRAttributedString.h"
#include "Views/KRTextInputClient.h"
#include "Views/KRView.h"

#include <QColor>
#include <QFont>
#include <QTextCharFormat>
#include <QTextDocumentFragment>

#include <functional>
#include <memory>
#include <optional>

class KRPasteboard;
class KRTextView;
class QTextBlock;
class QTextDocument;
class QTextLayout;
class QUndoStack;

// What the owner of a text view hears and decides. A pure interface, so a view (already a KRObject) can
// implement it; the text view watches the lifetime of the KRObject given with it.
class KRTextViewDelegate {
public:
    virtual ~KRTextViewDelegate();

    // Answering true means the delegate performed the command; the text view then does nothing.
    virtual bool textViewDoCommandBySelector(KRTextView*, const KRSelector&) { return false; }
    // After every edit of the text (typing, deleting, pasting, undo).
    virtual void textDidChange(KRTextView*) {}
    // Before the first change after the view became first responder.
    virtual void textDidBeginEditing(KRTextView*) {}
    // A field editor ends editing on Return, Tab, Backtab or Escape, and any text view when it resigns first
    // responder; movement names the command, or is empty for a resignation.
    virtual void textDidEndEditing(KRTextView*, const KRSelector&) {}
    // Where typing registers its undo steps; null means the edits are not undoable.
    virtual QUndoStack* undoManagerForTextView(KRTextView*) { return nullptr; }
};

// An editable text view over a QTextDocument: word wrapped at the view's width, flipped, drawn in the view
// tree. Indexes and ranges are in UTF-16 code units (the document's positions); glyph index = character
// index. Commands arrive through doCommandBySelector (the key bindings) and are performed by tryToPerform.
class KRTextView : public KRView, public KRTextInputClient {
public:
    enum SelectionAffinity : int { SelectionAffinityUpstream = 0, SelectionAffinityDownstream = 1 };

    explicit KRTextView(KRRect frame = KRRectZero);
    ~KRTextView() override;

    // Installs the key bindings (unless an interpreter is installed) and a text view as every window's
    // default field editor (unless a factory is set). Host widgets and text fields call it when created.
    static void installTextSystem();

    // Text -----------------------------------------------------------------------------------------------
    QString string() const;
    // Replaces the text (not undoable, no textDidChange); the caret goes to the end.
    void setString(const QString& string);
    QTextDocument* textStorage() const { return m_document.get(); }
    KRUInteger length() const;
    const QTextCharFormat& typingAttributes() const { return m_typingAttributes; }
    void setTypingAttributes(const QTextCharFormat& attributes);
    QFont defaultFont() const;
    void setDefaultFont(const QFont& font);
    QColor textColor() const { return m_textColor; }
    void setTextColor(const QColor& color);
    QColor selectionColor() const { return m_selectionColor; }
    void setSelectionColor(const QColor& color);
    // Every line exactly this tall (0 = natural heights), so measurement does not depend on font metrics.
    double fixedLineHeight() const { return m_fixedLineHeight; }
    void setFixedLineHeight(double height);
    void setAttributesForRange(const QTextCharFormat& attributes, KRRange range);
    // Replaces the attributes over range; a paragraph style with a fixed line height applies to all text.
    void setAttributesForRange(const KRTextAttributes& attributes, KRRange range);
    // The text with its attributes; every run carries its font, and its colour and strikethrough when set.
    KRAttributedString attributedString() const;
    // Replaces text and attributes (not undoable, no textDidChange); the caret goes to the end.
    void setAttributedString(const KRAttributedString& string);
    // Runs changes of the text, its attributes and its paragraphs as one change of the document, which is
    // laid out once at the end instead of after each of them.
    void performDocumentChanges(const std::function<void()>& changes);
    // Whether pasting keeps styled text (HTML on the pasteboard) rather than only its plain string.
    bool isRichText() const { return m_richText; }
    void setRichText(bool richText) { m_richText = richText; }
    // Selection ------------------------------------------------------------------------------------------
    KRRange selectedRange() const;
    // A range set from outside never ends inside a grapheme cluster: a caret moves past the cluster it
    // falls in, and a range grows to take in every cluster it touches.
    void setSelectedRange(KRRange range);
    void setSelectedRangeAffinityStillSelecting(KRRange range, int affinity, bool stillSelecting);
    // The smallest range of whole grapheme clusters (user-perceived characters) that holds range.
    KRRange rangeOfComposedCharacterSequencesForRange(KRRange range) const;
    int selectionAffinity() const { return m_affinity; }

    // Editing --------------------------------------------------------------------------------------------
    void insertText(const QString& text) override;
    // A location of KRNotFound means the marked text, or else the selection.
    void insertTextReplacementRange(const QString& text, KRRange replacementRange);
    bool isFieldEditor() const { return m_fieldEditor; }
    void setFieldEditor(bool fieldEditor) { m_fieldEditor = fieldEditor; }
    bool isEditable() const { return m_editable; }
    void setEditable(bool editable) { m_editable = editable; }

    // Commands -------------------------------------------------------------------------------------------
    void keyDown(const KREvent& event) override;
    // The delegate sees the command first; an unhandled one is performed here or passed up the chain.
    void doCommandBySelector(const KRSelector& selector) override;
    bool tryToPerform(const KRSelector& action, KRObject* sender) override;
    bool respondsToSelector(const KRSelector& selector) const override;

    // Delegate -------------------------------------------------------------------------------------------
    // The delegate is dropped once lifetimeOwner is destroyed. With a null lifetimeOwner the owner must
    // clear the delegate itself before it goes away.
    void setDelegate(KRTextViewDelegate* delegate, const KRObject* lifetimeOwner);
    template <class T> void setDelegate(T* delegate) {
        setDelegate(static_cast<KRTextViewDelegate*>(delegate), static_cast<const KRObject*>(delegate));
    }
    void setDelegate(std::nullptr_t) { setDelegate(nullptr, nullptr); }
    KRTextViewDelegate* delegate() const;
    QUndoStack* undoManager() const;

    // Geometry queries (view coordinates unless said otherwise) ------------------------------------------
    KRRect insertionPointRect() const;
    // The part of range on its first line, in screen coordinates; actualRange receives that part.
    KRRect firstRectForCharacterRange(KRRange range, KRRange* actualRange) const;
    KRUInteger characterIndexForInsertionAtPoint(KRPoint point) const;
    // The visual line holding index (full view width), with the line's character range.
    KRRect lineFragmentRectForCharacterAtIndex(KRUInteger index, KRRange* effectiveRange) const;
    double usedHeight() const;
    KRSize sizeThatFits(KRSize size) const override;
    void setFrameSize(KRSize size) override;

    // Mouse ----------------------------------------------------------------------------------------------
    void mouseDown(const KREvent& event) override;
    void mouseDragged(const KREvent& event) override;
    void mouseUp(const KREvent& event) override;

    // Drawing --------------------------------------------------------------------------------------------
    void draw(QPainter& painter, KRRect dirtyRect) override;
    // Whether the blinking caret is in its visible phase now.
    bool isCaretVisibleNow() const;

    // Responder ------------------------------------------------------------------------------------------
    bool acceptsFirstResponder() const override { return true; }
    bool becomeFirstResponder() override;
    bool resignFirstResponder() override;
    bool isFirstResponder() const;

    // Input method ---------------------------------------------------------------------------------------
    void setMarkedText(const QString& text, int cursorPosition) override;
    void unmarkText() override;
    bool hasMarkedText() const override { return m_markedRange.has_value(); }
    KRRange markedRange() const;
    KRRect firstRectForCaret() const override;

private:
    friend class KRTextViewEditCommand;

    struct LineInfo {
        int blockPosition = 0;
        int lineIndex = 0;
        int lineCount = 0;
        int start = 0;  // document position of the line's first character
        int length = 0; // characters on the line, trailing spaces included
        double x = 0.0; // layout origin
        double top = 0.0;
        double height = 0.0;
        QTextLayout* layout = nullptr;
    };

    int documentLength() const;
    int clampPosition(qint64 position) const;
    // The grapheme cluster boundary at position, or the nearest one after (forward) or before it.
    int clusterBoundary(int position, bool forward) const;
    void ensureLayout() const;
    // The line holding position; upstream affinity picks the line ending there on a wrap.
    LineInfo makeLineInfo(const QTextBlock& block, int lineIndex) const;
    LineInfo lineForPosition(int position, int affinity) const;
    std::optional<LineInfo> lineAbove(const LineInfo& line) const;
    std::optional<LineInfo> lineBelow(const LineInfo& line) const;
    double caretX(int position, const LineInfo& line) const;
    // The insertion point nearest x on line, with the affinity that keeps the caret on that line.
    std::pair<int, int> positionOnLine(const LineInfo& line, double x) const;
    std::pair<int, int> positionForPoint(KRPoint point) const;
    KRRange wordRangeAt(int position) const;
    KRRange paragraphRangeAt(int position) const;

    void setSelection(int anchor, int head, int affinity = SelectionAffinityDownstream);
    void moveHead(int position, bool modifySelection, int affinity = SelectionAffinityDownstream);
    bool performCommand(const KRSelector& selector);
    bool isKnownCommand(const KRSelector& selector) const;
    void moveVertically(bool down, bool modifySelection);
    void endEditing(const KRSelector& movement);
    void deleteRange(int from, int to);

    // Replaces [from, to) through the undo stack (when there is one); typing steps coalesce.
    void replaceRange(int from, int to, const QString& text, bool typing);
    void replaceRangeWithFragment(int from, int to, const QTextDocumentFragment& fragment);
    // Runs edit on [from, to) as one undoable change, then puts the caret after what it inserted.
    void performEdit(int from, int to, bool typing, const std::function<void(int, int)>& edit);
    void writeSelectionToPasteboard(const QTextDocumentFragment& selection, KRPasteboard& pasteboard);
    void pasteFromPasteboard(int start, int end);
    // Edits the document with no undo registration or notification.
    void rawReplace(int from, int to, const QString& text, const QTextCharFormat& format);
    void rawReplaceWithFragment(int from, int to, const QTextDocumentFragment& fragment);
    void applyFixedLineHeight();
    void textChanged();
    void removeMarkedTextSilently();

    void noteCaretChanged();
    void scheduleBlink();
    void blinkTick();

    std::unique_ptr<QTextDocument> m_document;
    QTextCharFormat m_typingAttributes;
    QColor m_textColor{0, 0, 0};
    QColor m_selectionColor{179, 215, 255};
    double m_fixedLineHeight = 0.0;
    int m_anchor = 0;
    int m_head = 0;
    int m_affinity = SelectionAffinityDownstream;
    bool m_stillSelecting = false;
    bool m_fieldEditor = false;
    bool m_editable = true;
    bool m_richText = false;
    bool m_beganEditing = false;
    bool m_coalesceTyping = false;
    bool m_blinkScheduled = false;
    std::optional<double> m_goalX;
    std::optional<KRRange> m_markedRange;
    KRRange m_mouseAnchorRange;
    int m_clickCount = 1;
    double m_lastCaretChange = 0.0;

    KRWeakDelegate<KRTextViewDelegate> m_delegate;
};
