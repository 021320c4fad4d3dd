// KRCheckListView: construction and destruction, clients, the registry of rows, observation, the
// forwarders to the data source and the delegate, and the list's answers as the delegate of its rows.
// Updates, item operations, layout, selection and editing live in the KRCheckListView+*.cpp files.
#include "KRCheckListView.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListDropPlaceholderContentView.h"

#include "Foundation/KRLog.h"
#include "Foundation/KRTrace.h"
#include "Platform/KRPasteboard.h"

#include <memory_resource>

// On the system clipboard the items travel under a MIME name of their own, so a copy made in one process
// pastes with its statuses in another.
const QString KRCheckListItemsAsJSONPasteboardType =
    KRPasteboard::registerMimeTypeForType(QStringLiteral("application/x-krchecklist-items+json"),
                                          QStringLiteral("org.krtodo.KRCheckListItemsPasteboardType"));

const char* const KRCheckListObserveKeyPathsTriggeringSetNeedsUpdateContext =
    "KRCheckListObserveKeyPathsTriggeringSetNeedsUpdateContext";
const char* const KRCheckListObserveKeyPathsTriggeringSetNeedsLayoutContext =
    "KRCheckListObserveKeyPathsTriggeringSetNeedsLayoutContext";

namespace {

// The identities the contexts are compared by: the constants' addresses, not their texts.
const void* const updateContext = &KRCheckListObserveKeyPathsTriggeringSetNeedsUpdateContext;
const void* const layoutContext = &KRCheckListObserveKeyPathsTriggeringSetNeedsLayoutContext;

constexpr std::size_t methodIndex(KRCheckListViewDelegateMethod method) {
    return static_cast<std::size_t>(method);
}

constexpr std::size_t methodIndex(KRCheckListViewDataSourceMethod method) {
    return static_cast<std::size_t>(method);
}

void logDeprecatedDelegateMethod(const char* selector) {
    KRLog(QStringLiteral("[WARNING] [KRCheckListViewDelegate %1] is deprecated, please use the non-animated "
                         "version instead.")
              .arg(QLatin1String(selector)));
}

} // namespace

// Sends an optional delegate method, only when a delegate is there and overrides it.
#define KR_SEND_TO_DELEGATE(method, ...)                                                                     \
    do {                                                                                                     \
        if (const std::shared_ptr<KRCheckListViewDelegate> kr_delegate = m_delegate.lock();                  \
            kr_delegate && m_delegateMethods.test(methodIndex(KRCheckListViewDelegateMethod::method))) {     \
            kr_delegate->method(__VA_ARGS__);                                                                \
        }                                                                                                    \
    } while (false)

// Construction and destruction
// ------------------------------------------------------------------------------------------------------

KRCheckListView::KRCheckListView(KRRect frame) : KRView(frame) {
    checkListViewLoad();
}

KRCheckListView::~KRCheckListView() {
    // Animations that end while the rows go away below must not call back into a list that is gone.
    m_alive.reset();
    checkListViewUnload();
    // The rows outlive this part of the list (they go with the view tree, after this body); whatever they
    // do on their way out must not reach a list that is gone.
    for (const std::shared_ptr<KRView>& subview : subviews()) {
        if (auto* itemView = dynamic_cast<KRCheckListItemView*>(subview.get())) {
            itemView->setDelegate(nullptr);
        }
    }
}

bool KRCheckListView::acceptsFirstMouse(const KREvent*) const {
    return true;
}

void KRCheckListView::checkListViewLoad() {
    checkListViewSetUpSelf();
    checkListViewSetUpFieldEditor();
    checkListViewSetUpDummyCheckListItemView();
    checkListItemViewSetUpDropPlaceholderContentView();
    checkListViewHookUp();
    checkListViewBeginTrackingMouse();
    checkListViewBeginObservingKeyPaths();
    checkListViewBeginObservingNotifications();
    checkListItemViewRegisterForDraggedTypes();
}

void KRCheckListView::checkListViewUnload() {
    checkListViewEndObservingNotifications();
    checkListViewEndObservingKeyPaths();
    checkListViewEndTrackingMouse();
    checkListViewBreakUp();
    checkListItemViewTearDownDropPlaceholderContentView();
    checkListViewTearDownDummyCheckListItemView();
    checkListViewTearDownFieldEditor();
    checkListViewTearDownSelf();
}

void KRCheckListView::checkListViewSetUpSelf() {
    KRTrace::step(this, "checkListViewSetUpSelf");
    m_placeholder = QStringLiteral("Checklist");
    setBackgroundColor(KRCheckListDefaults::fillColor());
    m_indexForEditedItem = KRNotFound;
    m_indexesForSelectedItems = KRIndexSet();
    m_checkListItemViews.clear();
    m_checkListItemViewsByIdentifier.clear();
    m_identifierRegistryIsPending = false;
    m_insertionPointRectOnScreen = KRRectNull;
}

