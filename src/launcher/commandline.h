#ifndef VANTREL_COMMANDLINE_H
#define VANTREL_COMMANDLINE_H

#include <QString>
#include <QStringList>

namespace Vantrel {

/** What the user asked for. */
struct CommandLine
{
    enum class Command { Tree, Shot, Find, Run, Doctor, Help, Version };

    Command command = Command::Help;
    /** The picture, name or library of the command. */
    QString target;
    /** For the script library. */
    QStringList targetArguments;
    /** The application, then its arguments. */
    QStringList application;
    bool isJson = false;
    int depth = -1;
    QString filter;
    QString output;
    bool isShown = false;
    /** Milliseconds; 0 is without end. */
    int timeout = 60000;

    /** @p error is empty when @p arguments (without the name of this program) are valid. */
    static CommandLine parse(const QStringList &arguments, QString *error);
    static QString helpText();
};

} // namespace Vantrel

#endif // VANTREL_COMMANDLINE_H
