#ifndef VANTREL_PRIMITIVEIDS_H
#define VANTREL_PRIMITIVEIDS_H

namespace Vantrel {

/** The class ids that are the same in every process. */
namespace PrimitiveId {

enum {
    Short = 0,
    Int = 1,
    Long = 2,
    Bool = 3,
    Char = 4,
    Double = 5,
    Int64 = 6,
    Void = 7,
    Undefined = 8,
    Global = 9
};

} // namespace PrimitiveId

} // namespace Vantrel

#endif // VANTREL_PRIMITIVEIDS_H