void KRCheckListView::checkListViewTearDownSelf() {
    KRTrace::step(this, "checkListViewTearDownSelf");
    m_checkListItemViewsByIdentifier = KRCheckListItemViewsByIdentifier();
    m_identifierRegistryIsPending = false;
    m_checkListItemViews = KRCheckListItemViews();
    m_indexesForSelectedItems = KRIndexSet();
    // Not KRNotFound: the list is going away and nothing reads the index afterwards.
    m_indexForEditedItem = 0;
    setBackgroundColor(QColor());
}

void KRCheckListView::checkListViewSetUpFieldEditor() {
    KRTrace::step(this, "checkListViewSetUpFieldEditor");
    auto fieldEditor = std::make_shared<KRCheckListFieldEditor>();
    // Return and Tab end editing instead of entering text.
    fieldEditor->setFieldEditor(true);
    m_fieldEditor = std::move(fieldEditor);
}

void KRCheckListView::checkListViewTearDownFieldEditor() {
    KRTrace::step(this, "checkListViewTearDownFieldEditor");
    m_fieldEditor.reset();
}

void KRCheckListView::checkListViewSetUpDummyCheckListItemView() {
    KRTrace::step(this, "checkListViewSetUpDummyCheckListItemView");
    // Only measures; it never joins the view tree.
    m_dummyCheckListItemView = std::make_shared<KRCheckListItemView>();
}

void KRCheckListView::checkListViewTearDownDummyCheckListItemView() {
    KRTrace::step(this, "checkListViewTearDownDummyCheckListItemView");
    m_dummyCheckListItemView.reset();
}

void KRCheckListView::checkListItemViewSetUpDropPlaceholderContentView() {
    KRTrace::step(this, "checkListItemViewSetUpDropPlaceholderContentView");
    m_dropPlaceholderContentView = std::make_shared<KRCheckListDropPlaceholderContentView>();
}

void KRCheckListView::checkListItemViewTearDownDropPlaceholderContentView() {
    KRTrace::step(this, "checkListItemViewTearDownDropPlaceholderContentView");
    m_dropPlaceholderContentView.reset();
}

void KRCheckListView::checkListViewHookUp() {
    KRTrace::step(this, "checkListViewHookUp");
    addSubview(m_dropPlaceholderContentView);
}

void KRCheckListView::checkListViewBreakUp() {
    KRTrace::step(this, "checkListViewBreakUp");
    if (m_dropPlaceholderContentView) {
        m_dropPlaceholderContentView->removeFromSuperview();
    }
}

// Hooks kept as named steps so that set-up and tear-down stay symmetric; the list registers nothing.
void KRCheckListView::checkListViewBeginTrackingMouse() {
    KRTrace::step(this, "checkListViewBeginTrackingMouse");
}

void KRCheckListView::checkListViewEndTrackingMouse() {
    KRTrace::step(this, "checkListViewEndTrackingMouse");
}

void KRCheckListView::checkListViewBeginObservingKeyPaths() {
    KRTrace::step(this, "checkListViewBeginObservingKeyPaths");
}

void KRCheckListView::checkListViewEndObservingKeyPaths() {
    KRTrace::step(this, "checkListViewEndObservingKeyPaths");
}

void KRCheckListView::checkListViewBeginObservingNotifications() {
    KRTrace::step(this, "checkListViewBeginObservingNotifications");
}

void KRCheckListView::checkListViewEndObservingNotifications() {
    KRTrace::step(this, "checkListViewEndObservingNotifications");
}

void KRCheckListView::checkListItemViewRegisterForDraggedTypes() {
    KRTrace::step(this, "checkListItemViewRegisterForDraggedTypes");
    registerForDraggedTypes(QStringList{KRCheckListItemsAsJSONPasteboardType});
}

// Clients
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::setDataSource(const std::shared_ptr<KRCheckListViewDataSource>& dataSource,
                                    KRClientMethods optionalMethods) {
    m_dataSource = dataSource;
    m_dataSourceMethods = dataSource ? optionalMethods : KRClientMethods();
}

bool KRCheckListView::dataSourceRespondsTo(KRCheckListViewDataSourceMethod method) const {
    return !m_dataSource.expired() && m_dataSourceMethods.test(methodIndex(method));
}

void KRCheckListView::setDelegate(const std::shared_ptr<KRCheckListViewDelegate>& delegate,
                                  KRClientMethods methods) {
    m_delegate = delegate;
    m_delegateMethods = delegate ? methods : KRClientMethods();
}

bool KRCheckListView::delegateRespondsTo(KRCheckListViewDelegateMethod method) const {
    return !m_delegate.expired() && m_delegateMethods.test(methodIndex(method));
}

// Registry
// ------------------------------------------------------------------------------------------------------

