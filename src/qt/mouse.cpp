#include "qt/actions.h"

#include "qt/aim_p.h"
#include "qt/geometry_p.h"
#include "qt/handles_p.h"
#include "qt/readiness_p.h"

#include "objectmodel/object.h"

#include <QChildEvent>
#include <QCoreApplication>
#include <QDrag>
#include <QGuiApplication>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

namespace Vantrel::QtWrapper {

namespace {

/** Eighths of a degree that a wheel usually turns by one notch. */
constexpr int notch = 120;
/** Moves of a drag are this many pixels long, unless that would be too many moves. */
constexpr int dragStep = 8;
constexpr int maxDragSteps = 60;
/** Pixels and notches; nobody moves the mouse or turns the wheel by more at a time. */
constexpr int maxDistance = 100000;
constexpr int maxNotches = 10000;

bool isWithin(int number, int limit)
{
    return number >= -limit && number <= limit;
}

/** The button of a number; nothing, with the last error set, when it is none. */
bool setButton(const QString &operation, int button, int modifiers, MouseInput *input)
{
    const bool isOne =
        button > 0 && (button & (button - 1)) == 0 && button <= int(Qt::MaxMouseButton);
    if (!isOne) {
        return failWith(
            operation, QStringLiteral("%1 is no button of the mouse").arg(QString::number(button)));
    }
    const Qt::KeyboardModifiers wanted(modifiers);
    if (wanted & ~Qt::KeyboardModifiers(Qt::KeyboardModifierMask)) {
        return failWith(operation,
                        QStringLiteral("%1 is no combination of keyboard modifiers")
                            .arg(QString::number(modifiers)));
    }
    input->button = Qt::MouseButton(button);
    input->modifiers = wanted;
    return true;
}

/** Waits for the object and brings the mouse there, with no button down yet. */
std::optional<MouseInput> approach(const QString &operation, const SharedPtr<Object> &object,
                                   const QPoint &position, int button, int modifiers)
{
    MouseInput checked;
    if (!setButton(operation, button, modifiers, &checked)) {
        return std::nullopt;
    }
    std::optional<MouseInput> input = aimAt(operation, object, position);
    if (!input) {
        return std::nullopt;
    }
    input->modifiers = checked.modifiers;
    input->button = Qt::NoButton;
    if (moveMouse(*input) == Delivery::Quitting) {
        failQuitting(operation);
        return std::nullopt;
    }
    input->button = checked.button;
    return input;
}

bool succeeded(const QString &operation, Delivery delivery)
{
    return delivery == Delivery::Quitting ? failQuitting(operation) : true;
}

/** Sees drags of data, which the application begins while the mouse is moved. */
class DragWatch : public QObject
{
public:
    DragWatch() { QCoreApplication::instance()->installEventFilter(this); }

    /** To be called when a move was handled. */
    void look()
    {
        for (const QPointer<QObject> &child : m_children) {
            m_sawDrag = m_sawDrag || qobject_cast<QDrag *>(child.data());
        }
        m_children.clear();
    }
    bool sawDrag() const { return m_sawDrag; }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::ChildAdded) {
            // Not constructed to the end yet, so its class shows later.
            m_children.emplace_back(static_cast<QChildEvent *>(event)->child());
        }
        return false;
    }

private:
    std::vector<QPointer<QObject>> m_children;
    bool m_sawDrag = false;
};

/** The press, the moves and the release of a drag. */
class DragPath
{
public:
    DragPath(const QString &operation, const MouseInput &start)
        : m_operation(operation), m_input(start)
    {}

    bool run(const QPoint &end);

private:
    bool moveTo(const QPoint &position);

    QString m_operation;
    MouseInput m_input;
    std::shared_ptr<DragWatch> m_watch = std::make_shared<DragWatch>();
    bool m_isDragging = false;
    bool m_isRefused = false;
};

bool DragPath::moveTo(const QPoint &position)
{
    m_input.position = position;
    const Delivery delivery = moveMouse(m_input, [watch = m_watch] { watch->look(); });
    // While data is dragged, the move that began it runs an event loop; unless
    // the platform knows no such thing.
    m_isDragging = m_isDragging || delivery == Delivery::Running;
    m_isRefused = !m_isDragging && delivery == Delivery::Done && m_watch->sawDrag();
    return delivery != Delivery::Quitting;
}

