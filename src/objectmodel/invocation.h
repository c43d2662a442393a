#ifndef VANTREL_INVOCATION_H
#define VANTREL_INVOCATION_H

#include "objectmodel/export.h"
#include "objectmodel/shared.h"

#include <QString>

namespace Vantrel {

class Method;
class Object;
class ObjectList;

/**
 * Whether @p arguments are as many as @p method declares. A mismatch is
 * reported as a diagnostic and as the last error; @p className names the
 * class in it.
 */
VANTREL_EXPORT bool verifyMethodArgumentCount(const QString &className, const Method *method,
                                              const ObjectList &arguments);

/**
 * Whether @p method may be called on @p object: a static method on anything
 * that is not invalidated, any other method on an object with data. The last
 * error tells why not.
 */
VANTREL_EXPORT bool verifyMethodInvocation(SharedPtr<Object> object, const Method *method);

} // namespace Vantrel

#endif // VANTREL_INVOCATION_H
