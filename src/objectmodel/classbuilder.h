#ifndef VANTREL_CLASSBUILDER_H
#define VANTREL_CLASSBUILDER_H

#include "objectmodel/export.h"
#include "objectmodel/nativetypes.h"

#include <functional>
#include <initializer_list>
#include <memory>
#include <tuple>

namespace Vantrel {

class Namespace;

namespace NativeTypes {

/** A C++ function behind the interface by which a class calls its members. */
class VANTREL_EXPORT Function
{
public:
    Function() = default;
    virtual ~Function();
    Q_DISABLE_COPY(Function)

    /**
     * @p self is the native object, null for static functions and constructors;
     * @p arguments holds one pointer per parameter. Neither they nor self are
     * null unless the declared types allow it. @p type is the class of the
     * result. May throw.
     */
    virtual SharedPtr<Object> call(void *self, void **arguments, const Class *type) = 0;
};

template <class... P>
struct Parameters
{
    static std::vector<Type> describe() { return {Parameter<P>::describe()...}; }
};

/** What can be called: its result, and its parameters as they are declared. */
template <class F, class = void>
struct Callable
{
    static_assert(std::is_member_pointer_v<F>,
                  "a function, a pointer to a member or an object with one operator() is needed");
};

template <class R, class... P>
struct Callable<R (*)(P...)>
{
    using ResultType = R;
    using All = std::tuple<P...>;
};

template <class R, class... P>
struct Callable<R (*)(P...) noexcept> : Callable<R (*)(P...)>
{
};

/** That of a member function without its class. */
template <class F>
struct Member;

template <class R, class C, class... P>
struct Member<R (C::*)(P...)> : Callable<R (*)(P...)>
{
};
template <class R, class C, class... P>
struct Member<R (C::*)(P...) const> : Callable<R (*)(P...)>
{
};
template <class R, class C, class... P>
struct Member<R (C::*)(P...) &> : Callable<R (*)(P...)>
{
};
template <class R, class C, class... P>
struct Member<R (C::*)(P...) const &> : Callable<R (*)(P...)>
{
};
template <class R, class C, class... P>
struct Member<R (C::*)(P...) noexcept> : Callable<R (*)(P...)>
{
};
template <class R, class C, class... P>
struct Member<R (C::*)(P...) const noexcept> : Callable<R (*)(P...)>
{
};
template <class R, class C, class... P>
struct Member<R (C::*)(P...) &noexcept> : Callable<R (*)(P...)>
{
};
template <class R, class C, class... P>
struct Member<R (C::*)(P...) const &noexcept> : Callable<R (*)(P...)>
{
};

/** A lambda, or any other object with a single call operator. */
template <class F>
struct Callable<F, std::void_t<decltype(&F::operator())>> : Member<decltype(&F::operator())>
{
};

/** A callable that works on an object: its parameters behind the object itself. */
template <class F, class = void>
struct OnObject
{
    template <class All>
    struct Split
    {
        static_assert(std::is_void_v<All>, "the first parameter has to be the object");
    };
    template <class S, class... P>
    struct Split<std::tuple<S, P...>>
    {
        using Self = S;
        using Rest = std::tuple<P...>;
    };
    using ResultType = typename Callable<F>::ResultType;
    using Self = typename Split<typename Callable<F>::All>::Self;
    using Rest = typename Split<typename Callable<F>::All>::Rest;
};

template <class F>
struct OnObject<F, std::enable_if_t<std::is_member_function_pointer_v<F>>>
{
    using ResultType = typename Member<F>::ResultType;
    using Self = void;
    using Rest = typename Member<F>::All;
};

template <class M, class C>
struct OnObject<M C::*, std::enable_if_t<std::is_member_object_pointer_v<M C::*>>>
{
    using ResultType = const M &;
    using Self = void;
    using Rest = std::tuple<>;
};

/** The object of the class T in the form in which a callable wants it. */
template <class T, class Self>
decltype(auto) self(void *data)
{
    T *object = static_cast<T *>(data);
    if constexpr (std::is_pointer_v<std::remove_reference_t<Self>>) {
        return static_cast<T *>(object);
    } else {
        return static_cast<T &>(*object);
    }
}

template <class Base, class T, class = void>
struct isPlainBase : std::false_type
{
};
template <class Base, class T>
struct isPlainBase<Base, T, std::void_t<decltype(static_cast<T *>(std::declval<Base *>()))>>
    : std::true_type
{
};

template <class R, class Call>
SharedPtr<Object> resultOf(Call &&call, const Class *type)
{
    if constexpr (std::is_void_v<R>) {
        call();
        return voidResult();
    } else {
        return Result<R>::wrap(call(), type);
    }
}

/** Calls @p F on objects of the class T with the parameters P. */
template <class T, class F, class P = typename OnObject<F>::Rest>
class ObjectFunction;

template <class T, class F, class... P>
class ObjectFunction<T, F, std::tuple<P...>> : public Function
{
public:
    explicit ObjectFunction(F function) : m_function(std::move(function)) {}
    SharedPtr<Object> call(void *object, void **arguments, const Class *type) override
    {
        return call(object, arguments, type, std::index_sequence_for<P...>());
    }

private:
    using Traits = OnObject<F>;

