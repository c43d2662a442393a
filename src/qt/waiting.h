#ifndef VANTREL_QT_WAITING_H
#define VANTREL_QT_WAITING_H

#include "objectmodel/shared.h"

#include "qt/export.h"

#include <QString>

#include <functional>

namespace Vantrel {

class Object;

namespace QtWrapper {

// Events are served while these wait. Times are in milliseconds. Scripts have
// them as global functions of the same names.

constexpr int defaultTimeout = 20000;

/**
 * Waits until an object of that name exists and is ready: visible, enabled, not
 * covered by another window or widget, not moving, its window not blocked by a
 * modal dialog. What has no place on the screen, such as the application
 * object, is ready when it exists.
 * @return null, with the last error set, when the time is over; the error is
 *         that of the search, or tells which check was still false and for how
 *         long it had been.
 */
VANTREL_QT_EXPORT SharedPtr<Object> waitForObject(const QString &name,
                                                  int timeout = defaultTimeout);
/** Only until it exists. */
VANTREL_QT_EXPORT SharedPtr<Object> waitForObjectExists(const QString &name,
                                                        int timeout = defaultTimeout);
/** Until an object that is known is ready. False, with the last error set, when it is not. */
VANTREL_QT_EXPORT bool waitUntilReady(const SharedPtr<Object> &object,
                                      int timeout = defaultTimeout);
/**
 * Waits until @p condition is true; it is asked again and again, in the caller's
 * stack. @p what names it in the error. False, with the last error set, when the
 * time is over.
 */
VANTREL_QT_EXPORT bool waitFor(const std::function<bool()> &condition, int timeout = defaultTimeout,
                               const QString &what = QString());
/** Serves events for that time. */
VANTREL_QT_EXPORT void snooze(int milliseconds);

} // namespace QtWrapper
} // namespace Vantrel

#endif // VANTREL_QT_WAITING_H
