#ifndef VANTREL_LAUNCH_H
#define VANTREL_LAUNCH_H

#include "plugin/plan.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace Vantrel {

/** How an application is to be started. */
struct LaunchOptions
{
    /** A program file and its arguments. */
    QString program;
    QStringList arguments;
    Plan plan;
    /** For QT_PLUGIN_PATH. */
    QString pluginDirectory;
    /** On the user's display instead of none. */
    bool isShown = false;
    /** For the whole run, in milliseconds; 0 is without end. */
    int timeout = 0;
    /** Receives what the application writes, with what Qt says about plugins; empty passes all
     * streams on untouched. */
    QString logFile;
    /** Asked when the application takes long to load the plugin: whether it never will. */
    std::function<bool()> isHopeless;
};

/** How it ended. */
struct LaunchResult
{
    enum class End {
        NotStarted,
        Exited,
        Signalled,
        TimedOut, ///< and was killed
        Hopeless, ///< and was killed, as it would never have loaded the plugin
        Interrupted ///< a signal to this process was passed on
    };

    End end = End::NotStarted;
    /** The exit code, or the number of the signal. */
    int number = 0;
    /** Why it was not started. */
    QString error;
    PlanStatus status;
    /** Milliseconds from the start until it was ready (if it was) and until its end. */
    qint64 readyAfter = 0;
    qint64 duration = 0;
};

/**
 * Starts an application with a plan, in a process group of its own, and waits
 * until it has ended; time-outs and signals end the whole group.
 */
LaunchResult launch(const LaunchOptions &options);

} // namespace Vantrel

#endif // VANTREL_LAUNCH_H
