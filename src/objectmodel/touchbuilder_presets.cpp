#include "objectmodel/touchbuilder_p.h"

#include <algorithm>
#include <cmath>

namespace Vantrel {

namespace {

constexpr int maxFingers = 10;
constexpr int tapDuration = 60;
constexpr int pauseDuration = 100;
constexpr double maxAngle = 36000;
/** One cubic curve follows a circle over this many degrees to within 1e-5 of its radius. */
constexpr double degreesPerCurve = 45;

bool checkFingers(int fingers, int minimum)
{
    if (fingers >= minimum && fingers <= maxFingers) {
        return true;
    }
    return reportTouchError(minimum == 1 ? "Fingers must be between 1 and 10"
                                         : "Fingers must be between 2 and 10");
}

/** What fingers around a centre do: they turn while their distance to it changes evenly. */
struct Turn
{
    TouchPosition centre;
    double startDistance;
    double endDistance;
    double angle; ///< degrees
};

/** The way of one finger in a Turn; @p u runs from 0 to 1. */
class Spiral
{
public:
    /** @p phase is where the finger begins, in radians from the x axis. */
    Spiral(const Turn &turn, double phase)
        : m_turn(turn), m_outward(turn.endDistance - turn.startDistance), m_phase(phase),
          m_radians(turn.angle * touchPi / 180)
    {}

    TouchStroke stroke(std::int64_t start, int duration) const
    {
        TouchStroke stroke{start, positionAt(0)};
        if (m_radians == 0) {
            stroke.movements.push_back({start + duration, {1, {}, positionAt(1)}});
            return stroke;
        }
        const int numCurves = int(std::ceil(std::abs(m_turn.angle) / degreesPerCurve));
        stroke.movements.reserve(std::size_t(numCurves));
        for (int i = 0; i < numCurves; ++i) {
            const double share = double(i + 1) / numCurves;
            const std::int64_t end = start + std::llround(duration * share);
            stroke.movements.push_back({end, curve(i, numCurves)});
        }
        return stroke;
    }

private:
    TouchPosition positionAt(double u) const
    {
        const double distance = m_turn.startDistance + u * m_outward;
        const double angle = m_phase + u * m_radians;
        return {m_turn.centre.x + distance * std::cos(angle),
                m_turn.centre.y + distance * std::sin(angle)};
    }

    TouchPosition slopeAt(double u) const
    {
        const TouchPosition p = positionAt(u);
        const double angle = m_phase + u * m_radians;
        return {m_outward * std::cos(angle) - m_radians * (p.y - m_turn.centre.y),
                m_outward * std::sin(angle) + m_radians * (p.x - m_turn.centre.x)};
    }

    TouchCurve curve(int index, int numCurves) const
    {
        const double from = double(index) / numCurves;
        const double to = double(index + 1) / numCurves;
        const TouchPosition p = positionAt(from);
        const TouchPosition q = positionAt(to);
        const TouchPosition out = slopeAt(from);
        const TouchPosition in = slopeAt(to);
        // The length of the handles that fits a circle best, relative to the slope.
        const double handle = 4.0 / 3.0 * std::tan(m_radians / numCurves / 4) / m_radians;
        return {3,
                {{p.x + handle * out.x, p.y + handle * out.y},
                 {q.x - handle * in.x, q.y - handle * in.y}},
                q};
    }

    Turn m_turn;
    double m_outward;
    double m_phase;
    double m_radians;
};

/** One preset: checks what presets share, then adds its strokes to the current gesture. */
class Preset
{
public:
    explicit Preset(TouchBuilderPrivate *builder) : m_builder(builder) {}

    bool begin(int duration, int fingers, int minimum)
    {
        if (duration < 1) {
            return reportTouchError("Duration must be 1 or above");
        }
        if (!checkFingers(fingers, minimum) || !m_builder->hasGesture()) {
            return false;
        }
        m_start = findStart();
        if (m_start + duration > lastTouchTime) {
            return reportTouchError("Time must be at most 4294967295 at the end of a movement");
        }
        return true;
    }

