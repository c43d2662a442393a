#include "objectmodel/globalfunctions.h"

#include "objectmodel/globalobject.h"
#include "objectmodel/inspector.h"

#include <QVarLengthArray>

#include <deque>
#include <exception>

namespace Vantrel {

namespace NativeTypes {

namespace {

std::nullptr_t refuse(const char *what, const char *name, const QString &reason)
{
    Inspector::self()->setError(
        QStringLiteral("Cannot add global %1 '%2': %3")
            .arg(QString::fromLatin1(what), QString::fromUtf8(name), reason));
    return nullptr;
}

/** Null, with an error, when the Inspector was or is answered for by another process. */
GlobalClass *globalClassFor(const char *what, const char *name)
{
    GlobalClass *found = Inspector::self()->globalClass();
    if (!found) {
        refuse(what, name, QStringLiteral("the Inspector knows no global class of this process"));
    }
    return found;
}

Argument argumentOf(const QString &name, const GlobalType &type, QString *error)
{
    return type.isHandle ? Argument::AnyObject(name) : resolved(name, type.type, error);
}

/** Why an argument cannot be passed; empty when @p data has it. */
QString nullOrMismatch(const Data &data, const Type &type)
{
    return data.isValid() && !data.pointer() && !type.isNullable
        ? QStringLiteral("null object given")
        : data.error();
}

/** What is called, and what it takes. */
struct GlobalCaller
{
    QString name;
    std::vector<GlobalType> parameters;
    const Class *resultType;
    GlobalCall call;

    SharedPtr<Object> operator()(const ObjectList &arguments) const;
    SharedPtr<Object> guarded(const ObjectList &arguments, void **data) const;
};

SharedPtr<Object> GlobalCaller::operator()(const ObjectList &arguments) const
{
    std::deque<Data> converted;
    QVarLengthArray<void *, 8> pointers;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        pointers.append(nullptr);
        if (parameters[i].isHandle) {
            continue;
        }
        const Data &data = converted.emplace_back(arguments[i], parameters[i].type);
        const QString reason = nullOrMismatch(data, parameters[i].type);
        if (!reason.isEmpty()) {
            Inspector::self()->setError(QStringLiteral("Cannot call %1(): argument %2: %3")
                                            .arg(name, QString::number(i + 1), reason));
            return {};
        }
        pointers.last() = data.pointer();
    }
    return guarded(arguments, pointers.data());
}

SharedPtr<Object> GlobalCaller::guarded(const ObjectList &arguments, void **data) const
{
    QString reason;
    try {
        return call(arguments, data, resultType);
    } catch (const std::exception &error) {
        reason = QString::fromUtf8(error.what());
    } catch (...) {
        reason = QStringLiteral("unknown exception");
    }
    Inspector::self()->setError(name + QLatin1String(": ") + reason);
    return {};
}

} // namespace

Method *addGlobalFunction(const char *name, const GlobalType &result,
                          const std::vector<GlobalType> &parameters, Names names, GlobalCall call)
{
    const char *const what = "function";
    GlobalClass *const global = globalClassFor(what, name);
    if (!global) {
        return nullptr;
    }
    if (names.size() > parameters.size()) {
        return refuse(what, name,
                      QStringLiteral("%1 argument names for %2 arguments")
                          .arg(QString::number(names.size()), QString::number(parameters.size())));
    }
    QString error;
    const Argument returnType = argumentOf(QString(), result, &error);
    if (!error.isEmpty()) {
        return refuse(what, name, QStringLiteral("result: ") + error);
    }
    Signature signature(QString::fromUtf8(name));
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const QString argumentName =
            i < names.size() ? QString::fromUtf8(names.begin()[i]) : QString();
        signature.addArgument(argumentOf(argumentName, parameters[i], &error));
        if (!error.isEmpty()) {
            return refuse(what, name,
                          QStringLiteral("argument %1: %2").arg(QString::number(i + 1), error));
        }
    }
    return global->addFunction(
        returnType, signature,
        GlobalCaller{signature.name(), parameters, returnType.type(), std::move(call)});
}

const Property *addGlobalProperty(const char *name, const GlobalType &type, GlobalCall getter,
                                  GlobalCall setter)
{
    GlobalClass *const global = globalClassFor("property", name);
    if (!global) {
        return nullptr;
    }
    QString error;
    const Argument argument = argumentOf(QString(), type, &error);
    if (!error.isEmpty()) {
        return refuse("property", name, error);
    }
    const QString propertyName = QString::fromUtf8(name);
    const GlobalCaller get{propertyName, {}, argument.type(), std::move(getter)};
    GlobalClass::WriteFunction write;
    if (setter) {
        write = [set = GlobalCaller{propertyName, {type}, nullptr, std::move(setter)}](
                    const SharedPtr<Object> &value) { return bool(set({value})); };
    }
    return global->addProperty(
        argument, propertyName, [get] { return get(ObjectList()); }, std::move(write));
}

Enum *addGlobalEnum(const char *name, const std::type_info *info,
                    const std::vector<Enum::Item> &items)
{
    GlobalClass *const global = globalClassFor("enum", name);
    if (!global) {
        return nullptr;
    }
    if (info && enumOf(*info)) {
        return refuse("enum", name,
                      QStringLiteral("the type %1 belongs to the enum %2 already")
                          .arg(typeName(*info), enumOf(*info)->name()));
    }
    GlobalClass::EnumItems copies;
    for (const Enum::Item &item : items) {
        copies.emplace_back(item.key, item.value);
    }
    Enum *added = global->addEnum(QString::fromUtf8(name), copies);
    if (added && info) {
        registerEnum(*info, added);
    }
    return added;
}

} // namespace NativeTypes

} // namespace Vantrel
