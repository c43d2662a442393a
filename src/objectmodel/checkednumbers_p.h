#ifndef VANTREL_CHECKEDNUMBERS_P_H
#define VANTREL_CHECKEDNUMBERS_P_H

#include "objectmodel/shared.h"

#include <optional>

namespace Vantrel {

class Object;

// For arguments that must not become 0 when they are no number, as those of
// other calls do; see Argument::Unconverted().

/** The number that @p value is or spells; nothing for what is none, NaN or infinite. */
std::optional<double> checkedNumber(const SharedPtr<Object> &value);
/** Likewise without the fraction; nothing for what does not fit 32 bits. */
std::optional<int> checkedInteger(const SharedPtr<Object> &value);

} // namespace Vantrel

#endif // VANTREL_CHECKEDNUMBERS_P_H
