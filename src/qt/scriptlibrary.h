#ifndef VANTREL_QT_SCRIPTLIBRARY_H
#define VANTREL_QT_SCRIPTLIBRARY_H

#include <QtGlobal>

namespace Vantrel {

class Inspector;

} // namespace Vantrel

/**
 * What a script library defines, to be run in an application by "vantrel run
 * LIBRARY ARGUMENTS -- APPLICATION". It is called when the wrapper is installed
 * and the application shows a window and has come to rest, as a script (see
 * qt/script.h): beside the event loop, in the thread of the application object.
 * The application is ended when it returns. It may let the application quit by
 * itself, too, when it returns soon after.
 * @param inspector that of the process, not null.
 * @param argc,argv the file name of the library and the ARGUMENTS.
 * @return 0 when all is well, else the exit code of the application and the
 *         launcher (1 to 255). An exception that leaves it is a failure.
 */
extern "C" Q_DECL_EXPORT int vantrel_main(Vantrel::Inspector *inspector, int argc, char **argv);

#endif // VANTREL_QT_SCRIPTLIBRARY_H
