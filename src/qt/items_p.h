#ifndef VANTREL_QT_ITEMS_P_H
#define VANTREL_QT_ITEMS_P_H

#include "qt/node_p.h"

#include "objectmodel/shared.h"

#include <QVariant>

namespace Vantrel {

class Class;
class Object;

namespace QtWrapper {

/*
 * The handles of what is no QObject: items of views, header sections, tabs and
 * graphics items. Their data refers to the place of the item and follows it
 * when rows are inserted or moved; there is one handle while it is held.
 */

/** Registers the classes of items, once. */
void registerItemClasses();
/** The super class of all of them. */
const Class *itemClass();

/** The handle of a node that is no QObject. */
SharedPtr<Object> itemHandleOf(const Node &node);
/** What an item handle stands for; null for other handles and for what is gone. */
Node itemOf(const SharedPtr<Object> &handle);

/** A property of an item by the name that its class has for it; invalid when there is none. */
QVariant itemProperty(const Node &item, const QString &name);

} // namespace QtWrapper
} // namespace Vantrel

#endif // VANTREL_QT_ITEMS_P_H
