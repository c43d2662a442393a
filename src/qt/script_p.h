#ifndef VANTREL_QT_SCRIPT_P_H
#define VANTREL_QT_SCRIPT_P_H

#include <QString>

#include <functional>

namespace Vantrel::QtWrapper {

/**
 * Thrown by a wait to end a script that goes on after the application has
 * ended. Whoever catches everything around a wait must let it pass.
 */
struct CutOff
{
};

/** How a pause of serveEvents() went. */
struct Pause
{
    /** The application ends, so no event will come any more. */
    bool isQuitting = false;
    /** How much longer than wanted it was, because of a modal dialog that opened meanwhile. */
    int heldFor = 0;
    /** What the dialog is called. */
    QString heldBy;
};

/**
 * Lets the application go on for @p milliseconds; 0 is one turn of its event
 * loop. A script is suspended meanwhile. Elsewhere, and in a loop that the
 * script itself has opened, it is a nested loop.
 */
Pause serveEvents(int milliseconds);

enum class Delivery {
    Done, ///< it has returned
    Running, ///< it serves events itself: a modal dialog, a menu or a drag
    Queued, ///< it will run after the caller has returned to the event loop
    Quitting ///< it did not run, because the application ends
};

/**
 * Runs @p function in the event loop of the application, so that what it opens
 * does not hold up the script. Returns when it has returned or serves events
 * itself. Outside a script it is only queued, in the order of the calls.
 */
Delivery deliver(std::function<void()> function);

/** Text of the error when a wait ended because of Pause::isQuitting. */
QString quittingText();

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_SCRIPT_P_H
