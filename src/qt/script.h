#ifndef VANTREL_QT_SCRIPT_H
#define VANTREL_QT_SCRIPT_H

#include "qt/export.h"

#include <QString>

#include <functional>

namespace Vantrel::QtWrapper {

/*
 * A script is a function that runs beside the event loop of the application, in
 * the same thread but on a stack of its own. Whenever it waits, and every
 * action of a person waits, the application goes on, in whichever event loop it
 * is; so the script can open a modal dialog, answer it and see the call that
 * opened it return. Only one of the two runs at a time.
 *
 * Outside a script waiting means a nested event loop: a modal dialog that the
 * application opens in it must be closed before the wait can return. The same
 * goes for an event loop that a script opens itself.
 *
 * When the application ends while a script waits, that wait and all later ones
 * fail at once, so that the script runs to its end. One that goes on through a
 * hundred failed waits is cut off: the next ones throw, and if it catches that
 * a hundred times too, it is left where it is and nothing on its stack destroyed.
 */

/**
 * Runs @p body as a script and serves events until it has ended. To be called
 * where the application would enter its event loop. An exception that leaves
 * @p body ends it. Dialogs and menus that are open then in event loops of their
 * own are closed, as this could not return before them.
 * @return empty when the body returned, else the reason why it did not: the
 *         text of the exception, or that a script is running already.
 */
VANTREL_QT_EXPORT QString runScript(const std::function<void()> &body);

/**
 * Starts @p body as a script as soon as events are served, and returns at once.
 * @p ended is called in the event loop, with what runScript() would return.
 */
VANTREL_QT_EXPORT void startScript(std::function<void()> body,
                                   std::function<void(const QString &error)> ended = {});

/** Whether the caller is (called by) the body of a script. */
VANTREL_QT_EXPORT bool isInScript();

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_SCRIPT_H
