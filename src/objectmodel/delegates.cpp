#include "objectmodel/delegates.h"

#include "objectmodel/class.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/objectdelegates_p.h"

#include <limits>
#include <set>

namespace Vantrel {

namespace {

const Delegate *delegateAlong(const Class *c, Delegate::Type type, const Delegate *except)
{
    for (; c; c = c->super()) {
        const Delegate *found = DelegateFactory::self()->delegate(c->className(), type);
        if (found && found != except) {
            return found;
        }
    }
    return nullptr;
}

/** The object below @p top that has @p object among its children. */
SharedPtr<Object> parentBelow(const SharedPtr<Object> &top, const SharedPtr<Object> &object)
{
    ObjectList pending;
    pending << top;
    // A toolkit may show an object below itself. Held, so that no other object gets their place.
    ObjectList visited;
    std::set<std::pair<const Class *, void *>> known;
    while (!pending.empty()) {
        const SharedPtr<Object> candidate = pending.back();
        pending.pop_back();
        void *data = nullptr;
        candidate->get(&data);
        if (data && !known.emplace(candidate->type(), data).second) {
            continue;
        }
        visited << candidate;
        const ObjectList children = candidate->children();
        for (const SharedPtr<Object> &child : children) {
            if (child && object->sameAs(child)) {
                return candidate;
            }
        }
        for (std::size_t i = children.size(); i > 0; --i) {
            if (children[i - 1]) {
                pending << children[i - 1];
            }
        }
    }
    return {};
}

/** Within the range of screen coordinates, whatever the two are. */
int sum(qint64 a, qint64 b)
{
    using Limits = std::numeric_limits<int>;
    return int(qBound<qint64>(Limits::min(), a + b, Limits::max()));
}

} // namespace

Delegate::Delegate(const QString &className, Type type) : m_className(className), m_type(type)
{
    DelegateFactory::self()->addDelegate(this);
}

Delegate::~Delegate()
{
    DelegateFactory::self()->removeDelegate(this);
    ObjectDelegates::forget(this);
}

const Delegate *Delegate::super() const
{
    if (!m_superResolved) {
        m_superResolved = true;
        const Inspector *inspector = Inspector::self();
        m_super = delegateAlong(inspector->type(m_className), m_type, this);
    }
    return m_super;
}

FallbackRegistry::~FallbackRegistry()
{
    DelegateFactory *factory = DelegateFactory::self();
    if (factory->fallbackRegistry() == this) {
        factory->setFallbackRegistry(nullptr);
    }
}

DelegateFactory *DelegateFactory::self()
{
    // Never destroyed: delegates may outlive every static object.
    static auto *const factory = new DelegateFactory;
    return factory;
}

void DelegateFactory::addDelegate(Delegate *delegate)
{
    if (delegate) {
        m_delegates.insert(Key(delegate->type(), delegate->className()), delegate);
        ObjectDelegates::changed();
    }
}

void DelegateFactory::removeDelegate(Delegate *delegate)
{
    if (!delegate) {
        return;
    }
    const auto found = m_delegates.find(Key(delegate->type(), delegate->className()));
    if (found != m_delegates.end() && *found == delegate) {
        m_delegates.erase(found);
        ObjectDelegates::changed();
    }
}

const Delegate *DelegateFactory::delegate(const QString &className, Delegate::Type type) const
{
    return m_delegates.value(Key(type, className));
}

const Delegate *DelegateFactory::delegate(const Class *c, Delegate::Type type) const
{
    return delegateAlong(c, type, nullptr);
}

std::vector<const Delegate *> DelegateFactory::delegatesForType(Delegate::Type type) const
{
    std::vector<const Delegate *> result;
    for (auto it = m_delegates.begin(); it != m_delegates.end(); ++it) {
        if (it.key().first == type) {
            result.push_back(*it);
        }
    }
    return result;
}

ObjectHierarchyDelegate::ObjectHierarchyDelegate(const QString &className)
    : Delegate(className, delegateType)
{}

ObjectHierarchyDelegate::~ObjectHierarchyDelegate()
{
    Inspector::removeTopLevelHierarchyDelegate(this);
}

SharedPtr<Object> ObjectHierarchyDelegate::objectByQualifiedName(SharedPtr<Object>,
                                                                 const ObjectName &)
{
    return {};
}

ObjectList ObjectHierarchyDelegate::children(SharedPtr<Object> parent)
{
    ObjectList result;
    const int count = numChildren(parent);
    for (int i = 0; i < count; ++i) {
        if (const SharedPtr<Object> found = child(parent, i)) {
            result << found;
        }
    }
    return result;
}

SharedPtr<Object> ObjectHierarchyDelegate::parent(SharedPtr<Object> object)
{
    if (!object) {
        return {};
    }
    const ObjectList tops = Inspector::self()->objects();
    for (const SharedPtr<Object> &top : tops) {
        if (!top) {
            continue;
        }
        if (object->sameAs(top)) {
            return {};
        }
        if (const SharedPtr<Object> found = parentBelow(top, object)) {
            return found;
        }
    }
    return {};
}

StaticPropertyDelegate::StaticPropertyDelegate(const QString &className)
    : Delegate(className, delegateType)
{}

StaticPropertyDelegate::~StaticPropertyDelegate() = default;

DynamicEventDelegate::DynamicEventDelegate(const QString &className)
    : Delegate(className, delegateType)
{}

DynamicEventDelegate::~DynamicEventDelegate() = default;

SerializeDelegate::SerializeDelegate(const QString &className) : Delegate(className, delegateType)
{}

SerializeDelegate::~SerializeDelegate() = default;

ConversionDelegate::ConversionDelegate(const QString &className) : Delegate(className, delegateType)
{}

ConversionDelegate::~ConversionDelegate() = default;

QString ConversionDelegate::toString(SharedPtr<Object>)
{
    return QString();
}

int ConversionDelegate::toInteger(SharedPtr<Object>) const
{
    return 0;
}

long long ConversionDelegate::toInt64(SharedPtr<Object>) const
{
    return 0;
}

double ConversionDelegate::toDouble(SharedPtr<Object>) const
{
    return 0.0;
}

bool ConversionDelegate::toBoolean(SharedPtr<Object>) const
{
    return false;
}

void ConversionDelegate::fromString(const QString &, SharedPtr<Object>) const {}

void ConversionDelegate::fromInteger(int, SharedPtr<Object>) const {}

void ConversionDelegate::fromInt64(long long, SharedPtr<Object>) const {}

void ConversionDelegate::fromDouble(double, SharedPtr<Object>) const {}

void ConversionDelegate::fromBoolean(bool, SharedPtr<Object>) const {}

ComparisonDelegate::ComparisonDelegate(const QString &className) : Delegate(className, delegateType)
{}

ComparisonDelegate::~ComparisonDelegate() = default;

CastDelegate::CastDelegate(const QString &className) : Delegate(className, delegateType) {}

CastDelegate::~CastDelegate() = default;

GeometryDelegate::GeometryDelegate(const QString &className) : Delegate(className, delegateType) {}

GeometryDelegate::~GeometryDelegate() = default;

GeometryDelegate::Rect GeometryDelegate::nativeGlobalBounds(SharedPtr<Object> object)
{
    return globalBounds(object);
}

GeometryDelegate::Point GeometryDelegate::globalToRelative(SharedPtr<Object> object, int x, int y)
{
    const Rect bounds = globalBounds(object);
    if (bounds.width < 0 || bounds.height < 0) {
        return {};
    }
    return {true, sum(x, -qint64(bounds.x)), sum(y, -qint64(bounds.y)), -1};
}

GeometryDelegate::Point GeometryDelegate::relativeToGlobal(SharedPtr<Object> object, int x, int y)
{
    const Rect bounds = globalBounds(object);
    if (bounds.width < 0 || bounds.height < 0) {
        return {};
    }
    return {true, sum(x, bounds.x), sum(y, bounds.y), -1};
}

GeometryDelegate::Point GeometryDelegate::relativeToNative(SharedPtr<Object> object, int x, int y)
{
    return relativeToGlobal(object, x, y);
}

DumpObjectTreeDelegate::DumpObjectTreeDelegate(const QString &className)
    : Delegate(className, delegateType)
{}

DumpObjectTreeDelegate::~DumpObjectTreeDelegate() = default;

bool DumpObjectTreeDelegate::enterDump(SharedPtr<Object>, const Filters &, QString *)
{
    return false;
}

bool DumpObjectTreeDelegate::leaveDump(QString *) const
{
    return false;
}

bool DumpObjectTreeDelegate::dumpObject(SharedPtr<Object>, bool, UiElement *, const Filters &,
                                        QString *) const
{
    return false;
}

bool DumpObjectTreeDelegate::takeScreenshot(SharedPtr<Object>, UiElement *) const
{
    return false;
}

bool DumpObjectTreeDelegate::setProperty(const Property *, SharedPtr<Object>, UiElement *,
                                         int) const
{
    return false;
}

bool DumpObjectTreeDelegate::children(SharedPtr<Object>, ObjectList *) const
{
    return false;
}

bool DumpObjectTreeDelegate::visibleGlobalBounds(SharedPtr<Object>, ScreenRectangle *) const
{
    return false;
}

bool DumpObjectTreeDelegate::isTransparent(SharedPtr<Object>) const
{
    return false;
}

bool DumpObjectTreeDelegate::simplifiedType(SharedPtr<Object>, QString *) const
{
    return false;
}

SendEventDelegate::~SendEventDelegate()
{
    Inspector::detach(this);
}

EventNotifyDelegate::~EventNotifyDelegate()
{
    Inspector::detach(this);
}

} // namespace Vantrel
