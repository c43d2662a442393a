#ifndef VANTREL_DIAGNOSTICS_P_H
#define VANTREL_DIAGNOSTICS_P_H

namespace Vantrel {

/**
 * Writes one printf-style diagnostic to the standard error stream. The format
 * ends in a newline. Every diagnostic of the library goes through here.
 */
__attribute__((format(printf, 1, 2))) void printDiagnostic(const char *format, ...);

/**
 * Reports a programming error on the standard error stream, with a newline
 * added, and ends the process with abort().
 */
[[noreturn]] __attribute__((format(printf, 1, 2))) void fatalError(const char *format, ...);

} // namespace Vantrel

#endif // VANTREL_DIAGNOSTICS_P_H
