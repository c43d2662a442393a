#ifndef VANTREL_GLOBALOBJECT_H
#define VANTREL_GLOBALOBJECT_H

#include "objectmodel/class.h"

namespace Vantrel {

/** The class of what scripts see without an object: global functions, properties and enums. */
class VANTREL_EXPORT GlobalClass : public Class
{
public:
    GlobalClass();
    ~GlobalClass() override;
};

} // namespace Vantrel

#endif // VANTREL_GLOBALOBJECT_H
