#include "qt/actions.h"

#include "qt/files_p.h"
#include "qt/grab_p.h"
#include "qt/handles_p.h"
#include "qt/readiness_p.h"

#include "objectmodel/object.h"

namespace Vantrel::QtWrapper {

QByteArray screenshot(const SharedPtr<Object> &object, bool wholeWindow)
{
    const QString operation = QStringLiteral("screenshot");
    const Node node = nodeOf(object);
    if (!node) {
        failWith(operation, absence());
        return {};
    }
    QString error;
    const QImage image = wholeWindow ? grabWindow(node, &error) : grabNode(node, &error);
    if (image.isNull()) {
        failWith(operation, error);
    }
    return toPng(image);
}

bool saveScreenshot(const SharedPtr<Object> &object, const QString &fileName, bool wholeWindow)
{
    const QByteArray png = screenshot(object, wholeWindow);
    if (png.isEmpty()) {
        return false;
    }
    const QString error = writeFile(fileName, png);
    return error.isEmpty()
        || failWith(QStringLiteral("screenshot"),
                    QStringLiteral("cannot write '%1': %2").arg(fileName, error));
}

} // namespace Vantrel::QtWrapper
