#include "standin.h"

#include "objectmodel/screenvalues.h"

#include <QRect>

#include <gtest/gtest.h>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

SharedPtr<Object> number(int value)
{
    return inspector()->createPrimitive(value);
}

Namespace *uiTypes()
{
    return inspector()->nameSpace(QStringLiteral("UiTypes"));
}

std::vector<int> parts(const ScreenPoint &value)
{
    return {value.x, value.y};
}

std::vector<int> parts(const ScreenRectangle &value)
{
    return {value.x, value.y, value.width, value.height};
}

TEST(ScreenValues, AreWrappedAsCopies)
{
    const SharedPtr<Object> point = wrapScreenPoint({3, -4});
    const SharedPtr<Object> rectangle = wrapScreenRectangle({1, 2, 3, 4});
    EXPECT_EQ((std::vector<int>{3, -4}), parts(unwrapScreenPoint(point)));
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4}), parts(unwrapScreenRectangle(rectangle)));
    EXPECT_EQ(screenPointClass(), point->type());
    EXPECT_EQ(objectModelScreenRectangleClass(), rectangle->type());
    EXPECT_TRUE(point->isAutoDelete() && rectangle->isAutoDelete());
    EXPECT_EQ((std::vector<int>{0, 0}), parts(unwrapScreenPoint(nullptr)));
    EXPECT_EQ((std::vector<int>{0, 0, 0, 0}),
              parts(unwrapScreenRectangle(rectangle->type()->createNull())));
    EXPECT_TRUE(point->compare(wrapScreenPoint({3, -4})));
    EXPECT_FALSE(rectangle->compare(wrapScreenRectangle({1, 2, 3, 5})));
    EXPECT_EQ("{ x = 3 : int, y = -4 : int } : ScreenPoint", point->toDebugString());
}

TEST(ScreenValues, AreConstructedFromScripts)
{
    const Class *pointClass = screenPointClass();
    const Class *rectangleClass = objectModelScreenRectangleClass();
    const SharedPtr<Object> point = pointClass->construct({number(3), number(4)});
    EXPECT_EQ((std::vector<int>{3, 4}), parts(unwrapScreenPoint(pointClass->construct({point}))));
    EXPECT_EQ((std::vector<int>{0, 0, 0, 0}),
              parts(unwrapScreenRectangle(rectangleClass->construct(ObjectList()))));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(pointClass->construct(3, nullptr));
    EXPECT_FALSE(rectangleClass->construct(3, nullptr));
    EXPECT_EQ("Unknown ScreenPoint constructor called:3\n"
              "Unknown ScreenRectangle constructor called:3\n",
              testing::internal::GetCapturedStderr());
}

TEST(ScreenValues, SurviveTheRemoteRoute)
{
    const SharedPtr<Object> made[] = {createRemoteScreenRectangle(QRect(10, 20, 30, 40)),
                                      createRemoteScreenRectangle(ScreenRectangle{10, 20, 30, 40})};
    for (const auto &rectangle : made) {
        EXPECT_EQ((std::vector<int>{10, 20, 30, 40}),
                  parts(unwrapRemoteScreenRectangle(rectangle)));
    }
    EXPECT_TRUE(made[0]->compare(made[1]));
}

TEST(ScreenValues, UseOnlyTheMembersOfARemoteRectangle)
{
    Standin rectangle(uiTypes(), "ScreenRectangle");
    TestClass &type = rectangle.type();
    type.addConstructor({}).addConstructor(
        {intArgument(), intArgument(), intArgument(), intArgument()});
    for (const char *name : {"height", "width", "y", "x"}) {
        type.addProperty(name, intArgument());
    }
    rectangle.property = [](int id) { return number(40 - 10 * id); };
    EXPECT_TRUE(createRemoteScreenRectangle(QRect(10, 20, 30, 40)));
    EXPECT_EQ(QStringList{"construct1 10 20 30 40"}, rectangle.calls);
    rectangle.calls.clear();
    EXPECT_EQ((std::vector<int>{10, 20, 30, 40}),
              parts(unwrapRemoteScreenRectangle(rectangle.object())));
    EXPECT_EQ((QStringList{"get x", "get y", "get width", "get height"}), rectangle.calls);
}

TEST(ScreenValues, ReportWhatIsMissing)
{
    {
        Standin rectangle(uiTypes(), "ScreenRectangle");
        rectangle.type().addConstructor({}).addProperty("x", intArgument());
        rectangle.property = [](int) { return number(5); };
        testing::internal::CaptureStderr();
        EXPECT_FALSE(createRemoteScreenRectangle(QRect()));
        EXPECT_EQ("Class::construct: No matching constructor found\n",
                  testing::internal::GetCapturedStderr());
        EXPECT_EQ((std::vector<int>{5, 0, 0, 0}),
                  parts(unwrapRemoteScreenRectangle(rectangle.object())));
        EXPECT_EQ("Class ScreenRectangle has no property height", inspector()->lastError());
    }
    Namespace *before = uiTypes();
    new Namespace(nullptr, QStringLiteral("UiTypes"));
    EXPECT_FALSE(screenPointClass());
    EXPECT_FALSE(wrapScreenPoint({}));
    EXPECT_FALSE(wrapScreenRectangle({}));
    EXPECT_FALSE(createRemoteScreenRectangle(ScreenRectangle()));
    EXPECT_EQ("Class not available", inspector()->lastError());
    inspector()->registerNamespace(before);
    EXPECT_EQ((std::vector<int>{0, 0, 0, 0}), parts(unwrapRemoteScreenRectangle(nullptr)));
    EXPECT_TRUE(wrapScreenPoint({}));
}

} // namespace
