#pragma once

#include "Foundation/KRSelector.h"

#include <QVariant>

#include <cstdint>
#include <memory>
#include <vector>

class KRObject;

// Options of an observation: which values the change record carries.
enum KRKeyValueObservingOptions : unsigned {
    KRKeyValueObservingOptionNone = 0,
    KRKeyValueObservingOptionNew = 0x01,
    KRKeyValueObservingOptionOld = 0x02,
};

// What an observer is told about one change of a key.
struct KRKeyValueChange {
    bool hasOld = false;
    bool hasNew = false;
    QVariant oldValue;
    QVariant newValue;

    // An observation registered without old and new values compares two absent values, which never count
    // as equal: such a key reports a change on every assignment.
    bool valuesDiffer() const { return !hasOld || !hasNew || oldValue != newValue; }
};

// Base of every toolkit object. It gives two services of the original runtime that C++ lacks:
// weak references that can be formed from a constructor and to objects not owned by a shared_ptr,
// and key-value observation of an object's own keys.
class KRObject {
public:
    KRObject() = default;
    KRObject(const KRObject&) = delete;
    KRObject& operator=(const KRObject&) = delete;
    virtual ~KRObject();

    // "<ClassName: 0xaddress>", as assertion and log texts print an object.
    virtual QString description() const;

    // One registration of an observer for a key of this object.
    struct Observation {
        KRObject* observer;
        const char* keyPath;
        unsigned options;
        const void* context;
    };

    // Key-value observation. Observers run synchronously, in registration order, from the setter.
    // keyPath is kept by pointer: pass a string literal (or a string that outlives the registration).
    void addObserver(KRObject* observer, const char* keyPath, unsigned options, const void* context);
    void removeObserver(KRObject* observer, const char* keyPath, const void* context);
    // Most objects have nobody watching them at all; they answer without a call.
    bool hasObserversForKey(const char* keyPath) const {
        return m_extra != 0 && hasAnyObserverForKey(keyPath);
    }
    std::size_t observationCount() const;
    // Room for count registrations, for an object that knows how many it is about to make. Observations of
    // an object by itself need no room (see SelfObservation).
    void reserveObservations(std::size_t count);
    // The registrations in the order they were made.
    std::vector<Observation> observationInfo() const;

    virtual void observeValueForKeyPath(const char* keyPath, KRObject* object, const KRKeyValueChange& change,
                                        const void* context);

    // Performs a named action with a sender (target/action). Answers whether it was handled.
    virtual bool tryToPerform(const KRSelector& action, KRObject* sender);
    virtual bool respondsToSelector(const KRSelector& selector) const;

    // The token that weak references watch; created on first use.
    const std::shared_ptr<KRObject*>& lifetimeToken() const;

protected:
    // Stores value into field and reports the change to the observers of keyPath (only when there are any).
    template <class T> void setValueNotifying(const char* keyPath, T& field, const T& value) {
        if (!hasObserversForKey(keyPath)) {
            field = value;
            return;
        }
        const QVariant oldValue = QVariant::fromValue(field);
        field = value;
        didChangeValueForKey(keyPath, oldValue, QVariant::fromValue(field));
    }
    void didChangeValueForKey(const char* keyPath, const QVariant& oldValue, const QVariant& newValue);

private:
    struct SelfObservation;
    struct NotificationGuard;
    // What few objects need: registrations by other observers, and the token weak references watch.
    struct Side {
        std::vector<Observation> observations;
        std::shared_ptr<KRObject*> lifetimeToken;
        const SelfObservation* selfObservations = nullptr;
    };

    bool hasAnyObserverForKey(const char* keyPath) const;
    Side& side() const;
    Side* sideIfAny() const {
        return (m_extra & kSelfObservationsTag) ? nullptr : reinterpret_cast<Side*>(m_extra);
    }
    const SelfObservation* selfObservations() const;
    void setSelfObservations(const SelfObservation* observations);
    bool hasExplicitObservations() const {
        const Side* mine = sideIfAny();
        return mine && !mine->observations.empty();
    }
    // Moves the shared self-registrations into this object's own list, keeping their order.
    void makeObservationsExplicit();
    bool isRegistered(const Observation& observation) const;

    // One word for what few objects need. Objects that observe their own keys (every list row does, a
    // dozen times) share their registrations: while only the object itself observes, the list is a path in
    // a process-wide tree of registration sequences, and the object holds the last node of its path, tagged
    // in the low bit. Once the object needs a side block (other observers, weak references), the word
    // points at that block, which keeps the node instead.
    static constexpr std::uintptr_t kSelfObservationsTag = 1;
    mutable std::uintptr_t m_extra = 0;
};

// A non-owning reference that reads as null once its object is destroyed.
template <class T> class KRWeak {
public:
    KRWeak() = default;
    KRWeak(std::nullptr_t) {}
    KRWeak(T* object) { reset(object); }
    KRWeak(const std::shared_ptr<T>& object) { reset(object.get()); }

    void reset(T* object = nullptr) {
        m_object = object;
        if (object) {
            m_token = static_cast<const KRObject*>(object)->lifetimeToken();
        } else {
            m_token.reset();
        }
    }
    T* get() const { return m_token.expired() ? nullptr : m_object; }
    T* operator->() const { return get(); }
    explicit operator bool() const { return get() != nullptr; }
    friend bool operator==(const KRWeak& a, const T* b) { return a.get() == b; }

private:
    T* m_object = nullptr;
    std::weak_ptr<KRObject*> m_token;
};
