#include "qt/actions.h"

#include "qt/actions_p.h"

#include "objectmodel/globalfunctions.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

namespace Vantrel::QtWrapper {

namespace {

using Handle = const SharedPtr<Object> &;

/** A call that has no result gives the void object; one that was refused gives null. */
SharedPtr<Object> result(bool succeeded)
{
    return succeeded ? Inspector::self()->voidObject() : SharedPtr<Object>();
}

using Click = bool (*)(Handle, const QPoint &, int, int);

/** All forms of a click, from the object alone to everything. */
void addClick(const char *name, Click click)
{
    addFunction(name,
                [click](Handle object) {
                    return result(click(object, nowhere, Qt::LeftButton, Qt::NoModifier));
                },
                {"object"});
    addFunction(name,
                [click](Handle object, int x, int y) {
                    return result(click(object, QPoint(x, y), Qt::LeftButton, Qt::NoModifier));
                },
                {"object", "x", "y"});
    addFunction(name,
                [click](Handle object, int x, int y, Qt::MouseButton button) {
                    return result(click(object, QPoint(x, y), button, Qt::NoModifier));
                },
                {"object", "x", "y", "button"});
    addFunction(name,
                [click](Handle object, int x, int y, Qt::MouseButton button,
                        Qt::KeyboardModifier modifiers) {
                    return result(click(object, QPoint(x, y), button, modifiers));
                },
                {"object", "x", "y", "button", "modifiers"});
}

void addEnums()
{
    addEnum<Qt::MouseButton>("MouseButton",
                             {{"LeftButton", Qt::LeftButton},
                              {"RightButton", Qt::RightButton},
                              {"MiddleButton", Qt::MiddleButton},
                              {"BackButton", Qt::BackButton},
                              {"ForwardButton", Qt::ForwardButton}});
    addEnum<Qt::KeyboardModifier>("KeyboardModifier",
                                  {{"NoModifier", Qt::NoModifier},
                                   {"ShiftModifier", Qt::ShiftModifier},
                                   {"ControlModifier", Qt::ControlModifier},
                                   {"AltModifier", Qt::AltModifier},
                                   {"MetaModifier", Qt::MetaModifier},
                                   {"KeypadModifier", Qt::KeypadModifier}});
}

void addMouseFunctions()
{
    addClick("_vantrel_mouse_click", mouseClick);
    addClick("_vantrel_mouse_double_click", mouseDoubleClick);
    addFunction("_vantrel_mouse_drag",
                [](Handle object, int x, int y, int dx, int dy) {
                    return result(mouseDrag(object, QPoint(x, y), QPoint(dx, dy)));
                },
                {"object", "x", "y", "dx", "dy"});
    addFunction("_vantrel_mouse_drag",
                [](Handle object, int x, int y, int dx, int dy, Qt::MouseButton button,
                   Qt::KeyboardModifier modifiers) {
                    return result(
                        mouseDrag(object, QPoint(x, y), QPoint(dx, dy), button, modifiers));
                },
                {"object", "x", "y", "dx", "dy", "button", "modifiers"});
    addFunction("_vantrel_drag_to",
                [](Handle object, Handle target) { return result(dragTo(object, target)); },
                {"object", "target"});
    addFunction("_vantrel_mouse_wheel",
                [](Handle object, int horizontalSteps, int verticalSteps) {
                    return result(mouseWheel(object, horizontalSteps, verticalSteps));
                },
                {"object", "horizontalSteps", "verticalSteps"});
    addFunction(
        "_vantrel_mouse_wheel",
        [](Handle object, int horizontalSteps, int verticalSteps, Qt::KeyboardModifier modifiers) {
            return result(mouseWheel(object, horizontalSteps, verticalSteps, modifiers));
        },
        {"object", "horizontalSteps", "verticalSteps", "modifiers"});
}

void addKeyFunctions()
{
    addFunction("_vantrel_type",
                [](Handle object, const QString &text) { return result(type(object, text)); },
                {"object", "text"});
    addFunction("_vantrel_shortcut",
                [](const QString &sequence) { return result(shortcut(sequence)); }, {"sequence"});
}

} // namespace

void registerActions()
{
    addEnums();
    addMouseFunctions();
    addKeyFunctions();
    addFunction("_vantrel_activate", [](Handle object) { return result(activate(object)); },
                {"object"});
    addFunction("_vantrel_touch_replay",
                [](Handle object, const QString &gestureXml) {
                    return result(replayTouch(object, gestureXml));
                },
                {"object", "gestureXml"});
    addFunction("_vantrel_screenshot",
                [](Handle object, const QString &fileName) {
                    return result(saveScreenshot(object, fileName));
                },
                {"object", "fileName"});
    addFunction("_vantrel_screenshot",
                [](Handle object, const QString &fileName, bool wholeWindow) {
                    return result(saveScreenshot(object, fileName, wholeWindow));
                },
                {"object", "fileName", "wholeWindow"});
}

} // namespace Vantrel::QtWrapper
