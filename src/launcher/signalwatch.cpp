#include "launcher/signalwatch.h"

#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace Vantrel {

namespace {

constexpr int watched[] = {SIGINT, SIGTERM, SIGHUP};

/** From the handler to the event loop. */
int pipeEnds[2] = {-1, -1};

void handle(int signal)
{
    const int error = errno;
    const char number = char(signal);
    // A full pipe holds enough signals.
    [[maybe_unused]] const ssize_t written = write(pipeEnds[1], &number, 1);
    errno = error;
}

} // namespace

SignalWatch::SignalWatch()
{
    if (pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) {
        qFatal("vantrel: no pipe can be made");
    }
    m_notifier = std::make_unique<QSocketNotifier>(pipeEnds[0], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
        char number = 0;
        while (read(pipeEnds[0], &number, 1) == 1) {
            emit received(number);
        }
    });
    for (const int signal : watched) {
        struct sigaction action = {};
        action.sa_handler = handle;
        action.sa_flags = SA_RESTART;
        sigaction(signal, &action, nullptr);
    }
}

SignalWatch::~SignalWatch()
{
    for (const int signal : watched) {
        std::signal(signal, SIG_DFL);
    }
    m_notifier.reset();
    close(pipeEnds[0]);
    close(pipeEnds[1]);
}

} // namespace Vantrel
