#include "qt/script.h"

#include "qt/fiber_p.h"
#include "qt/modality_p.h"
#include "qt/script_p.h"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

#include <exception>
#include <memory>
#include <utility>
#include <vector>

namespace Vantrel::QtWrapper {

namespace {

/** Waits that may fail after the application has ended, before the script is cut off. */
constexpr int maxFailedWaits = 100;
/** How often leftover dialogs are closed, in milliseconds. */
constexpr int closeInterval = 25;

/** One script from its start to its end. */
struct Script
{
    std::function<void()> body;
    std::function<void(const QString &)> ended;
    std::unique_ptr<Fiber> fiber;
    QString error;
    /** Event loops that were running when the script went on. */
    int loopLevel = 0;
    /** Of the latest suspension; timers of earlier ones are void. */
    quint64 suspension = 0;
    int numFailedWaits = 0;
    bool isQuitting = false;
    bool isAbandoned = false;
};

/** Starts, resumes and ends scripts. Lives as long as the process. */
class Runner : public QObject
{
public:
    static Runner *self();

    void enqueue(std::unique_ptr<Script> script);
    bool isBusy() const { return m_script != nullptr; }
    bool isInside() const { return m_script && m_script->fiber && m_script->fiber->isRunning(); }
    bool canSuspend() const;
    bool isQuitting() const { return m_script->isQuitting; }
    void suspend(int milliseconds);
    /** Until the events that are posted already have been handled. */
    void suspendUntilPosted();
    void failWait();
    void quit();

private:
    static void quitWithApplication() { self()->quit(); }
    void begin();
    void begin(std::unique_ptr<Script> script);
    void resume();
    std::function<void()> wakeUp();
    void leave();
    void finish();

    std::vector<std::unique_ptr<Script>> m_waiting;
    std::unique_ptr<Script> m_script;
    std::vector<std::unique_ptr<Script>> m_abandoned;
    QMetaObject::Connection m_aboutToQuit;
    quint64 m_lastSuspension = 0;
};

Runner *Runner::self()
{
    static Runner *const runner = new Runner;
    return runner;
}

void runBody(Script *script)
{
    try {
        script->body();
    } catch (const CutOff &) {
        script->error = QStringLiteral("The script was cut off: it went on waiting after the "
                                       "application had ended");
    } catch (const std::exception &error) {
        script->error = QString::fromLocal8Bit(error.what());
        if (script->error.isEmpty()) {
            script->error = QStringLiteral("The script ended with an exception without a text");
        }
    } catch (...) {
        script->error = QStringLiteral("The script ended with an exception of an unknown type");
    }
    // What the body holds belongs to the script, so it goes on its stack as well.
    script->body = nullptr;
}

void Runner::enqueue(std::unique_ptr<Script> script)
{
    m_waiting.push_back(std::move(script));
    // Also when no script ever begins: what waits must hear of the end.
    qRemovePostRoutine(quitWithApplication);
    qAddPostRoutine(quitWithApplication);
    QMetaObject::invokeMethod(
        this, [this] { begin(); }, Qt::QueuedConnection);
}

void Runner::begin()
{
    if (m_waiting.empty()) {
        return;
    }
    std::unique_ptr<Script> script = std::move(m_waiting.front());
    m_waiting.erase(m_waiting.begin());
    begin(std::move(script));
}

void Runner::begin(std::unique_ptr<Script> script)
{
    Script *const started = script.get();
    script->fiber = std::make_unique<Fiber>([started] { runBody(started); });
    if (isBusy() || !script->fiber->isUsable()) {
        const QString reason = isBusy() ? QStringLiteral("A script is running already")
                                        : QStringLiteral("There is no memory for a script");
        script->fiber.reset();
        script->ended(reason);
        return;
    }
    m_script = std::move(script);
    m_aboutToQuit =
        connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, &Runner::quit);
    resume();
}

bool Runner::canSuspend() const
{
    // Two stacks cannot take turns in loops that were opened on both: loops end
    // in the reverse order of their beginning.
    return isInside() && QThread::currentThread()->loopLevel() <= m_script->loopLevel;
}

void Runner::resume()
{
    m_script->loopLevel = QThread::currentThread()->loopLevel();
    m_script->fiber->resume();
    if (m_script->fiber->hasEnded() || m_script->isAbandoned) {
        finish();
    }
}

void Runner::suspend(int milliseconds)
{
    // A new timer for each pause: one that is being handled does not fire in a nested loop.
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, this, wakeUp());
    leave();
}

void Runner::suspendUntilPosted()
{
    QMetaObject::invokeMethod(this, wakeUp(), Qt::QueuedConnection);
    leave();
}

std::function<void()> Runner::wakeUp()
{
    // A timer of a script that was cut off must not wake up the next one.
    const quint64 suspension = m_script->suspension = ++m_lastSuspension;
    return [this, suspension] {
        if (m_script && m_script->suspension == suspension) {
            resume();
        }
    };
}

void Runner::leave()
{
    m_script->fiber->suspend();
    ++m_script->suspension;
}

void Runner::failWait()
{
    Script *const script = m_script.get();
    ++script->numFailedWaits;
    if (script->numFailedWaits > 2 * maxFailedWaits) {
        // It catches what should end it. Nothing else can, so it is never resumed.
        script->error = QStringLiteral("The script was abandoned: it went on waiting after the "
                                       "application had ended");
        script->isAbandoned = true;
        script->fiber->suspend();
    }
    if (script->numFailedWaits > maxFailedWaits && std::uncaught_exceptions() == 0) {
        throw CutOff();
    }
}

