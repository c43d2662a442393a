#ifndef VANTREL_DELEGATES_H
#define VANTREL_DELEGATES_H

#include "objectmodel/export.h"
#include "objectmodel/functioncallresult.h"
#include "objectmodel/shared.h"

#include <QMap>
#include <QString>

#include <map>
#include <string>
#include <utility>
#include <vector>

class QDataStream;

namespace Vantrel {

class Class;
class DumpFilter;
class Event;
class EventData;
class Object;
class ObjectList;
class ObjectName;
class Property;
class PropertyDeclaration;
class UiElement;
struct ScreenRectangle;

/**
 * A plug-in that gives one class, named by its class name, one kind of
 * behaviour. It registers itself with the DelegateFactory when it is made and
 * leaves it when it is destroyed. Handles keep to the delegates they were given
 * first, until these are destroyed; classes remember theirs for good, so that a
 * static property or cast delegate has to live as long as the process.
 */
class VANTREL_EXPORT Delegate
{
public:
    enum Type {
        ObjectHierarchy = 0,
        StaticProperty = 1,
        DynamicEvent = 2,
        Serialize = 3,
        Conversion = 4,
        Comparison = 5,
        Cast = 6,
        Geometry = 7,
        DumpObjectTree = 9,
        WindowInteraction = 10
    };

    Delegate(const QString &className, Type type);
    virtual ~Delegate();

    QString className() const { return m_className; }
    Type type() const { return m_type; }
    /**
     * The delegate of the same type that the class would have without this
     * one, searched along its super classes. The first answer is kept, so the
     * delegates of base classes must be there before it is asked.
     */
    const Delegate *super() const;

private:
    Q_DISABLE_COPY(Delegate)
    QString m_className;
    Type m_type;
    mutable bool m_superResolved = false;
    mutable const Delegate *m_super = nullptr;
};

/** Tells, by a class name, whether the class belongs to a toolkit based on QObject. */
class VANTREL_EXPORT FallbackRegistry
{
public:
    virtual ~FallbackRegistry();
    virtual bool isQObjectBased(const QString &className) const = 0;
};

/** The register of all delegates, by type and class name. It owns none of them. */
class VANTREL_EXPORT DelegateFactory
{
public:
    static DelegateFactory *self();

    /** Replaces an earlier delegate of the same type and class name. */
    void addDelegate(Delegate *delegate);
    void removeDelegate(Delegate *delegate);

    /** Registered for exactly this name, or null. */
    const Delegate *delegate(const QString &className, Delegate::Type type) const;
    /** Registered for @p c or the nearest super class that has one; null for a null class. */
    const Delegate *delegate(const Class *c, Delegate::Type type) const;
    /** All of one type, sorted by class name. */
    std::vector<const Delegate *> delegatesForType(Delegate::Type type) const;

    /**
     * The look-ups above in the form in which delegates are called: of the
     * interface @p D, and not const. @p key is a class or a class name.
     */
    template <class D, class Key>
    D *find(const Key &key) const
    {
        return cast<D>(delegate(key, D::delegateType));
    }
    template <class D>
    std::vector<D *> findAll() const
    {
        std::vector<D *> result;
        for (const Delegate *found : delegatesForType(D::delegateType)) {
            if (D *typed = cast<D>(found)) {
                result.push_back(typed);
            }
        }
        return result;
    }

    /** Not owned; null takes it away, and so does its destructor. */
    void setFallbackRegistry(const FallbackRegistry *registry) { m_fallback = registry; }
    const FallbackRegistry *fallbackRegistry() const { return m_fallback; }

private:
    DelegateFactory() = default;
    Q_DISABLE_COPY(DelegateFactory)

    // Checked, because a delegate still under construction is registered already.
    template <class D>
    static D *cast(const Delegate *delegate)
    {
        return dynamic_cast<D *>(const_cast<Delegate *>(delegate));
    }

    using Key = std::pair<int, QString>;
    QMap<Key, Delegate *> m_delegates;
    const FallbackRegistry *m_fallback = nullptr;
};

/**
 * Where the objects of an application are, and how they are named. Registered
 * under one of the top-level class names it is a source of top-level objects;
 * a null parent stands for the top level.
 */
class VANTREL_EXPORT ObjectHierarchyDelegate : public Delegate
{
public:
    static constexpr Type delegateType = ObjectHierarchy;
    explicit ObjectHierarchyDelegate(const QString &className);
    ~ObjectHierarchyDelegate() override;

