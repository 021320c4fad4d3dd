#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

// Hands out one shared immutable copy per distinct value among the values asked for most recently, so that
// many objects configured alike (a list's rows) hold one block instead of a copy each. A value that falls out
// of the cache stays alive for as long as its holders keep it; asking for it again makes a new copy.
template <class T, std::size_t Capacity> class KRSharedValues {
public:
    std::shared_ptr<const T> shared(const T& value) {
        // Most recently used first: objects configured in the same steps find their values near the front.
        const auto found = std::find_if(m_recent.begin(), m_recent.end(),
                                        [&value](const auto& known) { return *known == value; });
        if (found != m_recent.end()) {
            std::rotate(m_recent.begin(), found, std::next(found));
            return m_recent.front();
        }
        if (m_recent.size() == Capacity) {
            m_recent.pop_back();
        }
        // Not const underneath: a holder left alone with a dropped value may edit it in place.
        m_recent.insert(m_recent.begin(), std::make_shared<T>(value));
        return m_recent.front();
    }

private:
    std::vector<std::shared_ptr<const T>> m_recent;
};
