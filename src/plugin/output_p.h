#ifndef VANTREL_OUTPUT_P_H
#define VANTREL_OUTPUT_P_H

class QByteArray;
class QString;

namespace Vantrel {

/** "vantrel: TEXT" on standard error. */
void reportError(const QString &text);

/**
 * Writes a file as a whole or not at all; a device or pipe is written to.
 * @return why that was not possible, empty when it was.
 */
QString writeFile(const QString &fileName, const QByteArray &data);

} // namespace Vantrel

#endif // VANTREL_OUTPUT_P_H
