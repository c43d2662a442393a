#ifndef VANTREL_MEMBERS_H
#define VANTREL_MEMBERS_H

#include "objectmodel/export.h"
#include "objectmodel/flist.h"
#include "objectmodel/serializable.h"
#include "objectmodel/shared.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace Vantrel {

class Class;
class Enum;
class Object;
class ObjectList;
struct ArgumentRecord;

/** How a value of a type is passed: by value, reference, pointer or array, and its constness. */
class VANTREL_EXPORT ObjectAttribute : public Serializable
{
public:
    enum Flag {
        ReferenceFlag = 1,
        PointerFlag = 2,
        Const1Flag = 4, ///< const before the type
        Const2Flag = 8, ///< const after the type, on the pointer
        ArrayFlag = 16
    };

    /** @p flags is a combination of Flag values; @p arrayLength counts the elements of an array. */
    explicit ObjectAttribute(int flags = 0, int arrayLength = 0);
    ObjectAttribute(const ObjectAttribute &) = default;
    ObjectAttribute &operator=(const ObjectAttribute &) = default;
    ~ObjectAttribute() override;

    static ObjectAttribute Value() { return ObjectAttribute(); }
    static ObjectAttribute Reference() { return ObjectAttribute(ReferenceFlag); }
    static ObjectAttribute Pointer() { return ObjectAttribute(PointerFlag); }
    static ObjectAttribute Array(int length) { return ObjectAttribute(ArrayFlag, length); }

    bool isReference() const { return m_flags & ReferenceFlag; }
    bool isPointer() const { return m_flags & PointerFlag; }
    bool isConst1() const { return m_flags & Const1Flag; }
    bool isConst2() const { return m_flags & Const2Flag; }
    bool isArray() const { return m_flags & ArrayFlag; }
    /** Neither reference nor pointer; true for an array too. */
    bool isValue() const { return !(m_flags & (ReferenceFlag | PointerFlag)); }
    bool hasConst() const { return m_flags & (Const1Flag | Const2Flag); }
    int getFlags() const { return m_flags; }
    int arrayLength() const { return m_arrayLength; }

    /** Whether something of the shape @p other can stand for this one; constness does not count. */
    bool tolerantMatch(const ObjectAttribute &other) const;

    void writeObject(QDataStream &stream) const override;
    void readObject(QDataStream &stream) override;

    friend bool operator==(const ObjectAttribute &a, const ObjectAttribute &b)
    {
        return a.m_flags == b.m_flags && a.m_arrayLength == b.m_arrayLength;
    }
    friend bool operator!=(const ObjectAttribute &a, const ObjectAttribute &b) { return !(a == b); }

private:
    qint32 m_flags;
    qint32 m_arrayLength;
};

/**
 * A typed, optionally named value: an argument of a method, the type of a
 * property or a return type. A null class given to a constructor becomes the
 * class "undefined", once the Inspector has built it.
 */
class VANTREL_EXPORT Argument : public Serializable
{
public:
    Argument();
    Argument(const QString &name, const Class *type,
             const ObjectAttribute &attribute = ObjectAttribute(), const Enum *enumType = nullptr);
    Argument(const QString &name, const Class *type, int flags, int arrayLength,
             const Enum *enumType = nullptr);
    explicit Argument(const Class *type, const ObjectAttribute &attribute = ObjectAttribute(),
                      const Enum *enumType = nullptr);
    Argument(const Class *type, int flags, int arrayLength, const Enum *enumType = nullptr);
    /**
     * Takes every handle as it is: of any class, null or invalidated. Only for
     * what is called with handles, such as the functions of the global class;
     * a native pointer of unknown type is of no use. Reads "Object *".
     */
    static Argument AnyObject(const QString &name = QString());
    /**
     * Takes every handle as it is, too, but describes itself as @p type: for
     * what checks a value before it converts it, because a text that is no
     * number would arrive as 0. Travels in a stream as an ordinary argument.
     */
    static Argument Unconverted(const QString &name, const Class *type);
    Argument(const Argument &) = default;
    Argument &operator=(const Argument &) = default;
    ~Argument() override;

    bool isValid() const { return m_type != nullptr; }
    const QString &name() const { return m_name; }
    const Class *type() const { return m_type; }
    const ObjectAttribute &attribute() const { return m_attribute; }
    /** Null unless the argument is of an enum type. */
    const Enum *enumType() const { return m_enumType; }
    /** Whether AnyObject() or Unconverted() made this argument. */
    bool takesAnyObject() const;

