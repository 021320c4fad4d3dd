#include "Text/KRTextView.h"

#include "Foundation/KRClock.h"
#include "Foundation/KRRunLoop.h"
#include "Platform/KRPasteboard.h"
#include "Text/KRKeyBindings.h"
#include "Views/KREvent.h"
#include "Views/KRWindow.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QSet>
#include <QTextBlock>
#include <QTextBoundaryFinder>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFragment>
#include <QTextLayout>
#include <QUndoCommand>
#include <QUndoStack>

#include <algorithm>
#include <cmath>

namespace {

constexpr double kBlinkPeriod = 0.5;
constexpr int kTypingCommandId = 0x4b52;

const QSet<QString>& knownCommands() {
    static const QSet<QString> commands = {
        QStringLiteral("moveLeft:"),
        QStringLiteral("moveRight:"),
        QStringLiteral("moveUp:"),
        QStringLiteral("moveDown:"),
        QStringLiteral("moveWordLeft:"),
        QStringLiteral("moveWordRight:"),
        QStringLiteral("moveToBeginningOfParagraph:"),
        QStringLiteral("moveToEndOfParagraph:"),
        QStringLiteral("moveToLeftEndOfLine:"),
        QStringLiteral("moveToRightEndOfLine:"),
        QStringLiteral("moveToBeginningOfLine:"),
        QStringLiteral("moveToEndOfLine:"),
        QStringLiteral("moveToBeginningOfDocument:"),
        QStringLiteral("moveToEndOfDocument:"),
        QStringLiteral("moveBackward:"),
        QStringLiteral("moveForward:"),
        QStringLiteral("moveLeftAndModifySelection:"),
        QStringLiteral("moveRightAndModifySelection:"),
        QStringLiteral("moveUpAndModifySelection:"),
        QStringLiteral("moveDownAndModifySelection:"),
        QStringLiteral("moveWordLeftAndModifySelection:"),
        QStringLiteral("moveWordRightAndModifySelection:"),
        QStringLiteral("moveToBeginningOfParagraphAndModifySelection:"),
        QStringLiteral("moveToEndOfParagraphAndModifySelection:"),
        QStringLiteral("moveToLeftEndOfLineAndModifySelection:"),
        QStringLiteral("moveToRightEndOfLineAndModifySelection:"),
        QStringLiteral("moveToBeginningOfLineAndModifySelection:"),
        QStringLiteral("moveToEndOfLineAndModifySelection:"),
        QStringLiteral("moveToBeginningOfDocumentAndModifySelection:"),
        QStringLiteral("moveToEndOfDocumentAndModifySelection:"),
        QStringLiteral("moveBackwardAndModifySelection:"),
        QStringLiteral("moveForwardAndModifySelection:"),
        QStringLiteral("moveParagraphBackwardAndModifySelection:"),
        QStringLiteral("moveParagraphForwardAndModifySelection:"),
        QStringLiteral("deleteBackward:"),
        QStringLiteral("deleteForward:"),
        QStringLiteral("deleteWordBackward:"),
        QStringLiteral("deleteWordForward:"),
        QStringLiteral("deleteToBeginningOfLine:"),
        QStringLiteral("deleteToEndOfLine:"),
        QStringLiteral("deleteToEndOfParagraph:"),
        QStringLiteral("insertNewline:"),
        QStringLiteral("insertLineBreak:"),
        QStringLiteral("insertTab:"),
        QStringLiteral("insertBacktab:"),
        QStringLiteral("cancelOperation:"),
        QStringLiteral("selectAll:"),
        QStringLiteral("copy:"),
        QStringLiteral("cut:"),
        QStringLiteral("paste:"),
        QStringLiteral("undo:"),
        QStringLiteral("redo:"),
        QStringLiteral("noop:"),
    };
    return commands;
}

// Plain text as the pasteboard and string() see it: paragraph and line separators become newlines.
QString plainTextFromDocumentText(QString text) {
    text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    text.replace(QChar::LineSeparator, QLatin1Char('\n'));
    return text;
}

QString normalizedNewlines(QString text) {
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return text;
}

} // namespace

KRTextViewDelegate::~KRTextViewDelegate() = default;

// One undoable edit: [position, position + removedLength) was replaced by insertedLength characters.
// Consecutive typing merges into one step, so undo removes a whole typed run.
class KRTextViewEditCommand : public QUndoCommand {
public:
    KRTextViewEditCommand(KRTextView* view, int position, QTextDocumentFragment removed, int removedLength,
                          int insertedLength, bool typing, bool canMerge, std::pair<int, int> selectionBefore,
                          std::pair<int, int> selectionAfter)
        : m_view(view), m_viewAddress(view), m_position(position), m_removed(std::move(removed)),
          m_removedLength(removedLength), m_insertedLength(insertedLength), m_typing(typing),
          m_canMerge(canMerge), m_selectionBefore(selectionBefore), m_selectionAfter(selectionAfter) {
        setText(typing ? QStringLiteral("Typing") : QStringLiteral("Edit"));
    }

    int id() const override { return m_typing ? kTypingCommandId : -1; }

    bool mergeWith(const QUndoCommand* other) override {
        const auto* next = static_cast<const KRTextViewEditCommand*>(other);
        if (!next->m_canMerge || next->m_viewAddress != m_viewAddress || next->m_removedLength != 0 ||
            next->m_position != m_position + m_insertedLength) {
            return false;
        }
        m_insertedLength += next->m_insertedLength;
        m_selectionAfter = next->m_selectionAfter;
        return true;
    }

    void undo() override {
        KRTextView* view = m_view.get();
        if (!view) {
            return;
        }
        QTextCursor cursor(view->m_document.get());
        cursor.setPosition(m_position);
        cursor.setPosition(m_position + m_insertedLength, QTextCursor::KeepAnchor);
        m_inserted = cursor.selection();
        view->rawReplaceWithFragment(m_position, m_position + m_insertedLength, m_removed);
        finish(*view, m_selectionBefore);
    }

