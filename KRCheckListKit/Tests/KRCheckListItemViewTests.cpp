#include "KRCheckListItemView.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListItemViewTestSupport.h"
#include "KRCheckListResources.h"

#include "Animation/EZInterpolationFunctions.h"
#include "Controls/KRDefaults.h"
#include "Controls/KRImage.h"
#include "Foundation/KRAssertionHandler.h"
#include "Foundation/KRClock.h"
#include "Views/KRCursor.h"
#include "Views/KRTrackingArea.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>

using namespace KRCheckListItemViewTesting;

namespace {

// Observes one key of one view and calls back on every change it hears.
class KeyObserver : public KRObject {
public:
    KeyObserver(KRObject* observed, const char* keyPath,
                std::function<void(const KRKeyValueChange&)> onChange)
        : m_observed(observed), m_keyPath(keyPath), m_onChange(std::move(onChange)) {
        m_observed->addObserver(this, m_keyPath, KRKeyValueObservingOptionOld | KRKeyValueObservingOptionNew,
                                this);
    }
    ~KeyObserver() override { m_observed->removeObserver(this, m_keyPath, this); }
    void observeValueForKeyPath(const char*, KRObject*, const KRKeyValueChange& change,
                                const void*) override {
        m_onChange(change);
    }

private:
    KRObject* m_observed;
    const char* m_keyPath;
    std::function<void(const KRKeyValueChange&)> m_onChange;
};

class RecordingAssertionHandler : public KRAssertionHandler {
public:
    struct Failure {
        QString method;
        const KRObject* object;
        QString file;
        int line;
        QString message;
    };
    void handleFailureInMethod(const QString& method, const KRObject* object, const QString& file, int line,
                               const QString& message) override {
        failures.push_back(Failure{method, object, file, line, message});
        if (onFailure) {
            onFailure();
        }
    }
    std::vector<Failure> failures;
    std::function<void()> onFailure;
};

class KRCheckListItemViewTests : public ::testing::Test {
protected:
    void TearDown() override { KRAssertionHandler::setCurrentHandler(nullptr); }

    // A row whose looks were last set by an update, with a sentinel painted over the shape so a later
    // update shows.
    void updateThenMark() {
        row->setNeedsUpdate(true);
        row->shapeView()->setBackgroundColor(sentinelColor());
    }
    bool updateRanSinceMark() const { return row->shapeView()->backgroundColor() != sentinelColor(); }

    std::shared_ptr<KRCheckListItemView> row =
        std::make_shared<KRCheckListItemView>(KRRectMake(0, 0, 300, 28));
};

// What the sub-views show for a state, as an update leaves them.
struct ExpectedLooks {
    QColor shapeFill = KRDefaults::clearColor();
    QColor shapeBorder = KRDefaults::clearColor();
    QColor handleColor = KRDefaults::blackColor();
    double handleAlpha = 0.0;
    std::shared_ptr<KRImage> checkBoxImage = KRCheckListResources::checkboxNormalImage();
    QColor checkBoxColor = KRDefaults::vantorBlue8Color();
    QColor titleColor = KRCheckListDefaults::defaultTextColor();
    int strikethrough = 0;
};

void expectLooks(const KRCheckListItemView& row, const ExpectedLooks& expected, int line) {
    SCOPED_TRACE(testing::Message() << "looks expected at line " << line);
    EXPECT_EQ(row.shapeView()->backgroundColor(), expected.shapeFill);
    EXPECT_EQ(row.shapeView()->borderColor(), expected.shapeBorder);
    EXPECT_EQ(row.handleButtonView()->imageColor(), expected.handleColor);
    EXPECT_DOUBLE_EQ(row.handleButtonView()->imageAlpha(), expected.handleAlpha);
    EXPECT_EQ(row.checkBoxButtonView()->image(), expected.checkBoxImage);
    EXPECT_EQ(row.checkBoxButtonView()->pressedImage(),
              expected.checkBoxImage->imageByLimitingToRepresentationWithScale(2.0));
    EXPECT_EQ(row.checkBoxButtonView()->imageColor(), expected.checkBoxColor);
    EXPECT_DOUBLE_EQ(row.checkBoxButtonView()->imageAlpha(), 1.0);
    EXPECT_EQ(row.titleTextField()->textColor(), expected.titleColor);
    ASSERT_TRUE(row.titleAttributes() != nullptr);
    EXPECT_EQ(row.titleAttributes()->foregroundColor, std::optional<QColor>(expected.titleColor));
    EXPECT_EQ(row.titleAttributes()->strikethroughStyle, std::optional<int>(expected.strikethrough));
}
#define EXPECT_LOOKS(row, expected) expectLooks((row), (expected), __LINE__)

} // namespace

// Construction
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewTests, StateHasItsDefaultsAfterConstruction) {
    EXPECT_EQ(row->title(), QStringLiteral(""));
    EXPECT_EQ(row->placeholder(), QStringLiteral(""));
    EXPECT_EQ(row->status(), 0u);
    EXPECT_EQ(row->minHeight(), 0.0);
    EXPECT_FALSE(row->isEdited());
    EXPECT_FALSE(row->isSelected());
    EXPECT_FALSE(row->isDragged());
    EXPECT_FALSE(row->drawsTopDivider());
    EXPECT_FALSE(row->drawsBottomDivider());
    EXPECT_FALSE(row->drawsShadow());
    EXPECT_FALSE(row->isHandleHovered());
    EXPECT_FALSE(row->isHighlighted());
    EXPECT_EQ(row->delegate(), nullptr);
    EXPECT_FALSE(row->masksToBounds());
}