const KRCheckListItemViewsByIdentifier& KRCheckListView::checkListItemViewsByIdentifier() const {
    checkListViewBuildIdentifierRegistryIfNeeded();
    return m_checkListItemViewsByIdentifier;
}

void KRCheckListView::checkListViewBuildIdentifierRegistryIfNeeded() const {
    if (!m_identifierRegistryIsPending) {
        return;
    }
    m_identifierRegistryIsPending = false;
    KRCheckListItemViewsByIdentifier registry;
    registry.reserve(static_cast<qsizetype>(m_checkListItemViews.size()));
    for (const std::shared_ptr<KRCheckListItemView>& itemView : m_checkListItemViews) {
        registry.insert(itemView->itemIdentifier(), itemView);
    }
    m_checkListItemViewsByIdentifier = std::move(registry);
}

void KRCheckListView::checkListItemViewWillChangeItemIdentifier(KRCheckListItemView*) {
    checkListViewBuildIdentifierRegistryIfNeeded();
}

KRCheckListItemView* KRCheckListView::checkListViewItemViewForItemAtIndex(KRUInteger index) const {
    return m_checkListItemViews.at(index).get();
}

KRUInteger KRCheckListView::checkListViewIndexForItemView(const KRCheckListItemView* itemView) const {
    if (!itemView) {
        return KRNotFound;
    }
    const std::size_t count = m_checkListItemViews.size();
    for (std::size_t index = 0; index < count; ++index) {
        if (m_checkListItemViews[index].get() == itemView) {
            return index;
        }
    }
    return KRNotFound;
}

KRUInteger KRCheckListView::checkListViewIndexForTitleTextField(const KRView* titleTextField) const {
    for (const KRView* view = titleTextField; view; view = view->superview()) {
        if (const auto* itemView = dynamic_cast<const KRCheckListItemView*>(view)) {
            return checkListViewIndexForItemView(itemView);
        }
    }
    return KRNotFound;
}

KRCheckListItemTitleTextField* KRCheckListView::checkListViewTitleTextFieldForIndex(KRUInteger index) const {
    return m_checkListItemViews.at(index)->titleTextField().get();
}

QJsonValue KRCheckListView::identifierForItemAtIndex(KRUInteger index) const {
    return m_checkListItemViews.at(index)->objectValue();
}

KRUInteger KRCheckListView::statusForItemAtIndex(KRUInteger index) const {
    return m_checkListItemViews.at(index)->status();
}

QString KRCheckListView::titleForItemAtIndex(KRUInteger index) const {
    return m_checkListItemViews.at(index)->title();
}

namespace {
// Rows come from one pool, so a long list's rows lie next to each other: a pass that reads every row then
// crosses a few hundred pages instead of one per row. The pool lives as long as the program, and outlives
// every row. Under AddressSanitizer each row is allocated on its own, so that a freed row stays poisoned.
std::pmr::memory_resource& itemViewMemory() {
#if defined(__SANITIZE_ADDRESS__)
    return *std::pmr::new_delete_resource();
#else
    static auto* const resource = new std::pmr::synchronized_pool_resource();
    return *resource;
#endif
}
} // namespace

std::shared_ptr<KRCheckListItemView>
KRCheckListView::checkListViewMakeItemViewForItemAtIndex(KRUInteger index, std::optional<double> minHeight) {
    const QJsonValue identifier = checkListViewIdentifierForItemAtIndex(this, index);
    const KRUInteger status = checkListViewStatusForItemAtIndex(this, index);
    const QString title = checkListViewTitleForItemAtIndex(this, index);
    auto itemView = std::allocate_shared<KRCheckListItemView>(
        std::pmr::polymorphic_allocator<KRCheckListItemView>(&itemViewMemory()));
    KRCheckListItemView& row = *itemView;
    // One batch, as update(block) makes, without wrapping the block in a function for every row.
    row.beginUpdates();
    if (minHeight) {
        row.setMinHeight(*minHeight);
    }
    row.setBackgroundColor(backgroundColor());
    row.setItemIdentifier(identifier);
    row.setTitle(title);
    row.setStatus(status);
    // A row whose values already call for an update shows the dividers of a row at rest in that same
    // update: the bottom one, and the top one for the first row. The list's divider pass has the last
    // word, and leaves alone the rows it agrees with. A row left at a new row's values gets no update
    // here, as before: its dividers come with the pass.
    if (row.isUpdateScheduled()) {
        if (index == 0) {
            row.setDrawsTopDivider(true);
        }
        row.setDrawsBottomDivider(true);
    }
    row.setDelegate(this);
    row.endUpdates();
    return itemView;
}