    void redo() override {
        // push() redoes at once; the edit was already made by the view.
        if (m_skipRedo) {
            m_skipRedo = false;
            return;
        }
        KRTextView* view = m_view.get();
        if (!view) {
            return;
        }
        view->rawReplaceWithFragment(m_position, m_position + m_removedLength, m_inserted);
        finish(*view, m_selectionAfter);
    }

private:
    static void finish(KRTextView& view, std::pair<int, int> selection) {
        view.m_markedRange.reset();
        view.m_coalesceTyping = false;
        view.m_goalX.reset();
        view.setSelection(selection.first, selection.second);
        view.textChanged();
    }

    KRWeak<KRTextView> m_view;
    const KRTextView* m_viewAddress;
    int m_position;
    QTextDocumentFragment m_removed;
    QTextDocumentFragment m_inserted;
    int m_removedLength;
    int m_insertedLength;
    bool m_typing;
    bool m_canMerge;
    bool m_skipRedo = true;
    std::pair<int, int> m_selectionBefore;
    std::pair<int, int> m_selectionAfter;
};

KRTextView::KRTextView(KRRect frame) : KRView(frame), m_document(std::make_unique<QTextDocument>()) {
    // Undo belongs to the delegate's stack, not to the document.
    m_document->setUndoRedoEnabled(false);
    m_document->setDocumentMargin(0.0);
    QTextOption option = m_document->defaultTextOption();
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    m_document->setDefaultTextOption(option);
    m_document->setTextWidth(frame.size.width > 0.0 ? frame.size.width : -1.0);
    m_typingAttributes.setFont(m_document->defaultFont());
    m_lastCaretChange = KRClock::now();
}

KRTextView::~KRTextView() = default;

void KRTextView::installTextSystem() {
    if (!KRResponder::keyEventInterpreter()) {
        KRKeyBindings::install();
    }
    if (!KRWindow::hasDefaultFieldEditorFactory()) {
        KRWindow::setDefaultFieldEditorFactory([] {
            auto editor = std::make_shared<KRTextView>();
            editor->setFieldEditor(true);
            return editor;
        });
    }
}

// Attributes
// -------------------------------------------------------------------------------------------------------

void KRTextView::setAttributesForRange(const KRTextAttributes& attributes, KRRange range) {
    QTextCharFormat format = attributes.charFormat();
    if (!attributes.font) {
        format.setFont(m_document->defaultFont());
    }
    setAttributesForRange(format, range);
    if (attributes.paragraphStyle) {
        setFixedLineHeight(attributes.fixedLineHeight());
    }
}

KRAttributedString KRTextView::attributedString() const {
    const QString text = string();
    KRAttributedString result(text);
    const std::optional<KRParagraphStyle> paragraphStyle =
        m_fixedLineHeight > 0.0 ? std::optional(KRParagraphStyle{m_fixedLineHeight, m_fixedLineHeight})
                                : std::nullopt;
    for (QTextBlock block = m_document->begin(); block.isValid(); block = block.next()) {
        for (auto fragment = block.begin(); !fragment.atEnd(); ++fragment) {
            const QTextFragment piece = fragment.fragment();
            const QTextCharFormat format = piece.charFormat();
            KRTextAttributes attributes;
            attributes.font = format.font();
            if (format.hasProperty(QTextFormat::ForegroundBrush)) {
                attributes.foregroundColor = format.foreground().color();
            }
            if (format.hasProperty(QTextFormat::FontStrikeOut)) {
                attributes.strikethroughStyle = format.fontStrikeOut() ? 1 : 0;
            }
            attributes.paragraphStyle = paragraphStyle;
            // A paragraph's newline takes the attributes of the text before it.
            const bool endsBlock = piece.position() + piece.length() == block.position() + block.length() - 1;
            const KRUInteger length =
                static_cast<KRUInteger>(piece.length()) + (endsBlock && block.next().isValid() ? 1 : 0);
            result.setAttributes(attributes, KRMakeRange(static_cast<KRUInteger>(piece.position()), length));
        }
    }
    return result;
}

// The text and its runs go in as one change of the document, laid out once.
void KRTextView::setAttributedString(const KRAttributedString& string) {
    const double fixedLineHeight = string.leadingAttributes().fixedLineHeight();
    if (fixedLineHeight > 0.0) {
        m_fixedLineHeight = fixedLineHeight;
    }
    performDocumentChanges([this, &string] {
        setString(string.string());
        for (const KRAttributedString::Run& run : string.runs()) {
            setAttributesForRange(run.attributes, run.range);
        }
    });
    setNeedsDisplay();
}

void KRTextView::performDocumentChanges(const std::function<void()>& changes) {
    QTextCursor batch(m_document.get());
    batch.beginEditBlock();
    changes();
    batch.endEditBlock();
}

// Text
// -------------------------------------------------------------------------------------------------------

QString KRTextView::string() const {
    return plainTextFromDocumentText(m_document->toRawText());
}

void KRTextView::setString(const QString& text) {
    m_markedRange.reset();
    rawReplace(0, documentLength(), normalizedNewlines(text), m_typingAttributes);
    applyFixedLineHeight();
    m_coalesceTyping = false;
    m_goalX.reset();
    setSelection(documentLength(), documentLength());
}

KRUInteger KRTextView::length() const {
    return static_cast<KRUInteger>(documentLength());
}

int KRTextView::documentLength() const {
    return std::max(0, m_document->characterCount() - 1);
}

int KRTextView::clampPosition(qint64 position) const {
    return static_cast<int>(std::clamp<qint64>(position, 0, documentLength()));
}

void KRTextView::setTypingAttributes(const QTextCharFormat& attributes) {
    m_typingAttributes = attributes;
}

QFont KRTextView::defaultFont() const {
    return m_document->defaultFont();
}

void KRTextView::setDefaultFont(const QFont& font) {
    m_document->setDefaultFont(font);
    m_typingAttributes.setFont(font);
    QTextCursor cursor(m_document.get());
    cursor.select(QTextCursor::Document);
    QTextCharFormat format;
    format.setFont(font);
    cursor.mergeCharFormat(format);
    setNeedsDisplay();
}

