#include "objectmodel/wrap.h"

#include "objectmodel/class.h"
#include "objectmodel/classbuilder.h"
#include "objectmodel/containerclasses.h"
#include "objectmodel/delegates.h"
#include "objectmodel/inspector.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

using namespace Vantrel;

namespace {

struct Stamp
{
    int number = 0;
};
struct Unknown
{
};
struct Counted
{
};

class CountOf : public ConversionDelegate
{
public:
    explicit CountOf(const QString &className) : ConversionDelegate(className) {}
    int capabilities() const override { return IntegerCapability; }
    int toInteger(SharedPtr<Object>) const override { return 12; }
};

enum class Paper { Plain = 1, Ruled = 2 };
enum class UnknownEnum { None };

void registerStamp()
{
    static const Class *const c =
        ClassBuilder<Stamp>("WrapStamp")
            .enumeration<Paper>("Paper", {{"Plain", Paper::Plain}, {"Ruled", Paper::Ruled}})
            .add();
    static const Class *const counted = ClassBuilder<Counted>("WrapCounted").add();
    static const CountOf count("WrapCounted");
    ASSERT_TRUE(c && counted);
}

QString lastError()
{
    return Inspector::self()->lastError();
}

} // namespace

TEST(Wrap, GivesEachNativeTypeItsClass)
{
    const std::tuple<SharedPtr<Object>, const char *, const char *> rows[] = {
        {wrap(true), "bool", "true"},
        {wrap(7), "int", "7"},
        {wrap(qint64(1) << 40), "int64", "1099511627776"},
        {wrap(2.5), "double", "2.5"},
        {wrap("text"), "char", "text"},
        {wrap(QString("\u00e4")), "char", "\u00e4"},
        {wrap(QStringList{"a", "b"}), "char", "[ a, b ]"},
        {wrap(std::string("std")), "char", "std"},
        {wrap(short(-3)), "short", "-3"},
        {wrap('x'), "char", "x"},
        {wrap((unsigned char)(200)), "int", "200"},
        {wrap(4000000000u), "int64", "4000000000"},
        {wrap(long(5)), sizeof(long) == 8 ? "int64" : "long", "5"},
        {wrap(0.5f), "double", "0.5"},
    };
    for (const auto &[object, className, text] : rows) {
        SCOPED_TRACE(text);
        ASSERT_TRUE(object);
        EXPECT_EQ(className, object->className());
        EXPECT_EQ(text, object->toString());
        EXPECT_TRUE(object->isAutoDelete());
    }
}

TEST(Wrap, CopiesValuesAndRefersToWhatIsBehindPointers)
{
    registerStamp();
    Stamp stamp{4};
    const SharedPtr<Object> copy = wrap(stamp);
    const SharedPtr<Object> view = wrap(&stamp);
    stamp.number = 5;
    EXPECT_EQ(4, unwrap<Stamp>(copy).number);
    EXPECT_EQ(5, unwrap<Stamp>(view).number);
    EXPECT_EQ(&stamp, unwrap<Stamp *>(view));
    EXPECT_TRUE(copy->isAutoDelete());
    EXPECT_FALSE(view->isAutoDelete());

    const SharedPtr<Object> null = wrap(static_cast<const Stamp *>(nullptr));
    EXPECT_TRUE(null->isNull());
    EXPECT_EQ("WrapStamp", null->className());
    bool ok = false;
    EXPECT_EQ(nullptr, unwrap<Stamp *>(null, &ok));
    EXPECT_TRUE(ok);
}

TEST(Wrap, RefusesTypesThatNobodyRegistered)
{
    lastError();
    EXPECT_FALSE(wrap(Unknown()));
    EXPECT_TRUE(lastError().contains("Unknown is not registered"));
    EXPECT_FALSE(wrap(UnknownEnum::None));
    EXPECT_TRUE(lastError().contains("UnknownEnum is not registered"));
    bool ok = true;
    unwrap<UnknownEnum>(wrap(1), &ok);
    EXPECT_FALSE(ok);
}

