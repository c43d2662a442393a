#include "objectmodel/primitives.h"

#include "objectmodel/arguments_p.h"
#include "objectmodel/blockpool.h"
#include "objectmodel/diagnostics_p.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object_p.h"
#include "objectmodel/primitives_p.h"
#include "objectmodel/primitivevalue_p.h"

#include <QDataStream>
#include <QStringList>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

namespace Vantrel {

namespace {

using Kind = PrimitiveKind;
using Value = PrimitiveValue;

/**
 * Reads an 8-bit C string; @p isNull becomes true for one of length 0. The
 * length comes from outside, so it does not decide what is allocated: memory
 * grows with what the stream really has. Failure is told by the status.
 */
QByteArray readText(QDataStream &stream, bool *isNull)
{
    constexpr quint32 chunk = 1 << 20;
    quint32 length = 0;
    stream >> length;
    *isNull = length == 0;
    QByteArray bytes;
    if (length > static_cast<quint32>(std::numeric_limits<int>::max() / 2)) {
        stream.setStatus(QDataStream::ReadCorruptData);
    }
    while (stream.status() == QDataStream::Ok && length > 0) {
        const int wanted = static_cast<int>(qMin(length, chunk));
        const int size = bytes.size();
        bytes.resize(size + wanted);
        const int read = stream.readRawData(bytes.data() + size, wanted);
        if (read != wanted) {
            bytes.truncate(size + qMax(0, read));
            stream.setStatus(QDataStream::ReadPastEnd);
        }
        length -= static_cast<quint32>(wanted);
    }
    return bytes;
}

/** The form in which an element of type T is streamed. */
template <class T>
using Streamed = std::conditional_t<std::is_same_v<T, bool>, qint8,
                                    std::conditional_t<std::is_same_v<T, qint16>, qint32, T>>;

/** The first element of an array; zero where there is none. */
template <class T>
void writeNumber(QDataStream &stream, const Value &value)
{
    const bool isThere = value.data() && value.count() > 0;
    stream << static_cast<Streamed<T>>(isThere ? value.load<T>(0) : T());
}

const Class *classOf(Kind kind)
{
    if (!primitiveClass(kind)) {
        Inspector::self(); // makes the classes
    }
    return primitiveClass(kind);
}

/** Whether conversions can end in @p target: classes derived from a primitive one are left out. */
bool isTarget(const Class *target)
{
    const Kind kind = primitiveKind(target);
    return target && target == primitiveClass(kind) && Value::hasStorage(kind);
}

/** What values of a class are like when nobody says otherwise. */
ObjectAttribute naturalAttribute(Kind kind)
{
    return kind == Kind::Char ? ObjectAttribute::Pointer() : ObjectAttribute::Value();
}

/** A handle of the class @p c, which is of that kind. */
SharedPtr<Object> newHandle(Kind kind, void *data, const Class *c, const ObjectAttribute &attribute)
{
    switch (kind) {
    case Kind::Short:
        return SharedPtr<Object>(new VantrelObject_short(data, c, attribute));
    case Kind::Int:
        return SharedPtr<Object>(new VantrelObject_int(data, c, attribute));
    case Kind::Long:
        return SharedPtr<Object>(new VantrelObject_long(data, c, attribute));
    case Kind::Bool:
        return SharedPtr<Object>(new VantrelObject_bool(data, c, attribute));
    case Kind::Char:
        return SharedPtr<Object>(new VantrelObject_char(data, c, attribute));
    case Kind::Double:
        return SharedPtr<Object>(new VantrelObject_double(data, c, attribute));
    case Kind::Int64:
        return SharedPtr<Object>(new VantrelObject_int64(data, c, attribute));
    default:
        return SharedPtr<Object>(new VantrelObject_void(data, c, attribute));
    }
}

/** A handle that owns @p data, which was made by PrimitiveValue. */
SharedPtr<Object> owned(const Class *c, void *data, const ObjectAttribute &attribute)
{
    SharedPtr<Object> result = ObjectAccess::owned(c, data, attribute);
    if (result) {
        ObjectAccess::setRoom(result.get());
    } else {
        Value(primitiveKind(c), data, attribute).deallocate();
    }
    return result;
}

SharedPtr<Object> newText(const Class *c, const QByteArray &text)
{
    return owned(c, Value::newText(text.constData(), std::size_t(text.size())),
                 ObjectAttribute::Pointer());
}

SharedPtr<Object> newCharacter(const Class *c, qint8 character)
{
    Value value(Kind::Char, nullptr, ObjectAttribute::Value());
    value.setData(value.allocate());
    value.storeCharacter(character);
    return owned(c, value.data(), ObjectAttribute::Value());
}

template <class T>
void *newData(T value)
{
    return new (BlockPool::take(sizeof(T))) T(value);
}

/** A new object of class @p c with the value of @p source, which has data. */
SharedPtr<Object> copied(const Class *c, const Value &source, const ObjectAttribute &attribute)
{
    const Kind kind = primitiveKind(c);
    if (kind == Kind::Char) {
        return attribute.isPointer() ? newText(c, source.firstText())
                                     : newCharacter(c, source.firstCharacter());
    }
    return withNative(kind, [&](auto native) {
        return owned(c, newData(source.number<typename decltype(native)::Type>()), attribute);
    });
}

/** A new object of one of the library's classes for numbers, which needs not be asked. */
template <class Handle, class T>
SharedPtr<Object> newNumber(Kind kind, T value)
{
    SharedPtr<Object> result(new Handle(newData(value), classOf(kind), ObjectAttribute()));
    ObjectAccess::ownBlock(result.get(), sizeof(T));
    return result;
}

/** The same for texts. */
SharedPtr<Object> newTexts(void *data, const ObjectAttribute &attribute)
{
    SharedPtr<Object> result(new VantrelObject_char(data, classOf(Kind::Char), attribute));
    result->setAutoDelete(true);
    ObjectAccess::setRoom(result.get());
    return result;
}

} // namespace

SharedPtr<Object> makePrimitive(bool value)
{
    return newNumber<VantrelObject_bool, bool>(Kind::Bool, value);
}

SharedPtr<Object> makePrimitive(short value)
{
    return newNumber<VantrelObject_short, qint16>(Kind::Short, value);
}

SharedPtr<Object> makePrimitive(int value)
{
    return newNumber<VantrelObject_int, qint32>(Kind::Int, value);
}

SharedPtr<Object> makePrimitive(long value)
{
    return newNumber<VantrelObject_long, qint32>(Kind::Long, static_cast<qint32>(value));
}

SharedPtr<Object> makePrimitive(long long value)
{
    return newNumber<VantrelObject_int64, qint64>(Kind::Int64, value);
}

SharedPtr<Object> makePrimitive(double value)
{
    return newNumber<VantrelObject_double, double>(Kind::Double, value);
}

SharedPtr<Object> makePrimitive(char value)
{
    return newCharacter(classOf(Kind::Char), value);
}

SharedPtr<Object> makePrimitive(const char *value)
{
    char *text = value ? Value::newText(value, std::strlen(value)) : nullptr;
    return newTexts(text, ObjectAttribute::Pointer());
}

SharedPtr<Object> makePrimitive(const QString &value)
{
    return newTexts(Value::newText(value), ObjectAttribute::Pointer());
}

SharedPtr<Object> makePrimitive(const QStringList &value)
{
    const ObjectAttribute attribute(ObjectAttribute::PointerFlag | ObjectAttribute::ArrayFlag,
                                    value.size());
    auto **texts = static_cast<char **>(Value(Kind::Char, nullptr, attribute).allocate());
    for (int i = 0; i < value.size(); ++i) {
        texts[i] = Value::newText(value.at(i));
    }
    return newTexts(texts, attribute);
}

SharedPtr<Object> makeNull(const Class *c)
{
    const Kind kind = primitiveKind(c);
    return Value::hasStorage(kind)
        ? newHandle(kind, nullptr, c, ObjectAttribute::Pointer())
        : SharedPtr<Object>(new Object(nullptr, c, ObjectAttribute::Pointer()));
}

PrimitiveClass::PrimitiveClass(const char *name, int numConstructors)
    : Class(name, Inspector::self()->globalNamespace(), true)
{
    addPrimitiveClass(this);
    setNumMethods(0);
    setNumConstructors(numConstructors);
    setNumProperties(0);
    setNumEvents(0);
    setNumEnums(0);
}

PrimitiveClass::~PrimitiveClass()
{
    removePrimitiveClass(this);
}

SharedPtr<Object> PrimitiveClass::wrap(void *data, const ObjectAttribute &attribute)
{
    return newHandle(kind(), data, this, attribute);
}

SharedPtr<Object> PrimitiveClass::construct(int index, void **arguments)
{
    const Kind kind = primitiveKind(this);
    const ObjectAttribute attribute = naturalAttribute(kind);
    Value value(kind, nullptr, attribute);
    if (!value.hasStorage() || index < 0 || index > 1) {
        return nullptr;
    }
    if (index == 0) {
        return owned(this, value.allocate(), attribute);
    }
    value.setData(arguments ? arguments[0] : nullptr);
    return value.data() ? copied(this, value, attribute) : nullptr;
}

SharedPtr<Object> PrimitiveClass::construct(int index, const ObjectList &arguments,
                                            const Constructor *constructor)
{
    if (!verifyConstruction(this, arguments, constructor)) {
        return nullptr;
    }
    if (index != 1) {
        return construct(index, static_cast<void **>(nullptr));
    }
    // Copied by what the handle says: its bare pointer does not tell a single
    // character from a text, or an empty array from a value.
    const SharedPtr<Object> &source = arguments.front();
    if (!source) {
        return nullptr;
    }
    const Value value = Value::of(source.get());
    const ObjectAttribute attribute = naturalAttribute(primitiveKind(this));
    return value.isReadable() ? copied(this, value, attribute) : nullptr;
}

void PrimitiveClass::deleteObjectData(void *data, const ObjectAttribute &attribute) const
{
    Value(kind(), data, attribute).deallocate();
}

PrimitiveKind PrimitiveClass::kind() const
{
    if (!m_isKindKnown) {
        m_kind = static_cast<signed char>(primitiveKind(this));
        m_isKindKnown = true;
    }
    return static_cast<PrimitiveKind>(m_kind);
}

bool PrimitiveClass::compare(SharedPtr<Object> a, SharedPtr<Object> b) const
{
    if (!a || !b || a->type() != b->type()) {
        return Class::compare(a, b);
    }
    if (a->isNull() && b->isNull()) {
        return true;
    }
    const Value value = Value::of(a.get());
    return value.hasStorage() ? value.equals(Value::of(b.get())) : Class::compare(a, b);
}

Constructor *PrimitiveClass::createConstructor(int index) const
{
    Signature signature(className());
    if (index == 1) {
        const ObjectAttribute attribute = naturalAttribute(primitiveKind(this));
        signature.addArgument(Argument(QStringLiteral("value"), this, attribute));
    }
    return new Constructor(index, this, signature);
}

bool PrimitiveClass::canConvertToInternal(const Class *target, bool sourceIsPointer,
                                          bool targetIsPointer) const
{
    if (!isTarget(target)) {
        return false;
    }
    const Kind source = primitiveKind(this);
    if (source == primitiveKind(target)) {
        return source == Kind::Char && sourceIsPointer != targetIsPointer;
    }
    return Value::hasStorage(source);
}

SharedPtr<Object> PrimitiveClass::convertToInternal(SharedPtr<Object> object, const Class *target,
                                                    bool targetIsPointer)
{
    if (!object || !isTarget(target)) {
        return nullptr;
    }
    const Value source = Value::of(object.get());
    const bool isSame = source.kind() == primitiveKind(target) && source.isNumber();
    if (!source.isReadable() || isSame) {
        return nullptr;
    }
    return copied(target, source,
                  targetIsPointer ? ObjectAttribute::Pointer() : ObjectAttribute::Value());
}

PrimitiveObject::PrimitiveObject(void *data, const Class *c, const ObjectAttribute &attribute)
    : Object(data, c, attribute)
{}

PrimitiveObject::~PrimitiveObject() = default;

int PrimitiveObject::numChildren() const
{
    return 0;
}

void PrimitiveObject::streamObject(QDataStream &stream) const
{
    const Value value = Value::of(this);
    if (value.isNumber()) {
        withNative(value.kind(), [&](auto native) {
            writeNumber<typename decltype(native)::Type>(stream, value);
        });
    } else if (value.kind() != Kind::Char) {
        Object::streamObject(stream);
    } else if (value.shape() == Value::Character) {
        stream << (value.data() ? value.loadCharacter() : qint8(0));
    } else {
        for (int i = 0; i < value.count(); ++i) {
            stream << (value.data() ? value.loadText(i) : nullptr);
        }
    }
}

void PrimitiveObject::objectFromStream(QDataStream &stream)
{
    const Value value = Value::of(this);
    if (value.isNumber()) {
        withNative(value.kind(),
                   [&](auto native) { readNumber<typename decltype(native)::Type>(stream); });
    } else if (value.kind() != Kind::Char) {
        Object::objectFromStream(stream);
    } else if (value.shape() == Value::Character) {
        qint8 character = 0;
        stream >> character;
        if (stream.status() == QDataStream::Ok) {
            setValue<int>(character);
        }
    } else {
        streamTexts(stream);
    }
}

QString PrimitiveObject::toDebugString()
{
    const Value value = Value::of(this);
    if (!value.isReadable()) {
        return Object::toDebugString();
    }
    QString suffix = className();
    if (value.shape() == Value::Text) {
        suffix += QLatin1String("[]");
    } else if (value.shape() == Value::List) {
        suffix += QLatin1String("*[]");
    }
    return toString() + QLatin1String(" : ") + suffix;
}

QString PrimitiveObject::toString()
{
    const Value value = Value::of(this);
    if (!value.isReadable()) {
        return Object::toString();
    }
    if (value.count() == 1) {
        return value.elementText(0);
    }
    QStringList elements;
    for (int i = 0; i < value.count(); ++i) {
        elements << value.elementText(i);
    }
    const QString text = elements.join(QLatin1String(", "));
    return elements.isEmpty() ? text : QLatin1String("[ ") + text + QLatin1String(" ]");
}

int PrimitiveObject::toInteger() const
{
    const Value value = Value::of(this);
    return value.isReadable() ? value.number<qint32>() : 0;
}

qint64 PrimitiveObject::toInt64() const
{
    const Value value = Value::of(this);
    if (value.kind() != Kind::Int64) {
        return Object::toInt64();
    }
    return value.data() ? value.number<qint64>() : 0;
}

double PrimitiveObject::toDouble() const
{
    const Value value = Value::of(this);
    return value.isReadable() ? value.number<double>() : 0.0;
}

bool PrimitiveObject::toBoolean() const
{
    const Value value = Value::of(this);
    return value.isReadable() && value.number<bool>();
}

void PrimitiveObject::fromString(const QString &value)
{
    setValue(value);
}

void PrimitiveObject::fromInteger(int value)
{
    setValue(value);
}

void PrimitiveObject::fromInt64(qint64 value)
{
    if (primitiveKind(type()) == Kind::Int64) {
        setValue(value);
    } else {
        Object::fromInt64(value);
    }
}

void PrimitiveObject::fromDouble(double value)
{
    setValue(value);
}

void PrimitiveObject::fromBoolean(bool value)
{
    setValue(value);
}

SharedPtr<Object> PrimitiveObject::castTo(const Class *target)
{
    const Value source = Value::of(this);
    const Class *const former = type();
    SharedPtr<Object> result = Object::castTo(target);
    const Value retyped = Value::of(this);
    if (!source.isReadable() || !retyped.isReadable() || source.sharesStorageWith(retyped)) {
        return result;
    }
    replaceData(source.reinterpretedAs(retyped), former);
    return result;
}

/** A byte, or the beginning of an empty text, may be all that there is in memory. */
SharedPtr<Object> PrimitiveObject::reference()
{
    const Value value = Value::of(this);
    const bool endsHere = value.shape() == Value::Character && !ObjectAccess::hasRoom(this);
    return endsHere && value.data() ? copied(type(), value, ObjectAttribute::Pointer())
                                    : Object::reference();
}

SharedPtr<Object> PrimitiveObject::dereference()
{
    const Value value = Value::of(this);
    const bool isIndirect = objectAttribute().isPointer() && !objectAttribute().isReference();
    if (!isIndirect || !value.isReadable()) {
        return Object::dereference();
    }
    const bool isEmpty =
        value.count() == 0 || (value.shape() == Value::Text && !*value.loadText(0));
    if (value.shape() == Value::List || (isEmpty && !ObjectAccess::hasRoom(this))) {
        // Its first element, since there is no data that both could use.
        return copied(type(), value, ObjectAttribute::Value());
    }
    ObjectAccess::setRoom(this);
    return Object::dereference();
}

/**
 * Puts @p data and owns it; the old data is of class @p former. The value
 * changes, but not what clients attached to the handle.
 */
void PrimitiveObject::replaceData(void *data, const Class *former)
{
    UserData *kept = userData();
    setUserData(nullptr);
    put(data, former);
    setUserData(kept);
    setAutoDelete(true);
    ObjectAccess::setRoom(this);
}

void PrimitiveObject::setText(char *text)
{
    const bool wasList = Value::of(this).shape() == Value::List;
    replaceData(text, type());
    if (wasList) {
        const int flags = objectAttribute().getFlags() & ~ObjectAttribute::ArrayFlag;
        setObjectAttribute(ObjectAttribute(flags));
    }
}

template <class T>
void PrimitiveObject::setValue(const T &value)
{
    Value current = Value::of(this);
    if (!current.hasStorage()) {
        return;
    }
    if (current.isText()) {
        setText(Value::newText(PrimitiveConversion::toText(value)));
        return;
    }
    ensureData(&current);
    if (current.shape() == Value::Character) {
        current.storeCharacter(PrimitiveConversion::toCharacter(value));
    } else if (current.count() > 0) {
        withNative(current.kind(), [&](auto native) {
            using To = typename decltype(native)::Type;
            current.store(0, PrimitiveConversion::converted<To>(value));
        });
    }
}

/** Gives a null object the storage that @p value, a look at it, describes. */
void PrimitiveObject::ensureData(PrimitiveValue *value)
{
    if (!value->data()) {
        value->setData(value->allocate());
        replaceData(value->data(), type());
    }
}

template <class T>
void PrimitiveObject::readNumber(QDataStream &stream)
{
    Streamed<T> number{};
    stream >> number;
    if (stream.status() != QDataStream::Ok) {
        return;
    }
    Value value = Value::of(this);
    ensureData(&value);
    if (value.count() > 0) {
        value.store(0, PrimitiveConversion::converted<T>(number));
    }
}

void PrimitiveObject::streamTexts(QDataStream &stream)
{
    const Value value = Value::of(this);
    std::vector<std::unique_ptr<char[]>> texts;
    for (int i = 0; i < value.count() && stream.status() == QDataStream::Ok; ++i) {
        bool isNull = false;
        const QByteArray bytes = readText(stream, &isNull);
        const char *text = bytes.constData(); // as far as the first NUL
        texts.emplace_back(isNull ? nullptr : Value::newText(text, std::strlen(text)));
    }
    if (stream.status() != QDataStream::Ok) {
        return;
    }
    if (value.shape() == Value::Text) {
        replaceData(texts.front().release(), type());
        return;
    }
    auto **list = static_cast<char **>(value.allocate());
    std::transform(texts.begin(), texts.end(), list, [](auto &text) { return text.release(); });
    replaceData(list, type());
}

VantrelClass_short::VantrelClass_short() : PrimitiveClass("short", 2) {}
VantrelClass_short::~VantrelClass_short() = default;

VantrelClass_int::VantrelClass_int() : PrimitiveClass("int", 2) {}
VantrelClass_int::~VantrelClass_int() = default;

VantrelClass_long::VantrelClass_long() : PrimitiveClass("long", 2) {}
VantrelClass_long::~VantrelClass_long() = default;

VantrelClass_bool::VantrelClass_bool() : PrimitiveClass("bool", 2) {}
VantrelClass_bool::~VantrelClass_bool() = default;

VantrelClass_char::VantrelClass_char() : PrimitiveClass("char", 2) {}
VantrelClass_char::~VantrelClass_char() = default;

VantrelClass_double::VantrelClass_double() : PrimitiveClass("double", 2) {}
VantrelClass_double::~VantrelClass_double() = default;

VantrelClass_int64::VantrelClass_int64() : PrimitiveClass("int64", 2) {}
VantrelClass_int64::~VantrelClass_int64() = default;

VantrelClass_void::VantrelClass_void() : PrimitiveClass("void", 0) {}
VantrelClass_void::~VantrelClass_void() = default;

VantrelClass_undefined::VantrelClass_undefined() : PrimitiveClass("undefined", 0) {}
VantrelClass_undefined::~VantrelClass_undefined() = default;

SharedPtr<Object> VantrelClass_undefined::wrap(void *, const ObjectAttribute &)
{
    fatalError("Can't wrap object to undefined type");
}

VantrelObject_short::~VantrelObject_short() = default;
VantrelObject_int::~VantrelObject_int() = default;
VantrelObject_long::~VantrelObject_long() = default;
VantrelObject_bool::~VantrelObject_bool() = default;
VantrelObject_char::~VantrelObject_char() = default;
VantrelObject_double::~VantrelObject_double() = default;
VantrelObject_int64::~VantrelObject_int64() = default;
VantrelObject_void::~VantrelObject_void() = default;

} // namespace Vantrel
