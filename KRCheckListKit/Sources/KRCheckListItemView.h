#pragma once

#include "KRCheckListItemTitleTextField.h"

#include "Controls/KRButtonView.h"
#include "Foundation/KRTypes.h"
#include "Foundation/KRWeakDelegate.h"
#include "Text/KRTextAttributes.h"
#include "Views/KRView.h"

#include <QStringList>
#include <QVariantMap>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

class KRCheckListItemView;
class KRTrackingArea;

// What a row asks of and tells its owner (the list). Every method has the answer a row assumes when its
// delegate leaves the method out.
class KRCheckListItemViewDelegate {
public:
    virtual ~KRCheckListItemViewDelegate() = default;

    // The title to keep for a title being typed.
    virtual QString checkListItemViewValidateChangedTitle(KRCheckListItemView*, const QString& title) {
        return title;
    }
    // The status to show after a click on the check box proposed one.
    virtual KRUInteger checkListItemViewValidateChangedStatus(KRCheckListItemView*, KRUInteger status) {
        return status;
    }
    // Answering true means the delegate performed the editing command.
    virtual bool checkListItemViewTextViewDoCommandBySelector(KRCheckListItemView*, KRTextView*,
                                                              const KRSelector&) {
        return false;
    }
    virtual void checkListItemViewWillUpdate(KRCheckListItemView*) {}
    virtual void checkListItemViewDidUpdate(KRCheckListItemView*) {}
    virtual void checkListItemViewDidChangeSizeThatFits(KRCheckListItemView*) {}
    virtual void checkListItemViewDidEndEditingTitle(KRCheckListItemView*) {}
    virtual void checkListItemViewWillChangeHighlighted(KRCheckListItemView*) {}
    virtual void checkListItemViewDidChangeHighlighted(KRCheckListItemView*) {}
    // What decides the row's dividers changed: whether it is edited, selected, dragged or highlighted, its
    // divider flags themselves, or whether its frame has an area.
    virtual void checkListItemViewDidChangeDividerInputs(KRCheckListItemView*) {}
    // The row no longer shows an empty placeholder in its current look: a placeholder refresh must visit it.
    virtual void checkListItemViewDidStopShowingEmptyPlaceholder(KRCheckListItemView*) {}
    // The row's fitting size may differ from its last answer: whoever keeps that answer asks again.
    virtual void checkListItemViewDidInvalidateSizeThatFits(KRCheckListItemView*) {}
    // The row's frame changed, whoever set it.
    virtual void checkListItemViewDidChangeFrame(KRCheckListItemView*) {}
    // The row is about to take another item identifier.
    virtual void checkListItemViewWillChangeItemIdentifier(KRCheckListItemView*) {}
    // Mouse events on the drag handle; true means the delegate consumed the event.
    virtual bool checkListItemViewMouseDownHandle(KRCheckListItemView*, const KREvent&) { return false; }
    virtual bool checkListItemViewMouseDraggedHandle(KRCheckListItemView*, const KREvent&) { return false; }
    virtual bool checkListItemViewMouseUpHandle(KRCheckListItemView*, const KREvent&) { return false; }
    // The field editor for the row's title; null lets the window's shared one edit it.
    virtual std::shared_ptr<KRTextView> checkListItemViewFieldEditorForView(KRCheckListItemView*, KRView*) {
        return nullptr;
    }
    virtual bool checkListItemViewTextFieldValidateBecomeFirstResponder(KRCheckListItemView*, KRTextField*,
                                                                        bool proposed) {
        return proposed;
    }
    virtual bool checkListItemViewTextFieldValidateResignFirstResponder(KRCheckListItemView*, KRTextField*,
                                                                        bool proposed) {
        return proposed;
    }
};

// The contexts of the row's observations of its own keys.
extern const char* const KRCheckListItemViewObserveKeyPathsTriggeringSetNeedsUpdateContext;
extern const char* const KRCheckListItemViewObserveKeyPathsTriggeringSetNeedsLayoutContext;
extern const char* const KRCheckListItemViewObserveKeyPathsTriggeringUpdateHighlightViewContext;

