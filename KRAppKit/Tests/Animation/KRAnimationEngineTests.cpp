#include "Animation/KRAnimationEngine.h"

#include "Foundation/KRClock.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace {

// Animates until its end time; records every time it was advanced to.
class FakeAnimatable : public KRAnimatable {
public:
    explicit FakeAnimatable(double endTime) : m_endTime(endTime) {}
    ~FakeAnimatable() override { KRAnimationEngine::shared().removeAnimatingObject(this); }

    bool advanceAnimationsToTime(double now) override {
        times.push_back(now);
        if (onAdvance) {
            onAdvance();
        }
        return now < m_endTime;
    }

    std::vector<double> times;
    std::function<void()> onAdvance;

private:
    double m_endTime;
};

} // namespace

TEST(KRAnimationEngineTests, ClockAdvancesTickObjectsUntilTheyFinish) {
    KRAnimationEngine& engine = KRAnimationEngine::shared();
    const double start = KRClock::now();
    FakeAnimatable object(start + 0.75);
    engine.addAnimatingObject(&object);
    EXPECT_TRUE(engine.hasRunningAnimations());

    KRClock::advance(0.5);
    ASSERT_EQ(object.times.size(), 1u);
    EXPECT_DOUBLE_EQ(object.times[0], start + 0.5);
    EXPECT_EQ(engine.animatingObjectCount(), 1u);

    KRClock::advance(0.5);
    EXPECT_EQ(object.times.size(), 2u);
    EXPECT_FALSE(engine.hasRunningAnimations());

    KRClock::advance(0.5);
    EXPECT_EQ(object.times.size(), 2u); // no longer ticked
}

TEST(KRAnimationEngineTests, AddingTwiceKeepsOneEntryAndStartListenersHearEachStart) {
    KRAnimationEngine& engine = KRAnimationEngine::shared();
    int starts = 0;
    const int listener = engine.addStartListener([&] { ++starts; });
    {
        FakeAnimatable object(KRClock::now() + 10.0);
        engine.addAnimatingObject(&object);
        engine.addAnimatingObject(&object);
        EXPECT_EQ(engine.animatingObjectCount(), 1u);
        EXPECT_EQ(starts, 1);
        KRClock::advance(0.1);
        EXPECT_EQ(object.times.size(), 1u);
    }
    EXPECT_EQ(engine.animatingObjectCount(), 0u);
    engine.removeStartListener(listener);
    FakeAnimatable later(KRClock::now() + 10.0);
    engine.addAnimatingObject(&later);
    EXPECT_EQ(starts, 1);
}

TEST(KRAnimationEngineTests, ObjectsRemovedDuringATickAreNotAdvanced) {
    KRAnimationEngine& engine = KRAnimationEngine::shared();
    FakeAnimatable first(KRClock::now() + 10.0);
    FakeAnimatable second(KRClock::now() + 10.0);
    first.onAdvance = [&] { engine.removeAnimatingObject(&second); };
    engine.addAnimatingObject(&first);
    engine.addAnimatingObject(&second);
    KRClock::advance(0.1);
    EXPECT_EQ(first.times.size(), 1u);
    EXPECT_TRUE(second.times.empty());
    EXPECT_EQ(engine.animatingObjectCount(), 1u);
}

TEST(KRAnimationEngineTests, ReentrantTicksAreIgnored) {
    KRAnimationEngine& engine = KRAnimationEngine::shared();
    FakeAnimatable object(KRClock::now() + 10.0);
    object.onAdvance = [] { KRClock::advance(0.0); };
    engine.addAnimatingObject(&object);
    KRClock::advance(0.1);
    EXPECT_EQ(object.times.size(), 1u);
    engine.tick();
    EXPECT_EQ(object.times.size(), 2u);
}
