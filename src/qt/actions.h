#ifndef VANTREL_QT_ACTIONS_H
#define VANTREL_QT_ACTIONS_H

#include "objectmodel/shared.h"

#include "qt/export.h"

#include <QByteArray>
#include <QPoint>
#include <QString>

namespace Vantrel {

class Object;

namespace QtWrapper {

/*
 * What a person does with mouse, keyboard and fingers. Everything is delivered
 * to the window, not to the widget, so that focus, popups and modal dialogs take
 * part as they would for a user. An action first waits until its object is
 * ready (see waiting.h) and scrolled into view, then sends its events and waits
 * until they have arrived; a dialog that they open does not hold it up.
 *
 * Each returns false, with the last error set and nothing sent, when that is
 * not possible. Positions are relative to the object, in pixels; a null
 * position (see nowhere) is its middle. Buttons and modifiers are the numbers
 * of the enums of Qt. Scripts have these as global functions with the prefix
 * "_vantrel_".
 */

/**
 * Stands for the middle of the object, or of its part that is in view. For a
 * check box or radio button it is the middle of what reacts to a click.
 */
constexpr QPoint nowhere(-1, -1);

/**
 * How long actions wait for their object, in milliseconds. At first that is
 * defaultTimeout of waiting.h.
 */
VANTREL_QT_EXPORT void setActionTimeout(int milliseconds);

VANTREL_QT_EXPORT bool mouseClick(const SharedPtr<Object> &object, const QPoint &position = nowhere,
                                  int button = 1, int modifiers = 0);
VANTREL_QT_EXPORT bool mouseDoubleClick(const SharedPtr<Object> &object,
                                        const QPoint &position = nowhere, int button = 1,
                                        int modifiers = 0);
/** Presses at @p from, moves by @p distance in small steps and releases. */
VANTREL_QT_EXPORT bool mouseDrag(const SharedPtr<Object> &object, const QPoint &from,
                                 const QPoint &distance, int button = 1, int modifiers = 0);
/** Drops @p object on @p target, from middle to middle. */
VANTREL_QT_EXPORT bool dragTo(const SharedPtr<Object> &object, const SharedPtr<Object> &target);
/** Turns the wheel by so many notches, to the right and up where positive; at most 10000. */
VANTREL_QT_EXPORT bool mouseWheel(const SharedPtr<Object> &object, int horizontalSteps,
                                  int verticalSteps, int modifiers = 0);
/**
 * Gives the object the focus as a user would and types a text. Parts in angle
 * brackets are keys, such as "<Return>", "<Ctrl+A>", "<Backspace>"; "<<" is one
 * bracket. A text with an unknown key is refused as a whole.
 */
VANTREL_QT_EXPORT bool type(const SharedPtr<Object> &object, const QString &text);
/** Presses a key sequence such as "Ctrl+S" in the window that has the focus. */
VANTREL_QT_EXPORT bool shortcut(const QString &sequence);
/**
 * Activates an item: a menu item through its menus, which are opened on the
 * way, an item of a view by a double click, a tab or button by a click.
 */
VANTREL_QT_EXPORT bool activate(const SharedPtr<Object> &object);
/**
 * Replays a gesture of one or more fingers, given as gesture XML whose
 * coordinates are pixels of the object. Refused for an object that takes no touch.
 */
VANTREL_QT_EXPORT bool replayTouch(const SharedPtr<Object> &object, const QString &gestureXml);

/** What the object shows, as PNG; of the whole window with @p wholeWindow. Empty on failure. */
VANTREL_QT_EXPORT QByteArray screenshot(const SharedPtr<Object> &object, bool wholeWindow = false);
/** The same, written to a file. */
VANTREL_QT_EXPORT bool saveScreenshot(const SharedPtr<Object> &object, const QString &fileName,
                                      bool wholeWindow = false);

} // namespace QtWrapper
} // namespace Vantrel

#endif // VANTREL_QT_ACTIONS_H
