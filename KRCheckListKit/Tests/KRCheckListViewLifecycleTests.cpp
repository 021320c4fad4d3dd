// The list's construction and destruction, its first values, its registry of rows, its observation contexts,
// and the forwarders to its clients: their defaults when a client has nothing to say, and the warnings of
// the deprecated methods.
#include "KRCheckListKit.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListDropPlaceholderContentView.h"
#include "KRCheckListItemViewTestSupport.h"
#include "KRCheckListViewCoreTestClients.h"

#include "Foundation/KRAssertionHandler.h"
#include "Foundation/KRLog.h"
#include "Views/KRWindow.h"

#include <gtest/gtest.h>

#include <memory>

using namespace KRCheckListViewCoreTesting;
using KRCheckListItemViewTesting::TraceRecorder;

namespace {

const QStringList loadSteps{
    QStringLiteral("checkListViewSetUpSelf"),
    QStringLiteral("checkListViewSetUpFieldEditor"),
    QStringLiteral("checkListViewSetUpDummyCheckListItemView"),
    QStringLiteral("checkListItemViewSetUpDropPlaceholderContentView"),
    QStringLiteral("checkListViewHookUp"),
    QStringLiteral("checkListViewBeginTrackingMouse"),
    QStringLiteral("checkListViewBeginObservingKeyPaths"),
    QStringLiteral("checkListViewBeginObservingNotifications"),
    QStringLiteral("checkListItemViewRegisterForDraggedTypes"),
};

const QStringList unloadSteps{
    QStringLiteral("checkListViewEndObservingNotifications"),
    QStringLiteral("checkListViewEndObservingKeyPaths"),
    QStringLiteral("checkListViewEndTrackingMouse"),
    QStringLiteral("checkListViewBreakUp"),
    QStringLiteral("checkListItemViewTearDownDropPlaceholderContentView"),
    QStringLiteral("checkListViewTearDownDummyCheckListItemView"),
    QStringLiteral("checkListViewTearDownFieldEditor"),
    QStringLiteral("checkListViewTearDownSelf"),
};

// A delegate that overrides nothing: the list must send it nothing.
class SilentDelegate : public KRCheckListViewDelegate {};

// A data source with the required methods only, each logged.
class MinimalDataSource : public KRCheckListViewDataSource {
public:
    KRUInteger checkListViewNumberOfItems(KRCheckListView*) override {
        calls << QStringLiteral("count");
        return 0;
    }
    QJsonValue checkListViewIdentifierForItemAtIndex(KRCheckListView*, KRUInteger) override {
        calls << QStringLiteral("identifier");
        return QJsonValue(7);
    }
    KRUInteger checkListViewStatusForItemAtIndex(KRCheckListView*, KRUInteger) override {
        calls << QStringLiteral("status");
        return 2;
    }
    QString checkListViewTitleForItemAtIndex(KRCheckListView*, KRUInteger) override {
        calls << QStringLiteral("title");
        return QStringLiteral("t");
    }
    KRUInteger checkListViewValidateChangedStatusForItemAtIndex(KRCheckListView*, KRUInteger,
                                                                KRUInteger) override {
        calls << QStringLiteral("validateStatus");
        return 1;
    }
    QString checkListViewValidateChangedTitleForItemAtIndex(KRCheckListView*, const QString&,
                                                            KRUInteger) override {
        calls << QStringLiteral("validateTitle");
        return QStringLiteral("v");
    }
    void checkListViewInsertItemsAtIndexes(KRCheckListView*, const KRIndexSet&) override {
        calls << QStringLiteral("insert");
    }
    void checkListViewRemoveItemsAtIndexes(KRCheckListView*, const KRIndexSet&) override {
        calls << QStringLiteral("remove");
    }
    void checkListViewMoveItemsAtIndexesToIndex(KRCheckListView*, const KRIndexSet&, KRUInteger) override {
        calls << QStringLiteral("move");
    }
    QStringList calls;
};

// Still uses one deprecated form: the animated will-insert message.
class AnimatedInsertDelegate : public KRCheckListViewDelegate {
public:
    void checkListViewWillUpdateByInsertingItemsAtIndexesAnimated(KRCheckListView* list,
                                                                  const KRIndexSet& indexes,
                                                                  bool animated) override {
        calls.push_back({indexes, animated, list->numberOfItems()});
    }
    struct Call {
        KRIndexSet indexes;
        bool animated;
        KRUInteger rowsAtThatMoment;
    };
    std::vector<Call> calls;
};

QString deprecatedDelegateWarning(const char* selector) {
    return QStringLiteral("[WARNING] [KRCheckListViewDelegate %1] is deprecated, please use the non-animated "
                          "version instead.")
        .arg(QLatin1String(selector));
}

class KRCheckListViewLifecycleTests : public ::testing::Test {
protected:
    void TearDown() override { KRAssertionHandler::setCurrentHandler(nullptr); }

    std::shared_ptr<MessageLog> log = std::make_shared<MessageLog>();

    // A list showing items with the given titles, through a data source that changes its items at once.
    std::shared_ptr<KRCheckListView> makeList(const QStringList& titles) {
        auto list = std::make_shared<KRCheckListView>(KRRectMake(0, 0, 320, 400));
        dataSource = std::make_shared<MemoryDataSource>(log);
        dataSource->itemList = MemoryDataSource::items(titles);
        list->setDataSource(dataSource);
        list->reloadItems();
        return list;
    }

    std::shared_ptr<MemoryDataSource> dataSource;
};

} // namespace

