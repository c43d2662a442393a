#include "testclass.h"

#include "objectmodel/delegates.h"
#include "objectmodel/objectmap.h"
#include "objectmodel/objectname.h"
#include "objectmodel/objectsearch.h"

#include <gtest/gtest.h>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

struct Node
{
    QString name;
    QString type;
    QString text;
    Node *parent = nullptr;
    std::vector<std::unique_ptr<Node>> children;

    Node *add(const char *childName, const char *childType, const char *childText)
    {
        children.push_back(std::make_unique<Node>());
        Node *child = children.back().get();
        child->name = QString::fromLatin1(childName);
        child->type = QString::fromLatin1(childType);
        child->text = QString::fromLatin1(childText);
        child->parent = this;
        return child;
    }
};

/** A toolkit of three levels: windows, panels, widgets. */
class Toolkit : public ObjectHierarchyDelegate
{
public:
    Toolkit() : ObjectHierarchyDelegate(nodeClass().className()) { }

    static TestClass &nodeClass()
    {
        static TestClass &made = *new TestClass("SrNode");
        return made;
    }
    SharedPtr<Object> wrapped(Node *node) const
    {
        ++handles;
        const Class *c = &nodeClass();
        return c->wrap(node, ObjectAttribute::Pointer());
    }
    static Node *unwrapped(const SharedPtr<Object> &object)
    {
        void *data = nullptr;
        object->get(&data);
        return static_cast<Node *>(data);
    }

    int numChildren(SharedPtr<Object> parent) override { return int(node(parent)->children.size()); }
    SharedPtr<Object> child(SharedPtr<Object> parent, int index) override
    {
        return wrapped(node(parent)->children.at(index).get());
    }
    SharedPtr<Object> childByName(SharedPtr<Object> parent, const QString &name) override
    {
        for (const auto &candidate : node(parent)->children) {
            if (candidate->name == name) {
                return wrapped(candidate.get());
            }
        }
        return {};
    }
    QString name(SharedPtr<Object> object) override { return unwrapped(object)->name; }
    QString qualifiedName(SharedPtr<Object> object) override
    {
        return QStringLiteral("{name='%1'}").arg(unwrapped(object)->name);
    }
    int wrapperType(SharedPtr<Object>) override { return 0; }
    SharedPtr<Object> objectByQualifiedName(SharedPtr<Object> parent, const ObjectName &name) override
    {
        ++searches;
        ObjectMatcher matcher(name);
        return search(*node(parent), matcher);
    }

    Node root;
    int searches = 0;
    mutable int handles = 0;

private:
    Node *node(const SharedPtr<Object> &object) { return object ? unwrapped(object) : &root; }

    SharedPtr<Object> search(Node &below, ObjectMatcher &matcher)
    {
        for (const auto &child : below.children) {
            const auto holds = [&](const ObjectMatcher::Condition &wanted, QString *actual) {
                return condition(*child, wanted, actual);
            };
            if (matcher.offer(holds, [&] { return wrapped(child.get()); })) {
                return wrapped(child.get());
            }
            if (SharedPtr<Object> found = search(*child, matcher)) {
                return found;
            }
        }
        return {};
    }
    bool condition(const Node &candidate, const ObjectMatcher::Condition &wanted, QString *actual)
    {
        if (wanted.name == QLatin1String("name")) {
            return wanted.holds(candidate.name, actual);
        }
        if (wanted.name == QLatin1String("type")) {
            return wanted.holds(candidate.type, actual);
        }
        if (wanted.name == QLatin1String("text")) {
            return wanted.holds(candidate.text, actual);
        }
        if (wanted.name == QLatin1String("container") && wanted.wanted.isObject()) {
            const SharedPtr<Object> container = inspector()->findObject(wanted.wanted.stringValue());
            return container && unwrapped(container) == candidate.parent;
        }
        return false;
    }
};

