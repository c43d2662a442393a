#include "testclass.h"

#include "objectmodel/delegates.h"
#include "objectmodel/namespace.h"

#include <gtest/gtest.h>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

TestClass &declared(const char *name, const Class *superClass, int methods)
{
    auto *c = new TestClass(name, superClass);
    for (int i = 0; i < methods; ++i) {
        c->addMethod(qPrintable(QStringLiteral("%1_%2").arg(QLatin1String(name)).arg(i)));
    }
    return *c;
}

class CountingProperties : public StaticPropertyDelegate
{
public:
    CountingProperties(const QString &className, std::vector<PropertyDeclaration *> declarations)
        : StaticPropertyDelegate(className), m_declarations(std::move(declarations))
    {
    }
    int numPropertyDeclarations() const override
    {
        ++countQueries;
        return int(m_declarations.size());
    }
    const PropertyDeclaration *propertyDeclaration(int index) const override
    {
        return m_declarations.at(index);
    }
    mutable int countQueries = 0;

private:
    std::vector<PropertyDeclaration *> m_declarations;
};

PropertyDeclaration *intDeclaration(const char *name)
{
    return new PropertyDeclaration(nullptr, intArgument(), QString::fromLatin1(name),
                                   [](SharedPtr<Object>) { return SharedPtr<Object>(); });
}

// Out of the sight of the optimizer and of the null check of the sanitizer.
__attribute__((noinline)) const Class *nullClass()
{
    static const Class *volatile none = nullptr;
    return none;
}

} // namespace

TEST(Class, NumbersMembersOverTheWholeHierarchy)
{
    const TestClass &root = declared("CtRoot", nullptr, 3);
    const TestClass &sub = declared("CtSub", &root, 2);
    EXPECT_EQ(0, root.createdDescriptors + sub.createdDescriptors);

    EXPECT_EQ(5, sub.numMethods());
    EXPECT_EQ(root.method(1), sub.method(1));
    EXPECT_EQ(QStringLiteral("CtSub_0"), sub.method(3)->name());
    EXPECT_EQ(QStringLiteral("CtSub_1"), sub.method(4)->name());
    EXPECT_EQ((std::vector<int> {3, 4}), sub.createdMethods);
    EXPECT_EQ(3, sub.superClassOffset(Class::MethodOffset));
    EXPECT_EQ(0, sub.superClassOffset(Class::ConstructorOffset));
    EXPECT_EQ(0, sub.superClassOffset(static_cast<Class::OffsetType>(17)));
}

TEST(Class, AddsUndeclaredCountsAsTheyStand)
{
    TestClass &root = declared("CtURoot", nullptr, 3);
    root.addEvent("shown").addProperty("x", intArgument());
    TestClass &middle = declared("CtUMiddle", &root, 0);
    middle.undeclare();
    const TestClass &leaf = declared("CtULeaf", &middle, 2);

    EXPECT_EQ(2, middle.numMethods());
    EXPECT_EQ(0, middle.numProperties());
    EXPECT_EQ(-1, middle.numEnums());
    EXPECT_EQ(0, middle.numEvents());
    EXPECT_EQ(1, root.numEvents());
    EXPECT_EQ(4, leaf.numMethods());
    EXPECT_EQ((std::vector<int> {}), middle.createdMethods);
    EXPECT_EQ(QStringLiteral("CtULeaf_0"), leaf.method(2)->name());
    EXPECT_EQ(QStringLiteral("CtURoot_2"), middle.method(2)->name());
    EXPECT_EQ(nullptr, middle.method(3));
    EXPECT_EQ(nullptr, leaf.method(-1));
    EXPECT_EQ(nullptr, middle.constructor(0));
    EXPECT_EQ(QStringLiteral("CtURoot_0"), leaf.methods(QStringLiteral("CtURoot_0")).at(0)->name());
    // An undeclared count hides the inherited events from the sum, not from the look-up.
    EXPECT_NE(nullptr, leaf.event(QStringLiteral("shown")));
}

