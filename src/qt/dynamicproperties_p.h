#ifndef VANTREL_QT_DYNAMICPROPERTIES_P_H
#define VANTREL_QT_DYNAMICPROPERTIES_P_H

#include "objectmodel/object.h"

namespace Vantrel::QtWrapper {

// Methods of the class QObject, for properties that are found by name on each
// call: those of the class and those that were set on the one object.

/** property(name): null, with the last error set, when there is none. */
SharedPtr<Object> propertyByName(const SharedPtr<Object> &object, const ObjectList &arguments);
/** setProperty(name, value): a new name makes a dynamic property, a null object takes it away. */
SharedPtr<Object> setPropertyByName(const SharedPtr<Object> &object, const ObjectList &arguments);
/** dynamicPropertyNames() */
SharedPtr<Object> dynamicPropertyNames(const SharedPtr<Object> &object,
                                       const ObjectList &arguments);

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_DYNAMICPROPERTIES_P_H