// Load and unload
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewLifecycleTests, LoadRunsItsStepsInOrder) {
    TraceRecorder trace;
    auto list = std::make_shared<KRCheckListView>();
    EXPECT_EQ(trace.stepsOf(list.get()), loadSteps);
    // The dummy row is a row like any other, with its own steps.
    EXPECT_EQ(trace.stepsOf(list->dummyCheckListItemView().get()).value(0),
              QStringLiteral("checkListItemViewSetUpSelf"));
}

TEST_F(KRCheckListViewLifecycleTests, DestructionRunsTheUnloadStepsInTheExactReverseOrder) {
    TraceRecorder trace;
    auto list = makeList({QStringLiteral("One"), QStringLiteral("Two")});
    const void* address = list.get();
    trace.clear();
    list.reset();
    KR_CORE_EXPECT_LINES(trace.stepsOf(address), unloadSteps);
}

TEST_F(KRCheckListViewLifecycleTests, UnloadTearsDownWhatLoadSetUp) {
    auto list = makeList({QStringLiteral("One")});
    const std::shared_ptr<KRCheckListDropPlaceholderContentView> contentView =
        list->dropPlaceholderContentView();
    list->checkListViewUnload();

    EXPECT_EQ(contentView->superview(), nullptr);
    EXPECT_EQ(list->dropPlaceholderContentView(), nullptr);
    EXPECT_EQ(list->dummyCheckListItemView(), nullptr);
    EXPECT_EQ(list->fieldEditor(), nullptr);
    EXPECT_TRUE(list->checkListItemViews().empty());
    EXPECT_TRUE(list->checkListItemViewsByIdentifier().isEmpty());
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_FALSE(list->backgroundColor().isValid());
    // Deliberately 0, not KRNotFound: nothing reads it afterwards.
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    // The rows stay in the view tree; they go with the list.
    EXPECT_EQ(list->subviews().size(), 1u);
}

TEST_F(KRCheckListViewLifecycleTests, ARowThatOutlivesItsListNoLongerReachesIt) {
    auto list = makeList({QStringLiteral("One")});
    const std::shared_ptr<KRCheckListItemView> row = list->checkListItemViews().front();
    EXPECT_EQ(row->delegate(), list.get());
    list.reset();
    EXPECT_EQ(row->delegate(), nullptr);
    EXPECT_EQ(row->checkListItemViewValidateChangedTitle(row.get(), QStringLiteral("x")),
              QStringLiteral("x"));
}

// First values
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewLifecycleTests, ANewListHasItsFirstValues) {
    auto list = std::make_shared<KRCheckListView>(KRRectMake(0, 0, 320, 400));

    EXPECT_EQ(list->dataSource(), nullptr);
    EXPECT_EQ(list->delegate(), nullptr);
    EXPECT_EQ(list->placeholder(), QStringLiteral("Checklist"));
    EXPECT_EQ(list->numberOfItems(), 0u);
    EXPECT_TRUE(list->checkListItemViews().empty());
    EXPECT_TRUE(list->checkListItemViewsByIdentifier().isEmpty());
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound);
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_TRUE(list->indexesForEditedOrSelectedItems().isEmpty());
    EXPECT_EQ(list->pivotIndex(), 0);
    EXPECT_FALSE(list->hasFocus());
    EXPECT_FALSE(list->isUpdating());
    EXPECT_FALSE(list->isReloading());
    EXPECT_FALSE(list->isBecomingFirstResponder());
    EXPECT_FALSE(list->isBeginningEditing());
    EXPECT_FALSE(list->isEndingEditing());
    EXPECT_FALSE(list->isGainingFocus());
    EXPECT_FALSE(list->isLosingFocus());
    EXPECT_FALSE(list->isSelecting());
    EXPECT_FALSE(list->didHandleLastKeyDownEvent());
    EXPECT_FALSE(list->isDragging());
    EXPECT_EQ(list->heightOfFirstDraggedItem(), 0.0);
    EXPECT_FALSE(list->isUpdateScheduled());
    EXPECT_EQ(list->lastSizeThatFits(), KRSizeZero);
    EXPECT_EQ(list->dropPlaceholderFrame(), KRRectZero);
    EXPECT_EQ(list->dropPlaceholderIndex(), 0u);
    EXPECT_TRUE(KRRectIsNull(list->insertionPointRectOnScreen()));
    EXPECT_EQ(list->insertionPointRect(), KRRectZero);
    EXPECT_EQ(list->backgroundColor(), KRCheckListDefaults::fillColor());
}

TEST_F(KRCheckListViewLifecycleTests, ANewListOwnsItsFieldEditorDummyRowAndPlaceholderContainer) {
    auto list = std::make_shared<KRCheckListView>();

    ASSERT_NE(list->fieldEditor(), nullptr);
    EXPECT_TRUE(list->fieldEditor()->isFieldEditor());
    ASSERT_NE(list->dummyCheckListItemView(), nullptr);
    EXPECT_EQ(list->dummyCheckListItemView()->superview(), nullptr);
    ASSERT_NE(list->dropPlaceholderContentView(), nullptr);
    EXPECT_EQ(list->dropPlaceholderContentView()->superview(), list.get());
    EXPECT_EQ(list->subviews().size(), 1u);
}

TEST_F(KRCheckListViewLifecycleTests, TheListIsADragDestinationForItsItemsOnly) {
    auto list = std::make_shared<KRCheckListView>();
    EXPECT_EQ(KRCheckListItemsAsJSONPasteboardType,
              QStringLiteral("org.krtodo.KRCheckListItemsPasteboardType"));
    EXPECT_TRUE(
        KRCheckListItemsAsJSONPasteboardType.endsWith(QStringLiteral(".KRCheckListItemsPasteboardType")));
    KR_CORE_EXPECT_LINES(list->registeredDraggedTypes(), QStringList{KRCheckListItemsAsJSONPasteboardType});
}