TEST(Class, AnswersNullOutOfRangeAndSkipsMissingDescriptors)
{
    TestClass &c = declared("CtHoles", nullptr, 3);
    c.missing = {1};
    c.addConstructor({});
    EXPECT_EQ(nullptr, c.method(1));
    EXPECT_EQ(nullptr, c.method(3));
    EXPECT_EQ(nullptr, c.method(-5));
    EXPECT_EQ(nullptr, c.constructor(1));
    EXPECT_EQ(nullptr, c.constructor(-1));
    EXPECT_EQ(nullptr, c.property(0));
    EXPECT_EQ(nullptr, c.event(7));
    EXPECT_EQ(nullptr, c.enumerator(0));
    EXPECT_TRUE(c.methods(QStringLiteral("CtHoles_1")).isEmpty());
    EXPECT_EQ(1, c.methods(QStringLiteral("CtHoles_2")).size());
}

TEST(Class, FindsOwnMembersBeforeInheritedOnes)
{
    static const Enum::Item items[] = {{"A", 1}, {nullptr, 0}};
    TestClass &root = *new TestClass("CtHideRoot");
    root.addMethod("go").addProperty("x", intArgument()).addEvent("e").addEnum("E", items);
    root.addConstructor({});
    TestClass &sub = *new TestClass("CtHideSub", &root);
    sub.addMethod("go", {intArgument()}).addMethod("go").addProperty("x", doubleArgument()).addEvent("e");

    const MethodList go = sub.methods(QStringLiteral("go"));
    ASSERT_EQ(3, go.size());
    EXPECT_EQ(sub.method(1), go.at(0));
    EXPECT_EQ(sub.method(2), go.at(1));
    EXPECT_EQ(root.method(0), go.at(2));
    EXPECT_EQ(&sub, sub.property(QStringLiteral("x"))->propertyClass());
    EXPECT_EQ(&sub, sub.event(QStringLiteral("e"))->eventClass());
    EXPECT_EQ(&root, sub.enumerator(QStringLiteral("E"))->enumClass());
    EXPECT_EQ(nullptr, sub.property(QStringLiteral("X")));
    EXPECT_EQ(0, sub.numConstructors());
    EXPECT_EQ(nullptr, sub.constructor(0));
    EXPECT_NE(nullptr, root.constructor(0));
}

TEST(Class, KeepsALateMethodOnlyWhenTheTableExists)
{
    TestClass &early = declared("CtLateEarly", nullptr, 1);
    auto *unused = new Method(0, &early, Argument(), Signature(QStringLiteral("unused")));
    early.lateAddMethod(unused);
    EXPECT_EQ(2, early.numMethods());
    early.addMethod("created"); // what createMethod() is asked for instead
    EXPECT_EQ(QStringLiteral("created"), early.method(1)->name());
    EXPECT_TRUE(early.methods(QStringLiteral("unused")).isEmpty());
    delete unused;

    TestClass &used = declared("CtLateUsed", nullptr, 1);
    const TestClass &sub = declared("CtLateSub", &used, 1);
    ASSERT_NE(nullptr, used.method(0));
    auto *late = new Method(-1, &used, Argument(), Signature(QStringLiteral("late")));
    const Class *handedOut = &used;
    handedOut->lateAddMethod(late);
    EXPECT_EQ(late, used.method(1));
    EXPECT_EQ(1, late->id());
    EXPECT_EQ(QStringLiteral("CtLateSub_0"), sub.method(2)->name());
    used.lateAddMethod(nullptr);
    EXPECT_EQ(2, used.numMethods());

    const TestClass &asked = declared("CtLateAsked", &used, 1);
    ASSERT_NE(nullptr, asked.method(0)); // an inherited one, yet the own table exists now
    auto *last = new Method(-1, &asked, Argument(), Signature(QStringLiteral("last")));
    asked.lateAddMethod(last);
    EXPECT_EQ(last, asked.method(3));
}

