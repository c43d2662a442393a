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
constexpr std::size_t numLists = step + largestSize / step;
constexpr int mostKept = 512;

/** Blocks of one size. They are not written to: the smallest have no room for a link. */
struct KeptBlocks
{
    int count;
    void *blocks[mostKept];
};

// Zero from the start and never destroyed: handles are made before and after everything else.
KeptBlocks keptBlocks[numLists];

/**
 * The list for blocks of exactly a size, because one that was made elsewhere is
 * no larger than it has to be. List 0, for all other sizes, stays empty.
 */
struct ListOfSize
{
    constexpr ListOfSize() : index()
    {
        for (std::size_t size = 1; size <= largestSize; ++size) {
            const std::size_t list = size < step ? size : step - 1 + size / step;
            index[size] = size < step || size % step == 0 ? static_cast<unsigned char>(list) : 0;
        }
    }
    unsigned char index[largestSize + 1];
};

constexpr ListOfSize listOfSize;

} // namespace

void *BlockPool::take(std::size_t size)
{
    if (size > largestSize) {
        return ::operator new(size);
    }
    KeptBlocks &kept = keptBlocks[listOfSize.index[size]];
    return kept.count > 0 ? kept.blocks[--kept.count] : ::operator new(size);
}

void BlockPool::give(void *block, std::size_t size) noexcept
{
    const unsigned list = size > largestSize ? 0 : listOfSize.index[size];
    KeptBlocks &kept = keptBlocks[list];
    if (list > 0 && kept.count < mostKept) {
        kept.blocks[kept.count++] = block;
    } else {
        ::operator delete(block);
    }
}

#endif

} // namespace Vantrel
