#ifndef VANTREL_SERIALIZABLE_H
#define VANTREL_SERIALIZABLE_H

#include "objectmodel/export.h"

class QDataStream;

namespace Vantrel {

/**
 * What can be written to and read from the object-model stream. The byte order
 * and the version of the stream are the caller's. A reader that gives up says
 * so in the status of the stream.
 */
class VANTREL_EXPORT Serializable
{
public:
    virtual ~Serializable();
    virtual void writeObject(QDataStream &stream) const = 0;
    virtual void readObject(QDataStream &stream) = 0;

protected:
    Serializable() = default;
    Serializable(const Serializable &) = default;
    Serializable &operator=(const Serializable &) = default;
};

} // namespace Vantrel

#endif // VANTREL_SERIALIZABLE_H