TEST_F(KRCheckListItemViewTests, SubviewsArePresentButNoUpdateHasRunAfterConstruction) {
    EXPECT_NE(row->titleTextField(), nullptr);
    EXPECT_NE(row->checkBoxButtonView(), nullptr);
    EXPECT_NE(row->handleButtonView(), nullptr);
    EXPECT_NE(row->shapeView(), nullptr);
    EXPECT_NE(row->highlightView(), nullptr);
    EXPECT_NE(row->maskView(), nullptr);
    EXPECT_NE(row->topDividerView(), nullptr);
    EXPECT_NE(row->bottomDividerView(), nullptr);
    EXPECT_NE(row->textTrackingArea(), nullptr);

    EXPECT_FALSE(row->titleAttributes() != nullptr);
    EXPECT_FALSE(row->placeholderAttributes() != nullptr);
    EXPECT_EQ(row->sizeThatFitsAfterLastUpdate(), KRSizeZero);
    EXPECT_EQ(row->sizeThatFitsAfterLastLayout(), KRSizeZero);
    EXPECT_EQ(row->updateCount(), 0);
    EXPECT_FALSE(row->isUpdating());
    EXPECT_FALSE(row->isUpdateScheduled());
    EXPECT_EQ(row->checkBoxButtonView()->image(), KRCheckListResources::checkboxNormalImage());
}

// Lifecycle
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewTests, LoadingRunsTheSetUpStepsInOrder) {
    TraceRecorder trace;
    auto traced = std::make_shared<KRCheckListItemView>();
    const QStringList expected{
        QStringLiteral("checkListItemViewSetUpSelf"),
        QStringLiteral("checkListItemViewSetUpShapeView"),
        QStringLiteral("checkListItemViewSetUpHighlightView"),
        QStringLiteral("checkListItemViewSetUpMaskView"),
        QStringLiteral("checkListItemViewSetUpCheckBoxButtonView"),
        QStringLiteral("checkListItemViewSetUpTitleTextField"),
        QStringLiteral("checkListItemViewSetUpHandleButtonView"),
        QStringLiteral("checkListItemViewSetUpTopDividerView"),
        QStringLiteral("checkListItemViewSetUpBottomDividerView"),
        QStringLiteral("checkListItemViewHookUp"),
        QStringLiteral("checkListItemViewBeginObservingKeyPaths"),
        QStringLiteral("checkListItemViewBeginTrackingMouse"),
    };
    EXPECT_EQ(trace.stepsOf(traced.get()), expected);
}

TEST_F(KRCheckListItemViewTests, DestructionRunsTheTearDownStepsInReverseOrder) {
    auto traced = std::make_shared<KRCheckListItemView>();
    const void* address = traced.get();
    TraceRecorder trace;
    traced.reset();
    const QStringList expected{
        QStringLiteral("checkListItemViewEndTrackingMouse"),
        QStringLiteral("checkListItemViewEndObservingKeyPaths"),
        QStringLiteral("checkListItemViewBreakUp"),
        QStringLiteral("checkListItemViewTearDownBottomDividerView"),
        QStringLiteral("checkListItemViewTearDownTopDividerView"),
        QStringLiteral("checkListItemViewTearDownHandleButtonView"),
        QStringLiteral("checkListItemViewTearDownTitleTextField"),
        QStringLiteral("checkListItemViewTearDownCheckBoxButtonView"),
        QStringLiteral("checkListItemViewTearDownMaskView"),
        QStringLiteral("checkListItemViewTearDownHighlightView"),
        QStringLiteral("checkListItemViewTearDownShapeView"),
        QStringLiteral("checkListItemViewTearDownSelf"),
    };
    EXPECT_EQ(trace.stepsOf(address), expected);
}

TEST_F(KRCheckListItemViewTests, TitleFieldAndItsCellLoadAndUnloadInOrder) {
    std::optional<TraceRecorder> trace;
    trace.emplace();
    auto traced = std::make_shared<KRCheckListItemView>();
    const void* field = traced->titleTextField().get();
    const void* cell = traced->titleTextField()->titleTextFieldCell().get();
    EXPECT_EQ(trace->stepsOf(field), (QStringList{QStringLiteral("checkListItemTitleTextFieldSetUpSelf"),
                                                  QStringLiteral("checkListItemTitleTextFieldSetUpCell"),
                                                  QStringLiteral("checkListItemTitleTextFieldHookUp")}));
    EXPECT_EQ(trace->stepsOf(cell), (QStringList{QStringLiteral("checkListItemTitleTextfieldCellSetUpSelf"),
                                                 QStringLiteral("checkListItemTitleTextfieldCellHookUp")}));

    trace->clear();
    traced.reset();
    EXPECT_EQ(trace->stepsOf(field),
              (QStringList{QStringLiteral("checkListItemTitleTextFieldBreakUp"),
                           QStringLiteral("checkListItemTitleTextFieldTearDownCell"),
                           QStringLiteral("checkListItemTitleTextFieldTearDownSelf")}));
    EXPECT_EQ(trace->stepsOf(cell),
              (QStringList{QStringLiteral("checkListItemTitleTextfieldCellBreakUp"),
                           QStringLiteral("checkListItemTitleTextfieldCellTearDownSelf")}));
    trace.reset();
}

