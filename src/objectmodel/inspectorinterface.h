#ifndef VANTREL_INSPECTORINTERFACE_H
#define VANTREL_INSPECTORINTERFACE_H

#include "objectmodel/export.h"
#include "objectmodel/flist.h"
#include "objectmodel/shared.h"

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <vector>

namespace Vantrel {

class Class;
class Enum;
class Event;
class EventData;
class EventHandler;
class EventNotifyDelegate;
class Namespace;
class Object;
class ObjectList;
class SendEventDelegate;
class StaticPropertyDelegate;

/**
 * The operations of the object model as a front end sees them, in local or
 * remote form. Each has a neutral default (null, 0, empty), so that an
 * implementation may leave out what it does not know.
 *
 * The virtual operations keep their order: implementations are compiled
 * against it.
 */
class VANTREL_EXPORT InspectorInterface
{
public:
    InspectorInterface();
    virtual ~InspectorInterface();

    virtual int numObjects() const;
    virtual SharedPtr<Object> object(const QString &name);
    virtual SharedPtr<Object> object(int index);
    virtual ObjectList objects();
    virtual SharedPtr<Object> findObject(const QString &name);
    virtual int numClasses() const;
    virtual const Class *type(const QString &name) const;
    virtual const Class *type(int id) const;
    virtual int registerClass(const Class *c) const;
    virtual int numNamespaces() const;
    virtual Namespace *nameSpace(const QString &name) const;
    virtual Namespace *nameSpace(int id) const;
    virtual Namespace *nameSpaceFromFullyQualifiedName(const QString &name) const;
    virtual int registerNamespace(Namespace *nameSpace) const;
    virtual SharedPtr<Object> createPrimitive(const QStringList &value);
    virtual SharedPtr<Object> createPrimitive(const char *value);
    virtual SharedPtr<Object> createPrimitive(double value);
    virtual SharedPtr<Object> createPrimitive(bool value);
    virtual SharedPtr<Object> createPrimitive(long value);
    virtual SharedPtr<Object> createPrimitive(long long value);
    virtual SharedPtr<Object> createPrimitive(int value);
    virtual SharedPtr<Object> createNull(const Class *c);
    virtual SharedPtr<Object> voidObject();
    virtual bool sendEvent(const Event *event, SharedPtr<Object> object,
                           const ObjectList &arguments);
    virtual void addPropertyDelegate(StaticPropertyDelegate *delegate);
    virtual void setUniqueProperty(const QString &name, const QString &value);
    virtual void setExtensionCode(const QString &name, const QString &value);
    virtual void setMouseTracking(const QString &name, bool value);
    virtual void setRecordMouseDrag(const QString &name, bool value);
    virtual void setAllowKeyEventCompression(const QString &name, bool value);
    virtual void enableEventCompression(const QString &name, bool value);
    virtual void setRecorderFilter(const QString &name, const QString &value);
    virtual void setError(const QString &text);
    virtual QString lastError();
    virtual bool installObjectEventHandler(SharedPtr<Object> object, const QString &event,
                                           EventHandler *handler);
    virtual bool uninstallObjectEventHandler(SharedPtr<Object> object, const QString &event,
                                             EventHandler *handler);
    virtual bool installClassEventHandler(const QString &className, const QString &event,
                                          EventHandler *handler);
    virtual bool uninstallClassEventHandler(const QString &className, const QString &event,
                                            EventHandler *handler);
    virtual bool installGlobalEventHandler(const QString &event, EventHandler *handler);
    virtual bool uninstallGlobalEventHandler(const QString &event, EventHandler *handler);
    virtual QVariant call(const QString &name, const FList<QVariant> &arguments);
    virtual QMap<QString, QStringList> unmatchedProperties();

    /** True while recording is enabled and there is somebody to notify. */
    bool isEventRecordingEnabled() const;
    void setEventRecordingEnabled(bool enabled);
    /** Not owned; null for none. */
    void setEventNotifyDelegate(EventNotifyDelegate *delegate) { m_eventNotifyDelegate = delegate; }
    /** Takes @p delegate away if it is the one that is set. */
    void removeEventNotifyDelegate(EventNotifyDelegate *delegate);
    /** Not owned. Delegates are asked in the order in which they were added. */
    void addSendEventDelegate(SendEventDelegate *delegate);
    void removeSendEventDelegate(SendEventDelegate *delegate);
    /** Passes the event on while recording is enabled. */
    void recordEvent(const EventData &event);

    /**
     * The enum with a name such as "Class::Enum", or of the global class when
     * there is no "::". Null when there is none.
     */
    const Enum *enumerator(const QString &name) const;
    /** As text of the class "char", in UTF-8. */
    SharedPtr<Object> createPrimitive(const QString &value);

protected:
    const std::vector<SendEventDelegate *> &sendEventDelegates() const
    {
        return m_sendEventDelegates;
    }

private:
    Q_DISABLE_COPY(InspectorInterface)
    std::vector<SendEventDelegate *> m_sendEventDelegates;
    EventNotifyDelegate *m_eventNotifyDelegate = nullptr;
    bool m_eventRecordingEnabled = false;
};

} // namespace Vantrel

#endif // VANTREL_INSPECTORINTERFACE_H
