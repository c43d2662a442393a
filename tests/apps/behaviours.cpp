// An application that does what its first argument says.

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QSplashScreen>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

int showAndRun()
{
    QPushButton button("Press");
    button.setObjectName("press");
    button.show();
    return QApplication::exec();
}

int showDialogFirst()
{
    {
        QDialog dialog;
        dialog.setObjectName("login");
        dialog.setWindowTitle("Login");
        dialog.exec();
    }
    return showAndRun();
}

int showSplashFirst()
{
    QSplashScreen splash;
    splash.setObjectName("splash");
    splash.show();
    QPushButton button("Press");
    button.setObjectName("press");
    QTimer::singleShot(200, &button, [&] {
        button.show();
        splash.finish(&button);
    });
    return QApplication::exec();
}

/** Hangs together with a child of its own and takes no hint. */
int hang()
{
    std::signal(SIGTERM, SIG_IGN);
    const pid_t child = fork();
    if (child != 0) {
        std::printf("child %d\n", int(child));
        std::fflush(stdout);
    }
    for (;;) {
        pause();
    }
}

int printEnvironmentOfChild()
{
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedChannels);
    child.start("printenv", {"QT_QPA_GENERIC_PLUGINS", "QT_PLUGIN_PATH"});
    child.waitForFinished();
    return showAndRun();
}

int neverRest()
{
    QLabel label("Busy");
    label.show();
    std::function<void()> again = [&] {
        QMetaObject::invokeMethod(&label, again, Qt::QueuedConnection);
    };
    QTimer::singleShot(0, &label, again);
    return QApplication::exec();
}

/** A copy of the process ends the usual way, long before the plan is done. */
int forkAndEnd()
{
    const pid_t child = fork();
    if (child == 0) {
        std::exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    std::fprintf(stderr, "copy ended with %d\n", status);
    return showAndRun();
}

int runWithoutWindow()
{
    QApplication::setQuitOnLastWindowClosed(false);
    return QApplication::exec();
}

const std::map<std::string, int (*)()> behaviours = {
    {"exits", [] { return 3; }},
    {"calls-exit", []() -> int { std::exit(0); }},
    {"calls-_exit", []() -> int { _exit(0); }},
    {"aborts", []() -> int { std::abort(); }},
    {"windowless", runWithoutWindow},
    {"dialog", showDialogFirst},
    {"splash", showSplashFirst},
    {"forks", forkAndEnd},
    {"hangs", hang},
    {"never-rests", neverRest},
    {"environment", printEnvironmentOfChild},
    {"returns-5",
     [] {
         showAndRun();
         return 5;
     }},
    {"aborts-last",
     []() -> int {
         showAndRun();
         std::abort();
     }},
    {"shows", showAndRun},
};

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const auto found = behaviours.find(argc > 1 ? argv[1] : "");
    return found == behaviours.end() ? 99 : found->second();
}
