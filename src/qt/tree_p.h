#ifndef VANTREL_QT_TREE_P_H
#define VANTREL_QT_TREE_P_H

#include "qt/node_p.h"

namespace Vantrel::QtWrapper {

enum class ModelItems { Visited, LeftOut };

/** As visitNodes(); items and sections of models, by far the most nodes, can be left out. */
bool visitNodes(const Node &root, ModelItems modelItems,
                const std::function<bool(const Node &)> &visit);

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_TREE_P_H
