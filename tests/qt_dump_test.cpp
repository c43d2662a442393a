#include "qt_support.h"

#include "objectmodel/delegates.h"
#include "objectmodel/globalobject.h"
#include "objectmodel/wrap.h"

#include "qt/treedump.h"

#include <QApplication>
#include <QCheckBox>
#include <QDataStream>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMainWindow>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>
#include <QStandardItemModel>
#include <QStringListModel>
#include <QTableWidget>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <QXmlStreamReader>

#include <functional>
#include <stdexcept>

using namespace Vantrel;
using namespace Vantrel::QtWrapper;
using QtSupport::find;

namespace QtDumpTest {

/** A widget of an application that does odd things when it is asked for a property. */
class Odd : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString answer READ answer)
    Q_PROPERTY(QString zLast READ zLast)
    Q_PROPERTY(QString realName READ zLast)

public:
    using QWidget::QWidget;
    QString answer() const { return whenAsked ? whenAsked() : QStringLiteral("fine"); }
    QString zLast() const { return QStringLiteral("last"); }

    std::function<QString()> whenAsked;
};

} // namespace QtDumpTest

namespace {

using QtDumpTest::Odd;

/** Empty when there is no such property. */
QString valueOf(const UiElement &element, const char *name)
{
    for (const auto &property : element.properties()) {
        if (property.first == QLatin1String(name)) {
            return property.second;
        }
    }
    return QString();
}

const UiElement *findElement(const UiElement &root, const char *name)
{
    if (root.name == QString::fromUtf8(name)) {
        return &root;
    }
    for (const auto &child : root.children()) {
        if (const UiElement *found = findElement(*child, name)) {
            return found;
        }
    }
    return nullptr;
}

int count(const UiElement &root)
{
    int number = 1;
    for (const auto &child : root.children()) {
        number += count(*child);
    }
    return number;
}

class Dump : public ::testing::Test
{
protected:
    Dump()
    {
        window.setObjectName(QStringLiteral("dumpWindow"));
        window.setWindowTitle(QStringLiteral("Dumped"));
        window.setCentralWidget(new QWidget);
        window.centralWidget()->setObjectName(QStringLiteral("dumpPanel"));
        layout = new QVBoxLayout(window.centralWidget());
        button = add<QPushButton>("dumpButton");
        button->setText(QStringLiteral("&Save"));
    }

    template <class Widget>
    Widget *add(const char *name)
    {
        auto *widget = new Widget;
        widget->setObjectName(QString::fromUtf8(name));
        layout->addWidget(widget);
        return widget;
    }

    void show()
    {
        window.show();
        QCoreApplication::processEvents();
    }

    std::unique_ptr<UiElement> dump(const DumpOptions &options = {})
    {
        auto tree = dumpTree(find("{name='dumpWindow'}"), options);
        EXPECT_TRUE(tree) << qPrintable(Inspector::self()->lastError());
        return tree ? std::move(tree) : std::make_unique<UiElement>();
    }

    QMainWindow window;
    QVBoxLayout *layout;
    QPushButton *button;
};

/** Calls a global function; the last error is cleared before. */
SharedPtr<Object> call(const char *name, const ObjectList &arguments)
{
    Inspector::self()->lastError();
    SharedPtr<Object> result;
    Inspector::self()
        ->globalClass()
        ->methods(QString::fromUtf8(name))
        .invoke({}, arguments, &result);
    return result;
}

} // namespace

