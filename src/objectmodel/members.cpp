#include "objectmodel/members.h"

#include "objectmodel/class.h"
#include "objectmodel/diagnostics_p.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/primitiveids.h"

namespace Vantrel {

namespace {

const Class *typeOrUndefined(const Class *type)
{
    return type ? type : Inspector::self()->type(PrimitiveId::Undefined);
}

QString arrayText(const Argument &argument)
{
    if (!argument.isArray()) {
        return QString();
    }
    const int length = argument.arrayLength();
    return length > 0 ? QLatin1String(" [") + QString::number(length) + QLatin1Char(']')
                      : QStringLiteral(" []");
}

QString argumentTypeText(const Argument &argument)
{
    const Enum *enumType = argument.enumType();
    if (!enumType) {
        return argument.type() ? argument.type()->className() : QStringLiteral("undefined");
    }
    const Class *owner = enumType->enumClass();
    if (!owner || owner == Inspector::self()->type(PrimitiveId::Global)) {
        return enumType->name();
    }
    return owner->className() + QLatin1String("::") + enumType->name();
}

QString argumentText(const Argument &argument)
{
    QString text;
    if (argument.isConst1()) {
        text += QLatin1String("const ");
    }
    text += argumentTypeText(argument);
    if (argument.isReference()) {
        text += QLatin1String(" &");
    }
    if (argument.isPointer()) {
        text += QLatin1String(" *");
    }
    text += arrayText(argument);
    if (argument.isConst2()) {
        text += QLatin1String(" const");
    }
    if (!argument.name().isEmpty()) {
        text += QLatin1Char(' ') + argument.name();
    }
    return text;
}

/** Spelled with the qualifiers directly behind the type, unlike the arguments of a signature. */
QString qualifiedText(const Argument &result, const QString &type)
{
    QString text;
    if (result.isConst1()) {
        text += QLatin1String("const ");
    }
    text += type;
    if (result.isReference()) {
        text += QLatin1Char('&');
    }
    if (result.isPointer()) {
        text += QLatin1Char('*');
    }
    if (result.isConst2()) {
        text += QLatin1String(" const");
    }
    return text + arrayText(result);
}

QString resultText(const Argument &result)
{
    if (!result.type()) {
        return QString();
    }
    const Enum *enumType = result.enumType();
    return qualifiedText(result,
                         result.type()->className()
                             + (enumType ? QLatin1String("::") + enumType->name() : QString()));
}

/** A member that was read for no class describes something, but there is nobody to ask. */
void reportNoOwner(const char *what, const QString &name)
{
    Inspector::self()->setError(
        QStringLiteral("The %1 %2 belongs to no class").arg(QLatin1String(what), name));
}

QString ownerName(const Class *owner)
{
    return owner ? owner->className() : QString();
}

/**
 * In no namespace and not registered, so that it can neither be found by name
 * nor stand in the way of a toolkit's class of that name.
 */
class AnyObjectClass : public Class
{
public:
    AnyObjectClass() : Class("Object", static_cast<Namespace *>(nullptr), false)
    {
        setNumMethods(0);
        setNumConstructors(0);
        setNumProperties(0);
        setNumEvents(0);
        setNumEnums(0);
    }
};

const Class *anyObjectClass()
{
    static const Class *const any = new AnyObjectClass;
    return any;
}

} // namespace

ObjectAttribute::ObjectAttribute(int flags, int arrayLength)
    : m_flags(flags), m_arrayLength(arrayLength)
{}

ObjectAttribute::~ObjectAttribute() = default;

bool ObjectAttribute::tolerantMatch(const ObjectAttribute &other) const
{
    const int indirect = PointerFlag | ArrayFlag;
    if (isPointer() && !isReference()) {
        return (m_flags & indirect) && (other.m_flags & indirect);
    }
    if (other.isValue() || other.isReference()) {
        return true;
    }
    return (m_flags & indirect) && (other.m_flags & indirect);
}

Argument::Argument() = default;

Argument::Argument(const QString &name, const Class *type, const ObjectAttribute &attribute,
                   const Enum *enumType)
    : m_name(name), m_type(typeOrUndefined(type)), m_attribute(attribute), m_enumType(enumType)
{}

Argument::Argument(const QString &name, const Class *type, int flags, int arrayLength,
                   const Enum *enumType)
    : Argument(name, type, ObjectAttribute(flags, arrayLength), enumType)
{}

Argument::Argument(const Class *type, const ObjectAttribute &attribute, const Enum *enumType)
    : Argument(QString(), type, attribute, enumType)
{}

Argument::Argument(const Class *type, int flags, int arrayLength, const Enum *enumType)
    : Argument(QString(), type, ObjectAttribute(flags, arrayLength), enumType)
{}

Argument::~Argument() = default;

Argument Argument::AnyObject(const QString &name)
{
    return Argument(name, anyObjectClass(), ObjectAttribute::Pointer());
}

Argument Argument::Unconverted(const QString &name, const Class *type)
{
    Argument argument(name, type);
    argument.m_unconverted = true;
    return argument;
}

bool Argument::takesAnyObject() const
{
    return m_unconverted || m_type == anyObjectClass();
}

bool operator==(const Argument &a, const Argument &b)
{
    return a.m_name == b.m_name && a.m_type == b.m_type && a.m_attribute == b.m_attribute
        && a.m_enumType == b.m_enumType;
}

Signature::Signature(const QString &name, const FList<Argument> &arguments)
    : m_name(name), m_arguments(arguments)
{}

Signature::~Signature() = default;

QString Signature::toString() const
{
    QStringList texts;
    for (const Argument &argument : m_arguments) {
        texts << argumentText(argument);
    }
    return QLatin1Char('(') + texts.join(QLatin1String(", ")) + QLatin1Char(')');
}

Method::Method(const Class *owner) : m_owner(owner) {}

Method::Method(int id, const Class *owner, const Argument &returnType, const Signature &signature,
               int flags)
    : m_id(id), m_owner(owner), m_returnType(returnType), m_signature(signature), m_flags(flags)
{}

Method::~Method() = default;

void Method::deprecate(const QString &message)
{
    m_deprecationMessage = message;
    m_deprecationReported = false;
}

SharedPtr<Object> Method::invoke(SharedPtr<Object> object, const ObjectList &arguments) const
{
    if (!m_owner) {
        reportNoOwner("function", name() + QLatin1String("()"));
        return {};
    }
    if (isDeprecated() && !m_deprecationReported) {
        m_deprecationReported = true;
        printDiagnostic("%s::%s%s is deprecated: %s\n", qUtf8Printable(ownerName(m_owner)),
                        qUtf8Printable(name()), qUtf8Printable(m_signature.toString()),
                        qUtf8Printable(m_deprecationMessage));
    }
    return m_owner->mutableSelf()->invoke(m_id, std::move(object), arguments, this);
}

QString Method::toString() const
{
    return resultText(m_returnType) + QLatin1Char(' ') + name() + m_signature.toString();
}

Constructor::Constructor(const Class *owner) : m_owner(owner) {}

Constructor::Constructor(int id, const Class *owner, const Signature &signature)
    : m_id(id), m_owner(owner), m_signature(signature)
{}

Constructor::~Constructor() = default;

SharedPtr<Object> Constructor::construct(const ObjectList &arguments) const
{
    if (!m_owner) {
        reportNoOwner("constructor", m_signature.toString());
        return {};
    }
    return m_owner->mutableSelf()->construct(m_id, arguments, this);
}

QString Constructor::toString() const
{
    return ownerName(m_owner) + m_signature.toString();
}

Event::Event(const Class *owner) : m_owner(owner) {}

Event::Event(int id, const Class *owner, const Signature &signature, int flags)
    : m_id(id), m_owner(owner), m_signature(signature), m_flags(flags)
{}

Event::~Event() = default;

bool Event::sendEvent(SharedPtr<Object> object, const ObjectList &arguments) const
{
    return Inspector::self()->sendEvent(this, object, arguments);
}

Enum::Enum(const Class *owner) : m_owner(owner) {}

Enum::Enum(int id, const Class *owner, const QString &name, const Item *items)
    : m_owner(owner), m_name(name), m_id(id), m_items(items)
{
    while (m_items && m_items[m_count].key) {
        ++m_count;
    }
    m_isMask = detectIsMask();
}

Enum::~Enum()
{
    freeItems();
}

void Enum::freeItems()
{
    if (m_ownsItems) {
        for (int i = 0; i < m_count; ++i) {
            delete[] m_items[i].key;
        }
        delete[] m_items;
    }
    m_items = nullptr;
    m_count = 0;
    m_ownsItems = false;
}

QString Enum::key(int index) const
{
    return index >= 0 && index < m_count ? QString::fromUtf8(m_items[index].key) : QString();
}

int Enum::value(int index) const
{
    return index >= 0 && index < m_count ? m_items[index].value : -1;
}

const Enum::Item *Enum::item(const QByteArray &key) const
{
    for (int i = 0; i < m_count; ++i) {
        if (key == m_items[i].key) {
            return &m_items[i];
        }
    }
    return nullptr;
}

int Enum::value(const QString &key, bool *ok) const
{
    const Item *found = item(key.toUtf8());
    if (ok) {
        *ok = found != nullptr;
    }
    return found ? found->value : -1;
}

QString Enum::valueToKey(int value, bool *ok) const
{
    for (int i = 0; i < m_count; ++i) {
        if (m_items[i].value == value) {
            if (ok) {
                *ok = true;
            }
            return key(i);
        }
    }
    printDiagnostic("Could not find value %d in enum %s\n", value, qUtf8Printable(m_name));
    if (ok) {
        *ok = false;
    }
    return QString();
}

bool Enum::detectIsMask() const
{
    quint32 seen = 0;
    for (int i = 0; i < m_count; ++i) {
        const auto bits = static_cast<quint32>(m_items[i].value);
        if (seen & bits) {
            return false;
        }
        seen |= bits;
    }
    return true;
}

PropertyDeclaration::PropertyDeclaration(const Class *owner, const Argument &type,
                                         const QString &name, const Method *readMethod,
                                         const Method *writeMethod)
    : m_owner(owner), m_type(type), m_name(name), m_readMethod(readMethod),
      m_writeMethod(writeMethod)
{}

PropertyDeclaration::PropertyDeclaration(const Class *owner, const Argument &type,
                                         const QString &name, ReadFunction readFunction,
                                         WriteFunction writeFunction)
    : m_owner(owner), m_type(type), m_name(name), m_readFunction(std::move(readFunction)),
      m_writeFunction(std::move(writeFunction))
{}

PropertyDeclaration::PropertyDeclaration(const Class *owner, const QString &typeName,
                                         const QString &name, ReadFunction readFunction,
                                         WriteFunction writeFunction)
    : m_owner(owner), m_typeName(typeName), m_name(name), m_readFunction(std::move(readFunction)),
      m_writeFunction(std::move(writeFunction))
{}

const Argument &PropertyDeclaration::type() const
{
    lazySetup();
    return m_type;
}

int PropertyDeclaration::flags() const
{
    lazySetup();
    return m_flags | (m_stored ? Stored : 0) | (m_static ? Static : 0);
}

void PropertyDeclaration::lazySetup() const
{
    if (m_ready) {
        return;
    }
    m_ready = true;
    if (!m_typeName.isEmpty()) {
        // The class may know the type by another name.
        const QString typeName = m_owner ? m_owner->realType(m_typeName) : m_typeName;
        const Class *type = Inspector::self()->type(typeName);
        if (!type) {
            printDiagnostic("Property %s::%s has unknown type %s.\n",
                            qUtf8Printable(ownerName(m_owner)), qUtf8Printable(m_name),
                            qUtf8Printable(m_typeName));
        }
        const bool pointer = typeName.endsWith(QLatin1Char('*'));
        m_type = Argument(type, pointer ? ObjectAttribute::Pointer() : ObjectAttribute::Value());
    }
    if (m_readMethod || m_readFunction) {
        m_flags |= Readable;
    }
    if (m_writeMethod || m_writeFunction) {
        m_flags |= Writable;
    }
    const Method *accessor = m_readMethod ? m_readMethod : m_writeMethod;
    if (accessor && accessor->isStatic()) {
        m_flags |= Static;
    }
}

Property::Property(const Class *owner) : m_owner(owner) {}

Property::Property(int id, const Class *owner, const Argument &type, const QString &name, int flags)
    : m_owner(owner), m_type(type), m_name(name), m_flags(flags), m_id(id)
{}

Property::Property(int id, const Class *owner, const PropertyDeclaration *declaration)
    : m_owner(owner), m_declaration(declaration), m_id(id)
{}

Property::~Property() = default;

const QString &Property::name() const
{
    return m_declaration ? m_declaration->name() : m_name;
}

const Argument &Property::argument() const
{
    return m_declaration ? m_declaration->type() : m_type;
}

int Property::flags() const
{
    return m_declaration ? m_declaration->flags() : m_flags;
}

SharedPtr<Object> Property::get(SharedPtr<Object> object) const
{
    if (!m_owner) {
        reportNoOwner("property", name());
        return {};
    }
    return m_owner->mutableSelf()->getProperty(m_id, std::move(object), this);
}

bool Property::set(SharedPtr<Object> object, SharedPtr<Object> value) const
{
    if (!m_owner) {
        reportNoOwner("property", name());
        return false;
    }
    return m_owner->setProperty(m_id, std::move(object), std::move(value), this);
}

QString Property::toString() const
{
    return qualifiedText(argument(), argumentTypeText(argument())) + QLatin1Char(' ')
        + ownerName(m_owner) + QLatin1String("::") + name();
}

} // namespace Vantrel