bool DragPath::run(const QPoint &end)
{
    const QPoint start = m_input.position;
    const QPoint way = end - start;
    const int length = std::max(std::abs(way.x()), std::abs(way.y()));
    const int numSteps = std::clamp(length / dragStep, 2, maxDragSteps);
    bool isRunning = pressMouse(m_input) != Delivery::Quitting;
    for (int step = 1; isRunning && step <= numSteps; ++step) {
        isRunning = moveTo(start + way * step / numSteps);
    }
    if (!isRunning || releaseMouse(m_input) == Delivery::Quitting) {
        return failQuitting(m_operation);
    }
    return !m_isRefused
        || failWith(m_operation,
                    QStringLiteral("nothing was dropped: the application dragged data, but the "
                                   "platform '%1' ended that at once")
                        .arg(QGuiApplication::platformName()));
}

} // namespace

bool mouseClick(const SharedPtr<Object> &object, const QPoint &position, int button, int modifiers)
{
    const QString operation = QStringLiteral("mouseClick");
    const auto input = approach(operation, object, position, button, modifiers);
    return input && succeeded(operation, click(*input));
}

bool mouseDoubleClick(const SharedPtr<Object> &object, const QPoint &position, int button,
                      int modifiers)
{
    const QString operation = QStringLiteral("mouseDoubleClick");
    const auto input = approach(operation, object, position, button, modifiers);
    if (!input || !succeeded(operation, click(*input))) {
        return false;
    }
    pressMouse(*input, Closeness::DoubleClick);
    return succeeded(operation, releaseMouse(*input));
}

bool mouseDrag(const SharedPtr<Object> &object, const QPoint &from, const QPoint &distance,
               int button, int modifiers)
{
    const QString operation = QStringLiteral("mouseDrag");
    if (!isWithin(distance.x(), maxDistance) || !isWithin(distance.y(), maxDistance)) {
        return failWith(operation,
                        QStringLiteral("the distance (%1, %2) is longer than %3 pixels")
                            .arg(QString::number(distance.x()), QString::number(distance.y()),
                                 QString::number(maxDistance)));
    }
    const auto input = approach(operation, object, from, button, modifiers);
    return input && DragPath(operation, *input).run(input->position + distance);
}

bool dragTo(const SharedPtr<Object> &object, const SharedPtr<Object> &target)
{
    const QString operation = QStringLiteral("dragTo");
    // The object comes last: scrolling to the target may have moved it away.
    if (!aimAt(operation, target, nowhere)) {
        return false;
    }
    const auto input = approach(operation, object, nowhere, Qt::LeftButton, Qt::NoModifier);
    const Node node = nodeOf(target);
    const QRect area = node ? visibleBoundsOf(node) : QRect();
    if (input && area.isEmpty()) {
        return failWith(operation, QStringLiteral("object and target cannot be seen together"));
    }
    return input && DragPath(operation, *input).run(area.center());
}

bool mouseWheel(const SharedPtr<Object> &object, int horizontalSteps, int verticalSteps,
                int modifiers)
{
    const QString operation = QStringLiteral("mouseWheel");
    if (!isWithin(horizontalSteps, maxNotches) || !isWithin(verticalSteps, maxNotches)) {
        return failWith(operation,
                        QStringLiteral("(%1, %2) are more than %3 steps")
                            .arg(QString::number(horizontalSteps), QString::number(verticalSteps),
                                 QString::number(maxNotches)));
    }
    const auto input = approach(operation, object, nowhere, Qt::LeftButton, modifiers);
    if (!input) {
        return false;
    }
    const auto turn = [&](int steps, const QPoint &angle) {
        bool isRunning = true;
        for (int step = 0; isRunning && step < std::abs(steps); ++step) {
            isRunning = turnWheel(*input, steps > 0 ? angle : -angle) != Delivery::Quitting;
        }
        return isRunning;
    };
    // Qt counts to the left and up.
    return (turn(horizontalSteps, QPoint(-notch, 0)) && turn(verticalSteps, QPoint(0, notch)))
        || failQuitting(operation);
}

} // namespace Vantrel::QtWrapper
