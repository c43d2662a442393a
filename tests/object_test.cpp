#include "testclass.h"

#include "objectmodel/delegates.h"
#include "objectmodel/namespace.h"
#include "objectmodel/remote.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

class Note : public UserData
{
public:
    explicit Note(int *alive) : m_alive(alive) { ++*m_alive; }
    ~Note() override { --*m_alive; }
    UserData *clone() const override { return new Note(m_alive); }

private:
    int *m_alive;
};

/** A tree of two levels under one object; counts what it is asked. */
class TwoLevels : public ObjectHierarchyDelegate
{
public:
    explicit TwoLevels(const QString &className) : ObjectHierarchyDelegate(className) { }
    int numChildren(SharedPtr<Object>) override { return int(items.size()); }
    SharedPtr<Object> child(SharedPtr<Object>, int index) override { return items.at(index); }
    SharedPtr<Object> childByName(SharedPtr<Object>, const QString &) override
    {
        ++nameLookups;
        return items.empty() ? SharedPtr<Object>() : items.front();
    }
    QString name(SharedPtr<Object>) override { return "named"; }
    QString qualifiedName(SharedPtr<Object>) override { return "{qualified}"; }
    int wrapperType(SharedPtr<Object>) override { return 7; }
    ObjectList items;
    int nameLookups = 0;
};

class IntegerOnly : public ConversionDelegate
{
public:
    explicit IntegerOnly(const QString &className) : ConversionDelegate(className) { }
    int capabilities() const override { return IntegerCapability; }
    int toInteger(SharedPtr<Object>) const override { return 5; }
    double toDouble(SharedPtr<Object>) const override { return 9.5; }
    void fromInteger(int value, SharedPtr<Object>) const override { written = value; }
    mutable int written = 0;
};

class RemoteThing : public RemoteObjectBase
{
public:
    RemoteThing(const Class *c, quint32 id) : RemoteObjectBase(c, id) { }
};

int value = 1;

} // namespace

TEST(Object, IsSmall)
{
    EXPECT_LE(sizeof(Object), 80u);
    EXPECT_LE(sizeof(RemoteObjectBase), 88u);
}

TEST(Object, OwnsItsUserDataAlwaysAndItsDataWhenTold)
{
    TestClass &c = *new TestClass("OtOwning");
    std::vector<void *> deleted;
    c.onDelete = [&](void *data) { deleted.push_back(data); };
    int alive = 0;
    int second = 2;
    {
        SharedPtr<Object> object(new Object(&value, &c, ObjectAttribute()));
        object->setUserData(new Note(&alive));
        object->put(&value); // the same data, and still the user data goes
        EXPECT_EQ(0, alive);
        EXPECT_TRUE(deleted.empty());
        object->setAutoDelete(true);
        object->setUserData(new Note(&alive));
        object->put(&second);
        EXPECT_EQ((std::vector<void *> {&value}), deleted);
        EXPECT_TRUE(object->isAutoDelete());
        object->setUserData(new Note(&alive));
    }
    EXPECT_EQ(0, alive);
    EXPECT_EQ((std::vector<void *> {&value, &second}), deleted);
    c.onDelete = nullptr;
}

TEST(Object, ForgetsItsDataWhenInvalidated)
{
    TestClass &c = *new TestClass("OtInvalidated");
    int deletions = 0;
    c.onDelete = [&](void *) { ++deletions; };
    int alive = 0;
    SharedPtr<Object> object(new Object(&value, &c, ObjectAttribute::Pointer()));
    object->setAutoDelete(true);
    object->setUserData(new Note(&alive));
    const quint32 index = object->index();
    TwoLevels delegate("OtInvalidated");
    EXPECT_EQ("named", object->name());
    SharedPtr<Object> other = object;
    object->invalidate();
    EXPECT_FALSE(other->isValid());
    EXPECT_TRUE(other->isNull());
    EXPECT_EQ("Dead", other->className());
    EXPECT_EQ("unnamed", other->name());
    EXPECT_EQ(index, other->index());
    EXPECT_EQ(1, alive);
    EXPECT_EQ("<null>", other->toString());
    EXPECT_EQ("0 : Dead", other->toDebugString());
    EXPECT_EQ(0, other->toInteger());
    EXPECT_EQ(nullptr, other->type()->super());
    object.reset();
    other.reset();
    EXPECT_EQ(0, alive);
    EXPECT_EQ(0, deletions);
    c.onDelete = nullptr;
}

