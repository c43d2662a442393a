#include "objectmodel/inspector.h"

#include "objectmodel/class.h"
#include "objectmodel/delegates.h"
#include "objectmodel/eventhandlers_p.h"
#include "objectmodel/inspector_p.h"

#include <algorithm>

namespace Vantrel {

bool Inspector::sendEvent(const Event *event, SharedPtr<Object> object, const ObjectList &arguments)
{
    if (event && event->isSendable()) {
        // A copy, because a delegate may add or remove others.
        const std::vector<SendEventDelegate *> delegates = sendEventDelegates();
        for (SendEventDelegate *delegate : delegates) {
            const auto &current = sendEventDelegates();
            const bool isThere =
                std::find(current.begin(), current.end(), delegate) != current.end();
            if (isThere && delegate->sendEvent(event, object, arguments)) {
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

void Inspector::setUniqueProperty(const QString &name, const QString &value)
{
    d->recorder.uniqueProperties.insert(name, value);
}

QString Inspector::uniqueProperty(const QString &name) const
{
    return d->recorder.uniqueProperties.value(name);
}

void Inspector::setExtensionCode(const QString &name, const QString &value)
{
    d->recorder.extensionCodes.insert(name, value);
}

QString Inspector::extensionCode(const QString &name) const
{
    return d->recorder.extensionCodes.value(name);
}

void Inspector::setMouseTracking(const QString &name, bool value)
{
    d->recorder.mouseTracking.insert(name, value);
}

bool Inspector::mouseTracking(const QString &name) const
{
    return d->recorder.mouseTracking.value(name);
}

void Inspector::setRecordMouseDrag(const QString &name, bool value)
{
    d->recorder.recordMouseDrag.insert(name, value);
}

bool Inspector::recordMouseDrag(const QString &name) const
{
    return d->recorder.recordMouseDrag.value(name);
}

void Inspector::setAllowKeyEventCompression(const QString &name, bool value)
{
    d->recorder.keyEventCompression.insert(name, value);
}

bool Inspector::allowKeyEventCompression(const QString &name) const
{
    return d->recorder.keyEventCompression.value(name);
}

void Inspector::enableEventCompression(const QString &name, bool value)
{
    d->recorder.eventCompression.insert(name, value);
}

bool Inspector::isEventCompressionEnabled(const QString &name) const
{
    return d->recorder.eventCompression.value(name);
}

void Inspector::setRecorderFilter(const QString &name, const QString &value)
{
    d->recorder.recorderFilters.insert(name, value);
}

QString Inspector::recorderFilter(const QString &name) const
{
    return d->recorder.recorderFilters.value(name);
}

bool Inspector::installObjectEventHandler(SharedPtr<Object> object, const QString &event,
                                          EventHandler *handler)
{
    return EventHandlerRegistry::self()->installForObject(object, event, handler);
}

bool Inspector::uninstallObjectEventHandler(SharedPtr<Object> object, const QString &event,
                                            EventHandler *handler)
{
    return EventHandlerRegistry::self()->uninstallForObject(object, event, handler);
}

bool Inspector::installClassEventHandler(const QString &className, const QString &event,
                                         EventHandler *handler)
{
    return EventHandlerRegistry::self()->installForClass(className, event, handler);
}

bool Inspector::uninstallClassEventHandler(const QString &className, const QString &event,
                                           EventHandler *handler)
{
    return EventHandlerRegistry::self()->uninstallForClass(className, event, handler);
}

bool Inspector::installGlobalEventHandler(const QString &event, EventHandler *handler)
{
    return EventHandlerRegistry::self()->installGlobal(event, handler);
}

bool Inspector::uninstallGlobalEventHandler(const QString &event, EventHandler *handler)
{
    return EventHandlerRegistry::self()->uninstallGlobal(event, handler);
}

int Inspector::dispatchEvent(SharedPtr<Object> object, const QString &event,
                             const ObjectList &arguments)
{
    return EventHandlerRegistry::self()->dispatch(object, event, arguments);
}

} // namespace Vantrel
