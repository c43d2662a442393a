#include "qt/metaclass_p.h"

#include "qt/qtclass_p.h"

#include "objectmodel/inspector.h"
#include "objectmodel/namespace.h"

#include <QHash>

namespace Vantrel::QtWrapper {

namespace {

/** The name that is free: that of the meta object, else with a number behind it. */
QByteArray freeName(const char *className)
{
    const Namespace *place = Inspector::self()->globalNamespace();
    const QByteArray wanted = className;
    QByteArray name = wanted;
    for (int number = 2; place->containsIdentifier(QString::fromUtf8(name)); ++number) {
        name = wanted + '#' + QByteArray::number(number);
    }
    return name;
}

const QtClass *qtClassOf(const QMetaObject *metaObject)
{
    static auto *const classes = new QHash<const QMetaObject *, const QtClass *>;
    if (!metaObject) {
        return nullptr;
    }
    const QtClass *known = classes->value(metaObject);
    if (known && known->isOf(metaObject)) {
        return known;
    }
    const QtClass *superClass = qtClassOf(metaObject->superClass());
    const auto *made =
        new QtClass(freeName(metaObject->className()).constData(), metaObject, superClass);
    classes->insert(metaObject, made);
    return made;
}

} // namespace

const Class *classOf(const QMetaObject *metaObject)
{
    return qtClassOf(metaObject);
}

const QMetaObject *metaObjectOf(const Class *c)
{
    const auto *qtClass = dynamic_cast<const QtClass *>(c);
    return qtClass ? qtClass->metaObject() : nullptr;
}

} // namespace Vantrel::QtWrapper
