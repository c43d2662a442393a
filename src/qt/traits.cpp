#include "qt/traits_p.h"

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QColumnView>
#include <QComboBox>
#include <QGraphicsItem>
#include <QGraphicsProxyWidget>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QHeaderView>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMetaProperty>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QScrollBar>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTabBar>
#include <QTextEdit>
#include <QTreeView>
#include <QWindow>

#include <array>
#include <cstring>

namespace Vantrel::QtWrapper {

namespace {

/** Classes that Qt does not export, by their names. */
quint32 flagsOfName(const char *className)
{
    static const struct
    {
        const char *className;
        quint32 flags;
    } rows[] = {
        {"QAbstractScrollAreaScrollBarContainer", Traits::Internal},
        {"QComboBoxPrivateContainer", Traits::Internal | Traits::ComboPopup},
        {"QComboBoxPrivateScroller", Traits::Internal},
        {"QDesktopWidget", Traits::HiddenHelper},
        {"QDesktopScreenWidget", Traits::HiddenHelper},
        {"QTipLabel", Traits::HiddenHelper},
        {"QWhatsThat", Traits::HiddenHelper},
        {"QBalloonTip", Traits::HiddenHelper},
        {"QRubberBand", Traits::HiddenHelper},
        {"QSystemTrayIconSys", Traits::HiddenHelper},
        {"QAlphaWidget", Traits::HiddenHelper},
        {"QMdi::ControlLabel", Traits::HiddenHelper},
        {"QMdi::ControllerWidget", Traits::HiddenHelper},
        {"QRollEffect", Traits::HiddenHelper},
        {"QWidgetWindow", Traits::WidgetWindow},
    };
    for (const auto &row : rows) {
        if (std::strcmp(className, row.className) == 0) {
            return row.flags;
        }
    }
    return 0;
}

bool isPlainContainer(const QMetaObject *meta)
{
    return meta == &QWidget::staticMetaObject || meta == &QFrame::staticMetaObject
        || meta == &QStackedWidget::staticMetaObject;
}

quint32 flagsOf(const QMetaObject *meta)
{
    static const struct
    {
        const QMetaObject *base;
        quint32 flags;
    } rows[] = {
        {&QAction::staticMetaObject, Traits::Action},
        {&QWindow::staticMetaObject, Traits::Window},
        {&QLayout::staticMetaObject, Traits::Layout},
        {&QGraphicsObject::staticMetaObject, Traits::GraphicsObject},
        {&QGraphicsProxyWidget::staticMetaObject, Traits::ProxyWidget},
        {&QMenu::staticMetaObject, Traits::Menu},
        {&QMenuBar::staticMetaObject, Traits::MenuBar},
        {&QAbstractItemView::staticMetaObject, Traits::ItemView},
        {&QHeaderView::staticMetaObject, Traits::HeaderView},
        {&QColumnView::staticMetaObject, Traits::ColumnView},
        {&QTabBar::staticMetaObject, Traits::TabBar},
        {&QGraphicsView::staticMetaObject, Traits::GraphicsView},
        {&QAbstractScrollArea::staticMetaObject, Traits::ScrollArea},
        {&QAbstractSpinBox::staticMetaObject, Traits::SpinBox | Traits::Content},
        {&QLineEdit::staticMetaObject, Traits::LineEdit | Traits::Content},
        {&QComboBox::staticMetaObject, Traits::Content},
        {&QTextEdit::staticMetaObject, Traits::Content},
        {&QPlainTextEdit::staticMetaObject, Traits::Content},
        {&QKeySequenceEdit::staticMetaObject, Traits::Content},
        {&QStackedWidget::staticMetaObject, Traits::Stack},
        {&QProgressBar::staticMetaObject, Traits::Content},
        {&QScrollBar::staticMetaObject, Traits::ScrollBar},
        {&QStatusBar::staticMetaObject, Traits::StatusBar},
        {&QLabel::staticMetaObject, Traits::Label},
    };
    quint32 flags = flagsOfName(meta->className());
    for (const auto &row : rows) {
        if (meta->inherits(row.base)) {
            flags |= row.flags;
        }
    }
    if (flags & Traits::HeaderView) {
        flags &= ~quint32(Traits::ItemView);
    }
    return isPlainContainer(meta) ? flags | Traits::PlainContainer : flags;
}

int propertyOf(const QMetaObject *meta, std::initializer_list<const char *> names)
{
    for (const char *name : names) {
        const int index = meta->indexOfProperty(name);
        if (index != -1) {
            return index;
        }
    }
    return -1;
}

/** Labels are read as texts without asking further. */
int textPropertyOf(const QMetaObject *meta, std::initializer_list<const char *> names)
{
    for (const char *name : names) {
        const int index = meta->indexOfProperty(name);
        if (index != -1 && meta->property(index).userType() == QMetaType::QString) {
            return index;
        }
    }
    return -1;
}

Traits makeTraits(const QMetaObject *meta)
{
    Traits traits;
    traits.flags = flagsOf(meta);
    if (traits.is(Traits::Content)) {
        traits.labelProperty = textPropertyOf(meta, {"placeholderText"});
        traits.contentProperty =
            propertyOf(meta, {"currentText", "plainText", "keySequence", "text"});
    } else {
        traits.labelProperty = textPropertyOf(meta, {"text", "title"});
    }
    return traits;
}

/** Meta objects of objects with dynamic ones may come and go, so an entry is checked. */
struct Entry
{
    bool isOf(const QMetaObject *other) const
    {
        return meta == other && className == other->className()
            && superClass == other->superClass();
    }

