#include "qt/nameindex_p.h"

#include <algorithm>

namespace Vantrel::QtWrapper {

int NameIndex::add(const Node &node, int parent)
{
    const int place = size();
    m_nodes.push_back(node);
    m_parents.push_back(parent);
    m_placeOfNode.insert(node, place);
    return place;
}

void NameIndex::finish()
{
    m_ends.resize(m_nodes.size());
    for (int place = size() - 1; place >= 0; --place) {
        m_ends[place] = std::max(m_ends[place], place + 1);
        if (m_parents[place] != -1) {
            int &end = m_ends[m_parents[place]];
            end = std::max(end, m_ends[place]);
        }
    }
}

int NameIndex::count(const QString &key, int begin, int end) const
{
    const auto found = m_places.constFind(key);
    if (found == m_places.constEnd()) {
        return 0;
    }
    const auto first = std::lower_bound(found->begin(), found->end(), begin);
    return int(std::lower_bound(first, found->end(), end) - first);
}

} // namespace Vantrel::QtWrapper