void Runner::finish()
{
    disconnect(m_aboutToQuit);
    std::unique_ptr<Script> script = std::move(m_script);
    const auto ended = std::move(script->ended);
    const QString error = script->error;
    if (script->isAbandoned) {
        // Its stack stays: others may refer to objects on it.
        m_abandoned.push_back(std::move(script));
    }
    script.reset();
    ended(error);
}

void Runner::quit()
{
    for (const std::unique_ptr<Script> &script : std::exchange(m_waiting, {})) {
        script->ended(QStringLiteral("The application ended before the script began"));
    }
    if (m_script && !isInside()) {
        m_script->isQuitting = true;
        resume();
    }
}

void closeTopmost()
{
    QWidget *popup = QApplication::activePopupWidget();
    QWidget *window = popup ? popup : QApplication::activeModalWidget();
    // Some dialogs refuse to be closed, but not to be rejected.
    if (auto *dialog = qobject_cast<QDialog *>(window)) {
        dialog->reject();
    } else if (window) {
        window->close();
    }
}

bool isApplicationThread()
{
    const QCoreApplication *application = QCoreApplication::instance();
    return application && QThread::currentThread() == application->thread();
}

/** Why no script can begin here; empty when one can. */
QString refusal()
{
    if (!isApplicationThread()) {
        return QStringLiteral("Scripts run in the thread of the application object only");
    }
    if (isInScript()) {
        return QStringLiteral("A script cannot run inside a script");
    }
    return Runner::self()->isBusy() ? QStringLiteral("A script is running already") : QString();
}

/** Suspends the script with @p suspend, unless no event will come any more. */
template <class Suspend>
Pause suspended(Suspend suspend)
{
    Runner *const runner = Runner::self();
    Pause pause;
    if (!runner->isQuitting()) {
        suspend();
    }
    if (runner->isQuitting()) {
        runner->failWait();
        pause.isQuitting = true;
    }
    return pause;
}

/** Serves events in a loop of its own. */
Pause spin(int milliseconds)
{
    Pause pause;
    QEventLoop loop;
    QElapsedTimer time;
    const int level = QThread::currentThread()->loopLevel() + 1;
    bool isOver = false;
    time.start();
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, &loop, [&] {
        isOver = true;
        if (QThread::currentThread()->loopLevel() > level) {
            pause.heldBy = nameOfModalWindow();
        }
        loop.quit();
    });
    loop.exec();
    pause.isQuitting = !isOver;
    pause.heldFor = pause.heldBy.isEmpty() ? 0 : qMax(0, int(time.elapsed()) - milliseconds);
    return pause;
}

} // namespace

Pause serveEvents(int milliseconds)
{
    if (!QCoreApplication::instance()) {
        // Nothing would ever end a loop.
        Pause pause;
        pause.isQuitting = true;
        return pause;
    }
    return Runner::self()->canSuspend()
        ? suspended([milliseconds] { Runner::self()->suspend(milliseconds); })
        : spin(milliseconds);
}

Delivery deliver(std::function<void()> function)
{
    Runner *const runner = Runner::self();
    if (!runner->isInside()) {
        QMetaObject::invokeMethod(runner, std::move(function), Qt::QueuedConnection);
        return Delivery::Queued;
    }
    const auto isDone = std::make_shared<bool>(false);
    const auto call = [function = std::move(function), isDone] {
        function();
        *isDone = true;
    };
    QMetaObject::invokeMethod(runner, call, Qt::QueuedConnection);
    // What is posted next comes after the call, or else in a loop that it runs.
    // One turn more lets that loop begin, or what the call has caused arrive.
    const bool isQuitting =
        (runner->canSuspend() && suspended([runner] { runner->suspendUntilPosted(); }).isQuitting)
        || serveEvents(0).isQuitting;
    if (isQuitting && !*isDone) {
        return Delivery::Quitting;
    }
    return *isDone ? Delivery::Done : Delivery::Running;
}

QString quittingText()
{
    return QStringLiteral("the application is quitting");
}

QString runScript(const std::function<void()> &body)
{
    const QString reason = refusal();
    if (!reason.isEmpty()) {
        return reason;
    }
    QEventLoop loop;
    QTimer closer;
    bool hasEnded = false;
    QString error;
    QObject::connect(&closer, &QTimer::timeout, closeTopmost);
    auto script = std::make_unique<Script>();
    script->body = body;
    script->ended = [&](const QString &text) {
        hasEnded = true;
        error = text;
        loop.quit();
        closer.start(closeInterval);
    };
    Runner::self()->enqueue(std::move(script));
    loop.exec();
    if (!hasEnded) {
        // All event loops were told to end.
        Runner::self()->quit();
    }
    return error;
}

void startScript(std::function<void()> body, std::function<void(const QString &error)> ended)
{
    auto script = std::make_unique<Script>();
    script->body = std::move(body);
    script->ended = [ended = std::move(ended)](const QString &error) {
        if (ended) {
            ended(error);
        }
    };
    const QString reason = isApplicationThread() ? QString() : refusal();
    if (!reason.isEmpty()) {
        script->ended(reason);
        return;
    }
    Runner::self()->enqueue(std::move(script));
}

bool isInScript()
{
    return isApplicationThread() && Runner::self()->isInside();
}

} // namespace Vantrel::QtWrapper
