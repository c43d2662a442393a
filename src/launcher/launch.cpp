#include "launcher/launch.h"

#include "launcher/applicationprocess.h"
#include "launcher/signalwatch.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcessEnvironment>
#include <QTimer>

#include <csignal>
#include <functional>
#include <utility>

namespace Vantrel {

namespace {

// Milliseconds.
constexpr int terminationTime = 2000;
/** Most applications load the plugin in a small part of it. */
constexpr int loadingTime = 3000;
constexpr int pollInterval = 20;
/** For the system to remove what was killed; who has to reap it may not do so. */
constexpr int dyingTime = 500;

void putFirst(QProcessEnvironment &environment, const QString &variable, const QString &text,
              QLatin1Char separator)
{
    const QString before = environment.value(variable);
    environment.insert(variable, before.isEmpty() ? text : text + separator + before);
}

QProcessEnvironment environmentFor(const LaunchOptions &options)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    putFirst(environment, QStringLiteral("QT_QPA_GENERIC_PLUGINS"),
             QLatin1String("vantrel:") + options.plan.toText(), QLatin1Char(','));
    putFirst(environment, QStringLiteral("QT_PLUGIN_PATH"), options.pluginDirectory,
             QLatin1Char(':'));
    if (!options.isShown) {
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    }
    if (!options.logFile.isEmpty()) {
        environment.insert(QStringLiteral("QT_DEBUG_PLUGINS"), QStringLiteral("1"));
    }
    return environment;
}

/** A process that has ended but was not waited for by its parent counts as ended. */
bool isAlive(qint64 processId)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(processId));
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    // "PID (NAME) STATE ...", where the name may hold anything.
    const QByteArray line = file.readAll();
    return line.mid(line.lastIndexOf(')') + 2, 1) != "Z";
}

/** One run of an application. */
class Launch
{
public:
    explicit Launch(const LaunchOptions &options);
    LaunchResult run();

private:
    void start();
    void end(LaunchResult::End reason, int signal);
    void endIfHopeless();
    void kill();
    void processFinished(int number, QProcess::ExitStatus status);
    void finishWhenAllHaveEnded();
    void finish();

    const LaunchOptions &m_options;
    ApplicationProcess m_process;
    SignalWatch m_signals;
    QTimer m_timeout;
    QTimer m_loading;
    QTimer m_kill;
    QTimer m_poll;
    QEventLoop m_loop;
    QElapsedTimer m_clock;
    LaunchResult m_result;
    bool m_isEnding = false;
    bool m_isKilled = false;
    bool m_hasFinished = false;
};

Launch::Launch(const LaunchOptions &options) : m_options(options)
{
    m_timeout.setSingleShot(true);
    m_loading.setSingleShot(true);
    m_kill.setSingleShot(true);
    m_poll.setInterval(pollInterval);
    QObject::connect(&m_timeout, &QTimer::timeout,
                     [this] { end(LaunchResult::End::TimedOut, SIGTERM); });
    QObject::connect(&m_loading, &QTimer::timeout, [this] { endIfHopeless(); });
    QObject::connect(&m_kill, &QTimer::timeout, [this] { kill(); });
    QObject::connect(&m_poll, &QTimer::timeout, [this] { finishWhenAllHaveEnded(); });
    QObject::connect(&m_signals, &SignalWatch::received,
                     [this](int signal) { end(LaunchResult::End::Interrupted, signal); });
    QObject::connect(
        &m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished),
        [this](int number, QProcess::ExitStatus status) { processFinished(number, status); });
}

LaunchResult Launch::run()
{
    start();
    if (!m_process.waitForStarted(-1)) {
        m_result.error = m_process.errorString();
        return m_result;
    }
    m_process.adoptGroup();
    if (m_options.timeout > 0) {
        m_timeout.start(m_options.timeout);
    }
    if (m_options.isHopeless) {
        m_loading.start(loadingTime);
    }
    if (!m_hasFinished) {
        m_loop.exec();
    }
    return m_result;
}

void Launch::start()
{
    m_process.setProcessEnvironment(environmentFor(m_options));
    if (m_options.logFile.isEmpty()) {
        m_process.setProcessChannelMode(QProcess::ForwardedChannels);
        m_process.setInputChannelMode(QProcess::ForwardedInputChannel);
    } else {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.setStandardInputFile(QProcess::nullDevice());
        m_process.setStandardOutputFile(m_options.logFile);
    }
    m_clock.start();
    m_process.start(m_options.program, m_options.arguments);
}

void Launch::end(LaunchResult::End reason, int signal)
{
    if (m_isEnding) {
        kill();
        return;
    }
    m_isEnding = true;
    m_result.end = reason;
    m_result.number = signal;
    m_timeout.stop();
    m_process.signalGroup(signal);
    // Stopped processes would not notice.
    m_process.signalGroup(SIGCONT);
    m_kill.start(terminationTime);
}

void Launch::kill()
{
    m_process.signalGroup(SIGKILL);
    m_kill.stop();
    if (!std::exchange(m_isKilled, true)) {
        m_kill.start(dyingTime);
    }
}

/** An application that cannot load the plugin simply goes on. */
void Launch::endIfHopeless()
{
    if (!m_isEnding && !PlanStatus::fromFile(m_options.plan.statusFile).isLoaded
        && m_options.isHopeless()) {
        end(LaunchResult::End::Hopeless, SIGTERM);
    }
}

void Launch::processFinished(int number, QProcess::ExitStatus status)
{
    if (!m_isEnding) {
        const bool hasExited = status == QProcess::NormalExit;
        m_result.end = hasExited ? LaunchResult::End::Exited : LaunchResult::End::Signalled;
        m_result.number = number;
    }
    m_poll.start();
    finishWhenAllHaveEnded();
}

/**
 * What was started may be a program that starts the application and does not wait for it. When
 * all are to be ended, the group is.
 */
void Launch::finishWhenAllHaveEnded()
{
    m_result.status = PlanStatus::fromFile(m_options.plan.statusFile);
    const bool isToWait = m_isEnding
        ? m_process.hasGroup() && m_kill.isActive()
        : m_result.status.isLoaded && isAlive(m_result.status.processId);
    if (!isToWait) {
        finish();
    }
}

void Launch::finish()
{
    m_process.takeTerminalBack();
    m_result.duration = m_clock.elapsed();
    m_result.readyAfter = m_result.status.readyTime - m_clock.msecsSinceReference();
    m_hasFinished = true;
    m_loop.quit();
}

} // namespace

LaunchResult launch(const LaunchOptions &options)
{
    return Launch(options).run();
}

} // namespace Vantrel
