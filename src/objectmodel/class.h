#ifndef VANTREL_CLASS_H
#define VANTREL_CLASS_H

#include "objectmodel/export.h"
#include "objectmodel/members.h"
#include "objectmodel/serializable.h"
#include "objectmodel/shared.h"

#include <QByteArray>
#include <QString>

namespace Vantrel {

class ClassPrivate;
class Interface;
class Namespace;

/**
 * Run-time descriptor of one type that scripts can see: its name and place,
 * its super class, its members, and how its objects are called, converted and
 * compared. A back end derives from it, declares how many members of each kind
 * it adds, and makes their descriptors on demand.
 *
 * Methods, properties, events and enums are numbered over the whole hierarchy:
 * the ids of a class follow those of its super class. Constructors are numbered
 * within the class. A class lives as long as the process once it is
 * registered; it owns its descriptors and never frees them.
 *
 * The virtual operations keep their order and their constness, because toolkit
 * wrappers are compiled against both. Classes are handed out as pointers to
 * const; for that reason each public operation that is not const has a const
 * twin that is not virtual. A class that overrides one overload hides the
 * others, so call through a pointer to Class.
 */
class VANTREL_EXPORT Class : public Serializable
{
public:
    enum OffsetType {
        PropertyOffset = 0,
        MethodOffset = 1,
        ConstructorOffset = 2,
        EventOffset = 3,
        EnumOffset = 4
    };

    /** Stands for a super class that has not been determined yet; never dereferenced. */
    static Class *uninitialized;

    /** Not registered, without name and namespace. */
    Class();
    /** @p name is copied (UTF-8). The global namespace is the place. */
    Class(const char *name, bool registerClass);
    /** @p nameSpace is not owned. */
    Class(const char *name, Namespace *nameSpace, bool registerClass);
    /** A namespace without the flag would be taken for the flag. */
    template <class T>
    Class(const char *name, T *nameSpace) = delete;

    ~Class() override;

    void writeObject(QDataStream &stream) const override;
    /** Reads nothing: remote classes have a reader of their own. */
    void readObject(QDataStream &stream) override;

    /**
     * @p object seen as its interface @p name, with a clone of its user data;
     * null when it has no such interface.
     */
    virtual SharedPtr<Object> convertToInterface(SharedPtr<Object> object, const QString &name);

private:
    virtual SharedPtr<Object> invoke(int methodId, SharedPtr<Object> object,
                                     const ObjectList &arguments, const Method *method);

public:
    /** Calls @p method with one native pointer for each argument, unchecked. */
    virtual SharedPtr<Object> invoke(SharedPtr<Object> object, const Method *method,
                                     void **arguments);
    /**
     * Raw call, implemented by the back end for its own methods: @p data is the
     * native object, null for a static call, and @p type the class of the result.
     */
    virtual SharedPtr<Object> invoke(int methodId, void *data, void **arguments, const Class *type);

private:
    virtual bool setProperty(int propertyId, SharedPtr<Object> object, SharedPtr<Object> value,
                             const Property *property) const;

public:
    /** Writes a property; the value is converted to its type. False when refused. */
    virtual bool setProperty(SharedPtr<Object> object, const Property *property,
                             SharedPtr<Object> value) const;
    /** Raw write, implemented by the back end for its own properties. */
    virtual bool setProperty(int propertyId, void *data, void *value) const;

private:
    virtual SharedPtr<Object> getProperty(int propertyId, SharedPtr<Object> object,
                                          const Property *property);

public:
    virtual SharedPtr<Object> getProperty(SharedPtr<Object> object, const Property *property);
    /** Raw read, implemented by the back end for its own properties; @p type is the value's. */
    virtual SharedPtr<Object> getProperty(int propertyId, void *data, const Class *type);

private:
    virtual SharedPtr<Object> construct(int index, const ObjectList &arguments,
                                        const Constructor *constructor);

public:
    /** Raw construction, implemented by the back end. */
    virtual SharedPtr<Object> construct(int index, void **arguments);

