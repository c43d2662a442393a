#include "qt/aim_p.h"

#include "qt/actions.h"
#include "qt/geometry_p.h"
#include "qt/handles_p.h"
#include "qt/readiness_p.h"
#include "qt/waiting.h"

#include "objectmodel/object.h"

#include <QApplication>
#include <QCheckBox>
#include <QMenu>
#include <QRadioButton>
#include <QStyle>
#include <QStyleHints>
#include <QWidget>

namespace Vantrel::QtWrapper {

namespace {

int timeoutOfActions = defaultTimeout;
/** Since the last click of the left button. */
QElapsedTimer sinceClick;

QString outsideText(const QPoint &position, const QSize &size)
{
    return QStringLiteral("the position (%1, %2) is outside of the object, which is %3 x %4 pixels")
        .arg(position.x())
        .arg(position.y())
        .arg(size.width())
        .arg(size.height());
}

/** The middle of a node, or of what reacts to a click where the rest of it does not. */
QPoint middleOf(const Node &node, const QRect &bounds)
{
    const QWidget *widget = node.widget();
    if (!qobject_cast<const QCheckBox *>(widget) && !qobject_cast<const QRadioButton *>(widget)) {
        return bounds.center();
    }
    const QSize size = widget->sizeHint().boundedTo(bounds.size());
    return QStyle::alignedRect(widget->layoutDirection(), Qt::AlignLeading | Qt::AlignVCenter, size,
                               bounds)
        .center();
}

/** One attempt to use an object after the other. */
class Aim
{
public:
    Aim(const SharedPtr<Object> &object, const QPoint &position)
        : m_object(object), m_position(position)
    {}

    bool look();
    /** Whether the position can never be reached. */
    bool isHopeless() const { return m_readiness.isGone() || !m_reason.isEmpty(); }
    QString text(const Deadline &deadline) const
    {
        return m_reason.isEmpty() ? m_readiness.text(deadline) : m_reason;
    }
    MouseInput input() const { return m_input; }

private:
    Node place(Node node);
    QPoint wanted(const Node &node) const
    {
        const QRect bounds = boundsOf(node);
        return m_position == nowhere ? middleOf(node, bounds) : bounds.topLeft() + m_position;
    }

    SharedPtr<Object> m_object;
    QPoint m_position;
    Readiness m_readiness{true};
    QString m_reason;
    MouseInput m_input;
};

bool Aim::look()
{
    if (!m_object) {
        m_reason = absence();
        return false;
    }
    const Node node = nodeOf(m_object);
    if (!node) {
        return m_readiness.look(m_object);
    }
    if (!hasPlace(node)) {
        return m_readiness.lookInVain(QStringLiteral("not on the screen"));
    }
    if (!isShown(node)) {
        return m_readiness.look(node, std::nullopt);
    }
    const QRect bounds = boundsOf(node);
    if (m_position != nowhere && !QRect(QPoint(), bounds.size()).contains(m_position)) {
        m_reason = outsideText(m_position, bounds.size());
        return false;
    }
    const Node placed = place(node);
    if (!placed) {
        return nodeOf(m_object) ? m_readiness.lookInVain(QStringLiteral("not in view"))
                                : m_readiness.look(m_object);
    }
    m_input.window = windowOf(placed);
    return m_readiness.look(placed, m_input.position)
        && (m_input.window || m_readiness.lookInVain(QStringLiteral("without a window")));
}

/** Brings the position into view; the node again, or null where that is not possible. */
Node Aim::place(Node node)
{
    m_input.position = wanted(node);
    if (visibleBoundsOf(node).contains(m_input.position)) {
        return node;
    }
    const QPoint inside = m_input.position - boundsOf(node).topLeft();
    deliver([object = m_object, inside] { scrollIntoView(object, inside); });
    node = nodeOf(m_object);
    if (!node) {
        return node;
    }
    m_input.position = wanted(node);
    const QRect visible = visibleBoundsOf(node);
    if (visible.contains(m_input.position)) {
        return node;
    }
    // A part that is in view will do for who asked for no particular one.
    m_input.position = visible.center();
    return m_position == nowhere && !visible.isEmpty() ? node : Node();
}

/** Lists that pop up ignore a click for as long as it may be the second one of a double click. */
bool ignoresSoonClicks(const QWindow *window)
{
    const QWidget *popup = QApplication::activePopupWidget();
    return popup && popup->windowHandle() == window && !qobject_cast<const QMenu *>(popup);
}

void waitForPopup(const QWindow *window)
{
    const int interval = QGuiApplication::styleHints()->mouseDoubleClickInterval() + lookInterval;
    if (ignoresSoonClicks(window) && sinceClick.isValid() && sinceClick.elapsed() < interval) {
        serveEvents(interval - int(sinceClick.elapsed()));
    }
}

} // namespace

void setActionTimeout(int milliseconds)
{
    timeoutOfActions = milliseconds;
}

int actionTimeout()
{
    return timeoutOfActions;
}

std::optional<MouseInput> aimAt(const QString &operation, const SharedPtr<Object> &object,
                                const QPoint &position)
{
    const Node node = nodeOf(object);
    const QString subject = node ? describe(node) : QString();
    Deadline deadline(timeoutOfActions);
    Aim aim(object, position);
    do {
        if (aim.look()) {
            waitForPopup(aim.input().window);
            return aim.input();
        }
    } while (!aim.isHopeless() && deadline.waitForNextLook());
    failWith(subject.isEmpty() ? operation : QStringLiteral("%1(%2)").arg(operation, subject),
             aim.text(deadline));
    return std::nullopt;
}

Delivery click(const MouseInput &input)
{
    const Delivery pressed = pressMouse(input);
    sinceClick.start();
    const Delivery released = releaseMouse(input);
    return pressed == Delivery::Running ? pressed : released;
}

bool failQuitting(const QString &operation)
{
    return failWith(operation, quittingText());
}

} // namespace Vantrel::QtWrapper