TEST(Object, MakesZombiesWithoutTouchingTheRegistry)
{
    const int classes = inspector()->numClasses();
    const int namespaces = inspector()->numNamespaces();
    Object::registerClassOfTheDead();
    const SharedPtr<Object> zombie = Object::zombie();
    EXPECT_TRUE(zombie->isValid());
    EXPECT_TRUE(zombie->isNull());
    EXPECT_EQ("Dead", zombie->className());
    EXPECT_EQ("Dead", zombie->type()->fullyQualifiedClassName());
    EXPECT_EQ(-1, zombie->type()->id());
    EXPECT_EQ(-1, zombie->type()->nameSpace()->id());
    EXPECT_EQ(nullptr, inspector()->type("Dead"));
    EXPECT_EQ(classes, inspector()->numClasses());
    EXPECT_EQ(namespaces, inspector()->numNamespaces());
    EXPECT_TRUE(zombie->type()->methods("x").isEmpty());
    EXPECT_FALSE(zombie->compare(Object::zombie()));
}

TEST(Object, NamesItselfWithoutBeingDeleted)
{
    const TestClass &c = *new TestClass("OtUnheld");
    new TwoLevels("OtUnheld");
    Object onStack(&value, &c, ObjectAttribute::Pointer());
    EXPECT_TRUE(onStack.sameAs(onStack.castTo(&c)));
    EXPECT_TRUE(onStack.compare(onStack.reference()));
    EXPECT_EQ(0, onStack.numChildren());
    EXPECT_EQ(QString(), onStack.toString());
    EXPECT_EQ(0u, onStack.referenceCount());
}

TEST(Object, RetypesInPlaceAlongTheHierarchyOnly)
{
    const TestClass &base = *new TestClass("OtBase");
    const TestClass &derived = *new TestClass("OtDerived", &base);
    const TestClass &unrelated = *new TestClass("OtUnrelated");
    new TwoLevels("OtDerived");
    SharedPtr<Object> object(new Object(&value, &base, ObjectAttribute()));
    EXPECT_EQ("unnamed", object->name());
    EXPECT_EQ(object, object->castTo(&derived));
    EXPECT_EQ(&derived, object->type());
    EXPECT_EQ("named", object->name());
    object->castTo(&base);
    EXPECT_EQ("unnamed", object->name());
    EXPECT_EQ(object, object->castTo(&unrelated));
    EXPECT_EQ(&base, object->type());
    EXPECT_EQ(object, object->castTo(nullptr));
    object->castTo(primitive(PrimitiveId::Int));
    EXPECT_EQ(&base, object->type());
    EXPECT_TRUE(object->isA(&base));
    EXPECT_FALSE(object->isA(&derived));
    EXPECT_FALSE(object->isA(nullptr));
}

