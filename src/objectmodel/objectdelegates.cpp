#include "objectmodel/objectdelegates_p.h"

#include "objectmodel/class_p.h"
#include "objectmodel/delegates.h"

#include <QtGlobal>

#include <unordered_set>

namespace Vantrel {

namespace {

/** All that are in use. Never destroyed, since handles may be held until the very end. */
std::unordered_set<ObjectDelegates *> &records()
{
    static auto *const all = new std::unordered_set<ObjectDelegates *>;
    return *all;
}

quint32 numChanges = 0;

/** False for a delegate that is still under construction, which can be used as soon as it is whole.
 */
template <class D>
bool find(const Class *c, D **found)
{
    const DelegateFactory *factory = DelegateFactory::self();
    *found = factory->find<D>(c);
    return *found || !factory->delegate(c, D::delegateType);
}

template <class D>
void clear(D *&slot, const Delegate *ended)
{
    if (slot == ended) {
        slot = nullptr;
    }
}

} // namespace

ObjectDelegates::ObjectDelegates()
{
    records().insert(this);
}

/** The copy is a new one, which nobody holds. */
ObjectDelegates::ObjectDelegates(const ObjectDelegates &other)
    : Shared(), hierarchy(other.hierarchy), serialize(other.serialize),
      conversion(other.conversion), comparison(other.comparison)
{
    records().insert(this);
}

ObjectDelegates::~ObjectDelegates()
{
    records().erase(this);
}

SharedPtr<ObjectDelegates> ObjectDelegates::of(const Class *c)
{
    ClassPrivate *record = ClassPrivate::get(c);
    if (record->objectDelegates && record->delegatesFoundAt == numChanges) {
        return record->objectDelegates;
    }
    const quint32 foundAt = numChanges;
    const SharedPtr<ObjectDelegates> made(new ObjectDelegates);
    bool areWhole = find(c, &made->hierarchy);
    areWhole = find(c, &made->serialize) && areWhole;
    areWhole = find(c, &made->conversion) && areWhole;
    areWhole = find(c, &made->comparison) && areWhole;
    const SharedPtr<ObjectDelegates> &known = record->objectDelegates;
    const bool isSame = known && known->hierarchy == made->hierarchy
        && known->serialize == made->serialize && known->conversion == made->conversion
        && known->comparison == made->comparison;
    if (!isSame) {
        record->objectDelegates = made;
    }
    record->delegatesFoundAt = areWhole ? foundAt : foundAt - 1;
    return record->objectDelegates;
}

void ObjectDelegates::changed()
{
    ++numChanges;
}

void ObjectDelegates::forget(const Delegate *delegate)
{
    changed();
    for (ObjectDelegates *record : records()) {
        clear(record->hierarchy, delegate);
        clear(record->serialize, delegate);
        clear(record->conversion, delegate);
        clear(record->comparison, delegate);
    }
}

} // namespace Vantrel
