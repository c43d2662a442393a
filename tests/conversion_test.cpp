#include "testclass.h"

#include "objectmodel/delegates.h"

#include <gtest/gtest.h>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

int native = 1;

SharedPtr<Object> object(const Class &c, void *data = &native,
                         const ObjectAttribute &attribute = ObjectAttribute::Pointer())
{
    return SharedPtr<Object>(new Object(data, &c, attribute));
}

class Casts : public CastDelegate
{
public:
    explicit Casts(const char *className) : CastDelegate(QString::fromLatin1(className)) { }
    bool canConvertTo(const Class *target, bool, bool) const override { return target == to; }
    SharedPtr<Object> convertTo(SharedPtr<Object>, const Class *, bool) const override { return result; }
    bool canConvertFrom(const Class *source, bool, bool) const override { return source == from; }
    SharedPtr<Object> convertFrom(SharedPtr<Object>, const Class *, bool) const override { return result; }
    const Class *to = nullptr;
    const Class *from = nullptr;
    SharedPtr<Object> result = inspector()->createPrimitive(77);
};

class Verdict : public ComparisonDelegate
{
public:
    explicit Verdict(const char *className) : ComparisonDelegate(QString::fromLatin1(className)) { }
    bool compare(SharedPtr<Object>, SharedPtr<Object>) const override
    {
        ++compared;
        return equal;
    }
    bool sameObjects(SharedPtr<Object>, SharedPtr<Object>) const override { return same; }
    bool equal = true;
    bool same = false;
    mutable int compared = 0;
};

class Note : public UserData
{
public:
    UserData *clone() const override { return new Note; }
};

} // namespace

TEST(Conversion, AsksItsSourcesInOrder)
{
    const TestClass &ancestor = *new TestClass("CvAncestor");
    TestClass &target = *new TestClass("CvTarget", &ancestor);
    TestClass &source = *new TestClass("CvSource", &target);
    target.addConstructor({intArgument()});
    target.addConstructor({Argument(&source, ObjectAttribute::Pointer())});
    int constructed = 0;
    target.onConstruct = [&](int index, void **) {
        EXPECT_EQ(1, index);
        ++constructed;
        return object(target);
    };
    const Class *c = &source;
    const SharedPtr<Object> o = object(source);
    void *constructor = &native;

    // The last source: the ancestor as which it can be seen, but never itself.
    EXPECT_TRUE(c->canConvertTo(&ancestor, true, true, &constructor));
    EXPECT_EQ(nullptr, constructor);
    EXPECT_FALSE(c->canConvertTo(&source, true, true, nullptr));
    EXPECT_FALSE(c->canConvertTo(nullptr, true, true, nullptr));
    EXPECT_TRUE(c->convertTo(o, nullptr, true).isNull());
    EXPECT_TRUE(c->convertTo({}, &target, true).isNull());

    // A converting constructor, for values only and with the same shape of the source.
    EXPECT_TRUE(c->canConvertTo(&target, true, false, &constructor));
    EXPECT_EQ(target.constructor(1), constructor);
    EXPECT_NE(o, c->convertTo(o, &target, false));
    EXPECT_EQ(1, constructed);
    EXPECT_TRUE(c->canConvertTo(&target, false, false, &constructor));
    EXPECT_EQ(nullptr, constructor);
    c->convertTo(o, &target, true);
    EXPECT_EQ(1, constructed);

    // The class's own conversion, before it.
    source.onCanConvert = [&](const Class *wanted, bool, bool) { return wanted == &target; };
    source.onConvert = [](SharedPtr<Object>, const Class *) { return inspector()->createPrimitive(5); };
    EXPECT_TRUE(c->canConvertTo(&target, true, false, &constructor));
    EXPECT_EQ(nullptr, constructor);
    EXPECT_EQ(5, c->convertTo(o, &target, false)->toInteger());
    EXPECT_EQ(1, constructed);
    source.onCanConvert = nullptr;
    target.onConstruct = nullptr;
}

