#pragma once

#include <functional>

// Work deferred to a later turn of the main run loop ("perform after delay", dispatch_after on main).
// In an application the queue is drained from Qt's event loop; tests drain it explicitly with runOneTurn.
class KRRunLoop {
public:
    static KRRunLoop& main();

    // Runs block on a later turn, not before `delay` seconds of KRClock time have passed. Blocks that are
    // due run in the order they were scheduled (ties keep their order).
    void performAfterDelay(double delay, std::function<void()> block);

    // Runs the blocks that were due when the turn began; blocks they schedule wait for the next turn.
    // Returns how many ran.
    int runOneTurn();
    // Runs turns until nothing due is left (bounded, so a block that reschedules itself cannot hang a test).
    int runUntilIdle(int maxTurns = 1000);
    int pendingCount() const;
    void cancelAll();

private:
    KRRunLoop() = default;
    struct Private;
    Private& d();
};
