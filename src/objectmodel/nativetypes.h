#ifndef VANTREL_NATIVETYPES_H
#define VANTREL_NATIVETYPES_H

#include "objectmodel/export.h"
#include "objectmodel/members.h"
#include "objectmodel/object.h"
#include "objectmodel/primitiveids.h"

#include <QStringList>

#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace Vantrel {

/**
 * How C++ types appear in the object model: what declarative registration and
 * the functions wrap() and unwrap() share. Users need none of it by name,
 * except registerNativeClass().
 */
namespace NativeTypes {

enum class Kind { Primitive, Class, Enum, Array, Map };

/** What the declaration of a parameter or a result tells about its type. */
struct Type
{
    Kind kind = Kind::Class;
    const std::type_info *info = nullptr;
    /** The class of a primitive, see PrimitiveId. */
    int primitiveId = -1;
    /** A combination of ObjectAttribute flags. */
    int flags = 0;
    /** Whether native code copes with a null pointer. */
    bool isNullable = false;
    /** The type of the elements of a container. */
    Type (*element)() = nullptr;

    bool isTextList() const
    {
        return primitiveId == PrimitiveId::Char && (flags & ObjectAttribute::ArrayFlag);
    }
};

/** The name as it is written in C++. */
VANTREL_EXPORT QString typeName(const std::type_info &info);

/** Null when the type is not registered. */
VANTREL_EXPORT const Class *classOf(const std::type_info &info);
VANTREL_EXPORT const Enum *enumOf(const std::type_info &info);

using Delete = void (*)(void *data);

/**
 * Objects of @p c have data of the type @p info, which @p deleteData (null: not
 * at all) frees unless the class does so itself.
 * @return false, with nothing changed, when the type belongs to another class
 * or the class to another type already.
 */
VANTREL_EXPORT bool registerClass(const std::type_info &info, const Class *c, Delete deleteData);
/** @return false, with nothing changed, when the type belongs to another enum already. */
VANTREL_EXPORT bool registerEnum(const std::type_info &info, const Enum *e);
/** Forgets a type, if it is that of @p c. */
VANTREL_EXPORT void unregisterClass(const std::type_info &info, const Class *c);

/**
 * The argument of @p type. When it, or the type of its elements, is not
 * registered, @p error names it and the argument has the class "undefined".
 */
VANTREL_EXPORT Argument resolved(const QString &name, const Type &type, QString *error);
/** The class of resolved(), or null with the last error set. */
VANTREL_EXPORT const Class *resolvedClass(const Type &type);

/** A handle of the class @p type that owns @p data; null when the class refuses the data. */
VANTREL_EXPORT SharedPtr<Object> owned(const Class *type, void *data);
/** A new number of the class @p type, of the form in which objects store it. */
VANTREL_EXPORT SharedPtr<Object> ownedNumber(const Class *type, bool value);
VANTREL_EXPORT SharedPtr<Object> ownedNumber(const Class *type, char value);
VANTREL_EXPORT SharedPtr<Object> ownedNumber(const Class *type, qint16 value);
VANTREL_EXPORT SharedPtr<Object> ownedNumber(const Class *type, qint32 value);
VANTREL_EXPORT SharedPtr<Object> ownedNumber(const Class *type, qint64 value);
VANTREL_EXPORT SharedPtr<Object> ownedNumber(const Class *type, double value);
/** A handle that refers to @p data. @p flags are ObjectAttribute flags. */
VANTREL_EXPORT SharedPtr<Object> viewed(const Class *type, const void *data, int flags);
/**
 * The registered class of an object whose dynamic type is @p info, if it is a
 * subclass of @p declared; else @p declared.
 */
VANTREL_EXPORT const Class *mostDerived(const Class *declared, const std::type_info &info);
VANTREL_EXPORT SharedPtr<Object> ownedText(const char *text);
VANTREL_EXPORT SharedPtr<Object> ownedText(const Class *type, const QString &text);
VANTREL_EXPORT SharedPtr<Object> ownedTexts(const QStringList &texts);
VANTREL_EXPORT SharedPtr<Object> ownedArray(const std::vector<SharedPtr<Object>> &items);
VANTREL_EXPORT SharedPtr<Object> ownedMap(const std::map<QString, SharedPtr<Object>> &items);
VANTREL_EXPORT SharedPtr<Object> voidResult();

/**
 * Native data of an object in the form that a type asks for, converted if need
 * be. A list of texts gets a null pointer behind its last text, because native
 * code has no other way to find its end. The data lives as long as this object
 * and the one it was made of.
 */
class VANTREL_EXPORT Data
{
public:
    /** Whether only what an argument of a call would become counts, or also what a delegate gives.
     */
    enum Conversion { AsArgument, AlsoByDelegate };

