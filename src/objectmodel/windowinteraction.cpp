#include "objectmodel/windowinteraction.h"

#include "objectmodel/checkednumbers_p.h"
#include "objectmodel/class.h"
#include "objectmodel/delegates.h"
#include "objectmodel/globalobject.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/primitiveids.h"
#include "objectmodel/screenvalues.h"
#include "objectmodel/windowinteraction_p.h"

#include <algorithm>
#include <optional>

namespace Vantrel {

namespace {

FunctionCallResult<void> unsupported(const char *text, const SharedPtr<Object> &object)
{
    return {QString::fromLatin1(text).arg(object ? object->className() : QString())};
}

std::nullptr_t fail(const QString &text)
{
    Inspector::self()->setError(text);
    return nullptr;
}

/** What a function says when it has no window, or one that nobody can handle. */
struct Refusals
{
    const char *nullWindow;
    const char *unknownWindow;
};

constexpr Refusals commandRefusals = {"Can't %1 null object.",
                                      "Don't know how to %1 object of type %2"};
constexpr Refusals geometryRefusals = {"Can't fetch geometry for null object.",
                                       "Don't know how to fetch geometry for object of type %2"};

/**
 * Fills in %1 and %2. Qt gives the first text to the lowest number that occurs,
 * so a template without %1 must get the class name alone.
 */
QString filled(const char *text, const QString &verb, const QString &className)
{
    const QString format = QString::fromLatin1(text);
    return format.contains(QLatin1String("%1")) ? format.arg(verb, className)
                                                : format.arg(className);
}

/** The delegate for the window in the first argument; null after a refusal. */
WindowInteractionDelegate *windowDelegate(const ObjectList &arguments, const Refusals &refusals,
                                          const QString &verb)
{
    const SharedPtr<Object> window = arguments.empty() ? nullptr : arguments.front();
    if (!window || window->isNull() || !window->isValid()) {
        return fail(QString::fromLatin1(refusals.nullWindow).replace(QLatin1String("%1"), verb));
    }
    auto *delegate = DelegateFactory::self()->find<WindowInteractionDelegate>(window->type());
    if (!delegate) {
        return fail(filled(refusals.unknownWindow, verb, window->className()));
    }
    return delegate;
}

SharedPtr<Object> commandResult(const FunctionCallResult<void> &result)
{
    return result.errorMessage.isEmpty() ? Inspector::self()->voidObject()
                                         : fail(result.errorMessage);
}

using Command = FunctionCallResult<void> (WindowInteractionDelegate::*)(SharedPtr<Object>);

SharedPtr<Object> windowCommand(const char *verb, const ObjectList &arguments, Command command)
{
    auto *delegate = windowDelegate(arguments, commandRefusals, QString::fromLatin1(verb));
    return delegate ? commandResult((delegate->*command)(arguments.front())) : nullptr;
}

/** The number at @p index; nothing, with the error set, when there is none. */
std::optional<int> numberAt(std::size_t index, const ObjectList &arguments, const QString &verb)
{
    const std::optional<int> number = checkedInteger(arguments[index]);
    if (!number) {
        fail(QStringLiteral("Can't %1 object: argument %2 is not a number")
                 .arg(verb, QString::number(index + 1)));
    }
    return number;
}

using PlaceCommand = FunctionCallResult<void> (WindowInteractionDelegate::*)(SharedPtr<Object>, int,
                                                                             int);

SharedPtr<Object> placeCommand(const char *verbText, const ObjectList &arguments,
                               PlaceCommand command)
{
    const QString verb = QString::fromLatin1(verbText);
    auto *delegate = windowDelegate(arguments, commandRefusals, verb);
    if (!delegate) {
        return nullptr;
    }
    if (arguments.size() != 3) {
        return fail(QStringLiteral("Can't %1 object: 3 arguments expected, %2 given")
                        .arg(verb, QString::number(arguments.size())));
    }
    const std::optional<int> first = numberAt(1, arguments, verb);
    const std::optional<int> second = first ? numberAt(2, arguments, verb) : std::nullopt;
    return second ? commandResult((delegate->*command)(arguments.front(), *first, *second))
                  : nullptr;
}

} // namespace

WindowInteractionDelegate::WindowInteractionDelegate(const QString &className)
    : Delegate(className, delegateType)
{}

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

FunctionCallResult<ScreenRectangle> WindowInteractionDelegate::windowGeometry(
    SharedPtr<Object> window)
{
    FunctionCallResult<ScreenRectangle> result;
    result.errorMessage =
        unsupported("Fetching window geometry for objects of type %1 is not supported.", window)
            .errorMessage;
    return result;
}

SharedPtr<Object> _vantrel_window_close(const ObjectList &arguments)
{
    return windowCommand("close", arguments, &WindowInteractionDelegate::closeWindow);
}

SharedPtr<Object> _vantrel_window_maximize(const ObjectList &arguments)
{
    return windowCommand("maximize", arguments, &WindowInteractionDelegate::maximizeWindow);
}

SharedPtr<Object> _vantrel_window_minimize(const ObjectList &arguments)
{
    return windowCommand("minimize", arguments, &WindowInteractionDelegate::minimizeWindow);
}

SharedPtr<Object> _vantrel_window_moveto(const ObjectList &arguments)
{
    return placeCommand("move", arguments, &WindowInteractionDelegate::moveWindowTo);
}

SharedPtr<Object> _vantrel_window_resizeto(const ObjectList &arguments)
{
    return placeCommand("resize", arguments, &WindowInteractionDelegate::resizeWindowTo);
}

SharedPtr<Object> _vantrel_window_restore(const ObjectList &arguments)
{
    return windowCommand("restore", arguments, &WindowInteractionDelegate::restoreWindow);
}

SharedPtr<Object> _vantrel_window_fullscreen_set(const ObjectList &arguments)
{
    return windowCommand("set fullscreen", arguments,
                         &WindowInteractionDelegate::setFullscreenWindow);
}

SharedPtr<Object> _vantrel_window_foreground_set(const ObjectList &arguments)
{
    return windowCommand("set foreground", arguments,
                         &WindowInteractionDelegate::setForegroundWindow);
}

SharedPtr<Object> _vantrel_window_focus_set(const ObjectList &arguments)
{
    return windowCommand("set focused", arguments, &WindowInteractionDelegate::setFocusedWindow);
}

SharedPtr<Object> _vantrel_window_geometry_get(const ObjectList &arguments)
{
    auto *delegate = windowDelegate(arguments, geometryRefusals, QString());
    if (!delegate) {
        return nullptr;
    }
    const FunctionCallResult<ScreenRectangle> result = delegate->windowGeometry(arguments.front());
    return result.errorMessage.isEmpty() ? wrapScreenRectangle(result.value)
                                         : fail(result.errorMessage);
}

SharedPtr<Object> _vantrel_window_focused(const ObjectList &)
{
    const DelegateFactory *factory = DelegateFactory::self();
    for (WindowInteractionDelegate *delegate : factory->findAll<WindowInteractionDelegate>()) {
        // A delegate may remove others while it is asked.
        const auto current = factory->findAll<WindowInteractionDelegate>();
        if (std::find(current.begin(), current.end(), delegate) == current.end()) {
            continue;
        }
        const FunctionCallResult<SharedPtr<Object>> result = delegate->focusedWindow();
        if (!result.errorMessage.isEmpty()) {
            return fail(result.errorMessage);
        }
        if (result.value && !result.value->isNull()) {
            return result.value;
        }
    }
    return fail(QStringLiteral("No focused window found"));
}

void registerWindowFunctions(GlobalClass *global)
{
    const Inspector *inspector = Inspector::self();
    const Argument nothing(inspector->type(PrimitiveId::Void));
    const Class *number = inspector->type(PrimitiveId::Int);
    const Argument window = Argument::AnyObject(QStringLiteral("object"));
    const FList<Argument> windowOnly{window};
    const FList<Argument> place{window, Argument::Unconverted(QStringLiteral("x"), number),
                                Argument::Unconverted(QStringLiteral("y"), number)};
    const FList<Argument> size{window, Argument::Unconverted(QStringLiteral("width"), number),
                               Argument::Unconverted(QStringLiteral("height"), number)};
    const struct
    {
        const char *name;
        Argument result;
        FList<Argument> arguments;
        SharedPtr<Object> (*function)(const ObjectList &);
    } rows[] = {
        {"_vantrel_window_close", nothing, windowOnly, _vantrel_window_close},
        {"_vantrel_window_maximize", nothing, windowOnly, _vantrel_window_maximize},
        {"_vantrel_window_minimize", nothing, windowOnly, _vantrel_window_minimize},
        {"_vantrel_window_moveto", nothing, place, _vantrel_window_moveto},
        {"_vantrel_window_resizeto", nothing, size, _vantrel_window_resizeto},
        {"_vantrel_window_restore", nothing, windowOnly, _vantrel_window_restore},
        {"_vantrel_window_fullscreen_set", nothing, windowOnly, _vantrel_window_fullscreen_set},
        {"_vantrel_window_foreground_set", nothing, windowOnly, _vantrel_window_foreground_set},
        {"_vantrel_window_focus_set", nothing, windowOnly, _vantrel_window_focus_set},
        {"_vantrel_window_geometry_get", Argument(objectModelScreenRectangleClass()), windowOnly,
         _vantrel_window_geometry_get},
        {"_vantrel_window_focused", Argument::AnyObject(), {}, _vantrel_window_focused},
    };
    for (const auto &row : rows) {
        global->addFunction(row.result, Signature(QString::fromLatin1(row.name), row.arguments),
                            row.function);
    }
}

} // namespace Vantrel
