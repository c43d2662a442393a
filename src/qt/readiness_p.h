#ifndef VANTREL_QT_READINESS_P_H
#define VANTREL_QT_READINESS_P_H

#include "qt/node_p.h"

#include "objectmodel/shared.h"

#include <QElapsedTimer>
#include <QPoint>
#include <QRect>
#include <QString>

#include <optional>

namespace Vantrel {

class Object;

namespace QtWrapper {

/** Time between two looks at what is waited for, in milliseconds. */
constexpr int lookInterval = 25;

/** The time that a wait may take. */
class Deadline
{
public:
    /** Nothing is waited for when @p timeout is 0 or below. */
    explicit Deadline(int timeout);

    /** Serves events until the next look is due. False when there is none. */
    bool waitForNextLook();
    int timeout() const { return m_timeout; }
    int elapsed() const { return int(m_time.elapsed()); }
    /** What ended the wait or made it longer, to be added to a message; empty when nothing did. */
    QString remark() const;

private:
    int m_timeout;
    QElapsedTimer m_time;
    int m_heldFor = 0;
    QString m_heldBy;
    bool m_isQuitting = false;
};

/** Whether an object can be used as a person would, over several looks. */
class Readiness
{
public:
    /** @p isMotionSeen: a second look will tell whether the object moves. */
    explicit Readiness(bool isMotionSeen) : m_isMotionSeen(isMotionSeen) {}

    /** True when ready. */
    bool look(const SharedPtr<Object> &object);
    /** For a point of the object, global, instead of the middle of what is visible. */
    bool look(const Node &node, const std::optional<QPoint> &point);
    /** For a check of the caller that is false. Returns false. */
    bool lookInVain(const QString &obstacle) { return note(obstacle); }
    /** Notes that there is no object, so that its checks begin anew. */
    void reset();
    /** Whether it will never be ready, because it is gone. */
    bool isGone() const { return m_isGone; }
    /** What was false in the last look, and since when. */
    QString text(const Deadline &deadline) const;

private:
    QString obstacle(const Node &node, const std::optional<QPoint> &point);
    bool note(const QString &obstacle);

    bool m_isMotionSeen;
    bool m_isGone = false;
    QRect m_bounds;
    bool m_hasBounds = false;
    QString m_obstacle;
    QElapsedTimer m_since;
};

/** Whether a node can be somewhere on the screen; the application object, for one, cannot. */
bool hasPlace(const Node &node);
/** Kind and name of a node, for messages; cheaper than its name. */
QString describe(const Node &node);
/**
 * Why a handle is null: the last error, which whoever searched for the object
 * left, or that there is no such object.
 */
QString absence();
/** Sets the last error to "<operation>: <reason>". Returns false. */
bool failWith(const QString &operation, const QString &reason);

} // namespace QtWrapper
} // namespace Vantrel

#endif // VANTREL_QT_READINESS_P_H