TEST(Conversion, KeepsOtherShapesFromConvertingConstructors)
{
    TestClass &target = *new TestClass("CsTarget");
    target.addConstructor({textArgument()});
    QByteArray text;
    target.onConstruct = [&](int, void **arguments) {
        text = static_cast<const char *>(arguments[0]);
        return object(target);
    };
    const Class *c = primitive(PrimitiveId::Char);
    EXPECT_FALSE(c->convertTo(inspector()->createPrimitive("one"), &target, false).isNull());
    EXPECT_EQ("one", text);
    const SharedPtr<Object> list = inspector()->createPrimitive(QStringList {"two", "three"});
    EXPECT_TRUE(c->convertTo(list, &target, false).isNull());
    EXPECT_EQ("one", text);
    target.onConstruct = nullptr;
}

TEST(Conversion, AsksTheCastDelegatesFirst)
{
    const TestClass &target = *new TestClass("CdTarget");
    const TestClass &base = *new TestClass("CdBase");
    TestClass &source = *new TestClass("CdSource", &base);
    const TestClass &other = *new TestClass("CdOther");
    source.onCanConvert = [](const Class *, bool, bool) { return true; };
    auto *ofBase = new Casts("CdBase");
    auto *ofTarget = new Casts("CdTarget");
    ofBase->to = &target;
    ofTarget->from = &other;
    ofTarget->result = inspector()->createPrimitive(88);
    const Class *c = &source;
    EXPECT_EQ(77, c->convertTo(object(source), &target, true)->toInteger()) << "found along the hierarchy";
    ofTarget->from = &source;
    EXPECT_EQ(77, c->convertTo(object(source), &target, true)->toInteger()) << "the source's comes first";
    ofBase->to = nullptr;
    EXPECT_EQ(88, c->convertTo(object(source), &target, true)->toInteger());
    ofTarget->result = nullptr;
    source.onConvert = [](SharedPtr<Object>, const Class *) { return inspector()->createPrimitive(99); };
    EXPECT_EQ(99, c->convertTo(object(source), &target, true)->toInteger()) << "it gave nothing";
    EXPECT_FALSE(c->sameObjects(nullptr, nullptr));
    EXPECT_FALSE(c->compare(nullptr, nullptr));
    ofTarget->result = inspector()->createPrimitive(88);
    ofTarget->from = &other;
    const Class *o = &other;
    EXPECT_TRUE(o->canConvertTo(&target, false, true, nullptr));
    EXPECT_EQ(88, o->convertTo(object(other), &target, true)->toInteger());
    EXPECT_FALSE(o->canConvertTo(&base, false, true, nullptr));
    source.onCanConvert = nullptr;
    source.onConvert = nullptr;
    (new Casts("CdOther"))->to = &base;
    EXPECT_FALSE(o->canConvertTo(&base, false, true, nullptr)) << "a class looks for its delegate once";
}

TEST(Conversion, AsksTheCastHookBeforeTheInternalOne)
{
    class Casting : public TestClass
    {
    public:
        using TestClass::TestClass;

    private:
        bool canCastTo(const Class *, bool pointer) const override { return pointer; }
        SharedPtr<Object> castTo(SharedPtr<Object>, const Class *, bool) override
        {
            return inspector()->createPrimitive(1);
        }
    };
    Casting &source = *new Casting("CxSource");
    source.onCanConvert = [](const Class *, bool, bool) { return true; };
    source.onConvert = [](SharedPtr<Object>, const Class *) { return inspector()->createPrimitive(2); };
    const Class *c = &source;
    const Class *target = new TestClass("CxTarget");
    EXPECT_EQ(1, c->convertTo(object(source), target, true)->toInteger());
    EXPECT_EQ(2, c->convertTo(object(source), target, false)->toInteger());
    source.onCanConvert = nullptr;
    EXPECT_TRUE(c->canConvertTo(target, false, true, nullptr));
    EXPECT_FALSE(c->canConvertTo(target, false, false, nullptr));
}

