#ifndef VANTREL_QT_TRAITS_P_H
#define VANTREL_QT_TRAITS_P_H

#include "qt/node_p.h"

class QAction;
class QObject;

namespace Vantrel::QtWrapper {

/**
 * What the tree needs to know of a class of QObjects. Finding it out takes a
 * walk along the super classes, so it is kept.
 */
struct Traits
{
    enum Flag : quint32 {
        Action = 0x1,
        Window = 0x2,
        WidgetWindow = 0x4, ///< the QWindow behind a widget
        GraphicsObject = 0x8,
        Menu = 0x10,
        MenuBar = 0x20,
        ItemView = 0x40, ///< without headers
        HeaderView = 0x80,
        TabBar = 0x100,
        GraphicsView = 0x200,
        ScrollArea = 0x400,
        SpinBox = 0x800,
        LineEdit = 0x1000,
        ScrollBar = 0x2000,
        Label = 0x4000,
        ComboPopup = 0x8000, ///< the window that holds the view of a combo box
        Internal = 0x10000, ///< a class that no user sees
        PlainContainer = 0x20000, ///< shows nothing itself
        Content = 0x40000, ///< its text is what a user types
        HiddenHelper = 0x80000, ///< as a window it counts only while it is shown
        Layout = 0x100000,
        ProxyWidget = 0x200000,
        ColumnView = 0x400000,
        Stack = 0x800000,
        StatusBar = 0x1000000,
        /** Every other widget is a node of its own, below whatever but these: */
        PerhapsPlumbing = Internal | PlainContainer | LineEdit | ScrollBar | ItemView | ComboPopup,
        PlumbedContainer = ScrollArea,
        /** Has children that are not among its child widgets. */
        HasParts = Menu | MenuBar | ItemView | HeaderView | TabBar | GraphicsView
    };

    bool is(quint32 anyOf) const { return flags & anyOf; }

    quint32 flags = 0;
    /** The property that holds the label; -1 when there is none. */
    int labelProperty = -1;
    /** The property that holds what a user fills in; -1 when there is none. */
    int contentProperty = -1;
};

Traits traitsOf(const QObject *object);

/** Whether a widget is not part of the tester's tree, so that its children take its place. */
bool isPlumbing(const QWidget *widget);
/** The same for a widget whose class and @p parent, which must not be null, are known. */
bool isPlumbing(const QWidget *widget, Traits traits, const QWidget *parent);
/** The menu or menu bar that an action is an item of, or null. */
QWidget *homeOf(const QAction *action);
/** The view that graphics items of a scene are children of; null for an item without. */
QGraphicsView *homeOf(const QGraphicsItem *item);
/** Whether an object is a node of the tester's tree. */
bool isTreeObject(QObject *object);
/** Whether the view shows the children of its items. */
bool showsTree(const QAbstractItemView *view);

/**
 * A property of the type QString by its index over the hierarchy. Quicker than
 * QMetaProperty, which passes it through a QVariant.
 */
QString readText(const QObject *object, int propertyIndex);
/** What a user has typed into or chosen in a widget whose text is no label. */
QString contentOf(const Node &node);
/** A text without the marks of keyboard accelerators. */
QString withoutMnemonics(const QString &text);

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_TRAITS_P_H