// Sub-views and their configuration
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewTests, SubviewTreeNestsTheControlsInTheMaskInTheShape) {
    ASSERT_EQ(row->subviews().size(), 2u);
    EXPECT_EQ(row->subviews()[0], row->shapeView());
    EXPECT_EQ(row->subviews()[1], row->highlightView());
    ASSERT_EQ(row->shapeView()->subviews().size(), 1u);
    EXPECT_EQ(row->shapeView()->subviews()[0], row->maskView());
    const std::vector<std::shared_ptr<KRView>> controls{row->checkBoxButtonView(), row->titleTextField(),
                                                        row->handleButtonView(), row->topDividerView(),
                                                        row->bottomDividerView()};
    EXPECT_EQ(row->maskView()->subviews(), controls);

    EXPECT_EQ(row->shapeView()->identifier(), QStringLiteral("shapeView"));
    EXPECT_EQ(row->highlightView()->identifier(), QStringLiteral("highlightView"));
    EXPECT_EQ(row->maskView()->identifier(), QStringLiteral("maskView"));
    EXPECT_EQ(row->topDividerView()->identifier(), QStringLiteral("topDividerView"));
    EXPECT_EQ(row->bottomDividerView()->identifier(), QStringLiteral("bottomDividerView"));
}

TEST_F(KRCheckListItemViewTests, ShapeMaskHighlightAndDividersAreConfigured) {
    const KRView& shape = *row->shapeView();
    EXPECT_EQ(shape.shadowRadius(), 3.0);
    EXPECT_EQ(shape.shadowOffset(), KRSizeMake(0, 1));
    EXPECT_EQ(shape.borderWidth(), KRCheckListDefaults::borderWidth());
    EXPECT_EQ(shape.cornerRadius(), KRCheckListDefaults::cornerRadius());

    EXPECT_TRUE(row->maskView()->masksToBounds());

    EXPECT_EQ(row->topDividerView()->backgroundColor(), KRCheckListDefaults::dividerColor());
    EXPECT_EQ(row->bottomDividerView()->backgroundColor(), KRCheckListDefaults::dividerColor());

    const KRView& highlight = *row->highlightView();
    EXPECT_TRUE(highlight.ignoresMouseEvents());
    EXPECT_EQ(highlight.cornerRadius(), KRCheckListDefaults::cornerRadius());
    EXPECT_EQ(highlight.backgroundColor(), KRDefaults::manateeGrayColor());
    EXPECT_EQ(highlight.alphaValue(), 0.0);
}

TEST_F(KRCheckListItemViewTests, TitleFieldIsConfigured) {
    const KRCheckListItemTitleTextField& field = *row->titleTextField();
    EXPECT_EQ(field.stringValue(), QStringLiteral(""));
    EXPECT_EQ(field.placeholderString(), QStringLiteral(""));
    EXPECT_FALSE(field.isBordered());
    EXPECT_TRUE(field.wantsLayer());
    EXPECT_EQ(field.layerContentsRedrawPolicy(), 1);
    EXPECT_EQ(field.lineBreakMode(), 0);
    EXPECT_FALSE(field.isEditable());
    EXPECT_FALSE(field.drawsBackground());
    EXPECT_EQ(field.font(), KRCheckListDefaults::font());
    EXPECT_TRUE(field.allowsEditingTextAttributes());
}

TEST_F(KRCheckListItemViewTests, CheckBoxAndHandleAreConfigured) {
    const KRButtonView& checkBox = *row->checkBoxButtonView();
    EXPECT_FALSE(checkBox.ignoresImageAlpha());
    EXPECT_EQ(checkBox.image(), KRCheckListResources::checkboxNormalImage());
    EXPECT_EQ(checkBox.imageAlphaWhenPressed(), std::optional<double>(1.0));
    EXPECT_EQ(checkBox.outerScaleOnPress(), 1.25);
    EXPECT_EQ(checkBox.outerScaleOnPressMode(), 1);
    EXPECT_NE(checkBox.outerScaleAnimationFunction(), nullptr);
    EXPECT_EQ(checkBox.target(), static_cast<KRObject*>(row.get()));
    EXPECT_EQ(checkBox.action(), KRSelector("checkListItemViewHandleActionForCheckBoxButton:"));
    EXPECT_EQ(checkBox.cursor(), KRCursor::arrowCursor());

    const KRButtonView& handle = *row->handleButtonView();
    EXPECT_EQ(handle.edgeInsets(), KREdgeInsetsMake(4, 4, 2, 4));
    EXPECT_FALSE(handle.ignoresImageAlpha());
    EXPECT_EQ(handle.image(), KRCheckListResources::handleImage());
    EXPECT_EQ(handle.imageAlpha(), 0.0);
    EXPECT_EQ(handle.imageAlphaWhenHovered(), std::optional<double>(0.3));
    EXPECT_EQ(handle.imageAlphaWhenHighlighted(), std::optional<double>(0.3));
    EXPECT_EQ(handle.cursor(), KRCursor::arrowCursor());
}

TEST_F(KRCheckListItemViewTests, RowIsTheDelegateOfItsControls) {
    EXPECT_EQ(row->checkBoxButtonView()->delegate(), static_cast<KRButtonViewDelegate*>(row.get()));
    EXPECT_EQ(row->handleButtonView()->delegate(), static_cast<KRButtonViewDelegate*>(row.get()));
    EXPECT_EQ(row->titleTextField()->delegate(),
              static_cast<KRCheckListItemTitleTextFieldDelegate*>(row.get()));
}

