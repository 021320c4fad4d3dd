// What a view costs in memory: its own size, and what its setters allocate.
#include "Views/KRTrackingArea.h"
#include "Views/KRView.h"

#include <QJsonValue>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

// This executable replaces the global allocation functions so the tests below can see what views
// allocate. Each block carries its size in front, so frees can be subtracted and a counter answers what is
// still held at rest. Only work on the counting thread while a counter runs is recorded.
namespace {

constexpr std::size_t kHeaderSize = alignof(std::max_align_t);
thread_local bool t_counting = false;
thread_local long long t_liveBytes = 0;
thread_local std::size_t t_allocationCount = 0;

} // namespace

void* operator new(std::size_t size) {
    void* block = std::malloc(kHeaderSize + size);
    if (!block) {
        throw std::bad_alloc();
    }
    *static_cast<std::size_t*>(block) = size;
    if (t_counting) {
        t_liveBytes += static_cast<long long>(size);
        ++t_allocationCount;
    }
    return static_cast<char*>(block) + kHeaderSize;
}

void operator delete(void* memory) noexcept {
    if (!memory) {
        return;
    }
    void* block = static_cast<char*>(memory) - kHeaderSize;
    if (t_counting) {
        t_liveBytes -= static_cast<long long>(*static_cast<std::size_t*>(block));
    }
    std::free(block);
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

namespace {

struct Allocations {
    long long liveBytes = 0; // requested bytes not yet freed; the allocator adds its own overhead
    std::size_t count = 0;   // allocations made, freed or not
};

class AllocationCounter {
public:
    AllocationCounter() {
        t_liveBytes = 0;
        t_allocationCount = 0;
        t_counting = true;
    }
    ~AllocationCounter() { t_counting = false; }
    Allocations stop() {
        t_counting = false;
        return Allocations{t_liveBytes, t_allocationCount};
    }
};

// Writes every look and identity value the view keeps aside, each at its default.
void writeDefaults(KRView& view) {
    view.setBoundsOrigin(KRPoint{0.0, 0.0});
    view.setIdentifier(QString());
    view.setObjectValue(QJsonValue());
    view.setTag(0);
    view.setBorderColor(QColor());
    view.setBorderWidth(0.0);
    view.setCornerRadius(0.0);
    view.setShadowOpacity(0.0);
    view.setShadowRadius(3.0);
    view.setShadowOffset(KRSize{0.0, 3.0});
    view.setShadowColor(QColor(0, 0, 0));
    view.setScale(1.0);
    view.setNextResponder(nullptr);
    view.setNextKeyView(nullptr);
    view.registerForDraggedTypes(QStringList());
    view.unregisterDraggedTypes();
}

void expectDefaults(const KRView& view) {
    EXPECT_EQ(view.bounds(), KRRectMake(0, 0, 30, 40));
    EXPECT_TRUE(view.identifier().isNull());
    EXPECT_TRUE(view.objectValue().isNull());
    EXPECT_EQ(view.tag(), 0);
    EXPECT_FALSE(view.borderColor().isValid());
    EXPECT_FALSE(view.presentationBorderColor().isValid());
    EXPECT_DOUBLE_EQ(view.borderWidth(), 0.0);
    EXPECT_DOUBLE_EQ(view.cornerRadius(), 0.0);
    EXPECT_DOUBLE_EQ(view.shadowOpacity(), 0.0);
    EXPECT_DOUBLE_EQ(view.presentationShadowOpacity(), 0.0);
    EXPECT_DOUBLE_EQ(view.shadowRadius(), 3.0);
    EXPECT_EQ(view.shadowOffset(), (KRSize{0.0, 3.0}));
    EXPECT_EQ(view.shadowColor(), QColor(0, 0, 0));
    EXPECT_DOUBLE_EQ(view.scale(), 1.0);
    EXPECT_DOUBLE_EQ(view.presentationScale(), 1.0);
    EXPECT_EQ(view.nextResponder(), nullptr);
    EXPECT_EQ(view.nextKeyView(), nullptr);
    EXPECT_TRUE(view.registeredDraggedTypes().isEmpty());
}

TEST(KRViewFootprintTest, ViewStaysWithinItsSizeBudget) {
    // A list row is built from about ten views and should stay within a few kilobytes, so the view itself
    // must stay small: rarely changed looks and identity belong in their blocks, not here. The identifier
    // is the one exception: rows name most of their views.
    EXPECT_LE(sizeof(KRView), 152u);
}

TEST(KRViewFootprintTest, ALeafViewIsOneAllocationWithItsControlBlock) {
    AllocationCounter counter;
    auto view = std::make_shared<KRView>(KRRectMake(0, 0, 20, 20));
    view->setIdentifier(QStringLiteral("leaf"));
    view->setAlphaValue(0.0);
    const Allocations allocations = counter.stop();

    EXPECT_EQ(allocations.count, 1u);
    EXPECT_LE(allocations.liveBytes, static_cast<long long>(sizeof(KRView) + 16));
}

TEST(KRViewFootprintTest, AParentThatReservesItsSubviewsHoldsThemInOneExactBlock) {
    KRView parent;
    std::vector<std::shared_ptr<KRView>> children;
    for (int i = 0; i < 5; ++i) {
        children.push_back(std::make_shared<KRView>());
    }

    AllocationCounter counter;
    parent.reserveSubviews(children.size());
    for (const auto& child : children) {
        parent.addSubview(child);
    }
    const Allocations allocations = counter.stop();

    EXPECT_EQ(allocations.count, 1u);
    // The counts and the five owning pointers, nothing spare.
    EXPECT_EQ(allocations.liveBytes, static_cast<long long>(8 + 5 * sizeof(std::shared_ptr<KRView>)));
    EXPECT_EQ(parent.subviews(), children);
}

TEST(KRViewFootprintTest, AViewWithOneTrackingAreaHoldsItInOneSmallBlock) {
    KRView view(KRRectMake(0, 0, 20, 20));
    auto area = std::make_shared<KRTrackingArea>(KRRectMake(0, 0, 20, 20), KRTrackingCursorUpdate, &view);

    AllocationCounter counter;
    view.addTrackingArea(area);
    const Allocations allocations = counter.stop();

    EXPECT_EQ(allocations.count, 1u);
    EXPECT_EQ(allocations.liveBytes, static_cast<long long>(8 + sizeof(std::shared_ptr<KRTrackingArea>)));
    ASSERT_EQ(view.trackingAreas().size(), 1u);
    EXPECT_EQ(view.trackingAreas().front(), area);

    AllocationCounter rebuild;
    view.removeTrackingArea(area.get());
    view.addTrackingArea(area);
    EXPECT_EQ(rebuild.stop().count, 0u) << "rebuilding the one area reuses the block";
}

TEST(KRViewFootprintTest, DefaultsAreAnsweredWithoutAllocating) {
    KRView view(KRRectMake(10, 20, 30, 40));
    expectDefaults(view);

    AllocationCounter counter;
    writeDefaults(view);
    const Allocations allocations = counter.stop();

    EXPECT_EQ(allocations.count, 0u);
    expectDefaults(view);
}

TEST(KRViewFootprintTest, ViewsThatLookAlikeShareOneLooksBlock) {
    KRView first(KRRectMake(10, 20, 30, 40));
    KRView second(KRRectMake(10, 60, 30, 40));
    first.setCornerRadius(4.25);
    first.setBorderWidth(1.25);

    AllocationCounter counter;
    second.setCornerRadius(4.25);
    second.setBorderWidth(1.25);
    const Allocations allocations = counter.stop();

    EXPECT_EQ(allocations.count, 0u);
    EXPECT_DOUBLE_EQ(second.cornerRadius(), 4.25);
    EXPECT_DOUBLE_EQ(second.borderWidth(), 1.25);
}

TEST(KRViewFootprintTest, ChangingOneViewsLooksLeavesTheViewsThatSharedThemAlone) {
    KRView first(KRRectMake(10, 20, 30, 40));
    KRView second(KRRectMake(10, 60, 30, 40));
    first.setCornerRadius(5.5);
    second.setCornerRadius(5.5);

    second.setCornerRadius(7.0);
    second.setScale(2.0);

    EXPECT_DOUBLE_EQ(first.cornerRadius(), 5.5);
    EXPECT_DOUBLE_EQ(first.scale(), 1.0);
    EXPECT_DOUBLE_EQ(second.cornerRadius(), 7.0);
}

TEST(KRViewFootprintTest, TheFirstIdentitySetterAllocatesOneBlockForAll) {
    KRView view(KRRectMake(10, 20, 30, 40));

    AllocationCounter first;
    view.setTag(7);
    const Allocations firstAllocations = first.stop();
    EXPECT_EQ(firstAllocations.count, 1u);

    AllocationCounter rest;
    view.setBoundsOrigin(KRPoint{0.0, 5.0});
    view.setNextKeyView(nullptr);
    view.setTag(8);
    const Allocations restAllocations = rest.stop();
    EXPECT_EQ(restAllocations.count, 0u);
    EXPECT_EQ(view.tag(), 8);
    EXPECT_EQ(view.bounds().origin, (KRPoint{0.0, 5.0}));
}

TEST(KRViewFootprintTest, ChangedValuesReadBackAndResetToTheDefaults) {
    KRView view(KRRectMake(10, 20, 30, 40));
    KRView keyView;
    KRView responder;

    view.setBoundsOrigin(KRPoint{2.0, 5.0});
    view.setIdentifier(QStringLiteral("row"));
    view.setObjectValue(QJsonValue(true));
    view.setTag(9);
    view.setBorderColor(QColor(255, 0, 0));
    view.setBorderWidth(1.5);
    view.setCornerRadius(6.0);
    view.setShadowOpacity(0.4);
    view.setShadowRadius(8.0);
    view.setShadowOffset(KRSize{1.0, -2.0});
    view.setShadowColor(QColor(0, 0, 255, 128));
    view.setScale(0.5);
    view.setNextResponder(&responder);
    view.setNextKeyView(&keyView);

    EXPECT_EQ(view.bounds(), KRRectMake(2, 5, 30, 40));
    EXPECT_EQ(view.identifier(), QStringLiteral("row"));
    EXPECT_EQ(view.objectValue(), QJsonValue(true));
    EXPECT_EQ(view.tag(), 9);
    EXPECT_EQ(view.borderColor(), QColor(255, 0, 0));
    EXPECT_EQ(view.presentationBorderColor(), QColor(255, 0, 0));
    EXPECT_DOUBLE_EQ(view.borderWidth(), 1.5);
    EXPECT_DOUBLE_EQ(view.cornerRadius(), 6.0);
    EXPECT_DOUBLE_EQ(view.shadowOpacity(), 0.4);
    EXPECT_DOUBLE_EQ(view.presentationShadowOpacity(), 0.4);
    EXPECT_DOUBLE_EQ(view.shadowRadius(), 8.0);
    EXPECT_EQ(view.shadowOffset(), (KRSize{1.0, -2.0}));
    EXPECT_EQ(view.shadowColor(), QColor(0, 0, 255, 128));
    EXPECT_DOUBLE_EQ(view.scale(), 0.5);
    EXPECT_DOUBLE_EQ(view.presentationScale(), 0.5);
    EXPECT_EQ(view.nextResponder(), &responder);
    EXPECT_EQ(view.nextKeyView(), &keyView);

    writeDefaults(view);
    expectDefaults(view);
}

TEST(KRViewFootprintTest, AnEmptyIdentifierIsKeptApartFromNone) {
    KRView view;
    const QString empty = QStringLiteral("");
    ASSERT_FALSE(empty.isNull());
    view.setIdentifier(empty);
    EXPECT_FALSE(view.identifier().isNull());
    EXPECT_TRUE(view.identifier().isEmpty());
}

TEST(KRViewFootprintTest, ResponderAndKeyViewReadNullOnceTheirObjectsAreGone) {
    KRView view;
    {
        KRView keyView;
        KRView responder;
        view.setNextKeyView(&keyView);
        view.setNextResponder(&responder);
        EXPECT_EQ(view.nextKeyView(), &keyView);
    }
    EXPECT_EQ(view.nextKeyView(), nullptr);
    EXPECT_EQ(view.nextResponder(), nullptr);
}

TEST(KRViewFootprintTest, ViewWithFrameBackgroundAndOneSubviewOwnsLittleHeap) {
    AllocationCounter counter;
    auto view = std::make_shared<KRView>();
    view->setFrame(KRRectMake(0, 0, 320, 28));
    view->setBackgroundColor(QColor(245, 246, 250));
    view->addSubview(std::make_shared<KRView>());
    const Allocations allocations = counter.stop();

    // Both views with their shared_ptr control blocks, and the parent's one subview slot; anything more
    // means a common setter started allocating.
    EXPECT_EQ(allocations.count, 3u);
    EXPECT_LE(allocations.liveBytes, static_cast<long long>(2 * sizeof(KRView) + 64));
    RecordProperty("heapBytes", static_cast<int>(allocations.liveBytes));
    ASSERT_EQ(view->subviews().size(), 1u);
}

TEST(KRViewFootprintTest, RowOfTenViewsStaysUnderThreeKilobytes) {
    AllocationCounter counter;
    auto row = std::make_shared<KRView>(KRRectMake(0, 0, 320, 28));
    row->setBackgroundColor(QColor(255, 255, 255));
    for (int i = 0; i < 9; ++i) {
        auto part = std::make_shared<KRView>(KRRectMake(8.0 + 30.0 * i, 4, 20, 20));
        if (i == 0) {
            // A rounded, bordered box, as a check box draws.
            part->setCornerRadius(4.0);
            part->setBorderWidth(1.0);
            part->setBorderColor(QColor(120, 120, 120));
        }
        row->addSubview(part);
    }
    const Allocations allocations = counter.stop();

    EXPECT_LE(allocations.liveBytes, 3072);
    RecordProperty("heapBytes", static_cast<int>(allocations.liveBytes));
    ASSERT_EQ(row->subviews().size(), 9u);
}

} // namespace
