#include "objectmodel/delegates.h"
#include "objectmodel/object.h"
#include "objectmodel/screenvalues.h"

namespace Vantrel {

namespace {

FunctionCallResult<void> unsupported(const char *text, const SharedPtr<Object> &object)
{
    return {QString::fromLatin1(text).arg(object ? object->className() : QString())};
}

} // namespace

WindowInteractionDelegate::WindowInteractionDelegate(const QString &className)
    : Delegate(className, delegateType)
{
}

WindowInteractionDelegate::~WindowInteractionDelegate() = default;

FunctionCallResult<void> WindowInteractionDelegate::setFullscreenWindow(SharedPtr<Object> window)
{
    return unsupported("Setting fullscreen state on objects of type %1 is not supported.", window);
}

FunctionCallResult<void> WindowInteractionDelegate::setForegroundWindow(SharedPtr<Object> window)
{
    return unsupported("Setting foreground state on objects of type %1 is not supported.", window);
}

FunctionCallResult<void> WindowInteractionDelegate::setFocusedWindow(SharedPtr<Object> window)
{
    return unsupported("Focusing objects of type %1 is not supported.", window);
}

FunctionCallResult<SharedPtr<Object>> WindowInteractionDelegate::focusedWindow()
{
    return {};
}

FunctionCallResult<ScreenRectangle>
WindowInteractionDelegate::windowGeometry(SharedPtr<Object> window)
{
    FunctionCallResult<ScreenRectangle> result;
    result.errorMessage
        = unsupported("Fetching window geometry for objects of type %1 is not supported.", window)
              .errorMessage;
    return result;
}

} // namespace Vantrel
