#ifndef VANTREL_TOUCHBUILDER_H
#define VANTREL_TOUCHBUILDER_H

#include "objectmodel/export.h"

#include <QtGlobal>

#include <memory>
#include <string>
#include <vector>

namespace Vantrel {

class TouchBuilderPrivate;

/**
 * Builds multi-touch gestures: several fingers that move at once over a touch
 * area. Fingers are drawn as strokes, generateSamples() turns the strokes into
 * timed samples, and toXml() writes the samples.
 *
 * A builder holds any number of gestures. Strokes and presets go to the one
 * that was added last; transforms apply to all of them. Times are milliseconds
 * from the start of a gesture, coordinates are in the unit of its area.
 *
 * @code
 * TouchBuilder builder;
 * builder.addGesture(320, 240, TouchBuilder::Pixel);
 * builder.addStroke(0, 60, 120);
 * builder.lineTo(250, 260, 120);
 * if (builder.generateSamples(20))
 *     send(builder.toXml());
 * @endcode
 *
 * Drawing reports errors through the Inspector's last error and returns false;
 * sampling and reading return false with a text. Either way nothing changes.
 */
class VANTREL_EXPORT TouchBuilder
{
public:
    enum Unit : qint32 { Pixel = 0, MilliMeter = 1, LogicalPoint = 2 };

    enum PointerState : qint32 { UnknownState = 0, Down = 1, Move = 2, Up = 3 };

    /** Maps (x, y) to (a*x + b*y + tx, c*x + d*y + ty); the identity at first. */
    struct Matrix
    {
        float a = 1;
        float b = 0;
        float tx = 0;
        float c = 0;
        float d = 1;
        float ty = 0;
    };

    /** One finger at one moment. */
    struct Point
    {
        qint32 pointer = 0; ///< tells the fingers of a gesture apart
        float x = 0;
        float y = 0;
        float pressure = -1; ///< negative when unspecified
        float size = -1; ///< negative when unspecified
        qint32 state = UnknownState; ///< a PointerState; any other value counts as unknown
    };

    /** All fingers that touch at one moment. */
    struct Sample
    {
        quint32 timestamp = 0;
        std::vector<Point> points;
    };

    /**
     * One gesture: its touch area and its samples in the order of time. Unit
     * conversions and transforms change the area and the matrix only; toXml()
     * applies matrix and speed factor to the samples.
     */
    class VANTREL_EXPORT MultiTouchInfo
    {
    public:
        MultiTouchInfo(float width, float height, Unit areaUnit);

        /** Composes @p m after the current matrix. */
        void transform(const Matrix &m);
        void translate(double dx, double dy);
        /** Multiplies the duration by @p factor. */
        void adjustSpeed(double factor);

        // Unit conversions for a screen of that many dots per inch. Nothing
        // happens when the unit is the wanted one already, or when the
        // resolution (or for logical points the pixel ratio) is not a positive
        // number.
        void toMilliMeter(double dpiX, double dpiY);
        void toPixel(double dpiX, double dpiY);
        void toLogicalPoint(double dpiX, double dpiY);

        /**
         * Whether the samples are one finger's straight drag: each point lies
         * within @p tolerance of the segment from the first to the last.
         */
        bool looksLikeLineSegment(float tolerance) const;

        /**
         * Sets the state of each point from the neighbouring samples: down
         * when the pointer is not in the sample before, else up when it is
         * not in the one after, else move.
         */
        void updatePointerStates();

        /**
         * The element "multi-point", each line behind @p indent. Without bit 0
         * of @p flags the start tag is left out; other bits have no meaning.
         * Speed factor and matrix are applied to the stored samples, so
         * writing twice applies them twice. Timestamps stay within 32 bits.
         */
        std::string toXml(const char *indent, int flags);

        /**
         * An SVG picture of what toXml() would write next: the area, a path
         * with start and end mark for each pointer, and time ticks.
         */
        std::string toSvg() const;

        std::vector<Sample> samples;
        float areaWidth;
        float areaHeight;
        float pixelRatio = 1; ///< pixels per logical point
        float speedFactor = 1; ///< in effect when speedFactorSet
        Matrix matrix; ///< in effect when matrixSet
        Unit unit;
        bool speedFactorSet = false;
        bool matrixSet = false;
    };

    /** Without any gesture. */
    TouchBuilder();
    ~TouchBuilder();

