#ifndef VANTREL_INSPECTOR_H
#define VANTREL_INSPECTOR_H

#include "objectmodel/export.h"
#include "objectmodel/inspectorinterface.h"

#include <memory>

namespace Vantrel {

class GlobalClass;
class InspectorPrivate;
class ObjectHierarchyDelegate;
struct NearMiss;

/**
 * The entry point of the object model: registers and finds classes and
 * namespaces, enumerates and finds the objects of the application, makes
 * primitive values and keeps the last error. There is one per process, made on
 * first use, for one thread at a time.
 *
 * Look-ups that find nothing give null; failures leave a text that lastError()
 * returns once. After setInspectorInterfaceImpl() nearly every operation is
 * answered by that implementation instead.
 */
class VANTREL_EXPORT Inspector : public InspectorInterface
{
public:
    static Inspector *self();
    ~Inspector() override;

    using InspectorInterface::createPrimitive;

    /** Top-level objects of all toolkits. */
    int numObjects() const override;
    /** A top-level object by its name. */
    SharedPtr<Object> object(const QString &name) override;
    /** A top-level object by its index over all toolkits; null out of range. */
    SharedPtr<Object> object(int index) override;
    ObjectList objects() override;
    /**
     * The object with a symbolic, multi-property, qualified ("{...}.child") or
     * hierarchical name. Null when there is none; the last error tells why.
     * A delegate may search in turn, up to 256 searches deep.
     */
    SharedPtr<Object> findObject(const QString &name) override;
    int numClasses() const override;
    /** One trailing "*" or "&" of @p name is ignored. */
    const Class *type(const QString &name) const override;
    const Class *type(int id) const override;
    int registerClass(const Class *c) const override;
    int numNamespaces() const override;
    Namespace *nameSpace(const QString &name) const override;
    Namespace *nameSpace(int id) const override;
    Namespace *nameSpaceFromFullyQualifiedName(const QString &name) const override;
    int registerNamespace(Namespace *nameSpace) const override;
    SharedPtr<Object> createPrimitive(const QStringList &value) override;
    /** Text in UTF-8, copied. A null pointer gives a null object of the class "char". */
    SharedPtr<Object> createPrimitive(const char *value) override;
    SharedPtr<Object> createPrimitive(double value) override;
    SharedPtr<Object> createPrimitive(bool value) override;
    /** The class "long" holds 32 bits on every platform; the value is narrowed to them. */
    SharedPtr<Object> createPrimitive(long value) override;
    SharedPtr<Object> createPrimitive(long long value) override;
    SharedPtr<Object> createPrimitive(int value) override;
    SharedPtr<Object> createNull(const Class *c) override;
    SharedPtr<Object> voidObject() override;
    bool sendEvent(const Event *event, SharedPtr<Object> object,
                   const ObjectList &arguments) override;
    void addPropertyDelegate(StaticPropertyDelegate *delegate) override;
    void setUniqueProperty(const QString &name, const QString &value) override;
    void setExtensionCode(const QString &name, const QString &value) override;
    void setMouseTracking(const QString &name, bool value) override;
    void setRecordMouseDrag(const QString &name, bool value) override;
    void setAllowKeyEventCompression(const QString &name, bool value) override;
    void enableEventCompression(const QString &name, bool value) override;
    void setRecorderFilter(const QString &name, const QString &value) override;
    /** An empty text also clears the unmatched properties. */
    void setError(const QString &text) override;
    /** Returns the last error and forgets it. */
    QString lastError() override;

    // Handlers are not owned. An installation is refused, with the last error
    // set, when the handler is null or has its place already, when a name is
    // empty, and when the object is null, invalidated or does not have the
    // event. Uninstalling answers whether the handler was there.

