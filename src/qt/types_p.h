#ifndef VANTREL_QT_TYPES_P_H
#define VANTREL_QT_TYPES_P_H

#include "objectmodel/members.h"

#include <QByteArray>
#include <QMetaEnum>
#include <QMetaType>

namespace Vantrel::QtWrapper {

/** What becomes of the values of a type when they cross. */
enum class Form : quint8 {
    None, ///< they cannot cross
    Void,
    Any, ///< a QVariant, of whatever it holds
    Bool,
    Character,
    Integer,
    Real,
    Text,
    Texts,
    Date, ///< or time, or both
    Structure,
    Enumeration,
    Object, ///< a pointer to a QObject
    List,
    Map
};

Form formOf(int metaType);

/** The type of a property, a parameter or a result, as a meta object tells it. */
struct Type
{
    Type() = default;
    /** @p scope is the meta object that has the member. */
    Type(const QByteArray &typeName, int typeId, const QMetaObject *scope);

    bool crosses() const;
    /** The class of what a pointer to a QObject points to; null for all other types. */
    const Class *pointee() const;
    /** A type that cannot cross has a class that tells its name and has no objects. */
    Argument argument(const QString &argumentName) const;

    QByteArray name;
    /** QMetaType::UnknownType for enums and pointers that are not known to QMetaType. */
    int metaType = QMetaType::UnknownType;
    Form form = Form::None;
    /** Invalid unless this is an enum or a flags type. */
    QMetaEnum enumerator;
    /** Where the enumerator is declared. */
    const QMetaObject *enumScope = nullptr;
};

/** The enumerator of an enum or flags type; invalid when QMetaType does not know it. */
QMetaEnum enumeratorOf(int metaType);

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_TYPES_P_H
