#ifndef VANTREL_OBJECTDELEGATES_P_H
#define VANTREL_OBJECTDELEGATES_P_H

#include "objectmodel/shared.h"

namespace Vantrel {

class Class;
class ComparisonDelegate;
class ConversionDelegate;
class Delegate;
class ObjectHierarchyDelegate;
class SerializeDelegate;

/** The delegates that handles of one class ask, found once for all of them. */
class ObjectDelegates final : public Shared
{
public:
    ObjectDelegates();
    ObjectDelegates(const ObjectDelegates &other);
    ~ObjectDelegates() override;
    ObjectDelegates &operator=(const ObjectDelegates &) = delete;

    /** Those that the factory has for @p c now. */
    static SharedPtr<ObjectDelegates> of(const Class *c);
    /** For whoever changes what a search along the classes finds: look again. */
    static void changed();
    /** Takes a delegate that ends away from all handles, which look for another one then. */
    static void forget(const Delegate *delegate);

    ObjectHierarchyDelegate *hierarchy = nullptr;
    SerializeDelegate *serialize = nullptr;
    ConversionDelegate *conversion = nullptr;
    ComparisonDelegate *comparison = nullptr;
};

} // namespace Vantrel

#endif // VANTREL_OBJECTDELEGATES_P_H
