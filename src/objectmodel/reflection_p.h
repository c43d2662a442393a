#ifndef VANTREL_REFLECTION_P_H
#define VANTREL_REFLECTION_P_H

#include "objectmodel/object.h"

namespace Vantrel {

// Members used by number or name of classes that perhaps lack them. Whatever
// is missing gives a null handle and a report, as if the call had failed.

/** Calls constructor @p index of @p c, which may be null. */
SharedPtr<Object> constructWith(const Class *c, int index, const ObjectList &arguments);

/** The value of a property that is looked up in the class of @p object. */
SharedPtr<Object> readProperty(const SharedPtr<Object> &object, const QString &name);

/** The first overload of a method of @p c, which must not be null. */
const Method *firstOverload(const Class *c, const QString &name);

} // namespace Vantrel

#endif // VANTREL_REFLECTION_P_H