// Observation
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::observeValueForKeyPath(const char* keyPath, KRObject* object,
                                             const KRKeyValueChange& change, const void* context) {
    if (context == updateContext) {
        checkListViewUpdatePlaceholderForEachItemView();
    } else if (context == layoutContext) {
        setNeedsLayout(true);
    } else {
        KRView::observeValueForKeyPath(keyPath, object, change, context);
    }
}

// Forwarders to the data source
// ------------------------------------------------------------------------------------------------------
// Required methods go out unchecked; without a data source they answer zero values.

KRUInteger KRCheckListView::checkListViewNumberOfItems(KRCheckListView* checkListView) {
    const std::shared_ptr<KRCheckListViewDataSource> dataSource = m_dataSource.lock();
    return dataSource ? dataSource->checkListViewNumberOfItems(checkListView) : 0;
}

QJsonValue KRCheckListView::checkListViewIdentifierForItemAtIndex(KRCheckListView* checkListView,
                                                                  KRUInteger index) {
    const std::shared_ptr<KRCheckListViewDataSource> dataSource = m_dataSource.lock();
    return dataSource ? dataSource->checkListViewIdentifierForItemAtIndex(checkListView, index)
                      : QJsonValue();
}

KRUInteger KRCheckListView::checkListViewStatusForItemAtIndex(KRCheckListView* checkListView,
                                                              KRUInteger index) {
    const std::shared_ptr<KRCheckListViewDataSource> dataSource = m_dataSource.lock();
    return dataSource ? dataSource->checkListViewStatusForItemAtIndex(checkListView, index) : 0;
}

QString KRCheckListView::checkListViewTitleForItemAtIndex(KRCheckListView* checkListView, KRUInteger index) {
    const std::shared_ptr<KRCheckListViewDataSource> dataSource = m_dataSource.lock();
    return dataSource ? dataSource->checkListViewTitleForItemAtIndex(checkListView, index) : QString();
}

KRUInteger KRCheckListView::checkListViewValidateChangedStatusForItemAtIndex(KRCheckListView* checkListView,
                                                                             KRUInteger status,
                                                                             KRUInteger index) {
    const std::shared_ptr<KRCheckListViewDataSource> dataSource = m_dataSource.lock();
    return dataSource
               ? dataSource->checkListViewValidateChangedStatusForItemAtIndex(checkListView, status, index)
               : 0;
}

QString KRCheckListView::checkListViewValidateChangedTitleForItemAtIndex(KRCheckListView* checkListView,
                                                                         const QString& title,
                                                                         KRUInteger index) {
    const std::shared_ptr<KRCheckListViewDataSource> dataSource = m_dataSource.lock();
    return dataSource
               ? dataSource->checkListViewValidateChangedTitleForItemAtIndex(checkListView, title, index)
               : QString();
}

void KRCheckListView::checkListViewInsertItemsAtIndexes(KRCheckListView* checkListView,
                                                        const KRIndexSet& indexes) {
    if (const std::shared_ptr<KRCheckListViewDataSource> dataSource = m_dataSource.lock()) {
        dataSource->checkListViewInsertItemsAtIndexes(checkListView, indexes);
    }
}

void KRCheckListView::checkListViewRemoveItemsAtIndexes(KRCheckListView* checkListView,
                                                        const KRIndexSet& indexes) {
    if (const std::shared_ptr<KRCheckListViewDataSource> dataSource = m_dataSource.lock()) {
        dataSource->checkListViewRemoveItemsAtIndexes(checkListView, indexes);
    }
}

void KRCheckListView::checkListViewMoveItemsAtIndexesToIndex(KRCheckListView* checkListView,
                                                             const KRIndexSet& indexes, KRUInteger toIndex) {
    if (const std::shared_ptr<KRCheckListViewDataSource> dataSource = m_dataSource.lock()) {
        dataSource->checkListViewMoveItemsAtIndexesToIndex(checkListView, indexes, toIndex);
    }
}

// Optional methods go out only to a data source that overrides them.
#define KR_SEND_TO_DATA_SOURCE(method, ...)                                                                  \
    do {                                                                                                     \
        if (const std::shared_ptr<KRCheckListViewDataSource> kr_dataSource = m_dataSource.lock();            \
            kr_dataSource &&                                                                                 \
            m_dataSourceMethods.test(methodIndex(KRCheckListViewDataSourceMethod::method))) {                \
            kr_dataSource->method(__VA_ARGS__);                                                              \
        }                                                                                                    \
    } while (false)

void KRCheckListView::checkListViewBeginGrouping(KRCheckListView* checkListView) {
    KR_SEND_TO_DATA_SOURCE(checkListViewBeginGrouping, checkListView);
}

void KRCheckListView::checkListViewEndGrouping(KRCheckListView* checkListView) {
    KR_SEND_TO_DATA_SOURCE(checkListViewEndGrouping, checkListView);
}

