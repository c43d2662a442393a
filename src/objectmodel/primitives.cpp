#include "objectmodel/primitives.h"

#include "objectmodel/diagnostics_p.h"
#include "objectmodel/inspector.h"
#include "objectmodel/primitives_p.h"

#include <QDataStream>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

namespace Vantrel {

namespace {

using Kind = PrimitiveKind;

enum class Shape { Single, Array, Character, Text, List };

/** Names the native type of a kind in a call of withNative(). */
template <class T>
struct Native
{
    using Type = T;
};

/** Calls @p function with the Native of @p kind; a value made from nothing for all but numbers. */
template <class F>
auto withNative(Kind kind, F function)
{
    switch (kind) {
    case Kind::Short:
        return function(Native<qint16>());
    case Kind::Int:
    case Kind::Long:
        return function(Native<qint32>());
    case Kind::Bool:
        return function(Native<bool>());
    case Kind::Double:
        return function(Native<double>());
    case Kind::Int64:
        return function(Native<qint64>());
    default:
        return decltype(function(Native<qint32>()))();
    }
}

bool hasValue(Kind kind)
{
    return kind >= Kind::Short && kind <= Kind::Int64;
}

bool isNumber(Kind kind)
{
    return hasValue(kind) && kind != Kind::Char;
}

Shape shapeOf(Kind kind, const ObjectAttribute &attribute)
{
    if (kind != Kind::Char) {
        return attribute.isArray() || attribute.arrayLength() > 1 ? Shape::Array : Shape::Single;
    }
    if (attribute.isPointer() && attribute.isArray()) {
        return Shape::List;
    }
    return attribute.isPointer() || attribute.isArray() ? Shape::Text : Shape::Character;
}

/** What a handle refers to, and everything that is needed to make sense of it. */
struct Value
{
    Value(Kind k, void *nativeData, const ObjectAttribute &a)
        : kind(k), shape(shapeOf(k, a)), data(nativeData),
          count(shape == Shape::Array || shape == Shape::List ? qMax(0, a.arrayLength()) : 1)
    {}

    static Value of(Object *object)
    {
        void *data = nullptr;
        object->get(&data);
        return Value(primitiveKind(object->type()), data, object->objectAttribute());
    }
    // Asking for the attribute is an operation that is not const, but changes nothing.
    static Value of(const Object *object) { return of(const_cast<Object *>(object)); }

