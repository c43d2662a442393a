#include "objectmodel/remote.h"

#include "objectmodel/arguments_p.h"
#include "objectmodel/class_p.h"
#include "objectmodel/diagnostics_p.h"
#include "objectmodel/inspector.h"
#include "objectmodel/invocation.h"
#include "objectmodel/namespace.h"
#include "objectmodel/stream_p.h"

#include <QDataStream>

#include <vector>

namespace Vantrel {

namespace {

/** Classes above one another. Other operations walk up recursively. */
constexpr int maxInheritanceDepth = 256;

/** Stands for an interface of a remote class; its members are those of the class of its name. */
class RemoteInterface : public Interface
{
public:
    RemoteInterface(const InterfaceRecord &record, Namespace *nameSpace)
        : Interface(record.className.toUtf8().constData(), nameSpace),
          m_interfaceName(record.name.toUtf8())
    {
        setNumMethods(0);
        setNumConstructors(0);
        setNumProperties(0);
        setNumEvents(0);
        setNumEnums(0);
    }

    QByteArray interfaceName() const override { return m_interfaceName; }

private:
    void initSuperClass() override
    {
        const Namespace *place = static_cast<const Class *>(this)->nameSpace();
        const Class *described = place ? place->getClass(className()) : nullptr;
        if (!described) {
            described = Inspector::self()->type(className());
        }
        // Only this interface leads there, and nothing inherits from it, so there is no ring.
        if (described) {
            setSuperClass(described);
        }
    }

    const QByteArray m_interfaceName;
};

bool isRemote(const Class *c)
{
    return dynamic_cast<const RemoteClassBase *>(c) || dynamic_cast<const RemoteInterface *>(c);
}

template <class Record>
const Record *recordAt(const std::vector<Record> &records, int index)
{
    return index >= 0 && std::size_t(index) < records.size() ? &records[std::size_t(index)]
                                                             : nullptr;
}

bool refuse(const QString &text)
{
    Inspector::self()->setError(text);
    return false;
}

/** Whether @p object can be asked for something that @p c declares; its id in @p objectId. */
bool identify(const SharedPtr<Object> &object, const Class *c, const QString &member,
              quint32 *objectId)
{
    const auto *remote = dynamic_cast<const RemoteObjectBase *>(object.get());
    if (!remote || !object->isA(c)) {
        return refuse(QStringLiteral("Cannot use %1 of class %2 on an object of class %3")
                          .arg(member, c->className(), object->className()));
    }
    *objectId = remote->objectId();
    return true;
}

bool identifyForProperty(const SharedPtr<Object> &object, const Class *c, const Property *property,
                         quint32 *objectId)
{
    if (object && !object->isValid()) {
        return refuse(QStringLiteral("Cannot access property %1 on invalidated object reference")
                          .arg(property->name()));
    }
    if (property->isStatic()) {
        return true;
    }
    if (!object) {
        return refuse(
            QStringLiteral("Cannot access non-static property %1 without object reference")
                .arg(property->name()));
    }
    return identify(object, c, property->name(), objectId);
}

bool identifyForMethod(const SharedPtr<Object> &object, const Class *c, const Method *method,
                       quint32 *objectId)
{
    if ((!object || !object->isValid() || method->isStatic())
        && !verifyMethodInvocation(object, method)) {
        return false;
    }
    return method->isStatic()
        || identify(object, c, method->name() + QLatin1String("()"), objectId);
}

} // namespace

class RemoteClassPrivate
{
public:
    explicit RemoteClassPrivate(RemoteTransport *t) : transport(t) {}

    RemoteTransport *const transport;
    bool isDescribed = false;
    bool isResolvingSuper = false;
    ClassRecord record;
    std::vector<std::unique_ptr<Interface>> interfaces;
    /** All that the factories made; a Class itself keeps its descriptors for good. */
    std::vector<std::unique_ptr<Serializable>> descriptors;

