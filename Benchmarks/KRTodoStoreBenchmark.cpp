// KRTodo's SQLite storage against the list on the same items kept in memory, at 1,000 and 10,000 items:
//   open       ours: opening the database file, reading the checklist's items, building KRTodo's window on
//              them (which reloads the list) and settling it until its first picture is painted (a grab of
//              the window); theirs: the same window on the same items in memory, reloading its list and
//              painting again. The difference is what storage adds.
//   change     moving the last item to the top: the store's change, written and committed to the file,
//              and the list's update transaction with its layout; theirs: the same change of a store that
//              keeps its items in memory only.
//   commit     the same move without a list: the store's change and its committed write alone, against the
//              same change in memory.
//
// Only the operation itself is timed, by hand (manual time); building and tearing down around it is not.
#include "KRTodoDatabase.h"
#include "KRTodoStore.h"
#include "KRTodoWindow.h"

#include "Foundation/KRRunLoop.h"
#include "KRCheckListView.h"
#include "Support/KRBenchmarkTitles.h"
#include "Support/KRRatioReporter.h"
#include "Text/KRWordAdvanceCache.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <vector>

namespace {

constexpr int kWindowWidth = 480;
constexpr int kWindowHeight = 560;
// Every third item is done, as in a list in use.
constexpr int kCompletedEvery = 3;

std::vector<KRTodoItem> benchmarkItems(int count) {
    std::vector<KRTodoItem> items;
    const std::vector<QString> titles = KRBenchmarkTitles(count);
    for (std::size_t index = 0; index < titles.size(); ++index) {
        items.push_back(KRTodoItem{QString(),
                                   index % kCompletedEvery == 0 ? KRTodoItem::Completed : KRTodoItem::Open,
                                   titles[index]});
    }
    return items;
}

// A database file of count items in one checklist, made once per benchmark.
struct BenchmarkFile {
    QTemporaryDir directory;
    QString path;
    qint64 checklist = 0;
};

std::unique_ptr<BenchmarkFile> makeFile(int count) {
    auto file = std::make_unique<BenchmarkFile>();
    file->path = file->directory.filePath(QStringLiteral("KRTodo.sqlite"));
    std::shared_ptr<KRTodoDatabase> database = KRTodoDatabase::open(file->path);
    file->checklist = database->addChecklist(QStringLiteral("Benchmark"), 1.0).value_or(0);
    const std::shared_ptr<KRTodoStore> store = KRTodoStore::makeStore(database, file->checklist, QString());
    store->insertItems(benchmarkItems(count), KRIndexSet(KRRange{0, static_cast<KRUInteger>(count)}),
                       nullptr);
    return file;
}

void showForPainting(KRTodoWindow& window) {
    window.setAttribute(Qt::WA_DontShowOnScreen);
    window.resize(kWindowWidth, kWindowHeight);
    window.show();
}

// Settles the window and paints it as the screen would show it.
void paint(KRTodoWindow& window) {
    window.settle();
    benchmark::DoNotOptimize(window.grab());
}

using Clock = std::chrono::steady_clock;

template <class Operation> double secondsOf(Operation operation) {
    const Clock::time_point start = Clock::now();
    operation();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Open -----------------------------------------------------------------------------------------------------

void BM_KRTodo_OpenDatabaseToFirstPaint(benchmark::State& state) {
    const std::unique_ptr<BenchmarkFile> file = makeFile(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        KRWordAdvanceCache::clearShared();
        std::shared_ptr<KRTodoDatabase> database;
        std::shared_ptr<KRTodoStore> store;
        std::unique_ptr<KRTodoWindow> window;
        state.SetIterationTime(secondsOf([&] {
            database = KRTodoDatabase::open(file->path);
            store = KRTodoStore::makeStore(database, file->checklist, QStringLiteral("Benchmark"));
            window = std::make_unique<KRTodoWindow>(store);
            showForPainting(*window);
            paint(*window);
        }));
        if (store->count() != static_cast<KRUInteger>(state.range(0))) {
            state.SkipWithError("the database did not hold the items");
        }
        window.reset();
        store.reset();
        database.reset();
        KRRunLoop::main().runUntilIdle();
    }
}

void BM_KRTodo_ReloadInMemoryToFirstPaint(benchmark::State& state) {
    const auto store = std::make_shared<KRTodoStore>(benchmarkItems(static_cast<int>(state.range(0))));
    KRTodoWindow window(store);
    showForPainting(window);
    paint(window);
    for (auto _ : state) {
        KRWordAdvanceCache::clearShared();
        state.SetIterationTime(secondsOf([&] {
            window.checkListView().reloadItems();
            paint(window);
        }));
        KRRunLoop::main().runUntilIdle();
    }
}

// One structural change ------------------------------------------------------------------------------------

// Moves the last item to the top through the store, as the list's move command asks it, timed.
void moveLastToTop(benchmark::State& state, KRTodoStore& store, KRCheckListView* list) {
    // Each input event is a step of the history of its own.
    store.noteInputEvent(list);
    const KRUInteger last = store.count() - 1;
    state.SetIterationTime(secondsOf([&] { store.moveItems(KRIndexSet(last), 0, list); }));
    KRRunLoop::main().runUntilIdle();
}

void BM_KRTodo_MoveCommitted(benchmark::State& state) {
    const std::unique_ptr<BenchmarkFile> file = makeFile(static_cast<int>(state.range(0)));
    std::shared_ptr<KRTodoDatabase> database = KRTodoDatabase::open(file->path);
    const std::shared_ptr<KRTodoStore> store = KRTodoStore::makeStore(database, file->checklist, QString());
    KRTodoWindow window(store);
    showForPainting(window);
    paint(window);
    for (auto _ : state) {
        moveLastToTop(state, *store, &window.checkListView());
    }
}

void BM_KRTodo_MoveInMemory(benchmark::State& state) {
    const auto store = std::make_shared<KRTodoStore>(benchmarkItems(static_cast<int>(state.range(0))));
    KRTodoWindow window(store);
    showForPainting(window);
    paint(window);
    for (auto _ : state) {
        moveLastToTop(state, *store, &window.checkListView());
    }
}

void BM_KRTodoStore_MoveCommittedWithoutList(benchmark::State& state) {
    const std::unique_ptr<BenchmarkFile> file = makeFile(static_cast<int>(state.range(0)));
    std::shared_ptr<KRTodoDatabase> database = KRTodoDatabase::open(file->path);
    const std::shared_ptr<KRTodoStore> store = KRTodoStore::makeStore(database, file->checklist, QString());
    for (auto _ : state) {
        moveLastToTop(state, *store, nullptr);
    }
}

void BM_KRTodoStore_MoveInMemoryWithoutList(benchmark::State& state) {
    const auto store = std::make_shared<KRTodoStore>(benchmarkItems(static_cast<int>(state.range(0))));
    for (auto _ : state) {
        moveLastToTop(state, *store, nullptr);
    }
}

} // namespace

BENCHMARK(BM_KRTodo_OpenDatabaseToFirstPaint)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRTodo_ReloadInMemoryToFirstPaint)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRTodo_MoveCommitted)->Arg(1000)->Arg(10000)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRTodo_MoveInMemory)->Arg(1000)->Arg(10000)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRTodoStore_MoveCommittedWithoutList)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRTodoStore_MoveInMemoryWithoutList)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    return KRRunBenchmarksWithRatios(
        argc, argv,
        {{"open to the first painted window (ms)", "BM_KRTodo_OpenDatabaseToFirstPaint",
          "BM_KRTodo_ReloadInMemoryToFirstPaint", "reload in memory"},
         {"move the last item to the top, committed, with the list (ms)", "BM_KRTodo_MoveCommitted",
          "BM_KRTodo_MoveInMemory", "in memory"},
         {"move the last item to the top, committed, store alone (ms)",
          "BM_KRTodoStore_MoveCommittedWithoutList", "BM_KRTodoStore_MoveInMemoryWithoutList", "in memory"}});
}
