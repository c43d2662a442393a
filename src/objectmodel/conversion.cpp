#include "objectmodel/class.h"

#include "objectmodel/arguments_p.h"
#include "objectmodel/class_p.h"
#include "objectmodel/delegates.h"
#include "objectmodel/object_p.h"
#include "objectmodel/recursion_p.h"

#include <set>
#include <tuple>
#include <vector>

namespace Vantrel {

namespace {

/** The constructor of @p target that makes an object out of one of class @p source. */
const Constructor *convertingConstructor(const Class *target, const Class *source,
                                         bool sourceIsPointer)
{
    for (int i = 0; i < target->numConstructors(); ++i) {
        const Constructor *candidate = target->constructor(i);
        if (!candidate || candidate->signature().numArguments() != 1) {
            continue;
        }
        const Argument &argument = candidate->signature().arguments().first();
        if (argument.type() == source && argument.isPointer() == sourceIsPointer) {
            return candidate;
        }
    }
    return nullptr;
}

void *dataOf(const SharedPtr<Object> &object)
{
    void *data = nullptr;
    object->get(&data);
    return data;
}

/** @p view as a second handle of what @p object stands for, with a copy of what is attached. */
SharedPtr<Object> adorned(const SharedPtr<Object> &view, const SharedPtr<Object> &object)
{
    if (view && ObjectAccess::isNew(view)) {
        if (const UserData *userData = object->userData()) {
            delete view->userData();
            view->setUserData(userData->clone());
        }
        ObjectAccess::share(view, object);
    }
    return view;
}

/** A handle of the class @p as for the data of @p object, which stays as it is. */
SharedPtr<Object> viewed(const SharedPtr<Object> &object, const Class *as)
{
    return adorned(as->wrap(dataOf(object), object->objectAttribute()), object);
}

bool isAncestor(const Class *target, const Class *c)
{
    return Class::isSubClass(c->super(), target);
}

/**
 * The comparison of one pair of objects by their properties. Objects may refer
 * to each other in circles, and to the same objects on many ways: a pair that
 * is met again within the outermost comparison adds nothing and counts as equal.
 */
class ComparisonScope
{
public:
    ComparisonScope(const SharedPtr<Object> &a, const SharedPtr<Object> &b);
    ~ComparisonScope();
    Q_DISABLE_COPY(ComparisonScope)

    bool isRepeated() const { return m_isRepeated; }
    /** Getters that make a new object on every read could go on for ever. */
    bool isTooDeep() const { return m_depth.value() > maximumDepth; }
    /** Without a call, the objects count as unequal. */
    bool setEqual(bool isEqual) { return m_isEqual = isEqual; }

private:
    static constexpr int maximumDepth = 256;
    // A first member has the address of the whole, so the class belongs to the pair.
    using Pair = std::tuple<const Class *, void *, void *>;
    struct Compared
    {
        Pair pair;
        // Held, so that no other object gets their place in memory.
        SharedPtr<Object> a;
        SharedPtr<Object> b;
    };
    struct Record
    {
        std::set<Pair> known;
        std::vector<Compared> inOrder;
    };

