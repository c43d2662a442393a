#include "qt/readiness_p.h"

#include "qt/geometry_p.h"
#include "qt/handles_p.h"
#include "qt/modality_p.h"
#include "qt/script_p.h"

#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

#include <QGraphicsObject>
#include <QWidget>
#include <QWindow>

#include <algorithm>

namespace Vantrel::QtWrapper {

namespace {

bool isBelow(Node node, const Node &ancestor)
{
    while (node && node != ancestor) {
        node = parentNode(node);
    }
    return !node.isNull();
}

/** Whether a click that reaches @p hit also concerns @p target. */
bool belongsTo(const Node &hit, const Node &target)
{
    if (isBelow(hit, target) || isBelow(target, hit)) {
        return true;
    }
    // What is not in the tree of a tester, such as the parts of a spin box.
    const QWidget *hitWidget = hit.host();
    const QWidget *widget = target.widget();
    return hitWidget && widget
        && (hitWidget == widget || widget->isAncestorOf(hitWidget)
            || hitWidget->isAncestorOf(widget));
}

/** The node that covers @p target at a point; null when none does. */
Node covererAt(const Node &target, const QPoint &point)
{
    const Node hit = nodeAt(Node(), point);
    return hit && !belongsTo(hit, target) ? hit : Node();
}

bool isWindow(const Node &node)
{
    const QWidget *widget = node.widget();
    return widget ? widget->isWindow() : node.object() && node.object()->isWindowType();
}

/** The same for a place that nobody chose. */
Node covererOf(const Node &target)
{
    const QRect area = visibleBoundsOf(target);
    if (area.isEmpty()) {
        return Node();
    }
    const Node coverer = covererAt(target, area.center());
    if (!coverer || !isWindow(target)) {
        return coverer;
    }
    // A dialog in front of the middle of a window leaves the rest of it in view.
    const int dx = area.width() / 4;
    const int dy = area.height() / 4;
    for (const QPoint &offset :
         {QPoint(-dx, -dy), QPoint(dx, -dy), QPoint(-dx, dy), QPoint(dx, dy)}) {
        if (!covererAt(target, area.center() + offset)) {
            return Node();
        }
    }
    return coverer;
}

QString milliseconds(int time)
{
    return QStringLiteral("%1 ms").arg(time);
}

} // namespace

Deadline::Deadline(int timeout) : m_timeout(std::max(timeout, 0))
{
    m_time.start();
}

bool Deadline::waitForNextLook()
{
    const int rest = m_timeout - elapsed();
    if (rest <= 0 || m_isQuitting) {
        return false;
    }
    const Pause pause = serveEvents(std::min(rest, lookInterval));
    m_isQuitting = pause.isQuitting;
    if (pause.heldFor > 0) {
        m_heldFor += pause.heldFor;
        m_heldBy = pause.heldBy;
    }
    return !m_isQuitting;
}

QString Deadline::remark() const
{
    if (m_isQuitting) {
        return QStringLiteral("; %1").arg(quittingText());
    }
    // A pause is never quite exact.
    return m_heldFor <= lookInterval
        ? QString()
        : QStringLiteral("; %1, which was open meanwhile, held up the wait for %2")
              .arg(m_heldBy, milliseconds(m_heldFor));
}

bool Readiness::look(const SharedPtr<Object> &object)
{
    const Node node = nodeOf(object);
    if (node || (object && !object->isNull() && object->isValid() && !qobjectOf(object))) {
        // An object of another toolkit is as ready as it can be known to be.
        return node ? look(node, std::nullopt) : note(QString());
    }
    m_isGone = true;
    return note(QStringLiteral("destroyed"));
}

bool Readiness::look(const Node &node, const std::optional<QPoint> &point)
{
    return note(obstacle(node, point));
}

void Readiness::reset()
{
    m_obstacle.clear();
    m_hasBounds = false;
}

QString Readiness::text(const Deadline &deadline) const
{
    if (m_isGone) {
        return QStringLiteral("the object was destroyed");
    }
    const int time = m_obstacle.isEmpty() ? 0 : int(m_since.elapsed());
    return QStringLiteral("%1 for %2 of %3%4")
        .arg(m_obstacle, milliseconds(time), milliseconds(deadline.elapsed()), deadline.remark());
}

QString Readiness::obstacle(const Node &node, const std::optional<QPoint> &point)
{
    if (!hasPlace(node)) {
        return isEnabled(node) ? QString() : QStringLiteral("not enabled");
    }
    const QRect bounds = boundsOf(node);
    const bool moves = m_isMotionSeen && !(m_hasBounds && bounds == m_bounds);
    m_bounds = bounds;
    m_hasBounds = true;
    if (!isShown(node)) {
        return QStringLiteral("not visible");
    }
    QWindow *const window = windowOf(node);
    if (const QWindow *modal = window ? blockingWindow(window) : nullptr) {
        return QStringLiteral("its window was blocked by the modal dialog %1").arg(titleOf(modal));
    }
    if (!isEnabled(node)) {
        return QStringLiteral("not enabled");
    }
    if (moves) {
        return QStringLiteral("moving");
    }
    const Node coverer = point ? covererAt(node, *point) : covererOf(node);
    return coverer ? QStringLiteral("covered by %1").arg(describe(coverer)) : QString();
}

bool Readiness::note(const QString &obstacle)
{
    if (m_obstacle != obstacle) {
        m_since.start();
        m_obstacle = obstacle;
    }
    return obstacle.isEmpty();
}

bool hasPlace(const Node &node)
{
    // Entries of menus have one while their menu is open.
    const QObject *object = node.object();
    return !object || object->isWidgetType() || object->isWindowType()
        || qobject_cast<const QGraphicsObject *>(object) || !boundsOf(node).isNull();
}

QString absence()
{
    const QString error = Inspector::self()->lastError();
    return error.isEmpty() ? QStringLiteral("there is no such object") : error;
}

QString describe(const Node &node)
{
    const QString name = objectNameOf(node);
    const QString label = name.isEmpty() ? labelOf(node) : name;
    return label.isEmpty() ? typeName(node) : QStringLiteral("%1 '%2'").arg(typeName(node), label);
}

bool failWith(const QString &operation, const QString &reason)
{
    Inspector::self()->setError(operation + QLatin1String(": ") + reason);
    return false;
}

} // namespace Vantrel::QtWrapper