// Every frame of a row for one size, the check box's insets and the size the row would like.
struct KRCheckListItemViewLayout {
    KRRect shapeViewFrame;
    KRRect highlightViewFrame;
    KRRect maskViewFrame;
    KRRect checkBoxButtonViewFrame;
    KREdgeInsets checkBoxButtonViewEdgeInsets;
    KRRect handleButtonViewFrame;
    KRRect titleTextFieldFrame;
    KRRect topDividerViewFrame;
    KRRect bottomDividerViewFrame;
    KRSize sizeThatFits;
    KRSize size;

    // The entry names, in the order above.
    static const QStringList& keys();
    // The layout as a record keyed by those names.
    QVariantMap dictionary() const;
};

// One row of a check list: a check box, an editable title with a placeholder, a drag handle, a rounded
// background and two hairline dividers. It knows nothing of items: it turns a few state properties into
// the looks of its sub-views (batched by beginUpdates/endUpdates) and hands every interaction to its
// delegate through methods of its own that bear the delegate's names.
class KRCheckListItemView : public KRView,
                            public KRButtonViewDelegate,
                            public KRCheckListItemTitleTextFieldDelegate {
public:
    explicit KRCheckListItemView(KRRect frame = KRRectZero);
    ~KRCheckListItemView() override;

    // State ----------------------------------------------------------------------------------------------
    QString title() const;
    // The text takes the placeholder's attributes until the update that the change schedules.
    void setTitle(const QString& title);
    QString placeholder() const;
    // Sent to the field with its delegate detached, so the change reaches no delegate.
    void setPlaceholder(const QString& placeholder);
    // Leaves the title's cell a plain empty placeholder, without the row's placeholder attributes (what an
    // edit leaves behind when it ends).
    void clearPlaceholderOfTitleCell();
    KRUInteger status() const { return m_status; }
    void setStatus(KRUInteger status);
    double minHeight() const { return m_minHeight; }
    void setMinHeight(double minHeight);
    bool isEdited() const { return m_edited; }
    void setEdited(bool edited);
    bool isSelected() const { return m_selected; }
    void setSelected(bool selected);
    bool isDragged() const { return m_dragged; }
    void setDragged(bool dragged);
    bool drawsTopDivider() const { return m_drawsTopDivider; }
    void setDrawsTopDivider(bool draws);
    bool drawsBottomDivider() const { return m_drawsBottomDivider; }
    void setDrawsBottomDivider(bool draws);
    bool drawsShadow() const { return m_drawsShadow; }
    // Every assignment, even of the same value, runs an update.
    void setDrawsShadow(bool draws);
    bool isHandleHovered() const { return m_handleHovered; }
    void setHandleHovered(bool hovered) { m_handleHovered = hovered; }
    bool isHighlighted() const { return m_highlighted; }
    bool showsCurrentEmptyPlaceholder() const { return m_showsCurrentEmptyPlaceholder; }
    // Loads what the list's passes read of every row (frame and state flags) ahead of use.
    void prefetchListPassState() const {
        prefetchFrame();
        __builtin_prefetch(&m_edited);
    }
    // Loads what placing the row reads: besides the frame and flags, its view state and its delegate.
    void prefetchPlacementState() const {
        prefetchListPassState();
        prefetchViewState();
        __builtin_prefetch(&m_delegate);
    }
    void setHighlighted(bool highlighted);

    // The identifier of the item the row shows (given by the list). objectValue() answers it, and
    // setObjectValue() sets it: the row keeps no separate value. The delegate hears of a change first.
    const QJsonValue& itemIdentifier() const { return m_itemIdentifier; }
    void setItemIdentifier(const QJsonValue& itemIdentifier);

    KRCheckListItemViewDelegate* delegate() const { return m_delegate.get(); }
    // The delegate is dropped once lifetimeOwner is destroyed.
    void setDelegate(KRCheckListItemViewDelegate* delegate, const KRObject* lifetimeOwner);
    template <class T> void setDelegate(T* delegate) {
        setDelegate(static_cast<KRCheckListItemViewDelegate*>(delegate),
                    static_cast<const KRObject*>(delegate));
    }
    void setDelegate(std::nullptr_t) { setDelegate(nullptr, nullptr); }

    // Sub-views ------------------------------------------------------------------------------------------
    const std::shared_ptr<KRCheckListItemTitleTextField>& titleTextField() const { return m_titleTextField; }
    const std::shared_ptr<KRButtonView>& checkBoxButtonView() const { return m_checkBoxButtonView; }
    const std::shared_ptr<KRButtonView>& handleButtonView() const { return m_handleButtonView; }
    const std::shared_ptr<KRView>& shapeView() const { return m_shapeView; }
    const std::shared_ptr<KRView>& highlightView() const { return m_highlightView; }
    const std::shared_ptr<KRView>& maskView() const { return m_maskView; }
    const std::shared_ptr<KRView>& topDividerView() const { return m_topDividerView; }
    const std::shared_ptr<KRView>& bottomDividerView() const { return m_bottomDividerView; }
    const std::shared_ptr<KRTrackingArea>& textTrackingArea() const { return m_textTrackingArea; }

    // Built by each update; null until the first one. Rows in the same state share one set.
    const std::shared_ptr<const KRTextAttributes>& titleAttributes() const { return m_titleAttributes; }
    const std::shared_ptr<const KRTextAttributes>& placeholderAttributes() const {
        return m_placeholderAttributes;
    }
    KRSize sizeThatFitsAfterLastUpdate() const { return m_sizeThatFitsAfterLastUpdate; }
    void setSizeThatFitsAfterLastUpdate(KRSize size) { m_sizeThatFitsAfterLastUpdate = size; }
    // The fitting size the last title change saw.
    KRSize sizeThatFitsAfterLastLayout() const { return m_sizeThatFitsAfterLastLayout; }
    void setSizeThatFitsAfterLastLayout(KRSize size) { m_sizeThatFitsAfterLastLayout = size; }

    // Updates --------------------------------------------------------------------------------------------
    KRInteger updateCount() const { return m_updateCount; }
    bool isUpdating() const { return m_updating; }
    bool isUpdateScheduled() const { return m_updateScheduled; }
    // Outside a batch, true updates at once; inside one it marks (or, with false, cancels) the update.
    void setNeedsUpdate(bool needsUpdate);
    void updateIfNeeded();
    void beginUpdates();
    // Runs a pending update, at the end of every batch, nested or not.
    void endUpdates();
    void update(const std::function<void()>& updates);
    // Turns the state into looks. Runs only through updateIfNeeded.
    void update();

    // Layout ---------------------------------------------------------------------------------------------
    KRCheckListItemViewLayout checkListItemViewLayoutForSize(KRSize size) const;
    void layoutSubviews() override;
    void setFrameOrigin(KRPoint origin) override;
    void setFrameSize(KRSize size) override;
    // The fitting size of the layout for size. The last answer is kept and given again for the same width
    // until the title's cell says its size may have changed or the check box image changes, and nothing is
    // kept while the title is edited. Each end of a kept answer is reported to the delegate.
    KRSize sizeThatFits(KRSize size) const override;
    // Whether the last answer of sizeThatFits is kept: it stands until the delegate hears otherwise.
    bool keepsSizeThatFits() const { return m_sizeThatFitsCacheValid; }

    // Forwarders to the delegate, with the documented answer when there is none ---------------------------
    QString checkListItemViewValidateChangedTitle(KRCheckListItemView* itemView, const QString& title);
    KRUInteger checkListItemViewValidateChangedStatus(KRCheckListItemView* itemView, KRUInteger status);
    bool checkListItemViewTextViewDoCommandBySelector(KRCheckListItemView* itemView, KRTextView* textView,
                                                      const KRSelector& selector);
    void checkListItemViewWillUpdate(KRCheckListItemView* itemView);
    void checkListItemViewDidUpdate(KRCheckListItemView* itemView);
    void checkListItemViewDidChangeSizeThatFits(KRCheckListItemView* itemView);
    void checkListItemViewDidEndEditingTitle(KRCheckListItemView* itemView);
    void checkListItemViewWillChangeHighlighted(KRCheckListItemView* itemView);
    void checkListItemViewDidChangeHighlighted(KRCheckListItemView* itemView);
    void checkListItemViewDidChangeDividerInputs(KRCheckListItemView* itemView);
    void checkListItemViewDidStopShowingEmptyPlaceholder(KRCheckListItemView* itemView);
    void checkListItemViewDidInvalidateSizeThatFits(KRCheckListItemView* itemView);
    void checkListItemViewDidChangeFrame(KRCheckListItemView* itemView);
    void checkListItemViewWillChangeItemIdentifier(KRCheckListItemView* itemView);
    bool checkListItemViewMouseDownHandle(KRCheckListItemView* itemView, const KREvent& event);
    bool checkListItemViewMouseDraggedHandle(KRCheckListItemView* itemView, const KREvent& event);
    bool checkListItemViewMouseUpHandle(KRCheckListItemView* itemView, const KREvent& event);
    std::shared_ptr<KRTextView> checkListItemViewFieldEditorForView(KRCheckListItemView* itemView,
                                                                    KRView* view);
    bool checkListItemViewTextFieldValidateBecomeFirstResponder(KRCheckListItemView* itemView,
                                                                KRTextField* textField, bool proposed);
    bool checkListItemViewTextFieldValidateResignFirstResponder(KRCheckListItemView* itemView,
                                                                KRTextField* textField, bool proposed);

    // Controls -------------------------------------------------------------------------------------------
    // The check box's action: proposes the next status (Option cancels an open item) and shows the answer.
    void checkListItemViewHandleActionForCheckBoxButton(KRButtonView* sender);
    void checkListItemViewUpdateHighlightView();
    // Applies a title change: validation, the title's own attributes, and a new fitting size.
    void checkListItemViewHandleTextChangeForTitleTextField(KRCheckListItemTitleTextField* titleTextField);

    // KRObject / KRView / KRResponder --------------------------------------------------------------------
    QJsonValue objectValue() const override { return m_itemIdentifier; }
    void setObjectValue(const QJsonValue& value) override { setItemIdentifier(value); }
    void observeValueForKeyPath(const char* keyPath, KRObject* object, const KRKeyValueChange& change,
                                const void* context) override;
    bool tryToPerform(const KRSelector& action, KRObject* sender) override;
    bool respondsToSelector(const KRSelector& selector) const override;
    void updateTrackingAreas() override;
    void cursorUpdate(const KREvent& event) override;

    // KRButtonViewDelegate -------------------------------------------------------------------------------
    bool buttonViewMouseDown(KRButtonView* buttonView, const KREvent& event) override;
    bool buttonViewMouseDragged(KRButtonView* buttonView, const KREvent& event) override;
    bool buttonViewMouseUp(KRButtonView* buttonView, const KREvent& event) override;
    bool buttonViewValidatePressed(KRButtonView* buttonView, bool proposedPressed) override;
    bool buttonViewValidateCanBecomeKeyView(KRButtonView* buttonView, bool proposedCanBecomeKeyView) override;

    // KRCheckListItemTitleTextFieldDelegate --------------------------------------------------------------
    void controlTextDidChange(KRTextField* textField) override;
    void controlTextDidEndEditing(KRTextField* textField) override;
    bool controlTextViewDoCommandBySelector(KRTextField* textField, KRTextView* textView,
                                            const KRSelector& selector) override;
    std::shared_ptr<KRTextView>
    checkListItemTitleTextFieldFieldEditorForView(KRCheckListItemTitleTextField* field,
                                                  KRView* view) override;
    bool checkListItemTitleTextFieldValidateBecomeFirstResponder(KRCheckListItemTitleTextField* field,
                                                                 bool proposed) override;
    bool checkListItemTitleTextFieldValidateResignFirstResponder(KRCheckListItemTitleTextField* field,
                                                                 bool proposed) override;
    void checkListItemTitleTextFieldSizeMayHaveChanged(KRCheckListItemTitleTextField* field) override;

private:
    void checkListItemViewLoad();
    void checkListItemViewUnload();
    void checkListItemViewSetUpSelf();
    void checkListItemViewTearDownSelf();
    void checkListItemViewSetUpShapeView();
    void checkListItemViewTearDownShapeView();
    void checkListItemViewSetUpHighlightView();
    void checkListItemViewTearDownHighlightView();
    void checkListItemViewSetUpMaskView();
    void checkListItemViewTearDownMaskView();
    void checkListItemViewSetUpCheckBoxButtonView();
    void checkListItemViewTearDownCheckBoxButtonView();
    void checkListItemViewSetUpTitleTextField();
    void checkListItemViewTearDownTitleTextField();
    void checkListItemViewSetUpHandleButtonView();
    void checkListItemViewTearDownHandleButtonView();
    void checkListItemViewSetUpTopDividerView();
    void checkListItemViewTearDownTopDividerView();
    void checkListItemViewSetUpBottomDividerView();
    void checkListItemViewTearDownBottomDividerView();
    void checkListItemViewHookUp();
    void checkListItemViewBreakUp();
    void checkListItemViewBeginObservingKeyPaths();
    void checkListItemViewEndObservingKeyPaths();
    void checkListItemViewBeginTrackingMouse();
    void checkListItemViewEndTrackingMouse();
    // The changes the delegate hears of, each where the row's state changes.
    void setShowsCurrentEmptyPlaceholder(bool shows);
    void forgetSizeThatFits();
    void reportFrameChangeFrom(KRRect oldFrame);

    bool hasPlaceholder(const QString& text) const;
    void highlightOn();
    void highlightOffAnimated();

    std::shared_ptr<KRView> m_shapeView;
    std::shared_ptr<KRView> m_highlightView;
    std::shared_ptr<KRView> m_maskView;
    std::shared_ptr<KRButtonView> m_checkBoxButtonView;
    std::shared_ptr<KRCheckListItemTitleTextField> m_titleTextField;
    std::shared_ptr<KRButtonView> m_handleButtonView;
    std::shared_ptr<KRView> m_topDividerView;
    std::shared_ptr<KRView> m_bottomDividerView;
    std::shared_ptr<KRTrackingArea> m_textTrackingArea;
    KRWeakDelegate<KRCheckListItemViewDelegate> m_delegate;
    QJsonValue m_itemIdentifier;
    std::shared_ptr<const KRTextAttributes> m_titleAttributes;
    std::shared_ptr<const KRTextAttributes> m_placeholderAttributes;
    KRSize m_sizeThatFitsAfterLastUpdate;
    KRSize m_sizeThatFitsAfterLastLayout;
    // The last answer of sizeThatFits, with what it was computed for (valid below).
    mutable double m_cachedFittingWidth = 0.0;
    mutable double m_cachedFittingHeight = 0.0;
    // Batches nest a few levels at most.
    std::int32_t m_updateCount = 0;
    KRUInteger m_status = 0;
    double m_minHeight = 0.0;
    bool m_edited = false;
    bool m_selected = false;
    bool m_dragged = false;
    bool m_drawsTopDivider = false;
    bool m_drawsBottomDivider = false;
    bool m_drawsShadow = false;
    bool m_highlighted = false;
    // Flags nobody observes share one byte: a list holds thousands of rows.
    bool m_handleHovered : 1 = false;
    bool m_updating : 1 = false;
    bool m_updateScheduled : 1 = false;
    mutable bool m_sizeThatFitsCacheValid : 1 = false;
    // The field shows an empty placeholder with the current placeholder attributes, so setting an empty one
    // again changes nothing: the list sets every row's placeholder after each update.
    bool m_showsCurrentEmptyPlaceholder : 1 = false;
};
