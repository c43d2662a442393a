#ifndef VANTREL_EXAMINATION_H
#define VANTREL_EXAMINATION_H

#include <QString>

#include <vector>

namespace Vantrel {

/** One thing that was seen about a program, and what can be done about it. */
struct Finding
{
    enum class Kind {
        Good,
        Doubt, ///< it cannot be told from outside
        Problem ///< it cannot be opened
    };

    Kind kind;
    QString text;
    QString advice;
};

/** Where the plugin is, relative to this program: the directory for QT_PLUGIN_PATH. Empty, with
 * @p error set, when it is not there. */
QString pluginDirectory(QString *error);
/** Its file in that directory. */
QString pluginFile(const QString &directory);

/**
 * The file that would be executed for @p name, which is looked for in PATH when
 * it has no slash. Empty when there is none.
 */
QString programFile(const QString &name);

/**
 * Looks at an application from outside, without executing anything of it: only
 * this system's dynamic loader is asked for the libraries.
 */
std::vector<Finding> examine(const QString &name);

bool hasProblem(const std::vector<Finding> &findings);
/** Whether all is good, so that nothing is executed that is not known to use Qt. */
bool isAllGood(const std::vector<Finding> &findings);

} // namespace Vantrel

#endif // VANTREL_EXAMINATION_H