TEST_F(KRCheckListViewLifecycleTests, AClickInAnInactiveWindowActsAtOnce) {
    auto list = std::make_shared<KRCheckListView>();
    EXPECT_TRUE(list->acceptsFirstMouse(nullptr));
}

TEST_F(KRCheckListViewLifecycleTests, ThePlaceholderIsKeptForTheHost) {
    auto list = makeList({QString(), QString()});
    list->setPlaceholder(QStringLiteral("Groceries"));
    EXPECT_EQ(list->placeholder(), QStringLiteral("Groceries"));
    list->reloadItems();
    // No code of the list reads it.
    for (const auto& row : list->checkListItemViews()) {
        EXPECT_EQ(row->placeholder(), QStringLiteral(""));
    }
}

// Registry
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewLifecycleTests, TheRegistryMapsIndexesRowsFieldsAndIdentifiers) {
    auto list = makeList({QStringLiteral("Milk"), QStringLiteral("Eggs"), QStringLiteral("Bread")});
    dataSource->itemList[1].status = 1;

    ASSERT_EQ(list->numberOfItems(), 3u);
    for (KRUInteger index = 0; index < 3; ++index) {
        KRCheckListItemView* row = list->checkListViewItemViewForItemAtIndex(index);
        EXPECT_EQ(row, list->checkListItemViews()[index].get());
        EXPECT_EQ(row->superview(), list.get());
        EXPECT_EQ(list->checkListViewIndexForItemView(row), index);
        EXPECT_EQ(list->checkListViewTitleTextFieldForIndex(index), row->titleTextField().get());
        EXPECT_EQ(list->checkListViewIndexForTitleTextField(row->titleTextField().get()), index);
        const QJsonValue identifier = QJsonValue(QStringLiteral("item-%1").arg(index));
        EXPECT_EQ(list->identifierForItemAtIndex(index), identifier);
        EXPECT_EQ(row->itemIdentifier(), identifier);
        EXPECT_EQ(row->objectValue(), identifier);
        EXPECT_EQ(list->checkListItemViewsByIdentifier().value(identifier).get(), row);
    }
    EXPECT_EQ(list->titleForItemAtIndex(1), QStringLiteral("Eggs"));
    // The readers answer from the rows: what the data source last reported.
    EXPECT_EQ(list->statusForItemAtIndex(1), 0u);
    dataSource->itemList[1].title = QStringLiteral("Ham");
    EXPECT_EQ(list->titleForItemAtIndex(1), QStringLiteral("Eggs"));
}

TEST_F(KRCheckListViewLifecycleTests, ViewsThatAreNotItsRowsHaveNoIndex) {
    auto list = makeList({QStringLiteral("Milk")});
    auto other = makeList({QStringLiteral("Eggs")});
    auto stranger = std::make_shared<KRView>();
    list->addSubview(stranger);

    EXPECT_EQ(list->checkListViewIndexForItemView(nullptr), KRNotFound);
    EXPECT_EQ(list->checkListViewIndexForItemView(list->dummyCheckListItemView().get()), KRNotFound);
    EXPECT_EQ(list->checkListViewIndexForItemView(other->checkListItemViews().front().get()), KRNotFound);
    EXPECT_EQ(list->checkListViewIndexForTitleTextField(nullptr), KRNotFound);
    EXPECT_EQ(list->checkListViewIndexForTitleTextField(stranger.get()), KRNotFound);
    EXPECT_EQ(list->checkListViewIndexForTitleTextField(other->checkListViewTitleTextFieldForIndex(0)),
              KRNotFound);
    EXPECT_EQ(
        list->checkListViewIndexForTitleTextField(list->dummyCheckListItemView()->titleTextField().get()),
        KRNotFound);
}

TEST_F(KRCheckListViewLifecycleTests, AnyViewInsideARowFindsThatRowsIndex) {
    auto list = makeList({QStringLiteral("Milk"), QStringLiteral("Eggs")});
    KRCheckListItemView* row = list->checkListViewItemViewForItemAtIndex(1);
    auto inside = std::make_shared<KRView>();
    row->titleTextField()->addSubview(inside);
    EXPECT_EQ(list->checkListViewIndexForTitleTextField(inside.get()), 1u);
    EXPECT_EQ(list->checkListViewIndexForTitleTextField(row->checkBoxButtonView().get()), 1u);
    EXPECT_EQ(list->checkListViewIndexForTitleTextField(row), 1u);
}

TEST_F(KRCheckListViewLifecycleTests, IndexesOutOfRangeAreTheArraysRangeFailure) {
    auto list = makeList({QStringLiteral("Milk")});
    EXPECT_THROW(list->checkListViewItemViewForItemAtIndex(1), std::out_of_range);
    EXPECT_THROW(list->titleForItemAtIndex(5), std::out_of_range);
}

TEST_F(KRCheckListViewLifecycleTests, ARowsObjectValueIsItsItemIdentifier) {
    KRCheckListItemView row;
    EXPECT_TRUE(row.objectValue().isNull());
    row.setItemIdentifier(QJsonValue(42));
    EXPECT_EQ(row.objectValue(), QJsonValue(42));
    row.setObjectValue(QJsonValue(QStringLiteral("x")));
    EXPECT_EQ(row.itemIdentifier(), QJsonValue(QStringLiteral("x")));
}

