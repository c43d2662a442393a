#include "objectmodel/classbuilder.h"

#include "objectmodel/arguments_p.h"
#include "objectmodel/class_p.h"
#include "objectmodel/diagnostics_p.h"
#include "objectmodel/inspector.h"
#include "objectmodel/invocation.h"
#include "objectmodel/namespace.h"
#include "objectmodel/nativetypes_p.h"
#include "objectmodel/object_p.h"

#include <QByteArray>

#include <algorithm>
#include <vector>

namespace Vantrel {

namespace NativeTypes {

namespace {

void setError(const QString &text)
{
    Inspector::self()->setError(text);
}

/** A function together with what has to be true of its arguments. */
struct Call
{
    std::unique_ptr<Function> function;
    /** Positions of the arguments that must not be null. */
    std::vector<int> required;
    /** Positions of the arguments that are lists of texts. */
    std::vector<int> lists;
};

struct BuiltMethod
{
    Call call;
    Argument result;
    bool givesContainer = false;
    Signature signature;
    int flags = Method::NoFlags;
    QString deprecation;
};

struct BuiltConstructor
{
    Call call;
    Signature signature;
};

struct BuiltProperty
{
    QString name;
    Argument type;
    std::unique_ptr<Function> getter;
    std::unique_ptr<Function> setter;
    bool isList;
    bool isContainer;
};

struct BuiltEvent
{
    Signature signature;
    int flags = Event::NoFlags;
};

struct BuiltEnum
{
    QString name;
    std::vector<QByteArray> keys;
    std::vector<Enum::Item> items;
    Enum *descriptor = nullptr;
};

/** The arguments of one call as native pointers, each list of texts with an end. */
class CallArguments
{
public:
    CallArguments(const Call &call, const ObjectList &arguments) : m_native(arguments)
    {
        if (!call.lists.empty()) {
            terminateLists(call, arguments);
        }
    }
    void **data() { return m_native.data(); }

private:
    void terminateLists(const Call &call, const ObjectList &arguments)
    {
        for (int position : call.lists) {
            if (const SharedPtr<Object> &list = arguments[position]) {
                m_lists.push_back(terminatedTexts(list));
                m_native.data()[position] = m_lists.back().data();
            }
        }
    }

    NativeArguments m_native;
    std::vector<std::vector<char *>> m_lists;
};

} // namespace

/** The most arguments of a call that needs no memory but the stack. */
constexpr std::size_t fewArguments = 8;

/** The data of a value that is simply one of the declared type; else null. */
void *usualData(const SharedPtr<Object> &value, const Argument &declared)
{
    void *data = plainData(value, declared);
    if (!data && value && value->isA(declared.type()) && fits(value, declared)) {
        value->get(&data);
    }
    return data;
}

/** False when the arguments are not simply values of the declared types. */
bool collect(const Signature &signature, const ObjectList &arguments, void **native)
{
    auto given = arguments.begin();
    for (const Argument &declared : signature.arguments()) {
        *native = usualData(*given++, declared);
        if (!*native++) {
            return false;
        }
    }
    return true;
}

/** A class made of a declaration. Its members never change once it is registered. */
class BuiltClass : public Class
{
public:
    BuiltClass(const char *name, Namespace *nameSpace) : Class(name, nameSpace, false) {}

    void inherit(const Class *superClass) { setSuperClass(superClass); }
    void publish();

    std::vector<BuiltConstructor> constructors;
    std::vector<BuiltMethod> methods;
    std::vector<BuiltProperty> properties;
    std::vector<BuiltEvent> events;
    std::vector<std::unique_ptr<BuiltEnum>> enums;

private:
    SharedPtr<Object> invoke(int methodId, SharedPtr<Object> object, const ObjectList &arguments,
                             const Method *method) override;
    SharedPtr<Object> invoke(int methodId, void *data, void **arguments,
                             const Class *type) override;
    bool setProperty(int propertyId, SharedPtr<Object> object, SharedPtr<Object> value,
                     const Property *property) const override;
    bool setProperty(SharedPtr<Object> object, const Property *property,
                     SharedPtr<Object> value) const override;
    bool setProperty(int propertyId, void *data, void *value) const override;
    SharedPtr<Object> getProperty(int propertyId, SharedPtr<Object> object,
                                  const Property *property) override;
    SharedPtr<Object> getProperty(int propertyId, void *data, const Class *type) override;
    SharedPtr<Object> construct(int index, const ObjectList &arguments,
                                const Constructor *constructor) override;
    SharedPtr<Object> construct(int index, void **arguments) override;
    Constructor *createConstructor(int index) const override;
    Method *createMethod(int methodId) const override;
    Property *createProperty(int propertyId) const override;
    Event *createEvent(int eventId) const override;
    Enum *createEnum(int enumId) const override;