TEST(Unwrap, ConvertsAsTheArgumentsOfCallsAre)
{
    registerStamp();
    EXPECT_EQ(7, unwrap<int>(wrap(7.9)));
    EXPECT_EQ(QStringList("one"), unwrap<QStringList>(wrap("one")));
    EXPECT_EQ(12, unwrap<int>(wrap(Counted()))) << "by the conversion delegate";
    EXPECT_EQ(7.0, unwrap<double>(wrap(7)));
    EXPECT_EQ(42, unwrap<qint64>(wrap("42")));
    EXPECT_EQ(42ul, unwrap<unsigned long>(wrap(QString("42"))));
    EXPECT_EQ("7", unwrap<QString>(wrap(7)));
    EXPECT_EQ("7", unwrap<std::string>(wrap(7)));
    EXPECT_EQ('x', unwrap<char>(wrap("x")));
    EXPECT_EQ(Paper::Ruled, unwrap<Paper>(wrap("Ruled")));
    EXPECT_EQ(Paper::Ruled, unwrap<Paper>(wrap(Paper::Ruled)));
    EXPECT_EQ(quint64(-1), unwrap<quint64>(wrap(std::numeric_limits<quint64>::max())));
    const QStringList list{"a", QString(), "c"};
    EXPECT_EQ(list, unwrap<QStringList>(wrap(list)));
    EXPECT_EQ(QStringList(), unwrap<QStringList>(wrap(QStringList())));
    const SharedPtr<Object> text = wrap("kept");
    EXPECT_STREQ("kept", unwrap<const char *>(text));

    char first[] = "first";
    char *texts[] = {first, nullptr};
    const ObjectAttribute attribute(ObjectAttribute::PointerFlag | ObjectAttribute::ArrayFlag, 2);
    const auto foreign = Inspector::self()->type(PrimitiveId::Char)->wrap(texts, attribute);
    EXPECT_EQ((QStringList{"first", QString()}), unwrap<QStringList>(foreign));
}

TEST(Unwrap, TellsWhyThereIsNoValue)
{
    registerStamp();
    Stamp stamp;
    const char *none = nullptr;
    const auto failure = [](auto unwrapped, const SharedPtr<Object> &object) {
        lastError();
        bool ok = true;
        unwrap<decltype(unwrapped)>(object, &ok);
        EXPECT_FALSE(ok);
        return lastError();
    };
    const std::tuple<const char *, QString, const char *> rows[] = {
        {"no object at all", failure(0, nullptr), "Cannot unwrap int from no object"},
        {"another class", failure(0, wrap(&stamp)), "WrapStamp cannot convert to int"},
        {"a number where an object is wanted", failure(Stamp(), wrap(1)), "int cannot convert"},
        {"no key", failure(Paper::Plain, wrap("Blue")), "'Blue' is no key of Paper"},
        {"a null object by value", failure(Stamp(), wrap(static_cast<Stamp *>(nullptr))), "null"},
        {"a null text for a type without null", failure(std::string(), wrap(none)), "null"},
        {"a converted text would be gone", failure(none, wrap(7)), "would not last"},
        {"a list is no text", failure(none, wrap(QStringList{QString()})), "cannot convert"},
        {"an invalidated object", failure(0, Object::zombie()), "Cannot unwrap int from Dead"},
    };
    for (const auto &[what, error, reason] : rows) {
        EXPECT_TRUE(error.contains(reason)) << what << ": " << error.toStdString();
    }
    EXPECT_EQ(nullptr, unwrap<Unknown *>(wrap(1)));
}

TEST(Wrap, CarriesContainersElementByElement)
{
    registerContainerClasses();
    registerStamp();
    const SharedPtr<Object> array = wrap(std::vector<int>{1, 2, 3});
    ASSERT_TRUE(array);
    EXPECT_EQ("Vantrel_Array", array->className());
    EXPECT_EQ((std::vector<QString>{"1", "2", "3"}), unwrap<std::vector<QString>>(array));
    const std::map<QString, std::vector<bool>> nested{{"key", {true, false}}};
    EXPECT_EQ(nested, (unwrap<std::map<QString, std::vector<bool>>>(wrap(nested))));

    Stamp stamp;
    const std::vector<Stamp *> pointers{&stamp, nullptr};
    EXPECT_EQ(pointers, unwrap<std::vector<Stamp *>>(wrap(pointers)));
    bool ok = true;
    EXPECT_TRUE(unwrap<std::vector<Stamp>>(wrap(pointers), &ok).empty());
    EXPECT_FALSE(ok);
    EXPECT_TRUE(lastError().contains("element 1: null object given"));
    EXPECT_FALSE(wrap(std::vector<Unknown>(1)));
    EXPECT_TRUE(lastError().contains("Unknown is not registered"));
}