    bool isArray() const { return m_attribute.isArray(); }
    bool isConst1() const { return m_attribute.isConst1(); }
    bool isConst2() const { return m_attribute.isConst2(); }
    bool isPointer() const { return m_attribute.isPointer(); }
    bool isReference() const { return m_attribute.isReference(); }
    int arrayLength() const { return m_attribute.arrayLength(); }

    void writeObject(QDataStream &stream) const override;
    void readObject(QDataStream &stream) override;

    friend VANTREL_EXPORT bool operator==(const Argument &a, const Argument &b);
    friend bool operator!=(const Argument &a, const Argument &b) { return !(a == b); }

private:
    friend struct ArgumentRecord;

    QString m_name;
    const Class *m_type = nullptr;
    ObjectAttribute m_attribute;
    const Enum *m_enumType = nullptr;
    bool m_unconverted = false;
};

/** The name and the ordered arguments of something that can be called. */
class VANTREL_EXPORT Signature : public Serializable
{
public:
    Signature() = default;
    explicit Signature(const QString &name, const FList<Argument> &arguments = {});
    Signature(const Signature &) = default;
    Signature &operator=(const Signature &) = default;
    ~Signature() override;

    const QString &name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    const FList<Argument> &arguments() const { return m_arguments; }
    int numArguments() const { return m_arguments.size(); }
    void addArgument(const Argument &argument) { m_arguments.append(argument); }

    /** The argument list without the name, for example "(const Foo & x, int)". */
    QString toString() const;

    /** The record holds the arguments only; every owner writes its own name. */
    void writeObject(QDataStream &stream) const override;
    void readObject(QDataStream &stream) override;

    friend bool operator==(const Signature &a, const Signature &b)
    {
        return a.m_name == b.m_name && a.m_arguments == b.m_arguments;
    }
    friend bool operator!=(const Signature &a, const Signature &b) { return !(a == b); }

private:
    QString m_name;
    FList<Argument> m_arguments;
};

/** One overload of a method. Owned by its class, for as long as the process runs. */
class VANTREL_EXPORT Method : public Serializable
{
public:
    enum Flag { NoFlags = 0, Static = 1 };

    /** A description to be read from a stream; @p owner is the class it is read for. */
    explicit Method(const Class *owner = nullptr);
    /** @p id counts over the whole class hierarchy. @p owner declares the method. */
    Method(int id, const Class *owner, const Argument &returnType, const Signature &signature,
           int flags = NoFlags);
    ~Method() override;

    int id() const { return m_id; }
    void setId(int id) { m_id = id; }
    /** The class that declares the method. */
    const Class *methodClass() const { return m_owner; }
    /** The class of the result. */
    const Class *type() const { return m_returnType.type(); }
    const Argument &returnType() const { return m_returnType; }
    const QString &name() const { return m_signature.name(); }
    const Signature &signature() const { return m_signature; }
    bool isStatic() const { return m_flags & Static; }

    /** The first call from then on writes a diagnostic with @p message. */
    void deprecate(const QString &message);
    bool isDeprecated() const { return !m_deprecationMessage.isEmpty(); }
    const QString &deprecationMessage() const { return m_deprecationMessage; }

    /**
     * Calls the method with arguments as they are: none is converted, and a
     * null handle arrives as a null pointer. A static method takes a null
     * @p object. The result is null, with the Inspector's last error set, when
     * the call is refused.
     */
    SharedPtr<Object> invoke(SharedPtr<Object> object, const ObjectList &arguments) const;

    /** For example "const Foo& bar(int x)". */
    QString toString() const;

    void writeObject(QDataStream &stream) const override;
    void readObject(QDataStream &stream) override;

private:
    Q_DISABLE_COPY(Method)
    qint32 m_id = -1;
    const Class *m_owner = nullptr;
    Argument m_returnType;
    Signature m_signature;
    int m_flags = NoFlags;
    QString m_deprecationMessage;
    mutable bool m_deprecationReported = false;
};

/**
 * The overloads of one name: those of the class itself first, then those of
 * its ancestors. The list refers to the methods and does not own them.
 */
class VANTREL_EXPORT MethodList
{
public:
    using const_iterator = FList<const Method *>::const_iterator;

    int size() const { return m_methods.size(); }
    bool isEmpty() const { return m_methods.isEmpty(); }
    /** @return the overload at @p index, or null out of range. */
    const Method *at(int index) const;
    const_iterator begin() const { return m_methods.begin(); }
    const_iterator end() const { return m_methods.end(); }
    void append(const Method *method) { m_methods.append(method); }
    void append(MethodList &&other) { m_methods.append(std::move(other.m_methods)); }

    /**
     * @return the first overload with the right number of arguments whose
     * classes are those of @p arguments or super classes of them, without any
     * conversion. Null when there is none, or when an argument is null.
     */
    const Method *methodForArguments(const ObjectList &arguments) const;

