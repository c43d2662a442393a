#ifndef VANTREL_SCREENVALUES_H
#define VANTREL_SCREENVALUES_H

#include "objectmodel/export.h"

namespace Vantrel {

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

} // namespace Vantrel

#endif // VANTREL_SCREENVALUES_H