TEST_F(Dump, ByItsNamesFindsEveryObjectAgain)
{
    window.menuBar()->addMenu(QStringLiteral("DumpMenu"))->addAction(QStringLiteral("DumpAction"));
    auto *table = add<QTableWidget>("dumpTable");
    table->setRowCount(3);
    table->setColumnCount(2);
    table->setItem(1, 1, new QTableWidgetItem(QStringLiteral("it's \\ {a} cell")));
    auto *tree = add<QTreeWidget>("dumpTree");
    auto *branch = new QTreeWidgetItem(tree, {QStringLiteral("same")});
    new QTreeWidgetItem(branch, {QStringLiteral("same")});
    auto *tabs = add<QTabWidget>("dumpTabs");
    tabs->addTab(new QLabel(QStringLiteral("page\nwith lines")), QStringLiteral("One"));
    tabs->addTab(new QLineEdit(QStringLiteral("typed")), QStringLiteral("Two"));
    for (int i = 0; i < 3; ++i) {
        layout->addWidget(new QCheckBox(QStringLiteral("twin")));
    }
    auto *view = add<QGraphicsView>("dumpView");
    QGraphicsScene scene;
    view->setScene(&scene);
    scene.addRect(0, 0, 10, 10);
    scene.addWidget(new QPushButton(QStringLiteral("inside")));
    add<QLabel>("dumpHostile")->setText(QStringLiteral("a\u0001b\\\uFFFE") + QChar(0xD800));
    show();

    const auto dumped = dump();
    int numElements = 0;
    QXmlStreamReader xml(toXml(*dumped));
    QString type;
    while (!xml.atEnd()) {
        xml.readNext();
        const QXmlStreamAttributes attributes = xml.attributes();
        if (xml.isStartElement() && xml.name() == QLatin1String("element")) {
            ++numElements;
            type = attributes.value(QLatin1String("type")).toString();
        }
        if (xml.isStartElement()
            && attributes.value(QLatin1String("name")) == QLatin1String("realName")) {
            const QString name = attributes.value(QLatin1String("value")).toString();
            const SharedPtr<Object> object = find(name);
            ASSERT_TRUE(object);
            EXPECT_EQ(name, object->qualifiedName());
            const std::unique_ptr<UiElement> again = dumpTree(object, {0, false});
            ASSERT_TRUE(again);
            EXPECT_EQ(type, again->type);
            EXPECT_EQ(name, valueOf(*again, "realName"));
        }
    }
    EXPECT_EQ(QString(), xml.errorString());
    EXPECT_EQ(count(*dumped), numElements);
    EXPECT_GT(numElements, 30);
    EXPECT_EQ(toXml(*dumped), toXml(*dump())) << "two dumps can be compared";
}

TEST_F(Dump, HasThePropertiesByWhichNamesMatch)
{
    button->setProperty("dynamic", 42);
    button->setEnabled(false);
    show();
    const auto tree = dump();
    const UiElement *element = findElement(*tree, "dumpButton");
    ASSERT_TRUE(element);
    const QPoint corner = button->mapToGlobal(QPoint(0, 0));
    EXPECT_EQ(corner.x(), element->bounds.x);
    EXPECT_EQ(corner.y(), element->bounds.y);
    EXPECT_EQ(button->width(), element->bounds.width);
    const struct
    {
        const char *name;
        const char *value;
    } rows[] = {{"text", "Save"},
                {"enabled", "false"},
                {"visible", "true"},
                {"dynamic", "42"},
                {"checked", "false"},
                {"objectName", "dumpButton"},
                {"focusPolicy", "StrongFocus"}};
    for (const auto &row : rows) {
        EXPECT_EQ(QLatin1String(row.value), valueOf(*element, row.name)) << row.name;
    }
    EXPECT_EQ(QLatin1String("realName"), element->properties().front().first);
    EXPECT_TRUE(std::is_sorted(element->properties().begin() + 1, element->properties().end()));
}

TEST_F(Dump, TakesInWhatItsOptionsWant)
{
    class NoButtons : public DumpFilter
    {
    public:
        bool accepts(const SharedPtr<Object> &object) const override
        {
            return object->className() != QLatin1String("QPushButton");
        }
    };
    const NoButtons noButtons;
    QStringList texts;
    for (int i = 0; i < 50; ++i) {
        texts << QStringLiteral("row %1").arg(i);
    }
    QStringListModel model(texts);
    add<QListView>("dumpList")->setModel(&model);
    show();
    add<QLabel>("dumpHidden")->hide();

    DumpOptions options;
    options.withProperties = false;
    const int all = count(*dump(options));
    options.depth = 0;
    EXPECT_EQ(1, count(*dump(options)));
    options.depth = 1;
    EXPECT_FALSE(findElement(*dump(options), "dumpButton"));
    EXPECT_TRUE(findElement(*dump(options), "dumpPanel"));
    options.depth = -1;
    options.filter = &noButtons;
    EXPECT_FALSE(findElement(*dump(options), "dumpButton"));
    EXPECT_TRUE(findElement(*dump(options), "dumpList"));
    options.filter = nullptr;
    options.onlyShown = true;
    EXPECT_FALSE(findElement(*dump(options), "dumpHidden"));
    EXPECT_TRUE(findElement(*dump(options), "dumpButton"));
    options.onlyShown = false;
    options.maxItems = 10;
    const auto limited = dump(options);
    EXPECT_EQ(all - 40, count(*limited));
    EXPECT_EQ(QLatin1String("40"), valueOf(*findElement(*limited, "dumpList"), "omitted"));
    EXPECT_EQ(QString(), valueOf(*findElement(*limited, "dumpPanel"), "omitted"));
}

