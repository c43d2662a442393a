#ifndef VANTREL_QT_CASTS_P_H
#define VANTREL_QT_CASTS_P_H

namespace Vantrel::QtWrapper {

/** Casts between the classes of QObjects and from arrays to lists of texts; identity of QObjects.
 */
void registerCasts();

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_CASTS_P_H
