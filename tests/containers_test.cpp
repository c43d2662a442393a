#include "standin.h"

#include "objectmodel/containerclasses.h"
#include "objectmodel/containers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

using Array = std::vector<SharedPtr<Object>>;
using Map = std::map<QString, SharedPtr<Object>>;

template <class T>
SharedPtr<Object> primitiveOf(T value)
{
    return inspector()->createPrimitive(value);
}
const auto number = primitiveOf<int>;
const auto text = primitiveOf<const char *>;

template <class Container>
Container &native(const SharedPtr<Object> &object)
{
    void *data = nullptr;
    object->get(&data);
    return *static_cast<Container *>(data);
}

/** Calls a method as a script does: by name, with conversion of the arguments. */
SharedPtr<Object> call(const SharedPtr<Object> &object, const char *method,
                       const ObjectList &arguments)
{
    bool ok = false;
    return object->type()->methods(QString::fromLatin1(method)).invoke(object, arguments, &ok);
}

class Containers : public testing::Test
{
protected:
    Containers()
    {
        registerContainerClasses();
        inspector()->lastError();
    }
    Namespace *root() { return inspector()->globalNamespace(); }
};

TEST_F(Containers, WrapsACopyThatTheObjectOwns)
{
    const SharedPtr<Object> item = number(1);
    Array items{item, nullptr};
    SharedPtr<Object> array = ArrayClass::wrapObject(items);
    SharedPtr<Object> map = MapClass::wrapObject({{"k", item}});
    items.clear();
    EXPECT_EQ((Array{item, nullptr}), ArrayClass::unwrapObject(array));
    EXPECT_EQ((Map{{"k", item}}), MapClass::unwrapObject(map));
    for (const auto &object : {array, map}) {
        EXPECT_TRUE(object->isAutoDelete());
        EXPECT_EQ(ObjectAttribute::Pointer(), object->objectAttribute());
    }
    array.reset();
    map.reset();
    EXPECT_EQ(1u, item->referenceCount());
    EXPECT_EQ(ArrayClass::registeredClass(), ArrayClass::arrayClassArg("list").type());
    EXPECT_EQ(QStringLiteral("m\u00e4p"), MapClass::mapClassArg("m\u00e4p").name());
}

TEST_F(Containers, UnwrapNothingFromAnythingElse)
{
    SharedPtr<Object> gone = ArrayClass::wrapObject({number(1)});
    delete &native<Array>(gone);
    gone->invalidate();
    gone->setAutoDelete(false);
    for (const auto &object : {SharedPtr<Object>(), number(3), Object::zombie(), gone,
                               ArrayClass::registeredClass()->createNull()}) {
        EXPECT_TRUE(ArrayClass::unwrapObject(object).empty());
        EXPECT_TRUE(MapClass::unwrapObject(object).empty());
        EXPECT_TRUE(ArrayClass::unwrapRemoteObject(object).empty());
        EXPECT_TRUE(MapClass::unwrapRemoteObject(object).empty());
        EXPECT_FALSE(inspector()->lastError().isEmpty());
    }
    EXPECT_TRUE(MapClass::unwrapObject(ArrayClass::wrapObject({number(1)})).empty());
}

TEST_F(Containers, AreMadeRemotelyThroughTheirMembersOnly)
{
    Standin array(root(), "Vantrel_Array");
    array.type().addConstructor({}).addMethod("push", {intArgument()});
    EXPECT_EQ(&array.type(), ArrayClass::createRemoteObject({})->type());
    EXPECT_EQ(QStringList{"construct0"}, array.calls);
    array.calls.clear();
    EXPECT_TRUE(ArrayClass::createRemoteObject({number(7), number(5)}));
    EXPECT_EQ((QStringList{"construct0", "push 7", "push 5"}), array.calls);

    Standin map(root(), "Vantrel_Map");
    map.textFirst = true;
    map.type().addConstructor({}).addMethod("insert", {textArgument(), intArgument()});
    EXPECT_TRUE(MapClass::createRemoteObject({{"b", number(2)}, {"a", number(1)}}));
    EXPECT_EQ((QStringList{"construct0", "insert a 1", "insert b 2"}), map.calls);
}

TEST_F(Containers, AreReadRemotelyThroughTheirMembersOnly)
{
    Standin array(root(), "Vantrel_Array");
    array.type().addProperty("length", intArgument()).addMethod("at", {intArgument()});
    Standin map(root(), "Vantrel_Map");
    map.textFirst = true;
    map.type().addProperty("keys", intArgument()).addMethod("at", {textArgument()});
    const ObjectList keys{text("z"), text("a")};
    array.property = [](int) { return number(2); };
    array.answer = [&](int call) { return keys.at(std::size_t(call - 1)); };
    map.property = [&](int) { return array.object(); };
    map.answer = [](int call) { return call == 1 ? number(26) : SharedPtr<Object>(); };

    const Map entries = MapClass::unwrapRemoteObject(map.object());
    EXPECT_EQ((QStringList{"get length", "at 0", "at 1"}), array.calls);
    EXPECT_EQ((QStringList{"get keys", "at z", "at a"}), map.calls);
    ASSERT_EQ(2u, entries.size());
    EXPECT_EQ(26, entries.at("z")->toInteger());
    EXPECT_TRUE(entries.at("a").isNull());
}

