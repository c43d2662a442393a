#include "objectmodel/touchbuilder_p.h"
#include "objectmodel/touchbuilder_xmlscan_p.h"

#include <tinyxml.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>

namespace Vantrel {

namespace {

using Sample = TouchBuilder::Sample;
using Point = TouchBuilder::Point;

struct NamedValue
{
    const char *name;
    qint32 value;
};

const NamedValue unitNames[] = {
    {"px", TouchBuilder::Pixel},
    {"mm", TouchBuilder::MilliMeter},
    {"pt", TouchBuilder::LogicalPoint},
};

const NamedValue stateNames[] = {
    {"down", TouchBuilder::Down},
    {"move", TouchBuilder::Move},
    {"up", TouchBuilder::Up},
    {"unknown", TouchBuilder::UnknownState},
};

const char *const versionText = "1.0";
const char *const innerIndent = "  ";

template <std::size_t N>
const char *nameOf(const NamedValue (&table)[N], qint32 value, const char *otherwise)
{
    for (const NamedValue &row : table) {
        if (row.value == value) {
            return row.name;
        }
    }
    return otherwise;
}

/** Collects one line in place, which is much faster than appending piece by piece. */
class Line
{
public:
    Line &text(std::string_view text)
    {
        std::memcpy(m_end, text.data(), text.size());
        m_end += text.size();
        return *this;
    }
    Line &number(float value)
    {
        m_end = appendFixed(m_end, value);
        return *this;
    }
    template <class T>
    Line &integer(T value)
    {
        m_end = std::to_chars(m_end, m_text + sizeof m_text, value).ptr;
        return *this;
    }
    std::string_view view() const { return {m_text, std::size_t(m_end - m_text)}; }

private:
    // The longest line has four numbers, two integers and the names around them.
    char m_text[4 * maxFixedLength + 160];
    char *m_end = m_text;
};

void appendPoint(std::string *out, std::string_view indent, const Point &point)
{
    Line line;
    line.text("  <point pointer='").integer(point.pointer);
    line.text("' x='").number(point.x).text("' y='").number(point.y);
    if (point.pressure >= 0) {
        line.text("' pressure='").number(point.pressure);
    }
    if (point.size >= 0) {
        line.text("' size='").number(point.size);
    }
    line.text("' state='").text(nameOf(stateNames, point.state, "unknown")).text("'/>\n");
    out->append(indent).append(line.view());
}

void appendSample(std::string *out, std::string_view indent, const Sample &sample)
{
    Line line;
    line.text("<sample timestamp='").integer(sample.timestamp).text("'>\n");
    out->append(indent).append(line.view());
    for (const Point &point : sample.points) {
        appendPoint(out, indent, point);
    }
    out->append(indent).append("</sample>\n");
}

void appendHeader(std::string *out, std::string_view indent,
                  const TouchBuilder::MultiTouchInfo &gesture)
{
    Line line;
    line.text("<multi-point area-width='").number(gesture.areaWidth);
    line.text("' area-height='").number(gesture.areaHeight);
    line.text("' unit='").text(touchUnitName(gesture.unit)).text("'>\n");
    out->append(indent).append(line.view());
}

/** About what toXml() writes, to save it from moving megabytes while it grows. */
std::size_t expectedSize(const TouchBuilder::MultiTouchInfo &gesture, std::size_t indent)
{
    std::size_t size = 128 + indent;
    for (const Sample &sample : gesture.samples) {
        size += 2 * indent + 48 + sample.points.size() * (indent + 96);
    }
    return size;
}

/** Replaces the samples by what is written. */
void appendGesture(std::string *out, const std::string &indent, int flags,
                   TouchBuilder::MultiTouchInfo *gesture)
{
    const std::string inner = indent + innerIndent;
    out->reserve(out->size() + expectedSize(*gesture, inner.size()));
    if (flags & 1) {
        appendHeader(out, indent, *gesture);
    }
    for (Sample &sample : gesture->samples) {
        sample.timestamp = appliedSpeed(*gesture, sample.timestamp);
        if (gesture->matrixSet) {
            for (Point &point : sample.points) {
                applyMatrix(gesture->matrix, &point.x, &point.y);
            }
        }
        appendSample(out, inner, sample);
    }
    out->append(indent).append("</multi-point>\n");
}

/** Values may come from a hostile text of any length. */
std::string quoted(const char *value)
{
    constexpr std::size_t longest = 40;
    const std::string text(value);
    return '"' + (text.size() > longest ? text.substr(0, longest) + "..." : text) + '"';
}

/** Reads what a document holds. Elements in unknown ones, and those in a point, are skipped. */
class Reader : public XmlHandler
{
public:
    bool startElement(const TiXmlElement &element, int depth, std::string *error) override
    {
        if (depth > m_numKnown || depth >= int(std::size(levels))) {
            return true;
        }
        if (element.ValueStr() == levels[depth].name) {
            m_numKnown = depth + 1;
            return readKnown(element, levels[depth].read, error);
        }
        if (depth == 0) {
            *error = "the root element must be \"gestures\"";
        }
        return depth > 0;
    }