    template <class Table>
    const typename Table::value_type *find(const Table &table, int id, OffsetType kind) const;
    template <class Table>
    const typename Table::value_type *own(const Table &table, int id, OffsetType kind) const;
    SharedPtr<Object> call(const Call &call, const QString &name, void *self, void **arguments,
                           const Class *type) const;
    /** An object of this class with data. */
    bool isUsual(const SharedPtr<Object> &object) const
    {
        return object && object->isA(this) && object->isValid() && !object->isNull();
    }
    const BuiltProperty *usual(const SharedPtr<Object> &object, const Property *property) const;
    bool write(const BuiltProperty &property, void *data, void *value) const;
    template <class F>
    SharedPtr<Object> guarded(const QString &name, F function) const;
    QString memberName(const QString &name) const
    {
        return className() + QLatin1String("::") + name;
    }
    bool verifyArguments(const Signature &signature, const QString &name,
                         const ObjectList &arguments) const;
    bool reportNoObject(const QString &name) const;
    bool reportReadOnly(const QString &name) const;
    static void share(const BuiltMethod &method, const SharedPtr<Object> &result,
                      const SharedPtr<Object> &object, const ObjectList &arguments);
    SharedPtr<Object> reportForeign(const QString &kind, const QString &description) const;
};

/** Registers the class with the members it has now. */
void BuiltClass::publish()
{
    setNumConstructors(int(constructors.size()));
    setNumMethods(int(methods.size()));
    setNumProperties(int(properties.size()));
    setNumEvents(int(events.size()));
    setNumEnums(int(enums.size()));
    registerClass();
}

/** The own member with an id of the hierarchy, or null. */
template <class Table>
const typename Table::value_type *BuiltClass::find(const Table &table, int id,
                                                   OffsetType kind) const
{
    const int index = id - superClassOffset(kind);
    return index >= 0 && index < int(table.size()) ? &table[index] : nullptr;
}

/** The same; null comes with an error. */
template <class Table>
const typename Table::value_type *BuiltClass::own(const Table &table, int id, OffsetType kind) const
{
    if (const auto *member = find(table, id, kind)) {
        return member;
    }
    setError(QStringLiteral("The class %1 has no member of its own with the id %2")
                 .arg(className(), QString::number(id)));
    return nullptr;
}

template <class F>
SharedPtr<Object> BuiltClass::guarded(const QString &name, F function) const
{
    try {
        return function();
    } catch (const std::exception &error) {
        setError(memberName(name) + QLatin1String(": ") + QString::fromUtf8(error.what()));
    } catch (...) {
        setError(memberName(name) + QLatin1String(": unknown exception"));
    }
    return {};
}

SharedPtr<Object> BuiltClass::call(const Call &call, const QString &name, void *self,
                                   void **arguments, const Class *type) const
{
    for (int position : call.required) {
        if (!arguments || !arguments[position]) {
            setError(QStringLiteral("Cannot call %1(): argument %2 is null")
                         .arg(memberName(name), QString::number(position + 1)));
            return {};
        }
    }
    return guarded(name, [&] { return call.function->call(self, arguments, type); });
}

/** Native code must not find data of one type where it expects another. */
bool BuiltClass::verifyArguments(const Signature &signature, const QString &name,
                                 const ObjectList &arguments) const
{
    auto given = arguments.begin();
    for (const Argument &declared : signature.arguments()) {
        const SharedPtr<Object> &argument = *given++;
        const bool accepted = !argument
            || (argument->isA(declared.type()) && (argument->isNull() || fits(argument, declared)));
        if (!accepted) {
            setError(QStringLiteral("Cannot call %1(): argument %2: %3 given, %4 expected")
                         .arg(memberName(name), QString::number(given - arguments.begin()),
                              argument->className(), declared.type()->className()));
            return false;
        }
    }
    return true;
}

bool BuiltClass::reportNoObject(const QString &name) const
{
    setError(QStringLiteral("Cannot use %1 without an object").arg(memberName(name)));
    return false;
}

/** For a descriptor that somebody made: native code has the parameters of the declared member. */
SharedPtr<Object> BuiltClass::reportForeign(const QString &kind, const QString &description) const
{
    setError(QStringLiteral("The class %1 has no %2 %3").arg(className(), kind, description));
    return {};
}

bool BuiltClass::reportReadOnly(const QString &name) const
{
    setError(QStringLiteral("Cannot write property %1: it is read-only").arg(memberName(name)));
    return false;
}

/** Makes a result that refers to something keep what that may belong to. */
void BuiltClass::share(const BuiltMethod &method, const SharedPtr<Object> &result,
                       const SharedPtr<Object> &object, const ObjectList &arguments)
{
    ObjectAccess::shareResult(result, method.flags & Method::Static ? nullptr : object.get(),
                              method.signature, arguments, ObjectAccess::isReferredTo,
                              method.givesContainer);
}

SharedPtr<Object> BuiltClass::invoke(int methodId, SharedPtr<Object> object,
                                     const ObjectList &arguments, const Method *method)
{
    const BuiltMethod *built = own(methods, methodId, MethodOffset);
    if (!built) {
        return {};
    }
    if (isUsual(object) && arguments.size() <= fewArguments
        && int(arguments.size()) == built->signature.numArguments() && built->call.lists.empty()) {
        void *native[fewArguments];
        if (collect(built->signature, arguments, native)) {
            void *data = nullptr;
            object->get(&data);
            SharedPtr<Object> result = guarded(method->name(), [&] {
                return built->call.function->call(data, native, built->result.type());
            });
            share(*built, result, object, arguments);
            return result;
        }
    }
    if (!verifyCall(this, object, arguments, method)) {
        return {};
    }
    if (built->signature != method->signature()) {
        return reportForeign(QStringLiteral("method"), method->toString());
    }
    if (!verifyArguments(method->signature(), method->name(), arguments)) {
        return {};
    }
    CallArguments native(built->call, arguments);
    void *data = nullptr;
    if (object) {
        object->get(&data);
    }
    SharedPtr<Object> result =
        call(built->call, method->name(), data, native.data(), method->type());
    share(*built, result, object, arguments);
    return result;
}

SharedPtr<Object> BuiltClass::invoke(int methodId, void *data, void **arguments, const Class *type)
{
    const BuiltMethod *method = own(methods, methodId, MethodOffset);
    if (!method) {
        return {};
    }
    const QString &name = method->signature.name();
    if (!data && !(method->flags & Method::Static)) {
        reportNoObject(name);
        return {};
    }
    return call(method->call, name, data, arguments, type);
}

/** The own property in the usual case, in which nothing can be wrong with @p object; else null. */
const BuiltProperty *BuiltClass::usual(const SharedPtr<Object> &object,
                                       const Property *property) const
{
    if (!isUsual(object) || property->propertyClass() != this || property->propertyDeclaration()) {
        return nullptr;
    }
    return find(properties, property->id(), PropertyOffset);
}

bool BuiltClass::setProperty(int propertyId, SharedPtr<Object> object, SharedPtr<Object> value,
                             const Property *property) const
{
    const BuiltProperty *built = usual(object, property);
    void *newData =
        built && built->setter && !built->isList ? usualData(value, built->type) : nullptr;
    if (newData) {
        void *data = nullptr;
        object->get(&data);
        return write(*built, data, newData);
    }
    return ClassPrivate::setProperty(this, propertyId, object, value, property);
}

bool BuiltClass::setProperty(SharedPtr<Object> object, const Property *property,
                             SharedPtr<Object> value) const
{
    const BuiltProperty *built = usual(object, property);
    if (built && built->setter && built->isList) {
        if (const SharedPtr<Object> fitting = adapted(value, built->type)) {
            std::vector<char *> texts = terminatedTexts(fitting);
            const SharedPtr<Object> list =
                fitting->type()->wrap(texts.data(), fitting->objectAttribute());
            return Class::setProperty(object, property, list);
        }
    }
    return Class::setProperty(object, property, value);
}

bool BuiltClass::setProperty(int propertyId, void *data, void *value) const
{
    const BuiltProperty *property = own(properties, propertyId, PropertyOffset);
    if (!property) {
        return false;
    }
    if (!data) {
        return reportNoObject(property->name);
    }
    if (!property->setter) {
        return reportReadOnly(property->name);
    }
    return write(*property, data, value);
}

bool BuiltClass::write(const BuiltProperty &property, void *data, void *value) const
{
    bool written = false;
    guarded(property.name, [&] {
        SharedPtr<Object> none = property.setter->call(data, &value, nullptr);
        written = true;
        return none;
    });
    return written;
}

SharedPtr<Object> BuiltClass::getProperty(int propertyId, SharedPtr<Object> object,
                                          const Property *property)
{
    if (const BuiltProperty *built = usual(object, property)) {
        void *data = nullptr;
        object->get(&data);
        SharedPtr<Object> value = guarded(
            built->name, [&] { return built->getter->call(data, nullptr, built->type.type()); });
        if (built->isContainer || ObjectAccess::isView(value)) {
            ObjectAccess::shareResult(value, object.get(), Signature(), ObjectList(),
                                      ObjectAccess::isReferredTo, built->isContainer);
        }
        return value;
    }
    return ClassPrivate::getProperty(this, propertyId, object, property);
}

SharedPtr<Object> BuiltClass::getProperty(int propertyId, void *data, const Class *type)
{
    const BuiltProperty *property = own(properties, propertyId, PropertyOffset);
    if (!property) {
        return {};
    }
    if (!data) {
        reportNoObject(property->name);
        return {};
    }
    return guarded(property->name, [&] { return property->getter->call(data, nullptr, type); });
}

SharedPtr<Object> BuiltClass::construct(int index, const ObjectList &arguments,
                                        const Constructor *constructor)
{
    if (!verifyConstruction(this, arguments, constructor)
        || !verifyArguments(constructor->signature(), className(), arguments)) {
        return {};
    }
    if (index < 0 || index >= int(constructors.size())
        || constructor->signature() != constructors[index].signature) {
        return reportForeign(QStringLiteral("constructor"), constructor->toString());
    }
    CallArguments native(constructors[index].call, arguments);
    return construct(index, native.data());
}

SharedPtr<Object> BuiltClass::construct(int index, void **arguments)
{
    if (index < 0 || index >= int(constructors.size())) {
        setError(QStringLiteral("The class %1 has no constructor %2")
                     .arg(className(), QString::number(index)));
        return {};
    }
    return call(constructors[index].call, className(), nullptr, arguments, this);
}

Constructor *BuiltClass::createConstructor(int index) const
{
    return index >= 0 && index < int(constructors.size())
        ? new Constructor(index, this, constructors[index].signature)
        : nullptr;
}

Method *BuiltClass::createMethod(int methodId) const
{
    const BuiltMethod *built = find(methods, methodId, MethodOffset);
    if (!built) {
        return nullptr;
    }
    auto *method = new Method(methodId, this, built->result, built->signature, built->flags);
    method->deprecate(built->deprecation);
    return method;
}

Property *BuiltClass::createProperty(int propertyId) const
{
    const BuiltProperty *built = find(properties, propertyId, PropertyOffset);
    if (!built) {
        return nullptr;
    }
    const int flags =
        Property::Readable | Property::Stored | (built->setter ? Property::Writable : 0);
    return new Property(propertyId, this, built->type, built->name, flags);
}

Event *BuiltClass::createEvent(int eventId) const
{
    const BuiltEvent *built = find(events, eventId, EventOffset);
    return built ? new Event(eventId, this, built->signature, built->flags) : nullptr;
}

Enum *BuiltClass::createEnum(int enumId) const
{
    const auto *built = find(enums, enumId, EnumOffset);
    return built ? (*built)->descriptor : nullptr;
}

namespace {

struct PendingCall
{
    QString name;
    std::vector<Type> parameters;
    QStringList names;
    std::unique_ptr<Function> function;
};

struct PendingMethod : PendingCall
{
    Type result;
    Method::Flag flags;
    QString deprecation;
};

struct PendingProperty
{
    QString name;
    Type type;
    std::unique_ptr<Function> getter;
    std::unique_ptr<Function> setter;
};

struct PendingEnum
{
    const std::type_info *info;
    std::unique_ptr<BuiltEnum> built;
};

struct PendingEvent
{
    QString name;
    std::vector<std::pair<QString, Type>> arguments;
    Event::Flag flags;
};

bool isContainer(const Type &type)
{
    return type.kind == Kind::Array || type.kind == Kind::Map;
}

template <class Table, class Name>
bool contains(const Table &table, Name name, const QString &wanted)
{
    return std::any_of(table.begin(), table.end(),
                       [&](const auto &member) { return name(member) == wanted; });
}

QStringList toStringList(Names names)
{
    QStringList list;
    for (const char *name : names) {
        list << QString::fromUtf8(name);
    }
    return list;
}

} // namespace

/** A declaration until its class is registered. Types are looked up then, and not before. */
class ClassDeclarationPrivate
{
public:
    ClassDeclarationPrivate(const char *name, Namespace *nameSpace, const std::type_info &type,
                            Delete deleteData);

