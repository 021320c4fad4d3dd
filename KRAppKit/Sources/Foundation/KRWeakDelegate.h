#pragma once

#include "Foundation/KRObject.h"

#include <cstdint>
#include <memory>

// A delegate held without ownership. Delegate interfaces are plain abstract classes, so the reference
// watches the lifetime of the KRObject that implements the interface and reads as null once that object
// is gone. With a null lifetime owner the caller promises to clear the delegate itself in time.
template <class T> class KRWeakDelegate {
public:
    void reset(T* delegate, const KRObject* lifetimeOwner) {
        static_assert(alignof(T) > kWatchedTag);
        const bool watched = delegate && lifetimeOwner;
        if (watched) {
            m_lifetime = lifetimeOwner->lifetimeToken();
        } else {
            m_lifetime.reset();
        }
        m_delegate = reinterpret_cast<std::uintptr_t>(delegate) | (watched ? kWatchedTag : 0);
    }
    T* get() const {
        if ((m_delegate & kWatchedTag) && m_lifetime.expired()) {
            return nullptr;
        }
        return reinterpret_cast<T*>(m_delegate & ~kWatchedTag);
    }

private:
    // Objects with a virtual interface are aligned beyond one byte, which leaves the low bit of the pointer
    // free to say whether a lifetime is watched: every row holds several of these.
    static constexpr std::uintptr_t kWatchedTag = 1;
    std::uintptr_t m_delegate = 0;
    std::weak_ptr<KRObject*> m_lifetime;
};
