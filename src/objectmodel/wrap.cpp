#include "objectmodel/wrap.h"

#include "objectmodel/inspector.h"

namespace Vantrel {

SharedPtr<Object> wrap(bool value)
{
    return Inspector::self()->createPrimitive(value);
}

SharedPtr<Object> wrap(int value)
{
    return Inspector::self()->createPrimitive(value);
}

SharedPtr<Object> wrap(qint64 value)
{
    return Inspector::self()->createPrimitive(value);
}

SharedPtr<Object> wrap(double value)
{
    return Inspector::self()->createPrimitive(value);
}

SharedPtr<Object> wrap(const char *value)
{
    return Inspector::self()->createPrimitive(value);
}

SharedPtr<Object> wrap(const QString &value)
{
    return Inspector::self()->createPrimitive(value);
}

SharedPtr<Object> wrap(const QStringList &value)
{
    return Inspector::self()->createPrimitive(value);
}

void NativeTypes::reportUnwrap(const std::type_info &wanted, const SharedPtr<Object> &object,
                               const char *reason)
{
    const QString source = object ? object->className() : QStringLiteral("no object");
    Inspector::self()->setError(QStringLiteral("Cannot unwrap %1 from %2: %3")
                                    .arg(typeName(wanted), source, QString::fromUtf8(reason)));
}

} // namespace Vantrel
