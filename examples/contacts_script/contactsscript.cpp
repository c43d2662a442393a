#include "contactsscript.h"

#include "testrun.h"

#include "objectmodel/class.h"
#include "objectmodel/eventhandlers.h"
#include "objectmodel/inspector.h"
#include "objectmodel/objectmap.h"
#include "objectmodel/objectsearch.h"
#include "objectmodel/screenvalues.h"
#include "objectmodel/wrap.h"

#include "qt/actions.h"
#include "qt/treedump.h"
#include "qt/waiting.h"

using namespace Vantrel;
using namespace Vantrel::QtWrapper;

namespace {

/** Counts what the map tells of its zoom. */
class ZoomListener : public EventHandler
{
public:
    void handleEvent(SharedPtr<Object>, const QString &, const ObjectList &arguments) override
    {
        ++count;
        last = arguments.at(0)->toDouble();
    }

    int count = 0;
    double last = 1;
};

/** Click, and type over what is there. */
void fill(TestRun &s, const QString &edit, const QString &text)
{
    const SharedPtr<Object> object = s.object(edit);
    s.require(type(object, QStringLiteral("<Ctrl+A>") + text));
    s.say(QStringLiteral("typed '%1' into %2").arg(text, edit));
}

void click(TestRun &s, const QString &name)
{
    s.require(mouseClick(s.object(name)));
    s.say(QStringLiteral("clicked %1").arg(name));
}

void activateByName(TestRun &s, const QString &name)
{
    const SharedPtr<Object> object = waitForObjectExists(name);
    s.require(!object.isNull() && activate(object));
    s.say(QStringLiteral("activated %1").arg(name));
}

QString cell(TestRun &s, int row, int column)
{
    return s.property(
        QStringLiteral("{column='%1' container=':Contacts.Table' row='%2' type='ModelItem'}")
            .arg(column)
            .arg(row),
        "text");
}

void addContact(TestRun &s)
{
    s.step(QStringLiteral("Add a contact through the menu and a modal dialog"));
    activateByName(s, QStringLiteral(":Contacts.New contact"));
    s.object(QStringLiteral(":New contact"));
    s.expect(QStringLiteral("OK is enabled"),
             s.property(QStringLiteral(":New contact.OK"), "enabled"), QStringLiteral("false"));
    fill(s, QStringLiteral(":New contact.Name"), QStringLiteral("Alan Turing"));
    fill(s, QStringLiteral(":New contact.Phone"), QStringLiteral("020 555 0123"));
    activateByName(s, QStringLiteral(":New contact.Group"));
    activateByName(s, QStringLiteral(":New contact.Work"));
    s.picture(QStringLiteral("dialog.png"), QStringLiteral("the dialog, filled in"),
              QStringLiteral(":New contact"));
    click(s, QStringLiteral(":New contact.OK"));
    s.waitForText(QStringLiteral(":Contacts.Count"), "text", QStringLiteral("13 of 13 contacts"));
    s.object(QStringLiteral("{text='Alan Turing was added' type='QStatusBar'}"));
    s.say(QStringLiteral("the status bar tells it"));
}

void editContact(TestRun &s)
{
    s.step(QStringLiteral("Edit a contact with a double click"));
    s.require(mouseDoubleClick(s.object(QStringLiteral(":Contacts.Ada Winter"))));
    fill(s, QStringLiteral(":Edit contact.Phone"), QStringLiteral("030 555 9999"));
    click(s, QStringLiteral(":Edit contact.OK"));
    s.waitForText(QStringLiteral("{column='1' container=':Contacts.Table' row='0' "
                                 "type='ModelItem'}"),
                  "text", QStringLiteral("030 555 9999"));
}

void readTable(TestRun &s)
{
    s.step(QStringLiteral("Read the table, item by item"));
    for (int row = 0; row < 4; ++row) {
        QStringList cells;
        for (int column = 0; column < 4; ++column) {
            cells << cell(s, row, column);
        }
        s.say(cells.join(QStringLiteral(" | ")));
    }
    fill(s, QStringLiteral(":Contacts.Search"), QStringLiteral("kaya"));
    s.waitForText(QStringLiteral(":Contacts.Count"), "text", QStringLiteral("1 of 13 contacts"));
    s.expect(QStringLiteral("the name found"), cell(s, 0, 0), QStringLiteral("Elif Kaya"));
    s.require(
        type(s.object(QStringLiteral(":Contacts.Search")), QStringLiteral("<Ctrl+A><Delete>")));
    s.waitForText(QStringLiteral(":Contacts.Count"), "text", QStringLiteral("13 of 13 contacts"));
}

void deleteContact(TestRun &s)
{
    s.step(QStringLiteral("Delete a contact with a shortcut and confirm it"));
    click(s, QStringLiteral(":Contacts.Alan Turing"));
    s.require(shortcut(QStringLiteral("Ctrl+D")));
    s.picture(QStringLiteral("question.png"), QStringLiteral("the question, while it waits"),
              QStringLiteral(":Delete contact"));
    click(s, QStringLiteral(":Delete contact.Yes"));
    s.waitForText(QStringLiteral(":Contacts.Count"), "text", QStringLiteral("12 of 12 contacts"));
}

SharedPtr<Object> pinchGesture(TestRun &s)
{
    const Class *builder = Inspector::self()->type(QStringLiteral("GestureBuilder"));
    const QStringList size = s.property(QStringLiteral(":Map"), "size").split(QLatin1Char('x'));
    const double width = size.value(0).toDouble();
    const double height = size.value(1).toDouble();
    const SharedPtr<Object> gesture =
        builder->construct({wrap(width), wrap(height), wrap("Pixel")});
    s.require(!gesture.isNull());
    s.call(gesture, "spread",
           {wrap(width / 2), wrap(height / 2), wrap(30.0), wrap(75.0), wrap(300)});
    s.call(gesture, "build");
    return gesture;
}

void pinchMap(TestRun &s)
{
    s.step(QStringLiteral("Zoom the map with two fingers"));
    click(s, QStringLiteral(":Contacts.Map_TabItem"));
    const SharedPtr<Object> map = s.object(QStringLiteral(":Map"));
    ZoomListener listener;
    s.require(Inspector::self()->installObjectEventHandler(map, QStringLiteral("zoomChanged"),
                                                           &listener));
    const SharedPtr<Object> gesture = pinchGesture(s);
    s.save(QStringLiteral("spread.svg"), s.call(gesture, "toSvg")->toString().toUtf8());
    s.show(QStringLiteral("spread.svg"), QStringLiteral("two fingers spread"));
    s.require(replayTouch(map, s.call(gesture, "toXml")->toString()));
    s.waitForText(QStringLiteral(":Map.Zoom"), "text", QStringLiteral("Zoom: 2.50"));
    s.say(QStringLiteral("heard zoomChanged %1 times, the last one with %2")
              .arg(listener.count)
              .arg(listener.last, 0, 'f', 2));
    s.picture(QStringLiteral("map.png"), QStringLiteral("the map afterwards"),
              QStringLiteral(":Contacts"));
}

void useWindows(TestRun &s)
{
    s.step(QStringLiteral("Resize one window, close another"));
    const SharedPtr<Object> window = s.object(QStringLiteral(":Contacts"));
    s.callGlobal("_vantrel_window_resizeto", {window, wrap(1000), wrap(600)});
    const ScreenRectangle frame =
        unwrapScreenRectangle(s.callGlobal("_vantrel_window_geometry_get", {window}));
    s.expect(QStringLiteral("size of the window with its frame"),
             QStringLiteral("%1x%2").arg(frame.width).arg(frame.height),
             QStringLiteral("1000x600"));
    activateByName(s, QStringLiteral(":Contacts.About"));
    s.callGlobal("_vantrel_window_close", {s.object(QStringLiteral(":About Contacts"))});
    s.require(waitFor(
        [&] { return Inspector::self()->findObject(QStringLiteral(":About Contacts")).isNull(); },
        5000, QStringLiteral("the box to be gone")));
    Inspector::self()->lastError();
    s.say(QStringLiteral("closed :About Contacts"));
}

void failOnPurpose(TestRun &s)
{
    s.step(QStringLiteral("Ask for something that is not there"));
    const QString name = QStringLiteral("{enabled='true' text='Safe' type='QPushButton'}");
    if (Inspector::self()->findObject(name)) {
        throw Failure(name + QStringLiteral(" was found"));
    }
    const std::vector<NearMiss> misses = Inspector::self()->nearMisses();
    s.say(Inspector::self()->lastError());
    for (const NearMiss &miss : misses) {
        if (miss.numHeld < misses.front().numHeld) {
            break; // further away than the best
        }
        QStringList differences;
        for (const NearMiss::Condition &condition : miss.conditions) {
            if (!condition.held) {
                differences << QStringLiteral("%1 is '%2'").arg(condition.name, condition.actual);
            }
        }
        s.say(QStringLiteral("near: %1, but %2")
                  .arg(miss.object->qualifiedName(), differences.join(QStringLiteral(", "))));
    }
}

void dump(TestRun &s)
{
    s.step(QStringLiteral("Dump the tree"));
    const std::unique_ptr<UiElement> tree = dumpTree({});
    s.require(tree != nullptr);
    s.showTree(*tree);
    s.save(QStringLiteral("tree.xml"), toXml(*tree));
    s.show(QStringLiteral("tree.xml"), QStringLiteral("every object with its name and properties"));
    s.save(QStringLiteral("tree.json"), toJson(*tree));
    s.show(QStringLiteral("tree.json"), QStringLiteral("the same"));
}

} // namespace

void driveContacts(const QString &objectMap, const QString &directory)
{
    TestRun s(directory);
    ObjectMap map(false);
    if (!map.loadFromFile(objectMap)) {
        throw Failure(QStringLiteral("Cannot read the object map %1").arg(objectMap));
    }
    s.step(QStringLiteral("Find the window"));
    s.expect(QStringLiteral("title"), s.property(QStringLiteral(":Contacts"), "windowTitle"),
             QStringLiteral("Contacts"));
    s.picture(QStringLiteral("start.png"), QStringLiteral("the application as it starts"),
              QStringLiteral(":Contacts"));
    addContact(s);
    editContact(s);
    readTable(s);
    deleteContact(s);
    pinchMap(s);
    failOnPurpose(s);
    dump(s);
    useWindows(s);
    s.step(QStringLiteral("Close the application"));
    s.callGlobal("_vantrel_window_close", {s.object(QStringLiteral(":Contacts"))});
    s.finish();
}
