// Dragging a row in a long list, at 1,000 and 10,000 items, as a screen sees it: the list sits in a host
// widget 400 points wide, a row near the top is held by its handle, and a frame is shown through a
// 400 × 600 viewport at the top of the list.
//   drag frame  one mouse-dragged event sent to the host widget (the handle reports it to the list, which
//               lays out with the dragging layout and cross-fades the placeholder), one animation tick of a
//               60 Hz display, the window's pass, and the viewport painted;
//   floor       the same viewport painted with no event and no layout: what any frame costs at least.
//
// The pointer alternates between two rows, so every frame moves the gap and sets the rows between on the
// spring. Every iteration checks that the drag is still running and that the gap is where the pointer put
// it, so a frame that silently does nothing fails the benchmark instead of timing nothing.
#include "Foundation/KRClock.h"
#include "Foundation/KRRunLoop.h"
#include "KRCheckListView.h"
#include "Platform/KRHostWidget.h"
#include "Support/KRBenchmarkTitles.h"
#include "Support/KRRatioReporter.h"
#include "Text/KRTextView.h"
#include "Views/KRRenderer.h"
#include "Views/KRWindow.h"

#include <QCoreApplication>
#include <QImage>
#include <QJsonValue>
#include <QMouseEvent>
#include <QPainter>

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <vector>

namespace {

constexpr double kViewportWidth = 400.0;
constexpr double kViewportHeight = 600.0;
// One frame of a 60 Hz display.
constexpr double kFrameInterval = 1.0 / 60.0;
// The row held, and the two rows the pointer alternates between, all inside the viewport.
constexpr KRUInteger kDraggedIndex = 2;
constexpr KRUInteger kFirstTargetIndex = 6;
constexpr KRUInteger kSecondTargetIndex = 10;

// Items in memory; the drag never ends, so moves are never asked for.
class DraggedItems : public KRCheckListViewDataSource {
public:
    explicit DraggedItems(const std::vector<QString>& titles) : m_titles(titles) {}