    void endElement(int depth) override { m_numKnown = std::min(m_numKnown, depth); }

    std::vector<TouchBuilder::MultiTouchInfo> gestures;

private:
    struct Level
    {
        const char *name;
        bool (Reader::*read)(const TiXmlElement &);
    };
    static const Level levels[4];

    bool readKnown(const TiXmlElement &element, bool (Reader::*read)(const TiXmlElement &),
                   std::string *error)
    {
        if ((this->*read)(element)) {
            return true;
        }
        *error = "element \"" + element.ValueStr() + "\", " + m_error;
        return false;
    }

    bool readRoot(const TiXmlElement &element)
    {
        const char *version = required(element, "version");
        return version
            && (std::strcmp(version, versionText) == 0
                || reject("version", version, "must be \"1.0\""));
    }

    bool readGesture(const TiXmlElement &element)
    {
        float width = 0;
        float height = 0;
        qint32 unit = 0;
        if (!readArea(element, "area-width", &width) || !readArea(element, "area-height", &height)
            || !readName(element, "unit", unitNames, &unit)) {
            return false;
        }
        gestures.emplace_back(width, height, TouchBuilder::Unit(unit));
        return true;
    }

    bool readSample(const TiXmlElement &element)
    {
        auto &samples = gestures.back().samples;
        Sample sample;
        if (!readNumber(element, "timestamp", &sample.timestamp)) {
            return false;
        }
        if (!samples.empty() && sample.timestamp < samples.back().timestamp) {
            return reject("timestamp", element.Attribute("timestamp"),
                          "must not be below the one before");
        }
        samples.push_back(std::move(sample));
        return true;
    }

    bool readPoint(const TiXmlElement &element)
    {
        Point point;
        if (!readNumber(element, "pointer", &point.pointer) || !readNumber(element, "x", &point.x)
            || !readNumber(element, "y", &point.y)
            || !readOptional(element, "pressure", &point.pressure)
            || !readOptional(element, "size", &point.size)
            || !readName(element, "state", stateNames, &point.state)) {
            return false;
        }
        gestures.back().samples.back().points.push_back(point);
        return true;
    }

    bool readArea(const TiXmlElement &element, const char *attribute, float *value)
    {
        // An area below 0.005 is written as 0.00, so that must be readable.
        return readNumber(element, attribute, value)
            && (*value >= 0
                || reject(attribute, element.Attribute(attribute), "must not be negative"));
    }

    bool readOptional(const TiXmlElement &element, const char *attribute, float *value)
    {
        return !element.Attribute(attribute) || readNumber(element, attribute, value);
    }

    /** The whole attribute as a number of the type T, whatever the locale. */
    template <class T>
    bool readNumber(const TiXmlElement &element, const char *attribute, T *value)
    {
        const char *text = required(element, attribute);
        if (!text) {
            return false;
        }
        const char *end = text + std::strlen(text);
        const auto result = std::from_chars(text, end, *value);
        if (result.ec == std::errc::result_out_of_range) {
            return reject(attribute, text, "is out of range");
        }
        if (result.ec != std::errc() || result.ptr != end || !std::isfinite(double(*value))) {
            return reject(attribute, text,
                          std::numeric_limits<T>::is_integer ? "is not a whole number"
                                                             : "is not a number");
        }
        return true;
    }

