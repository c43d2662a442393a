#include "objectmodel/object.h"
#include "objectmodel/object_p.h"

#include "objectmodel/class.h"
#include "objectmodel/class_p.h"
#include "objectmodel/containers.h"
#include "objectmodel/dataholder_p.h"
#include "objectmodel/delegates.h"
#include "objectmodel/inspector.h"
#include "objectmodel/namespace.h"
#include "objectmodel/objectdelegates_p.h"
#include "objectmodel/primitiveids.h"
#include "objectmodel/primitivevalue_p.h"
#include "objectmodel/recursion_p.h"

#include <QMutex>
#include <QMutexLocker>

#include <algorithm>
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

void (*objectEnded)(Object *object, bool isInvalidated) = nullptr;

Object::Object(void *data, const Class *c, const ObjectAttribute &attribute)
    : m_data(data), m_class(c), m_attributeFlags(attribute.getFlags()),
      m_arrayLength(attribute.arrayLength()), m_autoDelete(false), m_invalid(false),
      m_hasRoom(false)
{}

Object::Object(const Object &other) = default;

Object &Object::operator=(const Object &other)
{
    if (this != &other) {
        tellEnd(false);
    }
    Shared::operator=(other);
    m_data = other.m_data;
    m_userData = other.m_userData;
    m_class = other.m_class;
    m_attributeFlags = other.m_attributeFlags;
    m_arrayLength = other.m_arrayLength;
    m_holder = other.m_holder;
    m_delegates = other.m_delegates;
    m_askedDelegates = other.m_askedDelegates;
    m_index = other.m_index;
    m_autoDelete = other.m_autoDelete;
    m_invalid = other.m_invalid;
    m_hasRoom = other.m_hasRoom;
    m_blockSize = other.m_blockSize;
    return *this;
}

Object::~Object()
{
    tellEnd(false);
    delete std::exchange(m_userData, nullptr);
    if (m_holder || m_blockSize == 0) {
        letGoOfData(m_class);
    } else if (m_autoDelete) {
        BlockPool::give(m_data, m_blockSize); // the usual end of a number
    }
}

