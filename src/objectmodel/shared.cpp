#include "objectmodel/shared.h"

namespace Vantrel {

Shared::~Shared() = default;

void *Shared::operator new(std::size_t size, std::align_val_t alignment)
{
    return ::operator new(size, alignment);
}

void Shared::operator delete(void *block, std::size_t, std::align_val_t alignment) noexcept
{
    ::operator delete(block, alignment);
}

void Shared::lastReferenceReleased() const
{
    if (m_isBorrowed) {
        m_isBorrowed = false;
    } else {
        delete this;
    }
}

} // namespace Vantrel
