#include "objectmodel/class.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Vantrel;

namespace {

Inspector *inspector()
{
    return Inspector::self();
}

/** Works on a builder the way a script does. */
class GestureBuilder : public testing::Test
{
protected:
    void SetUp() override
    {
        inspector()->lastError();
        builder = type->construct({value(100.5), value(200), value(1)});
        ASSERT_TRUE(builder);
    }

    static SharedPtr<Object> value(double v) { return inspector()->createPrimitive(v); }
    static SharedPtr<Object> value(int v) { return inspector()->createPrimitive(v); }
    static SharedPtr<Object> value(const char *v) { return inspector()->createPrimitive(v); }

    template <class... Arguments>
    SharedPtr<Object> call(const char *name, Arguments... arguments)
    {
        SharedPtr<Object> result;
        type->methods(name).invoke(builder, {value(arguments)...}, &result);
        return result;
    }

    template <class... Arguments>
    bool run(const char *name, Arguments... arguments)
    {
        return call(name, arguments...) == inspector()->voidObject();
    }

    double property(const char *name) { return type->property(QString(name))->get(builder)->toDouble(); }
    QString takeError() { return inspector()->lastError(); }

    const Class *type = inspector()->type(QStringLiteral("GestureBuilder"));
    SharedPtr<Object> builder;
};

const char *const document = "<gestures version='1.0'><multi-point area-width='5' area-height='6' unit='px'>"
                             "<sample timestamp='40'><point pointer='0' x='1' y='2' state='move'/></sample>"
                             "</multi-point></gestures>";

} // namespace

TEST_F(GestureBuilder, DescribesItself)
{
    EXPECT_EQ(10, type->id());
    EXPECT_EQ(QStringLiteral("GestureBuilder"), type->fullyQualifiedClassName());
    QStringList names;
    for (int i = 0; i < type->numMethods(); ++i) {
        if (!names.endsWith(type->method(i)->name())) {
            names << type->method(i)->name();
        }
    }
    EXPECT_EQ(QStringLiteral("toXml fromXml translate rotate scale accelerate addStroke lineTo curveTo build "
                             "tap doubleTap longPress swipe pinch spread rotateBy toSvg"),
              names.join(' '));
    EXPECT_EQ(QStringLiteral("(int time, double x, double y, double pressure, double size)"),
              type->methods("addStroke").at(2)->signature().toString());
    EXPECT_EQ(QStringLiteral("bool fromXml(const char * xml)"), type->methods("fromXml").at(0)->toString());
    EXPECT_EQ(QStringLiteral("char* toSvg()"), type->methods("toSvg").at(0)->toString());
    EXPECT_EQ(QStringLiteral("GestureBuilder(double width, double height, GestureBuilder::Unit unit)"),
              type->constructor(0)->toString());
    const Enum *unit = type->enumerator(QStringLiteral("Unit"));
    for (const char *key : {"Pixel", "MilliMeter", "LogicalPoint"}) {
        bool ok = false;
        EXPECT_EQ(QString(key), unit->key(unit->value(key, &ok)));
        EXPECT_TRUE(ok);
    }
}