// Observations
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewTests, ObservesTwelveOfItsOwnKeysInOrder) {
    const void* update = &KRCheckListItemViewObserveKeyPathsTriggeringSetNeedsUpdateContext;
    const void* layout = &KRCheckListItemViewObserveKeyPathsTriggeringSetNeedsLayoutContext;
    const void* highlight = &KRCheckListItemViewObserveKeyPathsTriggeringUpdateHighlightViewContext;
    const unsigned oldAndNew = KRKeyValueObservingOptionOld | KRKeyValueObservingOptionNew;
    struct Expected {
        const char* keyPath;
        unsigned options;
        const void* context;
    };
    const std::vector<Expected> expected{
        {"title", oldAndNew, update},
        {"placeholder", oldAndNew, update},
        {"status", oldAndNew, update},
        {"edited", oldAndNew, update},
        {"selected", oldAndNew, update},
        {"dragged", oldAndNew, update},
        {"showsHandle", oldAndNew, update},
        {"minHeight", KRKeyValueObservingOptionNone, layout},
        {"drawsTopDivider", oldAndNew, update},
        {"drawsBottomDivider", oldAndNew, update},
        {"drawsShadow", KRKeyValueObservingOptionNone, update},
        {"highlighted", KRKeyValueObservingOptionNone, highlight},
    };
    const std::vector<KRObject::Observation>& info = row->observationInfo();
    ASSERT_EQ(info.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(expected[i].keyPath);
        EXPECT_EQ(info[i].observer, static_cast<KRObject*>(row.get()));
        EXPECT_STREQ(info[i].keyPath, expected[i].keyPath);
        EXPECT_EQ(info[i].options, expected[i].options);
        EXPECT_EQ(info[i].context, expected[i].context);
    }
}

TEST_F(KRCheckListItemViewTests, AssigningTheCurrentValueOfAnObservedKeySchedulesNothing) {
    row->setSelected(false);
    row->setEdited(false);
    row->setStatus(0);
    row->setDrawsTopDivider(false);
    EXPECT_FALSE(row->titleAttributes() != nullptr) << "no update ran";
    EXPECT_FALSE(row->isUpdateScheduled());

    updateThenMark();
    row->setSelected(true);
    ASSERT_TRUE(updateRanSinceMark());
    row->shapeView()->setBackgroundColor(sentinelColor());
    row->setSelected(true);
    EXPECT_FALSE(updateRanSinceMark());
    EXPECT_FALSE(row->isUpdateScheduled());
}

TEST_F(KRCheckListItemViewTests, AssigningTheSameDrawsShadowStillRunsAnUpdate) {
    row->setDrawsShadow(false);
    EXPECT_TRUE(row->titleAttributes() != nullptr);
    EXPECT_EQ(row->shapeView()->backgroundColor(), KRDefaults::clearColor());

    row->shapeView()->setBackgroundColor(sentinelColor());
    row->setDrawsShadow(false);
    EXPECT_TRUE(updateRanSinceMark());
    EXPECT_FALSE(row->isUpdateScheduled());
}

// Batching updates
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewTests, BeginAndEndUpdatesCountTheNesting) {
    row->beginUpdates();
    EXPECT_EQ(row->updateCount(), 1);
    row->beginUpdates();
    EXPECT_EQ(row->updateCount(), 2);
    row->endUpdates();
    EXPECT_EQ(row->updateCount(), 1);
    row->endUpdates();
    EXPECT_EQ(row->updateCount(), 0);
}

TEST_F(KRCheckListItemViewTests, UnbalancedEndUpdatesFailsThroughTheAssertionHandler) {
    auto handler = std::make_shared<RecordingAssertionHandler>();
    KRAssertionHandler::setCurrentHandler(handler);
    row->endUpdates();
    ASSERT_EQ(handler->failures.size(), 1u);
    const RecordingAssertionHandler::Failure& failure = handler->failures.front();
    EXPECT_EQ(failure.method, QStringLiteral("endUpdates"));
    EXPECT_EQ(failure.object, static_cast<const KRObject*>(row.get()));
    EXPECT_EQ(failure.file, QStringLiteral("KRCheckListItemView"));
    EXPECT_EQ(failure.line, 132);
    EXPECT_EQ(failure.message,
              QStringLiteral("[WARNING] Internal inconsistency, unbalanced begin/endUpdates detected for: ") +
                  row->description());
    EXPECT_EQ(row->updateCount(), -1);

    // A balanced pair reports nothing more.
    row->beginUpdates();
    row->beginUpdates();
    row->endUpdates();
    EXPECT_EQ(handler->failures.size(), 1u);
}

TEST_F(KRCheckListItemViewTests, UnbalancedEndUpdatesStillRunsAPendingUpdateOnceTheHandlerReturns) {
    auto handler = std::make_shared<RecordingAssertionHandler>();
    KRAssertionHandler::setCurrentHandler(handler);
    // The handler opens a batch of its own and schedules an update in it; only the rest of endUpdates can
    // run that update.
    handler->onFailure = [&] {
        row->beginUpdates();
        row->beginUpdates();
        row->setSelected(true);
    };
    row->endUpdates();
    ASSERT_EQ(handler->failures.size(), 1u);
    EXPECT_TRUE(row->titleAttributes() != nullptr);
    EXPECT_EQ(row->shapeView()->backgroundColor(), selectedFillColor());
    EXPECT_FALSE(row->isUpdateScheduled());
}

TEST_F(KRCheckListItemViewTests, UpdateBlockRunsBetweenBeginAndEnd) {
    KRInteger countInside = -1;
    bool lookedSelectedInside = true;
    row->update([&] {
        countInside = row->updateCount();
        row->setSelected(true);
        row->setStatus(1);
        lookedSelectedInside = row->shapeView()->backgroundColor() == selectedFillColor();
    });
    EXPECT_EQ(countInside, 1);
    EXPECT_FALSE(lookedSelectedInside);
    EXPECT_EQ(row->updateCount(), 0);
    EXPECT_EQ(row->shapeView()->backgroundColor(), selectedFillColor());
    EXPECT_EQ(row->checkBoxButtonView()->image(), KRCheckListResources::checkboxCompletedImage());
}

