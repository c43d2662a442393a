#ifndef VANTREL_WRAP_H
#define VANTREL_WRAP_H

#include "objectmodel/export.h"
#include "objectmodel/nativetypes.h"

#include <exception>

namespace Vantrel {

/**
 * A new object for a native value, of the primitive class that the type has.
 * The object owns a copy. A null text gives a null object.
 */
VANTREL_EXPORT SharedPtr<Object> wrap(bool value);
VANTREL_EXPORT SharedPtr<Object> wrap(int value);
VANTREL_EXPORT SharedPtr<Object> wrap(qint64 value);
VANTREL_EXPORT SharedPtr<Object> wrap(double value);
VANTREL_EXPORT SharedPtr<Object> wrap(const char *value);
VANTREL_EXPORT SharedPtr<Object> wrap(const QString &value);
VANTREL_EXPORT SharedPtr<Object> wrap(const QStringList &value);

/**
 * The same for every other type that ClassBuilder knows: further numbers,
 * registered enums, std::string, std::vector, std::map, and values of
 * registered classes, which are copied. A pointer gives an object that does not
 * own what it points to, a null pointer one without data. The result is null,
 * and the last error names the type, when it is not registered.
 */
template <class T, class = std::enable_if_t<!std::is_array_v<std::remove_reference_t<T>>>>
SharedPtr<Object> wrap(T &&value)
{
    using Plain = std::remove_cv_t<std::remove_reference_t<T>>;
    const Class *type = NativeTypes::resolvedClass(NativeTypes::Result<Plain>::describe());
    return type ? NativeTypes::Result<Plain>::wrap(std::forward<T>(value), type)
                : SharedPtr<Object>();
}

namespace NativeTypes {

VANTREL_EXPORT void reportUnwrap(const std::type_info &wanted, const SharedPtr<Object> &object,
                                 const char *reason);

} // namespace NativeTypes

/**
 * The value of an object as a T, which is any type that ClassBuilder accepts as
 * a parameter by value or by pointer. The object is converted as the argument
 * of a call would be, or by its conversion delegate, and one text is a list of
 * one; but pointers, `const char *` among them, refer to the data
 * of @p object itself and are only given where no conversion is needed.
 *
 * When there is no such value the result is T(), @p ok (which may be null)
 * becomes false, and the last error says why. Never throws.
 */
template <class T>
T unwrap(const SharedPtr<Object> &object, bool *ok = nullptr)
{
    static_assert(!std::is_reference_v<T>, "unwrap a value or a pointer");
    static_assert(std::is_default_constructible_v<T>,
                  "there is no T() to stand for a failure; unwrap a pointer to it");
    if (ok) {
        *ok = true;
    }
    try {
        return NativeTypes::take<T>(object, QString(), NativeTypes::Data::AlsoByDelegate);
    } catch (const std::exception &error) {
        NativeTypes::reportUnwrap(typeid(T), object, error.what());
    } catch (...) {
        NativeTypes::reportUnwrap(typeid(T), object, "unknown exception");
    }
    if (ok) {
        *ok = false;
    }
    return T();
}

} // namespace Vantrel

#endif // VANTREL_WRAP_H
