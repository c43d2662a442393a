#include "objectmodel/shared.h"

namespace Vantrel {

Shared::~Shared() = default;

void Shared::lastReferenceReleased() const
{
    if (m_borrowed) {
        m_borrowed = false;
    } else {
        delete this;
    }
}

} // namespace Vantrel
