#ifndef VANTREL_QT_NAMEINDEX_P_H
#define VANTREL_QT_NAMEINDEX_P_H

#include "qt/node_p.h"

#include <QHash>
#include <QString>

#include <vector>

namespace Vantrel::QtWrapper {

/**
 * Nodes in the order in which names are searched for, parents first, and where
 * those with the same conditions are. What is below a node follows it, so it
 * is a range.
 */
class NameIndex
{
public:
    using Places = std::vector<int>;

    /** @p parent is the place of the parent, or -1. @return the place of the node. */
    int add(const Node &node, int parent);
    /** Enters a node under conditions; @p key spells them. */
    void enter(int place, const QString &key) { m_places[key].push_back(place); }
    /** To be called when all are added. */
    void finish();

    int size() const { return int(m_nodes.size()); }
    /** -1 for a node that is not there. */
    int placeOf(const Node &node) const { return m_placeOfNode.value(node, -1); }
    const Node &node(int place) const { return m_nodes[place]; }
    int parentOf(int place) const { return m_parents[place]; }
    /** One behind the last place below a node. */
    int endOf(int place) const { return m_ends[place]; }

    /** How many nodes there are under a key from @p begin to before @p end. */
    int count(const QString &key, int begin, int end) const;

private:
    std::vector<Node> m_nodes;
    std::vector<int> m_parents;
    std::vector<int> m_ends;
    QHash<Node, int> m_placeOfNode;
    QHash<QString, Places> m_places;
};

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_NAMEINDEX_P_H