    /** Adds the strokes, and the pause before them. False when a coordinate is not a number. */
    bool add(std::vector<TouchStroke> strokes)
    {
        for (const TouchStroke &stroke : strokes) {
            if (!hasCoordinates(stroke)) {
                return reportTouchError("Coordinates must be finite numbers");
            }
        }
        TouchDrawing &drawing = m_builder->drawings.back();
        if (m_start > 0) {
            drawing.pauses.push_back({m_start - pauseDuration, m_start});
        }
        warnOfFingersOutside(strokes);
        for (TouchStroke &stroke : strokes) {
            drawing.strokes.push_back(std::move(stroke));
        }
        return true;
    }

    /** The strokes of fingers side by side across the direction (dx, dy), moving along it. */
    std::vector<TouchStroke> abreast(TouchPosition centre, double dx, double dy, int duration,
                                     int fingers) const
    {
        const TouchBuilder::MultiTouchInfo &gesture = m_builder->gestures.back();
        const double spacing = std::min(gesture.areaWidth, gesture.areaHeight) * 0.1;
        // Directions and distances are those in the unit of the area, which is
        // another than that of the strokes after a conversion.
        const TouchPosition unit = unitOfStrokes();
        const double length = std::hypot(dx * unit.x, dy * unit.y);
        const double acrossX = (length > 0 ? -dy * unit.y / length : 1) / unit.x;
        const double acrossY = (length > 0 ? dx * unit.x / length : 0) / unit.y;
        std::vector<TouchStroke> strokes;
        for (int i = 0; i < fingers; ++i) {
            const double offset = (i - (fingers - 1) * 0.5) * spacing;
            const TouchPosition from{centre.x + acrossX * offset, centre.y + acrossY * offset};
            strokes.push_back({m_start, from});
            strokes.back().movements.push_back(
                {m_start + duration, {1, {}, {from.x + dx, from.y + dy}}});
        }
        return strokes;
    }

    std::vector<TouchStroke> around(const Turn &turn, int duration, int fingers) const
    {
        std::vector<TouchStroke> strokes;
        for (int i = 0; i < fingers; ++i) {
            strokes.push_back(Spiral(turn, 2 * touchPi * i / fingers).stroke(m_start, duration));
        }
        return strokes;
    }

private:
    /** One unit of the strokes in the unit of the area. */
    TouchPosition unitOfStrokes() const
    {
        const TouchBuilder::MultiTouchInfo &gesture = m_builder->gestures.back();
        const TouchDrawing &drawing = m_builder->drawings.back();
        // An area that was read can be of no size.
        const auto ratio = [](double a, double b) { return a > 0 && b > 0 ? a / b : 1; };
        return {ratio(gesture.areaWidth, drawing.width), ratio(gesture.areaHeight, drawing.height)};
    }

    void warnOfFingersOutside(const std::vector<TouchStroke> &strokes) const
    {
        for (std::size_t i = 0; i < strokes.size(); ++i) {
            if (!staysInside(strokes[i])) {
                reportTouchError(
                    ("Warning: finger " + std::to_string(i + 1) + " leaves the touch area")
                        .c_str());
                return;
            }
        }
    }

    bool staysInside(const TouchStroke &stroke) const
    {
        constexpr int steps = 8;
        TouchPosition from = stroke.origin;
        for (const TouchMovement &movement : stroke.movements) {
            for (int i = 0; i <= steps; ++i) {
                if (!isInside(pointOnCurve(from, movement.curve, double(i) / steps))) {
                    return false;
                }
            }
            from = movement.curve.target;
        }
        return true;
    }

    bool isInside(TouchPosition p) const
    {
        const TouchDrawing &drawing = m_builder->drawings.back();
        const double rounding = 1e-9 * (drawing.width + drawing.height);
        return p.x >= -rounding && p.x <= drawing.width + rounding && p.y >= -rounding
            && p.y <= drawing.height + rounding;
    }

