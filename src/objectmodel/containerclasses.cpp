#include "objectmodel/containerclasses.h"

#include "objectmodel/class.h"
#include "objectmodel/containers.h"
#include "objectmodel/delegates.h"
#include "objectmodel/inspector.h"
#include "objectmodel/invocation.h"
#include "objectmodel/object.h"
#include "objectmodel/primitiveids.h"

#include <QStringList>

#include <algorithm>
#include <iterator>
#include <memory>
#include <set>
#include <utility>

namespace Vantrel {

namespace {

using Array = std::vector<SharedPtr<Object>>;
using Map = std::map<QString, SharedPtr<Object>>;

/** What an argument becomes when it is converted to a type that everything converts to. */
class AnyObject : public Object
{
public:
    AnyObject(const Class *c, SharedPtr<Object> value)
        : Object(nullptr, c, ObjectAttribute()), m_value(std::move(value))
    {
        void *data = nullptr;
        m_value->get(&data);
        setData(data);
    }

    static SharedPtr<Object> valueOf(const SharedPtr<Object> &argument)
    {
        const auto *any = dynamic_cast<const AnyObject *>(argument.get());
        return any ? any->m_value : argument;
    }

private:
    SharedPtr<Object> m_value;
};

class AnyCast : public CastDelegate
{
public:
    using CastDelegate::CastDelegate;

    bool canConvertTo(const Class *, bool, bool) const override { return false; }
    SharedPtr<Object> convertTo(SharedPtr<Object>, const Class *, bool) const override
    {
        return {};
    }
    bool canConvertFrom(const Class *, bool, bool) const override { return true; }
    SharedPtr<Object> convertFrom(SharedPtr<Object> object, const Class *target,
                                  bool) const override
    {
        return SharedPtr<Object>(new AnyObject(target, std::move(object)));
    }
};

/** The declared type of arguments that take anything. */
class AnyClass : public Class
{
public:
    AnyClass() : Class("Vantrel_Any", true)
    {
        setNumMethods(0);
        setNumConstructors(0);
        setNumProperties(0);
        setNumEvents(0);
        setNumEnums(0);
    }

    static const Class *self()
    {
        static const Class *const any = new AnyClass;
        return any;
    }

private:
    const AnyCast m_cast{QStringLiteral("Vantrel_Any")};
};

/**
 * Lets go of items one after another. Containers that free what is in them
 * from within each other would need a stack as deep as they are nested.
 */
void release(Array items)
{
    static thread_local Array *pending = nullptr;
    if (pending) {
        pending->insert(pending->end(), std::make_move_iterator(items.begin()),
                        std::make_move_iterator(items.end()));
        return;
    }
    pending = &items;
    while (!items.empty()) {
        const SharedPtr<Object> last = std::move(items.back());
        items.pop_back();
    }
    pending = nullptr;
}

Array takeItems(Array &array)
{
    return std::move(array);
}

Array takeItems(Map &map)
{
    Array items;
    items.reserve(map.size());
    for (auto &entry : map) {
        items.push_back(std::move(entry.second));
    }
    return items;
}

/**
 * What arrays and maps have in common: one constructor, methods that work on
 * handles, and items that are what is compared and shown.
 */
template <class Container>
class ContainerClass : public Class
{
public:
    explicit ContainerClass(const char *name) : Class(name, true)
    {
        AnyClass::self();
        setNumMethods(2);
        setNumConstructors(1);
        setNumProperties(1);
        setNumEvents(0);
        setNumEnums(0);
    }

    SharedPtr<Object> wrap(void *data, const ObjectAttribute &attribute) override;
    bool compare(SharedPtr<Object> a, SharedPtr<Object> b) const override;

    void deleteObjectData(void *data, const ObjectAttribute &) const override
    {
        auto *items = static_cast<Container *>(data);
        if (items) {
            release(takeItems(*items));
        }
        delete items;
    }

    SharedPtr<Object> construct(int index, void **) override
    {
        if (index != 0) {
            return {};
        }
        SharedPtr<Object> object = wrap(new Container, ObjectAttribute::Pointer());
        object->setAutoDelete(true);
        return object;
    }

protected:
    /** One adds and one reads; those that are added late belong to somebody else. */
    static bool isMethod(int methodId) { return methodId == 0 || methodId == 1; }

private:
    Constructor *createConstructor(int index) const override
    {
        return index == 0 ? new Constructor(index, this, Signature(className())) : nullptr;
    }

    /** A native pointer would not tell of what class the item is, so the handles are used. */
    SharedPtr<Object> invoke(int methodId, SharedPtr<Object> object, const ObjectList &arguments,
                             const Method *method) override
    {
        if (!verifyMethodInvocation(object, method)
            || !verifyMethodArgumentCount(className(), method, arguments)) {
            return {};
        }
        if (!isMethod(methodId)) {
            Inspector::self()->setError(
                QStringLiteral("%1 has no code for %2()").arg(className(), method->name()));
            return {};
        }
        void *data = nullptr;
        if (!convert(object, &data)) {
            Inspector::self()->setError(QStringLiteral("%1() needs an object of class %2")
                                            .arg(method->name(), className()));
            return {};
        }
        auto &items = *static_cast<Container *>(data);
        return methodId == 0 ? add(items, arguments) : at(items, arguments);
    }

