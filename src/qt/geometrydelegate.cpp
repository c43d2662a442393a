#include "qt/delegates_p.h"

#include "qt/geometry_p.h"
#include "qt/handles_p.h"

#include "objectmodel/delegates.h"
#include "objectmodel/object.h"

#include <QScreen>
#include <QWindow>

namespace Vantrel::QtWrapper {

namespace {

/** A global point in pixels of the window system, which is scaled around the origin of a screen. */
QPoint native(const QPoint &position, const QScreen *screen, qreal ratio)
{
    const QPoint origin = screen ? screen->geometry().topLeft() : QPoint();
    return origin + (position - origin) * ratio;
}

class Geometry : public GeometryDelegate
{
public:
    using GeometryDelegate::GeometryDelegate;

    Rect globalBounds(SharedPtr<Object> object) override
    {
        const QRect bounds = boundsOf(nodeOf(object));
        return bounds.isNull() ? Rect()
                               : Rect{bounds.x(), bounds.y(), bounds.width(), bounds.height()};
    }

    Rect nativeGlobalBounds(SharedPtr<Object> object) override
    {
        const Node node = nodeOf(object);
        const QRect bounds = boundsOf(node);
        const QWindow *window = windowOf(node);
        if (bounds.isNull() || !window) {
            return bounds.isNull() ? Rect() : globalBounds(object);
        }
        const qreal ratio = window->devicePixelRatio();
        const QPoint place = native(bounds.topLeft(), window->screen(), ratio);
        const QSize size = bounds.size() * ratio;
        return {place.x(), place.y(), size.width(), size.height()};
    }

    Point relativeToNative(SharedPtr<Object> object, int x, int y) override
    {
        Point point = relativeToGlobal(object, x, y);
        const QWindow *window = windowOf(nodeOf(object));
        if (point.valid && window) {
            const QPoint place =
                native(QPoint(point.x, point.y), window->screen(), window->devicePixelRatio());
            point.x = place.x();
            point.y = place.y();
        }
        return point;
    }

    bool isVisible(SharedPtr<Object> object) override
    {
        const Node node = nodeOf(object);
        return node && isShown(node);
    }

    SharedPtr<Object> objectAt(SharedPtr<Object> parent, int x, int y) override
    {
        const Node root = nodeOf(parent);
        if (parent && !root) {
            return nullptr;
        }
        const Node node = nodeAt(root, QPoint(x, y));
        return node ? handleOf(node) : nullptr;
    }
};

} // namespace

void registerGeometry()
{
    for (const QString &name : wrappedClassNames()) {
        new Geometry(name);
    }
}

} // namespace Vantrel::QtWrapper
