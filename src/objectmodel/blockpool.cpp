#include "objectmodel/blockpool.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)                            \
    || __has_feature(thread_sanitizer)
#define VANTREL_KEEPS_NO_BLOCKS
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VANTREL_KEEPS_NO_BLOCKS
#endif

namespace Vantrel {

#ifdef VANTREL_KEEPS_NO_BLOCKS

void *BlockPool::take(std::size_t size)
{
    return ::operator new(size);
}

void BlockPool::give(void *block, std::size_t) noexcept
{
    ::operator delete(block);
}

#else

namespace {

constexpr std::size_t step = 8;
constexpr std::size_t largestSize = 160;
constexpr int mostKept = 512;

/** Blocks of one size. They are not written to: the smallest have no room for a link. */
struct KeptBlocks
{
    int count;
    void *blocks[mostKept];
};

// Zero from the start and never destroyed: handles are made before and after everything else.
KeptBlocks keptBlocks[step + largestSize / step];

/** Exact, because a block that was made elsewhere is no larger than its size. */
KeptBlocks *blocksOfSize(std::size_t size)
{
    if (size >= step && size <= largestSize && size % step == 0) {
        return &keptBlocks[step - 1 + size / step];
    }
    return size < step ? &keptBlocks[size] : nullptr;
}

} // namespace

void *BlockPool::take(std::size_t size)
{
    KeptBlocks *kept = blocksOfSize(size);
    return kept && kept->count > 0 ? kept->blocks[--kept->count] : ::operator new(size);
}

void BlockPool::give(void *block, std::size_t size) noexcept
{
    KeptBlocks *kept = blocksOfSize(size);
    if (kept && kept->count < mostKept) {
        kept->blocks[kept->count++] = block;
    } else {
        ::operator delete(block);
    }
}

#endif

} // namespace Vantrel