    virtual int numChildren(SharedPtr<Object> parent) = 0;
    virtual SharedPtr<Object> child(SharedPtr<Object> parent, int index) = 0;
    virtual SharedPtr<Object> childByName(SharedPtr<Object> parent, const QString &name) = 0;
    /** The first match below @p parent; null by default. */
    virtual SharedPtr<Object> objectByQualifiedName(SharedPtr<Object> parent,
                                                    const ObjectName &name);
    virtual QString name(SharedPtr<Object> object) = 0;
    virtual QString qualifiedName(SharedPtr<Object> object) = 0;
    /** By default every child by index, null ones left out. */
    virtual ObjectList children(SharedPtr<Object> parent);
    /** By default a search through all objects of the application; null at the top level. */
    virtual SharedPtr<Object> parent(SharedPtr<Object> object);
    /** A number by which the toolkit tells its kinds of wrappers apart. */
    virtual int wrapperType(SharedPtr<Object> object) = 0;
};

/** Properties added to a class from outside. Looked up by the exact class name. */
class VANTREL_EXPORT StaticPropertyDelegate : public Delegate
{
public:
    static constexpr Type delegateType = StaticProperty;
    explicit StaticPropertyDelegate(const QString &className);
    ~StaticPropertyDelegate() override;

    /** Asked once per class. */
    virtual int numPropertyDeclarations() const = 0;
    /** The declaration must live as long as the class. */
    virtual const PropertyDeclaration *propertyDeclaration(int index) const = 0;
};

/** Connects to events of an object while somebody listens. */
class VANTREL_EXPORT DynamicEventDelegate : public Delegate
{
public:
    static constexpr Type delegateType = DynamicEvent;
    explicit DynamicEventDelegate(const QString &className);
    ~DynamicEventDelegate() override;

    /** False when the object does not have the event. */
    virtual bool connectEvent(SharedPtr<Object> object, const QString &event) = 0;
    virtual bool disconnectEvent(SharedPtr<Object> object, const QString &event) = 0;
};

/** The payload of an object in the stream, and its debug text. */
class VANTREL_EXPORT SerializeDelegate : public Delegate
{
public:
    static constexpr Type delegateType = Serialize;
    explicit SerializeDelegate(const QString &className);
    ~SerializeDelegate() override;

    virtual void streamObject(SharedPtr<Object> object, QDataStream &stream) const = 0;
    virtual void objectFromStream(SharedPtr<Object> object, QDataStream &stream) const = 0;
    virtual QString toDebugString(SharedPtr<Object> object) const = 0;
};

/** Values of objects in primitive form. An operation is asked if it is among the capabilities. */
class VANTREL_EXPORT ConversionDelegate : public Delegate
{
public:
    enum Capability {
        StringCapability = 1,
        IntegerCapability = 2,
        DoubleCapability = 4,
        BooleanCapability = 8,
        Int64Capability = 16
    };

    static constexpr Type delegateType = Conversion;
    explicit ConversionDelegate(const QString &className);
    ~ConversionDelegate() override;

    /** A combination of Capability values. */
    virtual int capabilities() const = 0;
    virtual QString toString(SharedPtr<Object> object);
    virtual int toInteger(SharedPtr<Object> object) const;
    virtual long long toInt64(SharedPtr<Object> object) const;
    virtual double toDouble(SharedPtr<Object> object) const;
    virtual bool toBoolean(SharedPtr<Object> object) const;
    virtual void fromString(const QString &value, SharedPtr<Object> object) const;
    virtual void fromInteger(int value, SharedPtr<Object> object) const;
    virtual void fromInt64(long long value, SharedPtr<Object> object) const;
    virtual void fromDouble(double value, SharedPtr<Object> object) const;
    virtual void fromBoolean(bool value, SharedPtr<Object> object) const;
};

/** Equality and identity of objects. */
class VANTREL_EXPORT ComparisonDelegate : public Delegate
{
public:
    static constexpr Type delegateType = Comparison;
    explicit ComparisonDelegate(const QString &className);
    ~ComparisonDelegate() override;

    /** Equal values; both objects are of the same class. */
    virtual bool compare(SharedPtr<Object> a, SharedPtr<Object> b) const = 0;
    /** The same thing behind both handles. */
    virtual bool sameObjects(SharedPtr<Object> a, SharedPtr<Object> b) const = 0;
};

/** Conversions between a class and others, in both directions. */
class VANTREL_EXPORT CastDelegate : public Delegate
{
public:
    static constexpr Type delegateType = Cast;
    explicit CastDelegate(const QString &className);
    ~CastDelegate() override;

    virtual bool canConvertTo(const Class *target, bool sourceIsPointer,
                              bool targetIsPointer) const = 0;
    virtual SharedPtr<Object> convertTo(SharedPtr<Object> object, const Class *target,
                                        bool targetIsPointer) const = 0;
    virtual bool canConvertFrom(const Class *source, bool sourceIsPointer,
                                bool targetIsPointer) const = 0;
    /** @p target is the class that is wanted: the delegate's own or a subclass of it. */
    virtual SharedPtr<Object> convertFrom(SharedPtr<Object> object, const Class *target,
                                          bool targetIsPointer) const = 0;
};

/** Where objects are on the screen. All numbers are pixels of the global screen coordinates. */
class VANTREL_EXPORT GeometryDelegate : public Delegate
{
public:
    struct Point
    {
        bool valid = false;
        int x = 0;
        int y = 0;
        /** Index of the screen; -1 when unknown. */
        int screen = -1;
    };
    /** Invalid while the width or the height is negative. */
    struct Rect
    {
        int x = 0;
        int y = 0;
        int width = -1;
        int height = -1;
    };