void KRTextView::setTextColor(const QColor& color) {
    m_textColor = color;
    setNeedsDisplay();
}

void KRTextView::setSelectionColor(const QColor& color) {
    m_selectionColor = color;
    setNeedsDisplay();
}

void KRTextView::setFixedLineHeight(double height) {
    m_fixedLineHeight = std::max(0.0, height);
    applyFixedLineHeight();
    setNeedsDisplay();
}

void KRTextView::applyFixedLineHeight() {
    QTextCursor cursor(m_document.get());
    cursor.select(QTextCursor::Document);
    QTextBlockFormat format;
    if (m_fixedLineHeight > 0.0) {
        format.setLineHeight(m_fixedLineHeight, QTextBlockFormat::FixedHeight);
    } else {
        format.setLineHeight(100.0, QTextBlockFormat::SingleHeight);
    }
    cursor.mergeBlockFormat(format);
}

void KRTextView::setAttributesForRange(const QTextCharFormat& attributes, KRRange range) {
    const int from = clampPosition(static_cast<qint64>(std::min<KRUInteger>(range.location, KRNotFound)));
    const int to =
        clampPosition(from + static_cast<qint64>(std::min<KRUInteger>(range.length, KRNotFound / 2)));
    QTextCursor cursor(m_document.get());
    cursor.setPosition(from);
    cursor.setPosition(to, QTextCursor::KeepAnchor);
    cursor.setCharFormat(attributes);
    setNeedsDisplay();
}

// Selection
// --------------------------------------------------------------------------------------------------

KRRange KRTextView::selectedRange() const {
    const int start = std::min(m_anchor, m_head);
    return KRRange{static_cast<KRUInteger>(start), static_cast<KRUInteger>(std::abs(m_head - m_anchor))};
}

void KRTextView::setSelectedRange(KRRange range) {
    setSelectedRangeAffinityStillSelecting(range, SelectionAffinityDownstream, false);
}

void KRTextView::setSelectedRangeAffinityStillSelecting(KRRange range, int affinity, bool stillSelecting) {
    const KRRange whole = rangeOfComposedCharacterSequencesForRange(range);
    const int from = static_cast<int>(whole.location);
    const int to = static_cast<int>(KRMaxRange(whole));
    m_coalesceTyping = false;
    m_goalX.reset();
    setSelection(from, to,
                 affinity == SelectionAffinityUpstream ? SelectionAffinityUpstream
                                                       : SelectionAffinityDownstream);
    m_stillSelecting = stillSelecting;
}

KRRange KRTextView::rangeOfComposedCharacterSequencesForRange(KRRange range) const {
    const int from = clampPosition(static_cast<qint64>(std::min<KRUInteger>(range.location, KRNotFound)));
    const int to =
        clampPosition(from + static_cast<qint64>(std::min<KRUInteger>(range.length, KRNotFound / 2)));
    const int start = clusterBoundary(from, from == to);
    const int end = std::max(start, clusterBoundary(to, true));
    return KRRange{static_cast<KRUInteger>(start), static_cast<KRUInteger>(end - start)};
}

int KRTextView::clusterBoundary(int position, bool forward) const {
    const QTextBlock block = m_document->findBlock(position);
    if (!block.isValid()) {
        return position;
    }
    const QString text = block.text();
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(position - block.position());
    if (finder.isAtBoundary()) {
        return position;
    }
    const qsizetype boundary = forward ? finder.toNextBoundary() : finder.toPreviousBoundary();
    return boundary < 0 ? position : block.position() + static_cast<int>(boundary);
}

void KRTextView::setSelection(int anchor, int head, int affinity) {
    m_anchor = clampPosition(anchor);
    m_head = clampPosition(head);
    m_affinity = affinity;
    noteCaretChanged();
    setNeedsDisplay();
}

void KRTextView::moveHead(int position, bool modifySelection, int affinity) {
    if (modifySelection) {
        setSelection(m_anchor, position, affinity);
    } else {
        setSelection(position, position, affinity);
    }
}

// Editing
// ----------------------------------------------------------------------------------------------------

void KRTextView::insertText(const QString& text) {
    if (!m_editable) {
        return;
    }
    if (m_markedRange) {
        const int location = static_cast<int>(m_markedRange->location);
        removeMarkedTextSilently();
        setSelection(location, location);
        replaceRange(location, location, text, true);
        return;
    }
    const KRRange selection = selectedRange();
    replaceRange(static_cast<int>(selection.location), static_cast<int>(KRMaxRange(selection)), text, true);
}

void KRTextView::insertTextReplacementRange(const QString& text, KRRange replacementRange) {
    if (replacementRange.location == KRNotFound) {
        insertText(text);
        return;
    }
    if (!m_editable) {
        return;
    }
    unmarkText();
    const int from =
        clampPosition(static_cast<qint64>(std::min<KRUInteger>(replacementRange.location, KRNotFound)));
    const int to = clampPosition(
        from + static_cast<qint64>(std::min<KRUInteger>(replacementRange.length, KRNotFound / 2)));
    replaceRange(from, to, text, true);
}

void KRTextView::replaceRange(int from, int to, const QString& text, bool typing) {
    const QString inserted = normalizedNewlines(text);
    performEdit(from, to, typing, [this, &inserted](int start, int end) {
        rawReplace(start, end, inserted, m_typingAttributes);
    });
}

void KRTextView::replaceRangeWithFragment(int from, int to, const QTextDocumentFragment& fragment) {
    performEdit(from, to, false,
                [this, &fragment](int start, int end) { rawReplaceWithFragment(start, end, fragment); });
}

