#include "qt/node_p.h"

#include "qt/traits_p.h"
#include "qt/tree_p.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QGraphicsProxyWidget>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QHash>
#include <QHeaderView>
#include <QListView>
#include <QMenu>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QSet>
#include <QStackedWidget>
#include <QTabBar>
#include <QThread>
#include <QWindow>

#include <algorithm>
#include <tuple>

namespace Vantrel::QtWrapper {

namespace {

/** Models and scenes can be nested without end. */
constexpr int maximumDepth = 256;

using Visit = std::function<bool(const Node &)>;

// Which node something that is no plain child widget belongs to.

/** The node for a widget or, when that is plumbing, for what it is plumbing of. */
Node nodeAround(QWidget *widget)
{
    while (widget && isPlumbing(widget)) {
        widget = widget->parentWidget();
    }
    return Node(widget);
}

/** Menus can be added to each other in a circle, which then nothing leads into. */
bool isBelow(const QWidget *widget, const QMenu *menu)
{
    for (int depth = 0; widget && depth < maximumDepth; ++depth) {
        if (widget == menu) {
            return true;
        }
        const bool isMenu = traitsOf(widget).is(Traits::Menu);
        const QWidget *home =
            isMenu ? homeOf(static_cast<const QMenu *>(widget)->menuAction()) : nullptr;
        widget = home ? home : widget->parentWidget();
    }
    return false;
}

QAction *homeActionOf(const QMenu *menu)
{
    QAction *action = menu->menuAction();
    const QWidget *home = action ? homeOf(action) : nullptr;
    return home && !isBelow(home, menu) ? action : nullptr;
}

QGraphicsProxyWidget *proxyOf(const QWidget *widget)
{
    QGraphicsProxyWidget *proxy = widget->graphicsProxyWidget();
    return proxy && proxy->widget() == widget && homeOf(proxy) ? proxy : nullptr;
}

Node parentOfMenu(const QMenu *menu)
{
    if (QAction *action = homeActionOf(menu)) {
        return Node(action);
    }
    if (QGraphicsProxyWidget *proxy = proxyOf(menu)) {
        return Node(proxy);
    }
    return menu->isWindow() && menu->isVisible() ? Node() : nodeAround(menu->parentWidget());
}

Node parentOfWidget(QWidget *widget)
{
    if (traitsOf(widget).is(Traits::Menu)) {
        return parentOfMenu(static_cast<QMenu *>(widget));
    }
    if (widget->isWindow() && !isPlumbing(widget)) {
        return Node(proxyOf(widget));
    }
    return nodeAround(widget->parentWidget());
}

Node parentOfGraphicsItem(const QGraphicsItem *item)
{
    QGraphicsView *home = homeOf(item);
    if (home && item->parentItem()) {
        return Node::graphicsItem(home, item->parentItem());
    }
    return Node(home);
}

/** The widget that a QWidgetWindow shows. */
QWidget *widgetOf(const QWindow *window)
{
    const auto widgets = QApplication::topLevelWidgets();
    const auto found =
        std::find_if(widgets.begin(), widgets.end(),
                     [window](const QWidget *widget) { return widget->windowHandle() == window; });
    return found == widgets.end() ? nullptr : *found;
}

Node parentOfWindow(const QWindow *window)
{
    QWindow *parent = window->parent();
    if (!parent || !traitsOf(parent).is(Traits::WidgetWindow)) {
        return Node(parent);
    }
    while (parent->parent() && traitsOf(parent->parent()).is(Traits::WidgetWindow)) {
        parent = parent->parent();
    }
    return Node(widgetOf(parent));
}

/** For objects that are outside of the tree: the nearest owner that is in it. */
Node owningNode(const QObject *object)
{
    QObject *owner = object->parent();
    while (owner && !isTreeObject(owner)) {
        owner = owner->parent();
    }
    return Node(owner);
}

Node parentOfObject(QObject *object)
{
    if (object->isWidgetType()) {
        return parentOfWidget(static_cast<QWidget *>(object));
    }
    if (!isTreeObject(object)) {
        return owningNode(object);
    }
    const Traits traits = traitsOf(object);
    if (traits.is(Traits::Action)) {
        return Node(homeOf(static_cast<QAction *>(object)));
    }
    if (traits.is(Traits::GraphicsObject)) {
        return parentOfGraphicsItem(static_cast<QGraphicsObject *>(object));
    }
    return traits.is(Traits::Window) ? parentOfWindow(static_cast<QWindow *>(object)) : Node();
}

/** Of an item below the root of the view; at most a little more than the maximum. */
int depthOf(const QAbstractItemView *view, QModelIndex index)
{
    int depth = 0;
    const QModelIndex root = view->rootIndex();
    while (index.isValid() && index != root && depth <= maximumDepth) {
        index = index.parent();
        ++depth;
    }
    return depth;
}

Node parentOfModelItem(QAbstractItemView *view, const QModelIndex &index)
{
    const QModelIndex parent = index.parent();
    // A model may lead its parents around in a circle.
    if (!parent.isValid() || parent == view->rootIndex() || depthOf(view, parent) > maximumDepth) {
        return Node(view);
    }
    return Node::modelItem(view, parent.sibling(parent.row(), 0));
}

// Children. Each function calls visit for them until it returns false. What is
// asked of the application may change it, so lists are held and counts asked again.

/** Showing pages changes their order among the children, so they go by their numbers. */
QObjectList childrenOfStack(const QStackedWidget *stack)
{
    QObjectList children;
    for (int i = 0; i < stack->count(); ++i) {
        children << stack->widget(i);
    }
    for (QObject *child : stack->children()) {
        if (!child->isWidgetType() || stack->indexOf(static_cast<QWidget *>(child)) == -1) {
            children << child;
        }
    }
    return children;
}

/** Which of the children that an object has now are still there later. */
class LivingChildren
{
public:
    explicit LivingChildren(const QObject *parent)
        : m_parent(const_cast<QObject *>(parent)), m_children(parent->children())
    {}
    bool contains(QObject *child) const
    {
        // Whoever takes one away no longer shares the list with this.
        return m_parent && child
            && (m_parent->children().isSharedWith(m_children)
                || m_parent->children().contains(child));
    }

private:
    const QPointer<QObject> m_parent;
    const QObjectList m_children;
};

template <class F>
bool eachChildWidget(const QWidget *parent, Traits parentTraits, const QWidget *owner, F &visit)
{
    const QObjectList children = parentTraits.is(Traits::Stack)
        ? childrenOfStack(static_cast<const QStackedWidget *>(parent))
        : parent->children();
    const bool isPlumbed = parentTraits.is(Traits::PlumbedContainer);
    const LivingChildren living(parent);
    for (QObject *child : children) {
        if (!living.contains(child) || !child->isWidgetType()) {
            continue;
        }
        auto *widget = static_cast<QWidget *>(child);
        const Traits traits = traitsOf(widget);
        if (traits.is(Traits::Menu)) {
            if (Node(const_cast<QWidget *>(owner)) == parentOfMenu(static_cast<QMenu *>(widget))
                && !visit(Node(widget))) {
                return false;
            }
        } else if ((isPlumbed || traits.is(Traits::PerhapsPlumbing))
                   && isPlumbing(widget, traits, parent)) {
            if (!eachChildWidget(widget, traits, owner, visit)) {
                return false;
            }
        } else if (!widget->isWindow() && !visit(Node(widget))) {
            return false;
        }
    }
    return true;
}

template <class F>
bool eachAction(const QWidget *menu, F &visit)
{
    const QPointer<const QWidget> alive(menu);
    const auto actions = menu->actions();
    for (QAction *action : actions) {
        const bool isThere = alive && alive->actions().contains(action);
        if (isThere && homeOf(action) == menu && !visit(Node(action))) {
            return false;
        }
    }
    return true;
}

template <class F>
bool eachItem(QAbstractItemView *view, const QPersistentModelIndex &parent, F &visit)
{
    const QPointer<QAbstractItemView> alive(view);
    const QPointer<QAbstractItemModel> model = view->model();
    const auto isThere = [&] { return alive && model && alive->model() == model; };
    const auto *list = qobject_cast<QListView *>(view);
    const bool hadParent = parent.isValid();
    // Rows that are added meanwhile might never come to an end.
    const int numRows = model ? model->rowCount(parent) : 0;
    for (int row = 0; row < numRows && isThere() && hadParent == parent.isValid()
         && row < model->rowCount(parent);
         ++row) {
        const int begin = list ? list->modelColumn() : 0;
        const int end =
            list ? std::min(begin + 1, model->columnCount(parent)) : model->columnCount(parent);
        for (int column = begin; column < end && isThere(); ++column) {
            const QModelIndex index = model->index(row, column, parent);
            if (index.isValid() && !visit(Node::modelItem(view, index))) {
                return false;
            }
        }
    }
    return true;
}

bool hasItemsBelow(const Node &item)
{
    const auto *view = static_cast<QAbstractItemView *>(item.host());
    return item.index().column() == 0 && showsTree(view)
        && view->model()->rowCount(item.index()) > 0;
}

template <class F>
bool eachItemBelow(const Node &item, F &visit)
{
    auto *view = static_cast<QAbstractItemView *>(item.host());
    return !hasItemsBelow(item) || depthOf(view, item.index()) >= maximumDepth
        || eachItem(view, item.index(), visit);
}

template <class F>
bool eachGraphicsItem(QGraphicsView *view, const QList<QGraphicsItem *> &items, F &visit)
{
    return std::all_of(items.begin(), items.end(), [&](QGraphicsItem *item) {
        return item->parentItem() || visit(Node::graphicsItem(view, item));
    });
}

template <class F>
bool eachSceneItem(QGraphicsView *view, F &visit)
{
    const QGraphicsScene *scene = view->scene();
    if (!scene || scene->views().constFirst() != view) {
        return true;
    }
    return eachGraphicsItem(view, scene->items(Qt::AscendingOrder), visit);
}

template <class F>
bool eachChildItem(QGraphicsView *view, const QGraphicsItem *parent, F &visit)
{
    const auto items = parent->childItems();
    return std::all_of(items.begin(), items.end(),
                       [&](QGraphicsItem *item) { return visit(Node::graphicsItem(view, item)); });
}

template <class F>
bool eachPartOf(QWidget *widget, Traits traits, F &visit)
{
    if (traits.is(Traits::Menu | Traits::MenuBar)) {
        return eachAction(widget, visit);
    }
    if (traits.is(Traits::ItemView)) {
        auto *view = static_cast<QAbstractItemView *>(widget);
        return eachItem(view, view->rootIndex(), visit);
    }
    if (traits.is(Traits::GraphicsView)) {
        return eachSceneItem(static_cast<QGraphicsView *>(widget), visit);
    }
    auto *header = traits.is(Traits::HeaderView) ? static_cast<QHeaderView *>(widget) : nullptr;
    auto *bar = header ? nullptr : static_cast<QTabBar *>(widget);
    const QPointer<QWidget> alive(widget);
    for (int i = 0; alive && i < (header ? header->count() : bar->count()); ++i) {
        if (!visit(header ? Node::headerSection(header, i) : Node::tab(bar, i))) {
            return false;
        }
    }
    return true;
}

/** Windows that are no widgets, embedded in one or below another. */
template <class F>
bool eachChildWindow(const QWindow *parent, F &visit)
{
    const LivingChildren living(parent);
    const QObjectList children = parent->children();
    for (QObject *child : children) {
        if (!living.contains(child) || !child->isWindowType()) {
            continue;
        }
        const bool goesOn = traitsOf(child).is(Traits::WidgetWindow)
            ? eachChildWindow(static_cast<QWindow *>(child), visit)
            : visit(Node(child));
        if (!goesOn) {
            return false;
        }
    }
    return true;
}

template <class F>
bool eachChildOfWidget(QWidget *widget, ModelItems modelItems, F &visit)
{
    const Traits traits = traitsOf(widget);
    const QPointer<QWidget> alive(widget);
    if (!widget->children().isEmpty() && !eachChildWidget(widget, traits, widget, visit)) {
        return false;
    }
    const bool isLeftOut =
        modelItems == ModelItems::LeftOut && traits.is(Traits::ItemView | Traits::HeaderView);
    if (alive && traits.is(Traits::HasParts) && !isLeftOut && !eachPartOf(widget, traits, visit)) {
        return false;
    }
    const QWindow *window = alive && alive->isWindow() ? alive->windowHandle() : nullptr;
    return !window || eachChildWindow(window, visit);
}

template <class F>
bool eachChildOfGraphicsObject(QGraphicsObject *object, Traits traits, F &visit)
{
    QGraphicsView *home = homeOf(object);
    if (!home) {
        return true;
    }
    const QPointer<QGraphicsObject> alive(object);
    QWidget *embedded = traits.is(Traits::ProxyWidget)
        ? static_cast<QGraphicsProxyWidget *>(static_cast<QObject *>(object))->widget()
        : nullptr;
    if (embedded && !isPlumbing(embedded) && parentOfWidget(embedded) == Node(object)
        && !visit(Node(embedded))) {
        return false;
    }
    home = alive ? homeOf(object) : nullptr;
    return !home || eachChildItem(home, object, visit);
}

template <class F>
bool eachChildOfObject(QObject *object, ModelItems modelItems, F &visit)
{
    if (object->isWidgetType()) {
        return eachChildOfWidget(static_cast<QWidget *>(object), modelItems, visit);
    }
    const Traits traits = traitsOf(object);
    if (traits.is(Traits::Action)) {
        QMenu *menu = static_cast<QAction *>(object)->menu();
        return !menu || homeActionOf(menu) != object || visit(Node(menu));
    }
    if (traits.is(Traits::GraphicsObject)) {
        return eachChildOfGraphicsObject(static_cast<QGraphicsObject *>(object), traits, visit);
    }
    return !traits.is(Traits::Window) || traits.is(Traits::WidgetWindow)
        || eachChildWindow(static_cast<QWindow *>(object), visit);
}

template <class F>
bool eachChild(const Node &parent, ModelItems modelItems, F &visit)
{
    switch (parent.kind()) {
    case Node::Kind::Object:
        return eachChildOfObject(parent.object(), modelItems, visit);
    case Node::Kind::ModelItem:
        return eachItemBelow(parent, visit);
    case Node::Kind::GraphicsItem:
        return eachChildItem(static_cast<QGraphicsView *>(parent.host()), parent.graphicsItem(),
                             visit);
    default:
        return true;
    }
}

/** Most nodes have nothing below them, and keeping track of one costs more than asking. */
bool isLeaf(const Node &node)
{
    switch (node.kind()) {
    case Node::Kind::Object: {
        const QWidget *widget = node.widget();
        return widget && widget->children().isEmpty() && !widget->isWindow()
            && !traitsOf(widget).is(Traits::HasParts);
    }
    case Node::Kind::ModelItem:
        return !hasItemsBelow(node);
    case Node::Kind::GraphicsItem:
        return node.graphicsItem()->childItems().isEmpty();
    default:
        return true;
    }
}

/** Tells whether a node is still there after code of the application has run. */
class NodeWatch
{
public:
    explicit NodeWatch(const Node &node)
        : m_node(node), m_object(node.object() ? node.object() : node.host()), m_index(node.index())
    {}
    /** Null when it is gone. */
    Node node() const
    {
        if (!m_object || m_node.kind() != Node::Kind::ModelItem) {
            return m_object ? m_node : Node();
        }
        auto *view = static_cast<QAbstractItemView *>(m_node.host());
        return m_index.model() == view->model() ? Node::modelItem(view, m_index) : Node();
    }

private:
    const Node m_node;
    const QPointer<QObject> m_object;
    const QPersistentModelIndex m_index;
};

template <class F>
bool visitBelow(const Node &node, ModelItems modelItems, F &visit)
{
    if (isLeaf(node)) {
        return visit(node);
    }
    const NodeWatch watch(node);
    if (!visit(node)) {
        return false;
    }
    const auto visitChild = [&visit, modelItems](const Node &child) {
        return visitBelow(child, modelItems, visit);
    };
    return eachChild(watch.node(), modelItems, visitChild);
}

// The top level.

/** Since when windows are known; Qt keeps them in no order. */
QHash<const QObject *, quint64> &sightings()
{
    static auto *const all = new QHash<const QObject *, quint64>; // lives as long as the process
    return *all;
}

void noteSighting(const QObject *object)
{
    static quint64 numSeen = 0;
    sightings().insert(object, ++numSeen);
    QObject::connect(object, &QObject::destroyed,
                     [](const QObject *gone) { sightings().remove(gone); });
}

int depthOf(const QWidget *window)
{
    int depth = 0;
    for (const QWidget *parent = window->parentWidget(); parent; parent = parent->parentWidget()) {
        ++depth;
    }
    return depth;
}

auto contentsKey(const QWidget *widget)
{
    return std::make_tuple(depthOf(widget), widget->objectName(),
                           QByteArray(widget->metaObject()->className()), widget->windowTitle(),
                           widget->y(), widget->x(), widget->height(), widget->width(),
                           widget->children().size());
}

auto contentsKey(const QWindow *window)
{
    return std::make_tuple(0, window->objectName(), QByteArray(window->metaObject()->className()),
                           window->title(), window->y(), window->x(), window->height(),
                           window->width(), window->children().size());
}

/**
 * In the order in which they were first seen. Those that are new go by what
 * can be told of them: owners before dialogs, then names, classes, titles and
 * places, so that two runs agree.
 */
template <class Window>
void sortWindows(QList<Window *> &windows)
{
    QList<Window *> added;
    std::copy_if(windows.begin(), windows.end(), std::back_inserter(added),
                 [](const Window *window) { return !sightings().contains(window); });
    std::stable_sort(added.begin(), added.end(), [](const Window *a, const Window *b) {
        return contentsKey(a) < contentsKey(b);
    });
    for (const Window *window : qAsConst(added)) {
        noteSighting(window);
    }
    std::sort(windows.begin(), windows.end(), [](const Window *a, const Window *b) {
        return sightings().value(a) < sightings().value(b);
    });
}

QList<QWidget *> topLevelWidgets()
{
    QList<QWidget *> widgets;
    const auto all = QApplication::topLevelWidgets();
    for (QWidget *widget : all) {
        if (!isPlumbing(widget) && isTreeObject(widget) && !parentOfWidget(widget)) {
            widgets << widget;
        }
    }
    sortWindows(widgets);
    return widgets;
}

QList<QWindow *> topLevelWindows()
{
    QList<QWindow *> windows;
    const auto all = QGuiApplication::topLevelWindows();
    for (QWindow *window : all) {
        if (isTreeObject(window)) {
            windows << window;
        }
    }
    sortWindows(windows);
    return windows;
}

template <class F>
bool visitAll(const Node &root, ModelItems modelItems, F &visit)
{
    if (root) {
        return visitBelow(root, modelItems, visit);
    }
    std::vector<QPointer<QObject>> objects;
    for (const Node &node : topLevelNodes()) {
        objects.emplace_back(node.object());
    }
    return std::all_of(objects.begin(), objects.end(),
                       [&visit, modelItems](const QPointer<QObject> &object) {
                           return !object || visitBelow(Node(object), modelItems, visit);
                       });
}

/** What is outside of the tree, found from the objects in it. */
class HiddenObjects
{
public:
    HiddenObjects(const Node &root, const Visit &visit) : m_root(root), m_visit(visit) {}