    bool isPossible();
    void addMembers();
    void report() const;
    void refuse(const QString &member, const QString &reason);

    /** Never deleted: other declarations may have named the type, even if this one is dropped. */
    BuiltClass *const built;
    const std::type_info &info;
    bool isKnown;
    bool isAdded = false;
    QStringList errors;
    const std::type_info *superInfo = nullptr;
    std::ptrdiff_t superOffset = 0;
    const Class *superClass = nullptr;
    std::vector<PendingCall> constructors;
    std::vector<PendingMethod> methods;
    std::vector<PendingProperty> properties;
    std::vector<PendingEnum> enums;
    std::vector<PendingEvent> events;

private:
    bool canHave(const char *kind, const QString &name, bool isTaken);
    bool resolve(const QString &member, PendingCall &pending, Call *call, Signature *signature);
    void addEnum(PendingEnum &pending);
    void addConstructor(PendingCall &pending);
    void addMethod(PendingMethod &pending);
    void addProperty(PendingProperty &pending);
    void addEvent(PendingEvent &pending);
};

ClassDeclarationPrivate::ClassDeclarationPrivate(const char *name, Namespace *nameSpace,
                                                 const std::type_info &type, Delete deleteData)
    : built(new BuiltClass(name, nameSpace ? nameSpace : Inspector::self()->globalNamespace())),
      info(type), isKnown(registerClass(type, built, deleteData))
{
    static auto *const all = new std::vector<const Class *>;
    all->push_back(built);
}

void ClassDeclarationPrivate::refuse(const QString &member, const QString &reason)
{
    const QString subject =
        member.isEmpty() ? built->className() : built->className() + QLatin1String("::") + member;
    errors << subject + QLatin1String(": ") + reason;
}

/** Everything that can make the class as a whole impossible. */
bool ClassDeclarationPrivate::isPossible()
{
    const int before = errors.size();
    if (isAdded) {
        refuse(QString(), QStringLiteral("already added"));
    } else if (built->className().isEmpty()) {
        refuse(QString(), QStringLiteral("a class needs a name"));
    } else if (!built->nameSpace()) {
        refuse(QString(), QStringLiteral("there is no namespace to register it in"));
    } else if (built->nameSpace()->getClass(built->className())) {
        refuse(QString(), QStringLiteral("there is a class of that name already"));
    }
    if (!isKnown) {
        refuse(QString(),
               QStringLiteral("the type %1 belongs to the class %2 already")
                   .arg(typeName(info), classOf(info)->className()));
    }
    if (superInfo) {
        superClass = classOf(*superInfo);
        if (!superClass || superClass->id() < 0) {
            refuse(
                QString(),
                QStringLiteral("the super class %1 is not registered").arg(typeName(*superInfo)));
        } else if (superOffset != 0) {
            refuse(QString(),
                   QStringLiteral("the super class %1 must be the first base; it begins %2 bytes "
                                  "after the object")
                       .arg(typeName(*superInfo), QString::number(superOffset)));
        }
    }
    return errors.size() == before;
}

bool ClassDeclarationPrivate::resolve(const QString &member, PendingCall &pending, Call *call,
                                      Signature *signature)
{
    const int count = int(pending.parameters.size());
    bool ok = true;
    if (pending.names.size() > count) {
        refuse(member,
               QStringLiteral("%1 argument names for %2 arguments")
                   .arg(QString::number(pending.names.size()), QString::number(count)));
        ok = false;
    }
    signature->setName(pending.name);
    for (int i = 0; i < count; ++i) {
        const Type &type = pending.parameters[i];
        QString error;
        signature->addArgument(resolved(pending.names.value(i), type, &error));
        if (!error.isEmpty()) {
            refuse(member, QStringLiteral("argument %1: %2").arg(QString::number(i + 1), error));
            ok = false;
        }
        if (!type.isNullable) {
            call->required.push_back(i);
        }
        if (type.isTextList()) {
            call->lists.push_back(i);
        }
    }
    call->function = std::move(pending.function);
    return ok;
}

/** Whether a member can have its name, of which some kinds allow only one. */
bool ClassDeclarationPrivate::canHave(const char *kind, const QString &name, bool isTaken)
{
    if (name.isEmpty()) {
        refuse(QString(), QStringLiteral("%1 needs a name").arg(QLatin1String(kind)));
    } else if (isTaken) {
        refuse(name, QStringLiteral("%1 of that name is there already").arg(QLatin1String(kind)));
    }
    return !name.isEmpty() && !isTaken;
}

void ClassDeclarationPrivate::addEnum(PendingEnum &pending)
{
    BuiltEnum &made = *pending.built;
    const auto name = [](const auto &member) { return member->name; };
    if (!canHave("an enum", made.name, contains(built->enums, name, made.name))) {
        return;
    }
    for (std::size_t i = 0; i < made.keys.size(); ++i) {
        made.items[i].key = made.keys[i].constData();
    }
    made.items.push_back({nullptr, 0});
    const int id = built->superClassOffset(Class::EnumOffset) + int(built->enums.size());
    made.descriptor = new Enum(id, built, made.name, made.items.data());
    if (pending.info && !registerEnum(*pending.info, made.descriptor)) {
        refuse(made.name,
               QStringLiteral("the type %1 belongs to the enum %2 already")
                   .arg(typeName(*pending.info), enumOf(*pending.info)->name()));
        delete made.descriptor;
        return;
    }
    built->enums.push_back(std::move(pending.built));
}

void ClassDeclarationPrivate::addConstructor(PendingCall &pending)
{
    BuiltConstructor constructor;
    pending.name = built->className();
    if (resolve(QStringLiteral("constructor"), pending, &constructor.call,
                &constructor.signature)) {
        built->constructors.push_back(std::move(constructor));
    }
}

void ClassDeclarationPrivate::addMethod(PendingMethod &pending)
{
    BuiltMethod method;
    QString error;
    method.result = resolved(QString(), pending.result, &error);
    method.givesContainer = isContainer(pending.result);
    method.flags = pending.flags;
    method.deprecation = pending.deprecation;
    if (!error.isEmpty()) {
        refuse(pending.name, QStringLiteral("result: ") + error);
    }
    if (resolve(pending.name, pending, &method.call, &method.signature) && error.isEmpty()
        && canHave("a method", pending.name, false)) {
        built->methods.push_back(std::move(method));
    }
}

void ClassDeclarationPrivate::addProperty(PendingProperty &pending)
{
    const auto name = [](const auto &member) { return member.name; };
    QString error;
    const Argument type = resolved(QString(), pending.type, &error);
    if (!error.isEmpty()) {
        refuse(pending.name, error);
    } else if (canHave("a property", pending.name,
                       contains(built->properties, name, pending.name))) {
        built->properties.push_back({pending.name, type, std::move(pending.getter),
                                     std::move(pending.setter), pending.type.isTextList(),
                                     isContainer(pending.type)});
    }
}

void ClassDeclarationPrivate::addEvent(PendingEvent &pending)
{
    const auto name = [](const auto &member) { return member.signature.name(); };
    BuiltEvent event{Signature(pending.name), pending.flags};
    bool ok = canHave("an event", pending.name, contains(built->events, name, pending.name));
    for (const auto &argument : pending.arguments) {
        QString error;
        event.signature.addArgument(resolved(argument.first, argument.second, &error));
        if (!error.isEmpty()) {
            refuse(pending.name, QStringLiteral("argument '%1': %2").arg(argument.first, error));
            ok = false;
        }
    }
    if (ok) {
        built->events.push_back(std::move(event));
    }
}

/** Enums come first, so that the members can be of their types. */
void ClassDeclarationPrivate::addMembers()
{
    for (PendingEnum &pending : enums) {
        addEnum(pending);
    }
    for (PendingCall &pending : constructors) {
        addConstructor(pending);
    }
    for (PendingMethod &pending : methods) {
        addMethod(pending);
    }
    for (PendingProperty &pending : properties) {
        addProperty(pending);
    }
    for (PendingEvent &pending : events) {
        addEvent(pending);
    }
}

void ClassDeclarationPrivate::report() const
{
    for (const QString &error : errors) {
        printDiagnostic("ClassBuilder: %s\n", qUtf8Printable(error));
    }
    if (!errors.isEmpty()) {
        setError(errors.join(QLatin1Char('\n')));
    }
}

Function::~Function() = default;

ClassDeclaration::ClassDeclaration(const char *name, Namespace *nameSpace,
                                   const std::type_info &info, Delete deleteData)
    : d(std::make_unique<ClassDeclarationPrivate>(name, nameSpace, info, deleteData))
{}

ClassDeclaration::~ClassDeclaration()
{
    if (!d->isAdded) {
        unregisterClass(d->info, d->built);
    }
}

void ClassDeclaration::setSuperClass(const std::type_info &info, std::ptrdiff_t offset)
{
    d->superInfo = &info;
    d->superOffset = offset;
}

void ClassDeclaration::addConstructor(const std::vector<Type> &parameters, Names names,
                                      std::unique_ptr<Function> function)
{
    d->constructors.push_back({QString(), parameters, toStringList(names), std::move(function)});
}

void ClassDeclaration::addMethod(const char *name, const Type &result,
                                 const std::vector<Type> &parameters, Names names,
                                 std::unique_ptr<Function> function, Method::Flag flags)
{
    d->methods.push_back(
        {{QString::fromUtf8(name), parameters, toStringList(names), std::move(function)},
         result,
         flags,
         QString()});
}

void ClassDeclaration::deprecate(const char *message)
{
    if (d->methods.empty()) {
        d->refuse(QString(), QStringLiteral("there is no method to deprecate"));
    } else {
        d->methods.back().deprecation = QString::fromUtf8(message);
    }
}

void ClassDeclaration::addProperty(const char *name, const Type &type,
                                   std::unique_ptr<Function> getter,
                                   std::unique_ptr<Function> setter)
{
    d->properties.push_back({QString::fromUtf8(name), type, std::move(getter), std::move(setter)});
}

void ClassDeclaration::addEnum(const char *name, const std::type_info *info,
                               std::vector<Enum::Item> items)
{
    auto built = std::make_unique<BuiltEnum>();
    built->name = QString::fromUtf8(name);
    for (const Enum::Item &item : items) {
        built->keys.emplace_back(item.key);
    }
    built->items = std::move(items);
    d->enums.push_back({info, std::move(built)});
}

void ClassDeclaration::addEvent(const char *name, std::vector<std::pair<QString, Type>> arguments,
                                Event::Flag flags)
{
    d->events.push_back({QString::fromUtf8(name), std::move(arguments), flags});
}

const Class *ClassDeclaration::add()
{
    const bool isPossible = d->isPossible();
    if (isPossible) {
        d->isAdded = true;
        // The numbering of the enums begins behind those of the super class.
        d->built->inherit(d->superClass);
        d->addMembers();
        d->built->publish();
    }
    d->report();
    return isPossible ? d->built : nullptr;
}

const QStringList &ClassDeclaration::errors() const
{
    return d->errors;
}

} // namespace NativeTypes

} // namespace Vantrel
