#include "qt/geometry_p.h"

#include "qt/traits_p.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QGraphicsItem>
#include <QGraphicsObject>
#include <QGraphicsProxyWidget>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QTabBar>
#include <QToolBar>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <cmath>

namespace Vantrel::QtWrapper {

namespace {

// Rectangles and clipping.

QGraphicsProxyWidget *proxyOf(const QWidget *widget)
{
    return widget->window()->graphicsProxyWidget();
}

/** A view that shows the scene of an item; the first one, as Qt maps coordinates by it too. */
QGraphicsView *viewOf(const QGraphicsItem *item)
{
    const QGraphicsScene *scene = item->scene();
    return scene && !scene->views().isEmpty() ? scene->views().constFirst() : nullptr;
}

/** The widget around @p widget that clips it: for a window in a scene that of the view. */
QWidget *clippingWidget(const QWidget *widget)
{
    if (!widget->isWindow()) {
        return widget->parentWidget();
    }
    const QGraphicsProxyWidget *proxy = widget->graphicsProxyWidget();
    QGraphicsView *view = proxy ? viewOf(proxy) : nullptr;
    return view ? view->viewport() : nullptr;
}

/** From an embedded window to the viewport of the view that shows it. */
QTransform toViewport(const QGraphicsProxyWidget *proxy, const QGraphicsView *view)
{
    return proxy->deviceTransform(view->viewportTransform());
}

// QWidget maps points of embedded widgets as well, but counts the place of the view twice.

QRect toGlobal(const QWidget *widget, const QRect &rect)
{
    if (rect.isNull()) {
        return QRect();
    }
    const QGraphicsProxyWidget *proxy = proxyOf(widget);
    const QGraphicsView *view = proxy ? viewOf(proxy) : nullptr;
    if (!view) {
        return QRect(widget->mapToGlobal(rect.topLeft()), rect.size());
    }
    const QRectF inWindow(widget->mapTo(widget->window(), rect.topLeft()), rect.size());
    return toGlobal(view->viewport(), toViewport(proxy, view).mapRect(inWindow).toAlignedRect());
}

QPoint fromGlobal(const QWidget *widget, const QPoint &position)
{
    const QGraphicsProxyWidget *proxy = proxyOf(widget);
    const QGraphicsView *view = proxy ? viewOf(proxy) : nullptr;
    if (!view) {
        return widget->mapFromGlobal(position);
    }
    const QPointF middle = fromGlobal(view->viewport(), position) + QPointF(0.5, 0.5);
    const QPointF inWindow = toViewport(proxy, view).inverted().map(middle);
    return widget->mapFrom(widget->window(),
                           QPoint(int(std::floor(inWindow.x())), int(std::floor(inWindow.y()))));
}

QRect globalRect(const QWidget *widget)
{
    return toGlobal(widget, QRect(QPoint(0, 0), widget->size()));
}

QRect clippedBy(const QWidget *widget, QRect rect)
{
    for (; widget && !rect.isEmpty(); widget = clippingWidget(widget)) {
        rect &= globalRect(widget);
    }
    return rect;
}

// The parts of widgets, in the coordinates of the widget that draws them.

QRect sectionRect(const QHeaderView *header, int section)
{
    if (section < 0 || section >= header->count() || header->isSectionHidden(section)) {
        return QRect();
    }
    const int start = header->sectionViewportPosition(section);
    const int size = header->sectionSize(section);
    return header->orientation() == Qt::Horizontal
        ? QRect(start, 0, size, header->viewport()->height())
        : QRect(0, start, header->viewport()->width(), size);
}

/** Of an entry of a menu, menu bar or tool bar. */
QRect actionRect(const QWidget *host, QAction *action)
{
    if (const auto *menu = qobject_cast<const QMenu *>(host)) {
        // It pops up anywhere, so it has no place while it is closed.
        return menu->isVisible() ? menu->actionGeometry(action) : QRect();
    }
    if (const auto *bar = qobject_cast<const QMenuBar *>(host)) {
        return bar->actionGeometry(action);
    }
    const auto *bar = qobject_cast<const QToolBar *>(host);
    return bar ? bar->actionGeometry(action) : QRect();
}

QRect itemRect(const QGraphicsView *view, const QGraphicsItem *item)
{
    if (!item->scene()) {
        return QRect();
    }
    const QTransform toViewport = item->deviceTransform(view->viewportTransform());
    return toViewport.mapRect(item->boundingRect()).toAlignedRect();
}

/** Of ancestors that cut off what their children draw outside of them. */
QRect clippedByItems(const QGraphicsView *view, const QGraphicsItem *item, QRect rect)
{
    for (item = item->parentItem(); item; item = item->parentItem()) {
        if (item->flags() & QGraphicsItem::ItemClipsChildrenToShape) {
            rect &= itemRect(view, item);
        }
    }
    return rect;
}

QGraphicsItem *graphicsItemOf(const Node &node)
{
    return node.kind() == Node::Kind::GraphicsItem ? node.graphicsItem()
                                                   : qobject_cast<QGraphicsObject *>(node.object());
}

/** Where a node is: a rectangle of the widget that draws it. */
struct Place
{
    const QWidget *widget = nullptr;
    QRect rect;
};

Place placeOfGraphicsItem(const Node &node, bool clipped)
{
    const auto *view = qobject_cast<const QGraphicsView *>(node.host());
    const QGraphicsItem *item = graphicsItemOf(node);
    if (!view || !item) {
        return {};
    }
    const QRect rect = itemRect(view, item);
    return {view->viewport(), clipped ? clippedByItems(view, item, rect) : rect};
}

Place placeOfObject(const Node &node, bool clipped)
{
    if (const QWidget *widget = node.widget()) {
        return {widget, QRect(QPoint(0, 0), widget->size())};
    }
    if (graphicsItemOf(node)) {
        return placeOfGraphicsItem(node, clipped);
    }
    const QWidget *host = node.host();
    auto *action = qobject_cast<QAction *>(node.object());
    return host && action ? Place{host, actionRect(host, action)} : Place{};
}

Place placeOf(const Node &node, bool clipped)
{
    switch (node.kind()) {
    case Node::Kind::Object:
        return placeOfObject(node, clipped);
    case Node::Kind::ModelItem:
        if (const auto *view = qobject_cast<const QAbstractItemView *>(node.host())) {
            return {view->viewport(), view->visualRect(node.index())};
        }
        break;
    case Node::Kind::HeaderSection:
        if (const auto *header = qobject_cast<const QHeaderView *>(node.host())) {
            return {header->viewport(), sectionRect(header, node.section())};
        }
        break;
    case Node::Kind::Tab:
        if (const auto *bar = qobject_cast<const QTabBar *>(node.host())) {
            return {bar, bar->tabRect(node.section())};
        }
        break;
    case Node::Kind::GraphicsItem:
        return placeOfGraphicsItem(node, clipped);
    case Node::Kind::None:
        break;
    }
    return {};
}

QRect windowRect(const QWindow *window)
{
    return QRect(window->mapToGlobal(QPoint(0, 0)), window->size());
}

// What is at a point.

Node innermostIn(QWidget *widget, const QPoint &position);

Node graphicsItemAt(QGraphicsView *view, const QPoint &position)
{
    const QPoint inView = fromGlobal(view->viewport(), position);
    for (QGraphicsItem *item : view->items(inView)) {
        const auto *proxy = qgraphicsitem_cast<QGraphicsProxyWidget *>(item);
        QWidget *embedded = proxy ? proxy->widget() : nullptr;
        const Node inner = embedded ? innermostIn(embedded, position) : Node();
        const Node node = inner ? inner : Node::graphicsItem(view, item);
        if (isShown(node)) {
            return node;
        }
    }
    return Node();
}

/** The part of @p widget at a point; null where it shows nothing but itself. */
Node partAt(QWidget *widget, const QPoint &position)
{
    if (auto *header = qobject_cast<QHeaderView *>(widget)) {
        const int section = header->logicalIndexAt(fromGlobal(header->viewport(), position));
        return section < 0 ? Node() : Node::headerSection(header, section);
    }
    if (auto *view = qobject_cast<QAbstractItemView *>(widget)) {
        const QModelIndex index = view->indexAt(fromGlobal(view->viewport(), position));
        return index.isValid() ? Node::modelItem(view, index) : Node();
    }
    if (auto *view = qobject_cast<QGraphicsView *>(widget)) {
        return graphicsItemAt(view, position);
    }
    const QPoint local = fromGlobal(widget, position);
    if (auto *bar = qobject_cast<QTabBar *>(widget)) {
        const int index = bar->tabAt(local);
        return index < 0 ? Node() : Node::tab(bar, index);
    }
    if (const auto *menu = qobject_cast<const QMenu *>(widget)) {
        return Node(menu->actionAt(local));
    }
    const auto *bar = qobject_cast<const QMenuBar *>(widget);
    return bar ? Node(bar->actionAt(local)) : Node();
}

/** The scroll area whose contents @p widget shows; its parts are drawn there. */
QAbstractScrollArea *areaOfViewport(const QWidget *widget)
{
    auto *area = qobject_cast<QAbstractScrollArea *>(widget->parentWidget());
    return area && area->viewport() == widget ? area : nullptr;
}

Node innermostIn(QWidget *widget, const QPoint &position)
{
    const QPoint local = fromGlobal(widget, position);
    if (!widget->isVisible() || !widget->rect().contains(local)) {
        return Node();
    }
    // Children that let the mouse through cover nothing, and Qt leaves them out here.
    QWidget *inner = widget->childAt(local);
    for (inner = inner ? inner : widget; inner; inner = inner->parentWidget()) {
        QAbstractScrollArea *area = inner == widget ? nullptr : areaOfViewport(inner);
        inner = area ? area : inner;
        const Node part = partAt(inner, position);
        if (part && isShown(part)) {
            return part;
        }
        if (inner == widget || isTreeObject(inner)) {
            return Node(inner);
        }
    }
    return Node();
}

Node innermostIn(QWindow *window, const QPoint &position)
{
    if (!window->isVisible() || !windowRect(window).contains(position)) {
        return Node();
    }
    const QObjectList &children = window->children();
    for (auto child = children.crbegin(); child != children.crend(); ++child) {
        auto *inner = qobject_cast<QWindow *>(*child);
        const Node node = inner && !inner->isTopLevel() ? innermostIn(inner, position) : Node();
        if (node) {
            return node;
        }
    }
    return Node(window);
}

bool isBelow(const Node &root, Node node)
{
    while (node && node != root) {
        node = parentNode(node);
    }
    return !node.isNull();
}

Node nodeBelow(const Node &root, const QPoint &position)
{
    if (QWidget *widget = root.widget()) {
        return innermostIn(widget, position);
    }
    if (auto *window = qobject_cast<QWindow *>(root.object())) {
        return innermostIn(window, position);
    }
    if (!visibleBoundsOf(root).contains(position)) {
        // A parent item need not surround its children.
        const Node node = root.host() ? innermostIn(root.host(), position) : Node();
        return node && isBelow(root, node) ? node : Node();
    }
    const Node node = innermostIn(root.host(), position);
    return node && isBelow(root, node) ? node : root;
}

// Windows on the screen.

/** The widget whose window of the window system this is; null for other windows. */
QWidget *widgetOf(const QWindow *window)
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    const auto found = std::find_if(widgets.begin(), widgets.end(), [window](const QWidget *w) {
        return w->windowHandle() == window;
    });
    return found == widgets.end() ? nullptr : *found;
}

/** Some platforms answer with the newest window at a point, as they do not know the order. */
bool platformKnowsOrder()
{
    const QString name = QGuiApplication::platformName();
    return name != QLatin1String("offscreen") && name != QLatin1String("minimal")
        && !name.startsWith(QLatin1String("wayland"));
}

/** A tool tip goes when the mouse comes, so it covers nothing. */
bool takesMouse(const QWindow *window)
{
    return window->type() != Qt::ToolTip && !(window->flags() & Qt::WindowTransparentForInput);
}

/** Windows at higher levels are in front of those at lower ones. */
int levelOf(const QWindow *window)
{
    if (window->type() == Qt::Popup) {
        const QWidget *active = QApplication::activePopupWidget();
        return active && active->windowHandle() == window ? 5 : 4;
    }
    if (window == QGuiApplication::modalWindow()) {
        return 3;
    }
    if (window->flags() & Qt::WindowStaysOnTopHint) {
        return 2;
    }
    return window == QGuiApplication::focusWindow() ? 1 : 0;
}

bool isOver(const QWindow *a, const QWindow *b)
{
    for (const QWindow *below = a->transientParent(); below; below = below->transientParent()) {
        if (below == b) {
            return true;
        }
    }
    return false;
}

QWindow *topmostWindowAt(const QPoint &position)
{
    if (platformKnowsOrder()) {
        QWindow *window = QGuiApplication::topLevelAt(position);
        if (window && takesMouse(window)) {
            return window;
        }
    }
    QWindow *top = nullptr;
    const QWindowList windows = QGuiApplication::topLevelWindows(); // older ones first
    for (QWindow *window : windows) {
        if (!window->isVisible() || window->windowStates() & Qt::WindowMinimized
            || !takesMouse(window) || !windowRect(window).contains(position)) {
            continue;
        }
        const bool isInFront = !top || isOver(window, top)
            || (!isOver(top, window) && levelOf(window) >= levelOf(top));
        top = isInFront ? window : top;
    }
    return top;
}

} // namespace

