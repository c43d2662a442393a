#ifndef VANTREL_QT_FILES_P_H
#define VANTREL_QT_FILES_P_H

class QByteArray;
class QString;

namespace Vantrel::QtWrapper {

/**
 * Replaces a file as a whole or leaves it as it was; to what is no plain file,
 * such as a device or a pipe, it writes.
 * @return what went wrong; empty when nothing did.
 */
QString writeFile(const QString &fileName, const QByteArray &data);

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_FILES_P_H
