#ifndef VANTREL_GESTURECLASS_H
#define VANTREL_GESTURECLASS_H

#include "objectmodel/class.h"

namespace Vantrel {

/**
 * The class "GestureBuilder", through which scripts build multi-touch
 * gestures. Each object owns one TouchBuilder, whose operations its methods
 * forward to; the constructor begins the first gesture.
 *
 * A method that only does something returns the void object. When it refuses,
 * it returns null, the last error tells why, and nothing has changed.
 */
class VANTREL_EXPORT GestureClass : public Class
{
public:
    GestureClass();
    ~GestureClass() override;

    SharedPtr<Object> invoke(int methodId, void *data, void **arguments,
                             const Class *type) override;
    SharedPtr<Object> getProperty(int propertyId, void *data, const Class *type) override;
    SharedPtr<Object> construct(int index, void **arguments) override;
    void deleteObjectData(void *data, const ObjectAttribute &attribute) const override;
    /** An object is equal to itself only: its properties are not all that it holds. */
    bool compare(SharedPtr<Object> a, SharedPtr<Object> b) const override;

private:
    // Numbers arrive here as they were given, because "abc" is no place to touch.
    SharedPtr<Object> invoke(int methodId, SharedPtr<Object> object, const ObjectList &arguments,
                             const Method *method) override;
    SharedPtr<Object> construct(int index, const ObjectList &arguments,
                                const Constructor *constructor) override;

    Constructor *createConstructor(int index) const override;
    Method *createMethod(int methodId) const override;
    Property *createProperty(int propertyId) const override;
    Enum *createEnum(int enumId) const override;
};

} // namespace Vantrel

#endif // VANTREL_GESTURECLASS_H
