#ifndef VANTREL_REMOTE_H
#define VANTREL_REMOTE_H

#include "objectmodel/class.h"
#include "objectmodel/object.h"

namespace Vantrel {

/** A handle of something that lives in another process, where @p objectId names it. */
class VANTREL_EXPORT RemoteObjectBase : public Object
{
public:
    RemoteObjectBase(const RemoteObjectBase &other);
    RemoteObjectBase(RemoteObjectBase &&other);
    RemoteObjectBase &operator=(const RemoteObjectBase &other);
    RemoteObjectBase &operator=(RemoteObjectBase &&other);
    ~RemoteObjectBase() override;

    quint32 objectId() const { return m_objectId; }

protected:
    RemoteObjectBase(const Class *c, quint32 objectId);

private:
    quint32 m_objectId;
};

/** A class of another process, which the application context id names. */
class VANTREL_EXPORT RemoteClassBase : public Class
{
public:
    explicit RemoteClassBase(int applicationContextId);
    ~RemoteClassBase() override;

    int applicationContextId() const { return m_applicationContextId; }

private:
    qint32 m_applicationContextId;
};

} // namespace Vantrel

#endif // VANTREL_REMOTE_H
