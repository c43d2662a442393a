#include "objectmodel/touchbuilder.h"

#include "objectmodel/inspector.h"
#include "objectmodel/touchbuilder_p.h"

#include <QString>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Vantrel {

namespace {

constexpr double millimetersPerInch = 25.4;

const char *const negativeTimeText = "Time must be 0 or above";
const char *const badCoordinatesText = "Coordinates must be finite numbers";
const char *const curveWithoutStrokeText = "addStroke must be called before curveTo";

bool isPositive(double value)
{
    return std::isfinite(value) && value > 0;
}

/** False for 0, 1 and what is not a number. */
bool isFraction(double value)
{
    // As a 32-bit float the lower limit is a little smaller.
    return (value >= 0.0001 || value == double(0.0001F)) && value <= 0.9999;
}

bool areFinite(std::initializer_list<double> values)
{
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); })
        || reportTouchError("Arguments must be finite numbers");
}

TouchPosition centreOf(const TouchBuilder::MultiTouchInfo &gesture)
{
    return {gesture.areaWidth * 0.5, gesture.areaHeight * 0.5};
}

TouchBuilder::Matrix scaling(double sx, double sy, TouchPosition centre)
{
    return {toFloat(sx), 0,           toFloat(centre.x - sx * centre.x),
            0,           toFloat(sy), toFloat(centre.y - sy * centre.y)};
}

TouchBuilder::Matrix rotation(double angle, TouchPosition centre)
{
    const double radians = angle * touchPi / 180.0;
    const double cosine = std::cos(radians);
    const double sine = std::sin(radians);
    return {
        toFloat(cosine), toFloat(-sine),  toFloat(centre.x - cosine * centre.x + sine * centre.y),
        toFloat(sine),   toFloat(cosine), toFloat(centre.y - sine * centre.x - cosine * centre.y)};
}

void scaleArea(TouchBuilder::MultiTouchInfo *info, double fx, double fy)
{
    const float x = toFloat(fx);
    const float y = toFloat(fy);
    info->areaWidth = toFloat(double(info->areaWidth) * x);
    info->areaHeight = toFloat(double(info->areaHeight) * y);
    info->transform({x, 0, 0, 0, y, 0});
}

double squared(double x, double y)
{
    return x * x + y * y;
}

using TouchPoint = TouchBuilder::Point;

double squaredDistanceToSegment(const TouchPoint &p, const TouchPoint &a, const TouchPoint &b)
{
    const double dx = double(b.x) - a.x;
    const double dy = double(b.y) - a.y;
    const double px = double(p.x) - a.x;
    const double py = double(p.y) - a.y;
    const double length = squared(dx, dy);
    if (length < 0.001) {
        return squared(px, py);
    }
    const double t = (px * dx + py * dy) / length;
    if (t < 0) {
        return squared(px, py);
    }
    if (t > 1) {
        return squared(double(p.x) - b.x, double(p.y) - b.y);
    }
    return squared(px - t * dx, py - t * dy);
}

/** The pointers of one sample in ascending order, with room that is used again. */
class PointerSet
{
public:
    void assign(const TouchBuilder::Sample &sample)
    {
        m_pointers.clear();
        for (const TouchPoint &point : sample.points) {
            m_pointers.push_back(point.pointer);
        }
        if (!std::is_sorted(m_pointers.begin(), m_pointers.end())) {
            std::sort(m_pointers.begin(), m_pointers.end());
        }
    }
    void clear() { m_pointers.clear(); }
    void swap(PointerSet &other) { m_pointers.swap(other.m_pointers); }
    bool contains(qint32 pointer) const
    {
        return std::binary_search(m_pointers.begin(), m_pointers.end(), pointer);
    }

private:
    std::vector<qint32> m_pointers;
};

} // namespace

bool reportTouchError(const char *text)
{
    Inspector::self()->setError(QString::fromLatin1(text));
    return false;
}

bool areTouchCoordinates(std::initializer_list<double> values)
{
    constexpr double limit = std::numeric_limits<float>::max();
    return std::all_of(values.begin(), values.end(),
                       [](double value) { return std::abs(value) <= limit; });
}

bool TouchBuilderPrivate::hasGesture() const
{
    return !gestures.empty() || reportTouchError("There is no gesture to add a stroke to");
}

bool TouchBuilderPrivate::hasStroke() const
{
    return !drawings.empty() && !drawings.back().strokes.empty();
}