TEST(Object, ReferencesAndDereferencesByItsShape)
{
    const TestClass &c = *new TestClass("OtShapes");
    const struct { const char *what; int flags; bool newReference; bool newValue; } rows[] = {
        {"value", 0, true, false},
        {"reference", ObjectAttribute::ReferenceFlag, true, false},
        {"pointer", ObjectAttribute::PointerFlag, false, true},
        {"array", ObjectAttribute::ArrayFlag, false, false},
        {"reference to a pointer", ObjectAttribute::PointerFlag | ObjectAttribute::ReferenceFlag,
         false, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        SharedPtr<Object> object(new Object(&value, &c, ObjectAttribute(row.flags)));
        const SharedPtr<Object> reference = object->reference();
        const SharedPtr<Object> dereferenced = object->dereference();
        EXPECT_EQ(row.newReference, reference != object);
        EXPECT_EQ(row.newValue, dereferenced != object);
        EXPECT_TRUE(object->sameAs(reference));
        EXPECT_TRUE(object->sameAs(dereferenced));
    }
    const SharedPtr<Object> null(new Object(nullptr, &c, ObjectAttribute::Pointer()));
    EXPECT_TRUE(null->dereference().isNull());
}

TEST(Object, KeepsTheOwnerOfSharedDataAlive)
{
    TestClass &c = *new TestClass("OtShared");
    int deletions = 0;
    c.onDelete = [&](void *) { ++deletions; };
    SharedPtr<Object> object(new Object(&value, &c, ObjectAttribute()));
    object->setAutoDelete(true);
    SharedPtr<Object> pointer = object->reference();
    object.reset();
    EXPECT_EQ(0, deletions);
    // Views of views keep the owner alone, however often a script asks for them.
    for (int i = 0; i < 500000; ++i) {
        pointer = pointer->dereference()->reference();
    }
    EXPECT_EQ(0, deletions);
    pointer->put(nullptr);
    EXPECT_EQ(1, deletions) << "a handle for other data keeps the old data no longer";
    c.onDelete = nullptr;
}

TEST(Object, KeepsReplacedDataForTheViewsOfIt)
{
    TestClass &c = *new TestClass("OtReplaced");
    std::vector<void *> deleted;
    c.onDelete = [&](void *data) { deleted.push_back(data); };
    int data[4] = {};
    SharedPtr<Object> object(new Object(data, &c, ObjectAttribute()));
    object->setAutoDelete(true);
    SharedPtr<Object> first = object->reference();
    object->put(data + 1);
    object->put(data + 2);
    SharedPtr<Object> second = object->reference();
    object->put(data + 3);
    object.reset();
    EXPECT_EQ((std::vector<void *>{data + 1, data + 3}), deleted)
        << "what nobody else looks at goes at once";
    first.reset();
    second.reset();
    EXPECT_EQ(4u, deleted.size());
    c.onDelete = nullptr;
}

TEST(Object, AsksItsHierarchyDelegate)
{
    const TestClass &base = *new TestClass("OtTreeBase");
    const TestClass &c = *new TestClass("OtTree", &base);
    SharedPtr<Object> object(new Object(&value, &c, ObjectAttribute()));
    EXPECT_EQ(0, object->numChildren());
    EXPECT_EQ(0, object->wrapperType());
    EXPECT_TRUE(object->child(0).isNull());
    EXPECT_TRUE(object->parent().isNull());
    EXPECT_EQ("unnamed", object->qualifiedName());

    // An absent delegate is asked for again, a present one is kept.
    auto *delegate = new TwoLevels("OtTreeBase");
    EXPECT_TRUE(object->childByName("x").isNull());
    EXPECT_EQ(0, delegate->nameLookups);
    delegate->items << object << SharedPtr<Object>() << object;
    EXPECT_EQ(3, object->numChildren());
    EXPECT_EQ(2u, object->children().size());
    EXPECT_EQ(object, object->childByName("x"));
    EXPECT_EQ(7, object->wrapperType());
    const TwoLevels later("OtTree");
    EXPECT_EQ(3, object->numChildren());
    object->castTo(&c);
    EXPECT_EQ(3, object->numChildren()) << "nothing to cast";
    const SharedPtr<Object> fresh(new Object(&value, &c, ObjectAttribute()));
    EXPECT_EQ(0, fresh->numChildren());
    delegate->items.clear();
    const SharedPtr<Object> outliving(new Object(&value, &c, ObjectAttribute()));
    {
        TwoLevels brief("OtTree");
        EXPECT_EQ("named", outliving->name());
    }
    EXPECT_EQ("named", outliving->name()) << "by that of the super class";
}

TEST(Object, FallsBackToTheDelegateOfQObject)
{
    class Registry : public FallbackRegistry
    {
        bool isQObjectBased(const QString &name) const override
        {
            return name == QLatin1String("OtFallback");
        }
    };
    const TestClass &c = *new TestClass("OtFallback");
    const TestClass &other = *new TestClass("OtNoFallback");
    TwoLevels delegate("QObject");
    const Registry registry;
    DelegateFactory::self()->setFallbackRegistry(&registry);
    EXPECT_EQ("named", Object(&value, &c, ObjectAttribute()).name());
    EXPECT_EQ("unnamed", Object(&value, &other, ObjectAttribute()).name());
    DelegateFactory::self()->setFallbackRegistry(nullptr);
}

TEST(Object, ConvertsByDelegateThenByClass)
{
    TestClass &c = *new TestClass("OtConverting");
    auto *delegate = new IntegerOnly("OtConverting");
    c.onCanConvert = [](const Class *target, bool, bool targetIsPointer) {
        return targetIsPointer && target != primitive(PrimitiveId::Bool);
    };
    c.onConvert = [](SharedPtr<Object>, const Class *) {
        return inspector()->createPrimitive("12");
    };
    const SharedPtr<Object> object(new Object(&value, &c, ObjectAttribute()));
    EXPECT_EQ(5, object->toInteger());
    EXPECT_EQ(12.0, object->toDouble());
    EXPECT_EQ(12, object->toInt64());
    EXPECT_FALSE(object->toBoolean());
    EXPECT_EQ("12", object->toString());
    object->fromInteger(8);
    object->fromDouble(3.0);
    EXPECT_EQ(8, delegate->written);

    // Null data reads as such whoever would convert it; the number forms do not ask.
    const SharedPtr<Object> null(new Object(nullptr, &c, ObjectAttribute()));
    EXPECT_EQ("<null>", null->toString());
    EXPECT_EQ(5, null->toInteger());

    c.onCanConvert = [](const Class *, bool, bool targetIsPointer) { return !targetIsPointer; };
    EXPECT_EQ("12", object->toString()) << "asked with the other pointer flag, too";
    c.onCanConvert = [](const Class *, bool, bool) { return true; };

    // A conversion that gives the handle back, or never the primitive class, ends.
    c.onConvert = [](SharedPtr<Object> o, const Class *) { return o; };
    EXPECT_EQ(QString(), object->toString());
    c.onConvert = [&c](SharedPtr<Object>, const Class *) {
        return SharedPtr<Object>(new Object(&value, &c, ObjectAttribute()));
    };
    EXPECT_EQ(QString(), object->toString());
    EXPECT_EQ(0.0, object->toDouble());
    c.onCanConvert = nullptr;
}

TEST(Object, DescribesItsPropertiesForDebugging)
{
    TestClass &c = *new TestClass("OtDebug");
    c.addProperty("a", intArgument()).addProperty("hidden", intArgument(), 0);
    c.addProperty("none", intArgument()).addProperty("self", Argument(&c)).addProperty("last", intArgument(), 0);
    SharedPtr<Object> object(new Object(&value, &c, ObjectAttribute()));
    c.onGet = [&](int id, void *) {
        return id == 0 ? inspector()->createPrimitive(3) : id == 3 ? object : SharedPtr<Object>();
    };
    EXPECT_EQ("{ a = 3 : int, self =  : OtDebug,  } : OtDebug",
              object->toDebugString());
    c.onGet = nullptr;

    // Two classes whose objects contain each other: the depth is bounded.
    TestClass &left = *new TestClass("OtLeft");
    TestClass &right = *new TestClass("OtRight");
    left.addProperty("other", Argument(&right));
    right.addProperty("other", Argument(&left));
    left.onGet = [&](int, void *data) { return static_cast<const Class &>(right).wrap(data, ObjectAttribute()); };
    right.onGet = [&](int, void *data) { return static_cast<const Class &>(left).wrap(data, ObjectAttribute()); };
    const QString text = Object(&value, &left, ObjectAttribute()).toDebugString();
    EXPECT_EQ(64, text.count("{ other = "));
    EXPECT_EQ(1, text.count("{ other = OtLeft }")) << "the class alone, beyond the limit";
    left.onGet = right.onGet = nullptr;
}

TEST(Object, EndsItsDescriptionWhereManyWaysLeadOn)
{
    TestClass &here = *new TestClass("OtHere");
    TestClass &there = *new TestClass("OtThere");
    for (const char *name : {"a", "b"}) {
        here.addProperty(name, Argument(&there));
        there.addProperty(name, Argument(&here));
    }
    const auto wrapped = [](const Class &c, void *data) { return c.wrap(data, ObjectAttribute()); };
    here.onGet = [&](int, void *data) { return wrapped(there, data); };
    there.onGet = [&](int, void *data) { return wrapped(here, data); };
    const auto numDescribed = [&] {
        return Object(&value, &here, ObjectAttribute()).toDebugString().count("{ a = ");
    };
    const int first = numDescribed();
    EXPECT_GT(first, 64);
    EXPECT_LE(first, 10000);
    EXPECT_EQ(first, numDescribed()) << "the next text counts from the start";
    here.onGet = there.onGet = nullptr;
}

TEST(Object, CopiesEveryFieldTheCountIncluded)
{
    const TestClass &c = *new TestClass("OtCopied");
    SharedPtr<Object> object(new Object(&value, &c, ObjectAttribute::Pointer()));
    Object later(&value, &c, ObjectAttribute());
    const quint32 index = later.index();
    EXPECT_EQ(index + 1, object->index()) << "a handle gets its index when it is asked";
    EXPECT_EQ(index, later.index());
    const Object copy(*object);
    EXPECT_EQ(index + 1, copy.index());
    EXPECT_EQ(1u, copy.referenceCount());
    EXPECT_EQ(object->type(), copy.type());
    RemoteThing remote(&c, 77);
    EXPECT_TRUE(remote.isNull());
    RemoteThing other(&c, 1);
    other = remote;
    EXPECT_EQ(77u, other.objectId());
}

TEST(ObjectList, ChecksItsIndices)
{
    ObjectList list;
    list << inspector()->createPrimitive(1) << inspector()->createPrimitive(2);
    try {
        list.at(2);
        ADD_FAILURE() << "no exception";
    } catch (const std::out_of_range &error) {
        EXPECT_STREQ("invalid vector<T> subscript", error.what());
    }
    const ObjectList &same = list;
    EXPECT_THROW(same[std::size_t(-1)], std::out_of_range);
    list.insert(list.begin() + 1, 2, inspector()->createPrimitive(7));
    list.erase(list.begin());
    EXPECT_EQ(7, list[1]->toInteger());
    EXPECT_EQ(2, list.back()->toInteger());
    list.resize(5);
    EXPECT_TRUE(list[4].isNull());
}
