#include "objectmodel/serializable.h"

namespace Vantrel {

Serializable::~Serializable() = default;

} // namespace Vantrel
