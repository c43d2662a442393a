#ifndef VANTREL_QT_GEOMETRY_P_H
#define VANTREL_QT_GEOMETRY_P_H

#include "qt/node_p.h"

#include <QPoint>
#include <QRect>

class QWindow;

namespace Vantrel::QtWrapper {

// All in global screen coordinates, in device-independent pixels.

/** Null for a node that has no place, such as a menu item of a menu that was never shown. */
QRect boundsOf(const Node &node);
/** The part of the bounds that ancestors do not clip; empty when nothing is left. */
QRect visibleBoundsOf(const Node &node);
/** The innermost shown node at a point, below @p root or, when it is null, in the topmost window.
 */
Node nodeAt(const Node &root, const QPoint &position);
/** The window of the window system that shows the node; null while there is none. */
QWindow *windowOf(const Node &node);

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_GEOMETRY_P_H
