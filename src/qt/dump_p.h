#ifndef VANTREL_QT_DUMP_P_H
#define VANTREL_QT_DUMP_P_H

#include "objectmodel/shared.h"

namespace Vantrel {

class Object;
class ObjectList;

namespace QtWrapper {

struct DumpOptions;

/** The objects that dumpTree() would dump, in its order. False, with the last error set, as there.
 */
bool listObjects(const SharedPtr<Object> &root, const DumpOptions &options, ObjectList *objects);

} // namespace QtWrapper
} // namespace Vantrel

#endif // VANTREL_QT_DUMP_P_H