    /**
     * For one object, as long as the handle lives and is valid: other handles
     * of the same thing do not count. With the first handler of an event the
     * DynamicEventDelegate of the class connects to it, with the last one it
     * disconnects. If it does not know the event, the class must declare it.
     */
    bool installObjectEventHandler(SharedPtr<Object> object, const QString &event,
                                   EventHandler *handler) override;
    bool uninstallObjectEventHandler(SharedPtr<Object> object, const QString &event,
                                     EventHandler *handler) override;
    /** For all objects of the classes of that name, which need not exist yet, and of subclasses. */
    bool installClassEventHandler(const QString &className, const QString &event,
                                  EventHandler *handler) override;
    bool uninstallClassEventHandler(const QString &className, const QString &event,
                                    EventHandler *handler) override;
    /** For all objects, and for events without an object. */
    bool installGlobalEventHandler(const QString &event, EventHandler *handler) override;
    bool uninstallGlobalEventHandler(const QString &event, EventHandler *handler) override;

    QVariant call(const QString &name, const FList<QVariant> &arguments) override;
    /**
     * Names of objects, and their properties that did not match, of all failed
     * searches since the last error was read.
     */
    QMap<QString, QStringList> unmatchedProperties() override;

    /**
     * Lets @p implementation (not owned) answer from now on. The local class
     * and namespace tables are emptied, also by null, which takes the
     * implementation away; global members are refused with an error from then
     * on. The Inspector itself is refused.
     */
    void setInspectorInterfaceImpl(InspectorInterface *implementation);

    /**
     * Tells the handlers of an event: those of @p object, of its class and then
     * of each super class, and the global ones, each group in the order of
     * installation. A handler is called once for each place it has. What
     * handlers uninstall is no longer called, what they install is not yet. An
     * object that is invalidated on the way has no handlers of its own any
     * more; the others are still called.
     * @return the number of calls made.
     */
    int dispatchEvent(SharedPtr<Object> object, const QString &event, const ObjectList &arguments);

    // What the setters of the same names remembered; empty or false when nothing was set.
    QString uniqueProperty(const QString &name) const;
    QString extensionCode(const QString &name) const;
    bool mouseTracking(const QString &name) const;
    bool recordMouseDrag(const QString &name) const;
    bool allowKeyEventCompression(const QString &name) const;
    bool isEventCompressionEnabled(const QString &name) const;
    QString recorderFilter(const QString &name) const;

    /** The class of the global functions, properties and enums. */
    GlobalClass *globalClass() const;
    /** The root of the namespaces. */
    Namespace *globalNamespace() const;

    /** As object(name); @p foundBy (which may be null) receives the delegate that knew it. */
    SharedPtr<Object> object(const QString &name, ObjectHierarchyDelegate **foundBy);
    SharedPtr<Object> findObject(const QString &name, bool checkEdition);
    /** Appends a source of top-level objects (not owned). */
    void addTopLevelHierarchyDelegate(ObjectHierarchyDelegate *delegate);
    /** Takes a source away; its destructor does so too. Works without an Inspector. */
    static void removeTopLevelHierarchyDelegate(ObjectHierarchyDelegate *delegate);
    /** What the destructors of these delegates call. Work without an Inspector. */
    static void detach(SendEventDelegate *delegate);
    static void detach(EventNotifyDelegate *delegate);

    /** Whether the last found object is kept and found again by its name; true at first. */
    void enableObjectCache(bool enabled);
    /** Drops the cached object if it wraps the native @p data. */
    void invalidateObjectCache(void *data);

    /**
     * After a multi-property search that failed: up to 10 objects that came
     * nearest, best first, from toolkits that match with ObjectMatcher.
     */
    std::vector<NearMiss> nearMisses() const;

    void addUnmatchedProperty(const QString &objectName, const QString &property);
    void setUnmatchedProperties(const QString &objectName, const QStringList &properties);
    void removeUnmatchedProperties(const QString &objectName);

    bool isSpyingEnabled() const;
    void setSpyingEnabled(bool enabled);
    void setLicEditions(unsigned long editions);

private:
    Q_DISABLE_COPY(Inspector)
    Inspector();

    const std::unique_ptr<InspectorPrivate> d;
};

} // namespace Vantrel

#endif // VANTREL_INSPECTOR_H