    /**
     * Chooses an overload, converts the arguments to what it declares, and
     * calls it. The rule is that of methodForArguments(), and after it the
     * first overload that takes as many arguments, all of which convert.
     * @p ok becomes true when the call was made and gave a result. Otherwise
     * the reason is the Inspector's last error and the result is null.
     */
    SharedPtr<Object> invoke(SharedPtr<Object> object, const ObjectList &arguments, bool *ok) const;
    /** The same for who only looks at the result. */
    SharedPtr<Object> invoke(SharedPtr<Object> object, const ObjectList &arguments,
                             std::nullptr_t = nullptr) const;
    /** The same with success as the return value and the result in @p result, which may be null. */
    bool invoke(SharedPtr<Object> object, const ObjectList &arguments,
                SharedPtr<Object> *result) const;

    /**
     * One line for each overload that does not take @p arguments, in list
     * order, with the reason: "deposit(double amount): expects 1 argument, 2 given".
     */
    QStringList explain(const ObjectList &arguments) const;

private:
    FList<const Method *> m_methods;
};

/** One constructor of a class. Constructors are not inherited. Owned by its class. */
class VANTREL_EXPORT Constructor : public Serializable
{
public:
    explicit Constructor(const Class *owner = nullptr);
    /** @p id is the index within @p owner. */
    Constructor(int id, const Class *owner, const Signature &signature);
    ~Constructor() override;

    int id() const { return m_id; }
    /** The class that is constructed. */
    const Class *type() const { return m_owner; }
    const Signature &signature() const { return m_signature; }

    /** Calls the constructor with arguments as they are; null when it fails. */
    SharedPtr<Object> construct(const ObjectList &arguments) const;

    /** For example "Widget(int x)". */
    QString toString() const;

    void writeObject(QDataStream &stream) const override;
    void readObject(QDataStream &stream) override;

private:
    Q_DISABLE_COPY(Constructor)
    qint32 m_id = -1;
    const Class *m_owner = nullptr;
    Signature m_signature;
};

/** Something that an object tells of itself or can be told. Owned by its class. */
class VANTREL_EXPORT Event : public Serializable
{
public:
    enum Flag { NoFlags = 0, Sendable = 1 };

    explicit Event(const Class *owner = nullptr);
    /** @p id counts over the whole class hierarchy. */
    Event(int id, const Class *owner, const Signature &signature, int flags = NoFlags);
    ~Event() override;

    int id() const { return m_id; }
    const Class *eventClass() const { return m_owner; }
    const QString &name() const { return m_signature.name(); }
    const Signature &signature() const { return m_signature; }
    bool isSendable() const { return m_flags & Sendable; }

    /** Hands the event to the Inspector. @return false, with the last error set, when refused. */
    bool sendEvent(SharedPtr<Object> object, const ObjectList &arguments) const;

    void writeObject(QDataStream &stream) const override;
    void readObject(QDataStream &stream) override;

private:
    Q_DISABLE_COPY(Event)
    qint32 m_id = -1;
    const Class *m_owner = nullptr;
    Signature m_signature;
    int m_flags = NoFlags;
};

/** A named table of keys and values. Owned by its class. */
class VANTREL_EXPORT Enum : public Serializable
{
public:
    struct Item
    {
        const char *key;
        qint32 value;
    };

    explicit Enum(const Class *owner = nullptr);
    /**
     * @p items ends with an item whose key is null; the table is not copied
     * and must live as long as the enum.
     */
    Enum(int id, const Class *owner, const QString &name, const Item *items);
    ~Enum() override;

    int id() const { return m_id; }
    const Class *enumClass() const { return m_owner; }
    const QString &name() const { return m_name; }
    int count() const { return m_count; }

    /** @return an empty text when @p index is out of range. */
    QString key(int index) const;
    /** @return -1 when @p index is out of range. */
    int value(int index) const;
    /**
     * The value of a key; keys joined with "|" are taken by arguments only.
     * @return -1, with @p ok (which may be null) set to false, when there is no such key.
     */
    int value(const QString &key, bool *ok) const;
    /**
     * The key of the first item with exactly @p value; masks are not split
     * into their bits. A miss is an empty text, @p ok (which may be null) set
     * to false, and a diagnostic.
     */
    QString valueToKey(int value, bool *ok) const;

    /** True when no two values share a bit, unless setIsMask() said otherwise. */
    bool isMask() const { return m_isMask; }
    void setIsMask(bool isMask) { m_isMask = isMask; }
    bool detectIsMask() const;

    void writeObject(QDataStream &stream) const override;
    void readObject(QDataStream &stream) override;

private:
    Q_DISABLE_COPY(Enum)
    void freeItems();
    const Item *item(const QByteArray &key) const;

