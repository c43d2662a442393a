#ifndef VANTREL_PLAN_H
#define VANTREL_PLAN_H

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace Vantrel {

/**
 * What is to be done in an application, and the text in which the launcher hands
 * it over: "key=value" pairs with ";" between them, in values everything but
 * letters, digits and "-._~/" percent-encoded in UTF-8. The keys:
 *
 *     tree=FILE     writes the tree of objects; json=1, depth=N and filter=NAME
 *                   in front of it say how
 *     shot=FILE     writes the annotated picture, as PNG
 *     find=NAME     writes what the name matches to the file of output=FILE in
 *                   front of it, or else to standard output
 *     run=LIBRARY   calls a script with the arguments of the arg=TEXT in front
 *     timeout=MS    for the application to get ready; 0 is without end
 *     status=FILE   where to tell how far the plan is; see PlanStatus
 *     pluginpath=D  a directory to be taken out of QT_PLUGIN_PATH again
 *
 * Steps are done in their order. A plan without steps only opens the application.
 */
struct Plan
{
    struct Step
    {
        enum class Action { Tree, Shot, Find, Run };

        Action action;
        /** The file, name or library. */
        QString target;
        bool isJson = false;
        /** As in DumpOptions. */
        int depth = -1;
        QString filter;
        QString output;
        QStringList arguments;
    };

    std::vector<Step> steps;
    int timeout = 20000;
    QString statusFile;
    QString pluginPath;

    QString toText() const;
    /** @p error is empty when @p text is a plan. */
    static Plan fromText(const QString &text, QString *error);
};

/**
 * What an application has written about its plan. The file is made by the
 * process that takes the plan, so that of several applications that one launch
 * starts only the first does. One line each:
 *
 *     loaded PID
 *     waiting TEXT      for what, repeated as it changes
 *     ready MS          on the system's monotonic clock
 *     result CODE TEXT
 */
struct PlanStatus
{
    bool isLoaded = false;
    qint64 processId = 0;
    QString waitingFor;
    bool isReady = false;
    qint64 readyTime = 0;
    bool hasResult = false;
    int result = 0;
    QString resultText;

    static PlanStatus fromFile(const QString &fileName);
};

} // namespace Vantrel

#endif // VANTREL_PLAN_H