TEST(Conversion, TriesThePointerFlagsInOrder)
{
    TestClass &source = *new TestClass("CtlSource");
    const TestClass &target = *new TestClass("CtlTarget");
    QStringList asked;
    int accepted = 0;
    source.onCanConvert = [&](const Class *, bool from, bool to) {
        asked << QStringLiteral("%1%2").arg(int(from)).arg(int(to));
        return asked.size() == accepted;
    };
    const Class *c = &source;
    EXPECT_FALSE(c->canConvertToTolerant(&target, true, true, nullptr));
    EXPECT_EQ((QStringList {"11", "00", "01", "10"}), asked);
    asked.clear();
    accepted = 2;
    EXPECT_TRUE(c->canConvertToTolerant(&target, true, false, nullptr));
    EXPECT_EQ((QStringList {"10", "01"}), asked);

    source.onCanConvert = [](const Class *, bool, bool toPointer) { return !toPointer; };
    source.onConvert = [](SharedPtr<Object> o, const Class *) { return o; };
    const SharedPtr<Object> o = object(source);
    EXPECT_TRUE(c->convertTo(o, &target, true).isNull());
    EXPECT_EQ(o, c->convertToTolerant(o, &target, true));
    source.onCanConvert = nullptr;
}

TEST(Conversion, ViewsAnAncestorWithoutTouchingTheHandle)
{
    TestClass &base = *new TestClass("CuBase");
    TestClass &derived = *new TestClass("CuDerived", &base);
    int deletions = 0;
    derived.onDelete = [&](void *) { ++deletions; };
    SharedPtr<Object> o = object(derived);
    o->setAutoDelete(true);
    o->setUserData(new Note);
    const Class *c = &derived;
    void *data = &data;
    EXPECT_FALSE(derived.convert(object(base), &data));
    EXPECT_FALSE(derived.convert({}, &data));
    EXPECT_EQ(&data, data);
    EXPECT_TRUE(base.convert(o, &data));
    EXPECT_EQ(&native, data);
    SharedPtr<Object> view = c->convertTo(o, &base, true);
    EXPECT_EQ(&base, view->type());
    EXPECT_EQ(&derived, o->type());
    EXPECT_TRUE(view->sameAs(o));
    EXPECT_NE(nullptr, view->userData());
    EXPECT_NE(o->userData(), view->userData());
    o.reset();
    EXPECT_EQ(0, deletions) << "the view keeps the owner alive";
    view.reset();
    EXPECT_EQ(1, deletions);
    derived.onDelete = nullptr;
}

TEST(Conversion, TurnsObjectsIntoTheirInterfaces)
{
    auto *iface = new Interface("CiClickable");
    TestClass &base = *new TestClass("CiBase");
    const TestClass &derived = *new TestClass("CiDerived", &base);
    base.addInterface(iface);
    const QString name = "CiClickable";
    const SharedPtr<Object> o = object(derived);
    const Class *c = &derived;
    const SharedPtr<Object> seen = c->convertToInterface(o, name);
    ASSERT_FALSE(seen.isNull());
    EXPECT_EQ(iface, seen->type());
    EXPECT_EQ(&derived, o->type());
    void *data = nullptr;
    EXPECT_TRUE(iface->convert(seen, &data));
    EXPECT_EQ(&native, data);
    EXPECT_EQ(seen, iface->convertToInterface(seen, name));
    EXPECT_TRUE(iface->convertToInterface(seen, "Other").isNull());
    EXPECT_TRUE(iface->convertToInterface(o, name).isNull());
    EXPECT_TRUE(c->convertToInterface(o, "Other").isNull());
    EXPECT_TRUE(c->convertToInterface(object(base), name).isNull());
    EXPECT_TRUE(c->convertToInterface({}, name).isNull());
}

