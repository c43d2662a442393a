#ifndef VANTREL_TOUCHBUILDER_P_H
#define VANTREL_TOUCHBUILDER_P_H

#include "objectmodel/touchbuilder.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

namespace Vantrel {

struct TouchPosition
{
    double x = 0;
    double y = 0;
};

/** A Bezier curve of degree 1, 2 or 3 that begins wherever the finger is. */
struct TouchCurve
{
    int degree = 1;
    TouchPosition controls[2];
    TouchPosition target;
};

struct TouchMovement
{
    std::int64_t end = 0; ///< milliseconds from the start of the gesture
    TouchCurve curve;
};

struct TouchStroke
{
    std::int64_t end() const { return movements.empty() ? start : movements.back().end; }

    std::int64_t start = 0;
    TouchPosition origin;
    float pressure = -1;
    float size = -1;
    std::vector<TouchMovement> movements{};
};

/** A time without fingers that is meant to be there; both limits are outside of it. */
struct TouchPause
{
    std::int64_t begin;
    std::int64_t end;
};

/** The strokes that the samples of one gesture are made from. */
struct TouchDrawing
{
    explicit TouchDrawing(const TouchBuilder::MultiTouchInfo &gesture)
        : width(gesture.areaWidth), height(gesture.areaHeight)
    {}

    /** Of the area as strokes see it: conversions change that of the gesture. */
    double width;
    double height;
    std::vector<TouchStroke> strokes;
    std::vector<TouchPause> pauses; ///< in the order of time
};

class TouchBuilderPrivate
{
public:
    // Each of these sets the Inspector's last error when it returns false.
    bool hasGesture() const;
    /** @p pressure and @p size are null when unspecified. */
    bool addStroke(int time, TouchPosition origin, const double *pressure, const double *size);
    bool extendStroke(const char *missingStrokeText, int duration, const TouchCurve &curve);

    /** Whether the gesture under construction has a stroke. */
    bool hasStroke() const;

    std::vector<TouchBuilder::MultiTouchInfo> gestures;
    /** One for each gesture. */
    std::vector<TouchDrawing> drawings;
};

/** The nearest finite float; what is not a number stays so. */
inline float toFloat(double value)
{
    constexpr double limit = std::numeric_limits<float>::max();
    return float(std::clamp(value, -limit, limit));
}

/** Sets the Inspector's last error; always false. */
bool reportTouchError(const char *text);

/** What 32 bits of milliseconds can hold. */
constexpr std::int64_t lastTouchTime = 0xFFFFFFFF;
constexpr double touchPi = 3.141592653589793;

/** Where a finger is on @p curve, which begins at @p origin; @p u runs from 0 to 1. */
TouchPosition pointOnCurve(TouchPosition origin, const TouchCurve &curve, double u);

/** Whether all are finite as the 32-bit floats that samples hold. */
bool areTouchCoordinates(std::initializer_list<double> values);

/** The samples of @p drawing; false with a text when they cannot be made. */
bool sampleDrawing(const TouchDrawing &drawing, int interval,
                   std::vector<TouchBuilder::Sample> *samples, std::string *error);

/** Timestamp and place as toXml() writes them, with speed factor and matrix of @p gesture. */
quint32 appliedSpeed(const TouchBuilder::MultiTouchInfo &gesture, quint32 timestamp);
void applyMatrix(const TouchBuilder::Matrix &m, float *x, float *y);

/** Room for any number that appendFixed() writes. */
constexpr int maxFixedLength = 48;
/**
 * Writes @p value with two decimals and without a terminator, independent of
 * any locale. @return the end of the text.
 */
char *appendFixed(char *out, float value);

const char *touchUnitName(TouchBuilder::Unit unit);

} // namespace Vantrel

#endif // VANTREL_TOUCHBUILDER_P_H