    std::int64_t findStart() const
    {
        std::int64_t end = 0;
        for (const TouchStroke &stroke : m_builder->drawings.back().strokes) {
            end = std::max(end, stroke.end());
        }
        return m_builder->hasStroke() ? end + pauseDuration : 0;
    }

    static bool hasCoordinates(const TouchStroke &stroke)
    {
        return areTouchCoordinates({stroke.origin.x, stroke.origin.y})
            && std::all_of(stroke.movements.begin(), stroke.movements.end(),
                           [](const TouchMovement &movement) {
                               const TouchCurve &c = movement.curve;
                               return areTouchCoordinates({c.controls[0].x, c.controls[0].y,
                                                           c.controls[1].x, c.controls[1].y,
                                                           c.target.x, c.target.y});
                           });
    }

    TouchBuilderPrivate *m_builder;
    std::int64_t m_start = 0;
};

bool addAbreast(TouchBuilderPrivate *d, TouchPosition centre, double dx, double dy, int duration,
                int fingers)
{
    Preset preset(d);
    return preset.begin(duration, fingers, 1)
        && preset.add(preset.abreast(centre, dx, dy, duration, fingers));
}

bool addAround(TouchBuilderPrivate *d, const Turn &turn, int duration, int fingers)
{
    Preset preset(d);
    return preset.begin(duration, fingers, 2) && preset.add(preset.around(turn, duration, fingers));
}

bool checkDistances(double startDistance, double endDistance)
{
    if (startDistance >= 0 && endDistance >= 0) {
        return true;
    }
    return reportTouchError("Distances must be 0 or above");
}

} // namespace

bool TouchBuilder::tap(double x, double y, int fingers)
{
    return addAbreast(d.get(), {x, y}, 0, 0, tapDuration, fingers);
}

bool TouchBuilder::doubleTap(double x, double y, int fingers)
{
    return Preset(d.get()).begin(2 * tapDuration + pauseDuration, fingers, 1) && tap(x, y, fingers)
        && tap(x, y, fingers);
}

bool TouchBuilder::longPress(double x, double y, int duration, int fingers)
{
    return addAbreast(d.get(), {x, y}, 0, 0, duration, fingers);
}

bool TouchBuilder::swipe(double x, double y, double dx, double dy, int duration, int fingers)
{
    return addAbreast(d.get(), {x, y}, dx, dy, duration, fingers);
}

bool TouchBuilder::pinch(double x, double y, double startDistance, double endDistance, int duration,
                         int fingers)
{
    if (!checkDistances(startDistance, endDistance)) {
        return false;
    }
    if (endDistance >= startDistance) {
        return reportTouchError("The end distance of a pinch must be below the start distance");
    }
    return addAround(d.get(), {{x, y}, startDistance, endDistance, 0}, duration, fingers);
}

bool TouchBuilder::spread(double x, double y, double startDistance, double endDistance,
                          int duration, int fingers)
{
    if (!checkDistances(startDistance, endDistance)) {
        return false;
    }
    if (endDistance <= startDistance) {
        return reportTouchError("The end distance of a spread must be above the start distance");
    }
    return addAround(d.get(), {{x, y}, startDistance, endDistance, 0}, duration, fingers);
}

bool TouchBuilder::rotateBy(double x, double y, double distance, double angle, int duration,
                            int fingers)
{
    return rotateBy(x, y, distance, distance, angle, duration, fingers);
}

bool TouchBuilder::rotateBy(double x, double y, double startDistance, double endDistance,
                            double angle, int duration, int fingers)
{
    if (!checkDistances(startDistance, endDistance)) {
        return false;
    }
    if (!(std::abs(angle) <= maxAngle)) {
        return reportTouchError("Angle must be between -36000 and 36000");
    }
    return addAround(d.get(), {{x, y}, startDistance, endDistance, angle}, duration, fingers);
}

} // namespace Vantrel