QRect boundsOf(const Node &node)
{
    if (const auto *window = qobject_cast<const QWindow *>(node.object())) {
        return windowRect(window);
    }
    const Place place = placeOf(node, false);
    return place.widget ? toGlobal(place.widget, place.rect) : QRect();
}

QRect visibleBoundsOf(const Node &node)
{
    if (!node || !isShown(node)) {
        return QRect();
    }
    if (const auto *window = qobject_cast<const QWindow *>(node.object())) {
        QRect rect = windowRect(window);
        for (; window->parent(); window = window->parent()) {
            rect &= windowRect(window->parent());
        }
        return rect;
    }
    const Place place = placeOf(node, true);
    return place.widget ? clippedBy(place.widget, toGlobal(place.widget, place.rect)) : QRect();
}

Node nodeAt(const Node &root, const QPoint &position)
{
    if (root && !qobject_cast<QCoreApplication *>(root.object())) {
        return nodeBelow(root, position);
    }
    QWindow *window = topmostWindowAt(position);
    QWidget *widget = window ? widgetOf(window) : nullptr;
    if (widget) {
        return innermostIn(widget, position);
    }
    return window ? innermostIn(window, position) : Node();
}

QWindow *windowOf(const Node &node)
{
    if (auto *window = qobject_cast<QWindow *>(node.object())) {
        return window;
    }
    const QWidget *widget = node.host();
    while (widget && proxyOf(widget)) {
        widget = clippingWidget(widget->window());
    }
    return widget ? widget->window()->windowHandle() : nullptr;
}

} // namespace Vantrel::QtWrapper
