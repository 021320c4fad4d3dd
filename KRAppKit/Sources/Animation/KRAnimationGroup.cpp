#include "Animation/KRAnimationGroup.h"

#include <utility>

KRAnimationGroup::KRAnimationGroup(std::function<void()> completion) : m_completion(std::move(completion)) {}

void KRAnimationGroup::animationDidStop() {
    // Late stops (after completion, or unbalanced ones) must not drive the count negative.
    if (m_runningCount > 0) {
        --m_runningCount;
    }
    completeIfPossible();
}

void KRAnimationGroup::close() {
    m_closed = true;
    completeIfPossible();
}

void KRAnimationGroup::completeIfPossible() {
    if (m_completed || !m_closed || m_runningCount > 0) {
        return;
    }
    m_completed = true;
    // The completion may release the last owner of this group (by tearing down the views whose
    // animations hold it): keep it alive, and call a local copy of the completion.
    const std::shared_ptr<KRAnimationGroup> keepAlive = weak_from_this().lock();
    const std::function<void()> completion = std::exchange(m_completion, {});
    if (completion) {
        completion();
    }
}
