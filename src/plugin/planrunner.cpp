#include "plugin/planrunner_p.h"

#include "plugin/exitcodes.h"
#include "plugin/output_p.h"

#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/objectname.h"
#include "objectmodel/objectsearch.h"
#include "qt/script.h"
#include "qt/scriptlibrary.h"
#include "qt/treedump.h"
#include "qt/wrapper.h"

#include <QCoreApplication>
#include <QLibrary>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <unistd.h>
#include <vector>

namespace Vantrel {

namespace {

// Milliseconds.
constexpr int quitInterval = 50;
constexpr int quitLimit = 3000;
constexpr int scriptEndLimit = 2000;

constexpr int maximumMatches = 1000;

/** The process that has the plan. What it forks inherits all this but must leave it alone. */
pid_t owner = 0;

bool isForked()
{
    return getpid() != owner;
}

/** What the process has to end with, whatever the application returns; 0 leaves it alone. */
int enforcedCode = 0;

/** Registered late and so called early: what the process registered before is skipped. */
void leaveWithCode()
{
    if (enforcedCode != 0 && !isForked()) {
        std::fflush(nullptr);
        _exit(enforcedCode);
    }
}

/** The runner that an exit() without the destruction of the application object leaves behind. */
PlanRunner *unfinished = nullptr;

QString lastError()
{
    const QString error = Inspector::self()->lastError().trimmed();
    return error.isEmpty() ? QStringLiteral("no reason was given") : error;
}

QString nearMissText(const NearMiss &miss)
{
    QStringList conditions;
    for (const NearMiss::Condition &condition : miss.conditions) {
        if (!condition.held) {
            const QString actual = condition.actual.isNull()
                ? QStringLiteral("is not there")
                : QLatin1String("is '") + condition.actual + QLatin1Char('\'');
            conditions << condition.name + QLatin1Char(' ') + actual;
        }
    }
    const QString name = miss.object ? miss.object->qualifiedName() : QString();
    return QLatin1String("\n  near: ") + name + QLatin1String(", but ")
        + conditions.join(QLatin1String(", "));
}

QString notFoundText()
{
    const std::vector<NearMiss> misses = Inspector::self()->nearMisses();
    QString text = lastError();
    for (const NearMiss &miss : misses) {
        text += nearMissText(miss);
    }
    return text;
}

/** For the sentence "vantrel was waiting for ...". */
QString nameOf(const Plan::Step &step)
{
    switch (step.action) {
    case Plan::Step::Action::Tree:
        return QStringLiteral("the tree of objects");
    case Plan::Step::Action::Shot:
        return QStringLiteral("the picture");
    case Plan::Step::Action::Find:
        return QLatin1String("the search for ") + step.target;
    case Plan::Step::Action::Run:
        break;
    }
    return QLatin1String("the end of the script ") + step.target;
}

/** All objects that a name matches; only a multi-property name can match several. */
std::vector<SharedPtr<Object>> findAll(const QString &name)
{
    std::vector<SharedPtr<Object>> found;
    ObjectName objectName(name);
    const QString occurrence = QStringLiteral("occurrence");
    if (!objectName.isMultiProperty() || objectName.properties().contains(occurrence)) {
        if (const SharedPtr<Object> object = Inspector::self()->findObject(name)) {
            found.push_back(object);
        }
        return found;
    }
    SharedPtr<Object> object = Inspector::self()->findObject(name);
    while (object && int(found.size()) < maximumMatches) {
        found.push_back(object);
        objectName.setProperty(occurrence, PropertyValue(QString::number(int(found.size()) + 1)));
        object = Inspector::self()->findObject(objectName.qualifiedName());
    }
    return found;
}

/** The arguments of a script library, in the form that main() has them. */
class Arguments
{
public:
    explicit Arguments(const QStringList &arguments)
    {
        for (const QString &argument : arguments) {
            m_texts.push_back(argument.toLocal8Bit());
        }
        for (QByteArray &text : m_texts) {
            m_pointers.push_back(text.data());
        }
        m_pointers.push_back(nullptr);
    }
    int count() const { return int(m_texts.size()); }
    char **values() { return m_pointers.data(); }

private:
    std::vector<QByteArray> m_texts;
    std::vector<char *> m_pointers;
};

using Entry = decltype(&vantrel_main);

/** Null, with @p error set, when there is none. The library stays loaded. */
Entry entryOf(const QString &fileName, QString *error)
{
    QLibrary library(fileName);
    library.setLoadHints(QLibrary::PreventUnloadHint | QLibrary::ResolveAllSymbolsHint);
    if (!library.load()) {
        *error = library.errorString();
        return nullptr;
    }
    const auto entry = reinterpret_cast<Entry>(library.resolve("vantrel_main"));
    if (!entry) {
        *error =
            QStringLiteral("the library %1 does not define vantrel_main(), see qt/scriptlibrary.h")
                .arg(fileName);
    }
    return entry;
}

} // namespace

PlanRunner::PlanRunner(const Plan &plan, const QString &error, QObject *parent)
    : QObject(parent), m_plan(plan), m_readiness(this), m_doing(QStringLiteral("the event loop"))
{
    if (!error.isEmpty()) {
        m_invalid = {ExitCode::usage, error};
    }
    m_isTaken = takePlan();
    if (!m_isTaken) {
        return;
    }
    owner = getpid();
    unfinished = this;
    std::atexit([] {
        if (unfinished) {
            unfinished->applicationEnds();
        }
        leaveWithCode();
    });
    tell(QStringLiteral("waiting ") + m_doing);
    m_ending.setInterval(quitInterval);
    connect(&m_ending, &QTimer::timeout, this, &PlanRunner::endApplication);
    // The application object is not complete yet, and neither is anything that main() makes.
    QMetaObject::invokeMethod(this, &PlanRunner::begin, Qt::QueuedConnection);
}

PlanRunner::~PlanRunner()
{
    applicationEnds();
}

/** False when another process of the same launch has done so already. */
bool PlanRunner::takePlan()
{
    if (m_plan.statusFile.isEmpty()) {
        return true;
    }
    m_status.setFileName(m_plan.statusFile);
    if (m_status.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        tell(QStringLiteral("loaded %1").arg(getpid()));
        return true;
    }
    if (m_status.exists()) {
        return false;
    }
    if (m_invalid.code == 0) {
        m_invalid = {
            ExitCode::planFailed,
            QStringLiteral("cannot write %1: %2").arg(m_status.fileName(), m_status.errorString())};
    }
    return true;
}

void PlanRunner::tell(const QString &line)
{
    if (m_status.isOpen()) {
        QString oneLine = line;
        m_status.write(oneLine.replace(QLatin1Char('\n'), QLatin1Char(' ')).toUtf8() + '\n');
        m_status.flush();
    }
}

void PlanRunner::begin()
{
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this,
            &PlanRunner::letScriptReturn);
    connect(&m_readiness, &Readiness::waitingForChanged, this, [this](const QString &text) {
        m_doing = text;
        tell(QStringLiteral("waiting ") + text);
    });
    connect(&m_readiness, &Readiness::ready, this, [this] {
        QElapsedTimer now;
        now.start();
        tell(QStringLiteral("ready %1").arg(now.msecsSinceReference()));
        nextStep();
    });
    connect(&m_readiness, &Readiness::timedOut, this, [this] {
        finish(
            {ExitCode::timeout,
             QStringLiteral("the application was not ready after %1 s; vantrel was waiting for %2")
                 .arg(QString::number(m_plan.timeout / 1000.0), m_doing)});
    });
    if (m_invalid.code != 0) {
        finish(m_invalid);
    } else {
        install();
    }
}

