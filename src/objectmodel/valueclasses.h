#ifndef VANTREL_VALUECLASSES_H
#define VANTREL_VALUECLASSES_H

#include "objectmodel/class.h"

namespace Vantrel {

/**
 * What the classes of dates and screen values have in common. The native data
 * is a plain struct of ints. Each of them is a property "int" that can be read
 * and written; the constructors take some of them in order, and the last one
 * copies. Objects are equal when all the ints are.
 *
 * The Inspector makes one object of each class derived from this one and
 * registers it in the namespace "UiTypes".
 */
class VANTREL_EXPORT ValueClass : public Class
{
public:
    ~ValueClass() override;

    bool setProperty(int propertyId, void *data, void *value) const override;
    SharedPtr<Object> getProperty(int propertyId, void *data, const Class *type) override;
    /** Null when an argument is missing, or, with a diagnostic, when there is no such constructor.
     */
    SharedPtr<Object> construct(int index, void **arguments) override;
    void deleteObjectData(void *data, const ObjectAttribute &attribute) const override;
    bool compare(SharedPtr<Object> a, SharedPtr<Object> b) const override;

protected:
    struct Layout;
    explicit ValueClass(const Layout &layout);

private:
    Constructor *createConstructor(int index) const override;
    Property *createProperty(int propertyId) const override;

    const Layout &m_layout;
};

/** The class "DateTime" of DateTime values: (), (year, month, day), the same with time, copy. */
class VANTREL_EXPORT DateTime_class : public ValueClass
{
public:
    DateTime_class();
    ~DateTime_class() override;

    /** Besides what every class can do, dates become texts, in the form that operator<< writes. */
    bool canConvertTo(const Class *target, bool sourceIsPointer, bool targetIsPointer,
                      void **constructor) const override;
    SharedPtr<Object> convertTo(SharedPtr<Object> object, const Class *target,
                                bool targetIsPointer) override;
};

/** The class "ScreenPoint" of ScreenPoint values: (), (x, y), copy. */
class VANTREL_EXPORT ScreenPointClass : public ValueClass
{
public:
    ScreenPointClass();
    ~ScreenPointClass() override;
};

/** The class "ScreenRectangle" of ScreenRectangle values: (), (x, y, width, height), copy. */
class VANTREL_EXPORT ScreenRectangle_class : public ValueClass
{
public:
    ScreenRectangle_class();
    ~ScreenRectangle_class() override;
};

} // namespace Vantrel

#endif // VANTREL_VALUECLASSES_H
