#include "mapcanvas.h"

#include <QLineF>
#include <QPainter>
#include <QPainterPath>
#include <QTouchEvent>
#include <QWheelEvent>

#include <cmath>

MapCanvas::MapCanvas(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_AcceptTouchEvents);
    setMinimumSize(200, 150);
}

void MapCanvas::setZoom(double zoom)
{
    zoom = qBound(0.25, zoom, 8.0);
    if (qFuzzyCompare(zoom, m_zoom)) {
        return;
    }
    m_zoom = zoom;
    update();
    emit zoomChanged(m_zoom);
}

bool MapCanvas::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
        pinch(*static_cast<QTouchEvent *>(event));
        event->accept();
        return true;
    default:
        return QWidget::event(event);
    }
}

void MapCanvas::pinch(const QTouchEvent &event)
{
    const QList<QTouchEvent::TouchPoint> points = event.touchPoints();
    if (points.size() != 2) {
        return;
    }
    const double before = QLineF(points[0].lastPos(), points[1].lastPos()).length();
    const double now = QLineF(points[0].pos(), points[1].pos()).length();
    if (before > 0 && now > 0) {
        setZoom(m_zoom * now / before);
    }
}

void MapCanvas::wheelEvent(QWheelEvent *event)
{
    if (event->modifiers() & Qt::ControlModifier) {
        setZoom(m_zoom * std::pow(1.2, event->angleDelta().y() / 120.0));
    } else {
        event->ignore();
    }
}

void MapCanvas::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), QColor(236, 240, 230));
    painter.save();
    painter.translate(rect().center());
    painter.scale(m_zoom, m_zoom);
    painter.fillRect(-150, -110, 110, 80, QColor(196, 222, 178)); // a park
    QPainterPath river(QPointF(-900, 60));
    river.cubicTo(-300, 160, -60, -40, 140, 70);
    river.cubicTo(300, 160, 500, 60, 900, 120);
    painter.setPen(QPen(QColor(158, 200, 230), 28));
    painter.drawPath(river);
    painter.setPen(QPen(Qt::white, 9));
    for (int street = -800; street <= 800; street += 80) {
        painter.drawLine(street, -800, street - 120, 800);
        painter.drawLine(-800, street, 800, street + 60);
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(206, 66, 62));
    for (const QPoint &home : {QPoint(-70, -20), QPoint(35, -75), QPoint(110, 25)}) {
        painter.drawEllipse(home, 6, 6);
    }
    painter.restore();
    painter.drawText(rect().adjusted(10, 8, -10, -8), Qt::AlignRight | Qt::AlignBottom,
                     tr("Zoom %1 %").arg(qRound(m_zoom * 100)));
}
