#ifndef VANTREL_ARGUMENTS_P_H
#define VANTREL_ARGUMENTS_P_H

#include "objectmodel/object_p.h"

#include <QString>
#include <QVarLengthArray>

namespace Vantrel {

class Argument;
class Class;
class Constructor;
class Method;
class Signature;

/**
 * The arguments of one call in the form that a signature declares. Arguments
 * that fit are used as they are; the others are replaced by their conversions,
 * which live as long as this object.
 */
class AdaptedArguments
{
public:
    AdaptedArguments(const Signature &signature, const ObjectList &arguments);

    /** False when the number is wrong or an argument cannot be converted. */
    bool isValid() const { return m_valid; }
    const ObjectList &list() const { return m_converted.empty() ? m_given : m_converted; }

    /** Why the arguments do not fit; empty when they do. */
    static QString mismatch(const Signature &signature, const ObjectList &arguments);

private:
    const ObjectList &m_given;
    ObjectList m_converted;
    bool m_valid;
};

/**
 * @p value in the form that @p declared asks for: itself, or its conversion;
 * null when there is neither. What takes any object takes null handles too.
 */
SharedPtr<Object> adapted(const SharedPtr<Object> &value, const Argument &declared);

/**
 * Whether native code can read @p value, which is of the declared class, in the
 * declared shape as it stands. A null object fits a pointer only.
 */
bool fits(const SharedPtr<Object> &value, const Argument &declared);
/**
 * The data of a single number that can be passed as it stands, which is what
 * most arguments are; null for all others, which need the checks above.
 */
inline void *plainData(const SharedPtr<Object> &value, const Argument &declared)
{
    const Object *object = value.get();
    const bool isPlain = object && object->type() == declared.type()
        && ObjectAccess::isPlainNumber(object) && !declared.isArray();
    return isPlain ? ObjectAccess::data(object) : nullptr;
}
/** Whether values, as many as @p signature has arguments, can all be passed as they stand. */
bool areAsDeclared(const ObjectList &values, const Signature &signature);

/** Why adapted() gives null; empty when it does not. */
QString mismatch(const SharedPtr<Object> &value, const Argument &declared);

// The checks of every call; each reports what it refuses.
bool verifyCall(const Class *c, const SharedPtr<Object> &object, const ObjectList &arguments,
                const Method *method);
bool verifyConstruction(const Class *c, const ObjectList &arguments,
                        const Constructor *constructor);

/** One native pointer for each argument, on the stack for the usual few. */
class NativeArguments
{
public:
    explicit NativeArguments(const ObjectList &arguments);
    void **data() { return m_pointers.data(); }

private:
    QVarLengthArray<void *, 8> m_pointers;
};

} // namespace Vantrel

#endif // VANTREL_ARGUMENTS_P_H
