#include "qt/actions.h"

#include "qt/aim_p.h"
#include "qt/geometry_p.h"
#include "qt/handles_p.h"
#include "qt/readiness_p.h"

#include "objectmodel/object.h"
#include "objectmodel/touchbuilder.h"

#include <QAbstractScrollArea>
#include <QMap>
#include <QScreen>
#include <QWidget>

#include <algorithm>

namespace Vantrel::QtWrapper {

namespace {

using Gesture = TouchBuilder::MultiTouchInfo;

const QString &operationName()
{
    static const QString name = QStringLiteral("replayTouch");
    return name;
}

/** Whether a touch of a widget arrives anywhere: it goes up the parents. */
bool takesTouch(const QWidget *widget)
{
    const auto *area = qobject_cast<const QAbstractScrollArea *>(widget);
    if (area && area->viewport()->testAttribute(Qt::WA_AcceptTouchEvents)) {
        return true;
    }
    for (; widget; widget = widget->isWindow() ? nullptr : widget->parentWidget()) {
        if (widget->testAttribute(Qt::WA_AcceptTouchEvents)) {
            return true;
        }
    }
    return false;
}

bool takesTouch(const Node &node)
{
    const QWidget *host = node.host();
    return host ? takesTouch(host) : node.object() && node.object()->isWindowType();
}

/** Applies what is only noted in a gesture: writing applies units and matrix. */
bool inPixels(TouchBuilder *builder, const QScreen *screen, std::string *error)
{
    bool areAll = true;
    for (int i = 0; i < builder->numGestures(); ++i) {
        Gesture &gesture = builder->gesture(i);
        areAll = areAll && gesture.unit == TouchBuilder::Pixel;
        gesture.toPixel(screen->physicalDotsPerInchX(), screen->physicalDotsPerInchY());
    }
    return areAll || builder->fromXml(builder->toXml(), error);
}

/** The gestures of a text with all states known; nothing, with the last error set, on failure. */
bool readGestures(const QString &xml, const QScreen *screen, TouchBuilder *builder)
{
    std::string error;
    if (!builder->fromXml(xml.toStdString(), &error) || !inPixels(builder, screen, &error)) {
        return failWith(operationName(), QString::fromStdString(error));
    }
    bool isEmpty = true;
    for (int i = 0; i < builder->numGestures(); ++i) {
        Gesture &gesture = builder->gesture(i);
        gesture.updatePointerStates();
        isEmpty = isEmpty && gesture.samples.empty();
    }
    return !isEmpty || failWith(operationName(), QStringLiteral("the gesture has no samples"));
}

/** Fingers are put down in what can be seen of the object; they may leave it. */
bool beginsInside(const Gesture &gesture, const QRect &area)
{
    for (const TouchBuilder::Sample &sample : gesture.samples) {
        for (const TouchBuilder::Point &point : sample.points) {
            const QPointF position(point.x, point.y);
            if (point.state == TouchBuilder::Down && !QRectF(area).contains(position)) {
                return failWith(
                    operationName(),
                    QStringLiteral("a finger goes down at (%1, %2), outside of what can be seen of "
                                   "the object")
                        .arg(QString::number(position.x()), QString::number(position.y())));
            }
        }
    }
    return true;
}

/** The fingers that touch, as Qt wants them. */
class Fingers
{
public:
    Fingers(QWindow *window, const QPoint &origin) : m_window(window), m_origin(origin) {}

    /** False when the application ended meanwhile. */
    bool replay(const Gesture &gesture);

private:
    void take(const TouchBuilder::Point &point);
    bool send();
    bool waitUntil(qint64 time);

    QPointer<QWindow> m_window;
    QPoint m_origin;
    QMap<int, QTouchEvent::TouchPoint> m_points;
    QElapsedTimer m_time;
};

void Fingers::take(const TouchBuilder::Point &point)
{
    const QPointF position = QPointF(m_origin) + QPointF(point.x, point.y);
    const auto known = m_points.constFind(point.pointer);
    QTouchEvent::TouchPoint finger(point.pointer);
    finger.setState(known == m_points.constEnd()                ? Qt::TouchPointPressed
                        : point.state == TouchBuilder::Up       ? Qt::TouchPointReleased
                        : known.value().screenPos() == position ? Qt::TouchPointStationary
                                                                : Qt::TouchPointMoved);
    finger.setScreenPos(position);
    finger.setPressure(point.pressure < 0 ? 1 : qreal(point.pressure));
    m_points.insert(point.pointer, finger);
}

bool Fingers::send()
{
    const bool isRunning = sendTouch(m_window, m_points.values()) != Delivery::Quitting;
    for (auto point = m_points.begin(); point != m_points.end();) {
        const bool isUp = point->state() == Qt::TouchPointReleased;
        point->setState(Qt::TouchPointStationary);
        point = isUp ? m_points.erase(point) : point + 1;
    }
    return isRunning;
}

bool Fingers::waitUntil(qint64 time)
{
    const qint64 rest = time - m_time.elapsed();
    return rest <= 0 || !serveEvents(int(rest)).isQuitting;
}

bool Fingers::replay(const Gesture &gesture)
{
    m_time.start();
    bool isRunning = true;
    for (const TouchBuilder::Sample &sample : gesture.samples) {
        isRunning = isRunning && waitUntil(sample.timestamp);
        for (const TouchBuilder::Point &point : sample.points) {
            take(point);
        }
        isRunning = isRunning && send();
    }
    // Whoever is left would stay down for ever.
    for (QTouchEvent::TouchPoint &point : m_points) {
        point.setState(Qt::TouchPointReleased);
    }
    return isRunning && (m_points.isEmpty() || send());
}

} // namespace

bool replayTouch(const SharedPtr<Object> &object, const QString &gestureXml)
{
    Node node = nodeOf(object);
    if (!node || !takesTouch(node)) {
        return failWith(operationName(),
                        node ? QStringLiteral("%1 takes no touch: neither it nor a widget around "
                                              "it has the attribute WA_AcceptTouchEvents")
                                   .arg(describe(node))
                             : absence());
    }
    const std::optional<MouseInput> input = aimAt(operationName(), object, nowhere);
    TouchBuilder builder;
    if (input && !input->window) {
        return failWith(operationName(), QStringLiteral("the window was closed"));
    }
    if (!input || !readGestures(gestureXml, input->window->screen(), &builder)) {
        return false;
    }
    node = nodeOf(object);
    const QPoint origin = boundsOf(node).topLeft();
    const QRect area = visibleBoundsOf(node).translated(-origin);
    for (int i = 0; i < builder.numGestures(); ++i) {
        if (!beginsInside(builder.gesture(i), area)) {
            return false;
        }
    }
    for (int i = 0; i < builder.numGestures(); ++i) {
        if (!Fingers(input->window, origin).replay(builder.gesture(i))) {
            return failQuitting(operationName());
        }
    }
    return true;
}

} // namespace Vantrel::QtWrapper
