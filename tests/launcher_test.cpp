// The launcher and the plugin, as a user has them: each case starts the launcher, which starts an
// application.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString launcher = QStringLiteral(VANTREL_LAUNCHER);
const QString contacts = QStringLiteral(VANTREL_CONTACTS);
const QString bareWindow = QStringLiteral(VANTREL_BARE_WINDOW);
const QString behaviours = QStringLiteral(VANTREL_BEHAVIOURS);
const QString coreOnly = QStringLiteral(VANTREL_CORE_ONLY);
const QString script = QStringLiteral(VANTREL_SCRIPT);

struct Outcome
{
    int code = -1;
    QString out;
    QString err;
};

Outcome outcomeOf(QProcess &process)
{
    process.waitForFinished(-1);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

Outcome run(const QStringList &arguments)
{
    QProcess process;
    process.start(launcher, arguments);
    return outcomeOf(process);
}

/** The command line that does @p command to the test application with that behaviour. */
QStringList withBehaviour(QStringList command, const char *behaviour)
{
    return command << "--" << behaviours << behaviour;
}

QByteArray contentOf(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/** An executable file; empty when that fails. */
QString makeProgram(const QTemporaryDir &directory, const QByteArray &content)
{
    const QString fileName = directory.filePath("program");
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size()
            && file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner)
        ? fileName
        : QString();
}

/** The program contacts with other names of the libraries of Qt, which are as long. */
QByteArray contactsWith(const QByteArray &core, const QByteArray &gui, const QByteArray &widgets)
{
    return contentOf(contacts)
        .replace("libQt5Core.so.5", core)
        .replace("libQt5Gui.so.5", gui)
        .replace("libQt5Widgets.so.5", widgets);
}

/** A process that was killed may take a moment to go, and nobody need have asked for its code. */
bool hasEnded(const QString &process)
{
    const auto isGone = [&] {
        const QByteArray state = contentOf("/proc/" + process + "/stat");
        return state.isEmpty() || state.contains(" Z ");
    };
    for (int i = 0; i < 500 && !isGone(); ++i) {
        QThread::msleep(10);
    }
    return isGone();
}

} // namespace

