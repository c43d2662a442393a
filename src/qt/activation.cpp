#include "qt/actions.h"

#include "qt/aim_p.h"
#include "qt/geometry_p.h"
#include "qt/handles_p.h"
#include "qt/readiness_p.h"

#include "objectmodel/object.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QMenu>
#include <QPushButton>
#include <QStyle>
#include <QStyleOptionGroupBox>
#include <QToolButton>

namespace Vantrel::QtWrapper {

namespace {

const QString &operationName()
{
    static const QString name = QStringLiteral("activate");
    return name;
}

bool hoverOver(MouseInput input)
{
    input.button = Qt::NoButton;
    return moveMouse(input) != Delivery::Quitting;
}

/** Presses on a thing until a popup opens, as buttons with a delayed menu want it. */
bool openByPress(const SharedPtr<Object> &opener, const QPoint &position,
                 const QPointer<QWidget> &popup)
{
    const std::optional<MouseInput> input = aimAt(operationName(), opener, position);
    if (!input) {
        return false;
    }
    bool isRunning = hoverOver(*input);
    if (popup && popup->isVisible()) {
        // A menu bar switches its menus so, and a click would close the new one.
        return true;
    }
    isRunning = isRunning && pressMouse(*input) != Delivery::Quitting;
    Deadline deadline(actionTimeout());
    while (isRunning && popup && !popup->isVisible()) {
        isRunning = deadline.waitForNextLook();
    }
    releaseMouse(*input);
    if (popup && popup->isVisible()) {
        return true;
    }
    return failWith(
        operationName(),
        QStringLiteral("a click on %1 did not open its menu for %2 ms%3")
            .arg(describe(nodeOf(opener)), QString::number(deadline.elapsed()), deadline.remark()));
}

/** The button that opens a menu, or null. */
QWidget *buttonOf(const QMenu *menu)
{
    for (QWidget *widget : QApplication::allWidgets()) {
        const auto *push = qobject_cast<const QPushButton *>(widget);
        const auto *tool = qobject_cast<const QToolButton *>(widget);
        const QMenu *opened = push ? push->menu() : tool ? tool->menu() : nullptr;
        const bool isOpener = opened == menu
            || (tool && tool->defaultAction() && tool->defaultAction()->menu() == menu);
        if (isOpener && widget->isVisible()) {
            return widget;
        }
    }
    return nullptr;
}

/** Where a button opens its menu. */
QPoint menuPosition(const QWidget *button)
{
    const auto *tool = qobject_cast<const QToolButton *>(button);
    return tool && tool->popupMode() == QToolButton::MenuButtonPopup
        ? QPoint(tool->width() - 4, tool->height() / 2)
        : nowhere;
}

/** Menus that are opened on the way to one, which may have been added to each other in a circle. */
constexpr int maxNestedMenus = 64;

bool openMenu(const QPointer<QMenu> &menu, int depth = 0);

/** Opens the menu that a menu item is in. */
bool showAction(QAction *action, int depth = 0)
{
    auto *menu = qobject_cast<QMenu *>(Node(action).host());
    return !menu || openMenu(menu, depth);
}

/** Refused at once, because menus ask for the state of their items when they open. */
bool isActionEnabled(const QAction *action)
{
    return action->isEnabled()
        || failWith(operationName(),
                    QStringLiteral("the menu item '%1' is not enabled").arg(action->text()));
}

bool openMenu(const QPointer<QMenu> &menu, int depth)
{
    if (menu->isVisible()) {
        return true;
    }
    if (depth == maxNestedMenus) {
        return failWith(operationName(),
                        QStringLiteral("nothing opens the menu '%1', which is below itself")
                            .arg(menu->title()));
    }
    const QPointer<QAction> action(menu->menuAction());
    if (Node(action).host()) {
        return showAction(action, depth + 1) && action && isActionEnabled(action)
            && openByPress(handleOf(action.data()), nowhere, menu.data());
    }
    QWidget *const button = buttonOf(menu);
    return button
        ? openByPress(handleOf(button), menuPosition(button), menu.data())
        : failWith(operationName(),
                   QStringLiteral("nothing opens the menu '%1'; open it first").arg(menu->title()));
}

bool clickOn(const SharedPtr<Object> &object, const QPoint &position = nowhere)
{
    const std::optional<MouseInput> input = aimAt(operationName(), object, position);
    if (!input) {
        return false;
    }
    return (hoverOver(*input) && click(*input) != Delivery::Quitting)
        || failQuitting(operationName());
}

bool activateAction(const SharedPtr<Object> &object, const QPointer<QAction> &action)
{
    if (!action->isVisible()) {
        return failWith(operationName(),
                        QStringLiteral("the menu item '%1' is not visible").arg(action->text()));
    }
    if (!showAction(action)) {
        return false;
    }
    if (!action) {
        return failWith(operationName(), QStringLiteral("the menu item was destroyed"));
    }
    return isActionEnabled(action) && clickOn(object);
}

/** The combo box whose list a view is; null for other views. */
QComboBox *comboBoxOf(const QWidget *view)
{
    for (QWidget *widget = view ? view->parentWidget() : nullptr; widget;
         widget = widget->parentWidget()) {
        auto *box = qobject_cast<QComboBox *>(widget);
        if (box && box->view() == view) {
            return box;
        }
    }
    return nullptr;
}

bool activateComboItem(const SharedPtr<Object> &object, QComboBox *box)
{
    QAbstractItemView *const view = box->view();
    // The arrow is at the end; the middle of an editable box is for typing.
    const QPoint arrow = box->isEditable()
        ? QPoint(box->isRightToLeft() ? 6 : box->width() - 6, box->height() / 2)
        : nowhere;
    return (view->isVisible() || openByPress(handleOf(box), arrow, view)) && clickOn(object);
}

bool activateItem(const SharedPtr<Object> &object, const Node &node)
{
    QComboBox *const box = comboBoxOf(node.host());
    return box ? activateComboItem(object, box) : mouseDoubleClick(object);
}

/** The check box of a group; nowhere for other objects. */
QPoint activePosition(const Node &node)
{
    const auto *group = qobject_cast<const QGroupBox *>(node.object());
    if (!group || !group->isCheckable()) {
        return nowhere;
    }
    QStyleOptionGroupBox option;
    option.initFrom(group);
    option.text = group->title();
    option.textAlignment = group->alignment();
    option.subControls = QStyle::SC_GroupBoxFrame | QStyle::SC_GroupBoxCheckBox
        | (group->title().isEmpty() ? QStyle::SC_None : QStyle::SC_GroupBoxLabel);
    return group->style()
        ->subControlRect(QStyle::CC_GroupBox, &option, QStyle::SC_GroupBoxCheckBox, group)
        .center();
}

} // namespace

bool activate(const SharedPtr<Object> &object)
{
    const Node node = nodeOf(object);
    if (!node) {
        return failWith(operationName(), absence());
    }
    if (auto *action = qobject_cast<QAction *>(node.object())) {
        return activateAction(object, action);
    }
    if (auto *menu = qobject_cast<QMenu *>(node.object())) {
        return openMenu(menu);
    }
    return node.kind() == Node::Kind::ModelItem ? activateItem(object, node)
                                                : clickOn(object, activePosition(node));
}

} // namespace Vantrel::QtWrapper