    template <class Descriptor>
    Descriptor *keep(Descriptor *descriptor)
    {
        descriptors.emplace_back(descriptor);
        return descriptor;
    }
};

RemoteObjectBase::RemoteObjectBase(const Class *c, quint32 objectId)
    : Object(nullptr, c, ObjectAttribute()), m_objectId(objectId)
{}

RemoteObjectBase::RemoteObjectBase(const RemoteObjectBase &other) = default;

RemoteObjectBase::RemoteObjectBase(RemoteObjectBase &&other) = default;

RemoteObjectBase &RemoteObjectBase::operator=(const RemoteObjectBase &other) = default;

RemoteObjectBase &RemoteObjectBase::operator=(RemoteObjectBase &&other) = default;

RemoteObjectBase::~RemoteObjectBase() = default;

RemoteClassBase::RemoteClassBase(int applicationContextId, int)
    : m_applicationContextId(applicationContextId)
{}

RemoteClassBase::~RemoteClassBase() = default;

RemoteTransport::~RemoteTransport() = default;

RemoteClass::RemoteClass(int applicationContextId, RemoteTransport *transport)
    : RemoteClassBase(applicationContextId), d(new RemoteClassPrivate(transport))
{}

RemoteClass::~RemoteClass() = default;

int RemoteClass::remoteId() const
{
    return d->record.id;
}

SharedPtr<Object> RemoteClass::object(quint32 objectId) const
{
    return SharedPtr<Object>(new RemoteObject(this, objectId));
}

void RemoteClass::writeObject(QDataStream &stream) const
{
    writeRecord(stream, d->record);
}

void RemoteClass::readObject(QDataStream &stream)
{
    if (d->isDescribed) {
        refuse(QStringLiteral("The remote class %1 is described already").arg(className()));
        return;
    }
    auto record = readRecord<ClassRecord>(stream);
    if (stream.status() != QDataStream::Ok) {
        return;
    }
    d->record = std::move(record);
    d->isDescribed = true;
    ClassPrivate *c = ClassPrivate::get(this);
    c->setName(d->record.name.toUtf8().constData());
    c->superClass = uninitialized;
    c->nameSpace = nameSpaceById(d->record.nameSpaceId);
    c->natures = quint32(d->record.natures);
    setNumConstructors(d->record.numConstructors);
    setNumMethods(d->record.numMethods);
    setNumProperties(d->record.numProperties);
    setNumEvents(d->record.numEvents);
    setNumEnums(d->record.numEnums);
    for (const InterfaceRecord &interface : d->record.interfaces) {
        // Not by addInterface(), for which a second one of a name is a fatal error.
        d->interfaces.emplace_back(new RemoteInterface(interface, c->nameSpace));
        c->interfaces.insert(interface.name, d->interfaces.back().get());
    }
}

void RemoteClass::initSuperClass()
{
    static thread_local int depth = 0;
    if (d->record.superName.isEmpty() || depth >= maxInheritanceDepth) {
        setSuperClass(nullptr);
        return;
    }
    const Class *found = classInNameSpace(d->record.superName, d->record.superNameSpaceId);
    if (!found || d->isResolvingSuper) {
        return;
    }
    // The ancestors look up theirs on the way; one that comes here again finds no super class yet.
    d->isResolvingSuper = true;
    ++depth;
    int steps = 0;
    const Class *ancestor = found;
    while (ancestor && ancestor != this && steps < maxInheritanceDepth) {
        ancestor = ancestor->super();
        ++steps;
    }
    --depth;
    d->isResolvingSuper = false;
    if (ancestor) {
        printDiagnostic("RemoteClass: class %s cannot have the super class %s\n",
                        qUtf8Printable(className()), qUtf8Printable(found->className()));
    }
    setSuperClass(ancestor ? nullptr : found);
}

SharedPtr<Object> RemoteClass::convertToInterface(SharedPtr<Object> object, const QString &name)
{
    const auto *remote = dynamic_cast<const RemoteObjectBase *>(object.get());
    const Interface *interface = remote && object->isA(this) ? interfaceClass(name) : nullptr;
    if (!interface) {
        return {};
    }
    SharedPtr<Object> view(new RemoteObject(interface, remote->objectId()));
    if (const UserData *userData = object->userData()) {
        view->setUserData(userData->clone());
    }
    return view;
}

SharedPtr<Object> RemoteClass::invoke(int, SharedPtr<Object> object, const ObjectList &arguments,
                                      const Method *method)
{
    quint32 objectId = 0;
    if (!identifyForMethod(object, this, method, &objectId)
        || !verifyMethodArgumentCount(className(), method, arguments)) {
        return {};
    }
    const RemoteMember member{RemoteMember::MethodCall, method->id(), method->name()};
    return d->transport->access(this, member, objectId, arguments);
}

SharedPtr<Object> RemoteClass::getProperty(int, SharedPtr<Object> object, const Property *property)
{
    return getProperty(object, property);
}

SharedPtr<Object> RemoteClass::getProperty(SharedPtr<Object> object, const Property *property)
{
    if (property->propertyDeclaration() || property->propertyClass() != this) {
        return Class::getProperty(object, property);
    }
    quint32 objectId = 0;
    if (!identifyForProperty(object, this, property, &objectId)) {
        return {};
    }
    const RemoteMember member{RemoteMember::PropertyRead, property->id(), property->name()};
    return d->transport->access(this, member, objectId, ObjectList());
}

bool RemoteClass::setProperty(int, SharedPtr<Object> object, SharedPtr<Object> value,
                              const Property *property) const
{
    return setProperty(object, property, value);
}

bool RemoteClass::setProperty(SharedPtr<Object> object, const Property *property,
                              SharedPtr<Object> value) const
{
    if (property->propertyDeclaration() || property->propertyClass() != this) {
        return Class::setProperty(object, property, value);
    }
    quint32 objectId = 0;
    if (!identifyForProperty(object, this, property, &objectId)) {
        return false;
    }
    const RemoteMember member{RemoteMember::PropertyWrite, property->id(), property->name()};
    return !d->transport->access(this, member, objectId, {value}).isNull();
}

SharedPtr<Object> RemoteClass::construct(int, const ObjectList &arguments,
                                         const Constructor *constructor)
{
    if (!verifyConstruction(this, arguments, constructor)) {
        return {};
    }
    const RemoteMember member{RemoteMember::Construction, constructor->id(), QString()};
    return d->transport->access(this, member, 0, arguments);
}

// A missing record can only mean that the count grew since, by Class::lateAddMethod().

Constructor *RemoteClass::createConstructor(int index) const
{
    const ConstructorRecord *record = recordAt(d->record.constructors, index);
    if (!record) {
        return nullptr;
    }
    return d->keep(
        new Constructor(record->id, this, record->signature.signature(className(), this)));
}

Method *RemoteClass::createMethod(int methodId) const
{
    const MethodRecord *record =
        recordAt(d->record.methods, methodId - superClassOffset(MethodOffset));
    if (!record) {
        return nullptr;
    }
    auto *method = d->keep(new Method(record->id, this, record->returnType.argument(this),
                                      record->signature.signature(record->name, this),
                                      record->isStatic ? Method::Static : Method::NoFlags));
    method->deprecate(record->deprecationMessage);
    return method;
}

Property *RemoteClass::createProperty(int propertyId) const
{
    const PropertyRecord *record =
        recordAt(d->record.properties, propertyId - superClassOffset(PropertyOffset));
    if (!record) {
        return nullptr;
    }
    return d->keep(
        new Property(record->id, this, record->type.argument(this), record->name, record->flags));
}

Event *RemoteClass::createEvent(int eventId) const
{
    const EventRecord *record = recordAt(d->record.events, eventId - superClassOffset(EventOffset));
    if (!record) {
        return nullptr;
    }
    return d->keep(new Event(record->id, this, record->signature.signature(record->name, this),
                             record->isSendable ? Event::Sendable : Event::NoFlags));
}

Enum *RemoteClass::createEnum(int enumId) const
{
    const EnumRecord *record = recordAt(d->record.enums, enumId - superClassOffset(EnumOffset));
    if (!record) {
        return nullptr;
    }
    // Only an enum that was read owns its table of items.
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    writeRecord(out, *record);
    QDataStream in(bytes);
    Enum *result = d->keep(new Enum(this));
    result->readObject(in);
    return result;
}

RemoteObject::RemoteObject(const Class *c, quint32 objectId) : RemoteObjectBase(c, objectId) {}

RemoteObject::~RemoteObject() = default;

bool RemoteObject::isNull() const
{
    for (const Class *c = type(); c; c = c->super()) {
        if (!isRemote(c)) {
            return true;
        }
    }
    return !isValid();
}

} // namespace Vantrel
