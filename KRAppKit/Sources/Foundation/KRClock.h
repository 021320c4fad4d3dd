#pragma once

#include <functional>

// The time source of animations and delayed performs, in seconds. Real time by default; tests switch to a
// manual clock and advance it explicitly, so nothing ever sleeps.
class KRClock {
public:
    static double now();

    static void useManualTime(double start = 0.0);
    static void useRealTime();
    static bool isManual();
    // Manual clock only: moves time forward and lets the listeners (the animation engine) process what
    // became due. The run loop is not drained by it: tests drain it explicitly.
    static void advance(double seconds);

    // Listeners run after every manual advance. Returns an id for removal.
    static int addAdvanceListener(std::function<void()> listener);
    static void removeAdvanceListener(int id);
};
