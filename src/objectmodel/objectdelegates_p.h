#ifndef VANTREL_OBJECTDELEGATES_P_H
#define VANTREL_OBJECTDELEGATES_P_H

namespace Vantrel {

class Class;
class ComparisonDelegate;
class ConversionDelegate;
class Delegate;
class ObjectHierarchyDelegate;
class SerializeDelegate;

/**
 * The delegates that handles of one class ask, found once for all of them. A
 * handle keeps to those it was given first, whatever is registered later; so a
 * change makes a new record, and the few that there are live as long as the
 * process.
 */
struct ObjectDelegates
{
    ObjectHierarchyDelegate *hierarchy = nullptr;
    SerializeDelegate *serialize = nullptr;
    ConversionDelegate *conversion = nullptr;
    ComparisonDelegate *comparison = nullptr;

    /** Those that the factory has for @p c now. */
    static const ObjectDelegates *of(const Class *c);
    /** The record of that content. */
    static const ObjectDelegates *shared(const ObjectDelegates &content);
    /** For whoever changes what a search along the classes finds: look again. */
    static void changed();
    /** Takes a delegate that ends out of all records; handles look for another one then. */
    static void forget(const Delegate *delegate);
};

} // namespace Vantrel

#endif // VANTREL_OBJECTDELEGATES_P_H
