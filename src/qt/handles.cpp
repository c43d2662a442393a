#include "qt/handle_p.h"
#include "qt/handles_p.h"

#include "qt/metaclass_p.h"

#include "objectmodel/class.h"
#include "objectmodel/inspector.h"

#include <QHash>
#include <QThread>

#include <algorithm>
#include <typeinfo>

namespace Vantrel::QtWrapper {

/** All handles of one QObject. It exists while there are any. */
struct HandleRecord
{
    HandleRecord(QObject *o, quint64 aSerial) : object(o), serial(aSerial), guard(o) {}

    QObject *const object;
    /** Another object may come to the same place in memory. */
    const quint64 serial;
    /** Knows of the end of the object even if all its connections were cut. */
    QPointer<QObject> guard;
    QMetaObject::Connection connection;
    std::vector<Handle *> handles;
};

namespace {

/** The handles of all QObjects. Never destroyed, since handles may be held until the very end. */
class HandleRegistry : public QObject
{
public:
    static HandleRegistry *self()
    {
        static auto *const registry = new HandleRegistry;
        return registry;
    }

    HandleRecord *find(QObject *object);
    HandleRecord *ensure(QObject *object);
    void leave(HandleRecord *record, Handle *handle);
    void forget(HandleRecord *record);

private:
    QMetaObject::Connection watch(QObject *object, quint64 serial);

    QHash<QObject *, HandleRecord *> m_records;
    quint64 m_lastSerial = 0;
};

/** A record of an object that ended unnoticed, whose place in memory another one has, is dropped.
 */
HandleRecord *HandleRegistry::find(QObject *object)
{
    HandleRecord *record = m_records.value(object);
    if (record && !record->guard) {
        forget(record);
        return nullptr;
    }
    return record;
}

HandleRecord *HandleRegistry::ensure(QObject *object)
{
    HandleRecord *record = find(object);
    if (!record) {
        record = new HandleRecord(object, ++m_lastSerial);
        m_records.insert(object, record);
    }
    if (!record->connection) {
        record->connection = watch(object, record->serial);
    }
    return record;
}

void HandleRegistry::leave(HandleRecord *record, Handle *handle)
{
    auto &handles = record->handles;
    handles.erase(std::remove(handles.begin(), handles.end(), handle), handles.end());
    if (handles.empty()) {
        m_records.remove(record->object);
        disconnect(record->connection);
        delete record;
    }
}

void HandleRegistry::forget(HandleRecord *record)
{
    m_records.remove(record->object);
    disconnect(record->connection);
    // Ending one may let go of another, which must then still find the record,
    // and the cache may hold the last one.
    std::vector<SharedPtr<Object>> held;
    for (Handle *handle : record->handles) {
        held.push_back(SharedPtr<Object>::borrowed(handle));
    }
    Inspector::self()->invalidateObjectCache(record->object);
    for (Handle *handle : record->handles) {
        handle->end();
    }
    delete record;
}

/** An object that was moved to another thread reports its end late. */
QMetaObject::Connection HandleRegistry::watch(QObject *object, quint64 serial)
{
    return connect(object, &QObject::destroyed, this, [this, object, serial] {
        HandleRecord *record = m_records.value(object);
        if (record && record->serial == serial) {
            forget(record);
        }
    });
}

bool isInThisThread(const QObject *object)
{
    return object->thread() == QThread::currentThread();
}

SharedPtr<Object> refuse(const QObject *object, const QString &reason)
{
    Inspector::self()->setError(
        QStringLiteral("Cannot access an object of class %1: %2")
            .arg(QString::fromUtf8(object->metaObject()->className()), reason));
    return {};
}

} // namespace

Handle::Handle(HandleRecord *record, const Class *c, const ObjectAttribute &attribute)
    : Object(record ? record->object : nullptr, c, attribute), m_record(record),
      m_isCanonical(attribute.isPointer())
{
    if (m_record) {
        m_record->handles.push_back(this);
    }
}

Handle::~Handle()
{
    object(); // invalidates, so that nobody is led to what is gone
    if (m_record) {
        HandleRegistry::self()->leave(m_record, this);
    }
}

void Handle::end()
{
    m_record = nullptr;
    listeners.clear();
    invalidate();
}

QObject *Handle::object() const
{
    if (!m_record || !data()) {
        return nullptr;
    }
    QObject *found = m_record->guard.data();
    if (!found) {
        HandleRegistry::self()->forget(m_record);
    }
    return found;
}

bool Handle::isNull() const
{
    return !object();
}

SharedPtr<Object> Handle::castTo(const Class *target)
{
    const QObject *o = object();
    const bool isPossible =
        o ? Class::isSubClass(classOf(o->metaObject()), target) : metaObjectOf(target) != nullptr;
    return isPossible ? Object::castTo(target) : SharedPtr<Object>::borrowed(this);
}

Handle *Handle::of(const SharedPtr<Object> &object)
{
    Object *found = object.get();
    // Nothing derives from it, and this is cheaper than a cast.
    return found && typeid(*found) == typeid(Handle) ? static_cast<Handle *>(found) : nullptr;
}

SharedPtr<Object> newHandle(QObject *object, const Class *c, const ObjectAttribute &attribute)
{
    return SharedPtr<Object>(
        new Handle(object ? HandleRegistry::self()->ensure(object) : nullptr, c, attribute));
}

SharedPtr<Object> handleOf(QObject *object)
{
    return handleOf(object, classOf(object ? object->metaObject() : &QObject::staticMetaObject));
}

SharedPtr<Object> handleOf(QObject *object, const Class *type)
{
    if (!object) {
        return type->createNull();
    }
    if (!isInThisThread(object)) {
        return refuse(object, QStringLiteral("it belongs to another thread"));
    }
    if (HandleRecord *record = HandleRegistry::self()->find(object)) {
        for (Handle *handle : record->handles) {
            if (handle->type() == type && handle->isCanonical()) {
                return SharedPtr<Object>(handle);
            }
        }
    }
    if (!Class::isSubClass(classOf(object->metaObject()), type)) {
        return refuse(object,
                      QStringLiteral("it is no %1").arg(type ? type->className() : QString()));
    }
    return newHandle(object, type, ObjectAttribute::Pointer());
}

QObject *qobjectOf(const SharedPtr<Object> &handle)
{
    const Handle *found = Handle::of(handle);
    return found ? found->object() : nullptr;
}

} // namespace Vantrel::QtWrapper
