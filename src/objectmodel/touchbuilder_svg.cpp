#include "objectmodel/touchbuilder_labels_p.h"
#include "objectmodel/touchbuilder_p.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <map>

namespace Vantrel {

namespace {

// All lengths are in the pixels of the picture.
constexpr double longerSide = 400;
constexpr double margin = 16;
constexpr double captionHeight = 18;
constexpr double shortestStep = 1.5;
constexpr double shortestTickDistance = 6;
constexpr double tickLength = 4;
constexpr double labelGap = 2;
constexpr double baseline = 3.5; ///< below the middle of a text
constexpr double markRadius = 6;
constexpr int maxTicks = 10;
constexpr int defaultInterval = 20;

const char *const colours[] = {
    "#1f77b4", "#d62728", "#2ca02c", "#ff7f0e", "#9467bd",
    "#8c564b", "#e377c2", "#17becf", "#bcbd22", "#7f7f7f",
};

std::string decimal(double value)
{
    char text[64];
    const auto end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 1).ptr;
    return {text, end};
}

std::string fixed(float value)
{
    char text[maxFixedLength];
    return {text, appendFixed(text, value)};
}

std::string coordinates(TouchPosition p, const char *separator = " ")
{
    return decimal(p.x) + separator + decimal(p.y);
}

double distance(TouchPosition a, TouchPosition b)
{
    return std::hypot(b.x - a.x, b.y - a.y);
}

/** 1, 2 or 5 times a power of ten, so that @p duration has at most maxTicks of them. */
quint32 tickStep(quint32 duration)
{
    for (quint64 power = 1;; power *= 10) {
        for (const quint64 step : {power, 2 * power, 5 * power}) {
            if (duration / step <= maxTicks) {
                return quint32(step);
            }
        }
    }
}

struct Stop
{
    quint32 time;
    TouchPosition position;
};

/** What one pointer does between going down and coming up. */
using Run = std::vector<Stop>;

struct Track
{
    std::vector<Run> runs;
    std::size_t lastSample = 0;
};

class Bounds
{
public:
    explicit Bounds(TouchPosition corner) : m_high(corner) {}
    void add(TouchPosition p)
    {
        m_low = {std::min(m_low.x, p.x), std::min(m_low.y, p.y)};
        m_high = {std::max(m_high.x, p.x), std::max(m_high.y, p.y)};
    }
    TouchPosition low() const { return m_low; }
    double width() const { return m_high.x - m_low.x; }
    double height() const { return m_high.y - m_low.y; }

private:
    TouchPosition m_low;
    TouchPosition m_high;
};

class Picture
{
public:
    explicit Picture(const TouchBuilder::MultiTouchInfo &gesture)
        : m_gesture(gesture), m_bounds({gesture.areaWidth, gesture.areaHeight})
    {
        for (std::size_t i = 0; i < gesture.samples.size(); ++i) {
            for (const TouchBuilder::Point &point : gesture.samples[i].points) {
                addStop(i, point);
            }
        }
        const double longer = std::max({m_bounds.width(), m_bounds.height(), 1e-3});
        m_scale = longerSide / longer;
    }

    double width() const
    {
        const TouchLabel text({}, caption().size());
        return std::max(m_bounds.width() * m_scale, 2 * text.half.x) + 2 * margin;
    }
    double height() const { return m_bounds.height() * m_scale + 2 * margin + captionHeight; }

    /** The picture as a group that begins at @p top. */
    void append(std::string *out, double top) const
    {
        *out += "<g transform='translate(0 " + decimal(top) + ")'>\n";
        *out += "<text x='" + decimal(margin) + "' y='" + decimal(captionHeight) + "'>" + caption()
            + "</text>\n";
        appendArea(out);
        TouchLabelSpace space(width(), height(), captionHeight + baseline);
        std::size_t index = 0;
        for (const qint32 pointer : m_order) {
            appendTrack(out, index++, pointer, &space);
        }
        appendNumbers(out, &space);
        appendTimes(out, &space);
        *out += "</g>\n";
    }

private:
    /** The fingers that touch at the same time, at most. */
    std::size_t numFingers() const
    {
        std::size_t result = 0;
        for (const TouchBuilder::Sample &sample : m_gesture.samples) {
            result = std::max(result, sample.points.size());
        }
        return result;
    }

