#include "objectmodel/globalobject.h"

#include "objectmodel/class.h"
#include "objectmodel/delegates.h"
#include "objectmodel/globalfunctions.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/primitiveids.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

using namespace Vantrel;

namespace {

GlobalClass *global()
{
    return Inspector::self()->globalClass();
}

SharedPtr<Object> number(int value)
{
    return Inspector::self()->createPrimitive(value);
}

SharedPtr<Object> text(const char *value)
{
    return Inspector::self()->createPrimitive(value);
}

Argument intArgument(const char *name = "")
{
    return Argument(name, Inspector::self()->type(PrimitiveId::Int));
}

SharedPtr<Object> sum(const ObjectList &arguments)
{
    int result = 0;
    for (const SharedPtr<Object> &argument : arguments) {
        result += argument->toInteger();
    }
    return number(result);
}

SharedPtr<Object> call(const char *name, const ObjectList &arguments)
{
    SharedPtr<Object> result;
    global()->methods(name).invoke({}, arguments, &result);
    return result;
}

QString lastError()
{
    return Inspector::self()->lastError();
}

} // namespace

TEST(GlobalClass, TakesFunctionsWhileItIsUsed)
{
    lastError();
    EXPECT_TRUE(global()->methods("globalTestSum").isEmpty());
    const Method *two = global()->addFunction(
        intArgument(), Signature("globalTestSum", {intArgument("a"), intArgument("b")}), sum);
    ASSERT_TRUE(two);
    const Method *one =
        global()->addFunction(intArgument(), Signature("globalTestSum", {intArgument("a")}), sum);
    ASSERT_TRUE(one);

    EXPECT_EQ(two->id() + 1, one->id());
    EXPECT_EQ(one, global()->method(global()->numMethods() - 1));
    EXPECT_EQ(5, call("globalTestSum", {number(2), text("3")})->toInteger());
    EXPECT_EQ(4, call("globalTestSum", {number(4)})->toInteger());
    EXPECT_EQ(7, two->invoke({}, {text("3"), number(4)})->toInteger());

    EXPECT_FALSE(two->invoke({}, {nullptr, number(4)}));
    EXPECT_EQ("Cannot call globalTestSum(int a, int b): argument 1: no object given, int expected",
              lastError());
    EXPECT_FALSE(call("globalTestSum", {}));
    EXPECT_EQ("Found no matching overload", lastError());
}

TEST(GlobalClass, RefusesFunctionsThatCannotBeCalled)
{
    const Signature known("globalTestOnce", {intArgument("a")});
    ASSERT_TRUE(global()->addFunction(intArgument(), known, sum));
    const int count = global()->numMethods();
    EXPECT_FALSE(global()->addFunction(intArgument(), Signature(), sum));
    EXPECT_EQ("Cannot add global function '': it has no name", lastError());
    EXPECT_FALSE(global()->addFunction(intArgument(), Signature("globalTestEmpty"), {}));
    EXPECT_EQ("Cannot add global function 'globalTestEmpty': there is nothing to call",
              lastError());
    EXPECT_FALSE(global()->addFunction(intArgument(),
                                       Signature("globalTestOnce", {intArgument("other")}), sum));
    EXPECT_EQ("Cannot add global function 'globalTestOnce(int other)': it exists already",
              lastError());
    EXPECT_EQ(count, global()->numMethods());
}

TEST(GlobalClass, TellsOfADeprecatedFunctionOnce)
{
    Method *old =
        global()->addFunction(intArgument(), Signature("globalTestOld", {intArgument("a")}), sum);
    old->deprecate("use globalTestNew");
    testing::internal::CaptureStderr();
    EXPECT_TRUE(call("globalTestOld", {number(1)}));
    EXPECT_TRUE(old->invoke({}, {number(1)}));
    EXPECT_EQ("Global::globalTestOld(int a) is deprecated: use globalTestNew\n",
              testing::internal::GetCapturedStderr());
}

TEST(GlobalClass, HasPropertiesWithoutAnObject)
{
    lastError();
    EXPECT_FALSE(global()->property("globalTestVolume"));
    int volume = 3;
    const Property *property = global()->addProperty(
        intArgument(), "globalTestVolume", [&] { return number(volume); },
        [&](const SharedPtr<Object> &value) {
            volume = std::min(value->toInteger(), 11);
            return value->toInteger() <= 11;
        });
    ASSERT_TRUE(property);
    EXPECT_EQ(property, global()->property("globalTestVolume"));
    EXPECT_TRUE(property->isStatic() && property->isReadable() && property->isWritable());
    EXPECT_EQ(3, property->get({})->toInteger());
    EXPECT_TRUE(property->set({}, text("11")));
    EXPECT_EQ(11, volume);
    EXPECT_FALSE(property->set({}, number(12)));
    EXPECT_FALSE(property->set({}, {}));
    EXPECT_EQ("Cannot set global property globalTestVolume without a value", lastError());
    EXPECT_EQ(11, volume);

    EXPECT_FALSE(
        global()->addProperty(intArgument(), "globalTestVolume", [] { return number(0); }));
    EXPECT_EQ("Cannot add global property 'globalTestVolume': it exists already", lastError());
    EXPECT_FALSE(global()->addProperty(intArgument(), "globalTestNothing", {}));
    EXPECT_EQ("Cannot add global property 'globalTestNothing': it can neither be read nor written",
              lastError());
}

