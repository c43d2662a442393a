#include "qt/wrapper.h"

#include "qt/actions_p.h"
#include "qt/casts_p.h"
#include "qt/delegates_p.h"
#include "qt/events_p.h"
#include "qt/handles_p.h"
#include "qt/hierarchy_p.h"
#include "qt/values_p.h"

#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

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
    if (!isInstalled) {
        isInstalled = true;
        registerValueClasses();
        registerCasts();
        registerEvents();
        registerWaiting();
        registerActions();
        registerHierarchy();
        registerGeometry();
        registerWindows();
        registerObjectTexts();
        registerDump();
        registerDumpFunctions();
    }
    return true;
}

SharedPtr<Object> handleFor(QObject *object)
{
    return handleOf(object);
}

QObject *qobjectFor(const SharedPtr<Object> &handle)
{
    return qobjectOf(handle);
}

} // namespace Vantrel::QtWrapper
