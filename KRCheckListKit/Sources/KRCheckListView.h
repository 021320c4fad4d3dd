#pragma once

#include "KRCheckListFieldEditor.h"
#include "KRCheckListItemView.h"
#include "KRCheckListItemViewReports.h"
#include "KRCheckListViewDataSource.h"
#include "KRCheckListViewDelegate.h"

#include "Foundation/KRClientMethods.h"
#include "Foundation/KRIndexSet.h"
#include "Foundation/KRRange.h"
#include "Foundation/KRTypes.h"
#include "Views/KREvent.h"
#include "Views/KRView.h"

#include <QByteArray>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QStringList>
#include <QVariantMap>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

class KRCheckListDraggingSession;
class KRCheckListDropPlaceholderContentView;
class KRCheckListDropPlaceholderView;

// The private pasteboard type of copied items (and the list's one dragged type).
extern const QString KRCheckListItemsAsJSONPasteboardType;

// The contexts of observations the list recognises; their addresses, not their texts, identify them.
extern const char* const KRCheckListObserveKeyPathsTriggeringSetNeedsUpdateContext;
extern const char* const KRCheckListObserveKeyPathsTriggeringSetNeedsLayoutContext;

// Where every view of the list goes for one size, and the size the list would like.
struct KRCheckListViewLayout {
    KRSize size;
    std::vector<KRRect> itemViewFrames;
    KRRect dropPlaceholderContentViewFrame;
    KRUInteger dropPlaceholderIndex = KRNotFound;
    KRRect dropPlaceholderFrame;
    KRSize sizeThatFits;

    // The entry names, in the order above.
    static const QStringList& keys();
    // The layout as a record keyed by those names.
    QVariantMap dictionary() const;
};

using KRCheckListItemViews = std::vector<std::shared_ptr<KRCheckListItemView>>;
using KRCheckListItemViewsByIdentifier = QHash<QJsonValue, std::shared_ptr<KRCheckListItemView>>;