// Observation
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewLifecycleTests, TheUpdateContextRefreshesThePlaceholders) {
    auto list = makeList({QString(), QStringLiteral("Eggs")});
    KRCheckListItemView* first = list->checkListViewItemViewForItemAtIndex(0);
    KRCheckListItemView* second = list->checkListViewItemViewForItemAtIndex(1);
    first->setPlaceholder(QStringLiteral("Add an item"));
    second->setPlaceholder(QStringLiteral("Never shown"));

    // Registered by someone else (the list's own hooks register nothing): a title change of the first row.
    first->addObserver(list.get(), "title", KRKeyValueObservingOptionOld | KRKeyValueObservingOptionNew,
                       &KRCheckListObserveKeyPathsTriggeringSetNeedsUpdateContext);
    first->setTitle(QStringLiteral("Milk"));
    first->removeObserver(list.get(), "title", &KRCheckListObserveKeyPathsTriggeringSetNeedsUpdateContext);

    EXPECT_EQ(first->placeholder(), QStringLiteral(""));
    EXPECT_EQ(second->placeholder(), QStringLiteral(""));
}

TEST_F(KRCheckListViewLifecycleTests, TheLayoutContextMarksTheListForLayout) {
    auto list = makeList({QStringLiteral("Milk")});
    list->layoutIfNeeded();
    ASSERT_FALSE(list->needsLayout());
    list->observeValueForKeyPath("frame", list.get(), KRKeyValueChange(),
                                 &KRCheckListObserveKeyPathsTriggeringSetNeedsLayoutContext);
    EXPECT_TRUE(list->needsLayout());
}

TEST_F(KRCheckListViewLifecycleTests, ContextsAreRecognisedByIdentityNotByText) {
    auto list = makeList({QStringLiteral("Milk"), QStringLiteral("Eggs")});
    list->layoutIfNeeded();
    KRCheckListItemView* second = list->checkListViewItemViewForItemAtIndex(1);
    second->setPlaceholder(QStringLiteral("Kept"));
    static const char* const sameTextElsewhere = "KRCheckListObserveKeyPathsTriggeringSetNeedsUpdateContext";
    static const char* const sameLayoutTextElsewhere =
        "KRCheckListObserveKeyPathsTriggeringSetNeedsLayoutContext";

    list->observeValueForKeyPath("title", second, KRKeyValueChange(), &sameTextElsewhere);
    list->observeValueForKeyPath("frame", list.get(), KRKeyValueChange(), &sameLayoutTextElsewhere);
    list->observeValueForKeyPath("title", second, KRKeyValueChange(),
                                 KRCheckListObserveKeyPathsTriggeringSetNeedsUpdateContext);

    EXPECT_EQ(second->placeholder(), QStringLiteral("Kept"));
    EXPECT_FALSE(list->needsLayout());
}

TEST_F(KRCheckListViewLifecycleTests, TheListObservesNothingOfItsOwn) {
    auto list = makeList({QStringLiteral("Milk")});
    EXPECT_EQ(list->observationCount(), 0u);
}

// Forwarders: defaults
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewLifecycleTests, ADelegateThatOverridesNothingIsSentNothing) {
    auto list = makeList({QStringLiteral("Milk"), QStringLiteral("Eggs")});
    auto delegate = std::make_shared<SilentDelegate>();
    list->setDelegate(delegate);

#define KR_EXPECT_NOT_RESPONDING(method)                                                                     \
    EXPECT_FALSE(list->delegateRespondsTo(KRCheckListViewDelegateMethod::method)) << #method;
    KR_CHECKLIST_VIEW_DELEGATE_METHODS(KR_EXPECT_NOT_RESPONDING)
#undef KR_EXPECT_NOT_RESPONDING

    EXPECT_FALSE(list->checkListViewTextViewDoCommandBySelector(list.get(), list->fieldEditor().get(),
                                                                KRSelector("moveUp:")));
    EXPECT_EQ(list->checkListViewUndoManagerForTextView(list.get(), list->fieldEditor().get()), nullptr);

    KRLogCapture capture;
    list->beginUpdates();
    list->updateByReloadingItemAtIndex(0);
    list->updateByInsertingItemAtIndex(0);
    list->updateByRemovingItemAtIndex(0);
    list->updateByMovingItemAtIndexToIndex(0, 2);
    list->endUpdates();
    list->setStatusForItemAtIndex(1, 0);
    list->setTitleForItemAtIndex(QStringLiteral("x"), 0);
    EXPECT_TRUE(capture.lines().isEmpty());
}

TEST_F(KRCheckListViewLifecycleTests, WithoutADelegateTheAnswersAreNoAndNull) {
    auto list = std::make_shared<KRCheckListView>();
    EXPECT_FALSE(list->delegateRespondsTo(KRCheckListViewDelegateMethod::checkListViewWillReloadItems));
    EXPECT_FALSE(list->checkListViewTextViewDoCommandBySelector(list.get(), nullptr, KRSelector("noop:")));
    EXPECT_EQ(list->checkListViewUndoManagerForTextView(list.get(), nullptr), nullptr);
    list->checkListViewWillReloadItems(list.get());
    list->checkListViewDidChangeSizeThatFits(list.get());
    list->checkListViewWillUpdateByMovingItemsAtIndexesToIndexAnimated(list.get(), KRIndexSet(0), 1, false);
}

