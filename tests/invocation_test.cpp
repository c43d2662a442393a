#include "testclass.h"

#include "objectmodel/delegates.h"
#include "objectmodel/invocation.h"

#include <gtest/gtest.h>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

int native = 1;

SharedPtr<Object> object(const Class &c, void *data = &native)
{
    return SharedPtr<Object>(new Object(data, &c, ObjectAttribute::Pointer()));
}

SharedPtr<Object> invalidated(const Class &c)
{
    SharedPtr<Object> handle = object(c);
    handle->invalidate();
    return handle;
}

template <class T>
SharedPtr<Object> primitiveOf(T value)
{
    return inspector()->createPrimitive(value);
}

/** What a call left on the standard error stream. */
template <class Call>
std::string diagnosticsOf(Call call)
{
    testing::internal::CaptureStderr();
    call();
    return testing::internal::GetCapturedStderr();
}

/** A counter with overloads; every raw call is written down. */
class Invocation : public testing::Test
{
protected:
    void SetUp() override
    {
        inspector()->lastError();
        calls.clear();
        c().onInvoke = [this](int id, void *data, void **arguments, const Class *type) {
            calls << QString::number(id);
            lastData = data;
            lastType = type;
            return reaction ? reaction(id, arguments) : inspector()->voidObject();
        };
    }
    void TearDown() override { c().onInvoke = nullptr; }

    static TestClass &c()
    {
        static TestClass &made = makeClass();
        return made;
    }
    MethodList named(const char *name) const
    {
        return c().methods(name);
    }
    QString error() { return inspector()->lastError(); }

    QStringList calls;
    void *lastData = nullptr;
    const Class *lastType = nullptr;
    std::function<SharedPtr<Object>(int, void **)> reaction;

private:
    static TestClass &makeClass()
    {
        auto *made = new TestClass("VtCounter");
        made->addMethod("add", {intArgument("n")}, Method::NoFlags, primitive(PrimitiveId::Int)); // 0
        made->addMethod("add", {doubleArgument("n")});                                             // 1
        made->addMethod("add", {textArgument("a"), textArgument("b")});                            // 2
        made->addMethod("make", {}, Method::Static);                                               // 3
        made->addMethod("half", {doubleArgument("x")});                                            // 4
        const Argument n = intArgument();
        made->addMethod("many", {n, n, n, n, n, n, n, n, n, n});                                   // 5
        made->addMethod("letter", {Argument(primitive(PrimitiveId::Char))});                       // 6
        made->addMethod("list", {Argument(primitive(PrimitiveId::Char),
                                          ObjectAttribute::PointerFlag | ObjectAttribute::ArrayFlag, 0)}); // 7
        made->addMethod("other", {Argument(made, ObjectAttribute::Pointer())});                    // 8
        made->addMethod("plain", {Argument(made)});                                                // 9
        made->addMethod("three", {Argument(primitive(PrimitiveId::Int), ObjectAttribute::Array(3))}); // 10
        return *made;
    }
};

} // namespace