// A vertical list of items, one KRCheckListItemView per item. The list owns no item data: a data source
// answers the items and carries out changes, a delegate is told before and after everything the list does.
// After changing its items the data source reports the change between beginUpdates and endUpdates.
//
// Every message to a client goes through a method of the list that bears the client method's own name;
// optional methods a client does not override are skipped, required ones of a missing client answer zero.
class KRCheckListView : public KRView,
                        public KRCheckListItemViewDelegate,
                        public KRCheckListFieldEditorDelegate {
public:
    explicit KRCheckListView(KRRect frame = KRRectZero);
    ~KRCheckListView() override;

    // Clients (held weakly) ------------------------------------------------------------------------------
    std::shared_ptr<KRCheckListViewDataSource> dataSource() const { return m_dataSource.lock(); }
    template <class T> void setDataSource(const std::shared_ptr<T>& dataSource) {
        setDataSource(std::static_pointer_cast<KRCheckListViewDataSource>(dataSource),
                      KRCheckListViewDataSourceMethodsOf<T>());
    }
    void setDataSource(std::nullptr_t) { setDataSource(nullptr, KRClientMethods()); }
    void setDataSource(const std::shared_ptr<KRCheckListViewDataSource>& dataSource,
                       KRClientMethods optionalMethods);
    bool dataSourceRespondsTo(KRCheckListViewDataSourceMethod method) const;

    std::shared_ptr<KRCheckListViewDelegate> delegate() const { return m_delegate.lock(); }
    template <class T> void setDelegate(const std::shared_ptr<T>& delegate) {
        setDelegate(std::static_pointer_cast<KRCheckListViewDelegate>(delegate),
                    KRCheckListViewDelegateMethodsOf<T>());
    }
    void setDelegate(std::nullptr_t) { setDelegate(nullptr, KRClientMethods()); }
    void setDelegate(const std::shared_ptr<KRCheckListViewDelegate>& delegate, KRClientMethods methods);
    bool delegateRespondsTo(KRCheckListViewDelegateMethod method) const;

    // State ----------------------------------------------------------------------------------------------
    // Kept for the host; the list itself never reads it.
    const QString& placeholder() const { return m_placeholder; }
    void setPlaceholder(const QString& placeholder) { m_placeholder = placeholder; }
    const KRCheckListItemViews& checkListItemViews() const { return m_checkListItemViews; }
    // Built from the rows when first asked for after a reload.
    const KRCheckListItemViewsByIdentifier& checkListItemViewsByIdentifier() const;
    const std::shared_ptr<KRCheckListItemView>& dummyCheckListItemView() const {
        return m_dummyCheckListItemView;
    }
    const std::shared_ptr<KRCheckListFieldEditor>& fieldEditor() const { return m_fieldEditor; }
    const std::shared_ptr<KRCheckListDropPlaceholderContentView>& dropPlaceholderContentView() const {
        return m_dropPlaceholderContentView;
    }
    KRUInteger indexForEditedItem() const { return m_indexForEditedItem; }
    // The selection as last set. An update that removes items leaves it to the client to set the selection
    // again; until it does, the selection may hold numbers at or past numberOfItems(). Those numbers are
    // ignored by everything that acts on the selection: the commands, their predicates and menu validation,
    // the keyboard's selection rules, range selection, copy and paste all see only the selected items that
    // still exist (see indexesForEditedOrSelectedItems), so a stale number is as if it were not selected.
    const KRIndexSet& indexesForSelectedItems() const { return m_indexesForSelectedItems; }
    // The operand of every item command: the selected items that exist, plus the edited item.
    KRIndexSet indexesForEditedOrSelectedItems() const;
    KRInteger pivotIndex() const { return m_pivotIndex; }
    bool hasFocus() const { return m_hasFocus; }
    bool isUpdating() const { return m_updating; }
    bool isReloading() const { return m_reloading; }
    bool isBecomingFirstResponder() const { return m_becomingFirstResponder; }
    bool isBeginningEditing() const { return m_beginningEditing; }
    bool isEndingEditing() const { return m_endingEditing; }
    bool isGainingFocus() const { return m_gainingFocus; }
    bool isLosingFocus() const { return m_losingFocus; }
    bool isSelecting() const { return m_selecting; }
    bool didHandleLastKeyDownEvent() const { return m_didHandleLastKeyDownEvent; }
    bool isDragging() const { return m_dragging; }
    // The running handle drag, null between drags.
    const std::shared_ptr<KRCheckListDraggingSession>& draggingSession() const { return m_draggingSession; }
    // Kept for clients; the list neither sets nor reads it.
    double heightOfFirstDraggedItem() const { return m_heightOfFirstDraggedItem; }
    void setHeightOfFirstDraggedItem(double height) { m_heightOfFirstDraggedItem = height; }
    bool isUpdateScheduled() const { return m_updateScheduled; }
    KRSize lastSizeThatFits() const { return m_lastSizeThatFits; }
    KRRect dropPlaceholderFrame() const { return m_dropPlaceholderFrame; }
    KRUInteger dropPlaceholderIndex() const { return m_dropPlaceholderIndex; }
    // The placeholder shown in the gap of a running drag, null when none is shown.
    const std::shared_ptr<KRCheckListDropPlaceholderView>& dropPlaceholderView() const {
        return m_dropPlaceholderView;
    }
    KRRect insertionPointRectOnScreen() const { return m_insertionPointRectOnScreen; }
    KRRect insertionPointRect() const { return m_insertionPointRect; }

    // Registry -------------------------------------------------------------------------------------------
    KRUInteger numberOfItems() const { return m_checkListItemViews.size(); }
    KRCheckListItemView* checkListViewItemViewForItemAtIndex(KRUInteger index) const;
    KRUInteger checkListViewIndexForItemView(const KRCheckListItemView* itemView) const;
    KRUInteger checkListViewIndexForTitleTextField(const KRView* titleTextField) const;
    KRCheckListItemTitleTextField* checkListViewTitleTextFieldForIndex(KRUInteger index) const;
    // What the data source last reported, read from the rows.
    QJsonValue identifierForItemAtIndex(KRUInteger index) const;
    KRUInteger statusForItemAtIndex(KRUInteger index) const;
    QString titleForItemAtIndex(KRUInteger index) const;

    // Reload and update transactions ---------------------------------------------------------------------
    void reloadItems();
    void beginUpdates();
    void endUpdates();
    void updateByReloadingItemsAtIndexes(const KRIndexSet& indexes);
    void updateByReloadingItemAtIndex(KRUInteger index);
    void updateByInsertingItemsAtIndexes(const KRIndexSet& indexes);
    void updateByInsertingItemAtIndex(KRUInteger index);
    void updateByRemovingItemsAtIndexes(const KRIndexSet& indexes);
    void updateByRemovingItemAtIndex(KRUInteger index);
    // Both counted in the order before the move: the block lands before the row that stood at toIndex.
    void updateByMovingItemsAtIndexesToIndex(const KRIndexSet& indexes, KRUInteger toIndex);
    void updateByMovingItemAtIndexToIndex(KRUInteger index, KRUInteger toIndex);
    void updateByMovingItemAtIndexToFinalIndex(KRUInteger index, KRUInteger finalIndex);
    // Refreshes the rows' placeholders; only the rows whose placeholder can change are visited.
    void checkListViewUpdatePlaceholderForEachItemView();

    // Item operations: announced to the delegate and asked of the data source --------------------------
    bool canInsertItemsAtIndexes(const KRIndexSet& indexes) const;
    bool canInsertItemAtIndex(KRUInteger index) const;
    void insertItemsAtIndexes(const KRIndexSet& indexes);
    void insertItemAtIndex(KRUInteger index);
    bool canRemoveItemsAtIndexes(const KRIndexSet& indexes) const;
    bool canRemoveItemAtIndex(KRUInteger index) const;
    void removeItemsAtIndexes(const KRIndexSet& indexes);
    void removeItemAtIndex(KRUInteger index);
    bool canMoveItemsAtIndexesToIndex(const KRIndexSet& indexes, KRUInteger toIndex) const;
    bool canMoveItemAtIndexToIndex(KRUInteger index, KRUInteger toIndex) const;
    void moveItemsAtIndexesToIndex(const KRIndexSet& indexes, KRUInteger toIndex);
    void moveItemAtIndexToIndex(KRUInteger index, KRUInteger toIndex);
    void setStatusForItemsAtIndexes(KRUInteger status, const KRIndexSet& indexes);
    void setStatusForItemAtIndex(KRUInteger status, KRUInteger index);
    void setTitleForItemAtIndex(const QString& title, KRUInteger index);

    // Selection ------------------------------------------------------------------------------------------
    void selectItemsAtIndexesByExtendingSelection(const KRIndexSet& indexes, bool extendSelection);
    void selectItemAtIndexByExtendingSelection(KRUInteger index, bool extendSelection);
    void deselectItemsAtIndexes(const KRIndexSet& indexes);
    void deselectItemAtIndex(KRUInteger index);
    void selectAllItems();
    void deselectAllItems();

    // Clicks ---------------------------------------------------------------------------------------------
    // A click on a row: Command toggles it, Shift selects the range from the pivot, a plain click edits
    // its title and puts the caret where the click was. Clicks that hit no row go on to the next responder.
    void mouseDown(const KREvent& event) override;
    // While a plain click's press lasts, the list follows it to hand drags and the release to the editor.
    void mouseDragged(const KREvent& event) override;
    void mouseUp(const KREvent& event) override;
    bool checkListViewHandleMouseClick(const KREvent& event);
    bool checkListViewHandleMouseClickForItemAtIndex(const KREvent& event, KRUInteger index);
    bool checkListViewHandleMouseClickWithShiftKeyPressedForItemAtIndex(const KREvent& event,
                                                                        KRUInteger index);
    bool checkListViewHandleMouseClickWithCommandKeyPressedForItemAtIndex(const KREvent& event,
                                                                          KRUInteger index);
    // The pointer's current position on the screen, in view's coordinates.
    KRPoint checkListViewMouseLocationInView(const KRView* view) const;
    // While Command is held the list itself takes every click, so a Command-click on a title toggles its row.
    KRView* hitTest(KRPoint point) override;
    void mouseMoved(const KREvent& event) override;
    void flagsChanged(const KREvent& event) override;

    // Editing --------------------------------------------------------------------------------------------
    // Edits the last item with the caret at its end, if nothing is edited and there are items.
    void beginEditing();
    void beginEditingItemAtIndexSelectRange(KRUInteger index, KRRange range);
    // Tracks insertionPoint (screen coordinates) and puts the caret of the item nearest to it.
    void beginEditingItemAtIndexInsertionPoint(KRUInteger index, KRPoint insertionPoint);
    void beginEditingItemAtIndexSelectRangeUseTrackedInsertionPointInFirstLineInLastLine(
        KRUInteger index, KRRange range, bool useTrackedInsertionPoint, bool inFirstLine, bool inLastLine);
    void endEditing();
    // Edits the item under point (list coordinates, clamped into the rows) with the caret nearest to it.
    // Throws KRGenericException when the list is empty.
    void beginEditingAtPoint(KRPoint point);
    // Edits itemView's item with the caret at its end, or the last item when itemView is not a row here.
    void checkListViewBeginEditingCheckListItemView(KRCheckListItemView* itemView);
    // Whether the caret is on the first line of the first item, or on the last line of the last item.
    bool isInsertionPointInFirstLine() const;
    bool isInsertionPointInLastLine() const;
    void checkListViewDetermineWetherInsertionPointIsInFirstLineInLastLine(bool* inFirstLine,
                                                                           bool* inLastLine) const;
    // The character nearest point in textView, with points in the top and bottom half line moved onto the
    // first and last lines.
    KRUInteger checkListViewCharacterIndexForInsertionAtPointInTextView(KRPoint point,
                                                                        const KRTextView* textView) const;

    // Focus ----------------------------------------------------------------------------------------------
    // Clicks never make the list first responder by themselves (it does not accept it), but it can be made
    // first responder. Becoming and resigning both answer true. Becoming gains the focus (and edits the last
    // item when nothing is selected); resigning loses it and ends editing, except while the list is gaining
    // focus or beginning an edit.
    bool acceptsFirstResponder() const override;
    bool becomeFirstResponder() override;
    bool resignFirstResponder() override;
    // The did-messages of both follow on the next turn of the run loop.
    void checkListViewGainFocus();
    void checkListViewLoseFocus();

    // Item commands: they act on the edited or selected items and then edit where the user expects ------
    KRUInteger targetIndexForInsertingItemAboveEditedOrSelectedItems() const;
    KRUInteger targetIndexForInsertingItemBelowEditedOrSelectedItems() const;
    KRUInteger targetIndexForMovingEditedOrSelectedItemsUp() const;
    KRUInteger targetIndexForMovingEditedOrSelectedItemsDown() const;
    bool canInsertItemTop() const;
    void insertItemTop();
    bool canInsertItemBottom() const;
    void insertItemBottom();
    bool canInsertItemAboveEditedOrSelectedItems() const;
    void insertItemAboveEditedOrSelectedItems();
    bool canInsertItemBelowEditedOrSelectedItems() const;
    void insertItemBelowEditedOrSelectedItems();
    bool canMoveEditedOrSelectedItemsTop() const;
    void moveEditedOrSelectedItemsTop();
    bool canMoveEditedOrSelectedItemsBottom() const;
    void moveEditedOrSelectedItemsBottom();
    bool canMoveEditedOrSelectedItemsUp() const;
    void moveEditedOrSelectedItemsUp();
    bool canMoveEditedOrSelectedItemsDown() const;
    void moveEditedOrSelectedItemsDown();
    bool canDeleteEditedOrSelectedItemsBackward() const;
    void deleteEditedOrSelectedItemsBackward();
    bool canDeleteEditedOrSelectedItemsForward() const;
    void deleteEditedOrSelectedItemsForward();
    bool canToggleEditedOrSelectedItemsCompleted() const;
    void toggleEditedOrSelectedItemsCompleted();
    bool canToggleEditedOrSelectedItemsCanceled() const;
    void toggleEditedOrSelectedItemsCanceled();
    // Whether every item at indexes has status (true for no indexes).
    bool checkListViewAllItemsAtIndexesHaveStatus(const KRIndexSet& indexes, KRUInteger status);

    // Menu actions ---------------------------------------------------------------------------------------
    // Cut, copy and delete act on selected items only; paste needs items or text on the general pasteboard.
    bool canCut() const;
    void cut();
    bool canCopy() const;
    void copy();
    bool canPaste() const;
    void paste();
    bool canDelete() const;
    void delete_();
    bool canSelectAll() const;
    void selectAll();
    // Whether the menu item sending action ("cut:", "copy:", "paste:", "delete:", "selectAll:") is enabled;
    // false for any other action.
    bool validateMenuItem(const KRSelector& action) const;
    bool tryToPerform(const KRSelector& action, KRObject* sender) override;
    bool respondsToSelector(const KRSelector& selector) const override;

    // Clipboard: copied items travel as JSON records (KRCheckListItemsAsJSONPasteboardType) and as text -----
    // The items at indexes, read from their rows in ascending order (indexes past the rows are passed
    // over): a compact UTF-8 JSON array of records {identifier, status, title, frame, index}, and one line
    // "- title\n" (open) or "+ title\n" (completed or canceled) per item.
    QByteArray checkListViewJSONRepresentationOfItemsAtIndexes(const KRIndexSet& indexes) const;
    QString checkListViewStringRepresentationOfItemsAtIndexes(const KRIndexSet& indexes) const;
    // One record {status, title} per line of text; a leading "-" or "+" gives status 0 or 1.
    static QJsonArray checkListViewItemsAsJSONByParsingItemsAsString(const QString& string);
    // The records of copied items as paste uses them ({title, status}, a missing title empty and a missing
    // status 0), or nothing when data is not a JSON array of such records: data from another application
    // is untrusted, and the whole of it is decided before anything is pasted.
    static std::optional<QJsonArray> checkListViewItemsAsJSONByReadingData(const QByteArray& data);
    // Gives itemView the title, identifier, status and frame of record, in that order, in one update.
    void checkListViewInitCheckListItemViewWithJSON(KRCheckListItemView* itemView,
                                                    const QJsonObject& record) const;

    // Keyboard -------------------------------------------------------------------------------------------
    // Keys reach the list while it is first responder (items selected, nothing edited); the commands of an
    // edited title arrive through its row. Both go through checkListViewHandleCommand, which answers true
    // when the list did the work and the text system must not.
    void keyDown(const KREvent& event) override;
    void doCommandBySelector(const KRSelector& selector) override;
    bool checkListViewHandleCommand(const KRSelector& selector);
    // Every command the list acts on, with what it does in words a user reads; the list recognises only
    // the commands named here. Keys come from the key bindings, except for chords the list reads itself.
    struct KeyCommand {
        const char* selector;
        const char* summary;
        const char* chordMac = nullptr; // keys the list reads itself instead of a bound command
        const char* chordOther = nullptr;
    };
    static const std::vector<KeyCommand>& keyCommands();
    // Return with Option, Command, Shift or Control ends editing, whatever command it is bound to.
    static bool isCommitKey(unsigned short keyCode, KREventModifierFlags modifierFlags);

    // Layout and geometry --------------------------------------------------------------------------------
    KRCheckListViewLayout checkListViewLayoutForSize(KRSize size) const;
    void layoutSubviews() override;
    KRSize sizeThatFits(KRSize size) const override;
    KRIndexSet indexesOfItemsInRect(KRRect rect);
    KRUInteger indexOfItemAtPoint(KRPoint point);
    KRRect rectOfItemsInRange(KRRange range) const;
    KRRect rectOfItemAtIndex(KRUInteger index) const;
    static KRPoint checkListViewMovePoint(KRPoint point, KRRect insideRect);
    void checkListViewUpdateDividers();
    void updateTrackingAreas() override;

    // Dragging -------------------------------------------------------------------------------------------
    // Pressing a row's handle lifts it, with every other selected row when it is selected itself; the rows
    // follow the pointer while the others make room, and the release moves their items to the gap. The
    // three answer false: the handle goes on with its own press.
    bool checkListItemViewMouseDownHandle(KRCheckListItemView* itemView, const KREvent& event) override;
    bool checkListItemViewMouseDraggedHandle(KRCheckListItemView* itemView, const KREvent& event) override;
    bool checkListItemViewMouseUpHandle(KRCheckListItemView* itemView, const KREvent& event) override;
    // The layout of a running drag: the others close ranks, a gap of the pressed row's height opens at the
    // drop index, the dragged rows stand under the pointer with elastic limits. Without a drag session it
    // fails an internal-inconsistency assertion.
    KRCheckListViewLayout checkListViewDraggingLayoutForSize(KRSize size) const;
    // An odd function that follows the deflection near 0 and approaches, never reaches, the maximum.
    static double checkListViewApplyElasticDampingToDeflectionMaxDampedDeflection(double deflection,
                                                                                  double maxDampedDeflection);
    // Brings the shown drop placeholder in line with dropPlaceholderFrame: a new gap cross-fades, the
    // placeholder never slides.
    void checkListViewShowOrHideDropPlaceholderIfNeededAnimated(bool animated);

    // Forwarders to the data source ----------------------------------------------------------------------
    KRUInteger checkListViewNumberOfItems(KRCheckListView* checkListView);
    QJsonValue checkListViewIdentifierForItemAtIndex(KRCheckListView* checkListView, KRUInteger index);
    KRUInteger checkListViewStatusForItemAtIndex(KRCheckListView* checkListView, KRUInteger index);
    QString checkListViewTitleForItemAtIndex(KRCheckListView* checkListView, KRUInteger index);
    KRUInteger checkListViewValidateChangedStatusForItemAtIndex(KRCheckListView* checkListView,
                                                                KRUInteger status, KRUInteger index);
    QString checkListViewValidateChangedTitleForItemAtIndex(KRCheckListView* checkListView,
                                                            const QString& title, KRUInteger index);
    void checkListViewInsertItemsAtIndexes(KRCheckListView* checkListView, const KRIndexSet& indexes);
    void checkListViewRemoveItemsAtIndexes(KRCheckListView* checkListView, const KRIndexSet& indexes);
    void checkListViewMoveItemsAtIndexesToIndex(KRCheckListView* checkListView, const KRIndexSet& indexes,
                                                KRUInteger toIndex);
    void checkListViewBeginGrouping(KRCheckListView* checkListView);
    void checkListViewEndGrouping(KRCheckListView* checkListView);
    void checkListViewSetStatusForItemAtIndex(KRCheckListView* checkListView, KRUInteger status,
                                              KRUInteger index);
    void checkListViewSetTitleForItemAtIndex(KRCheckListView* checkListView, const QString& title,
                                             KRUInteger index);

    // Forwarders to the delegate -------------------------------------------------------------------------
    void checkListViewWillReloadItems(KRCheckListView* checkListView);
    void checkListViewDidReloadItems(KRCheckListView* checkListView);
    void checkListViewWillBeginUpdates(KRCheckListView* checkListView);
    void checkListViewDidEndUpdates(KRCheckListView* checkListView);
    void checkListViewWillUpdateByReloadingItemsAtIndexes(KRCheckListView* checkListView,
                                                          const KRIndexSet& indexes);
    void checkListViewDidUpdateByReloadingItemsAtIndexes(KRCheckListView* checkListView,
                                                         const KRIndexSet& indexes);
    void checkListViewWillUpdateByInsertingItemsAtIndexes(KRCheckListView* checkListView,
                                                          const KRIndexSet& indexes);
    void checkListViewDidUpdateByInsertingItemsAtIndexes(KRCheckListView* checkListView,
                                                         const KRIndexSet& indexes);
    void checkListViewWillUpdateByRemovingItemsAtIndexes(KRCheckListView* checkListView,
                                                         const KRIndexSet& indexes);
    void checkListViewDidUpdateByRemovingItemsAtIndexes(KRCheckListView* checkListView,
                                                        const KRIndexSet& indexes);
    void checkListViewWillUpdateByMovingItemsAtIndexesToIndex(KRCheckListView* checkListView,
                                                              const KRIndexSet& indexes, KRUInteger toIndex);
    void checkListViewDidUpdateByMovingItemsAtIndexesToIndex(KRCheckListView* checkListView,
                                                             const KRIndexSet& indexes, KRUInteger toIndex);
    void checkListViewWillUpdateByReloadingItemsAtIndexesAnimated(KRCheckListView* checkListView,
                                                                  const KRIndexSet& indexes, bool animated);
    void checkListViewDidUpdateByReloadingItemsAtIndexesAnimated(KRCheckListView* checkListView,
                                                                 const KRIndexSet& indexes, bool animated);
    void checkListViewWillUpdateByInsertingItemsAtIndexesAnimated(KRCheckListView* checkListView,
                                                                  const KRIndexSet& indexes, bool animated);
    void checkListViewDidUpdateByInsertingItemsAtIndexesAnimated(KRCheckListView* checkListView,
                                                                 const KRIndexSet& indexes, bool animated);
    void checkListViewWillUpdateByRemovingItemsAtIndexesAnimated(KRCheckListView* checkListView,
                                                                 const KRIndexSet& indexes, bool animated);
    void checkListViewDidUpdateByRemovingItemsAtIndexesAnimated(KRCheckListView* checkListView,
                                                                const KRIndexSet& indexes, bool animated);
    void checkListViewWillUpdateByMovingItemsAtIndexesToIndexAnimated(KRCheckListView* checkListView,
                                                                      const KRIndexSet& indexes,
                                                                      KRUInteger toIndex, bool animated);
    void checkListViewDidUpdateByMovingItemsAtIndexesToIndexAnimated(KRCheckListView* checkListView,
                                                                     const KRIndexSet& indexes,
                                                                     KRUInteger toIndex, bool animated);
    void checkListViewWillBeginEditingItemAtIndex(KRCheckListView* checkListView, KRUInteger index);
    void checkListViewDidBeginEditingItemAtIndex(KRCheckListView* checkListView, KRUInteger index);
    void checkListViewWillEndEditingItemAtIndex(KRCheckListView* checkListView, KRUInteger index);
    void checkListViewDidEndEditingItemAtIndex(KRCheckListView* checkListView, KRUInteger index);
    void checkListViewWillSelectItemsAtIndexes(KRCheckListView* checkListView, const KRIndexSet& indexes);
    void checkListViewDidSelectItemsAtIndexes(KRCheckListView* checkListView, const KRIndexSet& indexes);
    void checkListViewDidChangeSizeThatFits(KRCheckListView* checkListView);
    void checkListViewWillSetStatusForItemAtIndex(KRCheckListView* checkListView, KRUInteger index);
    void checkListViewDidSetStatusForItemAtIndex(KRCheckListView* checkListView, KRUInteger index);
    void checkListViewWillSetTitleForItemAtIndex(KRCheckListView* checkListView, KRUInteger index);
    void checkListViewDidSetTitleForItemAtIndex(KRCheckListView* checkListView, KRUInteger index);
    void checkListViewWillInsertItemsAtIndexes(KRCheckListView* checkListView, const KRIndexSet& indexes);
    void checkListViewDidInsertItemsAtIndexes(KRCheckListView* checkListView, const KRIndexSet& indexes);
    void checkListViewWillRemoveItemsAtIndexes(KRCheckListView* checkListView, const KRIndexSet& indexes);
    void checkListViewDidRemoveItemsAtIndexes(KRCheckListView* checkListView, const KRIndexSet& indexes);
    void checkListViewWillMoveItemsAtIndexesToIndex(KRCheckListView* checkListView, const KRIndexSet& indexes,
                                                    KRUInteger toIndex);
    void checkListViewDidMoveItemsAtIndexesToIndex(KRCheckListView* checkListView, const KRIndexSet& indexes,
                                                   KRUInteger toIndex);
    void checkListViewDidCommitEditing(KRCheckListView* checkListView);
    void checkListViewDidCancelEditing(KRCheckListView* checkListView);
    void checkListViewWillGainFocus(KRCheckListView* checkListView);
    void checkListViewDidGainFocus(KRCheckListView* checkListView);
    void checkListViewWillLoseFocus(KRCheckListView* checkListView);
    void checkListViewDidLoseFocus(KRCheckListView* checkListView);
    bool checkListViewTextViewDoCommandBySelector(KRCheckListView* checkListView, KRTextView* textView,
                                                  const KRSelector& selector);
    QUndoStack* checkListViewUndoManagerForTextView(KRCheckListView* checkListView, KRTextView* textView);

    // KRCheckListItemViewDelegate ------------------------------------------------------------------------
    QString checkListItemViewValidateChangedTitle(KRCheckListItemView* itemView,
                                                  const QString& title) override;
    KRUInteger checkListItemViewValidateChangedStatus(KRCheckListItemView* itemView,
                                                      KRUInteger status) override;
    void checkListItemViewDidChangeSizeThatFits(KRCheckListItemView* itemView) override;
    void checkListItemViewDidEndEditingTitle(KRCheckListItemView* itemView) override;
    void checkListItemViewDidChangeHighlighted(KRCheckListItemView* itemView) override;
    // The next passes visit the row (or every row, when many changed).
    void checkListItemViewDidChangeDividerInputs(KRCheckListItemView* itemView) override;
    void checkListItemViewDidStopShowingEmptyPlaceholder(KRCheckListItemView* itemView) override;
    void checkListItemViewDidInvalidateSizeThatFits(KRCheckListItemView* itemView) override;
    // A frame the list did not give itself is read from the row again by the next layout pass.
    void checkListItemViewDidChangeFrame(KRCheckListItemView* itemView) override;
    // The registry keeps the identifiers the rows had when they came: it is built before one changes.
    void checkListItemViewWillChangeItemIdentifier(KRCheckListItemView* itemView) override;
    // The edited title's commands; after an unhandled moveUp: the caret keeps its tracked x on the next turn.
    bool checkListItemViewTextViewDoCommandBySelector(KRCheckListItemView* itemView, KRTextView* textView,
                                                      const KRSelector& selector) override;
    // The list's shared field editor edits every title.
    std::shared_ptr<KRTextView> checkListItemViewFieldEditorForView(KRCheckListItemView* itemView,
                                                                    KRView* view) override;

    // KRCheckListFieldEditorDelegate ---------------------------------------------------------------------
    bool checkListFieldEditorMouseDown(KRCheckListFieldEditor* fieldEditor, const KREvent& event) override;

    // KRObject / KRView ----------------------------------------------------------------------------------
    void observeValueForKeyPath(const char* keyPath, KRObject* object, const KRKeyValueChange& change,
                                const void* context) override;
    bool acceptsFirstMouse(const KREvent* event) const override;

    // Set-up and tear-down, in load order; unload runs the reverse. Public so that subclasses and tests can
    // follow the sequence.
    void checkListViewLoad();
    void checkListViewUnload();

private:
    void checkListViewSetUpSelf();
    void checkListViewTearDownSelf();
    void checkListViewSetUpFieldEditor();
    void checkListViewTearDownFieldEditor();
    void checkListViewSetUpDummyCheckListItemView();
    void checkListViewTearDownDummyCheckListItemView();
    void checkListItemViewSetUpDropPlaceholderContentView();
    void checkListItemViewTearDownDropPlaceholderContentView();
    void checkListViewHookUp();
    void checkListViewBreakUp();
    void checkListViewBeginTrackingMouse();
    void checkListViewEndTrackingMouse();
    void checkListViewBeginObservingKeyPaths();
    void checkListViewEndObservingKeyPaths();
    void checkListViewBeginObservingNotifications();
    void checkListViewEndObservingNotifications();
    void checkListItemViewRegisterForDraggedTypes();

    // The drop of a running drag, with the pointer last at mouseLocation (list coordinates).
    void checkListViewDropDraggedItemsWithMouseLocation(KRPoint mouseLocation);
    // A view to fade in: the first placeholder that has faded out, or a new invisible one.
    std::shared_ptr<KRCheckListDropPlaceholderView> checkListViewReusableDropPlaceholderView();

    // The indexes the divider pass leaves out while a drag runs (empty at rest).
    KRIndexSet checkListViewIndexesOfDraggedItems() const;
    // Dividers. A row's flags follow from its own state, the next row's and its place in the list; the
    // passes after a layout, a selection or an edit recompute only the rows whose inputs the list changed
    // since the last pass, and every row when something else may have changed them.
    struct DividerContext;
    DividerContext checkListViewDividerContext() const;
    void checkListViewUpdateDividersOfItemAtIndex(KRUInteger index, const DividerContext& context);
    void checkListViewUpdateStaleDividers();
    // The row at index changed (or moved next to others): its dividers and the row above it are recomputed
    // by the next pass.
    void checkListViewMarkDividersStaleAtIndex(KRUInteger index);
    void checkListViewMarkAllDividersStale();
    void checkListViewMarkDividersStaleAfterInsertingItemsAtIndexes(const KRIndexSet& indexes);
    void checkListViewMarkDividersStaleAfterRemovingItemsAtIndexes(const KRIndexSet& indexes);
    void checkListViewUpdatePlaceholderOfItemAtIndex(KRUInteger index);
    // What the list keeps of its rows by index: the fitting sizes they answered and the frames they were
    // given. Inserted rows have nothing kept; after a reload or a move nothing is.
    void checkListViewKeepItemViewStatesOverInsertedIndexes(const KRIndexSet& indexes);
    void checkListViewKeepItemViewStatesOverRemovedIndexes(const KRIndexSet& indexes);
    void checkListViewForgetItemViewStates();
    // The row's fitting size for size, from what is kept where the row has not reported a change.
    KRSize checkListViewSizeThatFitsOfItemAtIndex(KRUInteger index, KRSize size) const;
    void checkListViewTakeReportedSizes(double width) const;
    void checkListViewApplyItemViewFrames(const std::vector<KRRect>& frames, bool placesDraggedRowsAtOnce);
    void checkListViewPlaceItemView(KRCheckListItemView& itemView, KRRect frame,
                                    bool placesDraggedRowsAtOnce);
    // An edit ended by an update, to begin again on the same item once the rows have changed.
    struct SavedEdit {
        std::shared_ptr<KRCheckListItemTitleTextField> titleTextField;
        KRRange selectedRange{0, 0};
    };
    SavedEdit checkListViewEndEditingSavingTheEdit();
    void checkListViewResumeEditing(const SavedEdit& savedEdit);
    // The selection in the editor of the edited item's title, {0, 0} when nothing is edited.
    KRRange
    checkListViewSelectedRangeOfTitleTextField(const KRCheckListItemTitleTextField* titleTextField) const;
    // The registry after a reload: the rows in order, a later row taking the entry of an equal identifier.
    void checkListViewBuildIdentifierRegistryIfNeeded() const;
    // Reload: each new row is laid out, placed and given its empty placeholder just before it joins the
    // list, and what the list keeps of it is written down, so that the passes after the reload read the
    // list's own arrays instead of every row. Rows whose dividers a pass would change are marked.
    struct SettledItemViews {
        KRSize size;
        double nextY = 0.0;
        std::vector<KRSize> keptSizes;
        std::vector<KRRect> frames;
        KRMutableIndexSet staleDividers;
    };
    void checkListViewSettleReloadedItemView(const KRCheckListItemViews& itemViews, std::size_t index,
                                             SettledItemViews& settled);
    // A new row showing item index as the data source reports it (identifier, status and title asked in
    // that order), configured inside one update of the row; reloadItems also gives it a minimum height.
    std::shared_ptr<KRCheckListItemView>
    checkListViewMakeItemViewForItemAtIndex(KRUInteger index, std::optional<double> minHeight);

    // The selected indexes below numberOfItems(); stale numbers past the rows are left out.
    KRIndexSet checkListViewIndexesForSelectedItemsInRows() const;
    // The list's own commands edit an item after an operation the data source carries out; a data source
    // that refused or changed the operation may leave the intended index without a row. Answers whether the
    // edit began.
    bool checkListViewBeginEditingItemIfPresent(KRUInteger index, KRRange range);
    // A command that removed items and began no edit leaves nothing selected.
    void checkListViewDeselectUnlessEditing();

    // Clicks: after the press that began editing is released, the caret goes to the clicked character.
    void checkListViewPlaceCaretAfterClick(const KREvent& press);

    // Keyboard commands.
    struct CommandContext;
    KRTextView* checkListViewTextViewForCommands() const;
    void checkListViewReadCommandContext(CommandContext& context) const;
    void checkListViewTrackInsertionPointForCommand(const KRSelector& selector,
                                                    const CommandContext& context);
    bool checkListViewApplyCommand(const KRSelector& selector, const CommandContext& context);
    void checkListViewMergeTitles(KRUInteger keptIndex, const QString& mergedTitle, KRUInteger caretLocation,
                                  KRUInteger removedIndex);
    void checkListViewInsertNewline(const CommandContext& context);
    void checkListViewSelectRangeUpward(const CommandContext& context);
    void checkListViewSelectRangeDownward(const CommandContext& context);
    void checkListViewPerformAnimatedMove(void (KRCheckListView::*move)());
    void checkListViewKeepTrackedCaretAfterMoveUp(KRTextView& textView);

    std::weak_ptr<KRCheckListViewDataSource> m_dataSource;
    KRClientMethods m_dataSourceMethods;
    std::weak_ptr<KRCheckListViewDelegate> m_delegate;
    KRClientMethods m_delegateMethods;
    QString m_placeholder;
    KRCheckListItemViews m_checkListItemViews;
    // Left empty by a reload, and built from the rows on demand (m_identifierRegistryIsPending): a reload of
    // many rows hashes no identifier unless someone asks.
    mutable KRCheckListItemViewsByIdentifier m_checkListItemViewsByIdentifier;
    mutable bool m_identifierRegistryIsPending = false;
    std::shared_ptr<KRCheckListItemView> m_dummyCheckListItemView;
    std::shared_ptr<KRCheckListFieldEditor> m_fieldEditor;
    std::shared_ptr<KRCheckListDropPlaceholderContentView> m_dropPlaceholderContentView;
    std::shared_ptr<KRCheckListDropPlaceholderView> m_dropPlaceholderView;
    std::shared_ptr<KRCheckListDraggingSession> m_draggingSession;
    KRIndexSet m_indexesForSelectedItems;
    KRUInteger m_indexForEditedItem = KRNotFound;
    KRInteger m_pivotIndex = 0;
    KRSize m_lastSizeThatFits;
    KRRect m_dropPlaceholderFrame;
    KRUInteger m_dropPlaceholderIndex = 0;
    KRRect m_insertionPointRectOnScreen = KRRectNull;
    KRRect m_insertionPointRect;
    double m_heightOfFirstDraggedItem = 0.0;
    bool m_hasFocus = false;
    bool m_updating = false;
    bool m_reloading = false;
    bool m_becomingFirstResponder = false;
    bool m_beginningEditing = false;
    bool m_endingEditing = false;
    bool m_gainingFocus = false;
    bool m_losingFocus = false;
    bool m_selecting = false;
    bool m_didHandleLastKeyDownEvent = false;
    bool m_dragging = false;
    bool m_updateScheduled = false;
    KRMutableIndexSet m_indexesWithStaleDividers;
    // The last divider pass saw a drag or a drop placeholder: the next one at rest visits every row.
    bool m_dividersFollowDrag = false;
    // Rows that reported a change of what the divider passes read.
    KRCheckListItemViewReports m_dividerReports;
    // Rows that may show a placeholder the refresh would change.
    KRCheckListItemViewReports m_placeholderReports;
    // Fitting sizes by index for one width (NaN: ask the row), and the rows whose answer may have changed.
    mutable std::vector<KRSize> m_keptItemViewSizes;
    mutable double m_keptItemViewSizesWidth = 0.0;
    mutable KRCheckListItemViewReports m_sizeReports;
    // The frames the layout pass gave the rows (NaN: read the row), and the rows moved by someone else.
    std::vector<KRRect> m_appliedItemViewFrames;
    KRCheckListItemViewReports m_frameReports;
    const KRCheckListItemView* m_itemViewBeingPlaced = nullptr;
    // The press of a plain click, from the press to the release: its drags and its release go to the editor.
    std::optional<KREvent> m_clickPressInFieldEditor;
    // Watched by what the list leaves to run later (the completion of a drop's animation): it expires as the
    // list begins to go away, before its rows and their animations do.
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};
