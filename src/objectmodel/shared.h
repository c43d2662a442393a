#ifndef VANTREL_SHARED_H
#define VANTREL_SHARED_H

#include "objectmodel/blockpool.h"
#include "objectmodel/export.h"

#include <QtGlobal>

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

namespace Vantrel {

template <class T>
class SharedPtr;

/**
 * Base of everything that a SharedPtr can hold: one plain reference count,
 * which is not atomic. A copy of a Shared takes over the count of its source.
 * Memory comes from the BlockPool.
 */
class VANTREL_EXPORT Shared
{
public:
    Shared() = default;
    Shared(const Shared &) = default;
    Shared &operator=(const Shared &) = default;
    virtual ~Shared();

    static void *operator new(std::size_t size) { return BlockPool::take(size); }
    static void *operator new(std::size_t size, std::align_val_t alignment);
    static void *operator new(std::size_t, void *place) noexcept { return place; }
    static void operator delete(void *block, std::size_t size) noexcept
    {
        BlockPool::give(block, size);
    }
    static void operator delete(void *block, std::size_t size, std::align_val_t alignment) noexcept;
    static void operator delete(void *, void *) noexcept {}

    /** Number of SharedPtr that hold this object; 0 after construction. */
    quint32 referenceCount() const { return m_count; }

private:
    template <class T>
    friend class SharedPtr;

    void retain() const { ++m_count; }
    void own() const
    {
        ++m_count;
        m_isBorrowed = false;
    }
    void borrow() const
    {
        m_isBorrowed = m_isBorrowed || m_count == 0;
        ++m_count;
    }
    void release() const
    {
        if (--m_count == 0) {
            lastReferenceReleased();
        }
    }
    void lastReferenceReleased() const;

    mutable quint32 m_count = 0;
    /** Whether nobody but a SharedPtr::borrowed() and its copies ever held the object. */
    mutable bool m_isBorrowed = false;
};

/**
 * Intrusive smart pointer to a Shared. Copying counts up, destroying counts
 * down, and the release that reaches 0 deletes. Null is a valid value.
 * Comparison compares the pointers and never the things pointed to.
 */
template <class T>
class SharedPtr
{
public:
    SharedPtr() = default;
    SharedPtr(std::nullptr_t) {}
    /** Makes whoever holds the SharedPtr and its copies the owner of @p pointer, which may be null.
     */
    explicit SharedPtr(T *pointer) : m_pointer(pointer)
    {
        if (m_pointer) {
            shared()->own();
        }
    }
    SharedPtr(const SharedPtr &other) : m_pointer(other.m_pointer) { retain(); }
    SharedPtr(SharedPtr &&other) noexcept : m_pointer(std::exchange(other.m_pointer, nullptr)) {}
    template <class U, class = std::enable_if_t<std::is_convertible_v<U *, T *>>>
    SharedPtr(const SharedPtr<U> &other) : m_pointer(other.get())
    {
        retain();
    }
    ~SharedPtr() { release(); }

    SharedPtr &operator=(SharedPtr other) noexcept
    {
        swap(other);
        return *this;
    }

    /**
     * A handle for an object that perhaps nobody holds yet, which is what an
     * object needs to name itself. While the only handles are of this kind and
     * copies of them, the object stays its creator's and is not deleted when
     * they go; one that is made of the bare pointer in between takes it over.
     */
    static SharedPtr borrowed(T *pointer)
    {
        SharedPtr result;
        result.m_pointer = pointer;
        if (pointer) {
            result.shared()->borrow();
        }
        return result;
    }

    T *get() const { return m_pointer; }
    T *operator->() const { return m_pointer; }
    T &operator*() const { return *m_pointer; }
    explicit operator bool() const { return m_pointer != nullptr; }
    bool isNull() const { return m_pointer == nullptr; }

    void reset() { SharedPtr().swap(*this); }
    void swap(SharedPtr &other) noexcept { std::swap(m_pointer, other.m_pointer); }

private:
    /** By the base, since T may have operations of these names, too. */
    const Shared *shared() const { return m_pointer; }
    void retain() const
    {
        if (m_pointer) {
            shared()->retain();
        }
    }
    void release() const
    {
        if (m_pointer) {
            shared()->release();
        }
    }

    T *m_pointer = nullptr;
};

template <class T, class U>
bool operator==(const SharedPtr<T> &a, const SharedPtr<U> &b)
{
    return a.get() == b.get();
}

template <class T, class U>
bool operator!=(const SharedPtr<T> &a, const SharedPtr<U> &b)
{
    return a.get() != b.get();
}

template <class T>
bool operator==(const SharedPtr<T> &a, std::nullptr_t)
{
    return a.isNull();
}

template <class T>
bool operator!=(const SharedPtr<T> &a, std::nullptr_t)
{
    return !a.isNull();
}

template <class T>
bool operator==(std::nullptr_t, const SharedPtr<T> &a)
{
    return a.isNull();
}

template <class T>
bool operator!=(std::nullptr_t, const SharedPtr<T> &a)
{
    return !a.isNull();
}

} // namespace Vantrel

#endif // VANTREL_SHARED_H
