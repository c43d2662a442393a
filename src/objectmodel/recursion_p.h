#ifndef VANTREL_RECURSION_P_H
#define VANTREL_RECURSION_P_H

#include <QtGlobal>

namespace Vantrel {

/** Counts how deep calls of one kind, told apart by @p Tag, are nested while it lives. */
template <class Tag>
class RecursionDepth
{
public:
    RecursionDepth() { ++depth(); }
    ~RecursionDepth() { --depth(); }

    /** 1 in the outermost call. */
    int value() const { return depth(); }

private:
    Q_DISABLE_COPY(RecursionDepth)
    static int &depth()
    {
        static thread_local int value = 0;
        return value;
    }
};

} // namespace Vantrel

#endif // VANTREL_RECURSION_P_H
