// A counted reference to an object that carries its own count: one word, no control block. The count is
// atomic: copies may be made, read and dropped on any thread.
#pragma once

#include <atomic>
#include <cassert>
#include <cstdint>
#include <utility>

namespace quillmark {

/// The base of what an IntrusivePointer holds. A new object has one reference, its maker's.
struct ReferenceCounted {
    std::atomic<uint32_t> references{1};
};

/// `T` derives from ReferenceCounted and has a static `destroy(T*)` for the last reference to call.
template <class T> class IntrusivePointer {
public:
    IntrusivePointer() = default;
    explicit IntrusivePointer(T* fresh) ///< takes over the maker's reference
        : m_object(fresh)
    {
    }
    IntrusivePointer(const IntrusivePointer& other)
        : m_object(other.m_object)
    {
        if (m_object)
            m_object->references.fetch_add(1, std::memory_order_relaxed);
    }
    IntrusivePointer(IntrusivePointer&& other) noexcept
        : m_object(std::exchange(other.m_object, nullptr))
    {
    }
    IntrusivePointer& operator=(IntrusivePointer other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~IntrusivePointer()
    {
        if (m_object && (isUnique() || m_object->references.fetch_sub(1, std::memory_order_acq_rel) == 1))
            T::destroy(m_object);
    }

    T* get() const { return m_object; }
    T& operator*() const { return *m_object; }
    T* operator->() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }

    /// True when nobody else holds the object, so that it may be changed in place. Whoever held it before has
    /// finished reading it. Not for an empty pointer.
    bool isUnique() const
    {
        assert(m_object);
        return m_object->references.load(std::memory_order_acquire) == 1;
    }

private:
    T* m_object = nullptr;
};

} // namespace quillmark
