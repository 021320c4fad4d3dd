#pragma once

#include "Foundation/KRObject.h"

// A delegate held without ownership. Delegate interfaces are plain abstract classes, so the reference
// watches the lifetime of the KRObject that implements the interface and reads as null once that object
// is gone. With a null lifetime owner the caller promises to clear the delegate itself in time.
template <class T> class KRWeakDelegate {
public:
    void reset(T* delegate, const KRObject* lifetimeOwner) {
        m_delegate = delegate;
        m_lifetime.reset(delegate ? lifetimeOwner : nullptr);
        m_hasLifetime = delegate && lifetimeOwner;
    }
    T* get() const {
        if (!m_delegate || (m_hasLifetime && !m_lifetime)) {
            return nullptr;
        }
        return m_delegate;
    }

private:
    T* m_delegate = nullptr;
    KRWeak<const KRObject> m_lifetime;
    bool m_hasLifetime = false;
};
