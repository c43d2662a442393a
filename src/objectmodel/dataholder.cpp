#include "objectmodel/dataholder_p.h"

#include "objectmodel/class_p.h"

#include <iterator>

namespace Vantrel {

DataHolder::DataHolder(void *data, const Class *c, const ObjectAttribute &attribute,
                       const SharedPtr<DataHolder> &kept)
    : m_data(data), m_attribute(attribute)
{
    setMadeAs(c);
    if (kept) {
        m_kept.push_back(kept);
    }
}

DataHolder::DataHolder(const SharedPtr<DataHolder> &first, const SharedPtr<DataHolder> &second)
    : m_data(nullptr), m_kept{first, second}
{}

DataHolder::~DataHolder()
{
    if (m_freedBy) {
        m_freedBy->deleteObjectData(m_data, m_attribute);
    }
    // One after the other: a long chain would exhaust the stack.
    while (!m_kept.empty()) {
        const SharedPtr<DataHolder> last = std::move(m_kept.back());
        m_kept.pop_back();
        if (last->referenceCount() == 1) {
            std::move(last->m_kept.begin(), last->m_kept.end(), std::back_inserter(m_kept));
            last->m_kept.clear();
        }
    }
}

bool DataHolder::keeps(const DataHolder *other) const
{
    constexpr int longChain = 8;
    const DataHolder *holder = this;
    for (int i = 0; holder && i < longChain; ++i) {
        if (holder == other) {
            return true;
        }
        for (const SharedPtr<DataHolder> &kept : holder->m_kept) {
            if (kept.get() == other) {
                return true;
            }
        }
        holder = holder->m_kept.empty() ? nullptr : holder->m_kept.front().get();
    }
    return false;
}

void DataHolder::setMadeAs(const Class *c)
{
    if (ClassPrivate::get(c)->deleteNative) {
        m_madeAs = c;
    }
}

} // namespace Vantrel
