// The list at 10,000 items against QListWidget with the same items: building every row and laying the list
// out (reloadItems and the window's first pass, against populating and showing the widget), inserting one
// item at the top, and moving the last item to the top (one update transaction and the layout that follows,
// against the widget's insert or take-and-insert and the layout that follows).
#include "KRCheckListKit.h"
#include "Support/KRBenchmarkTitles.h"
#include "Support/KRRatioReporter.h"

#include "Text/KRTextView.h"
#include "Views/KRWindow.h"

#include <QCoreApplication>
#include <QListWidget>

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace {

constexpr double kListWidth = 400.0;
constexpr double kListHeight = 600.0;
constexpr int kCompletedEvery = 3;

KRUInteger statusForIndex(std::size_t index) {
    return index % kCompletedEvery == 0 ? 1 : 0;
}

// Items in memory; changes are reported to the list as they are made.
class BenchmarkDataSource : public KRCheckListViewDataSource {
public:
    struct Item {
        int identifier;
        KRUInteger status;
        QString title;
    };

    explicit BenchmarkDataSource(const std::vector<QString>& titles) {
        items.reserve(titles.size());
        for (std::size_t index = 0; index < titles.size(); ++index) {
            items.push_back(Item{nextIdentifier++, statusForIndex(index), titles[index]});
        }
    }

    KRUInteger checkListViewNumberOfItems(KRCheckListView*) override { return items.size(); }
    QJsonValue checkListViewIdentifierForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        return QJsonValue(items[index].identifier);
    }
    KRUInteger checkListViewStatusForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        return items[index].status;
    }
    QString checkListViewTitleForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        return items[index].title;
    }
    KRUInteger checkListViewValidateChangedStatusForItemAtIndex(KRCheckListView*, KRUInteger status,
                                                                KRUInteger) override {
        return status;
    }
    QString checkListViewValidateChangedTitleForItemAtIndex(KRCheckListView*, const QString& title,
                                                            KRUInteger) override {
        return title;
    }
    void checkListViewInsertItemsAtIndexes(KRCheckListView* list, const KRIndexSet& indexes) override {
        for (const KRUInteger index : indexes) {
            items.insert(items.begin() + static_cast<std::ptrdiff_t>(index),
                         Item{nextIdentifier++, 0, QStringLiteral("A new item")});
        }
        list->beginUpdates();
        list->updateByInsertingItemsAtIndexes(indexes);
        list->endUpdates();
    }
    void checkListViewRemoveItemsAtIndexes(KRCheckListView* list, const KRIndexSet& indexes) override {
        const std::vector<KRUInteger> removed = indexes.indexes();
        for (auto it = removed.rbegin(); it != removed.rend(); ++it) {
            items.erase(items.begin() + static_cast<std::ptrdiff_t>(*it));
        }
        list->beginUpdates();
        list->updateByRemovingItemsAtIndexes(indexes);
        list->endUpdates();
    }
    // Moves one item (all the benchmark needs).
    void checkListViewMoveItemsAtIndexesToIndex(KRCheckListView* list, const KRIndexSet& indexes,
                                                KRUInteger toIndex) override {
        const KRUInteger from = indexes.firstIndex();
        const Item item = items[from];
        items.erase(items.begin() + static_cast<std::ptrdiff_t>(from));
        const KRUInteger to = from < toIndex ? toIndex - 1 : toIndex;
        items.insert(items.begin() + static_cast<std::ptrdiff_t>(to), item);
        list->beginUpdates();
        list->updateByMovingItemsAtIndexesToIndex(indexes, toIndex);
        list->endUpdates();
    }

    std::vector<Item> items;
    int nextIdentifier = 0;
};

// A list in a window, as an application holds it.
struct ListInWindow {
    explicit ListInWindow(const std::vector<QString>& titles) {
        KRTextView::installTextSystem();
        window = std::make_unique<KRWindow>();
        auto content = std::make_shared<KRView>(KRRect{KRPointZero, KRSize{kListWidth, kListHeight}});
        window->setContentView(content);
        list = std::make_shared<KRCheckListView>(KRRect{KRPointZero, KRSize{kListWidth, kListHeight}});
        content->addSubview(list);
        dataSource = std::make_shared<BenchmarkDataSource>(titles);
        list->setDataSource(dataSource);
    }
    void reloadAndShow() {
        list->reloadItems();
        window->updateIfNeeded();
    }

