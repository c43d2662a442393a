#include "plugin/plan.h"
#include "plugin/planrunner_p.h"

#include <QGenericPlugin>

namespace Vantrel {

namespace {

/** Takes the first part that @p isOurs out of a list in an environment variable. */
template <class IsOurs>
void removeFromEnvironment(const char *variable, char separator, IsOurs isOurs)
{
    QList<QByteArray> parts = qgetenv(variable).split(separator);
    for (int i = 0; i < parts.size(); ++i) {
        if (isOurs(parts[i])) {
            parts.removeAt(i);
            break;
        }
    }
    const QByteArray rest = parts.join(separator);
    if (rest.isEmpty()) {
        qunsetenv(variable);
    } else {
        qputenv(variable, rest);
    }
}

/** What the application starts is not meant to be opened, too. */
void hideFromChildren(const QString &pluginPath)
{
    removeFromEnvironment("QT_QPA_GENERIC_PLUGINS", ',', [](const QByteArray &part) {
        return part == "vantrel" || part.startsWith("vantrel:");
    });
    const QByteArray directory = pluginPath.toLocal8Bit();
    if (!directory.isEmpty()) {
        removeFromEnvironment("QT_PLUGIN_PATH", ':',
                              [&](const QByteArray &part) { return part == directory; });
    }
}

} // namespace

class Plugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "vantrel.json")

public:
    /** Called in the constructor of the application object, which owns the result. */
    QObject *create(const QString &, const QString &planText) override
    {
        QString error;
        const Plan plan = Plan::fromText(planText, &error);
        hideFromChildren(plan.pluginPath);
        return new PlanRunner(plan, error, nullptr);
    }
};

} // namespace Vantrel

#include "plugin.moc"
