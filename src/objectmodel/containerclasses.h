#ifndef VANTREL_CONTAINERCLASSES_H
#define VANTREL_CONTAINERCLASSES_H

#include "objectmodel/export.h"

namespace Vantrel {

/**
 * Registers "Vantrel_Array" and "Vantrel_Map" for back ends that bring no
 * arrays and maps of their own. A class that is there already stays, so a
 * second call does nothing.
 *
 * Both have a constructor without arguments. An array has "push" (any item),
 * "at" (a 64-bit index from 0) and the property "length"; a map has "insert"
 * (a text and any value, which replaces an earlier one), "at" (a text) and the
 * property "keys", an array of texts in order. An index out of range or a key
 * that is missing sets the Inspector's last error and gives null; a null handle
 * that was stored reads as a null object.
 *
 * The native data are the containers that ArrayClass and MapClass describe.
 * They share their items with the script, so items that contain each other in
 * a circle are never freed. Containers are equal when their items are, and
 * their text lists the items.
 *
 * The method arguments that take anything are of a class "Vantrel_Any", which
 * is registered too and has no objects that scripts could see.
 */
VANTREL_EXPORT void registerContainerClasses();

} // namespace Vantrel

#endif // VANTREL_CONTAINERCLASSES_H
