// Creating the rows of a 10,000-item list with their titles and running each row's first update and layout,
// against QListWidget creating the same checkable, word-wrapped items and laying them out. Also what a row
// holds in memory at rest, measured from the allocator's own count of bytes in use.
#include "KRCheckListItemView.h"
#include "Support/KRBenchmarkTitles.h"
#include "Support/KRRatioReporter.h"

#include <QListWidget>

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <memory>
#include <vector>

namespace {

constexpr double kRowWidth = 400.0;
constexpr double kRowHeight = 28.0;
// Every third item is done, as in a list in use.
constexpr int kCompletedEvery = 3;

KRUInteger statusForIndex(int index) {
    return index % kCompletedEvery == 0 ? 1 : 0;
}

std::shared_ptr<KRCheckListItemView> makeRow(const QString& title, KRUInteger status, double y) {
    auto row = std::make_shared<KRCheckListItemView>(KRRect{0.0, y, kRowWidth, kRowHeight});
    row->update([&] {
        row->setMinHeight(kRowHeight);
        row->setTitle(title);
        row->setStatus(status);
    });
    row->setFrameSize(row->sizeThatFits(KRSize{kRowWidth, kRowHeight}));
    row->layoutIfNeeded();
    return row;
}

std::vector<std::shared_ptr<KRCheckListItemView>> makeRows(const std::vector<QString>& titles) {
    std::vector<std::shared_ptr<KRCheckListItemView>> rows;
    rows.reserve(titles.size());
    double y = 0.0;
    for (std::size_t index = 0; index < titles.size(); ++index) {
        rows.push_back(makeRow(titles[index], statusForIndex(static_cast<int>(index)), y));
        y += rows.back()->frame().size.height;
    }
    return rows;
}

std::unique_ptr<QListWidget> makeListWidget(const std::vector<QString>& titles) {
    auto list = std::make_unique<QListWidget>();
    list->setWordWrap(true);
    list->resize(static_cast<int>(kRowWidth), 600);
    for (std::size_t index = 0; index < titles.size(); ++index) {
        auto* item = new QListWidgetItem(titles[index], list.get());
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable | Qt::ItemIsEditable);
        item->setCheckState(statusForIndex(static_cast<int>(index)) ? Qt::Checked : Qt::Unchecked);
    }
    // Sizes every item, wrapped at the list's width.
    list->doItemsLayout();
    return list;
}

void BM_KRCheckListItemView_CreateUpdateLayout(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        auto rows = makeRows(titles);
        benchmark::DoNotOptimize(rows.back().get());
        state.PauseTiming();
        rows.clear();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_QListWidget_CreateLayout(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        auto list = makeListWidget(titles);
        benchmark::DoNotOptimize(list->visualItemRect(list->item(list->count() - 1)));
        state.PauseTiming();
        list.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Bytes in use according to the allocator, overhead included.
double bytesInUse() {
    return static_cast<double>(mallinfo2().uordblks);
}

// Memory is reported as counters: bytes per row at rest with empty titles (the row itself) and with the
// benchmark's titles (row plus text and its attributes).
template <class Make> void reportBytesPerRow(benchmark::State& state, Make make) {
    const int count = static_cast<int>(state.range(0));
    const std::vector<QString> empty(static_cast<std::size_t>(count), QString());
    const std::vector<QString> titles = KRBenchmarkTitles(count);
    double emptyBytes = 0.0;
    double titledBytes = 0.0;
    for (auto _ : state) {
        const double before = bytesInUse();
        auto emptyRows = make(empty);
        emptyBytes = bytesInUse() - before;
        auto titledRows = make(titles);
        titledBytes = bytesInUse() - before - emptyBytes;
        benchmark::DoNotOptimize(&emptyRows);
        benchmark::DoNotOptimize(&titledRows);
    }
    state.counters["bytes_per_row"] = emptyBytes / count;
    state.counters["bytes_per_titled_row"] = titledBytes / count;
}

void BM_KRCheckListItemView_Memory(benchmark::State& state) {
    reportBytesPerRow(state, makeRows);
}

void BM_QListWidget_Memory(benchmark::State& state) {
    reportBytesPerRow(state, makeListWidget);
}

} // namespace

BENCHMARK(BM_KRCheckListItemView_CreateUpdateLayout)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QListWidget_CreateLayout)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRCheckListItemView_Memory)->Arg(10000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QListWidget_Memory)->Arg(10000)->Iterations(1)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    return KRRunBenchmarksWithRatios(
        argc, argv,
        {{"create + first update + layout (ms)", "BM_KRCheckListItemView_CreateUpdateLayout",
          "BM_QListWidget_CreateLayout", "QListWidget"},
         {"rows at rest, built twice (ms)", "BM_KRCheckListItemView_Memory", "BM_QListWidget_Memory",
          "QListWidget"}});
}
