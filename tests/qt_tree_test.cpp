#include "qt_trees.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <type_traits>

using namespace Vantrel;
using namespace VantrelTest;
using QtWrapper::handleFor;
using QtWrapper::qobjectFor;

namespace {

SharedPtr<Object> itemOf(QObject *view, const QString &text)
{
    for (const auto &child : handleFor(view)->children()) {
        if (child->name() == text) {
            return child;
        }
    }
    return {};
}

bool set(const SharedPtr<Object> &object, const char *name, const SharedPtr<Object> &value)
{
    return object->type()->property(QString::fromLatin1(name))->set(object, value);
}

/** Does something whenever its property is read. */
class Getter : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString text READ text)

public:
    using QWidget::QWidget;
    QString text() const
    {
        act();
        return QStringLiteral("getter");
    }
    std::function<void()> act;
};

/** One that has a row more whenever it is asked, and does something when its data is read. */
class UnsteadyModel : public QAbstractListModel
{
public:
    int rowCount(const QModelIndex &) const override { return ++m_numRows; }
    QVariant data(const QModelIndex &, int) const override
    {
        act();
        return QVariant();
    }
    std::function<void()> act = [] {};

private:
    mutable int m_numRows = 0;
};

/** Counts how often more rows are asked for. */
class LazyModel : public QStandardItemModel
{
public:
    bool canFetchMore(const QModelIndex &) const override { return true; }
    void fetchMore(const QModelIndex &) override { ++numFetched; }
    int numFetched = 0;
};

} // namespace

TEST(QtTree, ShowsWhatATesterSees)
{
    const auto window = richWindow(QStringLiteral("What a tester sees"));
    const QStringList children = childrenOf(window.get());
    for (const char *child : {"QMenuBar QMenuBar", "QToolBar Tools", "QTabWidget QTabWidget",
                              "QDockWidget Dock", "QStatusBar QStatusBar"}) {
        EXPECT_TRUE(children.contains(QLatin1String(child))) << child;
    }
    auto *tabs = window->findChild<QTabWidget *>();
    EXPECT_EQ(
        QStringList({QStringLiteral("QWidget Form"), QStringLiteral("QTableWidget Table"),
                     QStringLiteral("QTreeWidget Tree"),
                     QStringLiteral("QGraphicsView Scene"),
                     QStringLiteral("QTabBar qt_tabwidget_tabbar")}),
        childrenOf(tabs));
    tabs->setCurrentIndex(2); // reorders the children of the stack
    EXPECT_EQ(QStringLiteral("QTreeWidget Tree"), childrenOf(tabs).value(2));
    EXPECT_EQ(QStringList({QStringLiteral("TabItem Form"), QStringLiteral("TabItem Table"),
                           QStringLiteral("TabItem Tree"), QStringLiteral("TabItem Scene")}),
              childrenOf(tabs->tabBar()).mid(2)); // behind its two buttons to scroll
    EXPECT_TRUE(childrenOf(window->findChild<QSpinBox *>()).isEmpty());
    const QStringList inTree = childrenOf(window->findChild<QTreeWidget *>());
    EXPECT_EQ(2, inTree.filter(QRegularExpression(QStringLiteral("ModelItem [xy]"))).size());
}

TEST(QtTree, HangsMenusBelowTheirActions)
{
    const auto window = richWindow(QStringLiteral("Menus below actions"));
    const auto bar = handleFor(window->menuBar());
    const auto file = bar->childByName(QStringLiteral("File"));
    ASSERT_TRUE(file);
    EXPECT_EQ(QStringLiteral("QAction"), file->className());
    const auto menu = file->child(0);
    EXPECT_EQ(QStringList({QStringLiteral("QAction Open"), QStringLiteral("QAction QAction"),
                           QStringLiteral("QAction Recent")}),
              childrenOf(menu));
    // A context menu takes over the actions that it shares while it is open.
    QMenu context(window.get());
    context.addAction(window->menuBar()->actions().constFirst()->menu()->actions().constFirst());
    const int numTopLevel = Inspector::self()->numObjects();
    context.popup(QPoint(5, 5));
    EXPECT_EQ(numTopLevel + 1, Inspector::self()->numObjects());
    EXPECT_EQ(1, handleFor(&context)->numChildren());
    EXPECT_EQ(2, menu->numChildren());
    context.close();
    EXPECT_EQ(window.get(), qobjectFor(handleFor(&context)->parent()));
    EXPECT_EQ(3, menu->numChildren());
}

