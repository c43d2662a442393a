#include "launcher/commandline.h"

#include <QCommandLineParser>

#include <cmath>
#include <limits>

namespace Vantrel {

namespace {

using Command = CommandLine::Command;

struct CommandSyntax
{
    const char *name;
    Command command;
    /** What has to stand behind the command; null for nothing. */
    const char *target;
    bool takesMore;
};

const CommandSyntax commands[] = {{"tree", Command::Tree, nullptr, false},
                                  {"shot", Command::Shot, "FILE", false},
                                  {"find", Command::Find, "NAME", false},
                                  {"run", Command::Run, "LIBRARY", true},
                                  {"doctor", Command::Doctor, nullptr, false}};

const char help[] =
    R"(Usage: vantrel COMMAND [OPTION]... [ARGUMENT]... -- APPLICATION [ARGUMENT]...

Opens an application of Qt 5 as it is, does something in it as soon as it shows
a window, and ends it. The application needs no preparation.

Commands:
  tree                  print the objects of the application as XML
  shot FILE             write a picture of its window with the names of objects, as PNG
  find NAME             print the objects that a name matches
  run LIBRARY [ARG]...  run a compiled script in it
  doctor                tell why the application can or cannot be opened

Options of tree:
  --json                JSON instead of XML
  --depth N             only N levels below the top
  --filter NAME         only the object of that name and what is below it
  --output FILE         write there instead of to standard output

Options:
  --show                show the application on the display
  --timeout SECONDS     kill the application after that time (60; 0 is never)
  --help                print this text
  --version             print the version

The exit code is 0 when all went well, 1 when nothing was found or the doctor
sees no way in, 2 for a wrong command line, 124 for a time-out, 125 when
something failed in the application, 126 when it could not be opened and 127
when it was not found; otherwise it is that of the script or the application.
)";

const QCommandLineOption jsonOption(QStringLiteral("json"));
const QCommandLineOption depthOption(QStringLiteral("depth"), {}, QStringLiteral("N"));
const QCommandLineOption filterOption(QStringLiteral("filter"), {}, QStringLiteral("NAME"));
const QCommandLineOption outputOption(QStringLiteral("output"), {}, QStringLiteral("FILE"));
const QCommandLineOption showOption(QStringLiteral("show"));
const QCommandLineOption timeoutOption(QStringLiteral("timeout"), {}, QStringLiteral("SECONDS"));
const QCommandLineOption helpOption(QStringList({QStringLiteral("h"), QStringLiteral("help")}));
const QCommandLineOption versionOption(QStringList({QStringLiteral("v"),
                                                    QStringLiteral("version")}));

class Reader
{
public:
    CommandLine read(const QStringList &arguments)
    {
        const int separator = arguments.indexOf(QStringLiteral("--"));
        const QStringList own = arguments.mid(0, separator);
        m_parser.addOptions({jsonOption, depthOption, filterOption, outputOption, showOption,
                             timeoutOption, helpOption, versionOption});
        if (!m_parser.parse(QStringList(QStringLiteral("vantrel")) + own)) {
            m_error = m_parser.errorText();
        } else if (m_parser.isSet(helpOption)) {
            m_line.command = Command::Help;
        } else if (m_parser.isSet(versionOption)) {
            m_line.command = Command::Version;
        } else {
            m_line.application = separator < 0 ? QStringList() : arguments.mid(separator + 1);
            readCommand();
        }
        return m_line;
    }
    QString error() const { return m_error; }

private:
    bool fail(const QString &error)
    {
        m_error = error;
        return false;
    }
    void readCommand()
    {
        const QStringList words = m_parser.positionalArguments();
        const CommandSyntax *syntax = syntaxOf(words.value(0));
        if (!syntax) {
            fail(words.isEmpty() ? QStringLiteral("a command is missing")
                                 : QStringLiteral("there is no command \"%1\"").arg(words[0]));
            return;
        }
        m_line.command = syntax->command;
        if (readTarget(*syntax, words.mid(1)) && readTreeOptions() && readTimeout()) {
            m_line.isShown = m_parser.isSet(showOption);
            if (m_line.application.value(0).isEmpty()) {
                fail(QStringLiteral("the application is missing, give it behind \"--\""));
            }
        }
    }
    static const CommandSyntax *syntaxOf(const QString &name)
    {
        for (const CommandSyntax &syntax : commands) {
            if (name == QLatin1String(syntax.name)) {
                return &syntax;
            }
        }
        return nullptr;
    }
    bool readTarget(const CommandSyntax &syntax, const QStringList &words)
    {
        const int wanted = syntax.target ? 1 : 0;
        if (words.mid(0, wanted).contains(QString()) || words.size() < wanted) {
            return fail(
                QStringLiteral("%1 needs a %2")
                    .arg(QString::fromLatin1(syntax.name), QString::fromLatin1(syntax.target)));
        }
        if (words.size() > wanted && !syntax.takesMore) {
            return fail(QStringLiteral("\"%1\" is too much; the application stands behind \"--\"")
                            .arg(words[wanted]));
        }
        m_line.target = words.value(0);
        m_line.targetArguments = words.mid(1);
        return true;
    }
    bool readTreeOptions()
    {
        m_line.isJson = m_parser.isSet(jsonOption);
        m_line.filter = m_parser.value(filterOption);
        m_line.output = m_parser.value(outputOption);
        if (m_parser.isSet(depthOption)) {
            bool isNumber = false;
            m_line.depth = m_parser.value(depthOption).toInt(&isNumber);
            if (!isNumber || m_line.depth < 0) {
                return fail(QStringLiteral("--depth needs a number from 0 on"));
            }
        }
        const bool isTree = m_line.command == Command::Tree;
        for (const auto &option : {jsonOption, depthOption, filterOption, outputOption}) {
            if (!isTree && m_parser.isSet(option)) {
                return fail(
                    QStringLiteral("--%1 belongs to tree").arg(option.names().constFirst()));
            }
        }
        return true;
    }
    bool readTimeout()
    {
        if (!m_parser.isSet(timeoutOption)) {
            return true;
        }
        bool isNumber = false;
        const double milliseconds = 1000 * m_parser.value(timeoutOption).toDouble(&isNumber);
        if (!isNumber || !(milliseconds >= 0 && milliseconds < std::numeric_limits<int>::max())) {
            return fail(QStringLiteral("--timeout needs a number of seconds from 0 on"));
        }
        m_line.timeout = int(std::ceil(milliseconds));
        return true;
    }

    QCommandLineParser m_parser;
    CommandLine m_line;
    QString m_error;
};

} // namespace

CommandLine CommandLine::parse(const QStringList &arguments, QString *error)
{
    Reader reader;
    const CommandLine line = reader.read(arguments);
    *error = reader.error();
    return line;
}

QString CommandLine::helpText()
{
    return QString::fromLatin1(help);
}

} // namespace Vantrel
