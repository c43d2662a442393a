#ifndef VANTREL_QT_MODALITY_P_H
#define VANTREL_QT_MODALITY_P_H

#include <QString>

class QWindow;

namespace Vantrel::QtWrapper {

/** The modal window that keeps input from @p window; null when none does. */
QWindow *blockingWindow(QWindow *window);
/** Kind and title of a window, for messages. */
QString titleOf(const QWindow *window);
/** The popup or modal window that gets the input now, or whatever else runs a nested loop. */
QString nameOfModalWindow();

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_MODALITY_P_H