    virtual SharedPtr<Object> add(Container &items, const ObjectList &arguments) const = 0;
    virtual SharedPtr<Object> at(const Container &items, const ObjectList &arguments) const = 0;
};

/** The items of a handle of one of the classes here; null for all others and for null objects. */
template <class Container>
const Container *itemsOf(const SharedPtr<Object> &object)
{
    void *data = nullptr;
    if (object && dynamic_cast<const ContainerClass<Container> *>(object->type())) {
        object->get(&data);
    }
    return static_cast<const Container *>(data);
}

/**
 * Compares containers within containers by a list of what is left to do:
 * neither deep nesting nor circles can harm it, and each pair is done once.
 */
class Comparison
{
public:
    bool equal(const SharedPtr<Object> &a, const SharedPtr<Object> &b)
    {
        bool same = compareLater(a, b);
        while (same && !m_pending.empty()) {
            const auto [first, second] = m_pending.back();
            m_pending.pop_back();
            const Array *array = itemsOf<Array>(first);
            same = array ? equalItems(*array, *itemsOf<Array>(second))
                         : equalItems(*itemsOf<Map>(first), *itemsOf<Map>(second));
        }
        return same;
    }

private:
    /** False when the two differ for certain. */
    bool compareLater(const SharedPtr<Object> &a, const SharedPtr<Object> &b)
    {
        if (a == b) {
            return true;
        }
        if (!a || !b) {
            return false;
        }
        const void *first = itemsOf<Array>(a);
        const void *second = itemsOf<Array>(b);
        if (!first || !second) {
            first = itemsOf<Map>(a);
            second = itemsOf<Map>(b);
        }
        if (!first || !second) {
            return a->compare(b);
        }
        if (m_known.insert({first, second}).second) {
            m_pending.push_back({a, b});
        }
        return true;
    }

    bool equalItems(const Array &a, const Array &b)
    {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                          [this](const auto &x, const auto &y) { return compareLater(x, y); });
    }

    bool equalItems(const Map &a, const Map &b)
    {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                          [this](const auto &x, const auto &y) {
                              return x.first == y.first && compareLater(x.second, y.second);
                          });
    }

    std::vector<std::pair<SharedPtr<Object>, SharedPtr<Object>>> m_pending;
    std::set<std::pair<const void *, const void *>> m_known;
};

/** The text of a container with all that is in it; dots stand for what would go on for ever. */
class ContainerText
{
public:
    enum class Form { Plain, Debug };
    explicit ContainerText(Form form) : m_form(form) {}

    QString of(const SharedPtr<Object> &object)
    {
        if (!object) {
            return QStringLiteral("<null>");
        }
        if (const Array *array = itemsOf<Array>(object)) {
            return enclosed(object, array, QLatin1String("[ "), QLatin1String("]"));
        }
        if (const Map *map = itemsOf<Map>(object)) {
            return enclosed(object, map, QLatin1String("{ "), QLatin1String("}"));
        }
        return m_form == Form::Debug ? object->toDebugString() : object->toString();
    }

private:
    static constexpr std::size_t maximumDepth = 64;
    /** Containers that share their items would otherwise make texts that grow without bound. */
    static constexpr int maximumContainers = 10000;

    template <class Container>
    QString enclosed(const SharedPtr<Object> &object, const Container *items, QLatin1String open,
                     QLatin1String close)
    {
        QString text = open;
        if (std::find(m_open.begin(), m_open.end(), items) != m_open.end()
            || m_open.size() >= maximumDepth || m_containers >= maximumContainers) {
            text += QLatin1String("... ");
        } else if (!items->empty()) {
            ++m_containers;
            m_open.push_back(items);
            QStringList texts;
            for (const auto &item : *items) {
                texts << textOf(item);
            }
            m_open.pop_back();
            text += texts.join(QLatin1String(", ")) + u' ';
        }
        text += close;
        return m_form == Form::Debug ? text + QLatin1String(" : ") + object->className() : text;
    }

    QString textOf(const SharedPtr<Object> &item) { return of(item); }
    QString textOf(const Map::value_type &entry)
    {
        return entry.first + QLatin1String(": ") + of(entry.second);
    }

    Form m_form;
    std::vector<const void *> m_open;
    int m_containers = 0;
};

class ContainerObject : public Object
{
public:
    using Object::Object;

    QString toString() override
    {
        return isNull() ? Object::toString() : text(ContainerText::Form::Plain);
    }
    QString toDebugString() override
    {
        return isNull() ? Object::toDebugString() : text(ContainerText::Form::Debug);
    }

private:
    QString text(ContainerText::Form form)
    {
        const auto self = SharedPtr<Object>::borrowed(this);
        return itemsOf<Array>(self) || itemsOf<Map>(self) ? ContainerText(form).of(self)
                                                          : QString();
    }
};

