#ifndef VANTREL_QT_WRAPPER_H
#define VANTREL_QT_WRAPPER_H

#include "objectmodel/shared.h"

#include "qt/export.h"

class QObject;

namespace Vantrel {

class Object;

/** The toolkit wrapper for applications of Qt 5. */
namespace QtWrapper {

/**
 * Makes the objects of this application visible to the object model: its
 * windows and widgets are found by name, called, watched and driven. To be
 * called in the thread of the application object, which must exist; once is
 * enough, later calls do nothing.
 * @return false, with the Inspector's last error set, without an application
 *         object or in another thread.
 */
VANTREL_QT_EXPORT bool install();

// For bindings, and for wrappers of other libraries.

/**
 * The handle of a QObject of this thread, of its most derived class; while it
 * is held there is only this one. A null pointer gives a null object.
 * @return null, with the Inspector's last error set, for an object of another
 *         thread.
 */
VANTREL_QT_EXPORT SharedPtr<Object> handleFor(QObject *object);
/** The QObject behind such a handle; null when it is of another kind, null or invalidated. */
VANTREL_QT_EXPORT QObject *qobjectFor(const SharedPtr<Object> &handle);

} // namespace QtWrapper
} // namespace Vantrel

#endif // VANTREL_QT_WRAPPER_H
