#ifndef VANTREL_OBJECT_H
#define VANTREL_OBJECT_H

#include "objectmodel/blockpool.h"
#include "objectmodel/export.h"
#include "objectmodel/members.h"
#include "objectmodel/serializable.h"
#include "objectmodel/shared.h"

#include <QString>

#include <initializer_list>
#include <vector>

namespace Vantrel {

class Class;
class ComparisonDelegate;
class ConversionDelegate;
class DataHolder;
class ObjectAccess;
class ObjectDelegates;
class ObjectHierarchyDelegate;
class ObjectList;
class SerializeDelegate;

/** Data that a client attaches to one handle, which owns it. */
class VANTREL_EXPORT UserData
{
public:
    virtual ~UserData();
    /** A new copy, for a second handle of the same thing. */
    virtual UserData *clone() const = 0;

protected:
    UserData() = default;
    UserData(const UserData &) = default;
    UserData &operator=(const UserData &) = default;
};

/**
 * The handle of every value that scripts can see: a pointer to native data and
 * the Class that knows what to make of it. Normally held by SharedPtr.
 *
 * A handle is live (it has data), null (no data) or invalidated (its data is
 * gone and its class is "Dead", for good). It owns its data only when told so
 * by setAutoDelete(), and always owns its user data.
 *
 * Several handles can see the same data or parts of it: reference(),
 * dereference(), conversions to an ancestor or an interface, and results by
 * reference make views, which own nothing but keep alive what they look into.
 * Data that a handle owns is then freed once, when the last of them is gone or
 * has turned to other data. Handles that Class::wrap() makes for the same data
 * know nothing of each other.
 */
class VANTREL_EXPORT Object : public Shared, public Serializable
{
public:
    /** @p data is not owned; @p c must not be null. */
    Object(void *data, const Class *c, const ObjectAttribute &attribute);
    /**
     * Copies every field, the reference count and the user data pointer
     * included. Only for plain values: with user data or auto-delete, both
     * copies would free the same thing.
     */
    Object(const Object &other);
    Object &operator=(const Object &other);
    ~Object() override;

    // The hierarchy, as the hierarchy delegate of the class tells it. Without
    // one there are no children, no parent, and every name is "unnamed".
    virtual int numChildren() const;
    virtual SharedPtr<Object> child(int index);
    virtual SharedPtr<Object> childByName(const QString &name);
    virtual ObjectList children();
    virtual SharedPtr<Object> parent();
    virtual QString name();
    virtual QString qualifiedName();

    // The value alone, without class name and children.
    virtual void streamObject(QDataStream &stream) const;
    virtual void objectFromStream(QDataStream &stream);

    virtual QString toDebugString();

    // The value in another form: by the conversion delegate of the class, else
    // by converting to the primitive class, else empty, 0 or false. Null data
    // reads "<null>".
    virtual QString toString();
    virtual int toInteger() const;
    virtual qint64 toInt64() const;
    virtual double toDouble() const;
    virtual bool toBoolean() const;
    // By the conversion delegate; nothing happens without one.
    virtual void fromString(const QString &value);
    virtual void fromInteger(int value);
    virtual void fromInt64(qint64 value);
    virtual void fromDouble(double value);
    virtual void fromBoolean(bool value);

    virtual ObjectAttribute objectAttribute();
    /** Whether there is no data. */
    virtual bool isNull() const;
    /**
     * Retypes this handle and returns it: up or down the hierarchy, or between
     * primitive classes, whose data is then reinterpreted. Otherwise the handle
     * stays as it is; nothing is converted.
     */
    virtual SharedPtr<Object> castTo(const Class *target);
    /** This handle when it is a pointer or array, else a new one that points to the data. */
    virtual SharedPtr<Object> reference();
    /** This handle unless it is a pointer; then a new one for the value, null for null data. */
    virtual SharedPtr<Object> dereference();
    virtual int wrapperType() const;

    /** A valid null object of the class "Dead", where an object is needed and none is there. */
    static SharedPtr<Object> zombie();
    /** Makes the class "Dead" exist. */
    static void registerClassOfTheDead();

    const Class *type() const { return m_class; }
    QString className() const;

    /** Stores the data pointer in @p data. */
    void get(void **data) const { *data = m_data; }
    /**
     * Replaces the data. User data is deleted, and so is the old data if owned,
     * as soon as no other handle sees it. The new data is owned as the old was.
     */
    void put(void *data);

    void setAutoDelete(bool autoDelete) { m_autoDelete = autoDelete; }
    bool isAutoDelete() const { return m_autoDelete; }

    UserData *userData() const { return m_userData; }
    /** Takes ownership of @p userData; an earlier one is not deleted. */
    void setUserData(UserData *userData) { m_userData = userData; }

    bool isValid() const { return !m_invalid; }
    /**
     * For when the thing behind the handle is gone: forgets the data without
     * deleting it and makes the handle one of the class "Dead".
     */
    void invalidate();

    /** A number of its own for each handle, given on first request; thread-safe. */
    quint32 index() const;