    Data(const SharedPtr<Object> &object, const Type &type, Conversion conversion = AsArgument);
    ~Data();
    Q_DISABLE_COPY(Data)

    bool isValid() const { return m_error.isEmpty(); }
    /** Why the object does not fit. */
    const QString &error() const { return m_error; }
    /** Whether the data is not the object's own. */
    bool isCopied() const { return m_isCopied; }
    void *pointer() const { return m_pointer; }

private:
    SharedPtr<Object> m_fitting;
    std::vector<char *> m_texts;
    void *m_pointer = nullptr;
    bool m_isCopied = false;
    QString m_error;
};

/** Throws std::invalid_argument; an empty @p element is left out of the text. */
[[noreturn]] VANTREL_EXPORT void refuse(const QString &element, const QString &reason);

template <class P>
struct Parameter;
template <class R>
struct Result;

/** The value of an object; throws std::invalid_argument when it does not fit. */
template <class T>
T take(const SharedPtr<Object> &object, const QString &element = QString(),
       Data::Conversion conversion = Data::AsArgument);
/** A new object for a value; null, with the last error set, when the type is not registered. */
template <class R>
SharedPtr<Object> give(const R &value);

/** How data of the type T is deleted; null when it cannot be. */
template <class T>
Delete deleter()
{
    if constexpr (std::is_destructible_v<T> && !std::is_abstract_v<T>) {
        return [](void *data) { std::default_delete<T>()(static_cast<T *>(data)); };
    } else {
        return nullptr;
    }
}

/** A handle that owns @p data; the data goes, and the result is null, when the class refuses it. */
template <class T>
SharedPtr<Object> ownedData(const Class *type, T *data)
{
    SharedPtr<Object> object = type ? owned(type, data) : SharedPtr<Object>();
    const Delete deleteData = deleter<T>();
    if (!object && deleteData) {
        deleteData(data);
    }
    return object;
}

/**
 * What becomes of values of the type T, which is neither a reference nor const:
 *
 * - describe() is its Type;
 * - isStored tells that the data of an object is a T itself, so that pointers
 *   and references can refer to it;
 * - isRead tells that read() makes a T from the data of an object;
 * - make() gives a new object that owns a copy; @p type is its class.
 *
 * Without a specialization a type is expected to be registered as a class.
 */
template <class T, class = void>
struct Value
{
    static constexpr bool isStored = true;
    static constexpr bool isRead = false;
    static Type describe() { return {Kind::Class, &typeid(T)}; }
    template <class U>
    static SharedPtr<Object> make(U &&value, const Class *type)
    {
        return type ? ownedData(type, new T(std::forward<U>(value))) : SharedPtr<Object>();
    }
};

/** A number that objects of a primitive class store as a Stored. */
template <class T, class Stored, int id>
struct Number
{
    static constexpr bool isStored = std::is_same_v<T, Stored>;
    static constexpr bool isRead = true;
    static Type describe() { return {Kind::Primitive, &typeid(T), id}; }
    // Bytewise, because casts between primitive classes leave one type in the storage of another.
    static T read(const void *data)
    {
        std::conditional_t<std::is_same_v<Stored, bool>, unsigned char, Stored> stored;
        std::memcpy(&stored, data, sizeof stored);
        return static_cast<T>(stored);
    }
    static SharedPtr<Object> make(T value, const Class *type)
    {
        return ownedNumber(type, static_cast<Stored>(value));
    }
};

constexpr int longId = sizeof(long) == sizeof(qint64) ? PrimitiveId::Int64 : PrimitiveId::Long;
using StoredLong = std::conditional_t<longId == PrimitiveId::Int64, qint64, qint32>;

template <>
struct Value<bool> : Number<bool, bool, PrimitiveId::Bool>
{
};
template <>
struct Value<char> : Number<char, char, PrimitiveId::Char>
{
};
template <>
struct Value<signed char> : Number<signed char, qint32, PrimitiveId::Int>
{
};
template <>
struct Value<unsigned char> : Number<unsigned char, qint32, PrimitiveId::Int>
{
};
template <>
struct Value<short> : Number<short, qint16, PrimitiveId::Short>
{
};
template <>
struct Value<unsigned short> : Number<unsigned short, qint32, PrimitiveId::Int>
{
};
template <>
struct Value<int> : Number<int, qint32, PrimitiveId::Int>
{
};
template <>
struct Value<unsigned int> : Number<unsigned int, qint64, PrimitiveId::Int64>
{
};
template <>
struct Value<long> : Number<long, StoredLong, longId>
{
};
template <>
struct Value<unsigned long> : Number<unsigned long, qint64, PrimitiveId::Int64>
{
};
template <>
struct Value<long long> : Number<long long, qint64, PrimitiveId::Int64>
{
};
template <>
struct Value<unsigned long long> : Number<unsigned long long, qint64, PrimitiveId::Int64>
{
};
template <>
struct Value<float> : Number<float, double, PrimitiveId::Double>
{
};
template <>
struct Value<double> : Number<double, double, PrimitiveId::Double>
{
};

template <class T>
struct Value<T, std::enable_if_t<std::is_enum_v<T>>>
{
    static_assert(sizeof(T) <= sizeof(qint32), "values of enums are numbers of 32 bits");
    static constexpr bool isStored = false;
    static constexpr bool isRead = true;
    static Type describe() { return {Kind::Enum, &typeid(T)}; }
    static T read(const void *data) { return static_cast<T>(Value<int>::read(data)); }
    static SharedPtr<Object> make(T value, const Class *type)
    {
        return Value<int>::make(static_cast<int>(value), type);
    }
};

/** What the types of texts have in common; a null text is null where the type knows such a thing.
 */
template <class T, bool nullable>
struct Text
{
    static constexpr bool isStored = false;
    static constexpr bool isRead = true;
    static Type describe()
    {
        return {Kind::Primitive, &typeid(T), PrimitiveId::Char,
                ObjectAttribute::PointerFlag | ObjectAttribute::Const1Flag, nullable};
    }
};

template <>
struct Value<const char *> : Text<const char *, true>
{
    static const char *read(const void *data) { return static_cast<const char *>(data); }
    static SharedPtr<Object> make(const char *value, const Class *) { return ownedText(value); }
};

template <>
struct Value<std::string> : Text<std::string, false>
{
    static std::string read(const void *data) { return static_cast<const char *>(data); }
    static SharedPtr<Object> make(const std::string &value, const Class *)
    {
        return ownedText(value.c_str());
    }
};

template <>
struct Value<QString> : Text<QString, true>
{
    static QString read(const void *data)
    {
        return QString::fromUtf8(static_cast<const char *>(data));
    }
    static SharedPtr<Object> make(const QString &value, const Class *type)
    {
        return ownedText(type, value);
    }
};

template <>
struct Value<QStringList>
{
    static constexpr bool isStored = false;
    static constexpr bool isRead = true;
    static Type describe()
    {
        return {Kind::Primitive, &typeid(QStringList), PrimitiveId::Char,
                ObjectAttribute::PointerFlag | ObjectAttribute::ArrayFlag};
    }
    static QStringList read(const void *data)
    {
        QStringList texts;
        for (auto text = static_cast<const char *const *>(data); *text; ++text) {
            texts << QString::fromUtf8(*text);
        }
        return texts;
    }
    static SharedPtr<Object> make(const QStringList &value, const Class *)
    {
        return ownedTexts(value);
    }
};

template <class T>
struct Value<std::vector<T>>
{
    static constexpr bool isStored = false;
    static constexpr bool isRead = true;
    static Type describe()
    {
        return {Kind::Array, &typeid(std::vector<T>), -1, 0, false, Parameter<T>::describe};
    }
    static std::vector<T> read(const void *data)
    {
        const auto &items = *static_cast<const std::vector<SharedPtr<Object>> *>(data);
        std::vector<T> values;
        values.reserve(items.size());
        for (const SharedPtr<Object> &item : items) {
            values.push_back(take<T>(item, QString::number(values.size())));
        }
        return values;
    }
    static SharedPtr<Object> make(const std::vector<T> &value, const Class *)
    {
        std::vector<SharedPtr<Object>> items;
        items.reserve(value.size());
        for (const auto &item : value) {
            items.push_back(give<T>(item));
        }
        return ownedArray(items);
    }
};

template <class T>
struct Value<std::map<QString, T>>
{
    static constexpr bool isStored = false;
    static constexpr bool isRead = true;
    static Type describe()
    {
        return {Kind::Map, &typeid(std::map<QString, T>), -1, 0, false, Parameter<T>::describe};
    }
    static std::map<QString, T> read(const void *data)
    {
        std::map<QString, T> values;
        for (const auto &item : *static_cast<const std::map<QString, SharedPtr<Object>> *>(data)) {
            values.emplace(item.first, take<T>(item.second, item.first));
        }
        return values;
    }
    static SharedPtr<Object> make(const std::map<QString, T> &value, const Class *)
    {
        std::map<QString, SharedPtr<Object>> items;
        for (const auto &item : value) {
            items.emplace(item.first, give<T>(item.second));
        }
        return ownedMap(items);
    }
};

/** How the declared type of a parameter, or of what unwrap() gives, is served. */
template <class P>
struct Parameter
{
    using Plain = std::remove_cv_t<std::remove_reference_t<P>>;
    using Pointee = std::remove_pointer_t<Plain>;
    static constexpr bool isText =
        std::is_pointer_v<Plain> && std::is_same_v<std::remove_cv_t<Pointee>, char>;
    static constexpr bool isPointer = std::is_pointer_v<Plain> && !isText;
    static constexpr bool isWritable =
        std::is_lvalue_reference_v<P> && !std::is_const_v<std::remove_reference_t<P>>;
    using Bare = std::conditional_t<isText, const char *, std::remove_cv_t<Pointee>>;
    using V = Value<Bare>;
    /** Whether the parameter refers to the data of the object instead of a value made from it. */
    static constexpr bool refers = isPointer || isWritable || !V::isRead;

