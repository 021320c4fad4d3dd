// The whole list against QListWidget on the same items, at 1,000 and 10,000 items (the reload also at
// 100,000, to show that its time grows linearly):
//   reload     ours: reloadItems, which builds every row and runs the first layout at a fixed width, with
//              the word measurements of the last reload forgotten;
//              theirs: populating a hidden QListWidget with checkable, word-wrapped items, showing it and
//              processing events until its items are laid out.
//   insert     one item at the top. Ours: the data source's change and its update transaction (beginUpdates,
//              updateByInsertingItemAtIndex(0), endUpdates, which lays out); theirs: insertItem(0, …) and
//              processing events until laid out.
//   move       the last item to the top. Ours: the data source's change and updateByMovingItemsAtIndexes-
//              ToIndex in a transaction; theirs: takeItem + insertItem and processing events until laid out.
//
// Our list is the content view of a window, and each of our timed parts ends with the window's pass, as
// the widget's end with Qt's event processing. Each benchmark builds its list once. Only the operation
// itself is timed, by hand (manual time), so that what puts the list back between iterations costs
// nothing and needs no PauseTiming: the empty list before a reload, and the removal of the inserted item
// after an insert. Moving the last item to the top needs no undoing: the items just rotate. Toolkit work
// the list defers is drained outside the timed part.
#include "Foundation/KRRunLoop.h"
#include "KRCheckListView.h"
#include "Support/KRBenchmarkTitles.h"
#include "Support/KRRatioReporter.h"
#include "Text/KRTextView.h"
#include "Text/KRWordAdvanceCache.h"
#include "Views/KRWindow.h"

#include <QApplication>
#include <QJsonValue>
#include <QListWidget>

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <vector>

namespace {

constexpr double kListWidth = 400.0;
constexpr int kListWidgetHeight = 600;
// Every third item is done, as in a list in use.
constexpr int kCompletedEvery = 3;

KRUInteger statusForIndex(std::size_t index) {
    return index % kCompletedEvery == 0 ? 1 : 0;
}

// The list's items in memory: the smallest data source that changes its items as a real one does.
class BenchmarkItems : public KRCheckListViewDataSource {
public:
    struct Item {
        QJsonValue identifier;
        KRUInteger status = 0;
        QString title;
    };

    explicit BenchmarkItems(const std::vector<QString>& titles) {
        for (const QString& title : titles) {
            m_items.push_back(makeItem(title, statusForIndex(m_items.size())));
        }
    }

    Item makeItem(const QString& title, KRUInteger status) {
        return Item{QJsonValue(static_cast<qint64>(m_nextIdentifier++)), status, title};
    }
    void insert(Item item, std::size_t index) {
        m_items.insert(m_items.begin() + static_cast<std::ptrdiff_t>(index), std::move(item));
    }
    void remove(std::size_t index) { m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(index)); }
    void moveLastToTop() {
        Item last = std::move(m_items.back());
        m_items.pop_back();
        insert(std::move(last), 0);
    }
    // Hides the items from a reload (or shows them again) without discarding them.
    void setHidden(bool hidden) { m_hidden = hidden; }

    KRUInteger checkListViewNumberOfItems(KRCheckListView*) override { return m_hidden ? 0 : m_items.size(); }
    QJsonValue checkListViewIdentifierForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        return m_items[index].identifier;
    }
    KRUInteger checkListViewStatusForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        return m_items[index].status;
    }
    QString checkListViewTitleForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        return m_items[index].title;
    }
    KRUInteger checkListViewValidateChangedStatusForItemAtIndex(KRCheckListView*, KRUInteger status,
                                                                KRUInteger) override {
        return status;
    }
    QString checkListViewValidateChangedTitleForItemAtIndex(KRCheckListView*, const QString& title,
                                                            KRUInteger) override {
        return title;
    }
    void checkListViewInsertItemsAtIndexes(KRCheckListView*, const KRIndexSet&) override {}
    void checkListViewRemoveItemsAtIndexes(KRCheckListView*, const KRIndexSet&) override {}
    void checkListViewMoveItemsAtIndexesToIndex(KRCheckListView*, const KRIndexSet&, KRUInteger) override {}

private:
    std::vector<Item> m_items;
    qint64 m_nextIdentifier = 1;
    bool m_hidden = false;
};

// A list of the given titles at the benchmark's width in a window, reloaded and laid out once.
struct OurList {
    std::shared_ptr<BenchmarkItems> items;
    std::shared_ptr<KRCheckListView> view;
    std::unique_ptr<KRWindow> window;
};

OurList makeOurList(const std::vector<QString>& titles) {
    KRTextView::installTextSystem();
    OurList list{std::make_shared<BenchmarkItems>(titles),
                 std::make_shared<KRCheckListView>(KRRectMake(0.0, 0.0, kListWidth, kListWidgetHeight)),
                 std::make_unique<KRWindow>()};
    list.window->setContentView(list.view);
    list.view->setDataSource(list.items);
    list.view->reloadItems();
    list.window->updateIfNeeded();
    return list;
}

QListWidgetItem* makeListWidgetItem(const QString& title, KRUInteger status) {
    auto* item = new QListWidgetItem(title);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable | Qt::ItemIsEditable);
    item->setCheckState(status ? Qt::Checked : Qt::Unchecked);
    return item;
}

void populate(QListWidget& list, const std::vector<QString>& titles) {
    for (std::size_t index = 0; index < titles.size(); ++index) {
        list.addItem(makeListWidgetItem(titles[index], statusForIndex(index)));
    }
}