    KRUInteger checkListViewNumberOfItems(KRCheckListView*) override { return m_titles.size(); }
    QJsonValue checkListViewIdentifierForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        return QJsonValue(static_cast<qint64>(index));
    }
    KRUInteger checkListViewStatusForItemAtIndex(KRCheckListView*, KRUInteger) override { return 0; }
    QString checkListViewTitleForItemAtIndex(KRCheckListView*, KRUInteger index) override {
        return m_titles[index];
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
    std::vector<QString> m_titles;
};

void sendMouse(KRHostWidget& host, QEvent::Type type, KRPoint point, Qt::MouseButton button,
               Qt::MouseButtons buttons) {
    const QPointF position(point.x, point.y);
    QMouseEvent event(type, position, host.mapToGlobal(position), button, buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(&host, &event);
}

// A list as tall as its rows in a host widget, the handle of one row pressed. Going away, it drops the
// row where it was pressed and lets the drop settle.
struct DraggedList {
    ~DraggedList() {
        sendMouse(*host, QEvent::MouseButtonRelease, handle, Qt::LeftButton, Qt::NoButton);
        KRClock::advance(1.0);
        KRRunLoop::main().runUntilIdle();
        host->krWindow().updateIfNeeded();
    }

    std::shared_ptr<DraggedItems> items;
    std::shared_ptr<KRCheckListView> view;
    std::unique_ptr<KRHostWidget> host;
    QImage viewport;
    KRPoint handle;
};

std::unique_ptr<DraggedList> makeDraggedList(int count) {
    KRClock::useManualTime(0.0);
    KRTextView::installTextSystem();
    auto list = std::make_unique<DraggedList>();
    list->items = std::make_shared<DraggedItems>(KRBenchmarkTitles(count));
    list->view = std::make_shared<KRCheckListView>(KRRectMake(0.0, 0.0, kViewportWidth, kViewportHeight));
    list->host = std::make_unique<KRHostWidget>();
    list->host->setResizesContentView(false);
    list->host->resize(static_cast<int>(kViewportWidth), static_cast<int>(kViewportHeight));
    list->host->setContentView(list->view);
    list->view->setDataSource(list->items);
    list->view->reloadItems();
    // As tall as its rows, as a scroll area shows it.
    list->view->setFrameSize(list->view->sizeThatFits(KRSizeMake(kViewportWidth, kViewportHeight)));
    list->host->krWindow().updateIfNeeded();
    list->viewport = QImage(static_cast<int>(kViewportWidth), static_cast<int>(kViewportHeight),
                            QImage::Format_ARGB32_Premultiplied);

    const KRView& handle =
        *list->view->checkListViewItemViewForItemAtIndex(kDraggedIndex)->handleButtonView();
    list->handle = handle.convertPointToView(
        KRPointMake(KRRectGetMidX(handle.bounds()), KRRectGetMidY(handle.bounds())), nullptr);
    sendMouse(*list->host, QEvent::MouseButtonPress, list->handle, Qt::LeftButton, Qt::LeftButton);
    KRClock::advance(1.0);
    KRRunLoop::main().runUntilIdle();
    list->host->krWindow().updateIfNeeded();
    return list;
}

void paintViewport(DraggedList& list) {
    QPainter painter(&list.viewport);
    KRRenderer::paintView(painter, *list.view, KRRectMake(0.0, 0.0, kViewportWidth, kViewportHeight));
}

// Where the pointer goes to put the gap in front of the row that stands at index at rest: a few points
// into it, counted with the held row closed up above it.
KRPoint pointerAtRow(const DraggedList& list, KRUInteger index) {
    const KRRect rest = list.view->checkListViewLayoutForSize(list.view->bounds().size).itemViewFrames[index];
    const KRRect held =
        list.view->checkListViewLayoutForSize(list.view->bounds().size).itemViewFrames[kDraggedIndex];
    return KRPointMake(list.handle.x, rest.origin.y - (held.size.height - 1.0) + 4.0);
}

using Clock = std::chrono::steady_clock;

template <class Operation> double secondsOf(Operation operation) {
    const Clock::time_point start = Clock::now();
    operation();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void BM_KRCheckListView_DragFrame(benchmark::State& state) {
    const std::unique_ptr<DraggedList> list = makeDraggedList(static_cast<int>(state.range(0)));
    const KRPoint targets[] = {pointerAtRow(*list, kFirstTargetIndex),
                               pointerAtRow(*list, kSecondTargetIndex)};
    const KRUInteger expectedDropIndexes[] = {kFirstTargetIndex, kSecondTargetIndex};
    int next = 0;
    for (auto _ : state) {
        state.SetIterationTime(secondsOf([&] {
            sendMouse(*list->host, QEvent::MouseMove, targets[next], Qt::NoButton, Qt::LeftButton);
            KRClock::advance(kFrameInterval);
            list->host->krWindow().updateIfNeeded();
            paintViewport(*list);
        }));
        if (!list->view->isDragging() || list->view->dropPlaceholderIndex() != expectedDropIndexes[next]) {
            state.SkipWithError("the drag frame did not move the gap under the pointer");
            break;
        }
        next = 1 - next;
    }
}

void BM_KRCheckListView_DragFrameFloor(benchmark::State& state) {
    const std::unique_ptr<DraggedList> list = makeDraggedList(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        state.SetIterationTime(secondsOf([&] { paintViewport(*list); }));
        if (KRRenderer::lastPaintedViewCount() == 0) {
            state.SkipWithError("nothing was painted");
            break;
        }
    }
}

} // namespace

BENCHMARK(BM_KRCheckListView_DragFrame)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Repetitions(5)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_KRCheckListView_DragFrameFloor)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->Repetitions(5)
    ->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv) {
    // The floor is the reference: how much of a drag frame is the painting every frame needs anyway.
    return KRRunBenchmarksWithRatios(
        argc, argv,
        {{"drag frame over the painting floor (us, per repetition)", "BM_KRCheckListView_DragFrame",
          "BM_KRCheckListView_DragFrameFloor", "floor"}});
}