TEST_F(Dump, OutlivesWhatGettersDo)
{
    auto *odd = add<Odd>("dumpOdd");
    auto *list = add<QListView>("dumpList");
    QStringListModel model({QStringLiteral("first"), QStringLiteral("second")});
    list->setModel(&model);
    auto *last = add<QLabel>("dumpLast");
    show();
    const QPointer<QLabel> lastGuard(last);

    odd->whenAsked = []() -> QString { throw std::runtime_error("no"); };
    auto tree = dump();
    const UiElement *element = findElement(*tree, "dumpOdd");
    ASSERT_TRUE(element);
    EXPECT_EQ(QLatin1String("answer"), valueOf(*element, "unreadable"));
    EXPECT_EQ(QLatin1String("last"), valueOf(*element, "zLast"));
    EXPECT_EQ(QLatin1String("{name='dumpOdd' type='QtDumpTest::Odd'}"),
              valueOf(*element, "realName"))
        << "a property of the application does not take its place";

    odd->whenAsked = [&] {
        model.setStringList({});
        delete lastGuard.data();
        return QStringLiteral("reset");
    };
    tree = dump();
    element = findElement(*tree, "dumpList");
    ASSERT_TRUE(element);
    const UiElement &item = *element->children().back();
    EXPECT_EQ(QLatin1String("ModelItem"), item.type);
    EXPECT_EQ(QLatin1String("destroyed while it was dumped"), valueOf(item, "incomplete"));
    EXPECT_TRUE(valueOf(item, "realName").contains(QLatin1String("second")));
    const UiElement &label = *findElement(*tree, "dumpPanel")->children().back();
    EXPECT_EQ(QLatin1String("QLabel"), label.type);
    EXPECT_EQ(QLatin1String("destroyed while it was dumped"), valueOf(label, "incomplete"));

    odd->whenAsked = [odd] {
        const QString result = QStringLiteral("suicide");
        delete odd;
        return result;
    };
    tree = dump();
    const auto &panel = *findElement(*tree, "dumpPanel");
    const auto &gone = *panel.children()[1];
    EXPECT_EQ(QLatin1String("destroyed while it was dumped"), valueOf(gone, "incomplete"));
    EXPECT_EQ(QString(), valueOf(gone, "zLast"));
    EXPECT_TRUE(QXmlStreamReader(toXml(*tree)).error() == QXmlStreamReader::NoError);
}

TEST_F(Dump, LetsDelegatesOfOtherClassesTakePart)
{
    struct Other : DumpObjectTreeDelegate
    {
        Other() : DumpObjectTreeDelegate(QStringLiteral("QtDumpTest::Odd")) {}
        bool dumpObject(SharedPtr<Object>, bool, UiElement *element, const Filters &,
                        QString *error) const override
        {
            element->setProperty(QStringLiteral("own"), QStringLiteral("value"));
            *error = refusesObject ? QStringLiteral("no idea") : QString();
            return true;
        }
        bool enterDump(SharedPtr<Object>, const Filters &, QString *error) override
        {
            *error = refusesDump ? QStringLiteral("not today") : QString();
            return true;
        }
        bool refusesObject = false;
        bool refusesDump = false;
    } other;
    new QLabel(QStringLiteral("unknown to it"), add<Odd>("dumpOdd"));
    const UiElement *element = nullptr;
    auto tree = dump();
    for (const auto &child : findElement(*tree, "dumpPanel")->children()) {
        element = child->type == QLatin1String("QtDumpTest::Odd") ? child.get() : element;
    }
    ASSERT_TRUE(element);
    EXPECT_EQ(QLatin1String("value"), valueOf(*element, "own"));
    EXPECT_EQ(QLatin1String("{name='dumpOdd' type='QtDumpTest::Odd'}"),
              valueOf(*element, "realName"));
    EXPECT_TRUE(element->children().empty());
    other.refusesObject = true;
    EXPECT_TRUE(toXml(*dump()).contains("value=\"no idea\""));
    other.refusesDump = true;
    EXPECT_FALSE(dumpTree(find("{name='dumpWindow'}")));
    EXPECT_EQ(QLatin1String("Can't dump the tree: not today"), Inspector::self()->lastError());
}

TEST(TreeFormats, EscapeWhatDocumentsCannotHold)
{
    const QString half(QChar(0xDC00));
    const struct
    {
        const char *what;
        QString text;
        const char *xml;
        QString json;
    } rows[] = {
        {"plain", QStringLiteral("a\\b"), "value=\"a\\b\"/>", QStringLiteral("a\\b")},
        {"markup", QStringLiteral("<&\">"), "value=\"&lt;&amp;&quot;&gt;\"/>",
         QStringLiteral("<&\">")},
        {"white space", QStringLiteral("a\n\tb"), "value=\"a&#10;&#9;b\"/>",
         QStringLiteral("a\n\tb")},
        {"a control character", QStringLiteral("a\u0001\\"),
         "value=\"a\\u0001\\\\\" escaped=\"true\"/>", QStringLiteral("a\u0001\\")},
        {"a pair", QStringLiteral("\U0001F600"), "value=\"\xF0\x9F\x98\x80\"/>",
         QStringLiteral("\U0001F600")},
        {"half of a pair", half, "value=\"\\udc00\" escaped=\"true\"/>",
         QString(QChar(QChar::ReplacementCharacter))},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        UiElement element;
        element.type = element.name = row.text;
        element.setProperty(QStringLiteral("p"), row.text);
        const QByteArray xml = toXml(element);
        EXPECT_TRUE(xml.contains(row.xml)) << xml.constData();
        QXmlStreamReader reader(xml);
        while (!reader.atEnd()) {
            reader.readNext();
        }
        EXPECT_EQ(QString(), reader.errorString());
        const QJsonObject json = QJsonDocument::fromJson(toJson(element)).object();
        EXPECT_EQ(row.json,
                  json[QStringLiteral("properties")].toObject()[QStringLiteral("p")].toString());
    }
}

