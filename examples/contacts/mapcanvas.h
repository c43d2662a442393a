#ifndef MAPCANVAS_H
#define MAPCANVAS_H

#include <QWidget>

class QTouchEvent;

/** A map that two fingers, or the wheel with Ctrl, zoom. */
class MapCanvas : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(double zoom READ zoom WRITE setZoom NOTIFY zoomChanged)

public:
    explicit MapCanvas(QWidget *parent = nullptr);

    /** 1 is the original size; between 0.25 and 8. */
    double zoom() const { return m_zoom; }
    void setZoom(double zoom);

    QSize sizeHint() const override { return {480, 320}; }

signals:
    void zoomChanged(double zoom);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void pinch(const QTouchEvent &event);

    double m_zoom = 1;
};

#endif // MAPCANVAS_H