/** Whoever keeps something for a handle knows it by its index. */
inline void Object::tellEnd(bool isInvalidated)
{
    if (m_index != noIndex && objectEnded) {
        objectEnded(this, isInvalidated);
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
    if (data == m_data && (m_holder || !m_autoDelete)) {
        return; // what others see stays, and a view goes on keeping it
    }
    const bool wasValid = !m_invalid;
    letGoOfData(former);
    if (wasValid && m_invalid) {
        // The class ended the handle meanwhile, so nothing can be put into it any more.
        if (m_autoDelete) {
            former->deleteObjectData(data, objectAttribute());
        }
        return;
    }
    m_data = data;
}

/** What keeps the data of this handle, for a second one to share. */
const SharedPtr<DataHolder> &Object::holder()
{
    if (!m_holder || m_holder->data() != m_data) {
        m_holder =
            SharedPtr<DataHolder>(new DataHolder(m_data, m_class, objectAttribute(), m_holder));
    }
    return m_holder;
}

/** Frees the data if it is owned; when other handles see it, that is left to the last of them. */
void Object::letGoOfData(const Class *freedBy)
{
    // The class may use the handle while it frees the data; then there is none any more.
    SharedPtr<DataHolder> former;
    former.swap(m_holder);
    void *const data = std::exchange(m_data, nullptr);
    m_hasRoom = false;
    m_blockSize = 0;
    if (m_autoDelete && former && former->data() == data) {
        former->takeOver(freedBy);
    } else if (m_autoDelete) {
        freedBy->deleteObjectData(data, objectAttribute());
    }
}

ObjectAttribute Object::objectAttribute()
{
    return ObjectAttribute(m_attributeFlags, m_arrayLength);
}

void Object::setObjectAttribute(const ObjectAttribute &attribute)
{
    m_attributeFlags = attribute.getFlags();
    m_arrayLength = attribute.arrayLength();
}

bool Object::isNull() const
{
    return m_data == nullptr;
}

void Object::invalidate()
{
    if (m_holder && m_holder->data() == m_data) {
        m_holder->disown();
    }
    m_holder.reset();
    m_invalid = true;
    m_data = nullptr;
    m_hasRoom = false;
    m_blockSize = 0;
    clearDelegates();
    m_class = classOfTheDead();
    tellEnd(true);
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
    const bool isPossible = target && target != m_class
        && (Class::isSubClass(target, m_class) || Class::isSubClass(m_class, target)
            || (isReinterpretable(m_class) && isReinterpretable(target)));
    if (isPossible) {
        // Classes with native types need not have virtual destructors: the holder remembers
        // what the data was made as, the most derived of what it is known to be.
        if (m_data) {
            holder();
        }
        if (m_data && Class::isSubClass(target, m_class)) {
            m_holder->setMadeAs(target);
        }
        m_class = target;
        clearDelegates();
    }
    return self();
}

/** A second handle for the data, in another shape. */
SharedPtr<Object> Object::viewed(const ObjectAttribute &attribute)
{
    SharedPtr<Object> view = m_class->wrap(m_data, attribute);
    if (ObjectAccess::isView(view)) {
        ObjectAccess::tie(view.get(), this);
    }
    return view;
}

SharedPtr<Object> Object::reference()
{
    const bool isIndirect =
        m_attributeFlags & (ObjectAttribute::PointerFlag | ObjectAttribute::ArrayFlag);
    return isIndirect ? self() : viewed(ObjectAttribute::Pointer());
}

SharedPtr<Object> Object::dereference()
{
    const int kind =
        m_attributeFlags & (ObjectAttribute::PointerFlag | ObjectAttribute::ReferenceFlag);
    if (kind != ObjectAttribute::PointerFlag) {
        return self();
    }
    return m_data ? viewed(ObjectAttribute::Value()) : SharedPtr<Object>();
}

/**
 * A handle keeps to the delegate that it was given first, whatever is registered
 * later. An absent one is asked for again.
 */
template <class D>
D *Object::delegate(D *ObjectDelegates::*kind) const
{
    const unsigned bit = 1u << D::delegateType;
    D *kept = m_askedDelegates & bit ? (*m_delegates).*kind : nullptr;
    if (kept) {
        return kept;
    }
    const SharedPtr<ObjectDelegates> now = ObjectDelegates::of(m_class);
    D *found = (*now).*kind;
    if (found && (m_askedDelegates == 0 || m_delegates == now)) {
        m_delegates = now;
        m_askedDelegates |= bit;
    } else if (found) {
        keepDelegate(kind, found);
    }
    return found;
}

/** For a handle whose delegates are not those that its class has now. */
template <class D>
void Object::keepDelegate(D *ObjectDelegates::*kind, D *found) const
{
    SharedPtr<ObjectDelegates> own(m_delegates ? new ObjectDelegates(*m_delegates)
                                               : new ObjectDelegates);
    (*own).*kind = found;
    m_delegates = own;
    m_askedDelegates |= 1u << D::delegateType;
}

void Object::clearDelegates()
{
    m_delegates.reset();
    m_askedDelegates = 0;
}

ObjectHierarchyDelegate *Object::setupHierarchyDelegate() const
{
    ObjectHierarchyDelegate *found = delegate(&ObjectDelegates::hierarchy);
    const DelegateFactory *factory = DelegateFactory::self();
    const FallbackRegistry *fallback = factory->fallbackRegistry();
    if (found || !fallback || !fallback->isQObjectBased(className())) {
        return found;
    }
    found = factory->find<ObjectHierarchyDelegate>(QStringLiteral("QObject"));
    if (found) {
        keepDelegate(&ObjectDelegates::hierarchy, found);
    }
    return found;
}

SerializeDelegate *Object::setupSerializeDelegate() const
{
    return delegate(&ObjectDelegates::serialize);
}

ConversionDelegate *Object::setupConversionDelegate() const
{
    return delegate(&ObjectDelegates::conversion);
}

ComparisonDelegate *Object::setupComparisonDelegate() const
{
    return delegate(&ObjectDelegates::comparison);
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
    const bool isPointer = m_attributeFlags & ObjectAttribute::PointerFlag;
    if (!primitive || !m_class->canConvertToTolerant(primitive, isPointer, true, nullptr)) {
        return {};
    }
    SharedPtr<Object> converted = m_class->convertToTolerant(self(), primitive, true);
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
    return scope.isTooMuch() ? className() : propertiesToDebugString();
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

void ObjectAccess::tie(Object *view, Object *origin)
{
    if (view == origin || !origin->m_data) {
        return;
    }
    const bool isWhole = view->m_data == origin->m_data;
    if (!isWhole && !origin->m_autoDelete && !origin->m_holder) {
        return; // nothing that anybody would free
    }
    const SharedPtr<DataHolder> &added =
        isWhole || origin->m_autoDelete ? origin->holder() : origin->m_holder;
    if (!view->m_holder) {
        view->m_holder = added;
    } else if (!view->m_holder->keeps(added.get())) {
        view->m_holder = SharedPtr<DataHolder>(new DataHolder(view->m_holder, added));
    }
    view->m_hasRoom = origin->m_hasRoom && isWhole;
}

bool ObjectAccess::isReferredTo(const Argument &declared)
{
    const PrimitiveKind kind = primitiveKind(declared.type());
    if (kind == PrimitiveKind::None) {
        return true; // be it by value: a list of pointers, for example
    }
    const bool isText = kind == PrimitiveKind::Char && declared.isPointer();
    return !isText && (declared.isPointer() || (declared.isReference() && !declared.isConst1()));
}

void ObjectAccess::tieResult(const SharedPtr<Object> &result, Object *object,
                             const Signature &signature, const ObjectList &arguments,
                             bool (*isReferredTo)(const Argument &declared))
{
    Origins origins;
    if (object) {
        origins.append(object);
    }
    auto argument = arguments.begin();
    for (const Argument &declared : signature.arguments()) {
        if (argument == arguments.end()) {
            break;
        }
        if (*argument && isReferredTo(declared)) {
            origins.append(argument->get());
        }
        ++argument;
    }
    tieEach(result, origins);
}

void ObjectAccess::tieEach(const SharedPtr<Object> &result, const Origins &origins)
{
    if (isView(result)) {
        tieOne(result.get(), origins);
    } else if (result && isNew(result) && result->m_data) {
        // A container is new as a whole: what it holds are views like a result alone.
        if (result->isA(ArrayClass::registeredClass())) {
            for (const auto &item :
                 *static_cast<std::vector<SharedPtr<Object>> *>(result->m_data)) {
                tieEach(item, origins);
            }
        } else if (result->isA(MapClass::registeredClass())) {
            using Map = std::map<QString, SharedPtr<Object>>;
            for (const auto &entry : *static_cast<Map *>(result->m_data)) {
                tieEach(entry.second, origins);
            }
        }
    }
}

void ObjectAccess::tieOne(Object *result, const Origins &origins)
{
    // What is one of them needs no other: results that are the object itself, call after call,
    // would keep all the arguments that there ever were.
    const auto same = std::find_if(origins.begin(), origins.end(), [result](const Object *origin) {
        return origin->m_data == result->m_data;
    });
    if (same != origins.end()) {
        tie(result, *same);
        return;
    }
    for (Object *origin : origins) {
        tie(result, origin);
    }
}

SharedPtr<Object> ObjectAccess::owned(const Class *c, void *data, const ObjectAttribute &attribute)
{
    SharedPtr<Object> object = c->wrap(data, attribute);
    if (!object || !isNew(object) || object->m_data != data) {
        return {};
    }
    object->setAutoDelete(true);
    return object;
}

void ObjectAccess::setClass(Object *object, const Class *c)
{
    object->m_class = c;
    object->clearDelegates();
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