TEST_F(KRCheckListViewLifecycleTests, TheAnswersOfADelegateThatOverridesThemAreReturned) {
    auto list = std::make_shared<KRCheckListView>();
    auto delegate = std::make_shared<RecordingDelegate>(log);
    delegate->doCommandAnswer = true;
    QUndoStack* const someUndoStack = reinterpret_cast<QUndoStack*>(0x10);
    delegate->undoManagerAnswer = someUndoStack;
    list->setDelegate(delegate);

    EXPECT_TRUE(
        list->delegateRespondsTo(KRCheckListViewDelegateMethod::checkListViewTextViewDoCommandBySelector));
    EXPECT_TRUE(list->checkListViewTextViewDoCommandBySelector(list.get(), nullptr, KRSelector("moveUp:")));
    EXPECT_EQ(list->checkListViewUndoManagerForTextView(list.get(), nullptr), someUndoStack);
    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewTextViewDoCommandBySelector moveUp:"),
                                      QStringLiteral("checkListViewUndoManagerForTextView")}));
}

TEST_F(KRCheckListViewLifecycleTests, TheClientsAreReadAfreshAtEveryMessageAndHeldWeakly) {
    auto list = std::make_shared<KRCheckListView>();
    auto delegate = std::make_shared<RecordingDelegate>(log);
    list->setDelegate(delegate);
    list->checkListViewWillReloadItems(list.get());
    EXPECT_EQ(log->lines.size(), 1);

    delegate.reset();
    EXPECT_EQ(list->delegate(), nullptr);
    EXPECT_FALSE(list->delegateRespondsTo(KRCheckListViewDelegateMethod::checkListViewWillReloadItems));
    list->checkListViewWillReloadItems(list.get());
    EXPECT_EQ(log->lines.size(), 1);

    auto replacement = std::make_shared<RecordingDelegate>(log);
    list->setDelegate(replacement);
    list->checkListViewDidReloadItems(list.get());
    list->setDelegate(nullptr);
    list->checkListViewDidReloadItems(list.get());
    KR_CORE_EXPECT_LINES(log->lines, (QStringList{QStringLiteral("checkListViewWillReloadItems"),
                                                  QStringLiteral("checkListViewDidReloadItems")}));
}

TEST_F(KRCheckListViewLifecycleTests, RequiredDataSourceMethodsAreSentUnchecked) {
    auto list = std::make_shared<KRCheckListView>();
    auto minimal = std::make_shared<MinimalDataSource>();
    list->setDataSource(minimal);

    EXPECT_EQ(list->checkListViewNumberOfItems(list.get()), 0u);
    EXPECT_EQ(list->checkListViewIdentifierForItemAtIndex(list.get(), 0), QJsonValue(7));
    EXPECT_EQ(list->checkListViewStatusForItemAtIndex(list.get(), 0), 2u);
    EXPECT_EQ(list->checkListViewTitleForItemAtIndex(list.get(), 0), QStringLiteral("t"));
    EXPECT_EQ(list->checkListViewValidateChangedStatusForItemAtIndex(list.get(), 0, 0), 1u);
    EXPECT_EQ(list->checkListViewValidateChangedTitleForItemAtIndex(list.get(), QStringLiteral("a"), 0),
              QStringLiteral("v"));
    list->checkListViewInsertItemsAtIndexes(list.get(), KRIndexSet(0));
    list->checkListViewRemoveItemsAtIndexes(list.get(), KRIndexSet(0));
    list->checkListViewMoveItemsAtIndexesToIndex(list.get(), KRIndexSet(0), 1);
    KR_CORE_EXPECT_LINES(
        minimal->calls,
        (QStringList{QStringLiteral("count"), QStringLiteral("identifier"), QStringLiteral("status"),
                     QStringLiteral("title"), QStringLiteral("validateStatus"),
                     QStringLiteral("validateTitle"), QStringLiteral("insert"), QStringLiteral("remove"),
                     QStringLiteral("move")}));

    // The optional ones it lacks are not sent, and nothing is logged.
    EXPECT_FALSE(list->dataSourceRespondsTo(KRCheckListViewDataSourceMethod::checkListViewBeginGrouping));
    EXPECT_FALSE(list->dataSourceRespondsTo(KRCheckListViewDataSourceMethod::checkListViewEndGrouping));
    EXPECT_FALSE(
        list->dataSourceRespondsTo(KRCheckListViewDataSourceMethod::checkListViewSetStatusForItemAtIndex));
    EXPECT_FALSE(
        list->dataSourceRespondsTo(KRCheckListViewDataSourceMethod::checkListViewSetTitleForItemAtIndex));
    KRLogCapture capture;
    list->checkListViewBeginGrouping(list.get());
    list->checkListViewEndGrouping(list.get());
    list->checkListViewSetStatusForItemAtIndex(list.get(), 1, 0);
    list->checkListViewSetTitleForItemAtIndex(list.get(), QStringLiteral("x"), 0);
    EXPECT_TRUE(capture.lines().isEmpty());
    EXPECT_EQ(minimal->calls.size(), 9);
}

