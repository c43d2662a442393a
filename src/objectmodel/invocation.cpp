#include "objectmodel/invocation.h"

#include "objectmodel/arguments_p.h"
#include "objectmodel/class.h"
#include "objectmodel/class_p.h"
#include "objectmodel/diagnostics_p.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object_p.h"

namespace Vantrel {

namespace {

void setError(const QString &text)
{
    Inspector::self()->setError(text);
}

bool reportPropertyAccess(const SharedPtr<Object> &object, const Property *property)
{
    if (!object) {
        if (property->isStatic()) {
            return true;
        }
        setError(QStringLiteral("Cannot access non-static property %1 without object reference")
                     .arg(property->name()));
        return false;
    }
    if (!object->isValid()) {
        setError(QStringLiteral("Cannot access property %1 on invalidated object reference")
                     .arg(property->name()));
        return false;
    }
    if (!property->isStatic()) {
        setError(QStringLiteral("Cannot access property %1 on null object reference")
                     .arg(property->name()));
        return false;
    }
    return true;
}

bool verifyPropertyAccess(const SharedPtr<Object> &object, const Property *property)
{
    return (object && object->isValid() && !object->isNull())
        || reportPropertyAccess(object, property);
}

/** A raw slot must never see the data of an object of a foreign class. */
bool verifyClass(const SharedPtr<Object> &object, const Class *owner, const QString &name,
                 const char *suffix = "")
{
    if (object->isA(owner)) {
        return true;
    }
    setError(QStringLiteral("Cannot use %1 of class %2 on an object of class %3")
                 .arg(name + QLatin1String(suffix), owner->className(), object->className()));
    return false;
}

/** A raw slot must never see the id of a member of a foreign class either. */
bool verifyMembership(const Class *c, const Class *owner, const QString &name,
                      const char *suffix = "")
{
    if (Class::isSubClass(c, owner)) {
        return true;
    }
    setError(QStringLiteral("Cannot use %1 of class %2 as a member of class %3")
                 .arg(name + QLatin1String(suffix), owner ? owner->className() : QString(),
                      c->className()));
    return false;
}

/** Null for a static member, which may come with an object of any class. */
void *dataOf(const SharedPtr<Object> &object, const Class *c)
{
    void *data = nullptr;
    if (object && object->isA(c)) {
        object->get(&data);
    }
    return data;
}

bool acceptsUnconverted(const Method *method, const ObjectList &arguments)
{
    if (method->signature().numArguments() != int(arguments.size())) {
        return false;
    }
    auto argument = arguments.begin();
    for (const Argument &declared : method->signature().arguments()) {
        const SharedPtr<Object> &given = *argument++;
        const bool accepted = plainData(given, declared)
            || (given && !given->isNull() && given->isA(declared.type()));
        if (!accepted) {
            return false;
        }
    }
    return true;
}

QString fullName(const Property *property)
{
    const Class *owner = property->propertyClass();
    return owner ? owner->className() + QLatin1String("::") + property->name() : property->name();
}

// Diagnostics have fixed texts; what a script sees of it is the last error.

SharedPtr<Object> reportUnreadable(const Property *property)
{
    printDiagnostic("Class::getProperty: property %s is not readable\n",
                    qUtf8Printable(property->name()));
    setError(QStringLiteral("Cannot read property %1: it is write-only").arg(fullName(property)));
    return {};
}

SharedPtr<Object> reportNoProperty(int propertyId, const Property *property)
{
    printDiagnostic("Class::getProperty: No such property: %d\n", propertyId);
    setError(
        QStringLiteral("Cannot read property %1: it has no declaration").arg(fullName(property)));
    return {};
}

bool reportUnwritable(const Property *property)
{
    printDiagnostic("Object::setProperty: property %s is not writable\n",
                    qUtf8Printable(property->name()));
    setError(QStringLiteral("Cannot write property %1: it is read-only").arg(fullName(property)));
    return false;
}

bool reportMissingValue(const Property *property)
{
    setError(QStringLiteral("Cannot set property %1 without a value").arg(property->name()));
    return false;
}

/** @p declared is what the value had to become. */
bool reportUnconvertible(const SharedPtr<Object> &value, const Property *property,
                         const Argument &declared)
{
    if (!value->isNull()) {
        const QString wanted = property->type() ? property->type()->className() : QString();
        printDiagnostic("Object::setProperty: type %s cannot be converted to %s\n",
                        qUtf8Printable(value->className()), qUtf8Printable(wanted));
    }
    setError(QStringLiteral("Cannot set property %1: %2")
                 .arg(fullName(property), mismatch(value, declared)));
    return false;
}

SharedPtr<Object> readDelegateProperty(int propertyId, const SharedPtr<Object> &object,
                                       const Property *property)
{
    const PropertyDeclaration *declaration = property->propertyDeclaration();
    if (!declaration) {
        return reportNoProperty(propertyId, property);
    }
    if (!declaration->isReadable()) {
        return reportUnreadable(property);
    }
    if (const Method *read = declaration->readMethod()) {
        return read->invoke(object, ObjectList());
    }
    SharedPtr<Object> value = declaration->readFunction()(object);
    if (ObjectAccess::isReference(property->argument())) {
        ObjectAccess::share(value, object);
    }
    return value;
}

/**
 * Writes through the declaration. False when the value never got as far as the
 * accessor. The answer of a write function goes to @p written.
 */
bool writeDeclared(const SharedPtr<Object> &object, SharedPtr<Object> value,
                   const Property *property, bool *written)
{
    const PropertyDeclaration *declaration = property->propertyDeclaration();
    if (!declaration) {
        return false;
    }
    if (!declaration->isWritable()) {
        return reportUnwritable(property);
    }
    if (value && !value->isA(property->type())) {
        const SharedPtr<Object> fitting = adapted(value, property->argument());
        if (!fitting) {
            return reportUnconvertible(value, property, property->argument());
        }
        value = fitting;
    }
    if (const Method *write = declaration->writeMethod()) {
        const ObjectList given = value ? ObjectList{value} : ObjectList();
        const AdaptedArguments arguments(write->signature(), given);
        if (value && write->signature().numArguments() == 1 && !arguments.isValid()) {
            return reportUnconvertible(value, property, write->signature().arguments().first());
        }
        // The result of a setter tells nothing: many have none.
        write->invoke(object, arguments.list());
        *written = true;
    } else {
        *written = declaration->writeFunction()(object, value);
    }
    return true;
}

/** True however the accessor itself fared: callers rely on an accepted value counting as written.
 */
bool writeDelegateProperty(const SharedPtr<Object> &object, const SharedPtr<Object> &value,
                           const Property *property)
{
    bool written = false;
    return writeDeclared(object, value, property, &written);
}

} // namespace

bool verifyMethodArgumentCount(const QString &className, const Method *method,
                               const ObjectList &arguments)
{
    const int expected = method->signature().numArguments();
    if (int(arguments.size()) == expected) {
        return true;
    }
    const QString text = QStringLiteral("Class::invoke %1::%2: %3 arguments expected, %4 given")
                             .arg(className, QString::number(method->id()),
                                  QString::number(expected), QString::number(arguments.size()));
    printDiagnostic("%s\n", qUtf8Printable(text));
    setError(text);
    return false;
}

bool verifyMethodInvocation(SharedPtr<Object> object, const Method *method)
{
    if (!object) {
        if (method->isStatic()) {
            return true;
        }
        setError(QStringLiteral("Cannot invoke non-static function %1() without a object reference")
                     .arg(method->name()));
        return false;
    }
    if (!method->isStatic() && object->isNull()) {
        setError(QStringLiteral("Cannot invoke member function %1() on null object reference")
                     .arg(method->name()));
        return false;
    }
    if (!object->isValid()) {
        setError(
            QStringLiteral("Cannot invoke member function %1() on invalidated object reference")
                .arg(method->name()));
        return false;
    }
    return true;
}

const Method *MethodList::at(int index) const
{
    return index >= 0 && index < size() ? m_methods.at(index) : nullptr;
}

const Method *MethodList::methodForArguments(const ObjectList &arguments) const
{
    for (const Method *method : m_methods) {
        if (acceptsUnconverted(method, arguments)) {
            return method;
        }
    }
    return nullptr;
}

SharedPtr<Object> MethodList::invoke(SharedPtr<Object> object, const ObjectList &arguments,
                                     bool *ok) const
{
    SharedPtr<Object> result;
    const bool succeeded = invoke(object, arguments, &result);
    if (ok) {
        *ok = succeeded;
    }
    return result;
}

SharedPtr<Object> MethodList::invoke(SharedPtr<Object> object, const ObjectList &arguments,
                                     std::nullptr_t) const
{
    SharedPtr<Object> result;
    invoke(std::move(object), arguments, &result);
    return result;
}

bool MethodList::invoke(SharedPtr<Object> object, const ObjectList &arguments,
                        SharedPtr<Object> *result) const
{
    const auto call = [&](const Method *method, const ObjectList &list) {
        SharedPtr<Object> value = method->invoke(object, list);
        const bool succeeded = !value.isNull();
        if (result) {
            result->swap(value);
        }
        return succeeded;
    };
    if (result) {
        result->reset();
    }
    if (isEmpty()) {
        setError(QStringLiteral("Function not available"));
        return false;
    }
    const Method *exact = methodForArguments(arguments);
    if (exact && areAsDeclared(arguments, exact->signature())) {
        return call(exact, arguments);
    }
    if (exact) {
        const AdaptedArguments list(exact->signature(), arguments);
        if (list.isValid()) {
            return call(exact, list.list());
        }
    }
    for (const Method *method : m_methods) {
        const AdaptedArguments list(method->signature(), arguments);
        if (list.isValid()) {
            return call(method, list.list());
        }
    }
    setError(QStringLiteral("Found no matching overload"));
    return false;
}

QStringList MethodList::explain(const ObjectList &arguments) const
{
    QStringList lines;
    for (const Method *method : m_methods) {
        const QString reason = AdaptedArguments::mismatch(method->signature(), arguments);
        if (!reason.isEmpty()) {
            lines << method->name() + method->signature().toString() + QLatin1String(": ") + reason;
        }
    }
    return lines;
}

bool verifyCall(const Class *c, const SharedPtr<Object> &object, const ObjectList &arguments,
                const Method *method)
{
    if (!verifyMethodInvocation(object, method)) {
        return false;
    }
    // Texts for messages are made when there is something to tell, not on every call.
    if (int(arguments.size()) != method->signature().numArguments()) {
        return verifyMethodArgumentCount(c->className(), method, arguments);
    }
    return method->isStatic() || verifyClass(object, c, method->name(), "()");
}

SharedPtr<Object> Class::invoke(int, SharedPtr<Object> object, const ObjectList &arguments,
                                const Method *method)
{
    if (!verifyCall(this, object, arguments, method)) {
        return {};
    }
    NativeArguments native(arguments);
    SharedPtr<Object> result = invoke(object, method, native.data());
    if (ObjectAccess::isReference(method->returnType())) {
        ObjectAccess::shareResult(result, method->isStatic() ? nullptr : object.get(),
                                  method->signature(), arguments, ObjectAccess::isAlwaysReferredTo);
    }
    return result;
}

SharedPtr<Object> Class::invoke(SharedPtr<Object> object, const Method *method, void **arguments)
{
    const Class *owner = method->methodClass();
    if (!verifyMembership(this, owner, method->name(), "()")) {
        return {};
    }
    if (owner != this) {
        return owner->invoke(object, method, arguments);
    }
    SharedPtr<Object> result =
        invoke(method->id(), dataOf(object, this), arguments, method->type());
    if (!method->isStatic() && ObjectAccess::isReference(method->returnType())) {
        ObjectAccess::share(result, object);
    }
    return result;
}

SharedPtr<Object> Class::invoke(SharedPtr<Object> object, const Method *method,
                                void **arguments) const
{
    return mutableSelf()->invoke(object, method, arguments);
}

SharedPtr<Object> Class::invoke(int, void *, void **, const Class *)
{
    return {};
}

SharedPtr<Object> Class::invoke(int methodId, void *data, void **arguments, const Class *type) const
{
    return mutableSelf()->invoke(methodId, data, arguments, type);
}

SharedPtr<Object> Class::construct(const ObjectList &arguments) const
{
    d->buildConstructors(this);
    for (const Constructor *candidate : qAsConst(d->constructors)) {
        if (!candidate) {
            continue;
        }
        const AdaptedArguments list(candidate->signature(), arguments);
        if (list.isValid()) {
            return mutableSelf()->construct(candidate->id(), list.list(), candidate);
        }
    }
    printDiagnostic("Class::construct: No matching constructor found\n");
    QStringList given;
    for (const SharedPtr<Object> &argument : arguments) {
        given << (argument ? argument->className() : QStringLiteral("no object"));
    }
    setError(QStringLiteral("Cannot construct %1: no constructor takes (%2)")
                 .arg(className(), given.join(QLatin1String(", "))));
    return {};
}

bool verifyConstruction(const Class *c, const ObjectList &arguments, const Constructor *constructor)
{
    const int expected = constructor->signature().numArguments();
    if (int(arguments.size()) == expected) {
        return true;
    }
    const QString text =
        QStringLiteral("Constructor::construct %1: %2 arguments expected, %3 given")
            .arg(c->className(), QString::number(expected), QString::number(arguments.size()));
    printDiagnostic("%s\n", qUtf8Printable(text));
    setError(text);
    return false;
}

SharedPtr<Object> Class::construct(int index, const ObjectList &arguments,
                                   const Constructor *constructor)
{
    if (!verifyConstruction(this, arguments, constructor)) {
        return {};
    }
    NativeArguments native(arguments);
    SharedPtr<Object> object = construct(index, native.data());
    ObjectAccess::shareResult(object, nullptr, constructor->signature(), arguments,
                              ObjectAccess::isAlwaysReferredTo);
    return object;
}

SharedPtr<Object> Class::construct(int, void **)
{
    return {};
}

SharedPtr<Object> Class::construct(int index, void **arguments) const
{
    return mutableSelf()->construct(index, arguments);
}

// A property is read in two steps. The form with the id finds the class that
// declares it; the form with the object reads what this class declares. The
// second hands what is not its own to a proper ancestor only, so they end.

SharedPtr<Object> Class::getProperty(int propertyId, SharedPtr<Object> object,
                                     const Property *property)
{
    if (!verifyPropertyAccess(object, property)) {
        return {};
    }
    if (propertyId >= numPropertiesInternal()) {
        return readDelegateProperty(propertyId, object, property);
    }
    const Class *superClass = super();
    if (superClass && propertyId < superClass->numProperties()) {
        return superClass->mutableSelf()->getProperty(propertyId, object, property);
    }
    return getProperty(object, property);
}

bool ClassPrivate::setProperty(const Class *c, int propertyId, const SharedPtr<Object> &object,
                               const SharedPtr<Object> &value, const Property *property)
{
    return c->Class::setProperty(propertyId, object, value, property);
}

SharedPtr<Object> ClassPrivate::getProperty(Class *c, int propertyId,
                                            const SharedPtr<Object> &object,
                                            const Property *property)
{
    return c->Class::getProperty(propertyId, object, property);
}

SharedPtr<Object> Class::getProperty(SharedPtr<Object> object, const Property *property)
{
    const Class *owner = property->propertyClass();
    if (!verifyMembership(this, owner, property->name())) {
        return {};
    }
    if (owner != this) {
        return owner->mutableSelf()->getProperty(property->id(), object, property);
    }
    if (!verifyPropertyAccess(object, property)) {
        return {};
    }
    if (property->propertyDeclaration()) {
        return readDelegateProperty(property->id(), object, property);
    }
    if (!property->isReadable()) {
        return reportUnreadable(property);
    }
    if (!property->isStatic() && !verifyClass(object, this, property->name())) {
        return {};
    }
    SharedPtr<Object> value = getProperty(property->id(), dataOf(object, this), property->type());
    if (!property->isStatic() && ObjectAccess::isReference(property->argument())) {
        ObjectAccess::share(value, object);
    }
    return value;
}

SharedPtr<Object> Class::getProperty(SharedPtr<Object> object, const Property *property) const
{
    return mutableSelf()->getProperty(object, property);
}

SharedPtr<Object> Class::getProperty(int, void *, const Class *)
{
    return {};
}

SharedPtr<Object> Class::getProperty(int propertyId, void *data, const Class *type) const
{
    return mutableSelf()->getProperty(propertyId, data, type);
}

bool Class::setProperty(int propertyId, SharedPtr<Object> object, SharedPtr<Object> value,
                        const Property *property) const
{
    if (!verifyPropertyAccess(object, property)) {
        return false;
    }
    if (propertyId >= numPropertiesInternal()) {
        return writeDelegateProperty(object, value, property);
    }
    const Class *superClass = super();
    if (superClass && propertyId < superClass->numProperties()) {
        return superClass->setProperty(propertyId, object, value, property);
    }
    return setProperty(object, property, value);
}

bool Class::setProperty(SharedPtr<Object> object, const Property *property,
                        SharedPtr<Object> value) const
{
    const Class *owner = property->propertyClass();
    if (!verifyMembership(this, owner, property->name())) {
        return false;
    }
    if (owner != this) {
        return owner->setProperty(property->id(), object, value, property);
    }
    if (!verifyPropertyAccess(object, property)) {
        if (!object) {
            printDiagnostic(
                "Class::setProperty: Can't set non-static property without object reference\n");
        }
        return false;
    }
    if (property->propertyDeclaration()) {
        bool written = false;
        return writeDeclared(object, value, property, &written)
            && (written || property->id() >= numPropertiesInternal());
    }
    if (!property->isWritable()) {
        return reportUnwritable(property);
    }
    if (!property->isStatic() && !verifyClass(object, this, property->name())) {
        return false;
    }
    void *data = dataOf(object, this);
    if (!value) {
        return property->argument().isPointer() ? setProperty(property->id(), data, nullptr)
                                                : reportMissingValue(property);
    }
    const SharedPtr<Object> fitting = adapted(value, property->argument());
    if (!fitting) {
        return reportUnconvertible(value, property, property->argument());
    }
    void *newData = nullptr;
    fitting->get(&newData);
    return setProperty(property->id(), data, newData);
}

bool Class::setProperty(int, void *, void *) const
{
    return false;
}

} // namespace Vantrel