    /**
     * A handle of this class for @p data, which it does not own. Normally a new
     * one; a class may also give the one that it has for this data, which is
     * then left as it is, or null for data that it refuses.
     */
    virtual SharedPtr<Object> wrap(void *data, const ObjectAttribute &attribute);
    /**
     * Frees the data of an object that owns it. Does nothing unless it is
     * overridden or registerNativeClass() told the native type.
     */
    virtual void deleteObjectData(void *data, const ObjectAttribute &attribute) const;

    /**
     * Whether objects of this class can become objects of @p target. When a
     * constructor of the target does it, @p constructor (which may be null)
     * receives that `const Constructor *`, else null.
     */
    virtual bool canConvertTo(const Class *target, bool sourceIsPointer, bool targetIsPointer,
                              void **constructor) const;
    /** Does what canConvertTo() allows; null when nothing applies. */
    virtual SharedPtr<Object> convertTo(SharedPtr<Object> object, const Class *target,
                                        bool targetIsPointer);
    /** Whether two objects have equal values. What is nested deeper than 256 levels counts as
     * unequal. */
    virtual bool compare(SharedPtr<Object> a, SharedPtr<Object> b) const;
    /** Whether two handles stand for the same thing. */
    virtual bool sameObjects(SharedPtr<Object> a, SharedPtr<Object> b) const;
    /** canConvertTo() with these flags, then with both, the source's, the target's inverted. */
    virtual bool canConvertToTolerant(const Class *target, bool sourceIsPointer,
                                      bool targetIsPointer, void **constructor) const;
    virtual SharedPtr<Object> convertToTolerant(SharedPtr<Object> object, const Class *target,
                                                bool targetIsPointer);

    /**
     * The normal form of a type name. The base version respells qualifiers and
     * descends into template arguments; override it to resolve aliases.
     */
    virtual QString realType(const QString &type);

private:
    virtual void initSuperClass();
    virtual Constructor *createConstructor(int index) const;
    virtual Method *createMethod(int methodId) const;
    virtual Property *createProperty(int propertyId) const;
    virtual Event *createEvent(int eventId) const;
    virtual Enum *createEnum(int enumId) const;
    virtual bool canCastTo(const Class *target, bool targetIsPointer) const;
    virtual SharedPtr<Object> castTo(SharedPtr<Object> object, const Class *target,
                                     bool targetIsPointer);
    virtual bool canConvertToInternal(const Class *target, bool sourceIsPointer,
                                      bool targetIsPointer) const;
    virtual SharedPtr<Object> convertToInternal(SharedPtr<Object> object, const Class *target,
                                                bool targetIsPointer);

public:
    // The same operations on a class that is const.
    SharedPtr<Object> convertToInterface(SharedPtr<Object> object, const QString &name) const;
    SharedPtr<Object> invoke(SharedPtr<Object> object, const Method *method,
                             void **arguments) const;
    SharedPtr<Object> invoke(int methodId, void *data, void **arguments, const Class *type) const;
    SharedPtr<Object> getProperty(SharedPtr<Object> object, const Property *property) const;
    SharedPtr<Object> getProperty(int propertyId, void *data, const Class *type) const;
    SharedPtr<Object> construct(int index, void **arguments) const;
    SharedPtr<Object> wrap(void *data, const ObjectAttribute &attribute) const;
    SharedPtr<Object> convertTo(SharedPtr<Object> object, const Class *target,
                                bool targetIsPointer) const;
    SharedPtr<Object> convertToTolerant(SharedPtr<Object> object, const Class *target,
                                        bool targetIsPointer) const;
    QString realType(const QString &type) const;

    /** Enters the class in its namespace and then in the Inspector, which gives the id. */
    void registerClass();

    QString className() const;
    /** The id that the Inspector gave, or -1. */
    int id() const;
    const Namespace *nameSpace() const;
    Namespace *nameSpace();
    /** Enclosing namespaces except the root and the class name, separated by "::". */
    QString fullyQualifiedClassName() const;

    /** Sets bit @p nature & 31; the meaning belongs to whoever sets it. */
    void addNature(int nature);
    bool hasNature(int nature) const;
    quint32 natures() const;