TEST(Launcher, RefusesInvalidCommandLines)
{
    const struct
    {
        const char *what;
        QStringList arguments;
        const char *error;
    } rows[] = {
        {"nothing", {}, "a command is missing"},
        {"an unknown command", {"paint", "--", "x"}, "no command \"paint\""},
        {"an unknown option", {"tree", "--colour", "--", "x"}, "colour"},
        {"no application", {"tree"}, "the application is missing"},
        {"an empty application", {"tree", "--", ""}, "the application is missing"},
        {"no file for the picture", {"shot", "--", "x"}, "shot needs a FILE"},
        {"an application without separator", {"tree", "x"}, "behind \"--\""},
        {"a depth that is no number", {"tree", "--depth", "deep", "--", "x"}, "--depth needs"},
        {"a negative depth", {"tree", "--depth=-1", "--", "x"}, "--depth needs"},
        {"an option of another command", {"find", "--json", "a", "--", "x"}, "belongs to tree"},
        {"an endless time-out", {"tree", "--timeout", "inf", "--", "x"}, "--timeout needs"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const Outcome outcome = run(row.arguments);
        EXPECT_EQ(2, outcome.code);
        EXPECT_TRUE(outcome.err.contains(row.error)) << qPrintable(outcome.err);
        EXPECT_EQ("", outcome.out.toStdString());
    }
}

TEST(Launcher, OpensTheApplicationAndNotItsChildren)
{
    // The behaviour prints what a child has of the variables by which the plugin comes in.
    qputenv("QT_PLUGIN_PATH", "/nowhere/plugins");
    const Outcome outcome = run(withBehaviour({"tree"}, "environment"));
    qunsetenv("QT_PLUGIN_PATH");
    EXPECT_EQ(0, outcome.code) << qPrintable(outcome.err);
    EXPECT_TRUE(outcome.out.startsWith("/nowhere/plugins\n<")) << qPrintable(outcome.out);
    EXPECT_TRUE(outcome.out.contains("name='press'"));
}

TEST(Launcher, LimitsTheTreeToAnObjectAndADepth)
{
    const Outcome all = run({"tree", "--json", "--", contacts});
    const Outcome part =
        run({"tree", "--json", "--filter", "{name='details'}", "--depth", "1", "--", contacts});
    EXPECT_EQ(0, part.code) << qPrintable(part.err);
    EXPECT_TRUE(QJsonDocument::fromJson(part.out.toUtf8()).isObject());
    EXPECT_TRUE(all.out.contains("nameEdit"));
    EXPECT_TRUE(all.out.contains("contactTable"));
    EXPECT_TRUE(part.out.contains("saveButton"));
    EXPECT_FALSE(part.out.contains("nameEdit"));
    EXPECT_FALSE(part.out.contains("contactTable"));

    const Outcome none = run({"tree", "--filter", "{name='nothing'}", "--", contacts});
    EXPECT_EQ(1, none.code);
    EXPECT_TRUE(none.err.contains("not found"));
}

TEST(Launcher, WritesPicturesAndTreesToFiles)
{
    const QTemporaryDir directory;
    const QString picture = directory.filePath("with, comma; and 50%.png");
    EXPECT_EQ(0, run({"shot", picture, "--", contacts}).code);
    EXPECT_TRUE(contentOf(picture).startsWith("\x89PNG"));

    const QString tree = directory.filePath("tree");
    const Outcome outcome = run({"tree", "--output", tree, "--", bareWindow});
    EXPECT_EQ(0, outcome.code) << qPrintable(outcome.err);
    EXPECT_EQ("", outcome.out.toStdString());
    EXPECT_TRUE(contentOf(tree).contains("bareWindow"));
}

TEST(Launcher, ReportsFilesThatCannotBeWritten)
{
    for (const char *command : {"shot", "tree"}) {
        SCOPED_TRACE(command);
        QStringList arguments = {command, "/nowhere/file", "--", contacts};
        if (arguments[0] == "tree") {
            arguments.insert(1, "--output");
        }
        const Outcome outcome = run(arguments);
        EXPECT_EQ(125, outcome.code);
        EXPECT_TRUE(outcome.err.contains("vantrel: cannot write /nowhere/file: "))
            << qPrintable(outcome.err);
    }
}

TEST(Launcher, PrintsAllObjectsThatANameMatches)
{
    const Outcome one = run({"find", "{name='saveButton'}", "--", contacts});
    EXPECT_EQ(0, one.code) << qPrintable(one.err);
    EXPECT_EQ("QPushButton {name='saveButton' type='QPushButton'}\n", one.out.toStdString());

    const Outcome tabs = run({"find", "{type='QLineEdit'}", "--", contacts});
    EXPECT_EQ(0, tabs.code) << qPrintable(tabs.err);
    EXPECT_LT(2, tabs.out.count('\n'));

    const Outcome none = run({"find", "{type='QPushButton' text='Sav'}", "--", contacts});
    EXPECT_EQ(1, none.code);
    EXPECT_TRUE(none.err.contains("not found")) << qPrintable(none.err);
    EXPECT_TRUE(
        none.err.contains("near: {name='saveButton' type='QPushButton'}, but text is 'Save'"))
        << qPrintable(none.err);
}

TEST(Launcher, WaitsForTheWindowThatMatters)
{
    for (const char *behaviour : {"dialog", "splash"}) {
        SCOPED_TRACE(behaviour);
        const Outcome outcome = run(withBehaviour({"tree"}, behaviour));
        const char *window = qstrcmp(behaviour, "dialog") == 0 ? "login" : "press";
        EXPECT_EQ(0, outcome.code) << qPrintable(outcome.err);
        EXPECT_TRUE(outcome.out.contains(window)) << qPrintable(outcome.out);
    }
}

TEST(Launcher, TellsHowAnApplicationSpoiledThePlan)
{
    const struct
    {
        const char *behaviour;
        int code;
        const char *error;
    } rows[] = {
        {"exits", 125, "ended before the plan was done"},
        {"calls-exit", 125, "ended before the plan was done"},
        {"calls-_exit", 125, "ended with the exit code 0 before the plan was done"},
        {"aborts", 128 + SIGABRT, "was ended by the signal 6 before the plan was done"},
        {"returns-5", 5, ""},
        {"aborts-last", 128 + SIGABRT, "was ended by the signal 6 when the plan was done"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.behaviour);
        const Outcome outcome = run(withBehaviour({"tree"}, row.behaviour));
        EXPECT_EQ(row.code, outcome.code);
        EXPECT_TRUE(outcome.err.contains(row.error)) << qPrintable(outcome.err);
    }
}

TEST(Launcher, LeavesCopiesOfTheApplicationAlone)
{
    const Outcome outcome = run(withBehaviour({"find", "{name='press'}"}, "forks"));
    EXPECT_EQ(0, outcome.code);
    EXPECT_TRUE(outcome.err.contains("copy ended with 0")) << qPrintable(outcome.err);
    EXPECT_FALSE(outcome.err.contains("vantrel:")) << qPrintable(outcome.err);
}

TEST(Launcher, TellsWhatWasWaitedForWhenTheTimeIsOver)
{
    const struct
    {
        const char *behaviour;
        const char *error;
    } rows[] = {
        {"windowless", "vantrel was waiting for a visible top-level window"},
        {"never-rests", "events such as MetaCall to a QLabel keep coming"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.behaviour);
        const Outcome outcome = run(withBehaviour({"tree", "--timeout", "3"}, row.behaviour));
        EXPECT_EQ(124, outcome.code);
        EXPECT_TRUE(outcome.err.contains(row.error)) << qPrintable(outcome.err);
        EXPECT_EQ("", outcome.out.toStdString());
    }
}

TEST(Launcher, KillsWhatHangsWithItsChildren)
{
    const Outcome outcome = run(withBehaviour({"tree", "--timeout", "1"}, "hangs"));
    EXPECT_EQ(124, outcome.code);
    EXPECT_TRUE(outcome.err.contains("was killed after 1 s")) << qPrintable(outcome.err);
    const QString child = outcome.out.section(' ', 1).trimmed();
    ASSERT_FALSE(child.isEmpty());
    EXPECT_TRUE(hasEnded(child));
}

TEST(Launcher, EndsTheApplicationWhenItIsEndedItself)
{
    QProcess process;
    process.start(launcher, withBehaviour({"tree"}, "hangs"));
    process.waitForReadyRead(-1);
    const QString child = QString::fromUtf8(process.readLine()).section(' ', 1).trimmed();
    process.terminate();
    EXPECT_EQ(128 + SIGTERM, outcomeOf(process).code);
    EXPECT_TRUE(hasEnded(child));
}

TEST(Launcher, OpensTwoApplicationsAtTheSameTime)
{
    QProcess first;
    QProcess second;
    first.start(launcher, {"find", "{name='bareWindow'}", "--", bareWindow});
    second.start(launcher, {"find", "{name='saveButton'}", "--", contacts});
    EXPECT_EQ(0, outcomeOf(first).code);
    EXPECT_EQ(0, outcomeOf(second).code);
}

TEST(Launcher, PassesTheStreamsOfTheApplicationOn)
{
    const QTemporaryDir directory;
    const QString program =
        makeProgram(directory,
                    "#!/bin/sh\nread line\necho \"out $line $1\"\necho err >&2\n"
                    "exec \"$2\" shows\n");
    QProcess process;
    process.start(launcher, {"find", "{name='press'}", "--", program, "a b", behaviours});
    process.write("line\n");
    process.closeWriteChannel();
    const Outcome outcome = outcomeOf(process);
    EXPECT_EQ(0, outcome.code);
    EXPECT_TRUE(outcome.out.startsWith("out line a b\n")) << qPrintable(outcome.out);
    EXPECT_TRUE(outcome.out.endsWith("QPushButton {name='press' type='QPushButton'}\n"))
        << qPrintable(outcome.out);
    EXPECT_TRUE(outcome.err.contains("err\n"));
}

TEST(Launcher, FindsEveryObjectOfADumpAgain)
{
    for (const QString &application : {contacts, bareWindow}) {
        const Outcome outcome = run({"run", script, "names", "--", application});
        EXPECT_EQ(0, outcome.code) << qPrintable(outcome.out + outcome.err);
    }
}

TEST(Launcher, RunsScripts)
{
    const struct
    {
        const char *what;
        QStringList command;
        int code;
        const char *error;
    } rows[] = {
        {"one that passes", {script, "{name='press'}"}, 0, ""},
        {"one that fails", {script, "error"}, 7, "returned 7: The printer is on fire"},
        {"one that throws", {script, "throw"}, 125, "no more ink"},
        {"one that quits the application", {script, "quit"}, 0, ""},
        {"one that quits and fails", {script, "quit", "4"}, 4, "returned 4"},
        {"no library", {"/nowhere/script.so"}, 125, "/nowhere/script.so"},
        {"a library that is no script", {VANTREL_NO_SCRIPT}, 125, "does not define vantrel_main()"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const Outcome outcome = run(withBehaviour(QStringList("run") + row.command, "shows"));
        EXPECT_EQ(row.code, outcome.code) << qPrintable(outcome.err);
        EXPECT_TRUE(outcome.err.contains(row.error)) << qPrintable(outcome.err);
    }
}

TEST(Launcher, SaysWhyAnApplicationIsNotOpened)
{
    const Outcome missing = run({"tree", "--", "no-such-program"});
    EXPECT_EQ(127, missing.code);
    EXPECT_TRUE(missing.err.contains("no-such-program was not found"));

    const Outcome other = run({"tree", "--", "/bin/true"});
    EXPECT_EQ(126, other.code);
    EXPECT_TRUE(other.err.contains("ended with the exit code 0 and had not loaded the plugin"));
    EXPECT_TRUE(other.err.contains("it is not linked with Qt"));
}

TEST(Doctor, OpensWhatCanBeOpened)
{
    for (const QString &application : {contacts, bareWindow}) {
        const Outcome outcome = run({"doctor", "--", application});
        EXPECT_EQ(0, outcome.code) << qPrintable(outcome.out);
        EXPECT_TRUE(outcome.out.contains("It can be opened: it was ready after "));
    }
}

TEST(Doctor, SeesWhatIsWrong)
{
    const struct
    {
        const char *what;
        QByteArray program;
        const char *text;
    } rows[] = {
        {"a script", "#!/bin/sh -e\nexit 0\n", "is a script for /bin/sh -e"},
        {"no program", "text", "is no ELF program"},
        {"an empty file", "", "is no ELF program"},
        {"a cut header",
         "\x7f"
         "ELF",
         "is no ELF program"},
        // The bytes of class, byte order and version, and then those of type and machine.
        {"another machine", contentOf(contacts).replace(18, 2, "\xf3\x7f"), "for another machine"},
        {"another word size", contentOf(contacts).replace(4, 1, "\x09"), "for another machine"},
        {"static", contentOf(contacts).replace(32, 8, QByteArray(8, '\0')), "statically linked"},
        {"Qt 6", contactsWith("libQt6Core.so.6", "libQt6Gui.so.6", "libQt6Widgets.so.6"),
         "linked with Qt 6"},
        {"a missing library",
         contactsWith("libQt5Core.so.5", "libQx5Gui.so.5", "libQt5Widgets.so.5"),
         "shared libraries are missing: libQx5Gui.so.5"},
        {"no window system", contentOf(coreOnly), "Qt 5 Core alone"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const QTemporaryDir directory;
        const Outcome outcome = run({"doctor", "--", makeProgram(directory, row.program)});
        EXPECT_EQ(1, outcome.code);
        EXPECT_TRUE(outcome.out.contains(row.text)) << qPrintable(outcome.out);
        EXPECT_TRUE(outcome.out.contains("to do: "));
    }
}

TEST(Doctor, SeesFilesThatAreNoProgramsForTheUser)
{
    const QTemporaryDir directory;
    const QString program = makeProgram(directory, contentOf(contacts));
    QFile::setPermissions(program, QFile::ReadOwner);
    EXPECT_TRUE(run({"doctor", "--", program}).out.contains("is not executable"));
    EXPECT_TRUE(run({"doctor", "--", directory.path()}).out.contains("is a directory"));
    EXPECT_TRUE(run({"doctor", "--", "no-such-program"}).out.contains("was not found"));

    // Only the administrator can make a program setuid to somebody else.
    const QByteArray path = QFile::encodeName(program);
    if (chown(path.constData(), 65534, gid_t(-1)) == 0) {
        chmod(path.constData(), S_ISUID | 0755);
        EXPECT_TRUE(run({"doctor", "--", program}).out.contains("is setuid to "));
    }
}

TEST(Doctor, SeesAPluginThatIsMissing)
{
    const QTemporaryDir directory;
    const QString copy = directory.filePath("vantrel");
    QFile::copy(launcher, copy);
    QProcess process;
    process.start(copy, {"doctor", "--", contacts});
    const Outcome outcome = outcomeOf(process);
    EXPECT_EQ(1, outcome.code);
    EXPECT_TRUE(outcome.out.contains("the plugin is missing")) << qPrintable(outcome.out);
}

TEST(Doctor, SeesAPluginOfAnotherQt)
{
    const QTemporaryDir directory;
    const QString plugins = directory.filePath("lib/vantrel/plugins/generic");
    ASSERT_TRUE(QDir().mkpath(directory.filePath("bin")) && QDir().mkpath(plugins));
    const QString copy = directory.filePath("bin/vantrel");
    QFile::copy(launcher, copy);
    // Behind this mark stand a zero and the version.
    const QByteArray mark = "QTMETADATA !";
    QByteArray content = contentOf(QStringLiteral(VANTREL_PLUGINS "/generic/libvantrelplugin.so"));
    ASSERT_TRUE(content.contains(mark));
    content[content.indexOf(mark) + mark.size() + 2] = 99;
    QFile plugin(plugins + "/libvantrelplugin.so");
    ASSERT_TRUE(plugin.open(QIODevice::WriteOnly) && plugin.write(content) == content.size());
    plugin.close();

    QProcess process;
    process.start(copy, {"doctor", "--", contacts});
    const Outcome diagnosis = outcomeOf(process);
    EXPECT_EQ(1, diagnosis.code);
    EXPECT_TRUE(diagnosis.out.contains("the plugin was built with Qt 5.99"))
        << qPrintable(diagnosis.out);

    process.start(copy, {"tree", "--timeout", "0", "--", contacts});
    const Outcome attempt = outcomeOf(process);
    EXPECT_EQ(126, attempt.code) << "the application is not waited for without end";
    EXPECT_TRUE(attempt.err.contains("the plugin was built with Qt 5.99"))
        << qPrintable(attempt.err);
}

TEST(Plugin, WorksWithoutTheLauncher)
{
    const struct
    {
        const char *what;
        QByteArray plan;
        int code;
        const char *out;
        const char *err;
    } rows[] = {
        {"a search", "find=%7Bname='press'%7D", 0,
         "QPushButton {name='press' type='QPushButton'}\n", ""},
        {"no steps", "", 0, "", ""},
        {"an unknown key", "paint=x", 2, "", "invalid part \"paint=x\""},
        {"a bad number", "depth=many;tree=x", 2, "", "invalid part \"depth=many\""},
        {"no file", "tree=", 2, "", "invalid part \"tree=\""},
        {"a status that cannot be told", "status=/nowhere/status", 125, "",
         "cannot write /nowhere/status"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        QProcess process;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("QT_PLUGIN_PATH", VANTREL_PLUGINS);
        environment.insert("QT_QPA_GENERIC_PLUGINS", "vantrel:" + row.plan);
        process.setProcessEnvironment(environment);
        process.start(behaviours, {"shows"});
        const Outcome outcome = outcomeOf(process);
        EXPECT_EQ(row.code, outcome.code);
        EXPECT_EQ(row.out, outcome.out.toStdString());
        EXPECT_TRUE(outcome.err.contains(row.err)) << qPrintable(outcome.err);
    }
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    qputenv("LSAN_OPTIONS", "print_suppressions=0:suppressions=" VANTREL_TEST_DATA "/qt.supp");
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
