#include "objectmodel/reflection_p.h"

#include "objectmodel/diagnostics_p.h"
#include "objectmodel/inspector.h"
#include "objectmodel/namespace.h"

namespace Vantrel {

const Class *uiTypesClass(const QString &name)
{
    const Namespace *uiTypes = Inspector::self()->nameSpace(QStringLiteral("UiTypes"));
    return uiTypes ? uiTypes->getClass(name) : nullptr;
}

bool verifyClassAvailable(const Class *c)
{
    if (!c) {
        Inspector::self()->setError(QStringLiteral("Class not available"));
    }
    return c != nullptr;
}

SharedPtr<Object> constructWith(const Class *c, int index, const ObjectList &arguments)
{
    if (!verifyClassAvailable(c)) {
        return {};
    }
    // Remote classes learn of their members together with their super class.
    c->super();
    const Constructor *constructor = c->constructor(index);
    if (!constructor) {
        printDiagnostic("Class::construct: No matching constructor found\n");
        Inspector::self()->setError(
            QStringLiteral("Cannot construct %1: there is no constructor %2")
                .arg(c->className(), QString::number(index)));
        return {};
    }
    return constructor->construct(arguments);
}

SharedPtr<Object> readProperty(const SharedPtr<Object> &object, const QString &name)
{
    if (!object) {
        Inspector::self()->setError(
            QStringLiteral("Cannot access property %1 without object reference").arg(name));
        return {};
    }
    const Property *property = object->type()->property(name);
    if (!property) {
        Inspector::self()->setError(
            QStringLiteral("Class %1 has no property %2").arg(object->className(), name));
        return {};
    }
    return property->get(object);
}

const Method *firstOverload(const Class *c, const QString &name)
{
    const MethodList methods = c->methods(name);
    if (methods.isEmpty()) {
        // Refused by the list itself, in its own words.
        methods.invoke({}, ObjectList(), nullptr);
    }
    return methods.at(0);
}

} // namespace Vantrel