TEST_F(KRCheckListViewLifecycleTests, WithoutADataSourceEveryQueryAnswersZero) {
    auto list = std::make_shared<KRCheckListView>();
    EXPECT_EQ(list->checkListViewNumberOfItems(list.get()), 0u);
    EXPECT_TRUE(list->checkListViewIdentifierForItemAtIndex(list.get(), 3).isNull());
    EXPECT_EQ(list->checkListViewStatusForItemAtIndex(list.get(), 3), 0u);
    EXPECT_TRUE(list->checkListViewTitleForItemAtIndex(list.get(), 3).isNull());
    EXPECT_EQ(list->checkListViewValidateChangedStatusForItemAtIndex(list.get(), 2, 3), 0u);
    EXPECT_TRUE(
        list->checkListViewValidateChangedTitleForItemAtIndex(list.get(), QStringLiteral("a"), 3).isNull());
    list->checkListViewInsertItemsAtIndexes(list.get(), KRIndexSet(0));
    list->checkListViewRemoveItemsAtIndexes(list.get(), KRIndexSet(0));
    list->checkListViewMoveItemsAtIndexesToIndex(list.get(), KRIndexSet(0), 0);

    // Reloading without a data source builds no rows.
    list->reloadItems();
    EXPECT_EQ(list->numberOfItems(), 0u);
}

TEST_F(KRCheckListViewLifecycleTests, ADataSourceThatIsGoneAnswersZero) {
    auto list = std::make_shared<KRCheckListView>();
    auto minimal = std::make_shared<MinimalDataSource>();
    list->setDataSource(minimal);
    minimal.reset();
    EXPECT_EQ(list->dataSource(), nullptr);
    EXPECT_TRUE(
        list->checkListViewValidateChangedTitleForItemAtIndex(list.get(), QStringLiteral("a"), 0).isNull());
}

// Forwarders: deprecated methods
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewLifecycleTests,
       AnOnlyAnimatedDelegateHearsEveryInsertWithAnimatedNoAndAWarningPerCall) {
    auto list = makeList({QStringLiteral("Milk")});
    auto delegate = std::make_shared<AnimatedInsertDelegate>();
    list->setDelegate(delegate);
    EXPECT_FALSE(list->delegateRespondsTo(
        KRCheckListViewDelegateMethod::checkListViewWillUpdateByInsertingItemsAtIndexes));

    KRLogCapture capture;
    list->insertItemAtIndex(0);
    list->insertItemAtIndex(2);

    ASSERT_EQ(delegate->calls.size(), 2u);
    EXPECT_EQ(delegate->calls[0].indexes, KRIndexSet(0));
    EXPECT_FALSE(delegate->calls[0].animated);
    // The will-message: before the row is there.
    EXPECT_EQ(delegate->calls[0].rowsAtThatMoment, 1u);
    EXPECT_EQ(delegate->calls[1].indexes, KRIndexSet(2));
    EXPECT_FALSE(delegate->calls[1].animated);
    const QString warning =
        deprecatedDelegateWarning("checkListView:willUpdateByInsertingItemsAtIndexes:animated:");
    KR_CORE_EXPECT_LINES(capture.lines(), (QStringList{warning, warning}));
}