TEST(GlobalClass, HasEnumsOfItsOwn)
{
    lastError();
    EXPECT_FALSE(Inspector::self()->enumerator("GlobalTestSide"));
    {
        const QByteArray left("Left");
        // Neither the bytes nor a closing NUL may be needed afterwards.
        ASSERT_TRUE(global()->addEnum(
            "GlobalTestSide",
            {{QByteArray::fromRawData(left.constData(), 2), 1}, {QByteArray("Right"), 2}}));
    }
    const Enum *side = Inspector::self()->enumerator("GlobalTestSide");
    ASSERT_TRUE(side);
    EXPECT_EQ(side, global()->enumerator(side->id()));
    EXPECT_EQ("Le", side->key(0));
    EXPECT_EQ(2, side->value("Right", nullptr));
    EXPECT_TRUE(side->isMask());

    EXPECT_FALSE(global()->addEnum("GlobalTestSide", {}));
    EXPECT_EQ("Cannot add global enum 'GlobalTestSide': it exists already", lastError());
    EXPECT_FALSE(global()->addEnum("GlobalTestTwice", {{"a", 1}, {"b", 2}, {"a", 3}}));
    EXPECT_EQ("Cannot add global enum 'GlobalTestTwice': the key 'a' stands twice", lastError());
}

namespace {

enum class Gear { Low = 1, High = 2 };
struct Unregistered
{
};

} // namespace

TEST(GlobalClass, TakesCallables)
{
    lastError();
    ASSERT_TRUE(addEnum<Gear>("GlobalTestGear", {{"Low", Gear::Low}, {"High", Gear::High}}));
    auto unit = std::make_unique<QString>(" km/h");
    const Method *drive = addFunction(
        "globalTestDrive",
        [unit = std::move(unit)](Gear gear, double speed, const SharedPtr<Object> &note) {
            if (speed < 0) {
                throw std::invalid_argument("too slow");
            }
            return QString::number(speed * int(gear)) + *unit
                + (note ? note->toString() : QStringLiteral("!"));
        },
        {"gear", "speed"});
    ASSERT_TRUE(drive) << qPrintable(lastError());
    EXPECT_EQ("(GlobalTestGear gear, double speed, Object *)", drive->signature().toString());
    EXPECT_EQ("14 km/h!", call("globalTestDrive", {text("High"), number(7), {}})->toString());
    EXPECT_EQ("7 km/hok", call("globalTestDrive", {number(1), number(7), text("ok")})->toString());
    EXPECT_FALSE(call("globalTestDrive", {text("Low"), number(-1), {}}));
    EXPECT_EQ("globalTestDrive: too slow", lastError());
    addFunction("globalTestEcho", [](SharedPtr<Object> object) { return object; });
    const SharedPtr<Object> given = number(3);
    EXPECT_EQ(given, call("globalTestEcho", {given}));

    EXPECT_FALSE(addFunction("globalTestLost", [](const Unregistered &) {}));
    EXPECT_TRUE(
        lastError().startsWith("Cannot add global function 'globalTestLost': argument 1: "));
    EXPECT_FALSE(addFunction("globalTestNames", [](int) {}, {"a", "b"}));
    EXPECT_EQ("Cannot add global function 'globalTestNames': 2 argument names for 1 arguments",
              lastError());
}

TEST(GlobalClass, TakesCallablesAsAccessors)
{
    lastError();
    QString title = "old";
    const Property *property = addProperty(
        "globalTestTitle", [&] { return title; },
        [&](const QString &value) {
            title = value.isEmpty() ? title : value;
            return !value.isEmpty();
        });
    ASSERT_TRUE(property) << qPrintable(lastError());
    EXPECT_EQ("old", property->get({})->toString());
    EXPECT_TRUE(property->set({}, number(5)));
    EXPECT_EQ("5", title);
    EXPECT_FALSE(property->set({}, text("")));
    EXPECT_EQ("globalTestTitle: the value was refused", lastError());
    EXPECT_EQ("5", title);
}

namespace {

/** Adds members late next to those that a delegate contributes. */
class GrowingClass : public Class
{
public:
    GrowingClass() : Class("GlobalTestGrowing", true)
    {
        setNumMethods(0);
        setNumProperties(1);
        setNumEnums(0);
    }
    void addProperty(const char *name)
    {
        lateAddProperty(
            new Property(numPropertiesInternal(), this, intArgument(), name, Property::Readable));
    }

private:
    Property *createProperty(int id) const override
    {
        return new Property(id, this, intArgument(), "first", Property::Readable);
    }
};

class OneProperty : public StaticPropertyDelegate
{
public:
    using StaticPropertyDelegate::StaticPropertyDelegate;
    int numPropertyDeclarations() const override { return 1; }
    const PropertyDeclaration *propertyDeclaration(int) const override { return &m_declaration; }

private:
    PropertyDeclaration m_declaration{nullptr, Argument(), "contributed",
                                      [](const SharedPtr<Object> &) { return number(12); }};
};

} // namespace

TEST(GlobalClass, LatePropertiesStandBeforeThoseOfTheDelegate)
{
    static OneProperty delegate("GlobalTestGrowing");
    auto *c = new GrowingClass;
    EXPECT_EQ(1, c->property("contributed")->id());
    c->addProperty("second");
    EXPECT_EQ(3, c->numProperties());
    const char *const names[] = {"first", "second", "contributed"};
    for (int id = 0; id < 3; ++id) {
        EXPECT_EQ(names[id], c->property(id)->name());
        EXPECT_EQ(id, c->property(id)->id());
    }
    int data = 0;
    const SharedPtr<Object> object(new Object(&data, c, ObjectAttribute()));
    EXPECT_EQ(12, c->property("contributed")->get(object)->toInteger());
}
