#include "objectmodel/eventhandlers.h"

#include "objectmodel/class.h"
#include "objectmodel/delegates.h"
#include "objectmodel/eventhandlers_p.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object_p.h"

#include <algorithm>
#include <utility>

namespace Vantrel {

namespace {

bool refuse(const QString &event, const QString &reason)
{
    Inspector::self()->setError(
        QStringLiteral("Cannot install handler for event '%1': %2").arg(event, reason));
    return false;
}

bool refuseDuplicate(const QString &event)
{
    return refuse(event, QStringLiteral("it is installed already"));
}

/** What every installation needs. */
bool verify(const QString &event, const EventHandler *handler)
{
    if (event.isEmpty()) {
        return refuse(event, QStringLiteral("the event has no name"));
    }
    return handler || refuse(event, QStringLiteral("no handler given"));
}

} // namespace

EventHandler::EventHandler() = default;

EventHandler::~EventHandler()
{
    EventHandlerRegistry::self()->forget(this);
}

EventHandlerRegistry::EventHandlerRegistry()
{
    Vantrel::objectEnded = [](Object *object, bool isInvalidated) {
        self()->drop(object, isInvalidated);
    };
}

EventHandlerRegistry *EventHandlerRegistry::self()
{
    static auto *const registry = new EventHandlerRegistry;
    return registry;
}

bool EventHandlerRegistry::add(Installations *installations, EventHandler *handler)
{
    const bool known =
        std::any_of(installations->begin(), installations->end(),
                    [handler](const auto &present) { return present->handler == handler; });
    if (!known) {
        installations->push_back(std::make_shared<Installation>(Installation{handler}));
    }
    return !known;
}

bool EventHandlerRegistry::remove(Installations *installations, EventHandler *handler)
{
    const auto found =
        std::find_if(installations->begin(), installations->end(),
                     [handler](const auto &present) { return present->handler == handler; });
    if (found == installations->end()) {
        return false;
    }
    (*found)->handler = nullptr;
    installations->erase(found);
    return true;
}

EventHandlerRegistry::ObjectListeners *EventHandlerRegistry::listenersOf(quint32 index,
                                                                         const QString &event)
{
    const auto listeners = m_events.find(event);
    if (listeners == m_events.end()) {
        return nullptr;
    }
    const auto found = listeners->objects.find(index);
    return found == listeners->objects.end() ? nullptr : &*found;
}

void EventHandlerRegistry::removeIfEmpty(const QString &event)
{
    const auto listeners = m_events.find(event);
    if (listeners != m_events.end() && listeners->isEmpty()) {
        m_events.erase(listeners);
    }
}

/** From now on the end of the handle is noticed. */
void EventHandlerRegistry::watch(Object *object)
{
    if (!m_watched.contains(object->index())) {
        m_watched.insert(object->index(), object);
    }
}

bool EventHandlerRegistry::installForObject(const SharedPtr<Object> &object, const QString &event,
                                            EventHandler *handler)
{
    if (!verify(event, handler)) {
        return false;
    }
    if (!object || object->isNull() || !object->isValid()) {
        return refuse(event, QStringLiteral("the object is null or invalidated"));
    }
    watch(object.get());
    ObjectListeners &listeners = m_events[event].objects[object->index()];
    if (!add(&listeners.handlers, handler)) {
        return refuseDuplicate(event);
    }
    if (listeners.handlers.size() > 1 || connect(object, event)) {
        return true;
    }
    uninstallForIndex(object->index(), object, event, handler);
    return refuse(event,
                  QStringLiteral("objects of type %1 do not have it").arg(object->className()));
}

/** False when the toolkit says that there is no such event and the class declares none either. */
bool EventHandlerRegistry::connect(const SharedPtr<Object> &object, const QString &event)
{
    auto *delegate = DelegateFactory::self()->find<DynamicEventDelegate>(object->type());
    if (!delegate) {
        return true;
    }
    if (!delegate->connectEvent(object, event)) {
        return object->type()->event(event) != nullptr;
    }
    if (ObjectListeners *listeners = listenersOf(object->index(), event)) {
        listeners->connectedBy = delegate;
    } else if (object->isValid()) {
        delegate->disconnectEvent(object, event);
    }
    return true;
}

/** The delegate that connected disconnects, unless it has left since. */
void EventHandlerRegistry::disconnect(DynamicEventDelegate *delegate,
                                      const SharedPtr<Object> &object, const QString &event)
{
    const auto present = DelegateFactory::self()->findAll<DynamicEventDelegate>();
    if (std::find(present.begin(), present.end(), delegate) != present.end()) {
        delegate->disconnectEvent(object, event);
    }
}

bool EventHandlerRegistry::uninstallForObject(const SharedPtr<Object> &object, const QString &event,
                                              EventHandler *handler)
{
    return object
        && uninstallForIndex(ObjectAccess::knownIndex(object.get()), object, event, handler);
}

bool EventHandlerRegistry::uninstallForIndex(quint32 index, const SharedPtr<Object> &object,
                                             const QString &event, EventHandler *handler)
{
    ObjectListeners *listeners = listenersOf(index, event);
    if (!listeners || !remove(&listeners->handlers, handler)) {
        return false;
    }
    if (listeners->handlers.empty()) {
        DynamicEventDelegate *const delegate = listeners->connectedBy;
        m_events[event].objects.remove(index);
        removeIfEmpty(event);
        if (delegate) {
            disconnect(delegate, object, event);
        }
    }
    return true;
}

bool EventHandlerRegistry::installForClass(const QString &className, const QString &event,
                                           EventHandler *handler)
{
    if (!verify(event, handler)) {
        return false;
    }
    if (className.isEmpty()) {
        return refuse(event, QStringLiteral("the class has no name"));
    }
    return add(&m_events[event].classes[className], handler) || refuseDuplicate(event);
}

bool EventHandlerRegistry::uninstallForClass(const QString &className, const QString &event,
                                             EventHandler *handler)
{
    const auto listeners = m_events.find(event);
    if (listeners == m_events.end()) {
        return false;
    }
    const auto found = listeners->classes.find(className);
    if (found == listeners->classes.end() || !remove(&*found, handler)) {
        return false;
    }
    if (found->empty()) {
        listeners->classes.erase(found);
        removeIfEmpty(event);
    }
    return true;
}

bool EventHandlerRegistry::installGlobal(const QString &event, EventHandler *handler)
{
    return verify(event, handler)
        && (add(&m_events[event].global, handler) || refuseDuplicate(event));
}

bool EventHandlerRegistry::uninstallGlobal(const QString &event, EventHandler *handler)
{
    const auto listeners = m_events.find(event);
    if (listeners == m_events.end() || !remove(&listeners->global, handler)) {
        return false;
    }
    removeIfEmpty(event);
    return true;
}

void EventHandlerRegistry::forget(EventHandler *handler)
{
    const auto has = [handler](const Installations &list) {
        return std::any_of(list.begin(), list.end(),
                           [handler](const auto &present) { return present->handler == handler; });
    };
    // Collected first, because disconnecting calls delegates.
    std::vector<std::pair<QString, quint32>> objects;
    std::vector<std::pair<QString, QString>> classes;
    std::vector<QString> events;
    for (auto event = m_events.begin(); event != m_events.end(); ++event) {
        for (auto it = event->objects.begin(); it != event->objects.end(); ++it) {
            if (has(it->handlers)) {
                objects.emplace_back(event.key(), it.key());
            }
        }
        for (auto it = event->classes.begin(); it != event->classes.end(); ++it) {
            if (has(*it)) {
                classes.emplace_back(event.key(), it.key());
            }
        }
        if (has(event->global)) {
            events.push_back(event.key());
        }
    }
    for (const QString &event : events) {
        uninstallGlobal(event, handler);
    }
    for (const auto &[event, className] : classes) {
        uninstallForClass(className, event, handler);
    }
    for (const auto &[event, index] : objects) {
        const auto object = SharedPtr<Object>::borrowed(m_watched.value(index));
        uninstallForIndex(index, object, event, handler);
    }
}

/**
 * Drops what a handle had. When the handle goes and its thing stays, delegates
 * are disconnected with a new handle for the thing, of the same index, since
 * the old one can no longer be held. When the thing is gone there is nothing
 * to disconnect from.
 */
void EventHandlerRegistry::drop(Object *object, bool isInvalidated)
{
    const quint32 index = object->index();
    if (m_watched.value(index) != object) {
        return; // one that nobody listens to, or a copy
    }
    m_watched.remove(index);
    std::vector<std::pair<QString, DynamicEventDelegate *>> connections;
    for (auto event = m_events.begin(); event != m_events.end();) {
        const ObjectListeners ended = event->objects.take(index);
        for (const auto &installation : ended.handlers) {
            installation->handler = nullptr;
        }
        if (ended.connectedBy) {
            connections.emplace_back(event.key(), ended.connectedBy);
        }
        event = event->isEmpty() ? m_events.erase(event) : std::next(event);
    }
    void *data = nullptr;
    object->get(&data);
    if (connections.empty() || isInvalidated || !data) {
        return;
    }
    const SharedPtr<Object> standIn = object->type()->wrap(data, object->objectAttribute());
    if (!standIn) {
        return;
    }
    if (ObjectAccess::isNew(standIn)) {
        ObjectAccess::setIndex(standIn.get(), index);
        ObjectAccess::share(standIn, object);
    }
    for (const auto &[event, delegate] : connections) {
        disconnect(delegate, standIn, event);
    }
}

int EventHandlerRegistry::dispatch(const SharedPtr<Object> &object, const QString &event,
                                   const ObjectList &arguments) const
{
    const auto listeners = m_events.find(event);
    if (listeners == m_events.end()) {
        return 0;
    }
    // Those who are there now are called, except for those who are gone when their turn comes.
    Installations called;
    const auto append = [&called](const Installations &list) {
        called.insert(called.end(), list.begin(), list.end());
    };
    if (object) {
        const auto own = listeners->objects.find(ObjectAccess::knownIndex(object.get()));
        if (own != listeners->objects.end()) {
            append(own->handlers);
        }
    }
    if (object && !listeners->classes.isEmpty()) {
        for (const Class *c = object->type(); c; c = c->super()) {
            const auto ofClass = listeners->classes.find(c->className());
            if (ofClass != listeners->classes.end()) {
                append(*ofClass);
            }
        }
    }
    append(listeners->global);
    int count = 0;
    for (const auto &installation : called) {
        if (installation->handler) {
            ++count;
            installation->handler->handleEvent(object, event, arguments);
        }
    }
    return count;
}

} // namespace Vantrel
