#ifndef VANTREL_EVENTHANDLERS_P_H
#define VANTREL_EVENTHANDLERS_P_H

#include "objectmodel/eventhandlers.h"
#include "objectmodel/object.h"

#include <QHash>
#include <QString>

#include <memory>
#include <vector>

namespace Vantrel {

class DynamicEventDelegate;

/**
 * Who hears of which event. Handlers of an object are kept under the index of
 * its handle and end with the handle; the registry does not keep it alive. It
 * lives as long as the process, because handlers and handles may outlive every
 * static object.
 *
 * Delegates and handlers are foreign code that may come back to the registry,
 * so it is complete whenever one of them is called, and nothing found before
 * the call is used after it.
 */
class EventHandlerRegistry
{
public:
    static EventHandlerRegistry *self();

    // Refusals set the Inspector's last error.
    bool installForObject(const SharedPtr<Object> &object, const QString &event,
                          EventHandler *handler);
    bool installForClass(const QString &className, const QString &event, EventHandler *handler);
    bool installGlobal(const QString &event, EventHandler *handler);

    // Whether the handler was there.
    bool uninstallForObject(const SharedPtr<Object> &object, const QString &event,
                            EventHandler *handler);
    bool uninstallForClass(const QString &className, const QString &event, EventHandler *handler);
    bool uninstallGlobal(const QString &event, EventHandler *handler);
    /** Uninstalls @p handler wherever it is. */
    void forget(EventHandler *handler);

    /** @return the number of handlers that were called. */
    int dispatch(const SharedPtr<Object> &object, const QString &event,
                 const ObjectList &arguments) const;

private:
    /** One place of a handler; null once it was uninstalled, so that a running dispatch skips it.
     */
    struct Installation
    {
        EventHandler *handler;
    };
    using Installations = std::vector<std::shared_ptr<Installation>>;
    struct ObjectListeners
    {
        Installations handlers;
        /** Null when nobody had to connect to the event. */
        DynamicEventDelegate *connectedBy = nullptr;
    };
    struct Listeners
    {
        QHash<quint32, ObjectListeners> objects;
        QHash<QString, Installations> classes;
        Installations global;

        bool isEmpty() const { return objects.isEmpty() && classes.isEmpty() && global.empty(); }
    };

    EventHandlerRegistry();
    Q_DISABLE_COPY(EventHandlerRegistry)

    static bool add(Installations *installations, EventHandler *handler);
    static bool remove(Installations *installations, EventHandler *handler);
    static void disconnect(DynamicEventDelegate *delegate, const SharedPtr<Object> &object,
                           const QString &event);

    ObjectListeners *listenersOf(quint32 index, const QString &event);
    void removeIfEmpty(const QString &event);
    void watch(Object *object);
    bool connect(const SharedPtr<Object> &object, const QString &event);
    bool uninstallForIndex(quint32 index, const SharedPtr<Object> &object, const QString &event,
                           EventHandler *handler);
    void drop(Object *object, bool isInvalidated);

    QHash<QString, Listeners> m_events;
    /** The handles that have or had handlers, by index. */
    QHash<quint32, Object *> m_watched;
};

} // namespace Vantrel

#endif // VANTREL_EVENTHANDLERS_P_H
