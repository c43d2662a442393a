#include "qt/items_p.h"

#include "qt/handles_p.h"
#include "qt/itemproperties_p.h"
#include "qt/traits_p.h"

#include "objectmodel/class.h"
#include "objectmodel/classbuilder.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

#include <QAbstractItemView>
#include <QGraphicsItem>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QHash>
#include <QHeaderView>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QTabBar>
#include <QWidget>

#include <stdexcept>

namespace Vantrel::QtWrapper {

namespace {

/** What an item is told from others by, also after its model has moved it. */
struct Key
{
    friend bool operator==(const Key &a, const Key &b)
    {
        return a.host == b.host && a.section == b.section && a.item == b.item && a.index == b.index;
    }
    friend uint qHash(const Key &key, uint seed)
    {
        return ::qHash(key.host, seed) ^ ::qHash(key.item, seed) ^ uint(key.section)
            ^ ::qHash(key.index, seed);
    }

    const QWidget *host = nullptr;
    int section = -1;
    const QGraphicsItem *item = nullptr;
    QPersistentModelIndex index;
};

Key keyOf(const Node &node)
{
    return {node.host(), node.section(), node.graphicsItem(), node.index()};
}

/** The native data of an item handle. */
struct Item
{
    explicit Item(const Node &node)
        : kind(node.kind()), host(node.host()), key(keyOf(node)), item(node.graphicsItem())
    {
        notePlace();
    }

    /** Null when the item is gone. */
    Node node();

    const Node::Kind kind;
    const QPointer<QWidget> host;
    const Key key;
    /** The one handle, which does not keep this alive once it has ended. */
    Object *handle = nullptr;

private:
    Q_DISABLE_COPY(Item)
    bool isInScene();
    void notePlace();

    QGraphicsItem *const item;
    /** Where the graphics item was last. */
    QRectF place;
};

struct ModelItem : Item
{
    using Item::Item;
};
struct HeaderSection : Item
{
    using Item::Item;
};
struct TabItem : Item
{
    using Item::Item;
};
struct GraphicsItem : Item
{
    using Item::Item;
};
/** One with a class of its own for scripts, by its QGraphicsItem::Type. */
template <int type>
struct TypedItem : GraphicsItem
{
    using GraphicsItem::GraphicsItem;
};

void Item::notePlace()
{
    if (item) {
        place = item->sceneBoundingRect();
    }
}

/**
 * An item that was deleted must not be touched, and nobody tells of that: so it
 * is looked for in the scene, first where it was, which is quick.
 */
bool Item::isInScene()
{
    const QGraphicsScene *scene = static_cast<QGraphicsView *>(host.data())->scene();
    return scene
        && (scene->items(place, Qt::IntersectsItemBoundingRect).contains(item)
            || scene->items().contains(item));
}

Node Item::node()
{
    if (!host) {
        return Node();
    }
    switch (kind) {
    case Node::Kind::ModelItem: {
        auto *view = static_cast<QAbstractItemView *>(host.data());
        return key.index.isValid() && key.index.model() == view->model()
            ? Node::modelItem(view, key.index)
            : Node();
    }
    case Node::Kind::HeaderSection: {
        auto *header = static_cast<QHeaderView *>(host.data());
        return key.section < header->count() ? Node::headerSection(header, key.section) : Node();
    }
    case Node::Kind::Tab: {
        auto *bar = static_cast<QTabBar *>(host.data());
        return key.section < bar->count() ? Node::tab(bar, key.section) : Node();
    }
    default:
        // A graphics object that came to the same address is no item any more.
        if (!isInScene() || item->toGraphicsObject()) {
            return Node();
        }
        notePlace();
        return Node::graphicsItem(homeOf(item), item);
    }
}

/** By what they stand for; those that are held. */
QHash<Key, Item *> &heldItems()
{
    static auto *const all = new QHash<Key, Item *>; // lives as long as the process
    return *all;
}

/** Keeps the data as long as the handle, which invalidating it does not end. */
class ItemOwner : public UserData
{
public:
    explicit ItemOwner(const std::shared_ptr<Item> &item, bool isOriginal = true)
        : m_item(item), m_isOriginal(isOriginal)
    {}
    ~ItemOwner() override
    {
        if (m_isOriginal && heldItems().value(m_item->key) == m_item.get()) {
            heldItems().remove(m_item->key);
        }
    }
    UserData *clone() const override { return new ItemOwner(m_item, false); }

private:
    const std::shared_ptr<Item> m_item;
    const bool m_isOriginal;
};

// The classes.

Node presentNode(Item &item)
{
    const Node node = item.node();
    if (!node) {
        Inspector::self()->invalidateObjectCache(&item);
        throw std::runtime_error("the item is gone");
    }
    return node;
}

template <auto read>
auto reader()
{
    return [](Item &item) { return read(presentNode(item)); };
}

template <auto write>
struct Writer;
template <class Value, bool (*write)(const Node &, Value)>
struct Writer<write>
{
    static bool call(Item &item, Value value) { return write(presentNode(item), value); }
};

template <auto read>
QVariant variant(const Node &item)
{
    return QVariant(read(item));
}

struct PropertyRow
{
    Node::Kind kind;
    const char *name;
    QVariant (*read)(const Node &);
};

/** Gives a class its properties and remembers how they are read without a handle. */
template <class T>
class ItemClass
{
public:
    ItemClass(const char *name, Node::Kind kind) : m_builder(name), m_kind(kind) {}

