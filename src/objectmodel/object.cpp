#include "objectmodel/object.h"

#include "objectmodel/class.h"
#include "objectmodel/class_p.h"
#include "objectmodel/delegates.h"
#include "objectmodel/inspector.h"
#include "objectmodel/namespace.h"
#include "objectmodel/primitiveids.h"
#include "objectmodel/recursion_p.h"

#include <QMutex>
#include <QMutexLocker>

#include <stdexcept>

namespace Vantrel {

namespace {

constexpr char unnamed[] = "unnamed";
constexpr char nullText[] = "<null>";
constexpr quint32 noIndex = 0xFFFFFFFFu;
// Objects may refer to each other in circles and along many ways. Below this
// depth, and behind this many objects, their plain text stands for them.
constexpr int maximumDebugDepth = 64;
constexpr int maximumDebugObjects = 10000;
/** Conversions that lead from class to class without reaching the primitive one end here. */
constexpr int maximumConversions = 16;

/** The class of invalidated objects. It has no members, so that whatever is asked of it fails. */
class ClassOfTheDead : public Class
{
public:
    ClassOfTheDead()
    {
        ClassPrivate *record = ClassPrivate::get(this);
        record->setName("Dead");
        record->nameSpace = new Namespace;
        setNumMethods(0);
        setNumConstructors(0);
        setNumProperties(0);
        setNumEvents(0);
        setNumEnums(0);
    }
};

const Class *classOfTheDead()
{
    static const Class *const dead = new ClassOfTheDead;
    return dead;
}

/** The first primitive classes, whose data can be read as one another's. */
bool isReinterpretable(const Class *c)
{
    return static_cast<unsigned>(c->id()) <= PrimitiveId::Int64;
}

/** One object whose properties are being described, inside those of another or not. */
class DebugScope
{
public:
    DebugScope()
    {
        if (++state().depth == 1) {
            state().numObjects = 0;
        }
        ++state().numObjects;
    }
    ~DebugScope() { --state().depth; }
    Q_DISABLE_COPY(DebugScope)
    bool isTooMuch() const
    {
        return state().depth > maximumDebugDepth || state().numObjects > maximumDebugObjects;
    }

private:
    struct State
    {
        int depth = 0;
        int numObjects = 0;
    };
    static State &state()
    {
        static thread_local State value;
        return value;
    }
};

} // namespace

UserData::~UserData() = default;

Object::Object(void *data, const Class *c, const ObjectAttribute &attribute)
    : m_data(data), m_class(c), m_attribute(attribute), m_autoDelete(false), m_invalid(false),
      m_isViewed(false)
{}

Object::Object(const Object &other) = default;

Object &Object::operator=(const Object &other) = default;

Object::EndHook Object::s_endHook = nullptr;

Object::~Object()
{
    if (m_watch.on) {
        s_endHook(this, End::Destroyed);
    }
    delete m_userData;
    if (m_autoDelete) {
        m_class->deleteObjectData(m_data, m_attribute);
    }
    // One after the other: a long chain would exhaust the stack.
    while (m_origin && m_origin->referenceCount() == 1) {
        SharedPtr<Object> next;
        next.swap(m_origin->m_origin);
        m_origin.swap(next);
    }
}

SharedPtr<Object> Object::zombie()
{
    return SharedPtr<Object>(new Object(nullptr, classOfTheDead(), ObjectAttribute()));
}

void Object::registerClassOfTheDead()
{
    classOfTheDead();
}

QString Object::className() const
{
    return m_class->className();
}

void Object::put(void *data)
{
    put(data, m_class);
}

void Object::put(void *data, const Class *former)
{
    delete std::exchange(m_userData, nullptr);
    if (m_origin && m_origin->m_data == m_data) {
        m_origin.reset();
    }
    if (m_autoDelete) {
        releaseData(former);
    }
    m_data = data;
}

/** Frees the data; what views may refer to stays as long as this handle, which they keep alive. */
void Object::releaseData(const Class *c)
{
    if (!m_isViewed) {
        c->deleteObjectData(m_data, objectAttribute());
        return;
    }
    const SharedPtr<Object> keeper(new Object(m_data, c, objectAttribute()));
    keeper->setAutoDelete(true);
    keeper->m_origin.swap(m_origin);
    m_origin = keeper;
    m_isViewed = false;
}

void Object::setOrigin(const SharedPtr<Object> &origin)
{
    // A view of the same data is passed over: views of views must not make a
    // chain, which would grow without end.
    const bool isView = origin->m_origin && origin->m_origin->m_data == origin->m_data;
    m_origin = isView ? origin->m_origin : origin;
    m_origin->m_isViewed = true;
}

ObjectAttribute Object::objectAttribute()
{
    return m_attribute;
}

bool Object::isNull() const
{
    return m_data == nullptr;
}

void Object::invalidate()
{
    m_invalid = true;
    m_data = nullptr;
    clearDelegates();
    m_class = classOfTheDead();
    if (m_watch.on) {
        s_endHook(this, End::Invalidated);
    }
}

quint32 Object::index() const
{
    generateIndex();
    return m_index;
}

void Object::generateIndex() const
{
    if (m_index != noIndex) {
        return;
    }
    // Not destroyed at exit, unlike a QMutex.
    static QBasicMutex mutex;
    static quint32 next = 0;
    const QMutexLocker lock(&mutex);
    m_index = next++;
}

bool Object::compare(SharedPtr<Object> other) const
{
    return m_class->compare(self(), other);
}

bool Object::sameAs(SharedPtr<Object> other) const
{
    return m_class->sameObjects(self(), other);
}

bool Object::isDerivedFrom(const Class *c) const
{
    return Class::isSubClass(m_class, c);
}

SharedPtr<Object> Object::castTo(const Class *target)
{
    if (target
        && (Class::isSubClass(target, m_class) || Class::isSubClass(m_class, target)
            || (isReinterpretable(m_class) && isReinterpretable(target)))) {
        m_class = target;
        clearDelegates();
    }
    return self();
}

SharedPtr<Object> Object::reference()
{
    if (m_attribute.isPointer() || m_attribute.isArray()) {
        return self();
    }
    SharedPtr<Object> pointer = m_class->wrap(m_data, ObjectAttribute::Pointer());
    if (pointer) {
        pointer->setOrigin(self());
    }
    return pointer;
}

SharedPtr<Object> Object::dereference()
{
    if (!m_attribute.isPointer() || m_attribute.isReference()) {
        return self();
    }
    if (!m_data) {
        return {};
    }
    SharedPtr<Object> value = m_class->wrap(m_data, ObjectAttribute::Value());
    if (value) {
        value->setOrigin(self());
    }
    return value;
}

ObjectHierarchyDelegate *Object::setupHierarchyDelegate() const
{
    if (m_hierarchyDelegate) {
        return m_hierarchyDelegate;
    }
    const DelegateFactory *factory = DelegateFactory::self();
    m_hierarchyDelegate = factory->find<ObjectHierarchyDelegate>(m_class);
    const FallbackRegistry *fallback = factory->fallbackRegistry();
    if (!m_hierarchyDelegate && fallback && fallback->isQObjectBased(className())) {
        m_hierarchyDelegate = factory->find<ObjectHierarchyDelegate>(QStringLiteral("QObject"));
    }
    return m_hierarchyDelegate;
}

SerializeDelegate *Object::setupSerializeDelegate() const
{
    if (!m_serializeDelegate) {
        m_serializeDelegate = DelegateFactory::self()->find<SerializeDelegate>(m_class);
    }
    return m_serializeDelegate;
}

ConversionDelegate *Object::setupConversionDelegate() const
{
    if (!m_conversionDelegate) {
        m_conversionDelegate = DelegateFactory::self()->find<ConversionDelegate>(m_class);
    }
    return m_conversionDelegate;
}

ComparisonDelegate *Object::setupComparisonDelegate() const
{
    if (!m_comparisonDelegate) {
        m_comparisonDelegate = DelegateFactory::self()->find<ComparisonDelegate>(m_class);
    }
    return m_comparisonDelegate;
}

void Object::clearDelegates()
{
    m_hierarchyDelegate = nullptr;
    m_serializeDelegate = nullptr;
    m_conversionDelegate = nullptr;
    m_comparisonDelegate = nullptr;
}

int Object::numChildren() const
{
    ObjectHierarchyDelegate *delegate = setupHierarchyDelegate();
    return delegate ? delegate->numChildren(self()) : 0;
}

SharedPtr<Object> Object::child(int index)
{
    ObjectHierarchyDelegate *delegate = setupHierarchyDelegate();
    return delegate ? delegate->child(self(), index) : SharedPtr<Object>();
}

SharedPtr<Object> Object::childByName(const QString &name)
{
    if (numChildren() == 0) {
        return {};
    }
    ObjectHierarchyDelegate *delegate = setupHierarchyDelegate();
    return delegate ? delegate->childByName(self(), name) : SharedPtr<Object>();
}

ObjectList Object::children()
{
    ObjectHierarchyDelegate *delegate = setupHierarchyDelegate();
    return delegate ? delegate->children(self()) : ObjectList();
}

SharedPtr<Object> Object::parent()
{
    ObjectHierarchyDelegate *delegate = setupHierarchyDelegate();
    return delegate ? delegate->parent(self()) : SharedPtr<Object>();
}

QString Object::name()
{
    ObjectHierarchyDelegate *delegate = setupHierarchyDelegate();
    return delegate ? delegate->name(self()) : QString(QLatin1String(unnamed));
}

QString Object::qualifiedName()
{
    ObjectHierarchyDelegate *delegate = setupHierarchyDelegate();
    return delegate ? delegate->qualifiedName(self()) : QString(QLatin1String(unnamed));
}

int Object::wrapperType() const
{
    ObjectHierarchyDelegate *delegate = setupHierarchyDelegate();
    return delegate ? delegate->wrapperType(self()) : 0;
}

ConversionDelegate *Object::conversionDelegate(int capability) const
{
    ConversionDelegate *delegate = setupConversionDelegate();
    return delegate && (delegate->capabilities() & capability) ? delegate : nullptr;
}

SharedPtr<Object> Object::convertedToPrimitive(int classId) const
{
    const Class *primitive = Inspector::self()->type(classId);
    if (!primitive || !m_class->canConvertTo(primitive, m_attribute.isPointer(), true, nullptr)) {
        return {};
    }
    SharedPtr<Object> converted = m_class->convertTo(self(), primitive, true);
    // A handle that comes back of this very kind would be asked the same again, for ever.
    return converted.get() == this ? SharedPtr<Object>() : converted;
}

/** What @p read says of the object once it is of the primitive class, or else @p none. */
template <class Value, class Read>
Value Object::readAsPrimitive(int classId, Value none, Read read) const
{
    const RecursionDepth<Object> depth;
    if (depth.value() > maximumConversions) {
        return none;
    }
    const SharedPtr<Object> converted = convertedToPrimitive(classId);
    return converted ? read(*converted) : none;
}

QString Object::toString()
{
    if (isNull()) {
        return QLatin1String(nullText);
    }
    if (ConversionDelegate *delegate = conversionDelegate(ConversionDelegate::StringCapability)) {
        return delegate->toString(self());
    }
    // Not a null text, which would be another one in a stream.
    return readAsPrimitive(PrimitiveId::Char, QString(QLatin1String("")),
                           [](Object &text) { return text.toString(); });
}

int Object::toInteger() const
{
    if (ConversionDelegate *delegate = conversionDelegate(ConversionDelegate::IntegerCapability)) {
        return delegate->toInteger(self());
    }
    return readAsPrimitive(PrimitiveId::Int, 0, [](Object &number) { return number.toInteger(); });
}

qint64 Object::toInt64() const
{
    if (ConversionDelegate *delegate = conversionDelegate(ConversionDelegate::Int64Capability)) {
        return delegate->toInt64(self());
    }
    return readAsPrimitive(PrimitiveId::Int64, qint64(0),
                           [](Object &number) { return number.toInt64(); });
}

double Object::toDouble() const
{
    if (ConversionDelegate *delegate = conversionDelegate(ConversionDelegate::DoubleCapability)) {
        return delegate->toDouble(self());
    }
    return readAsPrimitive(PrimitiveId::Double, 0.0,
                           [](Object &number) { return number.toDouble(); });
}

bool Object::toBoolean() const
{
    if (ConversionDelegate *delegate = conversionDelegate(ConversionDelegate::BooleanCapability)) {
        return delegate->toBoolean(self());
    }
    return readAsPrimitive(PrimitiveId::Bool, false,
                           [](Object &truth) { return truth.toBoolean(); });
}

void Object::fromString(const QString &value)
{
    if (ConversionDelegate *delegate = conversionDelegate(ConversionDelegate::StringCapability)) {
        delegate->fromString(value, self());
    }
}

void Object::fromInteger(int value)
{
    if (ConversionDelegate *delegate = conversionDelegate(ConversionDelegate::IntegerCapability)) {
        delegate->fromInteger(value, self());
    }
}

void Object::fromInt64(qint64 value)
{
    if (ConversionDelegate *delegate = conversionDelegate(ConversionDelegate::Int64Capability)) {
        delegate->fromInt64(value, self());
    }
}

void Object::fromDouble(double value)
{
    if (ConversionDelegate *delegate = conversionDelegate(ConversionDelegate::DoubleCapability)) {
        delegate->fromDouble(value, self());
    }
}

void Object::fromBoolean(bool value)
{
    if (ConversionDelegate *delegate = conversionDelegate(ConversionDelegate::BooleanCapability)) {
        delegate->fromBoolean(value, self());
    }
}

QString Object::toDebugString()
{
    if (SerializeDelegate *delegate = setupSerializeDelegate()) {
        return delegate->toDebugString(self());
    }
    if (isNull()) {
        return QLatin1String("0 : ") + className();
    }
    const DebugScope scope;
    return scope.isTooMuch() ? toString() : propertiesToDebugString();
}

QString Object::propertiesToDebugString()
{
    const SharedPtr<Object> handle = self();
    const int count = m_class->numProperties();
    QString text = QStringLiteral("{ ");
    for (int i = 0; i < count; ++i) {
        const Property *property = m_class->property(i);
        if (!property || !property->isReadable()) {
            continue;
        }
        const SharedPtr<Object> value = property->get(handle);
        if (!value) {
            continue;
        }
        text += property->name() + QLatin1String(" = ");
        text += value->type() == m_class ? value->toString() + QLatin1String(" : ") + className()
                                         : value->toDebugString();
        if (i < count - 1) {
            text += QLatin1String(", ");
        }
    }
    return text + QLatin1String(" } : ") + className();
}

ObjectList::ObjectList() = default;

ObjectList::ObjectList(std::initializer_list<SharedPtr<Object>> items) : m_items(items) {}

ObjectList::ObjectList(const ObjectList &other) = default;

ObjectList::ObjectList(ObjectList &&other) noexcept = default;

ObjectList &ObjectList::operator=(const ObjectList &other) = default;

ObjectList &ObjectList::operator=(ObjectList &&other) noexcept = default;

ObjectList::~ObjectList() = default;

ObjectList &ObjectList::operator<<(SharedPtr<Object> object)
{
    m_items.push_back(std::move(object));
    return *this;
}

void ObjectList::push_back(SharedPtr<Object> object)
{
    m_items.push_back(std::move(object));
}

SharedPtr<Object> &ObjectList::at(std::size_t index)
{
    if (index >= m_items.size()) {
        throw std::out_of_range("invalid vector<T> subscript");
    }
    return m_items[index];
}

const SharedPtr<Object> &ObjectList::at(std::size_t index) const
{
    return const_cast<ObjectList *>(this)->at(index);
}

ObjectList::iterator ObjectList::insert(const_iterator position, SharedPtr<Object> object)
{
    return m_items.insert(position, std::move(object));
}

ObjectList::iterator ObjectList::insert(const_iterator position, std::size_t count,
                                        const SharedPtr<Object> &object)
{
    return m_items.insert(position, count, object);
}

ObjectList::iterator ObjectList::erase(const_iterator position)
{
    return m_items.erase(position);
}

void ObjectList::clear()
{
    m_items.clear();
}

void ObjectList::reserve(std::size_t count)
{
    m_items.reserve(count);
}

void ObjectList::resize(std::size_t count, const SharedPtr<Object> &object)
{
    m_items.resize(count, object);
}

} // namespace Vantrel
