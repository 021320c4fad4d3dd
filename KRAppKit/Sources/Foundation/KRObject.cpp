#include "Foundation/KRObject.h"

#include <QVarLengthArray>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <string>
#include <typeinfo>

namespace {

// Most keys compared differ in their first character; comparing it first spares the call to strcmp.
bool sameKey(const char* a, const char* b) {
    return a == b || (a && b && a[0] == b[0] && std::strcmp(a, b) == 0);
}

} // namespace

// One node of the shared tree of self-registrations: a registration and the path that led to it. Nodes live
// for the whole process; the tree holds as many paths as there are distinct registration sequences.
struct KRObject::SelfObservation {
    const SelfObservation* previous;
    const char* keyPath;
    unsigned options;
    const void* context;
    std::size_t count; // registrations on the path up to and including this one
    mutable std::vector<std::unique_ptr<SelfObservation>> next;
    // The last key asked about on this path and whether the path registers it. Thousands of objects share
    // one path and are asked about the same key in a row (a list moving its rows asks each for "frame").
    // A key may live in a buffer that is later reused, so its text is kept and compared too.
    mutable const char* lastKeyAsked = nullptr;
    mutable std::string lastKeyText;
    mutable bool lastKeyRegistered = false;

    bool registersKey(const char* key) const {
        if (key != lastKeyAsked || !key || lastKeyText != key) {
            lastKeyRegistered = false;
            for (const SelfObservation* node = this; node; node = node->previous) {
                if (sameKey(node->keyPath, key)) {
                    lastKeyRegistered = true;
                    break;
                }
            }
            lastKeyAsked = key;
            lastKeyText = key ? key : "";
        }
        return lastKeyRegistered;
    }

    static const SelfObservation* following(const SelfObservation* node, const char* keyPath,
                                            unsigned options, const void* context) {
        static std::vector<std::unique_ptr<SelfObservation>> roots;
        auto& children = node ? node->next : roots;
        for (const auto& child : children) {
            if (child->keyPath == keyPath && child->options == options && child->context == context) {
                return child.get();
            }
        }
        children.push_back(std::unique_ptr<SelfObservation>(new SelfObservation{
            node, keyPath, options, context, node ? node->count + 1 : 1, {}, nullptr, {}, false}));
        return children.back().get();
    }
};

// Marks an object that is telling its observers, on the notifying thread's stack. An observer may release
// the object it is told about; its destructor finds the marks and flags them, so the notification stops
// without the object having to carry a token for it.
struct KRObject::NotificationGuard {
    const KRObject* object;
    NotificationGuard* outer;
    bool destroyed = false;

    static NotificationGuard*& innermost() {
        thread_local NotificationGuard* guard = nullptr;
        return guard;
    }
    explicit NotificationGuard(const KRObject* notifying) : object(notifying), outer(innermost()) {
        innermost() = this;
    }
    ~NotificationGuard() { innermost() = outer; }
    NotificationGuard(const NotificationGuard&) = delete;
    NotificationGuard& operator=(const NotificationGuard&) = delete;
};

KRObject::~KRObject() {
    for (NotificationGuard* guard = NotificationGuard::innermost(); guard; guard = guard->outer) {
        if (guard->object == this) {
            guard->destroyed = true;
        }
    }
    Side* mine = sideIfAny();
    if (!mine) {
        return;
    }
    if (mine->lifetimeToken) {
        // Anyone still holding a strong copy of the token sees null too.
        *mine->lifetimeToken = nullptr;
        mine->lifetimeToken.reset();
    }
    delete mine;
}

QString KRObject::description() const {
    const char* mangled = typeid(*this).name();
    int status = 0;
    char* demangled = abi::__cxa_demangle(mangled, nullptr, nullptr, &status);
    const QString className = QString::fromLatin1(status == 0 && demangled ? demangled : mangled);
    std::free(demangled);
    return QStringLiteral("<%1: 0x%2>").arg(className).arg(reinterpret_cast<quintptr>(this), 0, 16);
}

KRObject::Side& KRObject::side() const {
    if (Side* mine = sideIfAny()) {
        return *mine;
    }
    auto* created = new Side;
    created->selfObservations = selfObservations();
    m_extra = reinterpret_cast<std::uintptr_t>(created);
    return *created;
}

const KRObject::SelfObservation* KRObject::selfObservations() const {
    if (m_extra & kSelfObservationsTag) {
        return reinterpret_cast<const SelfObservation*>(m_extra & ~kSelfObservationsTag);
    }
    const Side* mine = sideIfAny();
    return mine ? mine->selfObservations : nullptr;
}

void KRObject::setSelfObservations(const SelfObservation* observations) {
    if (Side* mine = sideIfAny()) {
        mine->selfObservations = observations;
    } else if (observations) {
        static_assert(alignof(SelfObservation) > kSelfObservationsTag);
        m_extra = reinterpret_cast<std::uintptr_t>(observations) | kSelfObservationsTag;
    } else {
        m_extra = 0;
    }
}

std::size_t KRObject::observationCount() const {
    if (const SelfObservation* self = selfObservations()) {
        return self->count;
    }
    const Side* mine = sideIfAny();
    return mine ? mine->observations.size() : 0;
}