TEST(Comparison, ConvertsTheSecondTowardsTheFirst)
{
    TestClass &a = *new TestClass("CcA");
    TestClass &b = *new TestClass("CcB");
    a.addProperty("v", intArgument());
    b.addProperty("v", intArgument());
    QStringList conversions;
    const auto convertible = [&](TestClass &from, const TestClass &to) {
        from.onCanConvert = [&to](const Class *target, bool, bool) { return target == &to; };
        from.onConvert = [&](SharedPtr<Object>, const Class *target) {
            conversions << target->className();
            static int converted = 5;
            return object(*target, &converted);
        };
        from.onGet = [](int, void *data) { return inspector()->createPrimitive(*static_cast<int *>(data)); };
    };
    convertible(a, b);
    convertible(b, a);
    int five = 5;
    EXPECT_TRUE(object(a, &five)->compare(object(b)));
    EXPECT_FALSE(object(a, &native)->compare(object(b)));
    EXPECT_EQ((QStringList {"CcA", "CcA"}), conversions);
    b.onCanConvert = nullptr;
    EXPECT_TRUE(object(a)->compare(object(b, &five))) << "the other way when there is only that";
    EXPECT_EQ("CcB", conversions.last());
    a.onCanConvert = nullptr;
    EXPECT_FALSE(object(a, &five)->compare(object(b, &five)));
    a.onGet = b.onGet = nullptr;
}