    /** Equal values. */
    bool compare(SharedPtr<Object> other) const;
    /** The same thing. */
    bool sameAs(SharedPtr<Object> other) const;
    /** Whether the class of this handle is @p c or a subclass of it. */
    bool isA(const Class *c) const { return c && (m_class == c || isDerivedFrom(c)); }

    void writeObject(QDataStream &stream) const override;
    void readObject(QDataStream &stream) override;

protected:
    void setObjectAttribute(const ObjectAttribute &attribute);
    void *data() const { return m_data; }
    /** Exchanges the data pointer alone: nothing is freed and user data stays. */
    void setData(void *data) { m_data = data; }
    /** put() for a handle that was retyped: the old data is still of class @p former. */
    void put(void *data, const Class *former);

private:
    friend class ObjectAccess;

    SharedPtr<Object> self() const
    {
        return SharedPtr<Object>::borrowed(const_cast<Object *>(this));
    }
    bool isDerivedFrom(const Class *c) const;
    void generateIndex() const;
    void tellEnd(bool isInvalidated);
    template <class D>
    D *delegate(D *ObjectDelegates::*kind) const;
    ObjectHierarchyDelegate *setupHierarchyDelegate() const;
    SerializeDelegate *setupSerializeDelegate() const;
    ConversionDelegate *setupConversionDelegate() const;
    ComparisonDelegate *setupComparisonDelegate() const;
    template <class D>
    void keepDelegate(D *ObjectDelegates::*kind, D *found) const;
    void clearDelegates();
    const SharedPtr<DataHolder> &holder();
    void letGoOfData(const Class *freedBy);
    SharedPtr<Object> viewed(const ObjectAttribute &attribute);
    ConversionDelegate *conversionDelegate(int capability) const;
    SharedPtr<Object> convertedToPrimitive(int classId) const;
    template <class Value, class Read>
    Value readAsPrimitive(int classId, Value none, Read read) const;
    QString propertiesToDebugString();

    void *m_data;
    UserData *m_userData = nullptr;
    const Class *m_class;
    // The attribute without the virtual table that every ObjectAttribute has.
    qint32 m_attributeFlags;
    qint32 m_arrayLength;
    /** What keeps the data for all handles that see it; null while there is only this one. */
    SharedPtr<DataHolder> m_holder;
    /** A delegate in it is that of this handle if its bit, by Delegate::Type, is set below. */
    mutable SharedPtr<ObjectDelegates> m_delegates;
    mutable quint32 m_index = 0xFFFFFFFFu;
    bool m_autoDelete : 1;
    bool m_invalid : 1;
    /** Whether the data was made with room for what handles of any shape may write to it. */
    bool m_hasRoom : 1;
    /** The size of the block of the BlockPool that the data is, or 0 when it is none. */
    quint8 m_blockSize = 0;
    mutable quint8 m_askedDelegates = 0;
};

/** The arguments of a call, the children of an object: handles in order. */
class VANTREL_EXPORT ObjectList
{
public:
    using Items = std::vector<SharedPtr<Object>, PoolAllocator<SharedPtr<Object>>>;
    using value_type = SharedPtr<Object>;
    using iterator = Items::iterator;
    using const_iterator = Items::const_iterator;

    ObjectList();
    ObjectList(std::initializer_list<SharedPtr<Object>> items);
    ObjectList(const ObjectList &other);
    ObjectList(ObjectList &&other) noexcept;
    ObjectList &operator=(const ObjectList &other);
    ObjectList &operator=(ObjectList &&other) noexcept;
    ~ObjectList();

    ObjectList &operator<<(SharedPtr<Object> object);
    void push_back(SharedPtr<Object> object);
    void pop_back() { m_items.pop_back(); }
    SharedPtr<Object> &front() { return m_items.front(); }
    const SharedPtr<Object> &front() const { return m_items.front(); }
    SharedPtr<Object> &back() { return m_items.back(); }
    const SharedPtr<Object> &back() const { return m_items.back(); }

    // Both throw std::out_of_range for an index that is not below size().
    SharedPtr<Object> &at(std::size_t index);
    const SharedPtr<Object> &at(std::size_t index) const;
    SharedPtr<Object> &operator[](std::size_t index) { return at(index); }
    const SharedPtr<Object> &operator[](std::size_t index) const { return at(index); }

    iterator begin() { return m_items.begin(); }
    iterator end() { return m_items.end(); }
    const_iterator begin() const { return m_items.begin(); }
    const_iterator end() const { return m_items.end(); }

    iterator insert(const_iterator position, SharedPtr<Object> object);
    iterator insert(const_iterator position, std::size_t count, const SharedPtr<Object> &object);
    iterator erase(const_iterator position);
    void clear();
    bool empty() const { return m_items.empty(); }
    std::size_t size() const { return m_items.size(); }
    void reserve(std::size_t count);
    void resize(std::size_t count, const SharedPtr<Object> &object = {});
    void swap(ObjectList &other) noexcept { m_items.swap(other.m_items); }

private:
    Items m_items;
};

} // namespace Vantrel

#endif // VANTREL_OBJECT_H
