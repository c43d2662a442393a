#include "objectmodel/touchbuilder_p.h"

#include <algorithm>
#include <charconv>
#include <cmath>
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
constexpr double labelDistance = 16;
constexpr double halfLetter = 3.5;
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

    double width() const { return m_bounds.width() * m_scale + 2 * margin; }
    double height() const { return m_bounds.height() * m_scale + 2 * margin + captionHeight; }

    /** The picture as a group that begins at @p top. */
    void append(std::string *out, double top) const
    {
        *out += "<g transform='translate(0 " + decimal(top) + ")'>\n";
        *out += "<text x='" + decimal(margin) + "' y='" + decimal(captionHeight) + "'>" + caption()
            + "</text>\n";
        appendArea(out);
        std::size_t index = 0;
        for (const qint32 pointer : m_order) {
            appendTrack(out, index++, pointer);
        }
        *out += "</g>\n";
    }

private:
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
        const std::size_t fingers = m_tracks.size();
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

    void appendTrack(std::string *out, std::size_t index, qint32 pointer) const
    {
        const std::string colour = colours[index % (sizeof colours / sizeof *colours)];
        const Track &track = m_tracks.at(pointer);
        *out += "<g stroke='" + colour + "' fill='none'>\n<path stroke-width='2' d='";
        for (const Run &run : track.runs) {
            appendRun(out, run);
        }
        *out += "'/>\n";
        for (const Run &run : track.runs) {
            appendTicks(out, run, index == 0);
        }
        for (const Run &run : track.runs) {
            appendMarks(out, run, colour, std::to_string(pointer));
        }
        *out += "</g>\n";
    }

    /** The way without the points that nobody could tell apart. */
    void appendRun(std::string *out, const Run &run) const
    {
        TouchPosition last = placed(run.front().position);
        *out += "M" + coordinates(last);
        for (const Stop &stop : run) {
            const TouchPosition p = placed(stop.position);
            if (&stop != &run.back() && distance(last, p) < shortestStep) {
                continue;
            }
            *out += "L" + coordinates(p);
            last = p;
        }
    }

    /** Short lines across the way at round times; the first finger tells which. */
    void appendTicks(std::string *out, const Run &run, bool labelled) const
    {
        const quint64 step = tickStep(m_duration);
        TouchPosition last = placed(run.front().position);
        quint64 due = (run.front().time / step + 1) * step;
        for (std::size_t i = 1; i < run.size(); ++i) {
            for (; due <= run[i].time; due += step) {
                const TouchPosition from = placed(run[i - 1].position);
                const TouchPosition to = placed(run[i].position);
                const double u = double(due - run[i - 1].time) / (run[i].time - run[i - 1].time);
                const TouchPosition p{from.x + u * (to.x - from.x), from.y + u * (to.y - from.y)};
                if (distance(last, p) < shortestTickDistance || distance(from, to) == 0) {
                    continue;
                }
                const TouchPosition across{(to.y - from.y) / distance(from, to),
                                           (from.x - to.x) / distance(from, to)};
                appendTick(out, p, across);
                if (labelled) {
                    appendLabel(out, p, across, std::to_string(due));
                }
                last = p;
            }
        }
    }

    static void appendTick(std::string *out, TouchPosition p, TouchPosition across)
    {
        const double x = across.x * tickLength;
        const double y = across.y * tickLength;
        *out += "<line x1='" + coordinates({p.x - x, p.y - y}, "' y1='") + "' x2='"
            + coordinates({p.x + x, p.y + y}, "' y2='") + "'/>\n";
    }

    static void appendLabel(std::string *out, TouchPosition p, TouchPosition across,
                            const std::string &text)
    {
        const TouchPosition place{p.x + across.x * labelDistance,
                                  p.y + across.y * labelDistance + halfLetter};
        *out += "<text stroke='none' fill='#555' text-anchor='middle' x='"
            + coordinates(place, "' y='") + "'>" + text + "</text>\n";
    }

    /** A disc with the pointer's number beside it where it goes down, a ring where it comes up. */
    void appendMarks(std::string *out, const Run &run, const std::string &colour,
                     const std::string &pointer) const
    {
        const TouchPosition start = placed(run.front().position);
        const TouchPosition end = placed(run.back().position);
        *out +=
            "<circle r='3.5' fill='" + colour + "' cx='" + coordinates(start, "' cy='") + "'/>\n";
        *out += "<circle r='6' cx='" + coordinates(end, "' cy='") + "'/>\n";
        *out += "<text stroke='none' font-weight='bold' fill='" + colour + "' x='"
            + coordinates({start.x - 12, start.y + 12}, "' y='") + "'>" + pointer + "</text>\n";
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