TEST_F(Containers, DoNotTrustALength)
{
    const std::tuple<const char *, SharedPtr<Object>, int, int> rows[] = {
        {"a negative length", number(-1), 9, 0},
        {"more than there is", number(9), 3, 9},
        {"more than anybody has", inspector()->createPrimitive(10000001LL), 9, 0},
        {"a length that is a text", text("2"), 9, 2},
        {"no length at all", nullptr, 9, 0},
    };
    Standin array(root(), "Vantrel_Array");
    array.type().addProperty("length", intArgument()).addMethod("at", {intArgument()});
    for (const auto &[what, length, available, calls] : rows) {
        SCOPED_TRACE(what);
        array.calls.clear();
        array.property = [length = length](int) { return length; };
        array.answer = [n = available](int call) { return call <= n ? number(call) : nullptr; };
        const Array items = ArrayClass::unwrapRemoteObject(array.object());
        EXPECT_EQ(calls, array.calls.filter("at ").size());
        ASSERT_EQ(std::size_t(calls), items.size()) << "null items, too";
        EXPECT_EQ(std::min(calls, available), int(std::count_if(items.begin(), items.end(), [](auto &item) { return !item.isNull(); })));
    }
    array.property = [](int) { return inspector()->createPrimitive(1LL << 62); };
    inspector()->lastError();
    ArrayClass::unwrapRemoteObject(array.object());
    EXPECT_EQ("Cannot read an array of 4611686018427387904 items: at most 10000000 are supported", inspector()->lastError());

    Standin map(root(), "Vantrel_Map");
    map.type().addProperty("keys", intArgument()).addMethod("at", {intArgument()});
    map.property = [&](int) { return array.object(); };
    map.answer = [](int) { return number(1); };
    array.property = [](int) { return number(2); };
    array.answer = [](int call) { return call == 1 ? nullptr : number(5); };
    array.calls.clear();
    EXPECT_EQ(1u, MapClass::unwrapRemoteObject(map.object()).size()) << "a key is missing";
}

TEST_F(Containers, ReportMembersThatAreMissing)
{
    Standin array(root(), "Vantrel_Array");
    Standin map(root(), "Vantrel_Map");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(ArrayClass::createRemoteObject({}));
    EXPECT_EQ("Class::construct: No matching constructor found\n",
              testing::internal::GetCapturedStderr());
    EXPECT_TRUE(ArrayClass::unwrapRemoteObject(array.object()).empty());
    EXPECT_EQ("Class Vantrel_Array has no property length", inspector()->lastError());
    EXPECT_TRUE(MapClass::unwrapRemoteObject(map.object()).empty());
    EXPECT_EQ("Class Vantrel_Map has no property keys", inspector()->lastError());

    array.type().addConstructor({}).addProperty("length", intArgument());
    array.property = [](int) { return number(3); };
    EXPECT_FALSE(ArrayClass::createRemoteObject({number(1)}));
    EXPECT_EQ("Function not available", inspector()->lastError());
    EXPECT_TRUE(ArrayClass::unwrapRemoteObject(array.object()).empty());
    EXPECT_EQ("Function not available", inspector()->lastError());
}

using ContainersDeathTest = Containers;

TEST_F(ContainersDeathTest, AreNullWithoutTheirClasses)
{
    const auto withoutClasses = [] {
        InspectorInterface empty;
        inspector()->setInspectorInterfaceImpl(&empty);
        const bool all = !ArrayClass::registeredClass() && !MapClass::registeredClass()
            && !ArrayClass::wrapObject({}) && !MapClass::wrapObject({})
            && !ArrayClass::createRemoteObject({}) && !MapClass::createRemoteObject({});
        std::_Exit(all ? 0 : 1);
    };
    EXPECT_EXIT(withoutClasses(), testing::ExitedWithCode(0), "");
}

