#include "objectmodel/inspectorinterface.h"

#include "objectmodel/class.h"
#include "objectmodel/delegates.h"
#include "objectmodel/object.h"
#include "objectmodel/primitiveids.h"

#include <algorithm>

namespace Vantrel {

InspectorInterface::InspectorInterface() = default;

InspectorInterface::~InspectorInterface() = default;

int InspectorInterface::numObjects() const
{
    return 0;
}

SharedPtr<Object> InspectorInterface::object(const QString &)
{
    return {};
}

SharedPtr<Object> InspectorInterface::object(int)
{
    return {};
}

ObjectList InspectorInterface::objects()
{
    return {};
}

SharedPtr<Object> InspectorInterface::findObject(const QString &)
{
    return {};
}

int InspectorInterface::numClasses() const
{
    return 0;
}

const Class *InspectorInterface::type(const QString &) const
{
    return nullptr;
}

const Class *InspectorInterface::type(int) const
{
    return nullptr;
}

int InspectorInterface::registerClass(const Class *) const
{
    return -1;
}

int InspectorInterface::numNamespaces() const
{
    return 0;
}

Namespace *InspectorInterface::nameSpace(const QString &) const
{
    return nullptr;
}

Namespace *InspectorInterface::nameSpace(int) const
{
    return nullptr;
}

Namespace *InspectorInterface::nameSpaceFromFullyQualifiedName(const QString &) const
{
    return nullptr;
}

int InspectorInterface::registerNamespace(Namespace *) const
{
    return -1;
}

SharedPtr<Object> InspectorInterface::createPrimitive(const QStringList &)
{
    return {};
}

SharedPtr<Object> InspectorInterface::createPrimitive(const char *)
{
    return {};
}

SharedPtr<Object> InspectorInterface::createPrimitive(double)
{
    return {};
}

SharedPtr<Object> InspectorInterface::createPrimitive(bool)
{
    return {};
}

SharedPtr<Object> InspectorInterface::createPrimitive(long)
{
    return {};
}

SharedPtr<Object> InspectorInterface::createPrimitive(long long)
{
    return {};
}

SharedPtr<Object> InspectorInterface::createPrimitive(int)
{
    return {};
}

SharedPtr<Object> InspectorInterface::createNull(const Class *)
{
    return {};
}

SharedPtr<Object> InspectorInterface::voidObject()
{
    return {};
}

bool InspectorInterface::sendEvent(const Event *, SharedPtr<Object>, const ObjectList &)
{
    return false;
}

void InspectorInterface::addPropertyDelegate(StaticPropertyDelegate *) {}

void InspectorInterface::setUniqueProperty(const QString &, const QString &) {}

void InspectorInterface::setExtensionCode(const QString &, const QString &) {}

void InspectorInterface::setMouseTracking(const QString &, bool) {}

void InspectorInterface::setRecordMouseDrag(const QString &, bool) {}

void InspectorInterface::setAllowKeyEventCompression(const QString &, bool) {}

void InspectorInterface::enableEventCompression(const QString &, bool) {}

void InspectorInterface::setRecorderFilter(const QString &, const QString &) {}

void InspectorInterface::setError(const QString &) {}

QString InspectorInterface::lastError()
{
    return QString();
}

bool InspectorInterface::installObjectEventHandler(SharedPtr<Object>, const QString &,
                                                   EventHandler *)
{
    return false;
}

bool InspectorInterface::uninstallObjectEventHandler(SharedPtr<Object>, const QString &,
                                                     EventHandler *)
{
    return false;
}

bool InspectorInterface::installClassEventHandler(const QString &, const QString &, EventHandler *)
{
    return false;
}

bool InspectorInterface::uninstallClassEventHandler(const QString &, const QString &,
                                                    EventHandler *)
{
    return false;
}

bool InspectorInterface::installGlobalEventHandler(const QString &, EventHandler *)
{
    return false;
}

bool InspectorInterface::uninstallGlobalEventHandler(const QString &, EventHandler *)
{
    return false;
}

QVariant InspectorInterface::call(const QString &, const FList<QVariant> &)
{
    return QVariant();
}

QMap<QString, QStringList> InspectorInterface::unmatchedProperties()
{
    return {};
}

bool InspectorInterface::isEventRecordingEnabled() const
{
    return m_eventRecordingEnabled && m_eventNotifyDelegate;
}

void InspectorInterface::setEventRecordingEnabled(bool enabled)
{
    m_eventRecordingEnabled = enabled;
}

void InspectorInterface::addSendEventDelegate(SendEventDelegate *delegate)
{
    if (delegate) {
        m_sendEventDelegates.push_back(delegate);
    }
}

void InspectorInterface::removeSendEventDelegate(SendEventDelegate *delegate)
{
    m_sendEventDelegates.erase(
        std::remove(m_sendEventDelegates.begin(), m_sendEventDelegates.end(), delegate),
        m_sendEventDelegates.end());
}

void InspectorInterface::removeEventNotifyDelegate(EventNotifyDelegate *delegate)
{
    if (m_eventNotifyDelegate == delegate) {
        m_eventNotifyDelegate = nullptr;
    }
}

void InspectorInterface::recordEvent(const EventData &event)
{
    if (isEventRecordingEnabled()) {
        m_eventNotifyDelegate->notifyEvent(event);
    }
}

const Enum *InspectorInterface::enumerator(const QString &name) const
{
    // A name that begins with "::" has nothing before it, so the search ends at the second
    // character.
    const int separator = name.lastIndexOf(QLatin1String("::"));
    const Class *owner = separator > 0 ? type(name.left(separator)) : type(PrimitiveId::Global);
    return owner ? owner->enumerator(separator > 0 ? name.mid(separator + 2) : name) : nullptr;
}

SharedPtr<Object> InspectorInterface::createPrimitive(const QString &value)
{
    // Most texts are short and ASCII, which needs no memory on the way.
    char text[256];
    const int size = value.size();
    const QChar *source = value.constData();
    ushort all = 0;
    if (size < int(sizeof text)) {
        for (int i = 0; i < size; ++i) {
            all |= source[i].unicode();
            text[i] = static_cast<char>(source[i].unicode());
        }
        text[size] = '\0';
    }
    const bool isReady = size < int(sizeof text) && all < 0x80;
    return isReady ? createPrimitive(text) : createPrimitive(value.toUtf8().constData());
}

} // namespace Vantrel
