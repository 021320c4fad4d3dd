#pragma once

#include <functional>
#include <memory>

// The animations started by one animation block. Its completion runs exactly once: when the block has
// closed and every animation it started has finished or been superseded.
class KRAnimationGroup : public std::enable_shared_from_this<KRAnimationGroup> {
public:
    explicit KRAnimationGroup(std::function<void()> completion);

    void animationDidStart() { ++m_runningCount; }
    void animationDidStop();
    // Called when the block returns; runs the completion at once if nothing was started or all ended.
    void close();
    bool isComplete() const { return m_completed; }
    int runningCount() const { return m_runningCount; }

private:
    void completeIfPossible();

    std::function<void()> m_completion;
    int m_runningCount = 0;
    bool m_closed = false;
    bool m_completed = false;
};
