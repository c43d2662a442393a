#ifndef VANTREL_APPLICATIONPROCESS_H
#define VANTREL_APPLICATIONPROCESS_H

#include <QProcess>

namespace Vantrel {

/** A child in a process group of its own, so that it ends with all that it has started. */
class ApplicationProcess : public QProcess
{
    Q_OBJECT

public:
    /** Call it once the child is there. If this process has the terminal, the group gets it. */
    void adoptGroup();
    void signalGroup(int signal) const;
    /** Whether a process of the group is there, which may be one that has ended. */
    bool hasGroup() const;
    void takeTerminalBack();

protected:
    void setupChildProcess() override;

private:
    qint64 m_group = 0;
    bool m_gaveTerminal = false;
};

} // namespace Vantrel

#endif // VANTREL_APPLICATIONPROCESS_H
