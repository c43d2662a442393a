#include "qt/wrapper.h"

#include "objectmodel/inspector.h"

#include <QCoreApplication>
#include <QThread>

namespace Vantrel::QtWrapper {

namespace {

bool isInstalled = false;

} // namespace

bool install()
{
    const QCoreApplication *application = QCoreApplication::instance();
    if (!application || application->thread() != QThread::currentThread()) {
        Inspector::self()->setError(
            QStringLiteral("The Qt wrapper needs an application object of its thread"));
        return false;
    }
    isInstalled = true;
    return isInstalled;
}

} // namespace Vantrel::QtWrapper
