#ifndef VANTREL_REMOTE_H
#define VANTREL_REMOTE_H

#include "objectmodel/class.h"
#include "objectmodel/object.h"

#include <memory>

namespace Vantrel {

class RemoteClass;
class RemoteClassPrivate;

/**
 * A handle of something that lives in another process, where @p objectId names
 * it. Copying and moving copy every field, the reference count included, so
 * that the limits of copying an Object hold here too.
 */
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
    /** @p remoteId is the id that the class has over there; only who made the class uses it. */
    explicit RemoteClassBase(int applicationContextId, int remoteId = -1);
    ~RemoteClassBase() override;

    int applicationContextId() const { return m_applicationContextId; }

private:
    qint32 m_applicationContextId;
};

/** What is asked of a remote class or object. */
struct RemoteMember
{
    enum Kind { MethodCall, Construction, PropertyRead, PropertyWrite };

    Kind kind;
    /**
     * As the other process numbers it: methods and properties over the class
     * hierarchy, constructors within the class.
     */
    int id;
    /** Empty for a constructor. */
    QString name;
};

/** Carries what is asked of remote classes to the process that has them. */
class VANTREL_EXPORT RemoteTransport
{
public:
    virtual ~RemoteTransport();

    /**
     * Asks @p member, which @p c declares, of the object @p objectId, which is
     * 0 for static members and constructors. A property is written with one
     * argument, null for no value. The arguments of a method are as many as it
     * declares.
     * @return the result; any object at all when a property was written or a
     * method without result was called. Null, with the Inspector's last error
     * set, when it failed.
     */
    virtual SharedPtr<Object> access(const RemoteClass *c, const RemoteMember &member,
                                     quint32 objectId, const ObjectList &arguments) = 0;
};

/**
 * A class that is known by its description from another process. All that is
 * asked of it and its objects goes to a transport.
 *
 * Types and enums of members are looked up when members of their kind are first
 * asked for, the super class and the interfaces when they are first needed, so
 * descriptions that refer to each other can be read in any order. A super class
 * that is not known then is looked for again the next time; one that would
 * close a ring is left out, and so is one with too long a line of ancestors.
 *
 * Register the class to make it known to others under a local id; as with every
 * class, it must then live as long as the process. A class that was not
 * registered may go, and its descriptors with it.
 */
class VANTREL_EXPORT RemoteClass : public RemoteClassBase
{
public:
    /** @p transport is not owned and must outlive the class. */
    RemoteClass(int applicationContextId, RemoteTransport *transport);
    ~RemoteClass() override;

    /** The id that the other process gave the class; id() is the one of this process. */
    int remoteId() const;
    /** A new handle for the object that the other process knows as @p objectId. */
    SharedPtr<Object> object(quint32 objectId) const;

    /** Writes the description as it was read, whatever of it is known here. */
    void writeObject(QDataStream &stream) const override;
    /**
     * Reads one class description. When the stream is not Ok afterwards, the
     * class is as before. A class is described once; a second description is
     * refused with the last error set, and nothing is read.
     */
    void readObject(QDataStream &stream) override;

    /** The same remote object, seen as one of the interface. */
    SharedPtr<Object> convertToInterface(SharedPtr<Object> object, const QString &name) override;
    bool setProperty(SharedPtr<Object> object, const Property *property,
                     SharedPtr<Object> value) const override;
    SharedPtr<Object> getProperty(SharedPtr<Object> object, const Property *property) override;

private:
    SharedPtr<Object> invoke(int methodId, SharedPtr<Object> object, const ObjectList &arguments,
                             const Method *method) override;
    bool setProperty(int propertyId, SharedPtr<Object> object, SharedPtr<Object> value,
                     const Property *property) const override;
    SharedPtr<Object> getProperty(int propertyId, SharedPtr<Object> object,
                                  const Property *property) override;
    SharedPtr<Object> construct(int index, const ObjectList &arguments,
                                const Constructor *constructor) override;
    void initSuperClass() override;
    Constructor *createConstructor(int index) const override;
    Method *createMethod(int methodId) const override;
    Property *createProperty(int propertyId) const override;
    Event *createEvent(int eventId) const override;
    Enum *createEnum(int enumId) const override;

    const std::unique_ptr<RemoteClassPrivate> d;
};

/** A handle of an object of a RemoteClass. */
class VANTREL_EXPORT RemoteObject : public RemoteObjectBase
{
public:
    /** @p c is the remote class, or an interface that one of them offers. */
    RemoteObject(const Class *c, quint32 objectId);
    ~RemoteObject() override;

    /**
     * False for a valid object, although there is no data here. An object whose
     * class descends from one of this process is null, because that one would
     * look for its data.
     */
    bool isNull() const override;
};

} // namespace Vantrel

#endif // VANTREL_REMOTE_H
