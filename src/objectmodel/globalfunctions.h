#ifndef VANTREL_GLOBALFUNCTIONS_H
#define VANTREL_GLOBALFUNCTIONS_H

#include "objectmodel/classbuilder.h"
#include "objectmodel/export.h"
#include "objectmodel/object.h"

#include <functional>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace Vantrel {

namespace NativeTypes {

/** A parameter or a result of a global function: of a native type, or a handle as it is. */
struct GlobalType
{
    Type type;
    bool isHandle = false;
};

template <class T>
constexpr bool isHandle =
    std::is_same_v<std::remove_cv_t<std::remove_reference_t<T>>, SharedPtr<Object>>;

template <class P>
GlobalType globalParameter()
{
    if constexpr (isHandle<P>) {
        static_assert(!std::is_lvalue_reference_v<P> || std::is_const_v<std::remove_reference_t<P>>,
                      "handles are passed by value or const reference");
        return {Type(), true};
    } else {
        return {Parameter<P>::describe()};
    }
}

template <class R>
GlobalType globalResult()
{
    if constexpr (isHandle<R>) {
        return {Type(), true};
    } else {
        return {Result<R>::describe()};
    }
}

/** A callable behind one type: it gets each argument as a handle and as native data. */
using GlobalCall =
    std::function<SharedPtr<Object>(const ObjectList &handles, void **data, const Class *type)>;

template <class F, class P = typename Callable<F>::All>
class GlobalFunction;

template <class F, class... P>
class GlobalFunction<F, std::tuple<P...>>
{
public:
    // Shared, so that a callable that cannot be copied is good enough.
    explicit GlobalFunction(F function) : m_function(std::make_shared<F>(std::move(function))) {}

    static std::vector<GlobalType> describe() { return {globalParameter<P>()...}; }

    SharedPtr<Object> operator()(const ObjectList &handles, void **data, const Class *type) const
    {
        return call(handles, data, type, std::index_sequence_for<P...>());
    }

private:
    using R = typename Callable<F>::ResultType;

    template <class Q>
    static decltype(auto) passed([[maybe_unused]] const SharedPtr<Object> &handle,
                                 [[maybe_unused]] void *data)
    {
        if constexpr (isHandle<Q>) {
            return SharedPtr<Object>(handle);
        } else {
            return Parameter<Q>::get(data);
        }
    }

    template <std::size_t... i>
    SharedPtr<Object> call([[maybe_unused]] const ObjectList &handles, [[maybe_unused]] void **data,
                           const Class *type, std::index_sequence<i...>) const
    {
        if constexpr (isHandle<R>) {
            return (*m_function)(passed<P>(handles[i], data[i])...);
        } else {
            return resultOf<R>(
                [&]() -> decltype(auto) {
                    return (*m_function)(passed<P>(handles[i], data[i])...);
                },
                type);
        }
    }

    std::shared_ptr<F> m_function;
};

VANTREL_EXPORT Method *addGlobalFunction(const char *name, const GlobalType &result,
                                         const std::vector<GlobalType> &parameters, Names names,
                                         GlobalCall call);
/** @p setter is empty for a property that can only be read. */
VANTREL_EXPORT const Property *addGlobalProperty(const char *name, const GlobalType &type,
                                                 GlobalCall getter, GlobalCall setter);
VANTREL_EXPORT Enum *addGlobalEnum(const char *name, const std::type_info *info,
                                   const std::vector<Enum::Item> &items);

} // namespace NativeTypes

/**
 * Adds a function, a lambda or another object with one call operator to the
 * global class:
 *
 *     addFunction("scale", [](double value, double by) { return value * by; }, {"value", "by"});
 *
 * Types are those of ClassBuilder, and SharedPtr<Object> for a handle of any
 * class, which may be null or invalidated. Names of arguments may be left out
 * from the end. An exception becomes the Inspector's last error.
 * @return the function, so that it can be deprecated; null, with the reason in
 * the last error, when a type is not registered or the global class refuses it.
 */
template <class F>
Method *addFunction(const char *name, F function, NativeTypes::Names names = {})
{
    using Caller = NativeTypes::GlobalFunction<F>;
    return NativeTypes::addGlobalFunction(
        name, NativeTypes::globalResult<typename NativeTypes::Callable<F>::ResultType>(),
        Caller::describe(), names, Caller(std::move(function)));
}

/** Adds a global property that can only be read. @return null as addFunction(). */
template <class Getter>
const Property *addProperty(const char *name, Getter getter)
{
    using R = typename NativeTypes::Callable<Getter>::ResultType;
    return NativeTypes::addGlobalProperty(name, NativeTypes::globalResult<R>(),
                                          NativeTypes::GlobalFunction<Getter>(std::move(getter)),
                                          {});
}

/**
 * Adds a global property. The setter takes what the getter gives; one that
 * returns bool refuses a value by returning false. @return null as addFunction().
 */
template <class Getter, class Setter>
const Property *addProperty(const char *name, Getter getter, Setter setter)
{
    using R = typename NativeTypes::Callable<Getter>::ResultType;
    using Parameters = typename NativeTypes::Callable<Setter>::All;
    static_assert(std::tuple_size_v<Parameters> == 1, "a setter takes the value");
    static_assert(
        std::is_same_v<std::decay_t<std::tuple_element_t<0, Parameters>>, std::decay_t<R>>,
        "the setter must take what the getter gives");
    const auto set = [write = std::make_shared<Setter>(std::move(setter))](
                         std::tuple_element_t<0, Parameters> value) {
        using Written = typename NativeTypes::Callable<Setter>::ResultType;
        if constexpr (std::is_same_v<Written, bool>) {
            if (!(*write)(std::forward<std::tuple_element_t<0, Parameters>>(value))) {
                NativeTypes::refuse(QString(), QStringLiteral("the value was refused"));
            }
        } else {
            (*write)(std::forward<std::tuple_element_t<0, Parameters>>(value));
        }
    };
    return NativeTypes::addGlobalProperty(
        name, NativeTypes::globalResult<R>(),
        NativeTypes::GlobalFunction<Getter>(std::move(getter)),
        NativeTypes::GlobalFunction<std::decay_t<decltype(set)>>(set));
}

/** Adds a global enum of numbers. @return null as addFunction(). */
inline Enum *addEnum(const char *name, std::initializer_list<Enum::Item> items)
{
    return NativeTypes::addGlobalEnum(name, nullptr, items);
}

/**
 * Adds the enum type E, which can then be the type of arguments, results and
 * properties. @return null as addFunction().
 */
template <class E>
Enum *addEnum(const char *name, std::initializer_list<EnumKey<E>> keys)
{
    static_assert(std::is_enum_v<E> && sizeof(E) <= sizeof(qint32));
    std::vector<Enum::Item> items;
    for (const EnumKey<E> &key : keys) {
        items.push_back({key.key, static_cast<qint32>(key.value)});
    }
    return NativeTypes::addGlobalEnum(name, &typeid(E), items);
}

} // namespace Vantrel

#endif // VANTREL_GLOBALFUNCTIONS_H
