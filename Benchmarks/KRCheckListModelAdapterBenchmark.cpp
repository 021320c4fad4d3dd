// A reload through KRCheckListModelAdapter over a QStandardItemModel against the list's own reload with a
// hand-written data source, on the same open items, at 1,000 and 10,000 items. Both
// build every row and run the first layout at a fixed width in a window, with the word measurements of the
// last reload forgotten; only that is timed (manual time). The adapter's reload is the one a new model
// starts: setModel, which also numbers the rows.
#include "Foundation/KRRunLoop.h"
#include "KRCheckListModelAdapter.h"
#include "KRCheckListView.h"
#include "Support/KRBenchmarkEditedItems.h"
#include "Support/KRBenchmarkTitles.h"
#include "Support/KRRatioReporter.h"
#include "Text/KRTextView.h"
#include "Text/KRWordAdvanceCache.h"
#include "Views/KRWindow.h"

#include <QStandardItemModel>

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <vector>

namespace {

constexpr double kListWidth = 400.0;
constexpr double kListHeight = 600.0;

using Clock = std::chrono::steady_clock;

template <class Operation> double secondsOf(Operation operation) {
    const Clock::time_point start = Clock::now();
    operation();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

struct ListInWindow {
    std::shared_ptr<KRCheckListView> view =
        std::make_shared<KRCheckListView>(KRRectMake(0, 0, kListWidth, kListHeight));
    std::unique_ptr<KRWindow> window = std::make_unique<KRWindow>();
    ListInWindow() {
        KRTextView::installTextSystem();
        window->setContentView(view);
    }
};

void BM_KRCheckListModelAdapter_Reload(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    QStandardItemModel model;
    for (const QString& title : titles) {
        auto* item = new QStandardItem(title);
        item->setCheckState(Qt::Unchecked);
        model.appendRow(item);
    }
    ListInWindow list;
    const auto adapter = std::make_shared<KRCheckListModelAdapter>();
    adapter->setCheckListView(list.view);
    for (auto _ : state) {
        adapter->setModel(nullptr);
        list.window->updateIfNeeded();
        KRRunLoop::main().runUntilIdle();
        KRWordAdvanceCache::clearShared();
        state.SetIterationTime(secondsOf([&] {
            adapter->setModel(&model);
            list.window->updateIfNeeded();
        }));
        benchmark::DoNotOptimize(list.view->lastSizeThatFits());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_KRCheckListView_HandWrittenReload(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    ListInWindow list;
    const auto items = std::make_shared<KRBenchmarkEditedItems>(titles);
    list.view->setDataSource(items);
    for (auto _ : state) {
        items->setTitles({});
        list.view->reloadItems();
        list.window->updateIfNeeded();
        KRRunLoop::main().runUntilIdle();
        KRWordAdvanceCache::clearShared();
        items->setTitles(titles);
        state.SetIterationTime(secondsOf([&] {
            list.view->reloadItems();
            list.window->updateIfNeeded();
        }));
        benchmark::DoNotOptimize(list.view->lastSizeThatFits());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

} // namespace

BENCHMARK(BM_KRCheckListModelAdapter_Reload)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRCheckListView_HandWrittenReload)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    return KRRunBenchmarksWithRatios(
        argc, argv,
        {{"reload + first layout (ms)", "BM_KRCheckListModelAdapter_Reload",
          "BM_KRCheckListView_HandWrittenReload", "a hand-written data source"}});
}
