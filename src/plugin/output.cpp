#include "plugin/output_p.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QString>

#include <cstdio>

namespace Vantrel {

namespace {

QString cannotWrite(const QFileDevice &file)
{
    return QStringLiteral("cannot write %1: %2").arg(file.fileName(), file.errorString());
}

} // namespace

void reportError(const QString &text)
{
    std::fprintf(stderr, "vantrel: %s\n", text.toLocal8Bit().constData());
    std::fflush(stderr);
}

QString writeFile(const QString &fileName, const QByteArray &data)
{
    const QFileInfo info(fileName);
    if (info.exists() && !info.isFile() && !info.isDir()) {
        // Replacing it, as below, would put a file in the place of the device.
        QFile device(fileName);
        const bool isWritten = device.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
            && device.write(data) == data.size();
        return isWritten ? QString() : cannotWrite(device);
    }
    QSaveFile file(fileName);
    const bool isWritten =
        file.open(QIODevice::WriteOnly) && file.write(data) == data.size() && file.commit();
    return isWritten ? QString() : cannotWrite(file);
}

} // namespace Vantrel
