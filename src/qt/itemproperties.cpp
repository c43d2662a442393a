#include "qt/itemproperties_p.h"

#include "qt/traits_p.h"

#include <QAbstractItemView>
#include <QGraphicsItem>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QTabBar>
#include <QTreeView>

namespace Vantrel::QtWrapper::ItemProperties {

namespace {

QAbstractItemView *viewOf(const Node &item)
{
    return static_cast<QAbstractItemView *>(item.host());
}

QHeaderView *headerOf(const Node &section)
{
    return static_cast<QHeaderView *>(section.host());
}

QTabBar *barOf(const Node &tab)
{
    return static_cast<QTabBar *>(tab.host());
}

QRectF placeOf(const Node &item)
{
    return item.graphicsItem()->sceneBoundingRect();
}

bool setModelData(const Node &item, const QVariant &value, int role)
{
    return viewOf(item)->model()->setData(item.index(), value, role);
}

} // namespace

QString text(const Node &item)
{
    return labelOf(item);
}

bool visible(const Node &item)
{
    return isShown(item);
}

bool enabled(const Node &item)
{
    return isEnabled(item);
}

QString toolTip(const Node &item)
{
    switch (item.kind()) {
    case Node::Kind::ModelItem:
        return item.index().data(Qt::ToolTipRole).toString();
    case Node::Kind::HeaderSection: {
        const QAbstractItemModel *model = headerOf(item)->model();
        return model
            ? model->headerData(item.section(), headerOf(item)->orientation(), Qt::ToolTipRole)
                  .toString()
            : QString();
    }
    case Node::Kind::Tab:
        return barOf(item)->tabToolTip(item.section());
    case Node::Kind::GraphicsItem:
        return item.graphicsItem()->toolTip();
    default:
        return QString();
    }
}

int row(const Node &item)
{
    return item.index().row();
}

int column(const Node &item)
{
    return item.index().column();
}

int numRows(const Node &item)
{
    const bool hasBranch = item.index().column() == 0 && showsTree(viewOf(item));
    return hasBranch ? viewOf(item)->model()->rowCount(item.index()) : 0;
}

bool editable(const Node &item)
{
    return item.index().flags() & Qt::ItemIsEditable;
}

bool checkable(const Node &item)
{
    return (item.index().flags() & Qt::ItemIsUserCheckable)
        && item.index().data(Qt::CheckStateRole).isValid();
}

int checkState(const Node &item)
{
    return item.index().data(Qt::CheckStateRole).toInt();
}

bool expanded(const Node &item)
{
    const auto *tree = qobject_cast<QTreeView *>(viewOf(item));
    return tree && tree->isExpanded(item.index());
}

bool setModelText(const Node &item, const QString &text)
{
    return editable(item) && setModelData(item, text, Qt::EditRole);
}

bool setCheckState(const Node &item, int state)
{
    return state >= Qt::Unchecked && state <= Qt::Checked && checkable(item)
        && setModelData(item, state, Qt::CheckStateRole);
}

bool setExpanded(const Node &item, bool expanded)
{
    auto *tree = qobject_cast<QTreeView *>(viewOf(item));
    if (tree) {
        tree->setExpanded(item.index(), expanded);
    }
    return tree;
}

int section(const Node &item)
{
    return item.section();
}

int visualIndex(const Node &header)
{
    return headerOf(header)->visualIndex(header.section());
}

int size(const Node &header)
{
    return headerOf(header)->sectionSize(header.section());
}

QString orientation(const Node &header)
{
    return headerOf(header)->orientation() == Qt::Horizontal ? QStringLiteral("Horizontal")
                                                             : QStringLiteral("Vertical");
}

bool setTabText(const Node &tab, const QString &text)
{
    barOf(tab)->setTabText(tab.section(), text);
    return true;
}

bool selected(const Node &item)
{
    switch (item.kind()) {
    case Node::Kind::ModelItem: {
        const QItemSelectionModel *selection = viewOf(item)->selectionModel();
        return selection && selection->isSelected(item.index());
    }
    case Node::Kind::GraphicsItem:
        return item.graphicsItem()->isSelected();
    default:
        return current(item);
    }
}

bool current(const Node &item)
{
    if (item.kind() == Node::Kind::Tab) {
        return barOf(item)->currentIndex() == item.section();
    }
    return viewOf(item)->currentIndex() == item.index();
}

bool setSelected(const Node &item, bool selected)
{
    if (item.kind() == Node::Kind::Tab) {
        return setCurrent(item, selected);
    }
    if (item.kind() == Node::Kind::GraphicsItem) {
        item.graphicsItem()->setSelected(selected);
        return item.graphicsItem()->isSelected() == selected;
    }
    const QAbstractItemView *view = viewOf(item);
    if (!view->selectionModel() || !(item.index().flags() & Qt::ItemIsSelectable)
        || view->selectionMode() == QAbstractItemView::NoSelection) {
        return false;
    }
    const bool isSingle = view->selectionMode() == QAbstractItemView::SingleSelection;
    QItemSelectionModel::SelectionFlags command = QItemSelectionModel::Deselect;
    if (selected) {
        command = isSingle ? QItemSelectionModel::ClearAndSelect : QItemSelectionModel::Select;
    }
    if (view->selectionBehavior() == QAbstractItemView::SelectRows) {
        command |= QItemSelectionModel::Rows;
    } else if (view->selectionBehavior() == QAbstractItemView::SelectColumns) {
        command |= QItemSelectionModel::Columns;
    }
    view->selectionModel()->select(item.index(), command);
    return true;
}

bool setCurrent(const Node &item, bool current)
{
    if (!current) {
        return false; // something else has to become current instead
    }
    if (item.kind() == Node::Kind::Tab) {
        barOf(item)->setCurrentIndex(item.section());
    } else {
        viewOf(item)->setCurrentIndex(item.index());
    }
    return true;
}

double x(const Node &item)
{
    return placeOf(item).x();
}

double y(const Node &item)
{
    return placeOf(item).y();
}

double width(const Node &item)
{
    return placeOf(item).width();
}

double height(const Node &item)
{
    return placeOf(item).height();
}

double zValue(const Node &item)
{
    return item.graphicsItem()->zValue();
}

double rotation(const Node &item)
{
    return item.graphicsItem()->rotation();
}

double scale(const Node &item)
{
    return item.graphicsItem()->scale();
}

double opacity(const Node &item)
{
    return item.graphicsItem()->opacity();
}

} // namespace Vantrel::QtWrapper::ItemProperties
