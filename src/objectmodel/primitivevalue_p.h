#ifndef VANTREL_PRIMITIVEVALUE_P_H
#define VANTREL_PRIMITIVEVALUE_P_H

#include "objectmodel/primitiveids.h"

#include <QByteArray>
#include <QString>

#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace Vantrel {

class Class;
class Object;
class ObjectAttribute;

/** The primitive types, by the ids of their classes. */
enum class PrimitiveKind {
    None = -1,
    Short = PrimitiveId::Short,
    Int = PrimitiveId::Int,
    Long = PrimitiveId::Long,
    Bool = PrimitiveId::Bool,
    Char = PrimitiveId::Char,
    Double = PrimitiveId::Double,
    Int64 = PrimitiveId::Int64,
    Void = PrimitiveId::Void,
    Undefined = PrimitiveId::Undefined
};

/** That of the nearest class in the hierarchy of @p c that is primitive. */
PrimitiveKind primitiveKind(const Class *c);
/** Null before the Inspector has made it. */
const Class *primitiveClass(PrimitiveKind kind);
// The id of a class alone does not make it primitive: an Inspector that works
// for another process gives ids of its own. So the classes report themselves.
void addPrimitiveClass(const Class *c);
void removePrimitiveClass(const Class *c);

// From one native type to another.
namespace PrimitiveConversion {

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

/** A text is read as a number in base 10; what is none, or does not fit, is 0. */
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

template <class To, class From>
To converted(const From &value)
{
    if constexpr (std::is_same_v<From, QString>) {
        return parsed<To>(value);
    } else if constexpr (std::is_same_v<To, bool>) {
        return value != From(); // NaN is not zero either
    } else if constexpr (std::is_floating_point_v<From> && std::is_integral_v<To>) {
        return truncated<To>(value);
    } else {
        return static_cast<To>(value);
    }
}

/** The low 8 bits of a number. */
template <class From>
qint8 toCharacter(const From &value)
{
    return static_cast<qint8>(converted<qint32>(value));
}

QString toText(bool value);
QString toText(int value);
QString toText(qint64 value);
QString toText(double value);
inline QString toText(const QString &value)
{
    return value;
}

} // namespace PrimitiveConversion

/** Names the native type of a kind in a call of withNative(). */
template <class T>
struct Native
{
    using Type = T;
};

/** Calls @p function with the Native of @p kind; without a call the result is zero. */
template <class F>
auto withNative(PrimitiveKind kind, F function)
{
    switch (kind) {
    case PrimitiveKind::Short:
        return function(Native<qint16>());
    case PrimitiveKind::Int:
    case PrimitiveKind::Long:
        return function(Native<qint32>());
    case PrimitiveKind::Bool:
        return function(Native<bool>());
    case PrimitiveKind::Double:
        return function(Native<double>());
    case PrimitiveKind::Int64:
        return function(Native<qint64>());
    default:
        return decltype(function(Native<qint32>()))();
    }
}

/**
 * A look at what a handle refers to, with everything that is needed to make
 * sense of it. It owns nothing, and asks no operation of the handle but for its
 * data, class and attribute.
 */
class PrimitiveValue
{
public:
    enum Shape { Single, Array, Character, Text, List };

    PrimitiveValue(PrimitiveKind kind, void *data, const ObjectAttribute &attribute);
    static PrimitiveValue of(const Object *object);
    static Shape shapeOf(PrimitiveKind kind, const ObjectAttribute &attribute);

    PrimitiveKind kind() const { return m_kind; }
    Shape shape() const { return m_shape; }
    void *data() const { return m_data; }
    void setData(void *data) { m_data = data; }
    /** Elements of an array or a list, else 1. */
    int count() const { return m_count; }

    bool isNumber() const { return hasStorage() && m_kind != PrimitiveKind::Char; }
    bool isText() const { return m_shape == Text || m_shape == List; }
    /** Whether objects of a kind have a native value at all. */
    static bool hasStorage(PrimitiveKind kind)
    {
        return kind >= PrimitiveKind::Short && kind <= PrimitiveKind::Int64;
    }
    bool hasStorage() const { return hasStorage(m_kind); }
    bool isReadable() const { return m_data && hasStorage(); }

    /**
     * New storage for a value of this kind and shape: zero, empty text, null
     * texts. Like every storage made here it has room for what handles of the
     * other shapes do with it: a character and every text end in NUL, an array
     * has at least one element, and a text can become one character.
     */
    void *allocate() const;
    /** A new text with the bytes of UTF-8 at @p bytes. */
    static char *newText(const char *bytes, std::size_t size);
    static char *newText(const QString &text);
    void deallocate() const;
    /** New storage for the kind and shape of @p target with the bytes of this value. */
    void *reinterpretedAs(PrimitiveValue target) const;
    /** Whether every value of @p other could be one of this, byte by byte. */
    bool sharesStorageWith(const PrimitiveValue &other) const;

    // Everything below needs data of the kind it is asked for.

    // Elements are copied bytewise: castTo() leaves one type in the storage of
    // another, and foreign data need not be aligned.
    template <class T>
    T load(int index) const
    {
        using Stored = std::conditional_t<std::is_same_v<T, bool>, quint8, T>;
        Stored stored;
        std::memcpy(&stored, static_cast<const char *>(m_data) + index * sizeof(T), sizeof(T));
        return static_cast<T>(stored);
    }
    template <class T>
    void store(int index, T element) const
    {
        std::memcpy(static_cast<char *>(m_data) + index * sizeof(T), &element, sizeof(T));
    }
    qint8 loadCharacter() const { return *static_cast<const qint8 *>(m_data); }
    void storeCharacter(qint8 character) const { *static_cast<qint8 *>(m_data) = character; }
    /** An element of a text or a list, may be null. */
    const char *loadText(int index) const;

    /** An element as QString; a character above 127 is taken as Latin-1. */
    QString elementText(int index) const;
    /** The first element in UTF-8, with the bytes of a text as they are; empty when there is none.
     */
    QByteArray firstText() const;
    qint8 firstCharacter() const;
    /** The first element as a number; of a list its length, 0 of an empty array. */
    template <class T>
    T number() const
    {
        using PrimitiveConversion::converted;
        switch (m_shape) {
        case Character:
            return converted<T>(static_cast<qint32>(loadCharacter()));
        case Text:
            return converted<T>(QString::fromUtf8(loadText(0)));
        case List:
            return converted<T>(m_count);
        default:
            break;
        }
        if (m_count == 0) {
            return T();
        }
        return withNative(m_kind, [&](auto native) {
            return converted<T>(load<typename decltype(native)::Type>(0));
        });
    }
    /** Equal values of one kind; null data equals only null data. */
    bool equals(const PrimitiveValue &other) const;

private:
    bool equalsText(const PrimitiveValue &other) const;
    /** Bytes that castTo() can take from or put into this value. */
    std::size_t numBytes() const;
    void fillWithEmptyTexts() const;
    /** For @p size bytes that are still to be written, and the NUL behind them. */
    static char *newText(std::size_t size);
    void normalizeBooleans() const;

    PrimitiveKind m_kind;
    Shape m_shape;
    void *m_data;
    int m_count;
};

} // namespace Vantrel

#endif // VANTREL_PRIMITIVEVALUE_P_H
