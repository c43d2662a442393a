#ifndef VANTREL_QT_HIERARCHY_P_H
#define VANTREL_QT_HIERARCHY_P_H

namespace Vantrel::QtWrapper {

/** Makes the tree of the application known to the object model, once. */
void registerHierarchy();

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_HIERARCHY_P_H
