#include "qt/actions.h"

#include "qt/aim_p.h"
#include "qt/geometry_p.h"
#include "qt/handles_p.h"
#include "qt/keytext_p.h"
#include "qt/readiness_p.h"

#include "objectmodel/object.h"

#include <QApplication>
#include <QWidget>

namespace Vantrel::QtWrapper {

namespace {

struct ModifierKey
{
    Qt::KeyboardModifier modifier;
    int key;
};

/** In the order in which they are pressed. */
constexpr ModifierKey modifierKeys[] = {
    {Qt::ControlModifier, Qt::Key_Control},
    {Qt::AltModifier, Qt::Key_Alt},
    {Qt::MetaModifier, Qt::Key_Meta},
    {Qt::ShiftModifier, Qt::Key_Shift},
};

/** Presses keys one after the other, with those of their modifiers around them. */
class Typist
{
public:
    explicit Typist(QWindow *window) : m_window(window) {}

    /** False when the application ended meanwhile. */
    bool type(const std::vector<KeyInput> &keys);

private:
    bool send(QEvent::Type type, const KeyInput &key)
    {
        return sendKey(type, key, m_window) != Delivery::Quitting;
    }
    bool press(const KeyInput &key);

    QPointer<QWindow> m_window;
};

bool Typist::press(const KeyInput &key)
{
    Qt::KeyboardModifiers held;
    bool isRunning = true;
    for (const ModifierKey &modifier : modifierKeys) {
        if (isRunning && key.modifiers & modifier.modifier) {
            isRunning = send(QEvent::KeyPress, {modifier.key, held, QString()});
            held |= modifier.modifier;
        }
    }
    isRunning = isRunning && send(QEvent::KeyPress, key) && send(QEvent::KeyRelease, key);
    for (auto modifier = std::rbegin(modifierKeys); modifier != std::rend(modifierKeys);
         ++modifier) {
        if (isRunning && key.modifiers & modifier->modifier) {
            isRunning = send(QEvent::KeyRelease, {modifier->key, held, QString()});
            held &= ~Qt::KeyboardModifiers(modifier->modifier);
        }
    }
    return isRunning;
}

bool Typist::type(const std::vector<KeyInput> &keys)
{
    for (const KeyInput &key : keys) {
        if (!press(key)) {
            return false;
        }
    }
    return true;
}

bool hasFocus(const QWidget *widget)
{
    const QWidget *focused = QApplication::focusWidget();
    return focused
        && (focused == widget || widget->isAncestorOf(focused) || focused == widget->focusProxy()
            || focused->focusProxy() == widget);
}

/** Why nobody can type into a widget; empty when one can. */
QString focusRefusal(const QWidget *widget)
{
    const QWidget *proxy = widget->focusProxy();
    const bool takesFocus = (proxy ? proxy : widget)->focusPolicy() != Qt::NoFocus
        || widget->isWindow() || hasFocus(widget);
    return takesFocus ? QString() : QStringLiteral("the object takes no focus");
}

/** Gives the focus as Tab or a click would, but selects nothing and moves no cursor. */
void giveFocus(QWidget *widget)
{
    const QPointer<QWidget> guard(widget);
    widget->window()->activateWindow();
    if (guard && !widget->isWindow() && !hasFocus(widget)) {
        widget->setFocus(Qt::MouseFocusReason);
    }
}

/** Whether the keys arrive where they shall. */
bool isFocused(const Node &node)
{
    if (const QWidget *widget = node.widget()) {
        return widget->isWindow() ? widget->isActiveWindow() : hasFocus(widget);
    }
    return windowOf(node) == QGuiApplication::focusWindow();
}

/** Asks for the focus until it is there. */
bool focusWidget(const QString &operation, const SharedPtr<Object> &object)
{
    Deadline deadline(actionTimeout());
    do {
        const Node node = nodeOf(object);
        QWidget *const widget = node.widget();
        if (!widget) {
            return failWith(operation, QStringLiteral("the object was destroyed"));
        }
        if (isFocused(node)) {
            return true;
        }
        const QString refusal = focusRefusal(widget);
        if (!refusal.isEmpty()) {
            return failWith(operation, refusal);
        }
        deliver([guard = QPointer<QWidget>(widget)] {
            if (guard) {
                giveFocus(guard);
            }
        });
    } while (deadline.waitForNextLook());
    return failWith(operation,
                    QStringLiteral("without the focus for %1 ms%2")
                        .arg(QString::number(deadline.elapsed()), deadline.remark()));
}

/** Parts of widgets and windows of other kinds get the focus by a click. */
bool focusPart(const QString &operation, const SharedPtr<Object> &object, const MouseInput &input)
{
    const Node node = nodeOf(object);
    const bool isWindow = node.object() && node.object()->isWindowType();
    if (isWindow && isFocused(node)) {
        return true;
    }
    return click(input) != Delivery::Quitting || failQuitting(operation);
}

} // namespace

bool type(const SharedPtr<Object> &object, const QString &text)
{
    const QString operation = QStringLiteral("type");
    QString error;
    const std::vector<KeyInput> keys = keysOfText(text, &error);
    if (!error.isEmpty()) {
        return failWith(operation, error);
    }
    const std::optional<MouseInput> input = aimAt(operation, object, nowhere);
    if (!input) {
        return false;
    }
    const bool isFocusedNow = nodeOf(object).widget() ? focusWidget(operation, object)
                                                      : focusPart(operation, object, *input);
    return isFocusedNow && (Typist(input->window).type(keys) || failQuitting(operation));
}

bool shortcut(const QString &sequence)
{
    const QString operation = QStringLiteral("shortcut");
    QString error;
    const std::vector<KeyInput> keys = keysOfSequence(sequence, &error);
    if (!error.isEmpty()) {
        return failWith(operation, error);
    }
    QWindow *const window = keyWindow();
    if (!window) {
        return failWith(operation, QStringLiteral("no window has the focus"));
    }
    return Typist(window).type(keys) || failQuitting(operation);
}

} // namespace Vantrel::QtWrapper
