// Copy and paste against QListWidget doing the same:
//   paste   N lines of plain text pasted into a list of N items whose middle item is selected, so every
//           insert lands mid-list and the selected item is replaced. Ours: paste(), the window's pass and
//           the deferred begin-editing of the last pasted item; theirs: the same lines inserted one by one
//           after the middle item of a shown QListWidget, then processing events until laid out.
//   copy    10,000 selected items. Ours: copy() writing both representations to an in-memory pasteboard;
//           theirs: reading the 10,000 items' texts into one string.
//
// The data source changes its items and reports each change in an update transaction, as a host does.
// Only the operation is timed, by hand; the list is put back between iterations outside the timed part.
#include "Foundation/KRRunLoop.h"
#include "KRCheckListView.h"
#include "Platform/KRPasteboard.h"
#include "Support/KRBenchmarkEditedItems.h"
#include "Support/KRBenchmarkTitles.h"
#include "Support/KRRatioReporter.h"
#include "Text/KRTextView.h"
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
constexpr int kListHeight = 600;
constexpr int kCopiedItems = 10000;

struct OurList {
    std::shared_ptr<KRBenchmarkEditedItems> items =
        std::make_shared<KRBenchmarkEditedItems>(std::vector<QString>());
    std::shared_ptr<KRCheckListView> view =
        std::make_shared<KRCheckListView>(KRRectMake(0.0, 0.0, kListWidth, kListHeight));
    std::unique_ptr<KRWindow> window = std::make_unique<KRWindow>();
};

std::unique_ptr<OurList> makeOurList() {
    KRTextView::installTextSystem();
    auto list = std::make_unique<OurList>();
    list->window->setContentView(list->view);
    list->view->setDataSource(list->items);
    return list;
}

// The list shows these titles afresh, with its middle item selected.
void resetWithMiddleSelected(OurList& list, const std::vector<QString>& titles) {
    list.view->endEditing();
    list.items->setTitles(titles);
    list.view->reloadItems();
    list.view->selectItemAtIndexByExtendingSelection(titles.size() / 2, false);
    list.window->updateIfNeeded();
    KRRunLoop::main().runUntilIdle();
}

QString linesOf(const std::vector<QString>& titles) {
    QString text;
    for (const QString& title : titles) {
        text += QStringLiteral("- ") + title + QLatin1Char('\n');
    }
    return text;
}

using Clock = std::chrono::steady_clock;

template <class Operation> double secondsOf(Operation operation) {
    const Clock::time_point start = Clock::now();
    operation();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Paste ---------------------------------------------------------------------------------------------------

void BM_KRCheckListView_PasteLines(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    const std::shared_ptr<KRPasteboard> pasteboard = KRPasteboard::makeInMemory();
    KRPasteboard::setGeneralPasteboard(pasteboard);
    pasteboard->declareTypes({KRPasteboardTypeString}, nullptr);
    pasteboard->setString(linesOf(titles), KRPasteboardTypeString);
    const std::unique_ptr<OurList> list = makeOurList();
    for (auto _ : state) {
        resetWithMiddleSelected(*list, titles);
        state.SetIterationTime(secondsOf([&] {
            list->view->paste();
            list->window->updateIfNeeded();
            KRRunLoop::main().runUntilIdle();
        }));
        if (list->view->numberOfItems() != 2 * titles.size() - 1) {
            state.SkipWithError("the paste did not insert every line");
            break;
        }
    }
    KRPasteboard::setGeneralPasteboard(nullptr);
}

void BM_QListWidget_InsertLinesAfterMiddle(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    QListWidget list;
    list.setWordWrap(true);
    list.resize(static_cast<int>(kListWidth), kListHeight);
    for (auto _ : state) {
        list.hide();
        list.clear();
        for (const QString& title : titles) {
            auto* item = new QListWidgetItem(title);
            item->setFlags(item->flags() | Qt::ItemIsUserCheckable | Qt::ItemIsEditable);
            item->setCheckState(Qt::Unchecked);
            list.addItem(item);
        }
        list.show();
        QApplication::processEvents();
        const int middle = static_cast<int>(titles.size() / 2);
        state.SetIterationTime(secondsOf([&] {
            int row = middle + 1;
            for (const QString& title : titles) {
                auto* item = new QListWidgetItem(title);
                item->setFlags(item->flags() | Qt::ItemIsUserCheckable | Qt::ItemIsEditable);
                item->setCheckState(Qt::Unchecked);
                list.insertItem(row++, item);
            }
            QApplication::processEvents();
            benchmark::DoNotOptimize(list.visualItemRect(list.item(list.count() - 1)));
        }));
    }
}

// Copy ----------------------------------------------------------------------------------------------------

void BM_KRCheckListView_CopyAll(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    const std::shared_ptr<KRPasteboard> pasteboard = KRPasteboard::makeInMemory();
    KRPasteboard::setGeneralPasteboard(pasteboard);
    const std::unique_ptr<OurList> list = makeOurList();
    resetWithMiddleSelected(*list, titles);
    list->view->selectAllItems();
    for (auto _ : state) {
        state.SetIterationTime(secondsOf([&] { list->view->copy(); }));
        benchmark::DoNotOptimize(pasteboard->changeCount());
    }
    KRPasteboard::setGeneralPasteboard(nullptr);
}

void BM_QListWidget_ReadAllTexts(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    QListWidget list;
    for (const QString& title : titles) {
        list.addItem(title);
    }
    for (auto _ : state) {
        state.SetIterationTime(secondsOf([&] {
            QString text;
            for (int row = 0; row < list.count(); ++row) {
                text += list.item(row)->text() + QLatin1Char('\n');
            }
            benchmark::DoNotOptimize(text);
        }));
    }
}

} // namespace

BENCHMARK(BM_KRCheckListView_PasteLines)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QListWidget_InsertLinesAfterMiddle)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRCheckListView_CopyAll)->Arg(kCopiedItems)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QListWidget_ReadAllTexts)->Arg(kCopiedItems)->UseManualTime()->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    return KRRunBenchmarksWithRatios(argc, argv,
                                     {{"paste N lines mid-list (ms)", "BM_KRCheckListView_PasteLines",
                                       "BM_QListWidget_InsertLinesAfterMiddle", "QListWidget"},
                                      {"copy 10,000 selected items (ms)", "BM_KRCheckListView_CopyAll",
                                       "BM_QListWidget_ReadAllTexts", "QListWidget"}});
}