TEST_F(GestureBuilder, IsConstructedOnAnArea)
{
    const struct {
        const char *what; SharedPtr<Object> width, height, unit; const char *error;
    } rows[] = {
        {"real numbers",            value(0.001), value(2.5), value(2),  ""},
        {"whole numbers",           value(3), value(4), value(0),        ""},
        {"a key for the unit",      value(3), value(4), value("MilliMeter"), ""},
        {"a width just too small",  value(0.00099), value(4), value(0),  "Invalid area sizes"},
        {"a height just too small", value(4), value(0.00099), value(9),  "Invalid area sizes"},
        {"an unknown unit",         value(4), value(4), value(3),        "Invalid unit"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        builder = type->construct({row.width, row.height, row.unit});
        EXPECT_EQ(QString(row.error), takeError());
        ASSERT_EQ(QString(row.error).isEmpty(), bool(builder));
        if (builder) {
            EXPECT_NEAR(row.width->toDouble(), property("areaWidth"), 1e-6);
            EXPECT_NEAR(row.height->toDouble(), property("areaHeight"), 1e-6);
        }
    }
    EXPECT_FALSE(type->construct({value(1), value(1)}));
    EXPECT_FALSE(type->constructor(0)->construct({value(1.0), value(1.0), inspector()->createNull(type)}));
}

TEST_F(GestureBuilder, BuildsATransformedGesture)
{
    EXPECT_TRUE(run("addStroke", 0, 10, 20));
    EXPECT_TRUE(run("lineTo", 30, 40.0, 20));
    EXPECT_TRUE(run("addStroke", 10, 1, 1, 0.5));
    EXPECT_TRUE(run("curveTo", 10, 1, 1, 3, 3));
    EXPECT_TRUE(run("addStroke", 10, 1, 1, 0.0001, 0.9999));
    EXPECT_TRUE(run("curveTo", 10, 1, 1, 3, 3, 5, 5));
    EXPECT_EQ(0, call("toXml")->toString().count("<sample")) << "there are no samples before build";
    EXPECT_TRUE(run("build"));
    EXPECT_TRUE(run("translate", 1, 2.0));
    EXPECT_TRUE(run("scale", 2, 1));       // x: 2x - 50.25
    EXPECT_TRUE(run("scale", 1, 3, 0, 2)); // y: 3y - 4
    EXPECT_TRUE(run("rotate", 180));       // both: size - it
    EXPECT_TRUE(run("rotate", 90, 0, 0));  // (-y, x)
    EXPECT_TRUE(run("accelerate", 2));
    EXPECT_TRUE(run("accelerate", 0));
    const QString xml = call("toXml")->toString();
    // (10, 20) moves to (11, 22), (-28.25, 22), (-28.25, 62), (128.75, 138), (-138, 128.75).
    EXPECT_TRUE(xml.contains("<sample timestamp='0'>\n      <point pointer='0' x='-138.00' y='128.75' state='down'/>"))
        << xml.toStdString();
    EXPECT_TRUE(xml.contains("<sample timestamp='10'>")) << "20 ms at twice the speed";
    EXPECT_TRUE(xml.contains("pressure='0.50' state='down'"));
    EXPECT_TRUE(xml.contains("pressure='0.00' size='1.00' state='up'"));
    EXPECT_EQ(4, xml.count("<sample"));
    EXPECT_EQ(3, call("toSvg")->toString().count("<path"));
}

TEST_F(GestureBuilder, PresetsAddTheirStrokes)
{
    EXPECT_TRUE(run("tap", -1, 1));
    EXPECT_EQ(QStringLiteral("Warning: finger 1 leaves the touch area"), takeError());
    EXPECT_TRUE(run("tap", 1, 1, 2) && run("doubleTap", 1, 1) && run("doubleTap", 1, 1, 2));
    EXPECT_TRUE(run("longPress", 1, 1, 9) && run("longPress", 1, 1, 9, 2));
    EXPECT_TRUE(run("swipe", 1, 1, 5, 5, 9) && run("swipe", 1, 1, 5, 5, 9, 2));
    EXPECT_TRUE(run("pinch", 1, 1, 5, 2, 9) && run("pinch", 1, 1, 5, 2, 9, 3));
    EXPECT_TRUE(run("spread", 1, 1, 2, 5, 9) && run("spread", 1, 1, 2, 5, 9, 3));
    EXPECT_TRUE(run("rotateBy", 1, 1, 5, 90, 9) && run("rotateBy", 1, 1, 5, 90, 9, 3)
                && run("rotateBy", 1, 1, 5, 2, 90, 9, 2));
    EXPECT_TRUE(run("build"));
    EXPECT_EQ(1 + 2 + 2 + 4 + 1 + 2 + 1 + 2 + 2 + 3 + 2 + 3 + 2 + 3 + 2, call("toSvg")->toString().count("<path"));
}

TEST_F(GestureBuilder, ReportsWhatItRefuses)
{
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    const auto expectRefused = [this](const char *error, const SharedPtr<Object> &result) {
        EXPECT_FALSE(result) << error;
        EXPECT_EQ(QString(error), takeError());
    };
    expectRefused("addStroke must be called before lineTo", call("lineTo", 1, 1, 1));
    expectRefused("addStroke must be called before curveTo", call("curveTo", 1, 1, 1, 1, 1));
    expectRefused("Time must be 0 for first stroke", call("addStroke", 5, 1, 1));
    expectRefused("Time must be 0 or above", call("addStroke", -1, 1, 1));
    expectRefused("Pressure must be between 0.0 and 1.0", call("addStroke", 0, 1, 1, 1));
    expectRefused("Size must be between 0.0 and 1.0", call("addStroke", 0, 1, 1, 0.5, 0));
    expectRefused("Fingers must be between 1 and 10", call("tap", 1, 1, 11));
    expectRefused("translate: argument 2 is not a number", call("translate", 1, notANumber));
    expectRefused("rotate: argument 1 is not a number", call("rotate", std::numeric_limits<double>::infinity()));
    expectRefused("lineTo: argument 3 is not a number", call("lineTo", "5", "1.5", "abc"));
    expectRefused("addStroke: argument 1 is not a number", call("addStroke", 4e9, 1, 1));
    expectRefused("GestureBuilder: argument 2 is not a number", type->construct({value(1), value("x"), value(0)}));
    EXPECT_TRUE(run("accelerate", -1) && run("scale", " 1e2 ", "1")) << "as the builder does";
    expectRefused("Found no matching overload", call("scale", 1, 1, 1));
    EXPECT_TRUE(run("addStroke", 0, 1, 1));
    expectRefused("Stroke added without a movement", call("build"));
    EXPECT_TRUE(run("lineTo", 10, 2, 2) && run("addStroke", 50, 1, 1) && run("lineTo", 10, 2, 2));
    expectRefused("No pointers down at 20 ms", call("build"));
}

TEST_F(GestureBuilder, ReadsXml)
{
    const auto truth = [this](const char *xml) { return call("fromXml", xml)->toBoolean(); };
    EXPECT_FALSE(truth("<gestures"));
    EXPECT_TRUE(takeError().startsWith("Error in XML data"));
    EXPECT_EQ(100.5, property("areaWidth"));
    EXPECT_TRUE(truth(document));
    EXPECT_EQ(QString(), takeError());
    EXPECT_EQ(6, property("areaHeight"));
    EXPECT_TRUE(run("build")) << "what was read has no strokes to sample";
    EXPECT_TRUE(call("toXml")->toString().contains("<sample timestamp='40'>"));
    EXPECT_TRUE(truth("<gestures version='1.0'/>"));
    EXPECT_EQ(0, property("areaWidth"));
}

TEST_F(GestureBuilder, OwnsItsBuilder)
{
    EXPECT_TRUE(builder->isAutoDelete());
    const SharedPtr<Object> other = type->construct({value(100.5), value(200), value(1)});
    EXPECT_FALSE(type->compare(builder, other)) << "equal areas do not make equal gestures";
    EXPECT_TRUE(type->compare(builder, builder));
    builder = inspector()->createNull(type);
    EXPECT_FALSE(call("toXml"));
    EXPECT_EQ(QStringLiteral("Cannot invoke member function toXml() on null object reference"), takeError());
    EXPECT_FALSE(type->methods("tap").at(0)->invoke(other, {value(1.0), inspector()->createNull(type)}));
    EXPECT_EQ(QStringLiteral("tap: argument 2 is not a number"), takeError());
}
