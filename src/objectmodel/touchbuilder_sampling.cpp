#include "objectmodel/touchbuilder_p.h"

#include <algorithm>

namespace Vantrel {

namespace {

constexpr std::size_t maxPoints = 1000000;

double interpolate(double a, double b, double u)
{
    return (1 - u) * a + u * b; // exact at both ends
}

TouchPosition interpolate(TouchPosition a, TouchPosition b, double u)
{
    return {interpolate(a.x, b.x, u), interpolate(a.y, b.y, u)};
}

/** Follows one stroke through times that never fall. */
class Finger
{
public:
    Finger(const TouchStroke &stroke, qint32 pointer) : m_stroke(&stroke), m_pointer(pointer) {}

    qint32 pointer() const { return m_pointer; }
    std::int64_t end() const { return m_stroke->end(); }

    TouchBuilder::Point at(std::int64_t time)
    {
        const TouchPosition position = positionAt(time);
        return {m_pointer,          toFloat(position.x), toFloat(position.y),
                m_stroke->pressure, m_stroke->size,      TouchBuilder::UnknownState};
    }

private:
    TouchPosition positionAt(std::int64_t time)
    {
        const auto &movements = m_stroke->movements;
        while (m_current + 1 < movements.size() && movements[m_current].end <= time) {
            ++m_current;
        }
        const TouchMovement *previous = m_current > 0 ? &movements[m_current - 1] : nullptr;
        const TouchMovement &movement = movements[m_current];
        const std::int64_t begin = previous ? previous->end : m_stroke->start;
        if (time >= movement.end) {
            return movement.curve.target;
        }
        return pointOnCurve(previous ? previous->curve.target : m_stroke->origin, movement.curve,
                            double(time - begin) / double(movement.end - begin));
    }

    const TouchStroke *m_stroke;
    qint32 m_pointer;
    std::size_t m_current = 0;
};

/** The moments for which samples are due, one after the other. */
class DueTimes
{
public:
    DueTimes(const std::vector<TouchStroke> &strokes, int interval) : m_interval(interval)
    {
        for (const TouchStroke &stroke : strokes) {
            m_events.push_back(stroke.start);
            for (const TouchMovement &movement : stroke.movements) {
                m_events.push_back(movement.end);
            }
        }
        std::sort(m_events.begin(), m_events.end());
    }

    /** False after the last end of a movement. */
    bool next(std::int64_t *time)
    {
        if (m_nextEvent == m_events.size()) {
            return false;
        }
        *time = std::min(m_events[m_nextEvent], m_nextMultiple);
        while (m_nextEvent < m_events.size() && m_events[m_nextEvent] == *time) {
            ++m_nextEvent;
        }
        if (m_nextMultiple == *time) {
            m_nextMultiple += m_interval;
        }
        return true;
    }

private:
    std::vector<std::int64_t> m_events;
    std::size_t m_nextEvent = 0;
    std::int64_t m_interval;
    std::int64_t m_nextMultiple = 0;
};

class Sampler
{
public:
    Sampler(const TouchDrawing &drawing, std::vector<TouchBuilder::Sample> *samples)
        : m_drawing(drawing), m_samples(samples)
    {
        for (std::size_t i = 0; i < drawing.strokes.size(); ++i) {
            m_waiting.emplace_back(drawing.strokes[i], qint32(i));
        }
        std::reverse(m_waiting.begin(), m_waiting.end());
        std::stable_sort(m_waiting.begin(), m_waiting.end(), [&](const Finger &a, const Finger &b) {
            return strokeOf(a).start > strokeOf(b).start;
        });
    }

    bool run(int interval, std::string *error)
    {
        DueTimes dueTimes(m_drawing.strokes, std::max(interval, 1));
        for (std::int64_t time = 0; dueTimes.next(&time);) {
            putDown(time);
            m_numPoints += m_touching.size();
            if (m_numPoints > maxPoints) {
                *error = "Too many samples";
                return false;
            }
            if (!m_touching.empty()) {
                addSample(time);
            } else if (!isPause(time)) {
                *error = "No pointers down at " + std::to_string(time) + " ms";
                return false;
            }
        }
        return true;
    }

private:
    const TouchStroke &strokeOf(const Finger &finger) const
    {
        return m_drawing.strokes[std::size_t(finger.pointer())];
    }

    /** Moves the fingers that start at @p time to their place among those that touch. */
    void putDown(std::int64_t time)
    {
        while (!m_waiting.empty() && strokeOf(m_waiting.back()).start <= time) {
            const auto place = std::upper_bound(
                m_touching.begin(), m_touching.end(), m_waiting.back(),
                [](const Finger &a, const Finger &b) { return a.pointer() < b.pointer(); });
            m_touching.insert(place, m_waiting.back());
            m_waiting.pop_back();
        }
    }

    /** Adds a point for each finger that touches, and lifts those whose stroke ends now. */
    void addSample(std::int64_t time)
    {
        m_samples->push_back({quint32(time), {}});
        auto &points = m_samples->back().points;
        points.reserve(m_touching.size());
        for (Finger &finger : m_touching) {
            points.push_back(finger.at(time));
        }
        const auto isOver = [time](const Finger &finger) { return finger.end() <= time; };
        m_touching.erase(std::remove_if(m_touching.begin(), m_touching.end(), isOver),
                         m_touching.end());
    }

    bool isPause(std::int64_t time) const
    {
        const auto pause =
            std::lower_bound(m_drawing.pauses.begin(), m_drawing.pauses.end(), time,
                             [](const TouchPause &p, std::int64_t t) { return p.end <= t; });
        return pause != m_drawing.pauses.end() && time > pause->begin;
    }

    const TouchDrawing &m_drawing;
    std::vector<TouchBuilder::Sample> *m_samples;
    std::vector<Finger> m_waiting; ///< by start, the next one last
    std::vector<Finger> m_touching; ///< by pointer
    std::size_t m_numPoints = 0;
};

/** A stroke that takes no time would be a finger that goes down and never comes up. */
bool allStrokesMove(const TouchDrawing &drawing)
{
    return std::all_of(drawing.strokes.begin(), drawing.strokes.end(),
                       [](const TouchStroke &stroke) { return stroke.end() > stroke.start; });
}

} // namespace

TouchPosition pointOnCurve(TouchPosition origin, const TouchCurve &curve, double u)
{
    // De Casteljau's construction over degree + 1 control points.
    TouchPosition p[4] = {origin, curve.controls[0], curve.controls[1], curve.target};
    p[curve.degree] = curve.target;
    for (int left = curve.degree; left > 0; --left) {
        for (int i = 0; i < left; ++i) {
            p[i] = interpolate(p[i], p[i + 1], u);
        }
    }
    return p[0];
}

bool sampleDrawing(const TouchDrawing &drawing, int interval,
                   std::vector<TouchBuilder::Sample> *samples, std::string *error)
{
    std::string unused;
    std::string *reason = error ? error : &unused;
    if (!allStrokesMove(drawing)) {
        *reason = "Stroke added without a movement";
        return false;
    }
    return Sampler(drawing, samples).run(interval, reason);
}

} // namespace Vantrel