TEST_F(Containers, OfTheReadyClassesWorkFromScripts)
{
    const Class *arrayClass = ArrayClass::registeredClass();
    registerContainerClasses();
    EXPECT_EQ(arrayClass, ArrayClass::registeredClass());

    SharedPtr<Object> array = arrayClass->construct(ObjectList());
    const SharedPtr<Object> items[] = {number(1), text("two"), array};
    for (const auto &item : items) {
        EXPECT_EQ(inspector()->voidObject(), call(array, "push", {item}));
    }
    EXPECT_EQ(3, arrayClass->property("length")->get(array)->toInteger());
    EXPECT_EQ(items[2], call(array, "at", {number(2)}));
    EXPECT_EQ(items[1], call(array, "at", {text("1")}));
    for (const int index : {-1, 3}) {
        EXPECT_FALSE(call(array, "at", {number(index)}));
        EXPECT_EQ(QString("Index %1 is out of range of an array of length 3").arg(index),
                  inspector()->lastError());
    }
    native<Array>(array).clear();

    SharedPtr<Object> map = MapClass::registeredClass()->construct(ObjectList());
    call(map, "insert", {text("b"), number(1)});
    call(map, "insert", {text("a"), array});
    call(map, "insert", {text("b"), number(2)});
    EXPECT_EQ(2, call(map, "at", {text("b")})->toInteger());
    EXPECT_EQ(array, call(map, "at", {text("a")}));
    EXPECT_FALSE(call(map, "at", {text("%1")}));
    EXPECT_EQ("The map has no key '%1'", inspector()->lastError());
    const Method *push = arrayClass->methods("push").at(0);
    EXPECT_FALSE(push->invoke(map, {array}));
    EXPECT_EQ("push() needs an object of class Vantrel_Array", inspector()->lastError());
}

TEST_F(Containers, OfTheReadyClassesSurviveTheRemoteRoute)
{
    const Map map{{"a", number(4)}, {"\u00e4", text("t")}};
    EXPECT_EQ(map, MapClass::unwrapRemoteObject(MapClass::createRemoteObject(map)));
    const Array items =
        ArrayClass::unwrapRemoteObject(ArrayClass::createRemoteObject({map.at("a"), nullptr}));
    ASSERT_EQ(2u, items.size());
    EXPECT_EQ(map.at("a"), items[0]);
    EXPECT_TRUE(items[1]->isNull());
}

TEST_F(Containers, AreEqualWhenTheirItemsAre)
{
    const auto make = [](int last, const char *key) {
        return ArrayClass::wrapObject(
            {number(1), MapClass::wrapObject({{key, number(last)}}), nullptr});
    };
    const SharedPtr<Object> array = make(2, "k");
    const std::tuple<const char *, SharedPtr<Object>, bool> rows[] = {
        {"equal items", make(2, "k"), true},
        {"another value inside", make(3, "k"), false},
        {"another key inside", make(2, "l"), false},
        {"one item less", ArrayClass::wrapObject({number(1)}), false},
        {"a map", MapClass::wrapObject({}), false},
        {"null data", array->type()->createNull(), false},
        {"no object", nullptr, false},
    };
    for (const auto &[what, other, equal] : rows) {
        EXPECT_EQ(equal, array->compare(other)) << what;
        EXPECT_EQ(equal, other && other->compare(array)) << what;
    }
    EXPECT_EQ("[ 1, { k: 2 }, <null> ]", array->toString());
    EXPECT_EQ("[ 1 : int, { k: 2 : int } : Vantrel_Map, <null> ] : Vantrel_Array",
              array->toDebugString());
    EXPECT_EQ("[ ]", ArrayClass::wrapObject({})->toString());
}

TEST_F(Containers, ThatContainThemselvesAreComparedAndShown)
{
    Array pair{ArrayClass::wrapObject({}), ArrayClass::wrapObject({})};
    for (const auto &array : pair) {
        native<Array>(array) = {array, MapClass::wrapObject({{"m", array}})};
    }
    EXPECT_TRUE(pair[0]->compare(pair[1]));
    EXPECT_EQ("[ [ ... ], { m: [ ... ] } ]", pair[0]->toString());
    EXPECT_FALSE(pair[0]->toDebugString().isEmpty());
    native<Array>(pair[1]).push_back(nullptr);
    EXPECT_FALSE(pair[0]->compare(pair[1]));
    for (const auto &array : pair) {
        native<Array>(array).clear();
    }

    // Written out, each would be longer than memory.
    for (int depth = 0; depth < 1000; ++depth) {
        for (auto &array : pair) {
            array = ArrayClass::wrapObject({array, array});
        }
    }
    EXPECT_TRUE(pair[0]->compare(pair[1]));
    EXPECT_GT(10'000'000, pair[0]->toString().size());
}

TEST_F(Containers, AreFreedHoweverDeeplyTheyAreNested)
{
    const SharedPtr<Object> innermost = number(1);
    SharedPtr<Object> array = ArrayClass::wrapObject({innermost});
    for (int depth = 0; depth < 100'000; ++depth) {
        array = MapClass::wrapObject({{"k", ArrayClass::wrapObject({array})}});
    }
    EXPECT_GT(1000, array->toString().size());
    array = SharedPtr<Object>();
    EXPECT_EQ(1u, innermost->referenceCount());
}

} // namespace
