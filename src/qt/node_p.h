#ifndef VANTREL_QT_NODE_P_H
#define VANTREL_QT_NODE_P_H

#include <QModelIndex>
#include <QString>

#include <functional>
#include <vector>

class QAbstractItemView;
class QGraphicsItem;
class QGraphicsView;
class QHeaderView;
class QObject;
class QTabBar;
class QWidget;

namespace Vantrel::QtWrapper {

/**
 * One thing that a tester sees, without the cost of a handle: a QObject, or a
 * part of a widget that is no QObject itself. A plain value that refers to what
 * it stands for; it must not be kept while the application runs.
 */
class Node
{
public:
    enum class Kind : quint8 {
        None,
        Object, ///< a QObject: widget, window, action, graphics object, application ...
        ModelItem, ///< what an item view shows of one index of its model
        HeaderSection, ///< by its logical index
        Tab, ///< of a tab bar
        GraphicsItem ///< one that is no QObject
    };

    Node() = default;
    /** Null for null. */
    explicit Node(QObject *object);
    static Node modelItem(QAbstractItemView *view, const QModelIndex &index);
    static Node headerSection(QHeaderView *header, int logicalIndex);
    static Node tab(QTabBar *bar, int index);
    /** Of kind Object when @p item is a QGraphicsObject. */
    static Node graphicsItem(QGraphicsView *view, QGraphicsItem *item);

    Kind kind() const { return m_kind; }
    bool isNull() const { return m_kind == Kind::None; }
    explicit operator bool() const { return !isNull(); }

    /** Of a node of kind Object; otherwise null. */
    QObject *object() const { return m_kind == Kind::Object ? m_object : nullptr; }
    /** Of a node of kind Object that is a widget; otherwise null. */
    QWidget *widget() const;
    /**
     * The widget that shows the node: itself, the view, header or tab bar that
     * it is a part of, the view of a graphics object; for a menu item the menu
     * or menu bar that shows it. Null for what no widget shows.
     */
    QWidget *host() const;

    // Of the kinds of these names.
    const QModelIndex &index() const { return m_index; }
    int section() const { return m_section; }
    QGraphicsItem *graphicsItem() const { return m_item; }

    friend bool operator==(const Node &a, const Node &b)
    {
        return a.m_kind == b.m_kind && a.m_object == b.m_object && a.m_item == b.m_item
            && a.m_section == b.m_section && a.m_index == b.m_index;
    }
    friend bool operator!=(const Node &a, const Node &b) { return !(a == b); }
    friend uint qHash(const Node &node, uint seed);

private:
    /** Null when there is no @p owner or no such part. */
    static Node part(Kind kind, QObject *owner, int section);

    Kind m_kind = Kind::None;
    int m_section = -1;
    /** The object, or the widget that the part belongs to. */
    QObject *m_object = nullptr;
    QGraphicsItem *m_item = nullptr;
    QModelIndex m_index;
};

uint qHash(const Node &node, uint seed = 0);

// The tree of a tester: every node has one parent, so each is visited once.
// The order of children is that of their creation, rows and columns.

/** Top-level widgets, windows that are no widgets, and the application object. */
std::vector<Node> topLevelNodes();
std::vector<Node> childNodes(const Node &parent);
/** The same without a list, for there may be millions. Ends, with false, when @p visit returns it.
 */
bool visitChildNodes(const Node &parent, const std::function<bool(const Node &)> &visit);
/** Null at the top level. */
Node parentNode(const Node &node);
/** The top-level node above @p node, or the node itself. */
Node windowNode(const Node &node);
/**
 * Visits @p root (a null one stands for all top-level nodes) and everything
 * below it, parents first, until @p visit returns false.
 * @return false when it was ended so.
 */
bool visitNodes(const Node &root, const std::function<bool(const Node &)> &visit);
/** What is not part of the tree of a tester, but of the trees of QObjects in it: plumbing,
 * layouts, models, timers ... */
bool visitHiddenObjects(const Node &root, const std::function<bool(const Node &)> &visit);

/** The exact class name: that of the meta object, or of the kind of item. */
QString typeName(const Node &node);
/** The objectName, or empty. */
QString objectNameOf(const Node &node);
/**
 * The label that the node shows: text, title, window title or placeholder,
 * without mnemonics. Empty when it shows none.
 */
QString labelOf(const Node &node);
/** Whether a user could see it now, if nothing covered it and it were scrolled to. */
bool isShown(const Node &node);
bool isEnabled(const Node &node);

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_NODE_P_H
