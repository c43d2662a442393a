#include "objectmodel/diagnostics_p.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace Vantrel {

void printDiagnostic(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
}

void fatalError(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    std::fputc('\n', stderr);
    std::abort();
}

} // namespace Vantrel