// The two deprecated setters warn on every call, and only when the data source has them.
void KRCheckListView::checkListViewSetStatusForItemAtIndex(KRCheckListView* checkListView, KRUInteger status,
                                                           KRUInteger index) {
    const std::shared_ptr<KRCheckListViewDataSource> dataSource = m_dataSource.lock();
    if (!dataSource || !m_dataSourceMethods.test(methodIndex(
                           KRCheckListViewDataSourceMethod::checkListViewSetStatusForItemAtIndex))) {
        return;
    }
    KRLog(QStringLiteral("[WARNING] [KRCheckListViewDataSource checkListView:setStatus:forItemAtIndex:] is "
                         "deprecated, see documentation for more info."));
    dataSource->checkListViewSetStatusForItemAtIndex(checkListView, status, index);
}

void KRCheckListView::checkListViewSetTitleForItemAtIndex(KRCheckListView* checkListView,
                                                          const QString& title, KRUInteger index) {
    const std::shared_ptr<KRCheckListViewDataSource> dataSource = m_dataSource.lock();
    if (!dataSource || !m_dataSourceMethods.test(methodIndex(
                           KRCheckListViewDataSourceMethod::checkListViewSetTitleForItemAtIndex))) {
        return;
    }
    KRLog(QStringLiteral("[WARNING] [KRCheckListViewDataSource checkListView:setTitle:forItemAtIndex:] is "
                         "deprecated, see documentation for more info."));
    dataSource->checkListViewSetTitleForItemAtIndex(checkListView, title, index);
}

#undef KR_SEND_TO_DATA_SOURCE

// Forwarders to the delegate
// ------------------------------------------------------------------------------------------------------

void KRCheckListView::checkListViewWillReloadItems(KRCheckListView* checkListView) {
    KR_SEND_TO_DELEGATE(checkListViewWillReloadItems, checkListView);
}

void KRCheckListView::checkListViewDidReloadItems(KRCheckListView* checkListView) {
    KR_SEND_TO_DELEGATE(checkListViewDidReloadItems, checkListView);
}

void KRCheckListView::checkListViewWillBeginUpdates(KRCheckListView* checkListView) {
    KR_SEND_TO_DELEGATE(checkListViewWillBeginUpdates, checkListView);
}

void KRCheckListView::checkListViewDidEndUpdates(KRCheckListView* checkListView) {
    KR_SEND_TO_DELEGATE(checkListViewDidEndUpdates, checkListView);
}

// Each update message is followed, always, by its deprecated animated twin's forwarder.
void KRCheckListView::checkListViewWillUpdateByReloadingItemsAtIndexes(KRCheckListView* checkListView,
                                                                       const KRIndexSet& indexes) {
    KR_SEND_TO_DELEGATE(checkListViewWillUpdateByReloadingItemsAtIndexes, checkListView, indexes);
    checkListViewWillUpdateByReloadingItemsAtIndexesAnimated(checkListView, indexes, false);
}

void KRCheckListView::checkListViewDidUpdateByReloadingItemsAtIndexes(KRCheckListView* checkListView,
                                                                      const KRIndexSet& indexes) {
    KR_SEND_TO_DELEGATE(checkListViewDidUpdateByReloadingItemsAtIndexes, checkListView, indexes);
    checkListViewDidUpdateByReloadingItemsAtIndexesAnimated(checkListView, indexes, false);
}

void KRCheckListView::checkListViewWillUpdateByInsertingItemsAtIndexes(KRCheckListView* checkListView,
                                                                       const KRIndexSet& indexes) {
    KR_SEND_TO_DELEGATE(checkListViewWillUpdateByInsertingItemsAtIndexes, checkListView, indexes);
    checkListViewWillUpdateByInsertingItemsAtIndexesAnimated(checkListView, indexes, false);
}

void KRCheckListView::checkListViewDidUpdateByInsertingItemsAtIndexes(KRCheckListView* checkListView,
                                                                      const KRIndexSet& indexes) {
    KR_SEND_TO_DELEGATE(checkListViewDidUpdateByInsertingItemsAtIndexes, checkListView, indexes);
    checkListViewDidUpdateByInsertingItemsAtIndexesAnimated(checkListView, indexes, false);
}

void KRCheckListView::checkListViewWillUpdateByRemovingItemsAtIndexes(KRCheckListView* checkListView,
                                                                      const KRIndexSet& indexes) {
    KR_SEND_TO_DELEGATE(checkListViewWillUpdateByRemovingItemsAtIndexes, checkListView, indexes);
    checkListViewWillUpdateByRemovingItemsAtIndexesAnimated(checkListView, indexes, false);
}

void KRCheckListView::checkListViewDidUpdateByRemovingItemsAtIndexes(KRCheckListView* checkListView,
                                                                     const KRIndexSet& indexes) {
    KR_SEND_TO_DELEGATE(checkListViewDidUpdateByRemovingItemsAtIndexes, checkListView, indexes);
    checkListViewDidUpdateByRemovingItemsAtIndexesAnimated(checkListView, indexes, false);
}

