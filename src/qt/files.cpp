#include "qt/files_p.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QString>

namespace Vantrel::QtWrapper {

QString writeFile(const QString &fileName, const QByteArray &data)
{
    const QFileInfo info(fileName);
    if (info.exists() && !info.isFile() && !info.isDir()) {
        // Replacing it, as below, would put a file in the place of the device.
        QFile device(fileName);
        const bool isWritten = device.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
            && device.write(data) == data.size();
        return isWritten ? QString() : device.errorString();
    }
    QSaveFile file(fileName);
    const bool isWritten =
        file.open(QIODevice::WriteOnly) && file.write(data) == data.size() && file.commit();
    return isWritten ? QString() : file.errorString();
}

} // namespace Vantrel::QtWrapper
