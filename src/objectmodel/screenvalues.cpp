#include "objectmodel/screenvalues.h"

#include "objectmodel/inspector.h"
#include "objectmodel/reflection_p.h"

#include <QRect>

namespace Vantrel {

const Class *screenPointClass()
{
    return uiTypesClass(QStringLiteral("ScreenPoint"));
}

SharedPtr<Object> wrapScreenPoint(const ScreenPoint &value)
{
    return wrapCopy(screenPointClass(), value, ObjectAttribute());
}

ScreenPoint unwrapScreenPoint(SharedPtr<Object> object)
{
    return unwrapCopy<ScreenPoint>(object);
}

const Class *objectModelScreenRectangleClass()
{
    return uiTypesClass(QStringLiteral("ScreenRectangle"));
}

SharedPtr<Object> wrapScreenRectangle(const ScreenRectangle &value)
{
    return wrapCopy(objectModelScreenRectangleClass(), value, ObjectAttribute());
}

ScreenRectangle unwrapScreenRectangle(SharedPtr<Object> object)
{
    return unwrapCopy<ScreenRectangle>(object);
}

SharedPtr<Object> createRemoteScreenRectangle(const ScreenRectangle &value)
{
    ObjectList arguments;
    for (const int number : {value.x, value.y, value.width, value.height}) {
        arguments << Inspector::self()->createPrimitive(number);
    }
    return constructWith(objectModelScreenRectangleClass(), 1, arguments);
}

SharedPtr<Object> createRemoteScreenRectangle(const QRect &value)
{
    return createRemoteScreenRectangle(
        ScreenRectangle{value.x(), value.y(), value.width(), value.height()});
}

ScreenRectangle unwrapRemoteScreenRectangle(SharedPtr<Object> object)
{
    const auto number = [&object](const char *property) {
        const SharedPtr<Object> value = readProperty(object, QLatin1String(property));
        return value ? value->toInteger() : 0;
    };
    return ScreenRectangle{number("x"), number("y"), number("width"), number("height")};
}

} // namespace Vantrel
