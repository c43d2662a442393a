#ifndef VANTREL_QT_NAMES_P_H
#define VANTREL_QT_NAMES_P_H

#include "qt/node_p.h"

#include "objectmodel/objectname.h"

#include <memory>

namespace Vantrel::QtWrapper {

/** The first node below @p root (null: of the application) that a name matches; null when there is
 * none. Call it within an Inspector search for its misses to be reported. */
Node findNode(const Node &root, const ObjectName &name);

/**
 * Makes names. An instance looks through the whole tree once, so names for many
 * nodes want one instance; it must not be kept while the application runs.
 */
class NameMaker
{
public:
    NameMaker();
    ~NameMaker();

    /** A short multi-property name that finds exactly this node; empty for a null node. */
    QString name(const Node &node);

private:
    Q_DISABLE_COPY(NameMaker)
    struct Index;
    const std::unique_ptr<Index> d;
};

/** The name of one node. */
QString nameOf(const Node &node);

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_NAMES_P_H