    static_assert(!std::is_pointer_v<std::remove_pointer_t<Bare>> || isText,
                  "pointers to pointers have no place in the object model");
    static_assert(!isText || std::is_const_v<Pointee>, "texts are passed as const char *");
    static_assert(!((isPointer || isWritable) && !V::isStored),
                  "objects store this type in another form, so it can only be passed by value or "
                  "const reference");

    static Type describe()
    {
        Type type = V::describe();
        if (isPointer) {
            type.flags |= ObjectAttribute::PointerFlag;
            type.flags |= std::is_const_v<Pointee> ? ObjectAttribute::Const1Flag : 0;
            type.isNullable = true;
        } else if (std::is_reference_v<P> && !(type.flags & ObjectAttribute::PointerFlag)) {
            type.flags |= ObjectAttribute::ReferenceFlag;
            type.flags |=
                std::is_const_v<std::remove_reference_t<P>> ? ObjectAttribute::Const1Flag : 0;
        }
        return type;
    }

    static decltype(auto) get(void *data)
    {
        if constexpr (isPointer) {
            return static_cast<Bare *>(data);
        } else if constexpr (!refers) {
            return V::read(data);
        } else if constexpr (isWritable) {
            return static_cast<Bare &>(*static_cast<Bare *>(data));
        } else if constexpr (std::is_rvalue_reference_v<P>) {
            return Bare(*static_cast<const Bare *>(data)); // the object keeps its own
        } else {
            return static_cast<const Bare &>(*static_cast<const Bare *>(data));
        }
    }
};

/**
 * How results of the declared type R become objects. Values are owned by their
 * object. Pointers and references are not, and the object views what they refer
 * to; but texts, containers, enums and whatever a const reference to a number
 * refers to are values to scripts and always copied.
 */
template <class R>
struct Result
{
    using Plain = std::remove_cv_t<std::remove_reference_t<R>>;
    using Pointee = std::remove_pointer_t<Plain>;
    static constexpr bool isText =
        std::is_pointer_v<Plain> && std::is_same_v<std::remove_cv_t<Pointee>, char>;
    static constexpr bool isPointer = std::is_pointer_v<Plain> && !isText;
    using Bare = std::conditional_t<isText, const char *, std::remove_cv_t<Pointee>>;
    using V = Value<Bare>;
    static constexpr bool isConst =
        std::is_const_v<std::conditional_t<isPointer, Pointee, std::remove_reference_t<R>>>;
    static constexpr bool isView =
        isPointer || (std::is_lvalue_reference_v<R> && V::isStored && !(isConst && V::isRead));