    const Class *m_owner = nullptr;
    QString m_name;
    qint32 m_id = -1;
    const Item *m_items = nullptr;
    int m_count = 0;
    bool m_isMask = true;
    bool m_ownsItems = false;
};

/**
 * Static description of a property that a StaticPropertyDelegate contributes:
 * its type, and how it is read and written. The accessors must outlive it.
 */
class VANTREL_EXPORT PropertyDeclaration
{
public:
    enum Flag { Readable = 1, Writable = 2, Stored = 4, Static = 8 };
    using ReadFunction = std::function<SharedPtr<Object>(SharedPtr<Object>)>;
    using WriteFunction = std::function<bool(SharedPtr<Object>, SharedPtr<Object>)>;

    /** Accessors that are missing are null; @p owner names the class in messages. */
    PropertyDeclaration(const Class *owner, const Argument &type, const QString &name,
                        const Method *readMethod, const Method *writeMethod = nullptr);
    PropertyDeclaration(const Class *owner, const Argument &type, const QString &name,
                        ReadFunction readFunction, WriteFunction writeFunction = {});
    /** The type is looked up by @p typeName on first use, so it may be registered later. */
    PropertyDeclaration(const Class *owner, const QString &typeName, const QString &name,
                        ReadFunction readFunction, WriteFunction writeFunction = {});

    const Class *propertyClass() const { return m_owner; }
    const QString &name() const { return m_name; }
    const Argument &type() const;

    bool isReadable() const { return flags() & Readable; }
    bool isWritable() const { return flags() & Writable; }
    bool stored() const { return flags() & Stored; }
    bool isStatic() const { return flags() & Static; }
    int flags() const;
    void setStored(bool stored) { m_stored = stored; }
    /** For accessors that are functions and need no object; methods know it themselves. */
    void setStatic(bool isStatic) { m_static = isStatic; }

    const Method *readMethod() const { return m_readMethod; }
    const Method *writeMethod() const { return m_writeMethod; }
    const ReadFunction &readFunction() const { return m_readFunction; }
    const WriteFunction &writeFunction() const { return m_writeFunction; }

private:
    void lazySetup() const;

    const Class *m_owner;
    mutable Argument m_type;
    QString m_typeName;
    QString m_name;
    const Method *m_readMethod = nullptr;
    const Method *m_writeMethod = nullptr;
    ReadFunction m_readFunction;
    WriteFunction m_writeFunction;
    bool m_stored = true;
    bool m_static = false;
    mutable bool m_ready = false;
    mutable int m_flags = 0;
};

/** One property of a class. Owned by its class. */
class VANTREL_EXPORT Property : public Serializable
{
public:
    enum Flag { Readable = 1, Writable = 2, Stored = 4, Static = 8 };

    explicit Property(const Class *owner = nullptr);
    /** @p id counts over the whole class hierarchy; @p flags is a combination of Flag values. */
    Property(int id, const Class *owner, const Argument &type, const QString &name, int flags);
    /** Name, type and flags are those of @p declaration, which must outlive the property. */
    Property(int id, const Class *owner, const PropertyDeclaration *declaration);
    ~Property() override;

    int id() const { return m_id; }
    void setId(int id) { m_id = id; }
    /** The class that declares the property. */
    const Class *propertyClass() const { return m_owner; }
    const QString &name() const;
    /** The type with its attribute and enum. */
    const Argument &argument() const;
    /** The class of the value. */
    const Class *type() const { return argument().type(); }
    int flags() const;
    bool isReadable() const { return flags() & Readable; }
    bool isWritable() const { return flags() & Writable; }
    bool stored() const { return flags() & Stored; }
    bool isStatic() const { return flags() & Static; }
    /** Null when the class itself declares the property. */
    const PropertyDeclaration *propertyDeclaration() const { return m_declaration; }

    /** @return the value, or null with the reason in the Inspector's last error or a diagnostic. */
    SharedPtr<Object> get(SharedPtr<Object> object) const;
    /** @return false when the value was refused. */
    bool set(SharedPtr<Object> object, SharedPtr<Object> value) const;

    /** For example "int Widget::x". */
    QString toString() const;

    void writeObject(QDataStream &stream) const override;
    void readObject(QDataStream &stream) override;

private:
    Q_DISABLE_COPY(Property)
    const Class *m_owner = nullptr;
    Argument m_type;
    const PropertyDeclaration *m_declaration = nullptr;
    QString m_name;
    int m_flags = 0;
    qint32 m_id = -1;
};

} // namespace Vantrel

#endif // VANTREL_MEMBERS_H
