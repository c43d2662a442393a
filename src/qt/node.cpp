#include "qt/node_p.h"

#include "qt/traits_p.h"

#include <QAbstractItemView>
#include <QAction>
#include <QCoreApplication>
#include <QGraphicsItem>
#include <QGraphicsProxyWidget>
#include <QGraphicsView>
#include <QHeaderView>
#include <QLabel>
#include <QListView>
#include <QMetaProperty>
#include <QPointer>
#include <QStyledItemDelegate>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QTreeView>
#include <QWindow>

#include <typeinfo>

namespace Vantrel::QtWrapper {

namespace {

QString graphicsTypeName(const QGraphicsItem *item)
{
    static const struct
    {
        int type;
        const char *name;
    } rows[] = {
        {QGraphicsPathItem::Type, "QGraphicsPathItem"},
        {QGraphicsRectItem::Type, "QGraphicsRectItem"},
        {QGraphicsEllipseItem::Type, "QGraphicsEllipseItem"},
        {QGraphicsPolygonItem::Type, "QGraphicsPolygonItem"},
        {QGraphicsLineItem::Type, "QGraphicsLineItem"},
        {QGraphicsPixmapItem::Type, "QGraphicsPixmapItem"},
        {QGraphicsSimpleTextItem::Type, "QGraphicsSimpleTextItem"},
        {QGraphicsItemGroup::Type, "QGraphicsItemGroup"},
    };
    for (const auto &row : rows) {
        if (row.type == item->type()) {
            return QString::fromLatin1(row.name);
        }
    }
    return QStringLiteral("QGraphicsItem");
}

QString plainText(const QLabel *label)
{
    const QString text = label->text();
    const auto format = label->textFormat();
    if (format == Qt::RichText || (format == Qt::AutoText && Qt::mightBeRichText(text))) {
        return QTextDocumentFragment::fromHtml(text).toPlainText().trimmed();
    }
    return label->buddy() ? withoutMnemonics(text) : text;
}

/** Without the place of the mark of a modified document. */
QString windowTitle(const QWidget *widget)
{
    const QString title = widget->windowTitle();
    return title.isEmpty() ? title : QString(title).remove(QLatin1String("[*]"));
}

QString propertyLabel(QObject *object, int property)
{
    const QString label = readText(object, property);
    // Behind a tab menu items, and the buttons made from them, have their shortcut.
    const int end = label.indexOf(QLatin1Char('\t'));
    return end == -1 ? label : label.left(end);
}

/** Of a page, which the text of its tab stands for. */
QString tabLabel(QWidget *page)
{
    const QWidget *stack = page->parentWidget();
    if (!stack || !traitsOf(stack).is(Traits::Stack)) {
        return QString();
    }
    const auto *tabs = qobject_cast<QTabWidget *>(stack->parentWidget());
    const int index = tabs ? tabs->indexOf(page) : -1;
    return index == -1 ? QString() : withoutMnemonics(tabs->tabText(index));
}

QString widgetLabel(QWidget *widget, Traits traits)
{
    if (traits.is(Traits::Label)) {
        return plainText(static_cast<QLabel *>(widget));
    }
    QString label;
    if (widget->isWindow()) {
        label = windowTitle(widget);
    }
    if (label.isEmpty() && traits.labelProperty != -1) {
        const QPointer<QWidget> guard(widget); // a getter can do anything
        label = withoutMnemonics(propertyLabel(widget, traits.labelProperty));
        if (!guard) {
            return label;
        }
        // That of a message box.
        if (widget->isWindow() && Qt::mightBeRichText(label)) {
            label = QTextDocumentFragment::fromHtml(label).toPlainText().trimmed();
        }
    }
    if (label.isEmpty()) {
        label = windowTitle(widget);
    }
    return label.isEmpty() ? tabLabel(widget) : label;
}

QString objectLabel(QObject *object)
{
    const Traits traits = traitsOf(object);
    if (object->isWidgetType()) {
        return widgetLabel(static_cast<QWidget *>(object), traits);
    }
    if (const auto *text = qobject_cast<QGraphicsTextItem *>(object)) {
        return text->toPlainText();
    }
    if (traits.labelProperty == -1) {
        return QString();
    }
    const QString label = propertyLabel(object, traits.labelProperty);
    return object->isWindowType() ? label : withoutMnemonics(label);
}

/** As the view shows it: dates and numbers in the form of its locale, or of its own delegate. */
QString itemLabel(const QPointer<QAbstractItemView> &view, const QModelIndex &index)
{
    const QVariant value = index.data(Qt::DisplayRole);
    const QAbstractItemDelegate *shown = view ? view->itemDelegate(index) : nullptr;
    const auto *delegate = qobject_cast<const QStyledItemDelegate *>(shown);
    // Of texts, that of Qt changes nothing but the kind of line breaks.
    const bool isText = value.userType() == QMetaType::QString && delegate
        && typeid(*delegate) == typeid(QStyledItemDelegate);
    return value.isValid() && delegate && !isText ? delegate->displayText(value, view->locale())
                                                  : value.toString();
}

QString headerLabel(const QHeaderView *header, int section)
{
    const QAbstractItemModel *model = header->model();
    return model ? model->headerData(section, header->orientation(), Qt::DisplayRole).toString()
                 : QString();
}

bool isRowHidden(const QAbstractItemView *view, const QModelIndex &index)
{
    if (const auto *tree = qobject_cast<const QTreeView *>(view)) {
        return tree->isRowHidden(index.row(), index.parent())
            || tree->isColumnHidden(index.column());
    }
    if (const auto *table = qobject_cast<const QTableView *>(view)) {
        return table->isRowHidden(index.row()) || table->isColumnHidden(index.column());
    }
    const auto *list = qobject_cast<const QListView *>(view);
    return list && list->isRowHidden(index.row());
}

bool isInOpenBranch(const QTreeView *tree, QModelIndex index)
{
    for (index = index.parent(); index.isValid() && index != tree->rootIndex();
         index = index.parent()) {
        if (!tree->isExpanded(index) || tree->isRowHidden(index.row(), index.parent())) {
            return false;
        }
    }
    return true;
}

bool isItemShown(const QAbstractItemView *view, const QModelIndex &index)
{
    if (!index.isValid() || index.model() != view->model() || isRowHidden(view, index)) {
        return false;
    }
    const auto *tree = qobject_cast<const QTreeView *>(view);
    return !tree || isInOpenBranch(tree, index);
}

bool isWidgetShown(const QWidget *widget)
{
    const QWidget *window = widget->window();
    if (!widget->isVisible() || window->isMinimized()) {
        return false;
    }
    const QGraphicsProxyWidget *proxy = window->graphicsProxyWidget();
    const QWidget *view = proxy ? homeOf(proxy) : nullptr;
    return !proxy || (view && proxy->isVisible() && isWidgetShown(view));
}

bool isObjectShown(QObject *object)
{
    if (object->isWidgetType()) {
        return isWidgetShown(static_cast<QWidget *>(object));
    }
    const Traits traits = traitsOf(object);
    if (traits.is(Traits::Action)) {
        const auto *action = static_cast<QAction *>(object);
        const QWidget *home = homeOf(action);
        return home && action->isVisible() && isWidgetShown(home);
    }
    if (traits.is(Traits::GraphicsObject)) {
        const auto *item = static_cast<QGraphicsObject *>(object);
        const QWidget *home = homeOf(item);
        return home && item->isVisible() && isWidgetShown(home);
    }
    return traits.is(Traits::Window) && static_cast<QWindow *>(object)->isVisible();
}

bool isObjectEnabled(QObject *object)
{
    if (object->isWidgetType()) {
        return static_cast<QWidget *>(object)->isEnabled();
    }
    const Traits traits = traitsOf(object);
    if (traits.is(Traits::Action)) {
        return static_cast<QAction *>(object)->isEnabled();
    }
    return !traits.is(Traits::GraphicsObject)
        || static_cast<QGraphicsObject *>(object)->isEnabled();
}

} // namespace

Node::Node(QObject *object) : m_kind(object ? Kind::Object : Kind::None), m_object(object) {}

Node Node::part(Kind kind, QObject *owner, int section)
{
    Node node;
    if (owner && section >= 0) {
        node.m_kind = kind;
        node.m_object = owner;
        node.m_section = section;
    }
    return node;
}

Node Node::modelItem(QAbstractItemView *view, const QModelIndex &index)
{
    Node node;
    if (view && index.isValid()) {
        node.m_kind = Kind::ModelItem;
        node.m_object = view;
        node.m_index = index;
    }
    return node;
}

Node Node::headerSection(QHeaderView *header, int logicalIndex)
{
    return part(Kind::HeaderSection, header, logicalIndex);
}

Node Node::tab(QTabBar *bar, int index)
{
    return part(Kind::Tab, bar, index);
}

Node Node::graphicsItem(QGraphicsView *view, QGraphicsItem *item)
{
    if (!item) {
        return Node();
    }
    if (QGraphicsObject *object = item->toGraphicsObject()) {
        return Node(object);
    }
    Node node;
    if (view) {
        node.m_kind = Kind::GraphicsItem;
        node.m_object = view;
        node.m_item = item;
    }
    return node;
}

QWidget *Node::widget() const
{
    return m_kind == Kind::Object && m_object->isWidgetType() ? static_cast<QWidget *>(m_object)
                                                              : nullptr;
}

QWidget *Node::host() const
{
    if (isNull()) {
        return nullptr;
    }
    if (m_object->isWidgetType()) {
        return static_cast<QWidget *>(m_object);
    }
    const Traits traits = traitsOf(m_object);
    if (traits.is(Traits::Action)) {
        return homeOf(static_cast<QAction *>(m_object));
    }
    return traits.is(Traits::GraphicsObject) ? homeOf(static_cast<QGraphicsObject *>(m_object))
                                             : nullptr;
}

uint qHash(const Node &node, uint seed)
{
    seed = ::qHash(node.m_object, seed) ^ ::qHash(node.m_item, seed) ^ uint(node.m_section);
    return node.m_index.isValid() ? seed ^ ::qHash(node.m_index) : seed;
}

QString typeName(const Node &node)
{
    switch (node.kind()) {
    case Node::Kind::None:
        return QString();
    case Node::Kind::Object:
        return QString::fromUtf8(node.object()->metaObject()->className());
    case Node::Kind::ModelItem:
        return QStringLiteral("ModelItem");
    case Node::Kind::HeaderSection:
        return QStringLiteral("HeaderSection");
    case Node::Kind::Tab:
        return QStringLiteral("TabItem");
    case Node::Kind::GraphicsItem:
        return graphicsTypeName(node.graphicsItem());
    }
    return QString();
}

QString objectNameOf(const Node &node)
{
    return node.object() ? node.object()->objectName() : QString();
}

QString labelOf(const Node &node)
{
    switch (node.kind()) {
    case Node::Kind::None:
        break;
    case Node::Kind::Object:
        return objectLabel(node.object());
    case Node::Kind::ModelItem:
        return itemLabel(static_cast<QAbstractItemView *>(node.host()), node.index());
    case Node::Kind::HeaderSection:
        return headerLabel(static_cast<QHeaderView *>(node.host()), node.section());
    case Node::Kind::Tab:
        return withoutMnemonics(static_cast<QTabBar *>(node.host())->tabText(node.section()));
    case Node::Kind::GraphicsItem:
        if (const auto *text = qgraphicsitem_cast<QGraphicsSimpleTextItem *>(node.graphicsItem())) {
            return text->text();
        }
    }
    return QString();
}

bool isShown(const Node &node)
{
    switch (node.kind()) {
    case Node::Kind::None:
        return false;
    case Node::Kind::Object:
        return isObjectShown(node.object());
    case Node::Kind::ModelItem:
        return isWidgetShown(node.host())
            && isItemShown(static_cast<QAbstractItemView *>(node.host()), node.index());
    case Node::Kind::HeaderSection:
        return isWidgetShown(node.host())
            && !static_cast<QHeaderView *>(node.host())->isSectionHidden(node.section());
    case Node::Kind::Tab:
        return isWidgetShown(node.host())
            && static_cast<QTabBar *>(node.host())->isTabVisible(node.section());
    case Node::Kind::GraphicsItem:
        return isWidgetShown(node.host()) && node.graphicsItem()->isVisible();
    }
    return false;
}

bool isEnabled(const Node &node)
{
    switch (node.kind()) {
    case Node::Kind::None:
        return false;
    case Node::Kind::Object:
        return isObjectEnabled(node.object());
    case Node::Kind::ModelItem:
        return node.host()->isEnabled() && (node.index().flags() & Qt::ItemIsEnabled);
    case Node::Kind::HeaderSection:
        return node.host()->isEnabled();
    case Node::Kind::Tab:
        return node.host()->isEnabled()
            && static_cast<QTabBar *>(node.host())->isTabEnabled(node.section());
    case Node::Kind::GraphicsItem:
        return node.host()->isEnabled() && node.graphicsItem()->isEnabled();
    }
    return false;
}

} // namespace Vantrel::QtWrapper
