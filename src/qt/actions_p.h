#ifndef VANTREL_QT_ACTIONS_P_H
#define VANTREL_QT_ACTIONS_P_H

namespace Vantrel::QtWrapper {

/** Adds the global functions that wait. */
void registerWaiting();

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_ACTIONS_P_H