TEST_F(KRCheckListItemViewTests, SetNeedsUpdateOutsideABatchUpdatesAtOnce) {
    row->setNeedsUpdate(false);
    EXPECT_FALSE(row->titleAttributes() != nullptr);
    EXPECT_FALSE(row->isUpdateScheduled());

    row->setNeedsUpdate(true);
    EXPECT_TRUE(row->titleAttributes() != nullptr);
    EXPECT_TRUE(row->placeholderAttributes() != nullptr);
    EXPECT_FALSE(row->isUpdateScheduled());
    EXPECT_FALSE(row->isUpdating());
}

TEST_F(KRCheckListItemViewTests, AnUpdateOutsideABatchRunsInsideTheSetter) {
    // Registered after the row's own observation, so it hears the change once the row has reacted.
    bool lookedSelected = false;
    KeyObserver observer(row.get(), "selected", [&](const KRKeyValueChange&) {
        lookedSelected = row->shapeView()->backgroundColor() == selectedFillColor();
    });
    row->setSelected(true);
    EXPECT_TRUE(lookedSelected);
}

TEST_F(KRCheckListItemViewTests, FiveChangesInABatchRunOneUpdateAtEndUpdates) {
    int dividerShown = 0;
    KeyObserver observer(row->topDividerView().get(), "alphaValue", [&](const KRKeyValueChange& change) {
        if (change.newValue.toDouble() == 1.0) {
            ++dividerShown;
        }
    });
    row->setNeedsUpdate(true); // hides the dividers
    ASSERT_EQ(row->topDividerView()->alphaValue(), 0.0);
    row->beginUpdates();
    row->setSelected(true);
    row->setStatus(2);
    row->setDrawsTopDivider(true);
    row->setDrawsTopDivider(false);
    row->setDrawsTopDivider(true);
    EXPECT_TRUE(row->isUpdateScheduled());
    EXPECT_EQ(row->shapeView()->backgroundColor(), KRDefaults::clearColor());
    EXPECT_EQ(row->checkBoxButtonView()->image(), KRCheckListResources::checkboxNormalImage());
    EXPECT_EQ(row->topDividerView()->alphaValue(), 0.0);
    EXPECT_EQ(dividerShown, 0);

    row->endUpdates();
    EXPECT_EQ(dividerShown, 1);
    EXPECT_FALSE(row->isUpdateScheduled());
    EXPECT_EQ(row->shapeView()->backgroundColor(), selectedFillColor());
    EXPECT_EQ(row->checkBoxButtonView()->image(), KRCheckListResources::checkboxCanceledImage());
    EXPECT_EQ(row->topDividerView()->alphaValue(), 1.0);
}

TEST_F(KRCheckListItemViewTests, NestedBatchesUpdateAtTheFirstEndUpdatesThatFindsItScheduled) {
    updateThenMark();
    row->beginUpdates();
    row->beginUpdates();
    row->setEdited(true);
    EXPECT_FALSE(updateRanSinceMark());
    row->endUpdates();
    EXPECT_EQ(row->updateCount(), 1);
    EXPECT_EQ(row->shapeView()->backgroundColor(), editedFillColor());
    EXPECT_FALSE(row->isUpdateScheduled());

    row->shapeView()->setBackgroundColor(sentinelColor());
    row->endUpdates();
    EXPECT_EQ(row->updateCount(), 0);
    EXPECT_FALSE(updateRanSinceMark()) << "the outer endUpdates found nothing scheduled";
}

TEST_F(KRCheckListItemViewTests, SetNeedsUpdateFalseInsideABatchCancelsThePendingUpdate) {
    row->beginUpdates();
    row->setNeedsUpdate(true);
    EXPECT_TRUE(row->isUpdateScheduled());
    EXPECT_FALSE(row->titleAttributes() != nullptr);
    row->setNeedsUpdate(false);
    EXPECT_FALSE(row->isUpdateScheduled());
    row->endUpdates();
    EXPECT_FALSE(row->titleAttributes() != nullptr) << "no update ran";
}

TEST_F(KRCheckListItemViewTests, UpdateIfNeededRunsOnlyAScheduledUpdate) {
    row->updateIfNeeded();
    EXPECT_FALSE(row->titleAttributes() != nullptr);

    row->beginUpdates();
    row->setSelected(true);
    ASSERT_TRUE(row->isUpdateScheduled());
    row->updateIfNeeded();
    EXPECT_TRUE(row->titleAttributes() != nullptr);
    EXPECT_EQ(row->shapeView()->backgroundColor(), selectedFillColor());
    EXPECT_FALSE(row->isUpdateScheduled());
    EXPECT_FALSE(row->isUpdating());

    row->shapeView()->setBackgroundColor(sentinelColor());
    row->endUpdates();
    EXPECT_FALSE(updateRanSinceMark());
}

