#include "testclass.h"

#include "objectmodel/datetime.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

std::string written(const DateTime &value)
{
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

std::string written(const SharedPtr<Object> &object)
{
    return object ? written(unwrapDateTime(object)) : "null";
}

SharedPtr<Object> number(int value)
{
    return inspector()->createPrimitive(value);
}

TEST(DateTime, HasOneTextForm)
{
    EXPECT_EQ("2024/03/5/9/7/0", written(DateTime(2024, 3, 5, 9, 7, 0)));
    EXPECT_EQ("2024/03/5/-1/-1/-1", written(DateTime(2024, 3, 5)));
    EXPECT_EQ("12345/12/31/23/59/59", written(DateTime(12345, 12, 31, 23, 59, 59)));
    EXPECT_EQ("00-1/-1/-1/-1/-1/-1", written(DateTime()));

    std::ostringstream stream;
    stream << std::hex << std::showpos << std::left << std::setfill('*') << std::setw(30)
           << DateTime(2024, 3, 5, 16, 7, 0) << ' ' << std::setw(6) << 255;
    EXPECT_EQ("2024/03/5/16/7/0 ff****", stream.str());
}

TEST(DateTime, ReadsItsTextBack)
{
    const struct
    {
        const char *what;
        const char *text;
        const char *result;
    } rows[] = {
        {"as written", "2024/03/5/9/7/0", "2024/03/5/9/7/0"},
        {"unknown parts", "2024/03/5/-1/-1/-1", "2024/03/5/-1/-1/-1"},
        {"any separators, and zeros that are no octal sign", "2024-08-09T08:09:10",
         "2024/08/9/8/9/10"},
        {"spaces", " 2024 3 5 9 7 0", "2024/03/5/9/7/0"},
        {"empty", "", "failed"},
        {"too short", "2024/03/5", "failed"},
        {"no number", "2024/03/x/9/7/0", "failed"},
        {"too large", "2024/03/5/9/7/99999999999", "failed"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        std::istringstream stream(row.text);
        stream >> std::hex;
        DateTime value(1, 2, 3);
        const bool ok = bool(stream >> value);
        EXPECT_EQ(row.result, ok ? written(value) : "failed");
        EXPECT_TRUE(ok || written(value) == "0001/02/3/-1/-1/-1");
        EXPECT_EQ(std::ios_base::hex, stream.flags() & std::ios_base::basefield);
    }
}

TEST(DateTime, IsConstructedFromScripts)
{
    const Class *c = objectModelDateTimeClass();
    EXPECT_EQ("UiTypes::DateTime", c->fullyQualifiedClassName());
    const SharedPtr<Object> date = c->construct({number(2024), number(3), number(5)});
    const struct
    {
        const char *result;
        ObjectList arguments;
    } rows[] = {
        {"00-1/-1/-1/-1/-1/-1", {}},
        {"2024/03/5/-1/-1/-1", {number(2024), inspector()->createPrimitive("3"), number(5)}},
        {"0001/02/3/4/5/6", {number(1), number(2), number(3), number(4), number(5), number(6)}},
        {"2024/03/5/-1/-1/-1", {date}},
    };
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(rows[i].result, written(c->construct(rows[i].arguments))) << i;
        EXPECT_EQ(rows[i].arguments.size(),
                  std::size_t(c->constructor(i)->signature().numArguments()));
    }
    EXPECT_TRUE(date->isAutoDelete());
    EXPECT_EQ(ObjectAttribute(), date->objectAttribute());
    EXPECT_EQ("second", c->constructor(2)->signature().arguments().last().name());

    EXPECT_FALSE(c->constructor(3)->construct({nullptr}));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(c->construct(4, nullptr));
    EXPECT_FALSE(c->construct(-1, nullptr));
    EXPECT_EQ("Unknown DateTime constructor called:4\nUnknown DateTime constructor called:-1\n",
              testing::internal::GetCapturedStderr());
}

TEST(DateTime, HasItsPartsAsProperties)
{
    const SharedPtr<Object> date = wrapDateTime(DateTime(2024, 3, 5, 9, 7, 1));
    const Class *c = date->type();
    const char *const names[] = {"year", "month", "day", "hour", "minute", "second"};
    const int values[] = {2024, 3, 5, 9, 7, 1};
    for (int i = 0; i < 6; ++i) {
        const Property *property = c->property(i);
        EXPECT_EQ(names[i], property->name());
        EXPECT_EQ(values[i], property->get(date)->toInteger());
        EXPECT_TRUE(property->set(date, inspector()->createPrimitive(i + 10.5)));
    }
    EXPECT_EQ("0010/11/12/13/14/15", written(date));
    EXPECT_FALSE(c->property(0)->set(date, nullptr));
    inspector()->lastError();
    EXPECT_FALSE(c->property(0)->get(c->createNull()));
    EXPECT_EQ("Cannot access property year on null object reference", inspector()->lastError());
}

TEST(DateTime, ConvertsToTextAndIsComparedByParts)
{
    const SharedPtr<Object> date = wrapDateTime(DateTime(2024, 3, 5));
    EXPECT_EQ("2024/03/5/-1/-1/-1", date->toString());
    EXPECT_EQ(0, date->toInteger());
    EXPECT_TRUE(date->compare(wrapDateTime(DateTime(2024, 3, 5, -1, -1, -1))));
    EXPECT_FALSE(date->compare(wrapDateTime(DateTime(2024, 3, 5, -1, -1, 0))));
    EXPECT_TRUE(date->compare(inspector()->createPrimitive("2024/03/5/-1/-1/-1")));
    EXPECT_FALSE(date->compare(date->type()->createNull()));
    EXPECT_FALSE(date->compare(nullptr));
    const Class *c = date->type();
    EXPECT_FALSE(c->canConvertTo(primitive(PrimitiveId::Char), false, false, nullptr));
    EXPECT_FALSE(c->convertTo(c->createNull(), primitive(PrimitiveId::Char), true));
    void *constructor = nullptr;
    EXPECT_TRUE(c->canConvertTo(c, false, false, &constructor));
    EXPECT_EQ(c->constructor(3), constructor);
    EXPECT_EQ(-1, unwrapDateTime(nullptr).year);
}

} // namespace