void PlanRunner::install()
{
    Inspector::self()->lastError();
    if (!QtWrapper::install()) {
        finish({ExitCode::planFailed, lastError()});
        return;
    }
    m_readiness.start(m_plan.timeout);
}

void PlanRunner::nextStep()
{
    while (!m_isOver && !m_isInLibrary) {
        if (m_next == m_plan.steps.size()) {
            finish({});
            return;
        }
        const Plan::Step &step = m_plan.steps[m_next++];
        m_doing = nameOf(step);
        tell(QStringLiteral("waiting ") + m_doing);
        Inspector::self()->lastError();
        const Failure failure = doStep(step);
        if (failure.code != 0) {
            finish(failure);
        }
    }
}

PlanRunner::Failure PlanRunner::doStep(const Plan::Step &step)
{
    switch (step.action) {
    case Plan::Step::Action::Tree:
        return dumpTo(step);
    case Plan::Step::Action::Shot:
        return pictureTo(step);
    case Plan::Step::Action::Find:
        return find(step);
    case Plan::Step::Action::Run:
        return startLibrary(step);
    }
    return {};
}

PlanRunner::Failure PlanRunner::dumpTo(const Plan::Step &step)
{
    SharedPtr<Object> root;
    if (!step.filter.isEmpty()) {
        root = Inspector::self()->findObject(step.filter);
        if (!root) {
            return {ExitCode::negative, notFoundText()};
        }
    }
    QtWrapper::DumpOptions options;
    options.depth = step.depth;
    const std::unique_ptr<UiElement> tree = QtWrapper::dumpTree(root, options);
    if (!tree) {
        return {ExitCode::planFailed, lastError()};
    }
    const QByteArray text = step.isJson ? QtWrapper::toJson(*tree) : QtWrapper::toXml(*tree);
    const QString error = writeFile(step.target, text);
    return {error.isEmpty() ? ExitCode::success : ExitCode::planFailed, error};
}

