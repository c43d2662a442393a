#include "plugin/output_p.h"

#include "qt/files_p.h"

#include <QString>

#include <cstdio>

namespace Vantrel {

void reportError(const QString &text)
{
    std::fprintf(stderr, "vantrel: %s\n", text.toLocal8Bit().constData());
    std::fflush(stderr);
}

QString writeFile(const QString &fileName, const QByteArray &data)
{
    const QString reason = QtWrapper::writeFile(fileName, data);
    return reason.isEmpty() ? QString()
                            : QStringLiteral("cannot write %1: %2").arg(fileName, reason);
}

} // namespace Vantrel