TEST(Class, CountsDelegatePropertiesBehindItsOwn)
{
    TestClass &root = *new TestClass("CtDelegateRoot");
    root.addProperty("own", intArgument());
    TestClass &sub = *new TestClass("CtDelegateSub", &root);
    sub.addProperty("subOwn", intArgument());
    auto *delegate = new CountingProperties(
        QStringLiteral("CtDelegateRoot"), {intDeclaration("own"), intDeclaration("added")});

    EXPECT_EQ(3, root.numProperties());
    EXPECT_EQ(1, root.declaredAndInheritedProperties());
    EXPECT_EQ(4, sub.numProperties());
    EXPECT_EQ(4, sub.declaredAndInheritedProperties());
    EXPECT_EQ(QStringLiteral("subOwn"), sub.property(3)->name());
    const Property *added = sub.property(QStringLiteral("added"));
    ASSERT_NE(nullptr, added);
    EXPECT_EQ(2, added->id());
    EXPECT_EQ(&root, added->propertyClass());
    EXPECT_NE(nullptr, added->propertyDeclaration());
    // A declared property wins over a delegate's of the same name.
    EXPECT_EQ(nullptr, root.property(QStringLiteral("own"))->propertyDeclaration());
    EXPECT_EQ(1, delegate->countQueries);

    // The look-up is not repeated: a delegate that comes too late is not seen.
    TestClass &late = *new TestClass("CtDelegateLate");
    EXPECT_EQ(0, late.numProperties());
    new CountingProperties(QStringLiteral("CtDelegateLate"), {intDeclaration("x")});
    EXPECT_EQ(0, late.numProperties());
}

TEST(Class, KnowsItsPlaceAndItsAncestors)
{
    auto *outer = new Namespace(inspector()->globalNamespace(), QStringLiteral("CtOuter"));
    auto *inner = new Namespace(outer, QStringLiteral("CtInner"));
    const TestClass &c = *new TestClass("Name", inner);
    const TestClass &sub = *new TestClass("CtSubOfName", &c);
    EXPECT_EQ(QStringLiteral("CtOuter::CtInner::Name"), c.fullyQualifiedClassName());
    EXPECT_EQ(QStringLiteral("CtSubOfName"), sub.fullyQualifiedClassName());
    EXPECT_EQ(&c, inner->getClass(QStringLiteral("Name")));
    EXPECT_EQ(&c, inspector()->type(c.id()));

    EXPECT_TRUE(c.isSubClassOf(&c));
    EXPECT_TRUE(sub.isSubClassOf(&c));
    EXPECT_FALSE(c.isSubClassOf(&sub));
    EXPECT_EQ(1, sub.inheritanceDepth(&c));
    EXPECT_EQ(0, c.inheritanceDepth(&c));
    EXPECT_EQ(-1, c.inheritanceDepth(&sub));
    EXPECT_EQ(-1, c.inheritanceDepth(nullptr));
}

TEST(Class, AnswersOnANullClass)
{
    const auto ask = []() __attribute__((noinline, no_sanitize("undefined")))
    {
        const Class *none = nullClass();
        return std::make_pair(none->isSubClassOf(primitive(1)), none->inheritanceDepth(primitive(1)));
    };
    EXPECT_EQ(std::make_pair(false, -1), ask());
    EXPECT_FALSE(Class::isSubClass(nullptr, primitive(1)));
    EXPECT_EQ(-1, Class::inheritanceDistance(nullptr, nullptr));
}

TEST(Class, KeepsNamesAsUtf8AndNaturesAsBits)
{
    TestClass &c = *new TestClass("Ct\xc3\x84hnlich");
    EXPECT_EQ(QStringLiteral(u"Ct\u00c4hnlich"), c.className());
    EXPECT_EQ(&c, inspector()->type(QStringLiteral(u"Ct\u00c4hnlich*")));
    c.addNature(3);
    c.addNature(35);
    EXPECT_TRUE(c.hasNature(3));
    EXPECT_FALSE(c.hasNature(2));
    EXPECT_EQ(8u, c.natures());
}

