#ifndef VANTREL_GLOBALOBJECT_H
#define VANTREL_GLOBALOBJECT_H

#include "objectmodel/class.h"
#include "objectmodel/object.h"

#include <QByteArray>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace Vantrel {

class GlobalClassPrivate;

/**
 * The class of what scripts see without an object: global functions,
 * properties and enums. There is one, Inspector::globalClass(). Toolkits and
 * applications add to it while it is in use; what was added stays for the life
 * of the process and is found like any other member, by methods(), property()
 * and Inspector::enumerator().
 *
 * Each operation that adds something returns null, with the reason in the
 * Inspector's last error, when the name is empty or taken. Ids follow the order
 * of adding.
 */
class VANTREL_EXPORT GlobalClass : public Class
{
public:
    /** Gets the arguments in the declared form, as many as declared. Null means failure. */
    using Function = std::function<SharedPtr<Object>(const ObjectList &)>;
    using ReadFunction = std::function<SharedPtr<Object>()>;
    /** Gets a value of the declared type, never a null handle; false when it is refused. */
    using WriteFunction = std::function<bool(SharedPtr<Object>)>;
    /** Keys, in UTF-8, and their values. */
    using EnumItems = std::vector<std::pair<QByteArray, qint32>>;

    GlobalClass();
    ~GlobalClass() override;

    /**
     * Adds a function, or an overload of one when the argument types differ.
     * The result is owned by the class and returned so that it can be deprecated.
     */
    Method *addFunction(const Argument &returnType, const Signature &signature, Function function);
    /** Adds a static property; without @p write it is read-only, without @p read write-only. */
    const Property *addProperty(const Argument &type, const QString &name, ReadFunction read,
                                WriteFunction write = {});
    /** Adds an enum. Keys must be different and not empty; both are copied. */
    Enum *addEnum(const QString &name, const EnumItems &items);

private:
    SharedPtr<Object> invoke(int methodId, SharedPtr<Object> object, const ObjectList &arguments,
                             const Method *method) override;
    Method *createMethod(int methodId) const override;
    Property *createProperty(int propertyId) const override;
    Enum *createEnum(int enumId) const override;

    const std::unique_ptr<GlobalClassPrivate> d;
};

} // namespace Vantrel

#endif // VANTREL_GLOBALOBJECT_H
