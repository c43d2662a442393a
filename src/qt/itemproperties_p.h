#ifndef VANTREL_QT_ITEMPROPERTIES_P_H
#define VANTREL_QT_ITEMPROPERTIES_P_H

#include "qt/node_p.h"

namespace Vantrel::QtWrapper {

// What scripts and names read of items. Each is only called for the kinds of
// node that its section names. Writers return false when the item refuses.

namespace ItemProperties {

// Of all kinds.
QString text(const Node &item);
bool visible(const Node &item);
bool enabled(const Node &item);
QString toolTip(const Node &item);

// Of model items.
int row(const Node &item);
int column(const Node &item);
int numRows(const Node &item);
bool editable(const Node &item);
bool checkable(const Node &item);
/** As Qt::CheckState; 0 for an item that has none. */
int checkState(const Node &item);
bool expanded(const Node &item);
bool setModelText(const Node &item, const QString &text);
bool setCheckState(const Node &item, int state);
bool setExpanded(const Node &item, bool expanded);

// Of header sections and tabs, which are counted from 0.
int section(const Node &item);
int visualIndex(const Node &header);
int size(const Node &header);
QString orientation(const Node &header);
bool setTabText(const Node &tab, const QString &text);

// Of model items, tabs and graphics items.
bool selected(const Node &item);
bool current(const Node &item);
bool setSelected(const Node &item, bool selected);
bool setCurrent(const Node &item, bool current);

// Of graphics items, in the coordinates of the scene.
double x(const Node &item);
double y(const Node &item);
double width(const Node &item);
double height(const Node &item);
double zValue(const Node &item);
double rotation(const Node &item);
double scale(const Node &item);
double opacity(const Node &item);

} // namespace ItemProperties

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_ITEMPROPERTIES_P_H
