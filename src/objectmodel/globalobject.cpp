#include "objectmodel/globalobject.h"

#include "objectmodel/arguments_p.h"
#include "objectmodel/inspector.h"
#include "objectmodel/invocation.h"

#include <algorithm>

namespace Vantrel {

namespace {

std::nullptr_t refuse(const QString &what, const QString &name, const QString &reason)
{
    Inspector::self()->setError(
        QStringLiteral("Cannot add global %1 '%2': %3").arg(what, name, reason));
    return nullptr;
}

class GlobalFunction : public Method
{
public:
    GlobalFunction(int id, const Class *owner, const Argument &returnType,
                   const Signature &signature, GlobalClass::Function function)
        : Method(id, owner, returnType, signature, Static), m_function(std::move(function))
    {}

    SharedPtr<Object> call(const ObjectList &arguments) const { return m_function(arguments); }

private:
    const GlobalClass::Function m_function;
};

bool haveSameTypes(const Signature &a, const Signature &b)
{
    return std::equal(a.arguments().begin(), a.arguments().end(), b.arguments().begin(),
                      b.arguments().end(), [](const Argument &x, const Argument &y) {
                          return x.type() == y.type() && x.attribute() == y.attribute()
                              && x.enumType() == y.enumType();
                      });
}

/** Null for what lateAddMethod() counted before there was a table to keep it in. */
template <class T>
T *entry(const std::vector<T *> &members, int ownIndex)
{
    return ownIndex < int(members.size()) ? members[std::size_t(ownIndex)] : nullptr;
}

/** Why the keys of an enum are none; empty when they are fine. */
QString keyMismatch(const GlobalClass::EnumItems &items)
{
    for (auto item = items.begin(); item != items.end(); ++item) {
        if (item->first.isEmpty()) {
            return QStringLiteral("a key is empty");
        }
        if (std::any_of(items.begin(), item,
                        [&](const auto &earlier) { return earlier.first == item->first; })) {
            return QStringLiteral("the key '%1' stands twice").arg(QString::fromUtf8(item->first));
        }
    }
    return QString();
}

} // namespace

/**
 * What was added, in the order of the ids. The class asks for it when it builds
 * its tables; they and not this record hand the members out.
 */
class GlobalClassPrivate
{
public:
    /** The texts and the table that an enum refers to. */
    struct EnumTable
    {
        GlobalClass::EnumItems items;
        std::vector<Enum::Item> table;
    };

    std::vector<Method *> functions;
    std::vector<Property *> properties;
    std::vector<Enum *> enums;
    std::vector<std::unique_ptr<PropertyDeclaration>> declarations;
    std::vector<std::unique_ptr<EnumTable>> enumTables;
};

GlobalClass::GlobalClass() : Class("Global", true), d(new GlobalClassPrivate)
{
    setNumMethods(0);
    setNumConstructors(0);
    setNumProperties(0);
    setNumEvents(0);
    setNumEnums(0);
}

GlobalClass::~GlobalClass() = default;

Method *GlobalClass::addFunction(const Argument &returnType, const Signature &signature,
                                 Function function)
{
    const QString what = QStringLiteral("function");
    if (signature.name().isEmpty()) {
        return refuse(what, signature.name(), QStringLiteral("it has no name"));
    }
    if (!function) {
        return refuse(what, signature.name(), QStringLiteral("there is nothing to call"));
    }
    for (const Method *overload : methods(signature.name())) {
        if (haveSameTypes(overload->signature(), signature)) {
            return refuse(what, signature.name() + signature.toString(),
                          QStringLiteral("it exists already"));
        }
    }
    Method *added =
        new GlobalFunction(numMethods(), this, returnType, signature, std::move(function));
    d->functions.push_back(added);
    lateAddMethod(added);
    return added;
}

const Property *GlobalClass::addProperty(const Argument &type, const QString &name,
                                         ReadFunction read, WriteFunction write)
{
    const QString what = QStringLiteral("property");
    if (name.isEmpty()) {
        return refuse(what, name, QStringLiteral("it has no name"));
    }
    if (!read && !write) {
        return refuse(what, name, QStringLiteral("it can neither be read nor written"));
    }
    if (property(name)) {
        return refuse(what, name, QStringLiteral("it exists already"));
    }
    PropertyDeclaration::ReadFunction reader;
    if (read) {
        reader = [read = std::move(read)](const SharedPtr<Object> &) { return read(); };
    }
    PropertyDeclaration::WriteFunction writer;
    if (write) {
        writer = [name, write = std::move(write)](const SharedPtr<Object> &,
                                                  const SharedPtr<Object> &value) {
            if (!value) {
                Inspector::self()->setError(
                    QStringLiteral("Cannot set global property %1 without a value").arg(name));
                return false;
            }
            return write(value);
        };
    }
    d->declarations.push_back(std::make_unique<PropertyDeclaration>(
        this, type, name, std::move(reader), std::move(writer)));
    d->declarations.back()->setStatic(true);
    d->properties.push_back(
        new Property(numPropertiesInternal(), this, d->declarations.back().get()));
    lateAddProperty(d->properties.back());
    return d->properties.back();
}

Enum *GlobalClass::addEnum(const QString &name, const EnumItems &items)
{
    const QString what = QStringLiteral("enum");
    if (name.isEmpty()) {
        return refuse(what, name, QStringLiteral("it has no name"));
    }
    if (enumerator(name)) {
        return refuse(what, name, QStringLiteral("it exists already"));
    }
    const QString mismatch = keyMismatch(items);
    if (!mismatch.isEmpty()) {
        return refuse(what, name, mismatch);
    }
    auto content = std::make_unique<GlobalClassPrivate::EnumTable>();
    content->items.reserve(items.size());
    for (const auto &item : items) {
        // Deep copies, because the bytes may be shared with memory that the caller frees.
        content->items.emplace_back(QByteArray(item.first.constData(), item.first.size()),
                                    item.second);
    }
    for (const auto &item : content->items) {
        content->table.push_back({item.first.constData(), item.second});
    }
    content->table.push_back({nullptr, 0});
    Enum *added = new Enum(numEnums(), this, name, content->table.data());
    d->enumTables.push_back(std::move(content));
    d->enums.push_back(added);
    lateAddEnum(added);
    return added;
}

/** The functions get handles and not native pointers, so they are called from here. */
SharedPtr<Object> GlobalClass::invoke(int, SharedPtr<Object> object, const ObjectList &arguments,
                                      const Method *method)
{
    if (!verifyMethodInvocation(object, method)
        || !verifyMethodArgumentCount(className(), method, arguments)) {
        return {};
    }
    const auto *function = dynamic_cast<const GlobalFunction *>(method);
    if (!function) {
        Class *self = this;
        return self->invoke(object, method, NativeArguments(arguments).data());
    }
    const AdaptedArguments fitting(method->signature(), arguments);
    if (!fitting.isValid()) {
        Inspector::self()->setError(
            QStringLiteral("Cannot call %1%2: %3")
                .arg(method->name(), method->signature().toString(),
                     AdaptedArguments::mismatch(method->signature(), arguments)));
        return {};
    }
    return function->call(fitting.list());
}

Method *GlobalClass::createMethod(int methodId) const
{
    return entry(d->functions, methodId - superClassOffset(MethodOffset));
}

Property *GlobalClass::createProperty(int propertyId) const
{
    return entry(d->properties, propertyId - superClassOffset(PropertyOffset));
}

Enum *GlobalClass::createEnum(int enumId) const
{
    return entry(d->enums, enumId - superClassOffset(EnumOffset));
}

} // namespace Vantrel
