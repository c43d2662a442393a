#include "objectmodel/nativetypes.h"

#include "objectmodel/arguments_p.h"
#include "objectmodel/class_p.h"
#include "objectmodel/containers.h"
#include "objectmodel/delegates.h"
#include "objectmodel/inspector.h"
#include "objectmodel/nativetypes_p.h"
#include "objectmodel/primitives_p.h"
#include "objectmodel/primitivevalue_p.h"
#include "objectmodel/wrap.h"

#include <cxxabi.h>

#include <cstdlib>
#include <stdexcept>
#include <typeindex>
#include <unordered_map>

namespace Vantrel {

namespace {

using ClassTable = std::unordered_map<std::type_index, const Class *>;
using EnumTable = std::unordered_map<std::type_index, const Enum *>;

// Never destroyed: objects that live as long as the process may ask until its very end.

ClassTable &classes()
{
    static auto *const table = new ClassTable;
    return *table;
}

EnumTable &enums()
{
    static auto *const table = new EnumTable;
    return *table;
}

template <class Table>
typename Table::mapped_type find(const Table &table, const std::type_info &info)
{
    const auto found = table.find(info);
    return found == table.end() ? nullptr : found->second;
}

template <class Table>
bool add(Table &table, const std::type_info &info, typename Table::mapped_type value)
{
    return table.emplace(info, value).first->second == value;
}

QString unregistered(const std::type_info &info)
{
    return QStringLiteral("the type %1 is not registered").arg(NativeTypes::typeName(info));
}

/** Null, with @p error set, when there is none. */
const Class *classOfType(const NativeTypes::Type &type, QString *error)
{
    switch (type.kind) {
    case NativeTypes::Kind::Primitive:
        return Inspector::self()->type(type.primitiveId);
    case NativeTypes::Kind::Enum:
        if (!NativeTypes::enumOf(*type.info)) {
            *error = unregistered(*type.info);
        }
        return Inspector::self()->type(PrimitiveId::Int);
    case NativeTypes::Kind::Class:
        if (const Class *c = NativeTypes::classOf(*type.info)) {
            return c;
        }
        *error = unregistered(*type.info);
        return nullptr;
    case NativeTypes::Kind::Array:
    case NativeTypes::Kind::Map:
        break;
    }
    const bool isArray = type.kind == NativeTypes::Kind::Array;
    classOfType(type.element(), error);
    const Class *c = isArray ? ArrayClass::registeredClass() : MapClass::registeredClass();
    if (!c) {
        *error = isArray ? QStringLiteral("there is no class for arrays")
                         : QStringLiteral("there is no class for maps");
    }
    return c;
}

} // namespace

QString NativeTypes::typeName(const std::type_info &info)
{
    int status = 0;
    char *name = abi::__cxa_demangle(info.name(), nullptr, nullptr, &status);
    const QString text = QString::fromUtf8(status == 0 ? name : info.name());
    std::free(name);
    return text;
}

const Class *NativeTypes::classOf(const std::type_info &info)
{
    return find(classes(), info);
}

const Enum *NativeTypes::enumOf(const std::type_info &info)
{
    return find(enums(), info);
}

bool NativeTypes::registerClass(const std::type_info &info, const Class *c, Delete deleteData)
{
    ClassPrivate *record = ClassPrivate::get(c);
    const bool isOfAnother = record->nativeType && *record->nativeType != info;
    if (isOfAnother || !add(classes(), info, c)) {
        return false;
    }
    record->nativeType = &info;
    record->deleteNative = deleteData;
    return true;
}

bool NativeTypes::registerEnum(const std::type_info &info, const Enum *e)
{
    return add(enums(), info, e);
}

void NativeTypes::unregisterClass(const std::type_info &info, const Class *c)
{
    if (classOf(info) == c) {
        classes().erase(info);
    }
}

Argument NativeTypes::resolved(const QString &name, const Type &type, QString *error)
{
    const Class *c = classOfType(type, error);
    const Enum *e = type.kind == Kind::Enum ? enumOf(*type.info) : nullptr;
    return Argument(name, error->isEmpty() ? c : nullptr, ObjectAttribute(type.flags), e);
}

const Class *NativeTypes::resolvedClass(const Type &type)
{
    QString error;
    const Class *c = classOfType(type, &error);
    if (error.isEmpty()) {
        return c;
    }
    Inspector::self()->setError(error);
    return nullptr;
}

SharedPtr<Object> NativeTypes::owned(const Class *type, void *data)
{
    return ObjectAccess::owned(type, data, ObjectAttribute());
}

namespace {

/** @p type is another class than that of @p kind when an Inspector of another process gave it. */
template <class T>
SharedPtr<Object> ownedBy(const Class *type, PrimitiveKind kind, T value)
{
    return type && type == primitiveClass(kind) ? makePrimitive(value)
                                                : NativeTypes::ownedData(type, new T(value));
}

} // namespace

SharedPtr<Object> NativeTypes::ownedNumber(const Class *type, bool value)
{
    return ownedBy(type, PrimitiveKind::Bool, value);
}

SharedPtr<Object> NativeTypes::ownedNumber(const Class *type, char value)
{
    return ownedBy(type, PrimitiveKind::Char, value);
}

SharedPtr<Object> NativeTypes::ownedNumber(const Class *type, qint16 value)
{
    return ownedBy(type, PrimitiveKind::Short, value);
}

SharedPtr<Object> NativeTypes::ownedNumber(const Class *type, qint32 value)
{
    return ownedBy(type, PrimitiveKind::Int, value);
}

SharedPtr<Object> NativeTypes::ownedNumber(const Class *type, qint64 value)
{
    return ownedBy(type, PrimitiveKind::Int64, value);
}

SharedPtr<Object> NativeTypes::ownedNumber(const Class *type, double value)
{
    return ownedBy(type, PrimitiveKind::Double, value);
}

SharedPtr<Object> NativeTypes::viewed(const Class *type, const void *data, int flags)
{
    return type->wrap(const_cast<void *>(data), ObjectAttribute(flags));
}

const Class *NativeTypes::mostDerived(const Class *declared, const std::type_info &info)
{
    const Class *c = classOf(info);
    return c && Class::isSubClass(c, declared) ? c : declared;
}

SharedPtr<Object> NativeTypes::ownedText(const char *text)
{
    return Inspector::self()->createPrimitive(text);
}

SharedPtr<Object> NativeTypes::ownedText(const Class *type, const QString &text)
{
    return type == primitiveClass(PrimitiveKind::Char) ? makePrimitive(text)
                                                       : Inspector::self()->createPrimitive(text);
}

SharedPtr<Object> NativeTypes::ownedTexts(const QStringList &texts)
{
    return Inspector::self()->createPrimitive(texts);
}

SharedPtr<Object> NativeTypes::voidResult()
{
    return Inspector::self()->voidObject();
}

SharedPtr<Object> NativeTypes::ownedArray(const std::vector<SharedPtr<Object>> &items)
{
    return ArrayClass::wrapObject(items);
}

SharedPtr<Object> NativeTypes::ownedMap(const std::map<QString, SharedPtr<Object>> &items)
{
    return MapClass::wrapObject(items);
}

std::vector<char *> terminatedTexts(const SharedPtr<Object> &list)
{
    static char empty[] = "";
    std::vector<char *> texts;
    void *data = nullptr;
    list->get(&data);
    const int count = data ? list->objectAttribute().arrayLength() : 0;
    for (int i = 0; i < count; ++i) {
        char *text = static_cast<char **>(data)[i];
        texts.push_back(text ? text : empty);
    }
    texts.push_back(nullptr);
    return texts;
}

namespace {

/** The value that the conversion delegate of the object gives, if it has one for that type; else
 * null. */
SharedPtr<Object> valueByDelegate(const SharedPtr<Object> &object, int primitiveId)
{
    const auto converts = [&](int capability) {
        return ObjectAccess::converts(object.get(), capability);
    };
    switch (primitiveId) {
    case PrimitiveId::Short:
    case PrimitiveId::Int:
    case PrimitiveId::Long:
        return converts(ConversionDelegate::IntegerCapability) ? wrap(object->toInteger())
                                                               : nullptr;
    case PrimitiveId::Int64:
        return converts(ConversionDelegate::Int64Capability) ? wrap(object->toInt64()) : nullptr;
    case PrimitiveId::Double:
        return converts(ConversionDelegate::DoubleCapability) ? wrap(object->toDouble()) : nullptr;
    case PrimitiveId::Bool:
        return converts(ConversionDelegate::BooleanCapability) ? wrap(object->toBoolean())
                                                               : nullptr;
    case PrimitiveId::Char:
        return converts(ConversionDelegate::StringCapability) ? wrap(object->toString()) : nullptr;
    default:
        return nullptr;
    }
}

/** Where no argument of a call would convert: a text as a list, and what delegates give. */
SharedPtr<Object> looselyAdapted(const SharedPtr<Object> &object, const NativeTypes::Type &type,
                                 const Argument &declared)
{
    if (!object || object->isNull()) {
        return {};
    }
    const ObjectAttribute attribute = object->objectAttribute();
    const bool isText = primitiveKind(object->type()) == PrimitiveKind::Char
        && attribute.isPointer() != attribute.isArray();
    if (type.isTextList() && isText) {
        return wrap(QStringList(object->toString()));
    }
    const SharedPtr<Object> value = valueByDelegate(object, type.primitiveId);
    return value ? adapted(value, declared) : nullptr;
}

} // namespace

NativeTypes::Data::Data(const SharedPtr<Object> &object, const Type &type, Conversion conversion)
{
    const Argument declared = resolved(QString(), type, &m_error);
    if (!m_error.isEmpty()) {
        return;
    }
    m_fitting = adapted(object, declared);
    if (!m_fitting && conversion == AlsoByDelegate) {
        m_fitting = looselyAdapted(object, type, declared);
    }
    if (!m_fitting) {
        m_error = mismatch(object, declared);
        return;
    }
    m_isCopied = m_fitting != object;
    m_fitting->get(&m_pointer);
    if (type.isTextList() && m_pointer) {
        m_texts = terminatedTexts(m_fitting);
        m_pointer = m_texts.data();
    }
}

NativeTypes::Data::~Data() = default;

void NativeTypes::refuse(const QString &element, const QString &reason)
{
    const QString text =
        element.isEmpty() ? reason : QStringLiteral("element %1: %2").arg(element, reason);
    throw std::invalid_argument(text.toStdString());
}

} // namespace Vantrel
