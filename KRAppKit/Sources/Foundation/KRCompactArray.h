#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <new>
#include <ranges>
#include <utility>

// A growable array that costs one pointer while empty and one block once it holds anything: the counts sit
// in front of the elements. Views keep their subviews and tracking areas in these; a list has thousands of
// views, most of them leaves, and the few parents among them know how many children they get.
template <class T> class KRCompactArray {
public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;
    using size_type = std::size_t;

    KRCompactArray() = default;
    KRCompactArray(const KRCompactArray& other) {
        if (!other.empty()) {
            m_block = Block::make(other.size());
            std::uninitialized_copy(other.begin(), other.end(), m_block->items());
            m_block->count = other.m_block->count;
        }
    }
    KRCompactArray(KRCompactArray&& other) noexcept : m_block(std::exchange(other.m_block, nullptr)) {}
    KRCompactArray& operator=(KRCompactArray other) noexcept {
        std::swap(m_block, other.m_block);
        return *this;
    }
    ~KRCompactArray() { Block::destroy(m_block); }

    size_type size() const { return m_block ? m_block->count : 0; }
    size_type capacity() const { return m_block ? m_block->capacity : 0; }
    bool empty() const { return size() == 0; }

    T* data() { return m_block ? m_block->items() : nullptr; }
    const T* data() const { return m_block ? m_block->items() : nullptr; }
    iterator begin() { return data(); }
    iterator end() { return data() + size(); }
    const_iterator begin() const { return data(); }
    const_iterator end() const { return data() + size(); }
    std::reverse_iterator<iterator> rbegin() { return std::reverse_iterator<iterator>(end()); }
    std::reverse_iterator<iterator> rend() { return std::reverse_iterator<iterator>(begin()); }
    std::reverse_iterator<const_iterator> rbegin() const {
        return std::reverse_iterator<const_iterator>(end());
    }
    std::reverse_iterator<const_iterator> rend() const {
        return std::reverse_iterator<const_iterator>(begin());
    }

    T& operator[](size_type index) { return data()[index]; }
    const T& operator[](size_type index) const { return data()[index]; }
    T& front() { return *begin(); }
    const T& front() const { return *begin(); }
    T& back() { return *(end() - 1); }
    const T& back() const { return *(end() - 1); }

    // Makes room for exactly count elements, so a parent that knows its children allocates once.
    void reserve(size_type count) {
        if (count > capacity()) {
            reallocate(count);
        }
    }

    void push_back(const T& value) { insert(end(), value); }

    // Inserts before position; answers where the value went.
    iterator insert(const_iterator position, const T& value) {
        const size_type index = static_cast<size_type>(position - begin());
        if (size() == capacity()) {
            // The value may live in this array: copy it before the elements move.
            T copy = value;
            reallocate(capacity() == 0 ? 1 : 2 * capacity());
            return emplaceAt(index, std::move(copy));
        }
        return emplaceAt(index, T(value));
    }

    iterator erase(const_iterator position) {
        const size_type index = static_cast<size_type>(position - begin());
        T* const items = data();
        std::move(items + index + 1, items + size(), items + index);
        std::destroy_at(items + size() - 1);
        --m_block->count;
        return items + index;
    }

    iterator erase(const_iterator first, const_iterator last) {
        const size_type from = static_cast<size_type>(first - begin());
        const size_type to = static_cast<size_type>(last - begin());
        T* const items = data();
        T* const kept = std::move(items + to, items + size(), items + from);
        std::destroy(kept, items + size());
        m_block->count = static_cast<std::uint32_t>(kept - items);
        return items + from;
    }

    void clear() {
        if (m_block) {
            std::destroy_n(m_block->items(), m_block->count);
            m_block->count = 0;
        }
    }

    template <std::ranges::input_range Range>
    requires(!std::same_as<std::remove_cvref_t<Range>, KRCompactArray>) friend bool
    operator==(const KRCompactArray& array, const Range& other) {
        return std::ranges::equal(array, other);
    }
    friend bool operator==(const KRCompactArray& a, const KRCompactArray& b) {
        return std::ranges::equal(a, b);
    }

private:
    struct Block {
        std::uint32_t count = 0;
        std::uint32_t capacity = 0;

        T* items() { return std::launder(reinterpret_cast<T*>(this + 1)); }
        static Block* make(size_type capacity) {
            static_assert(sizeof(Block) % alignof(T) == 0 && alignof(T) <= alignof(std::max_align_t));
            void* memory = ::operator new(sizeof(Block) + capacity * sizeof(T));
            auto* block = new (memory) Block;
            block->capacity = static_cast<std::uint32_t>(capacity);
            return block;
        }
        static void destroy(Block* block) {
            if (!block) {
                return;
            }
            std::destroy_n(block->items(), block->count);
            block->~Block();
            ::operator delete(block);
        }
    };

    void reallocate(size_type capacity) {
        Block* grown = Block::make(capacity);
        if (m_block) {
            std::uninitialized_move_n(m_block->items(), m_block->count, grown->items());
            grown->count = m_block->count;
            Block::destroy(m_block);
        }
        m_block = grown;
    }

    // Room for one more is there.
    iterator emplaceAt(size_type index, T&& value) {
        T* const items = data();
        const size_type count = size();
        if (index == count) {
            new (items + count) T(std::move(value));
        } else {
            new (items + count) T(std::move(items[count - 1]));
            std::move_backward(items + index, items + count - 1, items + count);
            items[index] = std::move(value);
        }
        ++m_block->count;
        return items + index;
    }

    Block* m_block = nullptr;
};