TEST_F(KRCheckListItemViewTests, StateChangedWhileAnUpdateRunsSchedulesNoFurtherUpdate) {
    row->setNeedsUpdate(true); // hides the dividers
    bool updatingWhenHeard = false;
    // The divider's alpha changes in the middle of the update; the observer changes state right there.
    KeyObserver observer(row->topDividerView().get(), "alphaValue", [&](const KRKeyValueChange&) {
        updatingWhenHeard = row->isUpdating();
        row->setSelected(true);
        row->setNeedsUpdate(true);
    });
    row->setDrawsTopDivider(true);
    EXPECT_TRUE(updatingWhenHeard);
    EXPECT_TRUE(row->isSelected());
    EXPECT_FALSE(row->isUpdateScheduled());
    EXPECT_FALSE(row->isUpdating());
    EXPECT_EQ(row->shapeView()->backgroundColor(), KRDefaults::clearColor())
        << "the selection arrived after the update read the state, and no second update ran";
}

TEST_F(KRCheckListItemViewTests, UpdatesSendNoWillOrDidUpdateToTheDelegate) {
    RecordingItemViewDelegate delegate;
    row->setDelegate(&delegate);
    row->setNeedsUpdate(true);
    row->update([&] {
        row->setSelected(true);
        row->setStatus(1);
    });
    row->setDrawsShadow(true);
    EXPECT_EQ(delegate.count(QStringLiteral("checkListItemViewWillUpdate")), 0);
    EXPECT_EQ(delegate.count(QStringLiteral("checkListItemViewDidUpdate")), 0);
}

// Looks
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewTests, PlainRowLooks) {
    row->handleButtonView()->setImageAlpha(0.7);
    row->handleButtonView()->setImageColor(sentinelColor());
    row->checkBoxButtonView()->setImageAlpha(0.25);
    row->setNeedsUpdate(true);
    EXPECT_LOOKS(*row, ExpectedLooks{}); // an opaque check box image among them
    EXPECT_EQ(row->shapeView()->shadowOpacity(), 0.0);
    EXPECT_EQ(row->topDividerView()->alphaValue(), 0.0);
    EXPECT_EQ(row->bottomDividerView()->alphaValue(), 0.0);
}

TEST_F(KRCheckListItemViewTests, EditedRowLooks) {
    row->setEdited(true);
    ExpectedLooks expected;
    expected.shapeFill = editedFillColor();
    expected.shapeBorder = editedBorderColor();
    expected.handleColor = KRDefaults::sharkBlackColor();
    expected.handleAlpha = 0.2;
    EXPECT_LOOKS(*row, expected);
}

TEST_F(KRCheckListItemViewTests, SelectedAndDraggedRowsLookTheSame) {
    ExpectedLooks expected;
    expected.shapeFill = selectedFillColor();
    expected.shapeBorder = selectedBorderColor();
    expected.handleColor = KRDefaults::sharkBlackColor();
    expected.handleAlpha = 0.2;
    row->setSelected(true);
    EXPECT_LOOKS(*row, expected);

    auto dragged = std::make_shared<KRCheckListItemView>();
    dragged->setDragged(true);
    EXPECT_LOOKS(*dragged, expected);
}

TEST_F(KRCheckListItemViewTests, SelectionOverridesEditing) {
    row->update([&] {
        row->setEdited(true);
        row->setSelected(true);
    });
    EXPECT_EQ(row->shapeView()->backgroundColor(), selectedFillColor());
    EXPECT_EQ(row->shapeView()->borderColor(), selectedBorderColor());

    auto dragged = std::make_shared<KRCheckListItemView>();
    dragged->update([&] {
        dragged->setEdited(true);
        dragged->setDragged(true);
    });
    EXPECT_EQ(dragged->shapeView()->backgroundColor(), selectedFillColor());
    EXPECT_EQ(dragged->shapeView()->borderColor(), selectedBorderColor());
}

TEST_F(KRCheckListItemViewTests, ShadowAndDividersFollowTheirFlags) {
    row->setDrawsShadow(true);
    EXPECT_DOUBLE_EQ(row->shapeView()->shadowOpacity(), 0.1);
    row->setDrawsShadow(false);
    EXPECT_EQ(row->shapeView()->shadowOpacity(), 0.0);

    row->setDrawsTopDivider(true);
    EXPECT_EQ(row->topDividerView()->alphaValue(), 1.0);
    EXPECT_EQ(row->bottomDividerView()->alphaValue(), 0.0);
    row->update([&] {
        row->setDrawsTopDivider(false);
        row->setDrawsBottomDivider(true);
    });
    EXPECT_EQ(row->topDividerView()->alphaValue(), 0.0);
    EXPECT_EQ(row->bottomDividerView()->alphaValue(), 1.0);
}

TEST_F(KRCheckListItemViewTests, CompletedRowLooks) {
    row->setStatus(1);
    ExpectedLooks expected;
    expected.checkBoxImage = KRCheckListResources::checkboxCompletedImage();
    expected.checkBoxColor = finishedColor();
    expected.titleColor = finishedColor();
    EXPECT_LOOKS(*row, expected);
}

TEST_F(KRCheckListItemViewTests, CanceledRowLooksStruckThroughUntilReopened) {
    row->setStatus(2);
    ExpectedLooks expected;
    expected.checkBoxImage = KRCheckListResources::checkboxCanceledImage();
    expected.checkBoxColor = finishedColor();
    expected.titleColor = finishedColor();
    expected.strikethrough = 1;
    EXPECT_LOOKS(*row, expected);

    row->setStatus(0);
    EXPECT_LOOKS(*row, ExpectedLooks{});
}