    void addStop(std::size_t sample, const TouchBuilder::Point &point)
    {
        float x = point.x;
        float y = point.y;
        if (m_gesture.matrixSet) {
            applyMatrix(m_gesture.matrix, &x, &y);
        }
        if (!std::isfinite(x) || !std::isfinite(y)) {
            return;
        }
        const auto found = m_tracks.try_emplace(point.pointer);
        Track &track = found.first->second;
        if (found.second) {
            m_order.push_back(point.pointer);
        }
        if (track.runs.empty() || track.lastSample + 1 < sample) {
            track.runs.emplace_back();
        }
        track.lastSample = sample;
        const quint32 time = appliedSpeed(m_gesture, m_gesture.samples[sample].timestamp);
        track.runs.back().push_back({time, {x, y}});
        m_bounds.add({x, y});
        m_duration = std::max(m_duration, time);
    }

    TouchPosition placed(TouchPosition p) const
    {
        return {(p.x - m_bounds.low().x) * m_scale + margin,
                (p.y - m_bounds.low().y) * m_scale + margin + captionHeight};
    }

    std::string caption() const
    {
        const std::size_t fingers = numFingers();
        return fixed(m_gesture.areaWidth) + " x " + fixed(m_gesture.areaHeight) + " "
            + touchUnitName(m_gesture.unit) + ", " + std::to_string(fingers)
            + (fingers == 1 ? " finger, " : " fingers, ") + std::to_string(m_duration) + " ms";
    }

    void appendArea(std::string *out) const
    {
        const TouchPosition corner = placed({0, 0});
        *out += "<rect x='" + decimal(corner.x) + "' y='" + decimal(corner.y) + "' width='"
            + decimal(m_gesture.areaWidth * m_scale) + "' height='"
            + decimal(m_gesture.areaHeight * m_scale) + "' fill='#fff' stroke='#999'/>\n";
    }

    static const char *colourOf(std::size_t index) { return colours[index % std::size(colours)]; }

    void appendTrack(std::string *out, std::size_t index, qint32 pointer,
                     TouchLabelSpace *space) const
    {
        const std::string colour = colourOf(index);
        const Track &track = m_tracks.at(pointer);
        *out += "<g stroke='" + colour + "' fill='none'>\n<path stroke-width='2' d='";
        for (const Run &run : track.runs) {
            appendRun(out, run, space);
        }
        *out += "'/>\n";
        for (const Run &run : track.runs) {
            for (const Tick &tick : ticks(run)) {
                appendTick(out, tick);
            }
            appendMarks(out, run, colour, space);
        }
        *out += "</g>\n";
    }

    /** The way without the points that nobody could tell apart. */
    void appendRun(std::string *out, const Run &run, TouchLabelSpace *space) const
    {
        TouchPosition last = placed(run.front().position);
        *out += "M" + coordinates(last);
        for (const Stop &stop : run) {
            const TouchPosition p = placed(stop.position);
            if (&stop != &run.back() && distance(last, p) < shortestStep) {
                continue;
            }
            *out += "L" + coordinates(p);
            space->addLine(last, p);
            last = p;
        }
    }

    /** A round time, where the finger is then, and the direction across its way. */
    struct Tick
    {
        quint64 time;
        TouchPosition position;
        TouchPosition across;
    };

    std::vector<Tick> ticks(const Run &run) const
    {
        std::vector<Tick> result;
        const quint64 step = tickStep(m_duration);
        TouchPosition last = placed(run.front().position);
        quint64 due = (run.front().time / step + 1) * step;
        for (std::size_t i = 1; i < run.size(); ++i) {
            for (; due <= run[i].time; due += step) {
                const TouchPosition from = placed(run[i - 1].position);
                const TouchPosition to = placed(run[i].position);
                const double u = double(due - run[i - 1].time) / (run[i].time - run[i - 1].time);
                const TouchPosition p{from.x + u * (to.x - from.x), from.y + u * (to.y - from.y)};
                const double length = distance(from, to);
                if (distance(last, p) < shortestTickDistance || length == 0) {
                    continue;
                }
                result.push_back({due, p, {(to.y - from.y) / length, (from.x - to.x) / length}});
                last = p;
            }
        }
        return result;
    }

    static void appendTick(std::string *out, const Tick &tick)
    {
        const TouchPosition &p = tick.position;
        const double x = tick.across.x * tickLength;
        const double y = tick.across.y * tickLength;
        *out += "<line x1='" + coordinates({p.x - x, p.y - y}, "' y1='") + "' x2='"
            + coordinates({p.x + x, p.y + y}, "' y2='") + "'/>\n";
    }

