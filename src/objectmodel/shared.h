#ifndef VANTREL_SHARED_H
#define VANTREL_SHARED_H

#include "objectmodel/export.h"

#include <QtGlobal>

#include <cstddef>
#include <type_traits>
#include <utility>

namespace Vantrel {

template <class T>
class SharedPtr;

/**
 * Base of everything that a SharedPtr can hold: one plain reference count,
 * which is not atomic. A copy of a Shared takes over the count of its source.
 */
class VANTREL_EXPORT Shared
{
public:
    Shared() = default;
    Shared(const Shared &) = default;
    Shared &operator=(const Shared &) = default;
    virtual ~Shared();

    /** Number of SharedPtr that hold this object; 0 after construction. */
    quint32 referenceCount() const { return m_count; }

private:
    template <class T>
    friend class SharedPtr;

    void retain() const { ++m_count; }
    void release() const
    {
        if (--m_count == 0) {
            lastReferenceReleased();
        }
    }
    void borrow() const { m_borrowed = m_borrowed || m_count == 0; }
    void lastReferenceReleased() const;

    mutable quint32 m_count = 0;
    mutable bool m_borrowed = false;
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
    SharedPtr(T *pointer) : m_pointer(pointer) { retain(); }
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
     * object needs to name itself. When the count is 0, the object stays its
     * creator's: handles made this way do not delete it when they go.
     */
    static SharedPtr borrowed(T *pointer)
    {
        if (pointer) {
            pointer->borrow();
        }
        return SharedPtr(pointer);
    }

    T *get() const { return m_pointer; }
    T *operator->() const { return m_pointer; }
    T &operator*() const { return *m_pointer; }
    explicit operator bool() const { return m_pointer != nullptr; }
    bool isNull() const { return m_pointer == nullptr; }

    void reset() { SharedPtr().swap(*this); }
    void swap(SharedPtr &other) noexcept { std::swap(m_pointer, other.m_pointer); }

private:
    void retain() const
    {
        if (m_pointer) {
            m_pointer->retain();
        }
    }
    void release() const
    {
        if (m_pointer) {
            m_pointer->release();
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