TEST_F(KRCheckListItemViewTests, UnknownStatusLooksLikeAnOpenOne) {
    row->setStatus(5);
    EXPECT_LOOKS(*row, ExpectedLooks{});
    auto open = std::make_shared<KRCheckListItemView>();
    open->setNeedsUpdate(true);
    EXPECT_EQ(*row->titleAttributes(), *open->titleAttributes());
    EXPECT_EQ(row->checkBoxButtonView()->image(), open->checkBoxButtonView()->image());
    EXPECT_EQ(row->checkBoxButtonView()->pressedImage(), open->checkBoxButtonView()->pressedImage());
}

TEST_F(KRCheckListItemViewTests, PressedCheckBoxImageHoldsOnlyTheDoubleScaleBitmap) {
    for (KRUInteger status : {0u, 1u, 2u}) {
        SCOPED_TRACE(status);
        row->setStatus(status);
        row->setNeedsUpdate(true);
        const std::shared_ptr<KRImage>& pressed = row->checkBoxButtonView()->pressedImage();
        ASSERT_NE(pressed, nullptr);
        ASSERT_EQ(pressed->representations().size(), 1u);
        EXPECT_EQ(pressed->representations()[0].scale, 2.0);
        EXPECT_EQ(pressed->size(), row->checkBoxButtonView()->image()->size());
    }
}

TEST_F(KRCheckListItemViewTests, TitleAttributesHoldFontColourStrikethroughAndFixedLines) {
    row->setNeedsUpdate(true);
    ASSERT_TRUE(row->titleAttributes() != nullptr);
    const KRTextAttributes& title = *row->titleAttributes();
    EXPECT_EQ(title.count(), 4u);
    EXPECT_EQ(title.font, std::optional<QFont>(KRCheckListDefaults::font()));
    EXPECT_EQ(title.foregroundColor, std::optional<QColor>(KRCheckListDefaults::defaultTextColor()));
    EXPECT_EQ(title.strikethroughStyle, std::optional<int>(0));
    ASSERT_TRUE(title.paragraphStyle.has_value());
    EXPECT_EQ(title.paragraphStyle->minimumLineHeight, KRCheckListDefaults::lineHeight());
    EXPECT_EQ(title.paragraphStyle->maximumLineHeight, KRCheckListDefaults::lineHeight());
    EXPECT_EQ(title.paragraphStyle->tighteningFactorForTruncation, 0.0);
}

TEST_F(KRCheckListItemViewTests, PlaceholderAttributesHoldFontColourAndFixedLines) {
    row->setStatus(2);
    ASSERT_TRUE(row->placeholderAttributes() != nullptr);
    const KRTextAttributes& placeholder = *row->placeholderAttributes();
    EXPECT_EQ(placeholder.count(), 3u);
    EXPECT_EQ(placeholder.font, std::optional<QFont>(KRCheckListDefaults::font()));
    EXPECT_EQ(placeholder.foregroundColor, std::optional<QColor>(KRCheckListDefaults::placeholderColor()));
    EXPECT_FALSE(placeholder.strikethroughStyle.has_value());
    EXPECT_EQ(placeholder.paragraphStyle, row->titleAttributes()->paragraphStyle);
}

TEST_F(KRCheckListItemViewTests, RowsInTheSameStateShareOneAttributeSet) {
    auto other = std::make_shared<KRCheckListItemView>(KRRect{0, 0, 300, 28});
    row->setStatus(1);
    other->setStatus(1);
    EXPECT_EQ(row->titleAttributes(), other->titleAttributes());
    EXPECT_EQ(row->placeholderAttributes(), other->placeholderAttributes());
    other->setStatus(2);
    EXPECT_NE(row->titleAttributes(), other->titleAttributes());
    EXPECT_EQ(row->placeholderAttributes(), other->placeholderAttributes());
}

TEST_F(KRCheckListItemViewTests, TitleFieldShowsTheTitleWithTheTitleAttributesAfterAnUpdate) {
    row->update([&] {
        row->setTitle(QStringLiteral("Buy milk"));
        row->setStatus(1);
    });
    const KRAttributedString value = row->titleTextField()->attributedStringValue();
    EXPECT_EQ(value.string(), QStringLiteral("Buy milk"));
    EXPECT_TRUE(value.hasUniformAttributes());
    EXPECT_EQ(value.leadingAttributes(), *row->titleAttributes());
    EXPECT_EQ(row->titleTextField()->textColor(), finishedColor());
}

TEST_F(KRCheckListItemViewTests, HandleTitleColourAndDividersChangeWithoutAnimationInsideAnAnimationBlock) {
    row->setNeedsUpdate(true);
    KRView::performAnimated(true, [&](EZAnimationContext& context) {
        context.setInterpolationFunction(EZInterpolationFunctions::linearWithDuration(1.0));
        row->update([&] {
            row->setEdited(true);
            row->setStatus(1);
            row->setDrawsTopDivider(true);
            row->setDrawsBottomDivider(true);
        });
    });
    EXPECT_EQ(row->handleButtonView()->imageColor(), KRDefaults::sharkBlackColor());
    EXPECT_DOUBLE_EQ(row->handleButtonView()->imageAlpha(), 0.2);
    EXPECT_FALSE(row->handleButtonView()->hasRunningAnimations());
    EXPECT_EQ(row->titleTextField()->textColor(), finishedColor());
    EXPECT_FALSE(row->titleTextField()->hasRunningAnimations());
    for (const std::shared_ptr<KRView>& divider : {row->topDividerView(), row->bottomDividerView()}) {
        SCOPED_TRACE(divider->identifier().toStdString());
        EXPECT_FALSE(divider->hasRunningAnimationForKey("opacity"));
        EXPECT_EQ(divider->presentationAlphaValue(), 1.0);
    }
    KRClock::advance(1.0);
}

