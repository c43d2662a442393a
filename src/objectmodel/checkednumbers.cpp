#include "objectmodel/checkednumbers_p.h"

#include "objectmodel/arguments_p.h"
#include "objectmodel/inspector.h"
#include "objectmodel/members.h"
#include "objectmodel/object.h"
#include "objectmodel/primitivevalue_p.h"

#include <cmath>
#include <limits>

namespace Vantrel {

namespace {

bool isText(const SharedPtr<Object> &value)
{
    return primitiveKind(value->type()) == PrimitiveKind::Char
        && !value->objectAttribute().isValue();
}

/** A class may convert to one kind of number only. */
std::optional<double> converted(const SharedPtr<Object> &value)
{
    for (const int id : {PrimitiveId::Double, PrimitiveId::Int}) {
        const Argument declared(Inspector::self()->type(id));
        if (const SharedPtr<Object> number = adapted(value, declared)) {
            return number->toDouble();
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<double> checkedNumber(const SharedPtr<Object> &value)
{
    if (!value || value->isNull() || !value->isValid()) {
        return std::nullopt;
    }
    if (!isText(value)) {
        const std::optional<double> number = converted(value);
        return number && std::isfinite(*number) ? number : std::nullopt;
    }
    bool ok = false;
    const double number = value->toString().toDouble(&ok);
    return ok && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<int> checkedInteger(const SharedPtr<Object> &value)
{
    using Limits = std::numeric_limits<int>;
    const std::optional<double> number = checkedNumber(value);
    if (!number || *number <= Limits::min() - 1.0 || *number >= Limits::max() + 1.0) {
        return std::nullopt;
    }
    return int(*number);
}

} // namespace Vantrel