TEST_F(Dump, IsAvailableToScripts)
{
    show();
    const SharedPtr<Object> root = find("{name='dumpWindow'}");
    SharedPtr<Object> result = call("_vantrel_tree_dump", {root, wrap("json"), wrap(1)});
    ASSERT_TRUE(result) << qPrintable(Inspector::self()->lastError());
    const QJsonObject json = QJsonDocument::fromJson(result->toString().toUtf8()).object();
    EXPECT_EQ(QStringLiteral("dumpWindow"), json[QStringLiteral("name")].toString());
    EXPECT_FALSE(json[QStringLiteral("children")].toArray().isEmpty());

    const QTemporaryDir directory;
    const QString png = directory.filePath(QStringLiteral("window.png"));
    const QString xml = directory.filePath(QStringLiteral("tree.xml"));
    EXPECT_TRUE(call("_vantrel_tree_save", {SharedPtr<Object>(), wrap(xml)}));
    QFile file(xml);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().contains("type=\"Application\""));
    EXPECT_TRUE(call("_vantrel_tree_picture", {root, wrap(png)}));
    const QImage picture(png);
    EXPECT_EQ(window.size() * 2, picture.size());
    EXPECT_NE(window.grab().toImage().scaled(picture.size()), picture);

    const struct
    {
        const char *what;
        const char *function;
        ObjectList arguments;
        const char *error;
    } rows[] = {
        {"an unknown format",
         "_vantrel_tree_dump",
         {root, wrap("yaml")},
         "Can't dump the tree as \"yaml\": the formats are \"xml\" and \"json\""},
        {"a file that can't be written",
         "_vantrel_tree_save",
         {root, wrap(directory.filePath(QStringLiteral("none/tree.xml")))},
         "Can't write"},
        {"no object of the application",
         "_vantrel_tree_dump",
         {wrap(3), wrap("xml")},
         "Can't dump the tree of an object of type int: it is no object of the application"},
        {"nothing to be seen",
         "_vantrel_tree_picture",
         {find("{type='QApplication'}"), wrap(png)},
         "Can't take a picture: no window shows it"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_FALSE(call(row.function, row.arguments));
        const QString error = Inspector::self()->lastError();
        EXPECT_TRUE(error.startsWith(QLatin1String(row.error))) << qPrintable(error);
    }
}

TEST_F(Dump, TellsObjectsAsTextsAndRecords)
{
    show();
    const SharedPtr<Object> object = find("{name='dumpButton'}");
    EXPECT_EQ(QLatin1String("QPushButton 'Save'"), object->toString());
    EXPECT_TRUE(object->toDebugString().startsWith(QLatin1String("{ QPushButton 'Save', ")));
    EXPECT_TRUE(
        object->toDebugString().endsWith(QLatin1String(", visible, enabled } : QPushButton")));
    EXPECT_EQ(0, object->toInteger());

    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_5_15);
    object->streamObject(out);
    QDataStream in(bytes);
    in.setVersion(QDataStream::Qt_5_15);
    Inspector::self()->lastError();
    object->objectFromStream(in);
    EXPECT_TRUE(in.atEnd() && in.status() == QDataStream::Ok);
    EXPECT_TRUE(Inspector::self()->lastError().contains(QLatin1String("does not change it")));
    in.device()->seek(0);
    QString name;
    qint32 numProperties = 0;
    in >> name >> numProperties;
    EXPECT_EQ(QLatin1String("{name='dumpButton' type='QPushButton'}"), name);
    EXPECT_GT(numProperties, 50);
    QDataStream cut(bytes.left(bytes.size() / 2));
    object->objectFromStream(cut);
    EXPECT_EQ(QDataStream::ReadPastEnd, cut.status());

    const SharedPtr<Object> value = object->type()->property(QStringLiteral("text"))->get(object);
    EXPECT_EQ(QLatin1String("&Save"), value->toString()) << "values keep their own texts";
}

#include "qt_dump_test.moc"
