#include "objectmodel/containers.h"

#include "objectmodel/inspector.h"
#include "objectmodel/namespace.h"
#include "objectmodel/reflection_p.h"

namespace Vantrel {

namespace {

using Array = std::vector<SharedPtr<Object>>;
using Map = std::map<QString, SharedPtr<Object>>;

const QLatin1String arrayClassName("Vantrel_Array");
const QLatin1String mapClassName("Vantrel_Map");

/** The length of an array is a claim of another process. */
constexpr qint64 maxItems = 10000000;

const Class *containerClass(QLatin1String name)
{
    const Namespace *root = Inspector::self()->globalNamespace();
    return root ? root->getClass(name) : nullptr;
}

Argument containerArgument(const std::string &name, const Class *type)
{
    return Argument(QString::fromStdString(name), type);
}

/** Told by the name of the class: the registered one may have changed since the object was made. */
bool isContainer(const SharedPtr<Object> &object, QLatin1String name)
{
    for (const Class *c = object ? object->type() : nullptr; c; c = c->super()) {
        if (c->className() == name) {
            return true;
        }
    }
    return false;
}

template <class Container>
Container unwrapContainer(const SharedPtr<Object> &object, QLatin1String name)
{
    return isContainer(object, name) ? unwrapCopy<Container>(object) : Container();
}

/** @p arguments turns an item of @p items into the arguments of the call that adds it. */
template <class Container, class ArgumentsOf>
SharedPtr<Object> createContainer(const Class *type, const Container &items, QLatin1String adder,
                                  ArgumentsOf argumentsOf)
{
    SharedPtr<Object> container = constructWith(type, 0, ObjectList());
    if (!container || items.empty()) {
        return container;
    }
    const Method *add = firstOverload(type, adder);
    if (!add) {
        return {};
    }
    for (const auto &item : items) {
        add->invoke(container, argumentsOf(item));
    }
    return container;
}

} // namespace

const Class *ArrayClass::registeredClass()
{
    return containerClass(arrayClassName);
}

Argument ArrayClass::arrayClassArg(const std::string &name)
{
    return containerArgument(name, registeredClass());
}

SharedPtr<Object> ArrayClass::wrapObject(const Array &items)
{
    return wrapCopy(registeredClass(), items, ObjectAttribute::Pointer());
}

Array ArrayClass::unwrapObject(SharedPtr<Object> array)
{
    return unwrapContainer<Array>(array, arrayClassName);
}

SharedPtr<Object> ArrayClass::createRemoteObject(const Array &items)
{
    return createContainer(registeredClass(), items, QLatin1String("push"),
                           [](const SharedPtr<Object> &item) { return ObjectList{item}; });
}

Array ArrayClass::unwrapRemoteObject(SharedPtr<Object> array)
{
    Array items;
    const SharedPtr<Object> length = readProperty(array, QStringLiteral("length"));
    const qint64 count = length ? length->toInt64() : 0;
    if (count <= 0) {
        return items;
    }
    if (count > maxItems) {
        Inspector::self()->setError(
            QStringLiteral("Cannot read an array of %1 items: at most %2 are supported")
                .arg(count)
                .arg(maxItems));
        return items;
    }
    const Method *at = firstOverload(array->type(), QStringLiteral("at"));
    for (qint64 i = 0; at && i < count; ++i) {
        items.push_back(at->invoke(array, ObjectList{Inspector::self()->createPrimitive(i)}));
    }
    return items;
}

const Class *MapClass::registeredClass()
{
    return containerClass(mapClassName);
}

Argument MapClass::mapClassArg(const std::string &name)
{
    return containerArgument(name, registeredClass());
}

SharedPtr<Object> MapClass::wrapObject(const Map &map)
{
    return wrapCopy(registeredClass(), map, ObjectAttribute::Pointer());
}

Map MapClass::unwrapObject(SharedPtr<Object> map)
{
    return unwrapContainer<Map>(map, mapClassName);
}

SharedPtr<Object> MapClass::createRemoteObject(const Map &map)
{
    return createContainer(
        registeredClass(), map, QLatin1String("insert"), [](const Map::value_type &entry) {
            return ObjectList{Inspector::self()->createPrimitive(entry.first), entry.second};
        });
}

Map MapClass::unwrapRemoteObject(SharedPtr<Object> map)
{
    Map entries;
    const SharedPtr<Object> keyArray = readProperty(map, QStringLiteral("keys"));
    if (!keyArray) {
        return entries;
    }
    const Array keys = ArrayClass::unwrapRemoteObject(keyArray);
    if (keys.empty()) {
        return entries;
    }
    const Method *at = firstOverload(map->type(), QStringLiteral("at"));
    if (!at) {
        return entries;
    }
    for (const SharedPtr<Object> &key : keys) {
        if (key) { // a key that could not be read names nothing
            entries[key->toString()] = at->invoke(map, ObjectList{key});
        }
    }
    return entries;
}

} // namespace Vantrel