    const QMetaObject *meta = nullptr;
    const char *className = nullptr;
    const QMetaObject *superClass = nullptr;
    Traits traits;
};

bool isNamedByQt(const QObject *object)
{
    return object->objectName().startsWith(QLatin1String("qt_"));
}

bool isHiddenPart(const QWidget *widget, Traits traits, const QWidget *parent)
{
    const Traits parentTraits = traitsOf(parent);
    if (parentTraits.is(Traits::ScrollArea)) {
        return static_cast<const QAbstractScrollArea *>(parent)->viewport() == widget;
    }
    if (traits.is(Traits::LineEdit)) {
        return parentTraits.is(Traits::SpinBox);
    }
    const QWidget *grandParent = parent->parentWidget();
    if (!grandParent) {
        return false;
    }
    // Headers are scrolled by their view, whose columns are views themselves.
    return (traits.is(Traits::ScrollBar) && traitsOf(grandParent).is(Traits::HeaderView))
        || (traits.is(Traits::ItemView) && traitsOf(grandParent).is(Traits::ColumnView)
            && static_cast<const QAbstractItemView *>(grandParent)->viewport() == parent);
}

} // namespace

Traits traitsOf(const QObject *object)
{
    static std::array<Entry, 512> entries;
    const QMetaObject *meta = object->metaObject();
    Entry &entry = entries[(quintptr(meta) >> 4) % entries.size()];
    if (!entry.isOf(meta)) {
        entry = {meta, meta->className(), meta->superClass(), makeTraits(meta)};
    }
    return entry.traits;
}

bool isPlumbing(const QWidget *widget)
{
    const QWidget *parent = widget->parentWidget();
    return parent && isPlumbing(widget, traitsOf(widget), parent);
}

bool isPlumbing(const QWidget *widget, Traits traits, const QWidget *parent)
{
    if (widget->isWindow() && !traits.is(Traits::ComboPopup)) {
        return false;
    }
    return traits.is(Traits::Internal) || (traits.is(Traits::PlainContainer) && isNamedByQt(widget))
        || isHiddenPart(widget, traits, parent);
}

QWidget *homeOf(const QAction *action)
{
    QWidget *home = nullptr;
    const auto widgets = action->associatedWidgets();
    for (QWidget *widget : widgets) {
        const Traits traits = traitsOf(widget);
        if (traits.is(Traits::Menu) && widget->isVisible()) {
            return widget;
        }
        if (!home && traits.is(Traits::Menu | Traits::MenuBar)) {
            home = widget;
        }
    }
    return home;
}

QGraphicsView *homeOf(const QGraphicsItem *item)
{
    const QGraphicsScene *scene = item->scene();
    return scene && !scene->views().isEmpty() ? scene->views().constFirst() : nullptr;
}

bool isTreeObject(QObject *object)
{
    if (object == QCoreApplication::instance()) {
        return true;
    }
    const Traits traits = traitsOf(object);
    if (object->isWidgetType()) {
        const auto *widget = static_cast<QWidget *>(object);
        return !isPlumbing(widget)
            && (!traits.is(Traits::HiddenHelper) || !widget->isWindow() || widget->isVisible());
    }
    if (traits.is(Traits::Action)) {
        return homeOf(static_cast<QAction *>(object));
    }
    if (traits.is(Traits::GraphicsObject)) {
        return homeOf(static_cast<QGraphicsObject *>(object));
    }
    return traits.is(Traits::Window) && !traits.is(Traits::WidgetWindow);
}

bool showsTree(const QAbstractItemView *view)
{
    return view->inherits("QTreeView") || traitsOf(view).is(Traits::ColumnView);
}

QString readText(const QObject *object, int propertyIndex)
{
    QString text;
    QVariant boxed;
    int status = -1; // becomes another value when the class prefers the QVariant
    void *result[] = {&text, &boxed, &status};
    QMetaObject::metacall(const_cast<QObject *>(object), QMetaObject::ReadProperty, propertyIndex,
                          result);
    return status == -1 ? text : boxed.toString();
}

QString contentOf(const Node &node)
{
    const QObject *object = node.object();
    const Traits traits = object ? traitsOf(object) : Traits();
    if (traits.is(Traits::StatusBar)) {
        return static_cast<const QStatusBar *>(object)->currentMessage();
    }
    const int index = traits.contentProperty;
    return index == -1 ? QString() : object->metaObject()->property(index).read(object).toString();
}

QString withoutMnemonics(const QString &text)
{
    if (!text.contains(QLatin1Char('&'))) {
        return text;
    }
    QString result;
    result.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        // Scripts without Latin letters append the accelerator: "File (&F)".
        if (text.mid(i, 2) == QLatin1String("(&") && text.mid(i + 3, 1) == QLatin1String(")")) {
            while (result.endsWith(QLatin1Char(' '))) {
                result.chop(1);
            }
            i += 3;
            continue;
        }
        if (text.at(i) == QLatin1Char('&') && ++i == text.size()) {
            break;
        }
        result += text.at(i);
    }
    return result;
}

} // namespace Vantrel::QtWrapper