template <class Container>
SharedPtr<Object> ContainerClass<Container>::wrap(void *data, const ObjectAttribute &attribute)
{
    return SharedPtr<Object>(new ContainerObject(data, this, attribute));
}

template <class Container>
bool ContainerClass<Container>::compare(SharedPtr<Object> a, SharedPtr<Object> b) const
{
    return itemsOf<Container>(a) && itemsOf<Container>(b) ? Comparison().equal(a, b)
                                                          : Class::compare(a, b);
}

/** A script must be able to tell a missing item from an error. */
SharedPtr<Object> itemOrNullObject(const SharedPtr<Object> &item)
{
    return item ? item : Object::zombie();
}

QString keyOf(const SharedPtr<Object> &argument)
{
    return argument ? argument->toString() : QString();
}

const Class *primitive(int id)
{
    return Inspector::self()->type(id);
}

Argument voidArgument()
{
    return Argument(primitive(PrimitiveId::Void));
}

Argument anyArgument(const QString &name)
{
    return Argument(name, AnyClass::self());
}

Argument keyArgument()
{
    return Argument(QStringLiteral("key"), primitive(PrimitiveId::Char),
                    ObjectAttribute::Pointer());
}

class ReadyArrayClass : public ContainerClass<Array>
{
public:
    ReadyArrayClass() : ContainerClass("Vantrel_Array") {}

    SharedPtr<Object> getProperty(int, void *data, const Class *) override
    {
        return Inspector::self()->createPrimitive(qint64(static_cast<Array *>(data)->size()));
    }

private:
    Method *createMethod(int methodId) const override
    {
        if (!isMethod(methodId)) {
            return nullptr;
        }
        if (methodId == 0) {
            return new Method(
                methodId, this, voidArgument(),
                Signature(QStringLiteral("push"), {anyArgument(QStringLiteral("item"))}));
        }
        const Argument index(QStringLiteral("index"), primitive(PrimitiveId::Int64));
        return new Method(methodId, this, Argument(nullptr),
                          Signature(QStringLiteral("at"), {index}));
    }

    Property *createProperty(int propertyId) const override
    {
        if (propertyId != 0) {
            return nullptr;
        }
        return new Property(propertyId, this, Argument(primitive(PrimitiveId::Int64)),
                            QStringLiteral("length"), Property::Readable);
    }

    SharedPtr<Object> add(Array &items, const ObjectList &arguments) const override
    {
        items.push_back(AnyObject::valueOf(arguments[0]));
        return Inspector::self()->voidObject();
    }

    SharedPtr<Object> at(const Array &items, const ObjectList &arguments) const override
    {
        const qint64 index = arguments[0] ? arguments[0]->toInt64() : -1;
        if (index < 0 || quint64(index) >= items.size()) {
            Inspector::self()->setError(
                QStringLiteral("Index %1 is out of range of an array of length %2")
                    .arg(QString::number(index), QString::number(items.size())));
            return {};
        }
        return itemOrNullObject(items[std::size_t(index)]);
    }
};

class ReadyMapClass : public ContainerClass<Map>
{
public:
    ReadyMapClass() : ContainerClass("Vantrel_Map") {}

    SharedPtr<Object> getProperty(int, void *data, const Class *) override
    {
        Array keys;
        for (const auto &entry : *static_cast<Map *>(data)) {
            keys.push_back(Inspector::self()->createPrimitive(entry.first));
        }
        return ArrayClass::wrapObject(keys);
    }

private:
    Method *createMethod(int methodId) const override
    {
        if (!isMethod(methodId)) {
            return nullptr;
        }
        if (methodId == 0) {
            return new Method(methodId, this, voidArgument(),
                              Signature(QStringLiteral("insert"),
                                        {keyArgument(), anyArgument(QStringLiteral("value"))}));
        }
        return new Method(methodId, this, Argument(nullptr),
                          Signature(QStringLiteral("at"), {keyArgument()}));
    }

    Property *createProperty(int propertyId) const override
    {
        if (propertyId != 0) {
            return nullptr;
        }
        const Argument keys(ArrayClass::registeredClass(), ObjectAttribute::Pointer());
        return new Property(propertyId, this, keys, QStringLiteral("keys"), Property::Readable);
    }

    SharedPtr<Object> add(Map &items, const ObjectList &arguments) const override
    {
        items[keyOf(arguments[0])] = AnyObject::valueOf(arguments[1]);
        return Inspector::self()->voidObject();
    }

    SharedPtr<Object> at(const Map &items, const ObjectList &arguments) const override
    {
        const QString key = keyOf(arguments[0]);
        const auto entry = items.find(key);
        if (entry == items.end()) {
            Inspector::self()->setError(QStringLiteral("The map has no key '%1'").arg(key));
            return {};
        }
        return itemOrNullObject(entry->second);
    }
};

} // namespace

void registerContainerClasses()
{
    if (!ArrayClass::registeredClass()) {
        new ReadyArrayClass;
    }
    if (!MapClass::registeredClass()) {
        new ReadyMapClass;
    }
}

} // namespace Vantrel
