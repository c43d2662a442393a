#ifndef VANTREL_REFLECTION_P_H
#define VANTREL_REFLECTION_P_H

#include "objectmodel/class.h"
#include "objectmodel/object_p.h"

#include <memory>

namespace Vantrel {

// Classes and members that are found by name, and therefore may be missing.
// Whatever is missing gives a null result and a report, as if a call had
// failed.

/** A class of the namespace "UiTypes", or null. */
const Class *uiTypesClass(const QString &name);

/** False, with the last error set, when @p c is null. */
bool verifyClassAvailable(const Class *c);

/** Calls constructor @p index of @p c, which may be null. */
SharedPtr<Object> constructWith(const Class *c, int index, const ObjectList &arguments);

/** The value of a property that is looked up in the class of @p object. */
SharedPtr<Object> readProperty(const SharedPtr<Object> &object, const QString &name);

/** The first overload of a method of @p c, which must not be null. */
const Method *firstOverload(const Class *c, const QString &name);

/** A new object that owns a copy of @p value. @p c frees the copy, and may be null. */
template <class T>
SharedPtr<Object> wrapCopy(const Class *c, const T &value, const ObjectAttribute &attribute)
{
    if (!verifyClassAvailable(c)) {
        return {};
    }
    auto copy = std::make_unique<T>(value);
    SharedPtr<Object> object = ObjectAccess::owned(c, copy.get(), attribute);
    if (object) {
        copy.release();
    }
    return object;
}

/** The native value of @p object, which must be a T; a new one when there is no data. */
template <class T>
T unwrapCopy(const SharedPtr<Object> &object)
{
    void *data = nullptr;
    if (object) {
        object->get(&data);
    }
    return data ? *static_cast<const T *>(data) : T();
}

} // namespace Vantrel

#endif // VANTREL_REFLECTION_P_H
