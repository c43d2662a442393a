#include "objectmodel/datetime.h"

#include "objectmodel/reflection_p.h"

#include <istream>
#include <ostream>
#include <string>

namespace Vantrel {

namespace {

/** Zeros go in front of a sign too: -1 with a width of 4 is "00-1". */
std::string padded(int number, std::size_t width)
{
    std::string text = std::to_string(number);
    if (text.size() < width) {
        text.insert(0, width - text.size(), '0');
    }
    return text;
}

constexpr int DateTime::*laterParts[] = {&DateTime::month, &DateTime::day, &DateTime::hour,
                                         &DateTime::minute, &DateTime::second};

} // namespace

DateTime::DateTime(int aYear, int aMonth, int aDay) : year(aYear), month(aMonth), day(aDay) {}

DateTime::DateTime(int aYear, int aMonth, int aDay, int anHour, int aMinute, int aSecond)
    : year(aYear), month(aMonth), day(aDay), hour(anHour), minute(aMinute), second(aSecond)
{}

std::ostream &operator<<(std::ostream &stream, const DateTime &value)
{
    std::string text = padded(value.year, 4) + '/' + padded(value.month, 2);
    for (const int part : {value.day, value.hour, value.minute, value.second}) {
        text += '/' + std::to_string(part);
    }
    stream.width(0);
    return stream << text;
}

std::istream &operator>>(std::istream &stream, DateTime &value)
{
    // Decimal, or "08" would be an octal number to a stream without a base.
    const std::ios_base::fmtflags flags = stream.setf(std::ios_base::dec, std::ios_base::basefield);
    DateTime read;
    stream >> read.year;
    for (const auto part : laterParts) {
        stream.get();
        stream >> read.*part;
    }
    stream.flags(flags);
    if (stream) {
        value = read;
    }
    return stream;
}

const Class *objectModelDateTimeClass()
{
    return uiTypesClass(QStringLiteral("DateTime"));
}

SharedPtr<Object> wrapDateTime(const DateTime &value)
{
    return wrapCopy(objectModelDateTimeClass(), value, ObjectAttribute());
}

DateTime unwrapDateTime(const SharedPtr<Object> &object)
{
    return unwrapCopy<DateTime>(object);
}

} // namespace Vantrel
