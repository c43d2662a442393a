#ifndef VANTREL_FUNCTIONCALLRESULT_H
#define VANTREL_FUNCTIONCALLRESULT_H

#include <QString>

namespace Vantrel {

/** What a toolkit call gave: a value, or the reason why it has none; no reason means success. */
template <class T>
struct FunctionCallResult
{
    T value{};
    QString errorMessage;
};

template <>
struct FunctionCallResult<void>
{
    QString errorMessage;
};

} // namespace Vantrel

#endif // VANTREL_FUNCTIONCALLRESULT_H