bool TouchBuilderPrivate::addStroke(int time, TouchPosition origin, const double *pressure,
                                    const double *size)
{
    if (time < 0) {
        return reportTouchError(negativeTimeText);
    }
    if (time > 0 && !hasStroke()) {
        return reportTouchError("Time must be 0 for first stroke");
    }
    if (pressure && !isFraction(*pressure)) {
        return reportTouchError("Pressure must be between 0.0 and 1.0");
    }
    if (size && !isFraction(*size)) {
        return reportTouchError("Size must be between 0.0 and 1.0");
    }
    if (!areTouchCoordinates({origin.x, origin.y})) {
        return reportTouchError(badCoordinatesText);
    }
    if (!hasGesture()) {
        return false;
    }
    TouchStroke stroke{time, origin};
    if (pressure) {
        stroke.pressure = toFloat(*pressure);
    }
    if (size) {
        stroke.size = toFloat(*size);
    }
    drawings.back().strokes.push_back(stroke);
    return true;
}

bool TouchBuilderPrivate::extendStroke(const char *missingStrokeText, int duration,
                                       const TouchCurve &curve)
{
    if (!hasStroke()) {
        return reportTouchError(missingStrokeText);
    }
    if (duration < 0) {
        return reportTouchError(negativeTimeText);
    }
    const auto &c = curve.controls;
    if (!areTouchCoordinates({c[0].x, c[0].y, c[1].x, c[1].y, curve.target.x, curve.target.y})) {
        return reportTouchError(badCoordinatesText);
    }
    TouchStroke &stroke = drawings.back().strokes.back();
    const std::int64_t end = stroke.end() + duration;
    if (end > lastTouchTime) {
        return reportTouchError("Time must be at most 4294967295 at the end of a movement");
    }
    stroke.movements.push_back({end, curve});
    return true;
}

TouchBuilder::MultiTouchInfo::MultiTouchInfo(float width, float height, Unit areaUnit)
    : areaWidth(width), areaHeight(height), unit(areaUnit)
{}

void TouchBuilder::MultiTouchInfo::transform(const Matrix &m)
{
    if (!matrixSet) {
        matrix = m;
        matrixSet = true;
        return;
    }
    const auto sum = [](double p, double q, double r, double s, double t) {
        return toFloat(p * q + r * s + t);
    };
    const Matrix c = matrix;
    matrix.a = sum(m.a, c.a, m.b, c.c, 0);
    matrix.b = sum(m.a, c.b, m.b, c.d, 0);
    matrix.tx = sum(m.a, c.tx, m.b, c.ty, m.tx);
    matrix.c = sum(m.c, c.a, m.d, c.c, 0);
    matrix.d = sum(m.c, c.b, m.d, c.d, 0);
    matrix.ty = sum(m.c, c.tx, m.d, c.ty, m.ty);
}

void TouchBuilder::MultiTouchInfo::translate(double dx, double dy)
{
    transform({1, 0, toFloat(dx), 0, 1, toFloat(dy)});
}

void TouchBuilder::MultiTouchInfo::adjustSpeed(double factor)
{
    speedFactor = speedFactorSet ? toFloat(speedFactor * factor) : toFloat(factor);
    speedFactorSet = true;
}

void TouchBuilder::MultiTouchInfo::toMilliMeter(double dpiX, double dpiY)
{
    if (unit == MilliMeter || !isPositive(dpiX) || !isPositive(dpiY)) {
        return;
    }
    if (unit == LogicalPoint && !isPositive(pixelRatio)) {
        return;
    }
    const double ratio = unit == LogicalPoint ? pixelRatio : 1.0;
    scaleArea(this, toFloat(millimetersPerInch / dpiX) * ratio,
              toFloat(millimetersPerInch / dpiY) * ratio);
    unit = MilliMeter;
}

void TouchBuilder::MultiTouchInfo::toPixel(double dpiX, double dpiY)
{
    if (unit == Pixel) {
        return;
    }
    toMilliMeter(dpiX, dpiY);
    if (unit != MilliMeter || !isPositive(dpiX) || !isPositive(dpiY)) {
        return;
    }
    scaleArea(this, dpiX / millimetersPerInch, dpiY / millimetersPerInch);
    unit = Pixel;
}

void TouchBuilder::MultiTouchInfo::toLogicalPoint(double dpiX, double dpiY)
{
    if (unit == LogicalPoint || !isPositive(pixelRatio)) {
        return;
    }
    toMilliMeter(dpiX, dpiY);
    if (unit != MilliMeter || !isPositive(dpiX) || !isPositive(dpiY)) {
        return;
    }
    scaleArea(this, dpiX / pixelRatio / millimetersPerInch, dpiY / pixelRatio / millimetersPerInch);
    unit = LogicalPoint;
}

bool TouchBuilder::MultiTouchInfo::looksLikeLineSegment(float tolerance) const
{
    if (samples.size() < 2 || samples.front().points.size() != 1
        || samples.back().points.size() != 1) {
        return false;
    }
    const Point &first = samples.front().points.front();
    const Point &last = samples.back().points.front();
    const double limit = double(tolerance) * tolerance;
    return std::all_of(samples.begin(), samples.end(), [&](const Sample &sample) {
        return sample.points.empty()
            || (sample.points.size() == 1
                && squaredDistanceToSegment(sample.points.front(), first, last) <= limit);
    });
}

