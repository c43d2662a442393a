#include "objectmodel/dataholder_p.h"

#include "objectmodel/class_p.h"

#include <iterator>

namespace Vantrel {

DataHolder::DataHolder(void *data, const Class *c)
    : m_data(data), m_madeAs(ClassPrivate::get(c)->deleteNative ? c : nullptr)
{}

DataHolder::DataHolder(SharedPtr<DataHolder> first, SharedPtr<DataHolder> second)
    : m_data(nullptr), m_madeAs(nullptr), m_kept{std::move(first), std::move(second)}
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

void DataHolder::takeOver(const Class *c, const ObjectAttribute &attribute)
{
    m_freedBy = m_madeAs ? m_madeAs : c;
    m_attribute = attribute;
}

} // namespace Vantrel
