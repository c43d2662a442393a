#include "qt/events_p.h"

#include "qt/handle_p.h"
#include "qt/qtclass_p.h"
#include "qt/values_p.h"

#include "objectmodel/delegates.h"
#include "objectmodel/inspector.h"

#include <QSet>

#include <algorithm>
#include <cstdio>

namespace Vantrel::QtWrapper {

namespace {

/** Once for each event, however often its signal is emitted. */
void reportForeignArgument(const QString &event, const Type &type)
{
    static auto *const reported = new QSet<QString>;
    const QString text = QStringLiteral("Event %1: an argument has the type %2, which cannot cross "
                                        "to scripts; handlers get a null object")
                             .arg(event, QString::fromUtf8(type.name));
    if (!reported->contains(text)) {
        reported->insert(text);
        std::fprintf(stderr, "%s\n", qUtf8Printable(text));
    }
}

SharedPtr<Object> argumentObject(const QString &event, const Type &type, void *data)
{
    SharedPtr<Object> object;
    QString error;
    if (type.form == Form::Enumeration && type.metaType == QMetaType::UnknownType) {
        return Inspector::self()->createPrimitive(*static_cast<const int *>(data));
    }
    if (type.form != Form::None) {
        const bool isVariant = type.metaType == QMetaType::QVariant;
        object = objectOf(isVariant ? *static_cast<const QVariant *>(data)
                                    : QVariant(type.metaType, data),
                          &error);
    } else if (type.pointee()) {
        object = objectOf(QVariant::fromValue(*static_cast<QObject **>(data)), &error);
    } else {
        reportForeignArgument(event, type);
    }
    return object ? object : Object::zombie();
}

/** Receives one signal of one object and dispatches it. It belongs to a handle of the object. */
class SignalReceiver : public QObject
{
public:
    SignalReceiver(Handle *handle, const QString &event, const std::vector<Type> *types)
        : m_handle(handle), m_event(event), m_types(types)
    {}

    bool listenTo(QObject *sender, int signalIndex)
    {
        // The slot is the first one behind those of QObject, see qt_metacall().
        return QMetaObject::connect(sender, signalIndex, this, staticMetaObject.methodCount(),
                                    Qt::AutoConnection, nullptr);
    }

    int qt_metacall(QMetaObject::Call call, int id, void **arguments) override
    {
        id = QObject::qt_metacall(call, id, arguments);
        if (id == 0 && call == QMetaObject::InvokeMetaMethod) {
            dispatch(arguments);
        }
        return id - 1;
    }

private:
    void dispatch(void **arguments) const
    {
        const SharedPtr<Object> handle(m_handle);
        if (handle->isNull()) {
            return;
        }
        const QString event = m_event;
        ObjectList list;
        for (const Type &type : *m_types) {
            list << argumentObject(event, type, *++arguments);
        }
        // A handler may end the sender, and this with it.
        Inspector::self()->dispatchEvent(handle, event, list);
    }

    Handle *const m_handle;
    const QString m_event;
    const std::vector<Type> *const m_types;
};

class SignalEvents : public DynamicEventDelegate
{
public:
    SignalEvents() : DynamicEventDelegate(QStringLiteral("QObject")) {}

    bool connectEvent(SharedPtr<Object> object, const QString &name) override
    {
        Handle *handle = Handle::of(object);
        QObject *sender = handle ? handle->object() : nullptr;
        const Event *event = sender ? handle->type()->event(name) : nullptr;
        const auto *c = event ? dynamic_cast<const QtClass *>(event->eventClass()) : nullptr;
        const int index = c ? c->signalIndex(event) : -1;
        if (index < 0) {
            return false;
        }
        auto receiver = std::make_unique<SignalReceiver>(handle, name, c->signalArguments(event));
        const bool isConnected = receiver->listenTo(sender, index);
        if (isConnected) {
            handle->listeners.push_back({name, std::move(receiver)});
        }
        return isConnected;
    }

    bool disconnectEvent(SharedPtr<Object> object, const QString &name) override
    {
        Handle *handle = Handle::of(object);
        if (!handle) {
            return false;
        }
        auto &listeners = handle->listeners;
        const auto found =
            std::find_if(listeners.begin(), listeners.end(),
                         [&name](const auto &listener) { return listener.event == name; });
        if (found == listeners.end()) {
            return false;
        }
        const auto ended = std::move(found->receiver);
        listeners.erase(found);
        return true;
    }
};

} // namespace

void registerEvents()
{
    // Handles and classes keep what they find, to the end of the process.
    new SignalEvents;
}

} // namespace Vantrel::QtWrapper
