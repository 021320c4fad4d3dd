#include "Foundation/KRObject.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <typeinfo>

namespace {

// Most keys compared differ in their first character; comparing it first spares the call to strcmp.
bool sameKey(const char* a, const char* b) {
    return a == b || (a && b && a[0] == b[0] && std::strcmp(a, b) == 0);
}

} // namespace

KRObject::~KRObject() {
    if (m_lifetimeToken) {
        // Anyone still holding a strong copy of the token sees null too.
        *m_lifetimeToken = nullptr;
        m_lifetimeToken.reset();
    }
}

QString KRObject::description() const {
    const char* mangled = typeid(*this).name();
    int status = 0;
    char* demangled = abi::__cxa_demangle(mangled, nullptr, nullptr, &status);
    const QString className = QString::fromLatin1(status == 0 && demangled ? demangled : mangled);
    std::free(demangled);
    return QStringLiteral("<%1: 0x%2>").arg(className).arg(reinterpret_cast<quintptr>(this), 0, 16);
}

void KRObject::reserveObservations(std::size_t count) {
    if (!m_observations) {
        m_observations = std::make_unique<std::vector<Observation>>();
    }
    m_observations->reserve(count);
}

const std::vector<KRObject::Observation>& KRObject::observationInfo() const {
    static const std::vector<Observation> none;
    return m_observations ? *m_observations : none;
}

const std::shared_ptr<KRObject*>& KRObject::lifetimeToken() const {
    if (!m_lifetimeToken) {
        m_lifetimeToken = std::make_shared<KRObject*>(const_cast<KRObject*>(this));
    }
    return m_lifetimeToken;
}

void KRObject::addObserver(KRObject* observer, const char* keyPath, unsigned options, const void* context) {
    if (!observer || !keyPath) {
        return;
    }
    if (!m_observations) {
        m_observations = std::make_unique<std::vector<Observation>>();
    }
    m_observations->push_back(Observation{observer, keyPath, options, context});
}

void KRObject::removeObserver(KRObject* observer, const char* keyPath, const void* context) {
    if (!m_observations) {
        return;
    }
    // The most recent matching registration goes first, so nested add/remove pairs unwind correctly.
    auto& observations = *m_observations;
    for (auto it = observations.rbegin(); it != observations.rend(); ++it) {
        if (it->observer == observer && it->context == context && sameKey(it->keyPath, keyPath)) {
            observations.erase(std::next(it).base());
            return;
        }
    }
}

bool KRObject::hasObserversForKey(const char* keyPath) const {
    if (!m_observations) {
        return false;
    }
    return std::any_of(
        m_observations->begin(), m_observations->end(),
        [keyPath](const Observation& observation) { return sameKey(observation.keyPath, keyPath); });
}

void KRObject::observeValueForKeyPath(const char*, KRObject*, const KRKeyValueChange&, const void*) {}

bool KRObject::tryToPerform(const KRSelector&, KRObject*) {
    return false;
}

bool KRObject::respondsToSelector(const KRSelector&) const {
    return false;
}

void KRObject::didChangeValueForKey(const char* keyPath, const QVariant& oldValue, const QVariant& newValue) {
    if (!m_observations) {
        return;
    }
    // Observers may add or remove registrations (or release this object) while being told; work from a
    // snapshot and re-check each registration before calling it.
    std::vector<Observation> matching;
    for (const Observation& observation : *m_observations) {
        if (sameKey(observation.keyPath, keyPath)) {
            matching.push_back(observation);
        }
    }
    if (matching.empty()) {
        return;
    }
    const std::weak_ptr<KRObject*> alive = lifetimeToken();
    for (const Observation& observation : matching) {
        if (alive.expired() || !m_observations) {
            return;
        }
        const bool stillRegistered =
            std::any_of(m_observations->begin(), m_observations->end(), [&](const Observation& current) {
                return current.observer == observation.observer && current.context == observation.context &&
                       current.options == observation.options &&
                       sameKey(current.keyPath, observation.keyPath);
            });
        if (!stillRegistered) {
            continue;
        }
        KRKeyValueChange change;
        if (observation.options & KRKeyValueObservingOptionOld) {
            change.hasOld = true;
            change.oldValue = oldValue;
        }
        if (observation.options & KRKeyValueObservingOptionNew) {
            change.hasNew = true;
            change.newValue = newValue;
        }
        observation.observer->observeValueForKeyPath(keyPath, this, change, observation.context);
    }
}