TEST_F(KRCheckListViewLifecycleTests,
       ADelegateWithBothFormsHearsTheNonAnimatedFirstThenTheWarnedAnimatedOne) {
    auto list = makeList({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")});
    auto delegate = std::make_shared<RecordingDelegate>(log);
    list->setDelegate(delegate);
    log->clear();

    KRLogCapture capture;
    list->beginUpdates();
    list->updateByReloadingItemAtIndex(1);
    list->updateByMovingItemAtIndexToIndex(0, 3);
    list->endUpdates();
    list->removeItemAtIndex(2);
    list->insertItemAtIndex(1);

    KR_CORE_EXPECT_LINES(
        log->filtered(QStringLiteral("checkListView")).filter(QStringLiteral("UpdateBy")),
        (QStringList{
            QStringLiteral("checkListViewWillUpdateByReloadingItemsAtIndexes [1]"),
            QStringLiteral("checkListViewWillUpdateByReloadingItemsAtIndexesAnimated [1] 0"),
            QStringLiteral("checkListViewDidUpdateByReloadingItemsAtIndexes [1]"),
            QStringLiteral("checkListViewDidUpdateByReloadingItemsAtIndexesAnimated [1] 0"),
            QStringLiteral("checkListViewWillUpdateByMovingItemsAtIndexesToIndex [0] 3"),
            QStringLiteral("checkListViewWillUpdateByMovingItemsAtIndexesToIndexAnimated [0] 3 0"),
            QStringLiteral("checkListViewDidUpdateByMovingItemsAtIndexesToIndex [0] 3"),
            QStringLiteral("checkListViewDidUpdateByMovingItemsAtIndexesToIndexAnimated [0] 3 0"),
            QStringLiteral("checkListViewWillUpdateByRemovingItemsAtIndexes [2]"),
            QStringLiteral("checkListViewWillUpdateByRemovingItemsAtIndexesAnimated [2] 0"),
            QStringLiteral("checkListViewDidUpdateByRemovingItemsAtIndexes [2]"),
            QStringLiteral("checkListViewDidUpdateByRemovingItemsAtIndexesAnimated [2] 0"),
            QStringLiteral("checkListViewWillUpdateByInsertingItemsAtIndexes [1]"),
            QStringLiteral("checkListViewWillUpdateByInsertingItemsAtIndexesAnimated [1] 0"),
            QStringLiteral("checkListViewDidUpdateByInsertingItemsAtIndexes [1]"),
            QStringLiteral("checkListViewDidUpdateByInsertingItemsAtIndexesAnimated [1] 0"),
        }));
    KR_CORE_EXPECT_LINES(
        capture.lines(),
        (QStringList{
            deprecatedDelegateWarning("checkListView:willUpdateByReloadingItemsAtIndexes:animated:"),
            deprecatedDelegateWarning("checkListView:didUpdateByReloadingItemsAtIndexes:animated:"),
            deprecatedDelegateWarning("checkListView:willUpdateByMovingItemsAtIndexes:toIndex:animated:"),
            deprecatedDelegateWarning("checkListView:didUpdateByMovingItemsAtIndexes:toIndex:animated:"),
            deprecatedDelegateWarning("checkListView:willUpdateByRemovingItemsAtIndexes:animated:"),
            deprecatedDelegateWarning("checkListView:didUpdateByRemovingItemsAtIndexes:animated:"),
            deprecatedDelegateWarning("checkListView:willUpdateByInsertingItemsAtIndexes:animated:"),
            deprecatedDelegateWarning("checkListView:didUpdateByInsertingItemsAtIndexes:animated:"),
        }));
}

TEST_F(KRCheckListViewLifecycleTests, TheAnimatedForwardersWarnOnEveryCallOnlyForADelegateThatHasThem) {
    auto list = std::make_shared<KRCheckListView>();
    auto animatedOnly = std::make_shared<AnimatedInsertDelegate>();
    list->setDelegate(animatedOnly);
    KRLogCapture capture;
    list->checkListViewDidUpdateByInsertingItemsAtIndexesAnimated(list.get(), KRIndexSet(0), false);
    EXPECT_TRUE(capture.lines().isEmpty());
    list->checkListViewWillUpdateByInsertingItemsAtIndexesAnimated(list.get(), KRIndexSet(0), false);
    list->checkListViewWillUpdateByInsertingItemsAtIndexesAnimated(list.get(), KRIndexSet(0), false);
    EXPECT_EQ(capture.lines().size(), 2);
    EXPECT_EQ(animatedOnly->calls.size(), 2u);
}

TEST_F(KRCheckListViewLifecycleTests, TheDeprecatedStatusSetterIsWarnedOfEachTimeInAscendingOrder) {
    auto list = makeList({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("d"),
                          QStringLiteral("e")});
    auto withSetters = std::make_shared<MemoryDataSourceWithSetters>(log);
    withSetters->itemList = dataSource->itemList;
    list->setDataSource(withSetters);
    auto recorder = std::make_shared<RecordingDelegate>(log);
    list->setDelegate(recorder);
    EXPECT_TRUE(
        list->dataSourceRespondsTo(KRCheckListViewDataSourceMethod::checkListViewSetStatusForItemAtIndex));
    log->clear();

    KRLogCapture capture;
    list->setStatusForItemsAtIndexes(2, KRIndexSet{4, 1});

    KR_CORE_EXPECT_LINES(log->lines, (QStringList{
                                         QStringLiteral("checkListViewWillSetStatusForItemAtIndex 1"),
                                         QStringLiteral("checkListViewSetStatusForItemAtIndex 2 1"),
                                         QStringLiteral("checkListViewDidSetStatusForItemAtIndex 1"),
                                         QStringLiteral("checkListViewWillSetStatusForItemAtIndex 4"),
                                         QStringLiteral("checkListViewSetStatusForItemAtIndex 2 4"),
                                         QStringLiteral("checkListViewDidSetStatusForItemAtIndex 4"),
                                     }));
    const QString warning =
        QStringLiteral("[WARNING] [KRCheckListViewDataSource checkListView:setStatus:"
                       "forItemAtIndex:] is deprecated, see documentation for more info.");
    KR_CORE_EXPECT_LINES(capture.lines(), (QStringList{warning, warning}));
    // The rows change only when the data source reports back.
    EXPECT_EQ(list->statusForItemAtIndex(1), 0u);
}

TEST_F(KRCheckListViewLifecycleTests, TheDeprecatedTitleSetterIsWarnedOfAndCarriesTheTitle) {
    auto list = makeList({QStringLiteral("a")});
    auto withSetters = std::make_shared<MemoryDataSourceWithSetters>(log);
    list->setDataSource(withSetters);
    auto recorder = std::make_shared<RecordingDelegate>(log);
    list->setDelegate(recorder);
    log->clear();

    KRLogCapture capture;
    list->setTitleForItemAtIndex(QStringLiteral("Milk"), 0);
    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillSetTitleForItemAtIndex 0"),
                                      QStringLiteral("checkListViewSetTitleForItemAtIndex Milk 0"),
                                      QStringLiteral("checkListViewDidSetTitleForItemAtIndex 0")}));
    KR_CORE_EXPECT_LINES(capture.lines(),
                         QStringList{QStringLiteral(
                             "[WARNING] [KRCheckListViewDataSource checkListView:setTitle:forItemAtIndex:] "
                             "is deprecated, see documentation for more info.")});
    EXPECT_EQ(list->titleForItemAtIndex(0), QStringLiteral("a"));
}

TEST_F(KRCheckListViewLifecycleTests, WithoutTheDeprecatedTitleSetterOnlyTheDelegateHears) {
    auto list = makeList({QStringLiteral("a")});
    auto recorder = std::make_shared<RecordingDelegate>(log);
    list->setDelegate(recorder);
    log->clear();
    KRLogCapture capture;
    list->setTitleForItemAtIndex(QStringLiteral("Milk"), 0);
    KR_CORE_EXPECT_LINES(log->lines,
                         (QStringList{QStringLiteral("checkListViewWillSetTitleForItemAtIndex 0"),
                                      QStringLiteral("checkListViewDidSetTitleForItemAtIndex 0")}));
    EXPECT_TRUE(capture.lines().isEmpty());
}