TEST_F(Invocation, ChecksTheObjectBeforeTheCall)
{
    const Method *member = c().method(4);
    const Method *isStatic = c().method(3);
    const ObjectList one {primitiveOf(1.0)};
    const struct { const char *what; SharedPtr<Object> object; const Method *method; const char *error; } rows[] = {
        {"member without object", {}, member, "Cannot invoke non-static function half() without a object reference"},
        {"member on null object", object(c(), nullptr), member, "Cannot invoke member function half() on null object reference"},
        {"member on invalidated", invalidated(c()), member, "Cannot invoke member function half() on null object reference"},
        {"static on invalidated", invalidated(c()), isStatic, "Cannot invoke member function make() on invalidated object reference"},
        {"static without object", {}, isStatic, ""},
        {"static on null object", object(c(), nullptr), isStatic, ""},
        {"member on foreign object", primitiveOf(1), member, "Cannot use half() of class VtCounter on an object of class int"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const SharedPtr<Object> result
            = row.method->invoke(row.object, row.method == member ? one : ObjectList());
        EXPECT_EQ(*row.error != 0, result.isNull());
        EXPECT_EQ(row.error, error());
        EXPECT_EQ(nullptr, lastData);
    }
    EXPECT_EQ((QStringList {"3", "3"}), calls);
}

TEST_F(Invocation, ReportsAWrongCountInBothChannels)
{
    EXPECT_EQ("", diagnosticsOf([&] { c().method(4)->invoke({}, {}); })) << "the object is checked first";
    error();
    const QString text = "Class::invoke VtCounter::4: 1 arguments expected, 2 given";
    const std::string printed = diagnosticsOf([&] {
        EXPECT_TRUE(c().method(4)->invoke(object(c()), {primitiveOf(1), primitiveOf(2)}).isNull());
    });
    EXPECT_EQ(text.toStdString() + "\n", printed);
    EXPECT_EQ(text, error());
    diagnosticsOf([&] {
        EXPECT_FALSE(verifyMethodArgumentCount(QStringLiteral("%2"), c().method(3), {primitiveOf(1)}));
    });
    EXPECT_EQ(QStringLiteral("Class::invoke %2::3: 0 arguments expected, 1 given"), error());
}

TEST_F(Invocation, HandsOverNativePointers)
{
    reaction = [](int, void **arguments) {
        return primitiveOf(*static_cast<double *>(arguments[0]) / 2);
    };
    EXPECT_EQ(1.5, c().method(4)->invoke(object(c()), {primitiveOf(3.0)})->toDouble());
    EXPECT_EQ(&native, lastData);
    reaction = nullptr;
    c().method(0)->invoke(object(c()), {primitiveOf(1)});
    EXPECT_EQ(primitive(PrimitiveId::Int), lastType);

    // More arguments than the stack buffer holds, a missing one among them.
    ObjectList ten;
    for (int i = 0; i < 10; ++i) {
        ten << (i == 4 ? SharedPtr<Object>() : primitiveOf(i));
    }
    reaction = [](int, void **arguments) {
        EXPECT_EQ(nullptr, arguments[4]);
        return primitiveOf(*static_cast<int *>(arguments[9]) + *static_cast<int *>(arguments[3]));
    };
    EXPECT_EQ(12, c().method(5)->invoke(object(c()), ten)->toInteger());
}

TEST_F(Invocation, ChoosesTheOverload)
{
    const struct { const char *what; const char *name; ObjectList arguments; const char *id; } rows[] = {
        {"exact int",                  "add", {primitiveOf(1)}, "0"},
        {"converted to the first",     "add", {primitiveOf("7")}, "0"},
        {"by count",                   "add", {primitiveOf(1), primitiveOf(2)}, "2"},
        {"null pointer of the class",  "other", {object(c(), nullptr)}, "8"},
        {"value of the class",         "plain", {object(c())}, "9"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        calls.clear();
        bool ok = false;
        named(row.name).invoke(object(c()), row.arguments, &ok);
        EXPECT_TRUE(ok) << qPrintable(error());
        EXPECT_EQ(QStringList {row.id}, calls);
    }
}

TEST_F(Invocation, SaysWhyNoOverloadFits)
{
    int pair[] = {1, 2};
    const QString noMatch = "Found no matching overload";
    const struct { const char *what; const char *name; ObjectList arguments; QString error; QStringList lines; } rows[] = {
        {"no such function", "nothing", {}, "Function not available", {}},
        {"count", "half", {}, noMatch, {"half(double x): expects 1 argument, 0 given"}},
        {"no object", "half", {SharedPtr<Object>()}, noMatch,
         {"half(double x): argument 1: no object given, double expected"}},
        {"class", "half", {object(c())}, noMatch,
         {"half(double x): argument 1: VtCounter cannot convert to double"}},
        {"null by value", "plain", {object(c(), nullptr)}, noMatch,
         {"plain(VtCounter): argument 1: null object given, VtCounter expected"}},
        {"invalidated", "other", {invalidated(c())}, noMatch,
         {"other(VtCounter *): argument 1: invalidated object given, VtCounter expected"}},
        {"a text is no list", "list", {primitiveOf("a")}, noMatch,
         {"list(char * []): argument 1: char * cannot convert to char * []"}},
        {"a short array", "three", {primitive(PrimitiveId::Int)->wrap(pair, ObjectAttribute::Array(2))}, noMatch,
         {"three(int [3]): argument 1: int [] cannot convert to int []"}},
        {"each overload", "add", {object(c()), primitiveOf(1), primitiveOf(2)}, noMatch,
         {"add(int n): expects 1 argument, 3 given", "add(double n): expects 1 argument, 3 given",
          "add(char * a, char * b): expects 2 arguments, 3 given"}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        bool ok = true;
        EXPECT_TRUE(named(row.name).invoke(object(c()), row.arguments, &ok).isNull());
        EXPECT_FALSE(ok);
        EXPECT_EQ(row.error, error());
        EXPECT_EQ(row.lines, named(row.name).explain(row.arguments));
        SharedPtr<Object> result = primitiveOf(1);
        EXPECT_FALSE(named(row.name).invoke(object(c()), row.arguments, &result));
        EXPECT_TRUE(result.isNull());
        error();
    }
    EXPECT_TRUE(calls.isEmpty());
    EXPECT_TRUE(named("half").explain({primitiveOf(1)}).isEmpty());
}

TEST_F(Invocation, ConvertsArgumentsBeforeNativeCodeSeesThem)
{
    const auto call = [this](const char *name, const SharedPtr<Object> &argument) {
        bool ok = false;
        const SharedPtr<Object> result = named(name).invoke(object(c()), {argument}, &ok);
        EXPECT_TRUE(ok);
        return result;
    };
    reaction = [](int id, void **arguments) {
        switch (id) {
        case 4:
            return primitiveOf(*static_cast<double *>(arguments[0]));
        case 6:
            return primitiveOf(int(*static_cast<char *>(arguments[0])));
        default:
            return primitiveOf(QString::fromUtf8(static_cast<char **>(arguments[0])[1]));
        }
    };
    EXPECT_EQ(3.0, call("half", primitiveOf(3))->toDouble());
    EXPECT_EQ(2.5, call("half", primitiveOf("2.5"))->toDouble());
    EXPECT_EQ('x', call("letter", primitiveOf("xyz"))->toInteger());
    EXPECT_EQ("b", call("list", primitiveOf(QStringList {"a", "b"}))->toString());

    // Direct calls stay as they are: the same pointer arrives.
    reaction = [](int, void **arguments) {
        return primitiveOf(*static_cast<int *>(arguments[0]));
    };
    EXPECT_EQ(3, c().method(4)->invoke(object(c()), {primitiveOf(3)})->toInteger());
}

TEST_F(Invocation, AcceptsTheKeysOfAnEnum)
{
    static const Enum::Item items[] = {{"Low", 3}, {"High", 8}, {nullptr, 0}};
    TestClass &owner = *new TestClass("VtEnumOwner");
    owner.addEnum("Level", items);
    owner.addMethod("set", {Argument(primitive(PrimitiveId::Int), ObjectAttribute(), owner.enumerator(0))});
    int seen = 0;
    owner.onInvoke = [&](int, void *, void **arguments, const Class *) {
        seen = *static_cast<int *>(arguments[0]);
        return inspector()->voidObject();
    };
    const MethodList set = owner.methods("set");
    const auto call = [&](const SharedPtr<Object> &value) {
        return set.invoke(object(owner), {value}, nullptr).isNull() ? -1 : seen;
    };
    EXPECT_EQ(8, call(primitiveOf("High")));
    EXPECT_EQ(3, call(primitiveOf("3")));
    EXPECT_EQ(11, call(primitiveOf("Low| High")));
    EXPECT_FALSE(set.explain({primitiveOf("Low|Top")}).isEmpty());
    EXPECT_FALSE(set.explain({primitiveOf("Low|")}).isEmpty());
    EXPECT_EQ(5, call(primitiveOf(5)));
    EXPECT_EQ(-1, call(primitiveOf("high")));
    EXPECT_EQ((QStringList {"set(VtEnumOwner::Level): argument 1: 'high' is no key of Level"}),
              set.explain({primitiveOf("high")}));
    owner.onInvoke = nullptr;
}

TEST_F(Invocation, SendsInheritedMembersToTheClassThatDeclaresThem)
{
    TestClass &sub = *new TestClass("VtSubCounter", &c());
    sub.addMethod("own").addProperty("p", intArgument());
    const int ownId = c().numMethods();
    int subCalls = 0;
    sub.onInvoke = [&](int id, void *, void **, const Class *) {
        EXPECT_EQ(ownId, id);
        ++subCalls;
        return inspector()->voidObject();
    };
    const Class *subClass = &sub;
    double argument = 1;
    void *arguments[] = {&argument};
    subClass->invoke(object(sub), c().method(4), arguments);
    EXPECT_EQ(QStringList {"4"}, calls);
    EXPECT_EQ(&native, lastData);
    sub.methods("half").invoke(object(sub), {primitiveOf(1)}, nullptr);
    sub.methods("own").invoke(object(sub), {}, nullptr);
    EXPECT_EQ(1, subCalls);
    sub.onInvoke = nullptr;
}

TEST_F(Invocation, RefusesMembersOfOtherClasses)
{
    TestClass &sub = *new TestClass("VtForeignSub", &c());
    TestClass &stranger = *new TestClass("VtForeign");
    for (TestClass *foreign : {&sub, &stranger}) {
        foreign->addMethod("m").addProperty("p", intArgument());
        const Class *asked = &c();
        const SharedPtr<Object> o = object(sub);
        const QString end = QStringLiteral(" of class %1 as a member of class VtCounter")
                                .arg(foreign->className());
        EXPECT_TRUE(asked->invoke(o, foreign->methods("m").at(0), nullptr).isNull());
        EXPECT_EQ(QLatin1String("Cannot use m()") + end, error());
        EXPECT_TRUE(asked->getProperty(o, foreign->property("p")).isNull());
        EXPECT_EQ(QLatin1String("Cannot use p") + end, error());
        EXPECT_FALSE(asked->setProperty(o, foreign->property("p"), primitiveOf(1)));
        EXPECT_EQ(QLatin1String("Cannot use p") + end, error());
    }
    EXPECT_TRUE(calls.isEmpty());
}

TEST(MethodList, MatchesWithoutConversionOnly)
{
    const TestClass &base = *new TestClass("VtMatchBase");
    const TestClass &derived = *new TestClass("VtMatchDerived", &base);
    TestClass &c = *new TestClass("VtMatch");
    c.addMethod("m", {Argument(&base, ObjectAttribute::Pointer())});
    c.addMethod("m", {Argument(&derived, ObjectAttribute::Pointer())});
    const MethodList list = c.methods("m");
    EXPECT_EQ(c.method(0), list.methodForArguments({object(derived)}));
    EXPECT_EQ(nullptr, list.methodForArguments({primitiveOf(1)}));
    EXPECT_EQ(nullptr, list.methodForArguments({SharedPtr<Object>()}));
    EXPECT_EQ(nullptr, list.methodForArguments({object(base, nullptr)}));
    EXPECT_EQ(nullptr, list.methodForArguments({}));
    EXPECT_EQ(nullptr, list.at(2));
    EXPECT_EQ(nullptr, list.at(-1));
}

TEST(Construction, TakesTheFirstConstructorThatAccepts)
{
    TestClass &c = *new TestClass("VtConstructed");
    c.addConstructor({});
    c.addConstructor({doubleArgument()});
    c.addConstructor({intArgument()});
    c.addConstructor({textArgument(), intArgument()});
    double seen = 0;
    int index = -1;
    c.onConstruct = [&](int which, void **arguments) {
        index = which;
        seen = which == 1 ? *static_cast<double *>(arguments[0]) : 0;
        return object(c);
    };
    EXPECT_FALSE(c.Class::construct(ObjectList()).isNull());
    EXPECT_EQ(0, index);
    c.Class::construct({primitiveOf(3)}); // the double comes first and takes an int, converted
    EXPECT_EQ(1, index);
    EXPECT_EQ(3.0, seen);

    index = -1;
    const ObjectList unconvertible {object(c)};
    const ObjectList nullHandle {SharedPtr<Object>()};
    const ObjectList tooMany {primitiveOf(1), primitiveOf(1), primitiveOf(1)};
    for (const ObjectList &arguments : {unconvertible, nullHandle, tooMany}) {
        EXPECT_EQ("Class::construct: No matching constructor found\n",
                  diagnosticsOf([&] { EXPECT_TRUE(c.Class::construct(arguments).isNull()); }));
    }
    EXPECT_EQ("Cannot construct VtConstructed: no constructor takes (int, int, int)",
              inspector()->lastError());
    EXPECT_EQ("Constructor::construct VtConstructed: 2 arguments expected, 1 given\n",
              diagnosticsOf([&] { EXPECT_TRUE(c.constructor(3)->construct({primitiveOf(1)}).isNull()); }));
    EXPECT_EQ("Constructor::construct VtConstructed: 2 arguments expected, 1 given",
              inspector()->lastError());
    EXPECT_EQ(-1, index);
    c.onConstruct = nullptr;
}

namespace {

class Declarations : public StaticPropertyDelegate
{
public:
    Declarations(const QString &className, std::vector<const PropertyDeclaration *> list)
        : StaticPropertyDelegate(className), m_list(std::move(list))
    {
    }
    int numPropertyDeclarations() const override { return int(m_list.size()); }
    const PropertyDeclaration *propertyDeclaration(int index) const override { return m_list.at(index); }

private:
    std::vector<const PropertyDeclaration *> m_list;
};

/** A class with a declared and several delegate properties, and a subclass with one more. */
class PropertyAccess : public testing::Test
{
protected:
    void SetUp() override
    {
        inspector()->lastError();
        world().base->onGet = [this](int id, void *data) {
            log << QStringLiteral("get %1").arg(id);
            EXPECT_TRUE(data == &native || !data);
            return primitiveOf(40 + id);
        };
        world().base->onSet = [this](int id, void *, void *value) {
            written = value ? *static_cast<double *>(value) : -1.0;
            log << QStringLiteral("set %1").arg(id);
            return true;
        };
        world().handed.reset();
    }
    void TearDown() override
    {
        world().base->onGet = nullptr;
        world().base->onSet = nullptr;
        world().base->onInvoke = nullptr;
    }

    struct World
    {
        TestClass *base;
        TestClass *sub;
        SharedPtr<Object> handed;
    };
    static World &world()
    {
        static World made = makeWorld();
        return made;
    }
    static const Property *property(const char *name)
    {
        return world().sub->property(name);
    }
    QStringList log;
    double written = 0;

private:
    static World makeWorld()
    {
        auto *base = new TestClass("VtProperties");
        base->addProperty("size", doubleArgument());
        base->addProperty("count", intArgument(), Property::Readable | Property::Writable | Property::Static);
        base->addProperty("locked", intArgument(), Property::Readable);
        base->addProperty("secret", intArgument(), Property::Writable);
        base->addMethod("readIt").addMethod("writeIt", {doubleArgument()});
        base->addMethod("writeText", {textArgument()});
        const auto read = [](SharedPtr<Object> o) { return o; };
        const auto refuse = [](SharedPtr<Object>, SharedPtr<Object> value) {
            world().handed = value;
            return false;
        };
        new Declarations(
            base->className(),
            {new PropertyDeclaration(base, doubleArgument(), "viaFunction", read, refuse),
             new PropertyDeclaration(base, doubleArgument(), "viaMethod", base->method(0), base->method(1)),
             new PropertyDeclaration(base, doubleArgument(), "writeOnly", PropertyDeclaration::ReadFunction(), refuse),
             new PropertyDeclaration(base, doubleArgument(), "readOnly", read),
             new PropertyDeclaration(base, textArgument(), "text", nullptr, base->method(2))});
        auto *sub = new TestClass("VtSubProperties", base);
        sub->addProperty("subOwn", intArgument());
        return {base, sub, {}};
    }
};

} // namespace

TEST_F(PropertyAccess, ChecksTheObjectFirst)
{
    const TestClass &c = *world().base;
    const struct { const char *what; SharedPtr<Object> object; const char *property; const char *error; } rows[] = {
        {"no object", {}, "size", "Cannot access non-static property size without object reference"},
        {"null object", object(c, nullptr), "size", "Cannot access property size on null object reference"},
        {"invalidated", invalidated(c), "size", "Cannot access property size on invalidated object reference"},
        {"static, invalidated", invalidated(c), "count", "Cannot access property count on invalidated object reference"},
        {"delegate property, no object", {}, "viaFunction", "Cannot access non-static property viaFunction without object reference"},
        {"foreign object", primitiveOf(1), "size", "Cannot use size of class VtProperties on an object of class int"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_TRUE(property(row.property)->get(row.object).isNull());
        EXPECT_EQ(row.error, inspector()->lastError());
        EXPECT_FALSE(property(row.property)->set(row.object, primitiveOf(1.0)));
        EXPECT_EQ(row.error, inspector()->lastError());
    }
    EXPECT_TRUE(log.isEmpty());
    EXPECT_EQ(41, property("count")->get({})->toInteger());
    EXPECT_EQ("Class::setProperty: Can't set non-static property without object reference\n",
              diagnosticsOf([&] {
                  const Class *base = world().base;
                  EXPECT_FALSE(base->setProperty(SharedPtr<Object>(), property("size"), primitiveOf(1.0)));
              }));
}

TEST_F(PropertyAccess, RoutesDeclaredPropertiesToTheirClass)
{
    const SharedPtr<Object> o = object(*world().sub);
    int subReads = 0;
    world().sub->onGet = [&](int id, void *) {
        EXPECT_EQ(9, id);
        ++subReads;
        return primitiveOf(1);
    };
    EXPECT_EQ(40, property("size")->get(o)->toInteger());
    property("subOwn")->get(o);
    const Class *sub = world().sub;
    EXPECT_EQ(40, sub->getProperty(o, property("size"))->toInteger());
    EXPECT_TRUE(sub->setProperty(o, property("size"), primitiveOf(3)));
    EXPECT_EQ(3.0, written) << "the int was converted before the raw slot saw it";
    EXPECT_FALSE(property("size")->set(o, {})) << "native code would read through a null pointer";
    EXPECT_EQ("Cannot set property size without a value", inspector()->lastError());
    EXPECT_EQ((QStringList {"get 0", "get 0", "set 0"}), log);
    EXPECT_EQ(1, subReads);
    EXPECT_EQ("Object::setProperty: type VtSubProperties cannot be converted to double\n",
              diagnosticsOf([&] { EXPECT_FALSE(property("size")->set(o, o)); }));
    world().sub->onGet = nullptr;
}

TEST_F(PropertyAccess, GoesThroughTheAccessorsOfDelegateProperties)
{
    const SharedPtr<Object> o = object(*world().sub);
    EXPECT_EQ(o, property("viaFunction")->get(o));
    EXPECT_TRUE(property("viaFunction")->set(o, primitiveOf(3))) << "though the function said false";
    EXPECT_EQ("3 : double", world().handed->toDebugString());

    double argument = 0;
    world().base->onInvoke = [&](int id, void *, void **arguments, const Class *) {
        if (id == 1) {
            argument = *static_cast<double *>(arguments[0]);
        }
        return primitiveOf(id);
    };
    EXPECT_EQ(0, property("viaMethod")->get(o)->toInteger());
    EXPECT_TRUE(property("viaMethod")->set(o, primitiveOf("2.5")));
    EXPECT_EQ(2.5, argument);
    diagnosticsOf([&] { EXPECT_TRUE(property("viaMethod")->set(o, {})); });

    QByteArray text;
    world().base->onInvoke = [&](int, void *, void **arguments, const Class *) {
        text = static_cast<const char *>(arguments[0]);
        return inspector()->voidObject();
    };
    EXPECT_TRUE(property("text")->set(o, primitiveOf("one")));
    EXPECT_EQ("one", text);
    EXPECT_EQ("Object::setProperty: type char cannot be converted to char\n", diagnosticsOf([&] {
                  EXPECT_FALSE(property("text")->set(o, primitiveOf(QStringList {"two", "three"})));
              }));
    EXPECT_EQ("one", text) << "a list is no text";
    const auto error = [] { return inspector()->lastError().section(' ', 1).toStdString(); };
    EXPECT_EQ("set property VtProperties::text: char * [] cannot convert to char *", error());

    for (const std::string name : {"locked", "readOnly"}) {
        EXPECT_EQ("Object::setProperty: property " + name + " is not writable\n",
                  diagnosticsOf([&] { EXPECT_FALSE(property(name.c_str())->set(o, primitiveOf(1.0))); }));
        EXPECT_EQ("write property VtProperties::" + name + ": it is read-only", error());
    }
    for (const std::string name : {"secret", "writeOnly"}) {
        EXPECT_EQ("Class::getProperty: property " + name + " is not readable\n",
                  diagnosticsOf([&] { EXPECT_TRUE(property(name.c_str())->get(o).isNull()); }));
        EXPECT_EQ("read property VtProperties::" + name + ": it is write-only", error());
    }
    EXPECT_EQ("", diagnosticsOf([&] {
                  property("viaFunction")->set(o, primitive(PrimitiveId::Int)->createNull());
              }));
    EXPECT_EQ("set property VtProperties::viaFunction: null object given, double expected", error());
    EXPECT_TRUE(log.isEmpty());
    EXPECT_EQ("Object::setProperty: type VtSubProperties cannot be converted to double\n",
              diagnosticsOf([&] { EXPECT_FALSE(property("viaFunction")->set(o, o)); }));
    const Property stray(99, world().base, doubleArgument(), "stray", Property::Readable);
    EXPECT_EQ("Class::getProperty: No such property: 99\n",
              diagnosticsOf([&] { EXPECT_TRUE(stray.get(object(*world().base)).isNull()); }));
    EXPECT_EQ("", diagnosticsOf([&] { EXPECT_FALSE(stray.set(object(*world().base), {})); }));
}