TEST(QtTree, CopesWithMenusThatContainEachOther)
{
    QWidget window;
    auto *menu = new QMenu(QStringLiteral("circle"), &window);
    auto *inner = new QMenu(QStringLiteral("inner"), &window);
    auto *owned = new QMenu(QStringLiteral("owned"), inner);
    menu->addMenu(menu);
    menu->addMenu(inner);
    inner->addMenu(menu);
    owned->addMenu(inner);
    for (QMenu *each : {menu, inner, owned}) {
        EXPECT_EQ(each, findQObject(handleFor(each)->qualifiedName()));
        EXPECT_EQ(each,
                  findQObject(QStringLiteral("{type='QMenu' text='%1' window={type='QWidget'}}")
                                  .arg(each->title())));
    }
}

TEST(QtTree, ReachesPlumbingByItsName)
{
    QScrollArea area;
    area.setWidget(new QLabel(QStringLiteral("inside")));
    const auto handle = handleFor(&area);
    EXPECT_EQ(QStringLiteral("QLabel inside"), childrenOf(handle).value(0));
    const QString name = QStringLiteral("qt_scrollarea_viewport");
    EXPECT_EQ(area.viewport(), qobjectFor(handle->childByName(name)));
    EXPECT_EQ(&area, qobjectFor(handleFor(area.viewport())->parent()));
    EXPECT_FALSE(handle->childByName(QStringLiteral("no such child")));
    EXPECT_FALSE(handle->childByName(QString()));
    EXPECT_FALSE(handle->child(-1));
    EXPECT_FALSE(handle->child(100));
}

TEST(QtTree, PutsWindowsInTheOrderInWhichTheyWereSeen)
{
    QWidget first;
    first.setObjectName(QStringLiteral("order first"));
    QDialog dialog(&first);
    dialog.setObjectName(QStringLiteral("a dialog of the first"));
    Inspector::self()->objects();
    QWidget later;
    later.setObjectName(QStringLiteral("a window seen later"));
    QWindow plain;
    plain.setTitle(QStringLiteral("no widget"));
    QStringList names;
    for (const auto &object : Inspector::self()->objects()) {
        names << object->name();
    }
    const QStringList order{first.objectName(), dialog.objectName(), later.objectName(),
                            plain.title()};
    for (int i = 1; i < order.size(); ++i) {
        EXPECT_LT(names.indexOf(order[i - 1]), names.indexOf(order[i]));
    }
    EXPECT_EQ(qApp, qobjectFor(Inspector::self()->objects().back()));
}

TEST(QtTree, NeverFetchesMoreOfAModel)
{
    LazyModel model;
    model.appendRow(new QStandardItem(QStringLiteral("here")));
    QTreeView view;
    view.setModel(&model);
    EXPECT_TRUE(itemOf(&view, QStringLiteral("here")));
    find(QStringLiteral("{text='fetched later' type='ModelItem'}"));
    Inspector::self()->lastError();
    EXPECT_EQ(0, model.numFetched);
}

TEST(QtTree, CreatesNoPopupOfAComboBox)
{
    QComboBox box;
    box.addItem(QStringLiteral("choice"));
    EXPECT_TRUE(childrenOf(&box).isEmpty());
    EXPECT_EQ(nullptr, box.findChild<QAbstractItemView *>());
    const QAbstractItemView *view = box.view();
    EXPECT_EQ(view, qobjectFor(handleFor(&box)->child(0)));
}

TEST(QtItems, ReadAndWriteWhatTheModelLets)
{
    QTreeWidget tree;
    tree.setHeaderLabels({QStringLiteral("Title")});
    auto *free = new QTreeWidgetItem({QStringLiteral("free")});
    free->setFlags(free->flags() | Qt::ItemIsEditable | Qt::ItemIsUserCheckable);
    free->setCheckState(0, Qt::Unchecked);
    tree.addTopLevelItems({free, new QTreeWidgetItem({QStringLiteral("fixed")})});
    const auto item = itemOf(&tree, QStringLiteral("free"));
    const auto fixed = itemOf(&tree, QStringLiteral("fixed"));
    Inspector *inspector = Inspector::self();
    const auto text = inspector->createPrimitive(QStringLiteral("new"));
    EXPECT_TRUE(set(item, "text", text));
    EXPECT_FALSE(set(fixed, "text", text));
    EXPECT_TRUE(set(item, "checkState", inspector->createPrimitive(2)));
    EXPECT_FALSE(set(item, "checkState", inspector->createPrimitive(3)));
    EXPECT_TRUE(set(item, "selected", inspector->createPrimitive(true)));
    EXPECT_EQ(QStringLiteral("new"), free->text(0));
    EXPECT_EQ(Qt::Checked, free->checkState(0));
    EXPECT_TRUE(free->isSelected());
    EXPECT_EQ(QStringLiteral("1"), property(fixed, "row"));
    EXPECT_EQ(QStringLiteral("false"), property(fixed, "editable"));
    const auto section = itemOf(tree.header(), QStringLiteral("Title"));
    EXPECT_EQ(QStringLiteral("Horizontal"), property(section, "orientation"));
}