    template <std::size_t... i>
    SharedPtr<Object> call(void *object, [[maybe_unused]] void **arguments, const Class *type,
                           std::index_sequence<i...>)
    {
        return resultOf<typename Traits::ResultType>(
            [&]() -> decltype(auto) {
                return std::invoke(m_function, self<T, typename Traits::Self>(object),
                                   Parameter<P>::get(arguments[i])...);
            },
            type);
    }

    F m_function;
};

template <class F, class P = typename Callable<F>::All>
class StaticFunction;

template <class F, class... P>
class StaticFunction<F, std::tuple<P...>> : public Function
{
public:
    explicit StaticFunction(F function) : m_function(std::move(function)) {}
    SharedPtr<Object> call(void *, void **arguments, const Class *type) override
    {
        return call(arguments, type, std::index_sequence_for<P...>());
    }

private:
    template <std::size_t... i>
    SharedPtr<Object> call([[maybe_unused]] void **arguments, const Class *type,
                           std::index_sequence<i...>)
    {
        return resultOf<typename Callable<F>::ResultType>(
            [&]() -> decltype(auto) { return m_function(Parameter<P>::get(arguments[i])...); },
            type);
    }

    F m_function;
};

template <class T, class... P>
class ConstructorFunction : public Function
{
public:
    SharedPtr<Object> call(void *, void **arguments, const Class *type) override
    {
        return ownedData(type, create(arguments, std::index_sequence_for<P...>()));
    }

private:
    template <std::size_t... i>
    static T *create([[maybe_unused]] void **arguments, std::index_sequence<i...>)
    {
        if constexpr (std::is_constructible_v<T, P...>) {
            return new T(Parameter<P>::get(arguments[i])...);
        } else {
            return new T{Parameter<P>::get(arguments[i])...};
        }
    }
};

/**
 * Writes a property. The value arrives as what the getter gives, of the type
 * Read; the setter takes it in its own way. Calls give no result, and throw
 * when the setter refuses the value by returning false.
 */
template <class T, class F, class Read>
class SetterFunction : public Function
{
public:
    explicit SetterFunction(F function) : m_function(std::move(function)) {}
    SharedPtr<Object> call(void *object, void **arguments, const Class *) override
    {
        if constexpr (std::is_member_object_pointer_v<F>) {
            static_cast<T *>(object)->*m_function = value<Read>(arguments[0]);
        } else {
            set(object, arguments[0]);
        }
        return {};
    }

private:
    using Traits = OnObject<F>;

    template <class P>
    static decltype(auto) value(void *data)
    {
        if (!data && !Parameter<P>::describe().isNullable) {
            refuse(QString(), QStringLiteral("there is no null value"));
        }
        return Parameter<P>::get(data);
    }

    void set(void *object, void *data)
    {
        static_assert(std::tuple_size_v<typename Traits::Rest> == 1,
                      "a setter takes the object and the value");
        using Written = std::tuple_element_t<0, typename Traits::Rest>;
        // Of one type up to the manner of passing, so that the setter's own manner counts.
        using P = std::conditional_t<
            std::is_same_v<typename Parameter<Written>::Bare,
                           typename Parameter<Read>::
                               Bare> && Parameter<Written>::isPointer == Parameter<Read>::isPointer,
            Written, Read>;
        const auto call = [&]() -> decltype(auto) {
            return std::invoke(m_function, self<T, typename Traits::Self>(object), value<P>(data));
        };
        if constexpr (std::is_same_v<typename Traits::ResultType, bool>) {
            if (!call()) {
                refuse(QString(), QStringLiteral("the value was refused"));
            }
        } else {
            call();
        }
    }