    Kind kind;
    Shape shape;
    void *data;
    /** Elements of an array or a list, else 1. */
    int count;
};

// Elements are copied bytewise: castTo() leaves one type in the storage of
// another, and foreign data need not be aligned.

template <class T>
T load(const Value &value, int index)
{
    using Stored = std::conditional_t<std::is_same_v<T, bool>, quint8, T>;
    Stored result;
    std::memcpy(&result, static_cast<const char *>(value.data) + index * sizeof(T), sizeof(T));
    return static_cast<T>(result);
}

template <class T>
void store(const Value &value, int index, T element)
{
    std::memcpy(static_cast<char *>(value.data) + index * sizeof(T), &element, sizeof(T));
}

qint8 loadCharacter(const Value &value)
{
    return *static_cast<const qint8 *>(value.data);
}

/** @p value must be a text or a list; may be null. */
const char *loadText(const Value &value, int index = 0)
{
    return value.shape == Shape::List ? static_cast<const char *const *>(value.data)[index]
                                      : static_cast<const char *>(value.data);
}

/** A new zero value, stored in the way that the documentation of PrimitiveClass promises. */
void *allocate(const Value &shape)
{
    switch (shape.shape) {
    case Shape::Character:
        // The second NUL is for native code that takes any char pointer for a text. Not an array,
        // so that a single character can come from `new char` as well.
        return std::memset(::operator new(2), 0, 2);
    case Shape::Text:
        return new char[1]();
    case Shape::List:
        return new char *[shape.count]();
    default:
        break;
    }
    return withNative(shape.kind, [&](auto native) -> void * {
        using T = typename decltype(native)::Type;
        return shape.shape == Shape::Array ? new T[shape.count]() : new T();
    });
}

void deallocateList(char **texts, int count)
{
    for (int i = 0; i < count; ++i) {
        delete[] texts[i];
    }
    delete[] texts;
}

void deallocate(const Value &value)
{
    switch (value.shape) {
    case Shape::Character:
        ::operator delete(value.data);
        return;
    case Shape::Text:
        delete[] static_cast<char *>(value.data);
        return;
    case Shape::List:
        if (value.data) {
            deallocateList(static_cast<char **>(value.data), value.count);
        }
        return;
    default:
        break;
    }
    withNative(value.kind, [&](auto native) {
        using T = typename decltype(native)::Type;
        if (value.shape == Shape::Array) {
            delete[] static_cast<T *>(value.data);
        } else {
            delete static_cast<T *>(value.data);
        }
    });
}

/** Without the fraction, kept within the range of T. */
template <class T>
T truncated(double value)
{
    if (std::isnan(value)) {
        return 0;
    }
    // The maximum itself has no exact double when T has 64 bits; the power of two above it has.
    if (value >= std::ldexp(1.0, std::numeric_limits<T>::digits)) {
        return std::numeric_limits<T>::max();
    }
    if (value <= static_cast<double>(std::numeric_limits<T>::min())) {
        return std::numeric_limits<T>::min();
    }
    return static_cast<T>(value);
}

template <class To, class From>
To converted(From value)
{
    if constexpr (std::is_same_v<To, bool>) {
        return value != From(); // NaN is not zero either
    } else if constexpr (std::is_floating_point_v<From> && std::is_integral_v<To>) {
        return truncated<To>(value);
    } else {
        return static_cast<To>(value);
    }
}

template <class T>
T parsed(const QString &text)
{
    if constexpr (std::is_same_v<T, bool>) {
        return text.toLower() == QLatin1String("true") || text.toInt(nullptr, 10) != 0;
    } else if constexpr (std::is_same_v<T, qint16>) {
        return text.toShort(nullptr, 10);
    } else if constexpr (std::is_same_v<T, qint32>) {
        return text.toInt(nullptr, 10);
    } else if constexpr (std::is_same_v<T, qint64>) {
        return text.toLongLong(nullptr, 10);
    } else {
        return text.toDouble();
    }
}

QString textOf(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

QString textOf(int value)
{
    return QString::number(value, 10);
}

QString textOf(qint64 value)
{
    return QString::number(value, 10);
}

QString textOf(double value)
{
    return QString::number(value, 'g', 6);
}

QString textOf(const QString &value)
{
    return value;
}

/** The 8 bits that a character takes from a value. */
template <class T>
qint8 characterOf(const T &value)
{
    if constexpr (std::is_same_v<T, QString>) {
        return static_cast<qint8>(parsed<qint32>(value));
    } else {
        return static_cast<qint8>(converted<qint32>(value));
    }
}

/** The value as the number T; @p value has data. */
template <class T>
T numberOf(const Value &value)
{
    switch (value.shape) {
    case Shape::Character:
        return converted<T>(static_cast<qint32>(loadCharacter(value)));
    case Shape::Text:
        return parsed<T>(QString::fromUtf8(loadText(value)));
    case Shape::List:
        return converted<T>(value.count);
    default:
        break;
    }
    if (value.count == 0) {
        return T();
    }
    return withNative(value.kind, [&](auto native) {
        return converted<T>(load<typename decltype(native)::Type>(value, 0));
    });
}

QString elementText(const Value &value, int index)
{
    if (value.shape == Shape::Character) {
        const char character = static_cast<char>(loadCharacter(value));
        return character ? QString(QLatin1Char(character)) : QString();
    }
    if (value.kind == Kind::Char) {
        return QString::fromUtf8(loadText(value, index));
    }
    return withNative(value.kind, [&](auto native) {
        return textOf(load<typename decltype(native)::Type>(value, index));
    });
}

/** The first element as a text in UTF-8, with the bytes of a text as they are. */
QByteArray firstText(const Value &value)
{
    if (value.count == 0) {
        return QByteArray();
    }
    if (value.shape == Shape::Text || value.shape == Shape::List) {
        return QByteArray(loadText(value));
    }
    return elementText(value, 0).toUtf8();
}

qint8 firstCharacter(const Value &value)
{
    switch (value.shape) {
    case Shape::Character:
        return loadCharacter(value);
    case Shape::Text:
    case Shape::List:
        return static_cast<qint8>(*firstText(value).constData());
    default:
        break;
    }
    return value.kind == Kind::Double ? characterOf(numberOf<double>(value))
                                      : characterOf(numberOf<qint64>(value));
}

bool equalTexts(const Value &a, const Value &b)
{
    if (a.shape != Shape::List && b.shape != Shape::List) {
        return firstText(a) == firstText(b);
    }
    if (a.shape != b.shape || a.count != b.count) {
        return false;
    }
    for (int i = 0; i < a.count; ++i) {
        if (qstrcmp(loadText(a, i), loadText(b, i)) != 0) {
            return false;
        }
    }
    return true;
}

/** @p a and @p b are of one kind. */
bool equalValues(const Value &a, const Value &b)
{
    if (!a.data || !b.data) {
        return a.data == b.data;
    }
    if (a.kind == Kind::Char) {
        return equalTexts(a, b);
    }
    return a.count == b.count && withNative(a.kind, [&](auto native) {
               using T = typename decltype(native)::Type;
               for (int i = 0; i < a.count; ++i) {
                   if (load<T>(a, i) != load<T>(b, i)) {
                       return false;
                   }
               }
               return true;
           });
}

std::size_t elementSize(Kind kind)
{
    return withNative(kind, [](auto native) { return sizeof(typename decltype(native)::Type); });
}

/** Number of bytes that castTo() can take from or put into a value; @p value has data. */
std::size_t numBytes(const Value &value)
{
    switch (value.shape) {
    case Shape::Character:
        return 1;
    case Shape::Text:
        return std::strlen(loadText(value));
    case Shape::List:
        return 0;
    default:
        return value.count * elementSize(value.kind);
    }
}

bool sameStorage(Kind a, Kind b)
{
    const auto isInt = [](Kind kind) { return kind == Kind::Int || kind == Kind::Long; };
    const auto is64Bit = [](Kind kind) { return kind == Kind::Double || kind == Kind::Int64; };
    return a == b || (isInt(a) && isInt(b)) || (is64Bit(a) && is64Bit(b));
}

void fillWithEmptyTexts(const Value &list)
{
    for (int i = 0; i < list.count; ++i) {
        static_cast<char **>(list.data)[i] = qstrdup("");
    }
}

/** New storage for the kind and shape of @p target, filled with the bytes of @p source. */
void *reinterpreted(const Value &source, Value target)
{
    const std::size_t available = numBytes(source);
    if (target.shape == Shape::Text) {
        target.data = new char[available + 1]();
        std::memcpy(target.data, source.data, available);
        return target.data;
    }
    target.data = allocate(target);
    if (target.shape == Shape::List) {
        fillWithEmptyTexts(target);
        return target.data;
    }
    const std::size_t size = numBytes(target);
    std::memcpy(target.data, source.data, qMin(available, size));
    if (target.kind == Kind::Bool) {
        auto *bytes = static_cast<quint8 *>(target.data);
        std::transform(bytes, bytes + size, bytes, [](quint8 byte) { return byte != 0; });
    }
    return target.data;
}

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
        if (stream.readRawData(bytes.data() + size, wanted) != wanted) {
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

template <class T>
void writeNumbers(QDataStream &stream, const Value &value)
{
    for (int i = 0; i < value.count; ++i) {
        stream << static_cast<Streamed<T>>(value.data ? load<T>(value, i) : T());
    }
}

SharedPtr<Object> owned(const Class *c, void *data, const ObjectAttribute &attribute)
{
    SharedPtr<Object> result = c->wrap(data, attribute);
    result->setAutoDelete(true);
    return result;
}

SharedPtr<Object> newText(const Class *c, const QByteArray &text)
{
    return owned(c, qstrdup(text.constData()), ObjectAttribute::Pointer());
}

SharedPtr<Object> newCharacter(const Class *c, qint8 character, const ObjectAttribute &attribute)
{
    const Value shape(Kind::Char, nullptr, ObjectAttribute::Value());
    void *data = allocate(shape);
    *static_cast<qint8 *>(data) = character;
    return owned(c, data, attribute);
}

template <class T>
SharedPtr<Object> newNumber(const Class *c, T value,
                            const ObjectAttribute &attribute = ObjectAttribute::Value())
{
    return owned(c, new T(value), attribute);
}

/** A new object of class @p c with the value of @p source, which has data. */
SharedPtr<Object> convertedValue(const Class *c, const Value &source, bool asPointer)
{
    const Kind kind = primitiveKind(c);
    if (kind == Kind::Char) {
        return asPointer ? newText(c, firstText(source))
                         : newCharacter(c, firstCharacter(source), ObjectAttribute::Value());
    }
    const ObjectAttribute attribute =
        asPointer ? ObjectAttribute::Pointer() : ObjectAttribute::Value();
    return withNative(kind, [&](auto native) {
        return newNumber(c, numberOf<typename decltype(native)::Type>(source), attribute);
    });
}

const Class *classOfKind(Kind kind)
{
    return Inspector::self()->type(static_cast<int>(kind));
}

} // namespace

PrimitiveKind primitiveKind(const Class *c)
{
    for (; c; c = c->super()) {
        const int id = c->id();
        if (id >= static_cast<int>(Kind::Short) && id <= static_cast<int>(Kind::Undefined)) {
            return static_cast<Kind>(id);
        }
    }
    return Kind::None;
}

SharedPtr<Object> makePrimitive(bool value)
{
    return newNumber<bool>(classOfKind(Kind::Bool), value);
}

SharedPtr<Object> makePrimitive(int value)
{
    return newNumber<qint32>(classOfKind(Kind::Int), value);
}

SharedPtr<Object> makePrimitive(long value)
{
    return newNumber<qint32>(classOfKind(Kind::Long), static_cast<qint32>(value));
}

SharedPtr<Object> makePrimitive(long long value)
{
    return newNumber<qint64>(classOfKind(Kind::Int64), value);
}

SharedPtr<Object> makePrimitive(double value)
{
    return newNumber<double>(classOfKind(Kind::Double), value);
}

SharedPtr<Object> makePrimitive(const char *value)
{
    return owned(classOfKind(Kind::Char), qstrdup(value), ObjectAttribute::Pointer());
}

SharedPtr<Object> makePrimitive(const QString &value)
{
    return newText(classOfKind(Kind::Char), value.toUtf8());
}

SharedPtr<Object> makePrimitive(const QStringList &value)
{
    const ObjectAttribute attribute(ObjectAttribute::PointerFlag | ObjectAttribute::ArrayFlag,
                                    value.size());
    auto **texts = new char *[value.size()];
    for (int i = 0; i < value.size(); ++i) {
        texts[i] = qstrdup(value.at(i).toUtf8().constData());
    }
    return owned(classOfKind(Kind::Char), texts, attribute);
}

PrimitiveClass::PrimitiveClass(const char *name, int numConstructors)
    : Class(name, Inspector::self()->globalNamespace(), true)
{
    setNumMethods(0);
    setNumConstructors(numConstructors);
    setNumProperties(0);
    setNumEvents(0);
    setNumEnums(0);
}

PrimitiveClass::~PrimitiveClass() = default;

SharedPtr<Object> PrimitiveClass::wrap(void *data, const ObjectAttribute &attribute)
{
    switch (primitiveKind(this)) {
    case Kind::Short:
        return new VantrelObject_short(data, this, attribute);
    case Kind::Int:
        return new VantrelObject_int(data, this, attribute);
    case Kind::Long:
        return new VantrelObject_long(data, this, attribute);
    case Kind::Bool:
        return new VantrelObject_bool(data, this, attribute);
    case Kind::Char:
        return new VantrelObject_char(data, this, attribute);
    case Kind::Double:
        return new VantrelObject_double(data, this, attribute);
    case Kind::Int64:
        return new VantrelObject_int64(data, this, attribute);
    default:
        return new VantrelObject_void(data, this, attribute);
    }
}

SharedPtr<Object> PrimitiveClass::construct(int index, void **arguments)
{
    const Kind kind = primitiveKind(this);
    const bool isText = kind == Kind::Char;
    const ObjectAttribute attribute =
        isText ? ObjectAttribute::Pointer() : ObjectAttribute::Value();
    if (!hasValue(kind) || index < 0 || index > 1) {
        return nullptr;
    }
    if (index == 0) {
        return owned(this, allocate(Value(kind, nullptr, attribute)), attribute);
    }
    if (!arguments || !arguments[0]) {
        return nullptr;
    }
    return convertedValue(this, Value(kind, arguments[0], attribute), isText);
}

SharedPtr<Object> PrimitiveClass::construct(int index, const ObjectList &arguments,
                                            const Constructor *constructor)
{
    const int expected = constructor->signature().numArguments();
    if (arguments.size() != static_cast<std::size_t>(expected)) {
        printDiagnostic("Constructor::construct %s: %d arguments expected, %lu given\n",
                        qPrintable(className()), expected,
                        static_cast<unsigned long>(arguments.size()));
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
    const bool hasSource = value.data && hasValue(value.kind);
    return hasSource ? convertedValue(this, value, primitiveKind(this) == Kind::Char) : nullptr;
}

void PrimitiveClass::deleteObjectData(void *data, const ObjectAttribute &attribute) const
{
    deallocate(Value(primitiveKind(this), data, attribute));
}

bool PrimitiveClass::compare(SharedPtr<Object> a, SharedPtr<Object> b) const
{
    const bool isOneClass = a && b && a->type() == b->type();
    if (!isOneClass || !hasValue(primitiveKind(a->type()))) {
        return Class::compare(a, b);
    }
    return equalValues(Value::of(a.get()), Value::of(b.get()));
}

Constructor *PrimitiveClass::createConstructor(int index) const
{
    Signature signature(className());
    if (index == 1) {
        const bool isText = primitiveKind(this) == Kind::Char;
        const ObjectAttribute attribute =
            isText ? ObjectAttribute::Pointer() : ObjectAttribute::Value();
        signature.addArgument(Argument(QStringLiteral("value"), this, attribute));
    }
    return new Constructor(index, this, signature);
}

bool PrimitiveClass::canConvertToInternal(const Class *target, bool sourceIsPointer,
                                          bool targetIsPointer) const
{
    const Kind from = primitiveKind(this);
    const Kind to = primitiveKind(target);
    if (!hasValue(from) || !hasValue(to) || target->id() != static_cast<int>(to)) {
        return false;
    }
    return from != to || (from == Kind::Char && sourceIsPointer != targetIsPointer);
}

SharedPtr<Object> PrimitiveClass::convertToInternal(SharedPtr<Object> object, const Class *target,
                                                    bool targetIsPointer)
{
    if (!object || !target) {
        return nullptr;
    }
    const Value source = Value::of(object.get());
    const Kind to = primitiveKind(target);
    const bool isPossible = source.data && hasValue(source.kind) && hasValue(to)
        && target->id() == static_cast<int>(to);
    if (!isPossible || (source.kind == to && to != Kind::Char)) {
        return nullptr;
    }
    return convertedValue(target, source, targetIsPointer);
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
    if (isNumber(value.kind)) {
        withNative(value.kind, [&](auto native) {
            writeNumbers<typename decltype(native)::Type>(stream, value);
        });
    } else if (value.kind != Kind::Char) {
        Object::streamObject(stream);
    } else if (value.shape == Shape::Character) {
        stream << (value.data ? loadCharacter(value) : qint8(0));
    } else {
        for (int i = 0; i < value.count; ++i) {
            stream << (value.data ? loadText(value, i) : nullptr);
        }
    }
}

void PrimitiveObject::objectFromStream(QDataStream &stream)
{
    const Value value = Value::of(this);
    if (isNumber(value.kind)) {
        withNative(value.kind,
                   [&](auto native) { streamNumbers<typename decltype(native)::Type>(stream); });
    } else if (value.kind != Kind::Char) {
        Object::objectFromStream(stream);
    } else if (value.shape == Shape::Character) {
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
    static const char *const names[] = {"short", "int", "long", "bool", "char", "double", "int64"};
    const Value value = Value::of(this);
    if (!value.data || !hasValue(value.kind)) {
        return Object::toDebugString();
    }
    QString suffix = QLatin1String(names[static_cast<int>(value.kind)]);
    if (value.shape == Shape::Text) {
        suffix += QLatin1String("[]");
    } else if (value.shape == Shape::List) {
        suffix += QLatin1String("*[]");
    }
    return toString() + QLatin1String(" : ") + suffix;
}

QString PrimitiveObject::toString()
{
    const Value value = Value::of(this);
    if (!value.data || !hasValue(value.kind)) {
        return Object::toString();
    }
    QStringList elements;
    for (int i = 0; i < value.count; ++i) {
        elements << elementText(value, i);
    }
    const QString text = elements.join(QLatin1String(", "));
    return value.count > 1 ? QLatin1String("[ ") + text + QLatin1String(" ]") : text;
}

int PrimitiveObject::toInteger() const
{
    const Value value = Value::of(this);
    return value.data && hasValue(value.kind) ? numberOf<qint32>(value) : 0;
}

qint64 PrimitiveObject::toInt64() const
{
    const Value value = Value::of(this);
    if (value.kind != Kind::Int64) {
        return Object::toInt64();
    }
    return value.data ? numberOf<qint64>(value) : 0;
}

double PrimitiveObject::toDouble() const
{
    const Value value = Value::of(this);
    return value.data && hasValue(value.kind) ? numberOf<double>(value) : 0.0;
}

bool PrimitiveObject::toBoolean() const
{
    const Value value = Value::of(this);
    return value.data && hasValue(value.kind) && numberOf<bool>(value);
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
    const SharedPtr<Object> result = Object::castTo(target);
    const Value retyped = Value::of(this);
    const bool keepsData = !source.data || sameStorage(source.kind, retyped.kind)
        || !hasValue(source.kind) || !hasValue(retyped.kind);
    if (keepsData) {
        return result;
    }
    const bool wasOwned = isAutoDelete();
    // The class would free the old data as if it were of the new type.
    setAutoDelete(false);
    replaceData(reinterpreted(source, retyped));
    if (wasOwned) {
        deallocate(source);
    }
    return result;
}

/** Puts @p data and owns it. The value changes, but not what clients attached to the handle. */
void PrimitiveObject::replaceData(void *data)
{
    UserData *kept = userData();
    setUserData(nullptr);
    put(data);
    setUserData(kept);
    setAutoDelete(true);
}

void PrimitiveObject::setText(const QByteArray &text)
{
    replaceData(qstrdup(text.constData()));
    const ObjectAttribute attribute = objectAttribute();
    if (shapeOf(Kind::Char, attribute) == Shape::List) {
        setObjectAttribute(ObjectAttribute(attribute.getFlags() & ~ObjectAttribute::ArrayFlag));
    }
}

template <class T>
void PrimitiveObject::setValue(const T &value)
{
    Value current = Value::of(this);
    if (!hasValue(current.kind)) {
        return;
    }
    if (current.shape == Shape::Text || current.shape == Shape::List) {
        setText(textOf(value).toUtf8());
        return;
    }
    if (!current.data) {
        current.data = allocate(current);
        replaceData(current.data);
    }
    if (current.shape == Shape::Character) {
        *static_cast<qint8 *>(current.data) = characterOf(value);
    } else if (current.count > 0) {
        withNative(current.kind, [&](auto native) {
            using To = typename decltype(native)::Type;
            if constexpr (std::is_same_v<T, QString>) {
                store(current, 0, parsed<To>(value));
            } else {
                store(current, 0, converted<To>(value));
            }
        });
    }
}

template <class T>
void PrimitiveObject::streamNumbers(QDataStream &stream)
{
    Value value = Value::of(this);
    std::vector<Streamed<T>> elements;
    for (int i = 0; i < value.count && stream.status() == QDataStream::Ok; ++i) {
        Streamed<T> element{};
        stream >> element;
        elements.push_back(element);
    }
    if (stream.status() != QDataStream::Ok) {
        return;
    }
    if (!value.data) {
        value.data = allocate(value);
        replaceData(value.data);
    }
    for (int i = 0; i < value.count; ++i) {
        store(value, i, converted<T>(elements[static_cast<std::size_t>(i)]));
    }
}

void PrimitiveObject::streamTexts(QDataStream &stream)
{
    const Value value = Value::of(this);
    std::vector<std::unique_ptr<char[]>> texts;
    for (int i = 0; i < value.count && stream.status() == QDataStream::Ok; ++i) {
        bool isNull = false;
        const QByteArray bytes = readText(stream, &isNull);
        texts.emplace_back(isNull ? nullptr : qstrdup(bytes.constData()));
    }
    if (stream.status() != QDataStream::Ok) {
        return;
    }
    if (value.shape == Shape::Text) {
        replaceData(texts.front().release());
        return;
    }
    auto **list = new char *[texts.size()];
    std::transform(texts.begin(), texts.end(), list, [](auto &text) { return text.release(); });
    replaceData(list);
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