    /** The super class, determined on first use; null for a root class. */
    const Class *super() const;
    /** True for the class itself too. On a null class the answer is false. */
    bool isSubClassOf(const Class *other) const;
    static bool isSubClass(const Class *derived, const Class *base);
    /** Steps from this class up to @p other; -1 when it is no ancestor or this class is null. */
    int inheritanceDepth(const Class *other) const;
    static int inheritanceDistance(const Class *derived, const Class *base);

    // Counts over the whole hierarchy. An own count that was never declared is
    // -1 and enters the sum as such; undeclared events make no events at all.
    int numMethods() const;
    int numProperties() const;
    int numEvents() const;
    int numEnums() const;
    /** Constructors of this class alone. */
    int numConstructors() const;
    /** Where the own members of a kind begin: the number that the super class has. */
    int superClassOffset(OffsetType type) const;

    // By id over the hierarchy; null out of range.
    const Method *method(int methodId) const;
    const Property *property(int propertyId) const;
    const Event *event(int eventId) const;
    const Enum *enumerator(int enumId) const;
    /** By index within this class; null out of range. */
    const Constructor *constructor(int index) const;

    // By name, own members before those of the ancestors; null when there is none.
    MethodList methods(const QString &name) const;
    const Property *property(const QString &name) const;
    const Event *event(const QString &name) const;
    const Enum *enumerator(const QString &name) const;

    /**
     * Adds a method to a class in use. It is kept, with the next free id, when
     * the method table exists; otherwise the table is later built by
     * createMethod() for every id, the new one included. The ids of all
     * methods of subclasses move up by one.
     */
    void lateAddMethod(Method *method) const;

    /** @p iface is not owned. A second one of the same name in the hierarchy is fatal. */
    void addInterface(const Interface *iface);
    /** The interface of that name in this class or an ancestor, or null. */
    const Interface *interfaceClass(const QString &name) const;

    /** A null object of this class. */
    SharedPtr<Object> createNull() const;

    /**
     * Constructs an object with the first constructor that accepts the
     * arguments, which are converted to what it declares. Null when none does.
     */
    SharedPtr<Object> construct(const ObjectList &arguments) const;

    /**
     * The native data of @p object in @p data. False, with @p data unchanged,
     * when it is not of this class.
     */
    bool convert(SharedPtr<Object> object, void **data) const;

protected:
    /** A @p superClass that is this class or derives from it is fatal. */
    void setSuperClass(const Class *superClass);
    void setNumMethods(int count);
    void setNumConstructors(int count);
    void setNumProperties(int count);
    void setNumEvents(int count);
    void setNumEnums(int count);
    /** As numProperties(), without the delegate's properties of this class itself. */
    int numPropertiesInternal() const;
    /**
     * Add a member to a class in use, the way lateAddMethod() does: it is kept
     * when the table of its kind exists, which is otherwise built later by
     * createProperty() or createEnum(), the new id included. The id must be
     * the next free one; properties of the delegate make room.
     */
    void lateAddProperty(Property *property);
    void lateAddEnum(Enum *enumerator);

private:
    Q_DISABLE_COPY(Class)
    friend class ClassPrivate;
    friend class Constructor;
    friend class Method;
    friend class Property;

    Class *mutableSelf() const { return const_cast<Class *>(this); }
    static bool compareProperties(const SharedPtr<Object> &a, const SharedPtr<Object> &b);

    ClassPrivate *const d;
};

/**
 * A view that classes can offer of their objects, see Class::addInterface().
 * It is a class itself: its members work on the native data of the object.
 */
class VANTREL_EXPORT Interface : public Class
{
public:
    /** Not registered; lives in the global namespace when no other is given. */
    explicit Interface(const char *name);
    Interface(const char *name, Namespace *nameSpace);
    ~Interface() override;

    SharedPtr<Object> convertToInterface(SharedPtr<Object> object, const QString &name) override;
    virtual QByteArray interfaceName() const;
};

} // namespace Vantrel

#endif // VANTREL_CLASS_H
