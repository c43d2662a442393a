#include "objectmodel/valueclasses.h"

#include "objectmodel/datetime.h"
#include "objectmodel/diagnostics_p.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object_p.h"
#include "objectmodel/primitiveids.h"
#include "objectmodel/screenvalues.h"

#include <sstream>
#include <vector>

namespace Vantrel {

/** Names the ints of one struct and tells how to make, reach and free them. */
struct ValueClass::Layout
{
    const char *name;
    std::vector<const char *> members;
    /** The number of ints that each constructor before the copying one takes. */
    std::vector<int> constructors;
    /** A copy of @p source, or a new value when that is null. */
    void *(*create)(const void *source);
    void (*destroy)(void *data);
    int *(*member)(void *data, int index);

    int numMembers() const { return int(members.size()); }
    int copyConstructor() const { return int(constructors.size()); }

    template <class T, int T::*...Members>
    static Layout of(const char *name, std::vector<const char *> names,
                     std::vector<int> constructors)
    {
        return {name,
                std::move(names),
                std::move(constructors),
                [](const void *source) -> void * {
                    return source ? new T(*static_cast<const T *>(source)) : new T();
                },
                [](void *data) { delete static_cast<T *>(data); },
                [](void *data, int index) {
                    static constexpr int T::*table[] = {Members...};
                    return &(static_cast<T *>(data)->*table[index]);
                }};
    }

    static const Layout &dateTime();
    static const Layout &point();
    static const Layout &rectangle();
};

const ValueClass::Layout &ValueClass::Layout::dateTime()
{
    static const Layout layout = of<DateTime, &DateTime::year, &DateTime::month, &DateTime::day,
                                    &DateTime::hour, &DateTime::minute, &DateTime::second>(
        "DateTime", {"year", "month", "day", "hour", "minute", "second"}, {0, 3, 6});
    return layout;
}

const ValueClass::Layout &ValueClass::Layout::point()
{
    static const Layout layout =
        of<ScreenPoint, &ScreenPoint::x, &ScreenPoint::y>("ScreenPoint", {"x", "y"}, {0, 2});
    return layout;
}

const ValueClass::Layout &ValueClass::Layout::rectangle()
{
    static const Layout layout =
        of<ScreenRectangle, &ScreenRectangle::x, &ScreenRectangle::y, &ScreenRectangle::width,
           &ScreenRectangle::height>("ScreenRectangle", {"x", "y", "width", "height"}, {0, 4});
    return layout;
}

ValueClass::ValueClass(const Layout &layout)
    : Class(layout.name, Inspector::self()->nameSpace(QStringLiteral("UiTypes")), true),
      m_layout(layout)
{
    setNumMethods(0);
    setNumConstructors(layout.copyConstructor() + 1);
    setNumProperties(layout.numMembers());
    setNumEvents(0);
    setNumEnums(0);
}

ValueClass::~ValueClass() = default;

bool ValueClass::setProperty(int propertyId, void *data, void *value) const
{
    const int index = propertyId - superClassOffset(PropertyOffset);
    if (!data || !value || index < 0 || index >= m_layout.numMembers()) {
        return false;
    }
    *m_layout.member(data, index) = *static_cast<const qint32 *>(value);
    return true;
}

SharedPtr<Object> ValueClass::getProperty(int propertyId, void *data, const Class *)
{
    const int index = propertyId - superClassOffset(PropertyOffset);
    if (!data || index < 0 || index >= m_layout.numMembers()) {
        return {};
    }
    return Inspector::self()->createPrimitive(*m_layout.member(data, index));
}

SharedPtr<Object> ValueClass::construct(int index, void **arguments)
{
    if (index < 0 || index > m_layout.copyConstructor()) {
        printDiagnostic("Unknown %s constructor called:%d\n", m_layout.name, index);
        return {};
    }
    const bool copies = index == m_layout.copyConstructor();
    const int count = copies ? 1 : m_layout.constructors[std::size_t(index)];
    for (int i = 0; i < count; ++i) {
        if (!arguments || !arguments[i]) {
            return {};
        }
    }
    void *data = m_layout.create(copies ? arguments[0] : nullptr);
    for (int i = 0; i < count && !copies; ++i) {
        *m_layout.member(data, i) = *static_cast<const qint32 *>(arguments[i]);
    }
    SharedPtr<Object> object = ObjectAccess::owned(this, data, ObjectAttribute());
    if (!object) {
        m_layout.destroy(data);
    }
    return object;
}

void ValueClass::deleteObjectData(void *data, const ObjectAttribute &) const
{
    m_layout.destroy(data);
}

bool ValueClass::compare(SharedPtr<Object> a, SharedPtr<Object> b) const
{
    void *first = nullptr;
    void *second = nullptr;
    if (!convert(a, &first) || !convert(b, &second) || !first || !second) {
        return Class::compare(a, b);
    }
    for (int i = 0; i < m_layout.numMembers(); ++i) {
        if (*m_layout.member(first, i) != *m_layout.member(second, i)) {
            return false;
        }
    }
    return true;
}

Constructor *ValueClass::createConstructor(int index) const
{
    if (index < 0 || index >= numConstructors()) {
        return nullptr;
    }
    Signature signature(className());
    if (index == m_layout.copyConstructor()) {
        signature.addArgument(Argument(QStringLiteral("other"), this));
    } else {
        const Class *intClass = Inspector::self()->type(PrimitiveId::Int);
        for (int i = 0; i < m_layout.constructors[std::size_t(index)]; ++i) {
            signature.addArgument(
                Argument(QLatin1String(m_layout.members[std::size_t(i)]), intClass));
        }
    }
    return new Constructor(index, this, signature);
}

Property *ValueClass::createProperty(int propertyId) const
{
    const int index = propertyId - superClassOffset(PropertyOffset);
    if (index < 0 || index >= int(m_layout.members.size())) {
        return nullptr;
    }
    return new Property(propertyId, this, Argument(Inspector::self()->type(PrimitiveId::Int)),
                        QLatin1String(m_layout.members[std::size_t(index)]),
                        Property::Readable | Property::Writable | Property::Stored);
}

DateTime_class::DateTime_class() : ValueClass(Layout::dateTime()) {}

DateTime_class::~DateTime_class() = default;

bool DateTime_class::canConvertTo(const Class *target, bool sourceIsPointer, bool targetIsPointer,
                                  void **constructor) const
{
    // Wanted by value, a "char" is a single character, which no date is.
    return Class::canConvertTo(target, sourceIsPointer, targetIsPointer, constructor)
        || (targetIsPointer && target && target->id() == PrimitiveId::Char);
}

SharedPtr<Object> DateTime_class::convertTo(SharedPtr<Object> object, const Class *target,
                                            bool targetIsPointer)
{
    if (SharedPtr<Object> converted = Class::convertTo(object, target, targetIsPointer)) {
        return converted;
    }
    void *data = nullptr;
    if (!targetIsPointer || !target || target->id() != PrimitiveId::Char || !convert(object, &data)
        || !data) {
        return {};
    }
    std::ostringstream text;
    text << *static_cast<const DateTime *>(data);
    return Inspector::self()->createPrimitive(text.str().c_str());
}

ScreenPointClass::ScreenPointClass() : ValueClass(Layout::point()) {}

ScreenPointClass::~ScreenPointClass() = default;

ScreenRectangle_class::ScreenRectangle_class() : ValueClass(Layout::rectangle()) {}

ScreenRectangle_class::~ScreenRectangle_class() = default;

} // namespace Vantrel