class Search : public testing::Test
{
protected:
    void SetUp() override
    {
        inspector()->lastError();
        inspector()->enableObjectCache(false);
        inspector()->addTopLevelHierarchyDelegate(&toolkit);
        Node *window = toolkit.root.add("main", "Window", "Address List");
        Node *panel = window->add("form", "Panel", "");
        ok = panel->add("ok", "Button", "OK");
        cancel = panel->add("cancel", "Button", "Cancel");
        edit = panel->add("edit", "Edit", "Ann");
        Node *dialog = toolkit.root.add("dialog", "Window", "Question");
        dialogOk = dialog->add("buttons", "Panel", "")->add("ok", "Button", "OK");
    }
    void TearDown() override
    {
        inspector()->enableObjectCache(true);
        inspector()->invalidateObjectCache(ok);
        inspector()->lastError();
    }
    Node *find(const QString &name)
    {
        const SharedPtr<Object> found = inspector()->findObject(name);
        return found ? Toolkit::unwrapped(found) : nullptr;
    }
    Node *find(const char *name) { return find(QString::fromLatin1(name)); }
    QString error() { return inspector()->lastError(); }

    Toolkit toolkit;
    Node *ok, *cancel, *edit, *dialogOk;
};

} // namespace

TEST_F(Search, FindsByEveryKindOfName)
{
    ObjectMap map(false);
    map.loadFromString(QStringLiteral(":OK\t{text='OK' type='Button'}\n:Edit\tmain.form.edit\n"));
    const struct { const char *what; const char *name; Node *found; } rows[] = {
        {"two properties", "{type='Button' text='Cancel'}", cancel},
        {"regular expression", "{type='Button' text~='^C.*l$'}", cancel},
        {"wildcard", "{type='But*' text?='Can*'}", nullptr},
        {"wildcards", "{type?='But*' text?='Can*'}", cancel},
        {"first of several", "{text='OK'}", ok},
        {"second occurrence", "{text='OK' occurrence='2'}", dialogOk},
        {"third occurrence", "{text='OK' occurrence='3'}", nullptr},
        {"occurrence that is no number", "{text='OK' occurrence='x'}", nullptr},
        {"nested name", "{text='OK' container={name='buttons'}}", dialogOk},
        {"nested twice", "{text='OK' container={name='buttons' container={type='Window'}}}", nullptr},
        {"qualified", "{type='Panel'}.cancel", cancel},
        {"qualified over two levels", "{text='Question'}.buttons.ok", dialogOk},
        {"hierarchical", "main.form.edit", edit},
        {"symbolic", ":OK", ok},
        {"symbolic for a hierarchical name", ":Edit", edit},
        {"symbol that is no entry, taken as a name", ":main.form.ok", ok},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(row.found, find(row.name));
        EXPECT_EQ(row.found == nullptr, !error().isEmpty());
    }
}

TEST(SearchWithoutToolkit, SaysThatNothingCanBeFound)
{
    inspector()->lastError();
    EXPECT_FALSE(inspector()->findObject(QStringLiteral("main.ok")));
    EXPECT_EQ(QStringLiteral(
                  "Cannot find object 'main.ok': no toolkit has registered an object hierarchy"),
              inspector()->lastError());
}

