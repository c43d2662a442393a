#include "launcher/examination.h"

#include "launcher/elffile.h"

#include <QByteArrayMatcher>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonObject>
#include <QMap>
#include <QPluginLoader>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QStandardPaths>

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

namespace Vantrel {

namespace {

using Kind = Finding::Kind;

constexpr int loaderTimeout = 10000; // milliseconds

/** Libraries by the names under which they are needed; the file is empty for one that is missing.
 */
using Libraries = QMap<QString, QString>;

/**
 * What the dynamic loader would load. It is the loader of this program, started as a program:
 * then it maps files but runs nothing of them, not even the loader that they ask for.
 */
Libraries librariesOf(const QString &fileName, QString *error)
{
    static const QString loader = ElfFile::read(QStringLiteral("/proc/self/exe")).interpreter;
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // Unlike its option --list, this goes on after a library that is missing.
    environment.insert(QStringLiteral("LD_TRACE_LOADED_OBJECTS"), QStringLiteral("1"));
    process.setProcessEnvironment(environment);
    process.start(loader, {fileName});
    Libraries libraries;
    if (!process.waitForFinished(loaderTimeout) || process.exitStatus() != QProcess::NormalExit) {
        *error = process.errorString();
        return libraries;
    }
    const QString output = QString::fromLocal8Bit(process.readAllStandardOutput());
    static const QRegularExpression pattern(
        QStringLiteral("^\\s*(\\S+) => (?:(/.*) \\(0x[0-9a-f]+\\)|not found)$"),
        QRegularExpression::MultilineOption);
    auto lines = pattern.globalMatch(output);
    while (lines.hasNext()) {
        const QRegularExpressionMatch line = lines.next();
        libraries.insert(line.captured(1), line.captured(2));
    }
    if (process.exitCode() != 0) {
        *error = QString::fromLocal8Bit(process.readAllStandardError()).trimmed();
    }
    return libraries;
}

QStringList missingOf(const Libraries &libraries)
{
    return libraries.keys(QString());
}

struct QtVersion
{
    int major = 0;
    int minor = 0;

    QString text() const { return QStringLiteral("%1.%2").arg(major).arg(minor); }
};

/** From the name of the file that the link stands for. */
QtVersion versionOf(const QString &coreLibrary)
{
    static const QRegularExpression pattern(QStringLiteral("\\.so\\.(\\d+)\\.(\\d+)"));
    const QString file = QFileInfo(QFileInfo(coreLibrary).canonicalFilePath()).fileName();
    const QRegularExpressionMatch match = pattern.match(file);
    return {match.captured(1).toInt(), match.captured(2).toInt()};
}

/** The Qt that the plugin was built with. */
QtVersion pluginVersion(const QString &fileName)
{
    const int version = QPluginLoader(fileName).metaData().value(QStringLiteral("version")).toInt();
    return {version >> 16, version >> 8 & 0xff};
}

bool holdsText(const QString &fileName, const char *text)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const uchar *bytes = file.map(0, file.size());
    const QByteArrayMatcher matcher(text);
    return bytes && matcher.indexIn(reinterpret_cast<const char *>(bytes), int(file.size())) >= 0;
}

/** The interpreter that the first line of a script names. */
QString scriptInterpreter(const QString &fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QString line = QString::fromLocal8Bit(file.readLine(4096)).trimmed();
    return line.startsWith(QLatin1String("#!")) ? line.mid(2).trimmed() : QString();
}

class Examiner
{
public:
    explicit Examiner(const QString &name) : m_name(name), m_file(programFile(name)) {}

    std::vector<Finding> findings()
    {
        if (isProgram() && isElf()) {
            lookAtPrivileges();
            lookAtLibraries();
        }
        lookAtPlugin();
        return m_findings;
    }

private:
    void add(Kind kind, const QString &text, const QString &advice = {})
    {
        m_findings.push_back({kind, text, advice});
    }
    bool problem(const QString &text, const QString &advice)
    {
        add(Kind::Problem, text, advice);
        return false;
    }
    bool isProgram();
    bool isElf();
    void lookAtPrivileges();
    void lookAtLibraries();
    void lookAtQt();
    void lookForOtherQt();
    void lookAtPlugin();
    void compareVersions(const QString &plugin);

