#ifndef VANTREL_QT_METACLASS_P_H
#define VANTREL_QT_METACLASS_P_H

struct QMetaObject;

namespace Vantrel {

class Class;

namespace QtWrapper {

/** The class that describes the objects of a meta object. Made, with its super classes, on first
 * request. */
const Class *classOf(const QMetaObject *metaObject);
/** The meta object behind such a class, or null for a class of another kind. */
const QMetaObject *metaObjectOf(const Class *c);

} // namespace QtWrapper
} // namespace Vantrel

#endif // VANTREL_QT_METACLASS_P_H
