#include "qt_trees.h"

#include "objectmodel/objectmap.h"
#include "objectmodel/objectsearch.h"

#include <gtest/gtest.h>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

/** Two forms side by side, so that most things are there twice. */
class QtMatching : public ::testing::Test
{
protected:
    QtMatching()
    {
        window.setObjectName(QStringLiteral("matching window"));
        window.setGeometry(0, 0, 400, 300);
        for (int i = 0; i < 2; ++i) {
            auto *box = new QGroupBox(QStringLiteral("match box %1").arg(i), &window);
            box->setGeometry(200 * i, 0, 190, 290);
            label[i] = new QLabel(QStringLiteral("match label"), box);
            label[i]->setGeometry(0, 20, 80, 20);
            edit[i] = new QLineEdit(QStringLiteral("content %1").arg(i), box);
            edit[i]->setGeometry(90, 20, 80, 20);
            button[i] = new QPushButton(QStringLiteral("match &button"), box);
            button[i]->setGeometry(90, 60, 80, 20);
            button[i]->setProperty("dynamic", i);
        }
        edit[1]->setAlignment(Qt::AlignRight);
        button[1]->setEnabled(false);
        window.show();
        Inspector::self()->lastError();
    }

    QWidget window;
    QLabel *label[2];
    QLineEdit *edit[2];
    QPushButton *button[2];
};

} // namespace

TEST_F(QtMatching, TakesEveryKindOfCondition)
{
    const struct
    {
        const char *what;
        const char *conditions;
        QObject *found;
    } rows[] = {
        {"label without mnemonic", "type='QPushButton' text='match button'", button[0]},
        {"pattern", "type='QPushButton' text~='^match b.tton$'", button[0]},
        {"wildcard", "type?='QPush*' text?='match but*'", button[0]},
        {"not a super class", "type='QAbstractButton' text='match button'", nullptr},
        {"second of two", "type='QPushButton' text='match button' occurrence='2'", button[1]},
        {"third of two", "type='QPushButton' text='match button' occurrence='3'", nullptr},
        {"disabled", "text='match button' enabled='false'", button[1]},
        {"visible, as a number", "text='match button' visible='1'", button[0]},
        {"property", "type='QLineEdit' displayText='content 1'", edit[1]},
        {"number", "type='QGroupBox' title~='match' x='200'", button[1]->parent()},
        {"dynamic property", "type='QPushButton' dynamic='1'", button[1]},
        {"unknown property", "text='match button' noSuchProperty=''", nullptr},
        {"content", "type='QLineEdit' text='content 1'", edit[1]},
        {"key of an enum", "type='QLineEdit' text~='content' alignment~='AlignRight'", edit[1]},
        {"container by name", "type='QLineEdit' container={text='match box 1'}", edit[1]},
        {"container by text", "type='QLineEdit' container='match box 1'", edit[1]},
        {"outer container", "text='match button' container={name='matching window'}", button[0]},
        {"nth container",
         "type='QLineEdit' container={type='QGroupBox' text~='match' occurrence='2'}", edit[1]},
        {"window", "text='match button' window={name='matching window'}", button[0]},
        {"other window", "text='match button' window={type='QDialog'}", nullptr},
        {"the window itself", "name='matching window' window={name='matching window'}", nullptr},
        {"label beside", "type='QLineEdit' buddy='match label'", edit[0]},
        {"label beside, as a name", "type='QLineEdit' occurrence='2' buddy={type='QLabel'}",
         edit[1]},
        {"widget to the left", "type='QLineEdit' leftWidget={text='match label'}", edit[0]},
        {"nothing to the left", "text='match label' leftWidget={type='QLineEdit'}", nullptr},
        {"widget above", "type='QPushButton' aboveWidget={displayText='content 1'}", button[1]},
    };
    for (const auto &row : rows) {
        const QString scope = QLatin1String(row.conditions).contains(QLatin1String("window"))
                || QLatin1String(row.conditions).contains(QLatin1String("container"))
            ? QString()
            : QStringLiteral("window={name='matching window'} ");
        const QString name =
            QLatin1Char('{') + scope + QString::fromLatin1(row.conditions) + QLatin1Char('}');
        EXPECT_EQ(row.found, findQObject(name)) << row.what;
    }
}

TEST_F(QtMatching, FindsItemsByTheirPlace)
{
    QTableWidget table(2, 2);
    table.setObjectName(QStringLiteral("matching table"));
    table.setItem(1, 0, new QTableWidgetItem(QStringLiteral("cell")));
    const QString scope = QStringLiteral("{container={name='matching table'} %1}");
    const struct
    {
        const char *conditions;
        const char *property;
        const char *value;
    } rows[] = {
        {"type='ModelItem' row='1' column='0'", "text", "cell"},
        {"type='ModelItem' text='cell'", "row", "1"},
        {"type='HeaderSection' column='1'", "orientation", "Horizontal"},
        {"type='HeaderSection' row='1'", "orientation", "Vertical"},
        {"type='ModelItem' row='2' column='0'", nullptr, nullptr},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.conditions);
        const auto found = find(scope.arg(QString::fromLatin1(row.conditions)));
        ASSERT_EQ(row.property != nullptr, bool(found));
        if (found) {
            EXPECT_EQ(QString::fromLatin1(row.value), property(found, row.property));
        }
    }
}