    const QString m_name;
    const QString m_file;
    Libraries m_libraries;
    std::vector<Finding> m_findings;
};

bool Examiner::isProgram()
{
    const QFileInfo info(m_file);
    if (m_file.isEmpty() || !info.exists()) {
        return problem(QStringLiteral("%1 was not found").arg(m_name),
                       m_name.contains(QLatin1Char('/'))
                           ? QStringLiteral("check the path")
                           : QStringLiteral("give its path, or add its directory to PATH"));
    }
    if (info.isDir()) {
        return problem(QStringLiteral("%1 is a directory").arg(m_file),
                       QStringLiteral("give the program in it"));
    }
    if (!info.isExecutable()) {
        return problem(QStringLiteral("%1 is not executable").arg(m_file),
                       QStringLiteral("chmod +x, if it is a program"));
    }
    return true;
}

bool Examiner::isElf()
{
    const QString interpreter = scriptInterpreter(m_file);
    if (!interpreter.isEmpty()) {
        add(Kind::Doubt,
            QStringLiteral("%1 is a script for %2; what it starts cannot be told from outside")
                .arg(m_file, interpreter),
            QStringLiteral("the first application of Qt 5 that it starts will be opened; or "
                           "give that application itself"));
        return false;
    }
    const ElfFile elf = ElfFile::read(m_file);
    if (!elf.isElf) {
        return problem(QStringLiteral("%1 is no ELF program").arg(m_file),
                       QStringLiteral("give a program of this system"));
    }
    if (!elf.isOfThisMachine) {
        return problem(QStringLiteral("%1 is for another machine: %2").arg(m_file, elf.machine),
                       QStringLiteral("use a build of the application for this machine, or of "
                                      "Vantrel for that one"));
    }
    if (elf.interpreter.isEmpty()) {
        return problem(QStringLiteral("%1 is statically linked and loads no plugins").arg(m_file),
                       QStringLiteral("use a dynamically linked build of the application"));
    }
    add(Kind::Good, QStringLiteral("%1 is an ELF program: %2").arg(m_file, elf.machine));
    return true;
}

void Examiner::lookAtPrivileges()
{
    struct stat status = {};
    if (stat(QFile::encodeName(m_file).constData(), &status) != 0) {
        return;
    }
    const QFileInfo info(m_file);
    if ((status.st_mode & S_ISUID) && status.st_uid != getuid()) {
        problem(QStringLiteral("%1 is setuid to %2, and Qt ends such a program as a security hole "
                               "unless it allows that itself")
                    .arg(m_file, info.owner()),
                QStringLiteral("open a copy without that bit: cp does not keep it"));
    }
    if ((status.st_mode & S_ISGID) && status.st_gid != getgid()) {
        add(Kind::Good,
            QStringLiteral("it is setgid to %1: variables of Qt count all the same, but "
                           "LD_LIBRARY_PATH does not")
                .arg(info.group()));
    }
}

void Examiner::lookAtLibraries()
{
    QString error;
    m_libraries = librariesOf(m_file, &error);
    if (m_libraries.isEmpty() && !error.isEmpty()) {
        problem(QStringLiteral("the dynamic loader cannot load %1: %2").arg(m_file, error),
                QStringLiteral("see whether the application starts without Vantrel"));
        return;
    }
    const QStringList missing = missingOf(m_libraries);
    if (!missing.isEmpty()) {
        problem(QStringLiteral("shared libraries are missing: %1")
                    .arg(missing.join(QLatin1String(", "))),
                QStringLiteral("install them, or set LD_LIBRARY_PATH as the application needs it"));
    }
    lookAtQt();
}

void Examiner::lookAtQt()
{
    const QString core = m_libraries.value(QStringLiteral("libQt5Core.so.5"));
    const auto gui = m_libraries.constFind(QStringLiteral("libQt5Gui.so.5"));
    if (gui != m_libraries.constEnd()) {
        if (!gui->isEmpty() && !core.isEmpty()) {
            add(Kind::Good,
                QStringLiteral("it is linked with Qt %1: %2").arg(versionOf(core).text(), *gui));
        }
    } else if (!core.isEmpty()) {
        add(Kind::Doubt, QStringLiteral("it is linked with Qt 5 Core alone and so has no GUI"),
            QStringLiteral("nothing, unless it loads its windows as a plugin: then try \"vantrel "
                           "tree\""));
    } else {
        lookForOtherQt();
    }
}

void Examiner::lookForOtherQt()
{
    const struct
    {
        const char *library;
        const char *name;
    } others[] = {{"libQt6Core.so.6", "Qt 6"},
                  {"libQt6Gui.so.6", "Qt 6"},
                  {"libQtCore.so.4", "Qt 4"},
                  {"libQtGui.so.4", "Qt 4"}};
    for (const auto &other : others) {
        if (m_libraries.contains(QString::fromLatin1(other.library))) {
            problem(QStringLiteral("it is linked with %1, not with Qt 5")
                        .arg(QString::fromLatin1(other.name)),
                    QStringLiteral("use a build of the application for Qt 5"));
            return;
        }
    }
    if (holdsText(m_file, "QT_QPA_GENERIC_PLUGINS")) {
        problem(QStringLiteral("Qt is linked into it statically"),
                QStringLiteral("use a build of the application with the shared libraries of Qt"));
        return;
    }
    add(Kind::Doubt, QStringLiteral("it is not linked with Qt"),
        QStringLiteral("nothing, unless it loads Qt when it runs, as interpreters do: then try "
                       "\"vantrel tree\""));
}

void Examiner::lookAtPlugin()
{
    QString error;
    const QString directory = pluginDirectory(&error);
    if (directory.isEmpty()) {
        problem(error,
                QStringLiteral("install Vantrel as a whole, and keep its directories as "
                               "they are to each other"));
        return;
    }
    const QString plugin = pluginFile(directory);
    const QStringList missing = missingOf(librariesOf(plugin, &error));
    if (!missing.isEmpty()) {
        problem(QStringLiteral("libraries of the plugin %1 are missing: %2")
                    .arg(plugin, missing.join(QLatin1String(", "))),
                QStringLiteral("install Qt 5 Widgets and Test, and Vantrel as a whole"));
        return;
    }
    compareVersions(plugin);
}

void Examiner::compareVersions(const QString &plugin)
{
    const QtVersion built = pluginVersion(plugin);
    const QString core = m_libraries.value(QStringLiteral("libQt5Core.so.5"));
    const QtVersion used = core.isEmpty() ? built : versionOf(core);
    if (used.major != built.major || used.minor < built.minor) {
        problem(
            QStringLiteral("the plugin was built with Qt %1 and the application uses Qt %2 (%3)")
                .arg(built.text(), used.text(), core),
            QStringLiteral("build Vantrel with the Qt of the application"));
        return;
    }
    add(Kind::Good,
        QStringLiteral("the plugin is there, for Qt %1 and later: %2").arg(built.text(), plugin));
}

} // namespace

