#include "objectmodel/inspector.h"

#include "objectmodel/inspector_p.h"

namespace Vantrel {

SharedPtr<Object> Inspector::findObject(const QString &name)
{
    return findObject(name, d->licEditions == 0);
}

SharedPtr<Object> Inspector::findObject(const QString &name, bool)
{
    if (name.isEmpty()) {
        setError(QStringLiteral("Empty Object Name passed to findObject!"));
        return {};
    }
    return d->implementation ? d->implementation->findObject(name) : SharedPtr<Object>();
}

} // namespace Vantrel
