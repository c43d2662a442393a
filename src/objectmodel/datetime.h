#ifndef VANTREL_DATETIME_H
#define VANTREL_DATETIME_H

#include "objectmodel/export.h"
#include "objectmodel/shared.h"

#include <iosfwd>

namespace Vantrel {

class Class;
class Object;

/** A date and a time of day, in the calendar of whoever made it. A part that is not known is -1. */
struct VANTREL_EXPORT DateTime
{
    DateTime() = default;
    DateTime(int year, int month, int day);
    DateTime(int year, int month, int day, int hour, int minute, int second);

    int year = -1;
    int month = -1;
    int day = -1;
    int hour = -1;
    int minute = -1;
    int second = -1;
};

/**
 * Writes for example 2024/03/5/9/7/0: the year with four digits, the month
 * with two, the rest as it is. Neither the formatting state nor the locale of
 * the stream has a say, and the state stays as it was.
 */
VANTREL_EXPORT std::ostream &operator<<(std::ostream &stream, const DateTime &value);
/**
 * Reads six decimal numbers with one character, whichever, between each two.
 * When one is missing the stream fails and @p value stays as it was.
 */
VANTREL_EXPORT std::istream &operator>>(std::istream &stream, DateTime &value);

/** The class "DateTime" of the namespace "UiTypes"; null when there is none. */
VANTREL_EXPORT const Class *objectModelDateTimeClass();
/** A new object that owns a copy of @p value. Null, with the last error set, without the class. */
VANTREL_EXPORT SharedPtr<Object> wrapDateTime(const DateTime &value);
/** @p object must be a DateTime; when it is null, or has no data, nothing is known. */
VANTREL_EXPORT DateTime unwrapDateTime(const SharedPtr<Object> &object);

} // namespace Vantrel

#endif // VANTREL_DATETIME_H