    F m_function;
};

class ClassDeclarationPrivate;
using Names = std::initializer_list<const char *>;

/** The part of ClassBuilder that does not depend on the type. */
class VANTREL_EXPORT ClassDeclaration
{
public:
    ClassDeclaration(const char *name, Namespace *nameSpace, const std::type_info &info,
                     Delete deleteData);
    ~ClassDeclaration();
    Q_DISABLE_COPY(ClassDeclaration)

    /** @p offset is that of the super class in the data, in bytes. */
    void setSuperClass(const std::type_info &info, std::ptrdiff_t offset);
    void addConstructor(const std::vector<Type> &parameters, Names names,
                        std::unique_ptr<Function> function);
    void addMethod(const char *name, const Type &result, const std::vector<Type> &parameters,
                   Names names, std::unique_ptr<Function> function, Method::Flag flags);
    void deprecate(const char *message);
    void addProperty(const char *name, const Type &type, std::unique_ptr<Function> getter,
                     std::unique_ptr<Function> setter);
    /** @p info is null when the enum has no C++ type. */
    void addEnum(const char *name, const std::type_info *info, std::vector<Enum::Item> items);
    void addEvent(const char *name, std::vector<std::pair<QString, Type>> arguments,
                  Event::Flag flags);
    const Class *add();
    const QStringList &errors() const;

private:
    const std::unique_ptr<ClassDeclarationPrivate> d;
};

} // namespace NativeTypes

/** An argument of an event, see argument(). */
class EventArgument
{
public:
    EventArgument(const QString &name, const NativeTypes::Type &type) : m_name(name), m_type(type)
    {}
    const QString &name() const { return m_name; }
    const NativeTypes::Type &type() const { return m_type; }

private:
    QString m_name;
    NativeTypes::Type m_type;
};

template <class T>
EventArgument argument(const char *name)
{
    return EventArgument(QString::fromUtf8(name), NativeTypes::Parameter<T>::describe());
}

/** A key of the enum type E and its value. */
template <class E>
struct EnumKey
{
    const char *key;
    E value;
};

/**
 * Declares the class T to the object model, without a class of its own derived
 * from Class:
 *
 *     ClassBuilder<Account>("Account", nameSpace)
 *         .superClass<Person>()
 *         .constructor<QString, double>({"owner", "balance"})
 *         .method("deposit", &Account::deposit, {"amount"})
 *         .property("balance", &Account::balance)
 *         .enumeration<Account::Kind>("Kind", {{"Private", Account::Private}})
 *         .event("overdrawn", {argument<double>("amount")})
 *         .add();
 *
 * What a member is made of can be a pointer to a member of T or of a base, a
 * function or a lambda; the latter two take the object first, by reference or
 * pointer, unless the member is static. The result is an ordinary Class, which
 * lives as long as the process. Nothing is registered before add(), except that
 * the type T is known to other declarations as soon as its builder exists, so
 * that two classes can name each other.
 *
 * Members are numbered in the order of their declaration. Names of arguments
 * may be left out from the end. Names are UTF-8, copied.
 */
template <class T>
class ClassBuilder
{
    static_assert(std::is_class_v<T> && std::is_same_v<T, std::remove_cv_t<T>>,
                  "only a class can be declared");

public:
    /** @p nameSpace is not owned; null means the global one. */
    explicit ClassBuilder(const char *name, Namespace *nameSpace = nullptr)
        : m_declaration(name, nameSpace, typeid(T), NativeTypes::deleter<T>())
    {}

    /**
     * Base must be registered before add(), and stand at the very beginning of
     * a T: methods of an ancestor get the same data pointer as those of T.
     */
    template <class Base>
    ClassBuilder &superClass()
    {
        static_assert(std::is_base_of_v<Base, T> && !std::is_same_v<Base, T>,
                      "the super class is no base of the class");
        static_assert(NativeTypes::isPlainBase<Base, T>::value,
                      "the super class must be a single, public and not virtual base");
        alignas(T) char place[sizeof(T)];
        T *object = reinterpret_cast<T *>(place);
        Base *base = object;
        m_declaration.setSuperClass(
            typeid(Base), reinterpret_cast<char *>(base) - reinterpret_cast<char *>(object));
        return *this;
    }

    template <class... P>
    ClassBuilder &constructor(NativeTypes::Names names = {})
    {
        m_declaration.addConstructor(NativeTypes::Parameters<P...>::describe(), names,
                                     std::make_unique<NativeTypes::ConstructorFunction<T, P...>>());
        return *this;
    }

