#include "objectmodel/touchbuilder.h"

#include "objectmodel/inspector.h"

#include <QMap>
#include <QRectF>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <functional>
#include <limits>
#include <locale>

using namespace Vantrel;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

using Info = TouchBuilder::MultiTouchInfo;

/** A builder with one gesture, and what it reports. */
class TouchBuilderTest : public testing::Test
{
protected:
    void SetUp() override
    {
        Inspector::self()->lastError();
        ASSERT_TRUE(builder.addGesture(100, 200, TouchBuilder::Pixel));
    }

    Info &info() { return builder.gesture(0); }
    std::string takeError() { return Inspector::self()->lastError().toStdString(); }

    /** Empty when it worked. */
    std::string sample(int interval)
    {
        std::string error;
        const bool done = builder.generateSamples(interval, &error);
        EXPECT_EQ(done, error.empty());
        return error;
    }

    std::string read(const std::string &text)
    {
        std::string error;
        const bool done = builder.fromXml(text, &error);
        EXPECT_EQ(done, error.empty());
        return error;
    }

    /** Each sample as "time:pointer state(x,y) ...". */
    std::vector<std::string> samples(int gesture = 0)
    {
        std::vector<std::string> result;
        for (const auto &sample : builder.gesture(gesture).samples) {
            QString text = QString::number(sample.timestamp) + ":";
            for (const auto &p : sample.points) {
                text += QString(" %1%2(%3,%4)")
                            .arg(QString::number(p.pointer), QString("?dmu").at(p.state),
                                 QString::number(p.x), QString::number(p.y));
            }
            result.push_back(text.toStdString());
        }
        return result;
    }

    void setPoints(const std::vector<std::vector<std::pair<float, float>>> &moments)
    {
        info().samples.clear();
        for (const auto &moment : moments) {
            TouchBuilder::Sample sample;
            for (const auto &[x, y] : moment) {
                sample.points.push_back({qint32(sample.points.size()), x, y});
            }
            info().samples.push_back(sample);
        }
    }

    TouchBuilder builder;
};

std::pair<double, double> image(const TouchBuilder::Matrix &m, double x, double y)
{
    return {m.a * x + m.b * y + m.tx, m.c * x + m.d * y + m.ty};
}

#define EXPECT_IMAGE(matrix, fromX, fromY, toX, toY) \
    EXPECT_NEAR(toX, image(matrix, fromX, fromY).first, 1e-4); \
    EXPECT_NEAR(toY, image(matrix, fromX, fromY).second, 1e-4)

std::string document(const std::string &content)
{
    return "<gestures version='1.0'>" + content + "</gestures>";
}

std::string area(const std::string &attributes)
{
    return document("<multi-point " + attributes + "/>");
}

std::string gestureOf(const std::string &samples)
{
    return document("<multi-point area-width='1' area-height='2' unit='px'>" + samples
                    + "</multi-point>");
}

std::string point(const std::string &attributes)
{
    return gestureOf("<sample timestamp='0'><point " + attributes + "/></sample>");
}

} // namespace