    /** A disc where the pointer goes down, a ring where it comes up. */
    void appendMarks(std::string *out, const Run &run, const std::string &colour,
                     TouchLabelSpace *space) const
    {
        const TouchPosition start = placed(run.front().position);
        const TouchPosition end = placed(run.back().position);
        *out +=
            "<circle r='3.5' fill='" + colour + "' cx='" + coordinates(start, "' cy='") + "'/>\n";
        *out +=
            "<circle r='" + decimal(markRadius) + "' cx='" + coordinates(end, "' cy='") + "'/>\n";
        for (const TouchPosition &p : {start, end}) {
            space->addLine({p.x - markRadius, p.y}, {p.x + markRadius, p.y});
            space->addLine({p.x, p.y - markRadius}, {p.x, p.y + markRadius});
        }
    }

    /** The number of each pointer beside the places where it goes down. */
    void appendNumbers(std::string *out, TouchLabelSpace *space) const
    {
        std::size_t index = 0;
        for (const qint32 pointer : m_order) {
            const std::string style = std::string("font-weight='bold' fill='") + colourOf(index++);
            const std::string text = std::to_string(pointer);
            for (const Run &run : m_tracks.at(pointer).runs) {
                appendText(out, space, numberPlaces(placed(run.front().position), text.size()),
                           style, text);
            }
        }
    }

    static std::vector<TouchLabel> numberPlaces(TouchPosition p, std::size_t length)
    {
        std::vector<TouchLabel> places;
        const double x = TouchLabel({}, length).half.x + labelGap;
        for (const double far : {0, 8, 16}) {
            for (const double dy : {1, -1, 0}) {
                for (const double dx : {-1, 1, 0}) {
                    places.emplace_back(
                        TouchPosition{p.x + dx * (markRadius + x + far), p.y + dy * (8 + far)},
                        length);
                }
            }
        }
        return places;
    }

    /** The first finger tells the times of the ticks. */
    void appendTimes(std::string *out, TouchLabelSpace *space) const
    {
        if (m_order.empty()) {
            return;
        }
        for (const Run &run : m_tracks.at(m_order.front()).runs) {
            for (const Tick &tick : ticks(run)) {
                const std::string text = std::to_string(tick.time);
                appendText(out, space, timePlaces(tick, text.size()), "fill='#555", text);
            }
        }
    }

    /** To either side of the way, clear of the tick. */
    static std::vector<TouchLabel> timePlaces(const Tick &tick, std::size_t length)
    {
        const TouchPosition half = TouchLabel({}, length).half;
        const TouchPosition &a = tick.across;
        const double clear =
            tickLength + labelGap + std::abs(a.x) * half.x + std::abs(a.y) * half.y;
        std::vector<TouchLabel> places;
        for (const double side : {clear, -clear}) {
            places.emplace_back(
                TouchPosition{tick.position.x + a.x * side, tick.position.y + a.y * side}, length);
        }
        return places;
    }

    /** Nothing when there is no room for the text. */
    static void appendText(std::string *out, TouchLabelSpace *space,
                           const std::vector<TouchLabel> &places, const std::string &style,
                           const std::string &text)
    {
        if (const TouchLabel *label = space->place(places)) {
            *out += "<text text-anchor='middle' " + style + "' x='"
                + coordinates({label->middle.x, label->middle.y + baseline}, "' y='") + "'>" + text
                + "</text>\n";
        }
    }

    const TouchBuilder::MultiTouchInfo &m_gesture;
    Bounds m_bounds;
    double m_scale = 1;
    quint32 m_duration = 0;
    std::map<qint32, Track> m_tracks;
    std::vector<qint32> m_order; ///< pointers as they first go down
};

std::string document(const std::vector<TouchBuilder::MultiTouchInfo> &gestures)
{
    std::string groups;
    double width = 2 * margin;
    double height = 0;
    for (const auto &gesture : gestures) {
        const Picture picture(gesture);
        picture.append(&groups, height);
        width = std::max(width, picture.width());
        height += picture.height();
    }
    const std::string size[] = {decimal(width), decimal(std::max(height, 2 * margin))};
    return "<svg xmlns='http://www.w3.org/2000/svg' width='" + size[0] + "' height='" + size[1]
        + "' viewBox='0 0 " + size[0] + " " + size[1]
        + "' font-family='sans-serif' font-size='10'>\n" + groups + "</svg>\n";
}

} // namespace

std::string TouchBuilder::MultiTouchInfo::toSvg() const
{
    return document({*this});
}

std::string TouchBuilder::toSvg() const
{
    std::vector<MultiTouchInfo> shown = d->gestures;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        if (!shown[i].samples.empty()) {
            continue;
        }
        // A drawing that cannot be sampled yet is an empty area.
        std::vector<Sample> samples;
        if (sampleDrawing(d->drawings[i], defaultInterval, &samples, nullptr)) {
            shown[i].samples = std::move(samples);
        }
    }
    return document(shown);
}

} // namespace Vantrel