    /** The same name again declares an overload. */
    template <class F>
    ClassBuilder &method(const char *name, F function, NativeTypes::Names names = {})
    {
        using Traits = NativeTypes::OnObject<F>;
        m_declaration.addMethod(name, NativeTypes::Result<typename Traits::ResultType>::describe(),
                                describe<typename Traits::Rest>(), names, onObject(function),
                                Method::NoFlags);
        return *this;
    }

    template <class F>
    ClassBuilder &staticMethod(const char *name, F function, NativeTypes::Names names = {})
    {
        using Traits = NativeTypes::Callable<F>;
        m_declaration.addMethod(
            name, NativeTypes::Result<typename Traits::ResultType>::describe(),
            describe<typename Traits::All>(), names,
            std::make_unique<NativeTypes::StaticFunction<F>>(std::move(function)), Method::Static);
        return *this;
    }

    /** Marks the method declared last; @p message tells what to use instead. */
    ClassBuilder &deprecated(const char *message)
    {
        m_declaration.deprecate(message);
        return *this;
    }

    /** A property that can only be read. */
    template <class Getter>
    ClassBuilder &property(const char *name, Getter getter)
    {
        using Read = typename NativeTypes::OnObject<Getter>::ResultType;
        m_declaration.addProperty(name, NativeTypes::Result<Read>::describe(), onObject(getter),
                                  nullptr);
        return *this;
    }

    /**
     * A property that can be written too. The setter takes what the getter
     * gives; a setter that returns bool refuses a value by returning false.
     */
    template <class Getter, class Setter>
    ClassBuilder &property(const char *name, Getter getter, Setter setter)
    {
        using Read = typename NativeTypes::OnObject<Getter>::ResultType;
        m_declaration.addProperty(
            name, NativeTypes::Result<Read>::describe(), onObject(getter),
            std::make_unique<NativeTypes::SetterFunction<T, Setter, Read>>(std::move(setter)));
        return *this;
    }

    /** An enum of numbers. */
    ClassBuilder &enumeration(const char *name, std::initializer_list<Enum::Item> items)
    {
        m_declaration.addEnum(name, nullptr, items);
        return *this;
    }

    /** The enum type E, which can then be the type of arguments, results and properties. */
    template <class E>
    ClassBuilder &enumeration(const char *name, std::initializer_list<EnumKey<E>> keys)
    {
        static_assert(std::is_enum_v<E> && sizeof(E) <= sizeof(qint32));
        std::vector<Enum::Item> items;
        for (const EnumKey<E> &key : keys) {
            items.push_back({key.key, static_cast<qint32>(key.value)});
        }
        m_declaration.addEnum(name, &typeid(E), std::move(items));
        return *this;
    }

    ClassBuilder &event(const char *name, std::initializer_list<EventArgument> arguments = {},
                        Event::Flag flags = Event::NoFlags)
    {
        std::vector<std::pair<QString, NativeTypes::Type>> types;
        for (const EventArgument &argument : arguments) {
            types.emplace_back(argument.name(), argument.type());
        }
        m_declaration.addEvent(name, std::move(types), flags);
        return *this;
    }

    /**
     * Registers the class. A member with a type that is not registered, or
     * that is declared wrongly, is left out. Null, with nothing registered,
     * when the type or the name is taken or the super class cannot be one.
     * Whatever was refused is reported as a diagnostic, listed by errors(),
     * and all of it together becomes the Inspector's last error.
     */
    const Class *add() { return m_declaration.add(); }

    /** What add() refused, one line each. */
    const QStringList &errors() const { return m_declaration.errors(); }

private:
    template <class P>
    struct Describe;
    template <class... P>
    struct Describe<std::tuple<P...>> : NativeTypes::Parameters<P...>
    {
    };
    template <class P>
    static std::vector<NativeTypes::Type> describe()
    {
        return Describe<P>::describe();
    }

    template <class F>
    static std::unique_ptr<NativeTypes::Function> onObject(F function)
    {
        return std::make_unique<NativeTypes::ObjectFunction<T, F>>(std::move(function));
    }

    NativeTypes::ClassDeclaration m_declaration;
};

/**
 * Makes a class that was written by hand, whose objects have a T as their data,
 * known to declarations and to wrap() and unwrap(). @p c is not owned. From
 * then on Class::deleteObjectData() deletes a T, unless the class overrides it.
 * @return false, with nothing changed, when T belongs to another class, or the
 * class to another type.
 */
template <class T>
bool registerNativeClass(const Class *c)
{
    return c && NativeTypes::registerClass(typeid(T), c, NativeTypes::deleter<T>());
}

} // namespace Vantrel

#endif // VANTREL_CLASSBUILDER_H
