#ifndef VANTREL_OBJECT_P_H
#define VANTREL_OBJECT_P_H

#include "objectmodel/object.h"

#include <QVarLengthArray>

namespace Vantrel {

/**
 * Called when a handle ends that was asked for its index, or is assigned to,
 * so that what others keep under that index ends with it: at its destruction,
 * with its thing still there, or when it is invalidated. Null while nobody
 * keeps anything.
 */
extern void (*objectEnded)(Object *object, bool isInvalidated);

/** What the other sources of the library do to handles beyond their public operations. */
class ObjectAccess
{
public:
    /** Whether nobody else has it, unlike a handle that wrap() gave again. */
    static bool isNew(const SharedPtr<Object> &handle) { return handle->referenceCount() == 1; }
    /** Whether it is new and has data that it does not own. @p handle may be null. */
    static bool isView(const SharedPtr<Object> &handle)
    {
        return handle && isNew(handle) && handle->m_data && !handle->m_autoDelete;
    }
    /**
     * Makes @p view, which sees the data of @p origin or a part of it, keep that
     * data alive. Both may be null; what is no view is left alone.
     */
    static void share(const SharedPtr<Object> &view, const SharedPtr<Object> &origin)
    {
        if (isView(view) && origin) {
            tie(view.get(), origin.get());
        }
    }
    static void share(const SharedPtr<Object> &view, Object *origin)
    {
        if (isView(view)) {
            tie(view.get(), origin);
        }
    }
    /**
     * The same for the result of a call on @p object, which is null for static
     * ones: what it refers to may belong to the object, or to an argument that
     * the call could refer to, as @p isReferredTo says. Of a new container,
     * @p isContainer, it holds for the items.
     */
    static void shareResult(const SharedPtr<Object> &result, Object *object,
                            const Signature &signature, const ObjectList &arguments,
                            bool (*isReferredTo)(const Argument &declared),
                            bool isContainer = false)
    {
        if (isContainer || isView(result)) {
            tieResult(result, object, signature, arguments, isReferredTo);
        }
    }
    /** Of code that takes copies of numbers and texts unless it declares them otherwise. */
    static bool isReferredTo(const Argument &declared);
    /** Of code that gets the data of each argument, whatever it declares. */
    static bool isAlwaysReferredTo(const Argument &) { return true; }
    /** Whether what was declared to be @p declared is meant to refer to something. */
    static bool isReference(const Argument &declared)
    {
        return (declared.isReference() || declared.isPointer()) && !declared.takesAnyObject();
    }

    /**
     * A new handle of the class @p c that owns @p data. Null when the class
     * refuses the data or has another handle to give; the data is as it was then.
     */
    static SharedPtr<Object> owned(const Class *c, void *data, const ObjectAttribute &attribute);

    /** Only for a new handle, whose data the other class can use. */
    static void setClass(Object *object, const Class *c);
    /** For a new handle that takes the place of one that ended. */
    static void setIndex(Object *object, quint32 index) { object->m_index = index; }
    /** The index, if the handle has one. */
    static quint32 knownIndex(const Object *object) { return object->m_index; }
    /** Whether the data was made here, with room for what handles of any shape may write to it. */
    static bool hasRoom(const Object *object) { return object->m_hasRoom; }
    static void setRoom(Object *object) { object->m_hasRoom = true; }
    /** Makes @p object own its data, a block of that size of the BlockPool with such room. */
    static void ownBlock(Object *object, std::size_t size)
    {
        object->m_autoDelete = true;
        object->m_hasRoom = true;
        object->m_blockSize = static_cast<quint8>(size);
    }
    /** A short way to know of a handle that it is a single number made here, with nothing
     * overridden. */
    static bool isPlainNumber(const Object *object)
    {
        return object->m_blockSize > 0 && object->m_attributeFlags == 0;
    }
    static void *data(const Object *object) { return object->m_data; }
    /** Whether the conversion delegate of the class has that ConversionDelegate::Capability. */
    static bool converts(const Object *object, int capability)
    {
        return object->conversionDelegate(capability) != nullptr;
    }
    static ComparisonDelegate *comparisonDelegate(const Object *object)
    {
        return object->setupComparisonDelegate();
    }

private:
    friend class Object;
    using Origins = QVarLengthArray<Object *, 8>;
    static void tie(Object *view, Object *origin);
    static void tieResult(const SharedPtr<Object> &result, Object *object,
                          const Signature &signature, const ObjectList &arguments,
                          bool (*isReferredTo)(const Argument &declared));
    static void tieEach(const SharedPtr<Object> &result, const Origins &origins);
    static void tieOne(Object *result, const Origins &origins);
};

} // namespace Vantrel

#endif // VANTREL_OBJECT_P_H