void KRCheckListView::checkListViewWillUpdateByMovingItemsAtIndexesToIndex(KRCheckListView* checkListView,
                                                                           const KRIndexSet& indexes,
                                                                           KRUInteger toIndex) {
    KR_SEND_TO_DELEGATE(checkListViewWillUpdateByMovingItemsAtIndexesToIndex, checkListView, indexes,
                        toIndex);
    checkListViewWillUpdateByMovingItemsAtIndexesToIndexAnimated(checkListView, indexes, toIndex, false);
}

void KRCheckListView::checkListViewDidUpdateByMovingItemsAtIndexesToIndex(KRCheckListView* checkListView,
                                                                          const KRIndexSet& indexes,
                                                                          KRUInteger toIndex) {
    KR_SEND_TO_DELEGATE(checkListViewDidUpdateByMovingItemsAtIndexesToIndex, checkListView, indexes, toIndex);
    checkListViewDidUpdateByMovingItemsAtIndexesToIndexAnimated(checkListView, indexes, toIndex, false);
}

// The deprecated animated twins: a delegate that still has one is warned on every call, then receives it.
#define KR_SEND_DEPRECATED_TO_DELEGATE(method, selector, ...)                                                \
    do {                                                                                                     \
        if (const std::shared_ptr<KRCheckListViewDelegate> kr_delegate = m_delegate.lock();                  \
            kr_delegate && m_delegateMethods.test(methodIndex(KRCheckListViewDelegateMethod::method))) {     \
            logDeprecatedDelegateMethod(selector);                                                           \
            kr_delegate->method(__VA_ARGS__);                                                                \
        }                                                                                                    \
    } while (false)

void KRCheckListView::checkListViewWillUpdateByReloadingItemsAtIndexesAnimated(KRCheckListView* checkListView,
                                                                               const KRIndexSet& indexes,
                                                                               bool animated) {
    KR_SEND_DEPRECATED_TO_DELEGATE(
        checkListViewWillUpdateByReloadingItemsAtIndexesAnimated,
        "checkListView:willUpdateByReloadingItemsAtIndexes:animated:", checkListView, indexes, animated);
}

void KRCheckListView::checkListViewDidUpdateByReloadingItemsAtIndexesAnimated(KRCheckListView* checkListView,
                                                                              const KRIndexSet& indexes,
                                                                              bool animated) {
    KR_SEND_DEPRECATED_TO_DELEGATE(
        checkListViewDidUpdateByReloadingItemsAtIndexesAnimated,
        "checkListView:didUpdateByReloadingItemsAtIndexes:animated:", checkListView, indexes, animated);
}

void KRCheckListView::checkListViewWillUpdateByInsertingItemsAtIndexesAnimated(KRCheckListView* checkListView,
                                                                               const KRIndexSet& indexes,
                                                                               bool animated) {
    KR_SEND_DEPRECATED_TO_DELEGATE(
        checkListViewWillUpdateByInsertingItemsAtIndexesAnimated,
        "checkListView:willUpdateByInsertingItemsAtIndexes:animated:", checkListView, indexes, animated);
}

void KRCheckListView::checkListViewDidUpdateByInsertingItemsAtIndexesAnimated(KRCheckListView* checkListView,
                                                                              const KRIndexSet& indexes,
                                                                              bool animated) {
    KR_SEND_DEPRECATED_TO_DELEGATE(
        checkListViewDidUpdateByInsertingItemsAtIndexesAnimated,
        "checkListView:didUpdateByInsertingItemsAtIndexes:animated:", checkListView, indexes, animated);
}

void KRCheckListView::checkListViewWillUpdateByRemovingItemsAtIndexesAnimated(KRCheckListView* checkListView,
                                                                              const KRIndexSet& indexes,
                                                                              bool animated) {
    KR_SEND_DEPRECATED_TO_DELEGATE(
        checkListViewWillUpdateByRemovingItemsAtIndexesAnimated,
        "checkListView:willUpdateByRemovingItemsAtIndexes:animated:", checkListView, indexes, animated);
}

void KRCheckListView::checkListViewDidUpdateByRemovingItemsAtIndexesAnimated(KRCheckListView* checkListView,
                                                                             const KRIndexSet& indexes,
                                                                             bool animated) {
    KR_SEND_DEPRECATED_TO_DELEGATE(checkListViewDidUpdateByRemovingItemsAtIndexesAnimated,
                                   "checkListView:didUpdateByRemovingItemsAtIndexes:animated:", checkListView,
                                   indexes, animated);
}

