// Editing a title in a long list, at 1,000 and 10,000 items, through the window's key path: each key is a
// KREvent sent to the window, so the key bindings, the field editor and the list's command handling all run,
// and each timed part ends with the window's pass.
//   keystroke  one character typed at the end of the edited title (it goes to the data source as a
//              validated title);
//   split      Return in the middle of the edited title: a new item below takes the text after the caret;
//   merge      Backspace at the start of the edited title joins it to the title above and removes its item.
//
// The edited item sits in the middle of the list. Only the key itself is timed, by hand (manual time); what
// puts the list back between iterations runs outside the timed part: Backspace after a keystroke, the
// merge after a split and the split before a merge. Every iteration checks that its key did what it should,
// so a key that silently does nothing fails the benchmark instead of timing nothing.
#include "Foundation/KRRunLoop.h"
#include "KRCheckListView.h"
#include "Support/KRBenchmarkEditedItems.h"
#include "Support/KRBenchmarkTitles.h"
#include "Support/KRRatioReporter.h"
#include "Text/KRTextView.h"
#include "Views/KREvent.h"
#include "Views/KRWindow.h"

#include <QJsonValue>

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <vector>

namespace {

constexpr double kListWidth = 400.0;
constexpr double kListHeight = 600.0;

// A list of the given titles in a window, laid out, with the middle item edited at the caret's range.
struct EditedList {
    std::shared_ptr<KRBenchmarkEditedItems> items;
    std::shared_ptr<KRCheckListView> view;
    std::unique_ptr<KRWindow> window;
    KRUInteger editedIndex = 0;
};

void drainDeferredWork(EditedList& list) {
    KRRunLoop::main().runUntilIdle();
    list.window->updateIfNeeded();
}

EditedList makeEditedList(std::vector<QString> titles, const QString& editedTitle, KRRange caret) {
    KRTextView::installTextSystem();
    const KRUInteger middle = titles.size() / 2;
    titles[middle] = editedTitle;
    EditedList list{std::make_shared<KRBenchmarkEditedItems>(titles),
                    std::make_shared<KRCheckListView>(KRRectMake(0.0, 0.0, kListWidth, kListHeight)),
                    std::make_unique<KRWindow>(), middle};
    list.window->setContentView(list.view);
    list.view->setDataSource(list.items);
    list.view->reloadItems();
    list.window->updateIfNeeded();
    list.view->beginEditingItemAtIndexSelectRange(middle, caret);
    drainDeferredWork(list);
    return list;
}

// One key as the host widget delivers it: a key down for the window's first responder, and its key up.
void sendKey(KRWindow& window, const QString& characters, unsigned short keyCode) {
    KREvent::setCurrentModifierFlags(0);
    window.sendEvent(
        KREvent::keyEvent(KREventType::KeyDown, 0, characters, characters.toLower(), keyCode, &window));
    window.sendEvent(
        KREvent::keyEvent(KREventType::KeyUp, 0, characters, characters.toLower(), keyCode, &window));
}

void typeCharacter(KRWindow& window) {
    sendKey(window, QStringLiteral("x"), KRKeyCode::X);
}
void pressReturn(KRWindow& window) {
    sendKey(window, QStringLiteral("\r"), KRKeyCode::Return);
}
void pressBackspace(KRWindow& window) {
    sendKey(window, QString(QChar(0x7f)), KRKeyCode::Delete);
}

using Clock = std::chrono::steady_clock;

template <class Operation> double secondsOf(Operation operation) {
    const Clock::time_point start = Clock::now();
    operation();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// The two halves of the title that Return splits and Backspace joins.
const QString kHead = QStringLiteral("Renew the passport before");
const QString kTail = QStringLiteral(" the trip to Lisbon");

// Keystroke ---------------------------------------------------------------------------------------------

void BM_KRCheckListView_Keystroke(benchmark::State& state) {
    EditedList list = makeEditedList(KRBenchmarkTitles(static_cast<int>(state.range(0))), kHead + kTail,
                                     KRRange{KRUIntegerMax, 0});
    const QString& title = list.items->items()[list.editedIndex].title;
    const QString typed = kHead + kTail + QLatin1Char('x');
    for (auto _ : state) {
        state.SetIterationTime(secondsOf([&] {
            typeCharacter(*list.window);
            list.window->updateIfNeeded();
        }));
        if (title != typed) {
            state.SkipWithError("the typed character did not reach the data source");
            break;
        }
        pressBackspace(*list.window);
        drainDeferredWork(list);
    }
}

// Return splitting a title -----------------------------------------------------------------------------

void BM_KRCheckListView_ReturnSplitsTitle(benchmark::State& state) {
    EditedList list = makeEditedList(KRBenchmarkTitles(static_cast<int>(state.range(0))), kHead + kTail,
                                     KRRange{static_cast<KRUInteger>(kHead.size()), 0});
    const KRUInteger count = list.view->numberOfItems();
    const KRUInteger edited = list.editedIndex;
    for (auto _ : state) {
        state.SetIterationTime(secondsOf([&] {
            pressReturn(*list.window);
            list.window->updateIfNeeded();
        }));
        if (list.view->numberOfItems() != count + 1 || list.items->items()[edited].title != kHead ||
            list.items->items()[edited + 1].title != kTail || list.view->indexForEditedItem() != edited + 1) {
            state.SkipWithError("Return did not split the title");
            break;
        }
        // Backspace at the start of the new item joins it back, with the caret where the split was.
        pressBackspace(*list.window);
        drainDeferredWork(list);
    }
}

// Backspace merging two titles ---------------------------------------------------------------------------

void BM_KRCheckListView_BackspaceMergesTitles(benchmark::State& state) {
    EditedList list = makeEditedList(KRBenchmarkTitles(static_cast<int>(state.range(0))), kHead + kTail,
                                     KRRange{static_cast<KRUInteger>(kHead.size()), 0});
    const KRUInteger count = list.view->numberOfItems();
    const KRUInteger edited = list.editedIndex;
    for (auto _ : state) {
        // Split first: the caret goes to the start of the tail's new item.
        pressReturn(*list.window);
        drainDeferredWork(list);
        state.SetIterationTime(secondsOf([&] {
            pressBackspace(*list.window);
            list.window->updateIfNeeded();
        }));
        if (list.view->numberOfItems() != count || list.items->items()[edited].title != kHead + kTail ||
            list.view->indexForEditedItem() != edited) {
            state.SkipWithError("Backspace did not merge the titles");
            break;
        }
        drainDeferredWork(list);
    }
}

} // namespace

BENCHMARK(BM_KRCheckListView_Keystroke)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_KRCheckListView_ReturnSplitsTitle)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_KRCheckListView_BackspaceMergesTitles)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv) {
    // No reference to compare with: the figures stand on their own (goal: under 1 ms at 10,000 items).
    return KRRunBenchmarksWithRatios(argc, argv, {});
}
