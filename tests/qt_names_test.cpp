#include "qt_trees.h"

#include <gtest/gtest.h>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

/** Checks all objects below, and that their parents are theirs. */
int checkNames(const SharedPtr<Object> &object)
{
    Inspector::self()->lastError();
    const QString name = object->qualifiedName();
    const SharedPtr<Object> found = find(name);
    EXPECT_TRUE(found) << qPrintable(name) << qPrintable(Inspector::self()->lastError());
    EXPECT_EQ(object.get(), found.get()) << qPrintable(name);
    int count = 1;
    for (const auto &child : object->children()) {
        EXPECT_EQ(object.get(), child->parent().get()) << qPrintable(child->name());
        count += checkNames(child);
    }
    return count;
}

int checkNames(QObject *object)
{
    QCoreApplication::processEvents();
    return checkNames(QtWrapper::handleFor(object));
}

QString nameOf(QObject *object)
{
    return QtWrapper::handleFor(object)->qualifiedName();
}

} // namespace

TEST(QtNames, FindEveryObjectOfAMainWindowAgain)
{
    const auto window = richWindow(QStringLiteral("Names of everything"));
    EXPECT_GT(checkNames(window.get()), 150);
    // With twins nothing in it is unique any more, and neither is the window.
    const auto twin = richWindow(QStringLiteral("Names of everything"));
    checkNames(window.get());
    checkNames(twin.get());
}

TEST(QtNames, FindEveryObjectOfDialogsAgain)
{
    QMessageBox message(QMessageBox::Question, QStringLiteral("Delete"), QStringLiteral("Really?"),
                        QMessageBox::Yes | QMessageBox::No);
    message.show();
    QFileDialog file;
    file.setOption(QFileDialog::DontUseNativeDialog);
    file.setDirectory(QCoreApplication::applicationDirPath());
    file.show();
    QColorDialog color;
    color.setOption(QColorDialog::DontUseNativeDialog);
    color.show();
    for (QWidget *dialog : QList<QWidget *>{&message, &file, &color}) {
        EXPECT_GT(checkNames(dialog), 5);
    }
}

TEST(QtNames, FindHiddenObjectsAgain)
{
    const auto window = richWindow(QStringLiteral("Hidden in names"));
    const auto objects = window->findChildren<QObject *>();
    ASSERT_GT(objects.size(), 100);
    for (QObject *object : objects) {
        const QString name = nameOf(object);
        EXPECT_EQ(object, findQObject(name)) << qPrintable(name);
    }
}

TEST(QtNames, AreTheShortestThatAreUnique)
{
    QWidget window;
    window.setObjectName(QStringLiteral("names window"));
    auto *left = new QGroupBox(QStringLiteral("names left"), &window);
    auto *right = new QGroupBox(QStringLiteral("names right"), &window);
    auto *named = new QPushButton(QStringLiteral("names text"), left);
    named->setObjectName(QStringLiteral("names button"));
    auto *twin = new QPushButton(QStringLiteral("names twin"), left);
    auto *otherTwin = new QPushButton(QStringLiteral("names twin"), right);
    auto *second = new QCheckBox(QString(), right);
    auto *first = new QCheckBox(QString(), right);
    second->stackUnder(first);
    auto *edit = new QLineEdit(QStringLiteral("typed by a user"), left);
    auto *label = new QLabel(QStringLiteral("names &label"), left);
    label->setBuddy(edit);
    auto *longText = new QCheckBox(QString(61, QLatin1Char('x')), left);
    auto *quoted = new QRadioButton(QStringLiteral("it's \\ %2"), left);

    const struct
    {
        const char *what;
        QObject *object;
        const char *name;
    } rows[] = {
        {"by its name", named, "{name='names button' type='QPushButton'}"},
        {"by its label", left, "{text='names left' type='QGroupBox'}"},
        {"by a container", twin,
         "{container={text='names left' type='QGroupBox'} text='names twin' type='QPushButton'}"},
        {"by the other", otherTwin,
         "{container={text='names right' type='QGroupBox'} text='names twin' type='QPushButton'}"},
        {"the first of two", second,
         "{container={text='names right' type='QGroupBox'} type='QCheckBox'}"},
        {"the second of two", first,
         "{container={text='names right' type='QGroupBox'} occurrence='2' type='QCheckBox'}"},
        {"by the label beside, not by its contents", edit,
         "{buddy='names label' type='QLineEdit'}"},
        {"not by a long text", longText,
         "{container={text='names left' type='QGroupBox'} type='QCheckBox'}"},
        {"quotes are escaped", quoted, "{text='it\\'s \\\\ %2' type='QRadioButton'}"},
        {"the application", qApp, "{type='QApplication'}"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(QString::fromLatin1(row.name), nameOf(row.object));
        EXPECT_EQ(row.object, findQObject(nameOf(row.object)));
    }
}

TEST(QtNames, OfItemsHaveTheirPlaceOnlyWhenTextsAreNotEnough)
{
    QTableWidget table(2, 2);
    table.setObjectName(QStringLiteral("names table"));
    table.setItem(0, 0, new QTableWidgetItem(QStringLiteral("once")));
    table.setItem(0, 1, new QTableWidgetItem(QStringLiteral("twice")));
    table.setItem(1, 0, new QTableWidgetItem(QStringLiteral("twice")));
    QStringList names;
    for (const auto &child : QtWrapper::handleFor(&table)->children()) {
        if (child->className() == QLatin1String("ModelItem")) {
            names << child->qualifiedName().remove(
                QLatin1String("container={name='names table' type='QTableWidget'} "));
        }
    }
    // Conditions are sorted, so the container stands between column and row.
    const QStringList expected{
        QStringLiteral("{text='once' type='ModelItem'}"),
        QStringLiteral("{column='1' row='0' text='twice' type='ModelItem'}"),
        QStringLiteral("{column='0' row='1' text='twice' type='ModelItem'}"),
        QStringLiteral("{column='1' row='1' type='ModelItem'}"),
    };
    EXPECT_EQ(expected, names);
}