void TouchBuilder::MultiTouchInfo::updatePointerStates()
{
    PointerSet before;
    PointerSet now;
    PointerSet after;
    if (!samples.empty()) {
        now.assign(samples.front());
    }
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (i + 1 < samples.size()) {
            after.assign(samples[i + 1]);
        } else {
            after.clear();
        }
        for (Point &point : samples[i].points) {
            if (!before.contains(point.pointer)) {
                point.state = Down;
            } else {
                point.state = after.contains(point.pointer) ? Move : Up;
            }
        }
        before.swap(now);
        now.swap(after);
    }
}

TouchBuilder::TouchBuilder() : d(new TouchBuilderPrivate) {}

TouchBuilder::~TouchBuilder() = default;

bool TouchBuilder::addGesture(double width, double height, Unit unit)
{
    if (!(width >= 0.001 && height >= 0.001) || !areTouchCoordinates({width, height})) {
        return reportTouchError("Invalid area sizes");
    }
    if (unit < Pixel || unit > LogicalPoint) {
        return reportTouchError("Invalid unit");
    }
    d->gestures.emplace_back(toFloat(width), toFloat(height), unit);
    d->drawings.emplace_back(d->gestures.back());
    return true;
}

int TouchBuilder::numGestures() const
{
    return int(d->gestures.size());
}

TouchBuilder::MultiTouchInfo &TouchBuilder::gesture(int index)
{
    return d->gestures[std::size_t(index)];
}

const TouchBuilder::MultiTouchInfo &TouchBuilder::gesture(int index) const
{
    return d->gestures[std::size_t(index)];
}

bool TouchBuilder::addStroke(int time, double x, double y)
{
    return d->addStroke(time, {x, y}, nullptr, nullptr);
}

bool TouchBuilder::addStroke(int time, double x, double y, double pressure)
{
    return d->addStroke(time, {x, y}, &pressure, nullptr);
}

bool TouchBuilder::addStroke(int time, double x, double y, double pressure, double size)
{
    return d->addStroke(time, {x, y}, &pressure, &size);
}

bool TouchBuilder::lineTo(int duration, double x, double y)
{
    return d->extendStroke("addStroke must be called before lineTo", duration, {1, {}, {x, y}});
}

bool TouchBuilder::curveTo(int duration, double cx, double cy, double x, double y)
{
    return d->extendStroke(curveWithoutStrokeText, duration, {2, {{cx, cy}, {}}, {x, y}});
}

bool TouchBuilder::curveTo(int duration, double c1x, double c1y, double c2x, double c2y, double x,
                           double y)
{
    return d->extendStroke(curveWithoutStrokeText, duration, {3, {{c1x, c1y}, {c2x, c2y}}, {x, y}});
}

bool TouchBuilder::translate(double dx, double dy)
{
    if (!areFinite({dx, dy})) {
        return false;
    }
    for (MultiTouchInfo &gesture : d->gestures) {
        gesture.translate(dx, dy);
    }
    return true;
}

bool TouchBuilder::scale(double sx, double sy, double cx, double cy, bool aroundCentre)
{
    if (!areFinite({sx, sy}) || !(aroundCentre || areFinite({cx, cy}))) {
        return false;
    }
    for (MultiTouchInfo &gesture : d->gestures) {
        const TouchPosition centre = aroundCentre ? centreOf(gesture) : TouchPosition{cx, cy};
        gesture.transform(scaling(sx, sy, centre));
    }
    return true;
}

bool TouchBuilder::rotate(double angle, double cx, double cy, bool aroundCentre)
{
    if (!areFinite({angle}) || !(aroundCentre || areFinite({cx, cy}))) {
        return false;
    }
    for (MultiTouchInfo &gesture : d->gestures) {
        const TouchPosition centre = aroundCentre ? centreOf(gesture) : TouchPosition{cx, cy};
        gesture.transform(rotation(angle, centre));
    }
    return true;
}

void TouchBuilder::accelerate(double factor)
{
    if (factor == 0) {
        return;
    }
    for (MultiTouchInfo &gesture : d->gestures) {
        gesture.adjustSpeed(1 / factor);
    }
}

bool TouchBuilder::generateSamples(int interval, std::string *error)
{
    std::vector<std::vector<Sample>> results(d->gestures.size());
    for (std::size_t i = 0; i < results.size(); ++i) {
        if (!sampleDrawing(d->drawings[i], interval, &results[i], error)) {
            return false;
        }
    }
    for (std::size_t i = 0; i < results.size(); ++i) {
        if (d->drawings[i].strokes.empty()) {
            continue;
        }
        d->gestures[i].samples = std::move(results[i]);
        d->gestures[i].updatePointerStates();
    }
    return true;
}

} // namespace Vantrel
