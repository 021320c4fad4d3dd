// Creating a tree of 10,000 views and running one layout + paint pass over a window-sized viewport,
// against QListWidget holding the same number of items and painting the same viewport.
#include "Foundation/KRClock.h"
#include "Support/KRRatioReporter.h"
#include "Views/KRRenderer.h"
#include "Views/KRView.h"

#include <QApplication>
#include <QImage>
#include <QListWidget>
#include <QPainter>

#include <benchmark/benchmark.h>

namespace {

constexpr double kRowHeight = 28.0;
constexpr double kWidth = 400.0;
constexpr double kViewportHeight = 600.0;

// A row-shaped view: it stacks its children on layout, as list rows do.
class StackView : public KRView {
public:
    using KRView::KRView;
    void layoutSubviews() override {
        double y = 0.0;
        for (const auto& subview : subviews()) {
            subview->setFrame(KRRectMake(0.0, y, bounds().size.width, kRowHeight));
            y += kRowHeight;
        }
    }
};

std::shared_ptr<StackView> makeTree(int count) {
    auto root = std::make_shared<StackView>(KRRectMake(0.0, 0.0, kWidth, kRowHeight * count));
    for (int i = 0; i < count; ++i) {
        auto row = std::make_shared<KRView>();
        row->setBackgroundColor(i % 2 ? QColor(245, 246, 250) : QColor(255, 255, 255));
        row->setCornerRadius(3.0);
        root->addSubview(row);
    }
    root->setNeedsLayout(true);
    return root;
}

void paintViewport(const KRView& root, QImage& image) {
    QPainter painter(&image);
    KRRenderer::paintView(painter, root, KRRectMake(0.0, 0.0, kWidth, kViewportHeight));
}

void BM_KRViewTree_CreateLayoutPaint(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    QImage image(static_cast<int>(kWidth), static_cast<int>(kViewportHeight),
                 QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        auto root = makeTree(count);
        root->layoutIfNeeded();
        paintViewport(*root, image);
        benchmark::DoNotOptimize(root.get());
    }
    state.SetItemsProcessed(state.iterations() * count);
}

void BM_KRViewTree_RelayoutPaint(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    QImage image(static_cast<int>(kWidth), static_cast<int>(kViewportHeight),
                 QImage::Format_ARGB32_Premultiplied);
    auto root = makeTree(count);
    root->layoutIfNeeded();
    for (auto _ : state) {
        root->setNeedsLayout(true);
        root->layoutIfNeeded();
        paintViewport(*root, image);
    }
}

void BM_QListWidget_CreateLayoutPaint(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    QImage image(static_cast<int>(kWidth), static_cast<int>(kViewportHeight),
                 QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        QListWidget list;
        list.resize(static_cast<int>(kWidth), static_cast<int>(kViewportHeight));
        for (int i = 0; i < count; ++i) {
            list.addItem(QString());
        }
        list.render(&image);
        benchmark::DoNotOptimize(&list);
    }
    state.SetItemsProcessed(state.iterations() * count);
}

} // namespace

BENCHMARK(BM_KRViewTree_CreateLayoutPaint)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QListWidget_CreateLayoutPaint)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRViewTree_RelayoutPaint)->Arg(10000)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    return KRRunBenchmarksWithRatios(argc, argv,
                                     {{"create + layout + paint (ms)", "BM_KRViewTree_CreateLayoutPaint",
                                       "BM_QListWidget_CreateLayoutPaint", "QListWidget"}});
}
