#ifndef VANTREL_BLOCKPOOL_H
#define VANTREL_BLOCKPOOL_H

#include "objectmodel/export.h"

#include <cstddef>
#include <new>

namespace Vantrel {

/**
 * Memory for the small things that every call makes and drops: handles, their
 * values, the nodes of lists. Blocks that come back are kept by their size, up
 * to a few hundred of each, and handed out again. Every block is one of
 * `::operator new`, so that a value taken over from a handle can be deleted in
 * the ordinary way, and one made in the ordinary way can come back here.
 *
 * Not locked, like the rest of the library. Builds with a sanitizer keep
 * nothing, so that it sees each block end.
 */
class VANTREL_EXPORT BlockPool
{
public:
    static void *take(std::size_t size);
    /** @p block must not be null; @p size is that of the request. */
    static void give(void *block, std::size_t size) noexcept;
};

/** Lets standard containers use the BlockPool. */
template <class T>
struct PoolAllocator
{
    static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);
    using value_type = T;

    PoolAllocator() = default;
    template <class U>
    PoolAllocator(const PoolAllocator<U> &)
    {}

    T *allocate(std::size_t count)
    {
        if (count > std::size_t(-1) / sizeof(T)) {
            throw std::bad_array_new_length();
        }
        return static_cast<T *>(BlockPool::take(count * sizeof(T)));
    }
    void deallocate(T *block, std::size_t count) noexcept
    {
        BlockPool::give(block, count * sizeof(T));
    }

    friend bool operator==(const PoolAllocator &, const PoolAllocator &) { return true; }
    friend bool operator!=(const PoolAllocator &, const PoolAllocator &) { return false; }
};

} // namespace Vantrel

#endif // VANTREL_BLOCKPOOL_H
