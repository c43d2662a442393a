#include "launcher/commandline.h"
#include "launcher/doctor.h"
#include "launcher/examination.h"
#include "launcher/launch.h"
#include "plugin/exitcodes.h"
#include "plugin/output_p.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cstdio>

namespace Vantrel {

namespace {

using Command = CommandLine::Command;
using End = LaunchResult::End;

int usageError(const QString &error)
{
    reportError(error + QLatin1String("; see vantrel --help"));
    return ExitCode::usage;
}

int printed(const QString &text)
{
    std::fputs(text.toLocal8Bit().constData(), stdout);
    return ExitCode::success;
}

/** The application may work in another directory. */
QString absolute(const QString &fileName)
{
    return QFileInfo(fileName).absoluteFilePath();
}

Plan planFor(const CommandLine &line, const QString &result)
{
    Plan::Step step{};
    step.target = line.target;
    Plan plan;
    switch (line.command) {
    case Command::Tree:
        step.action = Plan::Step::Action::Tree;
        step.target = line.output.isEmpty() ? result : absolute(line.output);
        step.isJson = line.isJson;
        step.depth = line.depth;
        step.filter = line.filter;
        break;
    case Command::Shot:
        step.action = Plan::Step::Action::Shot;
        step.target = absolute(line.target);
        break;
    case Command::Find:
        step.action = Plan::Step::Action::Find;
        step.output = result;
        break;
    case Command::Run:
        step.action = Plan::Step::Action::Run;
        step.target = absolute(line.target);
        step.arguments = line.targetArguments;
        break;
    default:
        return plan;
    }
    plan.steps.push_back(step);
    return plan;
}

void reportFindings(const QString &application)
{
    bool isExplained = false;
    for (const Finding &finding : examine(application)) {
        if (finding.kind != Finding::Kind::Good) {
            reportError(finding.text);
            reportError(QLatin1String("  to do: ") + finding.advice);
            isExplained = true;
        }
    }
    if (!isExplained) {
        reportError(QStringLiteral("nothing speaks against opening it, it may have ended before it "
                                   "got so far; \"vantrel doctor\" shows what Qt says"));
    }
}

QString endText(const LaunchResult &result, const CommandLine &line)
{
    const QString name = line.application.constFirst();
    switch (result.end) {
    case End::Exited:
        return QStringLiteral("%1 ended with the exit code %2")
            .arg(name, QString::number(result.number));
    case End::Signalled:
        return QStringLiteral("%1 was ended by the signal %2")
            .arg(name, QString::number(result.number));
    case End::TimedOut:
        return QStringLiteral("%1 was killed after %2 s")
            .arg(name, QString::number(line.timeout / 1000.0));
    case End::Hopeless:
        return QStringLiteral("%1 was ended").arg(name);
    case End::Interrupted:
        return QStringLiteral("%1 was ended together with this program").arg(name);
    case End::NotStarted:
        break;
    }
    return QStringLiteral("%1 cannot be started: %2").arg(name, result.error);
}

/** The code when the plan has no say in it. */
int codeOfEnd(const LaunchResult &result)
{
    switch (result.end) {
    case End::Exited:
        return result.number;
    case End::Signalled:
    case End::Interrupted:
        return ExitCode::signalBase + result.number;
    case End::TimedOut:
        return ExitCode::timeout;
    case End::Hopeless:
    case End::NotStarted:
        break;
    }
    return ExitCode::notOpened;
}

/** Says what went wrong, unless the application has, and combines the codes. */
int conclude(const LaunchResult &result, const CommandLine &line)
{
    const PlanStatus &status = result.status;
    const bool wasEnded = result.end == End::TimedOut || result.end == End::Interrupted;
    if (!status.isLoaded) {
        reportError(endText(result, line) + QLatin1String(" and had not loaded the plugin"));
        reportFindings(line.application.constFirst());
        return wasEnded ? codeOfEnd(result) : ExitCode::notOpened;
    }
    if (!status.hasResult) {
        reportError(QStringLiteral("%1 before the plan was done; vantrel was waiting for %2")
                        .arg(endText(result, line), status.waitingFor));
        return result.end == End::Exited ? ExitCode::planFailed : codeOfEnd(result);
    }
    if (status.result != 0) {
        return status.result;
    }
    if (result.end != End::Exited) {
        reportError(endText(result, line) + QLatin1String(" when the plan was done"));
    }
    return codeOfEnd(result);
}

int open(const CommandLine &line, LaunchOptions options, const QTemporaryDir &directory)
{
    QString error;
    options.pluginDirectory = pluginDirectory(&error);
    if (options.pluginDirectory.isEmpty()) {
        reportError(error);
        return ExitCode::notOpened;
    }
    const QString output = directory.filePath(QStringLiteral("output"));
    options.plan.steps = planFor(line, output).steps;
    options.plan.pluginPath = options.pluginDirectory;
    options.isHopeless = [&line] { return hasProblem(examine(line.application.constFirst())); };
    const LaunchResult result = launch(options);
    if (result.end == End::NotStarted) {
        reportError(endText(result, line));
        reportFindings(line.application.constFirst());
        return ExitCode::notOpened;
    }
    QFile file(output);
    if (file.open(QIODevice::ReadOnly)) {
        const QByteArray text = file.readAll();
        const std::size_t size = std::size_t(text.size());
        if (std::fwrite(text.constData(), 1, size, stdout) != size || std::fflush(stdout) != 0) {
            reportError(QStringLiteral("cannot write to standard output"));
            return ExitCode::planFailed;
        }
    }
    return conclude(result, line);
}

int run(const CommandLine &line)
{
    const QTemporaryDir directory;
    if (!directory.isValid()) {
        reportError(directory.errorString());
        return ExitCode::planFailed;
    }
    LaunchOptions options;
    options.program = programFile(line.application.constFirst());
    options.arguments = line.application.mid(1);
    options.isShown = line.isShown;
    // The plan gives up first, as it can tell best what was missing.
    constexpr int grace = 2000;
    options.timeout = line.timeout > 0 ? line.timeout + grace : 0;
    options.plan.timeout = line.timeout;
    options.plan.statusFile = directory.filePath(QStringLiteral("status"));
    if (line.command == Command::Doctor) {
        options.program = line.application.constFirst();
        return runDoctor(options, directory.path());
    }
    if (!QFileInfo::exists(options.program)) {
        reportError(QStringLiteral("%1 was not found").arg(line.application.constFirst()));
        return ExitCode::notFound;
    }
    return open(line, options, directory);
}

int answer(const CommandLine &line)
{
    switch (line.command) {
    case Command::Help:
        return printed(CommandLine::helpText());
    case Command::Version:
        return printed(QStringLiteral("vantrel " VANTREL_VERSION "\n"));
    default:
        return run(line);
    }
}

} // namespace

} // namespace Vantrel

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QString error;
    const auto line = Vantrel::CommandLine::parse(QCoreApplication::arguments().mid(1), &error);
    return error.isEmpty() ? Vantrel::answer(line) : Vantrel::usageError(error);
}