void KRCheckListView::checkListViewWillUpdateByMovingItemsAtIndexesToIndexAnimated(
    KRCheckListView* checkListView, const KRIndexSet& indexes, KRUInteger toIndex, bool animated) {
    KR_SEND_DEPRECATED_TO_DELEGATE(checkListViewWillUpdateByMovingItemsAtIndexesToIndexAnimated,
                                   "checkListView:willUpdateByMovingItemsAtIndexes:toIndex:animated:",
                                   checkListView, indexes, toIndex, animated);
}

void KRCheckListView::checkListViewDidUpdateByMovingItemsAtIndexesToIndexAnimated(
    KRCheckListView* checkListView, const KRIndexSet& indexes, KRUInteger toIndex, bool animated) {
    KR_SEND_DEPRECATED_TO_DELEGATE(checkListViewDidUpdateByMovingItemsAtIndexesToIndexAnimated,
                                   "checkListView:didUpdateByMovingItemsAtIndexes:toIndex:animated:",
                                   checkListView, indexes, toIndex, animated);
}

#undef KR_SEND_DEPRECATED_TO_DELEGATE

void KRCheckListView::checkListViewWillBeginEditingItemAtIndex(KRCheckListView* checkListView,
                                                               KRUInteger index) {
    KR_SEND_TO_DELEGATE(checkListViewWillBeginEditingItemAtIndex, checkListView, index);
}

void KRCheckListView::checkListViewDidBeginEditingItemAtIndex(KRCheckListView* checkListView,
                                                              KRUInteger index) {
    KR_SEND_TO_DELEGATE(checkListViewDidBeginEditingItemAtIndex, checkListView, index);
}

void KRCheckListView::checkListViewWillEndEditingItemAtIndex(KRCheckListView* checkListView,
                                                             KRUInteger index) {
    KR_SEND_TO_DELEGATE(checkListViewWillEndEditingItemAtIndex, checkListView, index);
}

void KRCheckListView::checkListViewDidEndEditingItemAtIndex(KRCheckListView* checkListView,
                                                            KRUInteger index) {
    KR_SEND_TO_DELEGATE(checkListViewDidEndEditingItemAtIndex, checkListView, index);
}

void KRCheckListView::checkListViewWillSelectItemsAtIndexes(KRCheckListView* checkListView,
                                                            const KRIndexSet& indexes) {
    KR_SEND_TO_DELEGATE(checkListViewWillSelectItemsAtIndexes, checkListView, indexes);
}

void KRCheckListView::checkListViewDidSelectItemsAtIndexes(KRCheckListView* checkListView,
                                                           const KRIndexSet& indexes) {
    KR_SEND_TO_DELEGATE(checkListViewDidSelectItemsAtIndexes, checkListView, indexes);
}

void KRCheckListView::checkListViewDidChangeSizeThatFits(KRCheckListView* checkListView) {
    KR_SEND_TO_DELEGATE(checkListViewDidChangeSizeThatFits, checkListView);
}

void KRCheckListView::checkListViewWillSetStatusForItemAtIndex(KRCheckListView* checkListView,
                                                               KRUInteger index) {
    KR_SEND_TO_DELEGATE(checkListViewWillSetStatusForItemAtIndex, checkListView, index);
}

void KRCheckListView::checkListViewDidSetStatusForItemAtIndex(KRCheckListView* checkListView,
                                                              KRUInteger index) {
    KR_SEND_TO_DELEGATE(checkListViewDidSetStatusForItemAtIndex, checkListView, index);
}

void KRCheckListView::checkListViewWillSetTitleForItemAtIndex(KRCheckListView* checkListView,
                                                              KRUInteger index) {
    KR_SEND_TO_DELEGATE(checkListViewWillSetTitleForItemAtIndex, checkListView, index);
}

void KRCheckListView::checkListViewDidSetTitleForItemAtIndex(KRCheckListView* checkListView,
                                                             KRUInteger index) {
    KR_SEND_TO_DELEGATE(checkListViewDidSetTitleForItemAtIndex, checkListView, index);
}

void KRCheckListView::checkListViewWillInsertItemsAtIndexes(KRCheckListView* checkListView,
                                                            const KRIndexSet& indexes) {
    KR_SEND_TO_DELEGATE(checkListViewWillInsertItemsAtIndexes, checkListView, indexes);
}

void KRCheckListView::checkListViewDidInsertItemsAtIndexes(KRCheckListView* checkListView,
                                                           const KRIndexSet& indexes) {
    KR_SEND_TO_DELEGATE(checkListViewDidInsertItemsAtIndexes, checkListView, indexes);
}

void KRCheckListView::checkListViewWillRemoveItemsAtIndexes(KRCheckListView* checkListView,
                                                            const KRIndexSet& indexes) {
    KR_SEND_TO_DELEGATE(checkListViewWillRemoveItemsAtIndexes, checkListView, indexes);
}