TEST(Comparison, GoesThroughReadableMemberProperties)
{
    TestClass &plain = *new TestClass("CpPlain");
    TestClass &hidden = *new TestClass("CpHidden");
    hidden.addProperty("s", intArgument(), Property::Readable | Property::Static);
    hidden.addProperty("w", intArgument(), Property::Writable);
    TestClass &full = *new TestClass("CpFull");
    full.addProperty("x", intArgument()).addProperty("y", intArgument());
    int values[][2] = {{1, 2}, {1, 2}, {1, 3}, {1, -1}};
    const auto get = [](int id, void *data) {
        const int v = static_cast<int *>(data)[id];
        return v < 0 ? SharedPtr<Object>() : inspector()->createPrimitive(v);
    };
    full.onGet = get;
    hidden.onGet = [](int, void *) { return inspector()->createPrimitive(1); };
    int other = 0;
    const struct { const char *what; SharedPtr<Object> a; SharedPtr<Object> b; bool equal; } rows[] = {
        {"no properties", object(plain), object(plain, &other), false},
        {"only static and unreadable", object(hidden), object(hidden, &other), false},
        {"same data", object(plain), object(plain), true},
        {"equal", object(full, values[0]), object(full, values[1]), true},
        {"different", object(full, values[0]), object(full, values[2]), false},
        {"a null value", object(full, values[3]), object(full, values[3] + 0), true},
        {"a null value on one side", object(full, values[0]), object(full, values[3]), false},
        {"nulls", object(full, nullptr), object(full, nullptr), true},
        {"null and not null", object(full, nullptr), object(full, values[0]), false},
        {"nothing", object(full, values[0]), {}, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(row.equal, row.a->compare(row.b));
    }
    full.onGet = hidden.onGet = nullptr;
}

TEST(Comparison, EndsWhereEachReadMakesANewObject)
{
    TestClass &c = *new TestClass("CyNode");
    c.addProperty("next", Argument(&c));
    std::vector<std::unique_ptr<int>> made;
    c.onGet = [&](int, void *) {
        made.push_back(std::make_unique<int>(0));
        return object(c, made.back().get());
    };
    int other = 0;
    EXPECT_FALSE(object(c)->compare(object(c, &other)));
    EXPECT_GT(made.size(), 2u);
    c.onGet = nullptr;
}

TEST(Comparison, LooksAtEachPairOnceAndEndsOnCircles)
{
    struct Node
    {
        int value;
        Node *left;
        Node *right;
    };
    TestClass &c = *new TestClass("CqNode");
    c.addProperty("left", Argument(&c)).addProperty("right", Argument(&c));
    c.addProperty("value", intArgument());
    int reads = 0;
    c.onGet = [&](int id, void *data) {
        ++reads;
        const auto *node = static_cast<Node *>(data);
        return id == 2 ? inspector()->createPrimitive(node->value)
                       : object(c, id == 0 ? node->left : node->right);
    };
    // Both ways lead on to the same object, from level to level.
    constexpr int levels = 60;
    std::vector<Node> a(levels + 1), b(levels + 1);
    for (int i = 0; i < levels; ++i) {
        a[i] = {1, &a[i + 1], &a[i + 1]};
        b[i] = {1, &b[i + 1], &b[i + 1]};
    }
    EXPECT_TRUE(object(c, &a[0])->compare(object(c, &b[0])));
    EXPECT_LE(reads, 2 * 3 * (levels + 1));
    b[levels].value = 2;
    EXPECT_FALSE(object(c, &a[0])->compare(object(c, &b[0])));
    EXPECT_TRUE(object(c, &a[levels])->compare(object(c, &a[levels])));

    // On a circle: a pair that is equal only if another one is.
    Node x{1, nullptr, nullptr}, y{1, nullptr, nullptr}, xInner{1, &x, nullptr},
        yInner{1, &y, nullptr};
    x = {1, &xInner, nullptr};
    y = {1, &yInner, nullptr};
    EXPECT_TRUE(object(c, &xInner)->compare(object(c, &yInner)));
    y.value = 2;
    EXPECT_FALSE(object(c, &xInner)->compare(object(c, &yInner)));
    c.onGet = nullptr;
}

TEST(Comparison, TellsAFirstMemberFromTheWhole)
{
    struct Inner { int value; };
    struct Outer { Inner first; };
    TestClass &inner = *new TestClass("CmInner");
    TestClass &outer = *new TestClass("CmOuter");
    inner.addProperty("value", intArgument());
    outer.addProperty("first", Argument(&inner));
    inner.onGet = [](int, void *data) { return inspector()->createPrimitive(static_cast<Inner *>(data)->value); };
    outer.onGet = [&](int, void *data) { return object(inner, &static_cast<Outer *>(data)->first); };
    Outer a {{1}}, b {{2}}, c {{1}};
    EXPECT_FALSE(object(outer, &a)->compare(object(outer, &b)));
    EXPECT_TRUE(object(outer, &a)->compare(object(outer, &c)));
    inner.onGet = outer.onGet = nullptr;
}

TEST(Comparison, LeavesTheVerdictToTheDelegate)
{
    TestClass &base = *new TestClass("ClBase");
    const TestClass &derived = *new TestClass("ClDerived", &base);
    int other = 0;
    const SharedPtr<Object> kept = object(derived);
    EXPECT_FALSE(kept->compare(object(derived, &other)));
    auto *verdict = new Verdict("ClBase");
    EXPECT_TRUE(kept->compare(object(derived, &other)));
    EXPECT_EQ(1, verdict->compared);
    verdict->equal = false;
    EXPECT_FALSE(kept->sameAs(object(derived)));
    EXPECT_TRUE(kept->sameAs(kept));
    verdict->same = true;
    EXPECT_TRUE(kept->sameAs(object(derived, &other)));
}

TEST(Comparison, SeesTheSameThingThroughRelatedClasses)
{
    const TestClass &base = *new TestClass("CsBase");
    const TestClass &derived = *new TestClass("CsDerived", &base);
    const TestClass &stranger = *new TestClass("CsStranger");
    EXPECT_TRUE(object(base)->sameAs(object(derived)));
    EXPECT_TRUE(object(derived)->sameAs(object(base)));
    EXPECT_FALSE(object(base)->sameAs(object(stranger)));
    EXPECT_FALSE(object(base, nullptr)->sameAs(object(base, nullptr)));
    EXPECT_FALSE(object(base)->sameAs({}));
}
