#ifndef VANTREL_QT_AIM_P_H
#define VANTREL_QT_AIM_P_H

#include "qt/input_p.h"

#include "objectmodel/shared.h"

#include <QPoint>
#include <QString>

#include <optional>

namespace Vantrel {

class Object;

namespace QtWrapper {

/**
 * Waits until an object can be used at a position (see nowhere), and scrolls it
 * into view. The button and the modifiers of the result are not set. Nothing,
 * with the last error set, when the time is over.
 */
std::optional<MouseInput> aimAt(const QString &operation, const SharedPtr<Object> &object,
                                const QPoint &position);
/** Scrolls everything around an object so that it can be seen, and that point of it. */
void scrollIntoView(const SharedPtr<Object> &object, const QPoint &position);

/** Presses and releases the left button. */
Delivery click(const MouseInput &input);
/** The error of an action that the end of the application cut short. */
bool failQuitting(const QString &operation);
/** How long actions wait; see setActionTimeout(). */
int actionTimeout();

} // namespace QtWrapper
} // namespace Vantrel

#endif // VANTREL_QT_AIM_P_H