    bool visit()
    {
        const auto note = [this](const Node &node) {
            if (node.object()) {
                m_seen.insert(node.object());
            }
            return true;
        };
        visitAll(Node(), ModelItems::LeftOut, note);
        Objects owners;
        const auto collect = [&owners](const Node &node) {
            if (node.object()) {
                owners.emplace_back(node.object());
            }
            return true;
        };
        visitAll(m_root, ModelItems::LeftOut, collect);
        return std::all_of(owners.begin(), owners.end(),
                           [this](const auto &owner) { return visitOwnedBy(owner); })
            && (m_root || visitWindows());
    }

private:
    /** A visit may end them. */
    using Objects = std::vector<QPointer<QObject>>;

    static Objects watched(const QObjectList &objects)
    {
        return Objects(objects.begin(), objects.end());
    }

    bool visitOwnedBy(const QPointer<QObject> &owner)
    {
        const Objects owned = owner ? watched(ownedBy(owner)) : Objects();
        return std::all_of(owned.begin(), owned.end(), [this](const auto &object) {
            if (!object || m_seen.contains(object)
                || object->thread() != QThread::currentThread()) {
                return true;
            }
            m_seen.insert(object);
            return m_visit(Node(object)) && visitOwnedBy(object);
        });
    }

    /** Helpers that show nothing at present, and the windows behind widgets. */
    bool visitWindows()
    {
        QObjectList windows;
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            windows << widget;
        }
        for (QWindow *window : QGuiApplication::topLevelWindows()) {
            windows << window;
        }
        const Objects all = watched(windows);
        return std::all_of(all.begin(), all.end(), [this](const auto &window) {
            if (!window || m_seen.contains(window)) {
                return true;
            }
            m_seen.insert(window);
            return m_visit(Node(window)) && visitOwnedBy(window);
        });
    }