TEST_F(KRCheckListItemViewTests, ShapeBackgroundMayAnimateInsideAnAnimationBlock) {
    row->setNeedsUpdate(true);
    KRView::performAnimated(true, [&](EZAnimationContext& context) {
        context.setInterpolationFunction(EZInterpolationFunctions::linearWithDuration(1.0));
        row->setSelected(true);
    });
    const KRView& shape = *row->shapeView();
    EXPECT_EQ(shape.backgroundColor(), selectedFillColor());
    EXPECT_TRUE(shape.hasRunningAnimationForKey("backgroundColor"));
    EXPECT_NE(shape.presentationBackgroundColor(), selectedFillColor());
    KRClock::advance(1.0);
    EXPECT_FALSE(shape.hasRunningAnimationForKey("backgroundColor"));
    EXPECT_EQ(shape.presentationBackgroundColor(), selectedFillColor());
}

// Title and placeholder
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListItemViewTests, NewTitleOutsideABatchEndsWithTheTitleAttributes) {
    row->setNeedsUpdate(true);
    row->setTitle(QStringLiteral("x"));
    EXPECT_EQ(row->title(), QStringLiteral("x"));
    EXPECT_EQ(row->titleTextField()->attributedStringValue().leadingAttributes(), *row->titleAttributes());
}

TEST_F(KRCheckListItemViewTests, NewTitleInsideABatchTakesThePlaceholderAttributesUntilEndUpdates) {
    row->setStatus(2); // title attributes that differ from the placeholder's in colour and strikethrough
    ASSERT_NE(*row->titleAttributes(), *row->placeholderAttributes());
    row->beginUpdates();
    row->setTitle(QStringLiteral("Call the bank"));
    EXPECT_EQ(row->title(), QStringLiteral("Call the bank"));
    EXPECT_EQ(row->titleTextField()->attributedStringValue().leadingAttributes(),
              *row->placeholderAttributes());
    EXPECT_TRUE(row->isUpdateScheduled());
    row->endUpdates();
    EXPECT_EQ(row->titleTextField()->attributedStringValue().leadingAttributes(), *row->titleAttributes());
}

TEST_F(KRCheckListItemViewTests, NewTitleBeforeAnyUpdateStartsWithoutAttributes) {
    row->beginUpdates();
    row->setTitle(QStringLiteral("Plain"));
    EXPECT_EQ(row->titleTextField()->attributedStringValue().leadingAttributes().count(), 0u);
    row->endUpdates();
    EXPECT_EQ(row->titleTextField()->attributedStringValue().leadingAttributes(), *row->titleAttributes());
}

TEST_F(KRCheckListItemViewTests, SameTitleSchedulesNothing) {
    row->setTitle(QStringLiteral("Water the plants"));
    row->shapeView()->setBackgroundColor(sentinelColor());
    row->setTitle(QStringLiteral("Water the plants"));
    EXPECT_FALSE(updateRanSinceMark());
    row->beginUpdates();
    row->setTitle(QStringLiteral("Water the plants"));
    EXPECT_FALSE(row->isUpdateScheduled());
    row->endUpdates();
}

TEST_F(KRCheckListItemViewTests, NullTitleAndPlaceholderAreStoredAsEmptyStrings) {
    row->setTitle(QStringLiteral("Something"));
    row->setPlaceholder(QStringLiteral("Add an item"));
    row->setTitle(QString());
    row->setPlaceholder(QString());
    EXPECT_EQ(row->title(), QStringLiteral(""));
    EXPECT_FALSE(row->title().isNull());
    EXPECT_EQ(row->placeholder(), QStringLiteral(""));
    EXPECT_FALSE(row->placeholder().isNull());
    EXPECT_FALSE(row->titleTextField()->stringValue().isNull());
    EXPECT_FALSE(row->titleTextField()->placeholderString().isNull());
}

TEST_F(KRCheckListItemViewTests, PlaceholderChangeReachesNoDelegateOfTheField) {
    RecordingItemViewDelegate delegate;
    row->setDelegate(&delegate);
    row->setNeedsUpdate(true);
    row->setPlaceholder(QStringLiteral("Add an item"));
    EXPECT_EQ(row->placeholder(), QStringLiteral("Add an item"));
    EXPECT_EQ(row->titleTextField()->placeholderString(), QStringLiteral("Add an item"));
    EXPECT_TRUE(delegate.calls.empty()) << delegate.methods().join(QLatin1Char(',')).toStdString();
    EXPECT_EQ(row->titleTextField()->delegate(),
              static_cast<KRCheckListItemTitleTextFieldDelegate*>(row.get()));
    EXPECT_EQ(row->titleTextField()->KRTextField::delegate(), static_cast<KRTextFieldDelegate*>(row.get()));
}

TEST_F(KRCheckListItemViewTests, PlaceholderKeepsTheAttributesCurrentWhenItWasSet) {
    // Before any update there are no placeholder attributes yet; the update the change runs leaves the
    // placeholder as it was set.
    row->setPlaceholder(QStringLiteral("Add an item"));
    EXPECT_TRUE(row->placeholderAttributes() != nullptr);
    EXPECT_EQ(row->titleTextField()->placeholderAttributedString().leadingAttributes().count(), 0u);

    row->setPlaceholder(QStringLiteral("Add another item"));
    EXPECT_EQ(row->titleTextField()->placeholderAttributedString().string(),
              QStringLiteral("Add another item"));
    EXPECT_EQ(row->titleTextField()->placeholderAttributedString().leadingAttributes(),
              *row->placeholderAttributes());
}