TEST_F(QtMatching, FindsHiddenObjectsLast)
{
    auto *layout = new QHBoxLayout(window.findChild<QGroupBox *>());
    layout->setObjectName(QStringLiteral("matching layout"));
    EXPECT_EQ(layout, findQObject(QStringLiteral("{name='matching layout'}")));
    button[1]->setObjectName(QStringLiteral("matching layout"));
    EXPECT_EQ(button[1], findQObject(QStringLiteral("{name='matching layout' occurrence='1'}")));
}

TEST_F(QtMatching, ResolvesSymbolicNames)
{
    ObjectMap map(false);
    map.add(ObjectName(QStringLiteral("{text='match box 1' type='QGroupBox'}")),
            QStringLiteral(":Second"));
    map.add(ObjectName(QStringLiteral("{type='QFrame' container=':Circle'}")),
            QStringLiteral(":Circle"));
    EXPECT_EQ(button[1], findQObject(QStringLiteral("{type='QPushButton' container=':Second'}")));
    EXPECT_FALSE(find(QStringLiteral(":Circle")));
    EXPECT_TRUE(Inspector::self()->lastError().contains(QLatin1String("refers to itself")));
}

TEST_F(QtMatching, RefusesAnInvalidNestedName)
{
    for (const char *name : {"{type='QPushButton' container={occurrence='none' type='QGroupBox'}}",
                             "{type='QPushButton' window={container={occurrence='0'}}}"}) {
        EXPECT_FALSE(find(QString::fromLatin1(name)));
        const QString error = Inspector::self()->lastError();
        EXPECT_TRUE(error.contains(QLatin1String("occurrence that is no number"))) << name;
    }
}

TEST_F(QtMatching, ReadsLabelsWhereAUserDoes)
{
    QMainWindow main;
    auto *tabs = new QTabWidget;
    auto *page = new QWidget;
    tabs->addTab(page, QStringLiteral("&Label page"));
    main.setCentralWidget(tabs);
    main.statusBar()->showMessage(QStringLiteral("label saved"));
    QMessageBox box(QMessageBox::NoIcon, QString(), QStringLiteral("<b>Label</b> or not?"));
    QTableWidget table(1, 1);
    table.setObjectName(QStringLiteral("label table"));
    table.setLocale(QLocale(QLocale::German));
    auto *item = new QTableWidgetItem;
    item->setData(Qt::DisplayRole, 1234.5);
    table.setItem(0, 0, item);
    EXPECT_EQ(page, findQObject(QStringLiteral("{text='Label page' type='QWidget'}")));
    EXPECT_EQ(main.statusBar(), findQObject(QStringLiteral("{text='label saved'}")));
    EXPECT_EQ(&box, findQObject(QStringLiteral("{text='Label or not?' type='QMessageBox'}")));
    EXPECT_TRUE(find(QStringLiteral("{container={name='label table'} text='1.234,5'}")))
        << "as the view shows it";
}

TEST_F(QtMatching, TellsWhatDidNotMatch)
{
    const QString name = QStringLiteral(
        "{type='QPushButton' text='match Button' noSuch='1' container={text='match box 1'}}");
    EXPECT_FALSE(find(name));
    const auto misses = Inspector::self()->nearMisses();
    ASSERT_FALSE(misses.empty());
    EXPECT_EQ(button[1], QtWrapper::qobjectFor(misses.front().object));
    const auto &conditions = misses.front().conditions;
    ASSERT_EQ(4u, conditions.size());
    EXPECT_TRUE(conditions[0].held);
    EXPECT_TRUE(conditions[1].actual.isNull());
    EXPECT_EQ(QStringLiteral("match button"), conditions[2].actual);
    EXPECT_TRUE(Inspector::self()->lastError().contains(QLatin1String("noSuch,text")));

    // "enabled" holds by chance for many that come before.
    for (int i = 0; i < 12; ++i) {
        new QLabel(QStringLiteral("more"), &window);
    }
    auto *meant = new QPushButton(&window);
    meant->setObjectName(QStringLiteral("match last"));
    meant->setEnabled(false);
    EXPECT_FALSE(find(QStringLiteral("{enabled='true' name='match last'}")));
    ASSERT_FALSE(Inspector::self()->nearMisses().empty());
    EXPECT_EQ(meant, QtWrapper::qobjectFor(Inspector::self()->nearMisses().front().object));
}
