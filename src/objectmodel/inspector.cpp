#include "objectmodel/inspector.h"

#include "objectmodel/class.h"
#include "objectmodel/delegates.h"
#include "objectmodel/gestureclass.h"
#include "objectmodel/globalobject.h"
#include "objectmodel/inspector_p.h"
#include "objectmodel/namespace.h"
#include "objectmodel/primitiveids.h"
#include "objectmodel/primitives.h"
#include "objectmodel/primitives_p.h"
#include "objectmodel/valueclasses.h"
#include "objectmodel/windowinteraction_p.h"

#include <algorithm>

namespace Vantrel {

namespace {

// A plain pointer and not a local static: the constructors that the Inspector
// runs ask for it while it is still being built.
Inspector *singleton = nullptr;

const char *const topLevelClassNames[] = {"Vantrel::ToplevelQt",   "Vantrel::ToplevelXView",
                                          "Vantrel::ToplevelTk",   "Vantrel::ToplevelWeb",
                                          "Vantrel::ToplevelJava", "Vantrel::ToplevelMac",
                                          "Vantrel::ToplevelWin",  "Vantrel::ToplevelAndroid"};

/** @p name without the one "*" or "&" at its end. */
QStringView bareTypeName(const QString &name)
{
    QStringView view(name);
    if (!view.isEmpty() && (view.last() == u'*' || view.last() == u'&')) {
        view.chop(1);
    }
    return view;
}

/** In the order of their ids. */
void registerPrimitiveClasses()
{
    new VantrelClass_short;
    new VantrelClass_int;
    new VantrelClass_long;
    new VantrelClass_bool;
    new VantrelClass_char;
    new VantrelClass_double;
    new VantrelClass_int64;
    new VantrelClass_void;
    new VantrelClass_undefined;
}

} // namespace

const std::vector<ObjectHierarchyDelegate *> &InspectorPrivate::topLevelDelegates()
{
    if (!topLevel) {
        // Never destroyed: objects may be asked for at exit.
        static const auto &none = *new std::vector<ObjectHierarchyDelegate *>;
        if (implementation) {
            return none;
        }
        topLevel.emplace();
        for (const char *name : topLevelClassNames) {
            if (auto *delegate = DelegateFactory::self()->find<ObjectHierarchyDelegate>(
                    QString::fromLatin1(name))) {
                topLevel->push_back(delegate);
            }
        }
    }
    return *topLevel;
}

SharedPtr<Object> InspectorPrivate::topLevelObject(int index)
{
    SharedPtr<Object> found;
    askTopLevel([&](ObjectHierarchyDelegate *delegate) {
        const int count = qMax(0, delegate->numChildren({}));
        const bool isHere = index >= 0 && index < count;
        if (isHere) {
            found = delegate->child({}, index);
        }
        index -= count;
        return isHere || index < 0;
    });
    return found;
}

Inspector::Inspector() : d(new InspectorPrivate)
{
    singleton = this;
    new Namespace(nullptr, QString());
    registerPrimitiveClasses();
    d->voidObject = type(PrimitiveId::Void)->wrap(nullptr, ObjectAttribute());
    new GlobalClass;
    new GestureClass;
    new Namespace(globalNamespace(), QStringLiteral("UiTypes"));
    new DateTime_class;
    new ScreenPointClass;
    new ScreenRectangle_class;
    registerWindowFunctions(globalClass());
}

Inspector::~Inspector()
{
    if (singleton == this) {
        singleton = nullptr;
    }
}

Inspector *Inspector::self()
{
    if (!singleton) {
        new Inspector;
    }
    return singleton;
}

void Inspector::setInspectorInterfaceImpl(InspectorInterface *implementation)
{
    if (implementation == this) {
        return;
    }
    d->classes.clear();
    d->namespaces.clear();
    d->implementation = implementation;
}

int Inspector::numObjects() const
{
    if (d->implementation) {
        return d->implementation->numObjects();
    }
    int count = 0;
    d->askTopLevel([&count](ObjectHierarchyDelegate *delegate) {
        count += qMax(0, delegate->numChildren({}));
        return false;
    });
    return count;
}

SharedPtr<Object> Inspector::object(const QString &name)
{
    if (d->implementation) {
        return d->implementation->object(name);
    }
    return object(name, nullptr);
}

SharedPtr<Object> Inspector::object(const QString &name, ObjectHierarchyDelegate **foundBy)
{
    if (foundBy) {
        *foundBy = nullptr;
    }
    SharedPtr<Object> found;
    d->askTopLevel([&](ObjectHierarchyDelegate *delegate) {
        found = delegate->childByName({}, name);
        if (found && foundBy) {
            *foundBy = delegate;
        }
        return bool(found);
    });
    return found;
}

SharedPtr<Object> Inspector::object(int index)
{
    return d->implementation ? d->implementation->object(index) : d->topLevelObject(index);
}

ObjectList Inspector::objects()
{
    if (d->implementation) {
        return d->implementation->objects();
    }
    ObjectList all;
    d->askTopLevel([&all](ObjectHierarchyDelegate *delegate) {
        for (const SharedPtr<Object> &object : delegate->children({})) {
            all << object;
        }
        return false;
    });
    return all;
}

void Inspector::addTopLevelHierarchyDelegate(ObjectHierarchyDelegate *delegate)
{
    d->topLevelDelegates();
    if (delegate && d->topLevel) {
        d->topLevel->push_back(delegate);
    }
}

void Inspector::removeTopLevelHierarchyDelegate(ObjectHierarchyDelegate *delegate)
{
    if (singleton && singleton->d->topLevel) {
        auto &delegates = *singleton->d->topLevel;
        delegates.erase(std::remove(delegates.begin(), delegates.end(), delegate), delegates.end());
    }
}

void Inspector::detach(SendEventDelegate *delegate)
{
    if (singleton) {
        singleton->removeSendEventDelegate(delegate);
    }
}

void Inspector::detach(EventNotifyDelegate *delegate)
{
    if (singleton) {
        singleton->removeEventNotifyDelegate(delegate);
    }
}

int Inspector::numClasses() const
{
    return d->implementation ? d->implementation->numClasses() : d->classes.size();
}

const Class *Inspector::type(const QString &name) const
{
    return d->implementation ? d->implementation->type(name) : d->classes.find(bareTypeName(name));
}

const Class *Inspector::type(int id) const
{
    return d->implementation ? d->implementation->type(id) : d->classes.at(id);
}

int Inspector::registerClass(const Class *c) const
{
    if (d->implementation) {
        return d->implementation->registerClass(c);
    }
    return c ? d->classes.add(c, c->className()) : -1;
}

int Inspector::numNamespaces() const
{
    return d->implementation ? d->implementation->numNamespaces() : d->namespaces.size();
}

Namespace *Inspector::nameSpace(const QString &name) const
{
    return d->implementation ? d->implementation->nameSpace(name) : d->namespaces.find(name);
}

Namespace *Inspector::nameSpace(int id) const
{
    return d->implementation ? d->implementation->nameSpace(id) : d->namespaces.at(id);
}

Namespace *Inspector::nameSpaceFromFullyQualifiedName(const QString &name) const
{
    if (name.isEmpty()) {
        return nullptr;
    }
    Namespace *found = globalNamespace();
    for (const QString &component : name.split(QLatin1String("::"))) {
        found = found ? found->getNamespace(component) : nullptr;
    }
    return found;
}

int Inspector::registerNamespace(Namespace *nameSpace) const
{
    if (d->implementation) {
        return d->implementation->registerNamespace(nameSpace);
    }
    return nameSpace ? d->namespaces.add(nameSpace, nameSpace->name()) : -1;
}

GlobalClass *Inspector::globalClass() const
{
    return dynamic_cast<GlobalClass *>(const_cast<Class *>(type(d->globalClassId)));
}

Namespace *Inspector::globalNamespace() const
{
    return nameSpace(d->globalNamespaceId);
}

SharedPtr<Object> Inspector::createPrimitive(const QStringList &value)
{
    return d->implementation ? d->implementation->createPrimitive(value) : makePrimitive(value);
}

SharedPtr<Object> Inspector::createPrimitive(const char *value)
{
    return d->implementation ? d->implementation->createPrimitive(value) : makePrimitive(value);
}

SharedPtr<Object> Inspector::createPrimitive(double value)
{
    return d->implementation ? d->implementation->createPrimitive(value) : makePrimitive(value);
}

SharedPtr<Object> Inspector::createPrimitive(bool value)
{
    return d->implementation ? d->implementation->createPrimitive(value) : makePrimitive(value);
}

SharedPtr<Object> Inspector::createPrimitive(long value)
{
    return d->implementation ? d->implementation->createPrimitive(value) : makePrimitive(value);
}

SharedPtr<Object> Inspector::createPrimitive(long long value)
{
    return d->implementation ? d->implementation->createPrimitive(value) : makePrimitive(value);
}

SharedPtr<Object> Inspector::createPrimitive(int value)
{
    return d->implementation ? d->implementation->createPrimitive(value) : makePrimitive(value);
}

SharedPtr<Object> Inspector::createNull(const Class *c)
{
    if (d->implementation) {
        return d->implementation->createNull(c);
    }
    if (!c) {
        return {};
    }
    // Not by the class, which may refuse null data.
    return makeNull(c);
}

SharedPtr<Object> Inspector::voidObject()
{
    return d->implementation ? d->implementation->voidObject() : d->voidObject;
}

void Inspector::setError(const QString &text)
{
    if (d->implementation) {
        d->implementation->setError(text);
    }
    d->lastError = text;
    if (text.isEmpty()) {
        d->unmatchedProperties.clear();
    }
}

QString Inspector::lastError()
{
    if (d->implementation) {
        return d->implementation->lastError();
    }
    d->unmatchedProperties.clear();
    return std::exchange(d->lastError, QString());
}

QVariant Inspector::call(const QString &name, const FList<QVariant> &arguments)
{
    if (d->implementation) {
        return d->implementation->call(name, arguments);
    }
    setError(QStringLiteral("Cannot make remote calls right now. Make sure your application is "
                            "running and hooked by Vantrel."));
    return QVariant();
}

QMap<QString, QStringList> Inspector::unmatchedProperties()
{
    return d->unmatchedProperties;
}

void Inspector::addUnmatchedProperty(const QString &objectName, const QString &property)
{
    QStringList &properties = d->unmatchedProperties[objectName];
    if (!properties.contains(property)) {
        properties << property;
    }
}

void Inspector::setUnmatchedProperties(const QString &objectName, const QStringList &properties)
{
    d->unmatchedProperties.insert(objectName, properties);
}

void Inspector::removeUnmatchedProperties(const QString &objectName)
{
    d->unmatchedProperties.remove(objectName);
}

void Inspector::enableObjectCache(bool enabled)
{
    d->cacheEnabled = enabled;
}

void Inspector::invalidateObjectCache(void *data)
{
    void *cached = nullptr;
    if (d->cachedObject) {
        d->cachedObject->get(&cached);
        if (cached == data) {
            d->cachedObject.reset();
            d->cachedName.clear();
        }
    }
}

bool Inspector::isSpyingEnabled() const
{
    return d->spyingEnabled;
}

void Inspector::setSpyingEnabled(bool enabled)
{
    d->spyingEnabled = enabled;
}

void Inspector::setLicEditions(unsigned long editions)
{
    d->licEditions = editions;
}

} // namespace Vantrel
