#ifndef VANTREL_SCREENVALUES_H
#define VANTREL_SCREENVALUES_H

#include "objectmodel/export.h"
#include "objectmodel/shared.h"

class QRect;

namespace Vantrel {

class Class;
class Object;

/** A point on the screen, in pixels. */
struct ScreenPoint
{
    int x = 0;
    int y = 0;
};

/** A rectangle on the screen, in pixels. */
struct ScreenRectangle
{
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

// The classes are those of the namespace "UiTypes", null when there are none.
// Wrapping makes a new object that owns a copy; without the class the result
// is null and the Inspector's last error is set. Objects to unwrap must be of
// the matching class; null ones, or such without data, give zeros.

VANTREL_EXPORT const Class *screenPointClass();
VANTREL_EXPORT SharedPtr<Object> wrapScreenPoint(const ScreenPoint &value);
VANTREL_EXPORT ScreenPoint unwrapScreenPoint(SharedPtr<Object> object);

VANTREL_EXPORT const Class *objectModelScreenRectangleClass();
VANTREL_EXPORT SharedPtr<Object> wrapScreenRectangle(const ScreenRectangle &value);
VANTREL_EXPORT ScreenRectangle unwrapScreenRectangle(SharedPtr<Object> object);

// For a class of another process, of which nothing but its members is used:
// constructor 1 with four ints, and the properties "x", "y", "width" and
// "height". What is missing makes the result null or the number 0, with the
// reason in the Inspector's last error or a diagnostic.

VANTREL_EXPORT SharedPtr<Object> createRemoteScreenRectangle(const ScreenRectangle &value);
VANTREL_EXPORT SharedPtr<Object> createRemoteScreenRectangle(const QRect &value);
VANTREL_EXPORT ScreenRectangle unwrapRemoteScreenRectangle(SharedPtr<Object> object);

} // namespace Vantrel

#endif // VANTREL_SCREENVALUES_H
