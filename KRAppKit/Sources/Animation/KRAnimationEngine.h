#pragma once

#include <functional>
#include <vector>

// Something with running animations that the engine advances (views).
class KRAnimatable {
public:
    virtual ~KRAnimatable() = default;
    // Drops the animations finished at `now` and redisplays; answers whether any still runs.
    virtual bool advanceAnimationsToTime(double now) = 0;
};

// Advances every running animation. With the manual clock it ticks on every KRClock::advance; with real
// time the host widget ticks it once per frame while hasRunningAnimations() is true.
class KRAnimationEngine {
public:
    static KRAnimationEngine& shared();

    void addAnimatingObject(KRAnimatable* object);
    void removeAnimatingObject(KRAnimatable* object);
    bool hasRunningAnimations() const { return !m_objects.empty(); }
    std::size_t animatingObjectCount() const { return m_objects.size(); }

    // Advances to KRClock::now(); completions of finished groups run from here.
    void tick();

    // Told whenever an object starts animating (hosts use it to start their frame timer).
    int addStartListener(std::function<void()> listener);
    void removeStartListener(int id);

private:
    KRAnimationEngine();
    std::vector<KRAnimatable*> m_objects;
    std::vector<std::pair<int, std::function<void()>>> m_startListeners;
    int m_nextListenerId = 1;
    bool m_ticking = false;
};
