#include "Animation/KRAnimationEngine.h"

#include "Foundation/KRClock.h"

#include <algorithm>

KRAnimationEngine& KRAnimationEngine::shared() {
    // Never destroyed: views may still unregister from static destructors at exit.
    static KRAnimationEngine* engine = new KRAnimationEngine();
    return *engine;
}

KRAnimationEngine::KRAnimationEngine() {
    // The manual clock has no frame timer; advancing it is what moves animations on.
    KRClock::addAdvanceListener([this] { tick(); });
}

void KRAnimationEngine::addAnimatingObject(KRAnimatable* object) {
    if (!object || std::find(m_objects.begin(), m_objects.end(), object) != m_objects.end()) {
        return;
    }
    m_objects.push_back(object);
    // Copied: a listener may add or remove listeners.
    const auto listeners = m_startListeners;
    for (const auto& entry : listeners) {
        if (entry.second) {
            entry.second();
        }
    }
}

void KRAnimationEngine::removeAnimatingObject(KRAnimatable* object) {
    m_objects.erase(std::remove(m_objects.begin(), m_objects.end(), object), m_objects.end());
}

void KRAnimationEngine::tick() {
    // A completion that advances the clock would re-enter; the outer tick covers it.
    if (m_ticking) {
        return;
    }
    m_ticking = true;
    struct Reset {
        bool& flag;
        ~Reset() { flag = false; }
    } reset{m_ticking};

    const double now = KRClock::now();
    // Completions run from here and may add, remove or destroy objects: walk a snapshot and skip any
    // object no longer registered.
    const std::vector<KRAnimatable*> snapshot = m_objects;
    for (KRAnimatable* object : snapshot) {
        if (std::find(m_objects.begin(), m_objects.end(), object) == m_objects.end()) {
            continue;
        }
        if (!object->advanceAnimationsToTime(now)) {
            removeAnimatingObject(object);
        }
    }
}

int KRAnimationEngine::addStartListener(std::function<void()> listener) {
    const int id = m_nextListenerId++;
    m_startListeners.emplace_back(id, std::move(listener));
    return id;
}

void KRAnimationEngine::removeStartListener(int id) {
    m_startListeners.erase(std::remove_if(m_startListeners.begin(), m_startListeners.end(),
                                          [id](const auto& entry) { return entry.first == id; }),
                           m_startListeners.end());
}