    const RecursionDepth<ComparisonScope> m_depth;
    Record m_ownRecord;
    /** A pointer, because comparisons may be asked for at exit. */
    static thread_local Record *record;
    std::size_t m_first;
    bool m_isRepeated;
    bool m_isEqual = false;
};

thread_local ComparisonScope::Record *ComparisonScope::record = nullptr;

ComparisonScope::ComparisonScope(const SharedPtr<Object> &a, const SharedPtr<Object> &b)
{
    if (!record) {
        record = &m_ownRecord;
    }
    m_first = record->inOrder.size();
    Pair pair(a->type(), nullptr, nullptr);
    a->get(&std::get<1>(pair));
    b->get(&std::get<2>(pair));
    m_isRepeated = !record->known.insert(pair).second;
    if (!m_isRepeated) {
        record->inOrder.push_back({pair, a, b});
    }
}

ComparisonScope::~ComparisonScope()
{
    if (!m_isEqual && !m_isRepeated) {
        // What was found equal within may rest on this pair being so.
        for (std::size_t i = m_first; i < record->inOrder.size(); ++i) {
            record->known.erase(record->inOrder[i].pair);
        }
        record->inOrder.resize(m_first);
    }
    if (record == &m_ownRecord) {
        record = nullptr;
    }
}

bool equalProperties(const Class *c, const SharedPtr<Object> &a, const SharedPtr<Object> &b)
{
    const int count = c->numProperties();
    int compared = 0;
    for (int i = 0; i < count; ++i) {
        const Property *property = c->property(i);
        if (!property || !property->isReadable() || property->isStatic()) {
            continue;
        }
        const SharedPtr<Object> first = property->get(a);
        const SharedPtr<Object> second = property->get(b);
        if (!first || !second || !first->type()->compare(first, second)) {
            return false;
        }
        ++compared;
    }
    return compared > 0;
}

} // namespace

bool Class::convert(SharedPtr<Object> object, void **data) const
{
    if (!object || !object->isA(this)) {
        return false;
    }
    object->get(data);
    return true;
}

bool Class::canConvertTo(const Class *target, bool sourceIsPointer, bool targetIsPointer,
                         void **constructor) const
{
    if (constructor) {
        *constructor = nullptr;
    }
    if (!target) {
        return false;
    }
    d->setupCastDelegate(this);
    if (d->castDelegate
        && d->castDelegate->canConvertTo(target, sourceIsPointer, targetIsPointer)) {
        return true;
    }
    target->d->setupCastDelegate(target);
    if (target->d->castDelegate
        && target->d->castDelegate->canConvertFrom(this, sourceIsPointer, targetIsPointer)) {
        return true;
    }
    if (canCastTo(target, targetIsPointer)
        || canConvertToInternal(target, sourceIsPointer, targetIsPointer)) {
        return true;
    }
    if (!targetIsPointer) {
        if (const Constructor *found = convertingConstructor(target, this, sourceIsPointer)) {
            if (constructor) {
                *constructor = const_cast<Constructor *>(found);
            }
            return true;
        }
    }
    return isAncestor(target, this);
}

SharedPtr<Object> Class::convertTo(SharedPtr<Object> object, const Class *target,
                                   bool targetIsPointer)
{
    if (!object || !target) {
        return {};
    }
    const bool sourceIsPointer = object->objectAttribute().isPointer();
    d->setupCastDelegate(this);
    // Whatever refers to the data of the object has to keep it.
    const auto shared = [&object](SharedPtr<Object> view) {
        ObjectAccess::share(view, object);
        return view;
    };
    // What a delegate promised and does not give, another source may still give.
    SharedPtr<Object> converted;
    if (d->castDelegate
        && d->castDelegate->canConvertTo(target, sourceIsPointer, targetIsPointer)) {
        converted = d->castDelegate->convertTo(object, target, targetIsPointer);
    }
    target->d->setupCastDelegate(target);
    CastDelegate *targetDelegate = target->d->castDelegate;
    if (!converted && targetDelegate
        && targetDelegate->canConvertFrom(this, sourceIsPointer, targetIsPointer)) {
        converted = targetDelegate->convertFrom(object, target, targetIsPointer);
    }
    if (converted) {
        return shared(std::move(converted));
    }
    if (canCastTo(target, targetIsPointer)) {
        return shared(castTo(object, target, targetIsPointer));
    }
    if (canConvertToInternal(target, sourceIsPointer, targetIsPointer)) {
        return shared(convertToInternal(object, target, targetIsPointer));
    }
    if (!targetIsPointer) {
        if (const Constructor *found = convertingConstructor(target, this, sourceIsPointer)) {
            // The class alone does not tell a text from a list of texts. What copies
            // objects of its own class knows their shapes.
            return target == this || fits(object, found->signature().arguments().first())
                ? found->construct(ObjectList() << object)
                : SharedPtr<Object>();
        }
    }
    return isAncestor(target, this) ? viewed(object, target) : SharedPtr<Object>();
}

SharedPtr<Object> Class::convertTo(SharedPtr<Object> object, const Class *target,
                                   bool targetIsPointer) const
{
    return mutableSelf()->convertTo(object, target, targetIsPointer);
}

bool Class::canConvertToTolerant(const Class *target, bool sourceIsPointer, bool targetIsPointer,
                                 void **constructor) const
{
    return canConvertTo(target, sourceIsPointer, targetIsPointer, constructor)
        || canConvertTo(target, !sourceIsPointer, !targetIsPointer, constructor)
        || canConvertTo(target, !sourceIsPointer, targetIsPointer, constructor)
        || canConvertTo(target, sourceIsPointer, !targetIsPointer, constructor);
}

SharedPtr<Object> Class::convertToTolerant(SharedPtr<Object> object, const Class *target,
                                           bool targetIsPointer)
{
    SharedPtr<Object> result = convertTo(object, target, targetIsPointer);
    return result ? result : convertTo(object, target, !targetIsPointer);
}

SharedPtr<Object> Class::convertToTolerant(SharedPtr<Object> object, const Class *target,
                                           bool targetIsPointer) const
{
    return mutableSelf()->convertToTolerant(object, target, targetIsPointer);
}

SharedPtr<Object> Class::convertToInterface(SharedPtr<Object> object, const QString &name)
{
    if (!object || !object->isA(this)) {
        return {};
    }
    const Interface *iface = interfaceClass(name);
    if (!iface) {
        return {};
    }
    SharedPtr<Object> view = viewed(object, this);
    if (view && !ObjectAccess::isNew(view)) {
        // The class gave its one handle for the data, which has to keep its type.
        view = adorned(
            SharedPtr<Object>(new Object(dataOf(object), this, object->objectAttribute())), object);
    }
    if (view) {
        ObjectAccess::setClass(view.get(), iface);
    }
    return view;
}

SharedPtr<Object> Class::convertToInterface(SharedPtr<Object> object, const QString &name) const
{
    return mutableSelf()->convertToInterface(object, name);
}

SharedPtr<Object> Interface::convertToInterface(SharedPtr<Object> object, const QString &name)
{
    const bool isThis = object && object->isA(this) && name.toUtf8() == interfaceName();
    return isThis ? object : SharedPtr<Object>();
}

bool Class::canCastTo(const Class *, bool) const
{
    return false;
}

SharedPtr<Object> Class::castTo(SharedPtr<Object>, const Class *, bool)
{
    return {};
}

bool Class::canConvertToInternal(const Class *, bool, bool) const
{
    return false;
}

SharedPtr<Object> Class::convertToInternal(SharedPtr<Object>, const Class *, bool)
{
    return {};
}

bool Class::compare(SharedPtr<Object> a, SharedPtr<Object> b) const
{
    if (sameObjects(a, b)) {
        return true;
    }
    if (!a || !b) {
        return false;
    }
    const bool differing = a->type() != b->type();
    if (differing) {
        const bool aIsPointer = a->objectAttribute().isPointer();
        const bool bIsPointer = b->objectAttribute().isPointer();
        if (b->type()->canConvertToTolerant(a->type(), bIsPointer, aIsPointer, nullptr)) {
            b = b->type()->convertToTolerant(b, a->type(), aIsPointer);
        } else if (a->type()->canConvertToTolerant(b->type(), aIsPointer, bIsPointer, nullptr)) {
            a = a->type()->convertToTolerant(a, b->type(), bIsPointer);
        }
        if (!a || !b || a->type() != b->type()) {
            return false;
        }
    }
    if (ComparisonDelegate *delegate = ObjectAccess::comparisonDelegate(a.get())) {
        return delegate->compare(a, b);
    }
    return differing ? a->compare(b) : compareProperties(a, b);
}

bool Class::compareProperties(const SharedPtr<Object> &a, const SharedPtr<Object> &b)
{
    const Class *c = a->type();
    if (c->numProperties() <= 0) {
        return false;
    }
    if (a->isNull() || b->isNull()) {
        return a->isNull() && b->isNull();
    }
    ComparisonScope scope(a, b);
    if (scope.isRepeated()) {
        return true;
    }
    return scope.setEqual(!scope.isTooDeep() && equalProperties(c, a, b));
}

bool Class::sameObjects(SharedPtr<Object> a, SharedPtr<Object> b) const
{
    if (!a || !b) {
        return false;
    }
    if (a == b) {
        return true;
    }
    if (ComparisonDelegate *delegate = ObjectAccess::comparisonDelegate(a.get())) {
        return delegate->sameObjects(a, b);
    }
    void *aData = nullptr;
    void *bData = nullptr;
    a->get(&aData);
    b->get(&bData);
    return aData && aData == bData
        && (isSubClass(a->type(), b->type()) || isSubClass(b->type(), a->type()));
}

} // namespace Vantrel
