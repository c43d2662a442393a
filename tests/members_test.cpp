#include "testclass.h"

#include "objectmodel/globalobject.h"

#include <gtest/gtest.h>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

constexpr int valueFlag = 0;
constexpr int referenceFlag = ObjectAttribute::ReferenceFlag;
constexpr int pointerFlag = ObjectAttribute::PointerFlag;
constexpr int const1Flag = ObjectAttribute::Const1Flag;
constexpr int const2Flag = ObjectAttribute::Const2Flag;
constexpr int arrayFlag = ObjectAttribute::ArrayFlag;

const Enum::Item sizes[] = {{"Small", 1}, {"Large", 2}, {"Huge", 4}, {"Giant", 4}, {nullptr, 0}};

} // namespace

TEST(ObjectAttribute, MatchesTolerantlyByShape)
{
    const struct { const char *what; int mine; int other; bool match; } rows[] = {
        {"pointer takes pointer",             pointerFlag, pointerFlag, true},
        {"pointer takes array",               pointerFlag, arrayFlag, true},
        {"pointer refuses value",             pointerFlag, valueFlag, false},
        {"pointer refuses reference",         pointerFlag, referenceFlag, false},
        {"value takes value",                 valueFlag, valueFlag, true},
        {"value takes reference",             valueFlag, referenceFlag, true},
        {"value refuses pointer",             valueFlag, pointerFlag, false},
        {"array takes pointer",               arrayFlag, pointerFlag, true},
        {"array takes value",                 arrayFlag, valueFlag, true},
        {"reference takes array value",       referenceFlag, arrayFlag, true},
        {"reference to pointer, by pointer",  referenceFlag | pointerFlag, pointerFlag, true},
        {"pointer with const refuses value",  pointerFlag | const1Flag, const1Flag, false},
        {"value takes pointer by reference",  valueFlag, pointerFlag | referenceFlag, true},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(row.match, ObjectAttribute(row.mine).tolerantMatch(ObjectAttribute(row.other)));
    }
    EXPECT_EQ(16, ObjectAttribute::Array(4).getFlags());
    EXPECT_EQ(4, ObjectAttribute::Array(4).arrayLength());
    EXPECT_TRUE(ObjectAttribute::Array(4).isValue());
}