    std::unique_ptr<KRWindow> window;
    std::shared_ptr<KRCheckListView> list;
    std::shared_ptr<BenchmarkDataSource> dataSource;
};

std::unique_ptr<QListWidget> makeListWidget(const std::vector<QString>& titles) {
    auto list = std::make_unique<QListWidget>();
    list->setWordWrap(true);
    list->resize(static_cast<int>(kListWidth), static_cast<int>(kListHeight));
    for (std::size_t index = 0; index < titles.size(); ++index) {
        auto* item = new QListWidgetItem(titles[index], list.get());
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable | Qt::ItemIsEditable);
        item->setCheckState(statusForIndex(index) ? Qt::Checked : Qt::Unchecked);
    }
    return list;
}

// Shows the widget and lets it lay out (every item is sized, wrapped at the list's width) and paint.
void showAndSettle(QListWidget& list) {
    if (!list.isVisible()) {
        list.show();
    }
    list.doItemsLayout();
    QCoreApplication::processEvents();
}

void BM_KRCheckListView_ReloadAndLayout(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        auto list = std::make_unique<ListInWindow>(titles);
        state.ResumeTiming();
        list->reloadAndShow();
        benchmark::DoNotOptimize(list->list->lastSizeThatFits());
        state.PauseTiming();
        list.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Reloading a list that already shows its rows: the old rows go, new ones come.
void BM_KRCheckListView_ReloadAgain(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    ListInWindow list(titles);
    list.reloadAndShow();
    for (auto _ : state) {
        list.reloadAndShow();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_QListWidget_PopulateAndShow(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        auto list = makeListWidget(titles);
        showAndSettle(*list);
        benchmark::DoNotOptimize(list->visualItemRect(list->item(list->count() - 1)));
        state.PauseTiming();
        list.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_KRCheckListView_InsertAtTop(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    ListInWindow list(titles);
    list.reloadAndShow();
    for (auto _ : state) {
        list.list->insertItemAtIndex(0);
        list.window->updateIfNeeded();
        state.PauseTiming();
        list.list->removeItemAtIndex(0);
        list.window->updateIfNeeded();
        state.ResumeTiming();
    }
}

void BM_QListWidget_InsertAtTop(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    auto list = makeListWidget(titles);
    showAndSettle(*list);
    for (auto _ : state) {
        auto* item = new QListWidgetItem(QStringLiteral("A new item"));
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable | Qt::ItemIsEditable);
        item->setCheckState(Qt::Unchecked);
        list->insertItem(0, item);
        showAndSettle(*list);
        state.PauseTiming();
        delete list->takeItem(0);
        showAndSettle(*list);
        state.ResumeTiming();
    }
}

void BM_KRCheckListView_MoveLastToTop(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    ListInWindow list(titles);
    list.reloadAndShow();
    for (auto _ : state) {
        list.list->moveItemAtIndexToIndex(list.list->numberOfItems() - 1, 0);
        list.window->updateIfNeeded();
    }
}

void BM_QListWidget_MoveLastToTop(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    auto list = makeListWidget(titles);
    showAndSettle(*list);
    for (auto _ : state) {
        QListWidgetItem* item = list->takeItem(list->count() - 1);
        list->insertItem(0, item);
        showAndSettle(*list);
    }
}

} // namespace

BENCHMARK(BM_KRCheckListView_ReloadAndLayout)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRCheckListView_ReloadAgain)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QListWidget_PopulateAndShow)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRCheckListView_InsertAtTop)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QListWidget_InsertAtTop)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRCheckListView_MoveLastToTop)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QListWidget_MoveLastToTop)->Arg(10000)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    return KRRunBenchmarksWithRatios(
        argc, argv,
        {{"reloadItems + first layout (ms)", "BM_KRCheckListView_ReloadAndLayout",
          "BM_QListWidget_PopulateAndShow", "QListWidget"},
         {"insert at the top + layout (ms)", "BM_KRCheckListView_InsertAtTop", "BM_QListWidget_InsertAtTop",
          "QListWidget"},
         {"move the last item to the top + layout (ms)", "BM_KRCheckListView_MoveLastToTop",
          "BM_QListWidget_MoveLastToTop", "QListWidget"}});
}
