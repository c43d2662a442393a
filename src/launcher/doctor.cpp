#include "launcher/doctor.h"

#include "plugin/exitcodes.h"

#include <QFile>

#include <cstdio>

namespace Vantrel {

namespace {

void print(const QString &text)
{
    std::printf("%s\n", text.toLocal8Bit().constData());
}

QStringList linesOf(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly)
        ? QString::fromLocal8Bit(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts)
        : QStringList();
}

/** What Qt and the dynamic loader said about the plugin, and the end of what the application did.
 */
QStringList evidence(const QString &log, const QString &plugin)
{
    constexpr int lastLines = 5;
    QStringList found;
    QStringList rest;
    for (const QString &line : linesOf(log)) {
        const bool isOfQt = line.startsWith(QLatin1String("QFactoryLoader"))
            || line.startsWith(QLatin1String("Found metadata"))
            || line.startsWith(QLatin1String("Got keys")) || line.startsWith(QLatin1Char(' '))
            || line.startsWith(QLatin1Char('{')) || line.startsWith(QLatin1Char('}'))
            || line.startsWith(QLatin1String("loaded library"));
        const bool isRefusal =
            line.contains(QLatin1String("annot")) || line.contains(QLatin1String("incompatible"));
        if (line.contains(plugin) && isRefusal) {
            found << line;
        } else if (!isOfQt) {
            rest << line;
        }
    }
    return found + rest.mid(qMax(0, rest.size() - lastLines));
}

QString endText(const LaunchResult &result)
{
    switch (result.end) {
    case LaunchResult::End::NotStarted:
        return QStringLiteral("it cannot be started: ") + result.error;
    case LaunchResult::End::Exited:
        return QStringLiteral("it ended with the exit code %1").arg(result.number);
    case LaunchResult::End::Signalled:
        return QStringLiteral("it was ended by the signal %1").arg(result.number);
    case LaunchResult::End::TimedOut:
    case LaunchResult::End::Hopeless:
    case LaunchResult::End::Interrupted:
        break;
    }
    return QStringLiteral("it was killed after %1 s").arg(double(result.duration) / 1000);
}

QString failureText(const LaunchResult &result)
{
    if (!result.status.isLoaded) {
        return endText(result) + QLatin1String(" and had not loaded the plugin");
    }
    if (result.status.hasResult && result.status.result != 0) {
        return result.status.resultText;
    }
    return QStringLiteral("%1; vantrel was waiting for %2")
        .arg(endText(result), result.status.waitingFor);
}

} // namespace

QString describe(const Finding &finding)
{
    static const char *const words[] = {"good", "doubt", "problem"};
    const QString mark = QString::fromLatin1(words[int(finding.kind)]);
    const QString text = mark.leftJustified(9) + finding.text;
    return finding.advice.isEmpty() ? text
                                    : text + QLatin1String("\n         to do: ") + finding.advice;
}

int runDoctor(LaunchOptions options, const QString &directory)
{
    const std::vector<Finding> findings = examine(options.program);
    for (const Finding &finding : findings) {
        print(describe(finding));
    }
    if (!isAllGood(findings)) {
        print(hasProblem(findings) ? QStringLiteral("It cannot be opened.")
                                   : QStringLiteral("It was not tried."));
        return ExitCode::negative;
    }
    QString error;
    options.pluginDirectory = pluginDirectory(&error);
    options.logFile = directory + QLatin1String("/log");
    const LaunchResult result = launch(options);
    if (result.status.isReady && result.status.result == 0) {
        print(
            QStringLiteral("It can be opened: it was ready after %1 ms and had ended after %2 ms.")
                .arg(QString::number(result.readyAfter), QString::number(result.duration)));
        return ExitCode::success;
    }
    print(describe({Finding::Kind::Problem, failureText(result), {}}));
    for (const QString &line : evidence(options.logFile, pluginFile(options.pluginDirectory))) {
        print(QLatin1String("         | ") + line);
    }
    print(QStringLiteral("It cannot be opened."));
    return ExitCode::negative;
}

} // namespace Vantrel