std::unique_ptr<QListWidget> makeListWidget() {
    auto list = std::make_unique<QListWidget>();
    list->setWordWrap(true);
    list->resize(static_cast<int>(kListWidth), kListWidgetHeight);
    return list;
}

// Lets the widget run the layout it deferred (and paint what shows). Asking for an item's rectangle lays out
// whatever is still pending, so the items are laid out when this returns.
void processEventsUntilLaidOut(QListWidget& list) {
    QApplication::processEvents();
    benchmark::DoNotOptimize(list.visualItemRect(list.item(list.count() - 1)));
}

using Clock = std::chrono::steady_clock;

template <class Operation> double secondsOf(Operation operation) {
    const Clock::time_point start = Clock::now();
    operation();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void drainDeferredWork() {
    KRRunLoop::main().runUntilIdle();
}

// Reload --------------------------------------------------------------------------------------------------

void BM_KRCheckListView_Reload(benchmark::State& state) {
    OurList list = makeOurList(KRBenchmarkTitles(static_cast<int>(state.range(0))));
    for (auto _ : state) {
        list.items->setHidden(true);
        list.view->reloadItems();
        list.items->setHidden(false);
        list.window->updateIfNeeded();
        drainDeferredWork();
        // Every reload measures its words afresh, as the first reload after a start does.
        KRWordAdvanceCache::clearShared();
        state.SetIterationTime(secondsOf([&] {
            list.view->reloadItems();
            list.window->updateIfNeeded();
        }));
        benchmark::DoNotOptimize(list.view->lastSizeThatFits());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_QListWidget_Reload(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    const std::unique_ptr<QListWidget> list = makeListWidget();
    for (auto _ : state) {
        list->hide();
        list->clear();
        QApplication::processEvents();
        state.SetIterationTime(secondsOf([&] {
            populate(*list, titles);
            list->show();
            processEventsUntilLaidOut(*list);
        }));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Insert at the top ---------------------------------------------------------------------------------------

void BM_KRCheckListView_InsertAtTop(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    OurList list = makeOurList(titles);
    std::size_t next = 0;
    for (auto _ : state) {
        BenchmarkItems::Item item = list.items->makeItem(titles[next++ % titles.size()], 0);
        state.SetIterationTime(secondsOf([&] {
            list.items->insert(std::move(item), 0);
            list.view->beginUpdates();
            list.view->updateByInsertingItemAtIndex(0);
            list.view->endUpdates();
            list.window->updateIfNeeded();
        }));
        list.items->remove(0);
        list.view->beginUpdates();
        list.view->updateByRemovingItemAtIndex(0);
        list.view->endUpdates();
        list.window->updateIfNeeded();
        drainDeferredWork();
    }
}

void BM_QListWidget_InsertAtTop(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    const std::unique_ptr<QListWidget> list = makeListWidget();
    populate(*list, titles);
    list->show();
    processEventsUntilLaidOut(*list);
    std::size_t next = 0;
    for (auto _ : state) {
        QListWidgetItem* item = makeListWidgetItem(titles[next++ % titles.size()], 0);
        state.SetIterationTime(secondsOf([&] {
            list->insertItem(0, item);
            processEventsUntilLaidOut(*list);
        }));
        delete list->takeItem(0);
        processEventsUntilLaidOut(*list);
    }
}

// Move the last item to the top ---------------------------------------------------------------------------

void BM_KRCheckListView_MoveLastToTop(benchmark::State& state) {
    OurList list = makeOurList(KRBenchmarkTitles(static_cast<int>(state.range(0))));
    const KRUInteger last = list.view->numberOfItems() - 1;
    for (auto _ : state) {
        state.SetIterationTime(secondsOf([&] {
            list.items->moveLastToTop();
            list.view->beginUpdates();
            list.view->updateByMovingItemsAtIndexesToIndex(KRIndexSet(last), 0);
            list.view->endUpdates();
            list.window->updateIfNeeded();
        }));
        drainDeferredWork();
    }
}

void BM_QListWidget_MoveLastToTop(benchmark::State& state) {
    const std::unique_ptr<QListWidget> list = makeListWidget();
    populate(*list, KRBenchmarkTitles(static_cast<int>(state.range(0))));
    list->show();
    processEventsUntilLaidOut(*list);
    for (auto _ : state) {
        state.SetIterationTime(secondsOf([&] {
            QListWidgetItem* item = list->takeItem(list->count() - 1);
            list->insertItem(0, item);
            processEventsUntilLaidOut(*list);
        }));
    }
}

} // namespace

BENCHMARK(BM_KRCheckListView_Reload)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QListWidget_Reload)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRCheckListView_InsertAtTop)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QListWidget_InsertAtTop)->Arg(1000)->Arg(10000)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRCheckListView_MoveLastToTop)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QListWidget_MoveLastToTop)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    return KRRunBenchmarksWithRatios(
        argc, argv,
        {{"reload + first layout (ms)", "BM_KRCheckListView_Reload", "BM_QListWidget_Reload", "QListWidget"},
         {"insert one item at the top (ms)", "BM_KRCheckListView_InsertAtTop", "BM_QListWidget_InsertAtTop",
          "QListWidget"},
         {"move the last item to the top (ms)", "BM_KRCheckListView_MoveLastToTop",
          "BM_QListWidget_MoveLastToTop", "QListWidget"}});
}