    /**
     * Begins a gesture on an area of at least 0.001 by 0.001 units.
     * Strokes and presets go to this gesture from now on.
     */
    bool addGesture(double width, double height, Unit unit);
    int numGestures() const;
    /** @p index must be at least 0 and below numGestures(). */
    MultiTouchInfo &gesture(int index);
    const MultiTouchInfo &gesture(int index) const;

    /**
     * Puts a finger down at @p time, which is 0 for the first stroke of a
     * gesture. @p pressure and @p size are within 0.0001 and 0.9999; left out
     * they are unspecified.
     */
    bool addStroke(int time, double x, double y);
    bool addStroke(int time, double x, double y, double pressure);
    bool addStroke(int time, double x, double y, double pressure, double size);

    // Each extends the stroke that was added last by a movement of @p duration
    // milliseconds (0 or above) that ends at (x, y): a straight line, a
    // quadratic or a cubic Bezier curve.
    bool lineTo(int duration, double x, double y);
    bool curveTo(int duration, double cx, double cy, double x, double y);
    bool curveTo(int duration, double c1x, double c1y, double c2x, double c2y, double x, double y);

    // Presets add all strokes of a common gesture around (x, y), or none. The
    // first one begins at 0, each further one a tenth of a second after
    // everything before it has ended; no samples are due in that pause.
    // Fingers are 1 to 10, and at least 2 where they move about a centre.
    // Side by side they are a tenth of the area's shorter side apart. Durations
    // are 1 ms or above. When a finger leaves the area, a warning becomes the
    // last error, and the strokes are added all the same.
    bool tap(double x, double y, int fingers = 1);
    bool doubleTap(double x, double y, int fingers = 1);
    /** A touch of @p duration milliseconds in one place. */
    bool longPress(double x, double y, int duration, int fingers = 1);
    /** From (x, y) by (dx, dy); several fingers move abreast. */
    bool swipe(double x, double y, double dx, double dy, int duration, int fingers = 1);
    /** Fingers around (x, y) move towards it; distances are from the centre to each finger. */
    bool pinch(double x, double y, double startDistance, double endDistance, int duration,
               int fingers = 2);
    /** The opposite of pinch(). */
    bool spread(double x, double y, double startDistance, double endDistance, int duration,
                int fingers = 2);
    /**
     * Fingers around (x, y) turn by @p angle degrees (at most 36000 either
     * way), in the direction of rotate().
     */
    bool rotateBy(double x, double y, double distance, double angle, int duration, int fingers = 2);
    /** Turns and pinches or spreads at the same time. */
    bool rotateBy(double x, double y, double startDistance, double endDistance, double angle,
                  int duration, int fingers);

    // Transforms refuse NaN and infinity.
    bool translate(double dx, double dy);
    /** About (cx, cy), or about each gesture's own centre when @p aroundCentre. */
    bool scale(double sx, double sy, double cx, double cy, bool aroundCentre);
    /** By @p angle degrees, from the x axis towards the y axis. */
    bool rotate(double angle, double cx, double cy, bool aroundCentre);
    /** Makes the gestures @p factor times as fast; 0 changes nothing. */
    void accelerate(double factor);

    /**
     * Replaces the samples of each gesture that has strokes: one at every
     * multiple of @p interval milliseconds (at least 1), at every start of a
     * stroke and at every end of a movement. Samples that were loaded into
     * such a gesture are replaced, too. Fails for a stroke without movement or
     * of 0 milliseconds, for a moment without any finger, and above a million points
     * in one gesture. @p error, which may be null, receives the reason.
     */
    bool generateSamples(int interval, std::string *error = nullptr);

    /** The samples of all gestures as XML; see MultiTouchInfo::toXml(). */
    std::string toXml();

    /**
     * Replaces all gestures by those in @p text. @p error, which may be null,
     * receives the reason of a failure, beginning with "Error in XML data".
     * What generateSamples() makes of one gesture is always within the limits,
     * which keep the memory for any text below 1 GiB.
     */
    bool fromXml(const std::string &text, std::string *error = nullptr);

    /**
     * The pictures of all gestures below each other in one SVG document. A
     * gesture with strokes but no samples yet is shown sampled every 20 ms.
     */
    std::string toSvg() const;

private:
    Q_DISABLE_COPY(TouchBuilder)
    const std::unique_ptr<TouchBuilderPrivate> d;
};

} // namespace Vantrel

#endif // VANTREL_TOUCHBUILDER_H
