#ifndef VANTREL_NATIVETYPES_P_H
#define VANTREL_NATIVETYPES_P_H

#include "objectmodel/object.h"

#include <vector>

namespace Vantrel {

/**
 * The texts of a list, which keeps them, and a null pointer as their end. Only
 * the attribute of the object tells the length, and native code does not see
 * that. A null text inside the list becomes an empty one.
 */
std::vector<char *> terminatedTexts(const SharedPtr<Object> &list);

} // namespace Vantrel

#endif // VANTREL_NATIVETYPES_P_H