TEST_F(Search, SaysWhatWasNotFound)
{
    ObjectMap map(false);
    map.loadFromString(QStringLiteral(":Gone\tmain.gone\n:NoTop\tnowhere\n:Bad\t{type='X'}\n"));
    const struct { const char *what; const char *name; const char *error;
    } rows[] = {
        {"empty", "", "Empty Object Name passed to findObject!"},
        {"invalid", "{a=x}",
         "Cannot find object with invalid object name: Parse error while parsing '{a=x}': "
         "at column 4: expected either ' or { or whitespace, got x\n"},
        {"no brace at the end", "{type='Button'",
         "Cannot find object with invalid object name: Object name "
         "'{type='Button'' ended unexpectedly at column 14: '}' missing"},
        {"hierarchical, brace", "a.b}",
         "Cannot find object with invalid object name: Hierarchical names must not "
         "start with '{' or end in '}': a.b}"},
        {"top level", "nowhere.ok", "Object 'nowhere.ok' not found."},
        {"percent signs", "no%1where", "Object 'no%1where' not found."},
        {"child", "main.form.nothing.more",
         "Object 'main.form.nothing.more' not found.\n"
         "    Could not find child 'nothing' under 'main.form'"},
        {"symbol", ":Missing", "Object ':Missing' not found. Object name not found in Object Map."},
        {"symbol with a path", ":Gone",
         "Object ':Gone' not found.\n    Could not find child 'gone' under 'main'"},
        {"symbol for a missing top level", ":NoTop",
         "Object ':NoTop' not found. Object name not found in Object Map."},
        {"conditions", "{text='OK' type='Label'}",
         "Object '{text='OK' type='Label'}' not found. Could not match "
         "properties:\n    type for object name: '{text='OK' type='Label'}'"},
        {"no candidate", "{colour='red'}",
         "Object '{colour='red'}' not found. Could not match properties:\n"
         "    colour for object name: '{colour='red'}'"},
        {"symbol for conditions", ":Bad",
         "Object ':Bad' not found. Could not match properties:\n"
         "    type for object name: '{type='X'}'"},
        {"qualified, child", "{type='Panel'}.x",
         "Object '{type='Panel'}.x' not found.\n"
         "    Could not find child 'x' under '{type='Panel'}'"},
        {"qualified, prefix", "{type='X'}.x",
         "Object '{type='X'}.x' not found: Object '{type='X'}' not found. Could "
         "not match properties:\n    type for object name: '{type='X'}'"},
        {"empty qualified component", "{type='Panel'}.",
         "Object '{type='Panel'}.' not found.\n"
         "    Could not find child '' under '{type='Panel'}'"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(nullptr, find(row.name));
        EXPECT_EQ(QString::fromLatin1(row.error), error());
        EXPECT_EQ(QString(), error());
    }
}

TEST_F(Search, ReportsWhatACallerAddsAndAnEarlierError)
{
    inspector()->setError(QStringLiteral("earlier"));
    inspector()->addUnmatchedProperty(QStringLiteral("{a='1'\n}"), QStringLiteral("a"));
    inspector()->addUnmatchedProperty(QStringLiteral("{a='1'\n}"), QStringLiteral("b"));
    ObjectMap map(false);
    EXPECT_EQ(nullptr, find("{name='none'}"));
    EXPECT_EQ(2, inspector()->unmatchedProperties().size());
    EXPECT_EQ(QStringLiteral("Object '{name='none'}' not found: earlier Could not match properties:"
                             "\n    a,b for object name: '{a='1'\\n}'"
                             "\n    name for object name: '{name='none'}'"),
              error());
    EXPECT_TRUE(inspector()->unmatchedProperties().isEmpty());

    // Nobody has read what the first failed search reported when the second one fails.
    find("{name='first'}");
    find("{name='first' type='Window'}.x");
    EXPECT_EQ((QStringList{"{name='first' type='Window'}", "{name='first'}"}),
              inspector()->unmatchedProperties().keys());
}

TEST_F(Search, LeavesTheErrorAloneWhileEventsAreRecorded)
{
    class Silent : public EventNotifyDelegate
    {
        void notifyEvent(const EventData &) override { }
    };
    Silent silent;
    inspector()->setEventNotifyDelegate(&silent);
    inspector()->setEventRecordingEnabled(true);
    inspector()->setError(QStringLiteral("earlier"));
    EXPECT_EQ(nullptr, find("{text='none'}"));
    EXPECT_EQ(ok, find("{text='OK'}"));
    EXPECT_EQ(QStringLiteral("earlier"), error());
    inspector()->setEventRecordingEnabled(false);
    inspector()->setEventNotifyDelegate(nullptr);
}

TEST_F(Search, DropsTheColonOfASymbolWhileThereIsNoMap)
{
    ASSERT_EQ(nullptr, ObjectMap::self());
    EXPECT_EQ(ok, find(":{text='OK'}"));
    EXPECT_EQ(edit, find(":main.form.edit"));
}

TEST_F(Search, KeepsTheLastFoundObjectByItsGivenName)
{
    find("{text='OK'}");
    inspector()->enableObjectCache(true);
    int searches = toolkit.searches;
    const SharedPtr<Object> first = inspector()->findObject(QStringLiteral("{text='OK'}"));
    EXPECT_EQ(searches + 1, toolkit.searches) << "what was found without the cache is not in it";
    searches = toolkit.searches;
    EXPECT_EQ(first, inspector()->findObject(QStringLiteral("{text='OK'}")));
    EXPECT_EQ(searches, toolkit.searches);
    inspector()->findObject(QStringLiteral("{ text='OK'}")); // another spelling is another name
    EXPECT_EQ(searches + 1, toolkit.searches);
    inspector()->findObject(QStringLiteral("{text='OK'}"));
    EXPECT_EQ(searches + 2, toolkit.searches);

    inspector()->invalidateObjectCache(&toolkit);
    inspector()->findObject(QStringLiteral("{text='OK'}"));
    EXPECT_EQ(searches + 2, toolkit.searches);
    inspector()->invalidateObjectCache(ok);
    const SharedPtr<Object> again = inspector()->findObject(QStringLiteral("{text='OK'}"));
    EXPECT_EQ(searches + 3, toolkit.searches);
    again->invalidate();
    EXPECT_EQ(ok, find("{text='OK'}")) << "a dead handle is no hit";
    EXPECT_EQ(searches + 4, toolkit.searches);
}

TEST_F(Search, NamesTheNearestCandidates)
{
    EXPECT_EQ(nullptr, find("{text='ok' type='Button'}"));
    const std::vector<NearMiss> misses = inspector()->nearMisses();
    ASSERT_EQ(3u, misses.size());
    EXPECT_EQ(ok, Toolkit::unwrapped(misses[0].object));
    EXPECT_EQ(dialogOk, Toolkit::unwrapped(misses[1].object));
    EXPECT_EQ(cancel, Toolkit::unwrapped(misses[2].object));
    EXPECT_EQ(1, misses[0].numHeld);
    ASSERT_EQ(2u, misses[0].conditions.size());
    EXPECT_EQ(QStringLiteral("text"), misses[0].conditions[0].name);
    EXPECT_EQ(QStringLiteral("="), misses[0].conditions[0].operatorText);
    EXPECT_EQ(QStringLiteral("ok"), misses[0].conditions[0].wanted);
    EXPECT_EQ(QStringLiteral("OK"), misses[0].conditions[0].actual);
    EXPECT_FALSE(misses[0].conditions[0].held);
    EXPECT_TRUE(misses[0].conditions[1].held);

    EXPECT_EQ(nullptr, find("{text='Cacnel' type='Button'}"));
    ASSERT_EQ(3u, inspector()->nearMisses().size());
    EXPECT_EQ(cancel, Toolkit::unwrapped(inspector()->nearMisses()[0].object)) << "mistyped";

    // All conditions hold, but not as often as wanted.
    EXPECT_EQ(nullptr, find("{text='OK' occurrence='3'}"));
    ASSERT_EQ(2u, inspector()->nearMisses().size());
    EXPECT_EQ(QStringLiteral("occurrence"), inspector()->nearMisses()[1].conditions.back().name);
    EXPECT_EQ(QStringLiteral("2"), inspector()->nearMisses()[1].conditions.back().actual);

    EXPECT_EQ(nullptr, find("{text='ok' type='Button'}.child")) << "the prefix is what failed";
    EXPECT_EQ(3u, inspector()->nearMisses().size());

    for (int i = 0; i < 30; ++i) {
        toolkit.root.add("more", "Button", "no");
    }
    EXPECT_EQ(nullptr, find("{text='zzz' type='Button'}"));
    EXPECT_EQ(10u, inspector()->nearMisses().size());

    // Finding something costs no handle but the one that is found.
    toolkit.handles = 0;
    const int searches = toolkit.searches;
    EXPECT_EQ(dialogOk, find("{text='OK' occurrence='2'}"));
    EXPECT_EQ(1, toolkit.handles);
    EXPECT_EQ(searches + 1, toolkit.searches);
    EXPECT_TRUE(inspector()->nearMisses().empty());
}

TEST_F(Search, ReadsPropertiesByReflection)
{
    TestClass &c = *new TestClass("SrReflected");
    c.addProperty("text", textArgument()).addProperty("size", intArgument());
    c.addProperty("window", Argument(&Toolkit::nodeClass(), ObjectAttribute::Pointer()));
    static const Enum::Item items[] = {{"Low", 1}, {"High", 7}, {nullptr, 0}};
    c.addProperty("level",
                  Argument(primitive(1), ObjectAttribute(), new Enum(0, &c, "Level", items)));
    c.addProperty("none", Argument(&Toolkit::nodeClass(), ObjectAttribute::Pointer()));
    c.addProperty("next", Argument(&c, ObjectAttribute::Pointer()));
    int data = 0;
    c.onGet = [&](int id, void *) {
        const Class *ofNext = &c;
        const SharedPtr<Object> values[] = {
            inspector()->createPrimitive("Hello"),
            inspector()->createPrimitive(7),
            toolkit.wrapped(ok->parent->parent),
            inspector()->createPrimitive(7),
            toolkit.wrapped(nullptr),
            ofNext->wrap(&data, ObjectAttribute::Pointer()),
        };
        return values[id];
    };
    ObjectMap map(false);
    map.loadFromString(
        QStringLiteral(":Main\t{name='main'}\n:Ring\t{next=':Ring'}\n:Seven\t{size='7'}\n"));
    const SharedPtr<Object> object(new Object(&data, &c, ObjectAttribute::Pointer()));
    const struct
    {
        const char *name;
        bool found;
    } rows[] = {
        {"{text='Hello' size='7'}", true},
        {"{text='Hello' size='8'}", false},
        {"{text='Hello' colour=''}", false},
        {"{window={name='main'}}", true},
        {"{window={name='other'}}", false},
        {"{window=':Main'}", true},
        {"{window=':None'}", false},
        {"{window=''}", false},
        {"{level='High'}", true},
        {"{level='7'}", true},
        {"{level='Low'}", false},
        {"{none=''}", false},
        {"{none='<null>'}", false},
        {"{none={name='main'}}", false},
        {"{next={size='7' next={level='High'}}}", true},
        {"{next={size='7' next={level='Low'}}}", false},
        {"{next={size='7' occurrence='2'}}", false},
        {"{next=':Seven'}", true},
        {"{next=':Ring'}", false},
        {"not a multi-property name", false},
        {"{text=}", false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        ObjectMatcher matcher(ObjectName(QString::fromLatin1(row.name)));
        EXPECT_EQ(row.found, matcher.offer(object));
        EXPECT_FALSE(matcher.offer(SharedPtr<Object>()));
        EXPECT_EQ(row.found, objectMatches(object, ObjectName(QString::fromLatin1(row.name))));
    }
    EXPECT_TRUE(objectMatches(toolkit.wrapped(ok), ObjectName(QStringLiteral("{ name='ok'}"))));
    EXPECT_FALSE(objectMatches(toolkit.wrapped(nullptr), ObjectName(QStringLiteral("{}"))));
    EXPECT_EQ(QString(), error());
    c.onGet = nullptr;
}

TEST_F(Search, ExplainsNestedNamesWithoutRepeatingErrorsOrWork)
{
    for (Node *last = &toolkit.root; !last->children.empty();) {
        last->children.resize(1); // one object, which every level is matched with
        last = last->children.front().get();
        last->children.clear();
    }
    EXPECT_EQ(nullptr, find("{container={container={name='F'}}}"));
    EXPECT_EQ(
        QStringLiteral("Object '{container={container={name='F'}}}' not found: "
                       "Object '{container={name='F'}}' not found: Object '{name='F'}' not found. "
                       "Could not match properties:\n"
                       "    container for object name: '{container={container={name='F'}}}'\n"
                       "    container for object name: '{container={name='F'}}'\n"
                       "    name for object name: '{name='F'}'"),
        error());
    for (const int depth : {20, 255, 256, 700}) {
        SCOPED_TRACE(depth);
        const int numNested = std::min(depth, 255);
        toolkit.searches = 0;
        EXPECT_EQ(nullptr,
                  find(QStringLiteral("{container=").repeated(depth)
                       + QStringLiteral("{name='none'}") + QString(depth, u'}')));
        EXPECT_EQ(2 * (numNested + 1), toolkit.searches);
        const QString text = error();
        EXPECT_EQ(numNested + 1, text.count(QStringLiteral("' not found")));
        EXPECT_EQ(depth > 255, text.contains(QStringLiteral("more than 256 searches are nested")));
    }
}

TEST_F(Search, OutlivesTheMatchersOfAnotherTime)
{
    std::unique_ptr<ObjectMatcher> kept;
    class Keeper : public Toolkit
    {
    public:
        explicit Keeper(std::unique_ptr<ObjectMatcher> *place) : m_place(place) {}
        SharedPtr<Object> objectByQualifiedName(SharedPtr<Object>, const ObjectName &name) override
        {
            *m_place = std::make_unique<ObjectMatcher>(name);
            return {};
        }
        std::unique_ptr<ObjectMatcher> *const m_place;
    } keeper(&kept);
    inspector()->addTopLevelHierarchyDelegate(&keeper);
    EXPECT_EQ(nullptr, find("{name='none'}"));
    error();
    kept.reset();
    EXPECT_TRUE(inspector()->unmatchedProperties().isEmpty());
}
