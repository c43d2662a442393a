#ifndef VANTREL_QT_STRUCTURES_P_H
#define VANTREL_QT_STRUCTURES_P_H

#include "objectmodel/shared.h"

#include <QVariant>

namespace Vantrel {

class Class;
class Object;

namespace QtWrapper {

// Values that have members for scripts: points, colours, fonts ...; dates and
// times too, though those share one class.

/** Makes their classes. */
void registerStructures();

/** Whether a class was registered for the type; false for dates and times. */
bool isStructure(int metaType);
/** Null for other types. */
const Class *classOfStructure(int metaType);
/** A new object that owns a copy. */
SharedPtr<Object> structureObject(const QVariant &value);
/** Throws std::invalid_argument when the object is none and does not convert. */
QVariant structureOf(const SharedPtr<Object> &object, int metaType);
/** The meta type whose values the objects of a class hold; QMetaType::UnknownType when none. */
int structureType(const Class *c);
/** A readable text that tells all members; null for other types. */
QString structureText(const QVariant &value);

} // namespace QtWrapper
} // namespace Vantrel

#endif // VANTREL_QT_STRUCTURES_P_H
