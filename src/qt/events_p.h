#ifndef VANTREL_QT_EVENTS_P_H
#define VANTREL_QT_EVENTS_P_H

namespace Vantrel::QtWrapper {

/** Makes signals the events of their objects. */
void registerEvents();

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_EVENTS_P_H