    template <class Base>
    ItemClass &superClass()
    {
        m_builder.template superClass<Base>();
        return *this;
    }
    template <auto read>
    ItemClass &property(const char *name)
    {
        m_builder.property(name, reader<read>());
        rows().push_back({m_kind, name, variant<read>});
        return *this;
    }
    template <auto read, auto write>
    ItemClass &property(const char *name)
    {
        m_builder.property(name, reader<read>(), &Writer<write>::call);
        rows().push_back({m_kind, name, variant<read>});
        return *this;
    }
    const Class *add() { return m_builder.add(); }

    static std::vector<PropertyRow> &rows();

private:
    ClassBuilder<T> m_builder;
    const Node::Kind m_kind;
};

std::vector<PropertyRow> &propertyRows()
{
    static auto *const rows = new std::vector<PropertyRow>; // lives as long as the process
    return *rows;
}

template <class T>
std::vector<PropertyRow> &ItemClass<T>::rows()
{
    return propertyRows();
}

namespace P = ItemProperties;

const Class *addBaseClass()
{
    return ItemClass<Item>("QtItem", Node::Kind::None)
        .property<P::text>("text")
        .property<P::visible>("visible")
        .property<P::enabled>("enabled")
        .property<P::toolTip>("toolTip")
        .add();
}

void addModelItemClass()
{
    ItemClass<ModelItem>("ModelItem", Node::Kind::ModelItem)
        .superClass<Item>()
        .property<P::text, P::setModelText>("text")
        .property<P::row>("row")
        .property<P::column>("column")
        .property<P::numRows>("numRows")
        .property<P::editable>("editable")
        .property<P::checkable>("checkable")
        .property<P::checkState, P::setCheckState>("checkState")
        .property<P::selected, P::setSelected>("selected")
        .property<P::current, P::setCurrent>("current")
        .property<P::expanded, P::setExpanded>("expanded")
        .add();
}

void addSectionClass()
{
    ItemClass<HeaderSection>("HeaderSection", Node::Kind::HeaderSection)
        .superClass<Item>()
        .property<P::section>("section")
        .property<P::visualIndex>("visualIndex")
        .property<P::size>("size")
        .property<P::orientation>("orientation")
        .add();
}

void addTabClass()
{
    ItemClass<TabItem>("TabItem", Node::Kind::Tab)
        .superClass<Item>()
        .property<P::text, P::setTabText>("text")
        .property<P::section>("index")
        .property<P::selected, P::setSelected>("selected")
        .property<P::current, P::setCurrent>("current")
        .add();
}

void addGraphicsClass()
{
    ItemClass<GraphicsItem>("QGraphicsItem", Node::Kind::GraphicsItem)
        .superClass<Item>()
        .property<P::selected, P::setSelected>("selected")
        .property<P::x>("x")
        .property<P::y>("y")
        .property<P::width>("width")
        .property<P::height>("height")
        .property<P::zValue>("zValue")
        .property<P::rotation>("rotation")
        .property<P::scale>("scale")
        .property<P::opacity>("opacity")
        .add();
}

template <class Kind>
void addGraphicsClass(const char *name)
{
    ClassBuilder<TypedItem<Kind::Type>>(name).template superClass<GraphicsItem>().add();
}

template <class T>
SharedPtr<Object> makeHandle(const Node &node)
{
    const auto item = std::make_shared<T>(node);
    const Class *c = NativeTypes::classOf(typeid(T));
    const SharedPtr<Object> handle = c->wrap(item.get(), ObjectAttribute::Pointer());
    handle->setUserData(new ItemOwner(item));
    item->handle = handle.get();
    heldItems().insert(item->key, item.get());
    return handle;
}

SharedPtr<Object> makeGraphicsHandle(const Node &node)
{
    switch (node.graphicsItem()->type()) {
    case QGraphicsPathItem::Type:
        return makeHandle<TypedItem<QGraphicsPathItem::Type>>(node);
    case QGraphicsRectItem::Type:
        return makeHandle<TypedItem<QGraphicsRectItem::Type>>(node);
    case QGraphicsEllipseItem::Type:
        return makeHandle<TypedItem<QGraphicsEllipseItem::Type>>(node);
    case QGraphicsPolygonItem::Type:
        return makeHandle<TypedItem<QGraphicsPolygonItem::Type>>(node);
    case QGraphicsLineItem::Type:
        return makeHandle<TypedItem<QGraphicsLineItem::Type>>(node);
    case QGraphicsPixmapItem::Type:
        return makeHandle<TypedItem<QGraphicsPixmapItem::Type>>(node);
    case QGraphicsSimpleTextItem::Type:
        return makeHandle<TypedItem<QGraphicsSimpleTextItem::Type>>(node);
    case QGraphicsItemGroup::Type:
        return makeHandle<TypedItem<QGraphicsItemGroup::Type>>(node);
    default:
        return makeHandle<GraphicsItem>(node);
    }
}

SharedPtr<Object> makeHandle(const Node &node)
{
    switch (node.kind()) {
    case Node::Kind::ModelItem:
        return makeHandle<ModelItem>(node);
    case Node::Kind::HeaderSection:
        return makeHandle<HeaderSection>(node);
    case Node::Kind::Tab:
        return makeHandle<TabItem>(node);
    case Node::Kind::GraphicsItem:
        return makeGraphicsHandle(node);
    default:
        return {};
    }
}

} // namespace

void registerItemClasses()
{
    if (itemClass()) {
        return;
    }
    addBaseClass();
    addModelItemClass();
    addSectionClass();
    addTabClass();
    addGraphicsClass();
    addGraphicsClass<QGraphicsPathItem>("QGraphicsPathItem");
    addGraphicsClass<QGraphicsRectItem>("QGraphicsRectItem");
    addGraphicsClass<QGraphicsEllipseItem>("QGraphicsEllipseItem");
    addGraphicsClass<QGraphicsPolygonItem>("QGraphicsPolygonItem");
    addGraphicsClass<QGraphicsLineItem>("QGraphicsLineItem");
    addGraphicsClass<QGraphicsPixmapItem>("QGraphicsPixmapItem");
    addGraphicsClass<QGraphicsSimpleTextItem>("QGraphicsSimpleTextItem");
    addGraphicsClass<QGraphicsItemGroup>("QGraphicsItemGroup");
}

const Class *itemClass()
{
    return NativeTypes::classOf(typeid(Item));
}

SharedPtr<Object> itemHandleOf(const Node &node)
{
    if (!node || node.object()) {
        return {};
    }
    // Another item may have come to the address of one that is gone.
    Item *held = heldItems().value(keyOf(node));
    if (held && held->host && held->handle->isValid()) {
        return SharedPtr<Object>(held->handle);
    }
    return makeHandle(node);
}

Node itemOf(const SharedPtr<Object> &handle)
{
    if (!handle || !handle->isValid() || handle->isNull() || !handle->isA(itemClass())) {
        return Node();
    }
    void *data = nullptr;
    handle->get(&data);
    const Node node = static_cast<Item *>(data)->node();
    if (!node) {
        Inspector::self()->invalidateObjectCache(data);
        handle->invalidate();
    }
    return node;
}

QVariant itemProperty(const Node &item, const QString &name)
{
    for (const PropertyRow &row : propertyRows()) {
        if ((row.kind == item.kind() || row.kind == Node::Kind::None)
            && name == QLatin1String(row.name)) {
            return row.read(item);
        }
    }
    return QVariant();
}

SharedPtr<Object> handleOf(const Node &node)
{
    return node.object() ? handleOf(node.object()) : itemHandleOf(node);
}

Node nodeOf(const SharedPtr<Object> &handle)
{
    QObject *object = qobjectOf(handle);
    return object ? Node(object) : itemOf(handle);
}

} // namespace Vantrel::QtWrapper
