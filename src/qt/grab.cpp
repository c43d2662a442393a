#include "qt/grab_p.h"

#include "qt/delegates_p.h"
#include "qt/geometry_p.h"

#include <QApplication>
#include <QBuffer>
#include <QPixmap>
#include <QPointer>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <cmath>

namespace Vantrel::QtWrapper {

namespace {

QWidget *widgetOf(const QWindow *window)
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    const auto found = std::find_if(widgets.begin(), widgets.end(), [window](const QWidget *w) {
        return w->windowHandle() == window;
    });
    return found == widgets.end() ? nullptr : *found;
}

/** By drawing it again, so nothing that covers the window on the screen is in it. */
QImage render(const QPointer<QWidget> &widget, qreal ratio)
{
    const QSize size(int(std::ceil(widget->width() * ratio)),
                     int(std::ceil(widget->height() * ratio)));
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) {
        return image;
    }
    image.setDevicePixelRatio(ratio);
    image.fill(widget->palette().color(widget->backgroundRole()));
    widget->render(&image);
    return widget ? image : QImage();
}

QImage grabFromScreen(QWindow *window)
{
    QScreen *screen = window->screen();
    return screen ? screen->grabWindow(window->winId()).toImage() : QImage();
}

} // namespace

QImage grabWindow(const Node &node, QString *error, qreal leastRatio)
{
    QPointer<QWindow> window = node ? windowOf(node) : nullptr;
    if (!window || !window->isVisible()) {
        *error = QStringLiteral("no window shows it");
        return QImage();
    }
    const QPointer<QWidget> widget = widgetOf(window);
    const QImage image = widget ? render(widget, std::max(widget->devicePixelRatioF(), leastRatio))
                                : grabFromScreen(window);
    if (image.isNull()) {
        *error = widget || !window
            ? QStringLiteral("its window can't be drawn")
            : QStringLiteral("the platform \"%1\" has no picture of its window")
                  .arg(QGuiApplication::platformName());
    }
    return image;
}

QImage grabNode(const Node &node, QString *error)
{
    const QRect bounds = node ? visibleBoundsOf(node) : QRect();
    if (bounds.isEmpty()) {
        *error = QStringLiteral("nothing of it is visible");
        return QImage();
    }
    const QWindow *window = windowOf(node);
    const QPoint origin = window ? window->mapToGlobal(QPoint(0, 0)) : QPoint();
    const QImage image = grabWindow(node, error);
    if (image.isNull()) {
        return image;
    }
    const qreal ratio = image.devicePixelRatio();
    const QRectF part(QPointF(bounds.topLeft() - origin) * ratio, QSizeF(bounds.size()) * ratio);
    QImage result = image.copy(part.toAlignedRect() & image.rect());
    result.setDevicePixelRatio(ratio);
    return result;
}

QByteArray toPng(const QImage &image)
{
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    return !image.isNull() && image.save(&buffer, "PNG") ? png : QByteArray();
}

} // namespace Vantrel::QtWrapper
