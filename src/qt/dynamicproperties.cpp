#include "qt/dynamicproperties_p.h"

#include "qt/handles_p.h"
#include "qt/values_p.h"

#include "objectmodel/class.h"
#include "objectmodel/inspector.h"

#include <QObject>
#include <QStringList>
#include <QVariant>

namespace Vantrel::QtWrapper {

namespace {

SharedPtr<Object> fail(const QString &name, const QObject *object, const QString &reason)
{
    Inspector::self()->setError(
        QStringLiteral("Property '%1' of %2: %3")
            .arg(name, QString::fromUtf8(object->metaObject()->className()), reason));
    return {};
}

QString nameIn(const ObjectList &arguments)
{
    return arguments[0] ? arguments[0]->toString() : QString();
}

} // namespace

SharedPtr<Object> propertyByName(const SharedPtr<Object> &object, const ObjectList &arguments)
{
    const QString name = nameIn(arguments);
    if (const Property *declared = object->type()->property(name)) {
        return declared->get(object);
    }
    const QObject *o = qobjectOf(object);
    const QVariant value = o->property(name.toUtf8().constData());
    if (!value.isValid()) {
        return fail(name, o, QStringLiteral("there is no such property"));
    }
    QString error;
    SharedPtr<Object> result = objectOf(value, &error);
    return result ? result : fail(name, o, error);
}

SharedPtr<Object> setPropertyByName(const SharedPtr<Object> &object, const ObjectList &arguments)
{
    const QString name = nameIn(arguments);
    QObject *o = qobjectOf(object);
    if (name.isEmpty()) {
        return fail(name, o, QStringLiteral("a property needs a name"));
    }
    if (const Property *declared = object->type()->property(name)) {
        return declared->set(object, arguments[1]) ? Inspector::self()->voidObject()
                                                   : SharedPtr<Object>();
    }
    QString error;
    const QVariant value = variantOf(arguments[1], QMetaType::QVariant, QMetaEnum(), &error);
    if (!error.isEmpty()) {
        return fail(name, o, error);
    }
    o->setProperty(name.toUtf8().constData(), value);
    return Inspector::self()->voidObject();
}

SharedPtr<Object> dynamicPropertyNames(const SharedPtr<Object> &object, const ObjectList &)
{
    QStringList names;
    for (const QByteArray &name : qobjectOf(object)->dynamicPropertyNames()) {
        names << QString::fromUtf8(name);
    }
    return Inspector::self()->createPrimitive(names);
}

} // namespace Vantrel::QtWrapper