void KRTextView::performEdit(int from, int to, bool typing, const std::function<void(int, int)>& edit) {
    if (!m_editable) {
        return;
    }
    from = clampPosition(from);
    to = clampPosition(to);
    if (from > to) {
        std::swap(from, to);
    }
    QUndoStack* stack = undoManager();
    const std::pair<int, int> selectionBefore{m_anchor, m_head};
    QTextDocumentFragment removed;
    if (stack && to > from) {
        QTextCursor cursor(m_document.get());
        cursor.setPosition(from);
        cursor.setPosition(to, QTextCursor::KeepAnchor);
        removed = cursor.selection();
    }
    const int lengthAfterRemoval = documentLength() - (to - from);
    edit(from, to);
    const int insertedLength = documentLength() - lengthAfterRemoval;
    const int caret = from + insertedLength;
    m_goalX.reset();
    setSelection(caret, caret);
    if (stack) {
        stack->push(new KRTextViewEditCommand(this, from, removed, to - from, insertedLength, typing,
                                              typing && m_coalesceTyping, selectionBefore, {caret, caret}));
    }
    m_coalesceTyping = typing;
    textChanged();
}

void KRTextView::rawReplace(int from, int to, const QString& text, const QTextCharFormat& format) {
    QTextCursor cursor(m_document.get());
    cursor.setPosition(clampPosition(from));
    cursor.setPosition(clampPosition(to), QTextCursor::KeepAnchor);
    if (text.isEmpty()) {
        cursor.removeSelectedText();
    } else {
        cursor.insertText(text, format);
    }
    // New paragraphs may not carry the fixed height.
    if (m_fixedLineHeight > 0.0 &&
        (text.contains(QLatin1Char('\n')) || text.contains(QChar::ParagraphSeparator))) {
        applyFixedLineHeight();
    }
}

