#ifndef VANTREL_WINDOWINTERACTION_H
#define VANTREL_WINDOWINTERACTION_H

#include "objectmodel/export.h"
#include "objectmodel/shared.h"

namespace Vantrel {

class Object;
class ObjectList;

/*
 * What scripts do to the top-level windows of the application, of whatever
 * toolkit. The WindowInteractionDelegate of the window's class does the work.
 * The global class offers these functions under the same names.
 *
 * The first argument is the window; moving and resizing take two numbers, in
 * pixels, behind it. The result is the void object, or null with the reason in
 * the Inspector's last error: the window is missing, null or invalidated,
 * nobody knows how to handle its class, or the toolkit gave a reason.
 */

VANTREL_EXPORT SharedPtr<Object> _vantrel_window_close(const ObjectList &arguments);
VANTREL_EXPORT SharedPtr<Object> _vantrel_window_maximize(const ObjectList &arguments);
VANTREL_EXPORT SharedPtr<Object> _vantrel_window_minimize(const ObjectList &arguments);
/** Window, x, y: the new place of the frame in global screen coordinates. */
VANTREL_EXPORT SharedPtr<Object> _vantrel_window_moveto(const ObjectList &arguments);
/** Window, width, height. */
VANTREL_EXPORT SharedPtr<Object> _vantrel_window_resizeto(const ObjectList &arguments);
VANTREL_EXPORT SharedPtr<Object> _vantrel_window_restore(const ObjectList &arguments);
VANTREL_EXPORT SharedPtr<Object> _vantrel_window_fullscreen_set(const ObjectList &arguments);
VANTREL_EXPORT SharedPtr<Object> _vantrel_window_foreground_set(const ObjectList &arguments);
VANTREL_EXPORT SharedPtr<Object> _vantrel_window_focus_set(const ObjectList &arguments);
/** @return a ScreenRectangle. */
VANTREL_EXPORT SharedPtr<Object> _vantrel_window_geometry_get(const ObjectList &arguments);
/**
 * Takes no arguments. @return the first window that a delegate has to offer;
 * the delegates are asked in the order of their class names, up to the first
 * one that reports an error.
 */
VANTREL_EXPORT SharedPtr<Object> _vantrel_window_focused(const ObjectList &arguments);

} // namespace Vantrel

#endif // VANTREL_WINDOWINTERACTION_H
