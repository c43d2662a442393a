#ifndef VANTREL_QT_WRAPPER_H
#define VANTREL_QT_WRAPPER_H

#include "qt/export.h"

namespace Vantrel {

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

} // namespace QtWrapper
} // namespace Vantrel

#endif // VANTREL_QT_WRAPPER_H