void KRTextView::rawReplaceWithFragment(int from, int to, const QTextDocumentFragment& fragment) {
    QTextCursor cursor(m_document.get());
    cursor.setPosition(clampPosition(from));
    cursor.setPosition(clampPosition(to), QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    if (!fragment.isEmpty()) {
        cursor.insertFragment(fragment);
    }
    if (m_fixedLineHeight > 0.0) {
        applyFixedLineHeight();
    }
}

void KRTextView::deleteRange(int from, int to) {
    if (from < to) {
        replaceRange(from, to, QString(), false);
    }
}

void KRTextView::textChanged() {
    noteCaretChanged();
    setNeedsDisplay();
    KRTextViewDelegate* delegate = this->delegate();
    if (!delegate) {
        return;
    }
    if (!m_beganEditing) {
        m_beganEditing = true;
        delegate->textDidBeginEditing(this);
        // The delegate may have let go of us.
        delegate = this->delegate();
        if (!delegate) {
            return;
        }
    }
    delegate->textDidChange(this);
}

// Commands
// ---------------------------------------------------------------------------------------------------

void KRTextView::keyDown(const KREvent& event) {
    interpretKeyEvents({event});
}

void KRTextView::doCommandBySelector(const KRSelector& selector) {
    if (KRTextViewDelegate* delegate = this->delegate()) {
        if (delegate->textViewDoCommandBySelector(this, selector)) {
            return;
        }
    }
    KRView::doCommandBySelector(selector);
}

bool KRTextView::isKnownCommand(const KRSelector& selector) const {
    return knownCommands().contains(selector.name());
}

bool KRTextView::tryToPerform(const KRSelector& action, KRObject* sender) {
    if (isKnownCommand(action)) {
        return performCommand(action);
    }
    return KRView::tryToPerform(action, sender);
}

bool KRTextView::respondsToSelector(const KRSelector& selector) const {
    return isKnownCommand(selector) || KRView::respondsToSelector(selector);
}

void KRTextView::endEditing(const KRSelector& movement) {
    unmarkText();
    if (KRTextViewDelegate* delegate = this->delegate()) {
        delegate->textDidEndEditing(this, movement);
    }
}

bool KRTextView::performCommand(const KRSelector& selector) {
    QString name = selector.name();
    const bool isVertical =
        name.startsWith(QLatin1String("moveUp")) || name.startsWith(QLatin1String("moveDown"));
    if (!isVertical) {
        m_goalX.reset();
    }
    // Any command but typing ends the current typing undo step.
    m_coalesceTyping = false;
    if (m_markedRange && name != QLatin1String("noop:")) {
        unmarkText();
        m_coalesceTyping = false;
    }

    static const QLatin1String modifySuffix("AndModifySelection:");
    const bool modify = name.endsWith(modifySuffix);
    if (modify) {
        name = name.left(name.size() - modifySuffix.size()) + QLatin1Char(':');
    }
    const KRRange selection = selectedRange();
    const int start = static_cast<int>(selection.location);
    const int end = static_cast<int>(KRMaxRange(selection));
    const bool hasSelection = selection.length > 0;
    auto moveCursor = [this](int from, QTextCursor::MoveOperation operation) {
        QTextCursor cursor(m_document.get());
        cursor.setPosition(clampPosition(from));
        cursor.movePosition(operation);
        return cursor.position();
    };

    if (name == QLatin1String("moveLeft:") || name == QLatin1String("moveBackward:")) {
        if (!modify && hasSelection) {
            moveHead(start, false);
        } else {
            moveHead(moveCursor(m_head, QTextCursor::PreviousCharacter), modify);
        }
    } else if (name == QLatin1String("moveRight:") || name == QLatin1String("moveForward:")) {
        if (!modify && hasSelection) {
            moveHead(end, false);
        } else {
            moveHead(moveCursor(m_head, QTextCursor::NextCharacter), modify);
        }
    } else if (name == QLatin1String("moveUp:") || name == QLatin1String("moveDown:")) {
        moveVertically(name == QLatin1String("moveDown:"), modify);
    } else if (name == QLatin1String("moveWordLeft:")) {
        moveHead(moveCursor(modify ? m_head : start, QTextCursor::WordLeft), modify);
    } else if (name == QLatin1String("moveWordRight:")) {
        moveHead(moveCursor(modify ? m_head : end, QTextCursor::WordRight), modify);
    } else if (name == QLatin1String("moveToBeginningOfParagraph:")) {
        moveHead(static_cast<int>(paragraphRangeAt(modify ? m_head : start).location), modify);
    } else if (name == QLatin1String("moveToEndOfParagraph:")) {
        moveHead(static_cast<int>(KRMaxRange(paragraphRangeAt(modify ? m_head : end))), modify);
    } else if (name == QLatin1String("moveToLeftEndOfLine:") ||
               name == QLatin1String("moveToBeginningOfLine:")) {
        const bool fromHead = modify || !hasSelection;
        const LineInfo line =
            lineForPosition(fromHead ? m_head : start, fromHead ? m_affinity : SelectionAffinityDownstream);
        moveHead(line.start, modify);
    } else if (name == QLatin1String("moveToRightEndOfLine:") || name == QLatin1String("moveToEndOfLine:")) {
        const bool fromHead = modify || !hasSelection;
        const LineInfo line =
            lineForPosition(fromHead ? m_head : end, fromHead ? m_affinity : SelectionAffinityUpstream);
        const bool wraps = line.lineIndex < line.lineCount - 1;
        // On a wrapped line the end is also the next line's start: upstream keeps the caret on this line.
        moveHead(line.start + line.length, modify,
                 wraps ? SelectionAffinityUpstream : SelectionAffinityDownstream);
    } else if (name == QLatin1String("moveToBeginningOfDocument:")) {
        moveHead(0, modify);
    } else if (name == QLatin1String("moveToEndOfDocument:")) {
        moveHead(documentLength(), modify);
    } else if (name == QLatin1String("moveParagraphBackward:")) {
        const int paragraphStart = static_cast<int>(paragraphRangeAt(m_head).location);
        const int target = paragraphStart < m_head || paragraphStart == 0
                               ? paragraphStart
                               : static_cast<int>(paragraphRangeAt(paragraphStart - 1).location);
        moveHead(target, true);
    } else if (name == QLatin1String("moveParagraphForward:")) {
        const int paragraphEnd = static_cast<int>(KRMaxRange(paragraphRangeAt(m_head)));
        const int target = paragraphEnd > m_head || paragraphEnd == documentLength()
                               ? paragraphEnd
                               : static_cast<int>(KRMaxRange(paragraphRangeAt(paragraphEnd + 1)));
        moveHead(target, true);
    } else if (name == QLatin1String("deleteBackward:")) {
        if (hasSelection) {
            deleteRange(start, end);
        } else if (m_head > 0) {
            deleteRange(moveCursor(m_head, QTextCursor::PreviousCharacter), m_head);
        }
    } else if (name == QLatin1String("deleteForward:")) {
        if (hasSelection) {
            deleteRange(start, end);
        } else {
            deleteRange(m_head, moveCursor(m_head, QTextCursor::NextCharacter));
        }
    } else if (name == QLatin1String("deleteWordBackward:")) {
        hasSelection ? deleteRange(start, end)
                     : deleteRange(moveCursor(m_head, QTextCursor::WordLeft), m_head);
    } else if (name == QLatin1String("deleteWordForward:")) {
        hasSelection ? deleteRange(start, end)
                     : deleteRange(m_head, moveCursor(m_head, QTextCursor::WordRight));
    } else if (name == QLatin1String("deleteToBeginningOfLine:")) {
        if (hasSelection) {
            deleteRange(start, end);
        } else {
            const LineInfo line = lineForPosition(m_head, m_affinity);
            line.start < m_head ? deleteRange(line.start, m_head)
                                : (void)performCommand(KRSelector("deleteBackward:"));
        }
    } else if (name == QLatin1String("deleteToEndOfLine:")) {
        if (hasSelection) {
            deleteRange(start, end);
        } else {
            const LineInfo line = lineForPosition(m_head, m_affinity);
            const int lineEnd = line.start + line.length;
            lineEnd > m_head ? deleteRange(m_head, lineEnd)
                             : (void)performCommand(KRSelector("deleteForward:"));
        }
    } else if (name == QLatin1String("deleteToEndOfParagraph:")) {
        if (hasSelection) {
            deleteRange(start, end);
        } else {
            const int paragraphEnd = static_cast<int>(KRMaxRange(paragraphRangeAt(m_head)));
            paragraphEnd > m_head ? deleteRange(m_head, paragraphEnd)
                                  : (void)performCommand(KRSelector("deleteForward:"));
        }
    } else if (name == QLatin1String("insertNewline:")) {
        m_fieldEditor ? endEditing(selector) : insertText(QStringLiteral("\n"));
    } else if (name == QLatin1String("insertLineBreak:")) {
        insertText(QString(QChar::LineSeparator));
    } else if (name == QLatin1String("insertTab:")) {
        m_fieldEditor ? endEditing(selector) : insertText(QStringLiteral("\t"));
    } else if (name == QLatin1String("insertBacktab:")) {
        if (m_fieldEditor) {
            endEditing(selector);
        }
    } else if (name == QLatin1String("cancelOperation:")) {
        // Outside a field editor Escape belongs to someone up the chain.
        if (!m_fieldEditor) {
            return false;
        }
        endEditing(selector);
    } else if (name == QLatin1String("selectAll:")) {
        setSelection(0, documentLength());
    } else if (name == QLatin1String("copy:") || name == QLatin1String("cut:")) {
        if (hasSelection) {
            QTextCursor cursor(m_document.get());
            cursor.setPosition(start);
            cursor.setPosition(end, QTextCursor::KeepAnchor);
            writeSelectionToPasteboard(cursor.selection(), *KRPasteboard::generalPasteboard());
            if (name == QLatin1String("cut:")) {
                deleteRange(start, end);
            }
        }
    } else if (name == QLatin1String("paste:")) {
        pasteFromPasteboard(start, end);
    } else if (name == QLatin1String("undo:")) {
        if (QUndoStack* stack = undoManager()) {
            stack->undo();
        }
    } else if (name == QLatin1String("redo:")) {
        if (QUndoStack* stack = undoManager()) {
            stack->redo();
        }
    }
    // noop: is handled by doing nothing.
    return true;
}

void KRTextView::writeSelectionToPasteboard(const QTextDocumentFragment& selection,
                                            KRPasteboard& pasteboard) {
    const QString plain = plainTextFromDocumentText(selection.toRawText());
    if (!m_richText) {
        pasteboard.declareTypes({KRPasteboardTypeString}, this);
        pasteboard.setString(plain, KRPasteboardTypeString);
        return;
    }
    pasteboard.declareTypes({KRPasteboardTypeHTML, KRPasteboardTypeString}, this);
    pasteboard.setString(selection.toHtml(), KRPasteboardTypeHTML);
    pasteboard.setString(plain, KRPasteboardTypeString);
}

void KRTextView::pasteFromPasteboard(int start, int end) {
    const std::shared_ptr<KRPasteboard> pasteboard = KRPasteboard::generalPasteboard();
    const std::optional<QString> plain = pasteboard->stringForType(KRPasteboardTypeString);
    if (m_richText) {
        if (const std::optional<QString> html = pasteboard->stringForType(KRPasteboardTypeHTML)) {
            const QTextDocumentFragment fragment = QTextDocumentFragment::fromHtml(*html);
            const QString styledText = fragment.toPlainText();
            // Markup that is empty, or says something else than the plain copy beside it, is not trusted.
            const bool agrees = !plain || styledText.simplified() == plain->simplified();
            if (!styledText.isEmpty() && agrees) {
                replaceRangeWithFragment(start, end, fragment);
                return;
            }
        }
    }
    if (plain) {
        replaceRange(start, end, *plain, false);
    }
}

void KRTextView::moveVertically(bool down, bool modifySelection) {
    const KRRange selection = selectedRange();
    int from = m_head;
    if (!modifySelection && selection.length > 0) {
        from = static_cast<int>(down ? KRMaxRange(selection) : selection.location);
    }
    const LineInfo line = lineForPosition(from, from == m_head ? m_affinity : SelectionAffinityDownstream);
    const double goalX = m_goalX ? *m_goalX : caretX(from, line);
    const std::optional<LineInfo> target = down ? lineBelow(line) : lineAbove(line);
    if (!target) {
        moveHead(down ? documentLength() : 0, modifySelection);
    } else {
        const auto [position, affinity] = positionOnLine(*target, goalX);
        moveHead(position, modifySelection, affinity);
    }
    // The goal survives consecutive vertical moves; setSelection does not touch it.
    m_goalX = goalX;
}

// Delegate
// ---------------------------------------------------------------------------------------------------

void KRTextView::setDelegate(KRTextViewDelegate* delegate, const KRObject* lifetimeOwner) {
    m_delegate.reset(delegate, lifetimeOwner);
}

KRTextViewDelegate* KRTextView::delegate() const {
    return m_delegate.get();
}

QUndoStack* KRTextView::undoManager() const {
    KRTextViewDelegate* delegate = this->delegate();
    return delegate ? delegate->undoManagerForTextView(const_cast<KRTextView*>(this)) : nullptr;
}

// Layout queries
// ---------------------------------------------------------------------------------------------

void KRTextView::ensureLayout() const {
    m_document->documentLayout()->documentSize();
}

KRTextView::LineInfo KRTextView::makeLineInfo(const QTextBlock& block, int lineIndex) const {
    LineInfo info;
    QTextLayout* layout = block.layout();
    info.layout = layout;
    info.blockPosition = block.position();
    info.lineCount = layout->lineCount();
    info.x = layout->position().x();
    if (info.lineCount == 0) {
        info.top = layout->position().y();
        info.height =
            m_fixedLineHeight > 0.0 ? m_fixedLineHeight : QFontMetricsF(m_document->defaultFont()).height();
        info.start = block.position();
        return info;
    }
    info.lineIndex = std::clamp(lineIndex, 0, info.lineCount - 1);
    const QTextLine line = layout->lineAt(info.lineIndex);
    info.start = block.position() + line.textStart();
    info.length = line.textLength();
    if (m_fixedLineHeight > 0.0) {
        // Fixed heights stack exactly; the line's own y is shifted to place its baseline.
        info.top = layout->position().y() + info.lineIndex * m_fixedLineHeight;
        info.height = m_fixedLineHeight;
    } else {
        info.top = layout->position().y() + line.y();
        info.height = line.height();
    }
    return info;
}

KRTextView::LineInfo KRTextView::lineForPosition(int position, int affinity) const {
    ensureLayout();
    position = clampPosition(position);
    QTextBlock block = m_document->findBlock(position);
    if (!block.isValid()) {
        block = m_document->lastBlock();
    }
    QTextLayout* layout = block.layout();
    const int relative = position - block.position();
    int index = 0;
    for (int i = 0; i < layout->lineCount(); ++i) {
        if (layout->lineAt(i).textStart() <= relative) {
            index = i;
        }
    }
    if (affinity == SelectionAffinityUpstream && index > 0 && layout->lineAt(index).textStart() == relative) {
        --index;
    }
    return makeLineInfo(block, index);
}

std::optional<KRTextView::LineInfo> KRTextView::lineAbove(const LineInfo& line) const {
    const QTextBlock block = m_document->findBlock(line.blockPosition);
    if (line.lineIndex > 0) {
        return makeLineInfo(block, line.lineIndex - 1);
    }
    const QTextBlock previous = block.previous();
    if (!previous.isValid()) {
        return std::nullopt;
    }
    return makeLineInfo(previous, previous.layout()->lineCount() - 1);
}

std::optional<KRTextView::LineInfo> KRTextView::lineBelow(const LineInfo& line) const {
    const QTextBlock block = m_document->findBlock(line.blockPosition);
    if (line.lineIndex < line.lineCount - 1) {
        return makeLineInfo(block, line.lineIndex + 1);
    }
    const QTextBlock next = block.next();
    if (!next.isValid()) {
        return std::nullopt;
    }
    return makeLineInfo(next, 0);
}

double KRTextView::caretX(int position, const LineInfo& line) const {
    if (!line.layout || line.lineCount == 0) {
        return line.x;
    }
    return line.x + line.layout->lineAt(line.lineIndex).cursorToX(position - line.blockPosition);
}

std::pair<int, int> KRTextView::positionOnLine(const LineInfo& line, double x) const {
    if (!line.layout || line.lineCount == 0) {
        return {line.start, SelectionAffinityDownstream};
    }
    const QTextLine textLine = line.layout->lineAt(line.lineIndex);
    const int position =
        line.blockPosition + textLine.xToCursor(x - line.x, QTextLine::CursorBetweenCharacters);
    const int lineEnd = line.start + line.length;
    if (line.lineIndex < line.lineCount - 1 && position >= lineEnd) {
        return {lineEnd, SelectionAffinityUpstream};
    }
    return {clampPosition(position), SelectionAffinityDownstream};
}

std::pair<int, int> KRTextView::positionForPoint(KRPoint point) const {
    ensureLayout();
    QTextBlock block = m_document->firstBlock();
    LineInfo found = makeLineInfo(block, 0);
    if (point.y >= found.top) {
        bool done = false;
        for (; block.isValid() && !done; block = block.next()) {
            const int count = std::max(1, block.layout()->lineCount());
            for (int i = 0; i < count; ++i) {
                found = makeLineInfo(block, i);
                if (point.y < found.top + found.height) {
                    done = true;
                    break;
                }
            }
        }
    }
    return positionOnLine(found, point.x);
}

KRRange KRTextView::wordRangeAt(int position) const {
    QTextCursor cursor(m_document.get());
    cursor.setPosition(clampPosition(position));
    cursor.select(QTextCursor::WordUnderCursor);
    if (!cursor.hasSelection()) {
        return KRRange{static_cast<KRUInteger>(cursor.position()), 0};
    }
    return KRRange{static_cast<KRUInteger>(cursor.selectionStart()),
                   static_cast<KRUInteger>(cursor.selectionEnd() - cursor.selectionStart())};
}

KRRange KRTextView::paragraphRangeAt(int position) const {
    QTextBlock block = m_document->findBlock(clampPosition(position));
    if (!block.isValid()) {
        block = m_document->lastBlock();
    }
    return KRRange{static_cast<KRUInteger>(block.position()),
                   static_cast<KRUInteger>(std::max(0, block.length() - 1))};
}

KRRect KRTextView::insertionPointRect() const {
    const LineInfo line = lineForPosition(m_head, m_affinity);
    return KRRect{KRPoint{caretX(m_head, line), line.top}, KRSize{1.0, line.height}};
}

KRRect KRTextView::firstRectForCharacterRange(KRRange range, KRRange* actualRange) const {
    const int from = clampPosition(static_cast<qint64>(std::min<KRUInteger>(range.location, KRNotFound)));
    const int to =
        clampPosition(from + static_cast<qint64>(std::min<KRUInteger>(range.length, KRNotFound / 2)));
    const LineInfo line = lineForPosition(from, SelectionAffinityDownstream);
    const int lineEnd = std::min(to, line.start + line.length);
    const double x0 = caretX(from, line);
    const double x1 = caretX(std::max(from, lineEnd), line);
    if (actualRange) {
        *actualRange =
            KRRange{static_cast<KRUInteger>(from), static_cast<KRUInteger>(std::max(0, lineEnd - from))};
    }
    const KRRect rect{KRPoint{std::min(x0, x1), line.top}, KRSize{std::abs(x1 - x0), line.height}};
    return convertRectToScreen(rect);
}

KRUInteger KRTextView::characterIndexForInsertionAtPoint(KRPoint point) const {
    return static_cast<KRUInteger>(positionForPoint(point).first);
}

KRRect KRTextView::lineFragmentRectForCharacterAtIndex(KRUInteger index, KRRange* effectiveRange) const {
    const LineInfo line =
        lineForPosition(clampPosition(static_cast<qint64>(std::min<KRUInteger>(index, KRNotFound))),
                        SelectionAffinityDownstream);
    if (effectiveRange) {
        *effectiveRange = KRRange{static_cast<KRUInteger>(line.start), static_cast<KRUInteger>(line.length)};
    }
    return KRRect{KRPoint{0.0, line.top}, KRSize{bounds().size.width, line.height}};
}

double KRTextView::usedHeight() const {
    ensureLayout();
    return m_document->size().height();
}

KRSize KRTextView::sizeThatFits(KRSize size) const {
    const double currentWidth = m_document->textWidth();
    const double wantedWidth = size.width > 0.0 ? size.width : -1.0;
    if (wantedWidth == currentWidth) {
        return KRSize{size.width > 0.0 ? size.width : m_document->idealWidth(), usedHeight()};
    }
    const std::unique_ptr<QTextDocument> copy(m_document->clone());
    copy->setDocumentMargin(0.0);
    copy->setDefaultTextOption(m_document->defaultTextOption());
    copy->setTextWidth(wantedWidth);
    return KRSize{size.width > 0.0 ? size.width : copy->idealWidth(), copy->size().height()};
}

void KRTextView::setFrameSize(KRSize size) {
    KRView::setFrameSize(size);
    const double width = size.width > 0.0 ? size.width : -1.0;
    if (width != m_document->textWidth()) {
        m_document->setTextWidth(width);
        setNeedsDisplay();
    }
}

// Mouse
// ------------------------------------------------------------------------------------------------------

void KRTextView::mouseDown(const KREvent& event) {
    unmarkText();
    m_coalesceTyping = false;
    m_goalX.reset();
    const auto [position, affinity] = positionForPoint(event.locationInView(this));
    m_clickCount = std::max(1, event.clickCount());
    if (m_clickCount >= 3) {
        m_mouseAnchorRange = paragraphRangeAt(position);
    } else if (m_clickCount == 2) {
        m_mouseAnchorRange = wordRangeAt(position);
    } else if (event.modifierFlags() & KREventModifierFlagShift) {
        m_mouseAnchorRange = KRRange{static_cast<KRUInteger>(m_anchor), 0};
        setSelection(m_anchor, position, affinity);
        m_stillSelecting = true;
        return;
    } else {
        m_mouseAnchorRange = KRRange{static_cast<KRUInteger>(position), 0};
    }
    setSelection(static_cast<int>(m_mouseAnchorRange.location),
                 static_cast<int>(KRMaxRange(m_mouseAnchorRange)), affinity);
    m_stillSelecting = true;
}

void KRTextView::mouseDragged(const KREvent& event) {
    const auto [position, affinity] = positionForPoint(event.locationInView(this));
    KRRange unit{static_cast<KRUInteger>(position), 0};
    if (m_clickCount >= 3) {
        unit = paragraphRangeAt(position);
    } else if (m_clickCount == 2) {
        unit = wordRangeAt(position);
    }
    // Extend by whole units away from the range the press started on.
    if (unit.location < m_mouseAnchorRange.location) {
        setSelection(static_cast<int>(KRMaxRange(m_mouseAnchorRange)), static_cast<int>(unit.location),
                     affinity);
    } else {
        setSelection(static_cast<int>(m_mouseAnchorRange.location),
                     static_cast<int>(std::max(KRMaxRange(unit), KRMaxRange(m_mouseAnchorRange))), affinity);
    }
    m_stillSelecting = true;
}

void KRTextView::mouseUp(const KREvent&) {
    m_stillSelecting = false;
}

// Drawing
// ----------------------------------------------------------------------------------------------------

bool KRTextView::isCaretVisibleNow() const {
    const double phase = std::floor((KRClock::now() - m_lastCaretChange) / kBlinkPeriod);
    return std::fmod(phase, 2.0) == 0.0;
}

void KRTextView::draw(QPainter& painter, KRRect dirtyRect) {
    ensureLayout();
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette.setColor(QPalette::Text, m_textColor);
    context.clip = KRToQRectF(dirtyRect);
    const KRRange selection = selectedRange();
    if (selection.length > 0) {
        QAbstractTextDocumentLayout::Selection drawn;
        drawn.cursor = QTextCursor(m_document.get());
        drawn.cursor.setPosition(static_cast<int>(selection.location));
        drawn.cursor.setPosition(static_cast<int>(KRMaxRange(selection)), QTextCursor::KeepAnchor);
        drawn.format.setBackground(m_selectionColor);
        drawn.format.setForeground(m_textColor);
        context.selections.append(drawn);
    }
    painter.save();
    m_document->documentLayout()->draw(&painter, context);
    painter.restore();
    if (isFirstResponder()) {
        if (selection.length == 0 && isCaretVisibleNow()) {
            painter.fillRect(KRToQRectF(insertionPointRect()), m_textColor);
        }
        scheduleBlink();
    }
}

void KRTextView::noteCaretChanged() {
    // The caret shows solid right after it moves or the text changes.
    m_lastCaretChange = KRClock::now();
}

void KRTextView::scheduleBlink() {
    if (m_blinkScheduled) {
        return;
    }
    m_blinkScheduled = true;
    const double elapsed = std::max(0.0, KRClock::now() - m_lastCaretChange);
    const double delay = kBlinkPeriod - std::fmod(elapsed, kBlinkPeriod);
    const KRWeak<KRTextView> weak(this);
    KRRunLoop::main().performAfterDelay(delay, [weak] {
        if (KRTextView* view = weak.get()) {
            view->blinkTick();
        }
    });
}

void KRTextView::blinkTick() {
    m_blinkScheduled = false;
    if (!isFirstResponder()) {
        return;
    }
    setNeedsDisplayInRect(insertionPointRect());
    scheduleBlink();
}

// Responder
// --------------------------------------------------------------------------------------------------

bool KRTextView::isFirstResponder() const {
    const KRWindow* window = this->window();
    return window && window->firstResponder() == this;
}

bool KRTextView::becomeFirstResponder() {
    noteCaretChanged();
    setNeedsDisplay();
    // The window records us after this returns; the first tick checks again.
    scheduleBlink();
    m_beganEditing = false;
    return true;
}

bool KRTextView::resignFirstResponder() {
    unmarkText();
    setNeedsDisplay();
    m_beganEditing = false;
    if (KRTextViewDelegate* delegate = this->delegate()) {
        delegate->textDidEndEditing(this, KRSelector());
    }
    return true;
}

// Input method
// -----------------------------------------------------------------------------------------------

void KRTextView::removeMarkedTextSilently() {
    if (!m_markedRange) {
        return;
    }
    const int location = static_cast<int>(m_markedRange->location);
    rawReplace(location, location + static_cast<int>(m_markedRange->length), QString(), QTextCharFormat());
    m_markedRange.reset();
}

void KRTextView::setMarkedText(const QString& text, int cursorPosition) {
    if (!m_editable) {
        return;
    }
    int location = 0;
    if (m_markedRange) {
        location = static_cast<int>(m_markedRange->location);
        removeMarkedTextSilently();
    } else {
        const KRRange selection = selectedRange();
        location = static_cast<int>(selection.location);
        // The composition replaces the selection; that deletion is an ordinary undoable edit.
        deleteRange(location, static_cast<int>(KRMaxRange(selection)));
    }
    if (text.isEmpty()) {
        setSelection(location, location);
        return;
    }
    // The composition lives in the document, underlined, outside undo until it is committed.
    QTextCharFormat format = m_typingAttributes;
    format.setFontUnderline(true);
    rawReplace(location, location, text, format);
    m_markedRange = KRRange{static_cast<KRUInteger>(location), static_cast<KRUInteger>(text.length())};
    const int caret = location + std::clamp(cursorPosition, 0, static_cast<int>(text.length()));
    setSelection(caret, caret);
}

void KRTextView::unmarkText() {
    if (!m_markedRange) {
        return;
    }
    const int location = static_cast<int>(m_markedRange->location);
    const QString text = string().mid(location, static_cast<qsizetype>(m_markedRange->length));
    removeMarkedTextSilently();
    setSelection(location, location);
    replaceRange(location, location, text, true);
}

KRRange KRTextView::markedRange() const {
    return m_markedRange ? *m_markedRange : KRRange{KRNotFound, 0};
}

KRRect KRTextView::firstRectForCaret() const {
    return convertRectToView(insertionPointRect(), nullptr);
}