    template <std::size_t N>
    bool readName(const TiXmlElement &element, const char *attribute, const NamedValue (&table)[N],
                  qint32 *value)
    {
        const char *text = required(element, attribute);
        if (!text) {
            return false;
        }
        std::string names;
        for (const NamedValue &row : table) {
            if (std::strcmp(row.name, text) == 0) {
                *value = row.value;
                return true;
            }
            names += names.empty() ? "" : ", ";
            names += row.name;
        }
        return reject(attribute, text, "must be one of " + names);
    }

    const char *required(const TiXmlElement &element, const char *attribute)
    {
        const char *text = element.Attribute(attribute);
        if (!text) {
            m_error = std::string("attribute \"") + attribute + "\" is missing";
        }
        return text;
    }

    bool reject(const char *attribute, const char *value, const std::string &why)
    {
        m_error = std::string("attribute \"") + attribute + "\" " + why + ": " + quoted(value);
        return false;
    }

    int m_numKnown = 0; ///< open elements from the root on that are known
    std::string m_error;
};

const Reader::Level Reader::levels[4] = {
    {"gestures", &Reader::readRoot},
    {"multi-point", &Reader::readGesture},
    {"sample", &Reader::readSample},
    {"point", &Reader::readPoint},
};

} // namespace

char *appendFixed(char *out, float value)
{
    char *const end = out + maxFixedLength;
    // A float times 100 is exact in a double, so that this common case, which
    // is several times as fast, rounds to the same digits as the general one.
    const double hundredths = std::abs(double(value)) * 100;
    if (!(hundredths < 1e15)) {
        return std::to_chars(out, end, value, std::chars_format::fixed, 2).ptr;
    }
    auto whole = std::uint64_t(hundredths);
    const double rest = hundredths - double(whole);
    if (rest > 0.5 || (rest == 0.5 && whole % 2 != 0)) {
        ++whole;
    }
    if (std::signbit(value)) {
        *out++ = '-';
    }
    out = std::to_chars(out, end, whole / 100).ptr;
    *out++ = '.';
    *out++ = char('0' + whole / 10 % 10);
    *out++ = char('0' + whole % 10);
    return out;
}

const char *touchUnitName(TouchBuilder::Unit unit)
{
    return nameOf(unitNames, unit, unitNames[0].name);
}

quint32 appliedSpeed(const TouchBuilder::MultiTouchInfo &gesture, quint32 timestamp)
{
    if (!gesture.speedFactorSet) {
        return timestamp;
    }
    const double scaled = double(gesture.speedFactor) * (timestamp + 0.5);
    if (!(scaled > 0)) {
        return 0;
    }
    return scaled < double(lastTouchTime) ? quint32(scaled) : quint32(lastTouchTime);
}

void applyMatrix(const TouchBuilder::Matrix &m, float *x, float *y)
{
    const double oldX = *x;
    const double oldY = *y;
    *x = toFloat(m.a * oldX + m.b * oldY + m.tx);
    *y = toFloat(m.c * oldX + m.d * oldY + m.ty);
}

std::string TouchBuilder::MultiTouchInfo::toXml(const char *indent, int flags)
{
    std::string out;
    appendGesture(&out, indent ? indent : "", flags, this);
    return out;
}

std::string TouchBuilder::toXml()
{
    std::string out = "<gestures version='1.0'>\n";
    for (MultiTouchInfo &gesture : d->gestures) {
        appendGesture(&out, innerIndent, 1, &gesture);
    }
    return out += "</gestures>\n";
}

bool TouchBuilder::fromXml(const std::string &text, std::string *error)
{
    Reader reader;
    std::string reason;
    if (!scanXml(text, &reader, &reason)) {
        if (error) {
            *error = "Error in XML data: <anonymous xml document>, " + reason;
        }
        return false;
    }
    d->drawings.clear();
    for (const MultiTouchInfo &gesture : reader.gestures) {
        d->drawings.emplace_back(gesture);
    }
    d->gestures = std::move(reader.gestures);
    return true;
}

} // namespace Vantrel