    static constexpr Type delegateType = Geometry;
    explicit GeometryDelegate(const QString &className);
    ~GeometryDelegate() override;

    virtual Rect globalBounds(SharedPtr<Object> object) = 0;
    /** In the pixels of the window system; globalBounds() by default. */
    virtual Rect nativeGlobalBounds(SharedPtr<Object> object);
    virtual Point globalToRelative(SharedPtr<Object> object, int x, int y);
    virtual Point relativeToGlobal(SharedPtr<Object> object, int x, int y);
    /** relativeToGlobal() by default. */
    virtual Point relativeToNative(SharedPtr<Object> object, int x, int y);
    virtual bool isVisible(SharedPtr<Object> object) = 0;
    /** The innermost object at a global point below @p parent, or null. */
    virtual SharedPtr<Object> objectAt(SharedPtr<Object> parent, int x, int y) = 0;
};

/**
 * What of an object goes into a tree dump. Every operation answers whether it
 * handled the call; by default none does.
 */
class VANTREL_EXPORT DumpObjectTreeDelegate : public Delegate
{
public:
    using Filters = std::map<std::string, DumpFilter *>;

    static constexpr Type delegateType = DumpObjectTree;
    explicit DumpObjectTreeDelegate(const QString &className);
    ~DumpObjectTreeDelegate() override;

    virtual bool enterDump(SharedPtr<Object> root, const Filters &filters, QString *error);
    virtual bool leaveDump(QString *error) const;
    virtual bool dumpObject(SharedPtr<Object> object, bool withProperties, UiElement *element,
                            const Filters &filters, QString *error) const;
    virtual bool takeScreenshot(SharedPtr<Object> object, UiElement *element) const;
    virtual bool setProperty(const Property *property, SharedPtr<Object> object, UiElement *element,
                             int depth) const;
    virtual bool children(SharedPtr<Object> object, ObjectList *children) const;
    virtual bool visibleGlobalBounds(SharedPtr<Object> object, ScreenRectangle *bounds) const;
    virtual bool isTransparent(SharedPtr<Object> object) const;
    virtual bool simplifiedType(SharedPtr<Object> object, QString *type) const;
};

/** What can be done to a top-level window. A failure is told by its message. */
class VANTREL_EXPORT WindowInteractionDelegate : public Delegate
{
public:
    static constexpr Type delegateType = WindowInteraction;
    explicit WindowInteractionDelegate(const QString &className);
    ~WindowInteractionDelegate() override;

    virtual FunctionCallResult<void> closeWindow(SharedPtr<Object> window) = 0;
    virtual FunctionCallResult<void> maximizeWindow(SharedPtr<Object> window) = 0;
    virtual FunctionCallResult<void> minimizeWindow(SharedPtr<Object> window) = 0;
    /** @p x and @p y are the new place of the frame in global screen pixels. */
    virtual FunctionCallResult<void> moveWindowTo(SharedPtr<Object> window, int x, int y) = 0;
    virtual FunctionCallResult<void> resizeWindowTo(SharedPtr<Object> window, int width,
                                                    int height) = 0;
    virtual FunctionCallResult<void> restoreWindow(SharedPtr<Object> window) = 0;
    virtual FunctionCallResult<void> setFullscreenWindow(SharedPtr<Object> window);
    virtual FunctionCallResult<void> setForegroundWindow(SharedPtr<Object> window);
    virtual FunctionCallResult<void> setFocusedWindow(SharedPtr<Object> window);
    /** Success with a null object, which is the default, means: none of mine. */
    virtual FunctionCallResult<SharedPtr<Object>> focusedWindow();
    virtual FunctionCallResult<ScreenRectangle> windowGeometry(SharedPtr<Object> window);
};

/** Sends events into the application. Attached to the Inspector, which it leaves when destroyed. */
class VANTREL_EXPORT SendEventDelegate
{
public:
    virtual ~SendEventDelegate();
    /** True when the event was sent, which ends the search for a sender. */
    virtual bool sendEvent(const Event *event, SharedPtr<Object> object,
                           const ObjectList &arguments) = 0;
};

/** Hears of recorded events. Attached to the Inspector, which it leaves when destroyed. */
class VANTREL_EXPORT EventNotifyDelegate
{
public:
    virtual ~EventNotifyDelegate();
    virtual void notifyEvent(const EventData &event) = 0;
};

} // namespace Vantrel

#endif // VANTREL_DELEGATES_H