void KRCheckListView::checkListViewDidRemoveItemsAtIndexes(KRCheckListView* checkListView,
                                                           const KRIndexSet& indexes) {
    KR_SEND_TO_DELEGATE(checkListViewDidRemoveItemsAtIndexes, checkListView, indexes);
}

void KRCheckListView::checkListViewWillMoveItemsAtIndexesToIndex(KRCheckListView* checkListView,
                                                                 const KRIndexSet& indexes,
                                                                 KRUInteger toIndex) {
    KR_SEND_TO_DELEGATE(checkListViewWillMoveItemsAtIndexesToIndex, checkListView, indexes, toIndex);
}

void KRCheckListView::checkListViewDidMoveItemsAtIndexesToIndex(KRCheckListView* checkListView,
                                                                const KRIndexSet& indexes,
                                                                KRUInteger toIndex) {
    KR_SEND_TO_DELEGATE(checkListViewDidMoveItemsAtIndexesToIndex, checkListView, indexes, toIndex);
}

void KRCheckListView::checkListViewDidCommitEditing(KRCheckListView* checkListView) {
    KR_SEND_TO_DELEGATE(checkListViewDidCommitEditing, checkListView);
}

void KRCheckListView::checkListViewDidCancelEditing(KRCheckListView* checkListView) {
    KR_SEND_TO_DELEGATE(checkListViewDidCancelEditing, checkListView);
}

// The focus forwarders also keep the gaining and losing flags: each spans from its will-message (set before
// the delegate hears it) to its deferred did-message (cleared after).
void KRCheckListView::checkListViewWillGainFocus(KRCheckListView* checkListView) {
    m_gainingFocus = true;
    KR_SEND_TO_DELEGATE(checkListViewWillGainFocus, checkListView);
}

void KRCheckListView::checkListViewDidGainFocus(KRCheckListView* checkListView) {
    KR_SEND_TO_DELEGATE(checkListViewDidGainFocus, checkListView);
    m_gainingFocus = false;
}

void KRCheckListView::checkListViewWillLoseFocus(KRCheckListView* checkListView) {
    m_losingFocus = true;
    KR_SEND_TO_DELEGATE(checkListViewWillLoseFocus, checkListView);
}

void KRCheckListView::checkListViewDidLoseFocus(KRCheckListView* checkListView) {
    KR_SEND_TO_DELEGATE(checkListViewDidLoseFocus, checkListView);
    m_losingFocus = false;
}

bool KRCheckListView::checkListViewTextViewDoCommandBySelector(KRCheckListView* checkListView,
                                                               KRTextView* textView,
                                                               const KRSelector& selector) {
    const std::shared_ptr<KRCheckListViewDelegate> delegate = m_delegate.lock();
    if (!delegate ||
        !delegateRespondsTo(KRCheckListViewDelegateMethod::checkListViewTextViewDoCommandBySelector)) {
        return false;
    }
    return delegate->checkListViewTextViewDoCommandBySelector(checkListView, textView, selector);
}

QUndoStack* KRCheckListView::checkListViewUndoManagerForTextView(KRCheckListView* checkListView,
                                                                 KRTextView* textView) {
    const std::shared_ptr<KRCheckListViewDelegate> delegate = m_delegate.lock();
    if (!delegate ||
        !delegateRespondsTo(KRCheckListViewDelegateMethod::checkListViewUndoManagerForTextView)) {
        return nullptr;
    }
    return delegate->checkListViewUndoManagerForTextView(checkListView, textView);
}

#undef KR_SEND_TO_DELEGATE

// As the delegate of its rows
// ------------------------------------------------------------------------------------------------------

QString KRCheckListView::checkListItemViewValidateChangedTitle(KRCheckListItemView* itemView,
                                                               const QString& title) {
    const KRUInteger index = checkListViewIndexForItemView(itemView);
    checkListViewUpdatePlaceholderForEachItemView();
    return checkListViewValidateChangedTitleForItemAtIndex(this, title, index);
}

KRUInteger KRCheckListView::checkListItemViewValidateChangedStatus(KRCheckListItemView* itemView,
                                                                   KRUInteger status) {
    const KRUInteger index = checkListViewIndexForItemView(itemView);
    return checkListViewValidateChangedStatusForItemAtIndex(this, status, index);
}

void KRCheckListView::checkListItemViewDidChangeSizeThatFits(KRCheckListItemView*) {
    // The rows take their new places at once, even inside an animation someone else opened.
    KRView::performWithoutAnimation([this] {
        setNeedsLayout(true);
        layoutIfNeeded();
    });
}

void KRCheckListView::checkListItemViewDidChangeHighlighted(KRCheckListItemView*) {
    checkListViewUpdateDividers();
}

std::shared_ptr<KRTextView> KRCheckListView::checkListItemViewFieldEditorForView(KRCheckListItemView*,
                                                                                 KRView*) {
    return m_fieldEditor;
}
