#include "objectmodel/primitivevalue_p.h"

#include "objectmodel/blockpool.h"
#include "objectmodel/class.h"
#include "objectmodel/object.h"

#include <algorithm>
#include <new>

namespace Vantrel {

namespace {

using Kind = PrimitiveKind;

const Class *primitiveClasses[static_cast<int>(Kind::Undefined) + 1];

/** The place of the class with that id, or null. */
const Class **placeOf(int id)
{
    const bool isPrimitive = id >= 0 && id <= static_cast<int>(Kind::Undefined);
    return isPrimitive ? &primitiveClasses[id] : nullptr;
}

void deallocateTexts(char **texts, int count)
{
    for (int i = 0; i < count; ++i) {
        delete[] texts[i];
    }
    delete[] texts;
}

std::size_t elementSize(Kind kind)
{
    return withNative(kind, [](auto native) { return sizeof(typename decltype(native)::Type); });
}

} // namespace

PrimitiveKind primitiveKind(const Class *c)
{
    for (; c; c = c->super()) {
        const Class **place = placeOf(c->id());
        if (place && *place == c) {
            return static_cast<Kind>(c->id());
        }
    }
    return Kind::None;
}

const Class *primitiveClass(PrimitiveKind kind)
{
    const Class **place = placeOf(static_cast<int>(kind));
    return place ? *place : nullptr;
}

void addPrimitiveClass(const Class *c)
{
    const Class **place = placeOf(c->id());
    if (place && !*place) {
        *place = c;
    }
}

void removePrimitiveClass(const Class *c)
{
    const Class **place = placeOf(c->id());
    if (place && *place == c) {
        *place = nullptr;
    }
}

namespace PrimitiveConversion {

QString toText(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

QString toText(int value)
{
    return QString::number(value, 10);
}

QString toText(qint64 value)
{
    return QString::number(value, 10);
}

QString toText(double value)
{
    return QString::number(value, 'g', 6);
}

} // namespace PrimitiveConversion

PrimitiveValue::PrimitiveValue(PrimitiveKind kind, void *data, const ObjectAttribute &attribute)
    : m_kind(kind), m_shape(shapeOf(kind, attribute)), m_data(data),
      m_count(m_shape == Array || m_shape == List ? qMax(0, attribute.arrayLength()) : 1)
{}

PrimitiveValue PrimitiveValue::of(const Object *object)
{
    void *data = nullptr;
    object->get(&data);
    // Asking for the attribute is no const operation, but changes nothing.
    return PrimitiveValue(primitiveKind(object->type()), data,
                          const_cast<Object *>(object)->objectAttribute());
}

PrimitiveValue::Shape PrimitiveValue::shapeOf(PrimitiveKind kind, const ObjectAttribute &attribute)
{
    if (kind != Kind::Char) {
        return attribute.isArray() || attribute.arrayLength() > 1 ? Array : Single;
    }
    if (attribute.isPointer() && attribute.isArray()) {
        return List;
    }
    return attribute.isPointer() || attribute.isArray() ? Text : Character;
}

char *PrimitiveValue::newText(std::size_t size)
{
    // A pointer to an empty text can be written to as a character and still be a text.
    char *text = new char[std::max(size, std::size_t(1)) + 1];
    if (size == 0) {
        text[1] = '\0';
    }
    text[size] = '\0';
    return text;
}

char *PrimitiveValue::newText(const char *bytes, std::size_t size)
{
    char *text = newText(size);
    std::memcpy(text, bytes, size);
    return text;
}

char *PrimitiveValue::newText(const QString &text)
{
    // Most texts are ASCII, which needs no conversion.
    const std::size_t size = std::size_t(text.size());
    char *bytes = newText(size);
    const QChar *characters = text.constData();
    ushort all = 0;
    for (std::size_t i = 0; i < size; ++i) {
        all |= characters[i].unicode();
        bytes[i] = static_cast<char>(characters[i].unicode());
    }
    if (all < 0x80) {
        return bytes;
    }
    delete[] bytes;
    const QByteArray encoded = text.toUtf8();
    return newText(encoded.constData(), std::size_t(encoded.size()));
}

void *PrimitiveValue::allocate() const
{
    // A pointer to an empty array can be dereferenced as well.
    const int room = qMax(1, m_count);
    switch (m_shape) {
    case Character:
        // The second byte ends the text that a pointer to the character stands for. Not an
        // array, so that a single character can come from `new char` as well.
        return std::memset(::operator new(2), 0, 2);
    case Text:
        return newText(0);
    case List:
        return new char *[room]();
    default:
        break;
    }
    return withNative(m_kind, [this, room](auto native) -> void * {
        using T = typename decltype(native)::Type;
        if (m_shape == Array) {
            return new T[room]();
        }
        return new (BlockPool::take(sizeof(T))) T();
    });
}

void PrimitiveValue::deallocate() const
{
    switch (m_shape) {
    case Character:
        ::operator delete(m_data);
        return;
    case Text:
        delete[] static_cast<char *>(m_data);
        return;
    case List:
        deallocateTexts(static_cast<char **>(m_data), m_data ? m_count : 0);
        return;
    default:
        break;
    }
    withNative(m_kind, [this](auto native) {
        using T = typename decltype(native)::Type;
        if (m_shape == Array) {
            delete[] static_cast<T *>(m_data);
        } else if (m_data) {
            BlockPool::give(m_data, sizeof(T));
        }
    });
}

void *PrimitiveValue::reinterpretedAs(PrimitiveValue target) const
{
    const std::size_t available = numBytes();
    if (target.m_shape == Text) {
        return newText(static_cast<const char *>(m_data), available);
    }
    target.m_data = target.allocate();
    if (target.m_shape == List) {
        target.fillWithEmptyTexts();
        return target.m_data;
    }
    std::memcpy(target.m_data, m_data, qMin(available, target.numBytes()));
    if (target.m_kind == Kind::Bool) {
        target.normalizeBooleans();
    }
    return target.m_data;
}

bool PrimitiveValue::sharesStorageWith(const PrimitiveValue &other) const
{
    const auto is = [&](Kind a, Kind b) {
        return (m_kind == a && other.m_kind == b) || (m_kind == b && other.m_kind == a);
    };
    return m_kind == other.m_kind || is(Kind::Int, Kind::Long) || is(Kind::Double, Kind::Int64);
}

const char *PrimitiveValue::loadText(int index) const
{
    return m_shape == List ? static_cast<const char *const *>(m_data)[index]
                           : static_cast<const char *>(m_data);
}

QString PrimitiveValue::elementText(int index) const
{
    if (m_shape == Character) {
        const char character = static_cast<char>(loadCharacter());
        return character ? QString(QLatin1Char(character)) : QString();
    }
    if (isText()) {
        return QString::fromUtf8(loadText(index));
    }
    return withNative(m_kind, [&](auto native) {
        return PrimitiveConversion::toText(load<typename decltype(native)::Type>(index));
    });
}

QByteArray PrimitiveValue::firstText() const
{
    if (m_count == 0) {
        return QByteArray();
    }
    return isText() ? QByteArray(loadText(0)) : elementText(0).toUtf8();
}

qint8 PrimitiveValue::firstCharacter() const
{
    if (m_shape == Character) {
        return loadCharacter();
    }
    if (isText()) {
        return static_cast<qint8>(*firstText().constData());
    }
    // By way of the wider type of its own sort, a number keeps its low bits.
    return m_kind == Kind::Double ? PrimitiveConversion::toCharacter(number<double>())
                                  : PrimitiveConversion::toCharacter(number<qint64>());
}

bool PrimitiveValue::equals(const PrimitiveValue &other) const
{
    if (!m_data || !other.m_data) {
        return m_data == other.m_data;
    }
    if (m_kind == Kind::Char) {
        return equalsText(other);
    }
    return m_count == other.m_count && withNative(m_kind, [&](auto native) {
               using T = typename decltype(native)::Type;
               for (int i = 0; i < m_count; ++i) {
                   if (load<T>(i) != other.load<T>(i)) {
                       return false;
                   }
               }
               return true;
           });
}

bool PrimitiveValue::equalsText(const PrimitiveValue &other) const
{
    if (m_shape != List && other.m_shape != List) {
        return firstText() == other.firstText();
    }
    if (m_shape != other.m_shape || m_count != other.m_count) {
        return false;
    }
    for (int i = 0; i < m_count; ++i) {
        if (qstrcmp(loadText(i), other.loadText(i)) != 0) {
            return false;
        }
    }
    return true;
}

std::size_t PrimitiveValue::numBytes() const
{
    switch (m_shape) {
    case Character:
        return 1;
    case Text:
        return std::strlen(loadText(0));
    case List:
        return 0;
    default:
        return m_count * elementSize(m_kind);
    }
}

void PrimitiveValue::fillWithEmptyTexts() const
{
    auto **texts = static_cast<char **>(m_data);
    std::generate_n(texts, m_count, [] { return qstrdup(""); });
}

/** Native code relies on a bool being 0 or 1. */
void PrimitiveValue::normalizeBooleans() const
{
    for (int i = 0; i < m_count; ++i) {
        store(i, load<bool>(i));
    }
}

} // namespace Vantrel
