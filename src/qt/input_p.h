#ifndef VANTREL_QT_INPUT_P_H
#define VANTREL_QT_INPUT_P_H

#include "qt/script_p.h"

#include <QEvent>
#include <QList>
#include <QPoint>
#include <QPointer>
#include <QString>
#include <QTouchEvent>
#include <QWindow>

#include <functional>

namespace Vantrel::QtWrapper {

// Events go to a window, in the event loop of the application. Whoever sends
// them has to see to it that the window is there and takes input.

/** What one event of the mouse has. Positions are global. */
struct MouseInput
{
    QPointer<QWindow> window;
    QPoint position;
    Qt::MouseButton button = Qt::LeftButton;
    Qt::KeyboardModifiers modifiers;
};

/** Presses that follow each other closely make a double click. */
enum class Closeness { Apart, DoubleClick };

Delivery pressMouse(const MouseInput &input, Closeness toLastPress = Closeness::Apart);
/** Where the window is gone, the release goes to whatever is there instead. */
Delivery releaseMouse(const MouseInput &input);
/**
 * Moves the mouse, with the button down or with none when it is NoButton.
 * @p moved, if given, is called as soon as the event was handled.
 */
Delivery moveMouse(const MouseInput &input, const std::function<void()> &moved = {});
/** One notch; @p angle is in eighths of a degree. */
Delivery turnWheel(const MouseInput &input, const QPoint &angle);

/** One key; the text is what it enters. */
struct KeyInput
{
    int key = 0;
    Qt::KeyboardModifiers modifiers;
    QString text;
};

/**
 * Presses or releases a key in the window that has the focus, or else in
 * @p fallback; nothing happens where both are missing.
 */
/** The window that keys go to: the one with the focus, if it is still shown; may be null. */
QWindow *keyWindow();
Delivery sendKey(QEvent::Type type, const KeyInput &key, const QPointer<QWindow> &fallback);

/** All fingers at one moment, in global positions. */
Delivery sendTouch(const QPointer<QWindow> &window, const QList<QTouchEvent::TouchPoint> &points);

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_INPUT_P_H