    static_assert(!(isPointer && !V::isStored),
                  "native values of this type can only be given by value or reference");

    static Type describe()
    {
        Type type = V::describe();
        if (isView) {
            type.flags |= isPointer ? ObjectAttribute::PointerFlag : ObjectAttribute::ReferenceFlag;
            type.flags |= isConst ? ObjectAttribute::Const1Flag : 0;
        }
        return type;
    }

    template <class U>
    static SharedPtr<Object> wrap(U &&value, const Class *type)
    {
        if constexpr (isPointer) {
            return view(value, type);
        } else if constexpr (isView) {
            return view(std::addressof(value), type);
        } else {
            return V::make(std::forward<U>(value), type);
        }
    }

private:
    static SharedPtr<Object> view(const Bare *data, const Class *type)
    {
        if constexpr (std::is_polymorphic_v<Bare>) {
            // Only where the whole object begins at the same place can its own class use it.
            if (data && dynamic_cast<const void *>(data) == static_cast<const void *>(data)) {
                type = mostDerived(type, typeid(*data));
            }
        }
        return type ? viewed(type, data, describe().flags) : SharedPtr<Object>();
    }
};

template <>
struct Result<void>
{
    static Type describe() { return {Kind::Primitive, &typeid(void), PrimitiveId::Void}; }
};

template <class T>
T take(const SharedPtr<Object> &object, const QString &element, Data::Conversion conversion)
{
    const Type type = Parameter<T>::describe();
    const Data data(object, type, conversion);
    if (!data.isValid()) {
        refuse(element, data.error());
    }
    if (Parameter<T>::isPointer || Parameter<T>::isText) {
        if (data.isCopied()) {
            refuse(element, QStringLiteral("a pointer to a converted value would not last"));
        }
    } else if (!data.pointer() && !type.isNullable) {
        refuse(element, QStringLiteral("null object given"));
    }
    return Parameter<T>::get(data.pointer());
}

template <class R>
SharedPtr<Object> give(const R &value)
{
    const Class *type = resolvedClass(Result<R>::describe());
    return type ? Result<R>::wrap(value, type) : SharedPtr<Object>();
}

} // namespace NativeTypes

} // namespace Vantrel

#endif // VANTREL_NATIVETYPES_H