TEST_F(TouchBuilderTest, ChecksTheAreaOfAGesture)
{
    const struct { const char *what; double width, height; bool accepted; } rows[] = {
        {"the smallest area",          0.001, 0.001,    true},
        {"a width just below",         0.000999, 1,     false},
        {"a height just below",        1, 0.000999,     false},
        {"not a number",               notANumber, 1,          false},
        {"infinite",                   1, infinity,     false},
        {"more than 32 bits can hold", 1e39, 1,         false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const int before = builder.numGestures();
        EXPECT_EQ(row.accepted, builder.addGesture(row.width, row.height, TouchBuilder::Pixel));
        EXPECT_EQ(row.accepted ? "" : "Invalid area sizes", takeError());
        EXPECT_EQ(before + row.accepted, builder.numGestures());
    }
}

TEST_F(TouchBuilderTest, ChecksAStrokeInTheStatedOrder)
{
    const char *const time = "Time must be 0 or above";
    const char *const first = "Time must be 0 for first stroke";
    const char *const pressure = "Pressure must be between 0.0 and 1.0";
    const char *const size = "Size must be between 0.0 and 1.0";
    const struct { const char *what; int time; double x, pressure, size; const char *error; } rows[] = {
        {"everything wrong: the time comes first",  -1, notANumber, 2, 2,          time},
        {"a late first stroke before its pressure", 5, notANumber, 2, 2,           first},
        {"the pressure before the size",            0, notANumber, 2, 2,           pressure},
        {"the size before the place",               0, notANumber, 0.5, 2,         size},
        {"the place at last",                       0, notANumber, 0.5, 0.5,
         "Coordinates must be finite numbers"},
        {"a pressure just too low",                 0, 1, 0.00009999, 0.5,  pressure},
        {"a pressure just too high",                0, 1, 0.99990001, 0.5,  pressure},
        {"a pressure that says unspecified",        0, 1, -1.0, 0.5,        pressure},
        {"a pressure that is not a number",         0, 1, notANumber, 0.5,         pressure},
        {"a size of exactly 0",                     0, 1, 0.5, 0.0,         size},
        {"a size of exactly 1",                     0, 1, 0.5, 1.0,         size},
        {"a size that says unspecified",            0, 1, 0.5, -1.0,        size},
        {"a size that is not a number",             0, 1, 0.5, notANumber,         size},
        {"the lowest of both",                      0, 1, 0.0001, 0.0001,   ""},
        {"just below the lowest float",             0, 1, std::nextafter(0.0001F, 0), 0.5, pressure},
        {"the highest of both, later",              9, 1, 0.9999, 0.9999,   ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const std::string expected = row.error;
        EXPECT_EQ(expected.empty(), builder.addStroke(row.time, row.x, 1, row.pressure, row.size));
        EXPECT_EQ(expected, takeError());
    }
}

TEST_F(TouchBuilderTest, ChecksAMovement)
{
    EXPECT_FALSE(builder.lineTo(-1, notANumber, 0));
    EXPECT_EQ("addStroke must be called before lineTo", takeError());
    EXPECT_FALSE(builder.curveTo(1, 1, 1, 1, 1));
    EXPECT_EQ("addStroke must be called before curveTo", takeError());
    EXPECT_FALSE(builder.curveTo(1, 1, 1, 1, 1, 1, 1));
    EXPECT_EQ("addStroke must be called before curveTo", takeError());
    ASSERT_TRUE(builder.addStroke(0, 1, 1));
    EXPECT_FALSE(builder.curveTo(-1, notANumber, 1, 1, 1));
    EXPECT_EQ("Time must be 0 or above", takeError());
    EXPECT_FALSE(builder.curveTo(1, 1, 1, 1, infinity, 1, 1));
    EXPECT_EQ("Coordinates must be finite numbers", takeError());
    const int longest = std::numeric_limits<int>::max();
    EXPECT_TRUE(builder.lineTo(longest, 1, 1) && builder.lineTo(longest, 1, 1));
    EXPECT_FALSE(builder.lineTo(2, 1, 1));
    EXPECT_EQ("Time must be at most 4294967295 at the end of a movement", takeError());
    EXPECT_TRUE(builder.lineTo(1, 1, 1));

    TouchBuilder empty;
    EXPECT_FALSE(empty.addStroke(0, 1, 1));
    EXPECT_EQ("There is no gesture to add a stroke to", takeError());
}

TEST_F(TouchBuilderTest, ComposesTransformsInTheOrderOfTheirCalls)
{
    EXPECT_FALSE(info().matrixSet);
    builder.scale(2, 3, 10, 20, false);
    EXPECT_IMAGE(info().matrix, 10, 20, 10, 20);
    EXPECT_IMAGE(info().matrix, 11, 21, 12, 23);
    builder.rotate(90, 12, 23, false); // (1, 0) beside the centre goes to (0, 1)
    EXPECT_IMAGE(info().matrix, 11, 21, 12, 23);
    EXPECT_IMAGE(info().matrix, 12, 21, 12, 25);
    EXPECT_IMAGE(info().matrix, 11, 22, 9, 23);
    builder.translate(-12, 0.5);
    EXPECT_IMAGE(info().matrix, 12, 21, 0, 25.5);

    Info general(1, 1, TouchBuilder::Pixel);
    general.transform({1, 2, 3, 4, 5, 6});
    general.transform({7, 8, 9, 10, 11, 12});
    const float expected[] = {39, 54, 78, 54, 75, 108};
    const TouchBuilder::Matrix &m = general.matrix;
    const float actual[] = {m.a, m.b, m.tx, m.c, m.d, m.ty};
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(expected[i], actual[i]) << i;
    }
}

TEST_F(TouchBuilderTest, TransformsEachGestureAboutItsOwnCentre)
{
    ASSERT_TRUE(builder.addGesture(10, 20, TouchBuilder::MilliMeter));
    builder.rotate(30, 999, 999, true);
    builder.scale(0.5, 4, 999, 999, true);
    EXPECT_IMAGE(builder.gesture(0).matrix, 50, 100, 50, 100);
    EXPECT_IMAGE(builder.gesture(1).matrix, 5, 10, 5, 10);
    EXPECT_IMAGE(builder.gesture(1).matrix, 6, 10, 5 + 0.5 * std::sqrt(0.75), 10 + 4 * 0.5);
}

TEST_F(TouchBuilderTest, ConvertsUnitsByTheArea)
{
    const auto converted = [](TouchBuilder::Unit from, void (Info::*convert)(double, double)) {
        Info info(100, 200, from);
        info.pixelRatio = 2;
        (info.*convert)(96, 48);
        return info;
    };
    const double mmX = 25.4 / 96, mmY = 25.4 / 48;
    const struct {
        const char *what; TouchBuilder::Unit from; void (Info::*convert)(double, double);
        TouchBuilder::Unit to; double fx, fy;
    } rows[] = {
        {"pixel to mm",    TouchBuilder::Pixel,        &Info::toMilliMeter,   TouchBuilder::MilliMeter, mmX, mmY},
        {"point to mm",    TouchBuilder::LogicalPoint, &Info::toMilliMeter,   TouchBuilder::MilliMeter, 2 * mmX, 2 * mmY},
        {"mm to pixel",    TouchBuilder::MilliMeter,   &Info::toPixel,        TouchBuilder::Pixel, 1 / mmX, 1 / mmY},
        {"point to pixel", TouchBuilder::LogicalPoint, &Info::toPixel,        TouchBuilder::Pixel, 2, 2},
        {"mm to point",    TouchBuilder::MilliMeter,   &Info::toLogicalPoint, TouchBuilder::LogicalPoint, 0.5 / mmX, 0.5 / mmY},
        {"pixel to point", TouchBuilder::Pixel,        &Info::toLogicalPoint, TouchBuilder::LogicalPoint, 0.5, 0.5},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const Info info = converted(row.from, row.convert);
        EXPECT_EQ(row.to, info.unit);
        EXPECT_NEAR(100 * row.fx, info.areaWidth, 1e-3);
        EXPECT_NEAR(200 * row.fy, info.areaHeight, 1e-3);
        EXPECT_IMAGE(info.matrix, 10, 20, 10 * row.fx, 20 * row.fy);
        EXPECT_FALSE(converted(row.to, row.convert).matrixSet) << "no conversion to itself";
    }
    Info points(1, 1, TouchBuilder::LogicalPoint);
    points.pixelRatio = 1.5f;
    points.toMilliMeter(96, 48);
    EXPECT_EQ(float(mmX) * 1.5f, points.matrix.a) << "the ratio applies to the rounded factor";
    EXPECT_EQ(float(mmY) * 1.5f, points.matrix.d);

    info().toPixel(0, notANumber);
    info().toMilliMeter(96, 0);
    info().toLogicalPoint(notANumber, 96);
    EXPECT_EQ(TouchBuilder::Pixel, info().unit) << "without a resolution nothing happens";
    EXPECT_FALSE(info().matrixSet);
}

TEST_F(TouchBuilderTest, RecognizesALineSegment)
{
    const struct {
        const char *what; std::vector<std::vector<std::pair<float, float>>> points;
        float tolerance; bool isLine;
    } rows[] = {
        {"exactly at the tolerance",   {{{0, 0}}, {{5, 0.5f}}, {{10, 0}}}, 0.5f,  true},
        {"beyond the tolerance",       {{{0, 0}}, {{5, 0.5f}}, {{10, 0}}}, 0.4f,  false},
        {"before the start",           {{{0, 0}}, {{-2, 0}}, {{10, 0}}},   1,     false},
        {"beyond the end",             {{{0, 0}}, {{12, 0}}, {{10, 0}}},   1,     false},
        {"in one place",               {{{3, 3}}, {{3, 3.5f}}, {{3, 3}}},  1,     true},
        {"away from one place",        {{{3, 3}}, {{3, 4.5f}}, {{3, 3}}},  1,     false},
        {"one sample",                 {{{0, 0}}},                         1,     false},
        {"a second finger",            {{{0, 0}}, {{1, 0}, {2, 0}}, {{3, 0}}}, 1, false},
        {"no finger in the middle",    {{{0, 0}}, {}, {{3, 0}}},           1,     true},
        {"no finger at the start",     {{}, {{3, 0}}},                     1,     false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        setPoints(row.points);
        EXPECT_EQ(row.isLine, info().looksLikeLineSegment(row.tolerance));
    }
}

TEST_F(TouchBuilderTest, SamplesAtIntervalsStartsAndEnds)
{
    ASSERT_TRUE(builder.addStroke(0, 0, 0));
    ASSERT_TRUE(builder.lineTo(25, 50, 100));
    ASSERT_TRUE(builder.lineTo(20, 50, 100));
    ASSERT_TRUE(builder.addStroke(7, 8, 8, 0.5));
    ASSERT_TRUE(builder.lineTo(0, 9, 9)); // a jump
    ASSERT_TRUE(builder.lineTo(20, 9, 9));
    EXPECT_EQ("", sample(10));
    const std::vector<std::string> expected = {
        "0: 0d(0,0)",           "7: 0m(14,28) 1d(9,9)", "10: 0m(20,40) 1m(9,9)",
        "20: 0m(40,80) 1m(9,9)", "25: 0m(50,100) 1m(9,9)", "27: 0m(50,100) 1u(9,9)",
        "30: 0m(50,100)",       "40: 0m(50,100)",      "45: 0u(50,100)",
    };
    EXPECT_EQ(expected, samples());
    const auto &points = info().samples[1].points;
    EXPECT_EQ(-1, points[0].pressure);
    EXPECT_EQ(0.5f, points[1].pressure);
    EXPECT_EQ(-1, points[1].size);

    EXPECT_EQ("", sample(-3)); // as 1
    EXPECT_EQ(46u, info().samples.size());
}

TEST_F(TouchBuilderTest, FollowsBezierCurves)
{
    ASSERT_TRUE(builder.addStroke(0, 0, 0));
    ASSERT_TRUE(builder.curveTo(100, 10, 40, 30, 0));
    ASSERT_TRUE(builder.curveTo(100, 30, 80, 70, 90, 90, 10));
    EXPECT_EQ("", sample(25));
    const std::vector<std::string> expected = {
        "0: 0d(0,0)", "25: 0m(5.625,15)", "50: 0m(12.5,20)", "75: 0m(20.625,15)", "100: 0m(30,0)",
        "125: 0m(36.5625,46.5625)", "150: 0m(52.5,65)", "175: 0m(72.1875,53.4375)", "200: 0u(90,10)",
    };
    EXPECT_EQ(expected, samples());
}

TEST_F(TouchBuilderTest, KeepsItsSamplesWhenSamplingFails)
{
    ASSERT_TRUE(builder.addStroke(0, 1, 1));
    ASSERT_TRUE(builder.lineTo(10, 2, 2));
    ASSERT_EQ("", sample(20));
    const auto before = samples();
    ASSERT_TRUE(builder.addStroke(15, 1, 1));
    EXPECT_EQ("Stroke added without a movement", sample(20));
    ASSERT_TRUE(builder.lineTo(0, 2, 2));
    EXPECT_EQ("Stroke added without a movement", sample(20)) << "it would never end";
    ASSERT_TRUE(builder.lineTo(10, 2, 2));
    EXPECT_EQ("No pointers down at 12 ms", sample(3));
    EXPECT_EQ(before, samples());
    EXPECT_EQ("", sample(5)) << "no sample is due between 10 and 15";
    EXPECT_FALSE(builder.generateSamples(3)) << "without a place for the error";
}

TEST_F(TouchBuilderTest, LimitsTheNumberOfPoints)
{
    ASSERT_TRUE(builder.addStroke(0, 1, 1));
    ASSERT_TRUE(builder.lineTo(999999, 2, 2));
    EXPECT_EQ("", sample(1));
    EXPECT_EQ(1000000u, info().samples.size());
    ASSERT_TRUE(builder.addStroke(0, 1, 1));
    ASSERT_TRUE(builder.lineTo(1, 2, 2));
    EXPECT_EQ("Too many samples", sample(1));
    EXPECT_EQ(1000000u, info().samples.size());
}

TEST_F(TouchBuilderTest, DerivesStatesFromTheNeighbouringSamples)
{
    const std::vector<std::vector<qint32>> pointers = {{7, -2}, {7}, {-2, 7}, {}, {7}, {1, 7}};
    for (const auto &present : pointers) {
        info().samples.push_back({});
        for (const qint32 pointer : present) {
            info().samples.back().points.push_back({pointer, 0, 0});
        }
    }
    info().updatePointerStates();
    const std::vector<std::string> expected = {"0: 7d(0,0) -2d(0,0)", "0: 7m(0,0)", "0: -2d(0,0) 7u(0,0)",
                                               "0:", "0: 7d(0,0)", "0: 1d(0,0) 7u(0,0)"};
    EXPECT_EQ(expected, samples());
}

TEST_F(TouchBuilderTest, WritesTheDocumentedText)
{
    EXPECT_EQ("<gestures version='1.0'>\n</gestures>\n", TouchBuilder().toXml());
    info().samples = {{0, {{0, 12.5f, -0.001f, 0.25f, 0.5f, TouchBuilder::Down}, {-3, 0.125f, 0.375f}}},
                      {4294967295, {{0, 3e38f, 9.999f, 0, -1, TouchBuilder::Up}, {1, 1, 1, -1, -1, 4}}}};
    EXPECT_EQ("<gestures version='1.0'>\n"
              "  <multi-point area-width='100.00' area-height='200.00' unit='px'>\n"
              "    <sample timestamp='0'>\n"
              "      <point pointer='0' x='12.50' y='-0.00' pressure='0.25' size='0.50' state='down'/>\n"
              "      <point pointer='-3' x='0.12' y='0.38' state='unknown'/>\n"
              "    </sample>\n"
              "    <sample timestamp='4294967295'>\n"
              "      <point pointer='0' x='300000000549775575777803994281145270272.00' y='10.00'"
              " pressure='0.00' state='up'/>\n"
              "      <point pointer='1' x='1.00' y='1.00' state='unknown'/>\n"
              "    </sample>\n"
              "  </multi-point>\n"
              "</gestures>\n",
              builder.toXml());
    Info other(1, 2, TouchBuilder::LogicalPoint);
    EXPECT_EQ("--</multi-point>\n", other.toXml("--", 2)) << "no header without bit 0";
    EXPECT_EQ("<multi-point area-width='1.00' area-height='2.00' unit='pt'>\n</multi-point>\n",
              other.toXml(nullptr, 1));
}

TEST_F(TouchBuilderTest, AppliesSpeedAndMatrixEachTimeItWrites)
{
    info().samples = {{0, {{0, 1, 2}}}, {7, {{0, 3, 4}}}};
    builder.scale(2, -2, 0, 0, false);
    builder.accelerate(0);
    EXPECT_FALSE(info().speedFactorSet);
    builder.accelerate(4);
    builder.accelerate(0.5);
    builder.toXml();
    EXPECT_EQ((std::vector<std::string> {"0: 0?(2,-4)", "3: 0?(6,-8)"}), samples());
    builder.toXml();
    EXPECT_EQ((std::vector<std::string> {"0: 0?(4,8)", "1: 0?(12,16)"}), samples());

    const struct { const char *what; double factor; quint32 timestamp, expected; } rows[] = {
        {"slower than 32 bits can hold", 1e-9, 1000, 4294967295},
        {"as late as it gets",           0.5, 2147483647, 4294967295},
        {"backwards",                    -1, 1000, 0},
        {"not a number",                 notANumber, 1000, 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        TouchBuilder fresh;
        ASSERT_TRUE(fresh.addGesture(1, 1, TouchBuilder::Pixel));
        fresh.gesture(0).samples = {{row.timestamp, {}}};
        fresh.accelerate(row.factor);
        fresh.toXml();
        EXPECT_EQ(row.expected, fresh.gesture(0).samples[0].timestamp);
    }
}

TEST_F(TouchBuilderTest, ReadsBackWhatItWrote)
{
    ASSERT_TRUE(builder.rotateBy(50, 100, 40, 20, 300, 700, 3));
    ASSERT_TRUE(builder.addGesture(0.002, 1e30, TouchBuilder::MilliMeter));
    ASSERT_TRUE(builder.addStroke(0, -1e30, 131072.015625, 0.0001, 0.9999));
    ASSERT_TRUE(builder.curveTo(90, 1e-30, 5, 1e30, -0.004));
    ASSERT_TRUE(builder.addGesture(3, 4, TouchBuilder::LogicalPoint));
    builder.rotate(33, 1, 2, false);
    builder.accelerate(0.3);
    ASSERT_EQ("", sample(7));
    const std::string text = builder.toXml();
    ASSERT_EQ("", read(text));
    EXPECT_EQ(3, builder.numGestures());
    EXPECT_EQ(TouchBuilder::LogicalPoint, builder.gesture(2).unit);
    EXPECT_EQ(text, builder.toXml());
}

TEST_F(TouchBuilderTest, ReadsWhatOthersWrite)
{
    ASSERT_TRUE(builder.addStroke(0, 1, 1));
    ASSERT_EQ("", read("\xEF\xBB\xBF<?xml version=\"1.0\" encoding='x'?>\r\n<!-- </a><b><c> -->\n"
                       "<gestures version=\"1.0\" by='\xC3\xA4'><note a='>'>x<![CDATA[<a><b>]]><b/></note>"
                       "<multi-point unit='mm' area-height='0.00' area-width='1e2' dpi='96'>"
                       "<sample timestamp='3'/><?x?><sample timestamp='3'>text<point state='up' y='-.5' x='4' "
                       "size='0.5' hover='1' pointer='-1' /><shape/></sample></multi-point></gestures>\n<!---->"));
    EXPECT_EQ(1, builder.numGestures());
    EXPECT_EQ(TouchBuilder::MilliMeter, info().unit);
    EXPECT_EQ(100, info().areaWidth);
    EXPECT_EQ((std::vector<std::string> {"3:", "3: -1u(4,-0.5)"}), samples());
    EXPECT_EQ(-1, info().samples[1].points[0].pressure);
    EXPECT_EQ(0.5f, info().samples[1].points[0].size);
    EXPECT_EQ("", sample(20));
    EXPECT_EQ(2u, info().samples.size()) << "a gesture without strokes keeps its samples";
    ASSERT_TRUE(builder.addStroke(0, 1, 1) && builder.lineTo(20, 2, 2)) << takeError();
    EXPECT_EQ("", sample(20));
    EXPECT_EQ((std::vector<std::string> {"0: 0d(1,1)", "20: 0u(2,2)"}), samples());
}

TEST_F(TouchBuilderTest, CountsStartTagsAndAttributesOnly)
{
    const std::string element = "<a a='' b='' c='' d='' e='' f='' g='' h='' i='' j='' k='' l='' m='' n='' o=''></a>";
    const std::size_t accepted = 9999998 / 16; // the root has two parts
    std::string elements;
    for (std::size_t i = 0; i <= accepted; ++i) {
        elements += element;
    }
    EXPECT_NE(std::string::npos, read(document(elements)).find("row 1, column " + std::to_string(25 + accepted * element.size())
                                                               + ": more than 10000000 start tags and attributes"));
}

TEST_F(TouchBuilderTest, RefusesABadDocumentAndKeepsItsGestures)
{
    const auto nested = [](int depth) {
        std::string text = "<gestures version='1.0'>";
        for (int i = 1; i < depth; ++i) {
            text += "<a b='/>'>";
        }
        return text;
    };
    std::string manyAttributes = "<gestures";
    for (int i = 0; i < 65; ++i) {
        manyAttributes += " a" + std::to_string(i) + "=''";
    }
    const std::string valid = "pointer='0' x='1' y='2' state='up' ";
    const struct { const char *what; std::string text; const char *error; } rows[] = {
        {"nothing",              "",                         "row 1, column 1: there is no element"},
        {"only text",            "hello",                    "row 1, column 1: text outside the root element"},
        {"no end",               "<gestures version='1.0'>\n", "row 2, column 1: the end tag of \"gestures\" is missing"},
        {"a torn tag",           "<gestures version='1.0'",  "row 1, column 1: Error parsing Element."},
        {"a torn character",     "<gestures a='\xF0",        "Error parsing Element."},
        {"a wrong end tag",      document("<a></b>"),        "row 1, column 28: the end tag of \"a\" was expected"},
        {"an end tag in two",    document("<a></a b>"),      "the end tag of \"a\" was expected"},
        {"an attribute twice",   "<gestures a='1' a='2'/>",  "Error parsing Element."},
        {"an end too many",      document("") + "</gestures>",
         "row 1, column 36: an end tag without a start tag"},
        {"two roots",            document("") + "<a/>",      "more than one root element"},
        {"text after the root",  document("") + "\n\n x",    "row 3, column 2: text outside the root element"},
        {"no name",              document("< a/>"),          "a tag without a name"},
        {"a tag in a tag",       document("<a b='<c>'/>"),   "\"<\" inside of a tag"},
        {"an open comment",      document("<!-- "),          "\"-->\" is missing"},
        {"a document type",      "<!DOCTYPE a><gestures/>",  "document types are not supported"},
        {"a NUL",                std::string("<gestures\0/>", 12), "row 1, column 10: a NUL character"},
        {"a NUL after the end",  document("") + '\0',        "a NUL character"},
        {"nesting just allowed", nested(16),                 "the end tag of \"a\" is missing"},
        {"nested too deeply",    nested(17),                 "elements are nested deeper than 16"},
        {"nested endlessly",     nested(100000),             "elements are nested deeper than 16"},
        {"a tag too large",      "<a b='" + std::string(1 << 20, 'x') + "'/>", "row 1, column 1: a tag larger than 1 MiB"},
        {"too many attributes",  manyAttributes + "/>",      "an element with more than 64 attributes"},
        {"too large",            std::string((256u << 20) + 1, ' '), "the text is larger than 256 MiB"},
        {"another root",         "<gesture version='1.0'/>", "the root element must be \"gestures\""},
        {"no version",           "<gestures/>",              "element \"gestures\", attribute \"version\" is missing"},
        {"another version",      "<gestures version='1'/>",  "attribute \"version\" must be \"1.0\": \"1\""},
        {"no area",              area("area-height='1' unit='px'"), "\"area-width\" is missing"},
        {"a negative area",      area("area-width='1' area-height='-1' unit='px'"), "\"area-height\" must not be negative: \"-1\""},
        {"no unit",              area("area-width='1' area-height='1'"), "\"unit\" is missing"},
        {"an unknown unit",      area("area-width='1' area-height='1' unit='in'"), "\"unit\" must be one of px, mm, pt: \"in\""},
        {"no time",              gestureOf("<sample/>"),     "element \"sample\", attribute \"timestamp\" is missing"},
        {"a negative time",      gestureOf("<sample timestamp='-1'/>"), "\"timestamp\" is not a whole number: \"-1\""},
        {"a time beyond 32 bits", gestureOf("<sample timestamp='4294967296'/>"), "\"timestamp\" is out of range"},
        {"a falling time",       gestureOf("<sample timestamp='5'/><sample timestamp='4'/>"),
         "\"timestamp\" must not be below the one before: \"4\""},
        {"no pointer",           point("x='1' y='2' state='up'"), "\"pointer\" is missing"},
        {"a fractional pointer", point("x='1' y='2' state='up' pointer='1.5'"), "\"pointer\" is not a whole number: \"1.5\""},
        {"no x",                 point("pointer='0' y='2' state='up'"), "\"x\" is missing"},
        {"no y",                 point("pointer='0' x='1' state='up'"), "\"y\" is missing"},
        {"a decimal comma",      point("pointer='0' x='1,5' y='2' state='up'"), "\"x\" is not a number: \"1,5\""},
        {"an empty number",      point("pointer='0' x='' y='2' state='up'"), "\"x\" is not a number: \"\""},
        {"not a number",         point("pointer='0' x='nan' y='2' state='up'"), "\"x\" is not a number: \"nan\""},
        {"infinity",             point("pointer='0' x='1' y='-inf' state='up'"), "\"y\" is not a number: \"-inf\""},
        {"too large for 32 bits", point("pointer='0' x='1e39' y='2' state='up'"), "\"x\" is out of range: \"1e39\""},
        {"a bad pressure",       point(valid + "pressure='low'"), "\"pressure\" is not a number: \"low\""},
        {"a bad size",           point(valid + "size=' 1'"), "\"size\" is not a number: \" 1\""},
        {"no state",             point("pointer='0' x='1' y='2'"), "\"state\" is missing"},
        {"an unknown state",     point("pointer='0' x='1' y='2' state='Up'"),
         "\"state\" must be one of down, move, up, unknown: \"Up\""},
        {"an endless value",     point("pointer='" + std::string(9999, 'x') + "'"), "xxxxxxxxxx...\""},
    };
    ASSERT_TRUE(builder.addStroke(0, 1, 1) && builder.lineTo(10, 2, 2));
    ASSERT_EQ("", sample(20));
    const auto before = samples();
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const std::string error = read(row.text);
        EXPECT_EQ(0u, error.find("Error in XML data")) << error;
        EXPECT_NE(std::string::npos, error.find(row.error)) << error;
        EXPECT_LT(error.size(), 300u);
    }
    EXPECT_FALSE(builder.fromXml("<")) << "without a place for the error";
    EXPECT_EQ(before, samples());
    EXPECT_TRUE(builder.addStroke(10, 1, 1)) << "the strokes are still there";
}

namespace {

struct Comma : std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

} // namespace

TEST_F(TouchBuilderTest, KnowsNoLocale)
{
    ASSERT_TRUE(builder.addGesture(1234567.5, 2345.25, TouchBuilder::MilliMeter));
    ASSERT_TRUE(builder.swipe(1000.5, 2000.25, 1000000, 0, 12345));
    ASSERT_EQ("", sample(5000));
    const std::string text = builder.toXml();
    const std::string picture = builder.toSvg();

    const std::locale before = std::locale::global(std::locale(std::locale(), new Comma));
    const std::string cBefore = setlocale(LC_ALL, nullptr);
    for (const char *name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"}) {
        if (setlocale(LC_ALL, name)) {
            break;
        }
    }
    EXPECT_EQ(text, builder.toXml());
    EXPECT_EQ(picture, builder.toSvg());
    EXPECT_EQ("", read(text));
    EXPECT_EQ(text, builder.toXml());
    ASSERT_TRUE(builder.addGesture(1, 1, TouchBuilder::Pixel) && builder.addStroke(0, 1, 1)
                && builder.lineTo(1000, 2, 2) && builder.addStroke(9000, 1, 1) && builder.lineTo(1, 2, 2));
    EXPECT_EQ("No pointers down at 2000 ms", sample(1000));
    setlocale(LC_ALL, cBefore.c_str());
    std::locale::global(before);
}

TEST_F(TouchBuilderTest, PresetsMoveTheFingersAsTheyAreNamed)
{
    using Builder = TouchBuilder;
    const struct {
        const char *what; std::function<bool(Builder &)> add; std::size_t fingers; quint32 duration;
        std::vector<std::pair<double, double>> starts, ends;
    } rows[] = {
        {"tap with three", [](Builder &b) { return b.tap(50, 60, 3); }, 3, 60,
         {{40, 60}, {50, 60}, {60, 60}}, {{40, 60}, {50, 60}, {60, 60}}},
        {"long press", [](Builder &b) { return b.longPress(50, 60, 900, 2); }, 2, 900,
         {{45, 60}, {55, 60}}, {{45, 60}, {55, 60}}},
        {"swipe", [](Builder &b) { return b.swipe(50, 60, 0, -30, 100, 2); }, 2, 100,
         {{45, 60}, {55, 60}}, {{45, 30}, {55, 30}}},
        {"pinch", [](Builder &b) { return b.pinch(50, 60, 40, 5, 100); }, 2, 100,
         {{90, 60}, {10, 60}}, {{55, 60}, {45, 60}}},
        {"spread", [](Builder &b) { return b.spread(50, 60, 5, 40, 100, 4); }, 4, 100,
         {{55, 60}, {50, 65}, {45, 60}, {50, 55}}, {{90, 60}, {50, 100}, {10, 60}, {50, 20}}},
        {"rotate and pinch", [](Builder &b) { return b.rotateBy(50, 60, 40, 20, -270, 100, 2); }, 2, 100,
         {{90, 60}, {10, 60}}, {{50, 80}, {50, 40}}},
        {"rotate by nothing", [](Builder &b) { return b.rotateBy(50, 60, 40, 0, 1); }, 2, 1,
         {{90, 60}, {10, 60}}, {{90, 60}, {10, 60}}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        Builder fresh;
        ASSERT_TRUE(fresh.addGesture(100, 200, Builder::Pixel) && row.add(fresh));
        ASSERT_TRUE(fresh.generateSamples(1));
        const auto &samples = fresh.gesture(0).samples;
        EXPECT_EQ(row.duration, samples.back().timestamp);
        const TouchBuilder::Sample &first = samples.front(), &last = samples.back();
        ASSERT_TRUE(first.points.size() == row.fingers && last.points.size() == row.fingers);
        for (std::size_t i = 0; i < row.fingers; ++i) {
            EXPECT_NEAR(row.starts[i].first, first.points[i].x, 1e-3);
            EXPECT_NEAR(row.starts[i].second, first.points[i].y, 1e-3);
            EXPECT_NEAR(row.ends[i].first, last.points[i].x, 1e-3);
            EXPECT_NEAR(row.ends[i].second, last.points[i].y, 1e-3);
        }
    }
}

TEST_F(TouchBuilderTest, PresetsKeepTheirSpacingThroughAConversion)
{
    info().toMilliMeter(96, 48); // 26.46 x 105.83 mm
    ASSERT_TRUE(builder.swipe(20, 20, 30, 40, 50, 3));
    ASSERT_EQ("", sample(50));
    builder.toXml();
    const auto &points = info().samples[0].points;
    for (int i = 0; i < 2; ++i) {
        const double dx = points[i + 1].x - points[i].x, dy = points[i + 1].y - points[i].y;
        EXPECT_NEAR(2.6458, std::hypot(dx, dy), 1e-3);
        EXPECT_NEAR(0, dx * 30 / 96 + dy * 40 / 48, 1e-3) << "across the swipe";
    }
}

TEST_F(TouchBuilderTest, PresetsWarnOfFingersOutside)
{
    using Builder = TouchBuilder;
    const struct { const char *what; std::function<bool(Builder &)> add; const char *warning; } rows[] = {
        {"along the edges",      [](Builder &b) { return b.swipe(100, 10, 0, 190, 9); }, ""},
        {"the second begins",    [](Builder &b) { return b.tap(94, 10, 2) && b.tap(96, 10, 2); }, "Warning: finger 2 leaves the touch area"},
        {"the first ends",       [](Builder &b) { return b.swipe(10, 10, 0, -11, 9); }, "Warning: finger 1 leaves the touch area"},
        {"within a turn",        [](Builder &b) { return b.rotateBy(50, 100, 50, 80, 9); }, ""},
        {"in the middle of it",  [](Builder &b) { return b.rotateBy(50, 165, 36, 150, 9); }, "Warning: finger 1 leaves the touch area"},
    };
    for (const auto &row : rows) {
        EXPECT_TRUE(row.add(builder));
        EXPECT_EQ(row.warning, takeError()) << row.what;
    }
}

TEST_F(TouchBuilderTest, TransformsByFiniteNumbersOnly)
{
    EXPECT_FALSE(builder.translate(infinity, 0) || builder.rotate(notANumber, 0, 0, true)
                 || builder.rotate(1, infinity, 0, false) || builder.scale(1, -infinity, 0, 0, true)
                 || builder.scale(1, 1, 0, notANumber, false));
    EXPECT_EQ("Arguments must be finite numbers", takeError());
    EXPECT_FALSE(info().matrixSet);
    EXPECT_TRUE(builder.scale(1, 1, notANumber, 0, true)) << "the centre is the area's";
}

TEST_F(TouchBuilderTest, TurnsOnACircle)
{
    ASSERT_TRUE(builder.rotateBy(50, 60, 40, -540, 900, 5));
    ASSERT_EQ("", sample(7));
    for (const auto &sample : info().samples) {
        for (const auto &p : sample.points) {
            const double angle = (72.0 * p.pointer - 540.0 * sample.timestamp / 900) * M_PI / 180;
            EXPECT_NEAR(50 + 40 * std::cos(angle), p.x, 0.05);
            EXPECT_NEAR(60 + 40 * std::sin(angle), p.y, 0.05);
            EXPECT_NEAR(40, std::hypot(p.x - 50, p.y - 60), 1e-3);
        }
    }
}

TEST_F(TouchBuilderTest, PresetsFollowEachOtherAfterAPause)
{
    ASSERT_TRUE(builder.doubleTap(5, 5));
    ASSERT_TRUE(builder.swipe(5, 5, 5, 0, 40));
    EXPECT_EQ("", sample(50));
    const std::vector<std::string> expected
        = {"0: 0d(5,5)", "50: 0m(5,5)", "60: 0u(5,5)", "160: 1d(5,5)", "200: 1m(5,5)",
           "220: 1u(5,5)", "320: 2d(5,5)", "350: 2m(8.75,5)", "360: 2u(10,5)"};
    EXPECT_EQ(expected, samples());
    ASSERT_TRUE(builder.addStroke(400, 1, 1) && builder.lineTo(10, 2, 2));
    EXPECT_EQ("No pointers down at 361 ms", sample(1)) << "a gap that no preset made";
}

TEST_F(TouchBuilderTest, PresetsCheckTheirArgumentsAndAddNothing)
{
    using Builder = TouchBuilder;
    const char *const time = "Duration must be 1 or above";
    const char *const place = "Coordinates must be finite numbers";
    const char *const distances = "Distances must be 0 or above";
    const char *const angle = "Angle must be between -36000 and 36000";
    const struct { std::function<bool(Builder &)> add; const char *error; } rows[] = {
        {[](Builder &b) { return b.tap(1, 1, 0); },                     "Fingers must be between 1 and 10"},
        {[](Builder &b) { return b.swipe(1, 1, 1, 1, 9, 11); },         "Fingers must be between 1 and 10"},
        {[](Builder &b) { return b.spread(1, 1, 2, 5, 9, 1); },         "Fingers must be between 2 and 10"},
        {[](Builder &b) { return b.longPress(1, 1, 0); },               time},
        {[](Builder &b) { return b.rotateBy(1, 1, 1, 1, -1); },         time},
        {[](Builder &b) { return b.doubleTap(notANumber, 1); },                place},
        {[](Builder &b) { return b.swipe(1, 1, infinity, 1, 9); },      place},
        {[](Builder &b) { return b.spread(1, 1, 0, 1e300, 9); },        place},
        {[](Builder &b) { return b.pinch(1, 1, -1, -2, 9); },           distances},
        {[](Builder &b) { return b.rotateBy(1, 1, notANumber, 1, 1); },        distances},
        {[](Builder &b) { return b.rotateBy(1, 1, 1, 36001, 1); },      angle},
        {[](Builder &b) { return b.rotateBy(1, 1, 1, notANumber, 1); },        angle},
        {[](Builder &b) { return b.pinch(1, 1, 5, 5, 9); },  "The end distance of a pinch must be below the start distance"},
        {[](Builder &b) { return b.spread(1, 1, 5, 5, 9); }, "The end distance of a spread must be above the start distance"},
        {[](Builder &) { Builder none; return none.tap(1, 1); }, "There is no gesture to add a stroke to"},
    };
    for (const auto &row : rows) {
        EXPECT_FALSE(row.add(builder)) << row.error;
        EXPECT_EQ(row.error, takeError());
    }
    EXPECT_FALSE(builder.lineTo(1, 1, 1)) << "there is no stroke";
}

TEST_F(TouchBuilderTest, DrawsAPathForEachFinger)
{
    ASSERT_TRUE(builder.rotateBy(50, 100, 40, 10, 120, 600, 2));
    ASSERT_TRUE(builder.addGesture(50, 50, TouchBuilder::MilliMeter) && builder.swipe(1, 1, 40, 0, 90, 3));
    ASSERT_TRUE(builder.addGesture(50, 50, TouchBuilder::MilliMeter));
    ASSERT_TRUE(builder.addGesture(5, 5, TouchBuilder::MilliMeter) && builder.addStroke(0, 1, 1));
    const std::string unsampled = builder.toSvg();
    ASSERT_TRUE(builder.lineTo(1, 1e30, 1));
    builder.gesture(3).translate(3, 1e38);
    ASSERT_EQ("", sample(1));
    builder.gesture(2).samples = {{0, {{4, 1, 1}}}, {5, {}}, {9, {{4, float(notANumber), 1}}}, {9, {{4, 2, 2}}}};
    const std::string sampled = builder.toSvg();
    EXPECT_EQ(sampled, builder.toSvg()) << "a picture changes nothing";

    const struct { const std::string &text; int paths, areas, starts; } rows[]
        = {{unsampled, 5, 4, 5}, {sampled, 7, 4, 8}};
    for (const auto &row : rows) {
        EXPECT_LT(row.text.size(), 12000u);
        QXmlStreamReader reader(QByteArray::fromStdString(row.text));
        QMap<QString, int> elements;
        for (; !reader.atEnd(); reader.readNext()) {
            if (reader.isStartElement()) {
                ++elements[reader.name().toString()];
            }
        }
        EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
        EXPECT_EQ(row.paths, elements["path"]);
        EXPECT_EQ(row.areas, elements["rect"]);
        EXPECT_EQ(2 * row.starts, elements["circle"]) << "a start and an end mark each";
        EXPECT_GT(elements["line"], 5);
    }
}

TEST_F(TouchBuilderTest, DrawsTextsThatDoNotCoverEachOther)
{
    using Builder = TouchBuilder;
    const struct { const char *what; std::function<bool(Builder &)> add; const char *fingers; int texts; } rows[] = {
        {"ticks that are close",      [](Builder &b) { return b.pinch(50, 100, 45, 10, 400); }, " 2 fingers", 7},
        {"one place, several times",  [](Builder &b) { return b.doubleTap(50, 1, 2) && b.doubleTap(50, 1, 2) && b.doubleTap(50, 1, 2); }, " 2 fingers", 9},
        {"below the caption",         [](Builder &b) { return b.swipe(0, 1, 100, 0, 500); }, " 1 finger,", 7},
        {"a caption for a thin area", [](Builder &b) { return b.addGesture(1, 200, Builder::Pixel); }, " 0 fingers", 1},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        Builder fresh;
        ASSERT_TRUE(fresh.addGesture(100, 200, Builder::Pixel) && row.add(fresh));
        ASSERT_TRUE(fresh.generateSamples(20));
        QXmlStreamReader picture(QByteArray::fromStdString(fresh.gesture(fresh.numGestures() - 1).toSvg()));
        QVector<QRectF> boxes;
        QRectF page;
        QString caption;
        while (!picture.atEnd()) {
            picture.readNext();
            const auto number = [&](const char *name) { return picture.attributes().value(QLatin1String(name)).toDouble(); };
            if (picture.isStartElement() && picture.name() == "svg") {
                page = QRectF(0, 0, number("width"), number("height"));
            } else if (picture.isStartElement() && picture.name() == "text") {
                const bool centred = picture.attributes().hasAttribute("text-anchor");
                const QPointF place(number("x"), number("y") - 8);
                const QString text = picture.readElementText();
                caption += boxes.isEmpty() ? text : QString();
                const double width = 6.4 * text.size();
                const QRectF box(place - QPointF(centred ? width / 2 : 0, 0), QSizeF(centred ? width : 5.5 * text.size(), 9));
                EXPECT_TRUE(page.contains(box)) << text.toStdString();
                for (const QRectF &other : boxes) {
                    EXPECT_FALSE(box.intersects(other)) << text.toStdString();
                }
                boxes << box;
            }
        }
        EXPECT_TRUE(caption.contains(row.fingers)) << caption.toStdString();
        EXPECT_LE(row.texts, boxes.size());
    }
}
