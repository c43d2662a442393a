#include "qt/input_p.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QStyleHints>
#include <QTouchDevice>
#include <QWheelEvent>
#include <QWidget>

// How window systems hand their events to Qt, as far as it is public.
#include <QtTest/qtestkeyboard.h>
#include <QtTest/qtestmouse.h>
#include <QtTest/qtestspontaneevent.h>
#include <QtTest/qtesttouch.h>

#include <algorithm>

namespace Vantrel::QtWrapper {

namespace {

/** Gives each event of the mouse a time of its own, in milliseconds. */
class Clock
{
public:
    int now()
    {
        QElapsedTimer timer;
        timer.start();
        // Qt takes a positive int here.
        m_last = std::max(m_last + 1, int(timer.msecsSinceReference() & 0x3fffffff));
        return m_last;
    }
    /** However long ago the last event really was. */
    int rightAfter() { return ++m_last; }
    /** Too late for a double click. */
    int farFrom(int other)
    {
        m_last =
            std::max(m_last, other + QGuiApplication::styleHints()->mouseDoubleClickInterval());
        return now();
    }

private:
    int m_last = 0;
};

Clock mouseClock;
int lastPress = 0;

/** The function runs later, so the window may be gone by then. */
void handleMouse(const MouseInput &input, Qt::MouseButtons buttons, Qt::MouseButton button,
                 QEvent::Type type, int timestamp)
{
    QWindow *const window = input.window;
    if (!window && type != QEvent::MouseButtonRelease) {
        return;
    }
    const QPoint local = window ? window->mapFromGlobal(input.position) : input.position;
    qt_handleMouseEvent(window, local, input.position, buttons, button, type, input.modifiers,
                        timestamp);
}

void turn(const MouseInput &input, const QPoint &angle)
{
    if (QWindow *window = input.window) {
        QWheelEvent event(window->mapFromGlobal(input.position), input.position, QPoint(), angle,
                          Qt::NoButton, input.modifiers, Qt::NoScrollPhase, false);
        event.setTimestamp(ulong(mouseClock.now()));
        QSpontaneKeyEvent::setSpontaneous(&event);
        // Sent in the usual way it would lose the mark, and not go on to widgets further out.
        QCoreApplication::instance()->notify(window, &event);
    }
}

QTouchDevice *touchScreen()
{
    // Qt keeps it as long as the process lives.
    static QTouchDevice *const device = QTest::createTouchDevice(QTouchDevice::TouchScreen);
    return device;
}

} // namespace

QWindow *keyWindow()
{
    QWindow *const focused = QGuiApplication::focusWindow();
    if (!focused || focused->isVisible()) {
        return focused;
    }
    // Without a window manager a popup keeps the focus after it was closed.
    const QWidget *active =
        qobject_cast<QApplication *>(qApp) ? QApplication::activeWindow() : nullptr;
    QWindow *const window = active ? active->windowHandle() : nullptr;
    return window && window->isVisible() ? window : nullptr;
}

Delivery pressMouse(const MouseInput &input, Closeness toLastPress)
{
    lastPress =
        toLastPress == Closeness::Apart ? mouseClock.farFrom(lastPress) : mouseClock.rightAfter();
    return deliver([input, timestamp = lastPress] {
        handleMouse(input, input.button, input.button, QEvent::MouseButtonPress, timestamp);
    });
}

Delivery releaseMouse(const MouseInput &input)
{
    return deliver([input, timestamp = mouseClock.rightAfter()] {
        handleMouse(input, Qt::NoButton, input.button, QEvent::MouseButtonRelease, timestamp);
    });
}

Delivery moveMouse(const MouseInput &input, const std::function<void()> &moved)
{
    return deliver([input, moved, timestamp = mouseClock.now()] {
        handleMouse(input, input.button, Qt::NoButton, QEvent::MouseMove, timestamp);
        if (moved) {
            moved();
        }
    });
}

Delivery turnWheel(const MouseInput &input, const QPoint &angle)
{
    return deliver([input, angle] { turn(input, angle); });
}

Delivery sendKey(QEvent::Type type, const KeyInput &key, const QPointer<QWindow> &fallback)
{
    return deliver([type, key, fallback] {
        QWindow *const focused = keyWindow();
        if (QWindow *window = focused ? focused : fallback.data()) {
            qt_handleKeyEvent(window, type, key.key, key.modifiers, key.text);
        }
    });
}

Delivery sendTouch(const QPointer<QWindow> &window, const QList<QTouchEvent::TouchPoint> &points)
{
    return deliver([window, points] {
        if (window) {
            qt_handleTouchEvent(window, touchScreen(), points);
        }
    });
}

} // namespace Vantrel::QtWrapper
