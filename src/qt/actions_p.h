#ifndef VANTREL_QT_ACTIONS_P_H
#define VANTREL_QT_ACTIONS_P_H

namespace Vantrel::QtWrapper {

// Each adds global functions, once for the process.
void registerWaiting();
void registerActions();

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_ACTIONS_P_H
