#ifndef VANTREL_CONTAINERS_H
#define VANTREL_CONTAINERS_H

#include "objectmodel/export.h"
#include "objectmodel/shared.h"

#include <QString>

#include <map>
#include <string>
#include <vector>

namespace Vantrel {

class Argument;
class Class;
class Object;

/**
 * Script arrays: objects of the class "Vantrel_Array", which a back end
 * registers in the root namespace.
 *
 * Values cross in two ways. The local way makes a native vector the data of
 * an object. The remote way uses nothing but the members of the class, so the
 * array may live in another process: constructor 0, the methods "push" and
 * "at" and the property "length". A class or member that is missing gives an
 * empty result, with the reason in the Inspector's last error or a diagnostic.
 */
class VANTREL_EXPORT ArrayClass
{
public:
    /** The class as it is registered now, or null. */
    static const Class *registeredClass();
    /** For methods and properties that take or give an array; @p name is UTF-8. */
    static Argument arrayClassArg(const std::string &name);

    /** An array that owns a copy of @p items. Null without a registered class. */
    static SharedPtr<Object> wrapObject(const std::vector<SharedPtr<Object>> &items);
    /** A copy of the items of a locally wrapped array; empty for any other object. */
    static std::vector<SharedPtr<Object>> unwrapObject(SharedPtr<Object> array);

    /** Constructs an array and pushes each item, in order. */
    static SharedPtr<Object> createRemoteObject(const std::vector<SharedPtr<Object>> &items);
    /**
     * Asks @p array for its length and then for each item. An item that comes
     * back as a null handle ends the array there, whatever the length says.
     */
    static std::vector<SharedPtr<Object>> unwrapRemoteObject(SharedPtr<Object> array);
};

/**
 * Script maps from texts to values: objects of the class "Vantrel_Map". What
 * ArrayClass says holds here too; the members of the remote way are
 * constructor 0, the methods "insert" and "at" and the property "keys", which
 * is an array.
 */
class VANTREL_EXPORT MapClass
{
public:
    /** The class as it is registered now, or null. */
    static const Class *registeredClass();
    /** For methods and properties that take or give a map; @p name is UTF-8. */
    static Argument mapClassArg(const std::string &name);

    /** A map that owns a copy of @p map. Null without a registered class. */
    static SharedPtr<Object> wrapObject(const std::map<QString, SharedPtr<Object>> &map);
    /** A copy of the entries of a locally wrapped map; empty for any other object. */
    static std::map<QString, SharedPtr<Object>> unwrapObject(SharedPtr<Object> map);

    /** Constructs a map and inserts each entry, in the order of the keys. */
    static SharedPtr<Object> createRemoteObject(const std::map<QString, SharedPtr<Object>> &map);
    /** Asks @p map for its keys and then for the value of each, which may be a null handle. */
    static std::map<QString, SharedPtr<Object>> unwrapRemoteObject(SharedPtr<Object> map);
};

} // namespace Vantrel

#endif // VANTREL_CONTAINERS_H
