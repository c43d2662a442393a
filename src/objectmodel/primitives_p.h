#ifndef VANTREL_PRIMITIVES_P_H
#define VANTREL_PRIMITIVES_P_H

#include "objectmodel/object.h"

#include <QStringList>

namespace Vantrel {

// New values that own their data. Texts are pointers, lists pointers and arrays.
SharedPtr<Object> makePrimitive(bool value);
SharedPtr<Object> makePrimitive(short value);
SharedPtr<Object> makePrimitive(int value);
/** Of the class "long", which keeps the low 32 bits. */
SharedPtr<Object> makePrimitive(long value);
SharedPtr<Object> makePrimitive(long long value);
SharedPtr<Object> makePrimitive(double value);
SharedPtr<Object> makePrimitive(char value);
/** Copied; null gives a null object. */
SharedPtr<Object> makePrimitive(const char *value);
SharedPtr<Object> makePrimitive(const QString &value);
/** A null object of any class, with the operations of a primitive one if it is such. */
SharedPtr<Object> makeNull(const Class *c);
/** An empty list has data and is not a null object. */
SharedPtr<Object> makePrimitive(const QStringList &value);

} // namespace Vantrel

#endif // VANTREL_PRIMITIVES_P_H
