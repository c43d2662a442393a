#include "objectmodel/remote.h"

namespace Vantrel {

RemoteObjectBase::RemoteObjectBase(const Class *c, quint32 objectId)
    : Object(nullptr, c, ObjectAttribute()), m_objectId(objectId)
{
}

RemoteObjectBase::RemoteObjectBase(const RemoteObjectBase &other) = default;

RemoteObjectBase::RemoteObjectBase(RemoteObjectBase &&other) = default;

RemoteObjectBase &RemoteObjectBase::operator=(const RemoteObjectBase &other) = default;

RemoteObjectBase &RemoteObjectBase::operator=(RemoteObjectBase &&other) = default;

RemoteObjectBase::~RemoteObjectBase() = default;

RemoteClassBase::RemoteClassBase(int applicationContextId)
    : m_applicationContextId(applicationContextId)
{
}

RemoteClassBase::~RemoteClassBase() = default;

} // namespace Vantrel