    /** Models, scenes and actions need not be children of what shows them. */
    static QObjectList ownedBy(QObject *owner)
    {
        QObjectList owned = owner->children();
        if (!owner->isWidgetType()) {
            return owned;
        }
        const auto actions = static_cast<QWidget *>(owner)->actions();
        std::copy(actions.begin(), actions.end(), std::back_inserter(owned));
        const Traits traits = traitsOf(owner);
        if (traits.is(Traits::ItemView | Traits::HeaderView)) {
            const auto *view = static_cast<QAbstractItemView *>(owner);
            owned << view->model() << view->selectionModel();
        } else if (traits.is(Traits::GraphicsView)) {
            owned << static_cast<QGraphicsView *>(owner)->scene();
        }
        owned.removeAll(nullptr);
        return owned;
    }

    const Node m_root;
    const Visit &m_visit;
    QSet<const QObject *> m_seen;
};

} // namespace

std::vector<Node> topLevelNodes()
{
    std::vector<Node> nodes;
    for (QWidget *widget : topLevelWidgets()) {
        nodes.emplace_back(widget);
    }
    for (QWindow *window : topLevelWindows()) {
        nodes.emplace_back(window);
    }
    nodes.emplace_back(QCoreApplication::instance());
    return nodes;
}

std::vector<Node> childNodes(const Node &parent)
{
    std::vector<Node> nodes;
    const auto add = [&nodes](const Node &node) {
        nodes.push_back(node);
        return true;
    };
    eachChild(parent, ModelItems::Visited, add);
    return nodes;
}

bool visitChildNodes(const Node &parent, const Visit &visit)
{
    return eachChild(parent, ModelItems::Visited, visit);
}

Node parentNode(const Node &node)
{
    switch (node.kind()) {
    case Node::Kind::None:
        return Node();
    case Node::Kind::Object:
        return parentOfObject(node.object());
    case Node::Kind::ModelItem:
        return parentOfModelItem(static_cast<QAbstractItemView *>(node.host()), node.index());
    case Node::Kind::GraphicsItem:
        return parentOfGraphicsItem(node.graphicsItem());
    default:
        return Node(node.host());
    }
}

Node windowNode(const Node &node)
{
    Node window = node;
    for (Node parent = parentNode(node); parent; parent = parentNode(parent)) {
        window = parent;
    }
    return window;
}

bool visitNodes(const Node &root, const Visit &visit)
{
    return visitAll(root, ModelItems::Visited, visit);
}

bool visitNodes(const Node &root, ModelItems modelItems, const Visit &visit)
{
    return visitAll(root, modelItems, visit);
}

bool visitHiddenObjects(const Node &root, const Visit &visit)
{
    return HiddenObjects(root, visit).visit();
}

} // namespace Vantrel::QtWrapper