void KRObject::reserveObservations(std::size_t count) {
    if (hasExplicitObservations()) {
        sideIfAny()->observations.reserve(count);
    }
}

std::vector<KRObject::Observation> KRObject::observationInfo() const {
    const SelfObservation* self = selfObservations();
    if (!self) {
        const Side* mine = sideIfAny();
        return mine ? mine->observations : std::vector<Observation>();
    }
    std::vector<Observation> observations(self->count);
    auto slot = observations.rbegin();
    for (const SelfObservation* node = self; node; node = node->previous, ++slot) {
        *slot = Observation{const_cast<KRObject*>(this), node->keyPath, node->options, node->context};
    }
    return observations;
}

void KRObject::makeObservationsExplicit() {
    if (!selfObservations()) {
        return;
    }
    std::vector<Observation> explicitOnes = observationInfo();
    Side& mine = side();
    mine.observations = std::move(explicitOnes);
    mine.selfObservations = nullptr;
}

const std::shared_ptr<KRObject*>& KRObject::lifetimeToken() const {
    Side& mine = side();
    if (!mine.lifetimeToken) {
        mine.lifetimeToken = std::make_shared<KRObject*>(const_cast<KRObject*>(this));
    }
    return mine.lifetimeToken;
}

void KRObject::addObserver(KRObject* observer, const char* keyPath, unsigned options, const void* context) {
    if (!observer || !keyPath) {
        return;
    }
    if (observer == this && !hasExplicitObservations()) {
        setSelfObservations(SelfObservation::following(selfObservations(), keyPath, options, context));
        return;
    }
    makeObservationsExplicit();
    side().observations.push_back(Observation{observer, keyPath, options, context});
}

void KRObject::removeObserver(KRObject* observer, const char* keyPath, const void* context) {
    // The most recent matching registration goes first, so nested add/remove pairs unwind correctly.
    const SelfObservation* last = selfObservations();
    if (last && observer == this && last->context == context && sameKey(last->keyPath, keyPath)) {
        setSelfObservations(last->previous);
        return;
    }
    makeObservationsExplicit();
    Side* mine = sideIfAny();
    if (!mine) {
        return;
    }
    auto& observations = mine->observations;
    for (auto it = observations.rbegin(); it != observations.rend(); ++it) {
        if (it->observer == observer && it->context == context && sameKey(it->keyPath, keyPath)) {
            observations.erase(std::next(it).base());
            return;
        }
    }
}

bool KRObject::hasAnyObserverForKey(const char* keyPath) const {
    if (const SelfObservation* path = selfObservations(); path && path->registersKey(keyPath)) {
        return true;
    }
    const Side* mine = sideIfAny();
    if (!mine) {
        return false;
    }
    return std::any_of(
        mine->observations.begin(), mine->observations.end(),
        [keyPath](const Observation& observation) { return sameKey(observation.keyPath, keyPath); });
}

bool KRObject::isRegistered(const Observation& observation) const {
    const auto same = [&](KRObject* observer, const char* keyPath, unsigned options, const void* context) {
        return observer == observation.observer && context == observation.context &&
               options == observation.options && sameKey(keyPath, observation.keyPath);
    };
    for (const SelfObservation* node = selfObservations(); node; node = node->previous) {
        if (same(const_cast<KRObject*>(this), node->keyPath, node->options, node->context)) {
            return true;
        }
    }
    const Side* mine = sideIfAny();
    if (!mine) {
        return false;
    }
    return std::any_of(mine->observations.begin(), mine->observations.end(), [&](const Observation& current) {
        return same(current.observer, current.keyPath, current.options, current.context);
    });
}

void KRObject::observeValueForKeyPath(const char*, KRObject*, const KRKeyValueChange&, const void*) {}

bool KRObject::tryToPerform(const KRSelector&, KRObject*) {
    return false;
}

bool KRObject::respondsToSelector(const KRSelector&) const {
    return false;
}

void KRObject::didChangeValueForKey(const char* keyPath, const QVariant& oldValue, const QVariant& newValue) {
    // Observers may add or remove registrations (or release this object) while being told; work from a
    // snapshot and re-check each registration before calling it. A key has one or two observers as a rule,
    // so the snapshot stays off the heap.
    QVarLengthArray<Observation, 4> matching;
    if (const SelfObservation* self = selfObservations()) {
        for (const SelfObservation* node = self; node; node = node->previous) {
            if (sameKey(node->keyPath, keyPath)) {
                matching.append(Observation{this, node->keyPath, node->options, node->context});
            }
        }
        std::reverse(matching.begin(), matching.end());
    } else if (const Side* mine = sideIfAny()) {
        for (const Observation& observation : mine->observations) {
            if (sameKey(observation.keyPath, keyPath)) {
                matching.append(observation);
            }
        }
    }
    if (matching.empty()) {
        return;
    }
    const NotificationGuard guard(this);
    // Until the first observer has run, nothing can have changed the registrations.
    bool observerHasRun = false;
    for (const Observation& observation : matching) {
        if (guard.destroyed) {
            return;
        }
        if (observerHasRun && !isRegistered(observation)) {
            continue;
        }
        observerHasRun = true;
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
