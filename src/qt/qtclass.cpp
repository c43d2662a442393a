#include "qt/qtclass_p.h"

#include "qt/dynamicproperties_p.h"
#include "qt/handle_p.h"
#include "qt/metaclass_p.h"
#include "qt/values_p.h"

#include "objectmodel/inspector.h"
#include "objectmodel/invocation.h"
#include "objectmodel/primitiveids.h"

#include <QMetaMethod>
#include <QSet>
#include <QThread>
#include <QVarLengthArray>

#include <algorithm>

namespace Vantrel::QtWrapper {

namespace {

void setError(const QString &text)
{
    Inspector::self()->setError(text);
}

bool isObjectClass(const QMetaObject *metaObject)
{
    for (; metaObject; metaObject = metaObject->superClass()) {
        if (metaObject == &QObject::staticMetaObject) {
            return true;
        }
    }
    return false;
}

/** The type of a parameter. Code of the class itself may know one that nobody registered. */
int parameterType(const QMetaMethod &method, int parameter)
{
    const int known = method.parameterType(parameter);
    if (known != QMetaType::UnknownType) {
        return known;
    }
    const QMetaObject *owner = method.enclosingMetaObject();
    int registered = -1;
    void *arguments[] = {&registered, &parameter};
    owner->static_metacall(QMetaObject::RegisterMethodArgumentMetaType,
                           method.methodIndex() - owner->methodOffset(), arguments);
    return registered == -1 ? int(QMetaType::UnknownType) : registered;
}

std::vector<Type> parametersOf(const QMetaMethod &method, const QMetaObject *scope)
{
    const QList<QByteArray> names = method.parameterTypes();
    std::vector<Type> types;
    for (int i = 0; i < names.size(); ++i) {
        types.emplace_back(names[i], parameterType(method, i), scope);
    }
    return types;
}

QStringList parameterNamesOf(const QMetaMethod &method)
{
    QStringList names;
    for (const QByteArray &name : method.parameterNames()) {
        names << QString::fromUtf8(name);
    }
    return names;
}

bool isCallable(const QMetaMethod &method)
{
    return method.access() == QMetaMethod::Public
        && (method.methodType() == QMetaMethod::Slot || method.methodType() == QMetaMethod::Method);
}

bool isInThisThread(const QObject *object)
{
    return object->thread() == QThread::currentThread();
}

void reportThread(const QString &member, const QString &className)
{
    setError(QStringLiteral("Cannot use %1 of class %2 on an object of another thread")
                 .arg(member, className));
}

/** A handle for native data of a declared type. A list of texts ends with a null pointer. */
SharedPtr<Object> viewOf(const Argument &declared, void *data)
{
    ObjectAttribute attribute = declared.attribute();
    if (data && attribute.isArray() && declared.type()->id() == PrimitiveId::Char) {
        int count = 0;
        while (static_cast<char **>(data)[count]) {
            ++count;
        }
        attribute = ObjectAttribute(attribute.getFlags(), count);
    }
    return declared.type()->wrap(data, attribute);
}

/**
 * Reads a property of the type T. Null when the object has no plain memory for
 * it, as those that other languages make.
 */
template <class T>
SharedPtr<Object> readPlain(QObject *object, int index)
{
    T value{};
    QVariant other;
    int status = -1;
    void *arguments[] = {&value, &other, &status};
    QMetaObject::metacall(object, QMetaObject::ReadProperty, index, arguments);
    return status == -1 ? Inspector::self()->createPrimitive(value) : SharedPtr<Object>();
}

auto plainReader(const Type &type) -> SharedPtr<Object> (*)(QObject *, int)
{
    switch (type.enumerator.isValid() ? int(QMetaType::UnknownType) : type.metaType) {
    case QMetaType::Bool:
        return readPlain<bool>;
    case QMetaType::Int:
        return readPlain<int>;
    case QMetaType::Double:
        return readPlain<double>;
    case QMetaType::QString:
        return readPlain<QString>;
    default:
        return nullptr;
    }
}

/** A value in the form in which moc's code expects arguments and gives results. */
class NativeValue
{
public:
    /** Room for a result. */
    explicit NativeValue(const Type &type)
        : m_isNative(type.metaType == QMetaType::UnknownType),
          m_isVariant(type.metaType == QMetaType::QVariant)
    {
        if (!m_isNative && !m_isVariant && type.metaType != QMetaType::Void) {
            m_variant = QVariant(type.metaType, nullptr);
        }
    }
    /** An argument; false, with @p error set, when the object does not fit. */
    bool set(const SharedPtr<Object> &object, const Type &type, QString *error);
    void *data() { return m_isNative ? &m_number : m_isVariant ? &m_variant : m_variant.data(); }
    /** The value of an enum or pointer that QMetaType does not know, or any other. */
    SharedPtr<Object> toObject(const Type &type, QString *error) const;

private:
    bool m_isNative;
    bool m_isVariant;
    qint64 m_number = 0;
    QVariant m_variant;
};

bool NativeValue::set(const SharedPtr<Object> &object, const Type &type, QString *error)
{
    const Class *pointee = m_isNative ? type.pointee() : nullptr;
    const int wanted = pointee ? int(QMetaType::QObjectStar) : type.metaType;
    m_variant = variantOf(object, wanted, type.enumerator, error);
    if (!error->isEmpty()) {
        return false;
    }
    if (!m_isNative) {
        return true;
    }
    if (!pointee) {
        m_number = m_variant.toInt();
        return true;
    }
    QObject *pointer = m_variant.value<QObject *>();
    if (pointer && !object->isA(pointee)) {
        *error =
            QStringLiteral("%1 given, %2 expected").arg(object->className(), pointee->className());
        return false;
    }
    m_number = qint64(reinterpret_cast<quintptr>(pointer));
    return true;
}

SharedPtr<Object> NativeValue::toObject(const Type &type, QString *error) const
{
    if (!m_isNative) {
        return objectOf(m_variant, error);
    }
    if (type.pointee()) {
        return objectOf(QVariant::fromValue(reinterpret_cast<QObject *>(quintptr(m_number))),
                        error);
    }
    return Inspector::self()->createPrimitive(int(m_number));
}

/** Null for what was counted late, before there was a table to keep it in. */
template <class Table>
const typename Table::value_type *entry(const Table &table, int ownIndex)
{
    return ownIndex >= 0 && ownIndex < int(table.size()) ? &table[std::size_t(ownIndex)] : nullptr;
}

} // namespace

QtClass::QtClass(const char *name, const QMetaObject *metaObject, const QtClass *superClass)
    : Class(name, false), m_metaObject(metaObject), m_metaName(metaObject->className()),
      m_stringData(metaObject->d.stringdata)
{
    setSuperClass(superClass);
    // Of gadgets and namespaces only the enums are of use, to the members of others.
    if (isObjectClass(metaObject)) {
        readMethods();
        readProperties();
        readEvents();
    }
    readEnums();
    setNumConstructors(0);
    setNumMethods(int(m_methods.size()));
    setNumProperties(int(m_properties.size()));
    setNumEvents(int(m_events.size()));
    setNumEnums(int(m_enums.size()));
    registerClass();
}

bool QtClass::isOf(const QMetaObject *metaObject) const
{
    return metaObject->d.stringdata == m_stringData && m_metaName == metaObject->className()
        && metaObjectOf(super()) == metaObject->superClass();
}

void QtClass::readMethods()
{
    for (int i = m_metaObject->methodOffset(); i < m_metaObject->methodCount(); ++i) {
        const QMetaMethod method = m_metaObject->method(i);
        if (!isCallable(method)) {
            continue;
        }
        OwnMethod own;
        own.name = QString::fromUtf8(method.name());
        own.index = i;
        own.result = Type(method.typeName(), method.returnType(), m_metaObject);
        own.parameters = parametersOf(method, m_metaObject);
        own.parameterNames = parameterNamesOf(method);
        m_methods.push_back(own);
    }
    // Overloads that can be called are chosen before those that are refused anyway.
    std::stable_partition(m_methods.begin(), m_methods.end(), [](const OwnMethod &method) {
        return std::all_of(method.parameters.begin(), method.parameters.end(),
                           [](const Type &type) { return type.form != Form::None; });
    });
    if (m_metaObject == &QObject::staticMetaObject) {
        addObjectMethods();
    }
}

void QtClass::addObjectMethods()
{
    const Type text("QString", QMetaType::QString, nullptr);
    const Type any("QVariant", QMetaType::QVariant, nullptr);
    const Type texts("QStringList", QMetaType::QStringList, nullptr);
    const Type none("void", QMetaType::Void, nullptr);
    const QString name = QStringLiteral("name");
    m_methods.push_back(
        {QStringLiteral("property"), -1, propertyByName, any, {text}, {name}, nullptr});
    m_methods.push_back({QStringLiteral("setProperty"),
                         -1,
                         setPropertyByName,
                         none,
                         {text, any},
                         {name, QStringLiteral("value")},
                         nullptr});
    m_methods.push_back({QStringLiteral("dynamicPropertyNames"),
                         -1,
                         Vantrel::QtWrapper::dynamicPropertyNames,
                         texts,
                         {},
                         {},
                         nullptr});
}

void QtClass::readProperties()
{
    for (int i = m_metaObject->propertyOffset(); i < m_metaObject->propertyCount(); ++i) {
        const QMetaProperty property = m_metaObject->property(i);
        OwnProperty own;
        own.name = QString::fromUtf8(property.name());
        own.property = property;
        own.index = i;
        own.flags = (property.isReadable() ? Property::Readable : 0)
            | (property.isWritable() ? Property::Writable : 0)
            | (property.isStored() ? Property::Stored : 0);
        own.type = Type(property.typeName(), property.userType(), m_metaObject);
        own.read = plainReader(own.type);
        m_properties.push_back(own);
    }
}

void QtClass::readEvents()
{
    QSet<QByteArray> names;
    for (int i = m_metaObject->methodOffset(); i < m_metaObject->methodCount(); ++i) {
        const QMetaMethod method = m_metaObject->method(i);
        if (method.methodType() != QMetaMethod::Signal
            || (method.attributes() & QMetaMethod::Cloned)) {
            continue;
        }
        OwnEvent own;
        own.name = QString::fromUtf8(names.contains(method.name()) ? method.methodSignature()
                                                                   : method.name());
        names.insert(method.name());
        own.index = i;
        own.parameters = parametersOf(method, m_metaObject);
        own.parameterNames = parameterNamesOf(method);
        m_events.push_back(own);
    }
}

void QtClass::readEnums()
{
    for (int i = m_metaObject->enumeratorOffset(); i < m_metaObject->enumeratorCount(); ++i) {
        const QMetaEnum enumerator = m_metaObject->enumerator(i);
        OwnEnum own;
        own.name = QString::fromUtf8(enumerator.name());
        own.isMask = enumerator.isFlag();
        for (int k = 0; k < enumerator.keyCount(); ++k) {
            own.keys.push_back(enumerator.key(k));
            own.items.push_back({own.keys.back().constData(), enumerator.value(k)});
        }
        own.items.push_back({nullptr, 0});
        m_enums.push_back(std::move(own));
    }
}

template <class Table, class Descriptor>
const typename Table::value_type *QtClass::own(const Table &table, const Descriptor *descriptor)
{
    const auto found = std::find_if(table.begin(), table.end(), [descriptor](const auto &member) {
        return member.descriptor == descriptor;
    });
    return found == table.end() || !descriptor ? nullptr : &*found;
}

int QtClass::signalIndex(const Event *event) const
{
    const OwnEvent *found = own(m_events, event);
    return found ? found->index : -1;
}

const std::vector<Type> *QtClass::signalArguments(const Event *event) const
{
    const OwnEvent *found = own(m_events, event);
    return found ? &found->parameters : nullptr;
}

Signature QtClass::signatureOf(const QString &name, const std::vector<Type> &types,
                               const QStringList &names) const
{
    Signature signature(name);
    int i = 0;
    for (const Type &type : types) {
        signature.addArgument(type.argument(names.value(i++)));
    }
    return signature;
}

Method *QtClass::createMethod(int methodId) const
{
    const OwnMethod *own = entry(m_methods, methodId - superClassOffset(MethodOffset));
    if (!own) {
        return nullptr;
    }
    auto *method = new Method(methodId, this, own->result.argument(QString()),
                              signatureOf(own->name, own->parameters, own->parameterNames));
    own->descriptor = method;
    return method;
}

Property *QtClass::createProperty(int propertyId) const
{
    m_propertyOffset = superClassOffset(PropertyOffset); // final once there are descriptors
    const OwnProperty *own = entry(m_properties, propertyId - m_propertyOffset);
    if (!own) {
        return nullptr;
    }
    auto *property =
        new Property(propertyId, this, own->type.argument(QString()), own->name, own->flags);
    own->descriptor = property;
    return property;
}

Event *QtClass::createEvent(int eventId) const
{
    const OwnEvent *own = entry(m_events, eventId - superClassOffset(EventOffset));
    if (!own) {
        return nullptr;
    }
    auto *event =
        new Event(eventId, this, signatureOf(own->name, own->parameters, own->parameterNames));
    own->descriptor = event;
    return event;
}

Enum *QtClass::createEnum(int enumId) const
{
    const OwnEnum *own = entry(m_enums, enumId - superClassOffset(EnumOffset));
    if (!own) {
        return nullptr;
    }
    auto *result = new Enum(enumId, this, own->name, own->items.data());
    result->setIsMask(own->isMask);
    return result;
}

SharedPtr<Object> QtClass::wrap(void *data, const ObjectAttribute &attribute)
{
    return newHandle(static_cast<QObject *>(data), this, attribute);
}

SharedPtr<Object> QtClass::invoke(int, SharedPtr<Object> object, const ObjectList &arguments,
                                  const Method *method)
{
    if (!verifyMethodInvocation(object, method)
        || !verifyMethodArgumentCount(className(), method, arguments)) {
        return {};
    }
    if (!object || !object->isA(this)) {
        setError(QStringLiteral("Cannot use %1() of class %2 on an object of class %3")
                     .arg(method->name(), className(),
                          object ? object->className() : QStringLiteral("<none>")));
        return {};
    }
    const OwnMethod *found = own(m_methods, method);
    if (!found) {
        setError(QStringLiteral("The class %1 has no method %2() of its own")
                     .arg(className(), method->name()));
        return {};
    }
    const Handle *handle = Handle::of(object);
    QObject *target = handle ? handle->object() : nullptr;
    if (!target) {
        setError(QStringLiteral("Cannot call %1() of %2: there is no object behind its handle")
                     .arg(method->name(), className()));
        return {};
    }
    if (!canCall(*found)) {
        return {};
    }
    if (!isInThisThread(target)) {
        reportThread(found->name + QLatin1String("()"), className());
        return {};
    }
    return found->function ? found->function(object, arguments) : call(*found, target, arguments);
}

/** The raw form. The handles that were lost on the way are made again. */
SharedPtr<Object> QtClass::invoke(int methodId, void *data, void **arguments, const Class *)
{
    const Method *called = method(methodId);
    if (!data || !called || called->methodClass() != this) {
        setError(QStringLiteral("Cannot call method %1 of class %2 without an object")
                     .arg(QString::number(methodId), className()));
        return {};
    }
    ObjectList list;
    for (const Argument &argument : called->signature().arguments()) {
        list << viewOf(argument, arguments ? arguments[list.size()] : nullptr);
    }
    return called->invoke(wrap(data, ObjectAttribute::Pointer()), list);
}

bool QtClass::canCall(const OwnMethod &method) const
{
    const Type *refused = method.result.crosses() ? nullptr : &method.result;
    for (const Type &type : method.parameters) {
        if (!type.crosses()) {
            refused = &type;
        }
    }
    if (!refused) {
        return true;
    }
    setError(
        QStringLiteral("Cannot call %1() of %2: its %3 has the type %4, which cannot cross to "
                       "scripts")
            .arg(method.name, className(),
                 refused == &method.result ? QStringLiteral("result") : QStringLiteral("parameter"),
                 QString::fromUtf8(refused->name)));
    return false;
}

SharedPtr<Object> QtClass::call(const OwnMethod &method, QObject *target,
                                const ObjectList &arguments) const
{
    std::vector<NativeValue> values;
    values.reserve(method.parameters.size() + 1);
    values.emplace_back(method.result);
    QVarLengthArray<void *, 11> native;
    native.append(method.result.form == Form::Void ? nullptr : values.front().data());
    for (std::size_t i = 0; i < method.parameters.size(); ++i) {
        QString error;
        values.emplace_back(method.parameters[i]);
        if (!values.back().set(arguments[i], method.parameters[i], &error)) {
            setError(QStringLiteral("Cannot call %1() of %2: argument %3: %4")
                         .arg(method.name, className(), QString::number(i + 1), error));
            return {};
        }
        native.append(values.back().data());
    }
    // Whatever this does, the object may be gone afterwards.
    QMetaObject::metacall(target, QMetaObject::InvokeMetaMethod, method.index, native.data());
    if (method.result.form == Form::Void) {
        return Inspector::self()->voidObject();
    }
    QString error;
    SharedPtr<Object> result = values.front().toObject(method.result, &error);
    if (!result) {
        setError(QStringLiteral("The result of %1() of %2 cannot be told: %3")
                     .arg(method.name, className(), error));
    }
    return result;
}

/** The own property, when nothing is wrong with the handle. */
const QtClass::OwnProperty *QtClass::usableProperty(Handle *handle, const Property *property) const
{
    if (!handle || property->propertyClass() != this || !handle->isA(this)) {
        return nullptr;
    }
    const int index = property->id() - m_propertyOffset;
    if (index < 0 || index >= int(m_properties.size())) {
        return nullptr;
    }
    const OwnProperty &found = m_properties[std::size_t(index)];
    return found.descriptor == property ? &found : nullptr;
}

QString QtClass::subject(const OwnProperty &property) const
{
    return QStringLiteral("Property '%1' of %2").arg(property.name, className());
}

SharedPtr<Object> QtClass::getProperty(int, SharedPtr<Object> object, const Property *property)
{
    Handle *handle = Handle::of(object);
    const OwnProperty *found = usableProperty(handle, property);
    QObject *target = found && property->isReadable() ? handle->object() : nullptr;
    // The usual way reports what is wrong.
    const auto *self = static_cast<const Class *>(this);
    return target ? read(*found, target) : self->getProperty(object, property);
}

SharedPtr<Object> QtClass::getProperty(int propertyId, void *data, const Class *)
{
    const int index = propertyId - superClassOffset(PropertyOffset);
    const bool isOwn = index >= 0 && index < int(m_properties.size());
    return data && isOwn ? read(m_properties[std::size_t(index)], static_cast<QObject *>(data))
                         : SharedPtr<Object>();
}

SharedPtr<Object> QtClass::read(const OwnProperty &property, QObject *object) const
{
    if (!property.type.crosses()) {
        setError(QStringLiteral("%1 has the type %2, which cannot cross to scripts")
                     .arg(subject(property), QString::fromUtf8(property.type.name)));
        return {};
    }
    if (!isInThisThread(object)) {
        reportThread(property.name, className());
        return {};
    }
    if (property.read) {
        SharedPtr<Object> result = property.read(object, property.index);
        if (result) {
            return result;
        }
    }
    QString error;
    SharedPtr<Object> result = objectOf(property.property.read(object), &error);
    if (!result) {
        setError(subject(property) + QLatin1String(" cannot be read: ") + error);
    }
    return result;
}

bool QtClass::setProperty(int, SharedPtr<Object> object, SharedPtr<Object> value,
                          const Property *property) const
{
    return setProperty(object, property, value);
}

bool QtClass::setProperty(SharedPtr<Object> object, const Property *property,
                          SharedPtr<Object> value) const
{
    Handle *handle = Handle::of(object);
    const OwnProperty *found = usableProperty(handle, property);
    QObject *target = found && property->isWritable() ? handle->object() : nullptr;
    return target ? write(*found, target, value) : Class::setProperty(object, property, value);
}

bool QtClass::setProperty(int propertyId, void *data, void *value) const
{
    const int index = propertyId - superClassOffset(PropertyOffset);
    if (!data || index < 0 || index >= int(m_properties.size())) {
        return false;
    }
    const OwnProperty &found = m_properties[std::size_t(index)];
    return write(found, static_cast<QObject *>(data),
                 viewOf(found.type.argument(QString()), value));
}

bool QtClass::write(const OwnProperty &property, QObject *object,
                    const SharedPtr<Object> &value) const
{
    if (!property.type.crosses()) {
        setError(QStringLiteral("%1 has the type %2, which cannot cross to scripts")
                     .arg(subject(property), QString::fromUtf8(property.type.name)));
        return false;
    }
    if (!isInThisThread(object)) {
        reportThread(property.name, className());
        return false;
    }
    const bool isEnum = property.type.enumerator.isValid();
    QString error;
    const QVariant given = variantOf(value, isEnum ? int(QMetaType::Int) : property.type.metaType,
                                     property.type.enumerator, &error);
    if (!error.isEmpty()) {
        setError(QStringLiteral("Cannot set property '%1' of %2: %3")
                     .arg(property.name, className(), error));
        return false;
    }
    if (!property.property.write(object, given)) {
        setError(QStringLiteral("Cannot set property '%1' of %2: the value was refused")
                     .arg(property.name, className()));
        return false;
    }
    return true;
}

} // namespace Vantrel::QtWrapper
