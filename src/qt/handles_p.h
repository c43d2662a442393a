#ifndef VANTREL_QT_HANDLES_P_H
#define VANTREL_QT_HANDLES_P_H

#include "objectmodel/shared.h"

class QObject;

namespace Vantrel {

class Class;
class Object;

namespace QtWrapper {

class Node;

/**
 * The handle of a QObject, of its most derived class. While somebody holds it,
 * there is only this one; when the QObject is destroyed it is invalidated. A
 * null @p object gives a null object of the class QObject. Null, with the last
 * error set, for an object of another thread.
 */
SharedPtr<Object> handleOf(QObject *object);
/** The same for a given class, which must be that of @p object or one of its super classes. */
SharedPtr<Object> handleOf(QObject *object, const Class *type);
/** The QObject behind a handle; null when it is of another kind, null or invalidated. */
QObject *qobjectOf(const SharedPtr<Object> &handle);

/** The handle of any node; null for a null node. */
SharedPtr<Object> handleOf(const Node &node);
/**
 * What a handle stands for. Null for a value of another kind, and for what is
 * gone; an item that is gone invalidates its handle here.
 */
Node nodeOf(const SharedPtr<Object> &handle);

} // namespace QtWrapper
} // namespace Vantrel

#endif // VANTREL_QT_HANDLES_P_H