TEST_F(KRCheckListViewLifecycleTests, GroupingReachesADataSourceThatHasIt) {
    auto list = std::make_shared<KRCheckListView>();
    auto withSetters = std::make_shared<MemoryDataSourceWithSetters>(log);
    list->setDataSource(withSetters);
    KRLogCapture capture;
    list->checkListViewBeginGrouping(list.get());
    list->checkListViewEndGrouping(list.get());
    KR_CORE_EXPECT_LINES(log->lines, (QStringList{QStringLiteral("checkListViewBeginGrouping"),
                                                  QStringLiteral("checkListViewEndGrouping")}));
    EXPECT_TRUE(capture.lines().isEmpty());
}

// As the delegate of its rows
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewLifecycleTests, ARowsTitleChangeRefreshesPlaceholdersThenAsksTheDataSource) {
    auto list = makeList({QString(), QStringLiteral("b"), QStringLiteral("c")});
    KRCheckListItemView* first = list->checkListViewItemViewForItemAtIndex(0);
    KRCheckListItemView* third = list->checkListViewItemViewForItemAtIndex(2);
    first->setPlaceholder(QStringLiteral("Add an item"));
    third->setPlaceholder(QStringLiteral("Stale"));
    dataSource->titleAnswer = [](const QString& title) { return title.toUpper(); };
    QString thirdPlaceholderWhenAsked;
    log->onMessage = [&](const QString&) { thirdPlaceholderWhenAsked = third->placeholder(); };
    log->clear();

    EXPECT_EQ(list->checkListItemViewValidateChangedTitle(third, QStringLiteral("cake")),
              QStringLiteral("CAKE"));
    KR_CORE_EXPECT_LINES(
        log->lines, QStringList{QStringLiteral("checkListViewValidateChangedTitleForItemAtIndex cake 2")});
    EXPECT_EQ(thirdPlaceholderWhenAsked, QStringLiteral(""));
    EXPECT_EQ(first->placeholder(), QStringLiteral("Add an item"));
}

TEST_F(KRCheckListViewLifecycleTests, ARowsStatusProposalIsAnsweredByTheDataSourceUnchanged) {
    auto list = makeList({QStringLiteral("a"), QStringLiteral("b")});
    dataSource->statusAnswer = [](KRUInteger) { return KRUInteger{5}; };
    log->clear();
    KRCheckListItemView* second = list->checkListViewItemViewForItemAtIndex(1);
    EXPECT_EQ(list->checkListItemViewValidateChangedStatus(second, 1), 5u);
    KR_CORE_EXPECT_LINES(log->lines,
                         QStringList{QStringLiteral("checkListViewValidateChangedStatusForItemAtIndex 1 1")});
}

TEST_F(KRCheckListViewLifecycleTests, AClickOnACheckBoxShowsTheStatusTheDataSourceKeeps) {
    auto list = makeList({QStringLiteral("a")});
    KRCheckListItemView* row = list->checkListViewItemViewForItemAtIndex(0);
    dataSource->statusAnswer = [](KRUInteger) { return KRUInteger{0}; };
    row->checkListItemViewHandleActionForCheckBoxButton(row->checkBoxButtonView().get());
    EXPECT_EQ(row->status(), 0u);
    dataSource->statusAnswer = nullptr;
    row->checkListItemViewHandleActionForCheckBoxButton(row->checkBoxButtonView().get());
    EXPECT_EQ(row->status(), 1u);
}

TEST_F(KRCheckListViewLifecycleTests, TheListsFieldEditorEditsEveryTitle) {
    auto list = makeList({QStringLiteral("a")});
    KRCheckListItemView* row = list->checkListViewItemViewForItemAtIndex(0);
    EXPECT_EQ(list->checkListItemViewFieldEditorForView(row, row->titleTextField().get()),
              list->fieldEditor());
    EXPECT_EQ(row->titleTextField()->checkListItemTitleTextFieldFieldEditorForView(
                  row->titleTextField().get(), row->titleTextField().get()),
              list->fieldEditor());
}

TEST_F(KRCheckListViewLifecycleTests, ARowThatGrowsIsLaidOutAtOnceOutsideAnyAnimation) {
    auto list = makeList({QStringLiteral("a"), QStringLiteral("b")});
    list->layoutIfNeeded();
    KRCheckListItemView* first = list->checkListViewItemViewForItemAtIndex(0);
    KRCheckListItemView* second = list->checkListViewItemViewForItemAtIndex(1);
    const double secondY = second->frame().origin.y;
    auto delegate = std::make_shared<RecordingDelegate>(log);
    list->setDelegate(delegate);
    log->clear();

    first->setTitle(QString(40, QLatin1Char('w')) + QLatin1Char(' ') + QString(40, QLatin1Char('w')));
    KRView::animate([&](EZAnimationContext&) { list->checkListItemViewDidChangeSizeThatFits(first); });

    EXPECT_GT(second->frame().origin.y, secondY);
    EXPECT_FALSE(second->hasRunningAnimations());
    KR_CORE_EXPECT_LINES(log->lines, QStringList{QStringLiteral("checkListViewDidChangeSizeThatFits")});
}

TEST_F(KRCheckListViewLifecycleTests, AHighlightChangeRedrawsTheDividers) {
    auto list = makeList({QStringLiteral("a"), QStringLiteral("b")});
    list->layoutIfNeeded();
    KRCheckListItemView* first = list->checkListViewItemViewForItemAtIndex(0);
    KRCheckListItemView* second = list->checkListViewItemViewForItemAtIndex(1);
    ASSERT_TRUE(first->drawsBottomDivider());
    second->setHighlighted(true);
    list->checkListItemViewDidChangeHighlighted(second);
    EXPECT_FALSE(first->drawsBottomDivider());
    EXPECT_FALSE(second->drawsBottomDivider());
}
