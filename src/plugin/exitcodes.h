#ifndef VANTREL_EXITCODES_H
#define VANTREL_EXITCODES_H

namespace Vantrel {

/**
 * With what the launcher ends, and an application whose plan has failed. Those
 * of scripts and applications stand beside them: a script gives the number that
 * it returned, and where the plan went well the application's own code is
 * passed on. An application that a signal ended gives 128 and the signal.
 */
namespace ExitCode {

constexpr int success = 0;
/** A name matches nothing; the doctor sees no way in. */
constexpr int negative = 1;
constexpr int usage = 2;
/** The time was over before the plan was done. */
constexpr int timeout = 124;
/** The plan failed, or the application ended before it was done. */
constexpr int planFailed = 125;
/** The application cannot be executed, or never loaded the plugin. */
constexpr int notOpened = 126;
constexpr int notFound = 127;
constexpr int signalBase = 128;

} // namespace ExitCode
} // namespace Vantrel

#endif // VANTREL_EXITCODES_H