PlanRunner::Failure PlanRunner::pictureTo(const Plan::Step &step)
{
    const QByteArray picture = QtWrapper::annotatedPicture({});
    if (picture.isEmpty()) {
        return {ExitCode::planFailed, lastError()};
    }
    const QString error = writeFile(step.target, picture);
    return {error.isEmpty() ? ExitCode::success : ExitCode::planFailed, error};
}

PlanRunner::Failure PlanRunner::find(const Plan::Step &step)
{
    const std::vector<SharedPtr<Object>> found = findAll(step.target);
    if (found.empty()) {
        return {ExitCode::negative, notFoundText()};
    }
    QByteArray text;
    for (const SharedPtr<Object> &object : found) {
        text += (object->className() + QLatin1Char(' ') + object->qualifiedName()).toUtf8() + '\n';
    }
    Inspector::self()->lastError();
    if (step.output.isEmpty()) {
        std::fwrite(text.constData(), 1, std::size_t(text.size()), stdout);
        std::fflush(stdout);
        return {};
    }
    const QString error = writeFile(step.output, text);
    return {error.isEmpty() ? ExitCode::success : ExitCode::planFailed, error};
}

PlanRunner::Failure PlanRunner::startLibrary(const Plan::Step &step)
{
    QString error;
    const Entry entry = entryOf(step.target, &error);
    if (!entry) {
        return {ExitCode::planFailed, error};
    }
    m_isInLibrary = true;
    const auto arguments = std::make_shared<Arguments>(QStringList(step.target) + step.arguments);
    const auto result = std::make_shared<int>(0);
    QtWrapper::startScript(
        [entry, arguments, result] {
            *result = entry(Inspector::self(), arguments->count(), arguments->values());
        },
        [this, result, library = step.target](const QString &scriptError) {
            libraryEnded(library, *result, scriptError);
        });
    return {};
}

void PlanRunner::libraryEnded(const QString &library, int result, const QString &error)
{
    m_isInLibrary = false;
    if (!error.isEmpty()) {
        finish(
            {ExitCode::planFailed, QStringLiteral("the script %1 failed: %2").arg(library, error)});
        return;
    }
    if (result == 0) {
        nextStep();
        return;
    }
    const QString reason = Inspector::self()->lastError();
    const QString text = QStringLiteral("the script %1 returned %2%3")
                             .arg(library, QString::number(result),
                                  reason.isEmpty() ? QString() : QLatin1String(": ") + reason);
    // Only these numbers pass the end of a process.
    const bool isCode = result > 0 && result < 256;
    finish({isCode ? result : ExitCode::negative, text});
}

/** The last thing that a script does may be to quit the application. */
void PlanRunner::letScriptReturn()
{
    QElapsedTimer waited;
    waited.start();
    while (m_isInLibrary && !waited.hasExpired(scriptEndLimit)) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, quitInterval);
    }
}

void PlanRunner::finish(const Failure &failure)
{
    if (m_isOver) {
        return;
    }
    conclude(failure);
    m_sinceEnd.start();
    m_ending.start();
    QMetaObject::invokeMethod(this, &PlanRunner::endApplication, Qt::QueuedConnection);
}

void PlanRunner::conclude(const Failure &failure)
{
    m_isOver = true;
    unfinished = nullptr;
    enforcedCode = failure.code;
    if (failure.code != 0) {
        reportError(failure.text);
    }
    tell(QStringLiteral("result %1 %2").arg(QString::number(failure.code), failure.text));
}

/**
 * Again and again: what ends may be the event loop of a dialog that main() shows before it enters
 * that of the application.
 */
void PlanRunner::endApplication()
{
    if (m_sinceEnd.hasExpired(quitLimit)) {
        reportError(QStringLiteral("the application went on although it was told to quit, and is "
                                   "ended at once"));
        std::fflush(nullptr);
        _exit(enforcedCode);
    }
    QCoreApplication::exit(enforcedCode);
}

void PlanRunner::applicationEnds()
{
    if (m_isTaken && !m_isOver && !isForked()) {
        conclude(
            {ExitCode::planFailed,
             QStringLiteral("the application ended before the plan was done; vantrel was waiting "
                            "for %1")
                 .arg(m_doing)});
    }
}

} // namespace Vantrel
