#include "objectmodel/inspector.h"

#include "objectmodel/class.h"
#include "objectmodel/delegates.h"
#include "objectmodel/inspector_p.h"

namespace Vantrel {

bool Inspector::sendEvent(const Event *event, SharedPtr<Object> object, const ObjectList &arguments)
{
    if (event && event->isSendable()) {
        for (SendEventDelegate *delegate : sendEventDelegates()) {
            if (delegate->sendEvent(event, object, arguments)) {
                return true;
            }
        }
    }
    setError(QStringLiteral("Cannot send event '%1'").arg(event ? event->name() : QString()));
    return false;
}

void Inspector::addPropertyDelegate(StaticPropertyDelegate *delegate)
{
    DelegateFactory::self()->addDelegate(delegate);
}

void Inspector::setUniqueProperty(const QString &, const QString &) { }
void Inspector::setExtensionCode(const QString &, const QString &) { }
void Inspector::setMouseTracking(const QString &, bool) { }
void Inspector::setRecordMouseDrag(const QString &, bool) { }
void Inspector::setAllowKeyEventCompression(const QString &, bool) { }
void Inspector::enableEventCompression(const QString &, bool) { }
void Inspector::setRecorderFilter(const QString &, const QString &) { }

bool Inspector::installObjectEventHandler(SharedPtr<Object>, const QString &, EventHandler *)
{
    return false;
}
bool Inspector::uninstallObjectEventHandler(SharedPtr<Object>, const QString &, EventHandler *)
{
    return false;
}
bool Inspector::installClassEventHandler(const QString &, const QString &, EventHandler *)
{
    return false;
}
bool Inspector::uninstallClassEventHandler(const QString &, const QString &, EventHandler *)
{
    return false;
}
bool Inspector::installGlobalEventHandler(const QString &, EventHandler *)
{
    return false;
}
bool Inspector::uninstallGlobalEventHandler(const QString &, EventHandler *)
{
    return false;
}

} // namespace Vantrel
