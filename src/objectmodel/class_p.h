#ifndef VANTREL_CLASS_P_H
#define VANTREL_CLASS_P_H

#include "objectmodel/class.h"
#include "objectmodel/objectdelegates_p.h"

#include <QMap>
#include <QVector>

#include <typeinfo>

namespace Vantrel {

class CastDelegate;
class StaticPropertyDelegate;

/** What a Class knows. Tables are empty until they are first asked for. */
class ClassPrivate
{
public:
    static ClassPrivate *get(const Class *c) { return c->d; }

    // The operations of Class itself, for classes that take a short cut in the usual case.
    static bool setProperty(const Class *c, int propertyId, const SharedPtr<Object> &object,
                            const SharedPtr<Object> &value, const Property *property);
    static SharedPtr<Object> getProperty(Class *c, int propertyId, const SharedPtr<Object> &object,
                                         const Property *property);

    /** Fills the table of one kind from its factory, once. */
    void buildMethods(const Class *q);
    void buildProperties(const Class *q);
    /** The own property of that name, or null. The table is built already. */
    const Property *findProperty(const QString &wanted, quint32 key);
    void buildEvents(const Class *q);
    void buildEnums(const Class *q);
    void buildConstructors(const Class *q);

    void setupPropertyDelegate();
    /** Also counts the properties that the delegate contributes. */
    void countDelegateProperties();
    void setupCastDelegate(const Class *q);

    const Class *superClass = Class::uninitialized;
    QVector<const Constructor *> constructors;
    QVector<const Method *> methods;
    QVector<const Property *> properties;
    /** What is compared first of the name of each property, see propertyKey(). */
    QVector<quint32> propertyKeys;
    QVector<const Event *> events;
    QVector<const Enum *> enums;
    QMap<QString, const Interface *> interfaces;
    StaticPropertyDelegate *propertyDelegate = nullptr;
    CastDelegate *castDelegate = nullptr;
    bool propertyDelegateLooked : 1;
    bool castDelegateLooked : 1;
    qint32 numDelegateProperties = -1;
    qint32 id = -1;
    qint32 numOwnMethods = -1;
    qint32 numOwnConstructors = -1;
    qint32 numOwnProperties = -1;
    qint32 numOwnEvents = -1;
    qint32 numOwnEnums = -1;
    QByteArray name;
    Namespace *nameSpace = nullptr;
    quint32 natures = 0;
    /** The decoded name, so that asking for it costs no conversion. */
    QString nameText;
    /** What deleteObjectData() does unless it is overridden; null when no native type is known. */
    void (*deleteNative)(void *data) = nullptr;
    const std::type_info *nativeType = nullptr;
    /** What ObjectDelegates found when the number of changes was the one beside it. */
    SharedPtr<ObjectDelegates> objectDelegates;
    quint32 delegatesFoundAt = 0;

    ClassPrivate() : propertyDelegateLooked(false), castDelegateLooked(false) {}
    void setName(const char *text);
};

} // namespace Vantrel

#endif // VANTREL_CLASS_P_H
