#include "objectmodel/globalobject.h"

#include "objectmodel/inspector.h"

namespace Vantrel {

GlobalClass::GlobalClass() : Class("Global", true)
{
    setNumMethods(0);
    setNumConstructors(0);
    setNumProperties(0);
    setNumEvents(0);
    setNumEnums(0);
}

GlobalClass::~GlobalClass() = default;

} // namespace Vantrel
