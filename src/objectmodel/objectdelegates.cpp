#include "objectmodel/objectdelegates_p.h"

#include "objectmodel/class_p.h"
#include "objectmodel/delegates.h"

#include <QtGlobal>

#include <list>

namespace Vantrel {

namespace {

/** Never destroyed, since handles may be held until the very end. */
std::list<ObjectDelegates> &records()
{
    static auto *const all = new std::list<ObjectDelegates>;
    return *all;
}

bool operator==(const ObjectDelegates &a, const ObjectDelegates &b)
{
    return a.hierarchy == b.hierarchy && a.serialize == b.serialize && a.conversion == b.conversion
        && a.comparison == b.comparison;
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

const ObjectDelegates *ObjectDelegates::shared(const ObjectDelegates &content)
{
    for (const ObjectDelegates &record : records()) {
        if (record == content) {
            return &record;
        }
    }
    records().push_back(content);
    return &records().back();
}

const ObjectDelegates *ObjectDelegates::of(const Class *c)
{
    ClassPrivate *record = ClassPrivate::get(c);
    if (!record->objectDelegates || record->delegatesFoundAt != numChanges) {
        ObjectDelegates found;
        const bool areWhole = find(c, &found.hierarchy) & find(c, &found.serialize)
            & find(c, &found.conversion) & find(c, &found.comparison);
        record->objectDelegates = areWhole ? shared(found) : nullptr;
        record->delegatesFoundAt = numChanges;
        return shared(found);
    }
    return record->objectDelegates;
}

void ObjectDelegates::changed()
{
    ++numChanges;
}

void ObjectDelegates::forget(const Delegate *delegate)
{
    changed();
    for (ObjectDelegates &record : records()) {
        clear(record.hierarchy, delegate);
        clear(record.serialize, delegate);
        clear(record.conversion, delegate);
        clear(record.comparison, delegate);
    }
}

} // namespace Vantrel