TEST(Signature, SpellsArgumentsAndResultsEachInTheirWay)
{
    const TestClass &foo = *new TestClass("MtFoo");
    const Enum kindEnum(0, &foo, QStringLiteral("Kind"), sizes);
    const Enum modeEnum(0, inspector()->globalClass(), QStringLiteral("Mode"), sizes);
    const QString x = QStringLiteral("x");
    const struct { const char *what; Argument argument; const char *inList; const char *asResult; } rows[] = {
        {"value",           Argument(x, &foo), "MtFoo x", "MtFoo"},
        {"const reference", Argument(x, &foo, referenceFlag | const1Flag, 0), "const MtFoo & x", "const MtFoo&"},
        {"const pointer",   Argument(&foo, pointerFlag | const2Flag, 0), "MtFoo * const", "MtFoo* const"},
        {"array of three",  Argument(&foo, arrayFlag, 3), "MtFoo [3]", "MtFoo [3]"},
        {"array",           Argument(&foo, arrayFlag, 0), "MtFoo []", "MtFoo []"},
        {"array of const pointers", Argument(&foo, arrayFlag | pointerFlag | const2Flag, 2),
                                    "MtFoo * [2] const", "MtFoo* const [2]"},
        {"enum",            Argument(x, &foo, ObjectAttribute(), &kindEnum), "MtFoo::Kind x", "MtFoo::Kind"},
        {"global enum",     Argument(x, &foo, ObjectAttribute(), &modeEnum), "Mode x", "MtFoo::Mode"},
        {"no class",        Argument(x, nullptr), "undefined x", "undefined"},
        {"unset",           Argument(), "undefined", ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(QLatin1Char('(') + QLatin1String(row.inList) + QLatin1Char(')'),
                  Signature(QString(), {row.argument}).toString());
        const Method method(0, &foo, row.argument, Signature(QStringLiteral("m")));
        EXPECT_EQ(QString::fromLatin1(row.asResult) + QLatin1String(" m()"), method.toString());
    }
    EXPECT_EQ(QStringLiteral("(int, double y)"),
              Signature(QString(), {intArgument(), doubleArgument("y")}).toString());
    EXPECT_EQ(QStringLiteral("MtFoo(int a)"),
              Constructor(0, &foo, Signature(QString(), {intArgument("a")})).toString());
    EXPECT_EQ(QStringLiteral("int MtFoo::x"), Property(0, &foo, intArgument(), x, 0).toString());
    const Argument kind(primitive(PrimitiveId::Int), ObjectAttribute::Reference(), &kindEnum);
    EXPECT_EQ(QStringLiteral("MtFoo::Kind& MtFoo::x"), Property(0, &foo, kind, x, 0).toString());
}

TEST(Enum, FindsExactValuesAndKeys)
{
    const Enum e(0, nullptr, QStringLiteral("Size"), sizes);
    bool ok = false;
    EXPECT_EQ(4, e.count());
    EXPECT_EQ(2, e.value(QStringLiteral("Large"), &ok));
    EXPECT_TRUE(ok);
    EXPECT_EQ(-1, e.value(QStringLiteral("large"), &ok));
    EXPECT_FALSE(ok);
    for (const char *key : {"x", "Large|Huge", " Large"}) {
        EXPECT_EQ(-1, e.value(QString::fromLatin1(key), nullptr)) << key;
    }
    EXPECT_EQ(QStringLiteral("Huge"), e.valueToKey(4, &ok));
    EXPECT_TRUE(ok);
    EXPECT_EQ(QString(), e.key(4));
    EXPECT_EQ(QString(), e.key(-1));
    EXPECT_EQ(-1, e.value(4));

    testing::internal::CaptureStderr();
    EXPECT_EQ(QString(), e.valueToKey(3, &ok));
    EXPECT_FALSE(ok);
    e.valueToKey(-9, nullptr);
    EXPECT_EQ("Could not find value 3 in enum Size\nCould not find value -9 in enum Size\n",
              testing::internal::GetCapturedStderr());
}

TEST(Enum, IsAMaskWhileNoValuesShareABit)
{
    static const Enum::Item bits[] = {{"A", 1}, {"B", 2}, {"C", 4}, {nullptr, 0}};
    static const Enum::Item counted[] = {{"A", 1}, {"B", 2}, {"C", 3}, {nullptr, 0}};
    static const Enum::Item distant[] = {{"A", 1}, {"B", 2}, {"C", 5}, {nullptr, 0}};
    static const Enum::Item zeroOne[] = {{"A", 0}, {"B", 1}, {nullptr, 0}};
    static const Enum::Item zeros[] = {{"A", 0}, {"B", 0}, {nullptr, 0}};
    static const Enum::Item negative[] = {{"A", -1}, {"B", 1}, {nullptr, 0}};
    static const Enum::Item none[] = {{nullptr, 0}};
    const struct { const char *what; const Enum::Item *items; bool mask; } rows[] = {
        {"bits", bits, true}, {"counted", counted, false}, {"a bit of an earlier but one", distant, false},
        {"zero and one", zeroOne, true},
        {"zero twice", zeros, true}, {"equal values", sizes, false},
        {"negative", negative, false}, {"empty", none, true}, {"no table", nullptr, true},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        Enum e(0, nullptr, QStringLiteral("E"), row.items);
        EXPECT_EQ(row.mask, e.isMask());
        e.setIsMask(!row.mask);
        EXPECT_EQ(!row.mask, e.isMask());
    }
}

TEST(PropertyDeclaration, DerivesItsFlagsFromItsAccessors)
{
    const Method read(0, nullptr, intArgument(), Signature(QStringLiteral("r")), Method::Static);
    const Method write(0, nullptr, Argument(), Signature(QStringLiteral("w")));
    const auto readFunction = [](SharedPtr<Object>) { return SharedPtr<Object>(); };
    const auto writeFunction = [](SharedPtr<Object>, SharedPtr<Object>) { return true; };
    const QString name = QStringLiteral("p");
    constexpr int readable = PropertyDeclaration::Readable;
    constexpr int writable = PropertyDeclaration::Writable;
    constexpr int stored = PropertyDeclaration::Stored;
    constexpr int isStatic = PropertyDeclaration::Static;

    EXPECT_EQ(readable | stored | isStatic,
              PropertyDeclaration(nullptr, intArgument(), name, &read).flags());
    EXPECT_EQ(readable | writable | stored | isStatic,
              PropertyDeclaration(nullptr, intArgument(), name, &read, &write).flags());
    EXPECT_EQ(writable | stored,
              PropertyDeclaration(nullptr, intArgument(), name, nullptr, &write).flags());
    EXPECT_EQ(readable | writable | stored,
              PropertyDeclaration(nullptr, intArgument(), name, readFunction, writeFunction).flags());
    PropertyDeclaration unstored(nullptr, intArgument(), name, readFunction);
    unstored.setStored(false);
    EXPECT_EQ(readable, Property(0, nullptr, &unstored).flags());
}

TEST(PropertyDeclaration, ResolvesATypeNameLateAndReportsItOnce)
{
    class Declaring : public TestClass
    {
    public:
        using TestClass::TestClass;
        QString realType(const QString &type) override
        {
            return TestClass::realType(type == "MtAlias" ? "MtLater*" : type);
        }
    };
    const Declaring &owner = *new Declaring("MtDeclaring");
    const auto read = [](SharedPtr<Object>) { return SharedPtr<Object>(); };
    const PropertyDeclaration later(&owner, QStringLiteral("MtLater*"), QStringLiteral("l"), read);
    const TestClass &type = *new TestClass("MtLater");
    EXPECT_EQ(&type, later.type().type());
    EXPECT_TRUE(later.type().isPointer());
    const PropertyDeclaration alias(&owner, QStringLiteral("MtAlias"), QStringLiteral("a"), read);
    EXPECT_EQ(later.type(), alias.type());

    const PropertyDeclaration unknown(&owner, QStringLiteral("MtNever"), QStringLiteral("n"), read);
    testing::internal::CaptureStderr();
    EXPECT_EQ(primitive(PrimitiveId::Undefined), unknown.type().type());
    EXPECT_TRUE(unknown.isReadable());
    EXPECT_EQ("Property MtDeclaring::n has unknown type MtNever.\n",
              testing::internal::GetCapturedStderr());
}

TEST(Members, SayWhenTheyBelongToNoClass)
{
    inspector()->lastError();
    const Method method(0, nullptr, Argument(), Signature(QStringLiteral("lost")));
    EXPECT_TRUE(method.invoke({}, {}).isNull());
    EXPECT_EQ(QStringLiteral("The function lost() belongs to no class"), inspector()->lastError());
    const Property property(0, nullptr, intArgument(), QStringLiteral("lost"), Property::Readable);
    EXPECT_TRUE(property.get({}).isNull());
    EXPECT_EQ(QStringLiteral("The property lost belongs to no class"), inspector()->lastError());
    EXPECT_FALSE(property.set({}, {}));
    EXPECT_NE(QString(), inspector()->lastError());
    EXPECT_TRUE(Constructor().construct({}).isNull());
    EXPECT_EQ(QStringLiteral("The constructor () belongs to no class"), inspector()->lastError());
}
