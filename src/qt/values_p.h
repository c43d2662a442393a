#ifndef VANTREL_QT_VALUES_P_H
#define VANTREL_QT_VALUES_P_H

#include "objectmodel/shared.h"

#include <QMetaEnum>
#include <QString>
#include <QVariant>

namespace Vantrel {

class Class;
class Object;

namespace QtWrapper {

/** Registers the classes of the values that Qt has and the object model does not: QPoint, QColor
 * ... */
void registerValueClasses();

/** The class that values of a meta type have for scripts; null for a type that cannot cross. */
const Class *classOfMetaType(int metaType);

/**
 * A new object for a value. Null, with @p error telling the type by its name,
 * when it cannot cross; an invalid variant is such a value too.
 */
SharedPtr<Object> objectOf(const QVariant &value, QString *error);
/**
 * The value of an object as a @p metaType. Invalid, with the reason in
 * @p error, when it does not convert. Texts are taken for enums and flags of
 * @p enumerator (which may be invalid): keys, or keys joined with "|".
 */
QVariant variantOf(const SharedPtr<Object> &object, int metaType, const QMetaEnum &enumerator,
                   QString *error);

/**
 * The text by which names and dumps tell a value: for enums and flags the keys,
 * for structures their members. A null text when the value has none.
 */
QString textOf(const QVariant &value, const QMetaEnum &enumerator = QMetaEnum());

} // namespace QtWrapper
} // namespace Vantrel

#endif // VANTREL_QT_VALUES_P_H
