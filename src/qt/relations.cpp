#include "qt/relations_p.h"

#include "qt/traits_p.h"

#include <QFormLayout>
#include <QLabel>
#include <QMainWindow>
#include <QWidget>

#include <limits>

namespace Vantrel::QtWrapper {

namespace {

constexpr int notBeside = std::numeric_limits<int>::max();

/** Pixels between two widgets that are side by side; notBeside when they are not. */
int distanceToLeft(const QRect &from, const QRect &to)
{
    const bool isLevel = to.top() <= from.bottom() && from.top() <= to.bottom();
    return isLevel && to.right() < from.left() ? from.left() - to.right() : notBeside;
}

int distanceUpwards(const QRect &from, const QRect &to)
{
    const bool isInLine = to.left() <= from.right() && from.left() <= to.right();
    return isInLine && to.bottom() < from.top() ? from.top() - to.bottom() : notBeside;
}

template <class Widgets, class Distance>
auto nearest(const Widgets &widgets, const QWidget *from, Distance distance)
{
    typename Widgets::value_type found = nullptr;
    int shortest = notBeside;
    for (auto *widget : widgets) {
        if (widget == from || widget->isHidden()) {
            continue;
        }
        const int length = distance(from->geometry(), widget->geometry());
        if (length < shortest) {
            shortest = length;
            found = widget;
        }
    }
    return found;
}

bool hasSiblings(const QWidget *widget)
{
    return widget && !widget->isWindow() && widget->parentWidget();
}

/** The layouts inside of a layout are looked through too. */
QLabel *labelInForm(QLayout *layout, QWidget *widget)
{
    if (const auto *form = qobject_cast<QFormLayout *>(layout)) {
        if (auto *label = qobject_cast<QLabel *>(form->labelForField(widget))) {
            return label;
        }
    }
    // That of a main window complains when it is asked.
    const bool isCountable = layout && !qobject_cast<QMainWindow *>(layout->parent());
    for (int i = 0; isCountable && i < layout->count(); ++i) {
        if (QLayout *inner = layout->itemAt(i)->layout()) {
            if (QLabel *label = labelInForm(inner, widget)) {
                return label;
            }
        }
    }
    return nullptr;
}

} // namespace

const Relations::Siblings &Relations::siblingsOf(const QWidget *widget)
{
    const QWidget *parent = widget->parentWidget();
    const auto known = m_siblings.constFind(parent);
    if (known != m_siblings.constEnd()) {
        return *known;
    }
    Siblings siblings;
    for (QObject *child : parent->children()) {
        auto *sibling = qobject_cast<QWidget *>(child);
        if (!sibling || sibling->isWindow() || isPlumbing(sibling)) {
            continue;
        }
        siblings.widgets.push_back(sibling);
        if (traitsOf(sibling).is(Traits::Label)) {
            siblings.labels.push_back(static_cast<QLabel *>(sibling));
        }
    }
    return *m_siblings.insert(parent, siblings);
}

Node Relations::buddyOf(const Node &node)
{
    QWidget *widget = node.widget();
    if (!hasSiblings(widget)) {
        return Node();
    }
    const auto &labels = siblingsOf(widget).labels;
    for (QLabel *label : labels) {
        if (label->buddy() == widget) {
            return Node(label);
        }
    }
    if (QLabel *label = labelInForm(widget->parentWidget()->layout(), widget)) {
        return Node(label);
    }
    // What stands between belongs to the label itself.
    const auto &widgets = siblingsOf(widget).widgets;
    for (const auto distance : {distanceToLeft, distanceUpwards}) {
        QWidget *beside = nearest(widgets, widget, distance);
        if (beside && traitsOf(beside).is(Traits::Label)) {
            return Node(beside);
        }
    }
    return Node();
}

Node Relations::leftOf(const Node &node)
{
    const QWidget *widget = node.widget();
    return hasSiblings(widget) ? Node(nearest(siblingsOf(widget).widgets, widget, distanceToLeft))
                               : Node();
}

Node Relations::above(const Node &node)
{
    const QWidget *widget = node.widget();
    return hasSiblings(widget) ? Node(nearest(siblingsOf(widget).widgets, widget, distanceUpwards))
                               : Node();
}

} // namespace Vantrel::QtWrapper
