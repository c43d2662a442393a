#include "qt/aim_p.h"
#include "qt/geometry_p.h"
#include "qt/handles_p.h"

#include "objectmodel/object.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QGraphicsObject>
#include <QGraphicsProxyWidget>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QHeaderView>
#include <QPointer>
#include <QScrollArea>
#include <QTabBar>

namespace Vantrel::QtWrapper {

namespace {

/** Space that is kept around a point, in pixels. */
constexpr int margin = 10;

void scrollToSection(const QHeaderView *header, int section)
{
    auto *view = qobject_cast<QAbstractItemView *>(header->parentWidget());
    if (!view || !view->model()) {
        return;
    }
    // Along the header only: the other coordinate is that of an item in view.
    const QModelIndex shown = view->indexAt(QPoint(1, 1));
    const QModelIndex root = view->rootIndex();
    const QModelIndex index = header->orientation() == Qt::Horizontal
        ? view->model()->index(qMax(0, shown.row()), section, root)
        : view->model()->index(section, qMax(0, shown.column()), root);
    view->scrollTo(index);
}

/** A tab bar is scrolled by its two buttons only. */
void scrollToTab(QTabBar *bar, int tab)
{
    const QPointer<QTabBar> guard(bar);
    for (int step = 0; guard && step < bar->count(); ++step) {
        const QRect rect = bar->tabRect(tab);
        const bool isBefore = rect.left() < 0 || rect.top() < 0;
        const auto *name = isBefore ? "ScrollLeftButton" : "ScrollRightButton";
        auto *button = bar->findChild<QAbstractButton *>(QLatin1String(name));
        if (!button || !button->isVisible() || !button->isEnabled()
            || (!isBefore && rect.right() < button->x())) {
            return;
        }
        button->click();
    }
}

void scrollInHost(const Node &node)
{
    QWidget *const host = node.host();
    switch (node.kind()) {
    case Node::Kind::ModelItem:
        if (auto *view = qobject_cast<QAbstractItemView *>(host)) {
            view->scrollTo(node.index());
        }
        break;
    case Node::Kind::HeaderSection:
        if (auto *header = qobject_cast<QHeaderView *>(host)) {
            scrollToSection(header, node.section());
        }
        break;
    case Node::Kind::Tab:
        if (auto *bar = qobject_cast<QTabBar *>(host)) {
            scrollToTab(bar, node.section());
        }
        break;
    default:
        auto *view = qobject_cast<QGraphicsView *>(host);
        auto *object = qobject_cast<QGraphicsObject *>(node.object());
        const QGraphicsItem *item = object ? object : node.graphicsItem();
        if (view && item) {
            view->ensureVisible(item, margin, margin);
        }
    }
}

/** Scrolls one area so that it shows @p widget, and the point in it. */
void scrollArea(QWidget *area, QWidget *widget, const QPoint &inWidget)
{
    if (auto *scroll = qobject_cast<QScrollArea *>(area)) {
        const QPointer<QScrollArea> guard(scroll);
        const QPointer<QWidget> shown(widget);
        scroll->ensureWidgetVisible(widget, 0, 0);
        if (guard && shown && scroll->widget() && scroll->widget()->isAncestorOf(widget)) {
            const QPoint point = widget->mapTo(scroll->widget(), inWidget);
            scroll->ensureVisible(point.x(), point.y(), margin, margin);
        }
    } else if (auto *view = qobject_cast<QAbstractItemView *>(area)) {
        // The widget of an item.
        const QPoint point = widget->mapTo(view, inWidget) - view->viewport()->pos();
        const QModelIndex index = view->indexAt(point);
        if (index.isValid() && !view->viewport()->rect().contains(point)) {
            view->scrollTo(index);
        }
    }
}

void scrollAround(QWidget *start, QWidget *widget, const QPoint &inWidget)
{
    const QPointer<QWidget> guard(widget);
    QPointer<QWidget> area(start);
    while (area && !area->isWindow()) {
        area = area->parentWidget();
        if (area && guard) {
            scrollArea(area, widget, inWidget);
        }
    }
    QGraphicsProxyWidget *proxy = area && guard ? area->graphicsProxyWidget() : nullptr;
    const QList<QGraphicsView *> views =
        proxy && proxy->scene() ? proxy->scene()->views() : QList<QGraphicsView *>();
    if (!views.isEmpty()) {
        const QPointF point = proxy->mapToScene(widget->mapTo(area, inWidget));
        views.first()->ensureVisible(QRectF(point, QSizeF(1, 1)), margin, margin);
    }
}

} // namespace

void scrollIntoView(const SharedPtr<Object> &object, const QPoint &position)
{
    const Node node = nodeOf(object);
    if (QWidget *widget = node.widget()) {
        scrollAround(widget, widget, position);
        return;
    }
    const QPointer<QWidget> host(node.host());
    scrollInHost(node);
    // Scrolling calls the application, which may have thrown the node away.
    const Node scrolled = nodeOf(object);
    if (host && scrolled) {
        const QPoint point = boundsOf(scrolled).topLeft() + position;
        scrollAround(host, host, host->mapFromGlobal(point));
    }
}

} // namespace Vantrel::QtWrapper
