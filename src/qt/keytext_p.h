#ifndef VANTREL_QT_KEYTEXT_P_H
#define VANTREL_QT_KEYTEXT_P_H

#include "qt/input_p.h"

#include <QString>

#include <vector>

namespace Vantrel::QtWrapper {

/**
 * The keys of a text for typing. Empty, with the reason in @p error, when there
 * is an unknown key in it; an empty text has no keys and no error.
 */
std::vector<KeyInput> keysOfText(const QString &text, QString *error);
/** The keys of a sequence such as "Ctrl+K, Ctrl+C". */
std::vector<KeyInput> keysOfSequence(const QString &sequence, QString *error);

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_KEYTEXT_P_H