QString pluginFile(const QString &directory)
{
    return directory + QLatin1String("/generic/libvantrelplugin.so");
}

QString pluginDirectory(QString *error)
{
    const QDir own(QCoreApplication::applicationDirPath());
    // Where it is installed and in the build tree.
    const QString places[] = {QStringLiteral(VANTREL_PLUGIN_DIR),
                              QStringLiteral("../lib/vantrel/plugins")};
    for (const QString &place : places) {
        const QString directory = QDir::cleanPath(own.absoluteFilePath(place));
        if (QFileInfo::exists(pluginFile(directory))) {
            return directory;
        }
    }
    *error = QStringLiteral("the plugin is missing: there is no %1")
                 .arg(pluginFile(QDir::cleanPath(own.absoluteFilePath(places[0]))));
    return {};
}

QString programFile(const QString &name)
{
    return name.contains(QLatin1Char('/')) ? QFileInfo(name).absoluteFilePath()
                                           : QStandardPaths::findExecutable(name);
}

std::vector<Finding> examine(const QString &name)
{
    return Examiner(name).findings();
}

bool hasProblem(const std::vector<Finding> &findings)
{
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding &finding) { return finding.kind == Kind::Problem; });
}

bool isAllGood(const std::vector<Finding> &findings)
{
    return std::all_of(findings.begin(), findings.end(),
                       [](const Finding &finding) { return finding.kind == Kind::Good; });
}

} // namespace Vantrel
