#ifndef VANTREL_DOCTOR_H
#define VANTREL_DOCTOR_H

#include "launcher/examination.h"
#include "launcher/launch.h"

namespace Vantrel {

/** For people, a line for each finding and one for what to do about it. */
QString describe(const Finding &finding);

/**
 * Examines the application, opens it if nothing speaks against that, and
 * prints what was seen.
 * @param options without a plan, log and plugin directory.
 * @return the exit code.
 */
int runDoctor(LaunchOptions options, const QString &directory);

} // namespace Vantrel

#endif // VANTREL_DOCTOR_H
