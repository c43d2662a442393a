#ifndef VANTREL_QT_TREES_H
#define VANTREL_QT_TREES_H

#include "objectmodel/class.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

#include "qt/wrapper.h"

#include <QtWidgets>

#include <memory>

namespace VantrelTest {

inline Vantrel::SharedPtr<Vantrel::Object> find(const QString &name)
{
    return Vantrel::Inspector::self()->findObject(name);
}

/** The QObject of that name, or null. */
inline QObject *findQObject(const QString &name)
{
    return Vantrel::QtWrapper::qobjectFor(find(name));
}

inline QString property(const Vantrel::SharedPtr<Vantrel::Object> &object, const char *name)
{
    const auto *property = object->type()->property(QString::fromLatin1(name));
    const auto value = property ? property->get(object) : nullptr;
    return value ? value->toString() : QStringLiteral("<none>");
}

/** Class and short name of the children, such as "QPushButton OK". */
inline QStringList childrenOf(const Vantrel::SharedPtr<Vantrel::Object> &parent)
{
    QStringList list;
    for (const auto &child : parent->children()) {
        list << child->className() + QLatin1Char(' ') + child->name();
    }
    return list;
}

inline QStringList childrenOf(QObject *parent)
{
    return childrenOf(Vantrel::QtWrapper::handleFor(parent));
}

/** A window with most of what can be in one, with hardly any names. */
inline std::unique_ptr<QMainWindow> richWindow(const QString &title)
{
    auto window = std::make_unique<QMainWindow>();
    window->setWindowTitle(title);
    auto *file = window->menuBar()->addMenu(QStringLiteral("&File"));
    auto *open = file->addAction(QStringLiteral("&Open\tCtrl+O"));
    file->addSeparator();
    file->addMenu(QStringLiteral("&Recent"))->addAction(QStringLiteral("one"));
    auto *toolBar = window->addToolBar(QStringLiteral("Tools"));
    toolBar->addAction(open);
    toolBar->addAction(QStringLiteral("Only here"));

    auto *tabs = new QTabWidget;
    window->setCentralWidget(tabs);
    auto *form = new QWidget;
    auto *rows = new QFormLayout(form);
    rows->addRow(QStringLiteral("&Name:"), new QLineEdit);
    rows->addRow(QStringLiteral("Age"), new QSpinBox);
    auto *kind = new QComboBox;
    kind->addItems({QStringLiteral("friend"), QStringLiteral("colleague")});
    rows->addRow(QStringLiteral("Kind"), kind);
    for (int i = 0; i < 3; ++i) {
        rows->addRow(new QPushButton(QStringLiteral("Same")));
    }
    tabs->addTab(form, QStringLiteral("F&orm"));
    auto *table = new QTableWidget(2, 2);
    table->setHorizontalHeaderLabels({QStringLiteral("First"), QStringLiteral("Second")});
    table->setItem(0, 0, new QTableWidgetItem(QStringLiteral("a")));
    table->setItem(1, 1, new QTableWidgetItem(QStringLiteral("a")));
    tabs->addTab(table, QStringLiteral("Table"));
    auto *tree = new QTreeWidget;
    tree->setColumnCount(2);
    for (const char *branch : {"x", "y"}) {
        auto *item = new QTreeWidgetItem({QString::fromLatin1(branch), QString()});
        item->addChild(new QTreeWidgetItem({QStringLiteral("leaf"), QStringLiteral("value")}));
        tree->addTopLevelItem(item);
    }
    tabs->addTab(tree, QStringLiteral("Tree"));
    auto *view = new QGraphicsView(new QGraphicsScene(window.get()));
    auto *group = view->scene()->addRect(0, 0, 10, 10);
    new QGraphicsSimpleTextItem(QStringLiteral("label"), group);
    view->scene()->addRect(20, 0, 10, 10);
    view->scene()->addText(QStringLiteral("title"));
    view->scene()->addWidget(new QPushButton(QStringLiteral("In the scene")));
    tabs->addTab(view, QStringLiteral("Scene"));
    auto *dock = new QDockWidget(QStringLiteral("Dock"));
    dock->setWidget(new QCalendarWidget);
    window->addDockWidget(Qt::LeftDockWidgetArea, dock);
    window->statusBar()->showMessage(QStringLiteral("ready"));
    window->show();
    kind->showPopup();
    kind->hidePopup();
    return window;
}

} // namespace VantrelTest

#endif // VANTREL_QT_TREES_H
