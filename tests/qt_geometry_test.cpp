#include "qt_support.h"

#include "objectmodel/delegates.h"
#include "objectmodel/uielement.h"

#include <QApplication>
#include <QDialog>
#include <QGraphicsProxyWidget>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QHeaderView>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScrollArea>
#include <QStandardItemModel>
#include <QTabBar>
#include <QTableView>

#include <gtest/gtest.h>

using namespace Vantrel;
using QtSupport::find;

namespace {

QString text(const QRect &rect)
{
    return QStringLiteral("%1,%2 %3x%4")
        .arg(QString::number(rect.x()), QString::number(rect.y()), QString::number(rect.width()),
             QString::number(rect.height()));
}

GeometryDelegate *delegateOf(const SharedPtr<Object> &object)
{
    return DelegateFactory::self()->find<GeometryDelegate>(object->type());
}

QRect boundsOf(const SharedPtr<Object> &object)
{
    const GeometryDelegate::Rect rect = delegateOf(object)->globalBounds(object);
    return QRect(rect.x, rect.y, rect.width, rect.height);
}

QRect visibleBoundsOf(const SharedPtr<Object> &object)
{
    ScreenRectangle rect;
    EXPECT_TRUE(DelegateFactory::self()
                    ->find<DumpObjectTreeDelegate>(object->type())
                    ->visibleGlobalBounds(object, &rect));
    return QRect(rect.x, rect.y, rect.width, rect.height);
}

/** The global rectangle of a part of a widget. */
QRect global(const QWidget *widget, const QRect &rect)
{
    return QRect(widget->mapToGlobal(rect.topLeft()), rect.size());
}

/** A window with something of each kind, laid out by hand. */
class Geometry : public ::testing::Test
{
protected:
    Geometry()
    {
        window.setObjectName(QStringLiteral("geoWindow"));
        window.setGeometry(100, 100, 600, 500);
        menu = window.menuBar()->addMenu(QStringLiteral("GeoFile"));
        open = menu->addAction(QStringLiteral("GeoOpen"));
        button = add<QPushButton>(QStringLiteral("geoButton"), QRect(10, 40, 100, 30));
        bar = add<QTabBar>(QStringLiteral("geoTabs"), QRect(10, 80, 300, 30));
        bar->addTab(QStringLiteral("GeoFirst"));
        bar->addTab(QStringLiteral("GeoSecond"));
        table = add<QTableView>(QStringLiteral("geoTable"), QRect(10, 120, 300, 150));
        model.setItem(1, 1, new QStandardItem(QStringLiteral("GeoCell")));
        model.setHorizontalHeaderLabels({QStringLiteral("GeoA"), QStringLiteral("GeoB")});
        table->setModel(&model);
        view = add<QGraphicsView>(QStringLiteral("geoView"), QRect(320, 40, 250, 250));
        view->setScene(&scene);
        scene.setSceneRect(0, 0, 200, 200);
        window.show();
        QCoreApplication::processEvents();
    }

    template <class Widget>
    Widget *add(const QString &name, const QRect &rect)
    {
        auto *widget = new Widget(&window);
        widget->setObjectName(name);
        widget->setGeometry(rect);
        return widget;
    }

    static SharedPtr<Object> objectAt(const QPoint &position)
    {
        const SharedPtr<Object> root = find("{name='geoWindow'}");
        return delegateOf(root)->objectAt(nullptr, position.x(), position.y());
    }

    QStandardItemModel model{3, 2};
    QGraphicsScene scene;
    QMainWindow window;
    QMenu *menu;
    QAction *open;
    QPushButton *button;
    QTabBar *bar;
    QTableView *table;
    QGraphicsView *view;
};

} // namespace

TEST_F(Geometry, KnowsThePlaceOfEveryKindOfObject)
{
    QHeaderView *header = table->horizontalHeader();
    const QRect section(header->sectionViewportPosition(1), 0, header->sectionSize(1),
                        header->height());
    const struct
    {
        const char *what;
        const char *name;
        QRect expected;
    } rows[] = {
        {"a widget", "{name='geoButton'}", global(button, button->rect())},
        {"a window without its frame", "{name='geoWindow'}", QRect(100, 100, 600, 500)},
        {"a tab", "{type='TabItem' text='GeoSecond'}", global(bar, bar->tabRect(1))},
        {"an item of a view", "{type='ModelItem' text='GeoCell'}",
         global(table->viewport(), table->visualRect(model.index(1, 1)))},
        {"a header section", "{type='HeaderSection' text='GeoB'}",
         global(header->viewport(), section)},
        {"an item of a menu bar", "{type='QAction' text='GeoFile'}",
         global(window.menuBar(), window.menuBar()->actionGeometry(menu->menuAction()))},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const SharedPtr<Object> object = find(row.name);
        ASSERT_TRUE(object);
        EXPECT_EQ(text(row.expected), text(boundsOf(object)));
        EXPECT_TRUE(delegateOf(object)->isVisible(object));
        const SharedPtr<Object> found = objectAt(row.expected.center());
        ASSERT_TRUE(found);
        EXPECT_TRUE(found->sameAs(object) || qstrcmp(row.what, "a window without its frame") == 0);
    }
}

