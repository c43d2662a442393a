#ifndef VANTREL_TESTCLASS_H
#define VANTREL_TESTCLASS_H

#include "objectmodel/class.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/primitiveids.h"

#include <functional>
#include <vector>

namespace VantrelTest {

using namespace Vantrel;

inline Inspector *inspector()
{
    return Inspector::self();
}

inline const Class *primitive(int id)
{
    return inspector()->type(id);
}

inline Argument intArgument(const char *name = "")
{
    return Argument(QString::fromLatin1(name), primitive(PrimitiveId::Int));
}

inline Argument doubleArgument(const char *name = "")
{
    return Argument(QString::fromLatin1(name), primitive(PrimitiveId::Double));
}

inline Argument textArgument(const char *name = "")
{
    return Argument(QString::fromLatin1(name), primitive(PrimitiveId::Char),
                    ObjectAttribute::Pointer());
}

/**
 * A class whose members are declared one by one and whose raw slots are
 * functions of the test. Every instance registers and lives as long as the
 * process.
 */
class TestClass : public Class
{
public:
    explicit TestClass(const char *name, const Class *superClass = nullptr)
        : TestClass(name, inspector()->globalNamespace(), superClass)
    {
    }
    TestClass(const char *name, Namespace *nameSpace, const Class *superClass = nullptr)
        : Class(name, nameSpace, true), m_super(superClass)
    {
        setNumMethods(0);
        setNumConstructors(0);
        setNumProperties(0);
        setNumEvents(0);
        setNumEnums(0);
    }

    TestClass &addMethod(const char *name, const FList<Argument> &arguments = {},
                      int flags = Method::NoFlags, const Class *result = nullptr)
    {
        m_methods.push_back({QString::fromLatin1(name), arguments, flags, result});
        setNumMethods(int(m_methods.size()));
        return *this;
    }
    TestClass &addConstructor(const FList<Argument> &arguments)
    {
        m_constructors.push_back(arguments);
        setNumConstructors(int(m_constructors.size()));
        return *this;
    }
    TestClass &addProperty(const char *name, const Argument &type,
                        int flags = Property::Readable | Property::Writable)
    {
        m_properties.push_back({QString::fromLatin1(name), type, flags});
        setNumProperties(int(m_properties.size()));
        return *this;
    }
    TestClass &addEvent(const char *name)
    {
        m_events.push_back(QString::fromLatin1(name));
        setNumEvents(int(m_events.size()));
        return *this;
    }
    TestClass &addEnum(const char *name, const Enum::Item *items)
    {
        m_enums.push_back({QString::fromLatin1(name), items});
        setNumEnums(int(m_enums.size()));
        return *this;
    }
    void undeclare()
    {
        setNumMethods(-1);
        setNumProperties(-1);
        setNumEvents(-1);
        setNumEnums(-1);
        setNumConstructors(-1);
    }
    int declaredAndInheritedProperties() const { return numPropertiesInternal(); }

    std::function<SharedPtr<Object>(int, void *, void **, const Class *)> onInvoke;
    std::function<SharedPtr<Object>(int, void **)> onConstruct;
    std::function<SharedPtr<Object>(int, void *)> onGet;
    std::function<bool(int, void *, void *)> onSet;
    std::function<bool(const Class *, bool, bool)> onCanConvert;
    std::function<SharedPtr<Object>(SharedPtr<Object>, const Class *)> onConvert;
    std::function<void(void *)> onDelete;
    mutable std::vector<int> createdMethods;
    mutable int createdDescriptors = 0;
    /** Factories answer null for these own indices. */
    std::vector<int> missing;

private:
    SharedPtr<Object> invoke(int id, void *data, void **arguments, const Class *type) override
    {
        return onInvoke ? onInvoke(id, data, arguments, type) : SharedPtr<Object>();
    }
    bool setProperty(int id, void *data, void *value) const override
    {
        return onSet && onSet(id, data, value);
    }
    SharedPtr<Object> getProperty(int id, void *data, const Class *) override
    {
        return onGet ? onGet(id, data) : SharedPtr<Object>();
    }
    SharedPtr<Object> construct(int index, void **arguments) override
    {
        return onConstruct ? onConstruct(index, arguments) : SharedPtr<Object>();
    }
    void deleteObjectData(void *data, const ObjectAttribute &) const override
    {
        if (onDelete) {
            onDelete(data);
        }
    }
    void initSuperClass() override { setSuperClass(m_super); }
    bool isMissing(int index) const
    {
        return std::find(missing.begin(), missing.end(), index) != missing.end();
    }
    Constructor *createConstructor(int index) const override
    {
        ++createdDescriptors;
        return isMissing(index)
            ? nullptr
            : new Constructor(index, this, Signature(QString(), m_constructors.at(index)));
    }
    Method *createMethod(int id) const override
    {
        ++createdDescriptors;
        createdMethods.push_back(id);
        const int own = id - superClassOffset(MethodOffset);
        const MethodSpec spec = m_methods.at(own);
        return isMissing(own) ? nullptr
                              : new Method(id, this, Argument(spec.result),
                                           Signature(spec.name, spec.arguments), spec.flags);
    }
    Property *createProperty(int id) const override
    {
        ++createdDescriptors;
        const PropertySpec &spec = m_properties.at(id - superClassOffset(PropertyOffset));
        return new Property(id, this, spec.type, spec.name, spec.flags);
    }
    Event *createEvent(int id) const override
    {
        ++createdDescriptors;
        return new Event(id, this, Signature(m_events.at(id - superClassOffset(EventOffset))));
    }
    Enum *createEnum(int id) const override
    {
        ++createdDescriptors;
        const EnumSpec &spec = m_enums.at(id - superClassOffset(EnumOffset));
        return new Enum(id, this, spec.name, spec.items);
    }
    bool canConvertToInternal(const Class *target, bool source, bool wanted) const override
    {
        return onCanConvert && onCanConvert(target, source, wanted);
    }
    SharedPtr<Object> convertToInternal(SharedPtr<Object> object, const Class *target,
                                        bool) override
    {
        return onConvert ? onConvert(object, target) : SharedPtr<Object>();
    }

    struct MethodSpec
    {
        QString name;
        FList<Argument> arguments;
        int flags;
        const Class *result;
    };
    struct PropertySpec
    {
        QString name;
        Argument type;
        int flags;
    };
    struct EnumSpec
    {
        QString name;
        const Enum::Item *items;
    };

    const Class *m_super;
    std::vector<MethodSpec> m_methods;
    std::vector<FList<Argument>> m_constructors;
    std::vector<PropertySpec> m_properties;
    std::vector<QString> m_events;
    std::vector<EnumSpec> m_enums;
};

} // namespace VantrelTest

#endif // VANTREL_TESTCLASS_H