TEST(Class, NormalizesTypeNames)
{
    class Aliasing : public Class
    {
    public:
        QString realType(const QString &type) override
        {
            return type == QLatin1String("Alias") ? QStringLiteral("Real") : Class::realType(type);
        }
    };
    static Aliasing aliasing;
    const Class *c = &aliasing;
    const struct { const char *what; const char *type; const char *expected; } rows[] = {
        {"plain",                        "Foo",                  "Foo"},
        {"const and pointer",            "const Foo*",           "const Foo*"},
        {"reference",                    "Foo&",                 "Foo&"},
        {"alias below qualifiers",       "const Alias&",         "const Real&"},
        {"alias in template arguments",  "List<Alias,const Alias*>", "List<Real,const Real*>"},
        {"pointer before the name",      "*Foo",                 "Foo*"},
        {"two pointers, one put back",   "Foo**",                "Foo**"},
        {"reference and pointer",        "Foo*&",                "Foo*&"},
        {"empty",                        "",                     ""},
        {"no closing bracket",           "List<A",               "List<A"},
        {"brackets the wrong way",       ">A<",                  ">A<"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(QString::fromLatin1(row.expected), c->realType(QString::fromLatin1(row.type)));
    }
}

TEST(Class, RefusesASecondInterfaceOfAName)
{
    auto *iface = new Interface("CtIface");
    auto *same = new Interface("CtIface");
    TestClass &root = *new TestClass("CtIfaceRoot");
    TestClass &sub = *new TestClass("CtIfaceSub", &root);
    root.addInterface(iface);
    EXPECT_EQ(iface, sub.interfaceClass(QStringLiteral("CtIface")));
    EXPECT_EQ(nullptr, sub.interfaceClass(QStringLiteral("Other")));
    EXPECT_DEATH(sub.addInterface(same),
                 "Cannot add duplicate Interface CtIface to Class CtIfaceSub");
    delete same;
}

TEST(Namespace, ListsChildrenInOrderAndByName)
{
    Namespace root;
    EXPECT_EQ(-1, root.id());
    auto *a = new Namespace(&root, QStringLiteral("NtA"));
    auto *again = new Namespace(&root, QStringLiteral("NtA"));
    auto *b = new Namespace(a, QStringLiteral("NtB"));
    EXPECT_EQ(2, root.numNamespaces());
    EXPECT_EQ(a, root.getNamespace(0));
    EXPECT_EQ(again, root.getNamespace(QStringLiteral("NtA")));
    EXPECT_EQ(nullptr, root.getNamespace(2));
    EXPECT_EQ(nullptr, root.getNamespace(-1));
    EXPECT_EQ(b, inspector()->nameSpace(b->id()));
    EXPECT_EQ(QStringLiteral("NtA::NtB"), b->fullyQualifiedName());
    EXPECT_EQ(QStringLiteral("NtA::NtB::NtD"), (new Namespace(b, QStringLiteral("NtD")))->fullyQualifiedName());
    EXPECT_TRUE(a->containsIdentifier(QStringLiteral("NtB")));
    EXPECT_FALSE(a->containsIdentifier(QStringLiteral("NtC")));
    new TestClass("NtC", a);
    EXPECT_TRUE(a->containsIdentifier(QStringLiteral("NtC")));
}

TEST(Class, DiesOfBeingItsOwnAncestor)
{
    class Relinked : public TestClass
    {
    public:
        using Class::setSuperClass;
        using TestClass::TestClass;
    };
    Relinked &base = *new Relinked("CtRingBase");
    const Relinked &derived = *new Relinked("CtRingDerived", &base);
    EXPECT_EQ(&base, derived.super());
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(base.setSuperClass(&derived),
                 "Cannot make Class CtRingDerived the super class of "
                 "Class CtRingBase, from which it derives");
    EXPECT_DEATH(base.setSuperClass(&base), "CtRingBase");
}

TEST(Class, LeavesTypeNamesThatAreNestedTooDeepAsTheyAre)
{
    const Class *c = primitive(PrimitiveId::Int);
    EXPECT_EQ(QStringLiteral("A<const B&,C*>"), c->realType(QStringLiteral("A<const B&,C*>")));
    const int depth = 100000;
    const QString templates = QStringLiteral("A<").repeated(depth) + QString(depth, u'>');
    EXPECT_EQ(templates, c->realType(templates));
    EXPECT_FALSE(c->realType(QString(depth, u'*')).isEmpty());
    EXPECT_FALSE(c->realType(QStringLiteral("const ").repeated(depth)).isEmpty());
}