TEST(QtItems, FollowTheirRowAndEndWithIt)
{
    QListWidget list;
    list.addItems({QStringLiteral("one"), QStringLiteral("two")});
    const auto two = itemOf(&list, QStringLiteral("two"));
    EXPECT_EQ(two.get(), itemOf(&list, QStringLiteral("two")).get());
    list.insertItem(0, QStringLiteral("zero"));
    EXPECT_EQ(QStringLiteral("2"), property(two, "row"));
    EXPECT_EQ(two.get(), itemOf(&list, QStringLiteral("two")).get());
    delete list.takeItem(2);
    Inspector::self()->lastError();
    EXPECT_EQ(QStringLiteral("<none>"), property(two, "text"));
    EXPECT_EQ(QStringLiteral("ModelItem::text: the item is gone"), Inspector::self()->lastError());
    EXPECT_FALSE(two->parent());
    EXPECT_FALSE(two->isValid());
}

TEST(QtItems, OfDeletedWidgetsAndScenesAreGone)
{
    auto bar = std::make_unique<QTabBar>();
    bar->addTab(QStringLiteral("only"));
    const auto tab = itemOf(bar.get(), QStringLiteral("only"));
    QGraphicsScene scene;
    QGraphicsView view(&scene);
    auto *rectangle = scene.addRect(0, 0, 10, 20);
    const auto item = itemOf(&view, QStringLiteral("QGraphicsRectItem"));
    ASSERT_TRUE(tab);
    ASSERT_TRUE(item);
    rectangle->moveBy(500, 500); // away from where it was seen
    EXPECT_EQ(QStringLiteral("21"), property(item, "height")); // with its pen
    delete rectangle;
    bar.reset();
    for (const auto &gone : {tab, item}) {
        EXPECT_EQ(QStringLiteral("<none>"), property(gone, "toolTip"));
        EXPECT_EQ(0, gone->numChildren());
        EXPECT_FALSE(gone->isValid());
    }
}

TEST(QtTree, OutlivesWhatGettersDo)
{
    for (const char *name : {"{text='none'}", "{type='Getter' text='none' width='1'}"}) {
        QWidget window;
        QPointer<Getter> getter(new Getter(&window));
        const QPointer<QWidget> sibling(new QWidget(&window));
        new QWidget(sibling);
        getter->act = [&] {
            delete sibling.data();
            getter->deleteLater();
            QCoreApplication::sendPostedEvents(getter, QEvent::DeferredDelete);
        };
        EXPECT_FALSE(find(QString::fromLatin1(name))) << name;
        EXPECT_FALSE(sibling || getter) << name;
    }
}

TEST(QtTree, OutlivesWhatModelsDo)
{
    UnsteadyModel model;
    QPointer<QListView> view(new QListView);
    view->setModel(&model);
    const QString name = QStringLiteral("{type='ModelItem' text='none'}");
    EXPECT_FALSE(find(name)); // although there are always more
    model.act = [&] { delete view.data(); };
    EXPECT_FALSE(find(name));
    EXPECT_FALSE(view);
    view = new QListView;
    view->setModel(&model);
    const auto children = handleFor(view)->children();
    EXPECT_EQ(QString(), children[children.size() - 1]->qualifiedName());
    EXPECT_FALSE(view);
}

TEST(QtItems, EndWhenTheirPlaceInMemoryIsThatOfAnother)
{
    QGraphicsScene scene;
    QGraphicsView view(&scene);
    std::aligned_storage_t<sizeof(QGraphicsTextItem)> memory;
    auto *text = new (&memory) QGraphicsTextItem;
    auto *base = static_cast<QGraphicsItem *>(text);
    text->~QGraphicsTextItem();
    auto *line = new (base) QGraphicsLineItem(0, 0, 1, 1);
    scene.addItem(line);
    const auto item = itemOf(&view, QStringLiteral("QGraphicsLineItem"));
    line->~QGraphicsLineItem();
    scene.addItem(new (&memory) QGraphicsTextItem);
    EXPECT_EQ(QStringLiteral("<none>"), property(item, "x"));
    text->~QGraphicsTextItem();
}

#include "qt_tree_test.moc"
