#include "launcher/applicationprocess.h"

#include <csignal>
#include <unistd.h>

namespace Vantrel {

void ApplicationProcess::setupChildProcess()
{
    setpgid(0, 0);
}

void ApplicationProcess::adoptGroup()
{
    m_group = processId();
    if (!isatty(STDIN_FILENO) || tcgetpgrp(STDIN_FILENO) != getpgrp()) {
        return;
    }
    // In the background it would be stopped when it reads from the terminal, which may have
    // happened already.
    std::signal(SIGTTOU, SIG_IGN);
    m_gaveTerminal = tcsetpgrp(STDIN_FILENO, pid_t(m_group)) == 0;
    signalGroup(SIGCONT);
}

void ApplicationProcess::takeTerminalBack()
{
    if (m_gaveTerminal) {
        tcsetpgrp(STDIN_FILENO, getpgrp());
        m_gaveTerminal = false;
    }
}

void ApplicationProcess::signalGroup(int signal) const
{
    if (m_group > 0) {
        ::kill(-pid_t(m_group), signal);
    }
}

bool ApplicationProcess::hasGroup() const
{
    return m_group > 0 && ::kill(-pid_t(m_group), 0) == 0;
}

} // namespace Vantrel