TEST_F(Geometry, GivesMenuItemsAPlaceOnlyWhileTheirMenuIsOpen)
{
    const SharedPtr<Object> item = find("{type='QAction' text='GeoOpen'}");
    ASSERT_TRUE(item);
    EXPECT_FALSE(boundsOf(item).isValid());
    menu->popup(button->mapToGlobal(QPoint(0, 0)));
    const QRect bounds = boundsOf(item);
    EXPECT_EQ(text(global(menu, menu->actionGeometry(open))), text(bounds));
    const SharedPtr<Object> found = objectAt(bounds.center());
    EXPECT_TRUE(found && found->sameAs(item)) << "a popup covers the button below it";
    menu->close();
    EXPECT_FALSE(boundsOf(item).isValid());
}

TEST_F(Geometry, TransformsWhatIsInAScene)
{
    auto *rect = scene.addRect(0, 0, 40, 20);
    rect->setPos(100, 100);
    rect->setRotation(90);
    auto *inside = new QPushButton;
    inside->setObjectName(QStringLiteral("geoInside"));
    inside->resize(50, 20);
    QGraphicsProxyWidget *proxy = scene.addWidget(inside);
    proxy->setScale(2);
    const QPoint origin = view->viewport()->mapToGlobal(view->mapFromScene(0, 0));

    const SharedPtr<Object> turned = find("{type='QGraphicsRectItem' container={name='geoView'}}");
    ASSERT_TRUE(turned);
    const QRect bounds = boundsOf(turned).translated(-origin);
    EXPECT_TRUE(bounds.contains(QRect(80, 100, 20, 40))) << qPrintable(text(bounds));
    EXPECT_TRUE(QRect(78, 98, 24, 44).contains(bounds)) << qPrintable(text(bounds));

    const SharedPtr<Object> embedded = find("{name='geoInside'}");
    ASSERT_TRUE(embedded);
    EXPECT_EQ(text(QRect(origin, QSize(100, 40))), text(boundsOf(embedded)));
    const SharedPtr<Object> found = objectAt(origin + QPoint(90, 30));
    EXPECT_TRUE(found && found->sameAs(embedded));
    proxy->setPos(180, 0);
    EXPECT_LT(visibleBoundsOf(embedded).right(), view->mapToGlobal(view->rect().bottomRight()).x());
}

TEST_F(Geometry, ClipsByAncestorsAndSkipsWhatIsHidden)
{
    auto *area = add<QScrollArea>(QStringLiteral("geoArea"), QRect(10, 300, 200, 100));
    auto *content = new QWidget;
    content->resize(150, 500);
    auto *low = new QPushButton(content);
    low->setObjectName(QStringLiteral("geoLow"));
    low->setGeometry(0, 80, 100, 50);
    area->setWidget(content);
    area->show();
    QCoreApplication::processEvents();
    const SharedPtr<Object> object = find("{name='geoLow'}");
    ASSERT_TRUE(object);
    EXPECT_EQ(50, boundsOf(object).height());
    EXPECT_EQ(area->viewport()->height() - 80, visibleBoundsOf(object).height());
    const QPoint middle = low->mapToGlobal(QPoint(50, 5));
    EXPECT_TRUE(objectAt(middle)->sameAs(object));
    low->hide();
    EXPECT_TRUE(visibleBoundsOf(object).isEmpty());
    EXPECT_FALSE(objectAt(middle)->sameAs(object));

    auto *overlay = add<QLabel>(QStringLiteral("geoOverlay"), window.rect());
    overlay->show();
    const QPoint over = button->mapToGlobal(button->rect().center());
    EXPECT_TRUE(objectAt(over)->sameAs(find("{name='geoOverlay'}")));
    overlay->setAttribute(Qt::WA_TransparentForMouseEvents);
    EXPECT_TRUE(objectAt(over)->sameAs(find("{name='geoButton'}"))) << "the mouse goes through";
}

TEST_F(Geometry, PutsADialogInFrontOfItsOwner)
{
    QDialog dialog(&window);
    dialog.setObjectName(QStringLiteral("geoDialog"));
    dialog.setModal(true);
    dialog.setGeometry(window.geometry());
    dialog.show();
    window.activateWindow();
    QCoreApplication::processEvents();
    const QPoint over = button->mapToGlobal(button->rect().center());
    EXPECT_TRUE(objectAt(over)->sameAs(find("{name='geoDialog'}")));
    // Below an object that is given, other windows do not matter.
    const SharedPtr<Object> root = find("{name='geoWindow'}");
    const SharedPtr<Object> found = delegateOf(root)->objectAt(root, over.x(), over.y());
    EXPECT_TRUE(found && found->sameAs(find("{name='geoButton'}")));
    EXPECT_FALSE(delegateOf(root)->objectAt(root, 5000, 5000));
}
